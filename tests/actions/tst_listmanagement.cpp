#include "actions/listmanagement.h"
#include "platform/filepath.h"

#include <QSet>
#include <QtTest>

/// Which entries a text and the checked file types mean.
class tst_listmanagement : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theBoxesAreSixtyAndDiffer();
    void aTypeIsLookedForAnywhereInThePath_data();
    void aTypeIsLookedForAnywhereInThePath();
    void allTypesTogetherFindWhatEachFindsAlone();
    void reversingTwiceChangesNothing();
    void aTextNeedsAnyTypeAndLooksAtNone();
};

namespace {
QStringList captions(const QString &types)
{
    QStringList result;
    for (const QString &type : types.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        result.append(QStringLiteral("(.%1)").arg(type));
    return result;
}
}

void tst_listmanagement::theBoxesAreSixtyAndDiffer()
{
    QSet<int> indices;
    QSet<QByteArray> codes;
    for (const TypeBox &box : typeBoxes()) {
        QVERIFY(box.index >= firstTypeBox && box.index <= lastTypeBox && box.index != missingTypeBox);
        indices.insert(box.index);
        const QByteArray caption(box.caption);
        QVERIFY2(caption.startsWith("(.") && caption.endsWith(')'), caption.constData());
        codes.insert(caption.mid(1, 4));
    }
    QCOMPARE(indices.size(), 60);
    QCOMPARE(codes.size(), 60);
}

void tst_listmanagement::aTypeIsLookedForAnywhereInThePath_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("meant");
    QTest::newRow("at the end") << "JPG"
                                << "/a/b.JPG" << true;
    QTest::newRow("in any case") << "JPG"
                                 << "/a/b.jPg" << true;
    QTest::newRow("in the middle of a name") << "JPG"
                                             << "/a/b.jpg.old" << true;
    QTest::newRow("in a folder's name") << "JPG"
                                        << "/my.jpgs/b.png" << true;
    QTest::newRow("without its dot") << "JPG"
                                     << "/a/bjpg" << false;
    QTest::newRow("cut off by the end") << "JPG"
                                        << "/a/b.jp" << false;
    QTest::newRow("another type") << "JPE"
                                  << "/a/b.JPG" << false;
    QTest::newRow("the longer name of a type") << "TIF"
                                               << "/a/b.tiff" << true;
    QTest::newRow(".WBMP is cut to .WBM") << "WBMP"
                                          << "/a/b.wbm" << true;
    QTest::newRow(".WBMP is not .BMP") << "BMP"
                                       << "/a/b.wbmp" << false;
    QTest::newRow("right behind another dot") << "GIF"
                                              << "/a/b...gif" << true;
    QTest::newRow("a letter whose capital is two") << "TIF" << QStringLiteral("/a/b.tif\u00df") << true;
    QTest::newRow("the empty path") << "GIF"
                                    << "" << false;
}

void tst_listmanagement::aTypeIsLookedForAnywhereInThePath()
{
    QFETCH(QString, type);
    QFETCH(QString, path);
    QFETCH(bool, meant);
    QCOMPARE(TypeTest(captions(type)).matches(path.toUpper()), meant ? 1 : 0);
    const QByteArray foreign = "/\xff\xe4/" + path.toUtf8();
    QCOMPARE(TypeTest(captions(type)).matches(pathFromBytes(foreign).toUpper()), meant ? 1 : 0);
}

void tst_listmanagement::allTypesTogetherFindWhatEachFindsAlone()
{
    QStringList all;
    for (const TypeBox &box : typeBoxes())
        all.append(QString::fromLatin1(box.caption));
    const TypeTest types(all);
    for (const QString &caption : std::as_const(all)) {
        const QString path = QStringLiteral("/pictures/x") + caption.mid(1).chopped(1);
        QVERIFY2(types.matches(path) == 1, qPrintable(path));
        QVERIFY2(TypeTest({caption}).matches(path) == 1, qPrintable(path));
    }
}

void tst_listmanagement::reversingTwiceChangesNothing()
{
    const QStringList entries{QStringLiteral("/a.jpg"), QStringLiteral("/old.png/b.jpg"), QStringLiteral("/c.gif")};
    const TypeTest types(captions(QStringLiteral("JPG PNG")));
    QCOMPARE(entriesOfTypes(entries, types, TypeMatch::Any), (QList<int>{0, 1}));
    QCOMPARE(entriesOfTypes(entries, types, TypeMatch::Odd), QList<int>{0});
    QVERIFY(entriesOfTypes(entries, TypeTest({}), TypeMatch::Any).isEmpty());
}

void tst_listmanagement::aTextNeedsAnyTypeAndLooksAtNone()
{
    const QStringList entries{
        QStringLiteral("/Berg/a.jpg"), QStringLiteral("/meer/b.png"), QStringLiteral("/m\u00dcll/c.mp3")};
    const TypeTest any(captions(QStringLiteral("THM")));
    QCOMPARE(entriesWithText(entries, QStringLiteral("bERG"), any), QList<int>{0});
    QCOMPARE(entriesWithText(entries, QStringLiteral("m\u00fcll"), any), QList<int>{2});
    QCOMPARE(entriesWithText(entries, QStringLiteral(".p"), any), QList<int>{1});
    QCOMPARE(entriesWithText(entries, QString(), any), (QList<int>{0, 1, 2}));
    QVERIFY(entriesWithText(entries, QString(), TypeTest({})).isEmpty());
}

QTEST_GUILESS_MAIN(tst_listmanagement)
#include "tst_listmanagement.moc"
