#pragma once

#include "engine/codec.h"

/// GEM metafile: drawings of the VDI of Digital Research's GEM, recorded as its calls. Layout: the published VDI
/// programmer's guide, appendix on metafiles. Drawn at the size of its page at 96 dots an inch.
extern const Codec gemCodec;
