#pragma once

#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

/// How a picture lies on the desktop: in its own size in the middle of every screen, over the whole of every screen
/// whatever its shape, or side by side from the top left corner.
enum class WallpaperPlacement { Centered, Stretched, Tiled };

/// The wallpaper of the running desktop, changed in the way that this desktop has for it.
///
/// Every call returns at once; a thread of its own does the work, for buses and other programs may not answer. A call
/// that comes while another one waits takes its place. Failures are silent and stand in the log, category
/// "lumora.wallpaper". For the GUI thread only.
class DesktopWallpaper : public QObject
{
    Q_OBJECT
public:
    DesktopWallpaper();
    ~DesktopWallpaper() override;

    /// `picture` is the absolute path of a picture file; the desktop gets a copy of it and keeps it.
    void set(const QString &picture, WallpaperPlacement placement);
    /// No picture: what lies behind it, mostly a colour, stays.
    void clear();
    /// Brings back what hung there before the program changed it, and forgets it.
    void restore();
    /// Whether there is anything to bring back.
    bool canRestore() const;

    /// Waits until all is done; false when that takes longer.
    bool waitForDone(std::chrono::milliseconds patience);

Q_SIGNALS:
    /// A change has been carried out or has failed: canRestore() may tell something else now.
    void done();

private:
    struct Private;
    std::shared_ptr<Private> d;
};

/// The one instance, made at first use.
DesktopWallpaper &desktopWallpaper();
