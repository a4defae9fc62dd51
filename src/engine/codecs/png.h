#pragma once

#include "engine/codec.h"

/// PNG by libpng, depths kept: 1 bit as Mono, palettes of 2 to 8 bits as Indexed8, grey as Grayscale8, 16 bits as
/// RGBA64.
extern const Codec pngCodec;
