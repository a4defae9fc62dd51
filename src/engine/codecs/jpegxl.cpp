#include "engine/codecs/modernformats.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QThread>

#include <exception>
#include <memory>

#include <jxl/decode.h>
#include <jxl/thread_parallel_runner.h>

namespace {

struct Release
{
    void operator()(JxlDecoder *decoder) const { JxlDecoderDestroy(decoder); }
    void operator()(void *runner) const { JxlThreadParallelRunnerDestroy(runner); }
};

/// How the pixels are asked for.
struct Layout
{
    QImage::Format format = QImage::Format_ARGB32;
    JxlPixelFormat pixels{4, JXL_TYPE_UINT8, JXL_LITTLE_ENDIAN, 4};
};

/// The library's state with a whole file as its input.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes)
        : m_bytes(bytes)
    {
    }

    Result<void> readHeader(int wantedEvents);
    Result<void> decodeFrame(int page, QImage &image, bool &partial);
    int countFrames();

    QSize size() const { return {int(m_info.xsize), int(m_info.ysize)}; }
    bool isAnimation() const { return m_info.have_animation != 0; }
    bool hasAlpha() const { return m_info.alpha_bits > 0; }
    bool isPremultiplied() const { return hasAlpha() && m_info.alpha_premultiplied; }
    bool isDeep() const { return m_info.bits_per_sample > 8; }
    int bitsPerPixel() const { return int(m_info.bits_per_sample * m_info.num_color_channels + m_info.alpha_bits); }
    Layout layout() const;
    QByteArray profile() const { return m_profile; }

private:
    static Failure damaged() { return {QStringLiteral("not a readable JPEG XL: the file is cut off or damaged")}; }
    void startThreads();
    bool judge() const;
    void readProfile();
    void chooseColors();

    const QByteArray m_bytes;
    // The decoder goes first: it may still use the threads.
    std::unique_ptr<void, Release> m_threads;
    std::unique_ptr<JxlDecoder, Release> m_decoder;
    JxlBasicInfo m_info{};
    QByteArray m_profile;
};

void Reader::startThreads()
{
    constexpr int most = 4;
    const int count = qBound(1, QThread::idealThreadCount(), most);
    if (count < 2)
        return;
    // Where no thread can be had the picture is decoded without.
    try {
        m_threads.reset(JxlThreadParallelRunnerCreate(nullptr, size_t(count)));
    } catch (const std::exception &) {
        return;
    }
    if (m_threads)
        JxlDecoderSetParallelRunner(m_decoder.get(), JxlThreadParallelRunner, m_threads.get());
}

// The library works with four bytes a channel and keeps them all beside what it hands out.
bool Reader::judge() const
{
    constexpr quint32 beyond = limits::maximumSide + 1;
    const QSize size(int(qMin(m_info.xsize, beyond)), int(qMin(m_info.ysize, beyond)));
    const quint32 channels = m_info.num_color_channels + qMin(m_info.num_extra_channels, 4096U);
    return limits::allows(size, 12 + 4 * int(channels));
}

Result<void> Reader::readHeader(int wantedEvents)
{
    m_decoder.reset(JxlDecoderCreate(nullptr));
    if (!m_decoder)
        return Failure{QStringLiteral("JPEG XL: out of memory")};
    if (wantedEvents & JXL_DEC_FULL_IMAGE)
        startThreads();
    JxlDecoderSubscribeEvents(m_decoder.get(), JXL_DEC_BASIC_INFO | wantedEvents);
    JxlDecoderSetInput(m_decoder.get(), reinterpret_cast<const uint8_t *>(m_bytes.constData()), size_t(m_bytes.size()));
    // The input is never closed: of one that ends early the library would complain on standard error.
    if (JxlDecoderProcessInput(m_decoder.get()) != JXL_DEC_BASIC_INFO
        || JxlDecoderGetBasicInfo(m_decoder.get(), &m_info) != JXL_DEC_SUCCESS)
        return damaged();
    if (!judge())
        return Failure{
            QStringLiteral("the JPEG XL claims %1 x %2 pixels and %3 channels, more than can be decoded here")
                .arg(m_info.xsize)
                .arg(m_info.ysize)
                .arg(m_info.num_color_channels + m_info.num_extra_channels)};
    return {};
}

/// Passes over the frames without unpacking them.
int Reader::countFrames()
{
    int frames = 0;
    while (frames < limits::maximumPages && JxlDecoderProcessInput(m_decoder.get()) == JXL_DEC_FRAME)
        ++frames;
    return qMax(1, frames);
}

Layout Reader::layout() const
{
    Layout layout;
    if (isDeep()) {
        layout.format = QImage::Format_RGBA64;
        layout.pixels.data_type = JXL_TYPE_UINT16;
    } else if (m_info.num_color_channels == 1 && !hasAlpha()) {
        layout.format = QImage::Format_Grayscale8;
        layout.pixels.num_channels = 1;
    } else if (!hasAlpha()) {
        layout.format = QImage::Format_RGB32;
    }
    return layout;
}

