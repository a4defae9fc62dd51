#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <cstring>
#include <span>

using Bytes = std::span<const uchar>;

inline Bytes bytesOf(const QByteArray &array)
{
    return {reinterpret_cast<const uchar *>(array.constData()), static_cast<size_t>(array.size())};
}

/// Reads numbers out of a file's bytes. What lies behind the end reads as 0, so a header can be taken apart first and
/// judged afterwards; `has` tells the difference where it matters.
class ByteReader
{
public:
    explicit ByteReader(Bytes bytes)
        : m_bytes(bytes)
    {
    }
    explicit ByteReader(const QByteArray &bytes)
        : m_bytes(bytesOf(bytes))
    {
    }

    size_t size() const { return m_bytes.size(); }
    bool has(size_t offset, size_t count) const { return offset <= m_bytes.size() && count <= m_bytes.size() - offset; }
    quint8 u8(size_t at) const { return at < m_bytes.size() ? m_bytes[at] : quint8(0); }
    quint16 u16le(size_t at) const { return quint16(u8(at) | u8(at + 1) << 8); }
    quint16 u16be(size_t at) const { return quint16(u8(at) << 8 | u8(at + 1)); }
    quint32 u32le(size_t at) const { return u16le(at) | quint32(u16le(at + 2)) << 16; }
    quint32 u32be(size_t at) const { return quint32(u16be(at)) << 16 | u16be(at + 2); }
    /// Either order, as formats need that declare theirs.
    quint16 u16(size_t at, bool bigEndian) const { return bigEndian ? u16be(at) : u16le(at); }
    quint32 u32(size_t at, bool bigEndian) const { return bigEndian ? u32be(at) : u32le(at); }
    quint64 u64(size_t at, bool bigEndian) const
    {
        const quint64 first = u32(at, bigEndian);
        const quint64 second = u32(at + 4, bigEndian);
        return bigEndian ? first << 32 | second : second << 32 | first;
    }
    /// Whether these characters stand at `offset`; a string literal's closing zero does not take part.
    template <size_t N> bool is(size_t offset, const char (&text)[N]) const
    {
        return has(offset, N - 1) && std::memcmp(m_bytes.data() + offset, text, N - 1) == 0;
    }

private:
    Bytes m_bytes;
};

/// Puts numbers behind one another, as the writers need them.
class ByteWriter
{
public:
    void u8(quint32 value) { bytes.append(char(value & 0xff)); }
    void u16le(quint32 value) { u8(value), u8(value >> 8); }
    void u16be(quint32 value) { u8(value >> 8), u8(value); }
    void u32le(quint32 value) { u16le(value & 0xffff), u16le(value >> 16); }
    void u32be(quint32 value) { u16be(value >> 16), u16be(value & 0xffff); }
    void fill(qsizetype count, char value = 0) { bytes.append(count, value); }
    /// The characters without a closing zero.
    template <size_t N> void text(const char (&characters)[N]) { bytes.append(characters, qsizetype(N - 1)); }
    /// Overwrites what stands at `at`, as a length that is known only later.
    void setU32be(qsizetype at, quint32 value)
    {
        for (int i = 0; i < 4; ++i)
            bytes[at + i] = char(value >> (24 - 8 * i) & 0xff);
    }
    void setU32le(qsizetype at, quint32 value)
    {
        for (int i = 0; i < 4; ++i)
            bytes[at + i] = char(value >> (8 * i) & 0xff);
    }

    QByteArray bytes;
};
