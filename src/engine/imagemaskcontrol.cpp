#include "engine/imagemaskcontrol.h"

#include "engine/ops/areaaverage.h"

#include <QPainter>

#include <array>

namespace {

/// Lit from the upper left, in the two shades of a grey panel.
void drawRaisedFrame(QPainter &painter, const QRect &rect, int width)
{
    const QColor light(0xff, 0xff, 0xff);
    const QColor shade(0x80, 0x80, 0x80);
    for (int i = 0; i < width; ++i) {
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

Picture thumbnailOf(const LoadedPicture *source, const ThumbnailLook &look)
{
    QImage ground = allocateImage(look.size, QImage::Format_RGB32);
    if (ground.isNull())
        return {};
    ground.fill(look.backColor.rgb() | 0xff000000);
    QPainter painter(&ground);
    const int margin = look.frame ? look.frameWidth : 0;
    const QRect inside = ground.rect().adjusted(margin, margin, -margin, -margin);
    if (source && !inside.isEmpty()) {
        // A decoder that reduces leaves something to average.
        const QImage pixels = source->atLeast(inside.size() * 2).pixels;
        QRect place(QPoint(), fittedInto(source->info().size, inside.size()));
        place.moveCenter(inside.center());
        painter.drawImage(place.topLeft(), areaAverage(pixels, place.size()));
    }
    if (look.frame)
        drawRaisedFrame(painter, ground.rect(), look.frameWidth);
    painter.end();
    return Picture::fromImage(ground);
}

void ImageMaskControl::MaskMakeThumbnail(int width, int height)
{
    m_look.size = {width, height};
    m_thumbnail = thumbnailOf(m_picture.get(), m_look);
}
