#include "engine/codecs/tiff.h"

#include "engine/codecs/exif.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/tiffdirectory.h"
#include "engine/codecs/tiffrgb.h"
#include "engine/codecs/tiffrows.h"
#include "engine/codecs/tiffsamples.h"
#include "engine/limits.h"

#include <cstring>
#include <memory>

#include <tiffio.h>

namespace {

/// A TIFF open in memory at one of its pictures.
class Reader
{
public:
    Reader() = default;
    ~Reader()
    {
        if (m_tiff)
            TIFFClose(m_tiff);
    }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    Result<void> open(const QByteArray &bytes, int page);
    TIFF *tiff() const { return m_tiff; }
    int pages() const { return m_pages; }
    int errors() const { return m_errors; }
    QString reason() const { return QStringLiteral("not a readable TIFF: ") + m_text; }

private:
    static Reader &self(thandle_t handle) { return *static_cast<Reader *>(handle); }
    static tmsize_t read(thandle_t handle, void *to, tmsize_t count);
    static tmsize_t write(thandle_t, void *, tmsize_t) { return 0; }
    static toff_t seek(thandle_t handle, toff_t offset, int whence);
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t handle) { return toff_t(self(handle).m_bytes.size()); }
    static int noteError(TIFF *, void *reader, const char *, const char *format, va_list arguments);
    static int ignoreWarning(TIFF *, void *, const char *, const char *, va_list) { return 1; }

    QByteArray m_bytes;
    toff_t m_position = 0;
    TIFF *m_tiff = nullptr;
    int m_pages = 0;
    int m_errors = 0;
    QString m_text;
};

tmsize_t Reader::read(thandle_t handle, void *to, tmsize_t count)
{
    Reader &reader = self(handle);
    const toff_t size = toff_t(reader.m_bytes.size());
    if (reader.m_position >= size || count <= 0)
        return 0;
    const tmsize_t given = tmsize_t(qMin(toff_t(count), size - reader.m_position));
    std::memcpy(to, reader.m_bytes.constData() + reader.m_position, size_t(given));
    reader.m_position += toff_t(given);
    return given;
}

toff_t Reader::seek(thandle_t handle, toff_t offset, int whence)
{
    Reader &reader = self(handle);
    switch (whence) {
    case SEEK_CUR:
        reader.m_position += offset;
        break;
    case SEEK_END:
        reader.m_position = toff_t(reader.m_bytes.size()) + offset;
        break;
    default:
        reader.m_position = offset;
    }
    return reader.m_position;
}

// Handled here means that the library's process-wide handlers are not asked: those belong to whoever set them last.
int Reader::noteError(TIFF *, void *reader, const char *, const char *format, va_list arguments)
{
    Reader &self = *static_cast<Reader *>(reader);
    if (self.m_errors++ == 0)
        self.m_text = QString::vasprintf(format, arguments);
    return 1;
}

Result<void> Reader::open(const QByteArray &bytes, int page)
{
    m_bytes = bytes;
    const std::vector<quint64> directories = tiffDirectories(bytesOf(m_bytes));
    m_pages = int(directories.size());
    if (page < 0 || page >= m_pages)
        return Failure{QStringLiteral("the TIFF has no picture %1").arg(page)};
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), tmsize_t(limits::decodeBudget()));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreWarning, this);
    m_tiff = TIFFClientOpenExt("picture", "rmO", this, read, write, seek, close, size, nullptr, nullptr, options.get());
    // "O" leaves the strips' places unread until they are needed; the directory is read here.
    if (!m_tiff || !TIFFSetSubDirectory(m_tiff, directories[size_t(page)]))
        return Failure{reason()};
    // Complaints about tags that nobody asked for are no damage to the pixels.
    m_errors = 0;
    m_text.clear();
    return {};
}

struct Opened
{
    std::unique_ptr<Reader> reader;
    TiffLayout layout;
    ImageInfo info() const
    {
        const QSize size = uprightSize(layout.size, layout.orientation);
        return {size, layout.bits * layout.samples, reader->pages(), tiffCodec.name};
    }
};

