#include "engine/enginefiles.h"

#include "engine/ownfiles.h"
#include "engine/rasterfiles.h"
#include "support/support.h"

#include <QBuffer>
#include <QImageWriter>
#include <QtEndian>

namespace {

template <class Number> QByteArray number(Number value, bool bigEndian)
{
    QByteArray bytes(sizeof value, '\0');
    if (bigEndian)
        qToBigEndian(value, bytes.data());
    else
        qToLittleEndian(value, bytes.data());
    return bytes;
}

quint32 crc(const QByteArray &bytes)
{
    quint32 sum = 0xffffffff;
    for (const char byte : bytes) {
        sum ^= uchar(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = sum & 1 ? sum >> 1 ^ 0xedb88320 : sum >> 1;
    }
    return ~sum;
}

QByteArray bitmapWithoutFileHeader(const QImage &image)
{
    return written(image, "bmp").mid(14);
}

/// Runs, a skip over three pixels, literals, end of line and of picture.
QByteArray runLengthBmp()
{
    const QByteArray runs("\x04\x01\x00\x00\x00\x02\x03\x00\x01\x02\x00\x00\x00\x04\x01\x02\x01\x00\x00\x01", 20);
    QByteArray table(8 * 4, '\0');
    for (int i = 0; i < table.size(); ++i)
        table[i] = char(i % 4 == 3 ? 0 : 30 * i);
    const QByteArray header = le32(40) + le32(4) + le32(3) + le16(1) + le16(8) + le32(1) + le32(runs.size()) + le32(0)
        + le32(0) + le32(8) + le32(0);
    const qsizetype offset = 14 + header.size() + table.size();
    return "BM" + le32(offset + runs.size()) + le32(0) + le32(offset) + header + table + runs;
}

QByteArray pcxOf(QSize size)
{
    QByteArray header(128, '\0');
    header.replace(0, 12,
        QByteArray("\x0a\x05\x01\x08", 4) + le16(0) + le16(0) + le16(size.width() - 1) + le16(size.height() - 1));
    header[65] = 3;
    header.replace(66, 2, le16(size.width()));
    QByteArray rows;
    for (int i = 0; i < size.height() * 3; ++i)
        rows += QByteArray(1, char(0xc0 | size.width())) + QByteArray(1, char(i * 20));
    return header + rows;
}

QByteArray sgiOf(QSize size)
{
    QByteArray header(512, '\0');
    header.replace(
        0, 12, be16(0x01da) + QByteArray("\0\1", 2) + be16(3) + be16(size.width()) + be16(size.height()) + be16(3));
    return header + QByteArray(size.width() * size.height() * 3, '\x55');
}

QByteArray xwdOf(QSize size)
{
    QByteArray header;
    const int stride = size.width() * 4;
    const int fields[] = {100 + 4, 7, 2, 24, size.width(), size.height(), 0, 1, 32, 1, 32, 32, stride, 4, 0xff0000,
        0xff00, 0xff, 8, 0, 0, size.width(), size.height(), 0, 0, 0};
    for (const int field : fields)
        header += number(quint32(field), true);
    return header + QByteArray(4, '\0') + QByteArray(stride * size.height(), '\x33');
}

}

QByteArray written(const QImage &image, const char *format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    if (!writer.write(image))
        qFatal("Qt writes no %s", format);
    return bytes;
}

QByteArray orientationDirectory(int orientation, bool bigEndian)
{
    const QByteArray order = bigEndian ? QByteArrayLiteral("MM") : QByteArrayLiteral("II");
    return order + number(quint16(42), bigEndian) + number(quint32(8), bigEndian) + number(quint16(1), bigEndian)
        + number(quint16(274), bigEndian) + number(quint16(3), bigEndian) + number(quint32(1), bigEndian)
        + number(quint16(orientation), bigEndian) + QByteArray(6, '\0');
}

QByteArray withOrientation(const QByteArray &jpeg, int orientation, bool bigEndian)
{
    const QByteArray payload = QByteArray("Exif\0\0", 6) + orientationDirectory(orientation, bigEndian);
    return jpeg.left(2) + QByteArray("\xff\xe1", 2) + be16(int(payload.size()) + 2) + payload + jpeg.mid(2);
}

QByteArray pngWithOrientation(const QByteArray &png, int orientation)
{
    const QByteArray body = "eXIf" + orientationDirectory(orientation, true);
    const QByteArray chunk = number(quint32(body.size() - 4), true) + body + number(crc(body), true);
    constexpr qsizetype behindHeader = 33;
    return png.left(behindHeader) + chunk + png.mid(behindHeader);
}

QByteArray tiffOf(const QImage &image, int orientation)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB888);
    QByteArray pixels;
    for (int y = 0; y < rgb.height(); ++y)
        pixels.append(reinterpret_cast<const char *>(rgb.constScanLine(y)), rgb.width() * 3);
    const qsizetype bitsAt = 8 + pixels.size();
    const auto entry = [](int tag, int type, int count, qsizetype value) {
        return le16(tag) + le16(type) + le32(count) + le32(value);
    };
    QByteArray directory = le16(10) + entry(256, 3, 1, rgb.width()) + entry(257, 3, 1, rgb.height())
        + entry(258, 3, 3, bitsAt) + entry(259, 3, 1, 1) + entry(262, 3, 1, 2) + entry(273, 4, 1, 8)
        + entry(274, 3, 1, orientation) + entry(277, 3, 1, 3) + entry(278, 3, 1, rgb.height())
        + entry(279, 4, 1, pixels.size()) + le32(0);
    const QByteArray padding(bitsAt % 2, '\0');
    const QByteArray bits = le16(8) + le16(8) + le16(8);
    return "II" + le16(42) + le32(bitsAt + bits.size() + padding.size()) + pixels + bits + padding + directory;
}

