#include "app/mediatypes.h"

#include <QtTest>

#include <set>

class tst_mediatypes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindFollowsTheLastExtension_data();
    void kindFollowsTheLastExtension();
    void everyTypeOfABoxIsFoundAndPlayedOrShown();
    void patternsFollowTheBoxes_data();
    void patternsFollowTheBoxes();
    void everyPatternMatchesItsOwnTypeOnly();
    void namesMatchPatternsInAnyCase_data();
    void namesMatchPatternsInAnyCase();
    void iconsFollowTheType_data();
    void iconsFollowTheType();
    void photoCDSizeLooksAtTheWholePath();
};

void tst_mediatypes::kindFollowsTheLastExtension_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("kind");
    const auto row = [](const char *sentence, const QString &path, QLatin1String kind) {
        QTest::newRow(sentence) << path << QString(kind);
    };
    row("JPEG in four letters", QStringLiteral("/p/a.JPEG"), kindPoly);
    row("jpe is a type of its own", QStringLiteral("/p/a.jpe"), kindPoly);
    row("mpeg plays", QStringLiteral("/p/a.mpeg"), kindMotion);
    row("audio plays too", QStringLiteral("/p/song.Mp3"), kindMotion);
    row("mixed case", QStringLiteral("/p/a.Gif"), kindPicture);
    row("a camera format", QStringLiteral("/p/a.nef"), kindPoly);
    row("unknown is a picture", QStringLiteral("/p/a.xyz"), kindPicture);
    row("no dot at all", QStringLiteral("/p/readme"), kindPicture);
    row("nothing but a name of a code", QStringLiteral("mp3"), kindPicture);
    row("a dot at the end", QStringLiteral("/p/a.mp3."), kindPicture);
    row("empty", QString(), kindPicture);
    row("a dotted folder hides nothing", QStringLiteral("/p.mp3/a.bmp"), kindPoly);
    row("a dotted folder gives a bare name no kind", QStringLiteral("/p.mp3/readme"), kindPicture);
    row("four letters never match on three", QStringLiteral("a.mpgx"), kindPicture);
    row("three letters never match on two", QStringLiteral("a.mp"), kindPicture);
    row("codes do not run into each other", QStringLiteral("a.mpd"), kindPicture);
    row("a pair of whole codes is no code", QStringLiteral("a.asfasx"), kindPicture);
    row("a foreign byte in the name", QStringLiteral("/p/") + QChar(0xdc80) + QStringLiteral(".avi"), kindMotion);
}

void tst_mediatypes::kindFollowsTheLastExtension()
{
    QFETCH(QString, path);
    QFETCH(QString, kind);
    QCOMPARE(QString(GetMediaKind(path)), kind);
}

// The arrays of boxes do not follow the kinds, yet only the audio and video boxes stand for what plays.
void tst_mediatypes::everyTypeOfABoxIsFoundAndPlayedOrShown()
{
    const FilePatterns all = filePatterns({~std::bitset<29>(), ~std::bitset<10>(), ~std::bitset<21>()});
    std::set<QString> seen;
    const auto check = [&](const QString &patterns, bool plays) {
        for (const QString &pattern : patterns.split(QLatin1Char(';'))) {
            QVERIFY2(seen.insert(pattern).second, qPrintable(pattern + QStringLiteral(" stands twice")));
            QCOMPARE(GetMediaKind(pattern) == kindMotion, plays);
        }
    };
    check(all.picture, false);
    check(all.motion, true);
    check(all.poly, false);
    QCOMPARE(seen.size(), std::size_t(29 + 10 + 21 + 3));
}

void tst_mediatypes::patternsFollowTheBoxes_data()
{
    QTest::addColumn<QList<int>>("pictureBoxes");
    QTest::addColumn<QList<int>>("audioBoxes");
    QTest::addColumn<QList<int>>("polyBoxes");
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QString>("motion");
    QTest::addColumn<QString>("poly");
    using Boxes = QList<int>;
    const QString none;
    QTest::newRow("no box, no pattern") << Boxes{} << Boxes{} << Boxes{} << none << none << none;
    QTest::newRow("JPG brings its long forms")
        << Boxes{13} << Boxes{} << Boxes{} << QStringLiteral("*.JPG;*.JPE;*.JPEG") << none << none;
    QTest::newRow("TIF comes before the long forms of JPG")
        << Boxes{1, 13, 27} << Boxes{} << Boxes{} << QStringLiteral("*.ART;*.JPG;*.TIF;*.TIFF;*.JPE;*.JPEG") << none
        << none;
    QTest::newRow("MPG brings no MPEG") << Boxes{} << Boxes{6, 9} << Boxes{} << none << QStringLiteral("*.MPG;*.MID")
                                        << none;
    QTest::newRow("box 0 counts") << Boxes{} << Boxes{0} << Boxes{} << none << QStringLiteral("*.ASF") << none;
    QTest::newRow("first, four-letter and last")
        << Boxes{} << Boxes{} << Boxes{1, 10, 21} << none << none << QStringLiteral("*.PCD;*.WBMP;*.THM");
}

