#pragma once

#include "engine/codec.h"

/// GEM bit images after the published GEM reference and the descriptions of its extensions: 1 to 8 planes with the
/// palettes of XIMG, STTT and HyperPaint files, greys and colours of Ventura Publisher, and 15 to 32 bits.
extern const Codec gemImageCodec;

/// Whether a file of the drawing's extension is one of these after all.
bool isGemImage(std::span<const uchar> head);