// Light as it is measured, or as television codes it, looks wrong wherever nobody converts it; ordinary profiles stay.
void Reader::chooseColors()
{
    JxlColorEncoding colors{};
    if (m_info.uses_original_profile
        || JxlDecoderGetColorAsEncodedProfile(m_decoder.get(), nullptr, JXL_COLOR_PROFILE_TARGET_DATA, &colors)
            != JXL_DEC_SUCCESS)
        return;
    if (colors.transfer_function != JXL_TRANSFER_FUNCTION_LINEAR && colors.transfer_function != JXL_TRANSFER_FUNCTION_PQ
        && colors.transfer_function != JXL_TRANSFER_FUNCTION_HLG)
        return;
    JxlColorEncoding ordinary{};
    ordinary.color_space = m_info.num_color_channels == 1 ? JXL_COLOR_SPACE_GRAY : JXL_COLOR_SPACE_RGB;
    ordinary.white_point = JXL_WHITE_POINT_D65;
    ordinary.primaries = JXL_PRIMARIES_SRGB;
    ordinary.transfer_function = JXL_TRANSFER_FUNCTION_SRGB;
    ordinary.rendering_intent = JXL_RENDERING_INTENT_RELATIVE;
    JxlDecoderSetPreferredColorProfile(m_decoder.get(), &ordinary);
}

void Reader::readProfile()
{
    size_t length = 0;
    if (JxlDecoderGetICCProfileSize(m_decoder.get(), nullptr, JXL_COLOR_PROFILE_TARGET_DATA, &length) != JXL_DEC_SUCCESS
        || length > size_t(limits::maximumMetadataBytes))
        return;
    m_profile.resize(qsizetype(length));
    if (JxlDecoderGetColorAsICCProfile(m_decoder.get(), nullptr, JXL_COLOR_PROFILE_TARGET_DATA,
            reinterpret_cast<uint8_t *>(m_profile.data()), length)
        != JXL_DEC_SUCCESS)
        m_profile.clear();
}

Result<void> Reader::decodeFrame(int page, QImage &image, bool &partial)
{
    if (page > 0)
        JxlDecoderSkipFrames(m_decoder.get(), size_t(page));
    const JxlPixelFormat pixels = layout().pixels;
    for (bool hasBuffer = false;;) {
        const JxlDecoderStatus status = JxlDecoderProcessInput(m_decoder.get());
        size_t needed = 0;
        switch (status) {
        case JXL_DEC_COLOR_ENCODING:
            chooseColors();
            readProfile();
            break;
        case JXL_DEC_NEED_IMAGE_OUT_BUFFER:
            if (JxlDecoderImageOutBufferSize(m_decoder.get(), &pixels, &needed) != JXL_DEC_SUCCESS
                || needed > size_t(image.sizeInBytes())
                || JxlDecoderSetImageOutBuffer(m_decoder.get(), &pixels, image.bits(), size_t(image.sizeInBytes()))
                    != JXL_DEC_SUCCESS)
                return Failure{QStringLiteral("JPEG XL: no pixels came out")};
            hasBuffer = true;
            break;
        case JXL_DEC_FULL_IMAGE:
            return {};
        default:
            // The end of a cut file, or damage: what is there so far can still be asked for.
            if (!hasBuffer || JxlDecoderFlushImage(m_decoder.get()) != JXL_DEC_SUCCESS)
                return damaged();
            partial = true;
            return {};
        }
    }
}

/// From the library's order of channels, red first, to that of the picture.
void orderChannels(QImage &image)
{
    if (image.depth() != 32)
        return;
    for (int y = 0; y < image.height(); ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const QRgb p = row[x];
            row[x] = (p & 0xff00ff00) | (p & 0xff) << 16 | (p >> 16 & 0xff);
        }
    }
}

void dividedByAlpha(QImage &image)
{
    const QImage::Format format = image.format();
    image.reinterpretAsFormat(
        format == QImage::Format_RGBA64 ? QImage::Format_RGBA64_Premultiplied : QImage::Format_ARGB32_Premultiplied);
    image.convertTo(format);
}

bool sniffJpegXl(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "\xff\x0a") || bytes.is(0, "\0\0\0\x0cJXL \r\n\x87\n");
}

Result<ImageInfo> probeJpegXl(const EncodedFile &file, int)
{
    Reader reader(file.bytes);
    if (const Result<void> read = reader.readHeader(JXL_DEC_FRAME); !read)
        return read.failure();
    const int pages = reader.isAnimation() ? reader.countFrames() : 1;
    return ImageInfo{reader.size(), reader.bitsPerPixel(), pages, jpegXlCodec.name};
}

Result<Picture> decodeJpegXl(const EncodedFile &file, const DecodeHint &hint)
{
    const Result<ImageInfo> info = probeJpegXl(file, -1);
    if (!info)
        return info.failure();
    if (hint.page < 0 || hint.page >= info->pageCount)
        return Failure{QStringLiteral("the JPEG XL has no frame %1").arg(hint.page)};
    Reader reader(file.bytes);
    if (const Result<void> read = reader.readHeader(JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE); !read)
        return read.failure();
    Picture picture;
    picture.info = *info;
    QImage image = allocateImage(info->size, reader.layout().format);
    if (image.isNull())
        return Failure{outOfMemory(info->size)};
    blankRows(image, 0);
    if (const Result<void> done = reader.decodeFrame(hint.page, image, picture.partial); !done)
        return done.failure();
    orderChannels(image);
    if (reader.isPremultiplied())
        dividedByAlpha(image);
    picture.iccProfile = reader.profile();
    picture.pixels = std::move(image);
    return picture;
}

}

const Codec jpegXlCodec{"JPEG XL", "jxl", sniffJpegXl, probeJpegXl, decodeJpegXl};
