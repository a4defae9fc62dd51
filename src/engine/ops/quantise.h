#pragma once

#include "engine/result.h"

#include <QImage>

/// The best palette of at most `colors` (2 to 256) entries for an RGB32 or ARGB32 image, and the image in it as
/// Format_Indexed8; `diffused` spreads each pixel's error over its neighbours. A grey image gets greys.
///
/// Of ARGB32 only whole pixels are seen: those that are not fully transparent count as opaque, all others share one
/// transparent entry, the last.
Result<QImage> quantised(const QImage &image, int colors, bool diffused);
