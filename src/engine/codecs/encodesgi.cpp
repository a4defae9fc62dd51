#include "engine/codecs/encoders.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"

#include <algorithm>
#include <vector>

namespace {

/// Runs of a channel's row: a count with the highest bit set says that so many samples follow as they are, without it
/// that one sample stands for so many; 0 ends the row. Counts are as wide as samples.
template <class Sample> void packRow(const std::vector<quint16> &row, QByteArray &out)
{
    constexpr size_t longest = 127;
    const size_t size = row.size();
    const qsizetype before = out.size();
    // At worst one count for every two samples, as for pairs between runs, and the end.
    out.resize(before + qsizetype(sizeof(Sample) * (2 * size + 2)));
    uchar *const start = reinterpret_cast<uchar *>(out.data()) + before;
    uchar *to = start;
    const auto put = [&to](quint16 value) {
        if constexpr (sizeof(Sample) == 2)
            *to++ = uchar(value >> 8);
        *to++ = uchar(value);
    };
    const auto repeats = [&](size_t at) { return at + 2 < size && row[at] == row[at + 1] && row[at] == row[at + 2]; };
    for (size_t at = 0; at < size;) {
        size_t count = 1;
        if (repeats(at)) {
            while (count < longest && at + count < size && row[at + count] == row[at])
                ++count;
            put(quint16(count));
            put(row[at]);
        } else {
            while (count < longest && at + count < size && !repeats(at + count))
                ++count;
            put(quint16(0x80 | count));
            std::for_each_n(row.begin() + qsizetype(at), count, put);
        }
        at += count;
    }
    put(0);
    out.truncate(before + (to - start));
}

/// Channel `channel` of 0 red, 1 green, 2 blue, 3 alpha.
void takeChannel(const QImage &image, int y, int channel, std::vector<quint16> &row)
{
    const uchar *const line = image.constScanLine(y);
    if (image.format() == QImage::Format_Grayscale8) {
        std::copy(line, line + image.width(), row.begin());
    } else if (image.format() == QImage::Format_RGBA64) {
        const auto *const from = reinterpret_cast<const QRgba64 *>(line);
        const int shift = 16 * channel;
        std::transform(from, from + image.width(), row.begin(),
            [shift](QRgba64 pixel) { return quint16(quint64(pixel) >> shift); });
    } else {
        const auto *const from = reinterpret_cast<const QRgb *>(line);
        const int shift = channel == 3 ? 24 : 16 - 8 * channel;
        std::transform(
            from, from + image.width(), row.begin(), [shift](QRgb pixel) { return quint16(pixel >> shift & 0xff); });
    }
}

void writeHeader(ByteWriter &out, QSize size, int channels, bool deep)
{
    out.u16be(474);
    out.u8(1); // packed
    out.u8(deep ? 2 : 1);
    out.u16be(channels == 1 ? 2 : 3);
    out.u16be(quint32(size.width()));
    out.u16be(quint32(size.height()));
    out.u16be(quint32(channels));
    out.u32be(0);
    out.u32be(deep ? 0xffff : 0xff);
    out.fill(512 - out.bytes.size());
}

}

Result<QByteArray> encodeSgi(const Picture &picture, const EncodeOptions &)
{
    const bool deep = picture.pixels.format() == QImage::Format_RGBA64;
    const bool alpha = hasTransparency(picture);
    const PalettePixels indexed = palettePixels(picture, {8}, Transparency::OverWhite);
    // Deep grey goes into three channels: readers know a single one only with 8 bits.
    const bool grey = !alpha && !indexed.isNull()
        && std::all_of(indexed.table.begin(), indexed.table.end(), [](QRgb color) { return qIsGray(color); });
    const QImage image = deep ? picture.pixels : grey ? greyscale(picture) : rgbOrArgb(picture);
    const int channels = grey ? 1 : alpha ? 4 : 3;
    const int height = image.height();

    ByteWriter out;
    writeHeader(out, image.size(), channels, deep);
    const qsizetype starts = out.bytes.size();
    const qsizetype lengths = starts + 4 * qsizetype(channels) * height;
    out.fill(2 * (lengths - starts));
    std::vector<quint16> row(size_t(image.width()));
    for (int channel = 0; channel < channels; ++channel) {
        for (int y = 0; y < height; ++y) { // from the lowest row up
            const qsizetype start = out.bytes.size();
            takeChannel(image, height - 1 - y, channel, row);
            if (deep)
                packRow<quint16>(row, out.bytes);
            else
                packRow<quint8>(row, out.bytes);
            if (out.bytes.size() > qsizetype(0x7fffffff))
                return Failure{QStringLiteral("the picture is too large for an SGI file")};
            const qsizetype place = 4 * (qsizetype(channel) * height + y);
            out.setU32be(starts + place, quint32(start));
            out.setU32be(lengths + place, quint32(out.bytes.size() - start));
        }
    }
    return out.bytes;
}
