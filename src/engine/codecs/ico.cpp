#include "engine/codecs/qtformats.h"

#include "engine/codecs/bmprows.h"
#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/png.h"
#include "engine/codecs/qtread.h"
#include "engine/limits.h"

#include <algorithm>
#include <array>
#include <optional>
#include <tuple>
#include <vector>

namespace {

struct Entry
{
    int number; ///< place in the file's directory
    QSize size;
    int bits;
};

/// Where the picture of that directory entry begins.
size_t entryPlace(const ByteReader &bytes, int number)
{
    return bytes.u32le(6 + 16 * size_t(number) + 12);
}

/// One directory entry, judged by the picture it points to: the directory's own numbers are often wrong.
Entry readEntry(const ByteReader &bytes, int number)
{
    const size_t picture = entryPlace(bytes, number);
    if (bytes.is(picture, "\x89PNG\r\n\x1a\n")) {
        constexpr int channels[] = {1, 0, 3, 1, 2, 0, 4, 0};
        const QSize size(int(bytes.u32be(picture + 16)), int(bytes.u32be(picture + 20)));
        return {number, size, bytes.u8(picture + 24) * channels[bytes.u8(picture + 25) & 7]};
    }
    // The bitmap is twice as high as the icon: the lower half is the mask.
    const QSize size(qint32(bytes.u32le(picture + 4)), qint32(bytes.u32le(picture + 8)) / 2);
    return {number, size, bytes.u16le(picture + 14)};
}

/// The pictures, largest first, of equal size the deepest first.
Result<std::vector<Entry>> readDirectory(const QByteArray &file)
{
    const ByteReader bytes(file);
    const int count = bytes.u16le(4);
    if (bytes.u16le(0) != 0 || (bytes.u16le(2) != 1 && bytes.u16le(2) != 2) || count == 0
        || count > limits::maximumPages || !bytes.has(0, 6 + 16 * size_t(count)))
        return Failure{QStringLiteral("not an icon or cursor")};
    std::vector<Entry> entries;
    for (int i = 0; i < count; ++i) {
        const Entry entry = readEntry(bytes, i);
        constexpr int largestIcon = 4096;
        if (entry.size.width() <= largestIcon && entry.size.height() <= largestIcon && limits::allows(entry.size, 16)
            && entry.bits > 0)
            entries.push_back(entry);
    }
    if (entries.empty())
        return Failure{QStringLiteral("an icon file without a readable picture")};
    std::stable_sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
        const auto rank = [](const Entry &e) { return std::tuple(qint64(e.size.width()) * e.size.height(), e.bits); };
        return rank(a) > rank(b);
    });
    return entries;
}

/// A bitmap inside an icon file: colours, then a mask of which a set bit is clear.
struct IconBitmap
{
    size_t tableAt = 0;
    size_t colors = 0; ///< in the table
    size_t rowsAt = 0;
    size_t rowBytes = 0;
    size_t maskAt = 0;
    size_t maskBytes = 0; ///< a row
    size_t end = 0;
};

/// Nothing for packed bitmaps and depths that no icon has.
std::optional<IconBitmap> bitmapOf(const ByteReader &bytes, const Entry &entry)
{
    const size_t picture = entryPlace(bytes, entry.number);
    constexpr std::array known{1, 2, 4, 8, 16, 24, 32};
    if (bytes.u32le(picture) < 40 || bytes.u32le(picture + 16) != 0
        || std::find(known.begin(), known.end(), entry.bits) == known.end())
        return {};
    IconBitmap bitmap;
    bitmap.tableAt = picture + bytes.u32le(picture);
    const size_t most = entry.bits <= 8 ? size_t(1) << entry.bits : 0;
    const size_t told = bytes.u32le(picture + 32);
    bitmap.colors = told == 0 ? most : std::min(told, most);
    bitmap.rowsAt = bitmap.tableAt + 4 * bitmap.colors;
    bitmap.rowBytes = (size_t(entry.size.width()) * size_t(entry.bits) + 31) / 32 * 4;
    bitmap.maskBytes = (size_t(entry.size.width()) + 31) / 32 * 4;
    bitmap.maskAt = bitmap.rowsAt + bitmap.rowBytes * size_t(entry.size.height());
    bitmap.end = bitmap.maskAt + bitmap.maskBytes * size_t(entry.size.height());
    return bitmap;
}

QImage paletteRows(const ByteReader &bytes, const IconBitmap &bitmap, const Entry &entry)
{
    QImage image = allocateImage(entry.size, QImage::Format_ARGB32);
    const size_t perByte = size_t(8 / entry.bits);
    const size_t mask = (1U << entry.bits) - 1;
    for (int y = 0; y < image.height(); ++y) {
        const size_t from = bitmap.rowsAt + bitmap.rowBytes * size_t(image.height() - 1 - y);
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (size_t x = 0; x < size_t(image.width()); ++x) {
            const size_t shift = 8 - size_t(entry.bits) * (x % perByte + 1);
            const size_t index = bytes.u8(from + x / perByte) >> shift & mask;
            row[x] = 0xff000000 | (index < bitmap.colors ? bytes.u32le(bitmap.tableAt + 4 * index) : 0);
        }
    }
    return image;
}

