#include "engine/codecs/jpeg2000.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/jpeg2000pixels.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <cmath>
#include <cstring>
#include <memory>

#include <openjpeg.h>

namespace {

template <class Thing, void (*release)(Thing *)> struct Release
{
    void operator()(Thing *thing) const { release(thing); }
};

// Codec and stream are both void to the compiler; a tagged deleter keeps them apart all the same.
using CodecPointer = std::unique_ptr<opj_codec_t, Release<opj_codec_t, opj_destroy_codec>>;
using StreamPointer = std::unique_ptr<opj_stream_t, Release<opj_stream_t, opj_stream_destroy>>;
using ImagePointer = std::unique_ptr<opj_image_t, Release<opj_image_t, opj_image_destroy>>;

/// A file open in memory, its header read.
class Reader
{
public:
    Result<void> open(const QByteArray &bytes);
    /// Halves the picture as often as still serves `target`.
    void reduceTo(QSize target);
    bool decode();

    opj_image_t &image() const { return *m_image; }
    QSize fullSize() const { return m_size; }
    int bitsPerPixel() const { return m_bits; }
    bool isDamaged() const { return m_complaints > 0; }
    ImageInfo info() const { return {m_size, m_bits, 1, jpeg2000Codec.name}; }
    QString reason() const { return QStringLiteral("not a readable JPEG 2000: ") + m_text; }

private:
    static void complain(const char *text, void *reader);
    static void sayNothing(const char *, void *) { }
    static OPJ_SIZE_T read(void *to, OPJ_SIZE_T count, void *reader);
    static OPJ_OFF_T skip(OPJ_OFF_T count, void *reader);
    static OPJ_BOOL seek(OPJ_OFF_T position, void *reader);
    Result<void> judge();
    int resolutions() const;

