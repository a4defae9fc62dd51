#include "engine/ops/adjustments.h"
#include "engine/ops/depth.h"
#include "engine/ops/emboss.h"
#include "engine/polyimage.h"
#include "support/support.h"

#include <QRandomGenerator>
#include <QThreadPool>
#include <QtTest>

#include <cmath>
#include <limits>

/// Stretching, grey scale and relief, by the laws they obey and against the formulas taken pixel by pixel.
class tst_adjustments : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void operationsChangeNothingButColours_data();
    void operationsChangeNothingButColours();
    void aPaletteIsStretchedAsItsPixelsAre_data();
    void aPaletteIsStretchedAsItsPixelsAre();
    void pixelsFollowTheFormulas();
    void clippedPixelsAreCounted();
    void aSecondTimeChangesNothing();
    void oneColourStaysAndItsReliefIsTheGround();
    void greysAreAPaletteOfEightBits();
    void deepChannelsKeepTheirBits();
    void whatIsNotSeenHasNoSay();
    void bandsOfALargePictureMeet();
    void whatCannotBeDoneLeavesThePicture();
};

namespace {

using Operation = Result<Picture> (*)(const Picture &);
constexpr double usualClip = 0.005;

struct NamedOperation
{
    const char *name;
    Operation run;
};

const NamedOperation operations[]{
    {"auto contrast", [](const Picture &picture) { return withAutoContrast(picture, usualClip); }},
    {"auto level", [](const Picture &picture) { return withAutoLevel(picture, usualClip); }},
    {"grey scale", &inGreyScale},
    {"emboss", [](const Picture &picture) { return embossed(picture); }},
};

QImage noise(QSize size, QImage::Format format = QImage::Format_RGB32)
{
    QRandomGenerator random(3);
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y,
                qRgba(40 + random.bounded(90), 100 + random.bounded(100), random.bounded(60), random.bounded(256)));
    }
    return image.convertToFormat(format);
}

/// Few colours that are there unequally often, one of them never.
QImage paletted()
{
    QImage image(40, 30, QImage::Format_Indexed8);
    image.setColorTable({qRgb(30, 60, 90), qRgb(90, 40, 50), qRgb(0, 255, 0), qRgb(120, 130, 70), qRgb(60, 60, 60)});
    QRandomGenerator random(9);
    for (int y = 0; y < 30; ++y) {
        for (int x = 0; x < 40; ++x) {
            const int index = int(std::sqrt(random.bounded(25)));
            image.setPixel(x, y, uint(index == 2 ? 3 : index));
        }
    }
    return image;
}

QImage withClearEntry(QImage image)
{
    image.setColor(1, qRgba(250, 0, 250, 0));
    return image;
}

QImage twoColours()
{
    QImage image = rampImage({61, 9}, QImage::Format_Mono);
    image.setColorTable({qRgb(200, 40, 40), qRgb(60, 80, 100)});
    return image;
}

QImage seen(const QImage &image)
{
    return image.convertToFormat(QImage::Format_ARGB32);
}

int luminanceOf(QRgb pixel)
{
    return int(std::floor(0.299 * qRed(pixel) + 0.587 * qGreen(pixel) + 0.114 * qBlue(pixel) + 0.5 + 1e-9));
}

/// The range of values that stays when the same number is dropped from either end of their sorted row.
int stretchedValue(QList<int> values, int value, double clip)
{
    std::sort(values.begin(), values.end());
    const qsizetype lost = qsizetype(std::floor(clip * double(values.size())));
    const int low = values[lost];
    const int high = values[values.size() - 1 - lost];
    return low == high ? value : int(std::floor((qBound(low, value, high) - low) * 255.0 / (high - low) + 0.5));
}

}

Q_DECLARE_METATYPE(Operation)

void tst_adjustments::operationsChangeNothingButColours_data()
{
    QTest::addColumn<QImage>("image");
    QTest::addColumn<Operation>("operation");
    const std::pair<const char *, QImage> images[]{
        {"colours", noise({31, 17})},
        {"graded transparency", noise({31, 17}, QImage::Format_ARGB32)},
        {"deep channels", noise({31, 17}, QImage::Format_RGBA64)},
        {"grey bytes", noise({31, 17}, QImage::Format_Grayscale8)},
        {"a palette", paletted()},
        {"a palette with a clear entry", withClearEntry(paletted())},
        {"two colours", twoColours()},
        {"one pixel", noise({1, 1})},
        {"one row", noise({9, 1})},
    };
    for (const auto &[name, image] : images) {
        for (const NamedOperation &operation : operations)
            QTest::addRow("%s of %s", operation.name, name) << image << operation.run;
    }
}

