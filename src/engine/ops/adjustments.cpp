#include "engine/ops/adjustments.h"

#include "engine/ops/rowbands.h"

#include <QCoreApplication>
#include <QRgba64>

#include <array>
#include <cmath>
#include <mutex>
#include <vector>

namespace {

Failure noPicture()
{
    return Failure{QCoreApplication::translate("Engine", "there is no picture to change")};
}

Failure noMemory()
{
    return Failure{QCoreApplication::translate("Engine", "the picture is too large for this")};
}

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

bool isSeen(QRgb pixel)
{
    return pixel > 0x00ffffff;
}

bool isSeen(QRgba64 pixel)
{
    return pixel.alpha() != 0;
}

size_t redOf(QRgb pixel)
{
    return size_t(qRed(pixel));
}

size_t greenOf(QRgb pixel)
{
    return size_t(qGreen(pixel));
}

size_t blueOf(QRgb pixel)
{
    return size_t(qBlue(pixel));
}

size_t redOf(QRgba64 pixel)
{
    return pixel.red();
}

size_t greenOf(QRgba64 pixel)
{
    return pixel.green();
}

size_t blueOf(QRgba64 pixel)
{
    return pixel.blue();
}

/// How many pixels have each level.
using Histogram = std::vector<quint32>;
/// One stands for the luminance, three for red, green and blue.
template <size_t channels> using Histograms = std::array<Histogram, channels>;
enum Basis : size_t { Luminance = 1, EachChannel = 3 };

/// Counts the pixels of some rows. Neighbours of one level are counted in different lanes: a count that was just stored
/// is slow to be read again.
template <size_t channels, size_t levels> class Counter
{
public:
    void add(int x, QRgb pixel, quint32 count = 1) { addColor(x, pixel, count); }
    void add(int x, QRgba64 pixel) { addColor(x, pixel, 1); }
    void addLevel(int x, size_t channel, size_t level, quint32 count = 1)
    {
        m_counts[(size_t(x) % lanes * channels + channel) * levels + level] += count;
    }
    void addTo(Histograms<channels> &histograms) const
    {
        for (size_t i = 0; i < m_counts.size(); ++i)
            histograms[i / levels % channels][i % levels] += m_counts[i];
    }

private:
    // More of the many levels of 16 bits would not fit into a processor's cache.
    static constexpr size_t lanes = levels == levels8 ? 4 : 1;

    template <class Pixel> void addColor(int x, Pixel pixel, quint32 count)
    {
        if constexpr (channels == Luminance) {
            addLevel(x, 0, luminanceOf(pixel), count);
        } else {
            addLevel(x, 0, redOf(pixel), count);
            addLevel(x, 1, greenOf(pixel), count);
            addLevel(x, 2, blueOf(pixel), count);
        }
    }
    std::vector<quint32> m_counts = std::vector<quint32>(lanes * channels * levels);
};

template <size_t channels> Histograms<channels> emptyHistograms(size_t levels)
{
    Histograms<channels> histograms;
    histograms.fill(Histogram(levels));
    return histograms;
}

/// `count(y, counter)` counts the pixels of one row.
template <size_t channels, size_t levels, class Count> Histograms<channels> counted(QSize size, const Count &count)
{
    Histograms<channels> histograms = emptyHistograms<channels>(levels);
    std::mutex guard;
    forRowBands(size, [&](int first, int end) {
        Counter<channels, levels> band;
        for (int y = first; y < end; ++y)
            count(y, band);
        const std::lock_guard locked(guard);
        band.addTo(histograms);
    });
    return histograms;
}

template <size_t channels, class Pixel> Histograms<channels> histogramsOfPixels(const QImage &image)
{
    constexpr size_t levels = sizeof(Pixel) == sizeof(QRgb) ? levels8 : levels16;
    return counted<channels, levels>(image.size(), [&](int y, Counter<channels, levels> &counter) {
        const Pixel *const row = reinterpret_cast<const Pixel *>(image.constScanLine(y));
        const int width = image.width();
        for (int x = 0; x < width; ++x) {
            if (isSeen(row[x]))
                counter.add(x, row[x]);
        }
    });
}

/// How often each byte of a Grayscale8 or Indexed8 image is there.
Histogram histogramOfBytes(const QImage &image)
{
    return counted<1, levels8>(image.size(), [&](int y, Counter<1, levels8> &counter) {
        const uchar *const row = image.constScanLine(y);
        const int width = image.width();
        for (int x = 0; x < width; ++x)
            counter.addLevel(x, 0, row[x]);
    })[0];
}

template <size_t channels> Histograms<channels> histogramsOfPalette(const QImage &image)
{
    const Histogram indices = histogramOfBytes(image.convertToFormat(QImage::Format_Indexed8));
    const QList<QRgb> table = image.colorTable();
    Counter<channels, levels8> counter;
    for (qsizetype i = 0; i < table.size(); ++i) {
        if (isSeen(table[i]))
            counter.add(0, table[i], indices[size_t(i)]);
    }
    Histograms<channels> histograms = emptyHistograms<channels>(levels8);
    counter.addTo(histograms);
    return histograms;
}

/// Number before to number after, for each level.
using Curve = std::vector<quint16>;
using Curves = std::array<Curve, 3>;

struct DeepStretch
{
    Curves curves;
    QRgba64 operator()(QRgba64 pixel) const
    {
        return qRgba64(curves[0][pixel.red()], curves[1][pixel.green()], curves[2][pixel.blue()], pixel.alpha());
    }
};

class ByteStretch
{
public:
    explicit ByteStretch(const Curves &curves)
    {
        for (size_t i = 0; i < curves.size(); ++i)
            std::copy(curves[i].begin(), curves[i].end(), m_curves[i].begin());
    }
    uchar operator()(uchar grey) const { return m_curves[0][grey]; }
    QRgb operator()(QRgb pixel) const
    {
        return (pixel & 0xff000000) | QRgb(m_curves[0][redOf(pixel)]) << 16 | QRgb(m_curves[1][greenOf(pixel)]) << 8
            | m_curves[2][blueOf(pixel)];
    }

private:
    std::array<std::array<uchar, levels8>, 3> m_curves;
};

/// The first level from that end with more than `lost` pixels up to it.
template <class Iterator> size_t stepsPast(Iterator from, Iterator end, qint64 lost)
{
    qint64 passed = 0;
    const auto found = std::find_if(from, end, [&](quint32 count) { return (passed += count) > lost; });
    return size_t(found - from);
}

Curve stretch(const Histogram &histogram, double clipFraction)
{
    qint64 pixels = 0;
    for (const quint32 count : histogram)
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
    curves[0] = stretch(histograms[0], clipFraction);
    for (size_t i = 1; i < curves.size(); ++i)
        curves[i] = channels == Luminance ? curves[0] : stretch(histograms[i % channels], clipFraction);
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
    const auto byBytes = [&](const auto &histograms) { return ByteStretch(stretches(histograms, clipFraction)); };
    switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_Indexed8:
        return withTable(image, mapped(image.colorTable(), byBytes(histogramsOfPalette<channels>(image))));
    case QImage::Format_Grayscale8:
        return mappedPixels<uchar, uchar>(image, image.format(), byBytes(Histograms<1>{histogramOfBytes(image)}));
    case QImage::Format_RGBA64:
        return mappedPixels<QRgba64, QRgba64>(
            image, image.format(), DeepStretch{stretches(histogramsOfPixels<channels, QRgba64>(image), clipFraction)});
    default:
        return mappedPixels<QRgb, QRgb>(image, image.format(), byBytes(histogramsOfPixels<channels, QRgb>(image)));
    }
}

template <size_t channels> Result<Picture> stretched(const Picture &picture, double clipFraction)
{
    if (picture.isNull())
        return noPicture();
    if (!(clipFraction >= 0 && clipFraction < 0.5))
        return Failure{
            QCoreApplication::translate("Engine", "no more than half of a picture can be clipped at either end")};
    QImage pixels = stretched<channels>(picture.pixels, clipFraction);
    if (pixels.isNull())
        return noMemory();
    return remade(picture, std::move(pixels), picture.info.bitsPerPixel);
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
        return noPicture();
    if (image.format() == QImage::Format_Grayscale8)
        return picture;
    const bool transparent = hasTransparency(picture);
    const int bits = picture.info.bitsPerPixel;
    const bool hasPalette = image.depth() <= 8;
    if (hasPalette && (transparent || bits < 8 || image.format() == QImage::Format_Mono))
        return remade(picture, withTable(image, mapped(image.colorTable(), &greyOf)), bits);
    QImage grey = transparent ? greyChannels(image) : greyBytes(image);
    if (grey.isNull())
        return noMemory();
    return remade(picture, std::move(grey), transparent ? bits : 8);
}
