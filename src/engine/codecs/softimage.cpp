#include "engine/codecs/pic.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <algorithm>
#include <vector>

namespace {

// Layout: the published description of the Softimage picture format.
constexpr size_t headerBytes = 104;
constexpr size_t maximumPackets = 8;

enum Packing { Raw = 0, Runs = 1, MixedRuns = 2 };

/// Some channels of a row; a row is all packets one after another.
struct Packet
{
    int packing = Raw;
    std::vector<int> shifts; ///< of each stored byte in a QRgb
};

struct Header
{
    QSize size;
    std::vector<Packet> packets;
    bool hasAlpha = false;
    size_t pixels = 0; ///< where they begin
};

Result<Header> readHeader(const QByteArray &file)
{
    const ByteReader bytes(file);
    if (bytes.u32be(0) != 0x5380f634 || !bytes.is(88, "PICT"))
        return Failure{QStringLiteral("not a Softimage picture")};
    Header header;
    header.size = QSize(bytes.u16be(92), bytes.u16be(94));
    if (!limits::allows(header.size, 5))
        return Failure{tooLarge(header.size)};
    size_t at = headerBytes;
    bool isChained = true;
    while (isChained && header.packets.size() < maximumPackets && bytes.has(at, 4)) {
        isChained = bytes.u8(at) != 0;
        Packet packet;
        packet.packing = bytes.u8(at + 2);
        const quint8 channels = bytes.u8(at + 3);
        if (bytes.u8(at + 1) != 8 || packet.packing > MixedRuns)
            return Failure{QStringLiteral("a Softimage picture packed in an unknown way")};
        constexpr std::pair<int, int> places[] = {{0x80, 16}, {0x40, 8}, {0x20, 0}, {0x10, 24}};
        for (const auto &[bit, shift] : places) {
            if (channels & bit)
                packet.shifts.push_back(shift);
        }
        header.hasAlpha |= (channels & 0x10) != 0;
        if (!packet.shifts.empty())
            header.packets.push_back(std::move(packet));
        at += 4;
    }
    if (isChained || header.packets.empty())
        return Failure{QStringLiteral("a Softimage picture without channels")};
    header.pixels = at;
    return header;
}

/// Takes the packets of rows apart.
class RowReader
{
public:
    RowReader(const QByteArray &file, size_t at)
        : m_bytes(bytesOf(file))
        , m_at(at)
    {
    }
    /// False when the input ends before the row.
    bool read(const Packet &packet, std::span<QRgb> row);

private:
    bool literal(const Packet &packet, std::span<QRgb> to);
    bool run(const Packet &packet, std::span<QRgb> to);
    bool has(size_t count) const { return m_at + count <= m_bytes.size(); }
    /// The stored channels of the next pixel, and the mask of those that are not stored.
    QRgb next(const Packet &packet)
    {
        QRgb value = 0;
        for (const int shift : packet.shifts)
            value |= QRgb(m_bytes[m_at++]) << shift;
        return value;
    }
    static QRgb others(const Packet &packet)
    {
        QRgb mask = 0xffffffff;
        for (const int shift : packet.shifts)
            mask &= ~(0xffU << shift);
        return mask;
    }

    const Bytes m_bytes;
    size_t m_at;
};

bool RowReader::literal(const Packet &packet, std::span<QRgb> to)
{
    const QRgb kept = others(packet);
    for (QRgb &pixel : to) {
        if (!has(packet.shifts.size()))
            return false;
        pixel = (pixel & kept) | next(packet);
    }
    return true;
}

bool RowReader::run(const Packet &packet, std::span<QRgb> to)
{
    if (!has(packet.shifts.size()))
        return false;
    const QRgb kept = others(packet);
    const QRgb value = next(packet);
    for (QRgb &pixel : to)
        pixel = (pixel & kept) | value;
    return true;
}

bool RowReader::read(const Packet &packet, std::span<QRgb> row)
{
    if (packet.packing == Raw)
        return literal(packet, row);
    size_t x = 0;
    while (x < row.size()) {
        if (!has(1))
            return false;
        size_t count = m_bytes[m_at++];
        bool isLiteral = false;
        if (packet.packing == MixedRuns) {
            isLiteral = count < 128;
            if (isLiteral) {
                ++count;
            } else if (count > 128) {
                count -= 127;
            } else {
                if (!has(2))
                    return false;
                count = size_t(m_bytes[m_at] << 8 | m_bytes[m_at + 1]);
                m_at += 2;
            }
        }
        const std::span<QRgb> part = row.subspan(x, std::min(count, row.size() - x));
        if (!(isLiteral ? literal(packet, part) : run(packet, part)))
            return false;
        x += part.size();
    }
    return true;
}

ImageInfo infoOf(const Header &header)
{
    return {header.size, header.hasAlpha ? 32 : 24, 1, softimageCodec.name};
}

bool sniffSoftimage(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.u32be(0) == 0x5380f634 && bytes.is(88, "PICT");
}

Result<ImageInfo> probeSoftimage(const EncodedFile &file, int)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return infoOf(*header);
}

Result<Picture> decodeSoftimage(const EncodedFile &file, const DecodeHint &)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    Picture picture;
    picture.info = infoOf(*header);
    picture.pixels = allocateImage(header->size, header->hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (picture.isNull())
        return Failure{outOfMemory(header->size)};
    const size_t width = size_t(header->size.width());
    RowReader reader(file.bytes, header->pixels);
    int rows = 0;
    for (bool whole = true; rows < header->size.height(); ++rows) {
        const std::span<QRgb> row(reinterpret_cast<QRgb *>(picture.pixels.scanLine(rows)), width);
        std::fill(row.begin(), row.end(), header->hasAlpha ? 0U : 0xff000000U);
        for (const Packet &packet : header->packets)
            whole = whole && reader.read(packet, row);
        if (!whole)
            break;
    }
    if (rows == 0)
        return Failure{QStringLiteral("a Softimage picture without a whole row")};
    picture.partial = rows < header->size.height();
    blankRows(picture.pixels, rows);
    return picture;
}

}

const Codec softimageCodec{"Softimage", "pic", sniffSoftimage, probeSoftimage, decodeSoftimage};
