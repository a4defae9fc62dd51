#include "engine/codecs/sgi.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QRgba64>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr quint16 magic = 474;
constexpr size_t headerBytes = 512;
constexpr quint16 full = 0xffff;

struct Header
{
    QSize size;
    int bytes = 1; ///< a sample
    int channels = 1;
    bool packed = false;
    bool hasAlpha() const { return channels == 2 || channels >= 4; }
    int colors() const { return channels >= 3 ? 3 : 1; }
    /// Those that are shown.
    int used() const { return colors() + (hasAlpha() ? 1 : 0); }
    ImageInfo info() const { return {size, bytes * 8 * channels, 1, sgiCodec.name}; }
};

Result<Header> readHeader(const QByteArray &file)
{
    const ByteReader bytes(file);
    const int dimensions = bytes.u16be(4);
    Header header;
    header.packed = bytes.u8(2) == 1;
    header.bytes = bytes.u8(3);
    header.size = QSize(bytes.u16be(6), dimensions >= 2 ? bytes.u16be(8) : 1);
    header.channels = dimensions >= 3 ? bytes.u16be(10) : 1;
    if (bytes.u16be(0) != magic || bytes.u8(2) > 1)
        return Failure{QStringLiteral("not an SGI picture")};
    if (header.bytes < 1 || header.bytes > 2 || dimensions < 1 || dimensions > 3 || header.channels < 1)
        return Failure{QStringLiteral("an SGI picture of an unknown kind")};
    if (!limits::allows(header.size, header.bytes == 2 ? 8 : 4))
        return Failure{tooLarge(header.size)};
    return header;
}

/// Rows of samples, 0 to 65535. The lowest row of a channel comes first.
class Rows
{
public:
    Rows(const QByteArray &file, const Header &header)
        : m_bytes(file)
        , m_header(header)
    {
    }

    /// How many samples of the row could be read; `y` counts from the top.
    int read(int channel, int y, std::vector<quint16> &samples) const
    {
        const size_t height = size_t(m_header.size.height());
        const size_t row = size_t(channel) * height + height - 1 - size_t(y);
        if (m_header.packed)
            return unpack(row, samples);
        const size_t width = samples.size();
        const size_t at = headerBytes + row * width * size_t(m_header.bytes);
        const size_t there = at < m_bytes.size() ? (m_bytes.size() - at) / size_t(m_header.bytes) : 0;
        const size_t count = std::min(width, there);
        for (size_t x = 0; x < count; ++x)
            samples[x] = scaled(sample(at + x * size_t(m_header.bytes)));
        return int(count);
    }

private:
    quint16 sample(size_t at) const { return m_header.bytes == 2 ? m_bytes.u16be(at) : m_bytes.u8(at); }
    quint16 scaled(quint16 value) const { return m_header.bytes == 2 ? value : quint16(value * 257); }

    /// Behind the header stand the places of all rows and then their lengths.
    int unpack(size_t row, std::vector<quint16> &samples) const
    {
        const size_t rows = size_t(m_header.size.height()) * size_t(m_header.channels);
        const size_t start = m_bytes.u32be(headerBytes + 4 * row);
        const size_t length = m_bytes.u32be(headerBytes + 4 * (rows + row));
        const size_t step = size_t(m_header.bytes);
        const size_t end = std::min(m_bytes.size(), start + length);
        size_t x = 0;
        size_t at = start;
        // A count of 0 ends the row.
        while (start >= headerBytes && at + step <= end && x < samples.size()) {
            const quint16 code = sample(at);
            size_t count = code & 0x7f;
            at += step;
            if (count == 0)
                break;
            const bool literal = (code & 0x80) != 0;
            count = std::min({count, samples.size() - x, at < end ? (literal ? (end - at) / step : count) : 0});
            for (size_t i = 0; i < count; ++i)
                samples[x++] = scaled(sample(literal ? at + i * step : at));
            at += literal ? std::max(count, size_t(1)) * step : step;
        }
        return int(x);
    }

    const ByteReader m_bytes;
    const Header &m_header;
};

QImage::Format formatOf(const Header &header)
{
    if (header.bytes == 2)
        return QImage::Format_RGBA64;
    if (header.hasAlpha())
        return QImage::Format_ARGB32;
    return header.colors() == 1 ? QImage::Format_Grayscale8 : QImage::Format_RGB32;
}

using Channels = std::array<std::vector<quint16>, 4>;

void store(const Header &header, const Channels &channels, uchar *row, QImage::Format format)
{
    const bool color = header.colors() == 3;
    const std::vector<quint16> &green = channels[color ? 1 : 0];
    const std::vector<quint16> &blue = channels[color ? 2 : 0];
    const std::vector<quint16> &alpha = channels[size_t(header.colors())];
    for (size_t x = 0; x < channels[0].size(); ++x) {
        const QRgba64 pixel = qRgba64(channels[0][x], green[x], blue[x], header.hasAlpha() ? alpha[x] : full);
        if (format == QImage::Format_Grayscale8)
            row[x] = pixel.red8();
        else if (format == QImage::Format_RGBA64)
            reinterpret_cast<QRgba64 *>(row)[x] = pixel;
        else
            reinterpret_cast<QRgb *>(row)[x] = pixel.toArgb32();
    }
}

/// Reads all rows; what a cut file lacks is white where a row has nothing, else dark and opaque. False when no row
/// has anything.
bool readAll(const Rows &rows, const Header &header, Picture &picture)
{
    Channels channels;
    bool any = false;
    for (int y = 0; y < header.size.height(); ++y) {
        bool here = false;
        for (int c = 0; c < header.used(); ++c) {
            std::vector<quint16> &samples = channels[size_t(c)];
            samples.assign(size_t(header.size.width()), c == header.colors() ? full : quint16(0));
            const int count = rows.read(c, y, samples);
            here = here || count > 0;
            picture.partial = picture.partial || count < header.size.width();
        }
        for (int c = 0; !here && c < header.used(); ++c)
            std::fill(channels[size_t(c)].begin(), channels[size_t(c)].end(), full);
        any = any || here;
        store(header, channels, picture.pixels.scanLine(y), picture.pixels.format());
    }
    return any;
}

bool sniffSgi(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.u16be(0) == magic && bytes.u8(2) <= 1 && bytes.u8(3) >= 1 && bytes.u8(3) <= 2;
}

Result<ImageInfo> probeSgi(const EncodedFile &file, int)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return header->info();
}

Result<Picture> decodeSgi(const EncodedFile &file, const DecodeHint &)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    Picture picture;
    picture.info = header->info();
    const size_t leastBytes = header->packed ? size_t(8) * size_t(header->size.height()) * size_t(header->channels)
                                             : size_t(header->size.width()) * size_t(header->bytes);
    if (!ByteReader(file.bytes).has(headerBytes, leastBytes))
        return Failure{QStringLiteral("an SGI picture that ends before its first row")};
    picture.pixels = allocateImage(header->size, formatOf(*header));
    if (picture.isNull())
        return Failure{outOfMemory(header->size)};
    if (!readAll(Rows(file.bytes, *header), *header, picture))
        return Failure{QStringLiteral("an SGI picture without a readable row")};
    return picture;
}

}

const Codec sgiCodec{"SGI", "rgb rgba sgi bw", sniffSgi, probeSgi, decodeSgi};
