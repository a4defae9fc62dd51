// The operations of batch conversion, one thread, beside the least that any of them could cost: a copy of the same
// pixels into fresh memory. Nanoseconds of processor time a pixel, the best of some rounds.
//
//     bench_adjust PICTURE...

#include "engine/decode.h"
#include "engine/ops/adjustments.h"
#include "engine/ops/emboss.h"
#include "platform/filepath.h"

#include <QThreadPool>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

namespace {

constexpr int rounds = 7;
constexpr double clip = 0.005;

double nanoseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e9 + double(time.tv_nsec);
}

double best(const Picture &picture, const std::function<QImage(const Picture &)> &operation)
{
    double least = 1e18;
    for (int i = 0; i < rounds; ++i) {
        const double before = nanoseconds();
        const QImage pixels = operation(picture);
        least = std::min(least, nanoseconds() - before);
    }
    return least / (double(picture.pixels.width()) * picture.pixels.height());
}

QImage copied(const Picture &picture)
{
    QImage copy = allocateImage(picture.pixels.size(), picture.pixels.format());
    std::copy_n(picture.pixels.constBits(), picture.pixels.sizeInBytes(), copy.bits());
    return copy;
}

}

int main(int argc, char **argv)
{
    QThreadPool::globalInstance()->setMaxThreadCount(1);
    std::printf("%-12s %6s %9s %6s %6s %7s  file\n", "pixels", "copy", "contrast", "level", "grey", "emboss");
    for (int i = 1; i < argc; ++i) {
        const Result<Picture> read = decodeFile(pathFromBytes(argv[i]));
        if (!read) {
            std::fprintf(stderr, "%s: %s\n", argv[i], qPrintable(read.reason()));
            return 1;
        }
        const std::pair<const char *, QImage::Format> kinds[]{{"colours", QImage::Format_RGB32},
            {"greys", QImage::Format_Grayscale8}, {"16 bits", QImage::Format_RGBA64}};
        for (const auto &[name, format] : kinds) {
            const Picture picture = Picture::fromImage(read->pixels.convertToFormat(format));
            std::printf("%-12s %6.1f %9.1f %6.1f %6.1f %7.1f  %s\n", name, best(picture, copied),
                best(picture, [](const Picture &p) { return withAutoContrast(p, clip)->pixels; }),
                best(picture, [](const Picture &p) { return withAutoLevel(p, clip)->pixels; }),
                best(picture, [](const Picture &p) { return inGreyScale(p)->pixels; }),
                best(picture, [](const Picture &p) { return embossed(p)->pixels; }), argv[i]);
        }
    }
    return 0;
}
