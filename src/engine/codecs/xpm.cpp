#include "engine/codecs/qtformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/qtread.h"
#include "engine/limits.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <optional>

namespace {

bool sniffXbm(Bytes head)
{
    return ByteReader(head).is(0, "#define ");
}

/// The number behind `name` in a "#define" line; 0 when there is none.
int definedNumber(const QByteArray &head, const char *name)
{
    const qsizetype at = head.indexOf(name);
    return at < 0 ? 0 : head.mid(at + qsizetype(qstrlen(name)), 20).simplified().split(' ').constFirst().toInt();
}

Result<ImageInfo> probeXbm(const EncodedFile &file, int)
{
    const QByteArray head = file.bytes.left(std::max<qsizetype>(file.bytes.indexOf('{'), 0));
    const QSize size(definedNumber(head, "_width "), definedNumber(head, "_height "));
    if (size.isEmpty())
        return Failure{QStringLiteral("not an XBM")};
    if (!limits::allows(size, 1))
        return Failure{tooLarge(size)};
    return ImageInfo{size, 1, 1, xbmCodec.name};
}

/// The next number of a C array in any of C's notations; nothing at the array's end.
std::optional<quint32> nextElement(const ByteReader &bytes, size_t &at)
{
    while (bytes.has(at, 1) && bytes.u8(at) != '}' && !std::isdigit(bytes.u8(at)))
        ++at;
    if (!std::isdigit(bytes.u8(at)))
        return {};
    std::array<char, 16> text{};
    for (size_t i = 0; std::isalnum(bytes.u8(at)); ++at, ++i) {
        if (i < text.size() - 1)
            text[i] = char(bytes.u8(at));
    }
    return quint32(std::strtoul(text.data(), nullptr, 0));
}

/// Fills the row from its lowest bits on. False when the array ends before the row does.
bool readXbmRow(const ByteReader &bytes, size_t &at, int elementBits, int width, uchar *row)
{
    for (int x = 0; x < width; x += elementBits) {
        const std::optional<quint32> element = nextElement(bytes, at);
        if (!element)
            return false;
        for (int i = 0; i < std::min(elementBits, width - x); ++i)
            row[(x + i) / 8] |= uchar((*element >> i & 1) << (7 - (x + i) % 8));
    }
    return true;
}

Result<Picture> decodeXbm(const EncodedFile &file, const DecodeHint &)
{
    const Result<ImageInfo> info = probeXbm(file, -1);
    if (!info)
        return info.failure();
    const ByteReader bytes(file.bytes);
    size_t at = size_t(file.bytes.indexOf('{'));
    // The version of X10 has elements of 16 bits.
    const int elementBits = file.bytes.left(qsizetype(at)).contains(" short ") ? 16 : 8;
    if (bytes.size() - at < size_t(info->size.width()) / size_t(elementBits))
        return Failure{QStringLiteral("an XBM without rows")};
    Picture picture;
    picture.info = *info;
    picture.pixels = allocateImage(info->size, QImage::Format_Mono);
    if (picture.isNull())
        return Failure{outOfMemory(info->size)};
    picture.pixels.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    picture.pixels.fill(0);
    for (int y = 0; y < info->size.height() && !picture.partial; ++y)
        picture.partial = !readXbmRow(bytes, at, elementBits, info->size.width(), picture.pixels.scanLine(y));
    return picture;
}

/// The third number of the first quoted string: "width height colours characters".
int colorCount(const QByteArray &bytes)
{
    const qsizetype quote = bytes.indexOf('"');
    const QList<QByteArray> numbers = bytes.mid(quote + 1, 100).simplified().split(' ');
    return numbers.size() > 2 ? numbers.at(2).toInt() : 0;
}

bool sniffXpm(Bytes head)
{
    return ByteReader(head).is(0, "/* XPM");
}

Result<ImageInfo> probeXpm(const EncodedFile &file, int)
{
    const QSize size = sizeByQt(file.bytes, "xpm");
    if (size.isEmpty())
        return Failure{QStringLiteral("not an XPM")};
    if (!limits::allows(size, 8))
        return Failure{tooLarge(size)};
    return ImageInfo{size, colorCount(file.bytes) > 256 ? 24 : 8, 1, xpmCodec.name};
}

Result<Picture> decodeXpm(const EncodedFile &file, const DecodeHint &)
{
    const Result<ImageInfo> info = probeXpm(file, -1);
    if (!info)
        return info.failure();
    Result<QImage> image = readByQt(file.bytes, "xpm");
    if (!image)
        return image.failure();
    Picture picture;
    picture.info = *info;
    picture.pixels = *std::move(image);
    picture.info.size = picture.pixels.size();
    return picture;
}

}

const Codec xbmCodec{"XBM", "xbm", sniffXbm, probeXbm, decodeXbm};
const Codec xpmCodec{"XPM", "xpm", sniffXpm, probeXpm, decodeXpm};
