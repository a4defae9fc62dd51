#pragma once

#include "engine/codec.h"

/// TIFF by libtiff, classic and Big. Grey and palettes of 1 to 8 bits keep their depth, 16 bits and floating point
/// become RGBA64, everything else goes through the library's own conversion to 8-bit RGB.
extern const Codec tiffCodec;
