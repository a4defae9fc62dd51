#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/copies.h"
#include "platform/linux/wallpaper/memory.h"

#include "platform/filepath.h"

#include <QLoggingCategory>

// Carries a change out: the first desktop that is there and does it has it.

namespace {
Q_LOGGING_CATEGORY(logWallpaper, "lumora.wallpaper", QtWarningMsg)

Result<QJsonObject> changed(WallpaperBackend &backend, const WallpaperJob &job, const QString &desktop)
{
    if (job.kind == WallpaperJob::Kind::Clear)
        return backend.clear();
    if (!backend.showsFiles())
        return backend.set(job.picture, job.placement);
    const Result<QString> copy = makeWallpaperCopy(job.picture, job.copyFolder, desktop);
    if (!copy)
        return copy.failure();
    Result<QJsonObject> ours = backend.set(*copy, job.placement);
    if (ours)
        removeWallpaperCopies(job.copyFolder, desktop, *copy);
    return ours;
}

void warnOf(const QString &desktop, const Result<void> &result)
{
    if (!result)
        qCWarning(logWallpaper, "%s: %s", qPrintable(desktop), qPrintable(displayPath(result.reason())));
}

Result<void> change(WallpaperBackend &backend, const WallpaperJob &job, WallpaperWay way)
{
    const QString desktop = wallpaperWayName(way);
    WallpaperMemory memory(wallpaperMemoryPath(job.stateFolder, way), job.copyFolder);
    const bool first = memory.before().isEmpty();
    warnOf(desktop, memory.remember(backend.current()));
    const Result<QJsonObject> ours = changed(backend, job, desktop);
    if (!ours) {
        // Nothing has been changed that could be brought back.
        if (first)
            memory.forget();
        return ours.failure();
    }
    warnOf(desktop, memory.rememberOurs(*ours));
    return {};
}

Result<void> restore(WallpaperBackend &backend, const WallpaperJob &job, WallpaperWay way)
{
    WallpaperMemory memory(wallpaperMemoryPath(job.stateFolder, way), job.copyFolder);
    if (memory.before().isEmpty())
        return Failure{QStringLiteral("nothing to bring back")};
    const Result<void> restored = backend.restore(memory.before());
    if (restored) {
        memory.forget();
        removeWallpaperCopies(job.copyFolder, wallpaperWayName(way));
    }
    return restored;
}

void run(const WallpaperJob &job)
{
    for (const WallpaperWay way : job.ways) {
        const auto backend = makeWallpaperBackend(way, job);
        if (!backend || !backend->isThere())
            continue;
        const Result<void> result =
            job.kind == WallpaperJob::Kind::Restore ? restore(*backend, job, way) : change(*backend, job, way);
        warnOf(wallpaperWayName(way), result);
        if (result) {
            qCDebug(logWallpaper, "done by %s", qPrintable(wallpaperWayName(way)));
            return;
        }
    }
    if (!job.ways.isEmpty())
        qCWarning(logWallpaper, "no desktop has taken the change");
}

}

std::unique_ptr<WallpaperBackend> makeWallpaperBackend(WallpaperWay way, const WallpaperJob &job)
{
    switch (way) {
    case WallpaperWay::Gnome:
    case WallpaperWay::Cinnamon:
    case WallpaperWay::Mate:
        return makeSettingsBackend(way);
    case WallpaperWay::Plasma:
        return makePlasmaBackend();
    case WallpaperWay::Xfce:
        return makeXfceBackend(job);
    case WallpaperWay::Lxqt:
    case WallpaperWay::Lxde:
        return makePcmanfmBackend(way);
    case WallpaperWay::Sway:
    case WallpaperWay::Swaybg:
        return makeSwayBackend(way);
    case WallpaperWay::RootWindow:
        return makeRootWindowBackend(job);
    case WallpaperWay::Portal:
        break;
    }
    return makePortalBackend(job);
}

extern "C" __attribute__((visibility("default"))) const WallpaperModule *lumoraWallpaperModule()
{
    static const WallpaperModule module{LUMORA_VERSION, &run};
    return &module;
}
