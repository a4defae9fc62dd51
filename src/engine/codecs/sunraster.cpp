#include "engine/codecs/sunraster.h"

#include "engine/codecs/pixels.h"
#include "engine/codecs/runs.h"
#include "engine/limits.h"

#include <algorithm>
#include <vector>

namespace {

constexpr quint32 magic = 0x59a66a95;
constexpr size_t headerBytes = 32;
enum Type : quint32 { Old = 0, Standard = 1, RunLengths = 2, RgbOrder = 3 };
enum MapType : quint32 { NoMap = 0, RgbPlanes = 1, RawMap = 2 };

struct Header
{
    QSize size;
    int bits = 0;
    quint32 type = Standard;
    quint32 mapType = NoMap;
    size_t mapBytes = 0;
    /// Rows are filled up to 16 bits.
    size_t rowBytes() const { return (size_t(size.width()) * size_t(bits) + 15) / 16 * 2; }
    bool hasColors() const { return mapType == RgbPlanes && mapBytes >= 3; }
    ImageInfo info() const { return {size, bits, 1, sunRasterCodec.name}; }
};

Result<Header> readHeader(const QByteArray &file)
{
    const ByteReader bytes(file);
    if (bytes.u32be(0) != magic || !bytes.has(0, headerBytes))
        return Failure{QStringLiteral("not a Sun raster file")};
    const auto side = [&](size_t at) { return int(std::min(bytes.u32be(at), quint32(limits::maximumSide) + 1)); };
    Header header;
    header.size = QSize(side(4), side(8));
    header.bits = side(12);
    header.type = bytes.u32be(20);
    header.mapType = bytes.u32be(24);
    header.mapBytes = bytes.u32be(28);
    constexpr std::array known{1, 4, 8, 24, 32};
    if (std::find(known.begin(), known.end(), header.bits) == known.end() || header.type > RgbOrder
        || header.mapType > RawMap)
        return Failure{QStringLiteral("a Sun raster file of an unknown kind")};
    if (!limits::allows(header.size))
        return Failure{tooLarge(header.size)};
    if (!bytes.has(headerBytes, header.mapBytes))
        return Failure{QStringLiteral("a Sun raster file that ends in its colour table")};
    return header;
}

QList<QRgb> colorTable(const Header &header, const ByteReader &bytes)
{
    QList<QRgb> table;
    if (header.hasColors()) {
        const size_t planeBytes = header.mapBytes / 3;
        const size_t count = std::min(planeBytes, size_t(1) << header.bits);
        const auto channel = [&](size_t plane, size_t i) { return bytes.u8(headerBytes + plane * planeBytes + i); };
        for (size_t i = 0; i < count; ++i)
            table.append(qRgb(channel(0, i), channel(1, i), channel(2, i)));
        return table;
    }
    if (header.bits == 1)
        return {qRgb(255, 255, 255), qRgb(0, 0, 0)};
    const int top = (1 << header.bits) - 1;
    for (int i = 0; i <= top; ++i)
        table.append(qRgb(i * 255 / top, i * 255 / top, i * 255 / top));
    return table;
}

QImage::Format formatOf(const Header &header)
{
    switch (header.bits) {
    case 1:
        return QImage::Format_Mono;
    case 4:
        return QImage::Format_Indexed8;
    case 8:
        return header.hasColors() ? QImage::Format_Indexed8 : QImage::Format_Grayscale8;
    default:
        return QImage::Format_RGB32;
    }
}

void convertColors(const Header &header, const uchar *from, QRgb *to)
{
    // With 32 bits a byte without a meaning comes first.
    const size_t step = size_t(header.bits) / 8;
    const uchar *pixel = from + (step - 3);
    const size_t red = header.type == RgbOrder ? 0 : 2;
    for (int x = 0; x < header.size.width(); ++x, pixel += step)
        to[x] = qRgb(pixel[red], pixel[1], pixel[2 - red]);
}

void convertRow(const Header &header, const uchar *from, uchar *to)
{
    const int width = header.size.width();
    switch (header.bits) {
    case 1:
        std::copy_n(from, (width + 7) / 8, to);
        break;
    case 4:
        for (int x = 0; x < width; ++x)
            to[x] = uchar(x % 2 ? from[x / 2] & 15 : from[x / 2] >> 4);
        break;
    case 8:
        std::copy_n(from, width, to);
        break;
    default:
        convertColors(header, from, reinterpret_cast<QRgb *>(to));
    }
}

bool sniffSunRaster(Bytes head)
{
    return ByteReader(head).u32be(0) == magic;
}

Result<ImageInfo> probeSunRaster(const EncodedFile &file, int)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    return header->info();
}

Result<Picture> decodeSunRaster(const EncodedFile &file, const DecodeHint &)
{
    const Result<Header> header = readHeader(file.bytes);
    if (!header)
        return header.failure();
    Picture picture;
    picture.info = header->info();
    picture.pixels = allocateImage(header->size, formatOf(*header));
    if (picture.isNull())
        return Failure{outOfMemory(header->size)};
    if (picture.pixels.format() == QImage::Format_Mono || picture.pixels.format() == QImage::Format_Indexed8)
        picture.pixels.setColorTable(colorTable(*header, ByteReader(file.bytes)));
    Bytes data = bytesOf(file.bytes).subspan(headerBytes + header->mapBytes);
    RunReader runs(data, RunCode::Sun, 1);
    std::vector<uchar> row(header->rowBytes());
    const size_t neededBytes = (size_t(header->size.width()) * size_t(header->bits) + 7) / 8;
    for (int y = 0; y < header->size.height(); ++y) {
        size_t filled = 0;
        if (header->type == RunLengths) {
            filled = runs.read(row);
        } else {
            filled = std::min(row.size(), data.size());
            std::copy_n(data.begin(), filled, row.begin());
            data = data.subspan(filled);
        }
        if (filled < neededBytes) {
            if (y == 0)
                return Failure{QStringLiteral("a Sun raster file without a whole row")};
            picture.partial = true;
            blankRows(picture.pixels, y);
            break;
        }
        convertRow(*header, row.data(), picture.pixels.scanLine(y));
    }
    completeColorTable(picture.pixels);
    return picture;
}

}

const Codec sunRasterCodec{"Sun raster", "ras", sniffSunRaster, probeSunRaster, decodeSunRaster};
