// Colour reduction beside GraphicsMagick's at the same size of the palette: quality and time. Quality is the ratio of
// the largest signal to the noise in decibels, of the pixels, and of averages of 4 by 4 of them, which is what the eye
// sees of a diffused picture.
//
//     bench_quantise PICTURE...

#include "engine/decode.h"
#include "engine/ops/depth.h"
#include "platform/filepath.h"
#include "platform/files.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImageWriter>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <map>

namespace {

struct Figures
{
    double pixels = 0; ///< dB
    double averages = 0; ///< dB
    double seconds = 0;
};

struct Task
{
    const char *name;
    int colors;
    bool blackAndWhite;
    bool diffuse;
};

// clang-format off
constexpr Task tasks[] = {
    {"256", 256, false, false}, {"256 diffused", 256, false, true}, {"16", 16, false, false}, {"16 diffused", 16, false, true},
    {"2", 2, false, false}, {"2 diffused", 2, false, true}, {"black and white diffused", 2, true, true},
};
// clang-format on

/// Sums over squares of `side`; what is left at the edges is not looked at.
double noise(const QImage &a, const QImage &b, int side)
{
    double sum = 0;
    qint64 count = 0;
    for (int y = 0; y + side <= a.height(); y += side) {
        for (int x = 0; x + side <= a.width(); x += side) {
            int red = 0, green = 0, blue = 0;
            for (int j = 0; j < side; ++j) {
                const QRgb *const rowA = reinterpret_cast<const QRgb *>(a.constScanLine(y + j)) + x;
                const QRgb *const rowB = reinterpret_cast<const QRgb *>(b.constScanLine(y + j)) + x;
                for (int i = 0; i < side; ++i) {
                    red += qRed(rowA[i]) - qRed(rowB[i]);
                    green += qGreen(rowA[i]) - qGreen(rowB[i]);
                    blue += qBlue(rowA[i]) - qBlue(rowB[i]);
                }
            }
            sum += (double(red) * red + double(green) * green + double(blue) * blue) / (side * side * side * side);
            count += 3;
        }
    }
    return 10 * std::log10(255.0 * 255.0 / std::max(1e-9, sum / double(std::max<qint64>(1, count))));
}

Figures figures(const QImage &before, const QImage &after, double seconds)
{
    const QImage result = after.convertToFormat(QImage::Format_RGB32);
    return {noise(before, result, 1), noise(before, result, 4), seconds};
}

Figures ours(const Picture &picture, const Task &task)
{
    QElapsedTimer timer;
    timer.start();
    const Result<Picture> reduced = withReducedColors(picture, task.colors, task.blackAndWhite ? 1 : 8, task.diffuse);
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    return reduced ? figures(picture.pixels, reduced->pixels, seconds) : Figures{};
}

/// The time is that of the whole program without that of a run that only copies the picture.
Figures theirs(const Picture &picture, const Task &task, const QString &folder)
{
    const auto run = [&](const QStringList &work) {
        QElapsedTimer timer;
        timer.start();
        const QStringList files{folder + QStringLiteral("in.ppm"), folder + QStringLiteral("out.ppm")};
        QProcess::execute(
            QStringLiteral("gm"), QStringList{QStringLiteral("convert"), files[0]} + work + QStringList{files[1]});
        return double(timer.nsecsElapsed()) / 1e9;
    };
    const double copying = run({});
    QStringList work;
    if (task.blackAndWhite)
        work << QStringLiteral("-monochrome");
    else
        work << QStringLiteral("-colors") << QString::number(task.colors);
    work.prepend(task.diffuse ? QStringLiteral("-dither") : QStringLiteral("+dither"));
    const double seconds = run(work) - copying;
    return figures(picture.pixels, QImage(folder + QStringLiteral("out.ppm")), seconds);
}

void print(const char *name, const char *who, const Figures &sum, int count)
{
    std::printf(
        "| %s | %s | %.1f | %.1f | %.2f |\n", name, who, sum.pixels / count, sum.averages / count, sum.seconds / count);
}

}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir temporary;
    const QString folder = temporary.path() + QLatin1Char('/');
    std::map<const Task *, std::pair<Figures, Figures>> sums;
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const Result<Picture> decoded = decodeFile(pathFromBytes(argv[i]));
        if (!decoded)
            continue;
        const Picture picture = Picture::fromImage(decoded->pixels.convertToFormat(QImage::Format_RGB32));
        QByteArray bytes;
        QBuffer buffer(&bytes);
        QImageWriter writer(&buffer, "ppm");
        if (!writer.write(picture.pixels) || !writeFileAtomically(folder + QStringLiteral("in.ppm"), bytes))
            continue;
        ++count;
        for (const Task &task : tasks) {
            const auto add = [](Figures &sum, const Figures &one) {
                sum.pixels += one.pixels;
                sum.averages += one.averages;
                sum.seconds += one.seconds;
            };
            add(sums[&task].first, ours(picture, task));
            add(sums[&task].second, theirs(picture, task, folder));
        }
    }
    if (count == 0)
        return 1;
    std::printf("| Palette | By | PSNR | PSNR of averages | Seconds |\n|---|---|---|---|---|\n");
    for (const Task &task : tasks) {
        print(task.name, "Lumora", sums[&task].first, count);
        print("", "GraphicsMagick", sums[&task].second, count);
    }
    std::printf("\nmeans of %d pictures\n", count);
    return 0;
}
