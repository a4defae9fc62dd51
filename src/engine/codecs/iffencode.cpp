#include "engine/codecs/iff.h"

#include "engine/codecs/bitplanes.h"
#include "engine/codecs/bytes.h"
#include "engine/codecs/encodepixels.h"
#include "engine/codecs/metadatawrite.h"
#include "engine/codecs/packbits.h"
#include "engine/limits.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

/// Appends a chunk: name, length, data, and a zero when the length is odd.
template <size_t N> void writeChunk(ByteWriter &out, const char (&name)[N], const QByteArray &data)
{
    out.text(name);
    out.u32be(quint32(data.size()));
    out.bytes += data;
    out.fill(data.size() % 2);
}

QByteArray headerOf(QSize size, int planes)
{
    ByteWriter header;
    header.u16be(quint32(size.width()));
    header.u16be(quint32(size.height()));
    header.u32be(0); // position
    header.u8(quint32(planes));
    header.u8(0); // no mask
    header.u8(1); // run lengths
    header.u8(0);
    header.u16be(0); // transparent colour
    header.u8(1), header.u8(1); // square pixels
    constexpr int largestPage = 32767;
    header.u16be(quint32(std::min(size.width(), largestPage)));
    header.u16be(quint32(std::min(size.height(), largestPage)));
    return header.bytes;
}

/// How many planes hold the picture's indices: its nominal depth where that is enough.
int planesFor(const QImage &indexed, int nominalBits)
{
    int largest = 0;
    for (int y = 0; y < indexed.height(); ++y) {
        const uchar *const row = indexed.constScanLine(y);
        largest = std::max(largest, int(*std::max_element(row, row + indexed.width())));
    }
    int planes = nominalBits >= 1 && nominalBits <= 8 ? nominalBits : 8;
    while (largest >= 1 << planes)
        ++planes;
    return planes;
}

/// The whole map of 2^planes colours. A map whose low half-bytes are all 0 would be taken for one of four bits a
/// channel and brightened; a colour that nobody uses keeps readers from that.
QByteArray colorMap(const QList<QRgb> &table, int planes)
{
    const qsizetype count = qsizetype(1) << planes;
    QByteArray map;
    for (qsizetype i = 0; i < count; ++i) {
        const QRgb color = i < table.size() ? table[i] : qRgb(0, 0, 0);
        for (const int channel : {qRed(color), qGreen(color), qBlue(color)})
            map.append(char(channel));
    }
    const bool halfBytes = std::all_of(map.begin(), map.end(), [](char value) { return (uchar(value) & 15) == 0; });
    const bool black = std::all_of(map.begin(), map.end(), [](char value) { return value == 0; });
    if (halfBytes && !black) {
        if (table.size() < count)
            map.chop(3);
        map.append(3, '\x01');
    }
    return map;
}

/// Packs pictures row by row, each row of each plane on its own.
class Body
{
public:
    explicit Body(int width)
        : m_rowBytes((size_t(width) + 15) / 16 * 2)
        , m_pixels(m_rowBytes * 8)
        , m_planes(m_rowBytes * 8)
    {
    }
    /// Room for one byte a pixel of the next row.
    uchar *pixels() { return m_pixels.data(); }
    void addRow(int planes)
    {
        splitIntoPlanes(m_pixels.data(), m_rowBytes, planes, m_planes.data());
        for (int plane = 0; plane < planes; ++plane)
            packBits(Bytes(m_planes).subspan(size_t(plane) * m_rowBytes, m_rowBytes), bytes);
    }

    QByteArray bytes;

private:
    size_t m_rowBytes;
    std::vector<uchar> m_pixels;
    std::vector<uchar> m_planes;
};

QByteArray indexedBody(const QImage &image, int planes)
{
    Body body(image.width());
    for (int y = 0; y < image.height(); ++y) {
        std::copy_n(image.constScanLine(y), image.width(), body.pixels());
        body.addRow(planes);
    }
    return body.bytes;
}

QByteArray trueColorBody(const QImage &image)
{
    Body body(image.width());
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (const int shift : {16, 8, 0}) {
            std::transform(row, row + image.width(), body.pixels(), [&](QRgb pixel) { return uchar(pixel >> shift); });
            body.addRow(8);
        }
    }
    return body.bytes;
}

/// IPTC stands in the resource block that a JPEG has around it.
QByteArray iptcBlock(const QByteArray &iptc)
{
    ByteWriter block;
    block.text("Photoshop 3.0");
    block.u8(0);
    block.text("8BIM");
    block.u16be(0x0404);
    block.u16be(0); // no name
    block.u32be(quint32(iptc.size()));
    block.bytes += iptc;
    block.fill(iptc.size() % 2);
    return block.bytes;
}

Metadata blocksOf(const Picture &picture)
{
    return preparedForWriting(picture);
}

QByteArray profileOf(const Picture &picture)
{
    return profileFor(picture, ProfileColors::Rgb);
}

QSize resolutionOf(const QImage &image)
{
    return knownDotsPerMeter(image);
}

void writeMetadata(ByteWriter &out, const Picture &picture)
{
    const Metadata metadata = blocksOf(picture);
    if (!metadata.comment.isEmpty())
        writeChunk(out, "ANNO", metadata.comment);
    if (!metadata.exif.isEmpty())
        writeChunk(out, "EXIF", QByteArray("Exif\0\0", 6) + metadata.exif);
    if (!metadata.iptc.isEmpty())
        writeChunk(out, "IPTC", iptcBlock(metadata.iptc));
    if (!metadata.xmp.isEmpty())
        writeChunk(out, "XMP0", metadata.xmp);
    if (const QByteArray profile = profileOf(picture); !profile.isEmpty())
        writeChunk(out, "ICCP", profile);
    const QSize resolution = resolutionOf(picture.pixels);
    if (resolution.isEmpty())
        return;
    const auto inInches = [](int dotsPerMeter) { return quint32(std::clamp(qRound(dotsPerMeter * 0.0254), 1, 65535)); };
    ByteWriter dots;
    dots.u16be(inInches(resolution.width()));
    dots.u16be(inInches(resolution.height()));
    writeChunk(out, "DPI ", dots.bytes);
}

}

Result<QByteArray> encodeIff(const Picture &picture, const EncodeOptions &)
{
    const QSize size = picture.pixels.size();
    if (size.isEmpty() || size.width() > limits::maximumSide || size.height() > limits::maximumSide)
        return Failure{QStringLiteral("IFF holds no picture of %1 x %2").arg(size.width()).arg(size.height())};
    const QImage indexed = opaqueIndexed(picture);
    const int nominal = picture.pixels.format() == QImage::Format_Mono ? 1
        : picture.pixels.format() == QImage::Format_Grayscale8         ? 8
                                                                       : picture.info.bitsPerPixel;
    const int planes = indexed.isNull() ? 24 : planesFor(indexed, nominal);
    ByteWriter out;
    out.text("FORM");
    out.u32be(0);
    out.text("ILBM");
    writeChunk(out, "BMHD", headerOf(size, planes));
    if (!indexed.isNull())
        writeChunk(out, "CMAP", colorMap(indexed.colorTable(), planes));
    writeMetadata(out, picture);
    const QByteArray body = indexed.isNull() ? trueColorBody(opaqueRgb(picture)) : indexedBody(indexed, planes);
    if (out.bytes.size() + body.size() > std::numeric_limits<quint32>::max() - 16LL)
        return Failure{QStringLiteral("the packed picture is too large for an IFF file")};
    writeChunk(out, "BODY", body);
    out.setU32be(4, quint32(out.bytes.size() - 8));
    return out.bytes;
}
