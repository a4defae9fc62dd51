#include "engine/testpictures.h"

#include "support/support.h"

namespace {

Picture paletted(QSize size, int bits, bool clearEntry = false)
{
    QImage image(size, QImage::Format_Indexed8);
    QList<QRgb> table;
    for (int i = 0; i < 1 << bits; ++i)
        table.append(qRgb(i * 37 & 255, i * 91 & 255, 255 - i));
    if (clearEntry)
        table[1] = qRgba(0, 0, 0, 0);
    image.setColorTable(table);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.scanLine(y)[x] = uchar((x * 3 + y * 5) & ((1 << bits) - 1));
    }
    Picture picture = Picture::fromImage(image);
    picture.info.bitsPerPixel = bits;
    return picture;
}

Picture mono(QSize size, QRgb zero, QRgb one)
{
    QImage image(size, QImage::Format_Mono);
    image.setColorTable({zero, one});
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, uint((x * x + y) % 3 == 0));
    }
    return Picture::fromImage(image);
}

Picture greyRamp(QSize size, int bits)
{
    QImage image(size, QImage::Format_Grayscale8);
    const int step = 255 / ((1 << bits) - 1);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.scanLine(y)[x] = uchar((x + y) % (1 << bits) * step);
    }
    Picture picture = Picture::fromImage(image);
    picture.info.bitsPerPixel = bits;
    return picture;
}

Picture withAlpha(QSize size)
{
    QImage image = rampImage(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, (image.pixel(x, y) & 0xffffff) | uint((x * 50 + y) & 255) << 24);
    }
    return Picture::fromImage(image);
}

Picture deep(QSize size, int bits)
{
    QImage image(size, QImage::Format_RGBA64);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const auto mixed = [&](int factor) { return quint16((x * 977 + y * 3571) * factor); };
            reinterpret_cast<QRgba64 *>(image.scanLine(y))[x] = bits == 16
                ? QRgba64::fromRgba64(mixed(1), mixed(1), mixed(1), 0xffff)
                : QRgba64::fromRgba64(mixed(1), mixed(3), mixed(7), bits == 64 ? mixed(5) : quint16(0xffff));
        }
    }
    Picture picture = Picture::fromImage(image);
    picture.info.bitsPerPixel = bits;
    return picture;
}

}

QList<TestPicture> testPictures()
{
    constexpr QRgb black = qRgb(0, 0, 0), white = qRgb(255, 255, 255);
    return {
        {"two colours, white first", mono({19, 11}, white, black)},
        {"two colours, black first", mono({16, 5}, black, white)},
        {"red and blue", mono({25, 4}, qRgb(255, 0, 0), qRgb(0, 0, 255))},
        {"4-bit palette", paletted({25, 9}, 4)},
        {"8-bit palette", paletted({31, 17}, 8)},
        {"few colours of an 8-bit file",
            [] {
                Picture picture = paletted({13, 7}, 3);
                picture.info.bitsPerPixel = 8;
                return picture;
            }(),
            false},
        {"palette with a clear colour", paletted({9, 9}, 2, true)},
        {"grey", greyRamp({33, 12}, 8)},
        {"4-bit grey", greyRamp({15, 3}, 4), false},
        {"true colour", Picture::fromImage(rampImage({37, 29}))},
        {"one pixel", Picture::fromImage(rampImage({1, 1})), false},
        {"one column", Picture::fromImage(rampImage({1, 40})), false},
        {"long runs",
            [] {
                QImage image({400, 3}, QImage::Format_RGB32);
                image.fill(0xffc0c1ff);
                image.setPixel(200, 1, 0xff102030);
                return Picture::fromImage(image);
            }()},
        {"alpha", withAlpha({21, 13})},
        {"deep grey", deep({10, 6}, 16)},
        {"deep", deep({11, 7}, 48)},
        {"deep with alpha", deep({11, 7}, 64)},
    };
}
