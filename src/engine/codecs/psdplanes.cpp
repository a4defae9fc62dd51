#include "engine/codecs/psdplanes.h"

#include "engine/codecs/packbits.h"
#include "engine/limits.h"

#include <algorithm>

#include <zlib.h>

namespace psd {

Result<Planes> Planes::open(Bytes file, const Layout &layout)
{
    Planes planes;
    planes.m_file = file;
    planes.m_depth = layout.depth;
    if (planes.openLayer(layout))
        return planes;
    if (const Result<void> opened = planes.openFlattened(layout); !opened)
        return opened.failure();
    return planes;
}

/// The places of one channel's packed rows; `firstRow` counts the rows whose lengths come before.
std::vector<quint64> Planes::packedRows(size_t countsAt, size_t rowsAt, size_t firstRow, const Layout &layout) const
{
    const ByteReader bytes(m_file);
    const size_t height = size_t(layout.size.height());
    const auto count = [&](size_t row) -> quint64 {
        return layout.isLarge ? bytes.u32be(countsAt + 4 * row) : bytes.u16be(countsAt + 2 * row);
    };
    quint64 at = rowsAt;
    for (size_t row = 0; row < firstRow; ++row)
        at += count(row);
    std::vector<quint64> places(height + 1);
    for (size_t row = 0; row < height; ++row) {
        places[row] = at;
        at += count(firstRow + row);
    }
    places[height] = at;
    return places;
}

/// As much as there is of `wanted` bytes, which must be within the budget.
Bytes Planes::inflated(Bytes packed, quint64 wanted)
{
    constexpr quint64 bestRatio = 1032; // that this compression reaches
    wanted = std::min(wanted, packed.size() * bestRatio);
    if (wanted > quint64(limits::decodeBudget()))
        return {};
    QByteArray out(qsizetype(wanted), Qt::Uninitialized);
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return {};
    stream.next_in = const_cast<uchar *>(packed.data());
    quint64 packedLeft = packed.size();
    quint64 filled = 0;
    constexpr quint64 step = 1 << 30; // the library counts in 32 bits
    int state = Z_OK;
    while (state == Z_OK && filled < wanted) {
        const uInt given = uInt(std::min(packedLeft, step));
        const uInt room = uInt(std::min(wanted - filled, step));
        stream.avail_in = given;
        stream.avail_out = room;
        stream.next_out = reinterpret_cast<uchar *>(out.data()) + filled;
        state = inflate(&stream, Z_NO_FLUSH);
        packedLeft -= given - stream.avail_in;
        filled += room - stream.avail_out;
        if (stream.avail_in == given && stream.avail_out == room)
            break;
    }
    inflateEnd(&stream);
    out.resize(qsizetype(filled));
    m_inflated.push_back(out);
    return bytesOf(m_inflated.back());
}

Result<void> Planes::openFlattened(const Layout &layout)
{
    const ByteReader bytes(m_file);
    const size_t start = layout.pixelsAt + 2;
    const size_t height = size_t(layout.size.height());
    const quint64 planeBytes = quint64(layout.rowBytes()) * height;
    const int compression = bytes.u16be(layout.pixelsAt);
    const size_t wanted = size_t(layout.usedChannels());
    if (compression > PredictedZip)
        return Failure{QStringLiteral("a Photoshop document with an unknown compression")};
    if (compression == PackBits) {
        const size_t rows = size_t(layout.channels) * height;
        const size_t rowsAt = start + rows * (layout.isLarge ? 4 : 2);
        if (rowsAt >= m_file.size())
            return Failure{QStringLiteral("a Photoshop document that ends before its first row")};
        for (size_t channel = 0; channel < wanted; ++channel)
            m_planes.push_back({{}, packedRows(start, rowsAt, channel * height, layout), false});
        return {};
    }
    Bytes plain = m_file.subspan(start);
    if (compression != Plain)
        plain = inflated(plain, planeBytes * wanted);
    if (plain.size() < layout.rowBytes())
        return Failure{QStringLiteral("a Photoshop document without a whole row")};
    for (size_t channel = 0; channel < wanted; ++channel) {
        const quint64 from = std::min<quint64>(planeBytes * channel, plain.size());
        const quint64 length = std::min<quint64>(planeBytes, plain.size() - from);
        m_planes.push_back({plain.subspan(size_t(from), size_t(length)), {}, compression == PredictedZip});
    }
    return {};
}

/// Every channel of a layer has a compression of its own. False when one of them cannot be had as a whole: then the
/// flattened picture is the better one.
bool Planes::openLayer(const Layout &layout)
{
    if (layout.layer.channels.isEmpty() || !layout.hasAlpha())
        return false;
    const ByteReader bytes(m_file);
    const quint64 planeBytes = quint64(layout.rowBytes()) * quint64(layout.size.height());
    std::vector<Plane> planes;
    for (const PlainLayer::Channel &channel : layout.layer.channels) {
        const int compression = bytes.u16be(channel.at);
        const Bytes data = m_file.subspan(channel.at + 2, channel.length - 2);
        if (compression == Plain && data.size() >= planeBytes) {
            planes.push_back({data, {}, false});
        } else if (compression == PackBits) {
            const size_t rowsAt = channel.at + 2 + size_t(layout.size.height()) * (layout.isLarge ? 4 : 2);
            planes.push_back({{}, packedRows(channel.at + 2, rowsAt, 0, layout), false});
            if (planes.back().packedRows.back() > channel.at + channel.length)
                return false;
        } else {
            return false;
        }
    }
    m_planes = std::move(planes);
    m_isFromLayer = true;
    return true;
}

/// Every sample was stored as the difference to the one before it; the bytes of 32-bit samples lie apart besides, the
/// highest ones of the whole row first.
void Planes::undoPrediction(std::span<uchar> row) const
{
    if (m_depth == 16) {
        for (size_t i = 2; i + 1 < row.size(); i += 2) {
            const uint sum = (uint(row[i - 2]) << 8 | row[i - 1]) + (uint(row[i]) << 8 | row[i + 1]);
            row[i] = uchar(sum >> 8);
            row[i + 1] = uchar(sum);
        }
        return;
    }
    for (size_t i = 1; i < row.size(); ++i)
        row[i] = uchar(row[i] + row[i - 1]);
    if (m_depth != 32)
        return;
    const std::vector<uchar> apart(row.begin(), row.end());
    const size_t samples = row.size() / 4;
    for (size_t i = 0; i < row.size(); ++i)
        row[i] = apart[i % 4 * samples + i / 4];
}

Planes::Extent Planes::read(int channel, int y, std::span<uchar> row) const
{
    const Plane &plane = m_planes[size_t(channel)];
    if (!plane.packedRows.empty()) {
        const quint64 begin = plane.packedRows[size_t(y)];
        const quint64 end = std::min<quint64>(plane.packedRows[size_t(y) + 1], m_file.size());
        if (begin >= end)
            return Extent::Nothing;
        size_t at = 0;
        const bool whole = unpackBits(m_file.subspan(size_t(begin), size_t(end - begin)), at, row);
        return whole ? Extent::Whole : Extent::Part;
    }
    const quint64 begin = std::min<quint64>(quint64(row.size()) * quint64(y), plane.plain.size());
    const size_t count = std::min(row.size(), size_t(plane.plain.size() - begin));
    std::copy_n(plane.plain.begin() + std::ptrdiff_t(begin), count, row.begin());
    if (count < row.size())
        return count > 0 ? Extent::Part : Extent::Nothing;
    if (plane.isPredicted)
        undoPrediction(row);
    return Extent::Whole;
}

}
