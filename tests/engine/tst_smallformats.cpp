#include "engine/codecs/bytes.h"
#include "engine/rasterfiles.h"
#include "support/support.h"

#include <QFile>
#include <QTest>

namespace {

Result<Picture> decodeAs(const char *extension, const QByteArray &bytes, const QByteArray &companion = {})
{
    return decode({bytes, QLatin1String(extension), companion});
}

QByteArray words(const QList<int> &values)
{
    QByteArray bytes;
    for (const int value : values)
        bytes += be16(value);
    return bytes;
}

QString rowOf(const QImage &image, int y)
{
    QString row;
    for (int x = 0; x < image.width(); ++x)
        row += QStringLiteral("%1 ").arg(image.pixel(x, y) & 0xffffff, 6, 16, QLatin1Char('0'));
    return row.trimmed();
}

}

/// Formats of a page of description each.
class tst_SmallFormats : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void gemRowsAreUnpacked();
    void gemColoursComeFromTheHeader_data();
    void gemColoursComeFromTheHeader();
    void gemImagesAreKnownByTheirContent();
    void mspRowsOfLengthZeroAreWhite();
    void cutTakesItsPaletteFromBeside_data();
    void cutTakesItsPaletteFromBeside();
    void cutColoursKeepOutOfBlockEnds();
    void pmpIsTurnedAndTellsCommentAndDate();
    void compuServeRunsAlternate();
    void bitmapsOfAllHeaders_data();
    void bitmapsOfAllHeaders();
    void sizesOfTheCoreHeaderHaveNoSign();
    void jpegOfTwelveBitsIsRefused();

private:
    TemporaryHome m_home;
};

void tst_SmallFormats::gemRowsAreUnpacked()
{
    // Literals, a row that counts twice, a run, a pattern of two bytes; 1 is black.
    const QByteArray rows("\x80\x03\x55\xaa\x40\x00\x00\xff\x02\x83\x00\x01\x12\x34\x01", 15);
    const Result<Picture> picture = decodeAs("img", gemImageOf({20, 4}, 1, {}, rows));
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->pixels.dotsPerMeterX(), 10000);
    QCOMPARE(picture->pixels.dotsPerMeterY(), 5000);
    const QList<QByteArray> expected{"55aa40", "ffffff", "ffffff", "123400"};
    for (int y = 0; y < 4; ++y) {
        const QImage &image = picture->pixels;
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(image.constScanLine(y)), 3).toHex(), expected[y]);
    }
    QCOMPARE(picture->pixels.pixel(0, 1), qRgb(0, 0, 0));
    const Result<Picture> cut = decodeAs("img", gemImageOf({20, 4}, 1, {}, rows.left(11)));
    QVERIFY(cut && cut->partial);
}

void tst_SmallFormats::gemColoursComeFromTheHeader_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("row");
    QTest::addColumn<int>("bits");
    const QSize four(4, 1);
    const QByteArray twoPlanes("\x80\x01\x50\x80\x01\x30", 6); // 0 1 2 3
    const auto add = [](const char *name, const QByteArray &file, const char *row, int bits) {
        QTest::newRow(name) << file << QString::fromLatin1(row) << bits;
    };
    const QByteArray ximg = "XIMG" + words({0, 0, 0, 0, 1000, 0, 0, 0, 500, 0, 1000, 1000, 1000});
    add("XIMG", gemImageOf(four, 2, ximg, twoPlanes), "000000 ff0000 007f00 ffffff", 2);
    add("STTT of three bits", gemImageOf(four, 2, "STTT" + words({4, 0x000, 0x700, 0x070, 0x777}), twoPlanes),
        "000000 ff0000 00ff00 ffffff", 2);
    add("STTT of four bits", gemImageOf(four, 2, "STTT" + words({4, 0x000, 0x800, 0x070, 0xfff}), twoPlanes),
        "000000 110000 00ee00 ffffff", 2);
    add("HyperPaint", gemImageOf(four, 2, words({0x80, 0x000, 0x007, 0x070, 0x777}), twoPlanes),
        "000000 0000ff 00ff00 ffffff", 2);
    add("greys", gemImageOf(four, 2, {}, twoPlanes), "ffffff aaaaaa 555555 000000", 2);
    const QByteArray fourPlanes("\x80\x01\x50\x80\x01\x30\x80\x01\x00\x80\x01\x00", 12);
    add("screen colours", gemImageOf(four, 4, {}, fourPlanes), "ffffff ff0000 00ff00 ffff00", 4);
    add("Ventura colour", gemImageOf(four, 4, words({0}), fourPlanes), "ffffff ff0000 00ff00 ffff00", 4);
    add("Ventura grey", gemImageOf(four, 4, words({1}), fourPlanes), "ffffff eeeeee dddddd cccccc", 4);
    const QByteArray eightPlanes = QByteArray("\x80\x01\x50", 3) + QByteArray("\x80\x01\x00", 3).repeated(7);
    add("eight planes", gemImageOf(four, 8, {}, eightPlanes), "ffffff 7f7f7f ffffff 7f7f7f", 8);
    add("Ventura true colour", gemImageOf({2, 1}, 3, words({3}), QByteArray("\x00\x08\x10\x20\x30", 5), 3),
        "102030 102030", 24);
    add("16 bits", gemImageOf({2, 1}, 16, {}, QByteArray("\x80\x04\xf8\x00\x07\xff\x0c", 7)), "ff0000 00ffff", 16);
    add("16 bits of TIMG",
        gemImageOf({2, 1}, 16, "TIMG" + words({3, 5, 5, 5}), QByteArray("\x80\x04\x7c\x00\x03\xff\x0c", 7)),
        "ff0000 00ffff", 16);
    add("15 bits", gemImageOf({2, 1}, 15, {}, QByteArray("\x80\x04\x7c\x00\x03\xff\x0c", 7)), "ff0000 00ffff", 15);
    add("24 bits", gemImageOf({2, 1}, 24, {}, QByteArray("\x80\x06\x01\x02\x03\x04\x05\x06\x12", 9)), "010203 040506",
        24);
    add("32 bits", gemImageOf({2, 1}, 32, {}, QByteArray("\x80\x08\x09\x01\x02\x03\x09\x04\x05\x06\x18", 11)),
        "010203 040506", 32);
}

