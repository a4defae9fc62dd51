#include "engine/encode.h"
#include "engine/limits.h"
#include "engine/ownfiles.h"
#include "support/support.h"

#include <QTest>

/// Multi-bitmap files: what each depth and coding means, and that what is written comes back.
class tst_Mbm : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyDepthAndCodingIsRead_data();
    void everyDepthAndCodingIsRead();
    void everyBitmapIsAPage();
    void damageIsToldApartFromWholeFiles();
    void whatIsWrittenComesBack_data();
    void whatIsWrittenComesBack();
};

static QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

static EncodedFile fileOf(const MbmBitmap &bitmap, bool rom = false)
{
    return {mbmOf({bitmap}, rom), {}};
}

void tst_Mbm::everyDepthAndCodingIsRead_data()
{
    QTest::addColumn<MbmBitmap>("bitmap");
    QTest::addColumn<QByteArray>("colors");
    const auto row = [](const char *name, const MbmBitmap &bitmap, const char *colors) {
        QTest::newRow(name) << bitmap << QByteArray(colors);
    };
    row("1 bit", {{3, 2}, 1, 0, 0, hex("fdffffff02000000")}, "ffffff 000000 ffffff 000000 ffffff 000000");
    row("2 bits", {{3, 1}, 2, 0, 0, hex("34ffffff")}, "000000 555555 ffffff");
    row("4 bits grey", {{3, 1}, 4, 0, 0, hex("f1f8ffff")}, "111111 ffffff 888888");
    row("4 bits colour", {{3, 1}, 4, 1, 0, hex("f1f8ffff")}, "555555 ffffff ff00ff");
    row("8 bits grey", {{3, 1}, 8, 0, 0, hex("0080ffff")}, "000000 808080 ffffff");
    row("8 bits colour", {{7, 1}, 8, 1, 0, hex("006b6c7180939400")},
        "000000 ffff66 111111 110000 000088 eeeeee 000099");
    row("12 bits", {{3, 1}, 12, 1, 0, hex("800f23010000ffff")}, "ff8800 112233 000000");
    row("16 bits", {{2, 1}, 16, 1, 0, hex("1ff8e007")}, "ff00ff 00ff00");
    row("24 bits", {{1, 2}, 24, 1, 0, hex("102030ffffffffffffffffff405060ffffffffffffffffff")}, "302010 605040");
    row("32 bits", {{1, 1}, 32, 1, 0, hex("10203000")}, "302010");
    row("32 bits with alpha", {{1, 1}, 32, 2, 0, hex("10203080")}, "80302010");
    row("32 bits with multiplied alpha", {{1, 1}, 32, 3, 0, hex("08101880")}, "80302010");
    row("runs of bytes", {{5, 1}, 8, 0, 1, hex("0340fc41ffffff")}, "404040 404040 404040 404040 414141");
    row("runs of bytes over rows", {{4, 2}, 8, 0, 1, hex("0622ff23")},
        "222222 222222 222222 222222 222222 222222 222222 232323");
    row("runs of nibbles", {{9, 1}, 4, 0, 1, hex("0321fdffffffff")},
        "111111 222222 111111 222222 111111 222222 111111 222222 ffffff");
    row("runs of 12 bits", {{4, 1}, 12, 1, 2, hex("2321ff0f")}, "112233 112233 112233 ffffff");
    row("runs of 16 bits", {{2, 1}, 16, 1, 3, hex("011ff8")}, "ff00ff ff00ff");
    row("runs of 24 bits", {{2, 1}, 24, 1, 4, hex("fe10203040506001ffffff")}, "302010 605040");
    row("runs of 24 bits for 32", {{3, 1}, 32, 1, 5, hex("02102030")}, "302010 302010 302010");
    row("runs of 32 bits", {{3, 1}, 32, 2, 6, hex("0110203080ff11121300")}, "80302010 80302010 00131211");
}

void tst_Mbm::everyDepthAndCodingIsRead()
{
    QFETCH(MbmBitmap, bitmap);
    QFETCH(QByteArray, colors);
    for (const bool rom : {false, true}) {
        const Result<Picture> picture = decode(fileOf(bitmap, rom));
        QCOMPARE(colorsOf(picture), colors);
        QCOMPARE(picture->info.bitsPerPixel, bitmap.bits);
        if (picture->pixels.depth() > 8)
            QCOMPARE(picture->pixels.colorCount(), 0);
    }
}

