#include "engine/ops/emboss.h"

#include "engine/limits.h"
#include "engine/ops/rowbands.h"

#include <QCoreApplication>
#include <QRgba64>

#include <cstring>
#include <limits>
#include <type_traits>
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

/// What a pixel of a format is made of: `channels` numbers, of which the one at `alphaAt` (if there is one) tells the
/// opacity.
template <class Number, int channelCount, int alphaPlace> struct Layout
{
    using Level = Number;
    static constexpr int channels = channelCount;
    static constexpr int alphaAt = alphaPlace;
    static constexpr int most = std::numeric_limits<Number>::max();
    /// Holds what seven of them come to; a narrow one lets the compiler take more of them at a time.
    using Sum = std::conditional_t<sizeof(Number) == 1, qint16, qint32>;
};
using GreyBytes = Layout<uchar, 1, -1>;
using ColorBytes = Layout<uchar, 4, Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? 3 : 0>;
using DeepColors = Layout<quint16, 4, 3>;

/// A row with one pixel more at either end.
template <class Pixels> class PaddedRow
{
public:
    using Level = typename Pixels::Level;
    explicit PaddedRow(int width)
        : m_width(width)
        , m_levels(size_t(width + 2) * Pixels::channels)
    {
    }

    void fill(const QImage &image, int y, Level ground)
    {
        constexpr size_t pixelBytes = sizeof(Level) * Pixels::channels;
        const uchar *const from = image.constScanLine(std::clamp(y, 0, image.height() - 1));
        std::memcpy(row(), from, pixelBytes * size_t(m_width));
        if constexpr (Pixels::alphaAt >= 0) {
            for (int x = 0; x < m_width; ++x) {
                Level *const pixel = row() + x * Pixels::channels;
                if (pixel[Pixels::alphaAt] == 0) {
                    std::fill_n(pixel, Pixels::channels, ground);
                    pixel[Pixels::alphaAt] = 0;
                }
            }
        }
        std::memcpy(m_levels.data(), row(), pixelBytes);
        std::memcpy(row() + m_width * Pixels::channels, row() + (m_width - 1) * Pixels::channels, pixelBytes);
    }
    /// Its first pixel that lies in the picture.
    Level *row() { return m_levels.data() + Pixels::channels; }
    const Level *row() const { return m_levels.data() + Pixels::channels; }

private:
    int m_width;
    std::vector<Level> m_levels;
};

template <class Pixels>
void embossRow(const PaddedRow<Pixels> &above, const PaddedRow<Pixels> &here, const PaddedRow<Pixels> &below,
    int ground, int width, typename Pixels::Level *to)
{
    constexpr int next = Pixels::channels;
    const auto *const up = above.row();
    const auto *const middle = here.row();
    const auto *const down = below.row();
    using Sum = typename Pixels::Sum;
    for (int i = 0; i < width * Pixels::channels; ++i) {
        const Sum light = Sum(Sum(middle[i + next]) + Sum(down[i]) + Sum(down[i + next]));
        const Sum shadow = Sum(Sum(middle[i - next]) + Sum(up[i]) + Sum(up[i - next]));
        const Sum level = Sum(Sum(ground) + light - shadow);
        to[i] = typename Pixels::Level(std::clamp(level, Sum(0), Sum(Pixels::most)));
    }
    if constexpr (Pixels::alphaAt >= 0) {
        for (int i = Pixels::alphaAt; i < width * Pixels::channels; i += Pixels::channels)
            to[i] = middle[i];
    }
}

template <class Pixels> QImage relief(const QImage &image, int ground)
{
    using Level = typename Pixels::Level;
    QImage result = allocateImage(image.size(), image.format());
    if (result.isNull())
        return {};
    const Level level = Level(ground * (Pixels::most / 255));
    uchar *const pixels = result.bits();
    const qsizetype stride = result.bytesPerLine();
    forRowBands(image.size(), [&](int first, int end) {
        PaddedRow<Pixels> above(image.width());
        PaddedRow<Pixels> here(image.width());
        PaddedRow<Pixels> below(image.width());
        above.fill(image, first - 1, level);
        here.fill(image, first, level);
        for (int y = first; y < end; ++y) {
            below.fill(image, y + 1, level);
            embossRow(above, here, below, level, image.width(), reinterpret_cast<Level *>(pixels + y * stride));
            std::swap(above, here);
            std::swap(here, below);
        }
    });
    return result;
}

/// A palette as the channels that a relief needs.
QImage withoutPalette(const Picture &picture)
{
    const QImage image = picture.pixels.convertToFormat(QImage::Format_Indexed8);
    if (hasTransparency(picture))
        return image.convertToFormat(QImage::Format_ARGB32);
    const QList<QRgb> table = image.colorTable();
    if (!std::all_of(table.begin(), table.end(), [](QRgb color) { return qIsGray(color); }))
        return image.convertToFormat(QImage::Format_RGB32);
    return mappedPixels<uchar, uchar>(
        image, QImage::Format_Grayscale8, [&](uchar index) { return uchar(qRed(table.value(index))); });
}

}

Result<Picture> embossed(const Picture &picture, int ground)
{
    if (picture.isNull())
        return noPicture();
    if (!limits::allows(picture.pixels.size(), 12))
        return noMemory();
    const int level = std::clamp(ground, 0, 255);
    const bool isGrey = picture.pixels.format() == QImage::Format_Grayscale8;
    const QImage image = picture.pixels.depth() <= 8 && !isGrey ? withoutPalette(picture) : picture.pixels;
    if (image.isNull())
        return noMemory();
    const auto answer = [&](QImage pixels, int bits) {
        return pixels.isNull() ? Result<Picture>(noMemory()) : remade(picture, std::move(pixels), bits);
    };
    switch (image.format()) {
    case QImage::Format_Grayscale8:
        return answer(relief<GreyBytes>(image, level), 8);
    case QImage::Format_RGBA64:
        return answer(relief<DeepColors>(image, level), picture.info.bitsPerPixel);
    default:
        return answer(relief<ColorBytes>(image, level), image.format() == QImage::Format_ARGB32 ? 32 : 24);
    }
}
