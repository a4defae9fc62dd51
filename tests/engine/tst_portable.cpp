#include "engine/encode.h"
#include "engine/ownfiles.h"
#include "engine/rasterfiles.h"
#include "support/support.h"

#include <QBuffer>
#include <QImageWriter>
#include <QTest>

/// Variants of wide-spread simple formats that programs are known to read in different ways.
class tst_Portable : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyVariantIsRead_data();
    void everyVariantIsRead();
    void foreignHeadersAreRefused_data();
    void foreignHeadersAreRefused();
    void anIconOfTwoSizesIsRefused();
    void cutFilesShowTheirFirstRows_data();
    void cutFilesShowTheirFirstRows();
    void progressiveScansInFrontOfDamageAreShown();

private:
    TemporaryHome m_home;
};

static QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

/// One row of a bitmap with masks; a header of 56 bytes has four of them in itself.
static QByteArray maskedBitmap(int width, int bits, const QList<int> &masks, const QByteArray &row)
{
    const int header = masks.size() == 4 ? 56 : 40;
    QByteArray file = "BM" + le32(0) + le32(0) + le32(14 + 40 + 4 * int(masks.size())) + le32(header) + le32(width)
        + le32(1) + le16(1) + le16(bits) + le32(masks.isEmpty() ? 0 : 3) + QByteArray(20, '\0');
    for (const int mask : masks)
        file += le32(mask);
    return file + row.leftJustified((row.size() + 3) / 4 * 4, '\0');
}

/// A bitmap whose pixels are packed, or a whole file, with a header of this length.
static QByteArray packedBitmap(int header, int packing, int bits, QSize size, const QByteArray &data)
{
    return "BM" + le32(0) + le32(0) + le32(14 + header) + le32(header) + le32(size.width()) + le32(size.height())
        + le16(1) + le16(bits) + le32(packing) + QByteArray(header - 20, '\0') + data;
}

/// The same bitmap as the first of an array, whose places count from the start of the file.
static QByteArray bitmapArray(QByteArray bitmap)
{
    bitmap[10] = char(bitmap[10] + 14);
    return "BA" + le32(40) + QByteArray(8, '\0') + bitmap;
}

/// Two pixels of which the second one is masked out.
static QByteArray icon(int bits, const QByteArray &row)
{
    const QByteArray picture = le32(40) + le32(2) + le32(2) + le16(1) + le16(bits) + QByteArray(24, '\0')
        + row.leftJustified((row.size() + 3) / 4 * 4, '\0') + hex("40000000");
    return le16(0) + le16(1) + le16(1) + hex("02010000") + le16(1) + le16(bits) + le32(int(picture.size())) + le32(22)
        + picture;
}

/// An SGI picture of samples of one or two bytes.
static QByteArray sgi(QSize size, int bytes, int channels, bool packed, const QByteArray &behind)
{
    const QByteArray head = hex("01da") + char(packed) + char(bytes) + be16(3) + be16(size.width())
        + be16(size.height()) + be16(channels) + be32(0) + be32(255);
    return head.leftJustified(512, '\0') + behind;
}

/// A JPEG 2000 without the box that says what its fourth component is.
static QByteArray unmarkedJpeg2000()
{
    Picture picture;
    picture.pixels = QImage(2, 1, QImage::Format_ARGB32);
    picture.pixels.setPixel(0, 0, qRgb(255, 0, 0));
    picture.pixels.setPixel(1, 0, qRgba(0, 255, 0, 0x40));
    picture.info = {picture.pixels.size(), 32, 1, "test"};
    const Result<QByteArray> file = encode(picture, TypeCode::Jpeg2000);
    return file ? QByteArray(*file).replace("cdef", "free") : file.reason().toUtf8();
}

/// A GIF of one pixel whose four colours are the frame's own.
static QByteArray gifOfLocalColors()
{
    return "GIF89a" + hex("0100 0100 00 00 00 2c 0000 0000 0100 0100 81 000000 102030 405060 708090 02 02 4c01 00 3b");
}

