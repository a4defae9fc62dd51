#include "engine/codecs/bytes.h"
#include "engine/damage.h"
#include "engine/enginefiles.h"
#include "support/support.h"

#include <QTest>

namespace {

EncodedFile pic(const QByteArray &bytes)
{
    return {bytes, QStringLiteral("pic")};
}

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

EncodedFile softimage(QSize size, const QByteArray &packets, const QByteArray &rows)
{
    ByteWriter header;
    header.u32be(0x5380f634), header.u32be(0x3fcccccd), header.fill(80), header.text("PICT");
    header.u16be(quint32(size.width())), header.u16be(quint32(size.height())), header.u32be(0x3f800000);
    header.u16be(3), header.u16be(0);
    return pic(header.bytes + packets + rows);
}

struct Pictor
{
    QSize size;
    int bits = 8;
    int planes = 1;
    int paletteKind = 0;
    QByteArray palette = {};
    EncodedFile with(int blocks, const QByteArray &data) const
    {
        ByteWriter header;
        header.u16le(0x1234), header.u16le(quint32(size.width())), header.u16le(quint32(size.height()));
        header.u32le(0), header.u8(quint32(bits | (planes - 1) << 4)), header.u8(0xff), header.u8('A');
        header.u16le(quint32(paletteKind)), header.u16le(quint32(palette.size()));
        header.bytes += palette;
        header.u16le(quint32(blocks));
        return pic(header.bytes + data);
    }
};

QByteArray pictorBlock(const QByteArray &packed, int unpacked, char marker)
{
    ByteWriter block;
    block.u16le(quint32(packed.size()) + 5), block.u16le(quint32(unpacked)), block.u8(uchar(marker));
    return block.bytes + packed;
}

EncodedFile pictorWithRuns()
{
    const Pictor page{{300, 2}, 8, 1, 4, hex("000000 3f0000 003f00 151515")};
    // The lower row first: 299 times 1 with a long count, then 2; the upper one by a short count and literals.
    return page.with(2,
        pictorBlock(hex("ee002b0101") + hex("02"), 300, '\xee')
            + pictorBlock(hex("eeff03") + hex("01") + hex("ee2c02"), 300, '\xee'));
}

QByteArray rectangle(QRect rect)
{
    ByteWriter writer;
    for (const int side : {rect.top(), rect.left(), rect.bottom() + 1, rect.right() + 1})
        writer.u16be(quint32(side));
    return writer.bytes;
}

/// A QuickDraw picture of version 2 around operations.
EncodedFile pict(QRect frame, const QByteArray &operations)
{
    return pic(QByteArray(512, '\0') + QByteArray(2, '\0') + rectangle(frame) + hex("001102ff 0c00")
        + QByteArray(24, '\0') + hex("0001000a") + rectangle(frame) + operations + hex("00ff"));
}

QByteArray even(const QByteArray &operation)
{
    return operation.size() % 2 ? operation + '\0' : operation;
}

QByteArray pixelMap(QSize size, int rowBytes, int depth, int packing, int components)
{
    ByteWriter map;
    map.u16be(quint32(rowBytes | 0x8000));
    map.bytes += rectangle({{}, size});
    map.u16be(0), map.u16be(quint32(packing)), map.u32be(0), map.u32be(72 << 16), map.u32be(72 << 16);
    map.u16be(depth > 8 ? 16 : 0), map.u16be(quint32(depth)), map.u16be(quint32(components)), map.u16be(8),
        map.fill(12);
    return map.bytes;
}

/// A bitmap of one bit, a row of eight bytes each packed as one run.
QByteArray bitRun(QRect target, char bits)
{
    QByteArray operation = hex("0098 0008") + rectangle({0, 0, 64, target.height()})
        + rectangle({0, 0, 64, target.height()}) + rectangle(target) + hex("0000");
    for (int y = 0; y < target.height(); ++y)
        operation += hex("02f9") + bits;
    return even(operation);
}

EncodedFile palettePict()
{
    const QByteArray operation = hex("0098") + pixelMap({10, 2}, 10, 8, 0, 1) + hex("00000000 0000 0001")
        + hex("0007 ffff 0000 8000") + hex("0003 0000 ffff 4000") + rectangle({0, 0, 10, 2}) + rectangle({0, 0, 10, 2})
        + hex("0000 02f707 04fc03fc07");
    return pict({0, 0, 10, 2}, even(operation));
}

EncodedFile radiance(const QByteArray &header, const QByteArray &way, const QByteArray &pixels)
{
    return pic(header + "\n\n" + way + '\n' + pixels);
}

}

