#pragma once

#include "engine/codec.h"

/// Two small formats that are done by hand.

/// Seattle FilmWorks: a JPEG whose markers have other numbers, upside down.
extern const Codec sfwCodec;
/// CompuServe RLE: alternating runs of background and foreground, 256 x 192 or 128 x 96.
extern const Codec compuServeCodec;
