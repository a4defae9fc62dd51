#include "engine/codecs/fpxtiles.h"

#include "engine/codecs/jpeg.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"
#include "engine/picture.h"

#include <algorithm>

namespace {

constexpr size_t streamHeader = 28; ///< in front of what the offsets of both streams count from
constexpr quint32 maximumTileSide = 4096;

struct Grid
{
    QSize tile;
    int across = 0;
    int down = 0;
    size_t table = 0;
    size_t entryLength = 0;
};

Grid gridOf(const QByteArray &header)
{
    const ByteReader reader(header);
    const auto field = [&](size_t number) { return reader.u32le(streamHeader + 4 * number); };
    Grid grid;
    if (field(4) < 1 || field(4) > maximumTileSide || field(5) < 1 || field(5) > maximumTileSide)
        return grid;
    grid.tile = QSize(int(field(4)), int(field(5)));
    grid.across = int((field(1) + field(4) - 1) / field(4));
    grid.down = int((field(2) + field(5) - 1) / field(5));
    grid.table = streamHeader + field(7);
    grid.entryLength = field(8);
    return grid;
}

enum Compression { Raw = 0, OneColor = 1, Jpeg = 2 };

/// The samples of one tile, channel beside channel; empty when they cannot be had.
class TileReader
{
public:
    TileReader(const FpxResolution &resolution, const QByteArray &data, const OleProperties &contents)
        : m_grid(gridOf(resolution.header))
        , m_channels(resolution.color.channels())
        , m_header(resolution.header)
        , m_data(data)
        , m_contents(contents)
    {
    }
    const Grid &grid() const { return m_grid; }
    bool read(int number);
    const QByteArray &samples() const { return m_samples; }
    bool has(int number) const { return m_header.has(entry(number), 16); }
    /// Whether the tile was left out on purpose, which shows the ground.
    bool isMissing(int number) const { return m_header.u32le(entry(number)) == 0xffffffff; }

private:
    size_t entry(int number) const { return m_grid.table + size_t(number) * m_grid.entryLength; }
    bool readJpeg(Bytes packed, quint32 subtype);

    const Grid m_grid;
    const int m_channels;
    const ByteReader m_header;
    const QByteArray &m_data;
    const OleProperties &m_contents;
    QByteArray m_samples;
};

bool TileReader::read(int number)
{
    const quint64 offset = quint64(m_header.u32le(entry(number))) + streamHeader;
    const quint32 length = m_header.u32le(entry(number) + 4);
    const quint32 subtype = m_header.u32le(entry(number) + 12);
    const Bytes data = bytesOf(m_data);
    const Bytes packed = offset < data.size()
        ? data.subspan(size_t(offset), std::min<size_t>(length, data.size() - size_t(offset)))
        : Bytes{};
    const qsizetype wanted = qsizetype(m_grid.tile.width()) * m_grid.tile.height() * m_channels;
    switch (m_header.u32le(entry(number) + 8)) {
    case Raw:
        m_samples = QByteArray(
            reinterpret_cast<const char *>(packed.data()), qsizetype(std::min(packed.size(), size_t(wanted))));
        m_samples.append(wanted - m_samples.size(), '\xff');
        return packed.size() >= size_t(wanted);
    case OneColor:
        m_samples.resize(wanted);
        for (qsizetype i = 0; i < wanted; ++i)
            m_samples[i] = char(subtype >> (i % m_channels * 8));
        return true;
    case Jpeg:
        return readJpeg(packed, subtype);
    default:
        m_samples.clear();
        return false;
    }
}

bool TileReader::readJpeg(Bytes packed, quint32 subtype)
{
    // A group's tables are a JPEG of their own: its end and the tile's beginning fall out.
    const quint32 group = subtype >> 24;
    const Bytes tables = group == 0 ? Bytes{} : m_contents.blob(0x03000001 | group << 16);
    QByteArray stream(reinterpret_cast<const char *>(tables.data()), qsizetype(tables.size()));
    if (stream.endsWith("\xff\xd9"))
        stream.chop(2);
    const size_t skipped = stream.isEmpty() || packed.size() < 2 ? 0 : 2;
    stream.append(reinterpret_cast<const char *>(packed.data() + skipped), qsizetype(packed.size() - skipped));
    const bool isYcc = (subtype >> 16 & 0xff) == 1;
    const Result<JpegSamples> jpeg = decodeJpegSamples(stream, m_grid.tile, m_channels, isYcc);
    m_samples = jpeg ? jpeg->samples : QByteArray();
    return jpeg && !jpeg->isDamaged;
}

uchar clamped(float value)
{
    return uchar(std::clamp(value + 0.5F, 0.0F, 255.0F));
}

/// Photo CD's colours, whose white lies below the largest value. The factors: the published FlashPix description.
QRgb fromPhotoYcc(uchar y, uchar cb, uchar cr)
{
    const float light = 1.3584F * float(y);
    const float c1 = 2.2179F * (float(cb) - 156);
    const float c2 = 1.8215F * (float(cr) - 137);
    return qRgb(clamped(light + c2), clamped(light - 0.194F * c1 - 0.509F * c2), clamped(light + c1));
}

using RowConversion = void (*)(const uchar *from, int count, uchar *to);

void copyGreys(const uchar *from, int count, uchar *to)
{
    std::copy_n(from, count, to);
}

template <FpxColor::Space space, bool hasOpacity, bool isPremultiplied>
void convertRow(const uchar *from, int count, uchar *to)
{
    constexpr int colors = space == FpxColor::Mono ? 1 : 3;
    QRgb *const row = reinterpret_cast<QRgb *>(to);
    for (int x = 0; x < count; ++x, from += colors + (hasOpacity ? 1 : 0)) {
        QRgb pixel = 0;
        if constexpr (space == FpxColor::Mono)
            pixel = qRgb(from[0], from[0], from[0]);
        else if constexpr (space == FpxColor::Rgb)
            pixel = qRgb(from[0], from[1], from[2]);
        else
            pixel = fromPhotoYcc(from[0], from[1], from[2]);
        if constexpr (hasOpacity)
            pixel = (pixel & RGB_MASK) | QRgb(from[colors]) << 24;
        if constexpr (isPremultiplied)
            pixel = qUnpremultiply(pixel);
        row[x] = pixel;
    }
}

template <FpxColor::Space space> RowConversion conversionOf(const FpxColor &color)
{
    if (!color.hasOpacity)
        return convertRow<space, false, false>;
    return color.isPremultiplied ? convertRow<space, true, true> : convertRow<space, true, false>;
}

RowConversion conversionFor(const FpxColor &color)
{
    switch (color.space) {
    case FpxColor::Mono:
        return color.hasOpacity ? conversionOf<FpxColor::Mono>(color) : copyGreys;
    case FpxColor::PhotoYcc:
        return conversionOf<FpxColor::PhotoYcc>(color);
    default:
        return conversionOf<FpxColor::Rgb>(color);
    }
}

QImage::Format formatOf(const FpxColor &color)
{
    if (color.hasOpacity)
        return QImage::Format_ARGB32;
    return color.space == FpxColor::Mono ? QImage::Format_Grayscale8 : QImage::Format_RGB32;
}

}

