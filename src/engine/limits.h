#pragma once

#include <QSize>

/// Bounds that hold before any memory is taken for a file's claims.
namespace limits {

inline constexpr int maximumSide = 65535; ///< pixels
inline constexpr qint64 maximumPixels = 512LL * 1024 * 1024; ///< of one picture on any machine
inline constexpr qint64 maximumFileBytes = 2040LL * 1024 * 1024; ///< of one picture file held in memory
inline constexpr int maximumMetadataBytes = 16 * 1024 * 1024; ///< each of ICC, EXIF, XMP, comments
inline constexpr int maximumJpegScans = 500;
inline constexpr int maximumPages = 4096;

/// Bytes that one decode may use: 0.4 of the memory that is free at the first call, from 512 MiB to 8 GiB.
qint64 decodeBudget();
/// Another budget from now on; 0 goes back to the machine's own.
void setDecodeBudget(qint64 bytes);

/// Whether a picture of `size` may be decoded by a decoder that needs `bytesPerPixel` in all (4 libjpeg, 8 Qt, 16 the
/// long-tail library).
bool allows(QSize size, int bytesPerPixel = 4);

/// Seconds of processor time that reading a file of that size may take: 5 and one more a megabyte, at least 10, at
/// most 120.
int decodeSeconds(qint64 fileBytes);

/// Bytes that decoded neighbours may hold: a sixteenth of the machine's memory, at most 256 MiB.
qint64 cacheBudget();

}
