#include "engine/codecs/qtformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/qtread.h"
#include "engine/limits.h"

#include <cstdlib>

namespace {

constexpr qsizetype fileHeaderBytes = 14;
enum Compression : quint32 { Plain = 0, Rle8 = 1, Rle4 = 2, Bitfields = 3, AlphaBitfields = 6 };

/// The published bitmap header, of 12 bytes (core) or of 40 and more.
struct Header {
    quint32 bytes = 0;
    int width = 0;
    int height = 0;
    int bits = 0;
    quint32 compression = Plain;
    quint32 colors = 0;     ///< entries in the table
    bool isCore() const { return bytes == 12; }
    bool isKnown() const { return isCore() || bytes == 16 || bytes == 40 || bytes == 52 || bytes == 56 || bytes == 64 || bytes == 108 || bytes == 124; }
    QSize size() const { return {width, height}; }
};

Header readHeader(const ByteReader &bytes, size_t at)
{
    Header header;
    header.bytes = bytes.u32le(at);
    if (header.isCore()) {
        header.width = bytes.u16le(at + 4);
        header.height = bytes.u16le(at + 6);
        header.bits = bytes.u16le(at + 10);
    } else {
        header.width = qint32(bytes.u32le(at + 4));
        const qint64 height = qint32(bytes.u32le(at + 8));      // negative: the top row comes first
        header.height = int(qMin<qint64>(std::llabs(height), limits::maximumSide + 1));
        header.bits = bytes.u16le(at + 14);
        header.compression = header.bytes >= 40 ? bytes.u32le(at + 16) : quint32(Plain);
        header.colors = header.bytes >= 40 ? bytes.u32le(at + 32) : 0;
    }
    if (header.bits <= 8 && (header.colors == 0 || header.colors > 256))
        header.colors = 1U << qMin(header.bits, 8);
    return header;
}

/// A bitmap as it stands in memory or in a resource has no file header; this is the one it would have.
QByteArray fileHeaderFor(const QByteArray &bitmap, const Header &header)
{
    const bool masks = header.bytes == 40 && (header.compression == Bitfields || header.compression == AlphaBitfields);
    const quint32 maskBytes = masks ? (header.compression == Bitfields ? 12 : 16) : 0;
    const quint32 tableBytes = header.bits <= 8 || header.colors <= 256 ? header.colors * (header.isCore() ? 3 : 4) : 0;
    const quint32 offset = quint32(fileHeaderBytes) + header.bytes + maskBytes + tableBytes;
    QByteArray result("BM");
    const auto append = [&](quint32 value) {
        for (int i = 0; i < 4; ++i)
            result.append(char(value >> 8 * i));
    };
    append(quint32(bitmap.size() + fileHeaderBytes));
    append(0);
    append(offset);
    return result;
}

struct Bitmap {
    Header header;
    QByteArray file;        ///< with a file header, whether the given one had it or not
    ImageInfo info() const { return {header.size(), header.bits, 1, bmpCodec.name}; }
};

Result<Bitmap> openBitmap(const QByteArray &bytes)
{
    const ByteReader reader(bytes);
    Bitmap bitmap;
    const bool whole = reader.is(0, "BM");
    bitmap.header = readHeader(reader, whole ? size_t(fileHeaderBytes) : 0);
    if (!bitmap.header.isKnown() || !reader.has(0, (whole ? size_t(fileHeaderBytes) : 0) + bitmap.header.bytes))
        return Failure{QStringLiteral("not a bitmap: no known header")};
    if (!limits::allows(bitmap.header.size(), 8))
        return Failure{tooLarge(bitmap.header.size())};
    bitmap.file = whole ? bytes : fileHeaderFor(bytes, bitmap.header) + bytes;
    return bitmap;
}

/// Appends what a cut file lacks, so that its missing rows are the first colour and not what memory held.
bool completeRows(Bitmap &bitmap)
{
    if (bitmap.header.compression != Plain && bitmap.header.compression != Bitfields)
        return false;
    const qint64 stride = (qint64(bitmap.header.width) * bitmap.header.bits + 31) / 32 * 4;
    const qint64 offset = ByteReader(bitmap.file).u32le(10);
    const qint64 needed = offset + stride * bitmap.header.height;
    const qint64 missing = needed - bitmap.file.size();
    if (missing <= 0 || offset > bitmap.file.size() || needed > limits::decodeBudget())
        return false;
    bitmap.file.append(missing, '\0');
    return true;
}

bool sniffBmp(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "BM") && readHeader(bytes, size_t(fileHeaderBytes)).isKnown();
}

Result<ImageInfo> probeBmp(const EncodedFile &file, int)
{
    const Result<Bitmap> bitmap = openBitmap(file.bytes);
    if (!bitmap)
        return bitmap.failure();
    return bitmap->info();
}

Result<Picture> decodeBmp(const EncodedFile &file, const DecodeHint &)
{
    Result<Bitmap> bitmap = openBitmap(file.bytes);
    if (!bitmap)
        return bitmap.failure();
    Picture picture;
    picture.info = bitmap->info();
    picture.partial = completeRows(*bitmap);
    Result<QImage> image = readByQt(bitmap->file, "bmp");
    if (!image)
        return image.failure();
    picture.pixels = *std::move(image);
    picture.info.size = picture.pixels.size();
    return picture;
}

}

const Codec bmpCodec{"BMP", "bmp dib rle", sniffBmp, probeBmp, decodeBmp, true};
