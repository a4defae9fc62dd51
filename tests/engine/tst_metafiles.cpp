#include "engine/codec.h"
#include "engine/decodehere.h"
#include "engine/metafilewriter.h"
#include "support/support.h"

#include <QTest>

namespace {

constexpr int red = 0x0000ff; ///< as records hold colours
constexpr int green = 0x00ff00;
constexpr int blue = 0xff0000;
constexpr QRgb redPixel = 0xffff0000;
constexpr QRgb greenPixel = 0xff00ff00;
constexpr QRgb bluePixel = 0xff0000ff;
constexpr QRgb white = 0xffffffff;
constexpr QRgb black = 0xff000000;

/// What must be where.
struct Spot
{
    QPoint at;
    QRgb color;
};
using Spots = QList<Spot>;

Result<Picture> drawn(const QByteArray &bytes, QSize target = {})
{
    return decodeHere({bytes, QString()}, {target, -1, 0});
}

QImage pixels(const EmfWriter &writer)
{
    const Result<Picture> picture = drawn(writer.bytes());
    return picture && !picture->partial ? picture->pixels : QImage();
}

/// The box around everything that is not white.
QRect inked(const QImage &image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != white)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

/// Two pixels wide, two high: red, green, blue, black.
QImage fourColors()
{
    QImage image(2, 2, QImage::Format_RGB32);
    image.setPixel(0, 0, redPixel);
    image.setPixel(1, 0, greenPixel);
    image.setPixel(0, 1, bluePixel);
    image.setPixel(1, 1, black);
    return image;
}

QImage plain(QRgb color)
{
    QImage image(4, 4, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

EmfWriter filled(int color)
{
    EmfWriter writer;
    writer.noPen().brush(1, color);
    return writer;
}

}

/// Windows metafiles made in code: what each record draws, and where.
class tst_Metafiles : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void theHeaderTellsTheSize_data();
    void theHeaderTellsTheSize();
    void smallWishesAreDrawnSmall();
    void recordsDrawWhatTheySay_data();
    void recordsDrawWhatTheySay();
    void wmfRecordsDrawWhatTheySay_data();
    void wmfRecordsDrawWhatTheySay();
    void textStandsWhereItBelongs();
    void textIsTurnedSpacedAndClipped();
};

void tst_Metafiles::initTestCase()
{
    useBuiltModules();
    ignore(fullCodecTable());
    QVERIFY2(codecModuleFailure().isEmpty(), qPrintable(codecModuleFailure()));
}

void tst_Metafiles::theHeaderTellsTheSize_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("size");
    const QByteArray window = WmfWriter({}, 0).add(0x20c, {70, 90}).bytes();
    QTest::newRow("the bounds, last pixel included") << EmfWriter(QRect(10, 20, 100, 60)).bytes() << QSize(100, 60);
    // A hundredth of a millimetre each, on a device of ten pixels a millimetre.
    QTest::newRow("the frame of empty bounds")
        << EmfWriter(QRect(0, 0, 0, 0), QRect(0, 0, 500, 300)).bytes() << QSize(50, 30);
    QTest::newRow("absurd bounds are scaled down")
        << EmfWriter(QRect(0, 0, 2000000000, 1000000000)).bytes() << QSize(8192, 4096);
    QTest::newRow("the placeable box at 96 pixels an inch")
        << WmfWriter(QRect(-50, 0, 300, 150), 144).bytes() << QSize(200, 100);
    QTest::newRow("the window of a plain WMF") << window << QSize(90, 70);
    QTest::newRow("a window in small units")
        << WmfWriter({}, 0).add(0x20c, {10240, 20480}).bytes() << QSize(2048, 1024);
    QTest::newRow("what a plain WMF draws")
        << WmfWriter({}, 0).brush(0).rectangle(20, 10, 120, 60).bytes() << QSize(100, 50);
}

