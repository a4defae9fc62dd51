#include "engine/codecs/gifframes.h"

#include "engine/codecs/lzw.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"
#include "engine/picture.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

enum class Disposal { Leave = 1, Clear = 2, Restore = 3 };

/// A frame as the file tells it, and where its codes start.
struct Frame
{
    QRect place;
    bool interlaced = false;
    QList<QRgb> table;
    int transparent = -1; ///< index
    Disposal disposal = Disposal::Leave;
    size_t codesAt = 0;
};

QList<QRgb> tableAt(const ByteReader &bytes, size_t at, quint8 flags)
{
    QList<QRgb> table(2 << (flags & 7));
    for (qsizetype i = 0; i < table.size(); ++i, at += 3)
        table[i] = qRgb(bytes.u8(at), bytes.u8(at + 1), bytes.u8(at + 2));
    return table;
}

/// Walks from frame to frame.
class Walker
{
public:
    explicit Walker(const QByteArray &file)
        : m_file(bytesOf(file))
        , m_bytes(m_file)
    {
        const quint8 flags = m_bytes.u8(10);
        if (flags & 0x80) {
            m_table = tableAt(m_bytes, m_at, flags);
            m_at += size_t(m_table.size()) * 3;
        }
    }

    /// False behind the last frame.
    bool next(Frame &frame)
    {
        frame = {};
        while (m_bytes.has(m_at, 1)) {
            const quint8 kind = m_bytes.u8(m_at);
            if (kind == 0x21) {
                if (m_bytes.u8(m_at + 1) == 0xf9)
                    readControl(frame);
                m_at = behindSubBlocks(m_at + 2);
            } else if (kind == 0x2c && m_bytes.has(m_at, 10)) {
                readDescriptor(frame);
                m_at = behindSubBlocks(frame.codesAt + 1);
                return true;
            } else {
                return false;
            }
        }
        return false;
    }

    /// The chain of sub-blocks that starts at `at`, as one piece.
    std::vector<uchar> joined(size_t at) const
    {
        std::vector<uchar> codes;
        codes.reserve(m_at > at ? m_at - at : 0);
        while (const size_t length = m_bytes.u8(at)) {
            const size_t given = std::min(length, m_bytes.size() - at - 1);
            const Bytes block = m_file.subspan(at + 1, given);
            codes.insert(codes.end(), block.begin(), block.end());
            at += 1 + given;
        }
        return codes;
    }

private:
    void readControl(Frame &frame)
    {
        const quint8 flags = m_bytes.u8(m_at + 3);
        const int disposal = flags >> 2 & 7;
        frame.disposal = disposal == 2 ? Disposal::Clear : disposal == 3 ? Disposal::Restore : Disposal::Leave;
        frame.transparent = flags & 1 ? m_bytes.u8(m_at + 6) : -1;
    }

    void readDescriptor(Frame &frame)
    {
        frame.place =
            QRect(m_bytes.u16le(m_at + 1), m_bytes.u16le(m_at + 3), m_bytes.u16le(m_at + 5), m_bytes.u16le(m_at + 7));
        const quint8 flags = m_bytes.u8(m_at + 9);
        frame.interlaced = flags & 0x40;
        frame.codesAt = m_at + 10;
        if (flags & 0x80) {
            frame.table = tableAt(m_bytes, frame.codesAt, flags);
            frame.codesAt += size_t(frame.table.size()) * 3;
        } else {
            // Without any table the two colours that every display has.
            frame.table = m_table.isEmpty() ? QList<QRgb>{qRgb(0, 0, 0), qRgb(255, 255, 255)} : m_table;
        }
        if (frame.transparent >= 0 && frame.transparent < frame.table.size())
            frame.table[frame.transparent] &= 0x00ffffff;
    }

    size_t behindSubBlocks(size_t at) const
    {
        while (m_bytes.has(at, 1)) {
            const size_t length = m_bytes.u8(at);
            at += 1 + length;
            if (length == 0)
                break;
        }
        return at;
    }

    Bytes m_file;
    ByteReader m_bytes;
    size_t m_at = 13;
    QList<QRgb> m_table;
};

/// The rows of an interlaced frame in the order in which they come.
std::vector<int> rowOrder(int height, bool interlaced)
{
    std::vector<int> order;
    order.reserve(static_cast<size_t>(height));
    if (!interlaced) {
        for (int y = 0; y < height; ++y)
            order.push_back(y);
        return order;
    }
    constexpr int starts[] = {0, 4, 2, 1};
    constexpr int steps[] = {8, 8, 4, 2};
    for (int pass = 0; pass < 4; ++pass) {
        for (int y = starts[pass]; y < height; y += steps[pass])
            order.push_back(y);
    }
    return order;
}

struct Unpacked
{
    std::vector<uchar> indices; ///< rows in the order of the file
    size_t count = 0; ///< of those that were there
};

