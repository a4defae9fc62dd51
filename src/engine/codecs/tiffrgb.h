#pragma once

#include "engine/codecs/tiffrows.h"

#include <QImage>

struct tiff;

/// The everyday kind: three or four samples of 8 bits side by side, RGB or as a JPEG stores it. Its samples go into the
/// picture's rows without a pass between.

/// Whether readTiffRgb can read it. Sets the library to hand out RGB where a JPEG holds something else.
bool canReadTiffRgb(tiff *file, const TiffLayout &layout);

/// Format_RGB32, or Format_ARGB32 with an alpha that is not multiplied in. Null when nothing could be read.
QImage readTiffRgb(tiff *file, const TiffLayout &layout);