/// The formats that share the extension "pic", made byte by byte.
class tst_Pic : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void softimagePacketsFillTheirChannels();
    void pictorPlanesAndPalettes_data();
    void pictorPlanesAndPalettes();
    void pictorBlocksAreUnpacked();
    void radianceRowsOfBothKinds();
    void radianceIsTurnedUpright();
    void quickDrawBitmaps();
    void quickDrawStripsMakeOnePicture();
    void damageIsAnswered_data();
    void damageIsAnswered();
    void absurdClaimsAreRefused();
};

void tst_Pic::softimagePacketsFillTheirChannels()
{
    // Colours as mixed runs with a long count, alpha as pure runs.
    const QByteArray row =
        hex("80 0002 102030") + hex("01 405060 708090") + hex("81 a0b0c0") + hex("04 80") + hex("02 ff");
    const Result<Picture> picture = decodeHere(softimage({6, 2}, hex("01 08 02 e0") + hex("00 08 01 10"), row + row));
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.bitsPerPixel, 32);
    QCOMPARE(picture->pixels.pixel(1, 1), qRgba(0x10, 0x20, 0x30, 0x80));
    QCOMPARE(picture->pixels.pixel(3, 0), qRgba(0x70, 0x80, 0x90, 0x80));
    QCOMPARE(picture->pixels.pixel(5, 1), qRgba(0xa0, 0xb0, 0xc0, 0xff));
    const Result<Picture> plain = decodeHere(softimage({2, 2}, hex("00 08 00 e0"), hex("010203 040506 070809")));
    QVERIFY2(plain, qPrintable(plain.reason()));
    QVERIFY2(plain->partial, "half a row is missing");
    QCOMPARE(plain->pixels.pixel(1, 0), qRgb(4, 5, 6));
    QCOMPARE(plain->pixels.pixel(0, 1), qRgb(255, 255, 255));
}

void tst_Pic::pictorPlanesAndPalettes_data()
{
    QTest::addColumn<EncodedFile>("file");
    QTest::addColumn<int>("depth");
    QTest::addColumn<QList<QRgb>>("row"); ///< the upper one
    // Two rows of three pixels, unpacked; the lower row comes first.
    const QSize size(3, 2);
    QTest::newRow("one bit") << Pictor{size, 1}.with(0, hex("00a0")) << 1
                             << QList<QRgb>{0xffffffff, 0xff000000, 0xffffffff};
    QTest::newRow("CGA, fifth set") << Pictor{size, 2, 1, 1, hex("0400")}.with(0, hex("006c")) << 2
                                    << QList<QRgb>{0xff55ff55, 0xffff5555, 0xffffff55};
    QTest::newRow("CGA without a palette")
        << Pictor{size, 2}.with(0, hex("006c")) << 2 << QList<QRgb>{0xff00aaaa, 0xffaa00aa, 0xffaaaaaa};
    QTest::newRow("PCjr") << Pictor{size, 4, 1, 2, hex("0f0e060300")}.with(0, hex("00001200")) << 4
                          << QList<QRgb>{0xffffff55, 0xffaa5500, 0xffffffff};
    QTest::newRow("EGA planes") << Pictor{size, 1, 4, 3, hex("00 01 02 03 04 05 06 07 38 39 3a 3b 3c 3d 3e 14")}.with(
        0, hex("0080 0000 0020 00a0"))
                                << 4 << QList<QRgb>{0xff5555ff, 0xff000000, 0xffff5555};
    QTest::newRow("VGA") << Pictor{size, 8, 1, 4, hex("000000 3f1500 003f20")}.with(0, hex("000000 010200")) << 8
                         << QList<QRgb>{0xffff5500, 0xff00ff81, 0xff000000};
    QTest::newRow("true colour") << Pictor{size, 8, 3}.with(0, hex("000000 102030 000000 405060 000000 708090")) << 24
                                 << QList<QRgb>{0xff104070, 0xff205080, 0xff306090};
}

