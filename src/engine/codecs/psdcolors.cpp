#include "engine/codecs/psdcolors.h"

#include "engine/codecs/labcolors.h"
#include "engine/codecs/pixels.h"

#include <QRgba64>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>

namespace psd {

namespace {

/// Big-endian samples of the document as numbers of this machine.
void toSamples(const uchar *from, int, quint8 *to, int width)
{
    std::copy_n(from, width, to);
}

void toSamples(const uchar *from, int depth, quint16 *to, int width)
{
    if (depth == 16) {
        qFromBigEndian<quint16>(from, width, to);
        return;
    }
    const std::vector<quint16> &srgb = srgbTable<quint16>();
    for (int x = 0; x < width; ++x)
        to[x] = srgb[linearStep(qFromBigEndian<float>(from + size_t(x) * 4))];
}

/// Transparency is no light: it stays linear.
void toAlpha(const uchar *from, int depth, quint8 *to, int width)
{
    toSamples(from, depth, to, width);
}

void toAlpha(const uchar *from, int depth, quint16 *to, int width)
{
    if (depth == 16) {
        toSamples(from, depth, to, width);
        return;
    }
    for (int x = 0; x < width; ++x)
        to[x] = quint16(linearStep(qFromBigEndian<float>(from + size_t(x) * 4)));
}

QRgb pixelOf(quint8 red, quint8 green, quint8 blue, quint8 alpha)
{
    return qRgba(red, green, blue, alpha);
}

QRgba64 pixelOf(quint16 red, quint16 green, quint16 blue, quint16 alpha)
{
    return qRgba64(red, green, blue, alpha);
}

/// Rows of channels into rows of pixels, for documents of more than a palette or plain grey of 8 bits.
template <class Sample> class RowConverter
{
public:
    RowConverter(const Layout &layout, bool isFlattened)
        : m_layout(layout)
        , m_width(layout.size.width())
        , m_isFlattened(isFlattened && layout.hasAlpha())
        , m_rows(size_t(layout.usedChannels()), std::vector<Sample>(size_t(m_width)))
    {
        if (layout.mode == Lab)
            m_lab = std::make_unique<LabConverter<Sample>>();
    }

    void write(const std::vector<std::vector<uchar>> &stored, uchar *to)
    {
        const size_t colors = size_t(m_layout.colorChannels());
        for (size_t channel = 0; channel < colors; ++channel)
            toSamples(stored[channel].data(), m_layout.depth, m_rows[channel].data(), m_width);
        if (m_layout.hasAlpha())
            toAlpha(stored[colors].data(), m_layout.depth, m_rows[colors].data(), m_width);
        if (m_layout.mode == Lab)
            m_lab->convert(m_rows[0].data(), m_rows[1].data(), m_rows[2].data(), m_width);
        if (colors == 4)
            mixInks();
        if (m_isFlattened)
            unflatten();
        interleave(to);
    }

private:
    static constexpr Sample full = std::numeric_limits<Sample>::max();

    /// Stored is how much paper each ink lets through.
    void mixInks()
    {
        const Sample *const black = m_rows[3].data();
        for (size_t channel = 0; channel < 3; ++channel) {
            Sample *const ink = m_rows[channel].data();
            for (int x = 0; x < m_width; ++x)
                ink[x] = Sample((quint32(ink[x]) * black[x] + full / 2) / full);
        }
    }

    /// The flattened colours lie over white; this takes the white away again.
    void unflatten()
    {
        const Sample *const alpha = m_rows.back().data();
        for (size_t channel = 0; channel < std::min<size_t>(m_rows.size() - 1, 3); ++channel) {
            Sample *const color = m_rows[channel].data();
            for (int x = 0; x < m_width; ++x) {
                if (alpha[x] == 0 || alpha[x] == full)
                    continue;
                const qint64 own = qint64(color[x]) - (full - alpha[x]);
                color[x] = Sample(std::clamp<qint64>((own * full + alpha[x] / 2) / alpha[x], 0, full));
            }
        }
    }

    void interleave(uchar *to) const
    {
        const bool isGrey = m_layout.colorChannels() == 1;
        const Sample *const red = m_rows[0].data();
        const Sample *const green = isGrey ? red : m_rows[1].data();
        // Two inks: the third lets everything through.
        const bool lacksBlue = m_layout.colorChannels() == 2;
        const Sample *const blue = isGrey ? red : m_rows[lacksBlue ? 1 : 2].data();
        const Sample *const alpha = m_layout.hasAlpha() ? m_rows.back().data() : nullptr;
        using Pixel = decltype(pixelOf(Sample(), Sample(), Sample(), Sample()));
        Pixel *const row = reinterpret_cast<Pixel *>(to);
        for (int x = 0; x < m_width; ++x)
            row[x] = pixelOf(red[x], green[x], lacksBlue ? full : blue[x], alpha ? alpha[x] : full);
    }

    const Layout &m_layout;
    int m_width;
    bool m_isFlattened;
    std::vector<std::vector<Sample>> m_rows;
    std::unique_ptr<LabConverter<Sample>> m_lab;
};

QImage::Format formatOf(const Layout &layout)
{
    if (layout.mode == Bitmap)
        return QImage::Format_Mono;
    if (layout.mode == Indexed)
        return QImage::Format_Indexed8;
    if (layout.depth > 8)
        return QImage::Format_RGBA64;
    if (layout.hasAlpha())
        return QImage::Format_ARGB32;
    return layout.colorChannels() == 1 ? QImage::Format_Grayscale8 : QImage::Format_RGB32;
}

QList<QRgb> tableOf(const Layout &layout)
{
    if (layout.mode == Bitmap)
        return {qRgb(0, 0, 0), qRgb(255, 255, 255)};
    QList<QRgb> table = layout.palette;
    if (layout.transparentIndex >= 0 && layout.transparentIndex < table.size())
        table[layout.transparentIndex] &= 0x00ffffff;
    return table;
}

/// Calls `write` with every row of stored channels and the picture's row. False when some were missing: where all of a
/// row are, it is white, and a single channel is full.
template <class Write> Result<bool> forEachRow(const Planes &planes, const Layout &layout, QImage &image, Write write)
{
    bool complete = true;
    bool isEmpty = true;
    const int blank = layout.mode == Indexed ? 0 : 0xff;
    std::vector<std::vector<uchar>> stored(size_t(planes.count()), std::vector<uchar>(layout.rowBytes()));
    for (int y = 0; y < layout.size.height(); ++y) {
        size_t there = 0;
        size_t whole = 0;
        for (int channel = 0; channel < planes.count(); ++channel) {
            std::vector<uchar> &row = stored[size_t(channel)];
            std::fill(row.begin(), row.end(), uchar(layout.mode == Bitmap ? 0 : blank));
            const Planes::Extent extent = planes.read(channel, y, row);
            there += extent != Planes::Extent::Nothing;
            whole += extent == Planes::Extent::Whole;
        }
        complete = complete && whole == stored.size();
        isEmpty = isEmpty && whole == 0;
        if (there > 0)
            write(stored, image.scanLine(y));
        else
            std::memset(image.scanLine(y), blank, size_t(image.bytesPerLine()));
    }
    if (isEmpty)
        return Failure{QStringLiteral("a Photoshop document without a whole row")};
    return complete;
}

template <class Sample> Result<bool> convertRows(const Planes &planes, const Layout &layout, QImage &image)
{
    RowConverter<Sample> converter(layout, !planes.isFromLayer());
    return forEachRow(planes, layout, image, [&](const auto &stored, uchar *row) { converter.write(stored, row); });
}

}

Result<Pixels> readPixels(const Planes &planes, const Layout &layout)
{
    Pixels pixels{allocateImage(layout.size, formatOf(layout))};
    QImage &image = pixels.image;
    if (image.isNull())
        return Failure{outOfMemory(layout.size)};
    const QImage::Format format = image.format();
    if (format == QImage::Format_Mono || format == QImage::Format_Indexed8)
        image.setColorTable(tableOf(layout));
    const auto convert = [&]() -> Result<bool> {
        if (format == QImage::Format_RGBA64)
            return convertRows<quint16>(planes, layout, image);
        if (format == QImage::Format_RGB32 || format == QImage::Format_ARGB32)
            return convertRows<quint8>(planes, layout, image);
        // In a bitmap a set bit is black.
        const uchar inversion = format == QImage::Format_Mono ? 0xff : 0;
        return forEachRow(planes, layout, image, [&](const auto &stored, uchar *row) {
            std::transform(
                stored[0].begin(), stored[0].end(), row, [inversion](uchar byte) { return uchar(byte ^ inversion); });
        });
    };
    const Result<bool> complete = convert();
    if (!complete)
        return complete.failure();
    pixels.complete = *complete;
    completeColorTable(image);
    return pixels;
}

}