/// One pixel whose last sample is alpha.
static QByteArray tiffPixel(int photometric, int bits, int alphaKind, const QByteArray &samples)
{
    const int count = int(samples.size()) * 8 / bits;
    QByteArray file = "II" + le16(42) + le32(8) + le16(10);
    const auto tag = [&](int number, int kind, int values, int value) {
        file +=
            le16(number) + le16(kind) + le32(values) + (kind == 3 && values == 1 ? le16(value) + le16(0) : le32(value));
    };
    constexpr int behind = 8 + 2 + 10 * 12 + 4;
    tag(256, 3, 1, 1);
    tag(257, 3, 1, 1);
    tag(258, 3, count, count > 2 ? behind : bits | bits << 16);
    tag(259, 3, 1, 1);
    tag(262, 3, 1, photometric);
    tag(273, 4, 1, behind + 2 * count);
    tag(277, 3, 1, count);
    tag(278, 3, 1, 1);
    tag(279, 4, 1, int(samples.size()));
    tag(338, 3, 1, alphaKind);
    file += le32(0);
    for (int i = 0; i < count; ++i)
        file += le16(bits);
    return file + samples;
}

/// Four pixels of one byte.
static QByteArray pcx(const QByteArray &pixels)
{
    const QByteArray head =
        hex("0a050108") + le16(0) + le16(0) + le16(3) + le16(0) + QByteArray(53, '\0') + hex("01") + le16(4) + le16(2);
    return head + QByteArray(128 - head.size(), '\0') + pixels;
}

/// The same of any shape; two bytes a row and plane.
static QByteArray pcxOf(QSize size, int version, int bits, int planes, const QByteArray &pixels)
{
    const QByteArray head = hex("0a") + char(version) + char(1) + char(bits) + le16(0) + le16(0)
        + le16(size.width() - 1) + le16(size.height() - 1) + QByteArray(53, '\0') + char(planes) + le16(2);
    return head.leftJustified(128, '\0') + pixels;
}

/// Two pixels of 32 bits in two rows, the lowest byte first in all numbers.
static QByteArray smallEndianXwd(const QByteArray &pixels)
{
    QByteArray file;
    for (const int number :
        {100, 7, 2, 24, 1, 2, 0, 0, 32, 0, 32, 32, 4, 4, 0xff0000, 0xff00, 0xff, 8, 0, 0, 1, 2, 0, 0, 0})
        file += le32(number);
    return file + pixels;
}

/// Four pixels of one byte, the highest byte first in all numbers.
static QByteArray xwd(int depth, int visual, int colors, const QByteArray &behind)
{
    QByteArray file;
    for (const int number :
        {108, 7, 2, depth, 4, 1, 0, 1, 8, 1, 32, 8, 4, visual, 0, 0, 0, 8, colors, colors, 4, 1, 0, 0, 0})
        file += hex("0000") + char(number >> 8) + char(number & 0xff);
    return file + QByteArray(8, '\0') + behind;
}