Unpacked unpack(const Walker &walker, const Frame &frame, const QByteArray &file)
{
    Unpacked unpacked;
    const size_t pixels = size_t(frame.place.width()) * size_t(frame.place.height());
    const std::vector<uchar> codes = walker.joined(frame.codesAt + 1);
    // A frame may claim far more than its codes can hold: 4096 bytes for 12 bits at the most.
    const size_t most = std::min(pixels, codes.size() * 2800);
    unpacked.indices.resize(most + LzwReader::padding);
    LzwReader reader(codes, ByteReader(file).u8(frame.codesAt));
    unpacked.count = reader.read(unpacked.indices.data(), most);
    return unpacked;
}

/// Lays a frame over the canvas; what lies outside of it, and what was not in the file, stays.
void draw(const Frame &frame, const Unpacked &unpacked, QImage &canvas)
{
    QRgb colors[256] = {};
    std::fill(std::begin(colors), std::end(colors), qRgb(0, 0, 0));
    std::copy(frame.table.begin(), frame.table.end(), colors);
    const int width = frame.place.width();
    const std::vector<int> order = rowOrder(frame.place.height(), frame.interlaced);
    const int columns = std::min(width, canvas.width() - frame.place.x());
    for (size_t row = 0; row < order.size() && row * size_t(width) < unpacked.count; ++row) {
        const int y = frame.place.y() + order[row];
        if (y >= canvas.height() || columns <= 0)
            continue;
        const size_t first = row * size_t(width);
        const int there = int(std::min(size_t(columns), unpacked.count - first));
        QRgb *const to = reinterpret_cast<QRgb *>(canvas.scanLine(y)) + frame.place.x();
        for (int x = 0; x < there; ++x) {
            const uchar index = unpacked.indices[first + size_t(x)];
            if (index != frame.transparent)
                to[x] = colors[index];
        }
    }
}

/// The frame alone, when it is the whole canvas.
QImage indexedImage(const Frame &frame, const Unpacked &unpacked)
{
    QImage image = allocateImage(frame.place.size(), QImage::Format_Indexed8);
    if (image.isNull())
        return image;
    image.setColorTable(frame.table);
    const size_t width = size_t(frame.place.width());
    const std::vector<int> order = rowOrder(frame.place.height(), frame.interlaced);
    // What was not in the file shows through where that is possible.
    if (unpacked.count < width * order.size())
        image.fill(uint(frame.transparent >= 0 ? frame.transparent : 0));
    for (size_t row = 0; row < order.size() && row * width < unpacked.count; ++row)
        std::memcpy(image.scanLine(order[row]), unpacked.indices.data() + row * width,
            std::min(width, unpacked.count - row * width));
    completeColorTable(image);
    return image;
}

void clear(QImage &canvas, QRect place)
{
    place &= canvas.rect();
    for (int y = place.top(); y <= place.bottom() && place.width() > 0; ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(canvas.scanLine(y));
        std::fill(row + place.left(), row + place.right() + 1, 0U);
    }
}

bool showsGround(const QImage &canvas)
{
    Picture picture;
    picture.pixels = canvas;
    return hasTransparency(picture);
}

}

Result<GifPicture> readGifFrame(const QByteArray &file, QSize canvas, int page)
{
    Walker walker(file);
    Frame frame;
    GifPicture picture;
    for (int number = 0; number <= page; ++number) {
        if (!walker.next(frame))
            return Failure{QStringLiteral("the GIF has no frame %1").arg(page)};
        if (frame.place.isEmpty() || !limits::allows(frame.place.size(), 8))
            return Failure{QStringLiteral("a GIF frame without a size")};
        const Unpacked unpacked = unpack(walker, frame, file);
        const size_t wanted = size_t(frame.place.width()) * size_t(frame.place.height());
        picture.complete = unpacked.count == wanted;
        if (page == 0 && unpacked.count == 0)
            return Failure{QStringLiteral("a GIF without readable pixels")};
        if (page == 0 && frame.place == QRect({}, canvas)) {
            picture.pixels = indexedImage(frame, unpacked);
            break;
        }
        if (picture.pixels.isNull()) {
            picture.pixels = allocateImage(canvas, QImage::Format_ARGB32);
            if (picture.pixels.isNull())
                break;
            picture.pixels.fill(0);
        }
        const bool last = number == page;
        const QImage before = !last && frame.disposal == Disposal::Restore ? picture.pixels.copy() : QImage();
        draw(frame, unpacked, picture.pixels);
        if (!before.isNull())
            picture.pixels = before;
        else if (!last && frame.disposal == Disposal::Clear)
            clear(picture.pixels, frame.place);
    }
    if (picture.pixels.isNull())
        return Failure{outOfMemory(canvas)};
    if (picture.pixels.format() == QImage::Format_ARGB32 && !showsGround(picture.pixels))
        picture.pixels.reinterpretAsFormat(QImage::Format_RGB32);
    return picture;
}
