#include "engine/encode.h"
#include "engine/ownfiles.h"
#include "support/support.h"

#include <QRgba64>
#include <QTest>
#include <QtEndian>

#include <bit>

/// Photoshop documents: every mode, depth and compression, transparency, what else they carry, and the writer.
class tst_Psd : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyModeIsRead_data();
    void everyModeIsRead();
    void everyCompressionGivesTheSame_data();
    void everyCompressionGivesTheSame();
    void labMeetsKnownColours();
    void transparencyIsReadWhereTheFileTellsIt();
    void aPlainLayerHoldsTheTrueColours();
    void metadataComeAlong();
    void cutDocumentsGiveWhatIsThere();
    void whatIsWrittenComesBack_data();
    void whatIsWrittenComesBack();
    void flattenedColoursLieOverWhite();
};

static QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

static QByteArray be16(int value)
{
    const quint16 big = qToBigEndian(quint16(value));
    return {reinterpret_cast<const char *>(&big), 2};
}

static QByteArray be32(qsizetype value)
{
    const quint32 big = qToBigEndian(quint32(value));
    return {reinterpret_cast<const char *>(&big), 4};
}

static QByteArray floats(std::initializer_list<float> values)
{
    QByteArray bytes;
    for (const float value : values)
        bytes += be32(std::bit_cast<quint32>(value));
    return bytes;
}

static Result<Picture> decoded(const PsdParts &parts)
{
    return decode({psdOf(parts), {}});
}

void tst_Psd::everyModeIsRead_data()
{
    QTest::addColumn<PsdParts>("parts");
    QTest::addColumn<QByteArray>("colors");
    const auto row = [](const char *name, const PsdParts &parts, const char *colors) {
        QTest::newRow(name) << parts << QByteArray(colors);
    };
    row("bitmap", {.size = {9, 1}, .channels = 1, .depth = 1, .mode = 0, .data = hex("a080")},
        "000000 ffffff 000000 ffffff ffffff ffffff ffffff ffffff 000000");
    row("grey", {.channels = 1, .mode = 1, .data = hex("0010f0ff")}, "000000 101010 f0f0f0 ffffff");
    row("grey, 16 bits", {.size = {2, 1}, .channels = 1, .depth = 16, .mode = 1, .data = hex("8080ffff")},
        "808080 ffffff");
    row("duotone", {.channels = 1, .mode = 8, .data = hex("0010f0ff")}, "000000 101010 f0f0f0 ffffff");
    QByteArray palette(768, '\0');
    palette.replace(0, 2, hex("1020")).replace(256, 2, hex("3040")).replace(512, 2, hex("5060"));
    row("palette", {.channels = 1, .mode = 2, .data = hex("00010100"), .palette = palette},
        "103050 204060 204060 103050");
    row("palette with a clear colour",
        {.channels = 1,
            .mode = 2,
            .data = hex("00010100"),
            .palette = palette,
            .resources = psdResource(1047, be16(1))},
        "103050 00204060 00204060 103050");
    row("RGB", {.data = hex("102030405060708090a0b0c0")}, "105090 2060a0 3070b0 4080c0");
    row("RGB with a spare channel", {.channels = 4, .data = hex("102030405060708090a0b0c000000000")},
        "105090 2060a0 3070b0 4080c0");
    row("RGB, 16 bits", {.size = {1, 1}, .depth = 16, .data = hex("101020203030")}, "102030");
    // 32 bits are linear light: half of it is a grey of 188.
    row("RGB, 32 bits", {.size = {1, 1}, .depth = 32, .data = floats({0.5F, -1, 7})}, "bc00ff");
    row("CMYK", {.size = {2, 1}, .channels = 4, .mode = 4, .data = hex("ff80ffff00ffff80")}, "ffff00 408080");
    row("CMYK, 16 bits", {.size = {1, 1}, .channels = 4, .depth = 16, .mode = 4, .data = hex("ffffffff00008080")},
        "808000");
    row("three inks", {.size = {1, 1}, .channels = 3, .mode = 7, .data = hex("102030")}, "102030");
    row("two inks", {.size = {1, 1}, .channels = 2, .mode = 7, .data = hex("1020")}, "1020ff");
    row("large document", {.size = {1, 1}, .data = hex("102030"), .large = true}, "102030");
}

void tst_Psd::everyModeIsRead()
{
    QFETCH(PsdParts, parts);
    QFETCH(QByteArray, colors);
    const Result<Picture> picture = decoded(parts);
    QCOMPARE(colorsOf(picture), colors);
    QCOMPARE(picture->info.bitsPerPixel, parts.channels * parts.depth);
}

