#pragma once

#include <QtGlobal>

#include <cstddef>

/// Pictures whose pixels are spread over bit planes, the first pixel in the high bit of a byte.

/// Puts up to eight planes together: one byte a pixel, `planes[0]` its lowest bit. `pixels` must have room for
/// 8 * `rowBytes`.
void mergePlanes(const uchar *planes, size_t rowBytes, int count, uchar *pixels);

/// The way back: `pixels` of 8 * `rowBytes` bytes into `count` planes, each `rowBytes` long, one behind the other.
void splitIntoPlanes(const uchar *pixels, size_t rowBytes, int count, uchar *planes);
