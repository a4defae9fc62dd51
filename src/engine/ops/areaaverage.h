#pragma once

#include <QImage>

/// A picture reduced to `size`: each pixel is the average of the area it stands for, weighed by opacity and taken in
/// light, not in stored numbers, so that fine patterns keep their brightness. A side is never made longer. The answer
/// is Format_RGB32, or Format_ARGB32 where the source can show its ground; null when memory is short.
QImage areaAverage(const QImage &source, QSize size);
