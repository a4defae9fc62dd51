#pragma once

#include "engine/codec.h"

/// JPEG by libjpeg-turbo: baseline and progressive, grey, YCbCr, RGB, CMYK and YCCK of 8 bits.
extern const Codec jpegCodec;

/// The pixels of a JPEG stream as they are stored: its own orientation is not applied and does not show in `info.size`.
/// For streams inside other files, which say their orientation elsewhere.
Result<Picture> decodeStoredJpeg(const QByteArray &bytes, QSize target);

/// The bare samples of a JPEG without markers that tell what they are, as other formats hold them in pieces.
struct JpegSamples
{
    QByteArray samples; ///< component beside component, row after row of the wanted size, whatever the stream's own
    bool isDamaged = false;
};

/// Fails when the stream is larger than `size` or has not `components` (1 to 4) components. With `isYcc` the first
/// three of them become red, green and blue; the others stay.
Result<JpegSamples> decodeJpegSamples(const QByteArray &bytes, QSize size, int components, bool isYcc);
