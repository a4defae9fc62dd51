#include "platform/filepath.h"
#include "platform/linux/wallpaper/backend.h"
#include "platform/linux/wallpaper/bus.h"

#include <QJsonArray>
#include <QJsonDocument>

// The shell of Plasma runs a script on its desktops, one for each screen and activity.
// https://develop.kde.org/docs/plasma/scripting/api/

namespace {

constexpr QLatin1String service("org.kde.plasmashell");

/// What the image plug-in stretches by, as the toolkit numbers the ways to fill an image's frame.
int fillMode(WallpaperPlacement placement)
{
    switch (placement) {
    case WallpaperPlacement::Stretched:
        return 0;
    case WallpaperPlacement::Tiled:
        return 3;
    case WallpaperPlacement::Centered:
        break;
    }
    return 6;
}

/// Values go into a script as JSON, which the script's language reads as they are.
QString literal(const QJsonValue &value)
{
    const QByteArray list = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return QString::fromUtf8(list.mid(1, list.size() - 2));
}

/// Runs `body` for each desktop `d`, whose image settings are at hand; gives what the script prints.
Result<QString> runForEachDesktop(const QString &body)
{
    const QString script = QStringLiteral("var told = {};"
                                          "desktops().forEach(function (d) {"
                                          " d.currentConfigGroup = [\"Wallpaper\", \"org.kde.image\", \"General\"];"
                                          " %1 });"
                                          "print(JSON.stringify(told));")
                               .arg(body);
    const bus::Object shell{service, QStringLiteral("/PlasmaShell"), QStringLiteral("org.kde.PlasmaShell")};
    const auto answer = bus::call(shell, QStringLiteral("evaluateScript"), {script});
    if (!answer)
        return answer.failure();
    return answer->value(0).toString();
}

class PlasmaBackend final : public WallpaperBackend
{
public:
    bool isThere() override { return bus::hasOwner(service); }

    QJsonObject current() override
    {
        const auto told = runForEachDesktop(
            QStringLiteral("told[d.id] = {plugin: String(d.wallpaperPlugin), image: String(d.readConfig(\"Image\")),"
                           " mode: String(d.readConfig(\"FillMode\"))};"));
        return told ? QJsonDocument::fromJson(told->toUtf8()).object() : QJsonObject();
    }

    Result<QJsonObject> set(const QString &picture, WallpaperPlacement placement) override
    {
        return change(QStringLiteral("d.wallpaperPlugin = \"org.kde.image\"; d.writeConfig(\"Image\", %1);"
                                     " d.writeConfig(\"FillMode\", %2);")
                          .arg(literal(fileUri(picture)))
                          .arg(fillMode(placement)));
    }

    /// The plug-in that paints nothing but the user's colour.
    Result<QJsonObject> clear() override { return change(QStringLiteral("d.wallpaperPlugin = \"org.kde.color\";")); }

    Result<void> restore(const QJsonObject &before) override
    {
        const auto told = runForEachDesktop(QStringLiteral("var b = %1[d.id];"
                                                           " if (b) {"
                                                           " d.writeConfig(\"Image\", b.image);"
                                                           " d.writeConfig(\"FillMode\", b.mode);"
                                                           " d.wallpaperPlugin = b.plugin; }")
                                                .arg(literal(before)));
        if (!told)
            return told.failure();
        return {};
    }

private:
    Result<QJsonObject> change(const QString &body)
    {
        if (const auto told = runForEachDesktop(body); !told)
            return told.failure();
        return current();
    }
};

}

std::unique_ptr<WallpaperBackend> makePlasmaBackend()
{
    return std::make_unique<PlasmaBackend>();
}
