#include "engine/codecs/encoders.h"

#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"
#include "engine/codecs/exiv2setup.h"
#include "engine/codecs/metadatawrite.h"

#include <cstring>
#include <memory>
#include <vector>

#include <tiffio.h>

namespace {

/// How the picture lies in the file.
struct Layout
{
    int bits = 8; ///< a sample
    int samples = 3;
    int photometric = PHOTOMETRIC_RGB;
    bool alpha = false;
    bool jpeg = false;
    PalettePixels indexed; ///< of palettes and of grey up to 8 bits
    QImage image; ///< of all others

    QSize size() const { return indexed.isNull() ? image.size() : indexed.pixels.size(); }
    qsizetype rowBytes() const { return (qsizetype(size().width()) * bits * samples + 7) / 8; }
    bool isGrey() const { return photometric == PHOTOMETRIC_MINISBLACK || photometric == PHOTOMETRIC_MINISWHITE; }
};

Layout indexedLayout(const Picture &picture)
{
    Layout layout;
    layout.indexed = palettePixels(picture, {1, 4, 8}, Transparency::OverWhite);
    layout.bits = layout.indexed.bits;
    layout.samples = 1;
    if (layout.bits == 1 && isBlackAndWhite(layout.indexed.table))
        layout.photometric =
            layout.indexed.table[0] == qRgb(255, 255, 255) ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
    else
        layout.photometric =
            picture.pixels.format() == QImage::Format_Grayscale8 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_PALETTE;
    return layout;
}

Layout plainLayout(const Picture &picture)
{
    const bool alpha = hasTransparency(picture);
    if (picture.pixels.depth() <= 8 && !alpha)
        return indexedLayout(picture);
    Layout layout;
    const bool deep = picture.pixels.format() == QImage::Format_RGBA64;
    const bool grey = deep && !alpha && picture.info.bitsPerPixel == 16 && isAllGrey(picture.pixels);
    const int nominalWithAlpha = deep ? 64 : 32;
    layout.alpha = alpha || (picture.info.bitsPerPixel == nominalWithAlpha && picture.pixels.hasAlphaChannel());
    layout.image = deep ? picture.pixels
        : layout.alpha  ? picture.pixels.convertToFormat(QImage::Format_ARGB32)
                        : opaqueRgb(picture);
    layout.bits = deep ? 16 : 8;
    layout.samples = grey ? 1 : layout.alpha ? 4 : 3;
    layout.photometric = grey ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB;
    return layout;
}

Layout jpegLayout(const Picture &picture)
{
    Layout layout;
    layout.jpeg = true;
    const PalettePixels indexed = palettePixels(picture, {8}, Transparency::OverWhite);
    const bool grey = !indexed.isNull()
        && std::all_of(indexed.table.begin(), indexed.table.end(), [](QRgb color) { return qIsGray(color); });
    layout.image = grey ? greyscale(picture) : opaqueRgb(picture);
    layout.samples = grey ? 1 : 3;
    layout.photometric = grey ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_YCBCR;
    return layout;
}

/// A row as it stands in the file, but for what the library packs.
void makeRow(const Layout &layout, int y, uchar *to)
{
    if (!layout.indexed.isNull())
        return layout.indexed.packRow(y, to);
    const int width = layout.image.width();
    const uchar *const row = layout.image.constScanLine(y);
    if (layout.image.format() == QImage::Format_Grayscale8) {
        std::memcpy(to, row, size_t(width));
    } else if (layout.bits == 16) {
        const auto *const from = reinterpret_cast<const QRgba64 *>(row);
        for (int x = 0; x < width; ++x, to += 2 * layout.samples) {
            const quint16 samples[] = {from[x].red(), from[x].green(), from[x].blue(), from[x].alpha()};
            std::memcpy(to, samples, 2 * size_t(layout.samples));
        }
    } else if (layout.samples == 3) {
        toRgb(reinterpret_cast<const QRgb *>(row), width, to);
    } else {
        const auto *const from = reinterpret_cast<const QRgb *>(row);
        for (int x = 0; x < width; ++x, to += 4) {
            toRgb(from + x, 1, to);
            to[3] = uchar(qAlpha(from[x]));
        }
    }
}

/// A TIFF that the library writes into memory.
class Writer
{
public:
    Writer() = default;
    ~Writer()
    {
        if (m_tiff)
            TIFFClose(m_tiff);
    }
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    bool open();
    void setTags(const Layout &layout, int jpegQuality);
    void setExtras(const Metadata &blocks, const QByteArray &profile, QSize resolution);
    bool writePixels(const Layout &layout);
    QString reason() const { return QStringLiteral("TIFF writer: ") + m_text; }
    QByteArray bytes;

private:
    static Writer &self(thandle_t handle) { return *static_cast<Writer *>(handle); }
    static tmsize_t read(thandle_t handle, void *to, tmsize_t count);
    static tmsize_t write(thandle_t handle, void *from, tmsize_t count);
    static toff_t seek(thandle_t handle, toff_t offset, int whence);
    static int close(thandle_t) { return 0; }
    static toff_t size(thandle_t handle) { return toff_t(self(handle).bytes.size()); }
    static int noteError(TIFF *, void *writer, const char *, const char *format, va_list arguments);
    static int ignoreWarning(TIFF *, void *, const char *, const char *, va_list) { return 1; }

