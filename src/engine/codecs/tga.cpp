#include "engine/codecs/tga.h"

#include "engine/codecs/pixels.h"
#include "engine/codecs/runs.h"
#include "engine/codecs/tgalayout.h"
#include "engine/limits.h"

#include <algorithm>
#include <cstring>
#include <vector>

using namespace tga;

namespace {

/// 5 bits each of red, green, blue below one bit of alpha.
QRgb color15(const uchar *from)
{
    const int word = from[0] | from[1] << 8;
    return qRgba(
        (word >> 10 & 31) * 255 / 31, (word >> 5 & 31) * 255 / 31, (word & 31) * 255 / 31, word & 0x8000 ? 255 : 0);
}

QRgb color24(const uchar *from)
{
    return qRgb(from[2], from[1], from[0]);
}

QRgb color32(const uchar *from)
{
    return qRgba(from[2], from[1], from[0], from[3]);
}

QRgb greyAlpha(const uchar *from)
{
    return qRgba(from[0], from[0], from[0], from[1]);
}

QRgb straight(QRgb multiplied)
{
    return qUnpremultiply(multiplied);
}

using ColorOf = QRgb (*)(const uchar *from);

ColorOf colorOf(int bits)
{
    return bits == 24 ? color24 : bits == 32 ? color32 : color15;
}

/// The palette; entries before the first stored one are black.
QList<QRgb> readPalette(const Layout &layout, const ByteReader &bytes, const uchar *file)
{
    const size_t step = size_t(layout.mapBits + 7) / 8;
    const ColorOf color = colorOf(layout.mapBits);
    const int most = layout.bits == 8 ? 256 : 65536;
    QList<QRgb> table(std::min(layout.mapFirst + layout.mapLength, most), qRgb(0, 0, 0));
    for (int i = layout.mapFirst; i < table.size(); ++i) {
        const size_t at = layout.mapAt + size_t(i - layout.mapFirst) * step;
        if (bytes.has(at, step))
            table[i] = color(file + at) | (layout.hasAlpha ? 0 : 0xff000000);
    }
    return table;
}

/// Whether nothing could be seen of any stored entry.
bool isClear(const QList<QRgb> &table, int first)
{
    return std::all_of(table.begin() + std::min<qsizetype>(first, table.size()), table.end(),
        [](QRgb color) { return qAlpha(color) == 0; });
}

QImage::Format formatOf(const Layout &layout)
{
    if (layout.kind == Palette && layout.bits == 8)
        return QImage::Format_Indexed8;
    if (layout.kind == Grey && layout.bits == 8)
        return QImage::Format_Grayscale8;
    return layout.hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
}

/// Turns stored rows into the picture's.
class RowWriter
{
public:
    RowWriter(const Layout &layout, const QList<QRgb> &palette)
        : m_layout(layout)
        , m_palette(palette)
        , m_opaque(layout.hasAlpha ? 0 : 0xff000000)
    {
    }

    void write(const uchar *from, uchar *to) const
    {
        const int width = m_layout.size.width();
        QRgb *const colors = reinterpret_cast<QRgb *>(to);
        if (m_layout.kind == Palette && m_layout.bits == 16)
            writeByPalette(from, colors);
        else if (m_layout.bits == 8)
            std::copy_n(from, width, to);
        else if (m_layout.kind == Grey)
            writeColors<greyAlpha>(from, colors, 2);
        else if (m_layout.bits == 24)
            writeColors<color24>(from, colors, 3);
        else if (m_layout.bits == 32)
            writeColors<color32>(from, colors, 4);
        else
            writeColors<color15>(from, colors, 2);
        if (m_layout.isMultiplied && m_layout.kind != Palette)
            std::transform(colors, colors + width, colors, straight);
        if (m_layout.descriptor & FromRight)
            m_layout.bits == 8 ? std::reverse(to, to + width) : std::reverse(colors, colors + width);
    }

private:
    template <QRgb (*color)(const uchar *)> void writeColors(const uchar *from, QRgb *to, int step) const
    {
        for (int x = 0; x < m_layout.size.width(); ++x, from += step)
            to[x] = color(from) | m_opaque;
    }

    void writeByPalette(const uchar *from, QRgb *to) const
    {
        for (int x = 0; x < m_layout.size.width(); ++x, from += 2) {
            const int index = from[0] | from[1] << 8;
            to[x] = index < m_palette.size() ? m_palette.at(index) : 0xff000000;
        }
    }

