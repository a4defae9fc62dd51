#pragma once

#include <QtEndian>
#include <QtGlobal>

#include <cstring>
#include <span>

/// Unpacks GIF's variant of LZW: codes of growing width, low bits first. Every string that a code stands for already
/// lies in what was written, so the table holds places and lengths, and a code is one copy.
class LzwReader
{
public:
    /// Bytes behind the end of the output that may be written to.
    static constexpr size_t padding = 16;

    LzwReader(std::span<const uchar> codes, int minimumWidth)
        : m_codes(codes)
        , m_minimum(minimumWidth)
    {
    }

    /// Fills up to `wanted` bytes; `to` must be larger by `padding`. The answer is how many came before the end.
    size_t read(uchar *to, size_t wanted);

private:
    static constexpr int tableSize = 4096;

    int nextCode(int width)
    {
        if (m_bits < width && m_at + sizeof m_pending <= m_codes.size()) {
            const quint64 more = qFromLittleEndian<quint64>(m_codes.data() + m_at);
            m_pending |= more << m_bits;
            const int taken = (63 - m_bits) / 8;
            m_at += size_t(taken);
            m_bits += 8 * taken;
            // The bits above are read again with the next eight bytes.
            m_pending &= (quint64(1) << m_bits) - 1;
        }
        while (m_bits < width) {
            if (m_at == m_codes.size())
                return -1;
            m_pending |= quint64(m_codes[m_at++]) << m_bits;
            m_bits += 8;
        }
        const int code = int(m_pending & ((1U << width) - 1));
        m_pending >>= width;
        m_bits -= width;
        return code;
    }

    const std::span<const uchar> m_codes;
    const int m_minimum;
    size_t m_at = 0;
    quint64 m_pending = 0;
    int m_bits = 0;
    quint32 m_places[tableSize] = {};
    quint16 m_lengths[tableSize] = {};
};

inline size_t LzwReader::read(uchar *to, size_t wanted)
{
    if (m_minimum < 1 || m_minimum > 8)
        return 0;
    const int clear = 1 << m_minimum;
    const int end = clear + 1;
    int width = m_minimum + 1;
    int next = end + 1;
    size_t written = 0;
    size_t lastPlace = 0;
    size_t lastLength = 0; // 0: the code before was no string
    while (written < wanted) {
        const int code = nextCode(width);
        if (code == clear) {
            width = m_minimum + 1;
            next = end + 1;
            lastLength = 0;
            continue;
        }
        if (code < 0 || code == end)
            break;
        // The string before, and the first byte of the one that follows: they lie side by side already.
        if (lastLength > 0 && next < tableSize) {
            m_places[next] = quint32(lastPlace);
            m_lengths[next] = quint16(lastLength + 1);
            ++next;
            if (next == 1 << width && width < 12)
                ++width;
        }
        const size_t place = written;
        size_t length = 1;
        if (code < clear) {
            to[written] = uchar(code);
        } else {
            if (code >= next)
                break;
            const uchar *const from = to + m_places[code];
            length = m_lengths[code];
            const size_t given = qMin(length, wanted - written);
            if (given <= padding && from + padding <= to + written)
                std::memcpy(to + written, from, padding);
            else
                for (size_t i = 0; i < given; ++i)
                    to[written + i] = from[i];
            length = given;
        }
        written += length;
        lastPlace = place;
        lastLength = length;
    }
    return written;
}
