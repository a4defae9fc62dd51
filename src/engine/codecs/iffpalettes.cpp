#include "engine/codecs/iffpalettes.h"

#include <algorithm>

namespace {

constexpr int shamColors = 16;

/// Four bits a channel: 0RGB.
QRgb colorOf(int word)
{
    return qRgb((word >> 8 & 15) * 17, (word >> 4 & 15) * 17, (word & 15) * 17);
}

void setColor(std::span<QRgb> colors, size_t index, QRgb color)
{
    if (index < colors.size())
        colors[index] = (colors[index] & 0xff000000) | (color & 0x00ffffff);
}

/// The Huffman code of PCHG. The tree is a list of 16-bit numbers that is entered at its last one: a 1 bit takes the
/// number there (a byte, or when negative the way to go back in bytes), a 0 bit the one before (a byte when marked by
/// 0x100). After each byte the walk starts again.
QByteArray unpackHuffman(Bytes packed)
{
    const ByteReader bytes(packed);
    const size_t treeBytes = bytes.u32be(0);
    const size_t wanted = bytes.u32be(4);
    constexpr size_t header = 8;
    if (treeBytes < 2 || !bytes.has(header, treeBytes))
        return {};
    const size_t start = header + treeBytes;
    // A byte takes one bit at least.
    const size_t possible = std::min(wanted, (packed.size() - start) * 8);
    QByteArray result;
    result.reserve(qsizetype(possible));
    const std::ptrdiff_t last = std::ptrdiff_t(treeBytes / 2) - 1;
    std::ptrdiff_t node = last;
    for (size_t bit = 0; bit < (packed.size() - start) * 8 && size_t(result.size()) < possible; ++bit) {
        const bool one = packed[start + bit / 8] & 0x80U >> bit % 8;
        if (!one && --node < 0)
            break;
        const int value = qint16(bytes.u16be(header + size_t(node) * 2));
        if (one ? value >= 0 : value > 0 && value & 0x100) {
            result.append(char(value));
            node = last;
        } else if (one) {
            node += value / 2;
            if (node < 0)
                break;
        }
    }
    return result;
}

}

IffRowPalettes::IffRowPalettes(const IffPicture &picture)
    : m_palettes(picture.sham)
    , m_height(picture.size.height())
    , m_halfBright(picture.colors == IffPicture::Colors::HalfBright)
{
    readChanges(picture.pchg);
}

void IffRowPalettes::readChanges(Bytes chunk)
{
    constexpr size_t header = 20;
    enum Flags { SmallChanges = 1, BigChanges = 2 };
    const ByteReader bytes(chunk);
    const int compression = bytes.u16be(0);
    const int flags = bytes.u16be(2);
    if (!bytes.has(0, header) || compression > 1 || (flags & (SmallChanges | BigChanges)) == 0)
        return;
    m_bigChanges = (flags & SmallChanges) == 0;
    m_firstRow = qint16(bytes.u16be(4));
    m_rowCount = bytes.u16be(6);
    m_changes = chunk.subspan(header);
    if (compression == 1) {
        m_unpacked = unpackHuffman(m_changes);
        m_changes = bytesOf(m_unpacked);
    }
    m_at = (size_t(m_rowCount) + 31) / 32 * 4;
}

void IffRowPalettes::advanceTo(int row, std::span<QRgb> colors)
{
    replaceSixteen(row, colors);
    for (; m_nextRow < m_rowCount && m_firstRow + m_nextRow <= row; ++m_nextRow)
        applyRow(colors);
    for (size_t i = 0; m_halfBright && i < colors.size() / 2; ++i)
        setColor(colors, i + colors.size() / 2, (colors[i] >> 1) & 0x007f7f7f);
}

void IffRowPalettes::replaceSixteen(int row, std::span<QRgb> colors) const
{
    const qint64 count = qint64(m_palettes.size()) / (shamColors * 2);
    if (count == 0)
        return;
    const ByteReader bytes(m_palettes);
    const size_t first = size_t(qint64(row) * count / m_height) * shamColors * 2;
    for (size_t i = 0; i < shamColors; ++i)
        setColor(colors, i, colorOf(bytes.u16be(first + i * 2)));
}

void IffRowPalettes::applyRow(std::span<QRgb> colors)
{
    const bool marked = ByteReader(m_changes).u8(size_t(m_nextRow) / 8) & 0x80 >> m_nextRow % 8;
    if (!marked || m_at >= m_changes.size())
        return;
    if (m_bigChanges)
        applyBigChanges(colors);
    else
        applySmallChanges(colors);
}

// Two counts: of changes to colours 0 to 15, and to 16 to 31.
void IffRowPalettes::applySmallChanges(std::span<QRgb> colors)
{
    const ByteReader bytes(m_changes);
    const size_t low = bytes.u8(m_at);
    const size_t all = low + bytes.u8(m_at + 1);
    m_at += 2;
    for (size_t i = 0; i < all && bytes.has(m_at, 2); ++i, m_at += 2) {
        const int word = bytes.u16be(m_at);
        setColor(colors, size_t(word >> 12) + (i < low ? 0 : 16), colorOf(word));
    }
}

// The channels stand in the order alpha, red, blue, green.
void IffRowPalettes::applyBigChanges(std::span<QRgb> colors)
{
    const ByteReader bytes(m_changes);
    const size_t count = bytes.u16be(m_at);
    m_at += 2;
    for (size_t i = 0; i < count && bytes.has(m_at, 6); ++i, m_at += 6)
        setColor(colors, bytes.u16be(m_at), qRgb(bytes.u8(m_at + 3), bytes.u8(m_at + 5), bytes.u8(m_at + 4)));
}
