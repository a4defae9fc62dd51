#pragma once

#include "engine/picture.h"
#include "engine/result.h"

/// Colour depth and palettes. Every function gives a new picture and leaves profile, metadata and resolution as they
/// are; `info.bitsPerPixel` of the answer is the new depth.

/// The picture at `bits` bits per pixel: 1, 4, 8, 24 or 32.
/// Upwards all colours stay as they are. Downwards to 1 black and white by threshold, to 4 and 8 the best palette of 16
/// or 256 colours without diffusion, to 24 from deeper ones the rounded channels over white. Fails for other numbers.
Result<Picture> withBitsPerPixel(const Picture &picture, int bits);

/// A palette of at most `colors` (2 to 256) entries at `bits` (1, 4 or 8) bits per pixel. A picture that has no more
/// colours than that keeps each of them exactly. Two colours at 1 bit are black and white (by threshold, or diffused).
Result<Picture> withReducedColors(const Picture &picture, int colors, int bits, bool diffuse);

/// Quantised to a depth of 1, 4 or 8 bits: the best palette of that many entries.
Result<Picture> withReducedBits(const Picture &picture, int bits, bool diffuse);

/// How many colours there are, counted up to `limit`; the answer is `limit` + 1 when there are more. Fully transparent
/// pixels count as one colour.
int countColors(const Picture &picture, int limit);