Result<FpxResolution> readFpxHeader(const QByteArray &header, int number)
{
    const ByteReader reader(header);
    constexpr quint32 fields = 36;
    const Grid grid = gridOf(header);
    if (!reader.has(streamHeader, fields) || grid.entryLength < 16 || grid.tile.isEmpty())
        return Failure{QStringLiteral("a FlashPix resolution without a readable header")};
    const auto side = [&](size_t at) { return int(std::min(reader.u32le(streamHeader + at), 1'000'000U)); };
    const QSize size(side(4), side(8));
    if (!limits::allows(size, 5))
        return Failure{tooLarge(size)};
    return FpxResolution{number, size, {}, header};
}

FpxPixels readFpxTiles(const FpxResolution &resolution, const QByteArray &data, const OleProperties &contents)
{
    const QSize size = resolution.size;
    FpxPixels pixels{allocateImage(size, formatOf(resolution.color)), false};
    if (pixels.image.isNull())
        return pixels;
    pixels.image.fill(resolution.color.hasOpacity ? 0U : 0xffffffffU);
    TileReader tiles(resolution, data, contents);
    const Grid &grid = tiles.grid();
    const RowConversion convert = conversionFor(resolution.color);
    const qsizetype pixelBytes = pixels.image.depth() / 8;
    const qsizetype tileStride = qsizetype(grid.tile.width()) * resolution.color.channels();
    int shown = 0;
    for (int number = 0; number < grid.across * grid.down; ++number) {
        if (!tiles.has(number)) {
            pixels.isDamaged = true;
            break;
        }
        if (tiles.isMissing(number)) {
            ++shown;
            continue;
        }
        if (!tiles.read(number))
            pixels.isDamaged = true;
        shown += tiles.samples().isEmpty() ? 0 : 1;
        const int left = number % grid.across * grid.tile.width();
        const int top = number / grid.across * grid.tile.height();
        const int width = std::min(grid.tile.width(), size.width() - left);
        const int height =
            std::min<int>({grid.tile.height(), size.height() - top, int(tiles.samples().size() / tileStride)});
        const uchar *from = reinterpret_cast<const uchar *>(tiles.samples().constData());
        for (int y = 0; y < height; ++y, from += tileStride)
            convert(from, width, pixels.image.scanLine(top + y) + left * pixelBytes);
    }
    if (shown == 0)
        pixels.image = {};
    return pixels;
}
