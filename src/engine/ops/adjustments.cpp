#include "engine/ops/adjustments.h"

#include "engine/ops/rowbands.h"

#include <QRgba64>

#include <array>
#include <cmath>
#include <mutex>
#include <vector>

namespace {

const Failure noPicture{QStringLiteral("there is no picture to change")};
const Failure noMemory{QStringLiteral("the picture is too large for this")};

constexpr size_t levels8 = 256;
constexpr size_t levels16 = 65536;

constexpr quint32 luminance(quint32 red, quint32 green, quint32 blue)
{
    return (299 * red + 587 * green + 114 * blue + 500) / 1000;
}

quint32 luminanceOf(QRgb pixel)
{
    return luminance(quint32(qRed(pixel)), quint32(qGreen(pixel)), quint32(qBlue(pixel)));
}

quint32 luminanceOf(QRgba64 pixel)
{
    return luminance(pixel.red(), pixel.green(), pixel.blue());
}

QRgb greyOf(QRgb pixel)
{
    const QRgb grey = luminanceOf(pixel);
    return (pixel & 0xff000000) | grey << 16 | grey << 8 | grey;
}

/// How many pixels have each level. One of them stands for the luminance, three for red, green and blue.
using Histogram = std::vector<qint64>;
template <size_t channels> using Histograms = std::array<Histogram, channels>;
enum Basis : size_t { Luminance = 1, EachChannel = 3 };

template <size_t channels> Histograms<channels> emptyHistograms(size_t levels)
{
    Histograms<channels> histograms;
    histograms.fill(Histogram(levels));
    return histograms;
}

bool isSeen(QRgb pixel)
{
    return pixel > 0x00ffffff;
}

bool isSeen(QRgba64 pixel)
{
    return pixel.alpha() != 0;
}

template <size_t channels> void add(Histograms<channels> &histograms, QRgb pixel, qint64 count)
{
    if constexpr (channels == Luminance) {
        histograms[0][luminanceOf(pixel)] += count;
    } else {
        histograms[0][size_t(qRed(pixel))] += count;
        histograms[1][size_t(qGreen(pixel))] += count;
        histograms[2][size_t(qBlue(pixel))] += count;
    }
}

template <size_t channels> void add(Histograms<channels> &histograms, QRgba64 pixel, qint64 count)
{
    if constexpr (channels == Luminance) {
        histograms[0][luminanceOf(pixel)] += count;
    } else {
        histograms[0][pixel.red()] += count;
        histograms[1][pixel.green()] += count;
        histograms[2][pixel.blue()] += count;
    }
}

/// `count(y, histograms)` adds the pixels of one row; the bands' histograms are summed up.
template <size_t channels, class Count> Histograms<channels> counted(QSize size, size_t levels, const Count &count)
{
    Histograms<channels> all = emptyHistograms<channels>(levels);
    std::mutex guard;
    forRowBands(size, [&](int first, int end) {
        Histograms<channels> band = emptyHistograms<channels>(levels);
        for (int y = first; y < end; ++y)
            count(y, band);
        const std::lock_guard locked(guard);
        for (size_t i = 0; i < channels; ++i)
            std::transform(all[i].begin(), all[i].end(), band[i].begin(), all[i].begin(), std::plus<>());
    });
    return all;
}

template <size_t channels, class Pixel> Histograms<channels> histogramsOfPixels(const QImage &image, size_t levels)
{
    return counted<channels>(image.size(), levels, [&](int y, Histograms<channels> &histograms) {
        const Pixel *const row = reinterpret_cast<const Pixel *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (isSeen(row[x]))
                add(histograms, row[x], 1);
        }
    });
}

/// How often each byte of a Grayscale8 or Indexed8 image is there.
Histogram histogramOfBytes(const QImage &image)
{
    return counted<1>(image.size(), levels8, [&](int y, Histograms<1> &histograms) {
        const uchar *const row = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x)
            ++histograms[0][row[x]];
    })[0];
}

template <size_t channels> Histograms<channels> histogramsOfPalette(const QImage &image)
{
    const Histogram indices = histogramOfBytes(image.convertToFormat(QImage::Format_Indexed8));
    Histograms<channels> histograms = emptyHistograms<channels>(levels8);
    const QList<QRgb> table = image.colorTable();
    for (qsizetype i = 0; i < table.size(); ++i) {
        if (isSeen(table[i]))
            add(histograms, table[i], indices[size_t(i)]);
    }
    return histograms;
}

/// Number before to number after, for each level.
using Curve = std::vector<quint16>;
struct Curves
{
    std::array<Curve, 3> channels;

    QRgb operator()(QRgb pixel) const
    {
        return (pixel & 0xff000000) | QRgb(channels[0][size_t(qRed(pixel))]) << 16
            | QRgb(channels[1][size_t(qGreen(pixel))]) << 8 | channels[2][size_t(qBlue(pixel))];
    }
    QRgba64 operator()(QRgba64 pixel) const
    {
        return qRgba64(channels[0][pixel.red()], channels[1][pixel.green()], channels[2][pixel.blue()], pixel.alpha());
    }
    uchar operator()(uchar grey) const { return uchar(channels[0][grey]); }
};

/// The first level from that end with more than `lost` pixels up to it.
template <class Iterator> size_t stepsPast(Iterator from, Iterator end, qint64 lost)
{
    qint64 passed = 0;
    const auto found = std::find_if(from, end, [&](qint64 count) { return (passed += count) > lost; });
    return size_t(found - from);
}