void tst_Metafiles::theHeaderTellsTheSize()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, size);
    const Result<Picture> picture = drawn(bytes, QSize(100, 100));
    QVERIFY2(picture, qPrintable(picture.reason()));
    const Result<ImageInfo> info = probeHere({bytes, QString()});
    QVERIFY2(info, qPrintable(info.reason()));
    QVERIFY(std::abs(picture->info.size.width() - size.width()) <= 1);
    QVERIFY(std::abs(picture->info.size.height() - size.height()) <= 1);
    QCOMPARE(info->size, picture->info.size);
    QCOMPARE(info->bitsPerPixel, 24);
    QCOMPARE(picture->info.bitsPerPixel, 24);
    QCOMPARE(info->codec, picture->info.codec);
}

void tst_Metafiles::smallWishesAreDrawnSmall()
{
    const QByteArray bytes = filled(red).rectangle(50, 0, 100, 60).bytes();
    const Result<Picture> small = drawn(bytes, QSize(40, 40));
    QVERIFY(small);
    QCOMPARE(small->info.size, QSize(100, 60));
    QCOMPARE(small->pixels.size(), QSize(40, 24));
    QCOMPARE(small->pixels.pixel(19, 12), white);
    QCOMPARE(small->pixels.pixel(20, 23), redPixel);
    QCOMPARE(drawn(bytes, QSize(400, 400))->pixels.size(), QSize(100, 60));
}

