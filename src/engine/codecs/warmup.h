#pragma once

#include "engine/codec.h"

/// CodecModule::warmUp.
void warmUpCodecs(const PictureMemory &memory);
