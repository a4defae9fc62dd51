#include "engine/codec.h"
#include "engine/decodehere.h"
#include "engine/metafilewriter.h"
#include "support/support.h"

#include <QTest>

namespace {

constexpr int red = 0x0000ff; ///< as records hold colours
constexpr int green = 0x00ff00;
constexpr int blue = 0xff0000;

Result<Picture> drawn(const QByteArray &bytes, QSize target = {})
{
    return decodeHere({bytes, QString()}, {target, -1, 0});
}

bool isBlank(const QImage &image)
{
    QImage white(image.size(), image.format());
    white.fill(Qt::white);
    return image == white;
}

QImage picture2x2()
{
    QImage image(2, 2, QImage::Format_ARGB32);
    image.fill(0x80402010);
    return image;
}

EmfWriter filled(int color)
{
    EmfWriter writer;
    writer.noPen().brush(1, color);
    return writer;
}

/// One of every kind of record, to be damaged.
QByteArray everythingEmf()
{
    EmfWriter writer = filled(red);
    writer.add(17, {8}).add(9, {200, 120}).add(11, {100, 60}).add(33).rectangle(0, 0, 80, 60);
    writer.pen(2, blue, 3, 1).points(87, {0, 0, 90, 50, 20, 40}).points(86, {5, 5, 50, 5, 25, 40});
    writer.add(95, {3, 0, 0, 0, 0, 0x10207, 2, 0, green, 0, 2, 3, 2})
        .select(3)
        .points(85, {0, 0, 9, 90, 80, 9, 99, 99});
    writer.add(44, {5, 5, 60, 40, 10, 10}).add(47, {0, 0, 50, 50, 0, 25, 25, 0}).add(41, {50, 30, 20, 0, 0x42b40000});
    writer.add(59).add(27, {10, 10}).add(54, {90, 10}).add(54, {50, 55}).add(61).add(60).add(67, {1});
    writer.add(91, {0, 0, 0, 0, 2, 6, 3, 3}, QByteArray(24, char(3)))
        .add(118, {0, 0, 0, 0, 2, 1, 0, 0, 0, 255, 0, 40, 40, 0, 255, 0, 1});
    writer.stretch(QRect(10, 10, 40, 40), picture2x2(), QRect(0, 0, 2, 2), 0x00660046);
    writer.blit(114, QRect(0, 0, 30, 30), picture2x2(), 0x01ff0000);
    writer.add(75, {48, 2, 32, 1, 1, 16, 0, 0, 9, 9, 0, 0, 50, 50}).add(30, {2, 2, 70, 50}).add(34, {-1});
    writer.font(4, -20, 300).text({10, 40}, QStringLiteral("Ab"), 6, QRect(0, 0, 60, 50), {12, 12});
    return writer.bytes();
}

QByteArray everythingPlus()
{
    EmfWriter writer;
    writer.plus(plusRecord(0x4001, 0, {0, 0, 96, 96})
        + plusRecord(0x4008, 0x100, {0, 4, 0, 0, 0, 0, floatBits(60), floatBits(9), -1, -0x10000, 0, 0})
        + plusRecord(0x4008, 0x201, {0, 0, 0x120, 2, floatBits(3), 5, 2, floatBits(2), floatBits(1), 0, 0, -256})
        + plusRecord(0x4008, 0x302, {0, 4, 0x4000, 0, 0x00050050, 0x00300040, 0x00090002, int(0x83030300)})
        + plusRecord(0x4008, 0x403, {0, 2, 3, 0x10000000, 0, 0, 0x42000000, 0x42000000, 0x10000003})
        + plusRecord(0x402f, 0, {floatBits(10)}) + plusRecord(0x4034, 0x103, {}) + plusRecord(0x4014, 2, {0})
        + plusRecord(0x4015, 2, {1}) + plusRecord(0x4018, 0x4001, {floatBits(0.5), 0, 2, 3, 0, 0x00200020, 0x50})
        + plusRecord(0x4010, 0x4000, {0, 0, floatBits(90), 0, 0x00300030}) + plusRecord(0x4025, 0, {0})
        + plusRecord(0x4008, 0x604, {0, floatBits(12), 2, 1, 0, 1, 'A'})
        + plusRecord(0x401c, 0x8004, {-256, 5, 1, 0, 0, floatBits(50), floatBits(20), 'A'})
        + plusRecord(0x4026, 0, {0}));
    return writer.bytes();
}

QByteArray everythingWmf()
{
    WmfWriter writer(QRect(0, 0, 200, 120), 192);
    writer.brush(red).add(0x12d, {0}).add(0x2fa, {1, 1, 0, 0, 0xff}).add(0x12d, {1}).add(0x20c, {120, 200});
    writer.rectangle(10, 10, 90, 50).add(0x418, {50, 90, 20, 20}).add(0x324, {3, 1, 1, 60, 3, 20, 50});
    writer.add(0x538, {2, 3, 3, 1, 1, 9, 1, 5, 9, 20, 20, 40, 20, 30, 50}).add(0x81a, {1, 9, 40, 1, 60, 60, 0, 0});
    writer.add(0x6ff, {0, 6, 0, 0, 0, 1, 2, 0, 0, 50, 50, 2, 0, 50, 5, 45, 2}).add(0x12c, {2}).add(0x1f0, {2});
    writer.add(0xf43, {0x20, 0xcc, 0, 2, 2, 0, 0, 30, 30, 5, 5}, dibHeader(picture2x2()) + dibPixels(picture2x2()));
    writer.add(0x2fb, {-20, 0, 300, 0, 700, 1, 0, 0, 0}, QByteArray("Times\0", 6)).add(0x12d, {2});
    writer.add(0xa32, {40, 10, 2, 6, 0, 0, 60, 50}, QByteArray("Ab\x0c\0\x0c\0", 6)).add(0x1e).add(0x127, {-1});
    return writer.bytes();
}

}

