// The library has a type of the name of a function of the engine.
#define decode libraw_decode
#include <libraw/libraw.h>
#undef decode

#include "engine/codecs/raw.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/exif.h"
#include "engine/codecs/jpeg.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <chrono>
#include <memory>

namespace {

constexpr std::chrono::seconds longestDecode{60};

int stopWhenLate(void *start, LibRaw_progress, int, int)
{
    return std::chrono::steady_clock::now() - *static_cast<std::chrono::steady_clock::time_point *>(start)
        > longestDecode;
}

void noteDamage(void *damaged, const char *, int)
{
    *static_cast<bool *>(damaged) = true;
}

/// The library's processor with a file open in memory. Large, so always on the heap.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes)
        : m_bytes(bytes)
    {
        m_raw.imgdata.params.use_camera_wb = 1;
        m_raw.imgdata.params.output_bps = 8;
        m_raw.imgdata.params.user_qual = 0;
        m_raw.imgdata.params.max_raw_memory_mb = unsigned(limits::decodeBudget() / (1024 * 1024));
        m_raw.set_progress_handler(stopWhenLate, &m_start);
        m_raw.set_dataerror_handler(noteDamage, &m_damaged);
    }

    Result<void> open()
    {
        // The library only reads the buffer, for all that its type says.
        const int status = m_raw.open_buffer(const_cast<char *>(m_bytes.constData()), size_t(m_bytes.size()));
        if (status != LIBRAW_SUCCESS)
            return failure(status);
        const libraw_image_sizes_t &sizes = m_raw.imgdata.sizes;
        if (!limits::allows({sizes.raw_width, sizes.raw_height}, 16)
            || !limits::allows({sizes.width, sizes.height}, 16))
            return Failure{tooLarge({sizes.raw_width, sizes.raw_height})};
        return {};
    }
    /// The size that the processed picture will have. After this the file must be opened anew.
    QSize processedSize()
    {
        m_raw.adjust_sizes_info_only();
        return {m_raw.imgdata.sizes.iwidth, m_raw.imgdata.sizes.iheight};
    }
    int orientation() const
    {
        switch (m_raw.imgdata.sizes.flip) {
        case 3:
            return 3;
        case 5:
            return 8;
        case 6:
            return 6;
        default:
            return 1;
        }
    }
    QByteArray preview()
    {
        const libraw_thumbnail_t &thumbnail = m_raw.imgdata.thumbnail;
        if (m_raw.unpack_thumb() != LIBRAW_SUCCESS || thumbnail.tformat != LIBRAW_THUMBNAIL_JPEG || !thumbnail.thumb)
            return {};
        return QByteArray(thumbnail.thumb, int(thumbnail.tlength));
    }
    Result<QImage> process(bool half);
    bool isDamaged() const { return m_damaged; }

private:
    static Failure failure(int status)
    {
        // All input is in memory: reading fails where the bytes end.
        if (status == LIBRAW_IO_ERROR)
            return {QStringLiteral("camera raw: the file is cut off or damaged")};
        return {QStringLiteral("camera raw: ") + QString::fromLatin1(libraw_strerror(status))};
    }

    const QByteArray m_bytes;
    LibRaw m_raw;
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    bool m_damaged = false;
};

QImage imageOf(const libraw_processed_image_t &processed)
{
    const QSize size(processed.width, processed.height);
    const bool grey = processed.colors == 1;
    const size_t needed = size_t(size.width()) * size_t(size.height()) * processed.colors;
    if (processed.type != LIBRAW_IMAGE_BITMAP || processed.bits != 8 || (!grey && processed.colors != 3)
        || processed.data_size < needed)
        return {};
    QImage image = allocateImage(size, QImage::Format_RGB32);
    const uchar *from = processed.data;
    for (int y = 0; y < image.height(); ++y) {
        QRgb *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x, from += processed.colors)
            row[x] = grey ? qRgb(from[0], from[0], from[0]) : qRgb(from[0], from[1], from[2]);
    }
    return image;
}

