#include "engine/codecs/encoders.h"

#include "engine/codecs/encodepixels.h"
#include "engine/codecs/metadatawrite.h"
#include "engine/codecs/pngpixels.h"

#include <QStringDecoder>

#include <algorithm>
#include <cstdio>
#include <vector>

#include <png.h>

namespace {

/// What goes into the file besides pixels, made before the library's long jumps can cross it.
struct Extras
{
    Extras(const Picture &picture, bool grey)
        : blocks(preparedForWriting(picture))
        , profile(profileFor(picture, grey ? ProfileColors::Grey : ProfileColors::Rgb))
        , resolution(knownDotsPerMeter(picture.pixels))
    {
        QStringDecoder utf8(QStringDecoder::Utf8);
        const QString text = utf8(blocks.comment);
        const bool ascii =
            std::all_of(blocks.comment.begin(), blocks.comment.end(), [](char c) { return uchar(c) < 128; });
        commentIsUtf8 = !ascii && !utf8.hasError();
        blocks.comment.replace('\0', ' ');
        if (!blocks.iptc.isEmpty())
            iptcText = rawProfile(blocks.iptc);
    }

    /// The format has no chunk for IPTC; this text is what programs agree on.
    static QByteArray rawProfile(const QByteArray &iptc)
    {
        const QByteArray digits = iptc.toHex();
        QByteArray text = "\niptc\n" + QByteArray::number(iptc.size()).rightJustified(8) + '\n';
        constexpr qsizetype perLine = 72;
        for (qsizetype at = 0; at < digits.size(); at += perLine)
            text += digits.mid(at, perLine) + '\n';
        return text;
    }

    Metadata blocks;
    QByteArray profile;
    QSize resolution;
    QByteArray iptcText;
    bool commentIsUtf8 = false;
};

/// The library's state; all that a long jump may cross lives here.
class Writer
{
public:
    /// `pixels`: what packedPngPixels() gave, if anything.
    Writer(const PngLayout &layout, const Extras *extras, const std::optional<QByteArray> &pixels, bool interlaced)
        : m_layout(layout)
        , m_extras(extras)
        , m_pixels(pixels)
        , m_rows(layout)
        , m_interlaced(interlaced)
    {
    }
    ~Writer() { png_destroy_write_struct(&m_png, &m_info); }
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    bool write();
    QByteArray bytes;
    QString reason() const { return QStringLiteral("PNG writer: ") + QString::fromLatin1(m_text); }

private:
    static void stopOnError(png_structp png, png_const_charp text);
    static void sayNothing(png_structp, png_const_charp) { }
    static void take(png_structp png, png_bytep data, size_t count);
    static void flush(png_structp) { }
    void setPalette();
    void setExtras();
    void addText(int compression, const char *keyword, const QByteArray &text);
    void writeRows();
    void writePacked();

