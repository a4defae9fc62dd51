#include "engine/codecs/pictfile.h"

#include "engine/limits.h"

#include <algorithm>
#include <optional>

namespace {

constexpr size_t maximumBitmaps = 4096;

std::optional<size_t> pictureAt(const ByteReader &bytes)
{
    for (const size_t at : {size_t(512), size_t(0)}) {
        if (bytes.is(at + 10, "\0\x11\x02\xff") || (at > 0 && bytes.is(at + 10, "\x11\x01")))
            return at;
    }
    return {};
}

class Walker
{
public:
    Walker(Bytes bytes, size_t at)
        : m_all(bytes)
        , m_bytes(bytes)
        , m_at(at + 10)
        , m_isVersion2(m_bytes.u8(m_at) == 0)
    {
        m_file.frame = rectangleAt(at + 2);
    }
    PictFile walk();

private:
    QRect rectangleAt(size_t at) const;
    bool operation(int code);
    bool skip(size_t count);
    bool skipCounted() { return skip(std::max<size_t>(2, m_bytes.u16be(m_at))); }
    size_t fixedLength(int code) const;
    bool drawing(int code);
    bool readPixelMap(PictBits &bits, bool isDirect);
    void readPalette(PictBits &bits);
    bool readRows(PictBits &bits);
    bool pattern();
    bool quickTime();