Result<QImage> Reader::process(bool half)
{
    m_raw.imgdata.params.half_size = half ? 1 : 0;
    int status = m_raw.unpack();
    if (status == LIBRAW_SUCCESS)
        status = m_raw.dcraw_process();
    if (status != LIBRAW_SUCCESS)
        return failure(status);
    const std::unique_ptr<libraw_processed_image_t, decltype(&LibRaw::dcraw_clear_mem)> processed(
        m_raw.dcraw_make_mem_image(&status), LibRaw::dcraw_clear_mem);
    if (!processed)
        return failure(status);
    QImage image = imageOf(*processed);
    if (image.isNull())
        return Failure{QStringLiteral("camera raw: no picture came out")};
    return image;
}

bool sniffRaw(Bytes head)
{
    const ByteReader bytes(head);
    const bool tiffLike = bytes.is(0, "II*\0") || bytes.is(0, "MM\0*") || bytes.is(0, "IIRO") || bytes.is(0, "IIRS")
        || bytes.is(0, "MMOR") || bytes.is(0, "IIU\0");
    const bool otherLike = bytes.is(4, "ftypcrx ") || bytes.is(0, "FOVb");
    return tiffLike || otherLike || bytes.is(6, "HEAPCCDR") || bytes.is(0, "\0MRM") || bytes.is(0, "FUJIFILMCCD-RAW");
}

Result<ImageInfo> probeRaw(const EncodedFile &file, int)
{
    const auto reader = std::make_unique<Reader>(file.bytes);
    if (const Result<void> opened = reader->open(); !opened)
        return opened.failure();
    return ImageInfo{reader->processedSize(), 24, 1, rawCodec.name};
}

bool sameShape(QSize a, QSize b)
{
    return std::abs(double(a.width()) / a.height() / (double(b.width()) / b.height()) - 1) < 0.05;
}

/// The camera's own JPEG, turned as the raw picture is. Null when there is none that serves.
Picture previewOf(Reader &reader, QSize full, QSize target)
{
    const QByteArray bytes = reader.preview();
    const int orientation = reader.orientation();
    if (bytes.isEmpty())
        return {};
    Result<Picture> preview = decodeStoredJpeg(bytes, uprightSize(target, orientation));
    if (!preview)
        return {};
    preview->pixels = uprighted(preview->pixels, orientation);
    preview->info.size = uprightSize(preview->info.size, orientation);
    const bool serves =
        full.isEmpty() || (isLargeEnough(preview->pixels.size(), full, target) && sameShape(preview->info.size, full));
    return serves ? *std::move(preview) : Picture();
}

Result<Picture> decodeRaw(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<ImageInfo> info = probeRaw(file, -1);
    if (!info)
        return info.failure();
    const auto reader = std::make_unique<Reader>(file.bytes);
    if (const Result<void> opened = reader->open(); !opened)
        return opened.failure();
    Picture picture;
    if (!hint.target.isEmpty())
        picture = previewOf(*reader, info->size, hint.target);
    picture.info = *info;
    if (!picture.isNull())
        return picture;

    const QSize half((info->size.width() + 1) / 2, (info->size.height() + 1) / 2);
    const bool halfServes = !hint.target.isEmpty() && isLargeEnough(half, info->size, hint.target);
    Result<QImage> image = reader->process(halfServes);
    if (image) {
        picture.pixels = *std::move(image);
        picture.partial = reader->isDamaged();
        if (!halfServes)
            picture.info.size = picture.pixels.size();
        return picture;
    }
    // Damaged, or of a camera that came later; what the camera shows on its back is better than nothing.
    picture = previewOf(*reader, {}, {});
    if (picture.isNull())
        return image.failure();
    picture.info.codec = rawCodec.name;
    picture.partial = true;
    return picture;
}

}

const Codec rawCodec{"camera raw",
    "crw dcr mrw nef orf raf dng cr2 cr3 arw srf sr2 pef ptx rw2 rwl srw nrw erf mef mos 3fr fff iiq kdc dcs k25 x3f",
    sniffRaw, probeRaw, decodeRaw};
