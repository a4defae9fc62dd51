#pragma once

#include "engine/picture.h"
#include "engine/result.h"

/// What the decoders say and do alike.

/// Whether a decode of `reduced` pixels serves a wish for `target` (empty: everything): the picture, fitted into the
/// target with its aspect kept, must not be larger than what there is.
bool isLargeEnough(QSize reduced, QSize full, QSize target);

QString tooLarge(QSize size);
QString outOfMemory(QSize size);

/// Blanks the rows from `first` on: white, or clear where the format knows transparency, or index 0.
void blankRows(QImage &image, int first);

/// The picture in one of the formats that a Picture may hold, its colour table long enough for every index in it.
QImage normalized(const QImage &image);

/// Makes the colour table as long as the largest index needs: painters trust indices without looking.
void completeColorTable(QImage &image);
