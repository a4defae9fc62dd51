#include "engine/codecs/png.h"

#include "engine/codecs/exif.h"
#include "engine/codecs/metadatablocks.h"
#include "engine/codecs/pixels.h"
#include "engine/codecs/rgbrows.h"
#include "engine/limits.h"
#include "engine/picturememory.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include <png.h>

namespace {

/// Whether the file is cut off within a chunk.
bool endsEarly(const QByteArray &file)
{
    const ByteReader bytes(file);
    size_t at = 8;
    while (bytes.has(at, 8) && !bytes.is(at + 4, "IEND"))
        at += 12 + size_t(bytes.u32be(at));
    return !bytes.has(at, 8);
}

/// The library's state; as for JPEG, all that a long jump may cross lives here.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes)
        : m_bytes(bytes)
    {
    }
    ~Reader() { png_destroy_read_struct(&m_png, &m_info, nullptr); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    bool readHeader();
    bool prepare(); ///< sets up how pixels are handed out; `format` is known before
    int readRows(QImage &image);

    QSize storedSize() const
    {
        return {int(png_get_image_width(m_png, m_info)), int(png_get_image_height(m_png, m_info))};
    }
    int bits() const { return png_get_bit_depth(m_png, m_info); }
    int colorType() const { return png_get_color_type(m_png, m_info); }
    int bitsPerPixel() const { return bits() * png_get_channels(m_png, m_info); }
    bool hasTransparentColor() const { return png_get_valid(m_png, m_info, PNG_INFO_tRNS) != 0; }
    QImage::Format format() const;
    QList<QRgb> colorTable() const;
    size_t rowBytes() const { return png_get_rowbytes(m_png, m_info); }
    bool isInterlaced() const { return png_get_interlace_type(m_png, m_info) != PNG_INTERLACE_NONE; }
    bool isComplete() const { return m_complete; }
    int orientation() const;
    QByteArray profile() const;
    void setResolution(QImage &image) const;
    QString reason() const { return QStringLiteral("not a readable PNG: ") + QString::fromLatin1(m_text); }

private:
    static void stopOnError(png_structp png, png_const_charp text);
    static void sayNothing(png_structp, png_const_charp) { }
    static void give(png_structp png, png_bytep to, size_t count);
    QList<QRgb> paletteTable() const;
    QList<QRgb> greyTable() const;
    bool takesStoredRows() const;
    void readRow(uchar *to);
    void convertRow(uchar *to, int count) const;
    void readStoredPasses(uchar *pixels, qsizetype stride);

    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    char m_text[160] = "out of memory";
    const QByteArray m_bytes;
    size_t m_position = 0;
    std::vector<uchar> m_stored; ///< a row as the file has it; empty where the library makes the picture's rows itself
    std::vector<uchar> m_converted; ///< a row of one pass of an interlaced file
    int m_rows = 0;
    bool m_complete = false;
};

void Reader::stopOnError(png_structp png, png_const_charp text)
{
    Reader *const reader = static_cast<Reader *>(png_get_error_ptr(png));
    std::snprintf(reader->m_text, sizeof reader->m_text, "%s", text);
    png_longjmp(png, 1);
}

void Reader::give(png_structp png, png_bytep to, size_t count)
{
    Reader *const reader = static_cast<Reader *>(png_get_io_ptr(png));
    if (count > size_t(reader->m_bytes.size()) - reader->m_position)
        png_error(png, "the file ends too early");
    std::memcpy(to, reader->m_bytes.constData() + reader->m_position, count);
    reader->m_position += count;
}

bool Reader::readHeader()
{
    m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, stopOnError, sayNothing);
    m_info = m_png ? png_create_info_struct(m_png) : nullptr;
    if (!m_info)
        return false;
    if (setjmp(png_jmpbuf(m_png)))
        return false;
    // Texts are no part of the picture, and a small one can unpack to hundreds of megabytes.
    static const png_byte texts[] = "tEXt\0zTXt\0iTXt";
    png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_NEVER, texts, 3);
    png_set_user_limits(m_png, limits::maximumSide, limits::maximumSide);
    png_set_chunk_malloc_max(m_png, limits::maximumMetadataBytes);
    png_set_chunk_cache_max(m_png, 1000);
    png_set_read_fn(m_png, this, give);
    // Every chunk has a sum of its own; the one over the unpacked bytes tells no more and costs a pass.
    png_set_option(m_png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
    // The library unpacks nothing of a piece that is not whole; small pieces show nearly all that a cut file holds.
    if (endsEarly(m_bytes))
        png_set_compression_buffer_size(m_png, 32);
    png_read_info(m_png, m_info);
    return true;
}

