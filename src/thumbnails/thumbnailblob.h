#pragma once

#include "engine/encode.h"

#include <QByteArray>

#include <optional>

/// The format of a stored thumbnail by the compression level of the preferences: 0 without compression, 1 standard,
/// 2 high. None for any other number: then no picture is stored.
std::optional<TypeCode> thumbnailFormat(int level);

/// What thumbnails are written with, so that they look alike at both levels.
inline constexpr int thumbnailJpegQuality = 88;
inline constexpr double thumbnailJp2Quality = 0.075;

/// A picture file as it lies in the database: four letters and a checksum (CRC-32 of zlib, least byte first) in front,
/// because one changed bit in a blob is nothing that a database would notice.
QByteArray sealedBlob(const QByteArray &picture);

/// The picture file of a blob; one without those letters is a picture file itself. Empty when it is damaged.
QByteArray unsealedBlob(const QByteArray &blob);
