#include "viewer/frmMainViewer.h"

#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "engine/picturecache.h"
#include "platform/dialogs.h"
#include "platform/files.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmSlideShowFullScreen.h"
#include "viewer/mediashow.h"
#include "viewer/shuffle.h"

#include <QMenu>

// The Media Show: the check marks of its menu are its state, and they are read afresh at each step, because every yield
// may let a click in that turns them. A routine that goes on after a yield looks whether the show that it works for is
// still the same (`m_showTicket`).

namespace {

constexpr int millisecondsPerSecond = 1000;
constexpr int positionsLookedAhead = 8; ///< for the next pictures among sounds, videos and files that are gone
constexpr int picturesDecodedAhead = 2;

int countOf(const QLabel *label)
{
    return label->text().toInt();
}

}

// --- the menu

/// In each group exactly one item is checked by a click; what the store holds at start is taken as it is.
void frmMainViewer::chooseOneOf(const QVector<std::pair<QAction *, const char *>> &group)
{
    for (const auto &choice : group) {
        connect(choice.first, &QAction::triggered, this, [this, group, chosen = choice.first] {
            for (const auto &[item, key] : group) {
                item->setChecked(item == chosen);
                saveOption(key, truthText(item == chosen));
            }
            mnuSlideShowShuffleMediaFile->setEnabled(mnuSlideShowShuffleOrder->isChecked());
            mnuSlideShowResetShuffleHistory->setEnabled(mnuSlideShowShuffleOrder->isChecked());
            prefetchForShow();
        });
    }
}

void frmMainViewer::makeSlideShowItems()
{
    const char *const captions[] = {QT_TR_NOOP("Full Screen Show"), QT_TR_NOOP("Main Viewer Show")};
    for (int i = 0; i < 2; ++i) {
        QAction *action = mnuSlideShowToolbar->menu()->addAction(tr(captions[i]));
        action->setObjectName(QStringLiteral("mnuSlideShowToolbarButton(%1)").arg(i));
        action->setShortcut(QKeySequence(i == 0 ? QStringLiteral("Ctrl+Shift+8") : QStringLiteral("Ctrl+Shift+9")));
        action->setCheckable(true);
        mnuSlideShowToolbarButton[size_t(i)] = action;
    }
    chooseOneOf({{mnuSlideShowForwardOrder, "SlideShowForward"}, {mnuSlideShowReverseOrder, "SlideShowReverse"},
        {mnuSlideShowShuffleOrder, "SlideShowShuffle"}});
    chooseOneOf(
        {{mnuSlideShowViewerOnly, "SlideShowViewerOnly"}, {mnuSlideshowDesktopCentered, "SlideshowDesktopCentered"},
            {mnuSlideshowDesktopStretched, "SlideshowDesktopStretched"}});
    chooseOneOf({{mnuSlideShowToolbarButton[0], "MediaToolBar0"}, {mnuSlideShowToolbarButton[1], "MediaToolBar1"}});
    connect(mnuSlideShowLoopAround, &QAction::triggered, this, [this] {
        saveOption("MediaShowLoop", truthText(mnuSlideShowLoopAround->isChecked()));
        prefetchForShow();
    });
    // On once there is an icon to come back by.
    mnuOptionsMinimizeSystemTray->setEnabled(false);
    connect(mnuOptionsMinimizeSystemTray, &QAction::triggered, this,
        [this] { saveOption("SystemTrayIcon", truthText(mnuOptionsMinimizeSystemTray->isChecked())); });
    // The two handlers turn the mark themselves, from wherever they are called: a click's own turn is taken back first.
    connect(mnuSlideShowRunSlideShow, &QAction::triggered, this, [this](bool checked) {
        mnuSlideShowRunSlideShow->setChecked(!checked);
        mnuSlideShowRunSlideShow_Click();
    });
    connect(mnuSlideShowFullScreen, &QAction::triggered, this, [this](bool checked) {
        mnuSlideShowFullScreen->setChecked(!checked);
        mnuSlideShowFullScreen_Click();
        // At the end of a list the last picture stands on; whoever stops the show here wants it gone.
        if (!mnuSlideShowFullScreen->isChecked() && !checked)
            unload<frmSlideShowFullScreen>();
    });
    mnuSlideShowFullViewer->setVisible(false);
}

void frmMainViewer::toolbarNext_Click()
{
    if (mnuSlideShowShuffleOrder->isChecked())
        PickShuffleItem();
    else
        NextListItem();
}

void frmMainViewer::toolbarSlide_Click()
{
    if (mnuSlideShowFullScreen->isChecked())
        mnuSlideShowFullScreen->trigger();
    else if (mnuSlideShowRunSlideShow->isChecked() || !mnuSlideShowToolbarButton[0]->isChecked())
        mnuSlideShowRunSlideShow_Click();
    else
        mnuSlideShowFullScreen_Click();
}

