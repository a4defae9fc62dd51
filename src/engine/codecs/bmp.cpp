#include "engine/codecs/qtformats.h"

#include "engine/codecs/bmprows.h"
#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/qtread.h"
#include "engine/limits.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr qsizetype fileHeaderBytes = 14;
enum Compression : quint32 { Plain = 0, Rle8 = 1, Rle4 = 2, Bitfields = 3, AlphaBitfields = 6 };

/// The published bitmap header, of 12 bytes (core) or of 40 and more.
struct Header
{
    quint32 bytes = 0;
    int width = 0;
    int height = 0;
    int bits = 0;
    quint32 compression = Plain;
    quint32 colors = 0; ///< entries in the table
    bool isCore() const { return bytes == 12; }
    bool isKnown() const
    {
        return isCore() || bytes == 16 || bytes == 40 || bytes == 52 || bytes == 56 || bytes == 64 || bytes == 108
            || bytes == 124;
    }
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
        const qint64 height = qint32(bytes.u32le(at + 8)); // negative: the top row comes first
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

struct Bitmap
{
    Header header;
    QByteArray file; ///< with a file header, whether the given one had it or not
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
    // Of two colours more cannot be told; the library would complain about each of them on standard error.
    if (bitmap.header.bits == 1 && bitmap.header.bytes >= 40 && bitmap.header.colors > 2)
        bitmap.file.replace(fileHeaderBytes + 32, 4, QByteArray::fromHex("02000000"));
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

/// Unpacks run lengths into one byte a pixel, lowest row first; where they skip, the first colour stays.
/// False when the runs end before the picture does.
bool unpackRuns(const ByteReader &bytes, size_t at, const Header &header, uchar *pixels, qsizetype stride)
{
    const bool halfBytes = header.compression == Rle4;
    const auto indexOf = [&](size_t start, int i) {
        return halfBytes ? quint8(bytes.u8(start + size_t(i / 2)) >> (i % 2 ? 0 : 4) & 15)
                         : bytes.u8(start + size_t(i));
    };
    int x = 0;
    int y = 0;
    const auto put = [&](quint8 index) {
        if (x < header.width)
            pixels[y * stride + x++] = index;
    };
    while (y < header.height && bytes.has(at, 2)) {
        const int count = bytes.u8(at);
        const quint8 code = bytes.u8(at + 1);
        at += 2;
        if (count > 0) {
            for (int i = 0; i < count; ++i)
                put(halfBytes ? indexOf(at - 1, i % 2) : code);
        } else if (code == 0) {
            x = 0;
            ++y;
        } else if (code == 1) {
            return true;
        } else if (code == 2) {
            x = qMin(x + bytes.u8(at), header.width);
            y += bytes.u8(at + 1);
            at += 2;
        } else {
            for (int i = 0; i < code; ++i)
                put(indexOf(at, i));
            const size_t length = halfBytes ? (size_t(code) + 1) / 2 : code;
            at += length + length % 2;
        }
    }
    return y >= header.height;
}

/// Turns a run-length file into a plain one of 8 bits: Qt's reader leaves what memory held where the runs skip.
/// The answer is whether pixels were missing.
bool unpackFile(Bitmap &bitmap)
{
    const Header &header = bitmap.header;
    const ByteReader bytes(bitmap.file);
    const qsizetype stride = (qsizetype(header.width) + 3) / 4 * 4;
    const quint32 tableBytes = header.colors * 4;
    const quint32 offset = quint32(fileHeaderBytes) + header.bytes + tableBytes;
    QByteArray plain = bitmap.file.left(offset);
    plain.resize(offset + stride * header.height);
    std::fill(plain.begin() + qMin<qsizetype>(offset, bitmap.file.size()), plain.end(), '\0');
    const auto write = [&](qsizetype at, quint32 value, int count) {
        for (int i = 0; i < count; ++i)
            plain[at + i] = char(value >> 8 * i);
    };
    uchar *const pixels = reinterpret_cast<uchar *>(plain.data()) + offset;
    const bool complete = unpackRuns(bytes, bytes.u32le(10), header, pixels, stride);
    write(2, quint32(plain.size()), 4);
    write(10, offset, 4);
    write(fileHeaderBytes + 14, 8, 2);
    write(fileHeaderBytes + 16, Plain, 4);
    write(fileHeaderBytes + 20, 0, 4);
    write(fileHeaderBytes + 32, header.colors, 4);
    bitmap.file = plain;
    return !complete;
}

bool sniffBmp(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "BM") && readHeader(bytes, size_t(fileHeaderBytes)).isKnown();
}

/// Rows that need no more than their bytes put in order; null for all others.
QImage plainRows(const Bitmap &bitmap)
{
    const Header &header = bitmap.header;
    if (header.compression != Plain)
        return {};
    const ByteReader bytes(bitmap.file);
    constexpr size_t fields = size_t(fileHeaderBytes);
    const bool topFirst = !header.isCore() && qint32(bytes.u32le(fields + 8)) < 0;
    QImage image = readBmpRows(bytesOf(bitmap.file), bytes.u32le(10), header.size(), header.bits, topFirst);
    if (!image.isNull() && header.bytes >= 40) {
        image.setDotsPerMeterX(qint32(bytes.u32le(fields + 24)));
        image.setDotsPerMeterY(qint32(bytes.u32le(fields + 28)));
    }
    return image;
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
    if (ByteReader(bitmap->file).u32le(10) > quint32(bitmap->file.size()))
        return Failure{QStringLiteral("a bitmap whose pixels lie behind its end")};
    Picture picture;
    picture.info = bitmap->info();
    if (QImage image = plainRows(*bitmap); !image.isNull()) {
        picture.pixels = std::move(image);
        return picture;
    }
    const bool runs = (bitmap->header.compression == Rle8 && bitmap->header.bits == 8)
        || (bitmap->header.compression == Rle4 && bitmap->header.bits == 4);
    picture.partial = runs ? unpackFile(*bitmap) : completeRows(*bitmap);
    Result<QImage> image = readByQt(bitmap->file, "bmp");
    if (!image)
        return image.failure();
    picture.pixels = *std::move(image);
    picture.info.size = picture.pixels.size();
    return picture;
}

}

const Codec bmpCodec{"BMP", "bmp dib rle", sniffBmp, probeBmp, decodeBmp, true};
