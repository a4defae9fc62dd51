#pragma once

#include "engine/codecs/bytes.h"

#include <QColor>
#include <QPolygonF>
#include <QRectF>

#include <cmath>

/// One record of a metafile. Numbers are little-endian; what lies behind the record's end reads as 0.
class MetafileRecord
{
public:
    MetafileRecord(quint32 recordType, Bytes recordBytes)
        : type(recordType)
        , m_bytes(recordBytes)
        , m_reader(recordBytes)
    {
    }

    quint32 type;

    size_t size() const { return m_bytes.size(); }
    bool has(size_t at, size_t count) const { return m_reader.has(at, count); }
    int u8(size_t at) const { return m_reader.u8(at); }
    int u16(size_t at) const { return m_reader.u16le(at); }
    int i16(size_t at) const { return qint16(m_reader.u16le(at)); }
    quint32 u32(size_t at) const { return m_reader.u32le(at); }
    int i32(size_t at) const { return int(m_reader.u32le(at)); }
    /// 0 for what is no number.
    double f32(size_t at) const
    {
        const quint32 bits = u32(at);
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return std::isfinite(value) ? double(value) : 0;
    }
    /// Red in the lowest byte.
    QColor color(size_t at) const { return QColor(u8(at), u8(at + 1), u8(at + 2)); }
    QPointF point16(size_t at) const { return QPointF(i16(at), i16(at + 2)); }
    QPointF point32(size_t at) const { return QPointF(i32(at), i32(at + 4)); }
    /// Left, top, right, bottom.
    QRectF box32(size_t at) const { return QRectF(point32(at), point32(at + 8)); }
    /// The part from `at` on, at most `count` bytes; empty when it does not start within the record.
    Bytes part(size_t at, size_t count = SIZE_MAX) const
    {
        return at < m_bytes.size() ? m_bytes.subspan(at, std::min(count, m_bytes.size() - at)) : Bytes();
    }
    /// `count` bytes at `at`; empty when the record does not hold all of them.
    Bytes whole(size_t at, size_t count) const { return has(at, count) ? m_bytes.subspan(at, count) : Bytes(); }

private:
    Bytes m_bytes;
    ByteReader m_reader;
};
