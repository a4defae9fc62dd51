#pragma once

#include "engine/codec.h"

/// Formats whose pixels Qt's readers take apart; size, depth and page count come from the headers, read here.

extern const Codec bmpCodec; ///< BMP, Windows RLE, DIB also without its file header
extern const Codec gifCodec; ///< frames composed on the canvas
extern const Codec icoCodec; ///< icons and cursors; page 0 is the largest, then deepest picture
extern const Codec xbmCodec;
extern const Codec xpmCodec;