void tst_adjustments::operationsChangeNothingButColours()
{
    QFETCH(QImage, image);
    QFETCH(Operation, operation);
    Picture picture = Picture::fromImage(image);
    picture.pixels.setDotsPerMeterX(4000);
    picture.pixels.setDotsPerMeterY(2000);
    picture.metadata.comment = "stays";
    picture.iccProfile = "profile";
    const auto changed = operation(picture);
    QVERIFY2(changed, qPrintable(changed.reason()));
    QCOMPARE(picture.pixels, image);
    QCOMPARE(changed->pixels.size(), image.size());
    QCOMPARE(changed->info.size, image.size());
    QCOMPARE(changed->pixels.dotsPerMeterX(), 4000);
    QCOMPARE(changed->pixels.dotsPerMeterY(), 2000);
    QCOMPARE(changed->metadata.comment, QByteArray("stays"));
    QCOMPARE(changed->iccProfile, QByteArray("profile"));
    const QImage before = image.convertToFormat(QImage::Format_RGBA64);
    const QImage after = changed->pixels.convertToFormat(QImage::Format_RGBA64);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            QCOMPARE(after.pixelColor(x, y).rgba64().alpha(), before.pixelColor(x, y).rgba64().alpha());
}

void tst_adjustments::aPaletteIsStretchedAsItsPixelsAre_data()
{
    QTest::addColumn<QImage>("image");
    QTest::newRow("a palette") << paletted();
    QTest::newRow("a palette with a clear entry") << withClearEntry(paletted());
    QTest::newRow("two colours") << twoColours();
    QTest::newRow("grey bytes") << noise({31, 17}, QImage::Format_Grayscale8);
}

void tst_adjustments::aPaletteIsStretchedAsItsPixelsAre()
{
    QFETCH(QImage, image);
    const Picture picture = Picture::fromImage(image);
    const Picture channels = Picture::fromImage(
        image.convertToFormat(hasTransparency(picture) ? QImage::Format_ARGB32 : QImage::Format_RGB32));
    for (const NamedOperation &operation : operations)
        QVERIFY2(seen(operation.run(picture)->pixels) == seen(operation.run(channels)->pixels), operation.name);
    for (const Operation operation : {operations[0].run, operations[1].run}) {
        const auto changed = operation(picture);
        QCOMPARE(changed->pixels.format(), image.format());
        QCOMPARE(changed->info.bitsPerPixel, picture.info.bitsPerPixel);
    }
}

void tst_adjustments::pixelsFollowTheFormulas()
{
    constexpr QSize size(37, 23);
    constexpr double clip = 0.02;
    const QImage image = noise(size);
    QList<int> reds;
    QList<int> greens;
    QList<int> luminances;
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            reds.append(qRed(image.pixel(x, y)));
            greens.append(qGreen(image.pixel(x, y)));
            luminances.append(luminanceOf(image.pixel(x, y)));
        }
    }
    const QImage contrast = withAutoContrast(Picture::fromImage(image), clip)->pixels;
    const QImage level = withAutoLevel(Picture::fromImage(image), clip)->pixels;
    const QImage grey = inGreyScale(Picture::fromImage(image))->pixels;
    const QImage relief = embossed(Picture::fromImage(image), 120)->pixels;
    const auto green = [&](int x, int y) {
        return qGreen(image.pixel(qBound(0, x, size.width() - 1), qBound(0, y, size.height() - 1)));
    };
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            QCOMPARE(qRed(contrast.pixel(x, y)), stretchedValue(luminances, qRed(pixel), clip));
            QCOMPARE(qGreen(contrast.pixel(x, y)), stretchedValue(luminances, qGreen(pixel), clip));
            QCOMPARE(qRed(level.pixel(x, y)), stretchedValue(reds, qRed(pixel), clip));
            QCOMPARE(qGreen(level.pixel(x, y)), stretchedValue(greens, qGreen(pixel), clip));
            QCOMPARE(qBlue(grey.pixel(x, y)), luminanceOf(pixel));
            const int light = green(x + 1, y) + green(x, y + 1) + green(x + 1, y + 1);
            const int shadow = green(x - 1, y) + green(x, y - 1) + green(x - 1, y - 1);
            QCOMPARE(qGreen(relief.pixel(x, y)), qBound(0, 120 + light - shadow, 255));
        }
    }
}

/// Of a thousand pixels, 0.005 lets five go at either end, not six.
void tst_adjustments::clippedPixelsAreCounted()
{
    for (const int outliers : {5, 6}) {
        QImage image(100, 10, QImage::Format_Grayscale8);
        image.fill(100);
        for (int i = 0; i < 400; ++i)
            image.scanLine(i % 10)[50 + i / 10] = 150;
        for (int i = 0; i < outliers; ++i) {
            image.scanLine(0)[i] = 20;
            image.scanLine(1)[i] = 220;
        }
        const QImage stretched = withAutoContrast(Picture::fromImage(image), usualClip)->pixels;
        QCOMPARE(int(stretched.constScanLine(5)[5]), outliers == 5 ? 0 : (80 * 255 + 100) / 200);
        QCOMPARE(int(stretched.constScanLine(5)[55]), outliers == 5 ? 255 : (130 * 255 + 100) / 200);
        QCOMPARE(int(stretched.constScanLine(0)[0]), 0);
        QCOMPARE(int(stretched.constScanLine(1)[0]), 255);
    }
}

