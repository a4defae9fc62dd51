#include "engine/codecs/tgalayout.h"

#include <algorithm>

namespace tga {

namespace {

bool isOneOf(int value, std::initializer_list<int> known)
{
    return std::find(known.begin(), known.end(), value) != known.end();
}

bool isSane(const Layout &layout, int mapType)
{
    const int alphaBits = layout.descriptor & AlphaBits;
    if (mapType > 1 || layout.descriptor & Interleaved || alphaBits > 8)
        return false;
    if (mapType == 1 && layout.mapLength > 0 && !isOneOf(layout.mapBits, {15, 16, 24, 32}))
        return false;
    switch (layout.kind) {
    case Palette:
        return mapType == 1 && layout.mapLength > 0 && isOneOf(layout.bits, {8, 16});
    case TrueColor:
        return isOneOf(layout.bits, {15, 16, 24, 32}) && (alphaBits <= 1 || layout.bits == 32);
    case Grey:
        return isOneOf(layout.bits, {8, 16});
    default:
        return false;
    }
}

bool headerHasAlpha(const Layout &layout)
{
    switch (layout.kind) {
    case Palette:
        return layout.mapBits == 32;
    case TrueColor:
        return layout.bits != 24 && (layout.descriptor & AlphaBits) != 0;
    default:
        return layout.bits == 16;
    }
}

QByteArray commentOf(Bytes file, size_t extensionAt)
{
    QByteArray comment;
    for (size_t line = 0; line < commentLines; ++line) {
        const auto *text = reinterpret_cast<const char *>(file.data()) + extensionAt + commentAt + line * commentLine;
        comment += QByteArray(text, qsizetype(qstrnlen(text, commentLine))) + '\n';
    }
    while (comment.endsWith('\n'))
        comment.chop(1);
    return comment;
}

void readExtension(Bytes file, Layout &layout)
{
    const ByteReader bytes(file);
    if (file.size() < footerBytes || !bytes.is(file.size() - footerBytes + 8, signature))
        return;
    const size_t at = bytes.u32le(file.size() - footerBytes);
    if (at < headerBytes || !bytes.has(at, extensionBytes) || bytes.u16le(at) < extensionBytes)
        return;
    layout.comment = commentOf(file, at);
    const int alphaKind = bytes.u8(at + alphaKindAt);
    // Several programs leave 0 there for a palette, whose entries say enough.
    if (layout.kind == Palette && alphaKind == 0)
        return;
    layout.isMultiplied = alphaKind == Multiplied;
    layout.hasTrustedAlpha = layout.hasAlpha && (alphaKind == Straight || layout.isMultiplied);
    layout.hasAlpha = layout.hasTrustedAlpha;
}

}

Result<Layout> readLayout(Bytes file)
{
    const ByteReader bytes(file);
    if (!bytes.has(0, headerBytes))
        return Failure{QStringLiteral("too short for a TGA")};
    Layout layout;
    const int mapType = bytes.u8(1);
    layout.isPacked = bytes.u8(2) & RunLengths;
    layout.kind = bytes.u8(2) & ~RunLengths;
    layout.mapFirst = bytes.u16le(3);
    layout.mapLength = bytes.u16le(5);
    layout.mapBits = bytes.u8(7);
    layout.size = QSize(bytes.u16le(12), bytes.u16le(14));
    layout.bits = bytes.u8(16);
    layout.descriptor = bytes.u8(17);
    if (!isSane(layout, mapType))
        return Failure{QStringLiteral("not the header of a TGA")};
    layout.mapAt = headerBytes + bytes.u8(0);
    const size_t mapBytes = mapType == 1 ? size_t(layout.mapLength) * size_t((layout.mapBits + 7) / 8) : 0;
    const size_t pixelsAt = layout.mapAt + mapBytes;
    if (!bytes.has(pixelsAt, layout.pixelBytes()))
        return Failure{QStringLiteral("a TGA without pixels")};
    layout.pixels = file.subspan(pixelsAt);
    layout.hasAlpha = headerHasAlpha(layout);
    readExtension(file, layout);
    return layout;
}

}
