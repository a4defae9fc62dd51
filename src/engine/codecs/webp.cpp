#include "engine/codecs/modernformats.h"

#include "engine/codecs/exif.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <cstring>
#include <memory>

#include <webp/decode.h>
#include <webp/demux.h>

namespace {

struct Release
{
    void operator()(WebPDemuxer *demuxer) const { WebPDemuxDelete(demuxer); }
    void operator()(WebPAnimDecoder *decoder) const { WebPAnimDecoderDelete(decoder); }
    void operator()(WebPIDecoder *decoder) const { WebPIDelete(decoder); }
};

WebPData dataOf(const QByteArray &bytes)
{
    return {reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size())};
}

/// The file's parts, found without unpacking a pixel. A cut file still gives the parts that are whole.
struct Opened
{
    std::unique_ptr<WebPDemuxer, Release> demuxer;
    QSize size; ///< as stored
    bool hasAlpha = false;
    int frames = 1;
    int orientation = 1;

    bool isAnimation() const { return WebPDemuxGetI(demuxer.get(), WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG; }
    ImageInfo info() const { return {uprightSize(size, orientation), hasAlpha ? 32 : 24, frames, webPCodec.name}; }
};

QByteArray chunkOf(const WebPDemuxer *demuxer, const char *name)
{
    WebPChunkIterator chunk{};
    QByteArray bytes;
    if (WebPDemuxGetChunk(demuxer, name, 1, &chunk) && chunk.chunk.size <= size_t(limits::maximumMetadataBytes))
        bytes = QByteArray(reinterpret_cast<const char *>(chunk.chunk.bytes), qsizetype(chunk.chunk.size));
    WebPDemuxReleaseChunkIterator(&chunk);
    return bytes;
}

// The chunk is a TIFF structure; some writers put the marker of a JPEG in front.
int orientationOf(const WebPDemuxer *demuxer)
{
    const QByteArray exif = chunkOf(demuxer, "EXIF");
    return exif.startsWith("Exif") ? app1Orientation(bytesOf(exif)) : exifOrientation(bytesOf(exif));
}

Result<Opened> openWebP(const QByteArray &bytes)
{
    const WebPData data = dataOf(bytes);
    WebPBitstreamFeatures features{};
    if (WebPGetFeatures(data.bytes, data.size, &features) != VP8_STATUS_OK)
        return Failure{QStringLiteral("not a readable WebP")};
    WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
    Opened opened;
    opened.demuxer.reset(WebPDemuxPartial(&data, &state));
    if (!opened.demuxer || state < WEBP_DEMUX_PARSED_HEADER)
        return Failure{QStringLiteral("not a readable WebP: its parts do not fit together")};
    opened.size = {features.width, features.height};
    opened.hasAlpha = features.has_alpha != 0;
    if (!limits::allows(opened.size, features.has_animation ? 16 : 8))
        return Failure{tooLarge(opened.size)};
    opened.orientation = orientationOf(opened.demuxer.get());
    const quint32 frames = WebPDemuxGetI(opened.demuxer.get(), WEBP_FF_FRAME_COUNT);
    opened.frames = int(qBound(1U, frames, quint32(limits::maximumPages)));
    return opened;
}

/// Decodes into the image's own rows. The answer is the number of complete rows.
int decodeInto(QImage &image, const WebPData &data, bool scaled)
{
    WebPDecoderConfig config;
    if (!WebPInitDecoderConfig(&config))
        return 0;
    config.options.use_scaling = scaled;
    config.options.scaled_width = image.width();
    config.options.scaled_height = image.height();
    config.output.colorspace = MODE_BGRA;
    config.output.is_external_memory = 1;
    config.output.u.RGBA.rgba = image.bits();
    config.output.u.RGBA.stride = int(image.bytesPerLine());
    config.output.u.RGBA.size = size_t(image.sizeInBytes());
    const VP8StatusCode status = WebPDecode(data.bytes, data.size, &config);
    WebPFreeDecBuffer(&config.output);
    if (status == VP8_STATUS_OK)
        return image.height();
    // Cut or damaged: step by step the library hands out what lies before the damage.
    image.fill(0);
    const std::unique_ptr<WebPIDecoder, Release> steps(WebPIDecode(nullptr, 0, &config));
    if (!steps)
        return 0;
    WebPIUpdate(steps.get(), data.bytes, data.size);
    int rows = 0;
    if (!WebPIDecGetRGB(steps.get(), &rows, nullptr, nullptr, nullptr))
        return 0;
    return qBound(0, rows, image.height());
}

QImage::Format formatOf(bool hasAlpha)
{
    return hasAlpha ? QImage::Format_ARGB32 : QImage::Format_RGB32;
}

/// A still picture, at the size that fits the target when that is smaller.
Result<Picture> decodeStill(const Opened &opened, const WebPData &data, QSize target)
{
    QSize size = opened.size;
    if (!target.isEmpty()) {
        const QSize fitted = size.scaled(target, Qt::KeepAspectRatio).expandedTo({1, 1});
        if (fitted.width() < size.width() && fitted.height() < size.height())
            size = fitted;
    }
    Picture picture;
    picture.pixels = allocateImage(size, formatOf(opened.hasAlpha));
    if (picture.isNull())
        return Failure{outOfMemory(size)};
    const int rows = decodeInto(picture.pixels, data, size != opened.size);
    if (rows == 0)
        return Failure{QStringLiteral("a WebP without readable pixels")};
    picture.partial = rows < size.height();
    if (picture.partial)
        blankRows(picture.pixels, rows);
    return picture;
}

/// The first frame on the canvas; it need not cover it.
Result<Picture> decodeFirstFrame(const Opened &opened)
{
    WebPIterator frame{};
    if (!WebPDemuxGetFrame(opened.demuxer.get(), 1, &frame))
        return Failure{QStringLiteral("a WebP animation without a whole frame")};
    const QRect place(frame.x_offset, frame.y_offset, frame.width, frame.height);
    Picture picture;
    picture.pixels = allocateImage(opened.size, formatOf(opened.hasAlpha));
    if (!picture.isNull() && QRect({}, opened.size).contains(place)) {
        picture.pixels.fill(opened.hasAlpha ? 0 : 0xffffffff);
        QImage part(picture.pixels.scanLine(place.y()) + place.x() * 4, place.width(), place.height(),
            picture.pixels.bytesPerLine(), picture.pixels.format());
        picture.partial = decodeInto(part, frame.fragment, false) < place.height();
    } else {
        picture.pixels = {};
    }
    WebPDemuxReleaseIterator(&frame);
    if (picture.isNull())
        return Failure{QStringLiteral("a WebP animation whose first frame cannot be read")};
    return picture;
}

/// Any later frame: the library composes all up to it.
Result<Picture> decodeFrame(const Opened &opened, const WebPData &data, int page)
{
    WebPAnimDecoderOptions options;
    if (!WebPAnimDecoderOptionsInit(&options))
        return Failure{QStringLiteral("WebP: wrong library")};
    options.color_mode = MODE_BGRA;
    const std::unique_ptr<WebPAnimDecoder, Release> decoder(WebPAnimDecoderNew(&data, &options));
    uint8_t *canvas = nullptr;
    int shownUntil = 0;
    for (int i = 0; i <= page; ++i) {
        if (!decoder || !WebPAnimDecoderGetNext(decoder.get(), &canvas, &shownUntil))
            return Failure{QStringLiteral("the WebP's frame %1 cannot be read").arg(page)};
    }
    Picture picture;
    picture.pixels = allocateImage(opened.size, QImage::Format_ARGB32);
    if (picture.isNull())
        return Failure{outOfMemory(opened.size)};
    const size_t rowBytes = size_t(opened.size.width()) * 4;
    for (int y = 0; y < opened.size.height(); ++y)
        std::memcpy(picture.pixels.scanLine(y), canvas + size_t(y) * rowBytes, rowBytes);
    return picture;
}

bool sniffWebP(Bytes head)
{
    return ByteReader(head).is(0, "RIFF") && ByteReader(head).is(8, "WEBP");
}

Result<ImageInfo> probeWebP(const EncodedFile &file, int)
{
    const Result<Opened> opened = openWebP(file.bytes);
    if (!opened)
        return opened.failure();
    return opened->info();
}

Result<Picture> decodeWebP(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Opened> opened = openWebP(file.bytes);
    if (!opened)
        return opened.failure();
    if (hint.page < 0 || hint.page >= opened->frames)
        return Failure{QStringLiteral("the WebP has no frame %1").arg(hint.page)};
    const WebPData data = dataOf(file.bytes);
    Result<Picture> picture = !opened->isAnimation()
        ? decodeStill(*opened, data, uprightSize(hint.target, opened->orientation))
        : hint.page == 0 ? decodeFirstFrame(*opened)
                         : decodeFrame(*opened, data, hint.page);
    if (!picture)
        return picture;
    picture->info = opened->info();
    picture->iccProfile = chunkOf(opened->demuxer.get(), "ICCP");
    picture->pixels = uprighted(picture->pixels, opened->orientation);
    if (picture->isNull())
        return Failure{outOfMemory(opened->size)};
    return picture;
}

}

const Codec webPCodec{"WebP", "webp", sniffWebP, probeWebP, decodeWebP};
