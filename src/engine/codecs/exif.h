#pragma once

#include "engine/codecs/bytes.h"

#include <QImage>
#include <QSize>

/// The orientation 1 to 8 that the first directory of a TIFF structure (EXIF data, a PNG's eXIf, a TIFF itself) tells;
/// 1 when it tells none or anything else. Tag 274 of the published TIFF 6.0 format.
int exifOrientation(Bytes tiff);

/// The same for the payload of a JPEG's APP1 marker; 1 when that is not EXIF.
int app1Orientation(Bytes payload);

/// The size a picture has once it is turned upright.
QSize uprightSize(QSize stored, int orientation);

/// Turns a stored picture upright. Orientations outside 2..8 give the picture back as it is.
QImage uprighted(const QImage &stored, int orientation);