void tst_Pic::pictorPlanesAndPalettes()
{
    QFETCH(EncodedFile, file);
    QFETCH(int, depth);
    QFETCH(QList<QRgb>, row);
    const Result<Picture> picture = decodeHere(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.bitsPerPixel, depth);
    QCOMPARE(probeHere(file)->bitsPerPixel, depth);
    for (int x = 0; x < 3; ++x)
        QCOMPARE(picture->pixels.pixel(x, 0), row[x]);
}

void tst_Pic::pictorBlocksAreUnpacked()
{
    const Result<Picture> picture = decodeHere(pictorWithRuns());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    const QImage &pixels = picture->pixels;
    QCOMPARE(pixels.pixelIndex(298, 1), 1);
    QCOMPARE(pixels.pixelIndex(299, 1), 2);
    QCOMPARE(pixels.pixelIndex(254, 0), 3);
    QCOMPARE(pixels.pixelIndex(255, 0), 1);
    QCOMPARE(pixels.pixelIndex(299, 0), 2);
    QCOMPARE(pixels.pixel(254, 0), qRgb(85, 85, 85));
}

void tst_Pic::radianceRowsOfBothKinds()
{
    const QByteArray head("#?RADIANCE\nFORMAT=32-bit_rle_rgbe");
    // Channel by channel: red 8 x 255, green a literal ramp, blue a run and a literal, one exponent for all.
    const QByteArray newer = hex("02020008 88ff 08 0000000000000080 87 00 01 40 88 80");
    const Result<Picture> picture = decodeHere(radiance(head, "-Y 1 +X 8", newer));
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(qRed(picture->pixels.pixel(3, 0)), 255);
    QVERIFY(qGreen(picture->pixels.pixel(0, 0)) < 20);
    // Half and a quarter of the light under a gamma of 2.2.
    QVERIFY(std::abs(qGreen(picture->pixels.pixel(7, 0)) - 186) <= 1);
    QVERIFY(std::abs(qBlue(picture->pixels.pixel(7, 0)) - 136) <= 1);
    // Pixel by pixel with a repetition of 2 + 256, and brighter than white; without a name in front.
    const QByteArray older = hex("ffffff88 01010102 01010101 80808080");
    const Result<Picture> long_ = decodeHere(radiance("someprogram -x 2", "-Y 1 +X 260", older));
    QVERIFY2(long_, qPrintable(long_.reason()));
    QCOMPARE(long_->pixels.pixel(258, 0), qRgb(255, 255, 255));
    QVERIFY(std::abs(qRed(long_->pixels.pixel(259, 0)) - 186) <= 1);
    QVERIFY(!decodeHere(radiance("#?RADIANCE\nFORMAT=32-bit_rle_xyze", "-Y 1 +X 8", newer)));
}

