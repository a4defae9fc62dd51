#pragma once

#include "engine/codec.h"

/// WordPerfect graphics that are drawings: libwpg takes them apart, Qt's SVG renderer draws them. Those that hold a
/// bitmap only belong to the row WPG, which is asked first.
extern const Codec wpgDrawingCodec;
