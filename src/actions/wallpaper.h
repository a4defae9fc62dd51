#pragma once

#include "engine/loadedpicture.h"

#include <QString>

/// The desktop's wallpaper, as every window sets it: one picture file of the program, two values of the store that tell
/// the placement, and the running desktop told.

/// "Lumora-Viewer.bmp" in AppFolder(): the one file that every set command replaces.
QString wallpaperFileName();

/// Replaces that file by a bitmap of all pixels of the picture. May decode; takes as long as that takes.
Result<void> saveWallpaperPicture(const LoadedPicture &picture);

/// Writes "TileWallpaper" ("0" when `centered`, else "1") and "WallpaperStyle" ("2" when `stretched`, else "0") below
/// "Control Panel\Desktop" of the current user, then has the desktop show the file; the empty name takes its picture
/// away. A picture that fills the screen is both centered and stretched, a tiled one neither. Nothing is reported.
void SetWallpaper(const QString &fileName, bool centered, bool stretched);

/// Brings back what hung on the desktop before the program changed it.
void RestoreWallpaper();
