#include "viewer/frmMainViewer.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "engine/picturecache.h"
#include "engine/rounding.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "shell/frmPreferences.h"
#include "ui/guards.h"
#include "ui/icons.h"
#include "ui/yield.h"
#include "viewer/fit.h"
#include "viewer/frmSlideShowFullScreen.h"
#include "viewer/statustext.h"

#include <optional>
#include <utility>

void frmMainViewer::ShowSelectedDisplayItem()
{
    if (!globals.ItemSelectionBusy)
        showSelected(Show::DisplayItem);
}

void frmMainViewer::ShowSelectedSelectionItem()
{
    if (!globals.ItemSelectionBusy)
        showSelected(Show::SelectionItem);
}

void frmMainViewer::showSelected(Show what)
{
    m_showNext = what;
    ++m_displayTicket;
    if (m_displaying)
        return;
    const ScopedFlag displaying(m_displaying);
    while (m_showNext != Show::Nothing && !globals.ProgramExiting) {
        const Show now = std::exchange(m_showNext, Show::Nothing);
        if (now == Show::DisplayItem)
            showDisplayItemNow();
        else
            showSelectionItemNow();
    }
}

void frmMainViewer::showDisplayItemNow()
{
    if (!lstDisplay->isSelected(lstDisplay->listIndex())) {
        UpdateListScrollWidth(lstDisplay);
        return;
    }
    globals.CurrentListIndex = lstDisplay->listIndex() + 1;
    CurrentPicture->setText(QString::number(globals.CurrentListIndex));
    showByKind(*lstDisplay, [this](const QString &path) {
        ShowPictureItem(path);
        if (isLoaded<checkjpg>())
            form<checkjpg>().picBackupImage = form<checkjpg>().Gvbox2.picture();
    });
}

void frmMainViewer::showSelectionItemNow()
{
    if (!lstSelect->isSelected(lstSelect->listIndex())) {
        UpdateListScrollWidth(lstSelect);
        return;
    }
    const double zoom = GetZoomFactor();
    if (mnuSlideShowFullScreen->isChecked())
        mnuSlideShowFullScreen_Click();
    if (mnuSlideShowRunSlideShow->isChecked())
        mnuSlideShowRunSlideShow_Click();
    showByKind(*lstSelect, [this, zoom](const QString &path) { ShowPictureInViewer(path, false, zoom); });
}

/// Sends the current entry of a list to the pane of its kind and tells it in the status bar. A file that is gone leaves
/// what is on show.
void frmMainViewer::showByKind(const ListBox &list, const std::function<void(const QString &path)> &showPicture)
{
    const QString path = list.text();
    const bool motion = GetMediaKind(path) == kindMotion;
    const bool exists = FileExists(path);
    if (exists && !motion) {
        tmrShowPlayTime.stop();
        // From a video to a picture that is still on its way there is no empty pane between them.
        std::optional<FrameHeld> held;
        if (globals.MediaPlayerVersion == 9.0f && (wmp9->isVisible() || !wmp9->url().isEmpty())) {
            held.emplace(centralWidget());
            wmp9->hide();
            wmp9->setUrl(QString());
        }
        if (!mnuViewFullWidthList->isChecked())
            Picture1->show();
        showPicture(path);
    } else if (exists) {
        Picture1->hide();
        Image1->setPicture(nullptr);
        PlayMotionItem(path, 0);
    }
    // A click inside one of the yields wants another item on show.
    if (m_showNext != Show::Nothing || globals.ProgramExiting || list.text() != path)
        return;
    if (&list == lstDisplay)
        CurrentPicture->setText(QString::number(globals.CurrentListIndex));
    if (exists)
        ShowStatusBarText(path, !motion);
    else
        ShowStatusBarText(path + notAvailable(), false);
    UpdateMenuAndToolbarState();
}

