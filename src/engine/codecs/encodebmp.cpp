#include "engine/codecs/encoders.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"
#include "engine/codecs/metadatawrite.h"

#include <cstring>

namespace {

constexpr quint32 fileHeaderBytes = 14;
constexpr quint32 plainHeaderBytes = 40;
constexpr quint32 alphaHeaderBytes = 108; // the fourth version is the first that knows a mask for alpha

struct Shape
{
    QSize size;
    int bits = 24;
    bool alpha = false;
    QList<QRgb> table;
    QSize resolution;

    quint32 headerBytes() const { return alpha ? alphaHeaderBytes : plainHeaderBytes; }
    quint32 offset() const { return fileHeaderBytes + headerBytes() + 4 * quint32(table.size()); }
    qint64 stride() const { return (qint64(size.width()) * bits + 31) / 32 * 4; }
    qint64 pixelBytes() const { return stride() * size.height(); }
};

void writeHeaders(ByteWriter &out, const Shape &shape)
{
    constexpr quint32 bitFields = 3;
    out.text("BM");
    out.u32le(quint32(shape.offset() + shape.pixelBytes()));
    out.u32le(0);
    out.u32le(shape.offset());
    out.u32le(shape.headerBytes());
    out.u32le(quint32(shape.size.width()));
    out.u32le(quint32(shape.size.height()));
    out.u16le(1);
    out.u16le(quint32(shape.bits));
    out.u32le(shape.alpha ? bitFields : 0);
    out.u32le(quint32(shape.pixelBytes()));
    out.u32le(quint32(qMax(0, shape.resolution.width())));
    out.u32le(quint32(qMax(0, shape.resolution.height())));
    out.u32le(quint32(shape.table.size()));
    out.u32le(0);
    if (shape.alpha) {
        for (const quint32 mask : {0xff0000U, 0xff00U, 0xffU, 0xff000000U})
            out.u32le(mask);
        out.text("BGRs"); // the colour space is sRGB, whose numbers need not be told
        out.fill(alphaHeaderBytes - plainHeaderBytes - 20);
    }
    for (const QRgb color : shape.table)
        out.u32le(color & 0xffffff);
}

/// The rows from the lowest up, each filled by `writeRow`.
template <class WriteRow> Result<QByteArray> file(const Shape &shape, WriteRow writeRow)
{
    if (shape.offset() + shape.pixelBytes() > qint64(0xffffffff))
        return Failure{QStringLiteral("the picture is too large for a bitmap file")};
    ByteWriter headers;
    writeHeaders(headers, shape);
    QByteArray bytes = allocateBytes(shape.offset() + shape.pixelBytes());
    std::memcpy(bytes.data(), headers.bytes.constData(), shape.offset());
    uchar *const pixels = reinterpret_cast<uchar *>(bytes.data()) + shape.offset();
    for (int y = 0; y < shape.size.height(); ++y) {
        uchar *const row = pixels + (shape.size.height() - 1 - y) * shape.stride();
        constexpr qint64 mostPadding = 4; // with what is left of the last byte
        std::memset(row + shape.stride() - mostPadding, 0, mostPadding);
        writeRow(y, row);
    }
    return bytes;
}

}

Result<QByteArray> encodeBmp(const Picture &picture, const EncodeOptions &)
{
    Shape shape;
    shape.size = picture.pixels.size();
    const QSize resolution = knownDotsPerMeter(picture.pixels);
    shape.resolution = resolution.isEmpty() ? QSize(0, 0) : resolution;
    const PalettePixels indexed = palettePixels(picture, {1, 4, 8}, Transparency::OverWhite);
    if (!indexed.isNull()) {
        shape.bits = indexed.bits;
        shape.table = indexed.table;
        return file(shape, [&](int y, uchar *to) { indexed.packRow(y, to); });
    }
    const QImage image = rgbOrArgb(picture);
    shape.alpha = image.format() == QImage::Format_ARGB32;
    shape.bits = shape.alpha || picture.info.bitsPerPixel == 32 ? 32 : 24;
    const size_t rowBytes = size_t(shape.size.width()) * 4;
    return file(shape, [&](int y, uchar *to) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        if (shape.bits == 32)
            std::memcpy(to, row, rowBytes); // blue lowest, as this machine stores it
        else
            toBgr(row, image.width(), to);
    });
}