void tst_Pic::radianceIsTurnedUpright()
{
    // Three rows of two in the file; the first pixel is white and the others black.
    const QByteArray pixels = hex("ffffff80") + QByteArray(20, '\0');
    const QList<std::pair<const char *, QPoint>> ways{{"-Y 3 +X 2", {0, 0}}, {"-Y 3 -X 2", {1, 0}},
        {"+Y 3 +X 2", {0, 2}}, {"+Y 3 -X 2", {1, 2}}, {"+X 3 -Y 2", {0, 0}}, {"-X 3 -Y 2", {2, 0}},
        {"+X 3 +Y 2", {0, 1}}, {"-X 3 +Y 2", {2, 1}}};
    for (const auto &[way, place] : ways) {
        const Result<Picture> picture = decodeHere(radiance("#?RGBE", way, pixels));
        QVERIFY2(picture, way);
        QCOMPARE(picture->info.size, *(way + 1) == 'Y' ? QSize(2, 3) : QSize(3, 2));
        QVERIFY2(picture->pixels.pixel(place) == 0xffffffff, way);
    }
}

void tst_Pic::quickDrawBitmaps()
{
    const Result<Picture> indexed = decodeHere(palettePict());
    QVERIFY2(indexed, qPrintable(indexed.reason()));
    QVERIFY(!indexed->partial);
    QCOMPARE(indexed->info.bitsPerPixel, 8);
    QCOMPARE(indexed->pixels.pixel(9, 0), qRgb(255, 0, 128));
    QCOMPARE(indexed->pixels.pixel(4, 1), qRgb(0, 255, 64));
    QCOMPARE(indexed->pixels.pixel(5, 1), qRgb(255, 0, 128));

    const Result<Picture> mono = decodeHere(pict({5, 7, 64, 3}, bitRun({5, 7, 64, 3}, '\x0f')));
    QVERIFY2(mono, qPrintable(mono.reason()));
    QCOMPARE(mono->info.bitsPerPixel, 1);
    QCOMPARE(mono->pixels.pixel(3, 2), qRgb(255, 255, 255));
    QCOMPARE(mono->pixels.pixel(4, 2), qRgb(0, 0, 0));

    // Direct pixels: planes of a row, words, and unpacked ones.
    const QRect frame(0, 0, 4, 1);
    const QByteArray rects = rectangle(frame) + rectangle(frame) + hex("0000");
    const QByteArray planes =
        hex("009a 000000ff") + pixelMap({4, 1}, 16, 32, 4, 3) + rects + hex("09 fd10 fd20 0330313233");
    const QByteArray words = hex("009a 000000ff") + pixelMap({4, 1}, 8, 16, 3, 3) + rects + hex("06 fe7c00 00001f");
    const QByteArray raw =
        hex("009a 000000ff") + pixelMap({4, 1}, 16, 32, 1, 3) + rects + hex("00010203 00040506 00070809 000a0b0c");
    const auto last = [&](const QByteArray &operation) {
        const Result<Picture> picture = decodeHere(pict(frame, even(operation)));
        return picture && !picture->partial ? picture->pixels.pixel(3, 0) : 0U;
    };
    QCOMPARE(last(planes), qRgb(0x10, 0x20, 0x33));
    QCOMPARE(last(words), qRgb(0, 0, 255));
    QCOMPARE(last(raw), qRgb(10, 11, 12));
}