QImage::Format Reader::format() const
{
    if (bits() == 16)
        return QImage::Format_RGBA64;
    switch (colorType()) {
    case PNG_COLOR_TYPE_PALETTE:
        return bits() == 1 ? QImage::Format_Mono : QImage::Format_Indexed8;
    case PNG_COLOR_TYPE_GRAY:
        if (bits() == 1)
            return QImage::Format_Mono;
        return hasTransparentColor() ? QImage::Format_Indexed8 : QImage::Format_Grayscale8;
    case PNG_COLOR_TYPE_RGB:
        return hasTransparentColor() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    default:
        return QImage::Format_ARGB32;
    }
}

// The library adds a channel, turns the order and swaps bytes in one pass each; here it is one in all.
bool Reader::takesStoredRows() const
{
    if (hasTransparentColor())
        return false;
    const int type = colorType();
    return bits() == 16 || (bits() == 8 && (type == PNG_COLOR_TYPE_RGB || type == PNG_COLOR_TYPE_RGB_ALPHA));
}

void Reader::readRow(uchar *to)
{
    if (m_stored.empty()) {
        png_read_row(m_png, nullptr, to);
        return;
    }
    png_read_row(m_png, nullptr, m_stored.data());
    convertRow(to, storedSize().width());
}

void Reader::convertRow(uchar *to, int count) const
{
    if (bits() == 16)
        bigEndianRow(m_stored.data(), reinterpret_cast<QRgba64 *>(to), count, png_get_channels(m_png, m_info));
    else if (colorType() == PNG_COLOR_TYPE_RGB)
        rgbRow(m_stored.data(), reinterpret_cast<QRgb *>(to), count);
    else
        rgbaRow(m_stored.data(), reinterpret_cast<QRgb *>(to), count);
}

// The seven passes of the published format, each a small picture whose pixels lie apart in the large one.
void Reader::readStoredPasses(uchar *pixels, qsizetype stride)
{
    const quint32 width = quint32(storedSize().width());
    const quint32 height = quint32(storedSize().height());
    const size_t pixelBytes = bits() == 16 ? sizeof(QRgba64) : sizeof(QRgb);
    for (int pass = 0; pass < PNG_INTERLACE_ADAM7_PASSES; ++pass) {
        const quint32 columns = PNG_PASS_COLS(width, pass);
        for (quint32 y = PNG_PASS_START_ROW(pass); columns > 0 && y < height; y += PNG_PASS_ROW_OFFSET(pass)) {
            png_read_row(m_png, m_stored.data(), nullptr);
            convertRow(m_converted.data(), int(columns));
            uchar *to = pixels + qsizetype(y) * stride + PNG_PASS_START_COL(pass) * qsizetype(pixelBytes);
            for (quint32 x = 0; x < columns; ++x, to += PNG_PASS_COL_OFFSET(pass) * pixelBytes)
                std::memcpy(to, m_converted.data() + x * pixelBytes, pixelBytes);
            m_rows = 1;
        }
    }
}

bool Reader::prepare()
{
    const QImage::Format target = format();
    const int type = colorType();
    if (setjmp(png_jmpbuf(m_png)))
        return false;
    if (takesStoredRows()) {
        m_stored.resize(png_get_rowbytes(m_png, m_info));
        m_converted.resize(isInterlaced() ? size_t(storedSize().width()) * sizeof(QRgba64) : 0);
    } else if (target == QImage::Format_Indexed8) {
        png_set_packing(m_png);
    } else if (target == QImage::Format_Grayscale8) {
        png_set_expand_gray_1_2_4_to_8(m_png);
    } else if (target != QImage::Format_Mono) {
        if (hasTransparentColor())
            png_set_tRNS_to_alpha(m_png);
        if (!(type & PNG_COLOR_MASK_COLOR))
            png_set_gray_to_rgb(m_png);
        if (!(type & PNG_COLOR_MASK_ALPHA) && !hasTransparentColor())
            png_set_add_alpha(m_png, 0xffff, PNG_FILLER_AFTER);
        if (target == QImage::Format_RGBA64)
            png_set_swap(m_png);
        else
            png_set_bgr(m_png);
    }
    if (m_stored.empty())
        png_set_interlace_handling(m_png);
    png_read_update_info(m_png, m_info);
    return true;
}

int Reader::readRows(QImage &image)
{
    uchar *const pixels = image.bits();
    const qsizetype stride = image.bytesPerLine();
    const int height = image.height();
    const bool interlaced = isInterlaced();
    // The coarse passes of an interlaced file already cover the whole picture.
    if (interlaced)
        blankRows(image, 0);
    if (setjmp(png_jmpbuf(m_png)))
        return m_rows;
    if (interlaced && !m_stored.empty()) {
        readStoredPasses(pixels, stride);
        m_complete = true;
        return m_rows;
    }
    for (int pass = 0; pass < (interlaced ? PNG_INTERLACE_ADAM7_PASSES : 1); ++pass) {
        for (int y = 0; y < height; ++y) {
            readRow(pixels + y * stride);
            m_rows = interlaced ? 1 : y + 1;
            if (!interlaced)
                publishRows(pixels, m_rows);
        }
    }
    m_complete = true;
    return m_rows;
}

