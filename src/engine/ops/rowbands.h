#pragma once

#include "engine/picture.h"

#include <algorithm>
#include <functional>

/// Calls `work(first, end)` for bands of rows that together are all rows of a picture of `size`, each row once. Of a
/// large picture several bands run at the same time, as many as there are idle threads in the program's pool: where
/// many pictures are worked on at once, each has one thread. Returns when all are done.
void forRowBands(QSize size, const std::function<void(int first, int end)> &work);

/// A new image of the same size in which every pixel is `function` of the one in `source`. `From` and `To` are what a
/// pixel of `source` and of `format` is made of (uchar, QRgb, QRgba64). Null when memory is short.
template <class To, class From, class Function>
QImage mappedPixels(const QImage &source, QImage::Format format, const Function &function)
{
    QImage result = allocateImage(source.size(), format);
    if (result.isNull())
        return {};
    uchar *const pixels = result.bits();
    const qsizetype stride = result.bytesPerLine();
    forRowBands(source.size(), [&](int first, int end) {
        // Of its own, so that the compiler knows that no pixel is stored into it.
        const Function own = function;
        const int width = source.width();
        for (int y = first; y < end; ++y) {
            const From *const from = reinterpret_cast<const From *>(source.constScanLine(y));
            To *const to = reinterpret_cast<To *>(pixels + y * stride);
            for (int x = 0; x < width; ++x)
                to[x] = own(from[x]);
        }
    });
    return result;
}

/// The same picture with other pixels at another nominal depth; what is told about it stays. Give the pixels away:
/// those that another image shares are copied when their resolution is another.
inline Picture remade(const Picture &picture, QImage pixels, int bits)
{
    Picture result = picture;
    result.pixels = std::move(pixels);
    result.pixels.setDotsPerMeterX(picture.pixels.dotsPerMeterX());
    result.pixels.setDotsPerMeterY(picture.pixels.dotsPerMeterY());
    result.info.bitsPerPixel = bits;
    return result;
}
