#include "engine/codecs/encoders.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"

namespace {

enum VisualClass : quint32 { StaticGray = 0, PseudoColor = 3, TrueColor = 4 };

struct Shape
{
    QSize size;
    quint32 bits = 24;
    VisualClass visual = TrueColor;
    QList<QRgb> table;
    quint32 rowBytes() const { return (quint32(size.width()) * bits + 31) / 32 * 4; }
};

/// Window dump version 7, all numbers with the highest byte first.
void writeHeader(ByteWriter &out, const Shape &shape)
{
    constexpr char name[] = "picture";
    const bool direct = shape.visual == TrueColor;
    const quint32 width = quint32(shape.size.width());
    const quint32 height = quint32(shape.size.height());
    const quint32 fields[] = {100 + sizeof name, 7,
        2, // whole pixels, not planes
        shape.bits, width, height, 0, 1, 32, 1, 32, shape.bits, shape.rowBytes(), shape.visual, direct ? 0xff0000U : 0U,
        direct ? 0xff00U : 0U, direct ? 0xffU : 0U, 8, quint32(shape.table.size()), quint32(shape.table.size()), width,
        height, 0, 0, 0};
    for (const quint32 field : fields)
        out.u32be(field);
    out.text(name);
    out.u8(0);
    constexpr quint32 allChannels = 7;
    for (int i = 0; i < shape.table.size(); ++i) {
        const QRgb color = shape.table[i];
        out.u32be(quint32(i));
        for (const int channel : {qRed(color), qGreen(color), qBlue(color)})
            out.u16be(quint32(channel) * 257);
        out.u8(allChannels);
        out.u8(0);
    }
}

template <class WriteRow> QByteArray file(const Shape &shape, WriteRow writeRow)
{
    ByteWriter out;
    writeHeader(out, shape);
    const qsizetype start = out.bytes.size();
    out.fill(qsizetype(shape.rowBytes()) * shape.size.height());
    uchar *const pixels = reinterpret_cast<uchar *>(out.bytes.data()) + start;
    for (int y = 0; y < shape.size.height(); ++y)
        writeRow(y, pixels + qsizetype(y) * shape.rowBytes());
    return out.bytes;
}

}

Result<QByteArray> encodeXwd(const Picture &picture, const EncodeOptions &)
{
    const PalettePixels indexed = palettePixels(picture, {1, 8}, Transparency::OverWhite);
    if (!indexed.isNull()) {
        // Some readers look at no table of two greys: 0 is white and 1 is black to them.
        const bool plainMono = isBlackAndWhite(indexed.table);
        const bool turned = plainMono && indexed.table[0] == qRgb(0, 0, 0);
        const QList<QRgb> table = turned ? QList<QRgb>{indexed.table[1], indexed.table[0]} : indexed.table;
        const Shape shape{indexed.pixels.size(), quint32(indexed.bits), plainMono ? StaticGray : PseudoColor, table};
        return file(shape, [&](int y, uchar *to) {
            indexed.packRow(y, to);
            for (qsizetype i = 0; turned && i < indexed.packedBytes(); ++i)
                to[i] ^= 0xff;
        });
    }
    const QImage image = opaqueRgb(picture);
    return file({image.size(), 24, TrueColor, {}},
        [&](int y, uchar *to) { toRgb(reinterpret_cast<const QRgb *>(image.constScanLine(y)), image.width(), to); });
}