QList<QRgb> Reader::paletteTable() const
{
    png_colorp colors = nullptr;
    int count = 0;
    png_get_PLTE(m_png, m_info, &colors, &count);
    png_bytep alphas = nullptr;
    int alphaCount = 0;
    if (hasTransparentColor())
        png_get_tRNS(m_png, m_info, &alphas, &alphaCount, nullptr);
    QList<QRgb> table(1 << bits(), qRgb(0, 0, 0));
    for (int i = 0; i < qMin(count, int(table.size())); ++i)
        table[i] = qRgba(colors[i].red, colors[i].green, colors[i].blue, i < alphaCount ? alphas[i] : 255);
    return table;
}

QList<QRgb> Reader::greyTable() const
{
    const int largest = (1 << bits()) - 1;
    QList<QRgb> table(largest + 1);
    for (int i = 0; i <= largest; ++i)
        table[i] = qRgb(i * 255 / largest, i * 255 / largest, i * 255 / largest);
    png_color_16p clear = nullptr;
    if (hasTransparentColor() && png_get_tRNS(m_png, m_info, nullptr, nullptr, &clear) && clear
        && clear->gray <= largest)
        table[clear->gray] &= 0x00ffffff;
    return table;
}

QList<QRgb> Reader::colorTable() const
{
    return colorType() == PNG_COLOR_TYPE_PALETTE ? paletteTable() : greyTable();
}

// Only an orientation that stands before the pixels counts: a reader that shows the picture while it loads knows no
// other.
int Reader::orientation() const
{
    png_uint_32 length = 0;
    png_bytep exif = nullptr;
    if (!png_get_eXIf_1(m_png, m_info, &length, &exif) || !exif)
        return 1;
    return exifOrientation({exif, length});
}

QByteArray Reader::profile() const
{
    png_charp name = nullptr;
    int compression = 0;
    png_bytep data = nullptr;
    png_uint_32 length = 0;
    if (!png_get_iCCP(m_png, m_info, &name, &compression, &data, &length) || length > limits::maximumMetadataBytes)
        return {};
    return QByteArray(reinterpret_cast<const char *>(data), int(length));
}

void Reader::setResolution(QImage &image) const
{
    constexpr png_uint_32 sane = 10'000'000;
    image.setDotsPerMeterX(int(qMin(sane, png_get_x_pixels_per_meter(m_png, m_info))));
    image.setDotsPerMeterY(int(qMin(sane, png_get_y_pixels_per_meter(m_png, m_info))));
}

Result<std::unique_ptr<Reader>> openPng(const QByteArray &bytes)
{
    auto reader = std::make_unique<Reader>(bytes);
    if (!reader->readHeader())
        return Failure{reader->reason()};
    if (!limits::allows(reader->storedSize(), qMax(1, QImage::toPixelFormat(reader->format()).bitsPerPixel() / 8)))
        return Failure{tooLarge(reader->storedSize())};
    return reader;
}

ImageInfo infoOf(const Reader &reader)
{
    return {uprightSize(reader.storedSize(), reader.orientation()), reader.bitsPerPixel(), 1, pngCodec.name};
}

bool sniffPng(Bytes head)
{
    return ByteReader(head).is(0, "\x89PNG\r\n\x1a\n");
}

Result<ImageInfo> probePng(const EncodedFile &file, int)
{
    auto opened = openPng(file.bytes);
    if (!opened)
        return opened.failure();
    return infoOf(**opened);
}

Result<Picture> decodePng(const EncodedFile &file, const DecodeHint &)
{
    auto opened = openPng(file.bytes);
    if (!opened)
        return opened.failure();
    Reader &reader = **opened;
    Picture picture;
    picture.info = infoOf(reader);
    picture.iccProfile = reader.profile();
    const int orientation = reader.orientation();
    QImage image = allocateImage(reader.storedSize(), reader.format());
    if (image.isNull())
        return Failure{outOfMemory(reader.storedSize())};
    if (image.format() == QImage::Format_Indexed8 || image.format() == QImage::Format_Mono)
        image.setColorTable(reader.colorTable());
    if (!reader.prepare() || reader.rowBytes() > size_t(image.bytesPerLine()))
        return Failure{reader.reason()};
    const int rows = reader.readRows(image);
    if (rows == 0)
        return Failure{reader.reason()};
    picture.partial = !reader.isComplete();
    if (picture.partial && !reader.isInterlaced())
        blankRows(image, rows);
    reader.setResolution(image);
    picture.pixels = uprighted(image, orientation);
    if (picture.isNull())
        return Failure{outOfMemory(picture.info.size)};
    picture.metadata = pngMetadata(file.bytes);
    return picture;
}

}

const Codec pngCodec{"PNG", "png apng", sniffPng, probePng, decodePng, true, true};
