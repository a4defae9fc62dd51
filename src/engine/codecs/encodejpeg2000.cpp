#include "engine/codecs/encoders.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"
#include "engine/codecs/metadatawrite.h"
#include "engine/limits.h"

#include <cmath>
#include <cstring>
#include <memory>

#include <openjpeg.h>

namespace {

template <auto release> struct Release
{
    template <class Thing> void operator()(Thing *thing) const { release(thing); }
};
using CodecPointer = std::unique_ptr<opj_codec_t, Release<opj_destroy_codec>>;
using StreamPointer = std::unique_ptr<opj_stream_t, Release<opj_stream_destroy>>;
using ImagePointer = std::unique_ptr<opj_image_t, Release<opj_image_destroy>>;

/// What the library writes to. It goes back to fill lengths in.
struct Target
{
    QByteArray bytes;
    qint64 position = 0;
    QString complaint;

    static Target &of(void *target) { return *static_cast<Target *>(target); }
    static OPJ_SIZE_T write(void *from, OPJ_SIZE_T count, void *target)
    {
        Target &self = of(target);
        const qint64 end = self.position + qint64(count);
        if (end > self.bytes.size())
            self.bytes.resize(end);
        std::memcpy(self.bytes.data() + self.position, from, count);
        self.position = end;
        return count;
    }
    static OPJ_BOOL seek(OPJ_OFF_T position, void *target)
    {
        Target &self = of(target);
        if (position < 0)
            return OPJ_FALSE;
        // It leaves room for a length first and comes back.
        if (position > self.bytes.size())
            self.bytes.append(position - self.bytes.size(), '\0');
        self.position = position;
        return OPJ_TRUE;
    }
    static OPJ_OFF_T skip(OPJ_OFF_T count, void *target)
    {
        return seek(of(target).position + count, target) ? count : -1;
    }
    static void complain(const char *text, void *target)
    {
        if (of(target).complaint.isEmpty())
            of(target).complaint = QString::fromLatin1(text).trimmed();
    }
    static void sayNothing(const char *, void *) { }
};

struct Layout
{
    QImage image; ///< Grayscale8, RGB32, ARGB32 or RGBA64
    int colors = 3;
    bool alpha = false;
    int bits() const { return image.format() == QImage::Format_RGBA64 ? 16 : 8; }
    int channels() const { return colors + (alpha ? 1 : 0); }
};

Layout layoutOf(const Picture &picture)
{
    Layout layout;
    layout.alpha = hasTransparency(picture);
    if (picture.pixels.format() == QImage::Format_RGBA64) {
        layout.image = picture.pixels;
        layout.colors = picture.info.bitsPerPixel <= 32 && isAllGrey(picture.pixels) ? 1 : 3;
        return layout;
    }
    const PalettePixels indexed = palettePixels(picture, {8}, Transparency::Kept);
    const bool grey = !layout.alpha && !indexed.isNull()
        && std::all_of(indexed.table.begin(), indexed.table.end(), [](QRgb color) { return qIsGray(color); });
    layout.colors = grey ? 1 : 3;
    layout.image = grey ? greyscale(picture) : rgbOrArgb(picture);
    return layout;
}

/// Channel 0 to 2 red, green, blue; the last one alpha where there is one.
void fillChannel(const Layout &layout, int channel, OPJ_INT32 *to)
{
    const QImage &image = layout.image;
    const bool isAlpha = layout.alpha && channel == layout.colors;
    const int deepShift = isAlpha ? 48 : 16 * channel;
    const int shift = isAlpha ? 24 : 16 - 8 * channel;
    for (int y = 0; y < image.height(); ++y, to += image.width()) {
        const uchar *const row = image.constScanLine(y);
        for (int x = 0; x < image.width(); ++x) {
            if (image.format() == QImage::Format_Grayscale8)
                to[x] = row[x];
            else if (image.format() == QImage::Format_RGBA64)
                to[x] = OPJ_INT32(quint64(reinterpret_cast<const QRgba64 *>(row)[x]) >> deepShift & 0xffff);
            else
                to[x] = OPJ_INT32(reinterpret_cast<const QRgb *>(row)[x] >> shift & 0xff);
        }
    }
}

ImagePointer libraryImage(const Layout &layout)
{
    std::vector<opj_image_cmptparm_t> parameters(size_t(layout.channels()));
    for (opj_image_cmptparm_t &parameter : parameters) {
        parameter = {};
        parameter.dx = 1;
        parameter.dy = 1;
        parameter.w = quint32(layout.image.width());
        parameter.h = quint32(layout.image.height());
        parameter.prec = quint32(layout.bits());
    }
    ImagePointer image(opj_image_create(
        quint32(layout.channels()), parameters.data(), layout.colors == 1 ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB));
    if (!image)
        return image;
    image->x1 = quint32(layout.image.width());
    image->y1 = quint32(layout.image.height());
    for (int channel = 0; channel < layout.channels(); ++channel) {
        image->comps[channel].alpha = layout.alpha && channel == layout.colors ? 1 : 0;
        fillChannel(layout, channel, image->comps[channel].data);
    }
    return image;
}

opj_cparameters_t parametersFor(const Layout &layout, double quality)
{
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_mct = layout.colors == 3 ? 1 : 0;
    const bool lossless = !(quality < 1);
    parameters.irreversible = lossless ? 0 : 1;
    parameters.tcp_rates[0] = lossless ? 0 : float(1 / qMax(0.01, quality));
    // Every halving must leave a pixel.
    const int shorter = qMin(layout.image.width(), layout.image.height());
    while (parameters.numresolution > 1 && shorter >> (parameters.numresolution - 1) == 0)
        --parameters.numresolution;
    return parameters;
}

Result<QByteArray> compressed(const Layout &layout, double quality)
{
    const ImagePointer image = libraryImage(layout);
    const CodecPointer codec(opj_create_compress(OPJ_CODEC_JP2));
    const StreamPointer stream(opj_stream_create(256 * 1024, OPJ_FALSE));
    if (!image || !codec || !stream)
        return Failure{QStringLiteral("JPEG 2000 writer: out of memory")};
    Target target;
    opj_set_error_handler(codec.get(), Target::complain, &target);
    opj_set_warning_handler(codec.get(), Target::sayNothing, &target);
    opj_set_info_handler(codec.get(), Target::sayNothing, &target);
    opj_stream_set_user_data(stream.get(), &target, nullptr);
    opj_stream_set_write_function(stream.get(), Target::write);
    opj_stream_set_skip_function(stream.get(), Target::skip);
    opj_stream_set_seek_function(stream.get(), Target::seek);
    opj_cparameters_t parameters = parametersFor(layout, quality);
    if (opj_setup_encoder(codec.get(), &parameters, image.get())) {
        if (opj_has_thread_support())
            opj_codec_set_threads(codec.get(), qBound(1, opj_get_num_cpus(), 4));
        if (opj_start_compress(codec.get(), image.get(), stream.get()) && opj_encode(codec.get(), stream.get())
            && opj_end_compress(codec.get(), stream.get()))
            return target.bytes;
    }
    return Failure{QStringLiteral("JPEG 2000 writer: ") + target.complaint};
}

QByteArray box(const char (&kind)[5], const QByteArray &content)
{
    ByteWriter out;
    out.u32be(quint32(content.size()) + 8);
    out.text(kind);
    return out.bytes + content;
}

/// Dots a metre as the format has it: a fraction and a power of ten.
QByteArray resolutionBox(QSize dotsPerMeter)
{
    ByteWriter out;
    for (const int value : {dotsPerMeter.height(), dotsPerMeter.width()}) {
        out.u16be(quint32(value / (value > 0xffff ? 100 : 1)));
        out.u16be(1);
    }
    out.u8(dotsPerMeter.height() > 0xffff ? 2 : 0);
    out.u8(dotsPerMeter.width() > 0xffff ? 2 : 0);
    return box("res ", box("resc", out.bytes));
}

/// The colours by a profile instead of a number.
QByteArray profileBox(const QByteArray &profile)
{
    return box("colr", QByteArray("\x02\0\0", 3) + profile);
}

/// Boxes that programs know by these numbers.
QByteArray metadataBoxes(const Metadata &blocks)
{
    const auto uuid = [](const char *number, const QByteArray &content) {
        return content.isEmpty() ? QByteArray() : box("uuid", QByteArray::fromHex(number) + content);
    };
    return uuid("4a706754696666457869662d3e4a5032", blocks.exif) + uuid("33c7a4d2b81d4723a0baf1a3e097ad38", blocks.iptc)
        + uuid("be7acfcb97a942e89c71999491e3afac", blocks.xmp);
}

/// The header's boxes with profile and resolution among them, and the metadata behind the header.
QByteArray withExtras(const QByteArray &file, const Picture &picture, bool grey)
{
    const QByteArray profile = profileFor(picture, grey ? ProfileColors::Grey : ProfileColors::Rgb);
    const QSize resolution = knownDotsPerMeter(picture.pixels);
    const ByteReader bytes(file);
    QByteArray result;
    size_t at = 0;
    // The pixels come last, and their length may be told as 0.
    while (bytes.has(at, 8) && bytes.u32be(at) >= 8 && !bytes.is(at + 4, "jp2c")) {
        const size_t length = bytes.u32be(at);
        if (!bytes.is(at + 4, "jp2h")) {
            result += file.mid(qsizetype(at), qsizetype(length));
            at += length;
            continue;
        }
        QByteArray header;
        for (size_t inner = at + 8; bytes.u32be(inner) >= 8 && inner < at + length; inner += bytes.u32be(inner)) {
            if (bytes.is(inner + 4, "colr") && !profile.isEmpty())
                header += profileBox(profile);
            else
                header += file.mid(qsizetype(inner), qsizetype(bytes.u32be(inner)));
        }
        if (!resolution.isEmpty())
            header += resolutionBox(resolution);
        result += box("jp2h", header) + metadataBoxes(preparedForWriting(picture));
        at += length;
    }
    return result + file.mid(qsizetype(at));
}

}

Result<QByteArray> encodeJpeg2000(const Picture &picture, const EncodeOptions &options)
{
    const Layout layout = layoutOf(picture);
    if (!limits::allows(layout.image.size(), 8 + 8 * layout.channels()))
        return Failure{QStringLiteral("the picture is too large for the memory that a JPEG 2000 takes")};
    const Result<QByteArray> file = compressed(layout, options.jp2Quality);
    if (!file)
        return file.failure();
    return withExtras(*file, picture, layout.colors == 1);
}
