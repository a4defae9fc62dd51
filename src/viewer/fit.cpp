#include "viewer/fit.h"

#include "engine/rounding.h"

const char *const zoomCaptions[11] = {
    "25 %", "50 %", "75 %", "100 %", "125 %", "150%", "175 %", "200 %", "300 %", "400 %", "500 %"};

double zoomFactor(int item)
{
    return item <= 8 ? item * 0.25 : item - 6;
}

QSize fitIntoPane(QSize picture, double zoom, QSize pane)
{
    int w = roundToInt(picture.width() * zoom);
    int h = roundToInt(picture.height() * zoom);
    const int pw = pane.width();
    const int ph = pane.height();
    const auto fitWidth = [&] {
        h = roundToInt(h * (double(pw) / w));
        w = pw;
    };
    const auto fitHeight = [&] {
        w = roundToInt(w * (double(ph) / h));
        h = ph;
    };
    if (w <= pw && h <= ph)
        return {w, h};
    if (w > pw && h < ph) {
        fitWidth();
    } else if (w < pw && h > ph) {
        fitHeight();
    } else if (w > pw && h > ph) {
        // The axis with the larger excess decides. Equal excesses leave the size alone: the picture is clipped.
        if (w - pw > h - ph)
            fitWidth();
        else if (h - ph > w - pw)
            fitHeight();
    }
    return {w, h};
}

QRect placeInPane(QSize size, QSize pane, bool stretched)
{
    if (stretched)
        return {QPoint(0, 0), pane};
    const int left = roundToInt(pane.width() / 2.0 - size.width() / 2.0);
    const int top = roundToInt(pane.height() / 2.0 - size.height() / 2.0);
    return {QPoint(left, top), size};
}

QRect onDesktop(const QRect &pixels, double ratio)
{
    const QSize size(int(std::ceil(pixels.width() / ratio)), int(std::ceil(pixels.height() / ratio)));
    return {QPoint(roundToInt(pixels.x() / ratio), roundToInt(pixels.y() / ratio)), size.expandedTo(QSize(1, 1))};
}
