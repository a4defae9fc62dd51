#include "engine/codecs/encodepixels.h"

#include <algorithm>

namespace {

QRgb overWhite(QRgb color)
{
    const int alpha = qAlpha(color);
    const auto blend = [&](int channel) { return (channel * alpha + 255 * (255 - alpha) + 127) / 255; };
    return qRgb(blend(qRed(color)), blend(qGreen(color)), blend(qBlue(color)));
}

}

QImage opaqueRgb(const Picture &picture)
{
    if (picture.pixels.format() == QImage::Format_RGB32)
        return picture.pixels;
    if (!hasTransparency(picture))
        return picture.pixels.convertToFormat(QImage::Format_RGB32);
    QImage image = picture.pixels.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        std::transform(row, row + image.width(), row, overWhite);
    }
    image.reinterpretAsFormat(QImage::Format_RGB32);
    return image;
}

QImage rgbOrArgb(const Picture &picture)
{
    return hasTransparency(picture) ? picture.pixels.convertToFormat(QImage::Format_ARGB32) : opaqueRgb(picture);
}

QImage opaqueIndexed(const Picture &picture)
{
    const QImage::Format format = picture.pixels.format();
    if (format != QImage::Format_Mono && format != QImage::Format_Indexed8 && format != QImage::Format_Grayscale8)
        return {};
    QImage image = picture.pixels;
    if (format == QImage::Format_Grayscale8) {
        QList<QRgb> ramp(256);
        for (int i = 0; i < 256; ++i)
            ramp[i] = qRgb(i, i, i);
        image.reinterpretAsFormat(QImage::Format_Indexed8);
        image.setColorTable(ramp);
        return image;
    }
    if (format == QImage::Format_Mono)
        image = image.convertToFormat(QImage::Format_Indexed8);
    QList<QRgb> table = image.colorTable();
    std::transform(table.begin(), table.end(), table.begin(), overWhite);
    image.setColorTable(table);
    return image;
}

bool isGreyRamp(const QList<QRgb> &table, int bits)
{
    const int top = (1 << bits) - 1;
    if (table.size() > top + 1)
        return false;
    for (int i = 0; i < table.size(); ++i) {
        const int grey = (i * 255 + top / 2) / top;
        if (table[i] != qRgb(grey, grey, grey))
            return false;
    }
    return true;
}

namespace {

bool isOfOneColor(const QImage &mono)
{
    const bool first = mono.pixelIndex(0, 0) != 0;
    const uchar whole = first ? 0xff : 0;
    const int bytes = mono.width() / 8;
    const uchar rest = uchar(0xff00 >> mono.width() % 8);
    for (int y = 0; y < mono.height(); ++y) {
        const uchar *const row = mono.constScanLine(y);
        if (std::any_of(row, row + bytes, [whole](uchar byte) { return byte != whole; })
            || (rest != 0 && ((row[bytes] ^ whole) & rest) != 0))
            return false;
    }
    return true;
}

/// Two colours of different brightness as black and white; null for all other pictures.
QImage twoColorsAsBlackAndWhite(const Picture &picture)
{
    if (picture.pixels.format() != QImage::Format_Mono || picture.pixels.colorCount() != 2
        || isOfOneColor(picture.pixels))
        return {};
    const int first = qGray(overWhite(picture.pixels.color(0)));
    const int second = qGray(overWhite(picture.pixels.color(1)));
    if (first == second)
        return {};
    QImage mono = picture.pixels;
    if (first > second)
        mono.invertPixels();
    return mono;
}

}

QImage blackAndWhite(const Picture &picture, bool diffuse)
{
    if (QImage mono = twoColorsAsBlackAndWhite(picture); !mono.isNull()) {
        mono.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
        return mono;
    }
    const Qt::ImageConversionFlags how = Qt::MonoOnly | (diffuse ? Qt::DiffuseDither : Qt::ThresholdDither);
    const QImage mono = opaqueRgb(picture).convertToFormat(QImage::Format_Mono, how);
    QImage ordered = mono;
    if (mono.colorCount() == 2 && qGray(mono.color(0)) > qGray(mono.color(1))) {
        ordered.invertPixels();
    }
    ordered.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    return ordered;
}

QImage greyscale(const Picture &picture)
{
    if (picture.pixels.format() == QImage::Format_Grayscale8)
        return picture.pixels;
    const QImage rgb = opaqueRgb(picture);
    QImage grey = allocateImage(rgb.size(), QImage::Format_Grayscale8);
    for (int y = 0; y < grey.height(); ++y) {
        const QRgb *const from = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        std::transform(from, from + rgb.width(), grey.scanLine(y), [](QRgb pixel) { return uchar(qGray(pixel)); });
    }
    grey.setDotsPerMeterX(rgb.dotsPerMeterX());
    grey.setDotsPerMeterY(rgb.dotsPerMeterY());
    return grey;
}
