#include "actions/wallpaper.h"

#include "engine/encode.h"
#include "platform/folders.h"
#include "platform/registrystore.h"
#include "platform/wallpaper.h"

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

}

QString wallpaperFileName()
{
    return AppFolder() + QStringLiteral("Lumora-Viewer.bmp");
}

Result<void> saveWallpaperPicture(const LoadedPicture &picture)
{
    return encodeFile(picture.full(), wallpaperFileName(), TypeCode::Bmp);
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
