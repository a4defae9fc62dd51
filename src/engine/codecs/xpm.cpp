#include "engine/codecs/qtformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/qtread.h"
#include "engine/limits.h"

namespace {

/// Size and depth from the text: what Qt's reader tells of the size, and for XPM how many colours its table lists.
Result<ImageInfo> readInfo(const QByteArray &bytes, const char *format, const char *name, int bits)
{
    const QSize size = sizeByQt(bytes, format);
    if (size.isEmpty())
        return Failure{QStringLiteral("not an %1").arg(QLatin1String(name))};
    if (!limits::allows(size, 8))
        return Failure{tooLarge(size)};
    return ImageInfo{size, bits, 1, name};
}

Result<Picture> decodeText(const Result<ImageInfo> &info, const QByteArray &bytes, const char *format)
{
    if (!info)
        return info.failure();
    Result<QImage> image = readByQt(bytes, format);
    if (!image)
        return image.failure();
    Picture picture;
    picture.info = *info;
    picture.pixels = *std::move(image);
    picture.info.size = picture.pixels.size();
    return picture;
}

bool sniffXbm(Bytes head)
{
    return ByteReader(head).is(0, "#define ");
}

Result<ImageInfo> probeXbm(const EncodedFile &file, int)
{
    return readInfo(file.bytes, "xbm", xbmCodec.name, 1);
}

Result<Picture> decodeXbm(const EncodedFile &file, const DecodeHint &)
{
    return decodeText(probeXbm(file, -1), file.bytes, "xbm");
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
    return readInfo(file.bytes, "xpm", xpmCodec.name, colorCount(file.bytes) > 256 ? 24 : 8);
}

Result<Picture> decodeXpm(const EncodedFile &file, const DecodeHint &)
{
    return decodeText(probeXpm(file, -1), file.bytes, "xpm");
}

}

const Codec xbmCodec{"XBM", "xbm", sniffXbm, probeXbm, decodeXbm};
const Codec xpmCodec{"XPM", "xpm", sniffXpm, probeXpm, decodeXpm};
