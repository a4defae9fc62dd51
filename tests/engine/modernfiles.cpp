#include "engine/modernfiles.h"

#include <QRgba64>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include <jxl/encode.h>
#include <libheif/heif.h>
#include <webp/encode.h>
#include <webp/mux.h>
#include <zlib.h>

QImage smoothImage(QSize size, QImage::Format format)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y,
                qRgba(40 + 150 * x / size.width(), 60 + 120 * y / size.height(), 128,
                    format == QImage::Format_ARGB32 ? 255 - 200 * x / size.width() : 255));
    }
    return image.convertToFormat(format);
}

namespace {

QByteArray taken(const uint8_t *bytes, size_t count)
{
    return QByteArray(reinterpret_cast<const char *>(bytes), qsizetype(count));
}

WebPData dataOf(const QByteArray &bytes)
{
    return {reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size())};
}

QByteArray assembled(WebPMux *mux)
{
    WebPData whole{};
    QByteArray bytes;
    if (WebPMuxAssemble(mux, &whole) == WEBP_MUX_OK)
        bytes = taken(whole.bytes, whole.size);
    WebPDataClear(&whole);
    WebPMuxDelete(mux);
    return bytes;
}

}

QByteArray webPOf(const QImage &image, const WebPWishes &wishes)
{
    const bool alpha = image.hasAlphaChannel();
    const QImage rgb = image.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    uint8_t *out = nullptr;
    size_t length = 0;
    const int stride = int(rgb.bytesPerLine());
    if (wishes.lossless)
        length = (alpha ? WebPEncodeLosslessRGBA : WebPEncodeLosslessRGB)(
            rgb.constBits(), rgb.width(), rgb.height(), stride, &out);
    else
        length = (alpha ? WebPEncodeRGBA : WebPEncodeRGB)(rgb.constBits(), rgb.width(), rgb.height(), stride, 95, &out);
    const QByteArray bytes = taken(out, length);
    WebPFree(out);
    if (wishes.exif.isEmpty() && wishes.profile.isEmpty())
        return bytes;
    const WebPData still = dataOf(bytes);
    WebPMux *const mux = WebPMuxCreate(&still, 1);
    const WebPData exif = dataOf(wishes.exif);
    const WebPData profile = dataOf(wishes.profile);
    if (exif.size > 0)
        WebPMuxSetChunk(mux, "EXIF", &exif, 1);
    if (profile.size > 0)
        WebPMuxSetChunk(mux, "ICCP", &profile, 1);
    return assembled(mux);
}

QByteArray webPOf(const QList<QImage> &frames)
{
    WebPMux *const mux = WebPMuxNew();
    const WebPMuxAnimParams forever{0xffffffff, 0};
    WebPMuxSetAnimationParams(mux, &forever);
    for (const QImage &image : frames) {
        const QByteArray bytes = webPOf(image);
        WebPMuxFrameInfo frame{};
        frame.bitstream = dataOf(bytes);
        frame.duration = 100;
        frame.id = WEBP_CHUNK_ANMF;
        frame.dispose_method = WEBP_MUX_DISPOSE_NONE;
        frame.blend_method = WEBP_MUX_NO_BLEND;
        WebPMuxPushFrame(mux, &frame, 1);
    }
    return assembled(mux);
}

