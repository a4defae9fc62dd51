#include "engine/codecs/gemcolors.h"

#include <algorithm>
#include <array>

namespace {

constexpr size_t plainHeader = 16;

/// The palette that a screen of 16 colours starts with.
constexpr std::array<QRgb, 16> screenColors{0xffffffff, 0xffff0000, 0xff00ff00, 0xffffff00, 0xff0000ff, 0xffff00ff,
    0xff00ffff, 0xffaeaeae, 0xff555555, 0xffae0000, 0xff00ae00, 0xffaeae00, 0xff0000ae, 0xffae00ae, 0xff00aeae,
    0xff000000};

QRgb perThousand(const ByteReader &bytes, size_t at, bool isInk)
{
    const auto channel = [&](size_t offset) {
        const int level = std::min<int>(bytes.u16be(at + offset), 1000) * 255 / 1000;
        return isInk ? 255 - level : level;
    };
    return qRgb(channel(0), channel(2), channel(4));
}

/// Four bits a channel with the lowest bit on top, as the later machines have them, or three bits.
QRgb hardwareColor(int word, bool fourBits)
{
    const auto channel = [&](int shift) {
        const int bits = word >> shift & 15;
        return fourBits ? ((bits & 7) << 1 | bits >> 3) * 17 : (bits & 7) * 255 / 7;
    };
    return qRgb(channel(8), channel(4), channel(0));
}

void readHardwarePalette(const GemHeader &header, const ByteReader &bytes, QList<QRgb> &colors)
{
    constexpr int fourthBits = 0x888;
    bool fourBits = false;
    for (int i = 0; i < header.paletteEntries; ++i)
        fourBits = fourBits || bytes.u16be(header.paletteAt + size_t(i) * 2) & fourthBits;
    for (int i = 0; i < header.paletteEntries && i < colors.size(); ++i)
        colors[i] = hardwareColor(bytes.u16be(header.paletteAt + size_t(i) * 2), fourBits);
}

int reversed(int value, int bits)
{
    int result = 0;
    for (int i = 0; i < bits; ++i)
        result |= (value >> i & 1) << (bits - 1 - i);
    return result;
}

/// Without a palette: greys from white to black, or the colours of the screen. Files of 8 planes without one have the
/// highest bit in their first plane.
QList<QRgb> untoldColors(const GemHeader &header)
{
    const int count = 1 << header.planes;
    const bool isColor = (header.planes == 3 || header.planes == 4) && !(header.isVentura && header.isGrey);
    QList<QRgb> colors;
    colors.reserve(count);
    for (int i = 0; i < count; ++i) {
        const int level = header.planes == 8 ? reversed(i, 8) : i;
        const int grey = 255 - level * 255 / (count - 1);
        colors.append(isColor ? screenColors[size_t(i)] : qRgb(grey, grey, grey));
    }
    return colors;
}

}

GemHeader readGemHeader(const ByteReader &bytes)
{
    GemHeader header;
    header.planes = bytes.u16be(4);
    const size_t end = size_t(bytes.u16be(2)) * 2;
    const auto setPalette = [&](GemHeader::Palette palette, size_t at, size_t entryBytes, int entries) {
        const size_t fitting = end > at ? (end - at) / entryBytes : 0;
        header.paletteAt = at;
        header.paletteEntries = int(std::min<size_t>(fitting, size_t(std::clamp(entries, 0, 256))));
        if (header.paletteEntries > 0)
            header.palette = palette;
    };
    const int entries = header.planes <= 8 ? 1 << header.planes : 0;
    constexpr int hyperPaint = 0x80;
    if (bytes.is(plainHeader, "XIMG")) {
        header.colorModel = bytes.u16be(plainHeader + 4);
        if (header.colorModel <= 1)
            setPalette(GemHeader::Palette::PerThousand, plainHeader + 6, 6, entries);
    } else if (bytes.is(plainHeader, "STTT")) {
        setPalette(
            GemHeader::Palette::Hardware, plainHeader + 6, 2, std::min<int>(bytes.u16be(plainHeader + 4), entries));
    } else if (bytes.is(plainHeader, "TIMG")) {
        // The number of channels, then the bits of each.
        header.isFifteenBits = bytes.u16be(plainHeader + 8) == 5;
    } else if (end > plainHeader + 2 && bytes.u16be(plainHeader) == hyperPaint) {
        setPalette(GemHeader::Palette::Hardware, plainHeader + 2, 2, entries);
    } else if (end == plainHeader + 2) {
        header.isVentura = true;
        header.isGrey = bytes.u16be(plainHeader) == 1;
        header.isVenturaTrueColor = header.planes == 3 && (bytes.u16be(plainHeader) == 3 || bytes.u16be(6) == 3);
    }
    return header;
}

QList<QRgb> gemPalette(const GemHeader &header, const ByteReader &bytes)
{
    QList<QRgb> colors = untoldColors(header);
    switch (header.palette) {
    case GemHeader::Palette::PerThousand:
        for (int i = 0; i < header.paletteEntries && i < colors.size(); ++i)
            colors[i] = perThousand(bytes, header.paletteAt + size_t(i) * 6, header.colorModel == 1);
        break;
    case GemHeader::Palette::Hardware:
        readHardwarePalette(header, bytes, colors);
        break;
    case GemHeader::Palette::None:
        break;
    }
    return colors;
}
