#include "engine/codec.h"
#include "engine/codecs/bytes.h"
#include "engine/decodehere.h"
#include "support/support.h"

#include <QTest>

#include <algorithm>
#include <initializer_list>

namespace {

/// A GEM metafile put together call by call, on a page of 100 x 50 mm in tenths of a millimetre.
class GemWriter
{
public:
    explicit GemWriter(bool upwards = false)
    {
        const int bottom = upwards ? 0 : 500;
        const int top = upwards ? 500 : 0;
        words({-1, 24, 101, upwards ? 0 : 2, 0, 0, 1000, 500, 1000, 500, 0, bottom, 1000, top, 0, 0, 0, 0, 0, 0, 0, 0,
            0, 0});
    }
    GemWriter &call(int opcode, std::initializer_list<int> points, std::initializer_list<int> integers, int sub = 0)
    {
        words({opcode, int(points.size()) / 2, int(integers.size()), sub});
        words(points);
        words(integers);
        return *this;
    }
    EncodedFile file(bool withEnd = true)
    {
        if (withEnd)
            words({-1});
        return {m_out.bytes, QStringLiteral("gem")};
    }

private:
    void words(std::initializer_list<int> values)
    {
        for (const int value : values)
            m_out.u16le(quint32(value) & 0xffff);
    }
    ByteWriter m_out;
};

constexpr double pixelsPerUnit = 96 / 254.0;

QRgb at(const Picture &picture, int x, int y)
{
    return picture.pixels.pixel(1 + int(x * pixelsPerUnit), 1 + int(y * pixelsPerUnit));
}

int darkPixels(const Picture &picture, const QRect &units)
{
    int count = 0;
    for (int y = units.top(); y <= units.bottom(); y += 2) {
        for (int x = units.left(); x <= units.right(); x += 2)
            count += qGray(at(picture, x, y)) < 128;
    }
    return count;
}

constexpr QRgb white = 0xffffffff;
constexpr QRgb black = 0xff000000;
constexpr QRgb red = 0xffff0000;

}

/// Drawings of GEM and WordPerfect: what their calls paint, and that nothing in them does harm.
class tst_VectorDrawings : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void shapesLieWhereTheCallsPutThem();
    void theUpperCoordinateIsOnTopWhereTheyGrowUpwards();
    void hollowShapesHideWhatLiesBehindUnlessTransparent();
    void curvesLeaveTheStraightWay();
    void textStandsOnItsLine();
    void aSmallTargetIsDrawnSmall();
    void damagedDrawingsAreHarmless();
    void wordPerfectDrawingsAreDrawnAndBitmapsRead();
};

