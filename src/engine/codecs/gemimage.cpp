#include "engine/codecs/gemimage.h"

#include "engine/codecs/bitplanes.h"
#include "engine/codecs/bytes.h"
#include "engine/codecs/gemcolors.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <algorithm>

namespace {

struct Image
{
    GemHeader header;
    QSize size;
    size_t patternBytes = 1;
    size_t dataAt = 0;
    QSize microns; ///< of a pixel

    bool isTrueColor() const { return header.planes > 8 || header.isVenturaTrueColor; }
    /// What the packer takes as one stretch: a row of one plane, or of all of a row of true colours.
    size_t stretchBytes() const
    {
        const size_t planeBytes = (size_t(size.width()) + 7) / 8;
        const int bits = header.isVenturaTrueColor ? 24 : header.planes == 15 ? 16 : header.planes;
        return isTrueColor() ? planeBytes * size_t(bits) : planeBytes;
    }
    int stretches() const { return isTrueColor() ? 1 : header.planes; }
    ImageInfo info() const { return {size, header.isVenturaTrueColor ? 24 : header.planes, 1, gemImageCodec.name}; }
};

Result<Image> openImage(const QByteArray &file)
{
    const ByteReader bytes(file);
    Image image;
    image.header = readGemHeader(bytes);
    image.size = QSize(bytes.u16be(12), bytes.u16be(14));
    image.patternBytes = std::max<size_t>(bytes.u16be(6), 1);
    image.dataAt = size_t(bytes.u16be(2)) * 2;
    image.microns = QSize(bytes.u16be(8), bytes.u16be(10));
    const int planes = image.header.planes;
    const bool known = (planes >= 1 && planes <= 8) || planes == 15 || planes == 16 || planes == 24 || planes == 32;
    if (bytes.u16be(0) < 1 || bytes.u16be(0) > 3 || image.dataAt < 16 || !bytes.has(0, image.dataAt) || !known)
        return Failure{QStringLiteral("not a GEM image")};
    if (!limits::allows(image.size, 4))
        return Failure{tooLarge(image.size)};
    return image;
}

/// Unpacks the rows: runs of black or white, repeated patterns, literals, and rows that count several times.
class Unpacker
{
public:
    Unpacker(const QByteArray &file, const Image &image)
        : m_bytes(file)
        , m_all(bytesOf(file))
        , m_patternBytes(image.patternBytes)
        , m_stretchBytes(image.stretchBytes())
        , m_at(image.dataAt)
        , m_row(m_stretchBytes * size_t(image.stretches()))
    {
    }
    /// The next row as stored, its planes one behind the other. False at the end of the file.
    bool next()
    {
        if (m_repeats > 0) {
            --m_repeats;
            return true;
        }
        if (m_at >= m_bytes.size())
            return false;
        while (m_bytes.has(m_at, 4) && m_bytes.u16be(m_at) == 0 && m_bytes.u8(m_at + 2) == 0xff) {
            m_repeats = std::max(m_bytes.u8(m_at + 3) - 1, 0);
            m_at += 4;
        }
        std::fill(m_row.begin(), m_row.end(), uchar(0));
        for (size_t start = 0; start < m_row.size(); start += m_stretchBytes)
            m_damaged = !fill(std::span(m_row).subspan(start, m_stretchBytes)) || m_damaged;
        return true;
    }
    const uchar *row() const { return m_row.data(); }
    bool isDamaged() const { return m_damaged; }

private:
    bool fill(std::span<uchar> out);
    Bytes take(size_t count)
    {
        const size_t start = std::min(m_at, m_all.size());
        m_at = start + std::min(count, m_all.size() - start);
        return m_all.subspan(start, m_at - start);
    }

