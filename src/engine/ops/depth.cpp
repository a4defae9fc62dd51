#include "engine/ops/depth.h"

#include "engine/codecs/encodepixels.h"
#include "engine/limits.h"
#include "engine/ops/colorset.h"
#include "engine/ops/quantise.h"
#include "engine/ops/rowbands.h"

#include <QCoreApplication>

#include <algorithm>

namespace {

Failure noMemory()
{
    return Failure{QCoreApplication::translate("Engine", "the picture is too large for this")};
}

bool isPaletted(const QImage &image)
{
    return image.depth() <= 8 && image.format() != QImage::Format_Grayscale8;
}

/// Pixels that already are what a palette of that size at that depth may be.
bool fits(const QImage &image, int colors, int bits)
{
    if (image.format() == QImage::Format_Grayscale8)
        return bits == 8 && colors == 256;
    if (bits == 1)
        return image.format() == QImage::Format_Mono;
    return image.format() == QImage::Format_Indexed8 && image.colorCount() <= colors;
}

enum class Alpha { None, Whole, Graded };

Alpha alphaOf(const QImage &image)
{
    if (image.format() != QImage::Format_ARGB32)
        return Alpha::None;
    Alpha alpha = Alpha::None;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(row[x]) == 255)
                continue;
            if (qAlpha(row[x]) != 0)
                return Alpha::Graded;
            alpha = Alpha::Whole;
        }
    }
    return alpha;
}

/// Indexed8 with at most two colours as Format_Mono, the darker one 0.
QImage asMono(const QImage &indexed)
{
    QList<QRgb> table = indexed.colorTable();
    while (table.size() < 2)
        table.append(table.value(0) == qRgb(255, 255, 255) ? qRgb(0, 0, 0) : qRgb(255, 255, 255));
    QImage mono = allocateImage(indexed.size(), QImage::Format_Mono);
    if (mono.isNull())
        return {};
    mono.setColorTable(table);
    const int bytes = (indexed.width() + 7) / 8;
    for (int y = 0; y < indexed.height(); ++y) {
        const uchar *const from = indexed.constScanLine(y);
        uchar *const to = mono.scanLine(y);
        std::fill_n(to, bytes, uchar(0));
        for (int x = 0; x < indexed.width(); ++x)
            to[x / 8] = uchar(to[x / 8] | from[x] << (7 - x % 8));
    }
    return mono;
}

Result<Picture> withPalette(const Picture &picture, QImage indexed, int bits)
{
    QImage pixels = bits == 1 ? asMono(indexed) : std::move(indexed);
    if (pixels.isNull())
        return noMemory();
    return remade(picture, std::move(pixels), bits);
}

/// The pixels as the palette makers take them: RGB32 when nothing shows the ground, else ARGB32.
QImage trueColor(const QImage &image, bool hasAlpha)
{
    return image.convertToFormat(hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
}

enum class TwoColors { BlackAndWhite, Best };

Result<Picture> reduced(const Picture &picture, int colors, int bits, bool diffuse, TwoColors two)
{
    if (picture.isNull())
        return Failure{QCoreApplication::translate("Engine", "there is no picture to reduce")};
    if (colors < 2 || colors > 256 || (bits != 1 && bits != 4 && bits != 8))
        return Failure{
            QCoreApplication::translate("Engine", "there is no palette of %1 colors at %2 bits").arg(colors).arg(bits)};
    const int most = std::min(colors, 1 << bits);
    if (fits(picture.pixels, most, bits))
        return remade(picture, picture.pixels, bits);
    if (!limits::allows(picture.pixels.size(), 12))
        return noMemory();

    QImage image = picture.pixels.format() == QImage::Format_RGBA64
        ? trueColor(picture.pixels, hasTransparency(picture))
        : picture.pixels;
    if (const QList<QRgb> exact = colorsOf(image, most); exact.size() <= most)
        return withPalette(picture, indexedBy(image, exact), bits);
    if (bits == 1 && two == TwoColors::BlackAndWhite) {
        QImage mono = blackAndWhite(picture, diffuse);
        if (mono.isNull())
            return noMemory();
        return remade(picture, std::move(mono), bits);
    }

    if (image.depth() < 32)
        image = trueColor(image, hasTransparency(picture));
    const Alpha alpha = alphaOf(image);
    // Shades of transparency have no place in a palette, and one entry of two is too much for it.
    if (alpha == Alpha::Graded || (alpha == Alpha::Whole && most < 4)) {
        const Picture opaque = remade(picture, opaqueRgb(picture), bits);
        return reduced(opaque, most, bits, diffuse, two);
    }
    if (alpha == Alpha::None)
        image.reinterpretAsFormat(QImage::Format_RGB32);
    Result<QImage> indexed = quantised(image, most, diffuse);
    return indexed ? withPalette(picture, *std::move(indexed), bits) : Result<Picture>(indexed.failure());
}

}

Result<Picture> withBitsPerPixel(const Picture &picture, int bits)
{
    if (picture.isNull())
        return Failure{QCoreApplication::translate("Engine", "there is no picture to change")};
    const QImage &pixels = picture.pixels;
    switch (bits) {
    case 1:
        return reduced(picture, 2, 1, false, TwoColors::BlackAndWhite);
    case 4:
    case 8:
        // Upwards an index keeps its meaning: the table stays as it is.
        if (picture.info.bitsPerPixel < bits && isPaletted(pixels) && pixels.colorCount() <= 1 << bits)
            return remade(picture, pixels.convertToFormat(QImage::Format_Indexed8), bits);
        return reduced(picture, 1 << bits, bits, false, TwoColors::Best);
    case 24:
    case 32: {
        if (!limits::allows(pixels.size(), 8))
            return noMemory();
        QImage image = bits == 24 ? opaqueRgb(picture) : pixels.convertToFormat(QImage::Format_ARGB32);
        if (image.isNull())
            return noMemory();
        return remade(picture, std::move(image), bits);
    }
    default:
        return Failure{QCoreApplication::translate("Engine", "there are no pictures of %1 bits").arg(bits)};
    }
}

Result<Picture> withReducedColors(const Picture &picture, int colors, int bits, bool diffuse)
{
    return reduced(picture, colors, bits, diffuse, colors == 2 ? TwoColors::BlackAndWhite : TwoColors::Best);
}

Result<Picture> withReducedBits(const Picture &picture, int bits, bool diffuse)
{
    if (bits != 1 && bits != 4 && bits != 8)
        return Failure{QCoreApplication::translate("Engine", "there is no palette of %1 bits").arg(bits)};
    return reduced(picture, 1 << bits, bits, diffuse, TwoColors::Best);
}

int countColors(const Picture &picture, int limit)
{
    return picture.isNull() ? 0 : colorCountOf(picture.pixels, limit);
}
