#include "engine/codecs/tiffsamples.h"

#include "engine/codecs/labcolors.h"
#include "engine/limits.h"
#include "engine/picture.h"
#include "engine/rounding.h"

#include <QFloat16>
#include <QRgba64>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

#include <tiffio.h>

namespace {

/// A file can claim millions of strips or tiles and hold none of them.
constexpr int maximumFailures = 4096;
constexpr quint16 full = 0xffff;

quint16 numberOf(double value)
{
    return value > 0 ? quint16(roundToInt(std::min(value, 1.0) * full)) : quint16(0); // also for what is no number
}

/// 24 bits as one sign, seven of an exponent from -63 on, and sixteen behind the point (TIFF technical note 3). The
/// bytes stand in the machine's order.
double floatOf24Bits(const uchar *from)
{
    const quint32 bits = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? quint32(from[0] | from[1] << 8 | from[2] << 16)
                                                         : quint32(from[2] | from[1] << 8 | from[0] << 16);
    if (bits >> 23)
        return 0;
    const int exponent = int(bits >> 16 & 0x7f);
    const double fraction = double(bits & 0xffff) / 0x10000;
    return exponent == 0 ? std::ldexp(fraction, -62) : std::ldexp(1 + fraction, exponent - 63);
}

template <class Number> Number loaded(const uchar *from)
{
    Number value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// Whole numbers of up to 16 bits, the highest bit first; each row starts at a byte.
void unpackBits(const uchar *from, int bits, int count, quint16 *to)
{
    const quint32 most = (1U << bits) - 1;
    quint32 held = 0;
    int holds = 0;
    for (int i = 0; i < count; ++i) {
        while (holds < bits) {
            held = held << 8 | *from++;
            holds += 8;
        }
        holds -= bits;
        to[i] = quint16(((held >> holds & most) * full + most / 2) / most);
    }
}

template <class Sample> void unpackEach(const uchar *from, int bits, int count, quint16 *to, const Sample &sample)
{
    for (int i = 0; i < count; ++i)
        to[i] = sample(from + i * (bits / 8));
}

/// `count` stored samples as numbers from 0 to 65535.
void unpack(const uchar *from, const TiffLayout &layout, int count, quint16 *to)
{
    const int bits = layout.bits;
    const auto each = [&](const auto &sample) { unpackEach(from, bits, count, to, sample); };
    const bool real = layout.sampleFormat == SAMPLEFORMAT_IEEEFP;
    if (real && bits == 16)
        each([](const uchar *at) { return numberOf(double(float(loaded<qfloat16>(at)))); });
    else if (real && bits == 24)
        each([](const uchar *at) { return numberOf(floatOf24Bits(at)); });
    else if (real && bits == 32)
        each([](const uchar *at) { return numberOf(double(loaded<float>(at))); });
    else if (real)
        each([](const uchar *at) { return numberOf(loaded<double>(at)); });
    else if (bits == 16)
        std::memcpy(to, from, size_t(count) * 2);
    else if (bits == 24)
        each([](const uchar *at) { return quint16(at[1] | at[Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? 2 : 0] << 8); });
    else if (bits == 32)
        each([](const uchar *at) { return quint16(loaded<quint32>(at) >> 16); });
    else
        unpackBits(from, bits, count, to);
}

/// The strips or tiles, and how many of each belong to one place: one, or one for each plane.
struct Blocks
{
    int width = 0;
    int height = 0;
    tmsize_t stride = 0; ///< bytes a row of a block
    tmsize_t bytes = 0;
    int planes = 1;
    int samples = 1; ///< of one pixel in a block
};

Blocks blocksOf(TIFF *file, const TiffLayout &layout, int wanted)
{
    quint32 width = quint32(layout.size.width());
    quint32 height = 0;
    Blocks blocks;
    if (layout.isTiled) {
        TIFFGetField(file, TIFFTAG_TILEWIDTH, &width);
        TIFFGetField(file, TIFFTAG_TILELENGTH, &height);
        blocks.stride = TIFFTileRowSize(file);
        blocks.bytes = TIFFTileSize(file);
    } else {
        TIFFGetFieldDefaulted(file, TIFFTAG_ROWSPERSTRIP, &height);
        height = std::min(height, quint32(layout.size.height()));
        blocks.stride = TIFFScanlineSize(file);
        blocks.bytes = blocks.stride <= limits::decodeBudget() / std::max(1U, height) ? blocks.stride * height : 0;
    }
    constexpr quint32 beyond = 1U << 24;
    blocks.width = int(std::min(width, beyond));
    blocks.height = int(std::min(height, beyond));
    const bool apart = layout.planar == PLANARCONFIG_SEPARATE;
    blocks.planes = apart ? wanted : 1;
    blocks.samples = apart ? 1 : layout.samples;
    return blocks;
}

bool areSound(const Blocks &blocks, const TiffLayout &layout)
{
    const qint64 rowBits = qint64(blocks.width) * blocks.samples * layout.bits;
    return blocks.width > 0 && blocks.height > 0 && blocks.stride >= (rowBits + 7) / 8
        && blocks.bytes / blocks.stride >= blocks.height && blocks.bytes <= limits::decodeBudget() / blocks.planes;
}

bool isLab(const TiffLayout &layout)
{
    return layout.photometric == PHOTOMETRIC_CIELAB || layout.photometric == PHOTOMETRIC_ICCLAB;
}

/// How many samples in front of the alpha make a colour.
int colorSamples(const TiffLayout &layout)
{
    if (layout.photometric == PHOTOMETRIC_SEPARATED)
        return 4;
    return layout.isRgb() || (isLab(layout) && layout.samples >= 3) ? 3 : 1;
}

/// The file's colours as of 16 bits, empty without a palette.
std::vector<QRgba64> paletteOf(TIFF *file, const TiffLayout &layout)
{
    quint16 *red = nullptr, *green = nullptr, *blue = nullptr;
    if (!layout.isPalette() || !TIFFGetField(file, TIFFTAG_COLORMAP, &red, &green, &blue))
        return {};
    std::vector<QRgba64> palette(size_t(1) << layout.bits);
    for (size_t i = 0; i < palette.size(); ++i)
        palette[i] = qRgba64(red[i], green[i], blue[i], full);
    // Some writers put 8-bit values where 16-bit ones belong.
    const bool deep = std::any_of(palette.begin(), palette.end(),
        [](QRgba64 color) { return (color.red() | color.green() | color.blue()) > 255; });
    for (QRgba64 &color : palette) {
        if (!deep)
            color = qRgba64(color.red() * 257U & full, color.green() * 257U & full, color.blue() * 257U & full, full);
    }
    return palette;
}

/// Puts the samples of a row's pixels together.
class Composer
{
public:
    Composer(const TiffLayout &layout, QImage &image, bool alpha, std::vector<QRgba64> palette)
        : m_layout(layout)
        , m_image(image)
        , m_colors(colorSamples(layout))
        , m_alpha(alpha)
        , m_palette(std::move(palette))
    {
        if (isLab(layout))
            m_lab = std::make_unique<LabConverter<quint16>>();
    }

    /// Channel c of pixel x is `samples[c][x * step]`.
    void write(const std::vector<const quint16 *> &samples, int step, int y, int left, int count)
    {
        m_row.resize(size_t(count));
        const quint16 turned = m_layout.photometric == PHOTOMETRIC_MINISWHITE ? full : 0;
        const auto sample = [&](int channel, int x) { return samples[size_t(channel)][x * step]; };
        for (int x = 0; x < count; ++x) {
            const quint16 alpha = m_alpha ? sample(m_colors, x) : full;
            QRgba64 color;
            if (m_colors == 4)
                color = light(sample(0, x), sample(1, x), sample(2, x), sample(3, x));
            else if (m_lab)
                color = fromLab(
                    sample(0, x), m_colors == 3 ? sample(1, x) : neutral(), m_colors == 3 ? sample(2, x) : neutral());
            else if (m_layout.isPalette())
                color = fromPalette(sample(0, x));
            else if (m_colors == 3)
                color = qRgba64(sample(0, x), sample(1, x), sample(2, x), full);
            else
                color = grey(quint16(sample(0, x) ^ turned));
            m_row[size_t(x)] = divided(color.red(), color.green(), color.blue(), alpha);
        }
        store(m_image.scanLine(y), left, count);
    }

private:
    static QRgba64 grey(quint16 value) { return qRgba64(value, value, value, full); }

    static QRgba64 light(quint16 cyan, quint16 magenta, quint16 yellow, quint16 black)
    {
        const auto mixed = [black](quint16 ink) {
            return quint16((quint32(full - ink) * quint32(full - black) + full / 2) / full);
        };
        return qRgba64(mixed(cyan), mixed(magenta), mixed(yellow), full);
    }

    QRgba64 fromPalette(quint16 scaled) const
    {
        const quint32 most = (1U << m_layout.bits) - 1;
        const size_t index = (scaled * most + full / 2) / full;
        return index < m_palette.size() ? m_palette[index] : grey(0);
    }

    /// What stands for no colour.
    quint16 neutral() const { return m_layout.photometric == PHOTOMETRIC_CIELAB ? 0 : 0x8000; }

    /// Differences of 8 bits count whole units, signed ones in the format's own Lab, from a middle on in ICC's, whose
    /// lightness of 16 bits ends at FF00.
    QRgba64 fromLab(quint16 lightness, quint16 a, quint16 b) const
    {
        const bool isIcc = m_layout.photometric == PHOTOMETRIC_ICCLAB;
        const auto difference = [&](quint16 value) {
            const quint16 units = m_layout.bits > 8 ? value : quint16(value & 0xff00);
            return quint16(units ^ (isIcc ? 0 : 0x8000));
        };
        constexpr quint32 mostOfIcc = 0xff00;
        quint16 values[] = {lightness, difference(a), difference(b)};
        if (isIcc && m_layout.bits > 8)
            values[0] = quint16(std::min<quint32>(lightness, mostOfIcc) * full / mostOfIcc);
        m_lab->convert(&values[0], &values[1], &values[2], 1);
        return qRgba64(values[0], values[1], values[2], full);
    }

    /// No colour gets brighter than full, whatever the writer did.
    QRgba64 divided(quint16 red, quint16 green, quint16 blue, quint16 alpha) const
    {
        if (alpha == full || m_layout.hasPlainAlpha)
            return qRgba64(red, green, blue, alpha);
        return qRgba64(std::min(red, alpha), std::min(green, alpha), std::min(blue, alpha), alpha).unpremultiplied();
    }

    void store(uchar *row, int left, int count) const
    {
        if (m_image.format() == QImage::Format_RGBA64)
            std::copy_n(m_row.begin(), count, reinterpret_cast<QRgba64 *>(row) + left);
        else if (m_image.format() == QImage::Format_Grayscale8)
            std::transform(m_row.begin(), m_row.end(), row + left, [](QRgba64 pixel) { return pixel.red8(); });
        else
            std::transform(m_row.begin(), m_row.end(), reinterpret_cast<QRgb *>(row) + left,
                [](QRgba64 pixel) { return pixel.toArgb32(); });
    }

    const TiffLayout &m_layout;
    QImage &m_image;
    const int m_colors;
    const bool m_alpha;
    const std::vector<QRgba64> m_palette;
    std::unique_ptr<LabConverter<quint16>> m_lab;
    std::vector<QRgba64> m_row;
};

bool readBlock(
    TIFF *file, const TiffLayout &layout, int left, int top, int plane, std::vector<uchar> &block, tmsize_t wanted)
{
    const quint16 sample = quint16(plane);
    if (layout.isTiled)
        return TIFFReadTile(file, block.data(), quint32(left), quint32(top), 0, sample) >= 0;
    return TIFFReadEncodedStrip(file, TIFFComputeStrip(file, quint32(top), sample), block.data(), wanted) >= 0;
}

bool readAll(TIFF *file, const TiffLayout &layout, const Blocks &blocks, int wanted, Composer &composer)
{
    std::vector<std::vector<uchar>> planes(size_t(blocks.planes), std::vector<uchar>(size_t(blocks.bytes)));
    std::vector<std::vector<quint16>> samples(
        planes.size(), std::vector<quint16>(size_t(blocks.width) * size_t(blocks.samples)));
    std::vector<const quint16 *> channels;
    for (int c = 0; c < wanted; ++c)
        channels.push_back(blocks.planes > 1 ? samples[size_t(c)].data() : samples[0].data() + c);
    bool any = false;
    int failures = 0;
    for (int top = 0; top < layout.size.height(); top += blocks.height) {
        const int rows = std::min(blocks.height, layout.size.height() - top);
        for (int left = 0; left < layout.size.width(); left += blocks.width) {
            const int columns = std::min(blocks.width, layout.size.width() - left);
            for (int plane = 0; plane < blocks.planes; ++plane) {
                std::vector<uchar> &block = planes[size_t(plane)];
                // A damaged block gives its first rows; the rest must not show what the block before left.
                std::fill(block.begin(), block.end(), uchar(0));
                const bool read = failures <= maximumFailures
                    && readBlock(file, layout, left, top, plane, block, blocks.stride * rows);
                any = any || read;
                failures += read ? 0 : 1;
            }
            for (int y = 0; y < rows; ++y) {
                for (size_t plane = 0; plane < planes.size(); ++plane)
                    unpack(planes[plane].data() + y * blocks.stride, layout, columns * blocks.samples,
                        samples[plane].data());
                composer.write(channels, blocks.samples, top + y, left, columns);
            }
        }
    }
    return any;
}

}

bool canReadTiffSamples(const TiffLayout &layout)
{
    // The library's own conversion knows inks of 8 bits alone, and its Lab is made for another display.
    const bool inks = layout.photometric == PHOTOMETRIC_SEPARATED && (layout.bits != 8 || layout.hasAlpha);
    const bool lab = isLab(layout) && (layout.bits == 8 || layout.bits == 16);
    const bool palette = layout.isPalette() && layout.bits <= 16;
    if ((!layout.isGrey() && !layout.isRgb() && !inks && !lab && !palette) || layout.samples < colorSamples(layout)
        || layout.samples > 8 || layout.compression == COMPRESSION_OJPEG)
        return false;
    const int bits = layout.bits;
    if (layout.sampleFormat == SAMPLEFORMAT_IEEEFP)
        return !palette && !lab && (bits == 16 || bits == 24 || bits == 32 || bits == 64);
    return (layout.sampleFormat == SAMPLEFORMAT_UINT || layout.sampleFormat == SAMPLEFORMAT_VOID
               || (lab && layout.sampleFormat == SAMPLEFORMAT_INT))
        && ((bits >= 1 && bits <= 16) || bits == 24 || bits == 32);
}

QImage readTiffSamples(TIFF *file, const TiffLayout &layout)
{
    const int colors = colorSamples(layout);
    const bool alpha = layout.hasAlpha && layout.samples > colors;
    const int wanted = colors + (alpha ? 1 : 0);
    const Blocks blocks = blocksOf(file, layout, wanted);
    if (!areSound(blocks, layout))
        return {};
    const bool isColored = layout.isPalette() || isLab(layout);
    const bool deep = layout.bits > 8 && !layout.isPalette();
    const QImage::Format format = deep ? QImage::Format_RGBA64
        : alpha                        ? QImage::Format_ARGB32
        : colors == 1 && !isColored    ? QImage::Format_Grayscale8
                                       : QImage::Format_RGB32;
    QImage image = allocateImage(layout.size, format);
    if (image.isNull())
        return image;
    Composer composer(layout, image, alpha, paletteOf(file, layout));
    return readAll(file, layout, blocks, wanted, composer) ? image : QImage();
}
