#pragma once

#include "engine/isolation/confinement.h"
#include "engine/isolation/descriptor.h"
#include "engine/isolation/protocol.h"
#include "engine/picturememory.h"

namespace isolation {

/// Where a decoder process makes large pictures: in memory that its client gives.
PictureMemory clientMemory();

/// The life of a decoder process: locks itself in, answers as many requests as its family does, and ends.
[[noreturn]] void work(Descriptor connection, Family family, Confinement &confinement);

}
