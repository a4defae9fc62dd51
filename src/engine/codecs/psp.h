#pragma once

#include "engine/codec.h"

#include <optional>

/// Paint Shop Pro, file versions 3 to 13: palettes of 1, 4 and 8 bits, 8 and 16 bits a channel. Layers with their
/// masks, opacities and blend modes are put together here; where a layer is of a kind that only its own program can
/// draw (vectors, adjustments, groups), the picture that this program stored beside them is shown.
extern const Codec pspCodec;

/// Title, artist, copyright and description of the creator block. Nothing when the file is no PSP.
std::optional<PictureTexts> pspTexts(const EncodedFile &file);