Curve stretch(const Histogram &histogram, double clipFraction)
{
    qint64 pixels = 0;
    for (const qint64 count : histogram)
        pixels += count;
    const size_t most = histogram.size() - 1;
    size_t low = 0;
    size_t high = 0;
    if (pixels > 0) {
        const qint64 lost = qint64(clipFraction * double(pixels));
        low = stepsPast(histogram.begin(), histogram.end(), lost);
        high = most - stepsPast(histogram.rbegin(), histogram.rend(), lost);
    }
    Curve curve(histogram.size());
    for (size_t level = 0; level <= most; ++level) {
        const size_t range = high - low;
        curve[level] = quint16(low == high ? level : ((std::clamp(level, low, high) - low) * most + range / 2) / range);
    }
    return curve;
}

template <size_t channels> Curves stretches(const Histograms<channels> &histograms, double clipFraction)
{
    Curves curves;
    curves.channels[0] = stretch(histograms[0], clipFraction);
    for (size_t i = 1; i < 3; ++i)
        curves.channels[i] = channels == 1 ? curves.channels[0] : stretch(histograms[i % channels], clipFraction);
    return curves;
}

QList<QRgb> mapped(QList<QRgb> table, const auto &function)
{
    std::transform(table.cbegin(), table.cend(), table.begin(), function);
    return table;
}

QImage withTable(QImage image, const QList<QRgb> &table)
{
    image.setColorTable(table);
    return image;
}

template <size_t channels> QImage stretched(const QImage &image, double clipFraction)
{
    switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_Indexed8:
        return withTable(
            image, mapped(image.colorTable(), stretches(histogramsOfPalette<channels>(image), clipFraction)));
    case QImage::Format_Grayscale8:
        return mappedPixels<uchar, uchar>(
            image, image.format(), stretches(Histograms<1>{histogramOfBytes(image)}, clipFraction));
    case QImage::Format_RGBA64:
        return mappedPixels<QRgba64, QRgba64>(
            image, image.format(), stretches(histogramsOfPixels<channels, QRgba64>(image, levels16), clipFraction));
    default:
        return mappedPixels<QRgb, QRgb>(
            image, image.format(), stretches(histogramsOfPixels<channels, QRgb>(image, levels8), clipFraction));
    }
}

template <size_t channels> Result<Picture> stretched(const Picture &picture, double clipFraction)
{
    if (picture.isNull())
        return noPicture;
    if (!(clipFraction >= 0 && clipFraction < 0.5))
        return Failure{QStringLiteral("no more than half of a picture can be clipped at either end")};
    const QImage pixels = stretched<channels>(picture.pixels, clipFraction);
    return pixels.isNull() ? Result<Picture>(noMemory) : remade(picture, pixels, picture.info.bitsPerPixel);
}

/// What keeps its form in grey because it shows its ground.
QImage greyChannels(const QImage &image)
{
    if (image.format() != QImage::Format_RGBA64)
        return mappedPixels<QRgb, QRgb>(image, image.format(), [](QRgb pixel) { return greyOf(pixel); });
    return mappedPixels<QRgba64, QRgba64>(image, image.format(), [](QRgba64 pixel) {
        const quint16 grey = quint16(luminanceOf(pixel));
        return qRgba64(grey, grey, grey, pixel.alpha());
    });
}

QImage greyBytes(const QImage &image)
{
    constexpr auto format = QImage::Format_Grayscale8;
    switch (image.format()) {
    case QImage::Format_Indexed8: {
        std::array<uchar, levels8> greys{};
        const QList<QRgb> table = image.colorTable();
        std::transform(table.begin(), table.end(), greys.begin(), [](QRgb color) { return uchar(luminanceOf(color)); });
        return mappedPixels<uchar, uchar>(image, format, [&](uchar index) { return greys[index]; });
    }
    case QImage::Format_RGBA64:
        return mappedPixels<uchar, QRgba64>(
            image, format, [](QRgba64 pixel) { return uchar((luminanceOf(pixel) * 255 + 32767) / 65535); });
    default:
        return mappedPixels<uchar, QRgb>(image, format, [](QRgb pixel) { return uchar(luminanceOf(pixel)); });
    }
}

}

Result<Picture> withAutoContrast(const Picture &picture, double clipFraction)
{
    return stretched<Luminance>(picture, clipFraction);
}

Result<Picture> withAutoLevel(const Picture &picture, double clipFraction)
{
    return stretched<EachChannel>(picture, clipFraction);
}

Result<Picture> inGreyScale(const Picture &picture)
{
    const QImage &image = picture.pixels;
    if (picture.isNull())
        return noPicture;
    if (image.format() == QImage::Format_Grayscale8)
        return picture;
    const bool transparent = hasTransparency(picture);
    const int bits = picture.info.bitsPerPixel;
    const bool hasPalette = image.depth() <= 8;
    if (hasPalette && (transparent || bits < 8 || image.format() == QImage::Format_Mono))
        return remade(picture, withTable(image, mapped(image.colorTable(), &greyOf)), bits);
    const QImage grey = transparent ? greyChannels(image) : greyBytes(image);
    return grey.isNull() ? Result<Picture>(noMemory) : remade(picture, grey, transparent ? bits : 8);
}
