#include "viewer/frmMainViewer.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "engine/picturecache.h"
#include "shell/frmPreferences.h"
#include "ui/guards.h"
#include "viewer/fit.h"

#include <cmath>

double frmMainViewer::GetZoomFactor() const
{
    return zoomFactor(zoomItem());
}

int frmMainViewer::zoomItem() const
{
    for (int i = zoomItemFirst; i <= zoomItemLast; ++i) {
        if (mnuEditZoomLevel[size_t(i)]->isChecked())
            return i;
    }
    return zoomItemAtStart;
}

void frmMainViewer::mnuEditZoomLevel_Click(int item)
{
    m_itemBeforeWheel = 0;
    for (int i = zoomItemFirst; i <= zoomItemLast; ++i)
        mnuEditZoomLevel[size_t(i)]->setChecked(i == item);
    form<checkjpg>().Gvbox2.setZoom(zoomFactor(item));
    ShowPictureInViewer(globals.CurrentMediaFile, true, zoomFactor(item));
}

void frmMainViewer::zoominc_Click()
{
    mnuEditZoomLevel_Click(qMin(zoomItem() + 1, zoomItemLast));
}

void frmMainViewer::zoomdec_Click()
{
    mnuEditZoomLevel_Click(qMax(zoomItem() - 1, zoomItemFirst));
}

void frmMainViewer::wheelZoom(int steps, QPoint position)
{
    if (Image1->isEmpty() || globals.OriginalImageWidth < 1 || form<frmPreferences>().chkStretch->isChecked())
        return;
    const double shown = Image1->width() * devicePixelRatioF() / globals.OriginalImageWidth;
    int item = 0;
    if (steps > 0) {
        for (int i = zoomItemLast; i >= zoomItemFirst && zoomFactor(i) > shown * 1.001; --i)
            item = i;
    } else {
        for (int i = zoomItemFirst; i <= zoomItemLast && zoomFactor(i) < shown * 0.999; ++i)
            item = i;
        // Below the size at which the whole picture fits there is nothing more to see: back to the fit rules.
        const QSize pane = paneSize();
        const double fits = std::min(
            double(pane.width()) / globals.OriginalImageWidth, double(pane.height()) / globals.OriginalImageHeight);
        if (fits < 1 && m_itemBeforeWheel != 0 && (item == 0 || zoomFactor(item) < fits)) {
            ShowPictureInViewer(globals.CurrentMediaFile, true, GetZoomFactor());
            return;
        }
        if (fits < 1 && m_itemBeforeWheel == 0)
            return;
    }
    if (item != 0)
        zoomFreely(item, position);
}

void frmMainViewer::zoomFreely(int item, QPoint position)
{
    if (m_itemBeforeWheel == 0)
        m_itemBeforeWheel = zoomItem();
    for (int i = zoomItemFirst; i <= zoomItemLast; ++i)
        mnuEditZoomLevel[size_t(i)]->setChecked(i == item);
    const double zoom = zoomFactor(item);
    StatusBar1->setPanelText(4, QString::number(zoom * 100) + QLatin1Char('%'));
    const QSize pixels(qMax(1, int(std::lround(globals.OriginalImageWidth * zoom))),
        qMax(1, int(std::lround(globals.OriginalImageHeight * zoom))));
    const QSize size = sizeOnScreen(pixels);
    // The point of the picture under the pointer stays under the pointer.
    const QPoint pointer = Image1->pos() + position;
    const double fx = double(position.x()) / qMax(1, Image1->width());
    const double fy = double(position.y()) / qMax(1, Image1->height());
    const QPoint corner(
        pointer.x() - int(std::lround(fx * size.width())), pointer.y() - int(std::lround(fy * size.height())));
    const bool enlarges = size.width() > Image1->width();
    if (enlarges && Image1->picture()->current().isReduced()) {
        const Hourglass hourglass;
        ignore(Image1->picture()->atLeast(
            pixels.boundedTo(QSize(globals.OriginalImageWidth, globals.OriginalImageHeight))));
    }
    Image1->setGeometry(QRect(corner, size));
    panBy(QPoint(0, 0));
}

void frmMainViewer::leaveFreeZoom()
{
    for (int i = zoomItemFirst; i <= zoomItemLast; ++i)
        mnuEditZoomLevel[size_t(i)]->setChecked(i == m_itemBeforeWheel);
    m_itemBeforeWheel = 0;
}

void frmMainViewer::panBy(QPoint offset)
{
    const QSize pane = Picture1->size();
    const auto bounded = [](int corner, int size, int room) {
        return size <= room ? (room - size) / 2 : qBound(room - size, corner, 0);
    };
    const QPoint wanted = Image1->pos() + offset;
    Image1->move(
        bounded(wanted.x(), Image1->width(), pane.width()), bounded(wanted.y(), Image1->height(), pane.height()));
}
