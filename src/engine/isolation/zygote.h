#pragma once

#include "engine/isolation/confinement.h"
#include "engine/isolation/descriptor.h"
#include "engine/isolation/protocol.h"

namespace isolation {

/// The process that has everything loaded and only splits off decoder processes, each in a millisecond. Sees no file;
/// has one thread. Returns when its client is gone, all its children ended.
int serveAsZygote(Descriptor connection, Family family, Confinement &confinement);

}