/// The row as a document stores it before it is compressed with prediction.
static QByteArray predicted(QByteArray row, int depth)
{
    if (depth == 16) {
        for (qsizetype i = row.size() - 2; i >= 2; i -= 2) {
            const auto at = [&](qsizetype place) { return qFromBigEndian<quint16>(row.constData() + place); };
            row.replace(i, 2, be16(at(i) - at(i - 2)));
        }
        return row;
    }
    if (depth == 32) {
        QByteArray apart;
        for (int byte = 0; byte < 4; ++byte) {
            for (qsizetype i = byte; i < row.size(); i += 4)
                apart += row[i];
        }
        row = apart;
    }
    for (qsizetype i = row.size() - 1; i >= 1; --i)
        row[i] = char(row[i] - row[i - 1]);
    return row;
}

/// PackBits in the dullest way: literals of at most 100 bytes.
static QByteArray literals(const QByteArray &row)
{
    QByteArray packed;
    for (qsizetype at = 0; at < row.size(); at += 100) {
        const QByteArray part = row.mid(at, 100);
        packed += char(part.size() - 1) + part;
    }
    return packed;
}

void tst_Psd::everyCompressionGivesTheSame_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("compression");
    QTest::addColumn<bool>("large");
    for (const int depth : {8, 16, 32}) {
        for (const int compression : {1, 2, 3}) {
            for (const bool large : {false, true})
                QTest::addRow("%d bits, compression %d, %s", depth, compression, large ? "large" : "usual")
                    << depth << compression << large;
        }
    }
}

void tst_Psd::everyCompressionGivesTheSame()
{
    QFETCH(int, depth);
    QFETCH(int, compression);
    QFETCH(bool, large);
    PsdParts parts{.size = {37, 5}, .channels = 4, .depth = depth, .large = large};
    QByteArray counts;
    QByteArray rows;
    for (int row = 0; row < parts.channels * parts.size.height(); ++row) {
        QByteArray stored;
        for (int x = 0; x < parts.size.width(); ++x) {
            const int value = x * 7 + row * 29;
            stored += depth == 32 ? floats({float(value & 255) / 255}) : be16(value * 259).left(depth / 8);
        }
        parts.data += stored;
        const QByteArray packed = literals(stored);
        counts += large ? be32(packed.size()) : be16(int(packed.size()));
        rows += compression == 1 ? packed : compression == 3 ? predicted(stored, depth) : stored;
    }
    PsdParts packed = parts;
    packed.compression = compression;
    packed.data = compression == 1 ? counts + rows : qCompress(rows).mid(4);
    const QByteArray plainColors = colorsOf(decoded(parts));
    QVERIFY(!plainColors.contains(": "));
    QCOMPARE(colorsOf(decoded(packed)), plainColors);
}

void tst_Psd::labMeetsKnownColours()
{
    // Lightness, a and b + 128, of sRGB colours under D50, from published tables.
    const struct
    {
        QColor color;
        QByteArray lab;
    } known[] = {{QColor(255, 255, 255), hex("ff8080")}, {QColor(0, 0, 0), hex("008080")},
        {QColor(255, 0, 0), hex("8ad1c6")}, {QColor(0, 255, 0), hex("e031d1")}, {QColor(0, 0, 255), hex("4bc410")},
        {QColor(119, 119, 119), hex("808080")}};
    for (const auto &entry : known) {
        const Result<Picture> shallow = decoded({.size = {1, 1}, .mode = 9, .data = entry.lab});
        QByteArray wide;
        for (const char byte : entry.lab)
            wide += QByteArray(1, byte) + '\0';
        const Result<Picture> deep = decoded({.size = {1, 1}, .depth = 16, .mode = 9, .data = wide});
        QVERIFY(shallow && deep);
        for (const Picture &picture : {*shallow, *deep}) {
            const QColor color = picture.pixels.pixelColor(0, 0);
            const auto distance = std::max({std::abs(color.red() - entry.color.red()),
                std::abs(color.green() - entry.color.green()), std::abs(color.blue() - entry.color.blue())});
            // A step of a or b is worth several steps of a dark channel.
            QVERIFY2(distance <= 11, qPrintable(color.name() + QStringLiteral(" for ") + entry.color.name()));
        }
    }
}

