#include "ui/aviwriter.h"

#include <QHash>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr quint32 hasIndex = 0x10; ///< AVIF_HASINDEX
constexpr quint32 wholeFrame = 0x10; ///< AVIIF_KEYFRAME
constexpr qsizetype mostColors = 256;

QByteArray number32(qint64 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(static_cast<quint32>(value), bytes.data());
    return bytes;
}

QByteArray number16(int value)
{
    return number32(value).left(2);
}

QByteArray numbers32(std::initializer_list<qint64> values)
{
    QByteArray bytes;
    for (const qint64 value : values)
        bytes += number32(value);
    return bytes;
}

QByteArray chunk(const char *name, const QByteArray &body)
{
    return name + number32(body.size()) + body + QByteArray(body.size() & 1, '\0');
}

QByteArray list(const char *type, const QByteArray &body)
{
    return chunk("LIST", type + body);
}

int distance(QRgb a, QRgb b)
{
    const auto squared = [](int x) { return x * x; };
    // Weighed by what can be seen: clear colours are all alike.
    return squared(qAlpha(a) - qAlpha(b)) + squared(qRed(qPremultiply(a)) - qRed(qPremultiply(b)))
        + squared(qGreen(qPremultiply(a)) - qGreen(qPremultiply(b)))
        + squared(qBlue(qPremultiply(a)) - qBlue(qPremultiply(b)));
}

/// The most frequent colours of all frames; every other one becomes the nearest of them.
struct Palette
{
    QHash<QRgb, int> numbers;
    QVector<QRgb> colors;

    explicit Palette(const QVector<QImage> &frames)
    {
        QHash<QRgb, qint64> counts;
        for (const QImage &frame : frames) {
            for (int y = 0; y < frame.height(); ++y) {
                for (int x = 0; x < frame.width(); ++x)
                    ++counts[frame.pixel(x, y)];
            }
        }
        colors = counts.keys();
        std::sort(colors.begin(), colors.end(), [&](QRgb a, QRgb b) {
            return counts[a] != counts[b] ? counts[a] > counts[b] : a < b; // the same file from every build
        });
        const QVector<QRgb> all = colors;
        colors.resize(std::min(colors.size(), mostColors));
        for (const QRgb color : all) {
            const auto nearest = std::min_element(colors.begin(), colors.end(),
                [color](QRgb a, QRgb b) { return distance(a, color) < distance(b, color); });
            numbers.insert(color, int(nearest - colors.begin()));
        }
    }

    QByteArray bytes() const
    {
        QByteArray all;
        for (const QRgb color : colors)
            all += number32(color);
        return all.leftJustified(mostColors * 4, '\0');
    }
};

QByteArray runsOf(const QImage &frame, const Palette &palette)
{
    QByteArray bytes;
    for (int y = frame.height() - 1; y >= 0; --y) {
        for (int x = 0; x < frame.width();) {
            const int color = palette.numbers.value(frame.pixel(x, y));
            int count = 1;
            while (
                count < 255 && x + count < frame.width() && palette.numbers.value(frame.pixel(x + count, y)) == color)
                ++count;
            bytes.append(static_cast<char>(count)).append(static_cast<char>(color));
            x += count;
        }
        bytes.append(2, '\0');
    }
    return bytes.append('\0').append('\1');
}

} // namespace

QByteArray aviOf(const QVector<QImage> &frames, int frameTime)
{
    if (frames.isEmpty())
        return {};
    const Palette palette(frames);
    const int width = frames.first().width();
    const int height = frames.first().height();
    QByteArray movie;
    QByteArray index;
    qsizetype largest = 0;
    for (const QImage &frame : frames) {
        const QByteArray runs = runsOf(frame, palette);
        largest = std::max(largest, runs.size());
        index += "00dc" + numbers32({wholeFrame, movie.size() + 4, runs.size()});
        movie += chunk("00dc", runs);
    }
    const QByteArray mainHeader =
        numbers32({qint64(frameTime) * 1000, 0, 0, hasIndex, frames.size(), 0, 1, largest, width, height, 0, 0, 0, 0});
    const QByteArray streamHeader = "vidsRLE " + numbers32({0, 0, 0, frameTime, 1000, 0, frames.size(), largest, -1, 0})
        + number16(0) + number16(0) + number16(width) + number16(height);
    const QByteArray format = numbers32({40, width, height}) + number16(1) + number16(8)
        + numbers32({1, largest, 0, 0, mostColors, 0}) + palette.bytes();
    const QByteArray stream = list("strl", chunk("strh", streamHeader) + chunk("strf", format));
    const QByteArray body =
        "AVI " + list("hdrl", chunk("avih", mainHeader) + stream) + list("movi", movie) + chunk("idx1", index);
    return chunk("RIFF", body);
}
