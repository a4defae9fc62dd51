#include "engine/codecs/modernformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QRgba64>

#include <algorithm>
#include <memory>
#include <vector>

#include <libheif/heif.h>

namespace {

struct Release
{
    void operator()(heif_context *context) const { heif_context_free(context); }
    void operator()(heif_image_handle *handle) const { heif_image_handle_release(handle); }
    void operator()(heif_image *image) const { heif_image_release(image); }
    void operator()(heif_decoding_options *options) const { heif_decoding_options_free(options); }
};
using Handle = std::unique_ptr<heif_image_handle, Release>;

Failure failure(const heif_error &error)
{
    return {QStringLiteral("not a readable HEIF: ") + QString::fromUtf8(error.message)};
}

QSize sizeOf(const heif_image_handle *handle)
{
    return {heif_image_handle_get_width(handle), heif_image_handle_get_height(handle)};
}

/// One of a file's pictures, its header read.
struct Opened
{
    std::unique_ptr<heif_context, Release> context;
    Handle handle;
    int pages = 1;

    bool hasAlpha() const { return heif_image_handle_has_alpha_channel(handle.get()) != 0; }
    int bits() const { return std::max(heif_image_handle_get_luma_bits_per_pixel(handle.get()), 1); }
    ImageInfo info() const { return {sizeOf(handle.get()), bits() * (hasAlpha() ? 4 : 3), pages, heifCodec.name}; }
};

/// The top-level pictures, the one that the file wants shown first.
std::vector<heif_item_id> picturesOf(heif_context *context)
{
    const int count = std::clamp(heif_context_get_number_of_top_level_images(context), 0, limits::maximumPages);
    std::vector<heif_item_id> ids(static_cast<size_t>(count));
    heif_context_get_list_of_top_level_image_IDs(context, ids.data(), count);
    heif_item_id primary = 0;
    if (heif_context_get_primary_image_ID(context, &primary).code == heif_error_Ok)
        std::stable_partition(ids.begin(), ids.end(), [primary](heif_item_id id) { return id == primary; });
    return ids;
}

Result<Opened> openHeif(const QByteArray &bytes, int page)
{
    Opened opened;
    opened.context.reset(heif_context_alloc());
    if (!opened.context)
        return Failure{QStringLiteral("HEIF: out of memory")};
    heif_context *const context = opened.context.get();
    constexpr int threads = 2;
    heif_context_set_max_decoding_threads(context, threads);
    heif_context_set_maximum_image_size_limit(context, limits::maximumSide);
    const heif_error read =
        heif_context_read_from_memory_without_copy(context, bytes.constData(), size_t(bytes.size()), nullptr);
    if (read.code != heif_error_Ok)
        return failure(read);
    const std::vector<heif_item_id> ids = picturesOf(context);
    if (page < 0 || size_t(page) >= ids.size())
        return Failure{QStringLiteral("the HEIF has no picture %1").arg(page)};
    opened.pages = int(ids.size());
    heif_image_handle *handle = nullptr;
    const heif_error got = heif_context_get_image_handle(context, ids[size_t(page)], &handle);
    opened.handle.reset(handle);
    if (got.code != heif_error_Ok)
        return failure(got);
    // The library holds the planes as coded and as colours, and once more while it turns them.
    if (!limits::allows(sizeOf(handle), opened.bits() > 8 ? 24 : 12))
        return Failure{tooLarge(sizeOf(handle))};
    return opened;
}

bool sameShape(QSize a, QSize b)
{
    return std::abs(double(a.width()) * b.height() / (double(b.width()) * a.height()) - 1) < 0.02;
}

/// The smallest stored thumbnail that serves the target; null when there is none.
Handle thumbnailFor(const heif_image_handle *main, QSize target)
{
    constexpr int most = 16;
    heif_item_id ids[most];
    const int count = target.isEmpty() ? 0 : heif_image_handle_get_list_of_thumbnail_IDs(main, ids, most);
    Handle best;
    for (int i = 0; i < count; ++i) {
        heif_image_handle *handle = nullptr;
        heif_image_handle_get_thumbnail(main, ids[i], &handle);
        Handle thumbnail(handle);
        if (!thumbnail || sizeOf(handle).isEmpty() || !sameShape(sizeOf(handle), sizeOf(main))
            || !isLargeEnough(sizeOf(handle), sizeOf(main), target))
            continue;
        if (!best || sizeOf(handle).width() < sizeOf(best.get()).width())
            best = std::move(thumbnail);
    }
    return best;
}

void convertShallowRow(const uchar *from, QRgb *to, int count, int channels)
{
    if (channels == 3) {
        for (int x = 0; x < count; ++x, from += 3)
            to[x] = qRgb(from[0], from[1], from[2]);
    } else {
        for (int x = 0; x < count; ++x, from += 4)
            to[x] = qRgba(from[0], from[1], from[2], from[3]);
    }
}

void convertDeepRow(const uchar *from, QRgba64 *to, int count, int channels, int bits)
{
    const quint32 largest = (1U << bits) - 1;
    const auto sample = [&](int channel) {
        const quint32 value = quint32(from[2 * channel] | from[2 * channel + 1] << 8);
        return quint16((std::min(value, largest) * 65535 + largest / 2) / largest);
    };
    for (int x = 0; x < count; ++x, from += 2 * channels)
        to[x] = QRgba64::fromRgba64(sample(0), sample(1), sample(2), channels == 4 ? sample(3) : quint16(0xffff));
}

heif_chroma layoutOf(bool deep, bool alpha)
{
    if (deep)
        return alpha ? heif_chroma_interleaved_RRGGBBAA_LE : heif_chroma_interleaved_RRGGBB_LE;
    return alpha ? heif_chroma_interleaved_RGBA : heif_chroma_interleaved_RGB;
}

Result<QImage> imageOf(const heif_image *decoded, bool deep, bool alpha)
{
    const QSize size(heif_image_get_width(decoded, heif_channel_interleaved),
        heif_image_get_height(decoded, heif_channel_interleaved));
    const int bits = heif_image_get_bits_per_pixel_range(decoded, heif_channel_interleaved);
    const int channels = alpha ? 4 : 3;
    int stride = 0;
    const uchar *const plane = heif_image_get_plane_readonly(decoded, heif_channel_interleaved, &stride);
    if (!plane || size.isEmpty() || stride < size.width() * channels * (deep ? 2 : 1) || bits < 1 || bits > 16)
        return Failure{QStringLiteral("HEIF: no pixels came out")};
    QImage image = allocateImage(size,
        deep        ? QImage::Format_RGBA64
            : alpha ? QImage::Format_ARGB32
                    : QImage::Format_RGB32);
    if (image.isNull())
        return Failure{outOfMemory(size)};
    for (int y = 0; y < size.height(); ++y) {
        const uchar *const from = plane + size_t(y) * size_t(stride);
        if (deep)
            convertDeepRow(from, reinterpret_cast<QRgba64 *>(image.scanLine(y)), size.width(), channels, bits);
        else
            convertShallowRow(from, reinterpret_cast<QRgb *>(image.scanLine(y)), size.width(), channels);
    }
    return image;
}

struct Decoded
{
    QImage pixels;
    bool damaged = false;
};

Result<Decoded> decodeHandle(const heif_image_handle *handle)
{
    const bool deep = heif_image_handle_get_luma_bits_per_pixel(handle) > 8;
    const bool alpha = heif_image_handle_has_alpha_channel(handle);
    const std::unique_ptr<heif_decoding_options, Release> options(heif_decoding_options_alloc());
    heif_image *image = nullptr;
    const heif_error error =
        heif_decode_image(handle, &image, heif_colorspace_RGB, layoutOf(deep, alpha), options.get());
    const std::unique_ptr<heif_image, Release> decoded(image);
    if (error.code != heif_error_Ok)
        return failure(error);
    const bool damaged = heif_image_get_decoding_warnings(image, 0, nullptr, 0) > 0;
    Result<QImage> pixels = imageOf(image, deep, alpha);
    if (!pixels)
        return pixels.failure();
    if (alpha && heif_image_handle_is_premultiplied_alpha(handle)) {
        pixels->reinterpretAsFormat(deep ? QImage::Format_RGBA64_Premultiplied : QImage::Format_ARGB32_Premultiplied);
        pixels->convertTo(deep ? QImage::Format_RGBA64 : QImage::Format_ARGB32);
    }
    return Decoded{*std::move(pixels), damaged};
}

QByteArray profileOf(const heif_image_handle *handle)
{
    const heif_color_profile_type type = heif_image_handle_get_color_profile_type(handle);
    if (type != heif_color_profile_type_rICC && type != heif_color_profile_type_prof)
        return {};
    const size_t length = heif_image_handle_get_raw_color_profile_size(handle);
    if (length == 0 || length > size_t(limits::maximumMetadataBytes))
        return {};
    QByteArray profile(qsizetype(length), '\0');
    if (heif_image_handle_get_raw_color_profile(handle, profile.data()).code != heif_error_Ok)
        return {};
    return profile;
}

bool isBrand(const ByteReader &bytes, size_t at)
{
    return bytes.is(at, "heic") || bytes.is(at, "heix") || bytes.is(at, "heim") || bytes.is(at, "heis")
        || bytes.is(at, "hevc") || bytes.is(at, "hevx") || bytes.is(at, "mif1") || bytes.is(at, "msf1")
        || bytes.is(at, "avif") || bytes.is(at, "avis");
}

/// The box of brands comes first; any of them may be the one that counts.
bool sniffHeif(Bytes head)
{
    const ByteReader bytes(head);
    if (!bytes.is(4, "ftyp"))
        return false;
    // Canon's raw files are of this family of containers, too, but not of these codecs.
    if (bytes.is(8, "crx "))
        return false;
    const size_t end = std::min(size_t(bytes.u32be(0)), bytes.size());
    for (size_t at = 8; at + 4 <= end; at += at == 8 ? 8 : 4) {
        if (isBrand(bytes, at))
            return true;
    }
    return false;
}

Result<ImageInfo> probeHeif(const EncodedFile &file, int)
{
    const Result<Opened> opened = openHeif(file.bytes, 0);
    if (!opened)
        return opened.failure();
    return opened->info();
}

Result<Picture> decodeHeif(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Opened> opened = openHeif(file.bytes, hint.page);
    if (!opened)
        return opened.failure();
    Picture picture;
    picture.info = opened->info();
    picture.iccProfile = profileOf(opened->handle.get());
    if (const Handle thumbnail = thumbnailFor(opened->handle.get(), hint.target)) {
        if (Result<Decoded> small = decodeHandle(thumbnail.get())) {
            picture.pixels = std::move(small->pixels);
            return picture;
        }
    }
    Result<Decoded> decoded = decodeHandle(opened->handle.get());
    if (!decoded)
        return decoded.failure();
    picture.pixels = std::move(decoded->pixels);
    picture.partial = decoded->damaged;
    picture.info.size = picture.pixels.size();
    return picture;
}

}

const Codec heifCodec{"HEIF", "heic heif hif heics heifs avif avifs avci", sniffHeif, probeHeif, decodeHeif};