void frmMainViewer::mnuSlideShowInterval_Click()
{
    if (globals.SlideShowInterval == 0)
        globals.SlideShowInterval = usualSlideInterval;
    while (!globals.ProgramExiting) {
        const std::optional<QString> answer = dialogs().inputText(this, tr("Slide Interval"),
            tr("Please enter slide interval in seconds (1 - 30):"), QString::number(globals.SlideShowInterval));
        if (!answer || answer->isEmpty())
            break;
        if (const std::optional<int> seconds = slideIntervalFromText(*answer)) {
            globals.SlideShowInterval = *seconds;
            break;
        }
    }
    if (tmrSlideShow.isActive())
        startShowTimer();
}

// --- start and end

bool frmMainViewer::isShowRunning() const
{
    return mnuSlideShowRunSlideShow->isChecked() || mnuSlideShowFullScreen->isChecked();
}

void frmMainViewer::startShowTimer()
{
    if (globals.SlideShowInterval == 0)
        globals.SlideShowInterval = usualSlideInterval;
    tmrSlideShow.start(globals.SlideShowInterval * millisecondsPerSecond);
    if (isLoaded<frmSlideShowFullScreen>())
        form<frmSlideShowFullScreen>().showPaused(false);
}

/// What both kinds of show begin with.
void frmMainViewer::beginShow()
{
    ++m_showTicket;
    globals.AutoPlayMotion = true;
    toolbarButton(QStringLiteral("slide"))->setChecked(true);
    startShowTimer();
    m_showAwake.hold();
}

void frmMainViewer::endShow()
{
    ++m_showTicket;
    m_showAwake.release();
    globals.AutoPlayMotion = false;
    toolbarButton(QStringLiteral("slide"))->setChecked(false);
    tmrSlideShow.stop();
    tmrShowPlayTime.stop();
    tmrSlideShow.setInterval(0);
    if (isLoaded<frmSlideShowFullScreen>())
        form<frmSlideShowFullScreen>().showPaused(false);
    if (globals.MediaPlayerVersion == 9.0f) {
        wmp9->stop();
        wmp9->setCurrentPosition(0);
    }
}

void frmMainViewer::leaveFullScreenShow()
{
    mnuSlideShowFullScreen->setText(tr("&Start Full Screen Media Show"));
    mnuSlideShowFullScreen->setChecked(false);
    mnuSlideShowFullViewer->setVisible(false);
}

void frmMainViewer::mnuSlideShowRunSlideShow_Click()
{
    sizeShuffleHistory(countOf(lblCount));
    // A stop that was asked for: the show counts as running, so that this click ends it.
    if (std::exchange(globals.ShowStopRequested, false))
        mnuSlideShowRunSlideShow->setChecked(true);
    mnuSlideShowRunSlideShow->setChecked(!mnuSlideShowRunSlideShow->isChecked());
    const bool starts = mnuSlideShowRunSlideShow->isChecked();
    mnuSlideShowRunSlideShow->setText(starts ? tr("S&top Media Show") : tr("S&tart Media Show"));
    if (starts)
        beginShow();
    else
        endShow();
    // The two shows exclude each other, and a stopped one leaves no window behind.
    if (mnuSlideShowFullScreen->isChecked()) {
        leaveFullScreenShow();
        unload<frmSlideShowFullScreen>();
    }
    if (!starts)
        return;
    const int ticket = m_showTicket;
    Yield();
    if (m_showTicket == ticket && !globals.ProgramExiting)
        ChangeSlides();
}

void frmMainViewer::mnuSlideShowFullScreen_Click()
{
    sizeShuffleHistory(countOf(lblCount));
    if (mnuSlideShowFullScreen->isChecked()) {
        leaveFullScreenShow();
        endShow();
        return;
    }
    mnuSlideShowFullScreen->setChecked(true);
    if (mnuSlideShowRunSlideShow->isChecked()) {
        mnuSlideShowRunSlideShow->setChecked(false);
        mnuSlideShowRunSlideShow->setText(tr("S&tart Media Show"));
    }
    mnuSlideShowFullViewer->setVisible(true);
    mnuSlideShowFullScreen->setText(tr("&Stop Full Screen Media Show"));
    beginShow();
    const int ticket = m_showTicket;
    Yield();
    if (m_showTicket != ticket || globals.ProgramExiting)
        return;
    mnuSlideShowFullViewer_Click();
    ChangeSlides();
}

void frmMainViewer::stopRunningShow()
{
    if (mnuSlideShowFullScreen->isChecked())
        mnuSlideShowFullScreen_Click();
    else if (mnuSlideShowRunSlideShow->isChecked())
        mnuSlideShowRunSlideShow_Click();
}

// --- one step of a show

void frmMainViewer::tmrSlideShow_Timer()
{
    // A tick that finds the step before, or work on the lists, under way is passed over.
    if (globals.ProgramExiting || globals.ItemSelectionBusy || m_changingSlides || m_stepping)
        return;
    if (GetMediaKind(lstDisplay->text()) != kindMotion) {
        tmrShowPlayTime.stop();
    } else {
        if (!tmrShowPlayTime.isActive())
            tmrShowPlayTime.start();
        if (globals.MediaPlayerVersion == 9.0f && wmp9->playState() != Player::Stopped)
            return;
    }
    if (globals.AutoPlayMotion && CurrentPicture->text() != QLatin1String("0"))
        ChangeSlides();
}

