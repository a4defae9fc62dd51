#pragma once

#include "engine/encode.h"

#include <QByteArray>

#include <optional>

/// The format of a stored thumbnail by the compression level of the preferences: 0 without compression, 1 standard,
/// 2 high. None for any other number: then no picture is stored.
std::optional<TypeCode> thumbnailFormat(int level);

/// What thumbnails are written with: they look alike at both levels, and the high one takes two thirds to three
/// quarters of the room. A JPEG 2000 of few pixels needs more for each, because its head has the same size.
inline constexpr int thumbnailJpegQuality = 88;
double thumbnailJp2Quality(int edge);

/// A picture file as it lies in the database: four letters and a checksum (CRC-32 of zlib, least byte first) in front,
/// because one changed bit in a blob is nothing that a database would notice.
QByteArray sealedBlob(const QByteArray &picture);

/// Whether the picture of a blob is small enough to be looked at. One that this program stored is; of another the
/// header is asked.
bool mayBeThumbnail(const QByteArray &blob);

/// The picture file of a blob; one without those letters is a picture file itself. Empty when it is damaged.
QByteArray unsealedBlob(const QByteArray &blob);