void tst_Metafiles::recordsDrawWhatTheySay_data()
{
    QTest::addColumn<EmfWriter>("writer");
    QTest::addColumn<Spots>("spots");
    const auto row = [](const char *name, const EmfWriter &writer, const Spots &spots) {
        QTest::newRow(name) << writer << spots;
    };
    const auto fill = [] { return filled(red); };

    row("a rectangle covers its pixels and no others", fill().rectangle(10, 10, 20, 20),
        {{{10, 10}, redPixel}, {{19, 19}, redPixel}, {{20, 19}, white}, {{9, 10}, white}, {{15, 20}, white}});
    row("bounds that start elsewhere",
        EmfWriter(QRect(100, 50, 40, 40)).noPen().brush(1, red).rectangle(110, 60, 120, 70),
        {{{10, 10}, redPixel}, {{9, 10}, white}, {{20, 10}, white}});
    row("an ellipse", fill().add(42, {0, 0, 100, 60}),
        {{{50, 30}, redPixel}, {{97, 30}, redPixel}, {{3, 3}, white}, {{96, 56}, white}});
    row("a rounded rectangle", fill().add(44, {0, 0, 100, 60, 30, 30}), {{{1, 1}, white}, {{50, 1}, redPixel}});
    row("a pie from the right to the top is a quarter", fill().add(47, {0, 0, 60, 60, 60, 30, 30, 0}),
        {{{40, 20}, redPixel}, {{20, 20}, white}, {{40, 40}, white}});
    row("a pie clockwise is the rest", fill().add(57, {2}).add(47, {0, 0, 60, 60, 60, 30, 30, 0}),
        {{{40, 20}, white}, {{20, 20}, redPixel}, {{40, 40}, redPixel}});
    row("a chord", fill().add(46, {0, 0, 60, 60, 60, 30, 0, 30}), {{{30, 20}, redPixel}, {{30, 40}, white}});
    row("a polygon closes itself", fill().points(86, {0, 0, 40, 0, 0, 40}), {{{5, 5}, redPixel}, {{30, 30}, white}});
    const QByteArray rings("\0\0\0\0\50\0\0\0\50\0\50\0\0\0\50\0\12\0\12\0\36\0\12\0\36\0\36\0\12\0\36\0", 32);
    row("polygons in one another leave a hole", fill().add(91, {0, 0, 0, 0, 2, 8, 4, 4}, rings),
        {{{5, 5}, redPixel}, {{20, 20}, white}});
    row("but not by the winding rule", fill().add(19, {2}).add(91, {0, 0, 0, 0, 2, 8, 4, 4}, rings),
        {{{20, 20}, redPixel}});
    row("lines of one pixel go through their pixels", EmfWriter().pen(1, blue).add(27, {10, 20}).add(54, {50, 20}),
        {{{10, 20}, bluePixel}, {{49, 20}, bluePixel}, {{30, 19}, white}, {{30, 21}, white}});
    row("a wide pen scales with the world",
        EmfWriter().pen(1, blue, 5).add(35, {0x40000000, 0, 0, 0x40000000, 0, 0}).points(87, {5, 15, 45, 15}),
        {{{50, 26}, bluePixel}, {{50, 34}, bluePixel}, {{50, 22}, white}, {{50, 38}, white}});
    row("dashes leave gaps", EmfWriter().pen(1, blue, 0, 1).points(87, {0, 5, 99, 5}),
        {{{5, 5}, bluePixel}, {{21, 5}, white}, {{30, 5}, bluePixel}});
    row("a curve ends where it says", EmfWriter().pen(1, blue, 3).points(85, {0, 30, 0, 0, 98, 0, 98, 30}),
        {{{0, 28}, bluePixel}, {{98, 28}, bluePixel}, {{49, 8}, bluePixel}, {{49, 30}, white}});
    row("a pixel", EmfWriter().add(15, {7, 8, green}), {{{7, 8}, greenPixel}, {{8, 8}, white}, {{6, 8}, white}});
    row("a path of lines is filled as one figure",
        fill()
            .add(59)
            .add(27, {0, 0})
            .add(54, {40, 0})
            .add(54, {40, 40})
            .add(54, {0, 40})
            .add(61)
            .add(60)
            .add(62, {0, 0, 0, 0}),
        {{{20, 20}, redPixel}, {{39, 39}, redPixel}, {{41, 20}, white}});
    row("a dropped path draws nothing", fill().add(59).rectangle(0, 0, 40, 40).add(68).add(62), {{{20, 20}, white}});
    row("a region", fill().add(74, {0, 0, 0, 0, 48, 32, 1, 1, 16, 0, 0, 0, 0, 10, 10, 30, 30}),
        {{{10, 10}, redPixel}, {{29, 29}, redPixel}, {{30, 29}, white}});
    row("a gradient goes from colour to colour",
        EmfWriter().add(118, {0, 0, 0, 0, 2, 1, 0, 0, 0, 0xff00, 0, 100, 60, 0, 0xff00, 0, 1}),
        {{{0, 30}, 0xfffe0001}, {{99, 30}, 0xff0100fe}});
    row("a hatch lets the ground through when it is not opaque",
        EmfWriter().noPen().add(18, {1}).brush(1, red, 2, 0).rectangle(0, 0, 40, 40),
        {{{3, 0}, white}, {{3, 2}, white}});

    row("a window on a viewport", fill().add(17, {8}).add(9, {10, 10}).add(11, {100, 60}).rectangle(5, 5, 10, 10),
        {{{50, 30}, redPixel}, {{99, 59}, redPixel}, {{49, 30}, white}, {{50, 29}, white}});
    row("extents count only where the mode scales", fill().add(9, {10, 10}).add(11, {100, 60}).rectangle(5, 5, 10, 10),
        {{{5, 5}, redPixel}, {{50, 30}, white}});
    row("an isotropic map keeps squares square",
        fill().add(17, {7}).add(9, {10, 10}).add(11, {100, 60}).rectangle(0, 0, 5, 5),
        {{{29, 29}, redPixel}, {{31, 10}, white}, {{10, 31}, white}});
    row("metric units go upwards", fill().add(17, {3}).add(12, {0, 60}).rectangle(0, 0, 100, 200),
        {{{5, 45}, redPixel}, {{5, 38}, white}, {{11, 45}, white}});
    row("multiplying from the left comes first",
        fill()
            .add(35, {0x40000000, 0, 0, 0x40000000, 0, 0})
            .add(36, {0x3f800000, 0, 0, 0x3f800000, 0x41200000, 0, 2})
            .rectangle(0, 0, 5, 5),
        {{{20, 5}, redPixel}, {{29, 9}, redPixel}, {{15, 5}, white}});
    row("from the right last",
        fill()
            .add(35, {0x40000000, 0, 0, 0x40000000, 0, 0})
            .add(36, {0x3f800000, 0, 0, 0x3f800000, 0x41200000, 0, 3})
            .rectangle(0, 0, 5, 5),
        {{{10, 5}, redPixel}, {{19, 9}, redPixel}, {{20, 5}, white}});
    row("restoring brings all back",
        fill()
            .add(33)
            .add(35, {0x40000000, 0, 0, 0x40000000, 0, 0})
            .brush(2, blue)
            .add(30, {0, 0, 1, 1})
            .add(33)
            .add(34, {-2})
            .rectangle(0, 0, 10, 10),
        {{{5, 5}, redPixel}, {{15, 5}, white}});
    row("to a level counted from the first", fill().add(33).brush(2, blue).add(33).add(34, {1}).rectangle(0, 0, 9, 9),
        {{{5, 5}, redPixel}});
    row("an object that is gone stays in use", fill().add(40, {1}).rectangle(0, 0, 9, 9), {{{5, 5}, redPixel}});
    row("but is not selected again", fill().brush(2, blue).add(40, {1}).select(1).rectangle(0, 0, 9, 9),
        {{{5, 5}, bluePixel}});

    row("exclusive or twice is nothing", filled(green).add(20, {7}).rectangle(0, 0, 20, 20).rectangle(10, 0, 30, 20),
        {{{5, 5}, 0xffff00ff}, {{15, 5}, white}, {{25, 5}, 0xffff00ff}});
    row("inverting", fill().rectangle(0, 0, 20, 20).add(20, {6}).rectangle(0, 0, 20, 20), {{{5, 5}, 0xff00ffff}});
    row("and", fill().rectangle(0, 0, 20, 20).add(20, {9}).brush(2, blue).rectangle(0, 0, 20, 20), {{{5, 5}, black}});
    const QRect both(0, 0, 2, 2);
    row("blackness, whiteness and the pattern",
        fill()
            .add(76, {0, 0, 0, 0, 0, 0, 30, 30, 0x42})
            .add(76, {0, 0, 0, 0, 10, 0, 10, 30, 0xff0062})
            .add(76, {0, 0, 0, 0, 20, 0, 10, 30, 0xf00021}),
        {{{5, 5}, black}, {{15, 5}, white}, {{25, 5}, redPixel}});
    row("a bitmap with its lowest row first", EmfWriter().stretch(QRect(10, 10, 40, 40), fourColors(), both),
        {{{15, 15}, redPixel}, {{45, 15}, greenPixel}, {{15, 45}, bluePixel}, {{45, 45}, black}, {{9, 15}, white}});
    row("turned over", EmfWriter().stretch(QRect(QPoint(50, 50), QPoint(9, 9)), fourColors(), both),
        {{{45, 45}, redPixel}, {{15, 15}, black}});
    row("its lower right part", EmfWriter().stretch(QRect(0, 0, 40, 40), fourColors(), QRect(1, 0, 1, 1)),
        {{{5, 5}, black}, {{35, 35}, black}});
    row("bits of bitmap and ground",
        fill().rectangle(0, 0, 40, 40).stretch(QRect(0, 0, 40, 40), fourColors(), both, 0x8800c6),
        {{{5, 5}, redPixel}, {{35, 5}, black}, {{5, 35}, black}});
    // The brush's bits where the bitmap has ones, the ground's where it has none.
    row("bitmap, ground and pattern", filled(green).stretch(QRect(0, 0, 40, 40), fourColors(), both, 0x00e20746),
        {{{35, 35}, white}, {{5, 5}, 0xff00ffff}});
    row("half transparent", EmfWriter().blit(114, QRect(0, 0, 20, 20), plain(0x80000080), 0x01ff0000),
        {{{5, 5}, 0xff7f7fff}});
    row("a colour is left out", fill().rectangle(0, 0, 40, 40).blit(116, QRect(0, 0, 40, 40), fourColors(), green),
        {{{5, 5}, redPixel}, {{35, 5}, redPixel}, {{5, 35}, bluePixel}});

    row("clipped to a box", fill().add(30, {10, 10, 20, 20}).rectangle(0, 0, 60, 60),
        {{{10, 10}, redPixel}, {{20, 10}, white}, {{9, 10}, white}});
    row("clips narrow each other", fill().add(30, {10, 10, 30, 30}).add(29, {20, 0, 60, 60}).rectangle(0, 0, 60, 60),
        {{{15, 15}, redPixel}, {{25, 15}, white}});
    row("clipped to a path",
        fill().add(59).points(86, {0, 0, 60, 0, 0, 60}).add(60).add(67, {5}).rectangle(0, 0, 60, 60),
        {{{10, 10}, redPixel}, {{50, 50}, white}});
    row("a path within a box within a restored state",
        fill()
            .add(33)
            .add(59)
            .points(86, {0, 0, 60, 0, 0, 60})
            .add(60)
            .add(67, {1})
            .add(30, {0, 0, 20, 20})
            .rectangle(0, 0, 60, 60)
            .add(34, {-1})
            .rectangle(80, 0, 90, 10),
        {{{10, 10}, redPixel}, {{25, 10}, white}, {{18, 50}, white}, {{85, 5}, redPixel}});
    row("regions are added and removed",
        fill()
            .add(75, {48, 5, 32, 1, 1, 16, 0, 0, 0, 0, 0, 0, 10, 10})
            .add(75, {48, 2, 32, 1, 1, 16, 0, 0, 0, 0, 20, 0, 30, 10})
            .rectangle(0, 0, 60, 60)
            .add(75, {0, 5})
            .rectangle(50, 50, 60, 60),
        {{{5, 5}, redPixel}, {{15, 5}, white}, {{25, 5}, redPixel}, {{55, 55}, redPixel}});

    const QByteArray start = plusRecord(0x4001, 0, {0, 0, 96, 96});
    const QByteArray box = plusRecord(0x400a, 0xc000, {int(redPixel), 1, 0, 0x000a000a});
    row("EMF+ alone, its world and its boxes",
        EmfWriter().plus(start + plusRecord(0x402d, 0, {floatBits(20), floatBits(30)}) + box),
        {{{20, 30}, redPixel}, {{29, 39}, redPixel}, {{19, 30}, white}, {{30, 39}, white}});
    row("plain records beside EMF+ count only where they are asked for",
        filled(blue)
            .plus(start)
            .rectangle(0, 0, 50, 50)
            .plus(plusRecord(0x4004, 0, {}))
            .rectangle(60, 0, 70, 10)
            .plus(box),
        {{{5, 5}, redPixel}, {{40, 40}, white}, {{65, 5}, bluePixel}});
    row("a file that holds everything twice",
        filled(blue).plus(plusRecord(0x4001, 1, {0, 0, 96, 96}) + box).rectangle(0, 0, 5, 5),
        {{{2, 2}, bluePixel}, {{8, 8}, white}});
    row("an EMF+ path by a pen in a clip",
        EmfWriter().plus(start + plusRecord(0x4008, 0x201, {0, 0, 0, 0, floatBits(6), 0, 0, int(bluePixel)})
            + plusRecord(0x4008, 0x302, {0, 2, 0x4000, 0x00140000, 0x00140064, 0x0100})
            + plusRecord(0x4032, 0x100, {0, 0, floatBits(50), floatBits(50)}) + plusRecord(0x4015, 2, {1})),
        {{{20, 18}, bluePixel}, {{20, 22}, bluePixel}, {{20, 26}, white}, {{60, 20}, white}});
    row("an EMF+ gradient",
        EmfWriter().plus(start
            + plusRecord(
                0x4008, 0x100, {0, 4, 0, 4, 0, 0, floatBits(100), floatBits(10), int(redPixel), int(bluePixel), 0, 0})
            + plusRecord(0x400a, 0x4000, {0, 1, 0, 0x003c0064})),
        {{{0, 5}, 0xfffe0001}, {{99, 5}, 0xff0100fe}});
}

