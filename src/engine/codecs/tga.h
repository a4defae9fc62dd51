#pragma once

#include "engine/codec.h"

/// Truevision TGA: palettes with entries of 15 to 32 bits, true colour of 15 to 32 bits, grey, grey with alpha; plain
/// and run-length coded, from any corner. Layout: the published TGA file format specification 2.0.
///
/// The format has no signature at its start, so it is chosen by the name, and a header that is not quite right is
/// refused.
extern const Codec tgaCodec;

/// Grey where the picture is Format_Grayscale8, a palette where it has one, else 24 bits, with alpha 32. Transparency
/// and the comment go into the extension area behind the pixels, which is left out where there is neither.
Result<QByteArray> encodeTga(const Picture &picture, const EncodeOptions &options);

/// The same run-length coded.
Result<QByteArray> encodeTgaCompressed(const Picture &picture, const EncodeOptions &options);
