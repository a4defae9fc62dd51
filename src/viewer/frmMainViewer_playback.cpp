#include "viewer/frmMainViewer.h"

#include "app/globals.h"
#include "app/settings.h"
#include "platform/desktoptools.h"
#include "platform/dialogs.h"
#include "ui/yield.h"
#include "viewer/frmSlideShowFullScreen.h"

#include <algorithm>

namespace {

/// Hours, minutes and seconds as "00 : 01 : 30".
QString longTime(double seconds)
{
    // Damaged files tell anything: what is no number is the start, and sixty years are the most.
    const auto whole = qint64(std::min(std::max(0.0, seconds), 2e9));
    const auto twoDigits = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    return QStringList{twoDigits(whole / 3600), twoDigits(whole / 60 % 60), twoDigits(whole % 60)}.join(
        QStringLiteral(" : "));
}

}

void frmMainViewer::wmp9_PlayStateChange(int newState)
{
    if (newState == Player::Stopped) {
        tmrShowPlayTime.stop();
        // The player also stops when a picture takes its place, whose dimensions stand in the panel.
        if (!wmp9->url().isEmpty())
            updatePlayTimePanel();
    } else if (newState == Player::Playing) {
        ApplyStoredVolume();
        tmrShowPlayTime.start();
    }
}

void frmMainViewer::tmrShowPlayTime_Timer()
{
    Yield();
    // A picture that came up meanwhile has the panel.
    if (globals.ProgramExiting || globals.MediaPlayerVersion != 9.0f || wmp9->url().isEmpty()) {
        tmrShowPlayTime.stop();
        return;
    }
    updatePlayTimePanel();
    if (wmp9->playState() == Player::Stopped) {
        tmrShowPlayTime.stop();
        return;
    }
    tmrShowPlayTime.start();
    // The store follows the player, so the next item has the volume chosen on this one's bar.
    const QString volume = QString::number(wmp9->volume());
    if (option("MMVolume", "100") != volume)
        saveOption("MMVolume", volume);
    Yield();
    Yield();
}

void frmMainViewer::ApplyStoredVolume()
{
    if (globals.MediaPlayerVersion == 9.0f)
        wmp9->setVolume(qBound(0, number(option("MMVolume", "100")).value_or(100), 100));
}

void frmMainViewer::ShowPlayTime()
{
    if (globals.MediaPlayerVersion != 9.0f)
        return;
    const QString text = longTime(wmp9->currentPosition()) + QStringLiteral(" | ") + longTime(wmp9->duration());
    StatusBar1->setPanelText(3, text);
    if (mnuSlideShowFullScreen->isChecked() && frmSlideShowFullScreen::isUp())
        form<frmSlideShowFullScreen>().showPlayTime(text);
}

/// The panel is empty while nothing plays: the dimensions of a picture before say nothing of a sound or a video.
void frmMainViewer::updatePlayTimePanel()
{
    if (wmp9->playState() == Player::Stopped)
        StatusBar1->setPanelText(3, QString());
    else
        ShowPlayTime();
}

void frmMainViewer::mnuToolsVolumeControls_Click()
{
    if (openDesktopTool(DesktopTool::VolumeControl))
        return;
    MessageBox box;
    box.title = tr("Volume Controls");
    box.text = tr("No program for the volume controls of this desktop is installed. The package pavucontrol holds one "
                  "that works on every desktop.");
    box.icon = MessageBox::Icon::Information;
    dialogs().show(this, box);
}
