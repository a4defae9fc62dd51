#include "engine/codecs/psppixels.h"

#include "engine/codecs/pixels.h"
#include "engine/codecs/pspblend.h"
#include "engine/limits.h"
#include "engine/picture.h"

#include <algorithm>
#include <array>

#include <zlib.h>

namespace {

qsizetype strideOf(int width, int bits)
{
    // Only pixels smaller than a byte are padded.
    return bits < 8 ? (qsizetype(width) * bits + 31) / 32 * 4 : qsizetype(width) * bits / 8;
}

/// Bytes that the packed ones can yield at the very most.
qint64 reachable(qint64 packed, int compression)
{
    switch (compression) {
    case PspCoding::RunLengths:
        return (packed / 2 + 1) * 127;
    case PspCoding::Lz77:
        return packed * 1032 + 64;
    default:
        return packed;
    }
}

qsizetype unpackRunLengths(Bytes packed, std::span<uchar> out)
{
    size_t at = 0;
    size_t filled = 0;
    while (at < packed.size() && filled < out.size()) {
        const uchar control = packed[at++];
        const size_t room = out.size() - filled;
        if (control > 128) {
            if (at >= packed.size())
                break;
            const size_t count = std::min<size_t>(control - 128U, room);
            std::fill_n(out.begin() + std::ptrdiff_t(filled), count, packed[at++]);
            filled += count;
        } else {
            const size_t count = std::min({size_t(control), room, packed.size() - at});
            std::copy_n(packed.begin() + std::ptrdiff_t(at), count, out.begin() + std::ptrdiff_t(filled));
            at += count;
            filled += count;
        }
    }
    return qsizetype(filled);
}

qsizetype inflateAll(Bytes packed, std::span<uchar> out)
{
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return 0;
    // Both fit: a file and a picture are smaller than what the library counts.
    stream.next_in = const_cast<uchar *>(packed.data());
    stream.avail_in = uInt(packed.size());
    stream.next_out = out.data();
    stream.avail_out = uInt(std::min<size_t>(out.size(), std::numeric_limits<uInt>::max()));
    int status = Z_OK;
    while (status == Z_OK && stream.avail_out > 0)
        status = inflate(&stream, Z_NO_FLUSH);
    const qsizetype filled = qsizetype(stream.next_out - out.data());
    inflateEnd(&stream);
    return filled;
}

/// A plane of at most `bytes` bytes, shorter when the channel holds less.
QByteArray unpackPlane(const PspChannel &channel, int compression, qint64 bytes)
{
    QByteArray plane(qsizetype(std::min(bytes, reachable(qint64(channel.packed.size()), compression))), '\0');
    const std::span<uchar> out(reinterpret_cast<uchar *>(plane.data()), size_t(plane.size()));
    switch (compression) {
    case PspCoding::Raw:
        std::copy_n(channel.packed.begin(), out.size(), out.begin());
        break;
    case PspCoding::RunLengths:
        plane.truncate(unpackRunLengths(channel.packed, out));
        break;
    case PspCoding::Lz77:
        plane.truncate(inflateAll(channel.packed, out));
        break;
    default:
        plane.clear();
    }
    return plane;
}

/// The colours of indices, or the greys; as long as the depth has values.
std::array<QRgb, 256> colorsOf(const PspCoding &coding)
{
    std::array<QRgb, 256> colors;
    colors.fill(qRgb(0, 0, 0));
    const int last = (1 << std::min(coding.depth, 8)) - 1;
    if (coding.palette.isEmpty()) {
        for (int i = 0; i <= last; ++i)
            colors[size_t(i)] = qRgb(i * 255 / last, i * 255 / last, i * 255 / last);
    } else {
        std::copy(coding.palette.begin(), coding.palette.end(), colors.begin());
    }
    return colors;
}

const uchar *rowOf(const QByteArray &plane, qsizetype stride, int y)
{
    return reinterpret_cast<const uchar *>(plane.constData()) + stride * y;
}

quint16 word(const uchar *bytes)
{
    return quint16(bytes[0] | bytes[1] << 8);
}

/// One row of indices, a byte each, whatever their depth.
void widenIndices(const uchar *from, int depth, int width, uchar *to)
{
    if (depth == 8) {
        std::copy_n(from, width, to);
        return;
    }
    const int perByte = 8 / depth;
    const int mask = (1 << depth) - 1;
    for (int x = 0; x < width; ++x)
        to[x] = uchar(from[x / perByte] >> (8 - depth - x % perByte * depth) & mask);
}

/// Makes rows of pixels out of planes; what is the same for all rows is decided once.
class Rows
{
public:
    Rows(const PspPixels &pixels, int opacity)
        : m_pixels(pixels)
        , m_opacity(opacity)
        , m_width(pixels.place.width())
        , m_colors(colorsOf(pixels.coding))
        , m_indices(size_t(m_width))
    {
    }
    void read(int y, QRgb *row);
    void read(int y, QRgba64 *row);

private:
    const uchar *color(int plane, int y) const { return rowOf(m_pixels.colors[plane], m_pixels.colorStride(), y); }
    /// Calls with the place in the row and each value of the user mask; where there is none, 0.
    template <class Call> void eachMasked(int y, Call call) const;

