#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

/// Files of today's formats, made by the encoders of their own libraries. Empty where a library has no encoder.

/// A smooth picture that lossy encoders keep nearly as it is.
QImage smoothImage(QSize size, QImage::Format format = QImage::Format_RGB32);

struct WebPWishes
{
    bool lossless = true;
    QByteArray exif;
    QByteArray profile;
};
QByteArray webPOf(const QImage &image, const WebPWishes &wishes = {});
/// An animation; every frame as large as the first.
QByteArray webPOf(const QList<QImage> &frames);

struct HeifWishes
{
    bool av1 = false; ///< else HEVC
    int bits = 8;
    int orientation = 1;
    int thumbnailSide = 0;
    QByteArray profile;
};
QByteArray heifOf(const QList<QImage> &pictures, const HeifWishes &wishes = {});

struct JpegXlWishes
{
    bool lossless = true;
    int orientation = 1;
    bool container = false;
};
/// Format_Grayscale8, RGB32, ARGB32 or RGBA64; several pictures are the frames of an animation.
QByteArray jpegXlOf(const QList<QImage> &frames, const JpegXlWishes &wishes = {});

QByteArray qoiOf(const QImage &image);
/// gzip.
QByteArray packed(const QByteArray &bytes);
