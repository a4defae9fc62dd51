#include "engine/codecs/qtformats.h"

#include "engine/codecs/bmprows.h"
#include "engine/codecs/bytes.h"
#include "engine/codecs/jpeg.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/png.h"
#include "engine/codecs/qtread.h"
#include "engine/limits.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr qsizetype fileHeaderBytes = 14;
constexpr quint32 plainHeaderBytes = 40;
enum Compression : quint32 { Plain = 0, Rle8 = 1, Rle4 = 2, Bitfields = 3, Jpeg = 4, Png = 5, AlphaBitfields = 6 };
constexpr quint32 longHeaderOfOs2 = 64; ///< it numbers its packings in another way
constexpr quint32 rle24OfOs2 = 4;

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
    /// The pixels are a whole file of that format.
    const Codec *inside() const
    {
        const bool isPlain = compression != Jpeg && compression != Png;
        return isPlain || bytes == longHeaderOfOs2 ? nullptr : compression == Jpeg ? &jpegCodec : &pngCodec;
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
    EncodedFile inside() const { return {file.mid(qsizetype(ByteReader(file).u32le(10))), {}}; }
};

/// Gives a file with the core header the longer one: Qt's reader takes its sizes for signed numbers.
void replaceCoreHeader(Bitmap &bitmap)
{
    const Header &header = bitmap.header;
    const ByteReader bytes(bitmap.file);
    constexpr size_t tableAt = size_t(fileHeaderBytes) + 12;
    size_t pixelsAt = bytes.u32le(10);
    if (pixelsAt > bytes.size())
        return;
    if (pixelsAt < tableAt)
        pixelsAt = tableAt + header.colors * 3;
    const quint32 offset = quint32(fileHeaderBytes) + plainHeaderBytes + header.colors * 4;
    ByteWriter out;
    out.text("BM");
    out.u32le(0);
    out.u32le(0);
    out.u32le(offset);
    out.u32le(plainHeaderBytes);
    out.u32le(quint32(header.width));
    out.u32le(quint32(header.height));
    out.u16le(1);
    out.u16le(quint32(header.bits));
    out.fill(16); // not packed; resolution unknown
    out.u32le(header.colors);
    out.u32le(0);
    for (size_t i = 0, at = tableAt; i < header.colors; ++i, at += 3)
        out.u32le(at + 3 <= pixelsAt ? bytes.u16le(at) | quint32(bytes.u8(at + 2)) << 16 : 0);
    bitmap.file = out.bytes + bitmap.file.mid(qsizetype(pixelsAt));
    bitmap.header.bytes = plainHeaderBytes;
}

/// Headers that end between two of those that Qt's reader knows get the fields they lack, as 0.
void lengthenHeader(Bitmap &bitmap)
{
    const quint32 bytes = bitmap.header.bytes;
    const quint32 known = bytes == 16 ? plainHeaderBytes : bytes == 52 || bytes == 56 ? 108 : bytes;
    if (known == bytes)
        return;
    const ByteReader file(bitmap.file);
    const quint32 offset = file.u32le(10);
    ByteWriter numbers;
    numbers.u32le(offset + known - bytes);
    numbers.u32le(known);
    bitmap.file.insert(fileHeaderBytes + qsizetype(bytes), QByteArray(qsizetype(known - bytes), '\0'));
    bitmap.file.replace(10, 8, numbers.bytes);
    bitmap.header.bytes = known;
}

/// Of an array of bitmaps, as OS/2 has them, the first. Places in it count from the start of the file.
QByteArray firstOfArray(const QByteArray &bytes)
{
    const ByteReader reader(bytes);
    if (!reader.is(0, "BA") || !reader.is(size_t(fileHeaderBytes), "BM"))
        return bytes;
    QByteArray first = bytes.mid(fileHeaderBytes);
    ByteWriter offset;
    offset.u32le(quint32(qMax<qint64>(qint64(reader.u32le(size_t(fileHeaderBytes) + 10)) - fileHeaderBytes, 0)));
    return first.size() < fileHeaderBytes ? first : first.replace(10, 4, offset.bytes);
}