void tst_SmallFormats::gemColoursComeFromTheHeader()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, row);
    QFETCH(int, bits);
    const Result<Picture> picture = decodeAs("img", file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(rowOf(picture->pixels, 0), row);
    QCOMPARE(picture->info.bitsPerPixel, bits);
}

void tst_SmallFormats::gemImagesAreKnownByTheirContent()
{
    const QByteArray file = gemImageOf({20, 4}, 1, {}, QByteArray(12, '\x83'));
    QCOMPARE(decodeAs("gem", file)->info.codec, QByteArray("GEM image"));
    QByteArray other = file;
    other[1] = 9;
    QVERIFY(!decodeAs("img", other));
}

void tst_SmallFormats::mspRowsOfLengthZeroAreWhite()
{
    const QByteArray file = "LinS" + le16(24) + le16(3) + QByteArray(24, '\0') + le16(3) + le16(0) + le16(4)
        + QByteArray("\x00\x03\x55\x03\x01\x02\x03", 7);
    const Result<Picture> picture = decodeAs("msp", file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    const QList<QByteArray> expected{"555555", "ffffff", "010203"};
    for (int y = 0; y < 3; ++y) {
        const uchar *const row = picture->pixels.constScanLine(y);
        QCOMPARE(QByteArray(reinterpret_cast<const char *>(row), 3).toHex(), expected[y]);
    }
    QCOMPARE(picture->pixels.color(1), qRgb(255, 255, 255));
}

void tst_SmallFormats::cutTakesItsPaletteFromBeside_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRgb>("second");
    const QRgb fromPalette = qRgb(1 * 255 / 63, 62 * 255 / 63, 0);
    for (const char *name : {"a.pal", "a.PAL", "a.Pal"})
        QTest::newRow(name) << QString::fromLatin1(name) << fromPalette;
    QTest::newRow("of another picture") << QStringLiteral("b.pal") << qRgb(1, 1, 1);
    QTest::newRow("none") << QString() << qRgb(1, 1, 1);
}

void tst_SmallFormats::cutTakesItsPaletteFromBeside()
{
    QFETCH(QString, name);
    QFETCH(QRgb, second);
    const QString folder = QStringLiteral("cut-%1/").arg(QLatin1String(QTest::currentDataTag()));
    const QString path = m_home.write(folder + QStringLiteral("a.CUT"), cutOf({9, 4}));
    if (!name.isEmpty())
        m_home.write(folder + name, cutPalette(8));
    const Result<Picture> picture = decodeFile(path);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.bitsPerPixel, 8);
    // Each row begins with its number and goes on with the next.
    QCOMPARE(picture->pixels.pixel(0, 1), second);
    QCOMPARE(picture->pixels.pixel(8, 0), second);
}

void tst_SmallFormats::cutColoursKeepOutOfBlockEnds()
{
    // A value beyond the palette's 100 colours is black.
    QByteArray file = le16(3) + le16(1) + le16(0) + le16(5) + QByteArray("\x03\x4e\x4f\xf0", 4) + '\0';
    const Result<Picture> picture = decodeAs("cut", file, cutPalette(100));
    QVERIFY2(picture, qPrintable(picture.reason()));
    const auto colour = [](int index) { return qRgb(index * 255 / 63, (63 - index) * 255 / 63, 0); };
    QCOMPARE(picture->pixels.pixel(0, 0), colour(0x4e % 64)); // the last of the first block
    QCOMPARE(picture->pixels.pixel(1, 0), colour(0x4f % 64));
    QCOMPARE(picture->pixels.pixel(2, 0), qRgb(0, 0, 0));
    QVERIFY(decodeAs("cut", file, "no palette"));
}

