#include "engine/codecs/metafilebitmap.h"

#include "engine/codecs/jpeg.h"
#include "engine/limits.h"

#include <QBuffer>
#include <QImageReader>

#include <cstdlib>

namespace {

constexpr quint32 runLength8 = 1;
constexpr quint32 runLength4 = 2;
constexpr quint32 bitFields = 3;
constexpr quint32 jpegCompression = 4;
constexpr quint32 pngCompression = 5;

struct Header
{
    quint32 size = 0;
    int width = 0;
    qint64 height = 0; ///< negative: the top row first
    int bits = 0;
    quint32 compression = 0;
    quint32 colors = 0;

    bool isCore() const { return size == 12; }
    qint64 rows() const { return std::abs(height); }
    qint64 rowBytes() const { return (qint64(width) * bits + 31) / 32 * 4; }
    qint64 paletteBytes() const
    {
        const qint64 entries = bits > 8 ? colors : colors == 0 || colors > 256 ? qint64(1) << bits : colors;
        return entries * (isCore() ? 3 : 4);
    }
    qint64 maskBytes() const { return size == 40 && compression == bitFields ? 12 : 0; }
};

Header headerOf(const ByteReader &bytes)
{
    Header header;
    header.size = bytes.u32le(0);
    if (header.isCore()) {
        header.width = bytes.u16le(4);
        header.height = bytes.u16le(6);
        header.bits = bytes.u16le(10);
        return header;
    }
    header.width = qint32(bytes.u32le(4));
    header.height = qint32(bytes.u32le(8));
    header.bits = bytes.u16le(14);
    header.compression = bytes.u32le(16);
    header.colors = bytes.u32le(32);
    return header;
}

/// Whether the pixels can be there: a run of two bytes makes at most 255 pixels.
bool isPlausible(const Header &header, size_t pixelBytes)
{
    const bool known = header.bits == 1 || header.bits == 4 || header.bits == 8 || header.bits == 16
        || header.bits == 24 || header.bits == 32;
    if (!known || header.width < 1 || header.rows() < 1 || header.rows() > limits::maximumSide)
        return false;
    if (!limits::allows(QSize(header.width, int(header.rows())), 8))
        return false;
    if (header.compression == runLength8 || header.compression == runLength4)
        return qint64(header.width) * header.rows() <= qint64(pixelBytes) * 256 + 65536;
    return header.rowBytes() * header.rows() <= qint64(pixelBytes);
}

QImage withAlpha(const Header &header, Bytes pixels)
{
    const int height = int(header.rows());
    QImage image(header.width, height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return image;
    for (int y = 0; y < height; ++y) {
        const size_t row = size_t(header.height < 0 ? y : height - 1 - y);
        const uchar *from = pixels.data() + row * size_t(header.rowBytes());
        QRgb *to = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < header.width; ++x, from += 4) {
            const int alpha = from[3];
            // A colour above its opacity is none; painters trust it not to be there.
            to[x] = qRgba(qMin<int>(from[2], alpha), qMin<int>(from[1], alpha), qMin<int>(from[0], alpha), alpha);
        }
    }
    return image;
}

QImage readBitmapFile(const QByteArray &file, const char *format)
{
    QBuffer buffer;
    buffer.setData(file);
    if (!buffer.open(QIODevice::ReadOnly))
        return {};
    QImageReader reader(&buffer, format);
    const QSize size = reader.size();
    if (size.isValid() && !limits::allows(size, 8))
        return {};
    return reader.read();
}

}

QImage metafileBitmap(Bytes headerBytes, Bytes pixels, bool keepAlpha)
{
    const ByteReader bytes(headerBytes);
    const Header header = headerOf(bytes);
    if (!header.isCore() && (header.size < 40 || header.size > 256))
        return {};
    if (header.compression == jpegCompression || header.compression == pngCompression)
        return embeddedPicture(pixels);
    if (!isPlausible(header, pixels.size()))
        return {};
    if (keepAlpha && header.bits == 32 && header.compression == 0)
        return withAlpha(header, pixels);
    // The bitmap file reader does the rest, with the file header that it wants in front.
    const qint64 described = qint64(header.size) + header.maskBytes() + header.paletteBytes();
    if (described > 1024 * 1024)
        return {};
    const qint64 there = qMin(described, qint64(headerBytes.size()));
    ByteWriter file;
    file.text("BM");
    file.u32le(quint32(14 + described + qint64(pixels.size())));
    file.u32le(0);
    file.u32le(quint32(14 + described));
    file.bytes.append(reinterpret_cast<const char *>(headerBytes.data()), qsizetype(there));
    file.fill(described - there);
    file.bytes.append(reinterpret_cast<const char *>(pixels.data()), qsizetype(pixels.size()));
    const QImage image = readBitmapFile(file.bytes, "bmp");
    return image.convertToFormat(QImage::Format_RGB32);
}

QImage packedMetafileBitmap(Bytes packed)
{
    const Header header = headerOf(ByteReader(packed));
    const qint64 described = qint64(header.size) + header.maskBytes() + (header.bits <= 32 ? header.paletteBytes() : 0);
    if (described > qint64(packed.size()))
        return {};
    return metafileBitmap(packed.first(size_t(described)), packed.subspan(size_t(described)));
}

QImage deviceBitmap(Bytes bytes)
{
    const ByteReader reader(bytes);
    const QSize size(reader.u16le(2), reader.u16le(4));
    const size_t rowBytes = reader.u16le(6);
    const int bits = reader.u8(9);
    const bool known = bits == 1 || bits == 24 || bits == 32;
    if (reader.u8(8) != 1 || !known || !limits::allows(size, 8) || rowBytes * 8 < size_t(size.width()) * size_t(bits)
        || !reader.has(10, rowBytes * size_t(size.height())))
        return {};
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height() && !image.isNull(); ++y) {
        const uchar *from = bytes.data() + 10 + size_t(y) * rowBytes;
        QRgb *to = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const uchar *pixel = from + x * (bits / 8);
            to[x] = bits == 1 ? ((from[x / 8] >> (7 - x % 8) & 1) != 0 ? 0xffffffff : 0xff000000)
                              : qRgb(pixel[2], pixel[1], pixel[0]);
        }
    }
    return image;
}

QImage embeddedPicture(Bytes file)
{
    const QByteArray bytes(reinterpret_cast<const char *>(file.data()), qsizetype(file.size()));
    const ByteReader reader(file);
    if (reader.is(0, "\xff\xd8")) {
        const Result<Picture> picture = decodeStoredJpeg(bytes, {});
        return picture ? picture->pixels.convertToFormat(QImage::Format_RGB32) : QImage();
    }
    const char *format = reader.is(0, "\x89PNG") ? "png"
        : reader.is(0, "GIF8")                   ? "gif"
        : reader.is(0, "BM")                     ? "bmp"
                                                 : "";
    const QImage image = *format == 0 ? QImage() : readBitmapFile(bytes, format);
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}
