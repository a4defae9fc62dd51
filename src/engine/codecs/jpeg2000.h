#pragma once

#include "engine/codec.h"

/// JPEG 2000 by OpenJPEG, in its file form and as a bare code stream.
extern const Codec jpeg2000Codec;
