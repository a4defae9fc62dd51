// Draws the patterns that can stand behind the Main Viewer's menu and writes them as JPEG files into a folder:
//     makebackgrounds FOLDER
// Each is a tile that goes on at its edges: everything in it repeats after a whole number of pixels.

#include <QDir>
#include <QFile>
#include <QImage>
#include <QtMath>

#include <array>
#include <cmath>
#include <cstdio>

namespace {

constexpr int side = 128; ///< a multiple of the blocks of a JPEG, so that no block knows the edge
constexpr int quality = 92;

struct Tone
{
    QColor dark;
    QColor light;
};

double turn(double share)
{
    return share * 2 * M_PI;
}

/// The same for the same place of the lattice, from 0 to 1; the lattice repeats after `period` places.
double lattice(int x, int y, int period, unsigned seed)
{
    const auto place = [period](int at) { return unsigned((at % period + period) % period); };
    unsigned hash = place(x) * 374761393U + place(y) * 668265263U + seed * 2246822519U;
    hash = (hash ^ (hash >> 13)) * 1274126177U;
    return ((hash ^ (hash >> 16)) & 0xffff) / 65535.0;
}

/// Noise with `period` knots to a side, smooth between them.
double noise(double x, double y, int period, unsigned seed)
{
    const double u = x * period / side;
    const double v = y * period / side;
    const int column = int(std::floor(u));
    const int row = int(std::floor(v));
    const auto eased = [](double t) { return t * t * (3 - 2 * t); };
    const double across = eased(u - column);
    const double down = eased(v - row);
    const auto mix = [](double a, double b, double t) { return a + (b - a) * t; };
    return mix(mix(lattice(column, row, period, seed), lattice(column + 1, row, period, seed), across),
        mix(lattice(column, row + 1, period, seed), lattice(column + 1, row + 1, period, seed), across), down);
}

double clouds(int x, int y)
{
    return 0.5 * noise(x, y, 4, 1) + 0.3 * noise(x, y, 8, 2) + 0.2 * noise(x, y, 16, 3);
}

double linen(int x, int y)
{
    const double across = 0.5 + 0.5 * std::sin(turn(x / 4.0)) * (0.6 + 0.4 * lattice(0, y / 2, side / 2, 4));
    const double down = 0.5 + 0.5 * std::sin(turn(y / 4.0)) * (0.6 + 0.4 * lattice(x / 2, 0, side / 2, 5));
    return 0.5 * (across + down);
}

double paper(int x, int y)
{
    return 0.6 * noise(x, y, 64, 6) + 0.4 * noise(x, y, 16, 7);
}

double stripes(int x, int y)
{
    return 0.5 + 0.5 * std::sin(turn((x + y) / 16.0));
}

double waves(int x, int y)
{
    return 0.5 + 0.5 * std::sin(turn(y / 16.0 + 0.25 * std::sin(turn(x / 64.0))));
}

double dots(int x, int y)
{
    const double distance = std::hypot(x % 16 - 7.5, (y + (x / 16 % 2) * 8) % 16 - 7.5);
    return 1 - std::clamp(4.5 - distance, 0.0, 1.0);
}

double diamonds(int x, int y)
{
    const int width = std::abs(x % 32 - 16);
    const int height = std::abs(y % 32 - 16);
    return width + height < 16 ? 0.75 + (16 - width - height) / 64.0 : 0.25 - (width + height - 16) / 64.0;
}

double marble(int x, int y)
{
    return 0.5 + 0.5 * std::sin(turn((x + 2 * y) / 64.0 + 1.4 * noise(x, y, 8, 8) + 0.5 * noise(x, y, 16, 9)));
}

struct Pattern
{
    double (*level)(int x, int y); ///< 0 is the dark tone, 1 the light one
    Tone tone;
};

const std::array<Pattern, 8> patterns{{
    {clouds, {QColor(0x8f, 0xb7, 0xdd), QColor(0xf4, 0xf9, 0xfd)}},
    {linen, {QColor(0xcd, 0xc2, 0xa8), QColor(0xf0, 0xe9, 0xd8)}},
    {paper, {QColor(0xd9, 0xd4, 0xc8), QColor(0xf6, 0xf3, 0xec)}},
    {stripes, {QColor(0xb4, 0xc7, 0xd9), QColor(0xdb, 0xe6, 0xef)}},
    {waves, {QColor(0x9e, 0xc9, 0xbe), QColor(0xd8, 0xee, 0xe6)}},
    {dots, {QColor(0xc2, 0x9c, 0xb6), QColor(0xf1, 0xe4, 0xed)}},
    {diamonds, {QColor(0xd6, 0xb9, 0x84), QColor(0xf3, 0xe4, 0xc6)}},
    {marble, {QColor(0x9f, 0xa8, 0xb4), QColor(0xe6, 0xe9, 0xee)}},
}};

QImage drawn(const Pattern &pattern)
{
    QImage image(side, side, QImage::Format_RGB32);
    const auto mix = [](int dark, int light, double level) { return qRound(dark + (light - dark) * level); };
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const double level = std::clamp(pattern.level(x, y), 0.0, 1.0);
            const auto &[dark, light] = pattern.tone;
            image.setPixel(x, y,
                qRgb(mix(dark.red(), light.red(), level), mix(dark.green(), light.green(), level),
                    mix(dark.blue(), light.blue(), level)));
        }
    }
    return image;
}

}

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fputs("usage: makebackgrounds FOLDER\n", stderr);
        return 2;
    }
    const QString folder = QFile::decodeName(argv[1]);
    for (std::size_t i = 0; i < patterns.size(); ++i) {
        QFile file(folder + QStringLiteral("/PAT0%1.JPG").arg(i + 1, 2, 10, QLatin1Char('0')));
        const QImage image = drawn(patterns[i]);
        if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly) || !image.save(&file, "JPG", quality)
            || !file.flush()) {
            std::fprintf(stderr, "makebackgrounds: %s cannot be written\n", qPrintable(file.fileName()));
            return 1;
        }
    }
    return 0;
}