void tst_Metafiles::recordsDrawWhatTheySay()
{
    QFETCH(EmfWriter, writer);
    QFETCH(Spots, spots);
    const QImage image = pixels(writer);
    QVERIFY(!image.isNull());
    for (const Spot &spot : spots) {
        const QRgb pixel = image.pixel(spot.at);
        const int difference = std::abs(qRed(pixel) - qRed(spot.color)) + std::abs(qGreen(pixel) - qGreen(spot.color))
            + std::abs(qBlue(pixel) - qBlue(spot.color));
        QVERIFY2(difference <= 8,
            qPrintable(QStringLiteral("%1, %2: %3").arg(spot.at.x()).arg(spot.at.y()).arg(pixel, 8, 16)));
    }
}

void tst_Metafiles::wmfRecordsDrawWhatTheySay_data()
{
    QTest::addColumn<WmfWriter>("writer");
    QTest::addColumn<Spots>("spots");
    const auto row = [](const char *name, const WmfWriter &writer, const Spots &spots) {
        QTest::newRow(name) << writer << spots;
    };
    const auto start = [] {
        return WmfWriter().add(0x2fa, {5, 0, 0, 0, 0}).brush(red).add(0x12d, {0}).add(0x12d, {1});
    };

    row("the box is the window until there is one", start().rectangle(10, 10, 20, 20),
        {{{10, 10}, redPixel}, {{19, 19}, redPixel}, {{20, 19}, white}});
    row("the window fills the picture", start().add(0x20b, {-10, -10}).add(0x20c, {20, 20}).rectangle(0, 0, 10, 10),
        {{{50, 30}, redPixel}, {{99, 59}, redPixel}, {{49, 30}, white}});
    row("a window upside down", start().add(0x20b, {60, 0}).add(0x20c, {-60, 100}).rectangle(0, 0, 10, 10),
        {{{5, 55}, redPixel}, {{5, 45}, white}});
    row("a new object takes the lowest free place",
        start()
            .brush(green)
            .add(0x1f0, {1})
            .brush(blue)
            .add(0x12d, {1})
            .rectangle(0, 0, 9, 9)
            .add(0x12d, {2})
            .rectangle(20, 0, 29, 9),
        {{{5, 5}, bluePixel}, {{25, 5}, greenPixel}});
    row("polygons", start().add(0x538, {2, 3, 3, 0, 0, 20, 0, 0, 20, 50, 0, 70, 0, 50, 20}),
        {{{3, 3}, redPixel}, {{53, 3}, redPixel}, {{40, 3}, white}});
    row("a pie runs anticlockwise", start().add(0x81a, {0, 30, 30, 60, 60, 60, 0, 0}),
        {{{40, 20}, redPixel}, {{20, 20}, white}});
    row("a region clips",
        start()
            .add(0x6ff, {0, 6, 0, 0, 0, 1, 2, 0, 0, 9, 9, 2, 0, 10, 0, 10, 2})
            .add(0x12c, {2})
            .rectangle(0, 0, 50, 50),
        {{{5, 5}, redPixel}, {{15, 5}, white}});
    const QByteArray bitmap = dibHeader(fourColors()) + dibPixels(fourColors());
    row("a bitmap", start().add(0xf43, {0x20, 0xcc, 0, 2, 2, 0, 0, 40, 40, 10, 20}, bitmap),
        {{{25, 15}, redPixel}, {{55, 15}, greenPixel}, {{25, 45}, bluePixel}, {{15, 15}, white}});
    row("a bitmap as a brush", start().add(0x142, {3, 0}, bitmap).add(0x12d, {2}).rectangle(0, 0, 8, 8),
        {{{0, 0}, redPixel}, {{1, 0}, greenPixel}, {{6, 7}, bluePixel}});
    row("a pattern without a bitmap", start().add(0x940, {0x21, 0xf0, 0, 0, 0, 20, 20, 5, 5}),
        {{{5, 5}, redPixel}, {{24, 24}, redPixel}, {{25, 24}, white}});
}

