#pragma once

#include "engine/codec.h"

/// The writers that need no library.
std::span<const Encoder> ownEncoders();
