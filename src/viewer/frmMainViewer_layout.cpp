#include "viewer/frmMainViewer.h"

#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "shell/frmPreferences.h"
#include "ui/background.h"
#include "ui/guards.h"
#include "ui/twips.h"
#include "ui/yield.h"
#include "viewer/fit.h"

#include <QGuiApplication>
#include <QMenuBar>
#include <QScreen>
#include <QTabBar>

#include <utility>

namespace {

constexpr int margin = 4;
constexpr int narrowPane = 25; ///< width of the list pane while the picture has the window
constexpr QSize smallestSize(pixelsFromTwips(9500), pixelsFromTwips(6400));

}

void frmMainViewer::Form_Resize()
{
    m_layOutAgain = true;
    if (m_layingOut)
        return;
    const ScopedFlag layingOut(m_layingOut);
    while (std::exchange(m_layOutAgain, false) && !globals.ProgramExiting)
        layOutNow();
}

void frmMainViewer::layOutNow()
{
    if (isMinimized())
        return;
    // A maximised window below the minimum is made normal, sized, and maximised again.
    if (width() < smallestSize.width() || height() < smallestSize.height()) {
        const bool maximised = isMaximized();
        if (maximised)
            showNormal();
        resize(size().expandedTo(smallestSize));
        if (maximised)
            showMaximized();
    }
    const QRect client = clientRect();
    const bool wideViewer = mnuViewFullPlayerImage->isChecked();
    const bool wideList = mnuViewFullWidthList->isChecked();
    int listWidth = qBound(270, client.width() * 30 / 100, 430);
    if (wideViewer)
        listWidth = narrowPane;
    else if (wideList)
        listWidth = client.width();
    picFileListBox->setGeometry(client.left(), client.top(), listWidth, client.height());
    layOutListPane(picFileListBox->rect());

    const int paneLeft = client.left() + listWidth + (wideViewer ? 0 : margin);
    Picture1->setGeometry(paneLeft, client.top(), qMax(1, client.right() + 1 - paneLeft), client.height());
    if (globals.MediaPlayerVersion == 9.0f)
        wmp9->setGeometry(Picture1->geometry());
    ApplyColorMenu(globals.ColorMNU);
    if (!globals.CurrentMediaFile.isEmpty() && GetMediaKind(globals.CurrentMediaFile) != kindMotion)
        ShowPictureInViewer(globals.CurrentMediaFile, true, GetZoomFactor());
}

QRect frmMainViewer::clientRect() const
{
    // Never at the very top: a list pane at 0 means that nothing has been laid out yet.
    return centralWidget()->rect().adjusted(margin, margin, -margin, -margin);
}

void frmMainViewer::Picture1_Resize()
{
    if (globals.MediaPlayerVersion == 9.0f)
        wmp9->setGeometry(Picture1->geometry());
    // A picture on show is placed by the fit rules right after; only an empty one keeps the whole pane.
    if (Image1->isEmpty())
        Image1->setGeometry(Picture1->rect());
}

void frmMainViewer::layOutListPane(const QRect &rect)
{
    const bool narrow = mnuViewFullPlayerImage->isChecked();
    const int toggle = 22;
    if (narrow) {
        cmdWideMediaPlayer->setGeometry(1, 0, narrowPane - 3, toggle);
        cmdWideList->setGeometry(1, toggle + 2, narrowPane - 3, toggle);
        return;
    }
    const int row = qMax(cmdUp->sizeHint().height(), 26);
    const int half = (rect.width() - margin) / 2;
    int bottom = rect.bottom() + 1;
    const auto label = [&](QLabel *control, int left, int width, int height) {
        control->setGeometry(left, bottom - height, width, height);
    };
    const auto pair = [&](QPushButton *left, QPushButton *right) {
        bottom -= row;
        left->setGeometry(0, bottom, half, row);
        right->setGeometry(half + margin, bottom, rect.width() - half - margin, row);
        bottom -= margin;
    };
    const int textHeight = fontMetrics().height() + 4;
    label(txtPrgTitle, 0, rect.width(), textHeight);
    bottom -= textHeight + 2;
    const auto width = [](const QLabel *control, const QString &text) {
        return control->fontMetrics().horizontalAdvance(text) + 6;
    };
    const int countLabel = width(lblCountLabel, lblCountLabel->text());
    const int useLabel = width(lblItemUseLabel, lblItemUseLabel->text());
    label(lblCountLabel, 0, countLabel, textHeight);
    label(lblCount, countLabel, half - countLabel, textHeight);
    label(lblItemUseLabel, half + margin, useLabel, textHeight);
    label(CurrentPicture, half + margin + useLabel, rect.width() - half - margin - useLabel, textHeight);
    bottom -= textHeight + margin;
    pair(cmdUp, cmdDown);
    pair(cmdRightAll, cmdLeftAll);
    pair(cmdRightOne, cmdLeftOne);
    bottom -= row;
    cmdClearSelectionList->setGeometry(0, bottom, rect.width(), row);
    bottom -= margin;
    tabFileList->setGeometry(0, 0, rect.width(), qMax(40, bottom));
    // The two width toggles stand at the right end of the tabs' row.
    cmdWideMediaPlayer->setGeometry(rect.width() - 2 * (toggle + 4), 2, toggle + 2, toggle);
    cmdWideList->setGeometry(rect.width() - (toggle + 4), 2, toggle + 2, toggle);
    cmdWideMediaPlayer->raise();
    cmdWideList->raise();
}

