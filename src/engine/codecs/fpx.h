#pragma once

#include "engine/codec.h"

#include <optional>

/// FlashPix: the highest resolution that the file holds is the picture; a smaller wish gets the smallest stored
/// resolution that serves. Corrections that an editor noted beside the pixels (turns, crops) are not applied.
extern const Codec fpxCodec;

/// Title, subject, comments and what the camera noted. Nothing when the file is no FlashPix.
std::optional<PictureTexts> fpxTexts(const EncodedFile &file);
