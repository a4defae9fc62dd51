#include "engine/codecs/psdlayout.h"

#include "engine/codecs/psdlayers.h"
#include "engine/limits.h"

#include <algorithm>

namespace psd {

namespace {

int asSide(quint32 value)
{
    return int(std::min(value, quint32(limits::maximumSide) + 1));
}

bool isKnown(const Layout &layout)
{
    switch (layout.mode) {
    case Bitmap:
        return layout.depth == 1;
    case Indexed:
        return layout.depth == 8;
    case Grey:
    case Rgb:
        return layout.depth == 8 || layout.depth == 16 || layout.depth == 32;
    case Cmyk:
    case Multichannel:
    case Duotone:
    case Lab:
        return layout.depth == 8 || layout.depth == 16;
    default:
        return false;
    }
}

Result<Layout> readHeader(const ByteReader &bytes)
{
    if (!bytes.is(0, "8BPS") || !bytes.has(0, headerBytes))
        return Failure{QStringLiteral("not a Photoshop document")};
    Layout layout;
    const int version = bytes.u16be(4);
    layout.isLarge = version == 2;
    layout.channels = bytes.u16be(12);
    layout.size = QSize(asSide(bytes.u32be(18)), asSide(bytes.u32be(14)));
    layout.depth = bytes.u16be(22);
    layout.mode = bytes.u16be(24);
    constexpr int mostChannels = 56;
    if (version < 1 || version > 2 || !isKnown(layout) || layout.channels > mostChannels
        || layout.channels < layout.colorChannels() || layout.channels < 1)
        return Failure{QStringLiteral("a Photoshop document of an unknown kind")};
    return layout;
}

void readPalette(const ByteReader &bytes, size_t at, size_t length, Layout &layout)
{
    const size_t count = std::min(length / 3, size_t(256));
    for (size_t i = 0; i < count; ++i)
        layout.palette.append(qRgb(bytes.u8(at + i), bytes.u8(at + count + i), bytes.u8(at + 2 * count + i)));
}

void takeResource(Bytes file, size_t at, size_t length, int id, Layout &layout)
{
    const ByteReader bytes(file);
    const auto block = [&] {
        if (length > size_t(limits::maximumMetadataBytes))
            return QByteArray();
        return QByteArray(reinterpret_cast<const char *>(file.data()) + at, qsizetype(length));
    };
    constexpr double fixedPoint = 65536;
    switch (id) {
    case Resolution:
        if (length >= 12) {
            layout.dotsPerInchX = bytes.u32be(at) / fixedPoint;
            layout.dotsPerInchY = bytes.u32be(at + 8) / fixedPoint;
        }
        break;
    case Iptc:
        layout.metadata.iptc = block();
        break;
    case IccProfile:
        layout.iccProfile = block();
        break;
    case TransparentIndex:
        if (length >= 2)
            layout.transparentIndex = bytes.u16be(at);
        break;
    case Exif:
        layout.metadata.exif = block();
        // Some writers take the marker's name of a JPEG along.
        if (layout.metadata.exif.startsWith(QByteArrayView("Exif\0\0", 6)))
            layout.metadata.exif.remove(0, 6);
        break;
    case Xmp:
        layout.metadata.xmp = block();
        break;
    default:
        break;
    }
}

void readResources(Bytes file, size_t at, size_t end, Layout &layout)
{
    const ByteReader bytes(file);
    constexpr size_t leastBytes = 12;
    while (at + leastBytes <= end) {
        if (!bytes.is(at, "8BIM") && !bytes.is(at, "MeSa") && !bytes.is(at, "AgHg") && !bytes.is(at, "PHUT")
            && !bytes.is(at, "DCSR"))
            return;
        const int id = bytes.u16be(at + 4);
        const size_t name = bytes.u8(at + 6) + size_t(1);
        const size_t lengthAt = at + 6 + name + name % 2;
        const size_t length = bytes.u32be(lengthAt);
        const size_t start = lengthAt + 4;
        if (start > end || length > end - start)
            return;
        if (bytes.is(at, "8BIM"))
            takeResource(file, start, length, id, layout);
        at = start + length + length % 2;
    }
}

}

int Layout::colorChannels() const
{
    switch (mode) {
    case Rgb:
    case Lab:
        return 3;
    case Cmyk:
        return 4;
    case Multichannel:
        return std::min(channels, 4);
    default:
        return 1;
    }
}

Result<Layout> readLayout(Bytes file)
{
    const ByteReader bytes(file);
    Result<Layout> layout = readHeader(bytes);
    if (!layout)
        return layout;
    const Failure cut{QStringLiteral("a Photoshop document that ends before its pixels")};
    size_t at = headerBytes;
    const size_t colorBytes = bytes.u32be(at);
    if (!bytes.has(at + 4, colorBytes))
        return cut;
    if (layout->mode == Indexed)
        readPalette(bytes, at + 4, colorBytes, *layout);
    at += 4 + colorBytes;
    const size_t resourceBytes = bytes.u32be(at);
    if (!bytes.has(at + 4, resourceBytes))
        return cut;
    readResources(file, at + 4, at + 4 + resourceBytes, *layout);
    at += 4 + resourceBytes;
    const size_t lengthBytes = layout->isLarge ? 8 : 4;
    const quint64 layerBytes = layout->isLarge ? bytes.u64(at, true) : bytes.u32be(at);
    if (!bytes.has(at + lengthBytes, layerBytes) || !bytes.has(at + lengthBytes + layerBytes, 2))
        return cut;
    readLayers(file, at + lengthBytes, at + lengthBytes + layerBytes, *layout);
    layout->pixelsAt = at + lengthBytes + layerBytes;
    return layout;
}

}