    const PspPixels &m_pixels;
    const int m_opacity;
    const int m_width;
    const std::array<QRgb, 256> m_colors;
    std::vector<uchar> m_indices;
};

template <class Call> void Rows::eachMasked(int y, Call call) const
{
    const QRect &mask = m_pixels.maskPlace;
    const int maskRow = m_pixels.place.top() + y - mask.top();
    const int bytes = m_pixels.maskBytes();
    const qsizetype stride = qsizetype(mask.width()) * bytes;
    const bool there = maskRow >= 0 && maskRow < m_pixels.mask.size() / std::max<qsizetype>(stride, 1);
    const uchar *const from = there ? rowOf(m_pixels.mask, stride, maskRow) : nullptr;
    const int shift = m_pixels.place.left() - mask.left();
    for (int x = 0; x < m_width; ++x) {
        const bool inside = from && x + shift >= 0 && x + shift < mask.width();
        const uchar *const value = inside ? from + qsizetype(x + shift) * bytes : nullptr;
        call(x, value ? bytes == 2 ? word(value) : *value : 0);
    }
}

void Rows::read(int y, QRgb *row)
{
    if (m_pixels.coding.isIndexed()) {
        widenIndices(color(0, y), m_pixels.coding.depth, m_width, m_indices.data());
        std::transform(m_indices.begin(), m_indices.end(), row, [this](uchar index) { return m_colors[index]; });
    } else {
        const uchar *const red = color(0, y), *const green = color(1, y), *const blue = color(2, y);
        for (int x = 0; x < m_width; ++x)
            row[x] = qRgb(red[x], green[x], blue[x]);
    }
    const auto cover = [](QRgb pixel, int value) {
        return (pixel & RGB_MASK) | QRgb((qAlpha(pixel) * value + 127) / 255) << 24;
    };
    if (!m_pixels.transparency.isEmpty()) {
        const uchar *const alpha = rowOf(m_pixels.transparency, m_width, y);
        for (int x = 0; x < m_width; ++x)
            row[x] = (row[x] & RGB_MASK) | QRgb(alpha[x]) << 24;
    }
    if (!m_pixels.mask.isEmpty())
        eachMasked(y, [&](int x, int value) { row[x] = cover(row[x], value); });
    if (m_opacity < 255) {
        for (int x = 0; x < m_width; ++x)
            row[x] = cover(row[x], m_opacity);
    }
}

void Rows::read(int y, QRgba64 *row)
{
    const bool isGrey = m_pixels.coding.depth == 16;
    const uchar *const red = color(0, y);
    const uchar *const green = isGrey ? red : color(1, y);
    const uchar *const blue = isGrey ? red : color(2, y);
    for (int x = 0; x < m_width; ++x)
        row[x] = QRgba64::fromRgba64(word(red + 2 * x), word(green + 2 * x), word(blue + 2 * x), 0xffff);
    const auto cover = [](QRgba64 &pixel, quint32 value, quint32 full) {
        pixel.setAlpha(quint16((quint64(pixel.alpha()) * value + full / 2) / full));
    };
    if (!m_pixels.transparency.isEmpty()) {
        const uchar *const alpha = rowOf(m_pixels.transparency, qsizetype(m_width) * 2, y);
        for (int x = 0; x < m_width; ++x)
            row[x].setAlpha(word(alpha + 2 * x));
    }
    if (!m_pixels.mask.isEmpty())
        eachMasked(y, [&](int x, int value) { cover(row[x], quint32(value), 0xffff); });
    if (m_opacity < 255) {
        for (int x = 0; x < m_width; ++x)
            cover(row[x], quint32(m_opacity), 255);
    }
}

}