void tst_Portable::everyVariantIsRead_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("bits");
    QTest::addColumn<QByteArray>("colors");
    const auto row = [](const char *name, const char *extension, const QByteArray &file, int bits, const char *colors) {
        QTest::newRow(name) << QString::fromLatin1(extension) << file << bits << QByteArray(colors);
    };
    row("PBM without blanks", "pbm", "P1 #c 9\n3 1\n101", 1, "000000 ffffff 000000");
    row("PBM of bytes", "pbm", "P4\n3 1\n" + hex("40"), 1, "ffffff 000000 ffffff");
    row("PGM up to 1", "pgm", "P5 2 1 1\n" + hex("0001"), 8, "000000 ffffff");
    row("PGM up to 1000", "pgm", "P5 3 1 1000\n" + hex("0000 01f4 03e8"), 8, "000000 808080 ffffff");
    row("PGM over its largest", "pgm", "P2 2 1 10 5 20", 8, "808080 ffffff");
    row("PGM whose first pixel looks blank", "pgm", "P5 2 1 255\n  ", 8, "202020 202020");
    row("PPM up to 1", "ppm", "P6\r1 1\r1\r" + hex("010001"), 24, "ff00ff");
    row("cut PPM", "ppm", "P6 1 2 255\n" + hex("01020304"), 24, "partial: 010203 ffffff");
    const auto pam = [](int depth, int largest, const QByteArray &pixels) {
        return QByteArray("P7\n# c\nHEIGHT 1\nWIDTH 2\nDEPTH %1\nMAXVAL %2\nTUPLTYPE X\nENDHDR\n")
                   .replace("%1", QByteArray::number(depth))
                   .replace("%2", QByteArray::number(largest))
            + pixels;
    };
    row("PAM of two colours", "pam", pam(1, 1, hex("0100")), 1, "ffffff 000000");
    row("PAM of two colours and clear", "pam", pam(2, 1, hex("01000101")), 2, "00ffffff ffffff");
    row("PAM with alpha", "pam", pam(4, 255, hex("0102038004050607")), 32, "80010203 07040506");
    row("deep PAM", "pam", pam(3, 65535, hex("010102020303 ffff0000ffff")), 48, "010203 ff00ff");
    row("PCX of greys without a palette", "pcx", pcx(hex("0040c1ffc180")), 8, "000000 404040 ffffff 808080");
    row("XWD of greys", "xwd", xwd(8, 0, 0, hex("0040ff80")), 8, "000000 404040 ffffff 808080");
    row("XWD of 16 greys", "xwd", xwd(4, 0, 0, hex("00010f08")), 8, "000000 111111 ffffff 888888");
    row("XWD of greys in an order of their own", "xwd",
        xwd(8, 1, 2, hex("00000000 ffffffffffff0700 00000001 333333333333 0700 01000100")), 8,
        "333333 ffffff 333333 ffffff");
    row("XBM", "xbm", "#define a_width 9\n#define a_height 1\nstatic char a_bits[] = {0x02, 1};", 1,
        "ffffff 000000 ffffff ffffff ffffff ffffff ffffff ffffff 000000");
    row("XBM of X10", "xbm", "#define a_width 9\n#define a_height 1\nstatic short a_bits[] = {0x0102};", 1,
        "ffffff 000000 ffffff ffffff ffffff ffffff ffffff ffffff 000000");
    row("BMP of 15 bits", "bmp", maskedBitmap(2, 16, {}, hex("ff7f1f00")), 16, "ffffff 0000ff");
    row("BMP of 16 bits", "bmp", maskedBitmap(2, 16, {0xf800, 0x7e0, 0x1f}, hex("ffff1008")), 16, "ffffff 080084");
    row("BMP of 8 bits in 16", "bmp", maskedBitmap(2, 16, {0xe0, 0x1c, 3}, hex("ff004100")), 16, "ffffff 490055");
    row("BMP with a bit of alpha", "bmp", maskedBitmap(2, 16, {0x7c00, 0x3e0, 0x1f, 0x8000}, hex("00fc007c")), 16,
        "ff0000 00ff0000");
    row("BMP of 30 bits", "bmp", maskedBitmap(1, 32, {0x3ff00000, 0xffc00, 0x3ff}, hex("0030f03f")), 32, "ff0300");
    row("icon of 16 bits", "ico", icon(16, hex("1f00ff7f")), 16, "0000ff 00000000");
    row("icon of 24 bits", "ico", icon(24, hex("102030405060")), 24, "302010 00000000");
    row("icon of 2 bits", "ico", icon(2, hex("10203000000000000000000000000000 00")), 2, "302010 00000000");
    row("icon cut in its mask", "ico", icon(24, hex("102030405060")).chopped(4), 24, "partial: 302010 605040");
    row("icon with little alpha", "ico", icon(32, hex("3020100830201080")), 32, "08102030 80102030");
    row("icon without alpha", "ico", icon(32, hex("3020100030201000")), 32, "102030 00000000");
    row("array of bitmaps", "bmp", bitmapArray(maskedBitmap(2, 16, {}, hex("ff7f1f00"))), 16, "ffffff 0000ff");
    row("BMP of runs of 24 bits", "bmp",
        packedBitmap(64, 4, 24, {3, 2}, hex("03102030 0000 0003 010203040506070809 00 0001")), 24,
        "030201 060504 090807 302010 302010 302010");
    row("BMP with a PNG inside", "bmp", packedBitmap(40, 5, 0, {2, 1}, written(rampImage({2, 1}), "png")), 24,
        colorsOf(decode({written(rampImage({2, 1}), "png"), {}})));
    row("GIF of its frame's colours", "gif", gifOfLocalColors(), 2, "102030");
    row("JPEG 2000 whose opacity is not marked", "jp2", unmarkedJpeg2000(), 32, "ff0000 4000ff00");
    row("SGI of grey with alpha", "rgb", sgi({2, 1}, 1, 2, false, hex("4080 ff80")), 16, "404040 80808080");
    row("SGI of 16 bits", "rgb", sgi({2, 1}, 2, 1, false, hex("4040 ffff")), 16, "404040 ffffff");
    row("SGI of runs", "rgb",
        sgi({3, 1}, 1, 3, true,
            be32(536) + be32(539) + be32(544) + be32(3) + be32(5) + be32(3) + hex("034000 8301020300 030500")),
        24, "400105 400205 400305");
    row("cut SGI", "rgb", sgi({2, 2}, 1, 1, false, hex("0102")), 8, "partial: ffffff ffffff 010101 020202");
    row("cut SGI with alpha", "rgb", sgi({2, 1}, 1, 4, false, hex("0102 0304 05")), 32, "partial: 010305 020400");
    row("cut PCX", "pcx", pcxOf({2, 2}, 5, 8, 3, hex("010203040506 10")), 24, "partial: 010305 020406 10ffff ffffff");
    row("PCX with a cut palette", "pcx", pcxOf({2, 1}, 5, 8, 1, hex("0001 0c102030")), 8, "partial: 102030 010101");
    row("PCX of 16 colours and no palette", "pcx", pcxOf({4, 1}, 3, 1, 4, hex("3000500050003000")), 4,
        "000000 aa5500 5555ff ffffff");
    row("XWD of the other byte order", "xwd", smallEndianXwd(hex("30201000 60504000")), 32, "102030 405060");
    row("cut XWD", "xwd", smallEndianXwd(hex("30201000 6050")), 32, "partial: 102030 ff5060");
    row("MBM cut in front of its table", "mbm", mbmOf({{{4, 1}, 8, 0, 0, hex("004080ff")}}).chopped(8), 8,
        "000000 404040 808080 ffffff");
    row("cut ART", "art", hex("0000 0400 0000 0200 a000 ff"), 1,
        "partial: ffffff 000000 ffffff 000000 ffffff ffffff ffffff ffffff");
    row("cut WBMP", "wbmp", hex("0000 0402 50"), 1, "partial: 000000 ffffff 000000 ffffff ffffff ffffff ffffff ffffff");
    row("TIFF of inks with alpha", "tif", tiffPixel(5, 8, 2, hex("00ff000080")), 40, "80ff00ff");
    row("TIFF of deep inks with alpha", "tif", tiffPixel(5, 16, 2, hex("0000ffff000000000080")), 80, "80ff00ff");
    row("TIFF of Lab", "tif", tiffPixel(8, 8, 2, hex("ff000080")), 32, "80ffffff");
    row("TIFF of the Lab of profiles", "tif", tiffPixel(9, 8, 2, hex("ff808080")), 32, "80ffffff");
    row("TIFF of grey with alpha", "tif", tiffPixel(1, 8, 2, hex("4080")), 16, "80404040");
    row("TIFF of deep colours times alpha", "tif", tiffPixel(2, 16, 1, hex("00400020ffff0080")), 64, "808040ff");
}

