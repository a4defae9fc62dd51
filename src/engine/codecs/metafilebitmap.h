#pragma once

#include "engine/codecs/bytes.h"

#include <QImage>

/// A device-independent bitmap inside a metafile: its header with the palette, and its pixels. Null when it is damaged
/// or claims more pixels than its bytes can hold. `keepAlpha`: the fourth byte of 32-bit pixels is their opacity, the
/// colours already multiplied by it.
QImage metafileBitmap(Bytes header, Bytes pixels, bool keepAlpha = false);

/// Header, palette and pixels one behind the other.
QImage packedMetafileBitmap(Bytes packed);

/// An old device-dependent bitmap of one plane: type, width, height, row bytes, planes, bits, then the rows; black and
/// white, 24 or 32 bits.
QImage deviceBitmap(Bytes bytes);

/// A compressed picture inside a metafile: PNG, JPEG, BMP or GIF.
QImage embeddedPicture(Bytes file);
