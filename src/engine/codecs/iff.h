#pragma once

#include "engine/codec.h"

/// IFF pictures after the published descriptions of ILBM, PBM and ACBM: 1 to 8, 24 and 32 planes, mask plane or
/// transparent colour, all colour tricks of the machine they come from (half-bright, hold-and-modify, palettes that
/// change down the picture). Of an animation the first picture.
extern const Codec iffCodec;

/// The texts and metadata blocks of the file alone: NAME, AUTH, ANNO and copyright as the comment, line by line.
Metadata readIffMetadata(const QByteArray &file);

/// An ILBM with run lengths. Palettes and greys keep their depth as that many planes, everything else gets 24; what is
/// transparent is laid over white. Metadata, profile and resolution go along in the chunks that the published
/// extensions of ILBM have for them. Fails for a side of more than 65535 pixels.
Result<QByteArray> encodeIff(const Picture &picture, const EncodeOptions &options);
