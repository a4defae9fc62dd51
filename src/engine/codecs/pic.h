#pragma once

#include "engine/codec.h"

// Formats that share the extension "pic" and nothing else; each is known by its first bytes. QuickDraw's is one of the
// long tail.

/// Softimage: red, green, blue and alpha in packets, plain or as run lengths.
extern const Codec softimageCodec;

/// Pictor and PC Paint: the memory of a CGA, EGA or VGA adapter, 1 to 8 bits in one or more planes, or 24 bits.
extern const Codec pictorCodec;

/// Radiance: light without an upper limit; what is brighter than white is shown as white.
extern const Codec radianceCodec;
