// bench_picture OUT.jpg [WIDTHxHEIGHT] [QUALITY]
// Makes a photograph-like JPEG: soft shapes, edges, fine texture and sensor noise, and a flat field of one colour over
// the middle half, by which bench_pixels sees that the picture stands on the screen. The same picture every
// time.

#include <QFile>
#include <QImage>
#include <QImageWriter>

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr QRgb field = qRgb(255, 0, 200);

/// A small generator of equal numbers on every machine.
class Noise
{
public:
    int next(int range)
    {
        m_state = m_state * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<int>((m_state >> 33) % static_cast<quint64>(2 * range + 1)) - range;
    }

private:
    quint64 m_state = 20240229;
};

int clamped(double value)
{
    return value < 0 ? 0 : value > 255 ? 255 : static_cast<int>(value);
}

void paintRow(QRgb *row, int y, QSize size, Noise &noise)
{
    const double v = static_cast<double>(y) / size.height();
    for (int x = 0; x < size.width(); ++x) {
        const double u = static_cast<double>(x) / size.width();
        if (u > 0.25 && u < 0.75 && v > 0.25 && v < 0.75) {
            row[x] = field;
            continue;
        }
        const double hills = 60 * std::sin(9 * u + 4 * std::sin(5 * v)) + 40 * std::cos(23 * v - 11 * u);
        const double texture = 18 * std::sin(x * 0.41 + 3 * std::sin(y * 0.037)) * std::cos(y * 0.33);
        const double edge = std::fmod(u * 13 + v * 7, 1.0) < 0.5 ? 25 : -25;
        const double grey = 110 + hills + texture + edge;
        const int grain = noise.next(26);
        row[x] = qRgb(clamped(grey * 0.9 + grain), clamped(grey + noise.next(16)), clamped(grey * 0.8 + 30 + grain));
    }
}

}

int main(int argc, char **argv)
{
    if (argc < 2 || argc > 4) {
        std::fprintf(stderr, "usage: bench_picture OUT.jpg [WIDTHxHEIGHT] [QUALITY]\n");
        return 2;
    }
    int width = 6000, height = 4000;
    if (argc > 2 && (std::sscanf(argv[2], "%dx%d", &width, &height) != 2 || width < 8 || height < 8)) {
        std::fprintf(stderr, "bench_picture: %s is no size\n", argv[2]);
        return 2;
    }
    const int quality = argc > 3 ? std::atoi(argv[3]) : 92;
    QImage image(width, height, QImage::Format_RGB32);
    if (image.isNull()) {
        std::fprintf(stderr, "bench_picture: not enough memory\n");
        return 1;
    }
    Noise noise;
    for (int y = 0; y < height; ++y)
        paintRow(reinterpret_cast<QRgb *>(image.scanLine(y)), y, image.size(), noise);
    QImageWriter writer(QFile::decodeName(argv[1]), "jpg");
    writer.setQuality(quality);
    if (writer.write(image))
        return 0;
    std::fprintf(stderr, "bench_picture: %s\n", qPrintable(writer.errorString()));
    return 1;
}
