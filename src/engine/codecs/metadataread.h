#pragma once

#include "engine/codec.h"

/// The blocks of a file whose own codec does not collect them, by exiv2: TIFF, JPEG 2000, Photoshop, camera raw, WebP,
/// HEIF and its kin. Empty for all others and for what cannot be taken apart.
Metadata readMetadata(const EncodedFile &file);
