#include "actions/wallpaper.h"

#include "engine/encode.h"
#include "platform/folders.h"
#include "platform/registrystore.h"
#include "platform/wallpaper.h"

#include <QPainter>

namespace {

const QString desktopKey = QStringLiteral("Control Panel\\Desktop");
constexpr QLatin1String tileName("TileWallpaper");
constexpr QLatin1String styleName("WallpaperStyle");

WallpaperPlacement placementOf(bool centered, bool stretched)
{
    if (stretched)
        return WallpaperPlacement::Stretched;
    return centered ? WallpaperPlacement::Centered : WallpaperPlacement::Tiled;
}

/// Desktops read transparency in a bitmap as they like: there is none in it.
Picture overWhite(const Picture &picture)
{
    QImage ground(picture.pixels.size(), QImage::Format_RGB32);
    if (ground.isNull())
        return picture;
    ground.fill(Qt::white);
    QPainter(&ground).drawImage(0, 0, picture.pixels);
    return Picture::fromImage(ground);
}

}

QString wallpaperFileName()
{
    return AppFolder() + QStringLiteral("Lumora-Viewer.bmp");
}

Result<void> saveWallpaperPicture(const LoadedPicture &picture)
{
    const Picture full = picture.full();
    return encodeFile(hasTransparency(full) ? overWhite(full) : full, wallpaperFileName(), TypeCode::Bmp);
}

void SetWallpaper(const QString &fileName, bool centered, bool stretched)
{
    const auto write = [](QLatin1String name, QLatin1String value) {
        ignore(registryStore().setValue(RegistryStore::Root::CurrentUser, desktopKey, name, value));
    };
    ignore(registryStore().transaction([&] {
        write(tileName, QLatin1String(centered ? "0" : "1"));
        write(styleName, QLatin1String(stretched ? "2" : "0"));
    }));
    if (fileName.isEmpty())
        desktopWallpaper().clear();
    else
        desktopWallpaper().set(fileName, placementOf(centered, stretched));
}

void RestoreWallpaper()
{
    // They tell of a placement by this program, which is over.
    ignore(registryStore().transaction([] {
        for (const QLatin1String name : {tileName, styleName})
            ignore(registryStore().deleteValue(RegistryStore::Root::CurrentUser, desktopKey, name));
    }));
    desktopWallpaper().restore();
}
