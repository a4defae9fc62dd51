#pragma once

#include "engine/result.h"

#include <QString>

/// The files that desktops show. A desktop does not look again at a name it knows, so every change has a new one; each
/// desktop has its own, for another one's may still be in use the next time it is started.

/// A copy of `picture` under a fresh name in `folder`, which is made when it is not there: "gnome-1795305600.bmp" for
/// the desktop "gnome".
Result<QString> makeWallpaperCopy(const QString &picture, const QString &folder, const QString &desktop);

/// Removes the copies of one desktop but `kept`.
void removeWallpaperCopies(const QString &folder, const QString &desktop, const QString &kept = {});
