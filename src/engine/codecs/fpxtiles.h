#pragma once

#include "engine/codecs/ole.h"
#include "engine/result.h"

#include <QImage>

#include <vector>

/// What the channels of a FlashPix resolution mean.
struct FpxColor
{
    enum Space { Mono, PhotoYcc, Rgb };
    Space space = Rgb;
    bool hasOpacity = false;
    bool isPremultiplied = false; ///< the colours with the opacity
    int channels() const { return (space == Mono ? 1 : 3) + (hasOpacity ? 1 : 0); }
};

/// One resolution of a FlashPix, its pixels still packed in tiles.
struct FpxResolution
{
    int number = 0; ///< 0 is the smallest; each next one has twice the sides
    QSize size;
    FpxColor color;
    QByteArray header; ///< of its one subimage
};

/// The size of the subimage and whether its tiles can be read; the colours are the property set's matter.
Result<FpxResolution> readFpxHeader(const QByteArray &header, int number);

/// The pixels: Grayscale8, RGB32 or, with opacity, ARGB32. `tables` gives the shared JPEG tables of a group.
struct FpxPixels
{
    QImage image; ///< null when memory is short or no tile can be read
    bool isDamaged = false;
};
FpxPixels readFpxTiles(const FpxResolution &resolution, const QByteArray &data, const OleProperties &contents);
