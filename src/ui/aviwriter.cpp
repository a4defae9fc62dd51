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

/// A colour to the nearest multiple of `step` in each channel.
QRgb rounded(QRgb color, int step)
{
    const auto channel = [step](int value) { return std::min(255, (value + step / 2) / step * step); };
    if (qAlpha(color) < step / 2)
        return 0;
    return qRgba(channel(qRed(color)), channel(qGreen(color)), channel(qBlue(color)), channel(qAlpha(color)));
}

/// The colours of all frames, rounded as far as it takes.
struct Palette
{
    int step = 1;
    QHash<QRgb, int> numbers;
    QVector<QRgb> colors;

    explicit Palette(const QVector<QImage> &frames)
    {
        while (!take(frames))
            step = step == 1 ? 4 : step + 4;
    }

    bool take(const QVector<QImage> &frames)
    {
        numbers.clear();
        colors = {0};
        numbers.insert(0, 0);
        for (const QImage &frame : frames) {
            for (int y = 0; y < frame.height(); ++y) {
                for (int x = 0; x < frame.width(); ++x) {
                    const QRgb color = rounded(frame.pixel(x, y), step);
                    if (numbers.contains(color))
                        continue;
                    if (colors.size() == mostColors)
                        return false;
                    numbers.insert(color, int(colors.size()));
                    colors.append(color);
                }
            }
        }
        return true;
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
            const QRgb color = rounded(frame.pixel(x, y), palette.step);
            int count = 1;
            while (
                count < 255 && x + count < frame.width() && rounded(frame.pixel(x + count, y), palette.step) == color)
                ++count;
            bytes.append(static_cast<char>(count)).append(static_cast<char>(palette.numbers.value(color)));
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
