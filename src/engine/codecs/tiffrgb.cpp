#include "engine/codecs/tiffrgb.h"

#include "engine/codecs/rgbrows.h"
#include "engine/limits.h"
#include "engine/picture.h"

#include <algorithm>
#include <vector>

#include <tiffio.h>

namespace {

/// A file can claim millions of strips or tiles and hold none of them.
constexpr int maximumFailures = 4096;

enum class Extra { None, Alpha, MultipliedAlpha, Other };

Extra extraSample(TIFF *file)
{
    quint16 count = 0;
    quint16 *kinds = nullptr;
    TIFFGetFieldDefaulted(file, TIFFTAG_EXTRASAMPLES, &count, &kinds);
    if (count == 0 || !kinds)
        return Extra::Other;
    switch (kinds[0]) {
    case EXTRASAMPLE_UNASSALPHA:
        return Extra::Alpha;
    case EXTRASAMPLE_ASSOCALPHA:
        return Extra::MultipliedAlpha;
    default:
        return Extra::Other;
    }
}

bool isJpegYcc(const TiffLayout &layout)
{
    return layout.compression == COMPRESSION_JPEG && layout.photometric == PHOTOMETRIC_YCBCR && layout.samples == 3;
}

/// The blocks, strips and tiles alike, that a picture is stored in.
struct Blocks
{
    int width = 0;
    int height = 0;
    tmsize_t stride = 0; ///< bytes a row of a block
};

Blocks blocksOf(TIFF *file, const TiffLayout &layout)
{
    quint32 width = quint32(layout.size.width());
    quint32 height = 0;
    Blocks blocks;
    if (layout.isTiled) {
        TIFFGetField(file, TIFFTAG_TILEWIDTH, &width);
        TIFFGetField(file, TIFFTAG_TILELENGTH, &height);
        blocks.stride = TIFFTileRowSize(file);
    } else {
        TIFFGetFieldDefaulted(file, TIFFTAG_ROWSPERSTRIP, &height);
        height = std::min(height, quint32(layout.size.height()));
        blocks.stride = TIFFScanlineSize(file);
    }
    constexpr quint32 beyond = 1U << 24;
    blocks.width = int(std::min(width, beyond));
    blocks.height = int(std::min(height, beyond));
    return blocks;
}

bool areSound(const Blocks &blocks, const TiffLayout &layout)
{
    return blocks.width > 0 && blocks.height > 0 && blocks.stride >= tmsize_t(blocks.width) * layout.samples
        && blocks.stride <= limits::decodeBudget() / blocks.height;
}

/// Reads the block at that pixel.
bool readBlock(TIFF *file, const TiffLayout &layout, int left, int top, std::vector<uchar> &block, tmsize_t wanted)
{
    if (layout.isTiled)
        return TIFFReadTile(file, block.data(), quint32(left), quint32(top), 0, 0) >= 0;
    return TIFFReadEncodedStrip(file, TIFFComputeStrip(file, quint32(top), 0), block.data(), wanted) >= 0;
}

// Some writers say that alpha is multiplied in and forget to do it: no colour gets brighter than full.
void divideByAlpha(QRgb *row, int count)
{
    for (int x = 0; x < count; ++x) {
        const int alpha = qAlpha(row[x]);
        if (alpha == 255)
            continue;
        const auto divided = [alpha](int color) {
            return alpha == 0 ? 0 : std::min((color * 255 + alpha / 2) / alpha, 255);
        };
        row[x] = qRgba(divided(qRed(row[x])), divided(qGreen(row[x])), divided(qBlue(row[x])), alpha);
    }
}

void writeRow(const uchar *samples, QRgb *to, int count, Extra extra)
{
    switch (extra) {
    case Extra::Alpha:
        rgbaRow(samples, to, count);
        break;
    case Extra::MultipliedAlpha:
        rgbaRow(samples, to, count);
        divideByAlpha(to, count);
        break;
    case Extra::None:
        rgbRow(samples, to, count);
        break;
    case Extra::Other:
        for (int x = 0; x < count; ++x, samples += 4)
            to[x] = qRgb(samples[0], samples[1], samples[2]);
    }
}

}

bool canReadTiffRgb(TIFF *file, const TiffLayout &layout)
{
    if (layout.planar != PLANARCONFIG_CONTIG || layout.bits != 8 || layout.samples < 3 || layout.samples > 4
        || layout.sampleFormat != SAMPLEFORMAT_UINT)
        return false;
    if (isJpegYcc(layout)) {
        TIFFSetField(file, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        return true;
    }
    return layout.isRgb() && layout.compression != COMPRESSION_OJPEG;
}

QImage readTiffRgb(TIFF *file, const TiffLayout &layout)
{
    const Blocks blocks = blocksOf(file, layout);
    if (!areSound(blocks, layout))
        return {};
    const Extra extra = layout.samples == 3 ? Extra::None : extraSample(file);
    const bool alpha = extra == Extra::Alpha || extra == Extra::MultipliedAlpha;
    QImage image = allocateImage(layout.size, alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (image.isNull())
        return image;
    const tmsize_t bytes = layout.isTiled ? TIFFTileSize(file) : blocks.stride * blocks.height;
    if (bytes < blocks.stride * blocks.height || bytes > limits::decodeBudget())
        return {};
    std::vector<uchar> block(static_cast<size_t>(bytes));
    bool any = false;
    int failures = 0;
    for (int top = 0; top < image.height(); top += blocks.height) {
        const int rows = std::min(blocks.height, image.height() - top);
        for (int left = 0; left < image.width(); left += blocks.width) {
            const int columns = std::min(blocks.width, image.width() - left);
            // A damaged block gives its first rows; the rest must not show what the block before left.
            std::fill(block.begin(), block.end(), uchar(0));
            const bool read =
                failures <= maximumFailures && readBlock(file, layout, left, top, block, blocks.stride * rows);
            any = any || read;
            failures += read ? 0 : 1;
            for (int y = 0; y < rows; ++y)
                writeRow(block.data() + y * blocks.stride, reinterpret_cast<QRgb *>(image.scanLine(top + y)) + left,
                    columns, extra);
        }
    }
    return any ? image : QImage();
}
