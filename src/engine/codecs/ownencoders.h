#pragma once

#include "engine/codec.h"

/// The writers of the formats whose files this program makes without a library.
std::span<const Encoder> ownEncoders();
