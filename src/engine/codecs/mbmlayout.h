#pragma once

#include "engine/codecs/bytes.h"
#include "engine/result.h"

#include <QList>
#include <QRgb>
#include <QSize>

/// Numbers of the multi-bitmap format that its reader and its writer share.
namespace mbm {

inline constexpr quint32 fileStoreUid = 0x10000037;
inline constexpr quint32 multiBitmapUid = 0x10000042;
inline constexpr quint32 uidChecksum = 0x47396439; ///< of the two and a third that is 0
inline constexpr quint32 romStoreUid = 0x10000041;
inline constexpr quint32 romBitmapUid = 0x10000040;
inline constexpr size_t headerBytes = 40;
inline constexpr double twipsPerMeter = 1440 / 0.0254;

enum Color : quint32 { Grey = 0, Colored = 1, WithAlpha = 2, WithMultipliedAlpha = 3 };
enum Compression : quint32 { Plain = 0, Runs8 = 1, Runs12 = 2, Runs16 = 3, Runs24 = 4, Runs24To32 = 5, Runs32 = 6 };

/// Bytes of a row of `width` pixels of that depth; 0 for depths that the format does not know.
constexpr size_t rowBytes(size_t width, int bits)
{
    switch (bits) {
    case 1:
    case 2:
    case 4:
    case 8:
        return (width * size_t(bits) + 31) / 32 * 4;
    case 12:
    case 16:
        return (width + 1) / 2 * 4;
    case 24:
        return (3 * width + 11) / 12 * 12;
    case 32:
        return width * 4;
    default:
        return 0;
    }
}

/// The fixed colours of 4 or 8 bits.
QList<QRgb> colors(int bits);

/// The greys of 1, 2, 4 or 8 bits, black first.
QList<QRgb> greys(int bits);

struct Bitmap
{
    QSize size;
    QSize twips; ///< printed size in 1/1440 inch; 0 where the file does not tell
    int bits = 0;
    quint32 color = Grey;
    quint32 compression = Plain;
    QList<QRgb> palette; ///< of the bitmap's own; empty in nearly all files
    Bytes data;
};

/// How many bitmaps the file claims to hold; a failure when it is none of these files.
Result<int> bitmapCount(Bytes file);

/// The header of bitmap `index`, from 0, and where its pixels lie.
Result<Bitmap> readBitmap(Bytes file, int index);

}
