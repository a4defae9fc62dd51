#pragma once

#include "engine/codecs/psdlayout.h"

namespace psd {

/// Takes from the layer and mask section, which lies in `begin` up to `end`, what the flattened picture needs: whether
/// it has transparency, and the single plain layer.
void readLayers(Bytes file, size_t begin, size_t end, Layout &layout);

}