    const PngLayout &m_layout;
    const Extras *const m_extras;
    const std::optional<QByteArray> &m_pixels;
    PngRows m_rows;
    const bool m_interlaced;
    std::vector<png_color> m_colors;
    std::vector<png_byte> m_alphas;
    std::vector<png_text> m_texts;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    char m_text[160] = "out of memory";
};

void Writer::stopOnError(png_structp png, png_const_charp text)
{
    Writer *const writer = static_cast<Writer *>(png_get_error_ptr(png));
    std::snprintf(writer->m_text, sizeof writer->m_text, "%s", text);
    png_longjmp(png, 1);
}

void Writer::take(png_structp png, png_bytep data, size_t count)
{
    static_cast<Writer *>(png_get_io_ptr(png))->bytes.append(reinterpret_cast<const char *>(data), qsizetype(count));
}

void Writer::setPalette()
{
    for (const QRgb color : m_layout.indexed.table) {
        m_colors.push_back({png_byte(qRed(color)), png_byte(qGreen(color)), png_byte(qBlue(color))});
        m_alphas.push_back(png_byte(qAlpha(color)));
    }
    while (!m_alphas.empty() && m_alphas.back() == 255)
        m_alphas.pop_back();
    png_set_PLTE(m_png, m_info, m_colors.data(), int(m_colors.size()));
    if (!m_alphas.empty())
        png_set_tRNS(m_png, m_info, m_alphas.data(), int(m_alphas.size()), nullptr);
}

void Writer::addText(int compression, const char *keyword, const QByteArray &text)
{
    if (text.isEmpty())
        return;
    png_text entry{};
    entry.compression = compression;
    entry.key = const_cast<char *>(keyword);
    entry.text = const_cast<char *>(text.constData());
    if (compression == PNG_ITXT_COMPRESSION_NONE)
        entry.itxt_length = size_t(text.size());
    else
        entry.text_length = size_t(text.size());
    m_texts.push_back(entry);
}

void Writer::setExtras()
{
    if (!m_extras->resolution.isEmpty())
        png_set_pHYs(m_png, m_info, png_uint_32(m_extras->resolution.width()),
            png_uint_32(m_extras->resolution.height()), PNG_RESOLUTION_METER);
    if (!m_extras->profile.isEmpty())
        png_set_iCCP(m_png, m_info, "profile", PNG_COMPRESSION_TYPE_BASE,
            reinterpret_cast<png_const_bytep>(m_extras->profile.constData()), png_uint_32(m_extras->profile.size()));
    const Metadata &blocks = m_extras->blocks;
    if (!blocks.exif.isEmpty())
        png_set_eXIf_1(m_png, m_info, png_uint_32(blocks.exif.size()),
            reinterpret_cast<png_bytep>(const_cast<char *>(blocks.exif.constData())));
    addText(PNG_ITXT_COMPRESSION_NONE, "XML:com.adobe.xmp", blocks.xmp);
    addText(m_extras->commentIsUtf8 ? PNG_ITXT_COMPRESSION_NONE : PNG_TEXT_COMPRESSION_NONE, "Comment", blocks.comment);
    addText(PNG_TEXT_COMPRESSION_zTXt, "Raw profile type iptc", m_extras->iptcText);
    if (!m_texts.empty())
        png_set_text(m_png, m_info, m_texts.data(), int(m_texts.size()));
}

bool Writer::write()
{
    m_png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, stopOnError, sayNothing);
    m_info = m_png ? png_create_info_struct(m_png) : nullptr;
    if (!m_info)
        return false;
    if (setjmp(png_jmpbuf(m_png)))
        return false;
    png_set_write_fn(m_png, this, take, flush);
    png_set_benign_errors(m_png, 1);
    png_set_IHDR(m_png, m_info, png_uint_32(m_layout.size().width()), png_uint_32(m_layout.size().height()),
        m_layout.bits, m_layout.colorType, m_interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
        PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    if (m_layout.colorType == PNG_COLOR_TYPE_PALETTE)
        setPalette();
    if (m_extras)
        setExtras();
    // Of rows that the library packs: on photographs three times as quick as its own choice, for files 5 % larger.
    if (m_layout.indexed.isNull()) {
        png_set_compression_level(m_png, 3);
        png_set_filter(m_png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB | PNG_FILTER_UP);
    }
    png_write_info(m_png, m_info);
    if (m_pixels)
        writePacked();
    else
        writeRows();
    return true;
}

/// The library's own way, one row after the other.
void Writer::writeRows()
{
    const int passes = png_set_interlace_handling(m_png);
    for (int pass = 0; pass < passes; ++pass) {
        for (int y = 0; y < m_layout.size().height(); ++y)
            png_write_row(m_png, m_rows.make(y));
    }
    // Everything stands before the pixels; asked again, the library would write EXIF twice.
    png_write_end(m_png, nullptr);
}

void Writer::writePacked()
{
    constexpr qsizetype perChunk = 1024 * 1024;
    bytes.reserve(bytes.size() + m_pixels->size() + 64 * 1024);
    for (qsizetype at = 0; at < m_pixels->size(); at += perChunk)
        png_write_chunk(m_png, reinterpret_cast<png_const_bytep>("IDAT"),
            reinterpret_cast<png_const_bytep>(m_pixels->constData() + at),
            size_t(std::min(perChunk, m_pixels->size() - at)));
    png_write_chunk(m_png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
}

Result<QByteArray> encodeAs(const Picture &picture, bool interlaced)
{
    const PngLayout layout(picture);
    const std::optional<QByteArray> pixels = interlaced ? std::nullopt : packedPngPixels(layout);
    const Extras extras(picture, layout.isGrey());
    Writer writer(layout, &extras, pixels, interlaced);
    if (writer.write())
        return writer.bytes;
    // A block that the library will not take is no reason to lose the picture.
    Writer plain(layout, nullptr, pixels, interlaced);
    if (plain.write())
        return plain.bytes;
    return Failure{plain.reason()};
}

}

Result<QByteArray> encodePng(const Picture &picture, const EncodeOptions &)
{
    return encodeAs(picture, false);
}

Result<QByteArray> encodePngInterlaced(const Picture &picture, const EncodeOptions &)
{
    return encodeAs(picture, true);
}
