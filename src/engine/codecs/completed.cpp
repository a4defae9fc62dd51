#include "engine/codecs/completed.h"

#include "engine/codecs/bytes.h"

#include <QtEndian>

namespace {

constexpr int greys = 256;

// Of an XWD, as X11's XWDFile.h has them.
constexpr size_t depthAt = 12;
constexpr size_t bitsAt = 44;
constexpr size_t classAt = 52;
constexpr size_t colormapEntriesAt = 72;
constexpr size_t colorsAt = 76;
constexpr quint32 grayScale = 1;
constexpr quint32 pseudoColor = 3;

/// Whether all pixels of an 8-bit PCX are there, not cut off.
bool hasAllPixels(const ByteReader &reader, size_t at)
{
    const qint64 rows = reader.u16le(10) - reader.u16le(6) + 1;
    const bool packed = reader.u8(2) == 1;
    qint64 missing = rows * reader.u16le(66);
    while (missing > 0 && at < reader.size()) {
        const quint8 byte = reader.u8(at);
        const bool isRun = packed && (byte & 0xc0) == 0xc0;
        missing -= isRun ? byte & 0x3f : 1;
        at += isRun ? 2 : 1;
    }
    return missing <= 0;
}

}

QByteArray completedPcx(const QByteArray &bytes)
{
    const ByteReader reader(bytesOf(bytes));
    constexpr qsizetype headerBytes = 128;
    constexpr qsizetype paletteBytes = 1 + 3 * greys;
    constexpr char paletteFollows = 0x0c;
    if (reader.u8(3) != 8 || reader.u8(65) != 1)
        return bytes;
    if (bytes.size() >= headerBytes + paletteBytes && bytes[bytes.size() - paletteBytes] == paletteFollows)
        return bytes;
    if (!hasAllPixels(reader, headerBytes))
        return bytes;
    QByteArray whole = bytes;
    whole.reserve(bytes.size() + paletteBytes);
    whole.append(paletteFollows);
    for (int grey = 0; grey < greys; ++grey)
        whole.append(3, char(grey));
    return whole;
}

QByteArray completedXwd(const QByteArray &bytes)
{
    const ByteReader reader(bytesOf(bytes));
    constexpr quint32 version = 7;
    const bool bigEndian = reader.u32be(4) == version;
    const quint32 bits = reader.u32(bitsAt, bigEndian);
    const quint32 depth = reader.u32(depthAt, bigEndian);
    const quint32 headerBytes = reader.u32(0, bigEndian);
    if (reader.u32(classAt, bigEndian) > grayScale || bits < 2 || bits > 8 || depth < 1 || depth > bits
        || headerBytes < 100 || qsizetype(headerBytes) > bytes.size())
        return bytes;
    QByteArray whole = bytes;
    const auto put = [&](size_t at, quint32 value) {
        const quint32 stored = bigEndian ? qToBigEndian(value) : qToLittleEndian(value);
        whole.replace(qsizetype(at), 4, reinterpret_cast<const char *>(&stored), 4);
    };
    put(classAt, pseudoColor);
    if (reader.u32(colorsAt, bigEndian) > 0)
        return whole;
    const quint32 colors = 1U << depth;
    put(colormapEntriesAt, colors);
    put(colorsAt, colors);
    // An entry: the pixel, red, green and blue of 16 bits, which of them count (all), and a byte for the length.
    QByteArray ramp;
    for (quint32 i = 0; i < colors; ++i) {
        const quint16 level = quint16(i * 0xffff / (colors - 1));
        const quint32 pixel = bigEndian ? qToBigEndian(i) : qToLittleEndian(i);
        const quint16 stored = bigEndian ? qToBigEndian(level) : qToLittleEndian(level);
        ramp.append(reinterpret_cast<const char *>(&pixel), sizeof pixel);
        for (int channel = 0; channel < 3; ++channel)
            ramp.append(reinterpret_cast<const char *>(&stored), sizeof stored);
        ramp.append(char(7)).append(char(0));
    }
    return whole.insert(qsizetype(headerBytes), ramp);
}
