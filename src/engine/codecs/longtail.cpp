#include "engine/codecs/longtail.h"

#include "engine/codecs/completed.h"
#include "engine/codecs/magickheaders.h"
#include "engine/codecs/magickread.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

namespace {

struct Format
{
    const char *name; ///< of the codec's row
    const char *magick; ///< the library's name
    std::optional<MagickHeader> (*header)(const ByteReader &bytes, int sizeIndex);
    bool isPhotoCd = false;
    CompletedFile (*completed)(const QByteArray &bytes) = nullptr; ///< what the library gets in place of the file
};

constexpr int bytesPerPixel = 16;

Result<MagickHeader> readHeader(const Format &format, const QByteArray &bytes, int sizeIndex)
{
    const std::optional<MagickHeader> header = format.header(ByteReader(bytes), sizeIndex);
    if (!header)
        return Failure{QStringLiteral("not of the format ") + QLatin1String(format.name)};
    if (header->size.isValid() && !limits::allows(header->size, bytesPerPixel))
        return Failure{tooLarge(header->size)};
    return *header;
}

int depthOf(const QImage &image)
{
    if (image.format() == QImage::Format_Mono)
        return 1;
    return image.format() == QImage::Format_Indexed8 ? 8 : image.hasAlphaChannel() ? 32 : 24;
}

Result<Picture> decodeAs(const Format &format, const EncodedFile &file, const DecodeHint &hint)
{
    const Result<MagickHeader> header = readHeader(format, file.bytes, hint.sizeIndex);
    if (!header)
        return header.failure();
    if (hint.page < 0 || hint.page >= header->pages)
        return Failure{QStringLiteral("the file has no picture %1").arg(hint.page)};
    // The library counts a Photo CD's sizes as pictures, from 1.
    const int page = format.isPhotoCd ? photoCdSize(hint.sizeIndex) + 1 : hint.page;
    const CompletedFile whole = format.completed ? format.completed(file.bytes) : CompletedFile{file.bytes, false};
    const Result<MagickPicture> read = readByMagick(whole.bytes, format.magick, page, header->bits >= 48);
    if (!read)
        return read.failure();
    Picture picture;
    picture.pixels = read->pixels;
    picture.partial = read->damaged || whole.wasCut;
    if (!header->dotsPerInch.isEmpty()) {
        picture.pixels.setDotsPerMeterX(qRound(header->dotsPerInch.width() / 0.0254));
        picture.pixels.setDotsPerMeterY(qRound(header->dotsPerInch.height() / 0.0254));
    }
    picture.info = {
        picture.pixels.size(), header->bits ? header->bits : depthOf(picture.pixels), header->pages, format.name};
    return picture;
}

/// The smallest of the five sizes that serves, told as a reduction of the one that was asked for.
Result<Picture> decodePhotoCd(const Format &format, const EncodedFile &file, const DecodeHint &hint)
{
    const Result<MagickHeader> asked = readHeader(format, file.bytes, hint.sizeIndex);
    if (!asked)
        return asked.failure();
    const int most = photoCdSize(hint.sizeIndex);
    int index = 0;
    while (index < most && !isLargeEnough(asked->size / (1 << (most - index)), asked->size, hint.target))
        ++index;
    Result<Picture> picture = decodeAs(format, file, {hint.target, index, hint.page});
    if (picture && index < most)
        picture->info.size = asked->size;
    return picture;
}

Result<ImageInfo> probeAs(const Format &format, const EncodedFile &file, int sizeIndex)
{
    const Result<MagickHeader> header = readHeader(format, file.bytes, sizeIndex);
    if (!header)
        return header.failure();
    if (header->size.isValid() && header->bits > 0)
        return ImageInfo{header->size, header->bits, header->pages, format.name};
    const Result<Picture> picture = decodeAs(format, file, {QSize(), sizeIndex, 0});
    if (!picture)
        return picture.failure();
    return picture->info;
}

template <const Format &format> bool sniffHeader(Bytes head)
{
    return format.header(ByteReader(head), -1).has_value();
}

template <const Format &format> constexpr Codec row(const char *extensions, bool (*sniff)(Bytes) = nullptr)
{
    return {format.name, extensions, sniff,
        [](const EncodedFile &file, int sizeIndex) { return probeAs(format, file, sizeIndex); },
        [](const EncodedFile &file, const DecodeHint &hint) {
            return format.isPhotoCd ? decodePhotoCd(format, file, hint) : decodeAs(format, file, hint);
        }};
}

constexpr Format art{"ART", "ART", artHeader, false, completedArt};
constexpr Format dcx{"DCX", "DCX", dcxHeader, false, completedDcx};
constexpr Format hrz{"HRZ", "HRZ", hrzHeader};
constexpr Format mac{"MacPaint", "MAC", macHeader, false, completedMac};
constexpr Format pcd{"Photo CD", "PCD", pcdHeader, true};
constexpr Format pcx{"PCX", "PCX", pcxHeader, false, completedPcx};
constexpr Format utah{"Utah RLE", "RLE", utahHeader, false, completedUtah};
constexpr Format wbmp{"WBMP", "WBMP", wbmpHeader, false, completedWbmp};
constexpr Format wpg{"WPG", "WPG", wpgHeader};
constexpr Format xbm{"XBM", "XBM", xbmHeader};
constexpr Format xpm{"XPM", "XPM", xpmHeader};
constexpr Format xwd{"XWD", "XWD", xwdHeader, false, completedXwd};

// Formats whose header says little about itself are chosen by the name alone.
const Codec rows[] = {
    row<pcx>("pcx", [](Bytes head) { return head.size() > 128 && sniffHeader<pcx>(head); }),
    row<dcx>("dcx", sniffHeader<dcx>),
    row<pcd>("pcd", sniffHeader<pcd>),
    row<wpg>("wpg", sniffHeader<wpg>),
    row<utah>("rle", sniffHeader<utah>),
    row<xwd>("xwd", [](Bytes head) { return head.size() > 100 && sniffHeader<xwd>(head); }),
    row<wbmp>("wbmp"),
    row<mac>("mac"),
    row<hrz>("hrz"),
    row<art>("art"),
    row<xbm>("xbm"),
    row<xpm>("xpm"),
};

}

std::span<const Codec *const> longTailCodecs()
{
    static const auto pointers = [] {
        std::array<const Codec *, std::size(rows)> result{};
        for (size_t i = 0; i < result.size(); ++i)
            result[i] = &rows[i];
        return result;
    }();
    return pointers;
}
