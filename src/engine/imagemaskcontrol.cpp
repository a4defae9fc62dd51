#include "engine/imagemaskcontrol.h"

#include "engine/ops/areaaverage.h"

#include <QPainter>

#include <array>

namespace {

constexpr int frameWidth = 2;

/// Lit from the upper left, in the two shades of a grey panel.
void drawRaisedFrame(QPainter &painter, const QRect &rect)
{
    const QColor light(0xff, 0xff, 0xff);
    const QColor shade(0x80, 0x80, 0x80);
    for (int i = 0; i < frameWidth; ++i) {
        const QRect line = rect.adjusted(i, i, -i, -i);
        painter.setPen(light);
        painter.drawPolyline(std::array{line.bottomLeft(), line.topLeft(), line.topRight()}.data(), 3);
        painter.setPen(shade);
        painter.drawPolyline(std::array{line.topRight(), line.bottomRight(), line.bottomLeft()}.data(), 3);
    }
}

QSize fittedInto(QSize source, QSize room)
{
    if (source.width() <= room.width() && source.height() <= room.height())
        return source;
    return source.scaled(room, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

}

void ImageMaskControl::MaskMakeThumbnail(int width, int height)
{
    m_thumbnail = {};
    QImage ground = allocateImage(QSize(width, height), QImage::Format_RGB32);
    if (ground.isNull())
        return;
    ground.fill(m_backColor.rgb() | 0xff000000);
    QPainter painter(&ground);
    const int margin = m_style ? frameWidth : 0;
    const QRect inside = ground.rect().adjusted(margin, margin, -margin, -margin);
    if (m_picture && !inside.isEmpty()) {
        // A decoder that reduces leaves something to average.
        const QImage source = m_picture->atLeast(inside.size() * 2).pixels;
        QRect place(QPoint(), fittedInto(m_picture->info().size, inside.size()));
        place.moveCenter(inside.center());
        painter.drawImage(place.topLeft(), areaAverage(source, place.size()));
    }
    if (m_style)
        drawRaisedFrame(painter, ground.rect());
    painter.end();
    m_thumbnail = Picture::fromImage(ground);
}
