#include "engine/ops/quantise.h"

#include "engine/picture.h"

#include <libimagequant.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

template <auto release> struct Released
{
    template <class T> void operator()(T *object) const { release(object); }
};
using Attributes = std::unique_ptr<liq_attr, Released<liq_attr_destroy>>;
using Image = std::unique_ptr<liq_image, Released<liq_image_destroy>>;
using Outcome = std::unique_ptr<liq_result, Released<liq_result_destroy>>;

/// Searching longer for a palette pays on small pictures; on large ones nobody sees the difference and everybody waits.
constexpr int thoroughSpeed = 4;
constexpr int quickSpeed = 8;
constexpr qint64 thoroughPixels = 4'000'000;

liq_color opaque(QRgb pixel)
{
    return {uchar(qRed(pixel)), uchar(qGreen(pixel)), uchar(qBlue(pixel)), 255};
}

/// Called row by row, so that no second copy of the picture is needed. A transparent pixel passes for the one before
/// it: it takes no part in the palette and spreads no error.
void giveRow(liq_color *to, int y, int width, void *image)
{
    const QImage &source = *static_cast<const QImage *>(image);
    const QRgb *const row = reinterpret_cast<const QRgb *>(source.constScanLine(y));
    if (source.format() == QImage::Format_RGB32) {
        std::transform(row, row + width, to, opaque);
        return;
    }
    const QRgb *const first = std::find_if(row, row + width, [](QRgb pixel) { return qAlpha(pixel) != 0; });
    QRgb last = first == row + width ? qRgb(255, 255, 255) : *first;
    for (int x = 0; x < width; ++x) {
        if (qAlpha(row[x]) != 0)
            last = row[x];
        to[x] = opaque(last);
    }
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
    return Failure{error == LIQ_OUT_OF_MEMORY ? QStringLiteral("there is not enough memory for the palette")
                                              : QStringLiteral("no palette could be made (%1)").arg(int(error))};
}

}

Result<QImage> quantised(const QImage &image, int colors, bool diffuse)
{
    const bool hasAlpha = image.format() == QImage::Format_ARGB32;
    QImage source = image;
    const Attributes attributes(liq_attr_create());
    if (!attributes)
        return refused(LIQ_OUT_OF_MEMORY);
    const qint64 pixels = qint64(image.width()) * image.height();
    liq_set_speed(attributes.get(), pixels <= thoroughPixels ? thoroughSpeed : quickSpeed);
    liq_set_max_colors(attributes.get(), std::max(2, colors - (hasAlpha ? 1 : 0)));
    const Image input(liq_image_create_custom(attributes.get(), giveRow, &source, image.width(), image.height(), 0));
    if (!input)
        return refused(LIQ_OUT_OF_MEMORY);
    liq_result *made = nullptr;
    if (const liq_error error = liq_image_quantize(input.get(), attributes.get(), &made); error != LIQ_OK)
        return refused(error);
    const Outcome outcome(made);
    liq_set_dithering_level(outcome.get(), diffuse ? 1.0F : 0.0F);

    QImage indexed = allocateImage(image.size(), QImage::Format_Indexed8);
    if (indexed.isNull())
        return refused(LIQ_OUT_OF_MEMORY);
    std::vector<uchar *> rows(size_t(image.height()));
    for (int y = 0; y < image.height(); ++y)
        rows[size_t(y)] = indexed.scanLine(y);
    if (const liq_error error = liq_write_remapped_image_rows(outcome.get(), input.get(), rows.data()); error != LIQ_OK)
        return refused(error);
    // Asked for last: writing without diffusion still betters the palette.
    QList<QRgb> palette = paletteOf(outcome.get(), isAllGrey(image));
    if (hasAlpha) {
        putTransparentEntry(image, indexed, uchar(palette.size()));
        palette.append(qRgba(0, 0, 0, 0));
    }
    indexed.setColorTable(palette);
    return indexed;
}
