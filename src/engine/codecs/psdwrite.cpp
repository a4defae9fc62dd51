#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"
#include "engine/codecs/metadatawrite.h"
#include "engine/codecs/packbits.h"
#include "engine/codecs/psd.h"
#include "engine/codecs/psdlayout.h"

#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using namespace psd;

namespace {

/// A picture in the shape in which it is written.
struct Stored
{
    QImage image; ///< Mono (0 = black), Indexed8, Grayscale8, RGB32, ARGB32 or RGBA64, whose red is grey in that mode
    Mode mode = Rgb;
    bool hasAlpha = false;
    int transparentIndex = -1;
    bool isDeep() const { return image.format() == QImage::Format_RGBA64; }
    int depth() const { return mode == Bitmap ? 1 : isDeep() ? 16 : 8; }
    int colorChannels() const { return mode == Rgb ? 3 : 1; }
    int channels() const { return colorChannels() + (hasAlpha ? 1 : 0); }
};

/// The index of the one entry that is fully transparent when all others are opaque: more the format cannot tell.
int onlyTransparentIndex(const QList<QRgb> &table)
{
    int index = -1;
    for (int i = 0; i < table.size(); ++i) {
        if (qAlpha(table[i]) == 255)
            continue;
        if (qAlpha(table[i]) != 0 || index >= 0)
            return -1;
        index = i;
    }
    return index;
}

Stored storedPixels(const Picture &picture)
{
    const QImage &pixels = picture.pixels;
    if (pixels.format() == QImage::Format_Grayscale8)
        return {pixels, Grey, false, -1};
    const bool hasAlpha = hasTransparency(picture);
    if (pixels.format() == QImage::Format_RGBA64) {
        const bool grey = !hasAlpha && picture.info.bitsPerPixel == 16 && isAllGrey(pixels);
        return {pixels, grey ? Grey : Rgb, hasAlpha, -1};
    }
    const QList<QRgb> table = pixels.colorTable();
    if (pixels.format() == QImage::Format_Mono && !hasAlpha) {
        const QRgb black = qRgb(0, 0, 0);
        const QRgb white = qRgb(255, 255, 255);
        if (table == QList<QRgb>{black, white} || table == QList<QRgb>{white, black})
            return {blackAndWhite(picture, false), Bitmap, false, -1};
    }
    const int transparentIndex = hasAlpha ? onlyTransparentIndex(table) : -1;
    if (!table.isEmpty() && (!hasAlpha || transparentIndex >= 0)) {
        QImage indexed = pixels.convertToFormat(QImage::Format_Indexed8);
        indexed.setColorTable(table);
        return {indexed, Indexed, false, transparentIndex};
    }
    return {rgbOrArgb(picture), Rgb, hasAlpha, -1};
}

constexpr int alphaChannel = 3;

int shiftOf(QRgb, int channel)
{
    constexpr int shifts[] = {16, 8, 0, 24};
    return shifts[channel];
}

int shiftOf(quint64, int channel)
{
    return 16 * channel;
}

/// One channel (red, green, blue, transparency) of a row of pixels; `overWhite` lays the colours over white.
template <class Pixel, class Sample> void splitRow(const uchar *from, int width, int channel, bool overWhite, uchar *to)
{
    const Pixel *const row = reinterpret_cast<const Pixel *>(from);
    constexpr quint64 full = std::numeric_limits<Sample>::max();
    const int shift = shiftOf(Pixel(), channel);
    const int alphaShift = shiftOf(Pixel(), alphaChannel);
    for (int x = 0; x < width; ++x) {
        quint64 value = row[x] >> shift & full;
        if (overWhite) {
            const quint64 alpha = row[x] >> alphaShift & full;
            value = (value * alpha + full * (full - alpha) + full / 2) / full;
        }
        qToBigEndian(Sample(value), to + size_t(x) * sizeof(Sample));
    }
}

void takeRow(const Stored &stored, int y, int channel, bool overWhite, std::vector<uchar> &to)
{
    const uchar *const from = stored.image.constScanLine(y);
    const int width = stored.image.width();
    if (stored.isDeep())
        splitRow<quint64, quint16>(from, width, channel, overWhite, to.data());
    else if (stored.mode == Rgb)
        splitRow<QRgb, quint8>(from, width, channel, overWhite, to.data());
    else
        std::copy_n(from, to.size(), to.begin());
    // In a bitmap a set bit is black.
    if (stored.mode == Bitmap)
        std::transform(to.begin(), to.end(), to.begin(), [](uchar byte) { return uchar(~byte); });
}

struct PackedChannel
{
    ByteWriter counts; ///< of packed bytes, a word for each row
    QByteArray rows;
};

PackedChannel packChannel(const Stored &stored, int channel, bool overWhite)
{
    PackedChannel packed;
    std::vector<uchar> row((size_t(stored.image.width()) * size_t(stored.depth()) + 7) / 8);
    for (int y = 0; y < stored.image.height(); ++y) {
        takeRow(stored, y, channel, overWhite, row);
        const qsizetype before = packed.rows.size();
        packBits(row, packed.rows);
        packed.counts.u16be(quint32(packed.rows.size() - before));
    }
    return packed;
}

void appendPalette(ByteWriter &out, const Stored &stored)
{
    if (stored.mode != Indexed) {
        out.u32be(0);
        return;
    }
    out.u32be(quint32(paletteBytes));
    QList<QRgb> table = stored.image.colorTable();
    table.resize(256, qRgb(0, 0, 0));
    for (const int shift : {16, 8, 0}) {
        for (const QRgb color : table)
            out.u8(color >> shift);
    }
}

void appendResource(ByteWriter &out, Resource id, const QByteArray &data)
{
    if (data.isEmpty())
        return;
    out.text("8BIM");
    out.u16be(id);
    out.u16be(0); // an empty name
    out.u32be(quint32(data.size()));
    out.bytes.append(data);
    out.fill(data.size() % 2);
}

QByteArray resolutionData(QSize dotsPerMeter)
{
    if (dotsPerMeter.isEmpty())
        return {};
    const auto fixedPoint = [](int dots) {
        return quint32(std::lround(std::clamp(dotsPerInch(dots), 0.0, 30'000.0) * 65536));
    };
    ByteWriter data;
    for (const int dots : {dotsPerMeter.width(), dotsPerMeter.height()}) {
        data.u32be(fixedPoint(dots));
        data.u16be(1); // shown as dots per inch
        data.u16be(1); // sides shown in inches
    }
    return data.bytes;
}

QByteArray resources(const Picture &picture, const Stored &stored)
{
    ByteWriter out;
    const Metadata metadata = preparedForWriting(picture);
    const bool grey = stored.mode == Bitmap || stored.mode == Grey;
    appendResource(out, Resolution, resolutionData(knownDotsPerMeter(picture.pixels)));
    appendResource(out, Iptc, metadata.iptc);
    appendResource(out, IccProfile, profileFor(picture, grey ? ProfileColors::Grey : ProfileColors::Rgb));
    if (stored.transparentIndex >= 0) {
        ByteWriter index;
        index.u16be(quint32(stored.transparentIndex));
        appendResource(out, TransparentIndex, index.bytes);
    }
    appendResource(out, Exif, metadata.exif);
    appendResource(out, Xmp, metadata.xmp);
    return out.bytes;
}

/// The head of the layer and of its channels, up to where their data start.
QByteArray layerRecord(const Stored &stored, const std::vector<PackedChannel> &channels)
{
    ByteWriter out;
    out.u32be(0);
    out.u32be(0);
    out.u32be(quint32(stored.image.height()));
    out.u32be(quint32(stored.image.width()));
    out.u16be(quint32(channels.size()));
    for (size_t i = 0; i < channels.size(); ++i) {
        out.u16be(i + 1 < channels.size() ? quint32(i) : 0xffff); // the last is the transparency
        out.u32be(quint32(2 + channels[i].counts.bytes.size() + channels[i].rows.size()));
    }
    out.text("8BIMnorm");
    out.u8(255); // opaque
    out.fill(3);
    const QByteArray name("\5Layer\0\0", 8);
    out.u32be(quint32(8 + name.size()));
    out.u32be(0); // no mask
    out.u32be(0); // blends alike at every brightness
    out.bytes.append(name);
    return out.bytes;
}

/// One layer of the colours as they are; its count is negative because the flattened picture is transparent.
void appendLayer(ByteWriter &out, const Stored &stored, const std::vector<PackedChannel> &channels)
{
    const qsizetype sectionAt = out.bytes.size();
    out.u32be(0);
    const qsizetype informationAt = out.bytes.size();
    out.u32be(0);
    out.u16be(quint32(-1));
    out.bytes.append(layerRecord(stored, channels));
    for (const PackedChannel &channel : channels) {
        out.u16be(PackBits);
        out.bytes.append(channel.counts.bytes);
        out.bytes.append(channel.rows);
    }
    constexpr qsizetype step = 4;
    out.fill((step - (out.bytes.size() - informationAt) % step) % step);
    out.setU32be(informationAt, quint32(out.bytes.size() - informationAt - 4));
    out.u32be(0); // no mask over all layers
    out.setU32be(sectionAt, quint32(out.bytes.size() - sectionAt - 4));
}

void appendHeader(ByteWriter &out, const Stored &stored)
{
    out.text("8BPS");
    out.u16be(1);
    out.fill(6);
    out.u16be(quint32(stored.channels()));
    out.u32be(quint32(stored.image.height()));
    out.u32be(quint32(stored.image.width()));
    out.u16be(quint32(stored.depth()));
    out.u16be(stored.mode);
}

}

Result<QByteArray> encodePsd(const Picture &picture, const EncodeOptions &)
{
    constexpr int mostPixels = 30'000;
    if (picture.pixels.width() > mostPixels || picture.pixels.height() > mostPixels)
        return Failure{QStringLiteral("a Photoshop document has no more than 30000 pixels to a side")};
    const Stored stored = storedPixels(picture);
    std::vector<PackedChannel> channels;
    for (int channel = 0; channel < stored.colorChannels(); ++channel)
        channels.push_back(packChannel(stored, channel, false));
    if (stored.hasAlpha)
        channels.push_back(packChannel(stored, alphaChannel, false));

    ByteWriter out;
    appendHeader(out, stored);
    appendPalette(out, stored);
    const QByteArray blocks = resources(picture, stored);
    out.u32be(quint32(blocks.size()));
    out.bytes.append(blocks);
    if (stored.hasAlpha) {
        appendLayer(out, stored, channels);
        for (int channel = 0; channel < stored.colorChannels(); ++channel)
            channels[size_t(channel)] = packChannel(stored, channel, true);
    } else {
        out.u32be(0);
    }
    if (out.bytes.size() > qsizetype(0x7fffffff))
        return Failure{QStringLiteral("the picture is too large for a Photoshop document")};
    out.u16be(PackBits);
    for (const PackedChannel &channel : channels)
        out.bytes.append(channel.counts.bytes);
    for (const PackedChannel &channel : channels)
        out.bytes.append(channel.rows);
    return out.bytes;
}
