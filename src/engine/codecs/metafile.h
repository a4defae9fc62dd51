#pragma once

#include "engine/codec.h"

/// Windows metafiles, drawn on white by the program's own players: the enhanced ones (EMF, with EMF+ where a file has
/// nothing else) and the older ones of 16 bits (WMF, with and without the placeable header).
extern const Codec emfCodec;
extern const Codec wmfCodec;
