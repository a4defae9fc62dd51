#pragma once

#include <QImage>
#include <QSize>

struct tiff;

/// What one directory says about the shape of its picture.
struct TiffLayout
{
    QSize size; ///< as stored
    int bits = 1; ///< a sample
    int samples = 1; ///< a pixel
    int photometric = 0;
    int compression = 1;
    int planar = 1;
    int sampleFormat = 1;
    int orientation = 1;
    bool hasAlpha = false; ///< the sample behind the colours is one
    bool hasPlainAlpha = false; ///< and the colours are not multiplied with it
    bool isTiled = false;
    int dotsPerMeterX = 0;
    int dotsPerMeterY = 0;

    bool isGrey() const;
    bool isPalette() const;
    bool isRgb() const;
    /// Memory a decode takes a pixel of the picture.
    int bytesPerPixel() const { return bits * samples <= 8 ? 1 : bits > 8 ? 16 : 8; }
};

TiffLayout readTiffLayout(tiff *file);

/// Whether readTiffRows can read it: grey, palette, deep RGB and RGB with alpha that its colours are not multiplied
/// with, with the samples of a pixel side by side.
bool canReadTiffRows(const TiffLayout &layout);

/// Reads strips or tiles and keeps the depth. Null when nothing could be read.
QImage readTiffRows(tiff *file, const TiffLayout &layout);
