#include "engine/codecs/magickheaders.h"

#include <algorithm>

int photoCdSize(int sizeIndex)
{
    constexpr int base = 2;
    return sizeIndex < 0 || sizeIndex > 4 ? base : sizeIndex;
}

std::optional<MagickHeader> artHeader(const ByteReader &bytes, int)
{
    if (bytes.u16le(0) != 0 || bytes.u16le(4) != 0)
        return {};
    return MagickHeader{{bytes.u16le(2), bytes.u16le(6)}, 1};
}

namespace {

std::optional<MagickHeader> pcxAt(const ByteReader &bytes, size_t at)
{
    if (bytes.u8(at) != 0x0a || bytes.u8(at + 1) > 5 || bytes.u8(at + 2) > 1)
        return {};
    const int width = bytes.u16le(at + 8) - bytes.u16le(at + 4) + 1;
    const int height = bytes.u16le(at + 10) - bytes.u16le(at + 6) + 1;
    MagickHeader header{{width, height}, bytes.u8(at + 3) * bytes.u8(at + 65)};
    // Many programs put the size of the screen or of the picture where the resolution belongs.
    const QSize told(bytes.u16le(at + 12), bytes.u16le(at + 14));
    constexpr int least = 30;
    constexpr int most = 4800;
    const bool sane = qMin(told.width(), told.height()) >= least && qMax(told.width(), told.height()) <= most
        && told.width() <= 2 * told.height() && told.height() <= 2 * told.width();
    const bool isScreen = told == header.size || told == QSize(320, 200) || told == QSize(640, 350)
        || told == QSize(640, 480) || told == QSize(800, 600) || told == QSize(1024, 768);
    if (sane && !isScreen)
        header.dotsPerInch = told;
    return header;
}

}

std::optional<MagickHeader> pcxHeader(const ByteReader &bytes, int)
{
    return pcxAt(bytes, 0);
}

std::optional<MagickHeader> dcxHeader(const ByteReader &bytes, int)
{
    if (!bytes.is(0, "\xb1\x68\xde\x3a"))
        return {};
    constexpr int maximumPictures = 1023;
    int pages = 0;
    while (pages < maximumPictures && bytes.u32le(4 + 4 * size_t(pages)) != 0)
        ++pages;
    std::optional<MagickHeader> header = pcxAt(bytes, bytes.u32le(4));
    if (header)
        header->pages = std::max(pages, 1);
    return header;
}

std::optional<MagickHeader> hrzHeader(const ByteReader &bytes, int)
{
    constexpr size_t onlySize = 256 * 240 * 3;
    if (bytes.size() != onlySize)
        return {};
    return MagickHeader{{256, 240}, 24};
}

std::optional<MagickHeader> macHeader(const ByteReader &bytes, int)
{
    if (!bytes.has(0, 512) || (!bytes.is(65, "PNTG") && bytes.u32be(0) > 3))
        return {};
    return MagickHeader{{576, 720}, 1};
}

std::optional<MagickHeader> pcdHeader(const ByteReader &bytes, int sizeIndex)
{
    if (!bytes.is(2048, "PCD_IPI"))
        return {};
    const int factor = 1 << photoCdSize(sizeIndex);
    const QSize size(192 * factor, 128 * factor);
    const bool onItsSide = (bytes.u8(0xe02) & 1) != 0;
    return MagickHeader{onItsSide ? size.transposed() : size, 24};
}

std::optional<MagickHeader> utahHeader(const ByteReader &bytes, int)
{
    if (bytes.u16le(0) != 0xcc52)
        return {};
    constexpr int alphaFlag = 4;
    const int channels = bytes.u8(11) + (bytes.u8(10) & alphaFlag ? 1 : 0);
    return MagickHeader{{bytes.u16le(6), bytes.u16le(8)}, channels * 8};
}

namespace {

/// A number in groups of seven bits, the highest bit telling that more follow.
int groupedNumber(const ByteReader &bytes, size_t &at)
{
    int number = 0;
    for (int i = 0; i < 4; ++i) {
        const quint8 byte = bytes.u8(at++);
        number = number << 7 | (byte & 0x7f);
        if (!(byte & 0x80))
            break;
    }
    return number;
}

}

std::optional<MagickHeader> wbmpHeader(const ByteReader &bytes, int)
{
    if (bytes.u16le(0) != 0)
        return {};
    size_t at = 2;
    const int width = groupedNumber(bytes, at);
    const int height = groupedNumber(bytes, at);
    return MagickHeader{{width, height}, 1};
}

namespace {

/// Whether the records of a WPG of version 1 draw lines, shapes or text: then its bitmaps are only a part of it.
bool wpgDraws(const ByteReader &bytes)
{
    constexpr quint8 drawing[] = {5, 6, 7, 8, 9, 0x0c, 0x13};
    constexpr quint8 end = 0x10;
    constexpr int mostRecords = 10000;
    size_t at = bytes.u32le(4);
    for (int i = 0; i < mostRecords && bytes.has(at, 2) && bytes.u8(at) != end; ++i) {
        if (std::find(std::begin(drawing), std::end(drawing), bytes.u8(at)) != std::end(drawing))
            return true;
        size_t length = bytes.u8(at + 1);
        at += 2;
        if (length == 0xff) {
            length = bytes.u16le(at);
            at += 2;
            if (length & 0x8000) {
                length = (length & 0x7fff) << 16 | bytes.u16le(at);
                at += 2;
            }
        }
        at += length;
    }
    return false;
}

}

std::optional<MagickHeader> wpgHeader(const ByteReader &bytes, int)
{
    constexpr quint8 firstVersion = 1;
    if (!bytes.is(0,
            "\xff"
            "WPC"))
        return {};
    if (bytes.u8(10) == firstVersion && wpgDraws(bytes))
        return {};
    return MagickHeader{};
}

std::optional<MagickHeader> xbmHeader(const ByteReader &, int)
{
    return MagickHeader{{}, 1};
}

std::optional<MagickHeader> xpmHeader(const ByteReader &, int)
{
    return MagickHeader{{}, 8};
}

std::optional<MagickHeader> xwdHeader(const ByteReader &bytes, int)
{
    constexpr quint32 version = 7;
    const bool bigEndian = bytes.u32be(4) == version;
    if (!bigEndian && bytes.u32le(4) != version)
        return {};
    const auto number = [&](size_t at) { return int(std::min(bytes.u32(at, bigEndian), 1'000'000U)); };
    return MagickHeader{{number(16), number(20)}, number(44)};
}
