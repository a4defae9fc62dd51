#pragma once

#include "engine/codec.h"

/// JPEG by libjpeg-turbo: baseline and progressive, grey, YCbCr, RGB, CMYK and YCCK of 8 bits.
extern const Codec jpegCodec;

/// The pixels of a JPEG stream as they are stored: its own orientation is not applied and does not show in `info.size`.
/// For streams inside other files, which say their orientation elsewhere.
Result<Picture> decodeStoredJpeg(const QByteArray &bytes, QSize target);
