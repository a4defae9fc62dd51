#pragma once

#include "engine/codec.h"

/// Multi-bitmap files of Psion and Symbian devices: the file store and the ROM store, 1 to 32 bits, all run-length
/// codes. Each bitmap of a file is a page. Layout: the published source of the system's own bitmap converter.
extern const Codec mbmCodec;

/// One bitmap in a file store: 1, 2, 4 or 8 bits of grey where the picture is black and white or has a palette of such
/// greys, else 24 bits.
Result<QByteArray> encodeMbm(const Picture &picture, const EncodeOptions &options);

/// The same run-length coded; plain where that would be longer.
Result<QByteArray> encodeMbmCompressed(const Picture &picture, const EncodeOptions &options);
