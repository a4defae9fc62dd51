#pragma once

#include "engine/codec.h"

/// QuickDraw pictures, versions 1 and 2, as far as they consist of bitmaps: packed and unpacked, palettes of 1 to 8
/// bits, 16 and 32 bits, JPEG or plain pixels by QuickTime. Lines, shapes and text are not drawn.
extern const Codec pictCodec;
