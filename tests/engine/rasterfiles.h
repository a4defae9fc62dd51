#pragma once

#include "engine/enginefiles.h"

#include <utility>

/// Files of the formats that are read by hand, put together here byte by byte.

QByteArray be16(int value);
QByteArray be32(qsizetype value);
QByteArray le16(int value);
QByteArray le32(qsizetype value);

using Chunk = std::pair<const char *, QByteArray>;
/// An IFF file of this kind, its length filled in.
QByteArray iffOf(const char *kind, const QList<Chunk> &chunks);
/// The header chunk of an IFF picture.
Chunk iffHeader(QSize size, int planes, int compression = 0, int masking = 0, int transparent = 0);
/// A colour map of 2^planes entries that all differ.
Chunk iffColors(int planes);
/// Rows of pixel values as bit planes: for each row its planes, each filled up to 16 pixels.
QByteArray planarRows(const QList<QByteArray> &rows, int planes);
/// The chunk of row changes with a Huffman code for `data` (PCHG); `header` are its first 20 bytes.
QByteArray huffmanChanges(const QByteArray &header, const QByteArray &data);

/// A GEM bit image: `extension` stands between the plain header and the packed rows.
QByteArray gemImageOf(QSize size, int planes, const QByteArray &extension, const QByteArray &rows, int pattern = 2);

/// A Dr. Halo picture whose rows are runs, and a palette file for it of `colors` entries up to 63.
QByteArray cutOf(QSize size);
QByteArray cutPalette(int colors);

/// A camera file: header with this turn (0 to 3), comment and the date 1998-09-01 20:19:57, then the JPEG.
QByteArray pmpOf(const QByteArray &jpeg, int turn, const QByteArray &comment = {});

/// A bitmap of 4 x 3 pixels with a header of `headerBytes`, two rows of which the first colours are 0 1 2 3.
QByteArray bitmapOf(int headerBytes, int bits, bool withFileHeader, bool topDown = false);

/// One small file of each kind.
QList<SmallFile> rasterFiles();
