#include "engine/encode.h"
#include "engine/ownfiles.h"
#include "support/support.h"

#include <QTest>

/// TGA files from any corner, of any depth, and Sun raster files.
class tst_Tga : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyKindIsRead_data();
    void everyKindIsRead();
    void foreignHeadersAreRefused_data();
    void foreignHeadersAreRefused();
    void whatIsWrittenComesBack_data();
    void whatIsWrittenComesBack();
    void everySunRasterIsRead_data();
    void everySunRasterIsRead();
};

static QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

static Result<Picture> decoded(const TgaParts &parts)
{
    return decode({tgaOf(parts), QStringLiteral("tga")});
}

void tst_Tga::everyKindIsRead_data()
{
    QTest::addColumn<TgaParts>("parts");
    QTest::addColumn<QByteArray>("colors");
    const auto row = [](const char *name, const TgaParts &parts, const char *colors) {
        QTest::newRow(name) << parts << QByteArray(colors);
    };
    const QByteArray greys = hex("01020304");
    row("grey from the top left", {.kind = 3, .bits = 8, .descriptor = 0x20, .pixels = greys},
        "010101 020202 030303 040404");
    row("grey from the top right", {.kind = 3, .bits = 8, .descriptor = 0x30, .pixels = greys},
        "020202 010101 040404 030303");
    row("grey from the bottom left", {.kind = 3, .bits = 8, .descriptor = 0, .pixels = greys},
        "030303 040404 010101 020202");
    row("grey from the bottom right", {.kind = 3, .bits = 8, .descriptor = 0x10, .pixels = greys},
        "040404 030303 020202 010101");
    row("true colour from the bottom right", {.size = {2, 1}, .descriptor = 0x10, .pixels = hex("102030405060")},
        "605040 302010");
    row("15 bits", {.size = {2, 1}, .bits = 15, .pixels = hex("1f80e003")}, "0000ff 00ff00");
    row("16 bits", {.size = {2, 1}, .bits = 16, .pixels = hex("1f80007c")}, "0000ff ff0000");
    row("16 bits with alpha", {.size = {2, 1}, .bits = 16, .descriptor = 0x21, .pixels = hex("1f80007c")},
        "0000ff 00ff0000");
    row("32 bits without alpha", {.size = {2, 1}, .bits = 32, .pixels = hex("1020300040506080")}, "302010 605040");
    row("32 bits with alpha", {.size = {2, 1}, .bits = 32, .descriptor = 0x28, .pixels = hex("1020300040506080")},
        "00302010 80605040");
    row("alpha that nobody set", {.size = {1, 1}, .bits = 32, .descriptor = 0x28, .pixels = hex("10203000")}, "302010");
    row("clear on purpose", {.size = {1, 1}, .bits = 32, .descriptor = 0x28, .pixels = hex("10203000"), .alphaKind = 3},
        "00302010");
    row("alpha without meaning",
        {.size = {1, 1}, .bits = 32, .descriptor = 0x28, .pixels = hex("10203080"), .alphaKind = 2}, "302010");
    row("multiplied alpha", {.size = {1, 1}, .bits = 32, .descriptor = 0x28, .pixels = hex("08101880"), .alphaKind = 4},
        "80302010");
    row("grey with alpha", {.kind = 3, .size = {2, 1}, .bits = 16, .descriptor = 0x28, .pixels = hex("40805000")},
        "80404040 00505050");
    const TgaParts palette{.kind = 1, .size = {2, 1}, .bits = 8, .pixels = hex("0506"), .mapFirst = 5};
    const auto withMap = [&](int bits, const char *map) {
        TgaParts parts = palette;
        parts.mapBits = bits;
        parts.map = hex(map);
        return parts;
    };
    row("palette of 15 bits", withMap(15, "1f00e003"), "0000ff 00ff00");
    row("palette of 16 bits", withMap(16, "1f00e003"), "0000ff 00ff00");
    row("palette of 24 bits", withMap(24, "102030405060"), "302010 605040");
    row("palette of 32 bits", withMap(32, "1020300040506080"), "00302010 80605040");
    row("palette of 32 bits without alpha", withMap(32, "1020300040506000"), "302010 605040");
    TgaParts wide = withMap(24, "102030405060");
    wide.bits = 16;
    wide.pixels = hex("05000600");
    row("wide indices", wide, "302010 605040");
    wide.pixels = hex("0500ff00");
    row("an index behind the palette", wide, "302010 000000");
    row("runs over rows", {.kind = 10, .pixels = hex("82102030 00405060")}, "302010 302010 302010 605040");
    row("literals over rows", {.kind = 11, .bits = 8, .descriptor = 0, .pixels = hex("02010203 8004")},
        "030303 040404 010101 020202");
    row("runs of 16 bits", {.kind = 10, .bits = 16, .pixels = hex("831f00")}, "0000ff 0000ff 0000ff 0000ff");
    row("cut", {.kind = 3, .bits = 8, .pixels = hex("010203")}, "partial: 010101 020202 030303 000000");
    row("cut runs", {.kind = 10, .bits = 24, .pixels = hex("8110203000")}, "partial: 302010 302010 ffffff ffffff");
}

void tst_Tga::everyKindIsRead()
{
    QFETCH(TgaParts, parts);
    QFETCH(QByteArray, colors);
    const Result<Picture> picture = decoded(parts);
    QCOMPARE(colorsOf(picture), colors);
    QCOMPARE(picture->info.bitsPerPixel, parts.bits);
}