void tst_mediatypes::patternsFollowTheBoxes()
{
    QFETCH(QList<int>, pictureBoxes);
    QFETCH(QList<int>, audioBoxes);
    QFETCH(QList<int>, polyBoxes);
    EnabledFileTypes enabled;
    for (const int box : pictureBoxes)
        enabled.fileTypes.set(std::size_t(box - 1));
    for (const int box : audioBoxes)
        enabled.avFileTypes.set(std::size_t(box));
    for (const int box : polyBoxes)
        enabled.polyFileTypes.set(std::size_t(box - 1));
    const FilePatterns patterns = filePatterns(enabled);
    QTEST(patterns.picture, "picture");
    QTEST(patterns.motion, "motion");
    QTEST(patterns.poly, "poly");
}

void tst_mediatypes::everyPatternMatchesItsOwnTypeOnly()
{
    const FilePatterns all = filePatterns({~std::bitset<29>(), ~std::bitset<10>(), ~std::bitset<21>()});
    const QStringList patterns =
        (all.picture + QLatin1Char(';') + all.motion + QLatin1Char(';') + all.poly).split(QLatin1Char(';'));
    for (const QString &one : patterns) {
        const QString name = QStringLiteral("a") + one.mid(1).toLower();
        for (const QString &other : patterns)
            QCOMPARE(matchesPattern(name, other), one == other);
    }
}

void tst_mediatypes::namesMatchPatternsInAnyCase_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("patterns");
    QTest::addColumn<bool>("matches");
    const QString two = QStringLiteral("*.BMP;*.JPG");
    QTest::newRow("the second of two") << QStringLiteral("sea.jPg") << two << true;
    QTest::newRow("none of two") << QStringLiteral("sea.gif") << two << false;
    QTest::newRow("the extension in the middle") << QStringLiteral("sea.bmp.txt") << two << false;
    QTest::newRow("the letters without the dot") << QStringLiteral("seabmp") << two << false;
    QTest::newRow("a longer extension") << QStringLiteral("a.jpg2") << two << false;
    QTest::newRow("no pattern") << QStringLiteral("a.jpg") << QString() << false;
    QTest::newRow("an empty pattern between two") << QStringLiteral("a.jpg") << QStringLiteral("*.BMP;;*.JPG") << true;
    QTest::newRow("only an empty pattern") << QStringLiteral("a.jpg") << QStringLiteral(";") << false;
}

void tst_mediatypes::namesMatchPatternsInAnyCase()
{
    QFETCH(QString, name);
    QFETCH(QString, patterns);
    QTEST(matchesPattern(name, patterns), "matches");
}

void tst_mediatypes::iconsFollowTheType_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("code");
    QTest::newRow("upper case") << QStringLiteral(".JPG") << QStringLiteral("jpg");
    QTest::newRow("jpe borrows from jpg") << QStringLiteral(".jpe") << QStringLiteral("jpg");
    QTest::newRow("rle borrows from sfw") << QStringLiteral(".rle") << QStringLiteral("sfw");
    QTest::newRow("sfw borrows from dib") << QStringLiteral(".sfw") << QStringLiteral("dib");
    QTest::newRow("four letters with a row") << QStringLiteral(".wbmp") << QStringLiteral("wbmp");
    QTest::newRow("rgb has none") << QStringLiteral(".rgb") << QString();
    QTest::newRow("jpeg has none") << QStringLiteral(".jpeg") << QString();
    QTest::newRow("tiff has none") << QStringLiteral(".tiff") << QString();
    QTest::newRow("mpeg has none") << QStringLiteral(".mpeg") << QString();
    QTest::newRow("without its dot") << QStringLiteral("jpg") << QString();
    QTest::newRow("only the dot") << QStringLiteral(".") << QString();
    QTest::newRow("nothing") << QString() << QString();
}

void tst_mediatypes::iconsFollowTheType()
{
    QFETCH(QString, extension);
    QTEST(QString(fileTypeIconCode(extension)), "code");
}

void tst_mediatypes::photoCDSizeLooksAtTheWholePath()
{
    QVERIFY(usesPhotoCDSize(QStringLiteral("/p/a.pcd")));
    QVERIFY(usesPhotoCDSize(QStringLiteral("/Photos.PCD/a.bmp")));
    QVERIFY(usesPhotoCDSize(QStringLiteral("/p/a.pcdx")));
    QVERIFY(!usesPhotoCDSize(QStringLiteral("/pcd/a.bmp")));
}

QTEST_APPLESS_MAIN(tst_mediatypes)
#include "tst_mediatypes.moc"
