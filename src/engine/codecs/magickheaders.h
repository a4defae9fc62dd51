#pragma once

#include "engine/codecs/bytes.h"

#include <QSize>

#include <optional>

/// What the header of one of the long-tail formats tells. Layouts: the formats' public descriptions.
struct MagickHeader
{
    QSize size; ///< empty: only a full read tells
    int bits = 0; ///< nominal; 0: only a full read tells
    int pages = 1;
    QSize dotsPerInch = {}; ///< where the library does not tell what it read
};

/// One function a format: nothing when the bytes are surely not of it. `sizeIndex` counts for Photo CD alone.
std::optional<MagickHeader> artHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> dcxHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> hrzHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> macHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> pcdHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> pcxHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> utahHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> wbmpHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> wpgHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> xbmHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> xpmHeader(const ByteReader &bytes, int sizeIndex);
std::optional<MagickHeader> xwdHeader(const ByteReader &bytes, int sizeIndex);

/// Which of a Photo CD's sizes stands for a size index: -1 is the decoder's own choice, the base size.
int photoCdSize(int sizeIndex);
