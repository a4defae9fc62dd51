#include "engine/codecs/mbm.h"

#include "engine/codecs/mbmlayout.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/runs.h"
#include "engine/limits.h"

#include <cmath>
#include <vector>

using namespace mbm;

namespace {

/// The stored rows one by one, whatever their coding.
class Rows
{
public:
    explicit Rows(const Bitmap &bitmap)
        : m_plain(bitmap.compression == Plain)
        , m_data(bitmap.data)
        , m_runs(bitmap.data, codeOf(bitmap), unitOf(bitmap))
    {
    }

    /// The answer is how many bytes there were.
    size_t read(std::span<uchar> row)
    {
        if (!m_plain)
            return m_runs.read(row);
        const size_t count = std::min(row.size(), m_data.size());
        std::copy_n(m_data.begin(), count, row.begin());
        m_data = m_data.subspan(count);
        return count;
    }

private:
    static RunCode codeOf(const Bitmap &bitmap)
    {
        return bitmap.compression == Runs12 ? RunCode::Symbian12 : RunCode::Symbian;
    }
    static size_t unitOf(const Bitmap &bitmap)
    {
        constexpr size_t units[] = {1, 1, 2, 2, 3, 3, 4};
        return units[bitmap.compression];
    }

    bool m_plain;
    Bytes m_data;
    RunReader m_runs;
};

constexpr uchar reversed(uchar byte)
{
    uchar result = 0;
    for (int bit = 0; bit < 8; ++bit)
        result = uchar(result << 1 | (byte >> bit & 1));
    return result;
}

// In this format the first pixel of a byte is in its lowest bits.
void convertBits(const uchar *from, uchar *to, int width)
{
    static const auto table = [] {
        std::array<uchar, 256> bytes{};
        for (size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = reversed(uchar(i));
        return bytes;
    }();
    for (int i = 0; i < (width + 7) / 8; ++i)
        to[i] = table[from[i]];
}

template <int bits> void convertIndices(const uchar *from, uchar *to, int width)
{
    constexpr int perByte = 8 / bits;
    for (int x = 0; x < width; ++x)
        to[x] = uchar(from[x / perByte] >> (x % perByte * bits) & ((1 << bits) - 1));
}

void convertBytes(const uchar *from, uchar *to, int width)
{
    std::copy_n(from, width, to);
}

template <class Color> void convertColors(uchar *to, int width, Color color)
{
    QRgb *const row = reinterpret_cast<QRgb *>(to);
    for (int x = 0; x < width; ++x)
        row[x] = color(x);
}

quint32 wordAt(const uchar *from, int x)
{
    return from[2 * x] | quint32(from[2 * x + 1]) << 8;
}

void convert12(const uchar *from, uchar *to, int width)
{
    convertColors(to, width, [from](int x) {
        const quint32 word = wordAt(from, x);
        return qRgb(int(word >> 8 & 15) * 17, int(word >> 4 & 15) * 17, int(word & 15) * 17);
    });
}

void convert16(const uchar *from, uchar *to, int width)
{
    convertColors(to, width, [from](int x) {
        const quint32 word = wordAt(from, x);
        return qRgb(int((word >> 11) * 255 / 31), int((word >> 5 & 63) * 255 / 63), int((word & 31) * 255 / 31));
    });
}

void convert24(const uchar *from, uchar *to, int width)
{
    convertColors(to, width, [from](int x) { return qRgb(from[3 * x + 2], from[3 * x + 1], from[3 * x]); });
}

void convert32(const uchar *from, uchar *to, int width)
{
    convertColors(to, width, [from](int x) {
        const uchar *const pixel = from + size_t(x) * 4;
        return qRgba(pixel[2], pixel[1], pixel[0], pixel[3]);
    });
}

void convertOpaque32(const uchar *from, uchar *to, int width)
{
    convertColors(to, width, [from](int x) {
        const uchar *const pixel = from + size_t(x) * 4;
        return qRgb(pixel[2], pixel[1], pixel[0]);
    });
}

void convertMultiplied32(const uchar *from, uchar *to, int width)
{
    convertColors(to, width, [from](int x) {
        const uchar *const pixel = from + size_t(x) * 4;
        return qUnpremultiply(qRgba(pixel[2], pixel[1], pixel[0], pixel[3]));
    });
}

/// How one depth becomes pixels.
struct Shape
{
    QImage::Format format;
    void (*convert)(const uchar *from, uchar *to, int width);
    QList<QRgb> table; ///< of formats that have one
};

Shape shapeOf(const Bitmap &bitmap)
{
    const bool ownPalette = !bitmap.palette.isEmpty();
    const auto table = [&] {
        if (ownPalette)
            return bitmap.palette;
        return bitmap.color == Grey || bitmap.bits < 4 ? greys(bitmap.bits) : colors(bitmap.bits);
    };
    switch (bitmap.bits) {
    case 1:
        return {QImage::Format_Mono, convertBits, table()};
    case 2:
        return {QImage::Format_Indexed8, convertIndices<2>, table()};
    case 4:
        return {QImage::Format_Indexed8, convertIndices<4>, table()};
    case 8:
        if (bitmap.color == Grey && !ownPalette)
            return {QImage::Format_Grayscale8, convertBytes, {}};
        return {QImage::Format_Indexed8, convertBytes, table()};
    case 12:
        return {QImage::Format_RGB32, convert12, {}};
    case 16:
        return {QImage::Format_RGB32, convert16, {}};
    case 24:
        return {QImage::Format_RGB32, convert24, {}};
    default:
        break;
    }
    // The fourth byte is not stored.
    if (bitmap.compression == Runs24To32)
        return {QImage::Format_RGB32, convert24, {}};
    if (bitmap.color == WithAlpha)
        return {QImage::Format_ARGB32, convert32, {}};
    if (bitmap.color == WithMultipliedAlpha)
        return {QImage::Format_ARGB32, convertMultiplied32, {}};
    return {QImage::Format_RGB32, convertOpaque32, {}};
}

struct Pixels
{
    QImage image;
    bool complete = true;
};

Result<Pixels> readPixels(const Bitmap &bitmap)
{
    const Shape shape = shapeOf(bitmap);
    Pixels pixels{allocateImage(bitmap.size, shape.format)};
    if (pixels.image.isNull())
        return Failure{outOfMemory(bitmap.size)};
    if (!shape.table.isEmpty())
        pixels.image.setColorTable(shape.table);
    const int width = bitmap.size.width();
    const size_t stride = bitmap.compression == Runs24To32 ? size_t(width) * 3 : rowBytes(size_t(width), bitmap.bits);
    std::vector<uchar> row(stride);
    Rows rows(bitmap);
    for (int y = 0; y < bitmap.size.height(); ++y) {
        const size_t filled = rows.read(row);
        std::fill(row.begin() + std::ptrdiff_t(filled), row.end(), uchar(0xff));
        pixels.complete = filled == stride;
        // The last row of some files lacks the bytes that only fill it up.
        const bool hasAllPixels = filled * 8 >= size_t(width) * size_t(bitmap.bits);
        if (filled == 0 && y == 0)
            return Failure{QStringLiteral("the bitmap has no pixels")};
        if (filled > 0)
            shape.convert(row.data(), pixels.image.scanLine(y), width);
        if (pixels.complete)
            continue;
        pixels.complete = hasAllPixels && y == bitmap.size.height() - 1;
        blankRows(pixels.image, filled > 0 ? y + 1 : y);
        break;
    }
    completeColorTable(pixels.image);
    return pixels;
}

struct Opened
{
    Bitmap bitmap;
    ImageInfo info;
};

Result<Opened> openMbm(const QByteArray &file, int page)
{
    const Result<int> count = bitmapCount(bytesOf(file));
    if (!count)
        return count.failure();
    if (page < 0 || page >= *count)
        return Failure{QStringLiteral("the file has no bitmap %1").arg(page)};
    const Result<Bitmap> bitmap = readBitmap(bytesOf(file), page);
    if (!bitmap)
        return bitmap.failure();
    if (!limits::allows(bitmap->size))
        return Failure{tooLarge(bitmap->size)};
    return Opened{*bitmap, {bitmap->size, bitmap->bits, *count, mbmCodec.name}};
}

int dotsPerMeter(int pixels, int twips)
{
    constexpr double most = 1'000'000;
    return int(std::lround(std::min(pixels * twipsPerMeter / twips, most)));
}

bool sniffMbm(Bytes head)
{
    const ByteReader bytes(head);
    return (bytes.u32le(0) == fileStoreUid && bytes.u32le(4) == multiBitmapUid)
        || (bytes.u32le(0) == romStoreUid && bytes.u32le(4) > 0);
}

Result<ImageInfo> probeMbm(const EncodedFile &file, int)
{
    const Result<Opened> opened = openMbm(file.bytes, 0);
    if (!opened)
        return opened.failure();
    return opened->info;
}

Result<Picture> decodeMbm(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Opened> opened = openMbm(file.bytes, hint.page);
    if (!opened)
        return opened.failure();
    Result<Pixels> pixels = readPixels(opened->bitmap);
    if (!pixels)
        return pixels.failure();
    Picture picture;
    picture.info = opened->info;
    picture.pixels = std::move(pixels->image);
    picture.partial = !pixels->complete;
    if (const QSize twips = opened->bitmap.twips; !twips.isEmpty()) {
        picture.pixels.setDotsPerMeterX(dotsPerMeter(opened->bitmap.size.width(), twips.width()));
        picture.pixels.setDotsPerMeterY(dotsPerMeter(opened->bitmap.size.height(), twips.height()));
    }
    return picture;
}

}

const Codec mbmCodec{"MBM", "mbm", sniffMbm, probeMbm, decodeMbm};
