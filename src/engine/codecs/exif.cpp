#include "engine/codecs/exif.h"

#include "engine/picture.h"

int exifOrientation(Bytes tiff)
{
    const ByteReader bytes(tiff);
    const bool bigEndian = bytes.is(0, "MM");
    if ((!bigEndian && !bytes.is(0, "II")) || bytes.u16(2, bigEndian) != 42)
        return 1;
    const size_t directory = bytes.u32(4, bigEndian);
    const int entries = bytes.u16(directory, bigEndian);
    for (int i = 0; i < entries; ++i) {
        const size_t entry = directory + 2 + 12 * size_t(i);
        if (!bytes.has(entry, 12))
            return 1;
        constexpr quint16 orientationTag = 274;
        constexpr quint16 shortType = 3;
        if (bytes.u16(entry, bigEndian) != orientationTag)
            continue;
        const int value = bytes.u16(entry + 8, bigEndian);
        return bytes.u16(entry + 2, bigEndian) == shortType && value >= 1 && value <= 8 ? value : 1;
    }
    return 1;
}

int app1Orientation(Bytes payload)
{
    return ByteReader(payload).is(0, "Exif\0") && payload.size() > 6 ? exifOrientation(payload.subspan(6)) : 1;
}

QSize uprightSize(QSize stored, int orientation)
{
    return orientation >= 5 && orientation <= 8 ? stored.transposed() : stored;
}

namespace {

struct Turn
{
    bool transposed; ///< rows become columns, first
    bool mirrored; ///< then left and right change places
    bool flipped; ///< then top and bottom
};

Turn turnOf(int orientation)
{
    constexpr Turn turns[] = {{false, true, false}, {false, true, true}, {false, false, true}, {true, false, false},
        {true, true, false}, {true, true, true}, {true, false, true}};
    return turns[orientation - 2];
}

// Small squares, so that reading down a column stays within the processor's cache.
template <class Pixel> void turnPixels(const QImage &from, QImage &to, Turn turn)
{
    constexpr int tile = 32;
    const uchar *source = from.constBits();
    const qsizetype sourceStride = from.bytesPerLine();
    uchar *target = to.bits();
    const qsizetype targetStride = to.bytesPerLine();
    const int width = to.width();
    const int height = to.height();
    const auto copyRow = [&](int y, int left, int right) {
        const int sy = turn.flipped ? height - 1 - y : y;
        Pixel *row = reinterpret_cast<Pixel *>(target + y * targetStride);
        for (int x = left; x < right; ++x) {
            const int sx = turn.mirrored ? width - 1 - x : x;
            const uchar *at = turn.transposed ? source + sx * sourceStride + sy * qsizetype(sizeof(Pixel))
                                              : source + sy * sourceStride + sx * qsizetype(sizeof(Pixel));
            row[x] = *reinterpret_cast<const Pixel *>(at);
        }
    };
    for (int top = 0; top < height; top += tile) {
        for (int left = 0; left < width; left += tile) {
            for (int y = top; y < qMin(top + tile, height); ++y)
                copyRow(y, left, qMin(left + tile, width));
        }
    }
}

void turnBits(const QImage &from, QImage &to, Turn turn)
{
    to.fill(0);
    for (int y = 0; y < to.height(); ++y) {
        const int sy = turn.flipped ? to.height() - 1 - y : y;
        uchar *row = to.scanLine(y);
        for (int x = 0; x < to.width(); ++x) {
            const int sx = turn.mirrored ? to.width() - 1 - x : x;
            const int column = turn.transposed ? sy : sx;
            if (from.constScanLine(turn.transposed ? sx : sy)[column >> 3] & (0x80 >> (column & 7)))
                row[x >> 3] |= uchar(0x80 >> (x & 7));
        }
    }
}

}

QImage uprighted(const QImage &stored, int orientation)
{
    if (orientation < 2 || orientation > 8 || stored.isNull())
        return stored;
    const Turn turn = turnOf(orientation);
    QImage upright = allocateImage(uprightSize(stored.size(), orientation), stored.format());
    if (upright.isNull())
        return upright;
    switch (stored.depth()) {
    case 1:
        turnBits(stored, upright, turn);
        break;
    case 8:
        turnPixels<quint8>(stored, upright, turn);
        break;
    case 64:
        turnPixels<quint64>(stored, upright, turn);
        break;
    default:
        turnPixels<quint32>(stored, upright, turn);
        break;
    }
    upright.setColorTable(stored.colorTable());
    upright.setDotsPerMeterX(turn.transposed ? stored.dotsPerMeterY() : stored.dotsPerMeterX());
    upright.setDotsPerMeterY(turn.transposed ? stored.dotsPerMeterX() : stored.dotsPerMeterY());
    return upright;
}
