#pragma once

#include <QRgb>
#include <QRgba64>
#include <QtGlobal>

/// Whole rows of stored samples turned into the rows of a Picture, as quick as the machine's instructions let it.

/// Three bytes a pixel, red first, to Format_RGB32.
void rgbRow(const uchar *from, QRgb *to, int count);
/// The same with blue first.
void bgrRow(const uchar *from, QRgb *to, int count);
/// Four bytes a pixel, red first, alpha last and not multiplied in, to Format_ARGB32.
void rgbaRow(const uchar *from, QRgb *to, int count);

/// Samples of 16 bits, the high byte first: 1 grey, 2 grey and alpha, 3 colours, 4 colours and alpha, to Format_RGBA64.
void bigEndianRow(const uchar *from, QRgba64 *to, int count, int channels);
