#pragma once

#include "platform/wallpaper.h"

#include <QImage>
#include <QRect>
#include <QVector>

/// The picture as it lies on a desktop of that size, on a ground of one colour: in the middle of each monitor (cut
/// where it is larger), stretched over each, or side by side over the whole desktop.
QImage pictureOnScreens(
    const QImage &picture, QSize desktop, const QVector<QRect> &monitors, WallpaperPlacement placement, QRgb ground);
