#include "engine/codecs/mbmlayout.h"

#include "engine/limits.h"

#include <algorithm>

namespace mbm {

namespace {

/// Where the header of a bitmap starts, and its pixels.
struct Place
{
    size_t header;
    size_t data; ///< 0: behind the header
};

bool isRomStore(const ByteReader &bytes)
{
    return bytes.u32le(0) == romStoreUid;
}

/// Of the table: u32 count, count x u32 offset.
size_t tableAt(const ByteReader &bytes)
{
    return isRomStore(bytes) ? 4 : bytes.u32le(16);
}

constexpr size_t firstBitmapAt = 20;

/// The table stands last: a file that was cut has none. Its first bitmap still follows the file's header.
bool isCutBeforeTable(const ByteReader &bytes)
{
    return !isRomStore(bytes) && !bytes.has(tableAt(bytes), 8) && bytes.has(firstBitmapAt, headerBytes)
        && bytes.u32le(firstBitmapAt + 4) == headerBytes;
}

Result<Place> placeOf(const ByteReader &bytes, int index)
{
    if (isCutBeforeTable(bytes))
        return Place{firstBitmapAt, 0};
    const size_t at = bytes.u32le(tableAt(bytes) + 4 + 4 * size_t(index));
    if (!isRomStore(bytes))
        return Place{at, 0};
    // In ROM the object's own fields (kind, display mode, heap, pile, width in bytes) come first.
    constexpr size_t objectBytes = 20;
    if (bytes.u32le(at) != romBitmapUid)
        return Failure{QStringLiteral("a bitmap of a ROM store is of another kind")};
    return Place{at + objectBytes, at + bytes.u32le(at + objectBytes + headerBytes + 4)};
}

bool fits(quint32 compression, int bits)
{
    switch (compression) {
    case Plain:
        return true;
    case Runs8:
        return bits <= 8;
    case Runs12:
        return bits == 12;
    case Runs16:
        return bits == 16;
    case Runs24:
        return bits == 24;
    case Runs24To32:
    case Runs32:
        return bits == 32;
    default:
        return false;
    }
}

int asSide(quint32 value)
{
    return int(std::min(value, quint32(limits::maximumSide) + 1));
}

/// The 40 colours in the middle of the table, which the cube lacks: five levels each of grey and the pure colours.
void appendMiddle(QList<QRgb> &table)
{
    constexpr QRgb grey = 0x010101, red = 0x010000, green = 0x000100, blue = 0x000001;
    for (const QRgb family : {grey, red, green, blue}) {
        for (const QRgb level : {0x11, 0x22, 0x44, 0x55, 0x77})
            table.append(0xff000000 | family * level);
    }
    for (const QRgb family : {blue, green, red, grey}) {
        for (const QRgb level : {0x88, 0xaa, 0xbb, 0xdd, 0xee})
            table.append(0xff000000 | family * level);
    }
}

}

QList<QRgb> colors(int bits)
{
    QList<QRgb> table;
    if (bits == 4) {
        for (const QRgb color : {0x000000, 0x555555, 0x800000, 0x808000, 0x008000, 0xff0000, 0xffff00, 0x00ff00,
                 0xff00ff, 0x0000ff, 0x00ffff, 0x800080, 0x000080, 0x008080, 0xaaaaaa, 0xffffff})
            table.append(color | 0xff000000);
        return table;
    }
    constexpr int cube = 216;
    for (int i = 0; i < cube; ++i) {
        if (i == cube / 2)
            appendMiddle(table);
        table.append(qRgb(i % 6 * 51, i / 6 % 6 * 51, i / 36 * 51));
    }
    return table;
}

QList<QRgb> greys(int bits)
{
    const int top = (1 << bits) - 1;
    QList<QRgb> table;
    for (int i = 0; i <= top; ++i)
        table.append(qRgb(i * 255 / top, i * 255 / top, i * 255 / top));
    return table;
}

Result<int> bitmapCount(Bytes file)
{
    const ByteReader bytes(file);
    const bool fileStore = bytes.u32le(0) == fileStoreUid && bytes.u32le(4) == multiBitmapUid;
    if (!fileStore && !isRomStore(bytes))
        return Failure{QStringLiteral("not a multi-bitmap file")};
    if (isCutBeforeTable(bytes))
        return 1;
    const size_t at = tableAt(bytes);
    if (!bytes.has(at, 8))
        return Failure{QStringLiteral("a multi-bitmap file without its table")};
    const size_t room = (bytes.size() - at - 4) / 4;
    const size_t count = std::min({size_t(bytes.u32le(at)), room, size_t(limits::maximumPages)});
    if (count == 0)
        return Failure{QStringLiteral("a multi-bitmap file without a bitmap")};
    return int(count);
}

Result<Bitmap> readBitmap(Bytes file, int index)
{
    const ByteReader bytes(file);
    const Result<Place> place = placeOf(bytes, index);
    if (!place)
        return place.failure();
    const size_t at = place->header;
    const size_t total = bytes.u32le(at);
    const size_t header = bytes.u32le(at + 4);
    if (!bytes.has(at, headerBytes) || header < headerBytes || header > total)
        return Failure{QStringLiteral("the header of bitmap %1 is damaged").arg(index)};
    Bitmap bitmap;
    bitmap.size = QSize(asSide(bytes.u32le(at + 8)), asSide(bytes.u32le(at + 12)));
    bitmap.twips = QSize(int(bytes.u32le(at + 16) & 0xffffff), int(bytes.u32le(at + 20) & 0xffffff));
    bitmap.bits = asSide(bytes.u32le(at + 24));
    bitmap.color = bytes.u32le(at + 28);
    bitmap.compression = bytes.u32le(at + 36);
    if (rowBytes(1, bitmap.bits) == 0 || !fits(bitmap.compression, bitmap.bits))
        return Failure{QStringLiteral("bitmap %1 has an unknown depth or compression").arg(index)};
    size_t start = place->data != 0 ? place->data : at + header;
    size_t length = total - header;
    const size_t entries = bytes.u32le(at + 32);
    if (entries > 0) {
        constexpr size_t most = 256;
        const size_t paletteBytes = 3 * entries;
        if (entries > most || paletteBytes > length || !bytes.has(start, paletteBytes))
            return Failure{QStringLiteral("the palette of bitmap %1 is damaged").arg(index)};
        const size_t usable = bitmap.bits <= 8 ? std::min(entries, size_t(1) << bitmap.bits) : 0;
        for (size_t i = start; i < start + 3 * usable; i += 3)
            bitmap.palette.append(qRgb(bytes.u8(i), bytes.u8(i + 1), bytes.u8(i + 2)));
        start += paletteBytes;
        length -= paletteBytes;
    }
    if (start < file.size())
        bitmap.data = file.subspan(start, std::min(length, file.size() - start));
    return bitmap;
}

}