Result<Bitmap> openBitmap(const QByteArray &file)
{
    const QByteArray bytes = firstOfArray(file);
    const ByteReader reader(bytes);
    Bitmap bitmap;
    const bool whole = reader.is(0, "BM");
    bitmap.header = readHeader(reader, whole ? size_t(fileHeaderBytes) : 0);
    if (!bitmap.header.isKnown() || !reader.has(0, (whole ? size_t(fileHeaderBytes) : 0) + bitmap.header.bytes))
        return Failure{QStringLiteral("not a bitmap: no known header")};
    if (!limits::allows(bitmap.header.size(), 8))
        return Failure{tooLarge(bitmap.header.size())};
    bitmap.file = whole ? bytes : fileHeaderFor(bytes, bitmap.header) + bytes;
    if (bitmap.header.bytes == longHeaderOfOs2 && bitmap.header.compression > Rle4
        && (bitmap.header.compression != rle24OfOs2 || bitmap.header.bits != 24))
        return Failure{QStringLiteral("a bitmap packed in a way of OS/2")};
    if (bitmap.header.isCore())
        replaceCoreHeader(bitmap);
    lengthenHeader(bitmap);
    // Of two colours more cannot be told; the library would complain about each of them on standard error.
    if (bitmap.header.bits == 1 && bitmap.header.bytes >= 40 && bitmap.header.colors > 2)
        bitmap.file.replace(fileHeaderBytes + 32, 4, QByteArray::fromHex("02000000"));
    return bitmap;
}

/// Appends what a cut file lacks, so that its missing rows are the first colour and not what memory held.
bool completeRows(Bitmap &bitmap)
{
    const quint32 packing = bitmap.header.compression;
    if (packing != Plain && packing != Bitfields && packing != AlphaBitfields)
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

/// The start of a plain file of 8 bits with the colours of `bitmap`: headers, table and pixels of the first colour.
QByteArray eightBitFile(const Bitmap &bitmap)
{
    const Header &header = bitmap.header;
    const ByteReader bytes(bitmap.file);
    const size_t fields = size_t(fileHeaderBytes);
    const quint32 offset = quint32(fileHeaderBytes) + plainHeaderBytes + header.colors * 4;
    const qsizetype pixelBytes = (qsizetype(header.width) + 3) / 4 * 4 * header.height;
    ByteWriter plain;
    plain.text("BM");
    plain.u32le(quint32(offset + quint32(pixelBytes)));
    plain.u32le(0);
    plain.u32le(offset);
    plain.u32le(plainHeaderBytes);
    plain.u32le(quint32(header.width));
    plain.u32le(bytes.u32le(fields + 8)); // the height with its sign
    plain.u16le(1);
    plain.u16le(8);
    plain.u32le(Plain);
    plain.u32le(0);
    plain.u32le(bytes.u32le(fields + 24)); // pixels a metre
    plain.u32le(bytes.u32le(fields + 28));
    plain.u32le(header.colors);
    plain.u32le(0);
    for (size_t i = 0, at = fields + header.bytes; i < header.colors; ++i, at += 4)
        plain.u32le(bytes.u32le(at) & 0x00ffffff);
    plain.fill(pixelBytes);
    return plain.bytes;
}

/// Turns a run-length file into a plain one of 8 bits: Qt's reader leaves what memory held where the runs skip.
/// The answer is whether pixels were missing.
bool unpackFile(Bitmap &bitmap)
{
    const Header &header = bitmap.header;
    const ByteReader bytes(bitmap.file);
    const qsizetype stride = (qsizetype(header.width) + 3) / 4 * 4;
    QByteArray plain = eightBitFile(bitmap);
    uchar *const pixels = reinterpret_cast<uchar *>(plain.data()) + plain.size() - stride * header.height;
    const bool complete = unpackRuns(bytes, bytes.u32le(10), header, pixels, stride);
    bitmap.file = plain;
    return !complete;
}

/// The same for a file of two bits a pixel, which Qt's reader does not know. Its rows are complete.
void widenTwoBits(Bitmap &bitmap)
{
    const Header &header = bitmap.header;
    const ByteReader bytes(bitmap.file);
    const size_t from = (size_t(header.width) * 2 + 31) / 32 * 4;
    const size_t to = (size_t(header.width) + 3) / 4 * 4;
    const size_t height = size_t(header.height);
    const size_t offset = bytes.u32le(10);
    QByteArray plain = eightBitFile(bitmap);
    uchar *const pixels = reinterpret_cast<uchar *>(plain.data()) + size_t(plain.size()) - to * height;
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < size_t(header.width); ++x)
            pixels[y * to + x] = bytes.u8(offset + y * from + x / 4) >> (6 - x % 4 * 2) & 3;
    }
    bitmap.file = plain;
}

