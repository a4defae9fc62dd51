#include "engine/codecs/encoders.h"

#include "engine/codecs/encodepixels.h"

#include <QHash>

#include <memory>

#include <libimagequant.h>

namespace {

constexpr qsizetype mostExactColors = 65'536;
constexpr int reducedColors = 256;
constexpr QRgb clear = 0;

/// The colours of a picture in the order in which they appear, and the number of each.
struct ColorNumbers
{
    QList<QRgb> colors;
    QHash<QRgb, int> numbers;
};

ColorNumbers countColors(const QImage &image)
{
    ColorNumbers found;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if ((x > 0 && row[x] == row[x - 1]) || found.numbers.contains(row[x]))
                continue;
            found.numbers.insert(row[x], int(found.colors.size()));
            found.colors.append(row[x]);
            if (found.colors.size() > mostExactColors)
                return found;
        }
    }
    return found;
}

/// Format_ARGB32 of opaque pixels and wholly clear ones, which is all that the format knows.
QImage opaqueOrClear(const Picture &picture)
{
    QImage image = opaqueRgb(picture);
    image.reinterpretAsFormat(QImage::Format_ARGB32);
    if (!hasTransparency(picture))
        return image;
    const QImage source = picture.pixels.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const from = reinterpret_cast<const QRgb *>(source.constScanLine(y));
        QRgb *const to = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(from[x]) == 0)
                to[x] = clear;
        }
    }
    return image;
}

template <auto release> struct Release
{
    template <class Thing> void operator()(Thing *thing) const { release(thing); }
};

void giveRow(liq_color row[], int y, int width, void *image)
{
    const QRgb *const from = reinterpret_cast<const QRgb *>(static_cast<const QImage *>(image)->constScanLine(y));
    for (int x = 0; x < width; ++x)
        row[x] = {uchar(qRed(from[x])), uchar(qGreen(from[x])), uchar(qBlue(from[x])), uchar(qAlpha(from[x]))};
}

/// The nearest of the best 256 colours for each pixel; clear ones stay clear. Null when memory is short.
QImage reduced(QImage image)
{
    const std::unique_ptr<liq_attr, Release<liq_attr_destroy>> attributes(liq_attr_create());
    liq_set_max_colors(attributes.get(), reducedColors);
    liq_set_speed(attributes.get(), 8);
    const std::unique_ptr<liq_image, Release<liq_image_destroy>> given(
        liq_image_create_custom(attributes.get(), giveRow, &image, image.width(), image.height(), 0));
    liq_result *made = nullptr;
    if (!given || liq_image_quantize(given.get(), attributes.get(), &made) != LIQ_OK)
        return {};
    const std::unique_ptr<liq_result, Release<liq_result_destroy>> result(made);
    liq_set_dithering_level(result.get(), 0);
    QImage indexed = allocateImage(image.size(), QImage::Format_Indexed8);
    if (indexed.isNull())
        return {};
    std::vector<uchar *> rows;
    for (int y = 0; y < indexed.height(); ++y)
        rows.push_back(indexed.scanLine(y));
    if (liq_write_remapped_image_rows(result.get(), given.get(), rows.data()) != LIQ_OK)
        return {};
    const liq_palette *const palette = liq_get_palette(result.get());
    for (int y = 0; y < image.height(); ++y) {
        QRgb *const to = reinterpret_cast<QRgb *>(image.scanLine(y));
        const uchar *const indices = indexed.constScanLine(y);
        for (int x = 0; x < image.width(); ++x) {
            const liq_color color = palette->entries[indices[x]];
            if (to[x] != clear)
                to[x] = qRgb(color.r, color.g, color.b);
        }
    }
    return image;
}

/// Printable characters without those that mean something inside a string of C.
QByteArray alphabet()
{
    QByteArray letters;
    for (char letter = ' '; letter <= '~'; ++letter) {
        if (letter != '"' && letter != '\\' && letter != '?')
            letters.append(letter);
    }
    return letters;
}

/// Each colour's characters, all equally many.
QByteArrayList namesFor(qsizetype colors)
{
    const QByteArray letters = alphabet();
    int length = 1;
    for (qsizetype names = letters.size(); names < colors; names *= letters.size())
        ++length;
    QByteArrayList names;
    for (qsizetype i = 0; i < colors; ++i) {
        QByteArray name;
        qsizetype rest = i;
        for (int j = 0; j < length; ++j, rest /= letters.size())
            name.append(letters[rest % letters.size()]);
        names.append(name);
    }
    return names;
}

}

Result<QByteArray> encodeXpm(const Picture &picture, const EncodeOptions &)
{
    QImage image = opaqueOrClear(picture);
    ColorNumbers found = countColors(image);
    if (found.colors.size() > mostExactColors) {
        image = reduced(image);
        if (image.isNull())
            return Failure{QStringLiteral("XPM: the colours could not be reduced")};
        found = countColors(image);
    }
    const QByteArrayList names = namesFor(found.colors.size());
    const auto number = [](qsizetype value) { return QByteArray::number(value); };
    QByteArray text = "/* XPM */\nstatic char *picture[] = {\n\"" + number(image.width()) + ' ' + number(image.height())
        + ' ' + number(found.colors.size()) + ' ' + number(names.first().size()) + "\",\n";
    for (qsizetype i = 0; i < found.colors.size(); ++i) {
        const QRgb color = found.colors[i];
        const QByteArray value = "#" + QByteArray::number(color & 0xffffff, 16).rightJustified(6, '0');
        text += '"' + names[i] + " c " + (color == clear ? QByteArray("None") : value) + "\",\n";
    }
    text.reserve(text.size() + image.height() * (image.width() * names.first().size() + 4));
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        text += '"';
        int current = -1;
        for (int x = 0; x < image.width(); ++x) {
            if (x == 0 || row[x] != row[x - 1])
                current = found.numbers.value(row[x]);
            text += names[current];
        }
        text += y + 1 < image.height() ? "\",\n" : "\"\n";
    }
    return text + "};\n";
}