void frmMainViewer::ShowPictureItem(const QString &path)
{
    CurrentPicture->setText(QString::number(globals.CurrentListIndex));
    if (FileExists(path)) {
        lstDisplay->setSelected(globals.CurrentListIndex - 1, true);
        const double zoom = GetZoomFactor();
        ShowPictureInViewer(path, false, zoom);
        if (m_showNext == Show::Nothing && !globals.ProgramExiting)
            ShowStatusBarText(path, true);
    } else {
        ShowStatusBarText(FileNameOfPath(path) + notAvailable(), false);
    }
    Yield();
}

void frmMainViewer::PlayMotionItem(const QString &path, int setPosition)
{
    const int ticket = ++m_displayTicket;
    if (setPosition == 1)
        CurrentPicture->setText(QString::number(globals.CurrentListIndex));
    if (!FileExists(path)) {
        tmrShowPlayTime.stop();
        ShowStatusBarText(FileNameOfPath(path) + notAvailable(), false);
        updatePlayTimePanel();
        Yield();
        return;
    }
    const bool present = globals.MediaPlayerVersion == 9.0f;
    if (present) {
        wmp9->stop();
        wmp9->setGeometry(Picture1->geometry());
    }
    ApplyStoredVolume();
    Picture1->hide();
    if (present && !mnuViewFullWidthList->isChecked()) {
        wmp9->show();
        wmp9->raise();
    }
    Yield();
    if (m_displayTicket != ticket || globals.ProgramExiting)
        return;
    if (present)
        wmp9->setUrl(path);
    Yield();
    if (m_displayTicket != ticket || globals.ProgramExiting)
        return;
    if (present) {
        if (globals.AutoPlayMotion) {
            wmp9->play();
            tmrShowPlayTime.start();
        } else {
            wmp9->stop();
        }
    }
    if (globals.AutoPlayOnce) {
        globals.AutoPlayMotion = isShowRunning();
        globals.AutoPlayOnce = false;
    }
    Yield();
    if (m_displayTicket != ticket || globals.ProgramExiting)
        return;
    if (setPosition == 1)
        lstDisplay->setSelected(globals.CurrentListIndex - 1, true);
    ShowStatusBarText(FileNameOfPath(path), false);
    updatePlayTimePanel();
    Yield();
}

void frmMainViewer::ShowPictureInViewer(const QString &path, bool alreadyDecoded, double zoom)
{
    // A new size or zoom belongs to the picture that is on its way, and must not leave its decode out.
    if (m_showing && alreadyDecoded)
        m_pictureNext.zoom = zoom;
    else
        m_pictureNext = {path, alreadyDecoded, zoom};
    m_pictureWaits = true;
    ++m_displayTicket;
    if (m_showing)
        return;
    const ScopedFlag showing(m_showing);
    while (std::exchange(m_pictureWaits, false) && !globals.ProgramExiting) {
        const auto wanted = m_pictureNext;
        showPictureNow(wanted.path, wanted.alreadyDecoded, wanted.zoom);
    }
}

void frmMainViewer::showPictureNow(const QString &path, bool alreadyDecoded, double zoom)
{
    const int ticket = m_displayTicket;
    if (m_itemBeforeWheel != 0) {
        leaveFreeZoom();
        zoom = GetZoomFactor();
    }
    UpdateMenuAndToolbarState();
    Yield();
    if (m_displayTicket != ticket || globals.ProgramExiting)
        return;
    // Over the full screen window the pointer is out of sight and stays so.
    std::optional<Hourglass> hourglass;
    if (!frmSlideShowFullScreen::isUp())
        hourglass.emplace();
    if (path.trimmed().isEmpty() || !FileExists(path))
        return;
    globals.CurrentMediaFile = path;
    ReadImageInfo(path, globals.ImageWidth, globals.ImageHeight, globals.ImageColorDepth);
    Yield();
    if (m_displayTicket != ticket || globals.ProgramExiting)
        return;
    const QSize pane = paneSize();
    globals.OriginalImageWidth = globals.ImageWidth;
    globals.OriginalImageHeight = globals.ImageHeight;
    StatusBar1->setPanelText(4, QString::number(zoom * 100) + QLatin1Char('%'));
    const QSize size = fitIntoPane(QSize(globals.ImageWidth, globals.ImageHeight), zoom, pane);
    if (!alreadyDecoded)
        LoadImageIntoViewer(path);
    if (m_displayTicket != ticket || globals.ProgramExiting)
        return;
    globals.ImageWidth = size.width();
    globals.ImageHeight = size.height();
    placeImage(size, pane);
    Yield();
}

