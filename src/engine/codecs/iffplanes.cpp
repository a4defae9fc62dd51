#include "engine/codecs/iffplanes.h"

#include <algorithm>

namespace {

/// Fills one plane, `height` rows of `words` 16-bit words, column by column from a VDAT chunk.
/// Its layout: the number of command bytes and two more, the commands, then the words that they take.
class ColumnFill
{
public:
    ColumnFill(Bytes chunk, uchar *plane, size_t words, size_t height)
        : m_chunk(chunk)
        , m_plane(plane)
        , m_words(words)
        , m_height(height)
        , m_data(std::max<size_t>(m_chunk.u16be(0), 2))
    {
    }
    /// False when the chunk ends before the plane is full.
    bool run()
    {
        const size_t commandsEnd = m_data;
        for (size_t at = 2; at < commandsEnd && m_chunk.has(at, 1) && !isFull(); ++at) {
            const int byte = m_chunk.u8(at);
            const int command = byte < 128 ? byte : byte - 256;
            if (command == 0)
                copy(nextWord());
            else if (command == 1)
                repeat(nextWord());
            else if (command < 0)
                copy(-command);
            else
                repeat(command);
        }
        return isFull();
    }

private:
    bool isFull() const { return m_column >= m_words; }
    int nextWord()
    {
        m_data += 2;
        return m_chunk.u16be(m_data - 2);
    }
    void put(int word)
    {
        uchar *const place = m_plane + (m_row * m_words + m_column) * 2;
        place[0] = uchar(word >> 8);
        place[1] = uchar(word);
        if (++m_row == m_height) {
            m_row = 0;
            ++m_column;
        }
    }
    void copy(int count)
    {
        for (; count > 0 && !isFull() && m_chunk.has(m_data, 2); --count)
            put(nextWord());
    }
    void repeat(int count)
    {
        if (!m_chunk.has(m_data, 2))
            return;
        const int word = nextWord();
        for (; count > 0 && !isFull(); --count)
            put(word);
    }

    const ByteReader m_chunk;
    uchar *const m_plane;
    const size_t m_words;
    const size_t m_height;
    size_t m_data;
    size_t m_row = 0;
    size_t m_column = 0;
};

/// Unpacks a body of VDAT chunks, one a plane. The answer is whether all planes are complete.
bool unpackColumns(const IffPicture &picture, std::vector<uchar> &planes)
{
    const size_t height = size_t(picture.size.height());
    const size_t planeBytes = picture.rowBytes() * height;
    planes.assign(planeBytes * size_t(picture.storedPlanes()), 0);
    const ByteReader body(picture.pixels);
    size_t at = 0;
    bool complete = true;
    for (int plane = 0; plane < picture.storedPlanes(); ++plane) {
        if (!body.is(at, "VDAT"))
            return false;
        const size_t start = std::min(at + 8, body.size());
        const size_t length = std::min<size_t>(body.u32be(at + 4), body.size() - start);
        ColumnFill fill(picture.pixels.subspan(start, length), planes.data() + size_t(plane) * planeBytes,
            picture.rowBytes() / 2, height);
        complete = fill.run() && complete;
        at = start + length + length % 2;
    }
    return complete;
}

}

IffRows::IffRows(const IffPicture &picture)
    : m_picture(picture)
    , m_row(picture.rowBytes() * size_t(picture.storedPlanes()))
{
    if (picture.compression == IffPicture::Columns)
        m_damaged = !unpackColumns(picture, m_columns);
}

bool IffRows::next()
{
    if (m_number >= m_picture.size.height())
        return false;
    const bool wholePlanes =
        m_picture.compression == IffPicture::Columns || m_picture.layout == IffPicture::Layout::Planes;
    const bool there = wholePlanes ? nextOfWholePlanes() : nextOfStream();
    m_damaged = m_damaged || !there;
    ++m_number;
    return there;
}

bool IffRows::nextOfWholePlanes()
{
    const Bytes whole = m_picture.compression == IffPicture::Columns ? Bytes(m_columns) : m_picture.pixels;
    const size_t rowBytes = m_picture.rowBytes();
    bool any = false;
    for (int plane = 0; plane < m_picture.storedPlanes(); ++plane) {
        const size_t row = size_t(plane) * size_t(m_picture.size.height()) + size_t(m_number);
        const size_t start = std::min(row * rowBytes, whole.size());
        const size_t count = std::min(rowBytes, whole.size() - start);
        uchar *const to = m_row.data() + size_t(plane) * rowBytes;
        std::copy_n(whole.begin() + std::ptrdiff_t(start), count, to);
        std::fill(to + count, to + rowBytes, uchar(0));
        any = any || count > 0;
        m_damaged = m_damaged || count < rowBytes;
    }
    return any;
}

bool IffRows::nextOfStream()
{
    const size_t start = m_at;
    const bool pending = m_spill.count > 0;
    std::fill(m_row.begin(), m_row.end(), uchar(0));
    if (m_picture.compression == IffPicture::RunLengths) {
        m_damaged = !unpackBits(m_picture.pixels, m_at, m_row, &m_spill) || m_damaged;
        return m_at > start || pending;
    }
    const size_t count = std::min(m_row.size(), m_picture.pixels.size() - m_at);
    std::copy_n(m_picture.pixels.begin() + std::ptrdiff_t(m_at), count, m_row.begin());
    m_at += count;
    m_damaged = m_damaged || count < m_row.size();
    return count > 0;
}