bool sniffBmp(Bytes head)
{
    const ByteReader bytes(head);
    const size_t at = bytes.is(0, "BA") ? size_t(fileHeaderBytes) : 0;
    return bytes.is(at, "BM") && readHeader(bytes, at + size_t(fileHeaderBytes)).isKnown();
}

/// Those of a masked bitmap stand behind the forty bytes, whether the header goes on there or not.
ChannelMasks readMasks(const Bitmap &bitmap)
{
    constexpr size_t at = size_t(fileHeaderBytes) + plainHeaderBytes;
    const ByteReader bytes(bitmap.file);
    const bool alpha = bitmap.header.bytes > plainHeaderBytes || bitmap.header.compression == AlphaBitfields;
    return {bytes.u32le(at), bytes.u32le(at + 4), bytes.u32le(at + 8), alpha ? bytes.u32le(at + 12) : 0};
}

/// Rows of whole-byte colours; null for all others.
QImage colorRows(const Bitmap &bitmap)
{
    const Header &header = bitmap.header;
    const bool masked = header.compression == Bitfields || header.compression == AlphaBitfields;
    if (header.compression != Plain && !masked)
        return {};
    const ByteReader bytes(bitmap.file);
    constexpr size_t fields = size_t(fileHeaderBytes);
    const bool topFirst = !header.isCore() && qint32(bytes.u32le(fields + 8)) < 0;
    const Bytes file = bytesOf(bitmap.file);
    const size_t offset = bytes.u32le(10);
    QImage image = masked || header.bits == 16 ? readMaskedBmpRows(
                       file, offset, header.size(), header.bits, topFirst, masked ? readMasks(bitmap) : ChannelMasks())
                                               : readBmpRows(file, offset, header.size(), header.bits, topFirst);
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
    if (const Codec *inside = bitmap->header.inside()) {
        Result<ImageInfo> info = inside->probe(bitmap->inside(), -1);
        if (info)
            info->codec = bmpCodec.name;
        return info;
    }
    return bitmap->info();
}

Result<Picture> decodeBmp(const EncodedFile &file, const DecodeHint &hint)
{
    Result<Bitmap> bitmap = openBitmap(file.bytes);
    if (!bitmap)
        return bitmap.failure();
    if (ByteReader(bitmap->file).u32le(10) > quint32(bitmap->file.size()))
        return Failure{QStringLiteral("a bitmap whose pixels lie behind its end")};
    if (const Codec *inside = bitmap->header.inside()) {
        Result<Picture> picture = inside->decode(bitmap->inside(), {hint.target, -1, 0});
        if (picture)
            picture->info.codec = bmpCodec.name;
        return picture;
    }
    Picture picture;
    picture.info = bitmap->info();
    if (bitmap->header.bytes == longHeaderOfOs2 && bitmap->header.compression == rle24OfOs2) {
        picture.pixels = allocateImage(bitmap->header.size(), QImage::Format_RGB32);
        if (picture.isNull())
            return Failure{outOfMemory(bitmap->header.size())};
        picture.partial = !unpackBmpRuns24(bytesOf(bitmap->file), ByteReader(bitmap->file).u32le(10), picture.pixels);
        return picture;
    }
    const bool runs = (bitmap->header.compression == Rle8 && bitmap->header.bits == 8)
        || (bitmap->header.compression == Rle4 && bitmap->header.bits == 4);
    picture.partial = runs ? unpackFile(*bitmap) : completeRows(*bitmap);
    if (QImage image = colorRows(*bitmap); !image.isNull()) {
        picture.pixels = std::move(image);
        return picture;
    }
    if (bitmap->header.bits == 2 && bitmap->header.compression == Plain)
        widenTwoBits(*bitmap);
    Result<QImage> image = readByQt(bitmap->file, "bmp");
    if (!image)
        return image.failure();
    picture.pixels = *std::move(image);
    picture.info.size = picture.pixels.size();
    return picture;
}

}

const Codec bmpCodec{"BMP", "bmp dib rle", sniffBmp, probeBmp, decodeBmp, true};
