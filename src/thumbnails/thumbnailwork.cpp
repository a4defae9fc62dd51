#include "thumbnails/thumbnailwork.h"

#include "app/mediatypes.h"
#include "engine/ops/areaaverage.h"
#include "engine/polyimage.h"
#include "thumbnails/thumbnailblob.h"
#include "thumbnails/thumbnailsize.h"

#include <QDateTime>

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
/// Twice the largest thumbnail: a decoder that reduces leaves something to average, and all sizes are made of the same
/// pixels.
constexpr QSize sourceSize(2 * largestThumbnailSize, 2 * largestThumbnailSize);

/// By a whole factor, and to no less than `sourceSize`.
QImage withoutSurplus(const QImage &pixels, QSize size)
{
    const QSize needed = size.scaled(sourceSize, Qt::KeepAspectRatio).expandedTo({1, 1});
    const int factor = qMin(pixels.width() / needed.width(), pixels.height() / needed.height());
    return factor < 2 ? pixels : areaAverage(pixels, pixels.size() / factor);
}

/// Null when memory is short.
std::shared_ptr<const LoadedPicture> sourceOf(const QImage &pixels, const ImageInfo &info)
{
    Picture picture;
    picture.info = info;
    picture.pixels = withoutSurplus(pixels, info.size);
    return picture.isNull() ? nullptr : LoadedPicture::fromReduced(picture);
}

}

ThumbnailDecoder thumbnailDecoder(QAnyStringView kind)
{
    if (kind == kindPicture)
        return ThumbnailDecoder::Gvbox;
    return kind == kindPoly ? ThumbnailDecoder::PolyImage : ThumbnailDecoder::None;
}

Result<std::shared_ptr<const LoadedPicture>> loadThumbnailSource(const QString &path)
{
    const Result<Picture> decoded = decodeFile(path, {sourceSize, -1, 0});
    if (!decoded)
        return decoded.failure();
    auto source = sourceOf(decoded->pixels, decoded->info);
    if (!source)
        return Failure{QStringLiteral("not enough memory")};
    return source;
}

std::shared_ptr<const LoadedPicture> thumbnailSource(const LoadedPicture &picture)
{
    const QSize size = picture.info().size;
    return sourceOf(
        picture.atLeast(size.scaled(sourceSize, Qt::KeepAspectRatio).boundedTo(size)).pixels, picture.info());
}

qint64 estimatedThumbnailMemory(const QString &path)
{
    constexpr qint64 usual = 16 * mebibyte;
    const auto stamp = fileStamp(path);
    if (!stamp)
        return 0;
    // Most files by far: a decoder process would be asked for nothing.
    const bool isJpeg = path.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".jpeg"), Qt::CaseInsensitive);
    if (isJpeg && stamp->size <= usual)
        return usual + stamp->size;
    const Result<ImageInfo> info = probeFile(path);
    if (!info)
        return usual;
    const qint64 pixels = qint64(info->size.width()) * info->size.height();
    const int bits = info->bitsPerPixel;
    // A JPEG is decoded at an eighth; another picture stands in the decoder's memory and in this program's.
    if (info->codec == "JPEG")
        return pixels + stamp->size;
    const qint64 once = bits <= 1 ? pixels / 8 : bits <= 8 ? pixels : bits <= 32 ? pixels * 4 : pixels * 8;
    return 2 * once + stamp->size;
}

QByteArray encodedThumbnail(const std::shared_ptr<const LoadedPicture> &thumbnail, int compressionLevel)
{
    const std::optional<TypeCode> format = thumbnailFormat(compressionLevel);
    if (!format || !thumbnail)
        return {};
    PolyImage box;
    box.setPolyPicture(thumbnail);
    box.setPolyJpegQuality(thumbnailJpegQuality);
    box.setPolyJp2Quality(thumbnailJp2Quality(box.PictureWidth()));
    const QByteArray picture = box.ImageBlobSave(*format);
    return picture.isEmpty() ? picture : sealedBlob(picture);
}

QDate thumbnailDate(const QString &path)
{
    return fileDateTime(path).date();
}
