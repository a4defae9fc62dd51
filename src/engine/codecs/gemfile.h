#pragma once

#include "engine/codecs/bytes.h"

#include <QPointF>
#include <QSize>
#include <QTransform>

#include <optional>
#include <vector>

/// What the header of a GEM metafile says.
struct GemHeader
{
    size_t bytes = 0; ///< length of the header
    QSize size; ///< of the picture in pixels
    QTransform toPixels; ///< from the drawing's coordinates
};
std::optional<GemHeader> gemHeader(const ByteReader &file);

/// One recorded call.
struct GemRecord
{
    int opcode = 0;
    int subOpcode = 0;
    std::vector<QPointF> points; ///< in the drawing's coordinates
    std::vector<int> integers;
};

/// The record at `at`, which moves behind it; none at the end mark or the end of the file.
std::optional<GemRecord> nextGemRecord(const ByteReader &file, size_t &at);
