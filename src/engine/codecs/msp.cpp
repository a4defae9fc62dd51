#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/smallformats.h"
#include "engine/limits.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr size_t headerBytes = 32;

bool sniffMsp(Bytes head)
{
    return ByteReader(head).is(0, "DanM") || ByteReader(head).is(0, "LinS");
}

/// Runs of the second version: 0, count, value; or a count and as many bytes.
bool unpackRow(Bytes packed, std::span<uchar> out)
{
    size_t at = 0;
    size_t filled = 0;
    while (filled < out.size() && at < packed.size()) {
        size_t count = packed[at++];
        const size_t room = out.size() - filled;
        if (count == 0) {
            if (packed.size() - at < 2)
                return false;
            count = std::min<size_t>(packed[at], room);
            std::fill_n(out.begin() + std::ptrdiff_t(filled), count, packed[at + 1]);
            at += 2;
        } else {
            const size_t there = std::min(count, packed.size() - at);
            std::copy_n(
                packed.begin() + std::ptrdiff_t(at), std::min(there, room), out.begin() + std::ptrdiff_t(filled));
            at += there;
            count = std::min(there, room);
        }
        filled += count;
    }
    return filled == out.size();
}

/// True when the whole row is there; what is not stays white.
bool readRow(Bytes file, size_t start, size_t length, bool packed, std::span<uchar> out)
{
    if (packed && length == 0)
        return true; // a white row
    start = std::min(start, file.size());
    const Bytes data = file.subspan(start, std::min(length, file.size() - start));
    if (packed)
        return data.size() == length && unpackRow(data, out);
    std::copy_n(data.begin(), std::min(data.size(), out.size()), out.begin());
    return data.size() >= out.size();
}

Result<ImageInfo> probeMsp(const EncodedFile &file, int)
{
    const ByteReader bytes(file.bytes);
    if (!sniffMsp(bytesOf(file.bytes)) || !bytes.has(0, headerBytes))
        return Failure{QStringLiteral("not a Microsoft Paint picture")};
    const QSize size(bytes.u16le(4), bytes.u16le(6));
    if (!limits::allows(size, 1))
        return Failure{tooLarge(size)};
    return ImageInfo{size, 1, 1, mspCodec.name};
}

Result<Picture> decodeMsp(const EncodedFile &file, const DecodeHint &)
{
    const Result<ImageInfo> info = probeMsp(file, -1);
    if (!info)
        return info.failure();
    Picture picture;
    picture.info = *info;
    picture.pixels = allocateImage(info->size, QImage::Format_Mono);
    if (picture.isNull())
        return Failure{outOfMemory(info->size)};
    picture.pixels.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    picture.pixels.fill(1);
    const ByteReader bytes(file.bytes);
    const size_t rowBytes = (size_t(info->size.width()) + 7) / 8;
    const size_t height = size_t(info->size.height());
    const bool packed = bytes.is(0, "LinS");
    size_t at = headerBytes + (packed ? height * 2 : 0);
    if (at >= bytes.size() && !(packed && bytes.has(0, at)))
        return Failure{QStringLiteral("a Microsoft Paint picture without rows")};
    for (size_t y = 0; y < height; ++y) {
        const size_t length = packed ? bytes.u16le(headerBytes + y * 2) : rowBytes;
        const std::span<uchar> row(picture.pixels.scanLine(int(y)), rowBytes);
        picture.partial = !readRow(bytesOf(file.bytes), at, length, packed, row) || picture.partial;
        at += length;
    }
    return picture;
}

}

const Codec mspCodec{"MSP", "msp", sniffMsp, probeMsp, decodeMsp};
