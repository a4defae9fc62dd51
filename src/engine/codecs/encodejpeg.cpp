#include "engine/codecs/encoders.h"

#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"
#include "engine/codecs/metadatawrite.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace {

struct ErrorState
{
    jpeg_error_mgr base; // first, so that the library's pointer is a pointer to this
    std::jmp_buf jump;
    char text[JMSG_LENGTH_MAX];
};

[[noreturn]] void stopOnError(j_common_ptr info)
{
    ErrorState &state = *reinterpret_cast<ErrorState *>(info->err);
    info->err->format_message(info, state.text);
    std::longjmp(state.jump, 1);
}

void sayNothing(j_common_ptr)
{
}

/// What stands in a marker, whole: a marker's length is told in 16 bits, and what does not fit is left out.
struct Marker
{
    int code;
    QByteArray payload;
};

/// One set of Photoshop's resources with nothing but IPTC in it.
QByteArray photoshopResources(const QByteArray &iptc)
{
    QByteArray resources("Photoshop 3.0\0"
                         "8BIM\x04\x04\0\0",
        22);
    for (int shift = 24; shift >= 0; shift -= 8)
        resources.append(char(iptc.size() >> shift & 0xff));
    return resources + iptc + QByteArray(iptc.size() % 2, '\0');
}

QList<Marker> markersOf(const Picture &picture)
{
    const Metadata blocks = preparedForWriting(picture);
    QList<Marker> markers;
    const auto add = [&](int code, const QByteArray &payload) {
        if (payload.size() <= jpegSegmentBytes)
            markers.append({code, payload});
    };
    if (!blocks.exif.isEmpty())
        add(JPEG_APP0 + 1, QByteArray("Exif\0\0", 6) + blocks.exif);
    if (!blocks.xmp.isEmpty())
        add(JPEG_APP0 + 1, QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + blocks.xmp);
    if (!blocks.iptc.isEmpty())
        add(JPEG_APP0 + 13, photoshopResources(blocks.iptc));
    if (!blocks.comment.isEmpty())
        add(JPEG_COM, blocks.comment.left(jpegSegmentBytes));
    return markers;
}

/// The library's state; all that a long jump may cross lives here.
class Writer
{
public:
    Writer();
    ~Writer()
    {
        jpeg_destroy_compress(&m_info);
        std::free(m_buffer);
    }
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    bool write(const QImage &image, const EncodeOptions &options, QSize resolution);
    QList<Marker> markers;
    QByteArray profile;
    QByteArray bytes() const { return QByteArray(reinterpret_cast<const char *>(m_buffer), qsizetype(m_length)); }
    QString reason() const { return QStringLiteral("JPEG writer: ") + QString::fromLatin1(m_error.text); }

private:
    void setUp(const QImage &image, const EncodeOptions &options, QSize resolution);

    jpeg_compress_struct m_info{};
    ErrorState m_error{};
    unsigned char *m_buffer = nullptr;
    unsigned long m_length = 0;
};

Writer::Writer()
{
    m_info.err = jpeg_std_error(&m_error.base);
    m_error.base.error_exit = stopOnError;
    m_error.base.output_message = sayNothing;
}

void Writer::setUp(const QImage &image, const EncodeOptions &options, QSize resolution)
{
    const bool grey = image.format() == QImage::Format_Grayscale8;
    m_info.image_width = JDIMENSION(image.width());
    m_info.image_height = JDIMENSION(image.height());
    m_info.input_components = grey ? 1 : 4;
    m_info.in_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGRX;
    jpeg_set_defaults(&m_info);
    const int quality = qBound(1, options.jpegQuality, 100);
    jpeg_set_quality(&m_info, quality, TRUE);
    m_info.dct_method = options.jpegFastSave ? JDCT_IFAST : JDCT_ISLOW;
    m_info.optimize_coding = options.jpegFastSave ? FALSE : TRUE;
    // Half the resolution for colours, which is the library's default, shows at the edges of what else is near perfect.
    if (!grey && !options.jpegFastSave && quality >= fullColorsFrom) {
        m_info.comp_info[0].h_samp_factor = 1;
        m_info.comp_info[0].v_samp_factor = 1;
    }
    if (!resolution.isEmpty()) {
        m_info.density_unit = 1;
        m_info.X_density = UINT16(qBound(1, qRound(dotsPerInch(resolution.width())), 0xffff));
        m_info.Y_density = UINT16(qBound(1, qRound(dotsPerInch(resolution.height())), 0xffff));
    }
}

bool Writer::write(const QImage &image, const EncodeOptions &options, QSize resolution)
{
    if (setjmp(m_error.jump))
        return false;
    jpeg_create_compress(&m_info);
    jpeg_mem_dest(&m_info, &m_buffer, &m_length);
    setUp(image, options, resolution);
    jpeg_start_compress(&m_info, TRUE);
    for (const Marker &marker : std::as_const(markers))
        jpeg_write_marker(&m_info, marker.code, reinterpret_cast<const JOCTET *>(marker.payload.constData()),
            unsigned(marker.payload.size()));
    if (!profile.isEmpty())
        jpeg_write_icc_profile(
            &m_info, reinterpret_cast<const JOCTET *>(profile.constData()), unsigned(profile.size()));
    while (m_info.next_scanline < m_info.image_height) {
        JSAMPROW row = const_cast<JSAMPROW>(image.constScanLine(int(m_info.next_scanline)));
        jpeg_write_scanlines(&m_info, &row, 1);
    }
    jpeg_finish_compress(&m_info);
    return true;
}

}

Result<QByteArray> encodeJpeg(const Picture &picture, const EncodeOptions &options)
{
    const PalettePixels indexed = palettePixels(picture, {8}, Transparency::OverWhite);
    const bool grey =
        !indexed.isNull() && std::all_of(indexed.table.begin(), indexed.table.end(), [](QRgb c) { return qIsGray(c); });
    const QImage image = grey ? greyscale(picture) : opaqueRgb(picture);
    Writer writer;
    writer.markers = markersOf(picture);
    writer.profile = profileFor(picture, grey ? ProfileColors::Grey : ProfileColors::Rgb);
    constexpr qsizetype mostProfileBytes = 255 * (qsizetype(jpegSegmentBytes) - 14);
    if (writer.profile.size() > mostProfileBytes)
        writer.profile.clear();
    if (!writer.write(image, options, knownDotsPerMeter(picture.pixels)))
        return Failure{writer.reason()};
    return writer.bytes();
}
