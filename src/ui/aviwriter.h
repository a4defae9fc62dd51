#pragma once

#include <QByteArray>
#include <QImage>
#include <QVector>

/// An AVI file as AviFile reads it: all frames of one size with one palette of at most 256 colours and opacities, in
/// run-length code of 8 bits a pixel. Pictures with more colours lose the lowest bits of them.
QByteArray aviOf(const QVector<QImage> &frames, int frameTime);
