#include "engine/imagemaskcontrol.h"
#include "engine/ops/areaaverage.h"
#include "engine/ops/depth.h"
#include "engine/polyimage.h"
#include "support/support.h"

#include <QRandomGenerator>
#include <QtTest>

/// Depths and palettes, by the laws they obey on pictures of every kind.
class tst_depth : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyReductionObeysTheLaws_data();
    void everyReductionObeysTheLaws();
    void raisingKeepsEveryColour_data();
    void raisingKeepsEveryColour();
    void coloursAreCountedExactly();
    void twoColoursAreBlackAndWhiteUnlessThereAreTwo();
    void diffusionKeepsTheMeanOfAnArea();
    void transparencyIsAnEntryOrLiesOnWhite();
    void numbersThatAreNoDepthAreRefused();
    void areasAreAveragedInLight();
    void operationsLeaveTheCachedPictureAlone();
    void thumbnailsKeepProportionsAndGround();
};

namespace {

Picture pictureOf(const QImage &image, int bits = 0)
{
    Picture picture = Picture::fromImage(image);
    if (bits > 0)
        picture.info.bitsPerPixel = bits;
    picture.pixels.setDotsPerMeterX(4000);
    picture.metadata.comment = "stays";
    picture.iccProfile = "profile";
    return picture;
}

QImage noise(QSize size, QImage::Format format, bool grey = false)
{
    QRandomGenerator random(7);
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int value = random.bounded(256);
            image.setPixel(
                x, y, grey ? qRgb(value, value, value) : qRgba(value, random.bounded(256), x & 255, y & 255));
        }
    }
    return image.convertToFormat(format);
}

/// As every reader sees the pixels.
QImage seen(const Picture &picture)
{
    return picture.pixels.convertToFormat(QImage::Format_ARGB32);
}

int tableSize(const Picture &picture)
{
    return picture.pixels.format() == QImage::Format_Grayscale8 ? 256 : picture.pixels.colorCount();
}

/// Ten colours at places that make no ramp.
QImage tenColours()
{
    QImage image(50, 3, QImage::Format_RGB32);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 50; ++x)
            image.setPixel(x, y, qRgb(x % 10 * 25, 255 - x % 10 * 7, 90));
    return image;
}

}

void tst_depth::everyReductionObeysTheLaws_data()
{
    QTest::addColumn<Picture>("picture");
    const auto row = [](const char *name, const Picture &picture) { QTest::newRow(name) << picture; };
    row("a photograph's many colours", pictureOf(noise({90, 70}, QImage::Format_RGB32)));
    row("grey noise", pictureOf(noise({90, 70}, QImage::Format_RGB32, true)));
    row("grey bytes", pictureOf(rampImage({256, 4}, QImage::Format_Grayscale8)));
    row("graded transparency", pictureOf(noise({90, 70}, QImage::Format_ARGB32)));
    row("deep channels", pictureOf(rampImage({70, 70}, QImage::Format_RGBA64)));
    row("ten colours", pictureOf(tenColours()));
    row("a palette", pictureOf(rampImage({60, 60}, QImage::Format_Indexed8)));
    row("two colours", pictureOf(rampImage({61, 9}, QImage::Format_Mono)));
    row("one pixel", pictureOf(rampImage({1, 1})));
}

/// Never more colours than asked for; the depth asked for; exact where it can be; a second time changes nothing; greys
/// stay grey; what is told about the picture stays.
void tst_depth::everyReductionObeysTheLaws()
{
    QFETCH(Picture, picture);
    const bool grey = withBitsPerPixel(picture, 24)->pixels.allGray();
    struct Case
    {
        int colors;
        int bits;
    };
    for (const Case &wanted : {Case{256, 8}, Case{16, 4}, Case{7, 8}, Case{2, 1}, Case{2, 8}, Case{256, 4}}) {
        for (const bool diffuse : {false, true}) {
            const auto reduced = withReducedColors(picture, wanted.colors, wanted.bits, diffuse);
            QVERIFY2(reduced, qPrintable(reduced.reason()));
            const int most = qMin(wanted.colors, 1 << wanted.bits);
            QCOMPARE(reduced->info.bitsPerPixel, wanted.bits);
            QVERIFY(tableSize(*reduced) <= (wanted.bits == 1 ? 2 : most));
            QVERIFY(countColors(*reduced, 1000) <= most);
            QCOMPARE(reduced->pixels.format() == QImage::Format_Mono, wanted.bits == 1);
            if (picture.pixels.depth() <= 32 && countColors(picture, most) <= most)
                QCOMPARE(seen(*reduced), seen(picture));
            if (grey)
                QVERIFY(reduced->pixels.convertToFormat(QImage::Format_RGB32).allGray());
            const auto again = withReducedColors(*reduced, wanted.colors, wanted.bits, diffuse);
            QVERIFY(again);
            QCOMPARE(again->pixels, reduced->pixels);
            QCOMPARE(reduced->pixels.dotsPerMeterX(), 4000);
            QCOMPARE(reduced->metadata.comment, QByteArray("stays"));
            QCOMPARE(reduced->iccProfile, QByteArray("profile"));
        }
    }
}

