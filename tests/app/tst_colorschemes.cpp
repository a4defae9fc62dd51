#include "app/colorschemes.h"

#include <QtTest>

namespace {
const SchemeColors usual{247, 251, 254, 134, 200, 253};
}

class tst_colorschemes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesIgnoreCaseAndHaveAFlagEach();
    void unknownNamesAndEmptyWindowsPaintNothing();
    void aBandStandsOnEverySecondLine();
    void otherEndsHalfWay();
    void otherHoldsItsChannelsInRange();
    void backSchemesRunTheOtherWay();
};

void tst_colorschemes::namesIgnoreCaseAndHaveAFlagEach()
{
    int flag = 1;
    for (const char *name : {"RED", "BACKRED", "BLUE", "BACKBLUE", "GREEN", "BACKGREEN", "YELLOW", "BACKYELLOW", "CYAN",
             "BACKCYAN", "MAGENTA", "BACKMAGENTA", "GRAY", "BACKGRAY", "OTHER"}) {
        QCOMPARE(schemeFlag(QLatin1String(name)), flag);
        QCOMPARE(schemeFlag(QString::fromLatin1(name).toLower()), flag);
        flag *= 2;
    }
    QCOMPARE(schemeFlag(QStringLiteral("BackGray")), 8192);
    QCOMPARE(schemeFlag(QStringLiteral("RED ")), 0);
    QCOMPARE(schemeBands(QStringLiteral("other"), 50, usual), schemeBands(QStringLiteral("OTHER"), 50, usual));
}

void tst_colorschemes::unknownNamesAndEmptyWindowsPaintNothing()
{
    QVERIFY(schemeBands(QStringLiteral("PINK"), 50, usual).isEmpty());
    QVERIFY(schemeBands(QString(), 50, usual).isEmpty());
    QVERIFY(schemeBands(QStringLiteral("OTHER"), 0, usual).isEmpty());
    QVERIFY(schemeBands(QStringLiteral("RED"), -3, usual).isEmpty());
}

void tst_colorschemes::aBandStandsOnEverySecondLine()
{
    for (const int height : {1, 2, 3, 600, 601})
        QCOMPARE(schemeBands(QStringLiteral("OTHER"), height, usual).size(), height / 2 + 1);
}

void tst_colorschemes::otherEndsHalfWay()
{
    const QVector<QRgb> bands = schemeBands(QStringLiteral("OTHER"), 600, usual);
    QCOMPARE(bands.first(), qRgb(247, 251, 254));
    QCOMPARE(bands.last(), qRgb(190, 225, 253)); // 190.5, 225.5, 253.5 cut
    QCOMPARE(bands.at(1), qRgb(246, 250, 253));
}

void tst_colorschemes::otherHoldsItsChannelsInRange()
{
    for (const QRgb color : schemeBands(QStringLiteral("OTHER"), 10, {-400, 300, 0, 900, -300, 255}))
        QVERIFY(qRed(color) >= 0 && qGreen(color) <= 255);
    QCOMPARE(schemeBands(QStringLiteral("OTHER"), 10, {-400, 300, 0, 900, -300, 255}).first(), qRgb(0, 255, 0));
}

void tst_colorschemes::backSchemesRunTheOtherWay()
{
    for (const char *name : {"RED", "BLUE", "GREEN", "YELLOW", "CYAN", "MAGENTA", "GRAY"}) {
        const QVector<QRgb> up = schemeBands(QLatin1String(name), 100, usual);
        const QVector<QRgb> down = schemeBands(QStringLiteral("BACK") + QLatin1String(name), 100, usual);
        QCOMPARE(up.first(), qRgb(0, 0, 0));
        QCOMPARE(up.last(), down.first());
        QCOMPARE(up.first(), down.last());
        QVERIFY(up.last() != up.first());
    }
}

QTEST_APPLESS_MAIN(tst_colorschemes)
#include "tst_colorschemes.moc"
