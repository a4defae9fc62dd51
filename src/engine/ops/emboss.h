#pragma once

#include "engine/picture.h"
#include "engine/result.h"

/// The picture as a relief lit from its upper left: each channel of each pixel becomes
///
///     ground + (right + below + lower right) - (left + above + upper left)
///
/// cut to its levels, the 3 x 3 kernel -1 -1 0 / -1 0 1 / 0 1 1. What lies beyond the edge counts as the nearest pixel
/// inside, and a fully transparent pixel as the ground. Even areas come out as the ground, a level of 8 bits that
/// deeper channels scale. Opacity, profile, metadata and resolution stay.
///
/// Greys, also as a palette, give Format_Grayscale8 at 8 bits per pixel; other palettes 24, or 32 when an entry that is
/// seen is transparent; 16-bit channels stay 16-bit channels. A null picture is a Failure.
Result<Picture> embossed(const Picture &picture, int ground = 128);
