#include "platform/wallpaper.h"

#include "engine/codec.h"
#include "engine/decode.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/linux/wallpaper/job.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>
#include <QWindow>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include <dlfcn.h>

namespace {
Q_LOGGING_CATEGORY(logWallpaper, "lumora.wallpaper", QtWarningMsg)

/// The libraries that reach settings, buses and X come with a module: a start does without them. Never unloaded, as
/// they keep threads.
const WallpaperModule *loadedModule()
{
    static const WallpaperModule *const module = []() -> const WallpaperModule * {
        for (const QByteArray &folder : moduleFolders()) {
            void *const library = dlopen((folder + "/lumora-wallpaper.so").constData(), RTLD_NOW | RTLD_LOCAL);
            const auto entry =
                library ? reinterpret_cast<WallpaperModuleEntry>(dlsym(library, "lumoraWallpaperModule")) : nullptr;
            if (entry && qstrcmp(entry()->version, LUMORA_VERSION) == 0)
                return entry();
            qCWarning(logWallpaper, "no module in %s: %s", folder.constData(), library ? "wrong version" : dlerror());
        }
        return nullptr;
    }();
    return module;
}

Result<QImage> pixelsOf(const QString &path)
{
    const Result<Picture> picture = decodeFile(path);
    if (!picture)
        return picture.failure();
    return picture->pixels;
}

/// A program that shows its windows nowhere, as in a test, changes nobody's desktop. Tests of just that set
/// LUMORA_TEST_DESKTOP, and bring a desktop along.
QVector<WallpaperWay> waysNow()
{
    if (QGuiApplication::platformName() == QLatin1String("offscreen")
        && !qEnvironmentVariableIsSet("LUMORA_TEST_DESKTOP"))
        return {};
    return wallpaperWays(runningSession());
}

QString focusWindowForPortals()
{
    const QWindow *window = QGuiApplication::focusWindow();
    if (!window || QGuiApplication::platformName() != QLatin1String("xcb"))
        return QString();
    return QStringLiteral("x11:") + QString::number(window->winId(), 16);
}

WallpaperJob jobOf(WallpaperJob::Kind kind)
{
    WallpaperJob job;
    job.kind = kind;
    job.ways = waysNow();
    job.copyFolder = AppFolder() + QStringLiteral("Wallpaper/");
    job.stateFolder = stateFolder();
    const auto screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        if (!screen->name().isEmpty())
            job.screens.append(screen->name());
    }
    job.parentWindow = focusWindowForPortals();
    return job;
}

}

/// Shared with the thread, which may outlive the program's windows when a desktop does not answer.
struct DesktopWallpaper::Private
{
    std::mutex mutex;
    std::condition_variable wake;
    std::condition_variable idle;
    std::optional<WallpaperJob> next;
    bool working = false;
    bool started = false;
    DesktopWallpaper *owner = nullptr; ///< null when it is gone: the thread ends

    static void start(const std::shared_ptr<Private> &state, WallpaperJob job);
    void work();
};

void DesktopWallpaper::Private::start(const std::shared_ptr<Private> &state, WallpaperJob job)
{
    const std::lock_guard guard(state->mutex);
    state->next = std::move(job);
    if (!std::exchange(state->started, true))
        std::thread([state] { state->work(); }).detach();
    state->wake.notify_one();
}

void DesktopWallpaper::Private::work()
{
    std::unique_lock lock(mutex);
    while (owner) {
        wake.wait(lock, [this] { return next || !owner; });
        if (!next)
            return;
        const WallpaperJob job = *std::exchange(next, std::nullopt);
        working = true;
        lock.unlock();
        if (const WallpaperModule *module = loadedModule())
            module->run(job);
        lock.lock();
        working = false;
        idle.notify_all();
        if (owner)
            QMetaObject::invokeMethod(owner, &DesktopWallpaper::done, Qt::QueuedConnection);
    }
}

DesktopWallpaper::DesktopWallpaper()
    : d(std::make_shared<Private>())
{
    d->owner = this;
}

DesktopWallpaper::~DesktopWallpaper()
{
    const std::lock_guard guard(d->mutex);
    d->owner = nullptr;
    d->wake.notify_one();
}

void DesktopWallpaper::set(const QString &picture, WallpaperPlacement placement)
{
    WallpaperJob job = jobOf(WallpaperJob::Kind::Set);
    job.picture = picture;
    job.placement = placement;
    job.pixels = [picture] { return pixelsOf(picture); };
    Private::start(d, std::move(job));
}

void DesktopWallpaper::clear()
{
    Private::start(d, jobOf(WallpaperJob::Kind::Clear));
}

void DesktopWallpaper::restore()
{
    Private::start(d, jobOf(WallpaperJob::Kind::Restore));
}

bool DesktopWallpaper::canRestore() const
{
    const QVector<WallpaperWay> ways = waysNow();
    return std::any_of(ways.begin(), ways.end(),
        [folder = stateFolder()](WallpaperWay way) { return FileExists(wallpaperMemoryPath(folder, way)); });
}

bool DesktopWallpaper::waitForDone(std::chrono::milliseconds patience)
{
    std::unique_lock lock(d->mutex);
    return d->idle.wait_for(lock, patience, [this] { return !d->working && !d->next; });
}

DesktopWallpaper &desktopWallpaper()
{
    static DesktopWallpaper wallpaper;
    return wallpaper;
}
