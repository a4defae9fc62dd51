#include "engine/codecs/bmprows.h"

#include "engine/codecs/rgbrows.h"
#include "engine/picture.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <bit>

namespace {

/// Where a channel lies in a pixel and what its values are in 8 bits.
struct Channel
{
    quint32 mask;
    int shift = 0;
    std::array<quint8, 256> values{};

    explicit Channel(quint32 channelMask)
        : mask(channelMask)
    {
        // Of more than 8 bits the highest 8 count.
        const int bits = std::popcount(mask);
        shift = mask ? std::countr_zero(mask) + qMax(0, bits - 8) : 0;
        const quint32 largest = (1U << qMin(bits, 8)) - 1;
        for (quint32 i = 1; i <= largest; ++i)
            values[i] = quint8((i * 255 + largest / 2) / largest);
    }
    bool isOneRun() const { return mask == 0 || std::has_single_bit((quint64(mask) >> std::countr_zero(mask)) + 1); }
    quint32 of(quint32 pixel) const { return values[(pixel & mask) >> shift & 0xff]; }
};

template <class Pixel> void maskedRow(const uchar *from, QRgb *to, int width, const std::array<Channel, 4> &channels)
{
    const quint32 opaque = channels[3].mask ? 0 : 0xff000000;
    for (int x = 0; x < width; ++x) {
        const quint32 pixel = qFromLittleEndian<Pixel>(from + qsizetype(sizeof(Pixel)) * x);
        to[x] = opaque | channels[3].of(pixel) << 24 | channels[0].of(pixel) << 16 | channels[1].of(pixel) << 8
            | channels[2].of(pixel);
    }
}

}

QImage readMaskedBmpRows(Bytes file, size_t offset, QSize size, int bits, bool topFirst, const ChannelMasks &masks)
{
    const size_t stride = (size_t(size.width()) * size_t(bits) + 31) / 32 * 4;
    const std::array<Channel, 4> channels{
        Channel(masks.red), Channel(masks.green), Channel(masks.blue), Channel(masks.alpha)};
    const bool isKnown = (bits == 16 || bits == 32)
        && std::all_of(channels.begin(), channels.end(), [](const Channel &channel) { return channel.isOneRun(); });
    if (!isKnown || !ByteReader(file).has(offset, stride * size_t(size.height())))
        return {};
    QImage image = allocateImage(size, masks.alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const from = file.data() + offset + size_t(y) * stride;
        QRgb *const to = reinterpret_cast<QRgb *>(image.scanLine(topFirst ? y : image.height() - 1 - y));
        if (bits == 16)
            maskedRow<quint16>(from, to, size.width(), channels);
        else
            maskedRow<quint32>(from, to, size.width(), channels);
    }
    return image;
}

QImage readBmpRows(Bytes file, size_t offset, QSize size, int bits, bool topFirst)
{
    const size_t stride = (size_t(size.width()) * size_t(bits) + 31) / 32 * 4;
    if ((bits != 24 && bits != 32) || !ByteReader(file).has(offset, stride * size_t(size.height())))
        return {};
    QImage image = allocateImage(size, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const from = file.data() + offset + size_t(y) * stride;
        QRgb *const to = reinterpret_cast<QRgb *>(image.scanLine(topFirst ? y : image.height() - 1 - y));
        if (bits == 24) {
            bgrRow(from, to, size.width());
            continue;
        }
        // The fourth byte means nothing.
        for (int x = 0; x < size.width(); ++x)
            to[x] = qFromLittleEndian<quint32>(from + 4 * qsizetype(x)) | 0xff000000;
    }
    return image;
}

bool unpackBmpRuns24(Bytes file, size_t offset, QImage &image)
{
    const ByteReader bytes(file);
    image.fill(Qt::black);
    size_t at = offset;
    int x = 0;
    int y = 0;
    const auto put = [&](size_t from) {
        if (x < image.width())
            reinterpret_cast<QRgb *>(image.scanLine(image.height() - 1 - y))[x++] =
                qRgb(bytes.u8(from + 2), bytes.u8(from + 1), bytes.u8(from));
    };
    while (y < image.height() && bytes.has(at, 2)) {
        const int count = bytes.u8(at);
        const int code = bytes.u8(at + 1);
        if (count > 0) {
            for (int i = 0; i < count; ++i)
                put(at + 1);
            at += 4;
            continue;
        }
        at += 2;
        if (code == 0) {
            x = 0;
            ++y;
        } else if (code == 1) {
            return true;
        } else if (code == 2) {
            x = qMin(x + bytes.u8(at), image.width());
            y += bytes.u8(at + 1);
            at += 2;
        } else {
            for (int i = 0; i < code; ++i)
                put(at + 3 * size_t(i));
            at += (3 * size_t(code) + 1) / 2 * 2;
        }
    }
    return y >= image.height();
}