void frmMainViewer::placeImage(QSize size, QSize pane)
{
    const bool stretched = form<frmPreferences>().chkStretch->isChecked();
    if (stretched) {
        Image1->setGeometry(Picture1->rect());
    } else {
        Image1->setGeometry(onDesktop(placeInPane(size, pane, false), devicePixelRatioF()));
    }
    Image1->show();
}

/// The pane in the pixels of the screen: at a zoom of 100 % one pixel of the picture is one of the screen, at any scale
/// of the desktop.
QSize frmMainViewer::paneSize() const
{
    const double ratio = devicePixelRatioF();
    return {int(Picture1->width() * ratio), int(Picture1->height() * ratio)};
}

/// Room on the desktop for a picture of that many pixels of the screen.
QSize frmMainViewer::sizeOnScreen(QSize pixels) const
{
    return onDesktop(QRect(QPoint(), pixels), devicePixelRatioF()).size();
}

void frmMainViewer::ShowStatusBarText(const QString &text, bool withDimensions)
{
    const StatusText status = statusText(text, withDimensions);
    StatusBar1->setPanelText(2, displayPath(status.name));
    if (withDimensions) {
        ReadImageInfo(text, globals.ImageWidth, globals.ImageHeight, globals.ImageColorDepth);
        StatusBar1->setPanelText(
            3, dimensionsText(globals.ImageWidth, globals.ImageHeight, double(globals.ImageColorDepth)));
    }
    if (!text.isEmpty())
        ShowFileTypeIcon(status.extension);
}

void frmMainViewer::ShowFileTypeIcon(const QString &extension)
{
    const QLatin1String code = fileTypeIconCode(extension);
    if (code.isEmpty())
        return;
    const QIcon icon = fileTypeIcon(code);
    if (!icon.isNull())
        StatusBar1->setPanelIcon(2, icon);
}

void frmMainViewer::OpenDisplayItem()
{
    globals.CurrentListIndex = lstDisplay->listIndex() + 1;
    CurrentPicture->setText(QString::number(globals.CurrentListIndex));
    if (lstDisplay->text().isEmpty())
        return;
    if (GetMediaKind(lstDisplay->text()) != kindMotion) {
        mnuPictureViewer_Click();
        UpdateListScrollWidth(lstDisplay);
    } else if (globals.MediaPlayerVersion == 9.0f) {
        wmp9->play();
    }
}

int frmMainViewer::photoCDSizeIndex() const
{
    const auto &sizes = form<frmPreferences>().optPhotoCDSize;
    for (int i = sizes.first; i <= sizes.last; ++i) {
        if (sizes[i]->isChecked())
            return i;
    }
    return 0;
}

/// Pixels that a picture is decoded for: the pane, and the full screen window while it is up.
QSize frmMainViewer::displayTarget() const
{
    const QSize target = paneSize().expandedTo(QSize(64, 64));
    return frmSlideShowFullScreen::isUp() ? target.expandedTo(form<frmSlideShowFullScreen>().paneSize()) : target;
}