void tst_adjustments::aSecondTimeChangesNothing()
{
    for (const QImage &image : {noise({31, 17}), noise({31, 17}, QImage::Format_ARGB32), paletted(), twoColours(),
             noise({31, 17}, QImage::Format_RGBA64), noise({31, 17}, QImage::Format_Grayscale8)}) {
        const Picture picture = Picture::fromImage(image);
        const auto level = withAutoLevel(picture, usualClip);
        QCOMPARE(withAutoLevel(*level, usualClip)->pixels, level->pixels);
        const auto grey = inGreyScale(picture);
        QCOMPARE(inGreyScale(*grey)->pixels, grey->pixels);
        const auto contrast = withAutoContrast(*grey, usualClip);
        QCOMPARE(withAutoContrast(*contrast, usualClip)->pixels, contrast->pixels);
        QCOMPARE(withAutoLevel(*grey, usualClip)->pixels, contrast->pixels);
    }
}

void tst_adjustments::oneColourStaysAndItsReliefIsTheGround()
{
    for (const auto format : {QImage::Format_RGB32, QImage::Format_Indexed8, QImage::Format_Grayscale8,
             QImage::Format_Mono, QImage::Format_RGBA64}) {
        QImage image(12, 9, QImage::Format_RGB32);
        image.fill(qRgb(70, 70, 70));
        image = image.convertToFormat(format);
        const Picture picture = Picture::fromImage(image);
        QCOMPARE(withAutoContrast(picture, usualClip)->pixels, image);
        QCOMPARE(withAutoLevel(picture, 0)->pixels, image);
        QCOMPARE(seen(inGreyScale(picture)->pixels), seen(image));
        QImage ground(12, 9, QImage::Format_ARGB32);
        ground.fill(qRgb(128, 128, 128));
        if (format != QImage::Format_Mono) // which Qt dithers
            QCOMPARE(seen(embossed(picture)->pixels), ground);
    }
}

void tst_adjustments::greysAreAPaletteOfEightBits()
{
    const auto bitsOf = [](const Picture &picture) { return inGreyScale(picture)->info.bitsPerPixel; };
    const auto formatOf = [](const Picture &picture) { return inGreyScale(picture)->pixels.format(); };
    for (const QImage &image :
        {noise({9, 9}), noise({9, 9}, QImage::Format_RGB32).convertToFormat(QImage::Format_ARGB32), paletted()}) {
        QCOMPARE(bitsOf(Picture::fromImage(image)), 8);
        QCOMPARE(formatOf(Picture::fromImage(image)), QImage::Format_Grayscale8);
    }
    // What has no room in it keeps its form.
    QCOMPARE(formatOf(Picture::fromImage(noise({9, 9}, QImage::Format_ARGB32))), QImage::Format_ARGB32);
    QCOMPARE(bitsOf(Picture::fromImage(noise({9, 9}, QImage::Format_ARGB32))), 32);
    QCOMPARE(formatOf(Picture::fromImage(withClearEntry(paletted()))), QImage::Format_Indexed8);
    QCOMPARE(bitsOf(Picture::fromImage(twoColours())), 1);
    Picture sixteen = Picture::fromImage(paletted());
    sixteen.info.bitsPerPixel = 4;
    QCOMPARE(bitsOf(sixteen), 4);
    // An 8-bit grey needs no further reduction, which would lose the order of its palette.
    const auto grey = inGreyScale(Picture::fromImage(noise({9, 9})));
    QCOMPARE(withReducedColors(*grey, 256, 8, true)->pixels, grey->pixels);
    QImage primaries(3, 1, QImage::Format_RGB32);
    for (int i = 0; i < 3; ++i)
        primaries.setPixel(i, 0, 0xff000000 | 0xffu << 8 * (2 - i));
    const QImage greys = inGreyScale(Picture::fromImage(primaries))->pixels;
    QCOMPARE(QList<int>({greys.constScanLine(0)[0], greys.constScanLine(0)[1], greys.constScanLine(0)[2]}),
        QList<int>({76, 150, 29}));
}