namespace {

constexpr float full(QRgb)
{
    return 255;
}

constexpr float full(QRgba64)
{
    return 65535;
}

int alphaOf(QRgb pixel)
{
    return qAlpha(pixel);
}

int alphaOf(QRgba64 pixel)
{
    return pixel.alpha();
}

PspColor colorOf(QRgb pixel)
{
    return {float(qRed(pixel)) / 255, float(qGreen(pixel)) / 255, float(qBlue(pixel)) / 255};
}

PspColor colorOf(QRgba64 pixel)
{
    return {float(pixel.red()) / 65535, float(pixel.green()) / 65535, float(pixel.blue()) / 65535};
}

int scaled(float value, float to)
{
    return int(std::clamp(value, 0.0F, 1.0F) * to + 0.5F);
}

void setPixel(QRgb &pixel, PspColor color, float alpha)
{
    pixel = qRgba(scaled(color.red, 255), scaled(color.green, 255), scaled(color.blue, 255), scaled(alpha, 255));
}

void setPixel(QRgba64 &pixel, PspColor color, float alpha)
{
    const auto word = [](float value) { return quint16(scaled(value, 65535)); };
    pixel = QRgba64::fromRgba64(word(color.red), word(color.green), word(color.blue), word(alpha));
}

/// Both pixels show something, and the upper one does not simply hide the lower one.
template <class Pixel> void mix(Pixel &below, Pixel above, PspBlend blend)
{
    const float lowerAlpha = float(alphaOf(below)) / full(below);
    const float upperAlpha = float(alphaOf(above)) / full(above);
    const PspColor lower = colorOf(below);
    const PspColor upper = colorOf(above);
    const PspColor both = blend ? blend(lower, upper) : upper;
    const float alpha = lowerAlpha + upperAlpha - lowerAlpha * upperAlpha;
    const auto mixed = [&](float down, float up, float together) {
        return (down * lowerAlpha * (1 - upperAlpha) + up * upperAlpha * (1 - lowerAlpha)
                   + together * lowerAlpha * upperAlpha)
            / alpha;
    };
    setPixel(below,
        {mixed(lower.red, upper.red, both.red), mixed(lower.green, upper.green, both.green),
            mixed(lower.blue, upper.blue, both.blue)},
        alpha);
}

template <class Pixel> void layRows(QImage &canvas, const PspPixels &pixels, PspMixing mixing)
{
    const QRect shown = pixels.place.intersected(canvas.rect());
    const PspBlend blend = pspBlend(mixing.blendMode);
    Rows rows(pixels, mixing.opacity);
    std::vector<Pixel> row(size_t(pixels.place.width()));
    const int first = shown.top() - pixels.place.top();
    const int end = std::min(first + shown.height(), pixels.rows);
    for (int y = first; y < end; ++y) {
        rows.read(y, row.data());
        const Pixel *from = row.data() + (shown.left() - pixels.place.left());
        Pixel *to = reinterpret_cast<Pixel *>(canvas.scanLine(pixels.place.top() + y)) + shown.left();
        for (int x = 0; x < shown.width(); ++x, ++from, ++to) {
            const int alpha = alphaOf(*from);
            if (alpha == 0)
                continue;
            if (alphaOf(*to) == 0 || (!blend && alpha == int(full(*from))))
                *to = *from;
            else
                mix(*to, *from, blend);
        }
    }
}

QImage indexedImage(const PspPixels &pixels)
{
    const int depth = pixels.coding.depth;
    const bool greys = depth == 8 && pixels.coding.isGrey && pixels.coding.palette.isEmpty();
    QImage image = allocateImage(pixels.place.size(),
        depth == 1  ? QImage::Format_Mono
            : greys ? QImage::Format_Grayscale8
                    : QImage::Format_Indexed8);
    if (image.isNull())
        return image;
    if (!greys) {
        const std::array<QRgb, 256> colors = colorsOf(pixels.coding);
        image.setColorTable(QList<QRgb>(colors.begin(), colors.begin() + (1 << depth)));
    }
    for (int y = 0; y < pixels.rows; ++y) {
        const uchar *const from = rowOf(pixels.colors[0], pixels.colorStride(), y);
        if (depth == 1)
            std::copy_n(from, (image.width() + 7) / 8, image.scanLine(y));
        else
            widenIndices(from, depth, image.width(), image.scanLine(y));
    }
    return image;
}

template <class Pixel> QImage directImage(const PspPixels &pixels, QImage::Format format)
{
    QImage image = allocateImage(pixels.place.size(), format);
    Rows rows(pixels, 255);
    for (int y = 0; !image.isNull() && y < pixels.rows; ++y)
        rows.read(y, reinterpret_cast<Pixel *>(image.scanLine(y)));
    return image;
}

}