void tst_Tga::foreignHeadersAreRefused_data()
{
    QTest::addColumn<TgaParts>("parts");
    const QByteArray pixels(64, '\1');
    QTest::newRow("no picture") << TgaParts{.kind = 0, .pixels = pixels};
    QTest::newRow("unknown kind") << TgaParts{.kind = 4, .pixels = pixels};
    QTest::newRow("Huffman") << TgaParts{.kind = 32, .pixels = pixels};
    QTest::newRow("empty") << TgaParts{.size = {0, 2}, .pixels = pixels};
    QTest::newRow("depth of true colour") << TgaParts{.bits = 8, .pixels = pixels};
    QTest::newRow("depth of grey") << TgaParts{.kind = 3, .bits = 24, .pixels = pixels};
    QTest::newRow("palette without one") << TgaParts{.kind = 1, .bits = 8, .pixels = pixels};
    QTest::newRow("depth of a palette") << TgaParts{
        .kind = 1, .bits = 8, .pixels = pixels, .mapBits = 8, .map = QByteArray(3, '\1')};
    QTest::newRow("interleaved") << TgaParts{.descriptor = 0x60, .pixels = pixels};
    QTest::newRow("no pixels") << TgaParts{};
    QTest::newRow("less than a row") << TgaParts{.size = {60000, 30000}, .pixels = pixels};
}

void tst_Tga::foreignHeadersAreRefused()
{
    QFETCH(TgaParts, parts);
    QVERIFY(!decoded(parts));
}

void tst_Tga::whatIsWrittenComesBack_data()
{
    QTest::addColumn<Picture>("picture");
    QTest::addColumn<int>("bits");
    for (const int width : {1, 129, 300}) {
        const QImage colors = rampImage({width, 4});
        QImage indexed = colors.convertToFormat(QImage::Format_Indexed8);
        QTest::addRow("two colours, %d wide", width)
            << Picture::fromImage(colors.convertToFormat(QImage::Format_Mono)) << 8;
        QTest::addRow("palette, %d wide", width) << Picture::fromImage(indexed) << 8;
        const int shown = indexed.pixelIndex(0, 0);
        indexed.setColor(shown, (indexed.color(shown) & 0xffffff) | 0x55000000);
        QTest::addRow("palette with a pale colour, %d wide", width) << Picture::fromImage(indexed) << 32;
        QTest::addRow("grey, %d wide", width)
            << Picture::fromImage(colors.convertToFormat(QImage::Format_Grayscale8)) << 8;
        QTest::addRow("true colour, %d wide", width) << Picture::fromImage(colors) << 24;
        QImage clear = colors.convertToFormat(QImage::Format_ARGB32);
        clear.fill(0x00123456);
        QTest::addRow("clear, %d wide", width) << Picture::fromImage(clear) << 32;
        clear.setPixel(0, 1, 0x80a0b0c0);
        QTest::addRow("transparent, %d wide", width) << Picture::fromImage(clear) << 32;
    }
}

void tst_Tga::whatIsWrittenComesBack()
{
    QFETCH(Picture, picture);
    QFETCH(int, bits);
    picture.metadata.comment = "two\n\nlines";
    for (const TypeCode code : {TypeCode::Tga, TypeCode::TgaCompressed}) {
        const Result<QByteArray> bytes = encode(picture, code);
        QVERIFY2(bytes, qPrintable(bytes.reason()));
        const Result<Picture> back = decode({*bytes, QStringLiteral("tga")});
        QCOMPARE(colorsOf(back), colorsOf(picture));
        QCOMPARE(back->info.bitsPerPixel, bits);
        QCOMPARE(back->metadata.comment, picture.metadata.comment);
    }
    // A comment that does not fit is left out; it does not come back in part.
    picture.metadata.comment = QByteArray(81, 'x');
    QVERIFY(decode({*encode(picture, TypeCode::Tga), QStringLiteral("tga")})->metadata.comment.isEmpty());
}

void tst_Tga::everySunRasterIsRead_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("colors");
    const auto row = [](const char *name, const QByteArray &file, const char *colors) {
        QTest::newRow(name) << file << QByteArray(colors);
    };
    row("1 bit", sunRasterOf({3, 2}, 1, 1, hex("a0ff 40ff")), "000000 ffffff 000000 ffffff 000000 ffffff");
    row("1 bit with colours", sunRasterOf({2, 1}, 1, 1, hex("4000"), hex("102030405060")), "103050 204060");
    row("4 bits", sunRasterOf({3, 1}, 4, 1, hex("0f80")), "000000 ffffff 888888");
    row("8 bits grey", sunRasterOf({1, 2}, 8, 0, hex("10ff 20ff")), "101010 202020");
    row("8 bits with colours", sunRasterOf({3, 1}, 8, 1, hex("000107ff"), hex("102030405060")), "103050 204060 000000");
    row("24 bits", sunRasterOf({1, 2}, 24, 1, hex("102030ff405060ff")), "302010 605040");
    row("24 bits in the other order", sunRasterOf({1, 1}, 24, 3, hex("102030ff")), "102030");
    row("32 bits", sunRasterOf({1, 1}, 32, 1, hex("ff102030")), "302010");
    row("32 bits in the other order", sunRasterOf({1, 1}, 32, 3, hex("ff102030")), "102030");
    row("runs over rows", sunRasterOf({2, 2}, 8, 2, hex("80022040")), "202020 202020 202020 404040");
    row("the escape as a value", sunRasterOf({6, 1}, 8, 2, hex("018000 800180 7f 02")),
        "010101 808080 808080 808080 7f7f7f 020202");
    row("cut", sunRasterOf({2, 2}, 8, 1, hex("010203")), "partial: 010101 020202 ffffff ffffff");
}

void tst_Tga::everySunRasterIsRead()
{
    QFETCH(QByteArray, file);
    QFETCH(QByteArray, colors);
    QCOMPARE(colorsOf(decode({file, {}})), colors);
}

QTEST_GUILESS_MAIN(tst_Tga)
#include "tst_tga.moc"
