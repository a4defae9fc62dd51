#include "actions/wallpaper.h"

#include "engine/encode.h"
#include "platform/folders.h"
#include "platform/registrystore.h"

QString wallpaperFileName()
{
    return AppFolder() + QStringLiteral("Lumora-Viewer.bmp");
}

Result<void> saveWallpaperPicture(const LoadedPicture &picture)
{
    return encodeFile(picture.full(), wallpaperFileName(), TypeCode::Bmp);
}

void SetWallpaper(const QString &, bool centered, bool stretched)
{
    const QString key = QStringLiteral("Control Panel\\Desktop");
    const auto write = [&](const QString &name, QLatin1String value) {
        ignore(registryStore().setValue(RegistryStore::Root::CurrentUser, key, name, value));
    };
    ignore(registryStore().transaction([&] {
        write(QStringLiteral("TileWallpaper"), QLatin1String(centered ? "0" : "1"));
        write(QStringLiteral("WallpaperStyle"), QLatin1String(stretched ? "2" : "0"));
    }));
}