    const Bytes m_all;
    const ByteReader m_bytes;
    size_t m_at;
    const bool m_isVersion2;
    PictFile m_file;
};

QRect Walker::rectangleAt(size_t at) const
{
    const auto number = [&](size_t offset) { return int(qint16(m_bytes.u16be(at + offset))); };
    return QRect(QPoint(number(2), number(0)), QPoint(number(6) - 1, number(4) - 1));
}

bool Walker::skip(size_t count)
{
    if (!m_bytes.has(m_at, count))
        return false;
    m_at += count;
    return true;
}

/// Lengths of the operations that have one of their own; the rest carry theirs.
size_t Walker::fixedLength(int code) const
{
    constexpr quint8 state[] = {
        0, 0, 8, 2, 1, 2, 4, 4, 2, 8, 8, 4, 4, 2, 4, 4, 8, 1, 0, 0, 0, 2, 2, 0, 0, 0, 6, 6, 0, 6, 0, 6, 8, 4, 6, 2};
    if (code < int(std::size(state)))
        return code == 0x11 && m_isVersion2 ? 2 : state[code];
    if (code < 0x60) // rectangles with and without round corners, ovals; the second half repeats the last one
        return code % 16 < 8 ? 8 : 0;
    if (code < 0x70) // arcs
        return code % 16 < 8 ? 12 : 4;
    if (code == 0xa0)
        return 2;
    if (code >= 0x100 && code < 0x8000)
        return code == 0xc00 ? 24 : size_t(code >> 8) * 2;
    return 0;
}

bool Walker::operation(int code)
{
    if (code == 0x01 || (code >= 0x70 && code < 0x90 && code % 16 < 8))
        return skipCounted(); // a region or polygon
    if (code >= 0x12 && code <= 0x14)
        return pattern();
    if (code == 0x28)
        return skip(5 + size_t(m_bytes.u8(m_at + 4)));
    if (code == 0x29 || code == 0x2a)
        return skip(2 + size_t(m_bytes.u8(m_at + 1)));
    if (code == 0x2b)
        return skip(3 + size_t(m_bytes.u8(m_at + 2)));
    if (code == 0x90 || code == 0x91 || (code >= 0x98 && code <= 0x9b))
        return drawing(code);
    if (code == 0xa1)
        return skip(4 + size_t(m_bytes.u16be(m_at + 2)));
    if ((code >= 0x24 && code < 0x30) || (code >= 0x92 && code < 0xb0 && code != 0xa0))
        return skip(2 + size_t(m_bytes.u16be(m_at)));
    if (code == 0x8200)
        return quickTime();
    if ((code >= 0xd0 && code < 0xff) || code >= 0x8100)
        return skip(4 + size_t(m_bytes.u32be(m_at)));
    return skip(fixedLength(code));
}

/// The record of a bitmap or pixel map, up to where the palette begins.
bool Walker::readPixelMap(PictBits &bits, bool isDirect)
{
    const size_t at = m_at + (isDirect ? 4 : 0);
    const int rowBytes = m_bytes.u16be(at);
    const bool isPixelMap = isDirect || (rowBytes & 0x8000) != 0;
    const QRect bounds = rectangleAt(at + 2);
    bits.size = bounds.size();
    bits.rowBytes = size_t(rowBytes & 0x7fff);
    bits.source = bounds;
    if (isPixelMap) {
        bits.depth = m_bytes.u16be(at + 28);
        bits.components = m_bytes.u16be(at + 30);
        const int packing = m_bytes.u16be(at + 12);
        bits.packing = packing == 1 ? PictBits::Raw
            : bits.depth == 16      ? PictBits::PackedWords
            : bits.depth < 16       ? PictBits::PackedBytes
            : packing == 2          ? PictBits::PixelsOfThree
                                    : PictBits::PackedPlanes;
    } else {
        bits.packing = PictBits::PackedBytes;
        bits.palette = {qRgb(255, 255, 255), qRgb(0, 0, 0)};
    }
    if (bits.rowBytes < 8 && bits.packing != PictBits::PixelsOfThree)
        bits.packing = PictBits::Raw;
    const bool isKnown = (isDirect ? bits.depth == 16 || bits.depth == 32
                                   : bits.depth == 1 || bits.depth == 2 || bits.depth == 4 || bits.depth == 8);
    if (!isKnown || !limits::allows(bits.size, 8)
        || bits.rowBytes < (size_t(bits.size.width()) * size_t(bits.depth) + 7) / 8
        || (bits.packing == PictBits::PackedPlanes && bits.components != 3 && bits.components != 4))
        return false;
    m_at = at;
    if (!skip(isPixelMap ? 46 : 10))
        return false;
    if (isPixelMap && !isDirect)
        readPalette(bits);
    return true;
}

void Walker::readPalette(PictBits &bits)
{
    const bool byPosition = (m_bytes.u16be(m_at + 4) & 0x8000) != 0;
    const size_t count = size_t(m_bytes.u16be(m_at + 6)) + 1;
    bits.palette.fill(qRgb(0, 0, 0), 1 << bits.depth);
    for (size_t i = 0; i < count && m_bytes.has(m_at + 8 + 8 * i, 8); ++i) {
        const size_t entry = m_at + 8 + 8 * i;
        const qsizetype index = byPosition ? qsizetype(i) : m_bytes.u16be(entry);
        if (index < bits.palette.size())
            bits.palette[index] = qRgb(m_bytes.u8(entry + 2), m_bytes.u8(entry + 4), m_bytes.u8(entry + 6));
    }
    m_at += 8 + 8 * count;
}

/// Finds the end of the rows.
bool Walker::readRows(PictBits &bits)
{
    const size_t start = std::min(m_at, m_all.size());
    bits.data = m_all.subspan(start);
    if (bits.packing == PictBits::Raw || bits.packing == PictBits::PixelsOfThree) {
        const size_t row = bits.packing == PictBits::Raw ? bits.rowBytes : size_t(bits.size.width()) * 3;
        return skip(row * size_t(bits.size.height()));
    }
    for (int y = 0; y < bits.size.height(); ++y) {
        const bool isLong = bits.rowBytes > 250;
        if (!skip(isLong ? 2 + size_t(m_bytes.u16be(m_at)) : 1 + size_t(m_bytes.u8(m_at))))
            return false;
    }
    bits.data = bits.data.first(m_at - start);
    return true;
}

bool Walker::drawing(int code)
{
    PictBits bits;
    const bool isDirect = code == 0x9a || code == 0x9b;
    if (!readPixelMap(bits, isDirect))
        return false;
    const QPoint corner = bits.source.topLeft();
    bits.source = rectangleAt(m_at).translated(-corner).intersected(QRect(QPoint(), bits.size));
    bits.target = rectangleAt(m_at + 8);
    if (!skip(18) || (code % 2 == 1 && !skipCounted()))
        return false;
    if (code == 0x90 || code == 0x91)
        bits.packing = PictBits::Raw;
    const bool isWhole = readRows(bits);
    if (!bits.source.isEmpty() && !bits.target.isEmpty() && m_file.bitmaps.size() < maximumBitmaps)
        m_file.bitmaps.push_back(std::move(bits));
    return isWhole;
}

bool Walker::pattern()
{
    constexpr int pixelMap = 1, color = 2;
    const int kind = m_bytes.u16be(m_at);
    if (!skip(10))
        return false;
    if (kind == color)
        return skip(6);
    PictBits bits;
    return kind == pixelMap && readPixelMap(bits, false) && readRows(bits);
}

bool Walker::quickTime()
{
    const size_t start = m_at;
    if (!skip(4) || !skip(m_bytes.u32be(start)))
        m_at = m_all.size();
    const ByteReader bytes(m_all.first(m_at));
    const size_t matteBytes = bytes.u32be(start + 4 + 38);
    const size_t maskBytes = bytes.u32be(start + 4 + 64);
    const size_t description = start + 4 + 68 + matteBytes + maskBytes;
    const size_t data = description + bytes.u32be(description);
    PictBits bits;
    bits.packing = PictBits::QuickTime;
    bits.codec = QByteArray(1, char(bytes.u8(description + 4))) + char(bytes.u8(description + 5))
        + char(bytes.u8(description + 6)) + char(bytes.u8(description + 7));
    bits.size = QSize(bytes.u16be(description + 32), bytes.u16be(description + 34));
    bits.depth = bytes.u16be(description + 82);
    if (!bytes.has(data, 1) || !limits::allows(bits.size, 8) || m_file.bitmaps.size() >= maximumBitmaps)
        return false;
    bits.data = m_all.first(m_at).subspan(data);
    bits.source = QRect(QPoint(), bits.size);
    bits.target = m_file.frame;
    m_file.bitmaps.push_back(std::move(bits));
    return true;
}

PictFile Walker::walk()
{
    constexpr int end = 0xff;
    while (true) {
        if (m_isVersion2 && m_at % 2 == 1)
            ++m_at;
        const size_t codeBytes = m_isVersion2 ? 2 : 1;
        const int code = m_isVersion2 ? m_bytes.u16be(m_at) : m_bytes.u8(m_at);
        if (!skip(codeBytes) || (code != end && !operation(code))) {
            m_file.isCut = true;
            break;
        }
        if (code == end)
            break;
    }
    return std::move(m_file);
}

}

bool isPict(Bytes head)
{
    return pictureAt(ByteReader(head)).has_value();
}

Result<PictFile> readPictFile(Bytes bytes)
{
    const std::optional<size_t> at = pictureAt(ByteReader(bytes));
    if (!at)
        return Failure{QStringLiteral("not a QuickDraw picture")};
    PictFile file = Walker(bytes, *at).walk();
    if (file.bitmaps.empty())
        return Failure{QStringLiteral("a QuickDraw picture without a bitmap")};
    return file;
}
