#pragma once

#include "engine/picture.h"

/// A picture with something in every field that a decoder can fill.
inline Picture obedientPicture()
{
    Picture picture;
    picture.pixels = QImage(9, 7, QImage::Format_Indexed8);
    picture.pixels.setColorTable({qRgb(1, 2, 3), qRgba(4, 5, 6, 7), qRgb(200, 100, 50)});
    for (int y = 0; y < picture.pixels.height(); ++y) {
        for (int x = 0; x < picture.pixels.width(); ++x)
            picture.pixels.setPixel(x, y, uint(x + y) % 3);
    }
    picture.pixels.setDotsPerMeterX(1234);
    picture.pixels.setDotsPerMeterY(4321);
    picture.info = {QSize(90, 70), 4, 12, "Obedient"};
    // Larger than one message.
    picture.iccProfile = QByteArray(200'000, 'i');
    picture.metadata = {QByteArray("II*\0exif", 8), "iptc", QByteArray(70'000, 'x'), "comment"};
    picture.partial = true;
    return picture;
}

/// One that goes through shared memory: every row differs.
inline QImage largeObedientImage()
{
    QImage image(1601, 1203, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x)
            row[x] = qRgb(x, y, x + y);
    }
    return image;
}