    const ByteReader m_bytes;
    const Bytes m_all;
    const size_t m_patternBytes;
    const size_t m_stretchBytes;
    size_t m_at;
    std::vector<uchar> m_row;
    int m_repeats = 0;
    bool m_damaged = false;
};

// What goes beyond the end of a stretch is dropped.
bool Unpacker::fill(std::span<uchar> out)
{
    size_t filled = 0;
    const auto room = [&](size_t count) { return std::min(count, out.size() - filled); };
    const auto put = [&](Bytes data) {
        const size_t count = room(data.size());
        std::copy_n(data.begin(), count, out.begin() + std::ptrdiff_t(filled));
        filled += count;
    };
    while (filled < out.size()) {
        if (!m_bytes.has(m_at, 2) && (m_bytes.u8(m_at) & 0x7f) == 0)
            return false;
        const quint8 code = m_bytes.u8(m_at);
        const quint8 count = m_bytes.u8(m_at + 1);
        if (code == 0 && count == 0) {
            m_at += 4; // counts for a whole row, and no row begins here
        } else if (code == 0) {
            m_at += 2;
            const Bytes pattern = take(m_patternBytes);
            if (pattern.empty())
                return false;
            for (int i = 0; i < count && filled < out.size(); ++i)
                put(pattern);
        } else if (code == 0x80) {
            m_at += 2;
            const Bytes literals = take(count);
            put(literals);
            if (literals.size() < count)
                return false;
        } else {
            ++m_at;
            const size_t run = room(code & 0x7f);
            std::fill_n(out.begin() + std::ptrdiff_t(filled), run, uchar(code & 0x80 ? 0xff : 0));
            filled += run;
        }
    }
    return true;
}

void drawTrueColors(const Image &image, const uchar *from, QRgb *to)
{
    const int bits = image.header.isVenturaTrueColor ? 24 : image.header.planes;
    const bool fiveSixFive = bits == 16 && !image.header.isFifteenBits;
    for (int x = 0; x < image.size.width(); ++x) {
        if (bits >= 24) {
            const uchar *const rgb = from + x * (bits / 8) + (bits == 32 ? 1 : 0);
            to[x] = qRgb(rgb[0], rgb[1], rgb[2]);
            continue;
        }
        const int word = from[2 * x] << 8 | from[2 * x + 1];
        const int red = fiveSixFive ? word >> 11 : word >> 10 & 31;
        const int green = fiveSixFive ? (word >> 5 & 63) * 255 / 63 : (word >> 5 & 31) * 255 / 31;
        to[x] = qRgb(red * 255 / 31, green, (word & 31) * 255 / 31);
    }
}

QImage::Format formatOf(const Image &image)
{
    if (image.isTrueColor())
        return QImage::Format_RGB32;
    return image.header.planes == 1 ? QImage::Format_Mono : QImage::Format_Indexed8;
}

/// Draws all rows that there are; their number.
int drawRows(const Image &image, Unpacker &rows, QImage &pixels)
{
    const size_t width = size_t(image.size.width());
    const size_t planeBytes = (width + 7) / 8;
    std::vector<uchar> indices(planeBytes * 8);
    int y = 0;
    for (; y < pixels.height() && rows.next(); ++y) {
        uchar *const to = pixels.scanLine(y);
        if (image.isTrueColor()) {
            drawTrueColors(image, rows.row(), reinterpret_cast<QRgb *>(to));
        } else if (image.header.planes == 1) {
            std::copy_n(rows.row(), planeBytes, to);
        } else {
            mergePlanes(rows.row(), planeBytes, image.header.planes, indices.data());
            std::copy_n(indices.data(), width, to);
        }
    }
    return y;
}

Result<ImageInfo> probeGemImage(const EncodedFile &file, int)
{
    const Result<Image> image = openImage(file.bytes);
    if (!image)
        return image.failure();
    return image->info();
}

Result<Picture> decodeGemImage(const EncodedFile &file, const DecodeHint &)
{
    const Result<Image> image = openImage(file.bytes);
    if (!image)
        return image.failure();
    Picture picture;
    picture.info = image->info();
    picture.pixels = allocateImage(image->size, formatOf(*image));
    if (picture.isNull())
        return Failure{outOfMemory(image->size)};
    Unpacker rows(file.bytes, *image);
    const int drawn = drawRows(*image, rows, picture.pixels);
    if (drawn == 0)
        return Failure{QStringLiteral("a GEM image without a single row")};
    if (!image->isTrueColor())
        picture.pixels.setColorTable(gemPalette(image->header, ByteReader(file.bytes)));
    blankRows(picture.pixels, drawn);
    picture.partial = rows.isDamaged() || drawn < picture.pixels.height();
    constexpr int micronsOfAMeter = 1000000;
    if (!image->microns.isEmpty()) {
        picture.pixels.setDotsPerMeterX(micronsOfAMeter / image->microns.width());
        picture.pixels.setDotsPerMeterY(micronsOfAMeter / image->microns.height());
    }
    return picture;
}

}

// There is no signature: the header's first words must all be what programs write.
bool isGemImage(Bytes head)
{
    const ByteReader bytes(head);
    const int planes = bytes.u16be(4);
    constexpr int longestHeader = 2048;
    const bool known = (planes >= 1 && planes <= 8) || planes == 15 || planes == 16 || planes == 24 || planes == 32;
    return bytes.has(0, 16) && bytes.u16be(0) >= 1 && bytes.u16be(0) <= 3 && bytes.u16be(2) >= 8
        && bytes.u16be(2) <= longestHeader && known && bytes.u16be(6) >= 1 && bytes.u16be(6) <= 8 && bytes.u16be(12) > 0
        && bytes.u16be(14) > 0;
}

const Codec gemImageCodec{"GEM image", "img ximg timg", isGemImage, probeGemImage, decodeGemImage};
