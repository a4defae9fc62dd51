#pragma once

#include <QImage>

/// Puts `source` (RGB32 or ARGB32) into `indexed` (Format_Indexed8 of the same size) by the nearest colours of
/// `palette`, each pixel's error spread over its neighbours (Floyd and Steinberg, every other row backwards). The mean
/// of an area stays what it was. A fully transparent pixel neither takes nor gives an error.
void diffuse(const QImage &source, const QList<QRgb> &palette, QImage &indexed);