void tst_Psd::transparencyIsReadWhereTheFileTellsIt()
{
    // Black over white at half, quarter and no transparency, and a pixel that cannot be seen.
    PsdParts parts{.channels = 4, .data = hex("7fbf00ff7fbf00ff7fbf00ff8040ff00")};
    QCOMPARE(colorsOf(decoded(parts)), QByteArray("7f7f7f bfbfbf 000000 ffffff"));
    const QByteArray seen("80000000 40000000 000000 00ffffff");
    const auto information = [](int count) { return be32(2) + be16(count) + be32(0); };
    parts.layers = information(1);
    QCOMPARE(colorsOf(decoded(parts)), QByteArray("7f7f7f bfbfbf 000000 ffffff"));
    parts.layers = information(-1);
    QCOMPARE(colorsOf(decoded(parts)), seen);
    parts.layers = be32(0) + be32(0) + "8BIMMtrn" + be32(0);
    QCOMPARE(colorsOf(decoded(parts)), seen);
    parts.layers = be32(0) + be32(4) + "mask8BIMXxxx" + be32(4) + "none8BIMLayr" + be32(2) + be16(-2);
    QCOMPARE(colorsOf(decoded(parts)), seen);
    parts.large = true;
    parts.layers = QByteArray(8, '\0') + be32(0) + "8BIMLayr" + be32(0) + be32(2) + be16(-2);
    QCOMPARE(colorsOf(decoded(parts)), seen);
    // Grey and inks know it too.
    PsdParts grey{.size = {1, 1}, .channels = 2, .mode = 1, .data = hex("7f80"), .layers = information(-1)};
    QCOMPARE(colorsOf(decoded(grey)), QByteArray("80000000"));
    PsdParts inks{.size = {1, 1}, .channels = 5, .mode = 4, .data = hex("7f7f7fff80"), .layers = information(-1)};
    QCOMPARE(colorsOf(decoded(inks)), QByteArray("80000000"));
}

void tst_Psd::aPlainLayerHoldsTheTrueColours()
{
    for (const SmallFile &file : ownFiles()) {
        if (QByteArray(file.name) != "PSD layer")
            continue;
        QCOMPARE(colorsOf(decode(file.encoded())), QByteArray("326496c8"));
        // Hidden, half transparent, blended otherwise or moved, it is not what the flattened picture shows.
        const qsizetype blend = file.bytes.indexOf("8BIMnorm");
        for (const qsizetype at : {blend - 46 + 3, blend + 7, blend + 8, blend + 10}) {
            SmallFile other = file;
            other.bytes[at] = char(2);
            QCOMPARE(colorsOf(decode(other.encoded())), QByteArray("322994ff"));
        }
    }
}

void tst_Psd::metadataComeAlong()
{
    const QByteArray resolution = be32(300 << 16) + be32(0x10001) + be32(150 << 16) + be32(0x10001);
    const QByteArray named = "8BIM" + be16(1060) + QByteArray("\4name\0", 6) + be32(3) + QByteArray("xmp\0", 4);
    const PsdParts parts{.size = {1, 1},
        .data = hex("102030"),
        .resources = named + psdResource(1005, resolution) + psdResource(1028, "iptc") + psdResource(1039, "profile")
            + psdResource(1058, QByteArray("Exif\0\0II*", 9))};
    const Result<Picture> read = decoded(parts);
    QVERIFY2(read, qPrintable(read.reason()));
    const Result<QByteArray> again = encode(*read, TypeCode::Psd);
    QVERIFY(again);
    for (const Picture &picture : {*read, *decode({*again, {}})}) {
        QCOMPARE(picture.pixels.dotsPerMeterX(), 11811);
        QCOMPARE(picture.pixels.dotsPerMeterY(), 5906);
    }
    QCOMPARE(read->metadata.xmp, QByteArray("xmp"));
    QCOMPARE(read->metadata.iptc, QByteArray("iptc"));
    QCOMPARE(read->iccProfile, QByteArray("profile"));
    QCOMPARE(read->metadata.exif, QByteArray("II*"));
    // Of inks it does not describe the light that they have become.
    PsdParts inks = parts;
    inks.mode = 7;
    QVERIFY(decoded(inks)->iccProfile.isEmpty());
}

void tst_Psd::cutDocumentsGiveWhatIsThere()
{
    PsdParts parts{.data = hex("10203040506070")};
    QCOMPARE(colorsOf(decoded(parts)), QByteArray("partial: 1050ff 2060ff 3070ff 40ffff"));
    parts.data = hex("10");
    QVERIFY(!decoded(parts));
    parts.data = {};
    QVERIFY(!decoded(parts));
    // Byte counts that lead behind the end, or that are too small for the row.
    PsdParts packed{.channels = 1, .mode = 1, .data = hex("ffffffff011011"), .compression = 1};
    QCOMPARE(colorsOf(decoded(packed)), QByteArray("partial: 101010 111111 ffffff ffffff"));
    packed.data = hex("000200030010011112");
    QCOMPARE(colorsOf(decoded(packed)), QByteArray("partial: 101010 ffffff 111111 121212"));
    PsdParts large{.size = {65535, 65535}, .channels = 4, .depth = 16, .data = hex("00")};
    QVERIFY(!decoded(large));
    large.size = {30000, 12000};
    large.compression = 2;
    QVERIFY(!decoded(large));
}

