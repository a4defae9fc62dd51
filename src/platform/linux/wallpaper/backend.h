#pragma once

#include "engine/result.h"
#include "platform/linux/wallpaper/job.h"

#include <QJsonObject>

#include <memory>

/// One desktop's way to its wallpaper. What hangs there is told by parts (a monitor, a workspace, or one part for all),
/// each a value that only the same backend reads again. A program's own copies are recognised by their folder.
class WallpaperBackend
{
public:
    WallpaperBackend() = default;
    virtual ~WallpaperBackend() = default;
    WallpaperBackend(const WallpaperBackend &) = delete;
    WallpaperBackend &operator=(const WallpaperBackend &) = delete;

    /// Whether this desktop runs and can be reached.
    virtual bool isThere() = 0;
    /// Whether it shows a file, of which it then gets a copy of its own.
    virtual bool showsFiles() const { return true; }
    /// What hangs there. Parts that the program has hung up itself may be left out; none when it cannot be told.
    virtual QJsonObject current() = 0;
    /// Both give what hangs there now, as current() would tell it.
    virtual Result<QJsonObject> set(const QString &picture, WallpaperPlacement placement) = 0;
    virtual Result<QJsonObject> clear() = 0;
    virtual Result<void> restore(const QJsonObject &before) = 0;
};

/// `job` stays with the caller and must outlive the backend.
std::unique_ptr<WallpaperBackend> makeWallpaperBackend(WallpaperWay way, const WallpaperJob &job);

// One for each file that has a way in it.
std::unique_ptr<WallpaperBackend> makeSettingsBackend(WallpaperWay way);
std::unique_ptr<WallpaperBackend> makePlasmaBackend();
std::unique_ptr<WallpaperBackend> makeXfceBackend(const WallpaperJob &job);
std::unique_ptr<WallpaperBackend> makePcmanfmBackend(WallpaperWay way);
std::unique_ptr<WallpaperBackend> makeSwayBackend(WallpaperWay way);
std::unique_ptr<WallpaperBackend> makeRootWindowBackend(const WallpaperJob &job);
std::unique_ptr<WallpaperBackend> makePortalBackend(const WallpaperJob &job);
