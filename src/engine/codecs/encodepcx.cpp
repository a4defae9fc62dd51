#include "engine/codecs/encoders.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"
#include "engine/codecs/metadatawrite.h"

#include <vector>

namespace {

/// Runs of up to 63 bytes; the two highest bits mark a count, so a byte that has them set needs one too.
void packRow(Bytes row, QByteArray &out)
{
    const qsizetype before = out.size();
    out.resize(before + 2 * qsizetype(row.size())); // at worst
    uchar *const start = reinterpret_cast<uchar *>(out.data()) + before;
    uchar *to = start;
    for (size_t at = 0; at < row.size();) {
        const uchar value = row[at];
        size_t count = 1;
        while (count < 63 && at + count < row.size() && row[at + count] == value)
            ++count;
        if (count > 1 || value >= 0xc0)
            *to++ = uchar(0xc0 | count);
        *to++ = value;
        at += count;
    }
    out.truncate(before + (to - start));
}

struct Shape
{
    int bits = 8; ///< a plane
    int planes = 1;
    QSize size;
    int rowBytes() const { return (size.width() * bits + 15) / 16 * 2; } // of one plane, even
};

QByteArray header(const Shape &shape, const QList<QRgb> &table, const QImage &pixels)
{
    const QSize resolution = knownDotsPerMeter(pixels);
    const auto inInches = [](int dotsPerMeter) {
        return quint32(qBound(0, qRound(dotsPerInch(dotsPerMeter)), 0xffff));
    };
    ByteWriter out;
    out.u8(10);
    out.u8(5);
    out.u8(1);
    out.u8(quint32(shape.bits));
    out.u16le(0);
    out.u16le(0);
    out.u16le(quint32(shape.size.width() - 1));
    out.u16le(quint32(shape.size.height() - 1));
    out.u16le(inInches(qMax(0, resolution.width())));
    out.u16le(inInches(qMax(0, resolution.height())));
    for (int i = 0; i < 16; ++i) {
        const QRgb color = i < table.size() ? table[i] : qRgb(0, 0, 0);
        out.u8(quint32(qRed(color)));
        out.u8(quint32(qGreen(color)));
        out.u8(quint32(qBlue(color)));
    }
    out.u8(0);
    out.u8(quint32(shape.planes));
    out.u16le(quint32(shape.rowBytes()));
    out.u16le(1); // colours, not greys
    out.fill(128 - out.bytes.size());
    return out.bytes;
}

/// Black is 0 and white is 1 to every reader of one bit a pixel, whatever the table says.
bool isPlainMono(const PalettePixels &indexed)
{
    return indexed.bits == 1 && isBlackAndWhite(indexed.table);
}

/// The rows behind a header, plane by plane; `fill(y, plane, row)` gives the bytes of one. What it leaves is 0.
template <class Fill> void appendRows(const Shape &shape, QByteArray &out, const Fill &fill)
{
    std::vector<uchar> row(size_t(shape.rowBytes()));
    for (int y = 0; y < shape.size.height(); ++y) {
        for (int plane = 0; plane < shape.planes; ++plane) {
            std::fill(row.begin(), row.end(), uchar(0));
            fill(y, plane, row);
            packRow(row, out);
        }
    }
}

QByteArray encodeMono(const PalettePixels &indexed)
{
    const Shape shape{1, 1, indexed.pixels.size()};
    const bool turned = indexed.table[0] == qRgb(255, 255, 255);
    QByteArray out = header(shape, {qRgb(0, 0, 0), qRgb(255, 255, 255)}, indexed.pixels);
    appendRows(shape, out, [&](int y, int, std::vector<uchar> &row) {
        indexed.packRow(y, row.data());
        for (qsizetype i = 0; turned && i < indexed.packedBytes(); ++i)
            row[size_t(i)] ^= 0xff;
    });
    return out;
}

/// Four planes of one bit: plane 0 holds the lowest bits of the indices.
QByteArray encodeSixteenColors(const PalettePixels &indexed)
{
    const Shape shape{1, 4, indexed.pixels.size()};
    QByteArray out = header(shape, indexed.table, indexed.pixels);
    appendRows(shape, out, [&](int y, int plane, std::vector<uchar> &row) {
        const uchar *const indices = indexed.pixels.constScanLine(y);
        for (int x = 0; x < shape.size.width(); ++x) {
            if (indices[x] >> plane & 1)
                row[size_t(x) / 8] |= uchar(0x80 >> x % 8);
        }
    });
    return out;
}

QByteArray encodePalette(const PalettePixels &indexed)
{
    const Shape shape{8, 1, indexed.pixels.size()};
    QByteArray out = header(shape, indexed.table, indexed.pixels);
    appendRows(shape, out, [&](int y, int, std::vector<uchar> &row) { indexed.packRow(y, row.data()); });
    constexpr char paletteFollows = 12;
    out.append(paletteFollows);
    for (const QRgb color : indexed.table)
        out.append(char(qRed(color))).append(char(qGreen(color))).append(char(qBlue(color)));
    return out;
}

QByteArray encodeTrueColor(const QImage &image)
{
    const Shape shape{8, 3, image.size()};
    QByteArray out = header(shape, {}, image);
    appendRows(shape, out, [&](int y, int plane, std::vector<uchar> &row) {
        const QRgb *const from = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        const int shift = 16 - 8 * plane;
        std::transform(from, from + image.width(), row.begin(), [shift](QRgb pixel) { return uchar(pixel >> shift); });
    });
    return out;
}

}

Result<QByteArray> encodePcx(const Picture &picture, const EncodeOptions &)
{
    constexpr int widest = 0xfffe; // the bytes of a row are told in 16 bits, and are even
    if (picture.pixels.width() > widest)
        return Failure{QStringLiteral("the picture is too wide for a PCX")};
    if (picture.pixels.format() == QImage::Format_Mono) {
        const PalettePixels mono = palettePixels(picture, {1, 8}, Transparency::OverWhite);
        if (isPlainMono(mono))
            return encodeMono(mono);
    }
    const PalettePixels indexed = palettePixels(picture, {4, 8}, Transparency::OverWhite);
    if (indexed.isNull())
        return encodeTrueColor(opaqueRgb(picture));
    return indexed.bits == 4 ? encodeSixteenColors(indexed) : encodePalette(indexed);
}

Result<QByteArray> encodeDcx(const Picture &picture, const EncodeOptions &options)
{
    const Result<QByteArray> page = encodePcx(picture, options);
    if (!page)
        return page.failure();
    constexpr quint32 mark = 987654321;
    constexpr qsizetype places = 1024; // of pages; a zero ends them
    constexpr qsizetype headerBytes = 4 + 4 * places;
    ByteWriter out;
    out.u32le(mark);
    out.u32le(quint32(headerBytes));
    out.fill(headerBytes - out.bytes.size());
    return out.bytes + *page;
}
