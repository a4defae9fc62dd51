// What the process boundary costs: a photograph of 12 megapixels and an icon, decoded in decoder processes and in this
// one, in turns.

#include "engine/decodehere.h"
#include "engine/isolation.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QImage>
#include <QImageWriter>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

/// Smooth shapes and some noise, so that the file is as large as a camera's.
QImage photograph(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    quint32 noise = 1;
    for (int y = 0; y < size.height(); ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            noise = noise * 1664525 + 1013904223;
            const int grain = int(noise >> 28);
            const int wave = int(100 + 90 * std::sin(x / 97.0) * std::cos(y / 61.0));
            row[x] = qRgb(wave + grain, wave / 2 + grain + 40, 200 - wave + grain);
        }
    }
    return image;
}

EncodedFile written(const QImage &image, const char *format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    if (!writer.write(image))
        std::abort();
    return {bytes, QString::fromLatin1(format)};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

template <class Call> double milliseconds(Call call)
{
    QElapsedTimer timer;
    timer.start();
    if (!call())
        std::abort();
    return double(timer.nsecsElapsed()) / 1e6;
}

void compare(const char *name, const EncodedFile &file, int runs)
{
    std::vector<double> here, there;
    for (int run = -3; run < runs; ++run) {
        const double inProcess = milliseconds([&] { return decodeHere(file); });
        const double isolated = milliseconds([&] { return decode(file); });
        if (run < 0)
            continue; // warming up
        here.push_back(inProcess);
        there.push_back(isolated);
    }
    std::printf("%-22s %9lld bytes   in-process %8.3f ms   isolated %8.3f ms   more %7.3f ms   (fastest %.3f, %.3f)\n",
        name, static_cast<long long>(file.bytes.size()), median(here), median(there), median(there) - median(here),
        *std::min_element(here.begin(), here.end()), *std::min_element(there.begin(), there.end()));
}

}

int main()
{
    startDecoderProcesses();
    compare("JPEG, 12 megapixels", written(photograph({4000, 3000}), "jpg", 92), 41);
    compare("PNG, 64 x 64", written(photograph({64, 64}), "png", -1), 2001);
    compare("JPEG, 64 x 64", written(photograph({64, 64}), "jpg", 90), 2001);
    compare("PPM, 64 x 64", written(photograph({64, 64}), "ppm", -1), 301);
    std::printf("%s\n", decoderProtection().toUtf8().constData());
    stopDecoderProcesses();
    return 0;
}
