#pragma once

#include "engine/codecs/pspfile.h"

#include <QImage>

/// The channels of one layer or composite picture, unpacked.
struct PspPixels
{
    PspCoding coding;
    QRect place; ///< on the canvas
    QByteArray colors[3]; ///< one plane of indices or greys, or red, green and blue
    QByteArray transparency; ///< a plane as large as the colours; empty when all is opaque
    QByteArray mask; ///< a plane of its own place, outside of which nothing shows; empty without one
    QRect maskPlace;
    int rows = 0; ///< that are there in every plane
    bool isDamaged = false; ///< there are fewer than there should be

    qsizetype colorStride() const;
    int maskBytes() const { return coding.channelBits() > 8 ? 2 : 1; } ///< of one pixel of a mask
    bool isPlain() const { return transparency.isEmpty() && mask.isEmpty(); }
};

/// Unpacks what `channels` hold; never more than the packed bytes can yield.
PspPixels unpackPspPixels(
    const std::vector<PspChannel> &channels, const PspCoding &coding, QRect place, QRect maskPlace = {});

/// Pixels without masks in the plainest form that holds them; null when memory is short.
QImage pspImage(const PspPixels &pixels);

/// How a layer lies upon those below.
struct PspMixing
{
    int opacity = 255;
    int blendMode = 0; ///< unknown ones count as the normal one
};

/// Lays the pixels upon `canvas`, an ARGB32 image, or RGBA64 for channels of 16 bits.
void layPspPixels(QImage &canvas, const PspPixels &pixels, PspMixing mixing);