void frmMainViewer::mnuViewFullPlayerImage_Click()
{
    const bool on = mnuViewFullPlayerImage->isChecked();
    cmdWideMediaPlayer->setText(on ? QStringLiteral(">") : QStringLiteral("<"));
    const std::initializer_list<QWidget *> listControls = {tabFileList, cmdClearSelectionList, cmdRightOne, cmdRightAll,
        cmdLeftOne, cmdLeftAll, cmdUp, cmdDown, lblCountLabel, lblCount, lblItemUseLabel, CurrentPicture, txtPrgTitle};
    for (QWidget *control : listControls)
        control->setVisible(!on);
    // The hidden list lost the keyboard; the arrows shall step again once it is back.
    if (!on && (!focusWidget() || picFileListBox->isAncestorOf(focusWidget())))
        tabFileList->currentWidget()->setFocus();
    cmdWideList->setEnabled(!on);
    mnuViewFullWidthList->setEnabled(!on);
    const bool playerShown = globals.MediaPlayerVersion == 9.0f && wmp9->isVisible();
    if (playerShown)
        wmp9->hide();
    Form_Resize();
    if (playerShown)
        wmp9->show();
}

void frmMainViewer::mnuViewFullWidthList_Click()
{
    const bool on = mnuViewFullWidthList->isChecked();
    cmdWideList->setText(on ? QStringLiteral("<") : QStringLiteral(">"));
    cmdWideMediaPlayer->setEnabled(!on);
    mnuViewFullPlayerImage->setEnabled(!on);
    // What is on show may come from either list; a picture takes the player's file away.
    const bool motion = globals.MediaPlayerVersion == 9.0f && !wmp9->url().isEmpty();
    Picture1->setVisible(!on && !motion);
    wmp9->setVisible(!on && motion);
    Form_Resize();
}

void frmMainViewer::rememberPlace()
{
    if (!globals.MainViewerActivated)
        return;
    const QRect place = isMaximized() ? normalGeometry() : geometry();
    const QString text = QStringLiteral("%1,%2,%3,%4,%5")
                             .arg(place.x())
                             .arg(place.y())
                             .arg(place.width())
                             .arg(place.height())
                             .arg(isMaximized() ? 1 : 0);
    saveOption("MainViewerPlace", text);
}

void frmMainViewer::restorePlace()
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const QRect available = screen ? screen->availableGeometry() : QRect(0, 0, 1024, 768);
    const QSize wanted(1180, 780);
    QRect place(QPoint(0, 0), wanted.boundedTo(available.size() - QSize(20, 60)).expandedTo(smallestSize));
    place.moveCenter(available.center());
    bool maximised = false;
    const QStringList stored = option("MainViewerPlace", "").split(QLatin1Char(','));
    if (stored.size() == 5) {
        bool ok[5];
        int value[5];
        for (int i = 0; i < 5; ++i)
            value[i] = stored[i].toInt(&ok[i]);
        const QRect wish(value[0], value[1], value[2], value[3]);
        if (ok[0] && ok[1] && ok[2] && ok[3] && ok[4] && wish.width() > 0 && wish.height() > 0 && wish.width() < 65536
            && wish.height() < 65536) {
            const QScreen *on = QGuiApplication::screenAt(wish.center());
            const QRect area = on ? on->availableGeometry() : available;
            place = wish;
            place.setSize(place.size().expandedTo(smallestSize).boundedTo(area.size()));
            place.moveLeft(qBound(area.left(), place.left(), area.right() + 1 - place.width()));
            place.moveTop(qBound(area.top(), place.top(), area.bottom() + 1 - place.height()));
            maximised = value[4] == 1;
        }
    }
    setGeometry(place);
    if (maximised)
        setWindowState(windowState() | Qt::WindowMaximized);
}