Result<Opened> openTiff(const QByteArray &bytes, int page)
{
    Opened opened{std::make_unique<Reader>(), {}};
    if (const Result<void> done = opened.reader->open(bytes, page); !done)
        return done.failure();
    opened.layout = readTiffLayout(opened.reader->tiff());
    // Its decoder ends the program when memory is short.
    constexpr int jbig = 34661;
    if (opened.layout.compression == jbig)
        return Failure{QStringLiteral("TIFF packed as JBIG")};
    if (!limits::allows(opened.layout.size, opened.layout.bytesPerPixel()))
        return Failure{tooLarge(opened.layout.size)};
    return opened;
}

/// The library's own conversion, in the order in which the rows are stored.
QImage readConverted(TIFF *tiff, const TiffLayout &layout)
{
    char message[1024];
    TIFFRGBAImage conversion{};
    if (!TIFFRGBAImageOK(tiff, message) || !TIFFRGBAImageBegin(&conversion, tiff, 0, message))
        return {};
    conversion.orientation = ORIENTATION_TOPLEFT;
    conversion.req_orientation = ORIENTATION_TOPLEFT;
    QImage image = allocateImage(layout.size, QImage::Format_ARGB32);
    bool read = false;
    if (!image.isNull()) {
        image.fill(0);
        read = TIFFRGBAImageGet(&conversion, reinterpret_cast<quint32 *>(image.bits()), quint32(layout.size.width()),
            quint32(layout.size.height()));
    }
    const bool hasAlpha = conversion.alpha != 0;
    TIFFRGBAImageEnd(&conversion);
    if (!read)
        return {};
    // The library packs red lowest and multiplies colours with alpha, but never greys.
    const bool multiplied = hasAlpha && !(layout.isGrey() && layout.hasPlainAlpha);
    for (int y = 0; y < image.height(); ++y) {
        QRgb *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const quint32 p = row[x];
            const QRgb color = qRgba(int(TIFFGetR(p)), int(TIFFGetG(p)), int(TIFFGetB(p)), int(TIFFGetA(p)));
            row[x] = multiplied ? qUnpremultiply(color) : hasAlpha ? color : color | 0xff000000;
        }
    }
    if (!hasAlpha)
        image.reinterpretAsFormat(QImage::Format_RGB32);
    return image;
}

QByteArray profileOf(TIFF *tiff)
{
    quint32 length = 0;
    void *data = nullptr;
    if (!TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &length, &data) || length > quint32(limits::maximumMetadataBytes))
        return {};
    return QByteArray(static_cast<const char *>(data), int(length));
}

bool sniffTiff(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "II*\0") || bytes.is(0, "MM\0*") || bytes.is(0, "II+\0") || bytes.is(0, "MM\0+");
}

Result<ImageInfo> probeTiff(const EncodedFile &file, int)
{
    const Result<Opened> opened = openTiff(file.bytes, 0);
    if (!opened)
        return opened.failure();
    return opened->info();
}

Result<Picture> decodeTiff(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<Opened> opened = openTiff(file.bytes, hint.page);
    if (!opened)
        return opened.failure();
    const TiffLayout &layout = opened->layout;
    TIFF *const tiff = opened->reader->tiff();
    QImage image = canReadTiffRgb(tiff, layout) ? readTiffRgb(tiff, layout)
        : canReadTiffRows(layout)               ? readTiffRows(tiff, layout)
        : canReadTiffSamples(layout)            ? readTiffSamples(tiff, layout)
                                                : QImage();
    if (image.isNull())
        image = readConverted(tiff, layout);
    if (image.isNull())
        return Failure{opened->reader->reason()};
    image.setDotsPerMeterX(layout.dotsPerMeterX);
    image.setDotsPerMeterY(layout.dotsPerMeterY);
    Picture picture;
    picture.info = opened->info();
    picture.partial = opened->reader->errors() > 0;
    // Inks are converted to light by then, and their profile says nothing about the result.
    if (layout.photometric != PHOTOMETRIC_SEPARATED)
        picture.iccProfile = profileOf(tiff);
    picture.pixels = uprighted(image, layout.orientation);
    return picture;
}

}

const Codec tiffCodec{"TIFF", "tif tiff", sniffTiff, probeTiff, decodeTiff};