static Picture deepGrey()
{
    QImage image({11, 7}, QImage::Format_RGBA64);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const quint16 grey = quint16(x * 5741 + y * 977);
            reinterpret_cast<QRgba64 *>(image.scanLine(y))[x] = qRgba64(grey, grey, grey, 0xffff);
        }
    }
    Picture picture = Picture::fromImage(image);
    picture.info.bitsPerPixel = 16;
    return picture;
}

static Picture deepPicture(bool transparent)
{
    QImage image({11, 7}, QImage::Format_RGBA64);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int mixed = x * 5741 + y * 977;
            reinterpret_cast<QRgba64 *>(image.scanLine(y))[x] = qRgba64(quint16(mixed), quint16(mixed * 3),
                quint16(mixed * 7), transparent ? quint16(mixed * 5) : quint16(0xffff));
        }
    }
    return Picture::fromImage(image);
}

void tst_Psd::whatIsWrittenComesBack_data()
{
    QTest::addColumn<Picture>("picture");
    QTest::addColumn<int>("bits");
    for (const int width : {1, 9, 300}) {
        const QImage colors = rampImage({width, 6});
        QImage mono = colors.convertToFormat(QImage::Format_Mono);
        QImage indexed = colors.convertToFormat(QImage::Format_Indexed8);
        QTest::addRow("bitmap, %d wide", width) << Picture::fromImage(mono) << 1;
        mono.setColorTable({qRgb(200, 0, 0), qRgb(0, 0, 0)});
        QTest::addRow("two colours, %d wide", width) << Picture::fromImage(mono) << 8;
        QTest::addRow("palette, %d wide", width) << Picture::fromImage(indexed) << 8;
        const int shown = indexed.pixelIndex(0, 0);
        indexed.setColor(shown, indexed.color(shown) & 0xffffff);
        QTest::addRow("palette with a clear colour, %d wide", width) << Picture::fromImage(indexed) << 8;
        indexed.setColor(shown, (indexed.color(shown) & 0xffffff) | 0x55000000);
        QTest::addRow("palette with a pale colour, %d wide", width) << Picture::fromImage(indexed) << 32;
        QTest::addRow("grey, %d wide", width)
            << Picture::fromImage(colors.convertToFormat(QImage::Format_Grayscale8)) << 8;
        QTest::addRow("RGB, %d wide", width) << Picture::fromImage(colors) << 24;
        QImage clear = colors.convertToFormat(QImage::Format_ARGB32);
        QTest::addRow("opaque, %d wide", width) << Picture::fromImage(clear) << 24;
        for (int y = 0; y < clear.height(); ++y) {
            for (int x = 0; x < width; ++x)
                clear.setPixel(x, y, (clear.pixel(x, y) & 0xffffff) | uint((x + 40 * y) & 255) << 24);
        }
        QTest::addRow("transparent, %d wide", width) << Picture::fromImage(clear) << 32;
    }
    QTest::newRow("16 bits of grey") << deepGrey() << 16;
    QTest::newRow("16 bits") << deepPicture(false) << 48;
    QTest::newRow("16 bits, transparent") << deepPicture(true) << 64;
}

void tst_Psd::whatIsWrittenComesBack()
{
    QFETCH(Picture, picture);
    QFETCH(int, bits);
    const Result<QByteArray> bytes = encode(picture, TypeCode::Psd);
    QVERIFY2(bytes, qPrintable(bytes.reason()));
    const Result<Picture> back = decode({*bytes, {}});
    QCOMPARE(colorsOf(back), colorsOf(picture));
    QCOMPARE(back->info.bitsPerPixel, bits);
    if (picture.pixels.format() == QImage::Format_RGBA64)
        QVERIFY(back->pixels == picture.pixels);
}

void tst_Psd::flattenedColoursLieOverWhite()
{
    // What readers see that know nothing of layers.
    QImage image({1, 1}, QImage::Format_ARGB32);
    image.setPixel(0, 0, 0x80ff0000);
    const Result<QByteArray> bytes = encode(Picture::fromImage(image), TypeCode::Psd);
    QVERIFY(bytes);
    QCOMPARE(bytes->last(8), hex("00ff007f007f0080"));
}

QTEST_GUILESS_MAIN(tst_Psd)
#include "tst_psd.moc"
