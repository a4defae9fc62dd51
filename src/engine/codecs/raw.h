#pragma once

#include "engine/codec.h"

/// Camera raw files by LibRaw. A wish for no more than the camera's own preview gets the preview.
extern const Codec rawCodec;