void tst_Portable::everyVariantIsRead()
{
    QFETCH(QString, extension);
    QFETCH(QByteArray, file);
    QFETCH(int, bits);
    const Result<Picture> picture = decode({file, extension});
    QTEST(colorsOf(picture), "colors");
    QCOMPARE(picture->info.bitsPerPixel, bits);
    const Result<ImageInfo> info = probe({file, extension});
    QVERIFY2(info, qPrintable(info.reason()));
    QCOMPARE(info->bitsPerPixel, bits);
    QCOMPARE(info->size, picture->pixels.size());
}

void tst_Portable::foreignHeadersAreRefused_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("words for numbers") << QByteArray("P6 wide 10 255\n") + QByteArray(300, '\1');
    QTest::newRow("nothing between 0 and 0") << QByteArray("P5 2 2 0\nabcd");
    QTest::newRow("largest of three bytes") << QByteArray("P5 2 2 65536\nabcdefgh");
    QTest::newRow("less than a row") << QByteArray("P5 60000 30000 255\nabc");
    QTest::newRow("a header without end") << QByteArray("P7\nWIDTH 2\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE X");
    QTest::newRow("negative sides") << QByteArray("P7\nWIDTH -2\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\nabc");
    QTest::newRow("five channels") << QByteArray("P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\nENDHDR\nabcde");
}