void tst_SmallFormats::pmpIsTurnedAndTellsCommentAndDate()
{
    QImage image(32, 16, QImage::Format_RGB32);
    image.fill(Qt::white);
    for (int y = 0; y < 16; ++y)
        std::fill_n(reinterpret_cast<QRgb *>(image.scanLine(y)), 16, qRgb(0, 0, 0));
    const QByteArray jpeg = written(image, "jpg", 95);
    // Where the dark left half is after no turn, one to the left, a half one, one to the right.
    const QList<std::pair<QSize, QPoint>> turns{
        {{32, 16}, {2, 8}}, {{16, 32}, {8, 29}}, {{32, 16}, {29, 8}}, {{16, 32}, {8, 2}}};
    for (int turn = 0; turn < 4; ++turn) {
        const Result<Picture> picture = decodeAs("pmp", pmpOf(jpeg, turn, "on the beach"));
        QVERIFY2(picture, qPrintable(picture.reason()));
        QCOMPARE(picture->info.size, turns[turn].first);
        QCOMPARE(picture->pixels.size(), turns[turn].first);
        QVERIFY(qGray(picture->pixels.pixel(turns[turn].second)) < 40);
        QCOMPARE(picture->metadata.comment, QByteArray("on the beach"));
        QVERIFY(picture->metadata.exif.contains("1998:09:01 20:19:57"));
    }
}

void tst_SmallFormats::compuServeRunsAlternate()
{
    // Two of the ground, three of the colour, a line end that a terminal put in, the rest of the row the ground.
    const QByteArray file = "\x1bGM" + QByteArray("\x22\x23\r\n\x7b\x20\x7f", 7) + "\x1b";
    const Result<Picture> picture = decodeAs("rle", file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(picture->partial);
    QCOMPARE(picture->info.size, QSize(128, 96));
    for (int x = 0; x < 96; ++x)
        QCOMPARE(picture->pixels.pixelIndex(x, 0), x >= 2 && x < 5 ? 1 : 0);
}

void tst_SmallFormats::bitmapsOfAllHeaders_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("bits");
    QTest::addColumn<bool>("topDown");
    for (const int header : {12, 16, 40, 52, 56, 64, 108, 124}) {
        for (const int bits : {2, 4, 24}) {
            for (const bool whole : {false, true}) {
                const bool topDown = header == 40 && whole;
                QTest::addRow("%d bytes, %d bits, %s", header, bits, whole ? "BMP" : "DIB")
                    << bitmapOf(header, bits, whole, topDown) << bits << topDown;
            }
        }
    }
}

void tst_SmallFormats::bitmapsOfAllHeaders()
{
    QFETCH(QByteArray, file);
    QFETCH(int, bits);
    QFETCH(bool, topDown);
    const Result<Picture> picture = decodeAs("dib", file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.size, QSize(4, 3));
    QCOMPARE(picture->info.bitsPerPixel, bits);
    const QString plain = QStringLiteral("000000 3c140a 782814 b43c1e");
    QCOMPARE(rowOf(picture->pixels, topDown ? 0 : 2), plain);
    QCOMPARE(
        rowOf(picture->pixels, topDown ? 2 : 0), bits == 24 ? plain : QStringLiteral("b43c1e b43c1e b43c1e b43c1e"));
    QCOMPARE(probe({file, QStringLiteral("dib")})->bitsPerPixel, bits);
}

void tst_SmallFormats::sizesOfTheCoreHeaderHaveNoSign()
{
    QByteArray file = bitmapOf(12, 4, true);
    file.replace(20, 2, le16(40000));
    const Result<Picture> picture = decodeAs("bmp", file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(picture->partial);
    QCOMPARE(picture->pixels.size(), QSize(4, 40000));
    QCOMPARE(rowOf(picture->pixels, 39999), QStringLiteral("000000 3c140a 782814 b43c1e"));
}

void tst_SmallFormats::jpegOfTwelveBitsIsRefused()
{
    QByteArray jpeg = written(rampImage({20, 10}), "jpg");
    const qsizetype frame = jpeg.indexOf(QByteArray("\xff\xc0", 2));
    QVERIFY(frame > 0);
    jpeg[frame + 4] = 12;
    const Result<Picture> picture = decodeAs("jpg", jpeg);
    QVERIFY(!picture && picture.reason().contains(QLatin1String("12")));
    QVERIFY(!probe({jpeg, QStringLiteral("jpg")}));
}

QTEST_GUILESS_MAIN(tst_SmallFormats)
#include "tst_smallformats.moc"
