#include "engine/codecs/oddones.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/exif.h"
#include "engine/codecs/jpeg.h"

namespace {

constexpr int upsideDown = 4;

/// The JPEG inside, with its true markers. The Huffman tables are the standard ones, which the decoder knows itself.
QByteArray jpegInside(const QByteArray &file)
{
    const qsizetype start = file.indexOf("\xff\xc8\xff\xd0");
    if (!file.startsWith("SFW9") || start < 0)
        return {};
    QByteArray jpeg = file.mid(start);
    const auto trueMarker = [](uchar disguised) -> uchar {
        switch (disguised) {
        case 0xc8:
            return 0xd8; // start of image
        case 0xd0:
            return 0xe0; // application data
        case 0xcb:
            return 0xdb; // quantisation tables
        case 0xa0:
            return 0xc0; // baseline frame
        case 0xa4:
            return 0xc4; // Huffman tables
        case 0xca:
            return 0xda; // start of scan
        case 0xc9:
            return 0xd9; // end of image
        default:
            return disguised;
        }
    };
    qsizetype at = 0;
    while (at + 4 <= jpeg.size() && uchar(jpeg[at]) == 0xff) {
        const uchar marker = trueMarker(uchar(jpeg[at + 1]));
        jpeg[at + 1] = char(marker);
        if (marker == 0xda)
            break;
        at += marker == 0xd8 ? 2 : 2 + ByteReader(jpeg).u16be(size_t(at) + 2);
    }
    if (const qsizetype end = jpeg.lastIndexOf("\xff\xc9"); end > at)
        jpeg[end + 1] = char(0xd9);
    return jpeg;
}

bool sniffSfw(Bytes head)
{
    return ByteReader(head).is(0, "SFW9");
}

Result<ImageInfo> probeSfw(const EncodedFile &file, int)
{
    Result<ImageInfo> info = jpegCodec.probe({jpegInside(file.bytes), {}}, -1);
    if (info)
        info->codec = sfwCodec.name;
    return info;
}

Result<Picture> decodeSfw(const EncodedFile &file, const DecodeHint &hint)
{
    Result<Picture> picture = decodeStoredJpeg(jpegInside(file.bytes), hint.target);
    if (!picture)
        return picture.failure();
    picture->info.codec = sfwCodec.name;
    picture->pixels = uprighted(picture->pixels, upsideDown);
    return picture;
}

QSize compuServeSize(const QByteArray &bytes)
{
    if (bytes.startsWith("\x1bGH"))
        return {256, 192};
    return bytes.startsWith("\x1bGM") ? QSize(128, 96) : QSize();
}

bool sniffCompuServe(Bytes head)
{
    return ByteReader(head).is(0, "\x1bGH") || ByteReader(head).is(0, "\x1bGM");
}

Result<ImageInfo> probeCompuServe(const EncodedFile &file, int)
{
    const QSize size = compuServeSize(file.bytes);
    if (size.isEmpty())
        return Failure{QStringLiteral("not a CompuServe RLE")};
    return ImageInfo{size, 1, 1, compuServeCodec.name};
}

Result<Picture> decodeCompuServe(const EncodedFile &file, const DecodeHint &)
{
    const Result<ImageInfo> info = probeCompuServe(file, -1);
    if (!info)
        return info.failure();
    Picture picture;
    picture.info = *info;
    picture.pixels = QImage(info->size, QImage::Format_Mono);
    picture.pixels.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    picture.pixels.fill(0);
    const int width = info->size.width();
    const int pixels = width * info->size.height();
    int position = 0;
    bool foreground = false;
    constexpr char escape = 0x1b;
    for (qsizetype at = 3; at < file.bytes.size() && position < pixels && file.bytes[at] != escape; ++at) {
        // Line ends are of the terminal program that caught the picture.
        const int count = uchar(file.bytes[at]) - 32;
        if (count < 0)
            continue;
        const int end = qMin(position + count, pixels);
        for (; position < end; ++position) {
            if (foreground)
                picture.pixels.scanLine(position / width)[position % width / 8] |= uchar(0x80 >> position % 8);
        }
        foreground = !foreground;
    }
    picture.partial = position < pixels;
    return picture;
}

}

const Codec sfwCodec{"SFW", "sfw", sniffSfw, probeSfw, decodeSfw};
const Codec compuServeCodec{"CompuServe RLE", "rle", sniffCompuServe, probeCompuServe, decodeCompuServe, true};
