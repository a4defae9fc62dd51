#pragma once

#include "engine/codecs/bytes.h"

#include <QImage>
#include <QSize>

/// The rows of an uncompressed bitmap of 24 or 32 bits a pixel without masks, lowest first unless `topFirst`, from
/// `offset` on. Null when they are not all there or memory is short.
QImage readBmpRows(Bytes file, size_t offset, QSize size, int bits, bool topFirst);

/// The bits of a pixel that each channel takes; without alpha bits the rows are opaque.
struct ChannelMasks
{
    quint32 red = 0x7c00;
    quint32 green = 0x03e0;
    quint32 blue = 0x001f;
    quint32 alpha = 0;
};

/// The same for pixels of 16 and 32 bits that are taken apart by masks. Null also when the bits of a channel do not
/// stand together.
QImage readMaskedBmpRows(Bytes file, size_t offset, QSize size, int bits, bool topFirst, const ChannelMasks &masks);

/// Unpacks the runs of 24-bit colours that OS/2 writes, lowest row first, into an image of Format_RGB32; where they
/// skip it is black. False when they end before the picture does.
bool unpackBmpRuns24(Bytes file, size_t offset, QImage &image);
