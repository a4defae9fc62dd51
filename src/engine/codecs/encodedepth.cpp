#include "engine/codecs/encodedepth.h"

#include <algorithm>
#include <cstring>

namespace {

int bitsFor(int largest)
{
    int bits = 1;
    while (largest >> bits)
        ++bits;
    return bits;
}

int largestIndex(const QImage &indexed)
{
    int largest = 0;
    for (int y = 0; y < indexed.height() && largest < 255; ++y) {
        const uchar *const row = indexed.constScanLine(y);
        largest = std::max(largest, int(*std::max_element(row, row + indexed.width())));
    }
    return largest;
}

/// Whether all values are steps of a ramp of that many bits.
bool fitsRamp(const QImage &grey, int bits)
{
    const int step = 255 / ((1 << bits) - 1);
    for (int y = 0; y < grey.height(); ++y) {
        const uchar *const row = grey.constScanLine(y);
        if (std::any_of(row, row + grey.width(), [step](uchar value) { return value % step != 0; }))
            return false;
    }
    return true;
}

QList<QRgb> ramp(int bits)
{
    QList<QRgb> table(1 << bits);
    const int step = 255 / ((1 << bits) - 1);
    for (int i = 0; i < table.size(); ++i)
        table[i] = qRgb(i * step, i * step, i * step);
    return table;
}

QList<QRgb> overWhite(const QList<QRgb> &colors)
{
    QList<QRgb> opaque = colors;
    for (QRgb &color : opaque) {
        const int alpha = qAlpha(color);
        const auto blend = [alpha](int channel) { return (channel * alpha + 255 * (255 - alpha) + 127) / 255; };
        color = qRgb(blend(qRed(color)), blend(qGreen(color)), blend(qBlue(color)));
    }
    return opaque;
}

PalettePixels greyPixels(const Picture &picture, std::initializer_list<int> depths)
{
    PalettePixels result{picture.pixels, {}, 8};
    const int nominal = picture.info.bitsPerPixel;
    for (const int bits : depths) {
        if (bits < 8 && bits >= nominal && fitsRamp(picture.pixels, bits)) {
            result.bits = bits;
            break;
        }
    }
    result.table = ramp(result.bits);
    if (result.bits < 8) {
        const int step = 255 / ((1 << result.bits) - 1);
        for (int y = 0; y < result.pixels.height(); ++y) {
            uchar *const row = result.pixels.scanLine(y);
            std::transform(row, row + result.pixels.width(), row, [step](uchar value) { return uchar(value / step); });
        }
    }
    result.pixels.reinterpretAsFormat(QImage::Format_Indexed8);
    return result;
}

}

void PalettePixels::packRow(int y, uchar *to) const
{
    const uchar *const from = pixels.constScanLine(y);
    const int width = pixels.width();
    if (bits == 8) {
        std::memcpy(to, from, size_t(width));
        return;
    }
    if (pixels.format() == QImage::Format_Mono) {
        std::memcpy(to, from, size_t(packedBytes()));
        if (const int over = width % 8)
            to[width / 8] &= uchar(0xff00 >> over);
        return;
    }
    std::memset(to, 0, size_t(packedBytes()));
    const int perByte = 8 / bits;
    for (int x = 0; x < width; ++x)
        to[x / perByte] |= uchar(from[x] << (8 - bits * (x % perByte + 1)));
}

PalettePixels palettePixels(const Picture &picture, std::initializer_list<int> depths, Transparency transparency)
{
    if (picture.pixels.format() == QImage::Format_Grayscale8)
        return greyPixels(picture, depths);
    const bool mono = picture.pixels.format() == QImage::Format_Mono;
    if (!mono && picture.pixels.format() != QImage::Format_Indexed8)
        return {};
    PalettePixels result;
    result.pixels =
        mono && *depths.begin() > 1 ? picture.pixels.convertToFormat(QImage::Format_Indexed8) : picture.pixels;
    result.table =
        transparency == Transparency::Kept ? picture.pixels.colorTable() : overWhite(picture.pixels.colorTable());
    const int nominal = mono ? 1 : std::clamp(picture.info.bitsPerPixel, 1, 8);
    const int needed = mono ? 1 : std::max(nominal, bitsFor(largestIndex(picture.pixels)));
    result.bits = *std::find_if(depths.begin(), depths.end() - 1, [&](int bits) { return bits >= needed; });
    result.table.resize(1 << result.bits, qRgb(0, 0, 0));
    return result;
}

bool isBlackAndWhite(const QList<QRgb> &table)
{
    constexpr QRgb black = qRgb(0, 0, 0);
    constexpr QRgb white = qRgb(255, 255, 255);
    return table.size() == 2 && ((table[0] == black && table[1] == white) || (table[0] == white && table[1] == black));
}

bool isAllGrey(const QImage &image)
{
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const row = image.constScanLine(y);
        if (image.format() == QImage::Format_RGBA64) {
            const auto *const deep = reinterpret_cast<const QRgba64 *>(row);
            if (!std::all_of(deep, deep + image.width(),
                    [](QRgba64 p) { return p.red() == p.green() && p.green() == p.blue(); }))
                return false;
        } else {
            const auto *const pixels = reinterpret_cast<const QRgb *>(row);
            if (!std::all_of(pixels, pixels + image.width(), [](QRgb p) { return qIsGray(p); }))
                return false;
        }
    }
    return true;
}

void toBgr(const QRgb *from, int count, uchar *to)
{
    for (int x = 0; x < count; ++x, to += 3) {
        to[0] = uchar(qBlue(from[x]));
        to[1] = uchar(qGreen(from[x]));
        to[2] = uchar(qRed(from[x]));
    }
}

void toRgb(const QRgb *from, int count, uchar *to)
{
    for (int x = 0; x < count; ++x, to += 3) {
        to[0] = uchar(qRed(from[x]));
        to[1] = uchar(qGreen(from[x]));
        to[2] = uchar(qBlue(from[x]));
    }
}
