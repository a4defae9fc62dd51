#pragma once

#include "engine/picture.h"

/// The blocks of a picture as a new file may hold them: the EXIF says upright, knows the picture's size and carries no
/// thumbnail of what the file looked like before; the XMP says upright too. A block that is damaged is left out, so
/// that it never keeps a picture from being saved. EXIF fits a JPEG segment wherever leaving out the maker's own notes
/// makes it fit.
Metadata preparedForWriting(const Picture &picture);

enum class ProfileColors { Grey, Rgb };

/// The picture's ICC profile when it is one for pixels of these colours, else nothing: the profile of a grey file means
/// nothing for RGB, nor the reverse.
QByteArray profileFor(const Picture &picture, ProfileColors colors);

/// Resolution of the image in dots a metre; empty when nobody has set one, which is when it is what a fresh image has.
QSize knownDotsPerMeter(const QImage &image);

/// Dots a metre as dots an inch: a whole number wherever rounding of one can have given them.
double dotsPerInch(int dotsPerMeter);

/// The most that a segment of a JPEG holds behind its length.
inline constexpr int jpegSegmentBytes = 65533;