void tst_depth::raisingKeepsEveryColour_data()
{
    QTest::addColumn<Picture>("picture");
    QTest::addColumn<int>("bits");
    const Picture mono = pictureOf(rampImage({61, 9}, QImage::Format_Mono));
    const Picture sixteen = *withReducedColors(pictureOf(rampImage({60, 60})), 16, 4, false);
    const Picture grey = pictureOf(rampImage({60, 60}, QImage::Format_Grayscale8));
    for (const int bits : {4, 8, 24, 32}) {
        QTest::addRow("from 1 to %d", bits) << mono << bits;
        QTest::addRow("from 4 to %d", bits) << sixteen << bits;
    }
    for (const int bits : {24, 32})
        QTest::addRow("from grey to %d", bits) << grey << bits;
    QTest::newRow("16 bits in all to 24") << pictureOf(rampImage({60, 60}), 16) << 24;
    QTest::newRow("the depth it has") << pictureOf(rampImage({60, 60})) << 24;
}

void tst_depth::raisingKeepsEveryColour()
{
    QFETCH(Picture, picture);
    QFETCH(int, bits);
    const auto raised = withBitsPerPixel(picture, bits);
    QVERIFY2(raised, qPrintable(raised.reason()));
    QCOMPARE(raised->info.bitsPerPixel, bits);
    QCOMPARE(raised->pixels.depth(), bits <= 8 ? 8 : 32);
    QCOMPARE(raised->pixels.format() == QImage::Format_ARGB32, bits == 32);
    QCOMPARE(seen(*raised), seen(picture));
    QVERIFY(raised->pixels.colorCount() <= 1 << qMin(bits, 8));
}

void tst_depth::coloursAreCountedExactly()
{
    QCOMPARE(countColors(pictureOf(tenColours()), 256), 10);
    QCOMPARE(countColors(pictureOf(tenColours()), 10), 10);
    QCOMPARE(countColors(pictureOf(tenColours()), 9), 10);
    QCOMPARE(countColors(pictureOf(tenColours()), 3), 4);
    QImage every(512, 512, QImage::Format_RGB32);
    for (int i = 0; i < 512 * 512; ++i)
        every.setPixel(i % 512, i / 512, qRgb(i & 255, i >> 8 & 255, i >> 16));
    QCOMPARE(countColors(pictureOf(every), 1 << 24), 512 * 512);
    QImage clear(4, 1, QImage::Format_ARGB32);
    clear.setPixel(0, 0, qRgba(1, 2, 3, 0));
    clear.setPixel(1, 0, qRgba(0, 0, 0, 0));
    clear.setPixel(2, 0, qRgba(0, 0, 0, 255));
    clear.setPixel(3, 0, qRgba(0, 0, 0, 128));
    QCOMPARE(countColors(pictureOf(clear), 256), 3);
    QImage deep(2, 1, QImage::Format_RGBA64);
    deep.setPixelColor(0, 0, QColor::fromRgba64(1000, 0, 0));
    deep.setPixelColor(1, 0, QColor::fromRgba64(1001, 0, 0));
    QCOMPARE(countColors(pictureOf(deep), 256), 2);
    QCOMPARE(countColors(Picture(), 256), 0);
    // What the table holds without a pixel of it does not count.
    QImage table(3, 3, QImage::Format_Indexed8);
    table.setColorTable({qRgb(1, 1, 1), qRgb(2, 2, 2), qRgb(1, 1, 1)});
    table.fill(2);
    QCOMPARE(countColors(pictureOf(table), 256), 1);
}