void tst_Mbm::everyBitmapIsAPage()
{
    const QList<MbmBitmap> bitmaps{{{1, 2}, 8, 0, 0, hex("10ffffff20ffffff")}, {{2, 1}, 16, 1, 0, hex("1ff8e007")},
        {{1, 1}, 1, 0, 0, hex("feffffff")}};
    for (const bool rom : {false, true}) {
        const EncodedFile file{mbmOf(bitmaps, rom), {}};
        QCOMPARE(probe(file)->pageCount, 3);
        QCOMPARE(colorsOf(decode(file, {QSize(), -1, 0})), QByteArray("101010 202020"));
        QCOMPARE(colorsOf(decode(file, {QSize(), -1, 1})), QByteArray("ff00ff 00ff00"));
        QCOMPARE(colorsOf(decode(file, {QSize(), -1, 2})), QByteArray("000000"));
        QVERIFY(!decode(file, {QSize(), -1, 3}));
        QVERIFY(!decode(file, {QSize(), -1, -1}));
    }
}

void tst_Mbm::damageIsToldApartFromWholeFiles()
{
    // The bytes that only fill the last row up may be missing, a pixel may not.
    QCOMPARE(colorsOf(decode(fileOf({{1, 2}, 8, 0, 0, hex("10ffffff20")}))), QByteArray("101010 202020"));
    QCOMPARE(colorsOf(decode(fileOf({{2, 2}, 8, 0, 0, hex("1011ffff20")}))),
        QByteArray("partial: 101010 111111 202020 ffffff"));
    QVERIFY(!decode(fileOf({{2, 2}, 8, 0, 0, {}})));
    QVERIFY(!decode(fileOf({{2, 2}, 9, 0, 0, QByteArray(90, '\1')})));
    QVERIFY(!decode(fileOf({{2, 2}, 24, 1, 1, QByteArray(90, '\1')})));
    QVERIFY(!decode(fileOf({{limits::maximumSide + 1, 1}, 1, 0, 1, hex("7fff")})));
    QVERIFY(!decode(fileOf({{limits::maximumSide, limits::maximumSide}, 32, 1, 6, hex("7f00000000")})));
}

static Picture greyPalette(QSize size, int bits)
{
    const int top = (1 << bits) - 1;
    QImage image(size, QImage::Format_Indexed8);
    // From white to black: the order of a palette must not matter.
    for (int i = 0; i <= top; ++i)
        image.setColor(i, qRgb((top - i) * 255 / top, (top - i) * 255 / top, (top - i) * 255 / top));
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, uint(x * 3 + y) & uint(top));
    }
    Picture picture = Picture::fromImage(image);
    picture.info.bitsPerPixel = bits;
    return picture;
}

void tst_Mbm::whatIsWrittenComesBack_data()
{
    QTest::addColumn<Picture>("picture");
    QTest::addColumn<int>("bits");
    for (const int width : {1, 7, 8, 33}) {
        const QSize size(width, 5);
        const QImage colors = rampImage(size);
        QImage mono = colors.convertToFormat(QImage::Format_Mono);
        QTest::addRow("1 bit, %d wide", width) << Picture::fromImage(mono) << 1;
        mono.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
        QTest::addRow("1 bit the other way round, %d wide", width) << Picture::fromImage(mono) << 1;
        mono.setColorTable({qRgb(255, 0, 0), qRgb(0, 0, 0)});
        QTest::addRow("two colours, %d wide", width) << Picture::fromImage(mono) << 24;
        for (const int bits : {2, 4, 8})
            QTest::addRow("%d bits grey, %d wide", bits, width) << greyPalette(size, bits) << bits;
        QTest::addRow("grey, %d wide", width)
            << Picture::fromImage(colors.convertToFormat(QImage::Format_Grayscale8)) << 8;
        QTest::addRow("palette, %d wide", width)
            << Picture::fromImage(colors.convertToFormat(QImage::Format_Indexed8)) << 24;
        QTest::addRow("colour, %d wide", width) << Picture::fromImage(colors) << 24;
    }
    QImage flat(300, 20, QImage::Format_RGB32);
    flat.fill(0xff123456);
    QTest::newRow("one colour") << Picture::fromImage(flat) << 24;
}

void tst_Mbm::whatIsWrittenComesBack()
{
    QFETCH(Picture, picture);
    QFETCH(int, bits);
    const Result<QByteArray> plain = encode(picture, TypeCode::Mbm);
    const Result<QByteArray> packed = encode(picture, TypeCode::MbmCompressed);
    QVERIFY(plain && packed);
    for (const QByteArray &bytes : {*plain, *packed}) {
        const Result<Picture> back = decode({bytes, {}});
        QCOMPARE(colorsOf(back), colorsOf(picture));
        QCOMPARE(back->info.bitsPerPixel, bits);
    }
    QVERIFY(packed->size() <= plain->size());
    if (QByteArray(QTest::currentDataTag()) == "one colour")
        QVERIFY(packed->size() < plain->size() / 50);
}

QTEST_GUILESS_MAIN(tst_Mbm)
#include "tst_mbm.moc"
