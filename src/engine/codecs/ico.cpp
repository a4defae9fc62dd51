#include "engine/codecs/qtformats.h"

#include "engine/codecs/bmprows.h"
#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/qtread.h"
#include "engine/limits.h"

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

struct Entry
{
    int number; ///< place in the file's directory
    QSize size;
    int bits;
};

/// One directory entry, judged by the picture it points to: the directory's own numbers are often wrong.
Entry readEntry(const ByteReader &bytes, int number)
{
    const size_t at = 6 + 16 * size_t(number);
    const size_t picture = bytes.u32le(at + 12);
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

/// Pictures of 16 and 24 bits, which Qt's reader refuses or leaves without their mask; null for all others.
QImage readColorIcon(const QByteArray &file, const Entry &entry)
{
    const ByteReader bytes(file);
    const size_t picture = bytes.u32le(6 + 16 * size_t(entry.number) + 12);
    const bool isPlain = !bytes.is(picture, "\x89PNG") && bytes.u32le(picture + 16) == 0;
    if (!isPlain || (entry.bits != 16 && entry.bits != 24))
        return {};
    const size_t rowsAt = picture + bytes.u32le(picture);
    QImage image = entry.bits == 16
        ? readMaskedBmpRows(bytesOf(file), rowsAt, entry.size, entry.bits, false, ChannelMasks())
        : readBmpRows(bytesOf(file), rowsAt, entry.size, entry.bits, false);
    if (image.isNull())
        return {};
    image = image.convertToFormat(QImage::Format_ARGB32);
    const size_t width = size_t(entry.size.width());
    const size_t maskAt = rowsAt + (width * size_t(entry.bits) + 31) / 32 * 4 * size_t(image.height());
    for (int y = 0; y < image.height(); ++y) {
        const size_t from = maskAt + (width + 31) / 32 * 4 * size_t(image.height() - 1 - y);
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (size_t x = 0; x < width; ++x) {
            if (bytes.u8(from + x / 8) >> (7 - x % 8) & 1)
                row[x] = 0;
        }
    }
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
    picture.pixels = readColorIcon(file.bytes, entry);
    if (!picture.isNull())
        return picture;
    Result<QImage> image = readByQt(file.bytes, "ico", {0, entry.number});
    if (!image)
        return image.failure();
    picture.pixels = *std::move(image);
    picture.info.size = picture.pixels.size();
    return picture;
}

}

const Codec icoCodec{"ICO", "ico cur", sniffIco, probeIco, decodeIco};
