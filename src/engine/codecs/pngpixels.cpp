#include "engine/codecs/pngpixels.h"

#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

constexpr qsizetype mostAtOnce = 256LL * 1024 * 1024; ///< bytes of all rows

// Photographs hardly repeat themselves: looking long for what repeats takes five times as long and saves a tenth.
// Drawings and screens do, and are packed quickly at any level.
constexpr int photographLevel = 1;
constexpr int drawingLevel = 6;
constexpr double drawingShare = 0.15; ///< of its size that a sample of a drawing takes at most
constexpr qsizetype sampleBytes = 256 * 1024;

/// The two kinds of differences (PNG specification, 9.2) that are worth their time.
enum Filter : uchar { None = 0, Sub = 1, Up = 2 };

/// Writes the differences; gives the sum of their sizes.
quint32 differences(const uchar *row, const uchar *other, qsizetype count, uchar *to)
{
    quint32 sum = 0;
    for (qsizetype i = 0; i < count; ++i) {
        const uchar difference = uchar(row[i] - other[i]);
        to[i] = difference;
        sum += difference < 128 ? difference : 256U - difference;
    }
    return sum;
}

using Compressor = std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)>;

Compressor compressor(int level)
{
    return {libdeflate_alloc_compressor(level), &libdeflate_free_compressor};
}

void storeRows(const PngLayout &layout, QByteArray &rows)
{
    PngRows maker(layout);
    const qsizetype bytes = layout.rowBytes();
    char *to = rows.data();
    for (int y = 0; y < layout.size().height(); ++y, to += bytes) {
        *to++ = None;
        std::memcpy(to, maker.make(y), size_t(bytes));
    }
}

/// Each row as its differences from the pixel on the left or from the one above, whichever are smaller.
void filterRows(const PngLayout &layout, QByteArray &rows)
{
    PngRows maker(layout);
    const qsizetype bytes = layout.rowBytes();
    const qsizetype pixel = layout.channels() * layout.bits / 8;
    // Zeros stand where there is no pixel before the first one, and no row above.
    std::vector<uchar> above(size_t(pixel + bytes));
    std::vector<uchar> row(size_t(pixel + bytes));
    std::vector<uchar> fromLeft(size_t(bytes), 0);
    uchar *to = reinterpret_cast<uchar *>(rows.data());
    for (int y = 0; y < layout.size().height(); ++y, to += bytes) {
        std::memcpy(row.data() + pixel, maker.make(y), size_t(bytes));
        uchar &filter = *to++;
        const quint32 left = differences(row.data() + pixel, row.data(), bytes, fromLeft.data());
        const quint32 up = differences(row.data() + pixel, above.data() + pixel, bytes, to);
        filter = left < up ? Sub : Up;
        if (left < up)
            std::memcpy(to, fromLeft.data(), size_t(bytes));
        std::swap(row, above);
    }
}

int levelFor(const QByteArray &rows)
{
    const qsizetype bytes = std::min(sampleBytes, rows.size());
    const Compressor quick = compressor(photographLevel);
    std::vector<char> to(static_cast<size_t>(bytes));
    const size_t packed = quick ? libdeflate_deflate_compress(quick.get(), rows.constData() + (rows.size() - bytes) / 2,
                              size_t(bytes), to.data(), to.size())
                                : 0;
    // Nothing: not even as small as it was.
    return packed > 0 && double(packed) < drawingShare * double(bytes) ? drawingLevel : photographLevel;
}

std::optional<QByteArray> packed(const QByteArray &rows)
{
    const Compressor packer = compressor(levelFor(rows));
    if (!packer)
        return {};
    QByteArray stream = allocateBytes(qsizetype(libdeflate_zlib_compress_bound(packer.get(), size_t(rows.size()))));
    const size_t bytes = libdeflate_zlib_compress(
        packer.get(), rows.constData(), size_t(rows.size()), stream.data(), size_t(stream.size()));
    if (bytes == 0)
        return {};
    stream.truncate(qsizetype(bytes));
    return stream;
}

}

