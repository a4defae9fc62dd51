#pragma once

#include "engine/codecs/bytes.h"

#include <QImage>
#include <QSize>

/// The rows of an uncompressed bitmap of 24 or 32 bits a pixel without masks, lowest first unless `topFirst`, from
/// `offset` on. Null when they are not all there or memory is short.
QImage readBmpRows(Bytes file, size_t offset, QSize size, int bits, bool topFirst);