void tst_VectorDrawings::shapesLieWhereTheCallsPutThem()
{
    GemWriter gem;
    gem.call(23, {}, {1}).call(25, {}, {2});
    gem.call(11, {100, 100, 300, 200}, {}, 1); // a bar
    gem.call(11, {600, 250, 0, 0, 100, 0}, {}, 4); // a circle
    gem.call(11, {800, 250, 0, 0, 0, 0, 100, 0}, {0, 900}, 3); // a quarter, anticlockwise from the right
    gem.call(129, {0, 400, 50, 500}, {1}).call(114, {0, 0, 1000, 500}, {}).call(129, {}, {0}); // within a clip
    gem.call(17, {}, {1}).call(6, {400, 20, 400, 480}, {});
    const EncodedFile file = gem.file();
    const Result<Picture> picture = decodeHere(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(probeHere(file)->size, picture->pixels.size());
    QCOMPARE(picture->pixels.width(), 2 + int(std::ceil(1000 * pixelsPerUnit)));

    QCOMPARE(at(*picture, 200, 150), red);
    QCOMPARE(at(*picture, 200, 250), white);
    QCOMPARE(at(*picture, 600, 250), red);
    QCOMPARE(at(*picture, 675, 325), white);
    QCOMPARE(at(*picture, 830, 220), red);
    QCOMPARE(at(*picture, 770, 220), white);
    QCOMPARE(at(*picture, 830, 280), white);
    QCOMPARE(at(*picture, 25, 450), red);
    QCOMPARE(at(*picture, 80, 450), white);
    QVERIFY(darkPixels(*picture, {394, 300, 12, 100}) > 40);
}

void tst_VectorDrawings::theUpperCoordinateIsOnTopWhereTheyGrowUpwards()
{
    GemWriter gem(true);
    gem.call(23, {}, {1}).call(114, {0, 400, 1000, 500}, {});
    const Result<Picture> picture = decodeHere(gem.file());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(at(*picture, 500, 50), black);
    QCOMPARE(at(*picture, 500, 450), white);
}

void tst_VectorDrawings::hollowShapesHideWhatLiesBehindUnlessTransparent()
{
    for (const int mode : {1, 2}) {
        GemWriter gem;
        gem.call(23, {}, {1}).call(11, {0, 0, 1000, 500}, {}, 1);
        gem.call(32, {}, {mode}).call(23, {}, {0}).call(11, {200, 100, 800, 400}, {}, 1);
        const Result<Picture> picture = decodeHere(gem.file());
        QVERIFY2(picture, qPrintable(picture.reason()));
        QCOMPARE(at(*picture, 500, 250), mode == 1 ? white : black);
    }
}

void tst_VectorDrawings::curvesLeaveTheStraightWay()
{
    // Four points, the first of which begins a curve: its flag is the low byte of the first integer.
    GemWriter gem;
    gem.call(16, {20, 0}, {}).call(6, {100, 400, 100, 0, 900, 0, 900, 400}, {1, 0}, 13);
    const Result<Picture> picture = decodeHere(gem.file());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(at(*picture, 500, 100), black); // the middle of the curve, a quarter of the way down
    QCOMPARE(at(*picture, 100, 20), white); // its control points are not on it
}

void tst_VectorDrawings::textStandsOnItsLine()
{
    GemWriter gem;
    gem.call(12, {0, 100}, {}).call(8, {100, 300}, {'H', 'I', 'H', 'I'});
    gem.call(13, {}, {900}).call(8, {900, 450}, {'H', 'I', 'H', 'I'});
    const Result<Picture> picture = decodeHere(gem.file());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(darkPixels(*picture, {100, 200, 250, 100}) > 50);
    QCOMPARE(darkPixels(*picture, {100, 306, 400, 150}), 0);
    QVERIFY2(darkPixels(*picture, {800, 200, 100, 250}) > 50, "turned a quarter it runs upwards");
}

void tst_VectorDrawings::aSmallTargetIsDrawnSmall()
{
    GemWriter gem;
    gem.call(23, {}, {1}).call(114, {0, 0, 500, 500}, {});
    const Result<Picture> picture = decodeHere(gem.file(), {QSize(50, 50), -1, 0});
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->pixels.width(), 50);
    QVERIFY(picture->info.size.width() > 300);
    QCOMPARE(picture->pixels.pixel(10, 12), black);
    QCOMPARE(picture->pixels.pixel(40, 12), white);
}

void tst_VectorDrawings::damagedDrawingsAreHarmless()
{
    GemWriter gem;
    gem.call(23, {}, {2}).call(24, {}, {99}).call(25, {}, {-7}).call(11, {0, 0, 500, 500}, {}, 1);
    gem.call(11, {5, 5}, {9}, 3).call(11, {}, {}, 10).call(9, {}, {}, 13).call(8, {}, {65}).call(14, {}, {3});
    const EncodedFile whole = gem.file();
    for (qsizetype length = 0; length < whole.bytes.size(); ++length) {
        const Result<Picture> picture = decodeHere({whole.bytes.left(length), whole.extension});
        QVERIFY(!picture || picture->partial || length >= whole.bytes.size() - 1);
    }
    for (qsizetype i = 0; i < whole.bytes.size(); ++i) {
        for (const char value : {'\x00', '\x7f', '\xff'}) {
            EncodedFile damaged = whole;
            damaged.bytes[i] = value;
            ignore(decodeHere(damaged, {QSize(64, 64), -1, 0}));
        }
    }
}

void tst_VectorDrawings::wordPerfectDrawingsAreDrawnAndBitmapsRead()
{
    SKIP_WITHOUT_SAMPLES();
    const Result<Picture> drawing = decodeFile(samplesFolder() + QStringLiteral("wpg/v1-vector.wpg"));
    QVERIFY2(drawing, qPrintable(drawing.reason()));
    QCOMPARE(drawing->info.codec, QByteArray("WPG drawing"));
    const QSize size = drawing->pixels.size();
    QCOMPARE(drawing->pixels.pixel(size.width() / 2, size.height() / 2), black);
    QCOMPARE(drawing->pixels.pixel(2, 2), white);
    const Result<Picture> bitmap = decodeFile(samplesFolder() + QStringLiteral("wpg/v2-8bit.wpg"));
    QVERIFY2(bitmap, qPrintable(bitmap.reason()));
    QCOMPARE(bitmap->info.codec, QByteArray("WPG"));
}

QTEST_MAIN(tst_VectorDrawings)
#include "tst_vectordrawings.moc"