void tst_Portable::foreignHeadersAreRefused()
{
    QFETCH(QByteArray, file);
    QVERIFY(!decode({file, QStringLiteral("pnm")}));
}

void tst_Portable::anIconOfTwoSizesIsRefused()
{
    QByteArray file = icon(32, QByteArray(8, '\1')) + QByteArray(2000, '\0');
    file[6] = 16; // the width that the directory tells
    file[38] = 1; // packed, so that the toolkit's reader has to try
    QVERIFY(!decode({file, QStringLiteral("ico")}));
}

void tst_Portable::cutFilesShowTheirFirstRows_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QSize>("size");
    // A row of 72 bytes of black, then a stretch that is cut.
    QTest::newRow("MacPaint") << QStringLiteral("mac") << QByteArray(512, '\0') + hex("b9ff 05ffff") << QSize(576, 720);
    // The lowest row comes first; two runs of red, of which the second row's is cut in its operand.
    QTest::newRow("Utah") << QStringLiteral("rle")
                          << hex("52cc 0000 0000 0400 0200 01 01 08 00 00 00 0200 0603ff00 0101 06") << QSize(4, 2);
}

void tst_Portable::cutFilesShowTheirFirstRows()
{
    QFETCH(QString, extension);
    QFETCH(QByteArray, file);
    const Result<Picture> picture = decode({file, extension});
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(picture->partial);
    QTEST(picture->pixels.size(), "size");
}

void tst_Portable::progressiveScansInFrontOfDamageAreShown()
{
    QByteArray file;
    QBuffer buffer(&file);
    QImageWriter writer(&buffer, "jpg");
    writer.setProgressiveScanWrite(true);
    QVERIFY(writer.write(rampImage({64, 64})));
    const Result<Picture> whole = decode({file, {}});
    const qsizetype table = file.lastIndexOf(hex("ffc4"));
    QVERIFY(table > file.indexOf(hex("ffda")));
    const Result<Picture> picture = decode({file.left(table + 6), {}});
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(picture->partial);
    QVERIFY(qAbs(qRed(picture->pixels.pixel(60, 60)) - qRed(whole->pixels.pixel(60, 60))) < 32);
}

QTEST_GUILESS_MAIN(tst_Portable)
#include "tst_portable.moc"
