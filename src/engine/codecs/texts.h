#pragma once

#include "engine/codec.h"

/// The texts for people that a picture file of any format carries; empty ones for a file without any.
Result<PictureTexts> readFileTexts(const EncodedFile &file);
