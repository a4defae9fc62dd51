#include "engine/picture.h"

#include "engine/limits.h"
#include "engine/picturememory.h"

#include <algorithm>
#include <new>

#include <sys/mman.h>

namespace {

constexpr size_t hugePage = 2 * 1024 * 1024;
constexpr size_t smallBuffer = 2 * hugePage;

struct Mapping
{
    void *start;
    size_t length;
};

void unmap(void *mapping)
{
    Mapping *const held = static_cast<Mapping *>(mapping);
    munmap(held->start, held->length);
    delete held;
}

PictureMemory memory;

bool isOpaqueTable(const QList<QRgb> &table)
{
    return std::all_of(table.begin(), table.end(), [](QRgb color) { return qAlpha(color) == 255; });
}

bool indexedPixelShowsGround(const QImage &image)
{
    const QList<QRgb> table = image.colorTable();
    if (isOpaqueTable(table))
        return false;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int index = image.pixelIndex(x, y);
            if (index < table.size() && qAlpha(table.at(index)) != 255)
                return true;
        }
    }
    return false;
}

}

Picture Picture::fromImage(const QImage &image)
{
    Picture picture;
    picture.pixels = image;
    picture.info.size = image.size();
    switch (image.format()) {
    case QImage::Format_Mono:
        picture.info.bitsPerPixel = 1;
        break;
    case QImage::Format_Indexed8:
    case QImage::Format_Grayscale8:
        picture.info.bitsPerPixel = 8;
        break;
    case QImage::Format_ARGB32:
        picture.info.bitsPerPixel = 32;
        break;
    case QImage::Format_RGBA64:
        picture.info.bitsPerPixel = 64;
        break;
    case QImage::Format_RGB32:
        picture.info.bitsPerPixel = 24;
        break;
    default:
        picture.pixels = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        picture.info.bitsPerPixel = image.hasAlphaChannel() ? 32 : 24;
    }
    return picture;
}

bool hasTransparency(const Picture &picture)
{
    const QImage &image = picture.pixels;
    switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_Indexed8:
        return indexedPixelShowsGround(image);
    case QImage::Format_ARGB32:
        for (int y = 0; y < image.height(); ++y) {
            const QRgb *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            if (std::any_of(row, row + image.width(), [](QRgb pixel) { return qAlpha(pixel) != 255; }))
                return true;
        }
        return false;
    case QImage::Format_RGBA64:
        for (int y = 0; y < image.height(); ++y) {
            const QRgba64 *row = reinterpret_cast<const QRgba64 *>(image.constScanLine(y));
            if (std::any_of(row, row + image.width(), [](QRgba64 pixel) { return pixel.alpha() != 0xffff; }))
                return true;
        }
        return false;
    default:
        return false;
    }
}

void setPictureMemory(const PictureMemory &wanted)
{
    memory = wanted;
}

void publishRows(const uchar *pixels, int rows)
{
    if (memory.watched && memory.watched->load(std::memory_order_relaxed) == pixels)
        memory.publish(rows);
}

QImage allocateImage(QSize size, QImage::Format format)
{
    const int depth = QImage::toPixelFormat(format).bitsPerPixel();
    if (!limits::allows(size, qMax(1, depth / 8)))
        return {};
    const size_t stride = (size_t(size.width()) * size_t(depth) + 31) / 32 * 4;
    const size_t bytes = stride * size_t(size.height());
    if (memory.allocate) {
        if (QImage given = memory.allocate(size, format); !given.isNull())
            return given;
    }
    if (bytes < smallBuffer)
        return QImage(size, format);

    // A mapping of its own, cut to whole huge pages at its start: what malloc gives begins 16 bytes into a page.
    const size_t asked = (bytes + 2 * hugePage - 1) / hugePage * hugePage;
    void *const start =
        mmap(nullptr, asked, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (start == MAP_FAILED)
        return {};
    const size_t skipped = (hugePage - reinterpret_cast<quintptr>(start) % hugePage) % hugePage;
    uchar *const pixels = static_cast<uchar *>(start) + skipped;
    madvise(pixels, bytes, MADV_HUGEPAGE);
    Mapping *const mapping = new (std::nothrow) Mapping{start, asked};
    if (!mapping) {
        munmap(start, asked);
        return {};
    }
    QImage image(pixels, size.width(), size.height(), qsizetype(stride), format, unmap, mapping);
    if (image.isNull())
        unmap(mapping);
    return image;
}
