#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/smallformats.h"
#include "engine/limits.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr size_t headerBytes = 6;

/// The palette file: header of 40 bytes, then red, green and blue as words, each up to its own maximum. No colour
/// crosses the end of a block of 512 bytes. Empty for what is no such file or has the layout of a single graphics card.
QList<QRgb> readPalette(const QByteArray &file)
{
    constexpr size_t firstColor = 40;
    constexpr size_t block = 512;
    constexpr size_t colorBytes = 6;
    constexpr int anyHardware = 10;
    const ByteReader bytes(file);
    if (!bytes.is(0, "AH") || bytes.u8(6) != anyHardware)
        return {};
    const int count = std::min<int>(bytes.u16le(12), 255) + 1;
    // Of files without it: as many as there are.
    const int wanted = count > 1 ? count : 256;
    const std::array<int, 3> maxima{bytes.u16le(14), bytes.u16le(16), bytes.u16le(18)};
    QList<QRgb> colors;
    size_t at = firstColor;
    for (int i = 0; i < wanted && bytes.has(at, colorBytes); ++i) {
        std::array<int, 3> channels{};
        for (size_t c = 0; c < 3; ++c) {
            const int largest = maxima[c] > 0 ? maxima[c] : 255;
            channels[c] = std::min<int>(bytes.u16le(at + c * 2), largest) * 255 / largest;
        }
        colors.append(qRgb(channels[0], channels[1], channels[2]));
        at += colorBytes;
        if (block - at % block < colorBytes)
            at += block - at % block;
    }
    return colors;
}

/// One row: a byte with count and run bit, then one value or as many as counted; 0 ends it.
bool unpackRow(Bytes packed, std::span<uchar> out)
{
    size_t filled = 0;
    size_t at = 0;
    while (at < packed.size() && packed[at] != 0 && filled < out.size()) {
        const bool isRun = packed[at] & 0x80;
        const size_t wanted = packed[at++] & 0x7f;
        const size_t there = packed.size() - at;
        if (isRun && there == 0)
            break;
        const size_t count = std::min({wanted, out.size() - filled, isRun ? wanted : there});
        if (isRun)
            std::fill_n(out.begin() + std::ptrdiff_t(filled), count, packed[at]);
        else
            std::copy_n(packed.begin() + std::ptrdiff_t(at), count, out.begin() + std::ptrdiff_t(filled));
        at += isRun ? 1 : std::min(wanted, there);
        filled += count;
    }
    return filled == out.size();
}

Result<ImageInfo> probeCut(const EncodedFile &file, int)
{
    const ByteReader bytes(file.bytes);
    const QSize size(bytes.u16le(0), bytes.u16le(2));
    if (!bytes.has(0, headerBytes + 2) || bytes.u16le(4) != 0 || size.isEmpty())
        return Failure{QStringLiteral("not a Dr. Halo picture")};
    if (!limits::allows(size, 1))
        return Failure{tooLarge(size)};
    return ImageInfo{size, 8, 1, cutCodec.name};
}

Result<Picture> decodeCut(const EncodedFile &file, const DecodeHint &)
{
    const Result<ImageInfo> info = probeCut(file, -1);
    if (!info)
        return info.failure();
    const QList<QRgb> colors = readPalette(file.companion);
    Picture picture;
    picture.info = *info;
    picture.pixels = allocateImage(info->size, colors.isEmpty() ? QImage::Format_Grayscale8 : QImage::Format_Indexed8);
    if (picture.isNull())
        return Failure{outOfMemory(info->size)};
    const ByteReader bytes(file.bytes);
    size_t at = headerBytes;
    int y = 0;
    for (; y < picture.pixels.height() && bytes.has(at, 2); ++y) {
        const size_t start = at + 2;
        const size_t length = std::min<size_t>(bytes.u16le(at), bytes.size() - start);
        const std::span<uchar> row(picture.pixels.scanLine(y), size_t(info->size.width()));
        std::fill(row.begin(), row.end(), uchar(0));
        picture.partial = !unpackRow(bytesOf(file.bytes).subspan(start, length), row) || picture.partial;
        at = start + length;
    }
    if (!colors.isEmpty())
        picture.pixels.setColorTable(colors);
    picture.partial = picture.partial || y < picture.pixels.height();
    blankRows(picture.pixels, y);
    if (!colors.isEmpty())
        completeColorTable(picture.pixels);
    return picture;
}

}

// There is no signature; the name decides.
const Codec cutCodec{"CUT", "cut", nullptr, probeCut, decodeCut};