QByteArray gifOf(int frames)
{
    QByteArray gif = "GIF89a" + le16(4) + le16(3) + QByteArray("\x80\0\0\xff\0\0\0\0\xff", 9);
    // Six times clear and twice index 1, so that all codes have three bits.
    const QByteArray frame = QByteArray("\x2c\0\0\0\0", 5) + le16(4) + le16(3)
        + QByteArray("\0\x02\x08\x4c\x98\x30\x61\xc2\x84\x49\x01\0", 12);
    for (int i = 0; i < frames; ++i)
        gif += frame;
    return gif + ';';
}

QByteArray iconOf(const QList<QSize> &sizes)
{
    QByteArray directory = le16(0) + le16(1) + le16(int(sizes.size()));
    QByteArray pictures;
    for (const QSize size : sizes) {
        const QByteArray header =
            le32(40) + le32(size.width()) + le32(2 * size.height()) + le16(1) + le16(32) + QByteArray(24, '\0');
        const QByteArray mask((size.width() + 31) / 32 * 4 * size.height(), '\0');
        const QByteArray picture = header + QByteArray(size.width() * size.height() * 4, '\x80') + mask;
        directory += QByteArray(1, char(size.width())) + QByteArray(1, char(size.height())) + QByteArray(2, '\0')
            + le16(1) + le16(32) + le32(picture.size()) + le32(6 + 16 * sizes.size() + pictures.size());
        pictures += picture;
    }
    return directory + pictures;
}

QList<SmallFile> smallFiles()
{
    const QImage colors = rampImage({9, 7});
    const QImage indexed = colors.convertToFormat(QImage::Format_Indexed8);
    const QImage mono = colors.convertToFormat(QImage::Format_Mono);
    const QImage alpha = rampImage({9, 7}, QImage::Format_ARGB32);
    const QByteArray plain = written(colors, "jpg", 80);
    const QList<SmallFile> files{
        {"JPEG", QStringLiteral("jpg"), plain},
        {"JPEG with EXIF", QStringLiteral("jpg"), withOrientation(plain, 6, true)},
        {"PNG", QStringLiteral("png"), written(colors, "png")},
        {"PNG palette", QStringLiteral("png"), written(indexed, "png")},
        {"PNG 1 bit", QStringLiteral("png"), written(mono, "png")},
        {"PNG alpha", QStringLiteral("png"), written(alpha, "png")},
        {"PNG with eXIf", QStringLiteral("png"), pngWithOrientation(written(colors, "png"), 8)},
        {"BMP", QStringLiteral("bmp"), written(colors, "bmp")},
        {"BMP 8 bit", QStringLiteral("bmp"), written(indexed, "bmp")},
        {"BMP run lengths", QStringLiteral("rle"), runLengthBmp()},
        {"DIB without header", QStringLiteral("dib"), bitmapWithoutFileHeader(colors)},
        {"GIF", QStringLiteral("gif"), gifOf(2)},
        {"ICO", QStringLiteral("ico"), iconOf({{8, 8}})},
        {"XBM", QStringLiteral("xbm"), written(mono, "xbm")},
        {"XPM", QStringLiteral("xpm"), written(mono, "xpm")},
        {"CompuServe RLE", QStringLiteral("rle"), "\x1bGM" + QByteArray(200, '\x60')},
        {"TIFF", QStringLiteral("tif"), tiffOf(colors)},
        {"PCX", QStringLiteral("pcx"), pcxOf({10, 4})},
        {"SGI", QStringLiteral("rgb"), sgiOf({5, 4})},
        {"XWD", QStringLiteral("xwd"), xwdOf({5, 4})},
        {"WBMP", QStringLiteral("wbmp"), QByteArray("\0\0\x09\x03\x55\x80\xaa\x80\x55\x80", 10)},
        {"PBM text", QStringLiteral("pbm"), QByteArray("P1\n# note\n4 3\n0101\n1010\n0101\n")},
        {"PGM", QStringLiteral("pgm"), QByteArray("P5 4 3 255\n") + QByteArray(12, '\x40')},
        {"PPM", QStringLiteral("ppm"), QByteArray("P6 4 3 255\n") + QByteArray(36, '\x70')},
        {"ART", QStringLiteral("art"), QByteArray("\0\0\x10\0\0\0\x02\0\xaa\x55\x0f\xf0", 12)},
    };
    return files + rasterFiles() + ownFiles();
}
