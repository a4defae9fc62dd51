#include "engine/codecs/encoders.h"

#include "engine/codecs/bytes.h"
#include "engine/codecs/encodedepth.h"
#include "engine/codecs/encodepixels.h"

#include <cstring>
#include <vector>

namespace {

QByteArray sizeText(QSize size)
{
    return QByteArray::number(size.width()) + ' ' + QByteArray::number(size.height());
}

/// Behind `header` the rows of `rowBytes` each.
template <class WriteRow> QByteArray fileOf(const QByteArray &header, int rows, qsizetype rowBytes, WriteRow writeRow)
{
    QByteArray bytes = header;
    bytes.resize(header.size() + rowBytes * rows);
    uchar *const start = reinterpret_cast<uchar *>(bytes.data()) + header.size();
    for (int y = 0; y < rows; ++y)
        writeRow(y, start + y * rowBytes);
    return bytes;
}

/// A row of Format_Mono with its unused bits cleared; `turned` exchanges 0 and 1.
void copyBits(const QImage &mono, int y, bool turned, uchar *to)
{
    const int bytes = (mono.width() + 7) / 8;
    const uchar *const from = mono.constScanLine(y);
    for (int i = 0; i < bytes; ++i)
        to[i] = turned ? uchar(~from[i]) : from[i];
    if (const int over = mono.width() % 8)
        to[bytes - 1] &= uchar(0xff00 >> over);
}

/// Luminance in 1/65535, by the weights of qGray().
int deepGrey(QRgba64 pixel)
{
    return (pixel.red() * 11 + pixel.green() * 16 + pixel.blue() * 5 + 16) / 32;
}

/// The picture's luminance with its fractions, rounded to 256 greys so that the error of each pixel goes on to its
/// neighbours (Floyd and Steinberg). A picture that is grey already has no fractions and stays as it is.
QImage diffusedGrey(const Picture &picture)
{
    const bool deep = picture.pixels.format() == QImage::Format_RGBA64 && !hasTransparency(picture);
    const QImage image = deep ? picture.pixels : opaqueRgb(picture);
    QImage grey = allocateImage(image.size(), QImage::Format_Grayscale8);
    const size_t width = size_t(image.width());
    // In 1/257 of a grey; one cell more on each side saves the questions at the edges.
    std::vector<int> errors(width + 2);
    std::vector<int> errorsBelow(width + 2);
    for (int y = 0; y < grey.height(); ++y) {
        const uchar *const row = image.constScanLine(y);
        uchar *const to = grey.scanLine(y);
        std::fill(errorsBelow.begin(), errorsBelow.end(), 0);
        for (size_t x = 0; x < width; ++x) {
            const QRgba64 pixel = deep ? reinterpret_cast<const QRgba64 *>(row)[x]
                                       : QRgba64::fromArgb32(reinterpret_cast<const QRgb *>(row)[x]);
            const int wanted = deepGrey(pixel) + errors[x + 1];
            const int value = qBound(0, (wanted + 128) / 257, 255);
            const int error = wanted - value * 257;
            to[x] = uchar(value);
            errors[x + 2] += error * 7 / 16;
            errorsBelow[x] += error * 3 / 16;
            errorsBelow[x + 1] += error * 5 / 16;
            errorsBelow[x + 2] += error / 16;
        }
        errors.swap(errorsBelow);
    }
    return grey;
}

}

Result<QByteArray> encodePbm(const Picture &picture, const EncodeOptions &options)
{
    const QImage mono = blackAndWhite(picture, options.diffuse);
    const QByteArray header = "P4\n" + sizeText(mono.size()) + '\n';
    return fileOf(header, mono.height(), (mono.width() + 7) / 8,
        [&](int y, uchar *to) { copyBits(mono, y, true, to); }); // 1 is black
}

Result<QByteArray> encodePgm(const Picture &picture, const EncodeOptions &options)
{
    const QImage grey = options.diffuse ? diffusedGrey(picture) : greyscale(picture);
    const QByteArray header = "P5\n" + sizeText(grey.size()) + "\n255\n";
    return fileOf(header, grey.height(), grey.width(),
        [&](int y, uchar *to) { std::memcpy(to, grey.constScanLine(y), size_t(grey.width())); });
}

Result<QByteArray> encodePpm(const Picture &picture, const EncodeOptions &)
{
    const QImage image = opaqueRgb(picture);
    const QByteArray header = "P6\n" + sizeText(image.size()) + "\n255\n";
    return fileOf(header, image.height(), qsizetype(image.width()) * 3,
        [&](int y, uchar *to) { toRgb(reinterpret_cast<const QRgb *>(image.constScanLine(y)), image.width(), to); });
}

Result<QByteArray> encodeWbmp(const Picture &picture, const EncodeOptions &options)
{
    const QImage mono = blackAndWhite(picture, options.diffuse);
    // Numbers in groups of seven bits, the highest group first and marked as long as more follow.
    const auto grouped = [](int number) {
        QByteArray groups(1, char(number & 0x7f));
        while (number >>= 7)
            groups.prepend(char(0x80 | (number & 0x7f)));
        return groups;
    };
    const QByteArray header = QByteArray(2, '\0') + grouped(mono.width()) + grouped(mono.height());
    return fileOf(
        header, mono.height(), (mono.width() + 7) / 8, [&](int y, uchar *to) { copyBits(mono, y, false, to); });
}

Result<QByteArray> encodeXbm(const Picture &picture, const EncodeOptions &options)
{
    const QImage mono = blackAndWhite(picture, options.diffuse).convertToFormat(QImage::Format_MonoLSB);
    QByteArray text = "#define picture_width " + QByteArray::number(mono.width()) + "\n#define picture_height "
        + QByteArray::number(mono.height()) + "\nstatic unsigned char picture_bits[] = {";
    const int rowBytes = (mono.width() + 7) / 8;
    const int over = mono.width() % 8;
    constexpr char digits[] = "0123456789abcdef";
    constexpr qint64 perLine = 12;
    qint64 count = 0;
    text.reserve(text.size() + qsizetype(rowBytes) * mono.height() * 6);
    for (int y = 0; y < mono.height(); ++y) {
        const uchar *const row = mono.constScanLine(y);
        for (int i = 0; i < rowBytes; ++i, ++count) {
            const int mask = over && i == rowBytes - 1 ? (1 << over) - 1 : 0xff;
            const int byte = ~row[i] & mask; // 1 is black
            text += count ? "," : "";
            text += count % perLine ? " " : "\n   ";
            text += "0x";
            text += digits[byte >> 4];
            text += digits[byte & 15];
        }
    }
    return text + "};\n";
}