void tst_Metafiles::wmfRecordsDrawWhatTheySay()
{
    QFETCH(WmfWriter, writer);
    QFETCH(Spots, spots);
    const Result<Picture> picture = drawn(writer.bytes());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    for (const Spot &spot : spots)
        QCOMPARE(picture->pixels.pixel(spot.at), spot.color);
}

void tst_Metafiles::textStandsWhereItBelongs()
{
    const auto start = [](int align) {
        EmfWriter writer(QRect(0, 0, 300, 200));
        writer.font(1, -40).add(18, {1}).add(22, {align});
        return writer;
    };
    const QRect atBase = inked(pixels(start(24).text({150, 100}, QStringLiteral("HHH"))));
    QVERIFY2(atBase.width() > 60 && atBase.height() > 24 && atBase.height() < 34, "as large as the font says");
    QVERIFY(std::abs(atBase.bottom() - 99) <= 1 && atBase.left() >= 150 && atBase.left() < 160);

    const QRect below = inked(pixels(start(0).text({150, 100}, QStringLiteral("HHH"))));
    QVERIFY(below.top() > 100 && below.top() < 115);
    const QRect ending = inked(pixels(start(24 | 2).text({150, 100}, QStringLiteral("HHH"))));
    QVERIFY(ending.right() <= 150 && ending.right() > 140);
    const QRect centred = inked(pixels(start(24 | 6).text({150, 100}, QStringLiteral("HHH"))));
    QVERIFY(std::abs(centred.center().x() - 150) <= 2);

    // Axes that point upwards do not turn letters over.
    EmfWriter upwards = start(24).add(17, {8}).add(9, {300, -200}).add(11, {300, 200}).add(12, {0, 200});
    QCOMPARE(inked(pixels(upwards.text({150, 100}, QStringLiteral("HHH")))), atBase);
    const QImage letter = pixels(start(24).text({100, 100}, QStringLiteral("F")));
    const QRect half = inked(letter.copy(0, 0, 300, inked(letter).center().y() - 2));
    QVERIFY2(half.width() > inked(letter.copy(0, 92, 300, 10)).width(), "an F is wide at its top");

    const QRect moved =
        inked(pixels(start(24 | 1).add(27, {20, 60}).text({}, QStringLiteral("H")).text({}, QStringLiteral("H"))));
    QVERIFY2(moved.left() >= 20 && moved.width() > 45 && moved.width() < 70, "the current point goes along");
}

