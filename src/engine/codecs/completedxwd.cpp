#include "engine/codecs/completed.h"

#include "engine/codecs/bytes.h"
#include "engine/limits.h"

#include <algorithm>

namespace {

// Places of the header's words, as X11's XWDFile.h has them.
constexpr size_t headerBytes = 100;
constexpr size_t versionAt = 4;
constexpr size_t depthAt = 12;
constexpr size_t widthAt = 16;
constexpr size_t heightAt = 20;
constexpr size_t bitsAt = 44;
constexpr size_t rowBytesAt = 48;
constexpr size_t classAt = 52;
constexpr size_t colormapEntriesAt = 72;
constexpr size_t colorsAt = 76;
constexpr quint32 version = 7;
constexpr quint32 grayScale = 1;
constexpr quint32 pseudoColor = 3;
/// A colour: the pixel, red, green and blue of 16 bits, which of them count, and a byte to fill.
constexpr qsizetype colorBytes = 12;
constexpr quint32 mostColors = 1U << 16;

void put(QByteArray &file, size_t at, quint32 value)
{
    for (size_t i = 0; i < 4; ++i)
        file[qsizetype(at + i)] = char(value >> (24 - 8 * i));
}

/// Header and colours with the highest byte first.
void turn(QByteArray &file)
{
    const auto reverse = [&](qsizetype at, qsizetype count) {
        if (at + count <= file.size())
            std::reverse(file.begin() + at, file.begin() + at + count);
    };
    for (qsizetype at = 0; at < qsizetype(headerBytes); at += 4)
        reverse(at, 4);
    const ByteReader reader(file);
    const qsizetype first = reader.u32be(0);
    const qsizetype count = std::min(reader.u32be(colorsAt), mostColors);
    for (qsizetype at = first; at < first + count * colorBytes; at += colorBytes) {
        reverse(at, 4);
        for (qsizetype channel = 4; channel < 10; channel += 2)
            reverse(at + channel, 2);
    }
}

void giveGreys(QByteArray &file)
{
    const ByteReader reader(file);
    const quint32 bits = reader.u32be(bitsAt);
    const quint32 depth = reader.u32be(depthAt);
    const quint32 first = reader.u32be(0);
    if (reader.u32be(classAt) > grayScale || bits < 2 || bits > 8 || depth < 1 || depth > bits || first < headerBytes
        || qsizetype(first) > file.size())
        return;
    const bool hasColors = reader.u32be(colorsAt) > 0;
    put(file, classAt, pseudoColor);
    if (hasColors)
        return;
    const quint32 colors = 1U << depth;
    put(file, colormapEntriesAt, colors);
    put(file, colorsAt, colors);
    constexpr quint32 all = 7;
    ByteWriter ramp;
    for (quint32 i = 0; i < colors; ++i) {
        ramp.u32be(i);
        for (int channel = 0; channel < 3; ++channel)
            ramp.u16be(i * 0xffff / (colors - 1));
        ramp.u8(all);
        ramp.u8(0);
    }
    file.insert(qsizetype(first), ramp.bytes);
}

/// Appends the rows that a cut file lacks.
bool fillRows(QByteArray &file)
{
    const ByteReader reader(file);
    const qint64 rowBytes = reader.u32be(rowBytesAt);
    const qint64 height = reader.u32be(heightAt);
    const qint64 pixelsAt = qint64(reader.u32be(0)) + qint64(reader.u32be(colorsAt)) * colorBytes;
    const qint64 present = file.size() - pixelsAt;
    constexpr qint64 mostPadding = 64;
    const qint64 pixelBytes = (qint64(reader.u32be(widthAt)) * reader.u32be(bitsAt) + 7) / 8;
    if (rowBytes == 0 || rowBytes > pixelBytes + mostPadding || present < rowBytes || height > limits::maximumSide
        || rowBytes > limits::decodeBudget() / std::max<qint64>(height, 1) || present >= rowBytes * height)
        return false;
    const bool hasPalette = reader.u32be(bitsAt) <= 8;
    file.append(qsizetype(rowBytes * height - present), hasPalette ? '\0' : '\xff');
    return true;
}

}

CompletedFile completedXwd(const QByteArray &bytes)
{
    if (bytes.size() < qsizetype(headerBytes))
        return {bytes, false};
    CompletedFile file{bytes, false};
    if (ByteReader(bytes).u32be(versionAt) != version)
        turn(file.bytes);
    giveGreys(file.bytes);
    file.wasCut = fillRows(file.bytes);
    return file;
}