    TIFF *m_tiff = nullptr;
    toff_t m_position = 0;
    QString m_text;
};

tmsize_t Writer::read(thandle_t handle, void *to, tmsize_t count)
{
    Writer &writer = self(handle);
    const tmsize_t rest = tmsize_t(writer.bytes.size()) - tmsize_t(writer.m_position);
    const tmsize_t given = qBound<tmsize_t>(0, rest, count);
    std::memcpy(to, writer.bytes.constData() + writer.m_position, size_t(given));
    writer.m_position += toff_t(given);
    return given;
}

tmsize_t Writer::write(thandle_t handle, void *from, tmsize_t count)
{
    Writer &writer = self(handle);
    const qsizetype end = qsizetype(writer.m_position) + count;
    if (end > writer.bytes.size())
        writer.bytes.resize(end);
    std::memcpy(writer.bytes.data() + writer.m_position, from, size_t(count));
    writer.m_position = toff_t(end);
    return count;
}

toff_t Writer::seek(thandle_t handle, toff_t offset, int whence)
{
    Writer &writer = self(handle);
    const toff_t base = whence == SEEK_CUR ? writer.m_position : whence == SEEK_END ? toff_t(writer.bytes.size()) : 0;
    writer.m_position = base + offset;
    return writer.m_position;
}

int Writer::noteError(TIFF *, void *writer, const char *, const char *format, va_list arguments)
{
    Writer &self = *static_cast<Writer *>(writer);
    if (self.m_text.isEmpty())
        self.m_text = QString::vasprintf(format, arguments);
    return 1;
}

bool Writer::open()
{
    const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
        TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), noteError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreWarning, this);
    m_tiff = TIFFClientOpenExt("picture", "wlm", this, read, write, seek, close, size, nullptr, nullptr, options.get());
    return m_tiff != nullptr;
}

