#include "engine/codecs/pic.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <algorithm>
#include <array>

namespace {

// Layout: the published description of the PC Paint/Pictor page format.
struct Header
{
    QSize size;
    int bits = 0; ///< of a pixel in one plane
    int planes = 0;
    QList<QRgb> palette;
    size_t blocks = 0; ///< where their count stands

    int depth() const { return bits * planes; }
    qsizetype stride() const { return (qsizetype(size.width()) * bits + 7) / 8; }
};

enum PaletteKind { NoPalette = 0, CgaPalette = 1, PcJrPalette = 2, EgaPalette = 3, VgaPalette = 4 };

/// The sixteen colours of the first colour adapter, of which the sixth is brown and not dark yellow.
constexpr std::array<QRgb, 16> cgaColors = {0xff000000, 0xff0000aa, 0xff00aa00, 0xff00aaaa, 0xffaa0000, 0xffaa00aa,
    0xffaa5500, 0xffaaaaaa, 0xff555555, 0xff5555ff, 0xff55ff55, 0xff55ffff, 0xffff5555, 0xffff55ff, 0xffffff55,
    0xffffffff};

/// The fixed sets of four colours in the adapter's picture mode, each with black or the background first.
constexpr std::array<std::array<int, 4>, 6> cgaSets = {
    {{0, 3, 5, 7}, {0, 2, 4, 6}, {0, 3, 4, 7}, {0, 11, 13, 15}, {0, 10, 12, 14}, {0, 11, 12, 15}}};

QList<QRgb> cgaSet(int number)
{
    QList<QRgb> colors;
    for (const int index : cgaSets[size_t(std::clamp(number, 0, int(cgaSets.size()) - 1))])
        colors.append(cgaColors[size_t(index)]);
    return colors;
}

/// Two bits of each primary: the low ones count one third, the high ones two.
QRgb egaColor(int value)
{
    const auto primary = [&](int low, int high) { return ((value >> low & 1) + 2 * (value >> high & 1)) * 85; };
    return qRgb(primary(5, 2), primary(4, 1), primary(3, 0));
}

QList<QRgb> ownPalette(const ByteReader &bytes, size_t at, int kind, int length)
{
    QList<QRgb> colors;
    switch (kind) {
    case CgaPalette:
        if (length > 0)
            colors = cgaSet(bytes.u8(at));
        break;
    case PcJrPalette:
        for (int i = 0; i < std::min(length, 16); ++i)
            colors.append(cgaColors[bytes.u8(at + size_t(i)) & 15]);
        break;
    case EgaPalette:
        for (int i = 0; i < std::min(length, 16); ++i)
            colors.append(egaColor(bytes.u8(at + size_t(i))));
        break;
    case VgaPalette:
        for (size_t i = 0; i < size_t(std::min(length / 3, 256)); ++i) {
            // Six bits, whose highest ones fill the room below.
            const auto wide = [&](size_t part) { return (bytes.u8(at + 3 * i + part) & 63) * 255 / 63; };
            colors.append(qRgb(wide(0), wide(1), wide(2)));
        }
        break;
    default:
        break;
    }
    return colors;
}

/// What stands for a palette that the file does not have.
QList<QRgb> standardPalette(int depth)
{
    if (depth == 1)
        return {qRgb(0, 0, 0), qRgb(255, 255, 255)};
    if (depth == 2)
        return cgaSet(0);
    if (depth <= 4)
        return {cgaColors.begin(), cgaColors.end()};
    QList<QRgb> greys;
    for (int i = 0; i < 1 << depth; ++i)
        greys.append(qRgb(i * 255 / ((1 << depth) - 1), i * 255 / ((1 << depth) - 1), i * 255 / ((1 << depth) - 1)));
    return greys;
}

Result<Header> readHeader(const QByteArray &file)
{
    const ByteReader bytes(file);
    if (bytes.u16le(0) != 0x1234)
        return Failure{QStringLiteral("not a Pictor picture")};
    Header header;
    header.size = QSize(bytes.u16le(2), bytes.u16le(4));
    header.bits = bytes.u8(10) & 15;
    header.planes = (bytes.u8(10) >> 4) + 1;
    const bool isIndexed =
        header.depth() <= 8 && (header.bits == 1 || header.bits == 2 || header.bits == 4 || header.bits == 8);
    if (!isIndexed && !(header.bits == 8 && header.planes == 3))
        return Failure{QStringLiteral("a Pictor picture of %1 planes of %2 bits").arg(header.planes).arg(header.bits)};
    if (!limits::allows(header.size, 8))
        return Failure{tooLarge(header.size)};
    header.blocks = 11;
    // The oldest files end their header here.
    if (bytes.u8(11) == 0xff) {
        const int length = bytes.u16le(15);
        header.palette = ownPalette(bytes, 17, bytes.u16le(13), length);
        header.blocks = 17 + size_t(length);
    }
    if (isIndexed && header.palette.isEmpty())
        header.palette = standardPalette(header.depth());
    return header;
}

/// Unpacks the blocks into `out`; the answer is how many bytes came.
size_t unpackBlocks(const ByteReader &bytes, size_t at, int blocks, std::span<uchar> out)
{
    constexpr size_t blockHeader = 5;
    size_t filled = 0;
    for (; blocks > 0 && filled < out.size() && bytes.has(at, blockHeader); --blocks) {
        const size_t end = std::min(at + std::max(size_t(bytes.u16le(at)), blockHeader), bytes.size());
        const size_t blockEnd = std::min(filled + bytes.u16le(at + 2), out.size());
        const quint8 marker = bytes.u8(at + 4);
        at += blockHeader;
        while (at < end && filled < blockEnd) {
            size_t count = 1;
            quint8 value = bytes.u8(at++);
            if (value == marker) {
                count = bytes.u8(at++);
                if (count == 0) {
                    count = bytes.u16le(at);
                    at += 2;
                }
                if (at >= end)
                    break;
                value = bytes.u8(at++);
            }
            count = std::min(count, blockEnd - filled);
            std::fill_n(out.begin() + std::ptrdiff_t(filled), count, value);
            filled += count;
        }
        at = end;
    }
    return filled;
}

struct Memory
{
    QByteArray bytes;
    qsizetype filled = 0;
};

/// The adapter's memory: plane after plane, in each the lowest row first.
Memory unpack(const QByteArray &file, const Header &header)
{
    const ByteReader bytes(file);
    Memory memory;
    memory.bytes = QByteArray(header.stride() * header.size.height() * header.planes, '\0');
    const std::span<uchar> out(reinterpret_cast<uchar *>(memory.bytes.data()), size_t(memory.bytes.size()));
    const int blocks = bytes.u16le(header.blocks);
    const size_t at = header.blocks + 2;
    if (blocks > 0) {
        memory.filled = qsizetype(unpackBlocks(bytes, at, blocks, out));
    } else if (at < bytes.size()) {
        memory.filled = std::min(file.size() - qsizetype(at), memory.bytes.size());
        std::copy_n(file.constData() + at, memory.filled, memory.bytes.data());
    }
    return memory;
}

/// Adds one plane's row to a row of indices.
void addPlane(const uchar *from, int bits, int plane, int width, uchar *row)
{
    const int perByte = 8 / bits;
    const int mask = (1 << bits) - 1;
    for (int x = 0; x < width; ++x)
        row[x] = uchar(row[x] | (from[x / perByte] >> (8 - bits - x % perByte * bits) & mask) << (plane * bits));
}

void readRow(const Header &header, const Memory &memory, int y, uchar *row)
{
    const int width = header.size.width();
    const qsizetype fromBottom = header.size.height() - 1 - y;
    const auto plane = [&](int number) {
        return reinterpret_cast<const uchar *>(memory.bytes.constData())
            + (number * qsizetype(header.size.height()) + fromBottom) * header.stride();
    };
    if (header.depth() == 1) {
        std::copy_n(plane(0), header.stride(), row);
    } else if (header.depth() == 24) {
        const uchar *const red = plane(0), *const green = plane(1), *const blue = plane(2);
        for (int x = 0; x < width; ++x)
            reinterpret_cast<QRgb *>(row)[x] = qRgb(red[x], green[x], blue[x]);
    } else {
        std::fill_n(row, width, uchar(0));
        for (int number = 0; number < header.planes; ++number)
            addPlane(plane(number), header.bits, number, width, row);
    }
}

ImageInfo infoOf(const Header &header)
{
    return {header.size, header.depth(), 1, pictorCodec.name};
}

bool sniffPictor(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.u16le(0) == 0x1234 && bytes.u8(11) == 0xff && bytes.u16le(2) > 0 && bytes.u16le(4) > 0;
}

Result<ImageInfo> probePictor(const EncodedFile &file, int)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return infoOf(*header);
}

Result<Picture> decodePictor(const EncodedFile &file, const DecodeHint &)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    const Memory memory = unpack(file.bytes, *header);
    if (memory.filled == 0)
        return Failure{QStringLiteral("a Pictor picture without pixels")};
    Picture picture;
    picture.info = infoOf(*header);
    picture.partial = memory.filled < memory.bytes.size();
    picture.pixels = allocateImage(header->size,
        header->depth() == 1        ? QImage::Format_Mono
            : header->depth() == 24 ? QImage::Format_RGB32
                                    : QImage::Format_Indexed8);
    if (picture.isNull())
        return Failure{outOfMemory(header->size)};
    if (header->depth() <= 8) {
        QList<QRgb> table = header->palette;
        table.resize(1 << header->depth(), qRgb(0, 0, 0));
        picture.pixels.setColorTable(table);
    }
    for (int y = 0; y < header->size.height(); ++y)
        readRow(*header, memory, y, picture.pixels.scanLine(y));
    return picture;
}

}

const Codec pictorCodec{"Pictor", "pic", sniffPictor, probePictor, decodePictor};
