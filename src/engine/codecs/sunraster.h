#pragma once

#include "engine/codec.h"

/// Sun raster files: 1, 4, 8, 24 and 32 bits, plain, run-length coded and in RGB order. Layout: the published header
/// rasterfile.h of the system.
extern const Codec sunRasterCodec;
