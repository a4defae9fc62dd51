#pragma once

#include "engine/decode.h"

#include <QByteArray>
#include <QImage>
#include <QList>

/// Small files made in code, one or more a codec.
struct SmallFile
{
    const char *name;
    QString extension;
    QByteArray bytes;
    EncodedFile encoded() const { return {bytes, extension}; }
};

/// What Qt's writer of that format makes of the image.
QByteArray written(const QImage &image, const char *format, int quality = -1);

/// The JPEG with an EXIF marker that tells this orientation; `bigEndian` as the marker's own byte order.
QByteArray withOrientation(const QByteArray &jpeg, int orientation, bool bigEndian);
/// The directory that such a marker, a PNG's eXIf or a TIFF holds: nothing but the orientation.
QByteArray orientationDirectory(int orientation, bool bigEndian);
/// The PNG with an eXIf chunk in front of its pixels.
QByteArray pngWithOrientation(const QByteArray &png, int orientation);
/// An uncompressed TIFF of 8-bit RGB.
QByteArray tiffOf(const QImage &image, int orientation = 1);
/// A GIF of `frames` equal frames of 4 x 3 pixels.
QByteArray gifOf(int frames);
/// An icon file with these pictures, each as a 32-bit bitmap.
QByteArray iconOf(const QList<QSize> &sizes);

/// Every format that can be made here.
QList<SmallFile> smallFiles();
