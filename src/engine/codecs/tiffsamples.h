#pragma once

#include "engine/codecs/tiffrows.h"

/// Whether readTiffSamples can read it: grey, RGB, palettes, inks and Lab, with or without alpha, of 1 to 16, 24 or 32
/// whole bits a sample or floating point of 16, 24, 32 or 64, the samples of a pixel side by side or in planes of their
/// own.
bool canReadTiffSamples(const TiffLayout &layout);

/// Reads strips or tiles, sample by sample: what is too rare for a way of its own. Format_RGBA64 when a sample has more
/// than 8 bits, else Format_Grayscale8, RGB32 or ARGB32. Floating point counts from 0 (black) to 1. Null when nothing
/// could be read.
QImage readTiffSamples(tiff *file, const TiffLayout &layout);