qsizetype PspPixels::colorStride() const
{
    return strideOf(place.width(), coding.channelBits());
}

PspPixels unpackPspPixels(
    const std::vector<PspChannel> &channels, const PspCoding &coding, QRect place, QRect maskPlace)
{
    PspPixels pixels{coding, place, {}, {}, {}, maskPlace, 0, false};
    if (!coding.isKnown() || !limits::allows(place.size(), coding.channelBits() > 8 ? 12 : 8)) {
        pixels.isDamaged = !place.isEmpty();
        return pixels;
    }
    const qsizetype maskStride = qsizetype(place.width()) * pixels.maskBytes();
    const bool single = coding.depth != 24 && coding.depth != 48;
    bool hasTransparency = false;
    for (const PspChannel &channel : channels) {
        QByteArray *plane = nullptr;
        qint64 bytes = maskStride * place.height();
        if (channel.kind == PspChannel::Color) {
            const int number = single ? channel.number : channel.number - 1;
            plane = number >= 0 && number < (single ? 1 : 3) ? &pixels.colors[number] : nullptr;
            bytes = pixels.colorStride() * place.height();
        } else if (channel.kind == PspChannel::TransparencyMask) {
            plane = &pixels.transparency;
            hasTransparency = true;
        } else if (channel.kind == PspChannel::UserMask && limits::allows(maskPlace.size(), 8)) {
            plane = &pixels.mask;
            bytes = qint64(maskPlace.width()) * pixels.maskBytes() * maskPlace.height();
        }
        // A second plane of the same kind does not count.
        if (plane && plane->isEmpty())
            *plane = unpackPlane(channel, coding.compression, bytes);
    }
    const auto rowsOf = [](const QByteArray &plane, qsizetype stride) { return int(plane.size() / stride); };
    pixels.rows = place.height();
    for (int i = 0; i < (single ? 1 : 3); ++i)
        pixels.rows = std::min(pixels.rows, rowsOf(pixels.colors[i], pixels.colorStride()));
    if (hasTransparency)
        pixels.rows = std::min(pixels.rows, rowsOf(pixels.transparency, maskStride));
    pixels.isDamaged = pixels.rows < place.height();
    return pixels;
}

QImage pspImage(const PspPixels &pixels)
{
    QImage image = pixels.coding.isIndexed() ? indexedImage(pixels)
        : pixels.coding.channelBits() > 8    ? directImage<QRgba64>(pixels, QImage::Format_RGBA64)
                                             : directImage<QRgb>(pixels, QImage::Format_RGB32);
    if (!image.isNull())
        blankRows(image, pixels.rows);
    return image;
}

void layPspPixels(QImage &canvas, const PspPixels &pixels, PspMixing mixing)
{
    if (canvas.format() == QImage::Format_RGBA64)
        layRows<QRgba64>(canvas, pixels, mixing);
    else
        layRows<QRgb>(canvas, pixels, mixing);
}
