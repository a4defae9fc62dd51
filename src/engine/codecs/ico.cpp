#include "engine/codecs/qtformats.h"

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
    Result<QImage> image = readByQt(file.bytes, "ico", {0, entries->at(size_t(hint.page)).number});
    if (!image)
        return image.failure();
    Picture picture;
    picture.info = infoOf(*entries, hint.page);
    picture.pixels = *std::move(image);
    picture.info.size = picture.pixels.size();
    return picture;
}

}

const Codec icoCodec{"ICO", "ico cur", sniffIco, probeIco, decodeIco};