/// Damaged metafiles and those made to do harm: each is answered, the same way every time.
class tst_HostileMetafiles : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void damagedFilesAreAnswered_data();
    void damagedFilesAreAnswered();
    void hostileFilesEnd_data();
    void hostileFilesEnd();
};

void tst_HostileMetafiles::initTestCase()
{
    useBuiltModules();
    ignore(fullCodecTable());
    QVERIFY2(codecModuleFailure().isEmpty(), qPrintable(codecModuleFailure()));
}

void tst_HostileMetafiles::damagedFilesAreAnswered_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("EMF") << everythingEmf();
    QTest::newRow("EMF+") << everythingPlus();
    QTest::newRow("WMF") << everythingWmf();
}

void tst_HostileMetafiles::damagedFilesAreAnswered()
{
    QFETCH(QByteArray, bytes);
    const Result<Picture> whole = drawn(bytes, QSize(30, 30));
    QVERIFY2(whole, qPrintable(whole.reason()));
    QVERIFY2(!whole->partial && !isBlank(whole->pixels), "the file itself is sound");
    for (qsizetype length = 0; length < bytes.size(); ++length) {
        const Result<Picture> cut = drawn(bytes.left(length), QSize(30, 30));
        QVERIFY2(cut ? cut->partial : !cut.reason().isEmpty(), qPrintable(QString::number(length)));
    }
    for (qsizetype at = 0; at < bytes.size(); ++at) {
        for (const int change : {0x01, 0x80, 0xff}) {
            QByteArray changed = bytes;
            changed[at] = char(changed.at(at) ^ change);
            const Result<Picture> once = drawn(changed, QSize(30, 30));
            if (change != 0xff)
                continue;
            const Result<Picture> again = drawn(changed, QSize(30, 30));
            QCOMPARE(bool(once), bool(again));
            QVERIFY2(!once || once->pixels == again->pixels, qPrintable(QString::number(at)));
        }
    }
}

void tst_HostileMetafiles::hostileFilesEnd_data()
{
    QTest::addColumn<QByteArray>("bytes");
    EmfWriter nested;
    for (int i = 0; i < 100000; ++i)
        nested.add(33);
    QTest::newRow("saving without end") << nested.add(34, {-70000}).add(34, {5}).bytes();
    QTest::newRow("restoring what was not saved") << filled(red).add(34, {-1}).add(34, {int(0x80000000)}).bytes();
    EmfWriter dashed(QRect(0, 0, 4000, 4000));
    dashed.add(95, {1, 0, 0, 0, 0, 0x10207, 1, 0, red, 0, 2, 1, 1}).select(1);
    for (int i = 0; i < 20000; ++i)
        dashed.add(27, {-2000000000, i}).add(54, {2000000000, 4000 - i});
    QTest::newRow("endless dashes") << dashed.bytes();
    EmfWriter flooded(QRect(0, 0, 8000, 8000));
    for (int i = 0; i < 200000; ++i)
        flooded.add(76, {0, 0, 0, 0, -9, -9, 90000, 90000, 0x550009});
    QTest::newRow("the whole canvas over and over") << flooded.bytes();
    EmfWriter regions(QRect(0, 0, 4000, 4000));
    for (int i = 0; i < 20000; ++i)
        regions.add(75, {48, 3, 32, 1, 1, 16, 0, 0, 0, 0, i % 99, i % 97, 4000 - i % 89, 3000 - i % 83});
    QTest::newRow("regions of ever more boxes") << regions.rectangle(0, 0, 9, 9).bytes();
    EmfWriter odd = filled(red);
    odd.add(35, {0x7f7fffff, 0x7f7fffff, -1, 0x7f800000, 0x7f7fffff, 1}).rectangle(-2147483647, 0, 2147483647, 9);
    odd.add(36, {0, 0, 0, 0, 0, 0, 2}).rectangle(0, 0, 9, 9).font(3, 2147483647).text({0, 0}, QStringLiteral("X"));
    odd.add(42, {0, 0, 9, 9}).add(41, {0, 0, -1, 0x7f7fffff, 0x7f7fffff}).add(58, {-1}).add(17, {8}).add(9, {0, 0});
    QTest::newRow("absurd transforms") << odd.add(54, {9, 9}).bytes();
    QTest::newRow("a count beyond the record") << EmfWriter().add(86, {0, 0, 0, 0, 0x7fffffff, 1}).bytes();
    WmfWriter objects;
    for (int i = 0; i < 100000; ++i)
        objects.brush(red);
    QTest::newRow("more objects than there is room for") << objects.bytes();
}

void tst_HostileMetafiles::hostileFilesEnd()
{
    QFETCH(QByteArray, bytes);
    const Result<Picture> picture = drawn(bytes);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->pixels.size(), picture->info.size);
}

QTEST_MAIN(tst_HostileMetafiles)
#include "tst_hostilemetafiles.moc"
