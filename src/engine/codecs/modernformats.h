#pragma once

#include "engine/codec.h"

/// The formats of today, each through the library that its makers or maintainers keep.

/// HEIF in all its names: HEIC, AVIF. The library turns pictures upright; pages are the top-level pictures, the primary
/// one first.
extern const Codec heifCodec;
/// JPEG XL, bare codestream or in its container. Pages are the frames of an animation.
extern const Codec jpegXlCodec;
/// QOI, the "Quite OK Image" format; its public specification 1.0.
extern const Codec qoiCodec;
/// SVG, plain or packed by gzip, at its natural size. Nothing outside the file is ever opened.
extern const Codec svgCodec;
/// WebP; pages are the frames of an animation, composed on its canvas.
extern const Codec webPCodec;
