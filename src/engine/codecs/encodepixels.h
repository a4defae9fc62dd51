#pragma once

#include "engine/picture.h"

/// The pixels of a picture in the few shapes that writers take.

/// Format_RGB32 of any picture, laid over white; 16-bit channels are rounded.
QImage opaqueRgb(const Picture &picture);

/// Format_ARGB32 when any pixel shows the ground, else opaqueRgb().
QImage rgbOrArgb(const Picture &picture);

/// Format_Indexed8 with an opaque colour table (transparent entries laid over white) of a picture that has a palette or
/// is Mono or Grayscale8; null for all others. The table is as long as the picture's own; indices stay.
QImage opaqueIndexed(const Picture &picture);

/// Whether an opaqueIndexed() table is the plain grey ramp of `bits` bits, 0 = black.
bool isGreyRamp(const QList<QRgb> &table, int bits);

/// Format_Mono, 0 = black and 1 = white by its table, of any picture: by threshold at half brightness, or diffused
/// (Floyd and Steinberg). Of two colours the darker one is black and the lighter one white, however dark or light both
/// are.
QImage blackAndWhite(const Picture &picture, bool diffuse);

/// Format_Grayscale8 of any picture laid over white, by the luminance weights of qGray().
QImage greyscale(const Picture &picture);
