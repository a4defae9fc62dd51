#include "platform/linux/wallpaper/screenpicture.h"

#include <QPainter>

QImage pictureOnScreens(
    const QImage &picture, QSize desktop, const QVector<QRect> &monitors, WallpaperPlacement placement, QRgb ground)
{
    QImage screens(desktop, QImage::Format_RGB32);
    screens.fill(ground);
    QPainter painter(&screens);
    const QImage opaque = picture.convertToFormat(QImage::Format_RGB32);
    if (placement == WallpaperPlacement::Tiled) {
        painter.fillRect(screens.rect(), QBrush(opaque));
        return screens;
    }
    for (const QRect &monitor : monitors) {
        painter.setClipRect(monitor);
        if (placement == WallpaperPlacement::Stretched) {
            painter.drawImage(
                monitor.topLeft(), opaque.scaled(monitor.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        } else {
            const QSize around = monitor.size() - picture.size();
            painter.drawImage(
                monitor.x() + qFloor(around.width() / 2.0), monitor.y() + qFloor(around.height() / 2.0), opaque);
        }
    }
    return screens;
}