namespace {

struct Release
{
    void operator()(heif_context *context) const { heif_context_free(context); }
    void operator()(heif_encoder *encoder) const { heif_encoder_release(encoder); }
    void operator()(heif_image *image) const { heif_image_release(image); }
    void operator()(heif_image_handle *handle) const { heif_image_handle_release(handle); }
    void operator()(heif_encoding_options *options) const { heif_encoding_options_free(options); }
    void operator()(JxlEncoder *encoder) const { JxlEncoderDestroy(encoder); }
};

std::unique_ptr<heif_image, Release> heifImage(const QImage &image, const HeifWishes &wishes)
{
    const bool deep = wishes.bits > 8;
    const bool alpha = image.hasAlphaChannel();
    heif_image *made = nullptr;
    const heif_chroma chroma = deep ? heif_chroma_interleaved_RRGGBB_LE
        : alpha                     ? heif_chroma_interleaved_RGBA
                                    : heif_chroma_interleaved_RGB;
    heif_image_create(image.width(), image.height(), heif_colorspace_RGB, chroma, &made);
    heif_image_add_plane(made, heif_channel_interleaved, image.width(), image.height(), wishes.bits);
    int stride = 0;
    uint8_t *const plane = heif_image_get_plane(made, heif_channel_interleaved, &stride);
    const QImage bytes = image.convertToFormat(alpha && !deep ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    for (int y = 0; y < image.height(); ++y) {
        const uchar *const row = bytes.constScanLine(y);
        uint8_t *const to = plane + y * stride;
        if (!deep) {
            std::memcpy(to, row, size_t(image.width()) * (alpha ? 4 : 3));
            continue;
        }
        for (int i = 0; i < image.width() * 3; ++i) {
            const int value = row[i] * ((1 << wishes.bits) - 1) / 255;
            to[2 * i] = uint8_t(value);
            to[2 * i + 1] = uint8_t(value >> 8);
        }
    }
    if (!wishes.profile.isEmpty())
        heif_image_set_raw_color_profile(made, "prof", wishes.profile.constData(), size_t(wishes.profile.size()));
    return std::unique_ptr<heif_image, Release>(made);
}

heif_error append(heif_context *, const void *data, size_t size, void *bytes)
{
    static_cast<QByteArray *>(bytes)->append(static_cast<const char *>(data), qsizetype(size));
    return {heif_error_Ok, heif_suberror_Unspecified, ""};
}

}

QByteArray heifOf(const QList<QImage> &pictures, const HeifWishes &wishes)
{
    const std::unique_ptr<heif_context, Release> context(heif_context_alloc());
    heif_encoder *found = nullptr;
    const heif_compression_format format = wishes.av1 ? heif_compression_AV1 : heif_compression_HEVC;
    if (heif_context_get_encoder_for_format(context.get(), format, &found).code != heif_error_Ok)
        return {};
    const std::unique_ptr<heif_encoder, Release> encoder(found);
    heif_encoder_set_lossy_quality(found, 95);
    if (wishes.av1)
        heif_encoder_set_parameter_integer(found, "speed", 9);
    else
        heif_encoder_set_parameter_string(found, "chroma", "444");
    const std::unique_ptr<heif_encoding_options, Release> options(heif_encoding_options_alloc());
    options->image_orientation = heif_orientation(wishes.orientation);
    for (const QImage &picture : pictures) {
        const auto image = heifImage(picture, wishes);
        heif_image_handle *handle = nullptr;
        if (heif_context_encode_image(context.get(), image.get(), found, options.get(), &handle).code != heif_error_Ok)
            return {};
        const std::unique_ptr<heif_image_handle, Release> main(handle);
        if (wishes.thumbnailSide == 0)
            continue;
        heif_image_handle *thumbnail = nullptr;
        heif_context_encode_thumbnail(
            context.get(), image.get(), handle, found, options.get(), wishes.thumbnailSide, &thumbnail);
        heif_image_handle_release(thumbnail);
    }
    QByteArray bytes;
    heif_writer writer{1, append};
    heif_context_write(context.get(), &writer, &bytes);
    return bytes;
}

namespace {

JxlBasicInfo basicInfo(const QImage &image, const JpegXlWishes &wishes, bool animated)
{
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = uint32_t(image.width());
    info.ysize = uint32_t(image.height());
    info.bits_per_sample = image.format() == QImage::Format_RGBA64 ? 16 : 8;
    info.num_color_channels = image.format() == QImage::Format_Grayscale8 ? 1 : 3;
    info.alpha_bits = image.format() == QImage::Format_ARGB32 ? 8 : 0;
    info.num_extra_channels = info.alpha_bits > 0 ? 1 : 0;
    info.uses_original_profile = wishes.lossless;
    info.orientation = JxlOrientation(wishes.orientation);
    info.have_animation = animated;
    info.animation.tps_numerator = 10;
    info.animation.tps_denominator = 1;
    return info;
}

/// The channels of the image, first red, rows side by side.
QByteArray channelsOf(const QImage &image)
{
    const bool grey = image.format() == QImage::Format_Grayscale8;
    QByteArray bytes;
    if (image.format() == QImage::Format_RGBA64) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgba64 color = image.pixelColor(x, y).rgba64();
                const quint16 samples[] = {color.red(), color.green(), color.blue()};
                bytes.append(reinterpret_cast<const char *>(samples), sizeof samples);
            }
        }
        return bytes;
    }
    const QImage plain =
        grey ? image : image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    for (int y = 0; y < plain.height(); ++y)
        bytes.append(reinterpret_cast<const char *>(plain.constScanLine(y)), plain.width() * plain.depth() / 8);
    return bytes;
}

}