void tst_Pic::quickDrawStripsMakeOnePicture()
{
    // Unknown operations with every way to tell a length stand between.
    const QByteArray between = hex("00a1 0064 0004 01020304") + hex("0007 00010001") + hex("0028 00000000 02 4142 00")
        + hex("0070 000e 0000000000010001 00000000") + hex("8100 00000002 0102");
    const QByteArray strips =
        bitRun({0, 0, 64, 2}, '\xff') + between + bitRun({0, 2, 64, 2}, '\x00') + bitRun({0, 4, 32, 1}, '\xff');
    const Result<Picture> picture = decodeHere(pict({0, 0, 64, 6}, strips));
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.size, QSize(64, 6));
    QCOMPARE(picture->pixels.pixel(63, 1), qRgb(0, 0, 0));
    QCOMPARE(picture->pixels.pixel(63, 2), qRgb(255, 255, 255));
    QCOMPARE(picture->pixels.pixel(31, 4), qRgb(0, 0, 0));
    QCOMPARE(picture->pixels.pixel(33, 4), qRgb(255, 255, 255));
    // A JPEG by QuickTime, whatever is drawn for those who do not know it.
    const QByteArray jpeg = written(rampImage({24, 16}), "jpg");
    ByteWriter movie;
    movie.fill(68), movie.u32be(86), movie.text("jpeg"), movie.fill(24), movie.u16be(24), movie.u16be(16);
    movie.fill(46), movie.u16be(24), movie.fill(2);
    movie.bytes += jpeg;
    ByteWriter length;
    length.u32be(quint32(movie.bytes.size()));
    const Result<Picture> photo =
        decodeHere(pict({0, 0, 24, 16}, even(hex("8200") + length.bytes + movie.bytes) + bitRun({0, 0, 24, 1}, '\0')));
    QVERIFY2(photo, qPrintable(photo.reason()));
    QCOMPARE(photo->pixels, decodeHere({jpeg, QStringLiteral("jpg")})->pixels);
}

void tst_Pic::damageIsAnswered_data()
{
    QTest::addColumn<EncodedFile>("file");
    QTest::newRow("Softimage") << softimage({6, 2}, hex("01 08 02 e0") + hex("00 08 01 10"),
        (hex("80 0002 102030") + hex("01 405060 708090") + hex("81 a0b0c0") + hex("04 80") + hex("02 ff")).repeated(2));
    QTest::newRow("Pictor") << pictorWithRuns();
    QTest::newRow("Pictor planes") << Pictor{{3, 2}, 1, 4, 3, hex("0001020304050607")}.with(
        0, hex("0080 0000 0020 00a0"));
    QTest::newRow("Radiance") << radiance("#?RADIANCE", "-Y 1 +X 8", hex("02020008 88ff 88 00 88 01 88 80"));
    QTest::newRow("Radiance, old") << radiance("#?RADIANCE", "+X 2 -Y 4", hex("ffffff88 01010103").repeated(2));
    // Without the empty 512 bytes, as the clipboard holds them.
    QTest::newRow("PICT palette") << pic(palettePict().bytes.mid(512));
    QTest::newRow("PICT strips") << pic(
        pict({0, 0, 64, 4}, bitRun({0, 0, 64, 2}, '\xff') + bitRun({0, 2, 64, 2}, '\x11')).bytes.mid(512));
}

void tst_Pic::damageIsAnswered()
{
    QFETCH(EncodedFile, file);
    QVERIFY(decodeHere(file));
    QCOMPARE(damage::unanswered(file), QString());
}

void tst_Pic::absurdClaimsAreRefused()
{
    QVERIFY(!decodeHere(softimage({65535, 65535}, hex("00 08 02 e0"), hex("80ffff000000"))));
    QVERIFY(!decodeHere(softimage({2, 2}, hex("01 08 02 80").repeated(100), hex("00"))));
    QVERIFY(!decodeHere(Pictor{{65535, 65535}, 8, 3}.with(1, hex("00"))));
    QVERIFY(!decodeHere(radiance("#?RGBE", "-Y 60000 +X 60000", hex("01010101"))));
    QVERIFY(!decodeHere(radiance("#?RGBE", "-Y -5 +X 8", hex("01010101"))));
    QVERIFY(!decodeHere(pict({0, 0, 32767, 32767}, hex("0000"))));
    // Many bitmaps of the largest kind on top of each other end before they cost minutes.
    QByteArray operation = hex("0098 0008") + rectangle({0, 0, 64, 30000}) + rectangle({0, 0, 64, 30000})
        + rectangle({0, 0, 8000, 8000}) + hex("0000") + QByteArray(30000, '\0');
    ignore(decodeHere(pict({0, 0, 8000, 8000}, operation.repeated(20))));
}

QTEST_GUILESS_MAIN(tst_Pic)
#include "tst_pic.moc"
