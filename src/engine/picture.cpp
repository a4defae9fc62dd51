#include "engine/picture.h"

#include "engine/limits.h"
#include "engine/picturememory.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include <sys/mman.h>

namespace {

constexpr size_t hugePage = 2 * 1024 * 1024;
constexpr size_t smallBuffer = 2 * hugePage;

struct Mapping
{
    void *start;
    size_t length;
};

/// Mappings of pictures that have gone.
class Spares
{
public:
    bool keep(const Mapping &mapping)
    {
        const std::lock_guard lock(m_mutex);
        if (qint64(mapping.length) > m_limit - m_bytes)
            return false;
        m_kept.push_back(mapping);
        m_bytes += qint64(mapping.length);
        return true;
    }

    /// One that is large enough, and not much larger.
    std::optional<Mapping> take(size_t length)
    {
        const std::lock_guard lock(m_mutex);
        const auto fitting = std::find_if(m_kept.begin(), m_kept.end(), [length](const Mapping &mapping) {
            return mapping.length >= length && mapping.length <= length + length / 4;
        });
        if (fitting == m_kept.end())
            return {};
        const Mapping mapping = *fitting;
        m_kept.erase(fitting);
        m_bytes -= qint64(mapping.length);
        return mapping;
    }

    /// The limit before.
    qint64 setLimit(qint64 bytes)
    {
        const std::lock_guard lock(m_mutex);
        const qint64 before = std::exchange(m_limit, bytes);
        for (; m_bytes > m_limit; m_kept.pop_back()) {
            m_bytes -= qint64(m_kept.back().length);
            munmap(m_kept.back().start, m_kept.back().length);
        }
        return before;
    }

private:
    std::mutex m_mutex;
    std::vector<Mapping> m_kept;
    qint64 m_bytes = 0;
    qint64 m_limit = 0;
};

Spares &spares()
{
    // Never destroyed: pictures may go after the program's statics.
    static Spares *const all = new Spares;
    return *all;
}

void unmap(void *mapping)
{
    Mapping *const held = static_cast<Mapping *>(mapping);
    if (!spares().keep(*held))
        munmap(held->start, held->length);
    delete held;
}

void *alignedInside(void *start)
{
    const size_t skipped = (hugePage - reinterpret_cast<quintptr>(start) % hugePage) % hugePage;
    return static_cast<uchar *>(start) + skipped;
}

std::optional<Mapping> newMapping(size_t length)
{
    void *const start =
        mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (start == MAP_FAILED)
        return {};
    madvise(alignedInside(start), length - hugePage, MADV_HUGEPAGE);
    return Mapping{start, length};
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
    std::optional<Mapping> found = spares().take(asked);
    if (!found)
        found = newMapping(asked);
    if (!found)
        return {};
    uchar *const pixels = static_cast<uchar *>(alignedInside(found->start));
    Mapping *const mapping = new (std::nothrow) Mapping(*found);
    if (!mapping) {
        munmap(found->start, found->length);
        return {};
    }
    QImage image(pixels, size.width(), size.height(), qsizetype(stride), format, unmap, mapping);
    if (image.isNull())
        unmap(mapping);
    return image;
}

KeptPictureMemory::KeptPictureMemory(qint64 bytes)
    : m_before(spares().setLimit(bytes))
{
}

KeptPictureMemory::~KeptPictureMemory()
{
    spares().setLimit(m_before);
}

QByteArray allocateBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    const quintptr first = reinterpret_cast<quintptr>(alignedInside(bytes.data()));
    const quintptr end = reinterpret_cast<quintptr>(bytes.data()) + quintptr(size);
    if (size_t(size) >= smallBuffer && end > first + hugePage)
        madvise(reinterpret_cast<void *>(first), (end - first) / hugePage * hugePage, MADV_HUGEPAGE);
    return bytes;
}
