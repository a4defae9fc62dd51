#include "platform/files.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/bus.h"

#include <QDBusArgument>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QVariantMap>

// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Wallpaper.html
// The desktop asks the user whether he agrees; how the picture lies is the desktop's choice, and what hung there before
// it does not tell.

namespace {

constexpr QLatin1String service("org.freedesktop.portal.Desktop");
constexpr QLatin1String path("/org/freedesktop/portal/desktop");
constexpr QLatin1String interface("org.freedesktop.portal.Wallpaper");

class PortalBackend final : public WallpaperBackend
{
public:
    explicit PortalBackend(const WallpaperJob &job)
        : m_job(job)
    {
    }

    bool isThere() override
    {
        const bus::Object properties{service, path, QStringLiteral("org.freedesktop.DBus.Properties")};
        const auto answer =
            bus::call(properties, QStringLiteral("Get"), {QString(interface), QStringLiteral("version")});
        return answer && qdbus_cast<QDBusVariant>(answer->value(0)).variant().toUInt() > 0;
    }

    /// The portal takes an open file.
    bool showsFiles() const override { return false; }

    QJsonObject current() override { return {}; }

    Result<QJsonObject> set(const QString &picture, WallpaperPlacement) override
    {
        const Result<int> opened = openRegularFile(picture);
        if (!opened)
            return opened.failure();
        const Descriptor file(*opened);
        const QVariantMap options{
            {QStringLiteral("show-preview"), false}, {QStringLiteral("set-on"), QStringLiteral("background")}};
        const auto handle = bus::call({service, path, interface}, QStringLiteral("SetWallpaperFile"),
            {m_job.parentWindow, QVariant::fromValue(QDBusUnixFileDescriptor(file.number())), options});
        if (!handle)
            return handle.failure();
        return QJsonObject();
    }

    Result<QJsonObject> clear() override { return Failure{QStringLiteral("a portal cannot take a picture away")}; }
    Result<void> restore(const QJsonObject &) override { return Failure{QStringLiteral("a portal tells no picture")}; }

private:
    const WallpaperJob &m_job;
};

}

std::unique_ptr<WallpaperBackend> makePortalBackend(const WallpaperJob &job)
{
    return std::make_unique<PortalBackend>(job);
}
