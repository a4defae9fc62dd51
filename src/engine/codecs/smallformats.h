#pragma once

#include "engine/codec.h"

/// Small formats of single programs and devices, done by hand.

extern const Codec mspCodec; ///< Microsoft Paint, both versions: black and white
extern const Codec cutCodec; ///< Dr. Halo; colours when the file's companion is its palette, else greys
extern const Codec pnmCodec; ///< portable bitmaps: PBM, PGM, PPM as text and as bytes, PAM
extern const Codec pmpCodec; ///< the first Sony digital camera: a JPEG behind a header

/// The comment and the date (as EXIF) that the header of a PMP holds.
Metadata readPmpMetadata(const QByteArray &file);
