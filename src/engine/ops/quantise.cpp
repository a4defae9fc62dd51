#include "engine/ops/quantise.h"

#include "engine/ops/diffusion.h"
#include "engine/ops/nearestcolor.h"
#include "engine/picture.h"

#include <QCoreApplication>

#include <libimagequant.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <vector>

// Of the run-time library of OpenMP; not every compiler brings its header.
extern "C" {
int omp_get_max_threads();
void omp_set_num_threads(int threads);
}

namespace {

template <auto release> struct Released
{
    template <class T> void operator()(T *object) const { release(object); }
};
using Attributes = std::unique_ptr<liq_attr, Released<liq_attr_destroy>>;
using Image = std::unique_ptr<liq_image, Released<liq_image_destroy>>;
using Outcome = std::unique_ptr<liq_result, Released<liq_result_destroy>>;

constexpr int speed = 4; // 1 takes longest; below this nothing is gained that can be measured
constexpr double samplePixels = 1e6;
constexpr int settlingRounds = 3;

liq_color opaque(QRgb pixel)
{
    return {uchar(qRed(pixel)), uchar(qGreen(pixel)), uchar(qBlue(pixel)), 255};
}

/// About a million pixels stand for all of a large picture: more change nothing that can be seen, and take their time.
/// One of each square is taken, at a place of its own in it, so that no pattern of the picture hides. A transparent
/// pixel is passed over.
std::vector<liq_color> sampleOf(const QImage &image, int side)
{
    const bool hasAlpha = image.format() == QImage::Format_ARGB32;
    std::vector<liq_color> sample;
    quint32 random = 1;
    for (int top = 0; top < image.height(); top += side) {
        for (int left = 0; left < image.width(); left += side) {
            random = random * 1664525 + 1013904223;
            const int x = std::min(left + int(random >> 16) % side, image.width() - 1);
            const int y = std::min(top + int(random >> 24) % side, image.height() - 1);
            const QRgb pixel = reinterpret_cast<const QRgb *>(image.constScanLine(y))[x];
            if (!hasAlpha || qAlpha(pixel) != 0)
                sample.push_back(opaque(pixel));
        }
    }
    return sample;
}

std::vector<liq_color> sampleOf(const QImage &image)
{
    const double pixels = double(image.width()) * image.height();
    const int side = std::max(1, int(std::ceil(std::sqrt(pixels / samplePixels))));
    std::vector<liq_color> sample = sampleOf(image, side);
    // Little that can be seen in a large picture: all of it counts.
    return side > 1 && sample.size() < samplePixels / 100 ? sampleOf(image, 1) : sample;
}

/// Moves every entry to the mean of the pixels that are nearest to it, some times over.
QList<QRgb> settled(QList<QRgb> palette, const std::vector<liq_color> &sample)
{
    struct Sum
    {
        std::array<quint64, 3> channels{};
        quint64 count = 0;
    };
    for (int round = 0; round < settlingRounds; ++round) {
        NearestColor nearest(palette);
        std::vector<Sum> sums(size_t(palette.size()));
        for (const liq_color &color : sample) {
            Sum &sum = sums[size_t(nearest.indexOf({color.r, color.g, color.b}))];
            sum.channels[0] += color.r;
            sum.channels[1] += color.g;
            sum.channels[2] += color.b;
            ++sum.count;
        }
        for (qsizetype i = 0; i < palette.size(); ++i) {
            const Sum &sum = sums[size_t(i)];
            if (sum.count == 0)
                continue;
            const auto mean = [&](size_t channel) { return int((sum.channels[channel] + sum.count / 2) / sum.count); };
            palette[i] = qRgb(mean(0), mean(1), mean(2));
        }
    }
    return palette;
}

bool isAllGrey(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        if (!std::all_of(row, row + image.width(), [](QRgb pixel) { return qIsGray(pixel); }))
            return false;
    }
    return true;
}

QList<QRgb> paletteOf(liq_result *outcome, bool grey)
{
    const liq_palette *const palette = liq_get_palette(outcome);
    QList<QRgb> colors;
    for (unsigned i = 0; i < palette->count; ++i) {
        const liq_color &entry = palette->entries[i];
        const int middle = (entry.r + entry.g + entry.b + 1) / 3;
        colors.append(grey ? qRgb(middle, middle, middle) : qRgb(entry.r, entry.g, entry.b));
    }
    return colors;
}

void mapToNearest(const QImage &image, const QList<QRgb> &palette, QImage &indexed)
{
    NearestColor nearest(palette);
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const from = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        std::transform(from, from + image.width(), indexed.scanLine(y),
            [&](QRgb pixel) { return uchar(nearest.indexOf(NearestColor::colorOf(pixel))); });
    }
}

void putTransparentEntry(const QImage &source, QImage &indexed, uchar entry)
{
    for (int y = 0; y < source.height(); ++y) {
        const QRgb *const from = reinterpret_cast<const QRgb *>(source.constScanLine(y));
        uchar *const to = indexed.scanLine(y);
        for (int x = 0; x < source.width(); ++x) {
            if (qAlpha(from[x]) == 0)
                to[x] = entry;
        }
    }
}

Failure refused(liq_error error)
{
    return Failure{error == LIQ_OUT_OF_MEMORY
            ? QCoreApplication::translate("Engine", "there is not enough memory for the palette")
            : QCoreApplication::translate("Engine", "no palette could be made (%1)").arg(int(error))};
}

/// The library's sums depend on how many threads share them, in the last bits: with one the palette of a picture is the
/// same on every machine, and pictures that are worked on side by side do not fight for the cores.
class OneThread
{
public:
    OneThread() { omp_set_num_threads(1); }
    ~OneThread() { omp_set_num_threads(m_before); }
    Q_DISABLE_COPY_MOVE(OneThread)

private:
    const int m_before = omp_get_max_threads();
};

Result<QList<QRgb>> paletteFor(const std::vector<liq_color> &sample, int colors, bool grey)
{
    const Attributes attributes(liq_attr_create());
    if (!attributes)
        return refused(LIQ_OUT_OF_MEMORY);
    liq_set_speed(attributes.get(), speed);
    liq_set_max_colors(attributes.get(), colors);
    const Image input(liq_image_create_rgba(attributes.get(), sample.data(), int(sample.size()), 1, 0));
    if (!input)
        return refused(LIQ_OUT_OF_MEMORY);
    liq_result *made = nullptr;
    const OneThread alone;
    if (const liq_error error = liq_image_quantize(input.get(), attributes.get(), &made); error != LIQ_OK)
        return refused(error);
    const Outcome outcome(made);
    return paletteOf(outcome.get(), grey);
}

}

Result<QImage> quantised(const QImage &image, int colors, bool diffused)
{
    const bool hasAlpha = image.format() == QImage::Format_ARGB32;
    const bool grey = isAllGrey(image);
    const std::vector<liq_color> sample = sampleOf(image);
    Result<QList<QRgb>> found = paletteFor(sample, std::max(2, colors - (hasAlpha ? 1 : 0)), grey);
    if (!found)
        return found.failure();
    QImage indexed = allocateImage(image.size(), QImage::Format_Indexed8);
    if (indexed.isNull())
        return refused(LIQ_OUT_OF_MEMORY);
    QList<QRgb> palette = settled(*std::move(found), sample);
    if (diffused)
        diffuse(image, palette, indexed);
    else
        mapToNearest(image, palette, indexed);
    if (hasAlpha) {
        putTransparentEntry(image, indexed, uchar(palette.size()));
        palette.append(qRgba(0, 0, 0, 0));
    }
    indexed.setColorTable(palette);
    return indexed;
}