void frmMainViewer::ChangeSlides()
{
    m_changeSlidesAgain = m_changingSlides;
    if (m_changingSlides)
        return;
    const ScopedFlag changing(m_changingSlides);
    do {
        changeSlidesOnce();
    } while (std::exchange(m_changeSlidesAgain, false) && isShowRunning() && !globals.ProgramExiting);
}

void frmMainViewer::changeSlidesOnce()
{
    const int ticket = m_showTicket;
    const auto isOver = [&] { return m_showTicket != ticket || globals.ProgramExiting || lstDisplay->isEmpty(); };
    if (isOver())
        return;
    // Full screen the picture comes first, and the list and the pane behind it are painted afterwards.
    std::optional<FrameHeld> held;
    if (mnuSlideShowFullScreen->isChecked())
        held.emplace(centralWidget());
    if (mnuSlideShowShuffleOrder->isChecked()) {
        if (shuffleOn())
            showShuffled();
    } else {
        if (mnuSlideShowForwardOrder->isChecked())
            NextListItem();
        // Both marks may be set by the store; the two steps then take each other back.
        if (!isOver() && mnuSlideShowReverseOrder->isChecked())
            PreviousListItem();
    }
    if (isOver())
        return;
    const QString path = lstDisplay->text();
    const bool motion = GetMediaKind(path) == kindMotion;
    if (motion) {
        globals.AutoPlayMotion = true;
        // An item that is gone has left the one before in the player, and that has been played.
        const bool inPlayer = globals.MediaPlayerVersion == 9.0f && wmp9->url() == path;
        if (inPlayer && wmp9->playState() != Player::Playing)
            wmp9->play();
    }
    if (mnuSlideshowDesktopCentered->isChecked() && !motion) {
        mnuPictureWallPaperCentered_Click();
        Yield();
    }
    if (!isOver() && mnuSlideshowDesktopStretched->isChecked() && !motion) {
        mnuPictureWallPaperStretched_Click();
        Yield();
    }
    if (!isOver() && mnuSlideShowFullScreen->isChecked()) {
        ShowInFullScreen();
        Yield();
    }
    held.reset();
    Yield();
    if (!isOver())
        prefetchForShow();
}

/// Decodes the next picture, so that its step finds it ready, and then the one after it: a busy machine may need the
/// time of two steps for one of them.
void frmMainViewer::prefetchForShow()
{
    if (!isShowRunning())
        return;
    const ShowOrder order{mnuSlideShowShuffleOrder->isChecked(), mnuSlideShowForwardOrder->isChecked(),
        mnuSlideShowReverseOrder->isChecked(), mnuSlideShowLoopAround->isChecked()};
    QStringList paths;
    for (const int position :
        positionsAhead(order, globals.CurrentListIndex, countOf(lblCount), positionsLookedAhead)) {
        const QString path = lstDisplay->itemText(position - 1);
        if (paths.size() < picturesDecodedAhead && GetMediaKind(path) != kindMotion && FileExists(path))
            paths.append(path);
    }
    PictureCache::instance().prefetch(paths, photoCDSizeIndex(), displayTarget(), scalingForPanes());
}

// --- shuffle

/// Makes the history ready for another draw. False when it is at its end and the show has been stopped.
bool frmMainViewer::shuffleOn()
{
    const int count = countOf(lblCount);
    if (!shuffleHistoryFits(count))
        sizeShuffleHistory(count);
    if (!isShuffleOver())
        return true;
    if (!mnuSlideShowLoopAround->isChecked()) {
        stopRunningShow();
        return false;
    }
    clearShuffleHistory();
    return true;
}

void frmMainViewer::showShuffled()
{
    const int position = takeShufflePosition();
    if (position == 0)
        return;
    globals.CurrentListIndex = position;
    lstDisplay->setSelected(lstDisplay->listIndex(), false);
    lstDisplay->setSelected(position - 1, true);
}

void frmMainViewer::PickShuffleItem()
{
    if (lstDisplay->isEmpty() || m_stepping)
        return;
    const ScopedFlag stepping(m_stepping);
    int count = countOf(lblCount);
    if (!shuffleHistoryFits(count))
        sizeShuffleHistory(count);
    if (isShuffleOver() && mnuSlideShowLoopAround->isChecked()) {
        clearShuffleHistory();
    } else if (isShuffleOver()) {
        if (dialogs().show(this, shuffleOverBox()) != MessageBox::Answer::Yes || globals.ProgramExiting)
            return;
        mnuSlideShowResetShuffleHistory_Click();
        // The list may be another one since the question was put.
        count = countOf(lblCount);
        if (!shuffleHistoryFits(count))
            sizeShuffleHistory(count);
    }
    if (!globals.ProgramExiting)
        showShuffled();
}

void frmMainViewer::mnuSlideShowShuffleMediaFile_Click()
{
    PickShuffleItem();
}

void frmMainViewer::mnuSlideShowResetShuffleHistory_Click()
{
    clearShuffleHistory();
    dialogs().show(this, shuffleHistoryResetBox());
}
