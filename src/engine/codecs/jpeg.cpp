#include "engine/codecs/jpeg.h"

#include "engine/codecs/exif.h"
#include "engine/codecs/metadatablocks.h"
#include "engine/codecs/pixels.h"
#include "engine/limits.h"
#include "engine/picturememory.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include <jerror.h>
#include <jpeglib.h>

namespace {

struct ErrorState
{
    jpeg_error_mgr base; // first, so that the library's pointer is a pointer to this
    std::jmp_buf jump;
    char text[JMSG_LENGTH_MAX];
    bool damaged;
};

ErrorState &errorStateOf(j_common_ptr info)
{
    return *reinterpret_cast<ErrorState *>(info->err);
}

[[noreturn]] void stopOnError(j_common_ptr info)
{
    ErrorState &state = errorStateOf(info);
    info->err->format_message(info, state.text);
    std::longjmp(state.jump, 1);
}

// Of the warnings, these tell that pixels are missing or wrong; the rest is talk about odd headers.
void noteWarning(j_common_ptr info, int level)
{
    if (level >= 0)
        return;
    switch (info->err->msg_code) {
    case JWRN_HIT_MARKER:
    case JWRN_HUFF_BAD_CODE:
    case JWRN_JPEG_EOF:
    case JWRN_MUST_RESYNC:
    case JWRN_NOT_SEQUENTIAL:
        errorStateOf(info).damaged = true;
        break;
    default:
        break;
    }
}

void sayNothing(j_common_ptr)
{
}

// A few kilobytes can hold thousands of progressive scans of a large picture, each of which costs a pass over it.
void boundScans(j_common_ptr info)
{
    if (info->is_decompressor
        && reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > limits::maximumJpegScans) {
        std::snprintf(errorStateOf(info).text, JMSG_LENGTH_MAX, "more than %d scans", limits::maximumJpegScans);
        std::longjmp(errorStateOf(info).jump, 1);
    }
}

/// The library's state. All that a long jump may cross lives here and not in the functions that set the jump.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes);
    ~Reader() { jpeg_destroy_decompress(&m_info); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    bool readHeader();
    bool prepare(); ///< output colours and size; after `scaleTo`
    void scaleTo(QSize target);
    int readRows(QImage &image, uchar *cmykRow);
    int readSamples(uchar *to, qsizetype stride, bool isYcc);
    bool readProfile();
    /// Where the marker starts that the library stopped at, behind the first scan's; 0 for none.
    qsizetype lastMarker() const;

    QSize storedSize() const { return {int(m_info.image_width), int(m_info.image_height)}; }
    QSize outputSize() const { return {int(m_info.output_width), int(m_info.output_height)}; }
    bool isGrey() const { return m_info.jpeg_color_space == JCS_GRAYSCALE; }
    bool isCmyk() const { return m_info.jpeg_color_space == JCS_CMYK || m_info.jpeg_color_space == JCS_YCCK; }
    int bitsPerPixel() const { return m_info.data_precision * m_info.num_components; }
    int bytesNeededPerPixel() const { return m_info.progressive_mode ? 10 : 4; }
    int orientation() const;
    int dotsPerMeter(int density) const;
    const jpeg_decompress_struct &info() const { return m_info; }
    bool isDamaged() const { return m_error.damaged; }
    QByteArray profile() const;
    QString reason() const { return QStringLiteral("not a readable JPEG: ") + QString::fromLatin1(m_error.text); }

private:
    void convertCmykRow(const uchar *from, QRgb *to) const;

    jpeg_decompress_struct m_info{};
    ErrorState m_error{};
    jpeg_progress_mgr m_progress{};
    JOCTET *m_profile = nullptr;
    unsigned int m_profileLength = 0;
    const QByteArray m_bytes;
};

Reader::Reader(const QByteArray &bytes)
    : m_bytes(bytes)
{
    m_info.err = jpeg_std_error(&m_error.base);
    m_error.base.error_exit = stopOnError;
    m_error.base.emit_message = noteWarning;
    m_error.base.output_message = sayNothing;
    m_progress.progress_monitor = boundScans;
}

bool Reader::readHeader()
{
    if (setjmp(m_error.jump))
        return false;
    jpeg_create_decompress(&m_info);
    m_info.progress = &m_progress;
    m_info.mem->max_memory_to_use = long(limits::decodeBudget());
    jpeg_mem_src(
        &m_info, reinterpret_cast<const uchar *>(m_bytes.constData()), static_cast<unsigned long>(m_bytes.size()));
    jpeg_save_markers(&m_info, JPEG_APP0 + 1, 0xffff);
    jpeg_save_markers(&m_info, JPEG_APP0 + 2, 0xffff);
    return jpeg_read_header(&m_info, TRUE) == JPEG_HEADER_OK;
}

qsizetype Reader::lastMarker() const
{
    const ByteReader bytes(m_bytes);
    const size_t read = bytes.size() - (m_info.src ? std::min(m_info.src->bytes_in_buffer, bytes.size()) : 0);
    size_t last = 0;
    bool isBehindScan = false;
    for (size_t at = 2; at + 1 < read;) {
        const quint8 code = bytes.u8(at + 1);
        const bool isRestart = code >= JPEG_RST0 && code < JPEG_RST0 + 8;
        if (bytes.u8(at) != 0xff || code == 0xff) {
            ++at;
        } else if (code == 0 || isRestart) {
            at += 2;
        } else {
            if (isBehindScan)
                last = at;
            constexpr quint8 startOfScan = 0xda;
            isBehindScan = isBehindScan || code == startOfScan;
            at += 2 + size_t(bytes.u16be(at + 2));
        }
    }
    return qsizetype(last);
}

// The library's eighths below full size that its fast paths know.
void Reader::scaleTo(QSize target)
{
    m_info.scale_denom = 8;
    for (const unsigned int eighths : {1U, 2U, 4U, 8U}) {
        m_info.scale_num = eighths;
        const QSize reduced(
            (storedSize().width() * int(eighths) + 7) / 8, (storedSize().height() * int(eighths) + 7) / 8);
        if (isLargeEnough(reduced, storedSize(), target))
            return;
    }
}

bool Reader::prepare()
{
    if (setjmp(m_error.jump))
        return false;
    m_info.out_color_space = isGrey() ? JCS_GRAYSCALE : isCmyk() ? JCS_CMYK : JCS_EXT_BGRA;
    jpeg_calc_output_dimensions(&m_info);
    return true;
}

int Reader::readRows(QImage &image, uchar *cmykRow)
{
    uchar *const pixels = image.bits();
    const qsizetype stride = image.bytesPerLine();
    if (setjmp(m_error.jump))
        return int(m_info.output_scanline);
    jpeg_start_decompress(&m_info);
    while (m_info.output_scanline < m_info.output_height) {
        const JDIMENSION first = m_info.output_scanline;
        if (cmykRow) {
            jpeg_read_scanlines(&m_info, &cmykRow, 1);
            convertCmykRow(cmykRow, reinterpret_cast<QRgb *>(pixels + first * stride));
            publishRows(pixels, int(m_info.output_scanline));
            continue;
        }
        constexpr JDIMENSION atOnce = 8;
        JSAMPROW rows[atOnce];
        const JDIMENSION count = qMin(atOnce, m_info.output_height - first);
        for (JDIMENSION i = 0; i < count; ++i)
            rows[i] = pixels + (first + i) * stride;
        jpeg_read_scanlines(&m_info, rows, count);
        publishRows(pixels, int(m_info.output_scanline));
    }
    return int(m_info.output_scanline);
}

// With three components YCbCr becomes RGB. With a fourth the library knows the pair YCCK and CMYK alone, whose inks are
// the opposite of the light.
int Reader::readSamples(uchar *to, qsizetype stride, bool isYcc)
{
    if (setjmp(m_error.jump))
        return int(m_info.output_scanline);
    const bool turned = isYcc && m_info.num_components == 4;
    m_info.jpeg_color_space = turned ? JCS_YCCK : isYcc && m_info.num_components == 3 ? JCS_YCbCr : JCS_UNKNOWN;
    m_info.out_color_space = turned ? JCS_CMYK : m_info.jpeg_color_space == JCS_YCbCr ? JCS_RGB : JCS_UNKNOWN;
    jpeg_start_decompress(&m_info);
    while (m_info.output_scanline < m_info.output_height) {
        JSAMPROW row = to + m_info.output_scanline * stride;
        jpeg_read_scanlines(&m_info, &row, 1);
        for (JDIMENSION x = 0; turned && x < m_info.output_width * 4; ++x)
            row[x] ^= x % 4 == 3 ? 0 : 255;
    }
    return int(m_info.output_scanline);
}

// Adobe's marker says that the inks are stored as light: 255 is no ink.
void Reader::convertCmykRow(const uchar *from, QRgb *to) const
{
    const int turned = m_info.saw_Adobe_marker ? 0 : 255;
    for (JDIMENSION x = 0; x < m_info.output_width; ++x, from += 4) {
        const int light = from[3] ^ turned;
        const auto mixed = [&](int ink) { return ((ink ^ turned) * light + 127) / 255; };
        to[x] = qRgb(mixed(from[0]), mixed(from[1]), mixed(from[2]));
    }
}

int Reader::orientation() const
{
    for (jpeg_saved_marker_ptr marker = m_info.marker_list; marker; marker = marker->next) {
        if (marker->marker != JPEG_APP0 + 1)
            continue;
        const int orientation = app1Orientation({marker->data, marker->data_length});
        if (orientation != 1)
            return orientation;
    }
    return 1;
}

int Reader::dotsPerMeter(int density) const
{
    switch (m_info.saw_JFIF_marker ? m_info.density_unit : 0) {
    case 1:
        return qRound(density * 100 / 2.54);
    case 2:
        return density * 100;
    default:
        return 0;
    }
}

bool Reader::readProfile()
{
    if (setjmp(m_error.jump))
        return false;
    return jpeg_read_icc_profile(&m_info, &m_profile, &m_profileLength);
}

QByteArray Reader::profile() const
{
    QByteArray bytes;
    if (m_profile && m_profileLength <= limits::maximumMetadataBytes)
        bytes = QByteArray(reinterpret_cast<const char *>(m_profile), int(m_profileLength));
    std::free(m_profile);
    return bytes;
}

/// Opens and judges: the part that probe and decode share, so that they cannot differ.
Result<std::unique_ptr<Reader>> openJpeg(const QByteArray &bytes)
{
    auto reader = std::make_unique<Reader>(bytes);
    if (!reader->readHeader())
        return Failure{reader->reason()};
    if (reader->info().data_precision != 8)
        return Failure{QStringLiteral("JPEG of %1 bits a channel").arg(reader->info().data_precision)};
    const bool knownColors = reader->isGrey() || reader->isCmyk() || reader->info().num_components == 3;
    if (!knownColors)
        return Failure{QStringLiteral("JPEG of an unknown colour space")};
    if (!limits::allows(reader->storedSize(), reader->bytesNeededPerPixel()))
        return Failure{tooLarge(reader->storedSize())};
    return reader;
}

ImageInfo infoOf(const Reader &reader, int orientation)
{
    return {uprightSize(reader.storedSize(), orientation), reader.bitsPerPixel(), 1, jpegCodec.name};
}

Result<Picture> decodeTurned(const QByteArray &bytes, QSize target, bool asStored, bool isCut = false)
{
    auto opened = openJpeg(bytes);
    if (!opened)
        return opened.failure();
    Reader &reader = **opened;
    const int orientation = asStored ? 1 : reader.orientation();
    Picture picture;
    picture.info = infoOf(reader, orientation);
    if (!reader.isCmyk() && reader.readProfile())
        picture.iccProfile = reader.profile();

    reader.scaleTo(uprightSize(target, orientation));
    if (!reader.prepare())
        return Failure{reader.reason()};
    QImage image =
        allocateImage(reader.outputSize(), reader.isGrey() ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
    if (image.isNull())
        return Failure{outOfMemory(reader.outputSize())};
    QByteArray cmykRow;
    if (reader.isCmyk())
        cmykRow.resize(reader.outputSize().width() * 4);
    const int rows = reader.readRows(image, cmykRow.isEmpty() ? nullptr : reinterpret_cast<uchar *>(cmykRow.data()));
    if (rows == 0) {
        // Of a progressive file the library unpacks all scans or none: those in front of the damage are tried alone.
        const qsizetype sound = isCut ? 0 : reader.lastMarker();
        if (sound == 0)
            return Failure{reader.reason()};
        return decodeTurned(bytes.left(sound), target, asStored, true);
    }
    blankRows(image, rows);
    picture.partial = isCut || reader.isDamaged() || rows < image.height();
    image.setDotsPerMeterX(reader.dotsPerMeter(reader.info().X_density));
    image.setDotsPerMeterY(reader.dotsPerMeter(reader.info().Y_density));
    picture.pixels = uprighted(image, orientation);
    if (picture.isNull())
        return Failure{outOfMemory(picture.info.size)};
    if (!asStored && !picture.isReduced())
        picture.metadata = jpegMetadata(bytes);
    return picture;
}

bool sniffJpeg(Bytes head)
{
    return ByteReader(head).is(0, "\xff\xd8\xff");
}

Result<ImageInfo> probeJpeg(const EncodedFile &file, int)
{
    auto opened = openJpeg(file.bytes);
    if (!opened)
        return opened.failure();
    return infoOf(**opened, (*opened)->orientation());
}

Result<Picture> decodeJpeg(const EncodedFile &file, const DecodeHint &hint)
{
    return decodeTurned(file.bytes, hint.target, false);
}

}

Result<Picture> decodeStoredJpeg(const QByteArray &bytes, QSize target)
{
    return decodeTurned(bytes, target, true);
}

Result<JpegSamples> decodeJpegSamples(const QByteArray &bytes, QSize size, int components, bool isYcc)
{
    Reader reader(bytes);
    if (!reader.readHeader())
        return Failure{reader.reason()};
    const QSize stored = reader.storedSize();
    if (reader.info().data_precision != 8 || reader.info().num_components != components || stored.width() > size.width()
        || stored.height() > size.height())
        return Failure{QStringLiteral("a JPEG of another kind than the file around it says")};
    const qsizetype stride = qsizetype(size.width()) * components;
    JpegSamples jpeg{QByteArray(stride * size.height(), '\xff'), false};
    const int rows = reader.readSamples(reinterpret_cast<uchar *>(jpeg.samples.data()), stride, isYcc);
    jpeg.isDamaged = reader.isDamaged() || rows < stored.height();
    return jpeg;
}

const Codec jpegCodec{"JPEG", "jpg jpeg jpe thm jfif jif jfi", sniffJpeg, probeJpeg, decodeJpeg, true, true};
