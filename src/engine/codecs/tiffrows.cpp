#include "engine/codecs/tiffrows.h"
#include "engine/rounding.h"

#include "engine/limits.h"
#include "engine/picture.h"

#include <QList>
#include <QRgba64>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include <tiffio.h>

bool TiffLayout::isGrey() const
{
    return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE;
}

bool TiffLayout::isPalette() const
{
    return photometric == PHOTOMETRIC_PALETTE;
}

bool TiffLayout::isRgb() const
{
    return photometric == PHOTOMETRIC_RGB;
}

namespace {

int dotsPerMeter(TIFF *file, quint32 tag)
{
    float value = 0;
    quint16 unit = RESUNIT_INCH;
    TIFFGetFieldDefaulted(file, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (!TIFFGetField(file, tag, &value) || unit == RESUNIT_NONE || !(value > 0 && value < 100'000))
        return 0;
    return int(std::lround(unit == RESUNIT_CENTIMETER ? value * 100.0 : value / 0.0254));
}

quint16 shortTag(TIFF *file, quint32 tag)
{
    quint16 value = 0;
    TIFFGetFieldDefaulted(file, tag, &value);
    return value;
}

}

TiffLayout readTiffLayout(TIFF *file)
{
    TiffLayout layout;
    quint32 width = 0;
    quint32 height = 0;
    TIFFGetField(file, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(file, TIFFTAG_IMAGELENGTH, &height);
    constexpr quint32 beyond = limits::maximumSide + 1;
    layout.size = QSize(int(std::min(width, beyond)), int(std::min(height, beyond)));
    layout.bits = shortTag(file, TIFFTAG_BITSPERSAMPLE);
    layout.samples = shortTag(file, TIFFTAG_SAMPLESPERPIXEL);
    layout.photometric = shortTag(file, TIFFTAG_PHOTOMETRIC);
    layout.compression = shortTag(file, TIFFTAG_COMPRESSION);
    // One plane lies apart from nothing.
    layout.planar = layout.samples == 1 ? PLANARCONFIG_CONTIG : int(shortTag(file, TIFFTAG_PLANARCONFIG));
    layout.sampleFormat = shortTag(file, TIFFTAG_SAMPLEFORMAT);
    layout.orientation = shortTag(file, TIFFTAG_ORIENTATION);
    layout.isTiled = TIFFIsTiled(file);
    layout.dotsPerMeterX = dotsPerMeter(file, TIFFTAG_XRESOLUTION);
    layout.dotsPerMeterY = dotsPerMeter(file, TIFFTAG_YRESOLUTION);
    quint16 extraCount = 0;
    quint16 *extras = nullptr;
    TIFFGetFieldDefaulted(file, TIFFTAG_EXTRASAMPLES, &extraCount, &extras);
    layout.hasAlpha =
        extraCount > 0 && extras && (extras[0] == EXTRASAMPLE_ASSOCALPHA || extras[0] == EXTRASAMPLE_UNASSALPHA);
    layout.hasPlainAlpha = layout.hasAlpha && extras[0] == EXTRASAMPLE_UNASSALPHA;
    return layout;
}

bool canReadTiffRows(const TiffLayout &layout)
{
    if (layout.planar != PLANARCONFIG_CONTIG || layout.samples > 8)
        return false;
    const bool whole = layout.sampleFormat == SAMPLEFORMAT_UINT || layout.sampleFormat == SAMPLEFORMAT_VOID;
    const bool shallow = whole && (layout.bits == 1 || layout.bits == 2 || layout.bits == 4 || layout.bits == 8);
    const bool deep = (whole && layout.bits == 16) || (layout.sampleFormat == SAMPLEFORMAT_IEEEFP && layout.bits == 32);
    if (layout.isPalette())
        return shallow && (layout.samples == 1 || (layout.bits == 8 && !layout.hasAlpha));
    if (layout.isGrey())
        return (shallow && layout.samples == 1) || deep;
    // The library's own conversion multiplies colours with alpha, which cannot be undone without loss.
    const bool plainAlpha = whole && layout.bits == 8 && layout.samples == 4 && layout.hasPlainAlpha;
    return layout.isRgb() && ((deep && layout.samples >= 3) || plainAlpha);
}

namespace {

QList<QRgb> greyTable(int bits, bool whiteIsZero)
{
    const int largest = (1 << bits) - 1;
    QList<QRgb> table(largest + 1);
    for (int i = 0; i <= largest; ++i) {
        const int value = (whiteIsZero ? largest - i : i) * 255 / largest;
        table[i] = qRgb(value, value, value);
    }
    return table;
}

QList<QRgb> paletteTable(TIFF *file, int bits)
{
    QList<QRgb> table(1 << bits, qRgb(0, 0, 0));
    quint16 *red = nullptr, *green = nullptr, *blue = nullptr;
    if (!TIFFGetField(file, TIFFTAG_COLORMAP, &red, &green, &blue))
        return table;
    // Some writers put 8-bit values where 16-bit ones belong.
    bool deep = false;
    for (int i = 0; i < table.size(); ++i)
        deep = deep || red[i] > 255 || green[i] > 255 || blue[i] > 255;
    const auto byteOf = [deep](quint16 value) { return deep ? (value * 255 + 32767) / 65535 : value; };
    for (int i = 0; i < table.size(); ++i)
        table[i] = qRgb(byteOf(red[i]), byteOf(green[i]), byteOf(blue[i]));
    return table;
}

/// Turns stored samples into the picture's row, from its pixel `left` on.
class RowWriter
{
public:
    RowWriter(const TiffLayout &layout, QImage &image)
        : m_layout(layout)
        , m_image(image)
    {
    }

    void write(const uchar *samples, int y, int left, int count)
    {
        uchar *const row = m_image.scanLine(y);
        if (m_image.format() == QImage::Format_RGBA64)
            writeDeep(samples, reinterpret_cast<QRgba64 *>(row) + left, count);
        else if (m_image.format() == QImage::Format_ARGB32)
            writeColors(samples, reinterpret_cast<QRgb *>(row) + left, count);
        else if (m_image.format() == QImage::Format_Mono && left % 8 == 0)
            std::memcpy(row + left / 8, samples, size_t(count + 7) / 8);
        else if (m_image.format() == QImage::Format_Mono)
            writeBits(samples, row, left, count);
        else
            writeIndices(samples, row + left, count);
    }

private:
    void writeBits(const uchar *samples, uchar *row, int left, int count) const
    {
        for (int i = 0; i < count; ++i) {
            if (samples[i / 8] & (0x80 >> (i % 8)))
                row[(left + i) / 8] |= uchar(0x80 >> ((left + i) % 8));
        }
    }

    void writeIndices(const uchar *samples, uchar *to, int count) const
    {
        if (m_layout.bits == 8) {
            for (int i = 0; i < count; ++i)
                to[i] = samples[i * m_layout.samples];
            return;
        }
        const int perByte = 8 / m_layout.bits;
        const int mask = (1 << m_layout.bits) - 1;
        for (int i = 0; i < count; ++i)
            to[i] = uchar(samples[i / perByte] >> (8 - m_layout.bits * (i % perByte + 1)) & mask);
    }

    static void writeColors(const uchar *samples, QRgb *to, int count)
    {
        for (int i = 0; i < count; ++i, samples += 4)
            to[i] = qRgba(samples[0], samples[1], samples[2], samples[3]);
    }

    quint16 deepSample(const uchar *samples, int index) const
    {
        if (m_layout.bits == 16) {
            quint16 value;
            std::memcpy(&value, samples + 2 * index, sizeof value);
            return value;
        }
        float value;
        std::memcpy(&value, samples + 4 * index, sizeof value);
        return value > 0 ? quint16(roundToInt(double(std::min(value, 1.0F)) * 65535))
                         : quint16(0); // also for what is no number
    }

    void writeDeep(const uchar *samples, QRgba64 *to, int count) const
    {
        const int colors = m_layout.isRgb() ? 3 : 1;
        const quint16 turned = m_layout.photometric == PHOTOMETRIC_MINISWHITE ? 0xffff : 0;
        const bool alpha = m_layout.hasAlpha && m_layout.samples > colors;
        for (int i = 0; i < count; ++i) {
            const int first = i * m_layout.samples;
            const auto color = [&](int c) {
                return quint16(deepSample(samples, first + (colors == 3 ? c : 0)) ^ turned);
            };
            to[i] = QRgba64::fromRgba64(
                color(0), color(1), color(2), alpha ? deepSample(samples, first + colors) : quint16(0xffff));
        }
        if (alpha && !m_layout.hasPlainAlpha)
            divideByAlpha(to, count);
    }

    // No colour gets brighter than full, whatever the writer did.
    static void divideByAlpha(QRgba64 *row, int count)
    {
        for (QRgba64 *pixel = row; pixel != row + count; ++pixel) {
            const quint16 alpha = pixel->alpha();
            *pixel = QRgba64::fromRgba64(
                std::min(pixel->red(), alpha), std::min(pixel->green(), alpha), std::min(pixel->blue(), alpha), alpha)
                         .unpremultiplied();
        }
    }

    const TiffLayout &m_layout;
    QImage &m_image;
};

QImage imageFor(TIFF *file, const TiffLayout &layout)
{
    if (layout.bits > 8)
        return allocateImage(layout.size, QImage::Format_RGBA64);
    if (layout.isRgb())
        return allocateImage(layout.size, QImage::Format_ARGB32);
    const bool plainGrey = layout.bits == 8 && layout.photometric == PHOTOMETRIC_MINISBLACK;
    const QImage::Format format = layout.bits == 1 ? QImage::Format_Mono
        : plainGrey                                ? QImage::Format_Grayscale8
                                                   : QImage::Format_Indexed8;
    QImage image = allocateImage(layout.size, format);
    if (!image.isNull() && !plainGrey) {
        image.setColorTable(layout.isPalette() ? paletteTable(file, layout.bits)
                                               : greyTable(layout.bits, layout.photometric == PHOTOMETRIC_MINISWHITE));
    }
    return image;
}

/// A file can claim millions of strips or tiles and hold none of them.
constexpr int maximumFailures = 4096;

bool readTiles(TIFF *file, const TiffLayout &layout, RowWriter &writer)
{
    quint32 width = 0;
    quint32 height = 0;
    TIFFGetField(file, TIFFTAG_TILEWIDTH, &width);
    TIFFGetField(file, TIFFTAG_TILELENGTH, &height);
    const tmsize_t bytes = TIFFTileSize(file);
    const tmsize_t stride = TIFFTileRowSize(file);
    if (width == 0 || height == 0 || bytes <= 0 || stride <= 0 || bytes > limits::decodeBudget()
        || bytes / stride < tmsize_t(height))
        return false;
    std::vector<uchar> tile(static_cast<size_t>(bytes));
    bool any = false;
    int failures = 0;
    for (quint32 top = 0; top < quint32(layout.size.height()); top += height) {
        for (quint32 left = 0; left < quint32(layout.size.width()); left += width) {
            if (TIFFReadTile(file, tile.data(), left, top, 0, 0) < 0) {
                if (++failures > maximumFailures)
                    return any;
                continue;
            }
            any = true;
            const int count = int(std::min(width, quint32(layout.size.width()) - left));
            const int rows = int(std::min(height, quint32(layout.size.height()) - top));
            for (int y = 0; y < rows; ++y)
                writer.write(tile.data() + y * stride, int(top) + y, int(left), count);
        }
    }
    return any;
}

bool readStrips(TIFF *file, const TiffLayout &layout, RowWriter &writer)
{
    const tmsize_t stride = TIFFScanlineSize(file);
    quint32 rowsPerStrip = 0;
    TIFFGetFieldDefaulted(file, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
    const int height = layout.size.height();
    const int rows = int(std::min(rowsPerStrip, quint32(height)));
    if (rows < 1 || stride <= 0 || stride > limits::decodeBudget() / rows)
        return false;
    std::vector<uchar> strip(static_cast<size_t>(stride) * size_t(rows));
    bool any = false;
    int failures = 0;
    for (int top = 0; top < height && failures <= maximumFailures; top += rows) {
        const int count = std::min(rows, height - top);
        std::fill(strip.begin(), strip.end(), uchar(0));
        // A strip cut short still gives its first rows.
        const quint32 number = TIFFComputeStrip(file, quint32(top), 0);
        const bool read = TIFFReadEncodedStrip(file, number, strip.data(), stride * count) >= 0;
        any = any || read;
        failures += read ? 0 : 1;
        for (int y = 0; y < count; ++y)
            writer.write(strip.data() + y * stride, top + y, 0, layout.size.width());
    }
    return any;
}

}

QImage readTiffRows(TIFF *file, const TiffLayout &layout)
{
    // A row as the library sees it must hold as many samples as the writer takes.
    const qint64 needed = (qint64(layout.size.width()) * layout.bits * layout.samples + 7) / 8;
    if (!layout.isTiled && TIFFScanlineSize(file) < needed)
        return {};
    QImage image = imageFor(file, layout);
    if (image.isNull())
        return image;
    image.fill(0);
    RowWriter writer(layout, image);
    const bool read = layout.isTiled ? readTiles(file, layout, writer) : readStrips(file, layout, writer);
    return read ? image : QImage();
}