/// Rows with alpha; null when none of it is set, as in icons of programs that know the mask alone.
QImage alphaRows(const ByteReader &bytes, const IconBitmap &bitmap, const Entry &entry)
{
    QImage image = allocateImage(entry.size, QImage::Format_ARGB32);
    QRgb all = 0;
    for (int y = 0; y < image.height(); ++y) {
        const size_t from = bitmap.rowsAt + bitmap.rowBytes * size_t(image.height() - 1 - y);
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (size_t x = 0; x < size_t(image.width()); ++x)
            all |= row[x] = bytes.u32le(from + 4 * x);
    }
    return qAlpha(all) ? image : QImage();
}

void applyMask(const ByteReader &bytes, const IconBitmap &bitmap, QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        const size_t from = bitmap.maskAt + bitmap.maskBytes * size_t(image.height() - 1 - y);
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (size_t x = 0; x < size_t(image.width()); ++x) {
            if (bytes.u8(from + x / 8) >> (7 - x % 8) & 1)
                row[x] = 0;
        }
    }
}

/// The rows whose colours are not there.
void clearRows(const IconBitmap &bitmap, size_t fileBytes, QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        if (bitmap.rowsAt + bitmap.rowBytes * size_t(image.height() - y) > fileBytes)
            std::fill_n(reinterpret_cast<QRgb *>(image.scanLine(y)), image.width(), 0U);
    }
}

/// Null where Qt's reader has to try. What a cut file lacks is clear.
QImage readBitmapIcon(QByteArray file, const Entry &entry, bool &isCut)
{
    const std::optional<IconBitmap> bitmap = bitmapOf(ByteReader(file), entry);
    if (!bitmap || !ByteReader(file).has(bitmap->rowsAt, bitmap->rowBytes))
        return {};
    const size_t there = size_t(file.size());
    isCut = bitmap->end > there;
    if (isCut)
        file.append(qsizetype(bitmap->end - there), '\0');
    const ByteReader bytes(file);
    if (entry.bits == 32) {
        if (QImage image = alphaRows(bytes, *bitmap, entry); !image.isNull())
            return image;
    }
    QImage image = entry.bits <= 8 ? paletteRows(bytes, *bitmap, entry)
        : entry.bits == 16
        ? readMaskedBmpRows(bytesOf(file), bitmap->rowsAt, entry.size, entry.bits, false, ChannelMasks())
        : readBmpRows(bytesOf(file), bitmap->rowsAt, entry.size, entry.bits, false);
    image.convertTo(QImage::Format_ARGB32);
    applyMask(bytes, *bitmap, image);
    clearRows(*bitmap, there, image);
    return image;
}

ImageInfo infoOf(const std::vector<Entry> &entries, int page)
{
    const Entry &entry = entries.at(size_t(page));
    return {entry.size, entry.bits, int(entries.size()), icoCodec.name};
}

bool sniffIco(Bytes head)
{
    const ByteReader bytes(head);
    const int kind = bytes.u16le(2);
    const int count = bytes.u16le(4);
    return bytes.has(0, 22) && bytes.u16le(0) == 0 && (kind == 1 || kind == 2) && count > 0 && bytes.u8(9) == 0
        && bytes.u32le(14) > 0 && bytes.u32le(18) >= 6 + 16 * quint32(count);
}

Result<ImageInfo> probeIco(const EncodedFile &file, int)
{
    const auto entries = readDirectory(file.bytes);
    if (!entries)
        return entries.failure();
    return infoOf(*entries, 0);
}

Result<Picture> decodeIco(const EncodedFile &file, const DecodeHint &hint)
{
    const auto entries = readDirectory(file.bytes);
    if (!entries)
        return entries.failure();
    if (hint.page < 0 || hint.page >= int(entries->size()))
        return Failure{QStringLiteral("the icon file has no picture %1").arg(hint.page)};
    const Entry &entry = entries->at(size_t(hint.page));
    Picture picture;
    picture.info = infoOf(*entries, hint.page);
    const size_t place = entryPlace(ByteReader(file.bytes), entry.number);
    if (ByteReader(file.bytes).is(place, "\x89PNG")) {
        Result<Picture> inside = pngCodec.decode({file.bytes.mid(qsizetype(place)), {}}, {});
        if (inside) {
            inside->info = picture.info;
            return inside;
        }
    } else {
        picture.pixels = readBitmapIcon(file.bytes, entry, picture.partial);
    }
    if (!picture.isNull())
        return picture;
    picture.partial = false;
    Result<QImage> image = readByQt(file.bytes, "ico", {0, entry.number});
    if (!image)
        return image.failure();
    // Damaged files only: the two readers do not take the size from the same place.
    if (image->size() != entry.size)
        return Failure{QStringLiteral("the icon is not as large as its header says")};
    picture.pixels = *std::move(image);
    return picture;
}

}

const Codec icoCodec{"ICO", "ico cur", sniffIco, probeIco, decodeIco};