void tst_depth::twoColoursAreBlackAndWhiteUnlessThereAreTwo()
{
    const Picture ramp = pictureOf(rampImage({64, 64}, QImage::Format_Grayscale8));
    const auto plain = withReducedColors(ramp, 2, 1, false);
    QCOMPARE(plain->pixels.colorTable(), QList<QRgb>({qRgb(0, 0, 0), qRgb(255, 255, 255)}));
    for (int x = 0; x < 64; ++x) {
        const int level = qGray(ramp.pixels.pixel(x, 30));
        if (qAbs(level - 127) > 1)
            QCOMPARE(qGray(plain->pixels.pixel(x, 30)), level > 127 ? 255 : 0);
    }
    QCOMPARE(withBitsPerPixel(ramp, 1)->pixels, plain->pixels);
    QImage flag(8, 2, QImage::Format_RGB32);
    flag.fill(Qt::red);
    flag.setPixel(3, 1, qRgb(0, 0, 255));
    QCOMPARE(seen(*withReducedColors(pictureOf(flag), 2, 1, true)), seen(pictureOf(flag)));
}

void tst_depth::diffusionKeepsTheMeanOfAnArea()
{
    QImage grey(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            grey.setPixel(x, y, qRgb(60 + x, 60 + x, 60 + x));
    const auto mean = [](const Picture &picture) {
        qint64 sum = 0;
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                sum += qGray(picture.pixels.pixel(x, y));
        return double(sum) / (64 * 64);
    };
    const Picture picture = pictureOf(grey);
    QVERIFY(qAbs(mean(*withReducedColors(picture, 2, 1, true)) - mean(picture)) < 4);
    QVERIFY(qAbs(mean(*withReducedBits(picture, 4, true)) - mean(picture)) < 2);
    QVERIFY(mean(*withReducedColors(picture, 2, 1, false)) < mean(picture) - 10);
}

void tst_depth::transparencyIsAnEntryOrLiesOnWhite()
{
    QImage cut = noise({64, 64}, QImage::Format_RGB32).convertToFormat(QImage::Format_ARGB32);
    for (int i = 0; i < 64; ++i)
        cut.setPixel(i, i, qRgba(200, 10, 10, 0));
    const auto reduced = withReducedColors(pictureOf(cut), 16, 4, true);
    QCOMPARE(reduced->pixels.colorCount(), 16);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            QCOMPARE(qAlpha(reduced->pixels.pixel(x, y)), x == y ? 0 : 255);
    // Shades of it lie on white, as does everything where two colours are all there is.
    QImage shade = cut;
    shade.setPixel(0, 1, qRgba(0, 0, 0, 128));
    QVERIFY(!hasTransparency(*withReducedColors(pictureOf(shade), 16, 4, false)));
    const auto two = withReducedColors(pictureOf(cut), 2, 1, false);
    QCOMPARE(two->pixels.pixel(5, 5), qRgb(255, 255, 255));
    QCOMPARE(withBitsPerPixel(pictureOf(cut), 24)->pixels.pixel(5, 5), qRgb(255, 255, 255));
    QCOMPARE(qAlpha(withBitsPerPixel(pictureOf(cut), 32)->pixels.pixel(5, 5)), 0);
}

void tst_depth::numbersThatAreNoDepthAreRefused()
{
    const Picture picture = pictureOf(rampImage({8, 8}));
    for (const int bits : {-1, 0, 2, 16, 48})
        QVERIFY(!withBitsPerPixel(picture, bits) && !withReducedBits(picture, bits, false));
    QVERIFY(!withReducedBits(picture, 24, false));
    for (const int colors : {-5, 0, 1, 257})
        QVERIFY(!withReducedColors(picture, colors, 8, false));
    QVERIFY(!withReducedColors(Picture(), 16, 4, false) && !withBitsPerPixel(Picture(), 24));
    PolyImage empty;
    QVERIFY(!empty.PolyReduceToBits(4, true) && !empty.PolyLastError().isEmpty());
}

void tst_depth::areasAreAveragedInLight()
{
    QImage chess(100, 60, QImage::Format_RGB32);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 100; ++x)
            chess.setPixel(x, y, (x + y) % 2 ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
    const QImage half = areaAverage(chess, {50, 30});
    QCOMPARE(half.size(), QSize(50, 30));
    // Half of the light of white, not half of its number.
    QCOMPARE(half.pixel(7, 7), qRgb(188, 188, 188));
    // Cells that cut through pixels: one colour stays that colour, an edge stays where it is.
    QImage edge(101, 37, QImage::Format_RGB32);
    edge.fill(qRgb(13, 77, 200));
    for (int y = 0; y < 37; ++y)
        for (int x = 51; x < 101; ++x)
            edge.setPixel(x, y, qRgb(250, 3, 9));
    const QImage odd = areaAverage(edge, {31, 10});
    QCOMPARE(odd.pixel(0, 0), qRgb(13, 77, 200));
    QCOMPARE(odd.pixel(14, 9), qRgb(13, 77, 200));
    QCOMPARE(odd.pixel(16, 9), qRgb(250, 3, 9));
    QCOMPARE(odd.pixel(30, 0), qRgb(250, 3, 9));
    // What cannot be seen lends no colour.
    QImage clear(2, 1, QImage::Format_ARGB32);
    clear.setPixel(0, 0, qRgba(255, 0, 0, 0));
    clear.setPixel(1, 0, qRgba(0, 0, 255, 255));
    QCOMPARE(areaAverage(clear, {1, 1}).pixel(0, 0), qRgba(0, 0, 255, 128));
    QCOMPARE(areaAverage(edge, {500, 500}), edge);
}

void tst_depth::operationsLeaveTheCachedPictureAlone()
{
    const TemporaryHome home;
    const QString path = home.path() + QStringLiteral("ramp.png");
    QVERIFY(rampImage({80, 50}).save(path));
    PolyImage shown;
    PolyImage changed;
    QVERIFY(shown.PolyLoad(path) && changed.PolyLoad(path));
    QVERIFY(changed.PolyReduceToBits(4, true));
    QCOMPARE(changed.PolyLastError(), QString());
    QCOMPARE(changed.PolyBitsPerPixel(), 4);
    QVERIFY(changed.PolySetBitsPerPixel(8));
    QCOMPARE(changed.PolyBitsPerPixel(), 8);
    QCOMPARE(shown.PolyBitsPerPixel(), 24);
    QCOMPARE(shown.PolyPicture().pixels, rampImage({80, 50}));
    QVERIFY(!changed.PolySetBitsPerPixel(3));
    QVERIFY(!changed.PolyLastError().isEmpty());
    QCOMPARE(changed.PolyBitsPerPixel(), 8);
    QVERIFY(changed.PolyLoad(path));
    QCOMPARE(changed.PolyBitsPerPixel(), 24);
    QCOMPARE(changed.PolyPicture().pixels, rampImage({80, 50}));
}

void tst_depth::thumbnailsKeepProportionsAndGround()
{
    QImage wide(400, 100, QImage::Format_RGB32);
    wide.fill(Qt::red);
    ImageMaskControl mask;
    mask.setMaskThumbnailBackColor(Qt::green);
    mask.setMaskPicture(LoadedPicture::fromPicture(Picture::fromImage(wide)));
    mask.MaskMakeThumbnail(60, 60);
    const QImage flat = mask.MaskThumbnailPicture().pixels;
    QCOMPARE(flat.size(), QSize(60, 60));
    QCOMPARE(mask.MaskThumbnailPicture().info.bitsPerPixel, 24);
    for (int y = 0; y < 60; ++y)
        QCOMPARE(flat.pixelColor(30, y), QColor(y < 22 || y >= 37 ? Qt::green : Qt::red));
    QCOMPARE(flat.pixelColor(0, 30), QColor(Qt::red));
    QCOMPARE(flat.pixelColor(59, 30), QColor(Qt::red));
    mask.setMaskThumbnailStyle(true);
    mask.MaskMakeThumbnail(60, 60);
    const QImage framed = mask.MaskThumbnailPicture().pixels;
    QCOMPARE(framed.size(), QSize(60, 60));
    QVERIFY(framed.pixelColor(1, 1).lightness() > framed.pixelColor(58, 58).lightness());
    QCOMPARE(framed.pixelColor(2, 2), QColor(Qt::green));
    QCOMPARE(framed.pixelColor(2, 30), QColor(Qt::red));
    QCOMPARE(framed.pixelColor(57, 30), QColor(Qt::red));
    // A size that nothing can be made in.
    for (const QSize size : {QSize(0, 60), QSize(-1, -1), QSize(70000, 70000)}) {
        mask.MaskMakeThumbnail(size.width(), size.height());
        QVERIFY(mask.MaskThumbnailPicture().isNull());
    }
    mask.MaskMakeThumbnail(3, 3);
    QCOMPARE(mask.MaskThumbnailPicture().pixels.size(), QSize(3, 3));
}

QTEST_GUILESS_MAIN(tst_depth)
#include "tst_depth.moc"
