#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/bus.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QSet>

#include <map>

// The desktop of Xfce reads its wallpapers from the settings of the channel "xfce4-desktop", one for each monitor and
// workspace: /backdrop/screen0/monitorHDMI-1/workspace0/last-image, and image-style beside it. Older versions know
// monitors only: /backdrop/screen0/monitor0/image-path.

namespace {

constexpr QLatin1String service("org.xfce.Xfconf");
constexpr QLatin1String channel("xfce4-desktop");
constexpr QLatin1String styleName("image-style");
constexpr QLatin1String cycleName("backdrop-cycle-enable"); ///< changes the picture by itself
constexpr QLatin1String showName("image-show");
constexpr QLatin1String pictureNames[] = {QLatin1String("last-image"), QLatin1String("image-path")};
constexpr QLatin1String names[] = {pictureNames[0], pictureNames[1], styleName, cycleName, showName};

constexpr int styleNone = 0;
constexpr int workspacesUsual = 4;

int styleOf(WallpaperPlacement placement)
{
    switch (placement) {
    case WallpaperPlacement::Centered:
        return 1;
    case WallpaperPlacement::Tiled:
        return 2;
    case WallpaperPlacement::Stretched:
        break;
    }
    return 3;
}

Result<QVariantList> callXfconf(const QString &method, const QVariantList &arguments)
{
    return bus::call({service, QStringLiteral("/org/xfce/Xfconf"), service}, method, arguments);
}

std::map<QString, QVariant> allProperties()
{
    const auto answer = callXfconf(QStringLiteral("GetAllProperties"), {QString(channel), QStringLiteral("/backdrop")});
    std::map<QString, QVariant> properties;
    if (!answer)
        return properties;
    const QVariantMap map = qdbus_cast<QVariantMap>(answer->value(0));
    for (auto property = map.begin(); property != map.end(); ++property)
        properties.emplace(property.key(), property.value());
    return properties;
}

Result<void> setProperty(const QString &property, const QVariant &value)
{
    const auto answer = callXfconf(
        QStringLiteral("SetProperty"), {QString(channel), property, QVariant::fromValue(QDBusVariant(value))});
    if (!answer)
        return answer.failure();
    return {};
}

int workspaceCount()
{
    const auto answer = callXfconf(
        QStringLiteral("GetProperty"), {QStringLiteral("xfwm4"), QStringLiteral("/general/workspace_count")});
    const int count = answer ? qdbus_cast<QDBusVariant>(answer->value(0)).variant().toInt() : 0;
    return count > 0 ? qMin(count, 64) : workspacesUsual;
}

QString folderOf(const QString &property)
{
    return property.section(QLatin1Char('/'), 0, -2);
}

class XfceBackend final : public WallpaperBackend
{
public:
    explicit XfceBackend(const WallpaperJob &job)
        : m_job(job)
    {
    }

    bool isThere() override { return bus::hasOwner(service); }

    /// A part is a place that has a picture; what is not written down there is null.
    QJsonObject current() override
    {
        const auto properties = allProperties();
        QJsonObject told;
        const QSet<QString> all = places(properties);
        for (const QString &place : all) {
            QJsonObject values;
            for (const QLatin1String name : names) {
                const auto found = properties.find(place + QLatin1Char('/') + name);
                values.insert(name, found != properties.end() ? QJsonValue::fromVariant(found->second) : QJsonValue());
            }
            told.insert(place, values);
        }
        return told;
    }

    Result<QJsonObject> set(const QString &picture, WallpaperPlacement placement) override
    {
        return change([&](const QString &place, const auto &write) {
            const bool old = !place.contains(QLatin1String("/workspace"));
            write(pictureNames[old ? 1 : 0], picture);
            write(styleName, styleOf(placement));
            if (old)
                write(showName, true);
        });
    }

    Result<QJsonObject> clear() override
    {
        return change([](const QString &place, const auto &write) {
            if (place.contains(QLatin1String("/workspace")))
                write(styleName, styleNone);
            else
                write(showName, false);
        });
    }

    Result<void> restore(const QJsonObject &before) override
    {
        Result<void> result;
        for (auto place = before.begin(); place != before.end(); ++place) {
            const QJsonObject values = place.value().toObject();
            for (auto value = values.begin(); value != values.end(); ++value) {
                const QString property = place.key() + QLatin1Char('/') + value.key();
                if (const Result<void> restored = restoreProperty(property, value.value()); !restored)
                    result = restored;
            }
        }
        return result;
    }

private:
    /// Every place that has a picture now, and those that the screens of this session would look at.
    QSet<QString> places(const std::map<QString, QVariant> &properties) const
    {
        QSet<QString> found;
        for (const auto &[property, value] : properties) {
            for (const QLatin1String name : pictureNames) {
                if (property.endsWith(QLatin1Char('/') + name))
                    found.insert(folderOf(property));
            }
        }
        const int workspaces = workspaceCount();
        for (const QString &screen : m_job.screens) {
            for (int i = 0; i < workspaces; ++i)
                found.insert(QStringLiteral("/backdrop/screen0/monitor%1/workspace%2").arg(screen).arg(i));
        }
        return found;
    }

    template <class ChangePlace> Result<QJsonObject> change(ChangePlace changePlace)
    {
        const auto properties = allProperties();
        Result<void> result;
        const QSet<QString> all = places(properties);
        for (const QString &place : all) {
            const auto write = [&](QLatin1String name, const QVariant &value) {
                if (const Result<void> written = setProperty(place + QLatin1Char('/') + name, value); !written)
                    result = written;
            };
            if (properties.count(place + QLatin1Char('/') + cycleName))
                write(cycleName, false);
            changePlace(place, write);
        }
        if (!result)
            return result.failure();
        return current();
    }

    static Result<void> restoreProperty(const QString &property, const QJsonValue &value)
    {
        if (value.isNull()) {
            const auto answer = callXfconf(QStringLiteral("ResetProperty"), {QString(channel), property, false});
            // What was not there before need not be there now.
            ignore(answer);
            return {};
        }
        return setProperty(property, value.isDouble() ? QVariant(value.toInt()) : value.toVariant());
    }

    const WallpaperJob &m_job;
};

}

std::unique_ptr<WallpaperBackend> makeXfceBackend(const WallpaperJob &job)
{
    return std::make_unique<XfceBackend>(job);
}
