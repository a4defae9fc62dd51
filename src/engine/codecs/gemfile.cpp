#include "engine/codecs/gemfile.h"

#include "engine/rounding.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int endMark = -1;
constexpr double dotsPerTenthMillimeter = 96 / 254.0;
constexpr double fallbackSide = 640; ///< of a drawing that does not tell its page
constexpr double longestSide = 4096;

int word(const ByteReader &file, size_t index)
{
    return qint16(file.u16le(index * 2));
}

QRectF rectangle(const ByteReader &file, size_t first)
{
    const QPointF one(word(file, first), word(file, first + 1));
    const QPointF other(word(file, first + 2), word(file, first + 3));
    return QRectF(one, other).normalized();
}

}

std::optional<GemHeader> gemHeader(const ByteReader &file)
{
    constexpr size_t wordsThatCount = 14;
    const size_t words = file.u16le(2);
    if (word(file, 0) != endMark || words < 10 || words > 256 || !file.has(0, words * 2) || file.u16le(4) > 1000)
        return {};
    GemHeader header;
    header.bytes = words * 2;

    QRectF coordinates = words >= wordsThatCount ? rectangle(file, 10) : QRectF();
    bool upwards = words >= wordsThatCount && word(file, 13) > word(file, 11);
    if (coordinates.isEmpty()) {
        coordinates = QRectF(0, 0, 32767, 32767);
        upwards = file.u16le(6) != 2;
    }
    QRectF picture = rectangle(file, 4);
    if (picture.isEmpty())
        picture = coordinates;

    const double pageWidth = file.u16le(16);
    const double pageHeight = file.u16le(18);
    QSizeF scale(fallbackSide / picture.width(), fallbackSide / picture.width());
    if (pageWidth > 0 && pageHeight > 0)
        scale = {pageWidth * dotsPerTenthMillimeter / coordinates.width(),
            pageHeight * dotsPerTenthMillimeter / coordinates.height()};
    QSizeF size(picture.width() * scale.width(), picture.height() * scale.height());
    if (const double longest = std::max(size.width(), size.height()); longest > longestSide) {
        scale *= longestSide / longest;
        size *= longestSide / longest;
    }
    // A stroke that lies on the edge keeps its whole width.
    constexpr int margin = 1;
    header.size = QSize(std::max(1, int(std::ceil(size.width()))) + 2 * margin,
        std::max(1, int(std::ceil(size.height()))) + 2 * margin);
    header.toPixels.translate(margin, margin);
    header.toPixels.scale(scale.width(), upwards ? -scale.height() : scale.height());
    header.toPixels.translate(-picture.left(), upwards ? -picture.bottom() : -picture.top());
    return header;
}

std::optional<GemRecord> nextGemRecord(const ByteReader &file, size_t &at)
{
    constexpr size_t headBytes = 8;
    if (!file.has(at, headBytes) || qint16(file.u16le(at)) == endMark)
        return {};
    const size_t points = file.u16le(at + 2);
    const size_t integers = file.u16le(at + 4);
    const size_t body = at + headBytes;
    if (!file.has(body, points * 4 + integers * 2))
        return {};
    GemRecord record;
    record.opcode = qint16(file.u16le(at));
    record.subOpcode = qint16(file.u16le(at + 6));
    record.points.reserve(points);
    for (size_t i = 0; i < points; ++i)
        record.points.emplace_back(word(file, body / 2 + i * 2), word(file, body / 2 + i * 2 + 1));
    record.integers.reserve(integers);
    for (size_t i = 0; i < integers; ++i)
        record.integers.push_back(word(file, body / 2 + points * 2 + i));
    at = body + points * 4 + integers * 2;
    return record;
}