    QByteArray m_bytes;
    size_t m_position = 0;
    CodecPointer m_codec;
    StreamPointer m_stream;
    ImagePointer m_image;
    QSize m_size;
    int m_bits = 0;
    int m_complaints = 0;
    QString m_text;
};

void Reader::complain(const char *text, void *reader)
{
    Reader &self = *static_cast<Reader *>(reader);
    if (self.m_complaints++ == 0)
        self.m_text = QString::fromLatin1(text).trimmed();
}

OPJ_SIZE_T Reader::read(void *to, OPJ_SIZE_T count, void *reader)
{
    Reader &self = *static_cast<Reader *>(reader);
    const size_t size = size_t(self.m_bytes.size());
    if (self.m_position >= size)
        return OPJ_SIZE_T(-1);
    const size_t given = qMin(count, size - self.m_position);
    std::memcpy(to, self.m_bytes.constData() + self.m_position, given);
    self.m_position += given;
    return given;
}

OPJ_OFF_T Reader::skip(OPJ_OFF_T count, void *reader)
{
    Reader &self = *static_cast<Reader *>(reader);
    const OPJ_OFF_T size = self.m_bytes.size();
    if (count < 0 || OPJ_OFF_T(self.m_position) >= size)
        return -1;
    const OPJ_OFF_T skipped = qMin(count, size - OPJ_OFF_T(self.m_position));
    self.m_position += size_t(skipped);
    return skipped;
}

OPJ_BOOL Reader::seek(OPJ_OFF_T position, void *reader)
{
    Reader &self = *static_cast<Reader *>(reader);
    if (position < 0 || position > self.m_bytes.size())
        return OPJ_FALSE;
    self.m_position = size_t(position);
    return OPJ_TRUE;
}

Result<void> Reader::open(const QByteArray &bytes)
{
    m_bytes = bytes;
    const bool bare = ByteReader(bytes).is(0, "\xff\x4f\xff\x51");
    m_codec.reset(opj_create_decompress(bare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    m_stream.reset(opj_stream_create(64 * 1024, OPJ_TRUE));
    if (!m_codec || !m_stream)
        return Failure{QStringLiteral("JPEG 2000: out of memory")};
    opj_set_error_handler(m_codec.get(), complain, this);
    opj_set_warning_handler(m_codec.get(), sayNothing, this);
    opj_set_info_handler(m_codec.get(), sayNothing, this);
    opj_stream_set_user_data(m_stream.get(), this, nullptr);
    opj_stream_set_user_data_length(m_stream.get(), OPJ_UINT64(m_bytes.size()));
    opj_stream_set_read_function(m_stream.get(), read);
    opj_stream_set_skip_function(m_stream.get(), skip);
    opj_stream_set_seek_function(m_stream.get(), seek);
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t *image = nullptr;
    const bool read =
        opj_setup_decoder(m_codec.get(), &parameters) && opj_read_header(m_stream.get(), m_codec.get(), &image);
    m_image.reset(image);
    if (!read || !m_image)
        return Failure{reason()};
    return judge();
}

// All numbers here are the file's own claims, and the library takes memory by them.
Result<void> Reader::judge()
{
    const opj_image_t &header = *m_image;
    if (header.numcomps < 1 || header.numcomps > 64 || !header.comps)
        return Failure{QStringLiteral("JPEG 2000 with %1 components").arg(header.numcomps)};
    quint32 width = 0;
    quint32 height = 0;
    for (quint32 i = 0; i < header.numcomps; ++i) {
        const opj_image_comp_t &component = header.comps[i];
        if (component.prec < 1 || component.prec > 31)
            return Failure{QStringLiteral("JPEG 2000 of %1 bits").arg(component.prec)};
        width = qMax(width, component.w);
        height = qMax(height, component.h);
        m_bits += int(component.prec);
    }
    constexpr quint32 beyond = limits::maximumSide + 1;
    m_size = QSize(int(qMin(width, beyond)), int(qMin(height, beyond)));
    const int bytesPerPixel = 8 + 8 * int(header.numcomps);
    if (!limits::allows(m_size, bytesPerPixel))
        return Failure{tooLarge(m_size)};
    return {};
}

int Reader::resolutions() const
{
    opj_codestream_info_v2_t *info = opj_get_cstr_info(m_codec.get());
    if (!info)
        return 1;
    int fewest = 32;
    for (quint32 i = 0; i < info->nbcomps && info->m_default_tile_info.tccp_info; ++i)
        fewest = qMin(fewest, int(info->m_default_tile_info.tccp_info[i].numresolutions));
    opj_destroy_cstr_info(&info);
    return fewest == 32 ? 1 : fewest;
}

void Reader::reduceTo(QSize target)
{
    const int most = resolutions() - 1;
    int halvings = 0;
    const auto reduced = [&](int times) {
        return QSize((m_size.width() + (1 << times) - 1) >> times, (m_size.height() + (1 << times) - 1) >> times);
    };
    while (halvings < most && isLargeEnough(reduced(halvings + 1), m_size, target))
        ++halvings;
    if (halvings > 0)
        opj_set_decoded_resolution_factor(m_codec.get(), OPJ_UINT32(halvings));
}

bool Reader::decode()
{
    opj_decoder_set_strict_mode(m_codec.get(), OPJ_FALSE);
    if (opj_has_thread_support())
        opj_codec_set_threads(m_codec.get(), qBound(1, opj_get_num_cpus(), 4));
    if (!opj_decode(m_codec.get(), m_stream.get(), m_image.get()))
        return false;
    // The closing marker is missing in many files that are otherwise whole.
    opj_end_decompress(m_codec.get(), m_stream.get());
    return true;
}

bool sniffJpeg2000(Bytes head)
{
    const ByteReader bytes(head);
    return bytes.is(0, "\0\0\0\x0cjP  \r\n\x87\n") || bytes.is(0, "\xff\x4f\xff\x51");
}

Result<ImageInfo> probeJpeg2000(const EncodedFile &file, int)
{
    Reader reader;
    if (const Result<void> opened = reader.open(file.bytes); !opened)
        return opened.failure();
    return reader.info();
}

/// In compressed data no byte above 8F follows an FF, so behind the stream's start its end marker cannot appear by
/// chance.
bool endsEarly(const QByteArray &bytes)
{
    return bytes.lastIndexOf("\xff\xd9") < bytes.indexOf("\xff\x4f\xff\x51");
}

/// The place of the content of the first box of that kind between `at` and `end`, and its end.
struct BoxPlace
{
    size_t start = 0;
    size_t end = 0;
};

template <size_t N> BoxPlace findBox(const ByteReader &bytes, BoxPlace within, const char (&kind)[N])
{
    for (size_t at = within.start; at + 8 <= within.end;) {
        const size_t length = bytes.u32be(at);
        if (length < 8 || length > within.end - at)
            return {};
        if (bytes.is(at + 4, kind))
            return {at + 8, at + length};
        at += length;
    }
    return {};
}

/// Dots a metre from the header's box of the capture resolution, else of the one for display.
void setResolution(QImage &image, const QByteArray &file)
{
    const ByteReader bytes(file);
    const BoxPlace resolution = findBox(bytes, findBox(bytes, {0, bytes.size()}, "jp2h"), "res ");
    BoxPlace place = findBox(bytes, resolution, "resc");
    if (place.start == 0)
        place = findBox(bytes, resolution, "resd");
    if (place.end - place.start < 10)
        return;
    const auto dotsPerMeter = [&](size_t fraction, size_t exponent) {
        const int divisor = bytes.u16be(place.start + fraction + 2);
        const double value = divisor == 0 ? 0
                                          : double(bytes.u16be(place.start + fraction)) / divisor
                * std::pow(10, qint8(bytes.u8(place.start + exponent)));
        constexpr double most = 10'000'000;
        return value > 0 && value < most ? qRound(value) : 0;
    };
    image.setDotsPerMeterY(dotsPerMeter(0, 8));
    image.setDotsPerMeterX(dotsPerMeter(4, 9));
}

Result<Picture> decodeReduced(const EncodedFile &file, QSize target)
{
    Reader reader;
    if (const Result<void> opened = reader.open(file.bytes); !opened)
        return opened.failure();
    reader.reduceTo(target);
    if (!reader.decode())
        return Failure{reader.reason()};
    Picture picture;
    picture.pixels = jpeg2000Pixels(reader.image());
    if (picture.isNull())
        return Failure{QStringLiteral("JPEG 2000: components that make no picture")};
    setResolution(picture.pixels, file.bytes);
    picture.info = reader.info();
    picture.partial = reader.isDamaged() || endsEarly(file.bytes);
    if (reader.image().icc_profile_buf && reader.image().icc_profile_len <= quint32(limits::maximumMetadataBytes))
        picture.iccProfile = QByteArray(
            reinterpret_cast<const char *>(reader.image().icc_profile_buf), int(reader.image().icc_profile_len));
    if (target.isEmpty())
        picture.info.size = picture.pixels.size();
    return picture;
}

Result<Picture> decodeJpeg2000(const EncodedFile &file, const DecodeHint &hint)
{
    Result<Picture> picture = decodeReduced(file, hint.target);
    // Tiles may hold fewer resolutions than the header promises; complete they can still be read.
    if (!picture && !hint.target.isEmpty())
        return decodeReduced(file, {});
    return picture;
}

}

const Codec jpeg2000Codec{"JPEG 2000", "jp2 j2k jpc j2c jpf jpx", sniffJpeg2000, probeJpeg2000, decodeJpeg2000};
