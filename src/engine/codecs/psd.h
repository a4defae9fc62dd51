#pragma once

#include "engine/codec.h"

/// Photoshop documents and their large form (PSB): the flattened picture of every colour mode at 1, 8, 16 and 32 bits a
/// channel, plain, PackBits and both kinds of zip. Layout: the published Photoshop file format specification.
///
/// Inks become light without their profile. 32-bit channels are linear light and become 16 bits of sRGB. Channels
/// beyond those of the mode are looked at only where the file says that the first one is its transparency.
extern const Codec psdCodec;

/// 1 bit where the picture is black and white, grey, a palette, else RGB of 8 or 16 bits; PackBits. A transparent
/// picture is written as the format wants it: flattened over white with the transparency as fourth channel, and beside
/// that a single layer that holds the true colours.
Result<QByteArray> encodePsd(const Picture &picture, const EncodeOptions &options);