PngLayout::PngLayout(const Picture &picture)
{
    if (picture.pixels.depth() <= 8) {
        indexed = palettePixels(picture, {1, 2, 4, 8}, Transparency::Kept);
        bits = indexed.bits;
        const bool plainMono = indexed.pixels.format() == QImage::Format_Mono && isBlackAndWhite(indexed.table);
        const bool grey = plainMono || picture.pixels.format() == QImage::Format_Grayscale8;
        colorType = grey ? 0 : paletteColors;
        turned = plainMono && indexed.table[0] == qRgb(255, 255, 255);
        return;
    }
    // A picture that comes from two channels of grey and alpha, or from deep grey, goes back into as many.
    const bool deep = picture.pixels.format() == QImage::Format_RGBA64;
    const int nominal = picture.info.bitsPerPixel / (deep ? 2 : 1);
    const bool alpha = (nominal == 32 && picture.pixels.hasAlphaChannel()) || hasTransparency(picture);
    const bool grey = nominal == (alpha ? 16 : 8) && isAllGrey(picture.pixels);
    bits = deep ? 16 : 8;
    image = picture.pixels;
    colorType = (grey ? 0 : 2) + (alpha ? 4 : 0);
}

int PngLayout::channels() const
{
    return colorType == paletteColors ? 1 : (isGrey() ? 1 : 3) + (colorType & 4 ? 1 : 0);
}

PngRows::PngRows(const PngLayout &layout)
    : m_layout(layout)
    , m_channels(layout.channels())
    , m_row(size_t(std::max(layout.rowBytes(), qsizetype(layout.size().width()))))
{
}

const uchar *PngRows::make(int y)
{
    if (!m_layout.indexed.isNull()) {
        m_layout.indexed.packRow(y, m_row.data());
        if (m_layout.turned)
            std::transform(m_row.begin(), m_row.end(), m_row.begin(), [](uchar byte) { return uchar(~byte); });
    } else if (m_layout.bits == 16) {
        takeDeep(reinterpret_cast<const QRgba64 *>(m_layout.image.constScanLine(y)));
    } else {
        takeBytes(reinterpret_cast<const QRgb *>(m_layout.image.constScanLine(y)));
    }
    return m_row.data();
}

void PngRows::takeBytes(const QRgb *from)
{
    const int width = m_layout.image.width();
    uchar *to = m_row.data();
    if (m_channels == 3)
        return toRgb(from, width, to);
    for (int x = 0; x < width; ++x) {
        *to++ = uchar(qRed(from[x]));
        if (m_channels == 4) {
            *to++ = uchar(qGreen(from[x]));
            *to++ = uchar(qBlue(from[x]));
        }
        if (m_channels != 1)
            *to++ = uchar(qAlpha(from[x]));
    }
}

void PngRows::takeDeep(const QRgba64 *from)
{
    const int width = m_layout.image.width();
    uchar *to = m_row.data();
    const auto put = [&to](quint16 value) {
        *to++ = uchar(value >> 8);
        *to++ = uchar(value);
    };
    for (int x = 0; x < width; ++x) {
        put(from[x].red());
        if (m_channels >= 3) {
            put(from[x].green());
            put(from[x].blue());
        }
        if (m_channels == 2 || m_channels == 4)
            put(from[x].alpha());
    }
}

std::optional<QByteArray> packedPngPixels(const PngLayout &layout)
{
    const qsizetype bytes = layout.rowBytes();
    const int height = layout.size().height();
    if ((bytes + 1) * height > mostAtOnce)
        return {};
    QByteArray rows = allocateBytes((bytes + 1) * height);
    // What a palette's numbers differ by means nothing, and bits have no neighbours within a byte.
    if (layout.colorType == PngLayout::paletteColors || layout.bits < 8)
        storeRows(layout, rows);
    else
        filterRows(layout, rows);
    return packed(rows);
}