void tst_adjustments::deepChannelsKeepTheirBits()
{
    QImage image(11, 1, QImage::Format_RGBA64);
    for (int x = 0; x < 11; ++x)
        reinterpret_cast<QRgba64 *>(image.scanLine(0))[x] = qRgba64(quint16(1000 + x), quint16(1000 + x), 1000, 65535);
    Picture picture = Picture::fromImage(image);
    picture.info.bitsPerPixel = 48;
    const auto stretched = withAutoLevel(picture, 0);
    QCOMPARE(stretched->info.bitsPerPixel, 48);
    const auto *const row = reinterpret_cast<const QRgba64 *>(stretched->pixels.constScanLine(0));
    QCOMPARE(row[0].red(), quint16(0));
    QCOMPARE(row[3].red(), quint16(19661)); // 3 of 10 parts of 65535
    QCOMPARE(row[10].green(), quint16(65535));
    QCOMPARE(row[5].blue(), quint16(1000));
    const auto relief = embossed(picture);
    QCOMPARE(relief->info.bitsPerPixel, 48);
    const auto *const slope = reinterpret_cast<const QRgba64 *>(relief->pixels.constScanLine(0));
    QCOMPARE(slope[5].red(), quint16(128 * 257 + 4)); // right, lower right, left, upper left: two levels each way
    QCOMPARE(slope[5].blue(), quint16(128 * 257));
    const auto grey = inGreyScale(picture);
    QCOMPARE(grey->info.bitsPerPixel, 8);
    QCOMPARE(grey->pixels.constScanLine(0)[0], uchar(4)); // 1000 / 257
}

/// The colour under full transparency neither widens the range nor throws a shadow.
void tst_adjustments::whatIsNotSeenHasNoSay()
{
    QImage image(20, 20, QImage::Format_ARGB32);
    image.fill(qRgb(128, 128, 128));
    for (int i = 0; i < 20; ++i) {
        image.setPixel(i, 3, qRgba(0, 255, 0, 0));
        image.setPixel(i, 7, qRgba(255, 255, 255, 0));
        image.setPixel(i, 12, qRgb(120, 130, 140));
    }
    const Picture picture = Picture::fromImage(image);
    const QImage level = withAutoLevel(picture, 0)->pixels;
    QCOMPARE(level.pixel(5, 12), qRgb(0, 255, 255));
    QCOMPARE(level.pixel(5, 1), qRgb(255, 0, 0));
    const QImage relief = embossed(picture)->pixels;
    for (int y = 0; y < 10; ++y)
        QCOMPARE(relief.pixel(9, y) & 0xffffff, QRgb(0x808080));
    image.fill(qRgba(10, 20, 30, 0));
    QCOMPARE(withAutoContrast(Picture::fromImage(image), 0)->pixels, image);
}

/// Several threads give what one gives.
void tst_adjustments::bandsOfALargePictureMeet()
{
    QImage image = noise({64, 64}).scaled(1600, 1300);
    for (int y = 0; y < image.height(); ++y)
        image.setPixel(y, y, qRgb(y & 255, 0, y % 97));
    const Picture picture = Picture::fromImage(image);
    QThreadPool &pool = *QThreadPool::globalInstance();
    const int threads = pool.maxThreadCount();
    for (const NamedOperation &operation : operations) {
        pool.setMaxThreadCount(1);
        const QImage alone = operation.run(picture)->pixels;
        pool.setMaxThreadCount(4);
        QVERIFY2(operation.run(picture)->pixels == alone, operation.name);
    }
    pool.setMaxThreadCount(threads);
}

void tst_adjustments::whatCannotBeDoneLeavesThePicture()
{
    PolyImage control;
    QVERIFY(!control.PolyAutoContrast(usualClip) && !control.PolyAutoLevel(usualClip));
    QVERIFY(!control.PolyGrayScale() && !control.PolyEmboss());
    QCOMPARE(control.PolyLastError(), QStringLiteral("There is no image."));
    const QImage image = noise({20, 10});
    control.setPolyPicture(LoadedPicture::fromPicture(Picture::fromImage(image)));
    for (const double clip : {-0.1, 0.5, 3.0, std::numeric_limits<double>::quiet_NaN()}) {
        QVERIFY(!control.PolyAutoContrast(clip) && !control.PolyAutoLevel(clip));
        QVERIFY(!control.PolyLastError().isEmpty());
        QCOMPARE(control.PolyPicture().pixels, image);
    }
    for (const NamedOperation &operation : operations)
        QVERIFY(!operation.run(Picture()));
    QVERIFY(control.PolyAutoLevel(usualClip) && control.PolyAutoContrast(usualClip));
    QVERIFY(control.PolyGrayScale());
    QCOMPARE(control.PolyLastError(), QString());
    QCOMPARE(control.PolyBitsPerPixel(), 8);
    QVERIFY(control.PolyReduceColors(256, 8, false) && control.PolyEmboss());
    QCOMPARE(control.PolyBitsPerPixel(), 8);
    QCOMPARE(control.PolyPicture().pixels.format(), QImage::Format_Grayscale8);
}

QTEST_GUILESS_MAIN(tst_adjustments)
#include "tst_adjustments.moc"
