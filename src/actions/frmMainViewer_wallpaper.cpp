#include "viewer/frmMainViewer.h"

#include "actions/wallpaper.h"
#include "platform/desktoptools.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmSlideShowFullScreen.h"

#include <QLoggingCategory>

#include <optional>

// The picture on the pane as the desktop's wallpaper. The show's wallpaper runs call the same commands.

namespace {

Q_LOGGING_CATEGORY(wallpaper, "lumora.wallpaper", QtWarningMsg)

/// What the pane holds, not the file it came from. Nothing on the pane is no wallpaper.
void setFromPane(const ImagePane &pane, bool centered, bool stretched)
{
    const auto picture = pane.picture();
    if (!picture)
        return;
    {
        // Over the full screen window the pointer is out of sight and stays so.
        std::optional<Hourglass> hourglass;
        if (!frmSlideShowFullScreen::isUp())
            hourglass.emplace();
        // A file that could not be written leaves the one before in its place, and that is shown.
        if (const auto saved = saveWallpaperPicture(*picture); !saved)
            qCWarning(wallpaper, "picture not written: %s", qPrintable(saved.reason()));
        SetWallpaper(wallpaperFileName(), centered, stretched);
    }
    Yield();
}

}

void frmMainViewer::mnuPictureWallPaperCentered_Click()
{
    setFromPane(*Image1, true, false);
}

void frmMainViewer::mnuPictureWallPaperStretched_Click()
{
    setFromPane(*Image1, true, true);
}

void frmMainViewer::mnuPictureWallPaperTiled_Click()
{
    setFromPane(*Image1, false, false);
}

void frmMainViewer::mnuPictureWallPaperClear_Click()
{
    SetWallpaper(QString(), false, false);
}

void frmMainViewer::mnuPictureWallPaperRestore_Click()
{
    RestoreWallpaper();
}

void frmMainViewer::mnuOptionsDisplayOptions_Click()
{
    if (!openDesktopTool(DesktopTool::DisplaySettings))
        qCWarning(wallpaper, "this desktop has no known display settings");
}