QByteArray jpegXlOf(const QList<QImage> &frames, const JpegXlWishes &wishes)
{
    const std::unique_ptr<JxlEncoder, Release> encoder(JxlEncoderCreate(nullptr));
    const QImage &first = frames.constFirst();
    const JxlBasicInfo info = basicInfo(first, wishes, frames.size() > 1);
    JxlEncoderUseContainer(encoder.get(), wishes.container);
    JxlEncoderSetBasicInfo(encoder.get(), &info);
    JxlColorEncoding colors;
    JxlColorEncodingSetToSRGB(&colors, info.num_color_channels == 1);
    JxlEncoderSetColorEncoding(encoder.get(), &colors);
    JxlEncoderFrameSettings *const settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
    JxlEncoderSetFrameLossless(settings, wishes.lossless);
    JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, 2);
    const JxlPixelFormat layout{info.num_color_channels + (info.alpha_bits > 0 ? 1 : 0),
        info.bits_per_sample == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_LITTLE_ENDIAN, 0};
    for (const QImage &image : frames) {
        if (frames.size() > 1) {
            JxlFrameHeader header;
            JxlEncoderInitFrameHeader(&header);
            header.duration = 1;
            JxlEncoderSetFrameHeader(settings, &header);
        }
        const QByteArray channels = channelsOf(image);
        if (JxlEncoderAddImageFrame(settings, &layout, channels.constData(), size_t(channels.size()))
            != JXL_ENC_SUCCESS)
            return {};
    }
    JxlEncoderCloseInput(encoder.get());
    QByteArray bytes(1 << 20, '\0');
    uint8_t *next = reinterpret_cast<uint8_t *>(bytes.data());
    size_t left = size_t(bytes.size());
    if (JxlEncoderProcessOutput(encoder.get(), &next, &left) != JXL_ENC_SUCCESS)
        return {};
    bytes.chop(qsizetype(left));
    return bytes;
}

QByteArray qoiOf(const QImage &image)
{
    const bool alpha = image.hasAlphaChannel();
    const quint32 sides[] = {quint32(image.width()), quint32(image.height())};
    QByteArray bytes("qoif");
    for (const quint32 side : sides) {
        for (int shift = 24; shift >= 0; shift -= 8)
            bytes.append(char(side >> shift));
    }
    bytes.append(char(alpha ? 4 : 3)).append('\0');
    // Every kind of code once it fits: index, small and larger differences, runs, whole colours.
    QRgb seen[64] = {};
    QRgb last = qRgb(0, 0, 0);
    const auto place = [](QRgb c) { return (qRed(c) * 3 + qGreen(c) * 5 + qBlue(c) * 7 + qAlpha(c) * 11) % 64; };
    for (int i = 0; i < image.width() * image.height(); ++i) {
        const QRgb color = image.pixel(i % image.width(), i / image.width());
        const int red = qint8(qRed(color) - qRed(last)), green = qint8(qGreen(color) - qGreen(last)),
                  blue = qint8(qBlue(color) - qBlue(last));
        const auto within = [](int value, int low, int high) { return value >= low && value <= high; };
        const bool sameAlpha = qAlpha(color) == qAlpha(last);
        if (color == last)
            bytes.append(char(0xc0));
        else if (seen[place(color)] == color)
            bytes.append(char(place(color)));
        else if (sameAlpha && within(red, -2, 1) && within(green, -2, 1) && within(blue, -2, 1))
            bytes.append(char(0x40 | (red + 2) << 4 | (green + 2) << 2 | (blue + 2)));
        else if (sameAlpha && within(green, -32, 31) && within(red - green, -8, 7) && within(blue - green, -8, 7))
            bytes.append(char(0x80 | (green + 32))).append(char((red - green + 8) << 4 | (blue - green + 8)));
        else if (sameAlpha)
            bytes.append(char(0xfe)).append(char(qRed(color))).append(char(qGreen(color))).append(char(qBlue(color)));
        else
            bytes.append(char(0xff))
                .append(char(qRed(color)))
                .append(char(qGreen(color)))
                .append(char(qBlue(color)))
                .append(char(qAlpha(color)));
        seen[place(color)] = color;
        last = color;
    }
    return bytes + QByteArray("\0\0\0\0\0\0\0\1", 8);
}

QByteArray packed(const QByteArray &bytes)
{
    z_stream stream{};
    constexpr int gzip = 16;
    deflateInit2(&stream, Z_BEST_COMPRESSION, Z_DEFLATED, MAX_WBITS + gzip, 9, Z_DEFAULT_STRATEGY);
    QByteArray out(qsizetype(deflateBound(&stream, uLong(bytes.size()))) + 64, '\0');
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(bytes.constData()));
    stream.avail_in = uInt(bytes.size());
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = uInt(out.size());
    deflate(&stream, Z_FINISH);
    out.chop(qsizetype(stream.avail_out));
    deflateEnd(&stream);
    return out;
}
