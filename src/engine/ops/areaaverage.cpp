#include "engine/ops/areaaverage.h"

#include "engine/picture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace {

constexpr int fullLight = 65535;

/// Stored number to light, by the curve of sRGB.
const std::array<quint16, 256> &lightOf()
{
    static const std::array<quint16, 256> table = [] {
        std::array<quint16, 256> light{};
        for (int i = 0; i < 256; ++i) {
            const double v = i / 255.0;
            const double linear = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
            light[size_t(i)] = quint16(std::lround(linear * fullLight));
        }
        return light;
    }();
    return table;
}

/// Light to the nearest stored number.
const std::vector<uchar> &numberOf()
{
    static const std::vector<uchar> table = [] {
        std::vector<uchar> numbers(fullLight + 1);
        const auto &light = lightOf();
        size_t number = 0;
        for (int i = 0; i <= fullLight; ++i) {
            while (number < 255 && light[number + 1] - i < i - light[number])
                ++number;
            numbers[size_t(i)] = uchar(number);
        }
        return numbers;
    }();
    return table;
}

/// How one side is cut: `from` pixels onto `to` cells. In units of which a pixel measures `to` and a cell `from`, pixel
/// x gives `first` to `cell` and the rest to the next one.
struct Share
{
    int cell;
    quint32 first;
    quint32 rest;
};

std::vector<Share> sharesOf(int from, int to)
{
    std::vector<Share> shares(static_cast<size_t>(from));
    for (int x = 0; x < from; ++x) {
        const qint64 begin = qint64(x) * to;
        const int cell = int(begin / from);
        const qint64 first = std::min<qint64>(to, qint64(cell + 1) * from - begin);
        shares[size_t(x)] = {cell, quint32(first), quint32(to - first)};
    }
    return shares;
}

constexpr size_t channels = 4; // red, green, blue, opacity

/// One source row, its columns summed up. A sum is at most fullLight times the width, which 32 bits hold.
void sumRow(const QRgb *row, const std::vector<Share> &columns, bool hasAlpha, std::vector<quint32> &sums)
{
    const auto &light = lightOf();
    std::fill(sums.begin(), sums.end(), 0);
    for (size_t x = 0; x < columns.size(); ++x) {
        const QRgb pixel = row[x];
        std::array<quint32, channels> value{
            light[size_t(qRed(pixel))], light[size_t(qGreen(pixel))], light[size_t(qBlue(pixel))], fullLight};
        if (hasAlpha) {
            const quint32 alpha = quint32(qAlpha(pixel));
            for (quint32 &part : value)
                part = (part * alpha + 127) / 255;
        }
        const Share &share = columns[x];
        quint32 *const to = sums.data() + size_t(share.cell) * channels;
        for (size_t i = 0; i < channels; ++i)
            to[i] += value[i] * share.first;
        if (share.rest > 0) {
            for (size_t i = 0; i < channels; ++i)
                to[channels + i] += value[i] * share.rest;
        }
    }
}

void addRow(const std::vector<quint32> &sums, double weight, std::vector<double> &cells)
{
    for (size_t i = 0; i < cells.size(); ++i)
        cells[i] += sums[i] * weight;
}

void writeRow(const std::vector<double> &cells, int width, QRgb *to)
{
    const auto &numbers = numberOf();
    for (int x = 0; x < width; ++x) {
        const double *const cell = cells.data() + size_t(x) * channels;
        const double opacity = cell[3] / fullLight;
        const auto number = [&](double part) {
            const double light = opacity > 0 ? part / opacity : 0;
            return int(numbers[size_t(std::clamp(int(std::lround(light)), 0, fullLight))]);
        };
        const int alpha = std::clamp(int(std::lround(opacity * 255)), 0, 255);
        to[x] = qRgba(number(cell[0]), number(cell[1]), number(cell[2]), alpha);
    }
}

/// The rows of a picture in another format, in ascending order. They are converted some at a time: a page of black and
/// white dots would be thirty-two times as large.
class Rows
{
public:
    Rows(const QImage &source, QImage::Format format)
        : m_source(source)
        , m_format(format)
    {
    }
    /// Null when memory is short.
    const QRgb *row(int y)
    {
        if (m_source.format() == m_format)
            return reinterpret_cast<const QRgb *>(m_source.constScanLine(y));
        if (y >= m_first + m_band.height()) {
            m_first = y;
            m_band = m_source.copy(0, y, m_source.width(), qMin(64, m_source.height() - y)).convertToFormat(m_format);
        }
        return reinterpret_cast<const QRgb *>(m_band.constScanLine(y - m_first));
    }

private:
    const QImage &m_source;
    const QImage::Format m_format;
    QImage m_band;
    int m_first = 0;
};

}

QImage areaAverage(const QImage &source, QSize size)
{
    const bool hasAlpha = source.hasAlphaChannel();
    const QImage::Format format = hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    const QSize target = size.boundedTo(source.size());
    if (source.isNull() || target == source.size())
        return source.convertToFormat(format);
    Rows image(source, format);
    QImage result = allocateImage(target, format);
    if (result.isNull())
        return {};
    const std::vector<Share> columns = sharesOf(source.width(), target.width());
    const std::vector<Share> rows = sharesOf(source.height(), target.height());
    std::vector<quint32> sums(size_t(target.width()) * channels);
    std::vector<double> cells(sums.size());
    std::vector<double> nextCells(sums.size());
    const double cellArea = double(source.width()) * source.height();
    for (int y = 0; y < source.height(); ++y) {
        const Share &share = rows[size_t(y)];
        const QRgb *const row = image.row(y);
        if (!row)
            return {};
        sumRow(row, columns, hasAlpha, sums);
        addRow(sums, share.first / cellArea, cells);
        const bool cellEnds = y + 1 == source.height() || rows[size_t(y) + 1].cell != share.cell;
        if (!cellEnds)
            continue;
        if (share.rest > 0)
            addRow(sums, share.rest / cellArea, nextCells);
        writeRow(cells, target.width(), reinterpret_cast<QRgb *>(result.scanLine(share.cell)));
        cells.swap(nextCells);
        std::fill(nextCells.begin(), nextCells.end(), 0);
    }
    return result;
}
