#include "engine/ops/diffusion.h"

#include "engine/ops/nearestcolor.h"

#include <algorithm>
#include <vector>

namespace {

using Color = NearestColor::Color;

/// What the pixels of a row get from those before, in parts of `wholeError`; one place more at either end.
using Errors = std::vector<Color>;

/// Sixteen parts are spread. What is missing to the whole is let go, so that a colour that the palette cannot reach
/// does not pile up errors and smear them over what comes after it.
constexpr int wholeError = 17;

void spread(const Color &error, Errors &here, Errors &below, size_t at, bool backwards)
{
    const size_t ahead = backwards ? at - 1 : at + 1;
    const size_t behind = backwards ? at + 1 : at - 1;
    for (size_t channel = 0; channel < 3; ++channel) {
        here[ahead][channel] += error[channel] * 7;
        below[behind][channel] += error[channel] * 3;
        below[at][channel] += error[channel] * 5;
        below[ahead][channel] += error[channel];
    }
}

}

void diffuse(const QImage &source, const QList<QRgb> &palette, QImage &indexed)
{
    NearestColor nearest(palette);
    const int width = source.width();
    const bool hasAlpha = source.format() == QImage::Format_ARGB32;
    Errors here(size_t(width) + 2);
    Errors below(here.size());
    for (int y = 0; y < source.height(); ++y) {
        const QRgb *const from = reinterpret_cast<const QRgb *>(source.constScanLine(y));
        uchar *const to = indexed.scanLine(y);
        const bool backwards = y % 2 != 0;
        for (int step = 0; step < width; ++step) {
            const int x = backwards ? width - 1 - step : step;
            const size_t at = size_t(x) + 1;
            Color wanted = NearestColor::colorOf(from[x]);
            if (hasAlpha && qAlpha(from[x]) == 0) {
                to[x] = 0;
                continue;
            }
            for (size_t channel = 0; channel < 3; ++channel) {
                const int error = here[at][channel];
                wanted[channel] = std::clamp(
                    wanted[channel] + (error + (error < 0 ? -wholeError : wholeError) / 2) / wholeError, 0, 255);
            }
            const int index = nearest.indexOf(wanted);
            to[x] = uchar(index);
            const Color &got = nearest.colorAt(index);
            spread({wanted[0] - got[0], wanted[1] - got[1], wanted[2] - got[2]}, here, below, at, backwards);
        }
        here.swap(below);
        std::fill(below.begin(), below.end(), Color{});
    }
}
