#include "thumbnails/thumbnailsharpening.h"

#include "thumbnails/thumbnailcrew.h"

#include <cstdlib>

namespace {

/// Of 255: the mean of all channels, and that of the worst of fields of 8 by 8. Formats of the cache stay below half.
constexpr int alikeOnTheWhole = 8;
constexpr int alikeInAField = 30;
constexpr int field = 8; ///< pixels

int difference(const QImage &a, const QImage &b, const QRect &part)
{
    qint64 sum = 0;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        const uchar *left = a.constScanLine(y) + part.left() * 4;
        const uchar *right = b.constScanLine(y) + part.left() * 4;
        for (int i = 0; i < part.width() * 4; ++i)
            sum += std::abs(left[i] - right[i]);
    }
    return int(sum / (qint64(part.width()) * part.height() * 3));
}

}

bool looksAlike(const QImage &first, const QImage &second)
{
    if (first.isNull() || first.size() != second.size())
        return false;
    const QImage a = first.convertToFormat(QImage::Format_RGB32);
    const QImage b = second.convertToFormat(QImage::Format_RGB32);
    if (difference(a, b, a.rect()) > alikeOnTheWhole)
        return false;
    for (int y = 0; y < a.height(); y += field) {
        for (int x = 0; x < a.width(); x += field) {
            if (difference(a, b, QRect(x, y, field, field) & a.rect()) > alikeInAField)
                return false;
        }
    }
    return true;
}

QImage sharperThumbnail(const ThumbnailJob &plain, const ThumbnailJob &sharp, const QImage &shown)
{
    if (!plain.thumbnail || !sharp.thumbnail)
        return {};
    // A picture that is not reduced to the larger edge would stand smaller on its ground.
    const QSize edge = sharp.work.look.size;
    if (sharp.sourceSize.width() < edge.width() && sharp.sourceSize.height() < edge.height())
        return {};
    return looksAlike(plain.thumbnail->current().pixels, shown) ? sharp.thumbnail->current().pixels : QImage();
}
