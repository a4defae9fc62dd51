#pragma once

#include <QImage>

struct opj_image;

/// A decoded JPEG 2000 as pixels: components brought to one size, sYCC and CMYK to RGB, more than 8 bits to RGBA64.
/// Null when the components do not make a picture.
QImage jpeg2000Pixels(const opj_image &image);