    const Layout &m_layout;
    const QList<QRgb> &m_palette;
    QRgb m_opaque;
};

struct Pixels
{
    QImage image;
    bool complete = true;
};

Result<Pixels> readPixels(const Layout &layout, const QList<QRgb> &palette)
{
    Pixels pixels{allocateImage(layout.size, formatOf(layout))};
    QImage &image = pixels.image;
    if (image.isNull())
        return Failure{outOfMemory(layout.size)};
    if (image.format() == QImage::Format_Indexed8)
        image.setColorTable(palette);
    std::vector<uchar> row(size_t(layout.size.width()) * layout.pixelBytes());
    RunReader runs(layout.pixels, RunCode::Targa, layout.pixelBytes());
    Bytes plain = layout.pixels;
    const RowWriter writer(layout, palette);
    const int height = layout.size.height();
    const auto rowOf = [&](int stored) {
        return image.scanLine(layout.descriptor & FromTop ? stored : height - 1 - stored);
    };
    int reached = 0;
    for (; reached < height && pixels.complete; ++reached) {
        size_t filled = 0;
        if (layout.isPacked) {
            filled = runs.read(row);
        } else {
            filled = std::min(row.size(), plain.size());
            std::copy_n(plain.begin(), filled, row.begin());
            plain = plain.subspan(filled);
        }
        pixels.complete = filled == row.size();
        if (!pixels.complete && reached == 0)
            return Failure{QStringLiteral("a TGA without a whole row")};
        if (filled == 0)
            break;
        std::fill(row.begin() + std::ptrdiff_t(filled), row.end(), uchar(0));
        writer.write(row.data(), rowOf(reached));
    }
    // White, or clear, or the first colour, as everywhere.
    const bool isWhite = image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_Grayscale8;
    for (; reached < height; ++reached)
        std::memset(rowOf(reached), isWhite ? 0xff : 0, size_t(image.bytesPerLine()));
    return pixels;
}

/// Programs that know nothing of transparency leave the fourth byte 0 and claim that it is one: a picture of which
/// nothing could be seen is taken for opaque.
void dropEmptyAlpha(const Layout &layout, QImage &image)
{
    if (layout.hasTrustedAlpha || image.format() != QImage::Format_ARGB32)
        return;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *const row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        if (std::any_of(row, row + image.width(), [](QRgb pixel) { return qAlpha(pixel) != 0; }))
            return;
    }
    for (int y = 0; y < image.height(); ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        std::transform(row, row + image.width(), row, [](QRgb pixel) { return pixel | 0xff000000; });
    }
    image.reinterpretAsFormat(QImage::Format_RGB32);
}

Result<Layout> openTga(const QByteArray &file)
{
    Result<Layout> layout = readLayout(bytesOf(file));
    if (layout && !limits::allows(layout->size))
        return Failure{tooLarge(layout->size)};
    return layout;
}

ImageInfo infoOf(const Layout &layout)
{
    return {layout.size, layout.bits, 1, tgaCodec.name};
}

Result<ImageInfo> probeTga(const EncodedFile &file, int)
{
    const Result<Layout> layout = openTga(file.bytes);
    if (!layout)
        return layout.failure();
    return infoOf(*layout);
}

Result<Picture> decodeTga(const EncodedFile &file, const DecodeHint &)
{
    const Result<Layout> layout = openTga(file.bytes);
    if (!layout)
        return layout.failure();
    QList<QRgb> palette;
    if (layout->kind == Palette) {
        const Bytes bytes = bytesOf(file.bytes);
        palette = readPalette(*layout, ByteReader(bytes), bytes.data());
        if (!layout->hasTrustedAlpha && isClear(palette, layout->mapFirst))
            std::transform(palette.begin(), palette.end(), palette.begin(), [](QRgb c) { return c | 0xff000000; });
        else if (layout->isMultiplied)
            std::transform(palette.begin(), palette.end(), palette.begin(), straight);
    }
    Result<Pixels> pixels = readPixels(*layout, palette);
    if (!pixels)
        return pixels.failure();
    Picture picture;
    picture.info = infoOf(*layout);
    picture.pixels = std::move(pixels->image);
    picture.partial = !pixels->complete;
    picture.metadata.comment = layout->comment;
    dropEmptyAlpha(*layout, picture.pixels);
    completeColorTable(picture.pixels);
    return picture;
}

}

const Codec tgaCodec{"TGA", "tga", nullptr, probeTga, decodeTga};
