#pragma once

#include "engine/picture.h"

#include <initializer_list>

/// The depth at which a writer of few colours puts a picture down.

/// Pixels with a palette and the bits that their indices take in the file.
struct PalettePixels
{
    QImage pixels; ///< Format_Indexed8, or Format_Mono when `bits` is 1; null when the picture has no palette
    QList<QRgb> table; ///< as many colours as `bits` can tell
    int bits = 0;

    bool isNull() const { return pixels.isNull(); }
    /// Row `y` with the indices side by side, the first one in the highest bits, padded with zeros.
    void packRow(int y, uchar *to) const;
    qsizetype packedBytes() const { return (qsizetype(pixels.width()) * bits + 7) / 8; }
};

enum class Transparency { OverWhite, Kept };

/// The picture's palette at the smallest of `depths` (ascending, the last is 8) that is no smaller than the picture's
/// nominal depth and holds all of its indices. Grey counts as a palette, and a nominal depth below 8 counts for it when
/// its values allow that.
PalettePixels palettePixels(const Picture &picture, std::initializer_list<int> depths, Transparency transparency);

/// Black, then white, or the reverse.
bool isBlackAndWhite(const QList<QRgb> &table);

/// Whether all pixels of an RGB32, ARGB32 or RGBA64 image are grey.
bool isAllGrey(const QImage &image);

/// Blue, green, red of each pixel of a row of RGB32.
void toBgr(const QRgb *from, int count, uchar *to);
/// Red, green, blue.
void toRgb(const QRgb *from, int count, uchar *to);
