#include "engine/codecs/magickread.h"

#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <cstring>
#include <memory>
#include <mutex>

// The library has a type of the same name as the engine.
#define ImageInfo MagickImageInfo
#include <magick/api.h>
#include <magick/confirm_access.h>
#undef ImageInfo

namespace {

// Some of its readers hand embedded parts on to whatever reads those, other programs included.
MagickPassFail refuseAccess(const ConfirmAccessMode, const char *, ExceptionInfo *)
{
    return MagickFail;
}

void initialize()
{
    ExceptionInfo exception;
    GetExceptionInfo(&exception);
    // Its signal handlers would take the place of the program's.
    InitializeMagickEx(nullptr, MAGICK_OPT_NO_SIGNAL_HANDER, &exception);
    DestroyExceptionInfo(&exception);
    const magick_int64_t megabytes = limits::decodeBudget() / (1024 * 1024);
    SetMagickResourceLimit(MemoryResource, megabytes * 1024 * 1024);
    SetMagickResourceLimit(PixelsResource, qMin<qint64>(limits::maximumPixels, limits::decodeBudget() / 16));
    SetMagickResourceLimit(WidthResource, limits::maximumSide);
    SetMagickResourceLimit(HeightResource, limits::maximumSide);
    SetMagickResourceLimit(DiskResource, 0);
    SetMagickResourceLimit(MapResource, 0);
    SetMagickResourceLimit(ThreadsResource, 2);
    MagickSetConfirmAccessHandler(refuseAccess);
}

struct Deleter
{
    void operator()(Image *image) const { DestroyImageList(image); }
    void operator()(MagickImageInfo *info) const { DestroyImageInfo(info); }
};

struct Exception : ExceptionInfo
{
    Exception() { GetExceptionInfo(this); }
    ~Exception() { DestroyExceptionInfo(this); }
    Exception(const Exception &) = delete;
    Exception &operator=(const Exception &) = delete;
    QString text() const
    {
        const auto part = [](const char *words) { return words ? QString::fromLocal8Bit(words) : QString(); };
        return (part(reason) + QLatin1Char(' ') + part(description)).trimmed();
    }
};

constexpr int byteOf(Quantum value)
{
    return (value + 128) / 257;
}

QImage indexedPixels(const Image &image, Exception &exception)
{
    const QSize size(int(image.columns), int(image.rows));
    const bool mono = image.colors <= 2;
    QImage pixels = allocateImage(size, mono ? QImage::Format_Mono : QImage::Format_Indexed8);
    if (pixels.isNull())
        return pixels;
    QList<QRgb> table;
    for (unsigned int i = 0; i < image.colors; ++i) {
        const PixelPacket &color = image.colormap[i];
        table.append(qRgb(byteOf(color.red), byteOf(color.green), byteOf(color.blue)));
    }
    table.resize(mono ? 2 : 256, qRgb(0, 0, 0));
    pixels.setColorTable(table);
    pixels.fill(0);
    for (int y = 0; y < size.height(); ++y) {
        if (!AcquireImagePixels(&image, 0, y, image.columns, 1, &exception))
            return {};
        const IndexPacket *const indices = AccessImmutableIndexes(&image);
        if (!indices)
            return {};
        uchar *const row = pixels.scanLine(y);
        for (int x = 0; x < size.width(); ++x) {
            if (!mono)
                row[x] = uchar(qMin(int(indices[x]), 255));
            else if (indices[x])
                row[x >> 3] |= uchar(0x80 >> (x & 7));
        }
    }
    return pixels;
}

QImage directPixels(const Image &image, bool deep, Exception &exception)
{
    const QImage::Format format = deep ? QImage::Format_RGBA64
        : image.matte                  ? QImage::Format_ARGB32
                                       : QImage::Format_RGB32;
    QImage pixels = allocateImage({int(image.columns), int(image.rows)}, format);
    if (pixels.isNull())
        return pixels;
    for (int y = 0; y < pixels.height(); ++y) {
        const PixelPacket *from = AcquireImagePixels(&image, 0, y, image.columns, 1, &exception);
        if (!from)
            return {};
        uchar *const row = pixels.scanLine(y);
        for (int x = 0; x < pixels.width(); ++x, ++from) {
            const Quantum alpha = image.matte ? Quantum(MaxRGB - from->opacity) : Quantum(MaxRGB);
            if (deep)
                reinterpret_cast<QRgba64 *>(row)[x] = QRgba64::fromRgba64(from->red, from->green, from->blue, alpha);
            else
                reinterpret_cast<QRgb *>(row)[x] =
                    qRgba(byteOf(from->red), byteOf(from->green), byteOf(from->blue), byteOf(alpha));
        }
    }
    return pixels;
}

int dotsPerMeter(const Image &image, double resolution)
{
    if (!(resolution > 0 && resolution < 100'000))
        return 0;
    switch (image.units) {
    case PixelsPerInchResolution:
        return qRound(resolution / 0.0254);
    case PixelsPerCentimeterResolution:
        return qRound(resolution * 100);
    default:
        return 0;
    }
}

}

Result<MagickPicture> readByMagick(const QByteArray &bytes, const char *magick, int page, bool deep)
{
    static_assert(sizeof(Quantum) == 2, "written for the library's build with 16 bits a channel");
    static std::once_flag once;
    std::call_once(once, initialize);

    Exception exception;
    const std::unique_ptr<MagickImageInfo, Deleter> info(CloneImageInfo(nullptr));
    qstrncpy(info->magick, magick, MaxTextExtent);
    info->subimage = static_cast<unsigned long>(page);
    info->subrange = 1;
    const std::unique_ptr<Image, Deleter> image(
        BlobToImage(info.get(), bytes.constData(), size_t(bytes.size()), &exception));
    if (!image)
        return Failure{QLatin1String(magick) + QStringLiteral(" reader: ") + exception.text()};
    if (!limits::allows({int(qMin(image->columns, 100'000UL)), int(qMin(image->rows, 100'000UL))}, 16))
        return Failure{tooLarge({int(image->columns), int(image->rows)})};
    MagickPicture picture;
    const bool indexed =
        image->storage_class == PseudoClass && image->colormap && image->colors <= 256 && !image->matte;
    picture.pixels = indexed ? indexedPixels(*image, exception) : directPixels(*image, deep, exception);
    if (picture.pixels.isNull())
        return Failure{QLatin1String(magick) + QStringLiteral(" reader: no pixels ") + exception.text()};
    picture.damaged = exception.severity >= ErrorException;
    picture.pixels.setDotsPerMeterX(dotsPerMeter(*image, image->x_resolution));
    picture.pixels.setDotsPerMeterY(dotsPerMeter(*image, image->y_resolution));
    return picture;
}