void frmMainViewer::ReadImageInfo(const QString &path, int &width, int &height, float &depth)
{
    const QLatin1String kind = GetMediaKind(path);
    if (kind == kindMotion)
        return;
    auto &support = form<checkjpg>();
    if (kind == kindPoly) {
        const int sizeIndex = usesPhotoCDSize(path) ? photoCDSizeIndex() : -1;
        if (!support.polImageBox1.PolyLoad(path, sizeIndex, displayTarget()))
            return;
        depth = float(support.polImageBox1.PolyBitsPerPixel());
        width = support.polImageBox1.PolyWidth();
        height = support.polImageBox1.PolyHeight();
        return;
    }
    if (!support.Gvbox2.load(path, displayTarget()))
        return;
    // A GIF comes through another loader that tells no depth: the number of the picture before stays.
    if (!path.contains(QLatin1String(".GIF"), Qt::CaseInsensitive))
        depth = float(support.Gvbox2.bitsPerPixel());
    width = support.Gvbox2.width();
    height = support.Gvbox2.height();
}

void frmMainViewer::LoadImageIntoViewer(const QString &path)
{
    const QLatin1String kind = GetMediaKind(path);
    if (kind == kindMotion)
        return;
    auto &support = form<checkjpg>();
    const int ticket = m_displayTicket;
    bool loaded = false;
    if (kind == kindPoly) {
        loaded = support.polImageBox1.PolyLoad(path, usesPhotoCDSize(path) ? photoCDSizeIndex() : -1, displayTarget());
        Yield();
        if (m_displayTicket != ticket)
            return;
        if (loaded)
            support.Gvbox2.setPicture(support.polImageBox1.held());
    } else {
        loaded = support.Gvbox2.load(path, displayTarget());
        // Saving takes what `polImageBox1` holds, whoever decoded it.
        if (loaded)
            support.polImageBox1.setPolyPicture(support.Gvbox2.picture());
    }
    Yield();
    Yield();
    if (m_displayTicket != ticket || globals.ProgramExiting)
        return;
    // A file that cannot be decoded leaves the picture before on the pane.
    if (loaded)
        Image1->setPicture(support.Gvbox2.picture());
}

void frmMainViewer::prefetchNeighbours()
{
    if (isShowRunning()) {
        prefetchForShow();
        return;
    }
    const ListBox *list = tabFileList->currentIndex() == 0 && !frmSlideShowFullScreen::isUp() ? lstSelect : lstDisplay;
    const int at = list->listIndex();
    QStringList paths;
    for (const int step : {1, -1, 2}) {
        const QString path = list->itemText(at + step);
        if (!path.isEmpty() && GetMediaKind(path) != kindMotion && !usesPhotoCDSize(path))
            paths.append(path);
    }
    PictureCache::instance().prefetch(paths, -1, displayTarget(), scalingForPanes());
}

/// Scales a picture that was decoded ahead to the places that it will have; runs on the threads of the cache.
std::function<void(const LoadedPicture &picture)> frmMainViewer::scalingForPanes() const
{
    struct Pane
    {
        QSize pixels;
        QSize stretchedTo; ///< empty: the picture is fitted
        double zoom;
        double ratio;
    };
    const bool stretched = form<frmPreferences>().chkStretch->isChecked();
    QVector<Pane> panes{
        {paneSize(), stretched ? Picture1->size() : QSize(), GetZoomFactor(), Picture1->devicePixelRatioF()}};
    if (frmSlideShowFullScreen::isUp()) {
        const auto &window = form<frmSlideShowFullScreen>();
        panes.append({window.paneSize(), QSize(), 1, window.devicePixelRatioF()});
    }
    return [panes](const LoadedPicture &picture) {
        for (const Pane &pane : panes) {
            const QRect fitted(QPoint(), fitIntoPane(picture.info().size, pane.zoom, pane.pixels));
            const QSize place = pane.stretchedTo.isEmpty() ? onDesktop(fitted, pane.ratio).size() : pane.stretchedTo;
            ImagePane::prepare(picture, place, pane.ratio);
        }
    };
}
