#pragma once

#include "engine/picture.h"
#include "engine/result.h"

/// Tones of a picture. Every function gives a new picture and leaves opacity, profile, metadata and resolution as they
/// are. A palette keeps its indices and its depth: only its colours change, and each counts as often as it is seen in
/// the picture. 16-bit channels are worked on with all of their bits. A null picture is a Failure.
///
/// Stretching: of n pixels, floor(clipFraction * n) may be lost at either end. `low` is the lowest level that has more
/// pixels than that at or below it, `high` the highest one that has more than that at or above it. Every number v of
/// `max` levels becomes round((min(max(v, low), high) - low) * max / (high - low)). Where `low` is `high`, nothing
/// changes. Fully transparent pixels are not counted. `clipFraction` is at least 0 and below 0.5, else a Failure.

/// Stretches all channels by the one range that the luminance takes: colours keep their hue where nothing is clipped.
/// Greys are stretched at once: a second time changes nothing in a grey picture.
Result<Picture> withAutoContrast(const Picture &picture, double clipFraction);

/// Stretches each of red, green and blue by the range that it takes itself, which takes away a cast as well. A second
/// time changes nothing.
Result<Picture> withAutoLevel(const Picture &picture, double clipFraction);

/// Each pixel the luminance of its stored numbers, 0.299 red + 0.587 green + 0.114 blue rounded (ITU-R BT.601); greys
/// stay what they are.
///
/// The answer is the palette of the 256 greys in their order at 8 bits per pixel (Format_Grayscale8), with two
/// exceptions: a palette below 8 bits or with transparent entries keeps its indices and depth, and what else lets its
/// ground shine through keeps its channels and depth.
Result<Picture> inGreyScale(const Picture &picture);