void Writer::setTags(const Layout &layout, int jpegQuality)
{
    TIFFSetField(m_tiff, TIFFTAG_IMAGEWIDTH, quint32(layout.size().width()));
    TIFFSetField(m_tiff, TIFFTAG_IMAGELENGTH, quint32(layout.size().height()));
    TIFFSetField(m_tiff, TIFFTAG_BITSPERSAMPLE, layout.bits);
    TIFFSetField(m_tiff, TIFFTAG_SAMPLESPERPIXEL, layout.samples);
    TIFFSetField(m_tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(m_tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(m_tiff, TIFFTAG_COMPRESSION, layout.jpeg ? COMPRESSION_JPEG : COMPRESSION_NONE);
    TIFFSetField(m_tiff, TIFFTAG_PHOTOMETRIC, layout.photometric);
    if (layout.jpeg) {
        TIFFSetField(m_tiff, TIFFTAG_JPEGQUALITY, qBound(1, jpegQuality, 100));
        if (layout.samples == 3) {
            const int step = jpegQuality >= fullColorsFrom ? 1 : 2;
            TIFFSetField(m_tiff, TIFFTAG_YCBCRSUBSAMPLING, step, step);
            TIFFSetField(m_tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        }
    }
    if (layout.alpha) {
        const quint16 kind = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(m_tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    }
    if (layout.photometric == PHOTOMETRIC_PALETTE) {
        std::vector<quint16> red, green, blue;
        for (const QRgb color : layout.indexed.table) {
            red.push_back(quint16(qRed(color) * 257));
            green.push_back(quint16(qGreen(color) * 257));
            blue.push_back(quint16(qBlue(color) * 257));
        }
        TIFFSetField(m_tiff, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
    }
    // Strips of about 64 kB, in whole blocks of the JPEG coder's 16 rows.
    constexpr qsizetype stripBytes = 64 * 1024;
    const quint32 rows = quint32(qMax<qsizetype>(1, stripBytes / layout.rowBytes()));
    TIFFSetField(m_tiff, TIFFTAG_ROWSPERSTRIP, layout.jpeg ? (rows + 15) / 16 * 16 : rows);
}

void Writer::setExtras(const Metadata &blocks, const QByteArray &profile, QSize resolution)
{
    if (!resolution.isEmpty()) {
        TIFFSetField(m_tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
        TIFFSetField(m_tiff, TIFFTAG_XRESOLUTION, dotsPerInch(resolution.width()));
        TIFFSetField(m_tiff, TIFFTAG_YRESOLUTION, dotsPerInch(resolution.height()));
    }
    if (!profile.isEmpty())
        TIFFSetField(m_tiff, TIFFTAG_ICCPROFILE, quint32(profile.size()), profile.constData());
    if (!blocks.xmp.isEmpty())
        TIFFSetField(m_tiff, TIFFTAG_XMLPACKET, quint32(blocks.xmp.size()), blocks.xmp.constData());
    if (!blocks.iptc.isEmpty()) {
        // The library's releases differ in whether they count bytes or groups of four.
        const TIFFField *const field = TIFFFieldWithTag(m_tiff, TIFFTAG_RICHTIFFIPTC);
        const int unit = field && TIFFFieldDataType(field) == TIFF_LONG ? 4 : 1;
        const QByteArray padded = blocks.iptc + QByteArray((4 - blocks.iptc.size() % 4) % 4, '\0');
        TIFFSetField(m_tiff, TIFFTAG_RICHTIFFIPTC, quint32(padded.size() / unit), padded.constData());
    }
}

bool Writer::writePixels(const Layout &layout)
{
    std::vector<uchar> row(size_t(qMax(layout.rowBytes(), qsizetype(TIFFScanlineSize(m_tiff)))));
    for (int y = 0; y < layout.size().height(); ++y) {
        makeRow(layout, y, row.data());
        if (TIFFWriteScanline(m_tiff, row.data(), quint32(y), 0) < 0)
            return false;
    }
    if (!TIFFWriteDirectory(m_tiff))
        return false;
    TIFFClose(m_tiff);
    m_tiff = nullptr;
    return true;
}

/// The file with EXIF beside its own tags. Whatever goes wrong there, the picture stays.
QByteArray withExif(const QByteArray &file, const QByteArray &exif)
{
    return guardedFromExiv2(file, [&] {
        Exiv2::ExifData wanted;
        Exiv2::ExifParser::decode(wanted, exiv2Bytes(exif), uint32_t(exif.size()));
        const auto image = Exiv2::ImageFactory::open(exiv2Bytes(file), long(file.size()));
        image->readMetadata();
        Exiv2::ExifData all = image->exifData();
        for (const Exiv2::Exifdatum &datum : wanted) {
            if (all.findKey(Exiv2::ExifKey(datum.key())) == all.end())
                all.add(datum);
        }
        image->setExifData(all);
        image->writeMetadata();
        Exiv2::BasicIo &io = image->io();
        QByteArray written(qsizetype(io.size()), '\0');
        if (io.open() != 0
            || io.read(reinterpret_cast<Exiv2::byte *>(written.data()), long(written.size())) != written.size())
            return file;
        return written;
    });
}

Result<QByteArray> encodeAs(const Layout &layout, const Picture &picture, int jpegQuality)
{
    // Places in the file are told in 32 bits.
    if (!layout.jpeg && qint64(layout.rowBytes()) * layout.size().height() > 0xf0000000LL)
        return Failure{QStringLiteral("the picture is too large for a TIFF")};
    const Metadata blocks = preparedForWriting(picture);
    Writer writer;
    if (!writer.open())
        return Failure{writer.reason()};
    writer.setTags(layout, jpegQuality);
    writer.setExtras(blocks, profileFor(picture, layout.isGrey() ? ProfileColors::Grey : ProfileColors::Rgb),
        knownDotsPerMeter(picture.pixels));
    if (!writer.writePixels(layout))
        return Failure{writer.reason()};
    return blocks.exif.isEmpty() ? writer.bytes : withExif(writer.bytes, blocks.exif);
}

}

Result<QByteArray> encodeTiff(const Picture &picture, const EncodeOptions &options)
{
    return encodeAs(plainLayout(picture), picture, options.jpegQuality);
}

Result<QByteArray> encodeTiffJpeg(const Picture &picture, const EncodeOptions &options)
{
    return encodeAs(jpegLayout(picture), picture, options.jpegQuality);
}
