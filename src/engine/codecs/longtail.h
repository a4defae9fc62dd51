#pragma once

#include "engine/codec.h"

/// The formats that GraphicsMagick reads, one row each: PCX, DCX, SGI, XWD, WBMP, MacPaint, HRZ, ART, Photo CD, WPG,
/// Utah RLE, and what XBM and XPM the first reader does not take.
std::span<const Codec *const> longTailCodecs();
