#pragma once

#include <QImage>
#include <QList>

/// The colours of an image, 8 bits a channel; all fully transparent pixels are one colour, 0. `image` is Format_Mono,
/// Indexed8, Grayscale8, RGB32 or ARGB32. Looks no further once `limit` is passed: the list then has `limit` + 1
/// colours. Sorted from dark to light.
QList<QRgb> colorsOf(const QImage &image, int limit);

/// How many of them, up to `limit` + 1. RGBA64 is counted with all of its bits.
int colorCountOf(const QImage &image, int limit);

/// Format_Indexed8 with `colors` (at most 256) as its table. Every pixel of `image` must have one of them.
QImage indexedBy(const QImage &image, const QList<QRgb> &colors);