void tst_Metafiles::textIsTurnedSpacedAndClipped()
{
    EmfWriter start(QRect(0, 0, 300, 200));
    start.add(18, {1}).add(22, {24});
    const QRect turned = inked(pixels(EmfWriter(start).font(1, -40, 900).text({150, 150}, QStringLiteral("HHH"))));
    QVERIFY2(turned.height() > 60 && turned.width() < 34, "a quarter turn");
    QVERIFY(turned.bottom() <= 150 && turned.right() <= 150);

    const QRect spaced =
        inked(pixels(EmfWriter(start).font(1, -20).text({10, 50}, QStringLiteral("HH"), 0, {}, {200, 20})));
    QVERIFY(spaced.width() > 200 && spaced.width() < 220);

    const EmfWriter large = EmfWriter(start).font(1, -80);
    const QRect clip(20, 60, 30, 10);
    QVERIFY(clip.contains(inked(pixels(EmfWriter(large).text({10, 90}, QStringLiteral("HHH"), 4, clip)))));
    const QImage opaque = pixels(EmfWriter(large).add(25, {red}).text({10, 90}, QString(), 2, clip));
    QCOMPARE(inked(opaque), clip);
    QCOMPARE(opaque.pixel(25, 65), redPixel);

    // Ground behind each line of text, as wide as the text.
    EmfWriter grounded = EmfWriter(large).add(18, {2}).add(25, {green});
    const QImage ground = pixels(grounded.text({10, 100}, QStringLiteral("i")));
    QCOMPARE(ground.pixel(inked(ground).topLeft() + QPoint(1, 1)), greenPixel);

    // The sign font's letters are Greek; an unknown font's are not.
    const auto word = [&start](const char *font) {
        return pixels(
            EmfWriter(start).font(1, -40, 0, QString::fromLatin1(font)).text({10, 90}, QStringLiteral("iqd")));
    };
    QVERIFY(word("Symbol") != word("Times New Roman"));
    QCOMPARE(word("Nobody Has This"), word("Arial"));
    QVERIFY(inked(word("Courier New")).width() != inked(word("Arial")).width());
}

QTEST_MAIN(tst_Metafiles)
#include "tst_metafiles.moc"
