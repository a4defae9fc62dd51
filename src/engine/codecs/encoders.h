#pragma once

#include "engine/codec.h"

/// The writers of all output formats, in the order of their numbers.
std::span<const Encoder> encoders();

// Each writes as encode() in engine/encode.h promises. Layouts: the formats' public descriptions.

/// 1, 4, 8, 24 or 32 bits, never packed.
Result<QByteArray> encodeBmp(const Picture &picture, const EncodeOptions &options);
/// One PCX picture in a DCX file.
Result<QByteArray> encodeDcx(const Picture &picture, const EncodeOptions &options);
/// From this JPEG quality on colours are kept at full resolution, unless the save is to be fast.
inline constexpr int fullColorsFrom = 90;
Result<QByteArray> encodeJpeg(const Picture &picture, const EncodeOptions &options);
/// 8 or 16 bits a channel; palettes become grey or RGB, which every reader knows.
Result<QByteArray> encodeJpeg2000(const Picture &picture, const EncodeOptions &options);
/// The three Portable Map formats in their binary forms with 8 bits a channel, which every reader knows.
Result<QByteArray> encodePbm(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodePgm(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodePpm(const Picture &picture, const EncodeOptions &options);
/// 1 bit, 16 or 256 colours, or 24 bits; packed.
Result<QByteArray> encodePcx(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodePng(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodePngInterlaced(const Picture &picture, const EncodeOptions &options);
/// 8 or 16 bits a channel; packed.
Result<QByteArray> encodeSgi(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodeTiff(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodeTiffJpeg(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodeWbmp(const Picture &picture, const EncodeOptions &options);
Result<QByteArray> encodeXbm(const Picture &picture, const EncodeOptions &options);
/// Up to 65,536 colours exactly; a picture of more is reduced to 256.
Result<QByteArray> encodeXpm(const Picture &picture, const EncodeOptions &options);
/// 1, 8 or 24 bits.
Result<QByteArray> encodeXwd(const Picture &picture, const EncodeOptions &options);
