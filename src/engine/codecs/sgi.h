#pragma once

#include "engine/codec.h"

/// SGI pictures: one or two bytes a channel, grey, grey with alpha, RGB, RGB with alpha, plain and run-length coded.
/// Channels behind the fourth are left out. Layout: "The SGI Image File Format", version 1.00.
extern const Codec sgiCodec;
