#include "app/globals.h"
#include "viewer/mediashow.h"
#include "viewer/shuffle.h"

#include <QRandomGenerator>
#include <QtTest>

/// Where a show goes next: the draws of the shuffle mode, and the positions that can be decoded ahead.
class tst_shuffle : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { globals = {}; }
    void everyPositionComesOnce_data();
    void everyPositionComesOnce();
    void aDrawIsTheNumberTimesTheCountRounded();
    void theLastPositionIsHalfAsLikely();
    void lookingAheadChangesNothing();
    void aBrokenSourceDoesNotHang();
    void aListOfAnotherLengthBeginsAnew();
    void theStepsAhead_data();
    void theStepsAhead();
    void onlyOneToThirtySecondsAreAnInterval_data();
    void onlyOneToThirtySecondsAreAnInterval();
};

namespace {

/// The numbers in their order, again and again.
void script(const QVector<double> &numbers)
{
    shuffleNumbers().setSource([numbers, at = 0]() mutable { return numbers[at++ % numbers.size()]; });
}

void seed(quint32 value)
{
    shuffleNumbers().setSource([generator = QRandomGenerator(value)]() mutable { return generator.generateDouble(); });
}

}

void tst_shuffle::everyPositionComesOnce_data()
{
    QTest::addColumn<int>("count");
    QTest::newRow("nothing") << 0;
    QTest::newRow("one") << 1;
    QTest::newRow("two") << 2;
    QTest::newRow("many") << 500;
}

void tst_shuffle::everyPositionComesOnce()
{
    QFETCH(int, count);
    seed(7);
    sizeShuffleHistory(count);
    QSet<int> seen;
    while (!isShuffleOver()) {
        const int position = takeShufflePosition();
        QVERIFY(position >= 1 && position <= count);
        seen.insert(position);
        QCOMPARE(globals.ShuffleCount, int(seen.size()));
    }
    QCOMPARE(int(seen.size()), count);
    QCOMPARE(takeShufflePosition(), 0);
    clearShuffleHistory();
    QCOMPARE(isShuffleOver(), count == 0);
    QCOMPARE(globals.ShuffleHistory.size(), count + 1);
}

void tst_shuffle::aDrawIsTheNumberTimesTheCountRounded()
{
    // 0.02 of ten is position 0 and thrown away, 0.25 is 2 by the tie to even, 0.21 is 2 again and marked.
    script({0.02, 0.25, 0.21, 0.949, 1.0});
    sizeShuffleHistory(10);
    QCOMPARE(takeShufflePosition(), 2);
    QCOMPARE(takeShufflePosition(), 9);
    QCOMPARE(takeShufflePosition(), 10);
    QVERIFY(!globals.ShuffleHistory[0]);
}

void tst_shuffle::theLastPositionIsHalfAsLikely()
{
    seed(1);
    constexpr int draws = 20000;
    QVector<int> first(6);
    for (int i = 0; i < draws; ++i) {
        sizeShuffleHistory(5);
        ++first[takeShufflePosition()];
    }
    for (int position = 1; position <= 4; ++position)
        QVERIFY2(qAbs(first[position] - draws * 2 / 9) < draws / 50, qPrintable(QString::number(first[position])));
    QVERIFY(qAbs(first[5] - draws / 9) < draws / 50);
}

void tst_shuffle::lookingAheadChangesNothing()
{
    constexpr int count = 12;
    const auto run = [](bool look) {
        seed(99);
        sizeShuffleHistory(count);
        QVector<int> taken;
        for (int i = 0; i < 3 * count; ++i) {
            const QVector<int> ahead = look ? shufflePositionsAhead(count, true, 3) : QVector<int>();
            if (isShuffleOver())
                clearShuffleHistory();
            taken.append(takeShufflePosition());
            if (look && taken.last() != ahead.first())
                return QVector<int>();
        }
        return taken;
    };
    const QVector<int> plain = run(false);
    QCOMPARE(run(true), plain);
    // Without going round again, nothing comes after the last one.
    QVERIFY(isShuffleOver());
    QCOMPARE(shufflePositionsAhead(count, false, 2), QVector<int>());
    QCOMPARE(shufflePositionsAhead(0, true, 2), QVector<int>());
}

void tst_shuffle::aBrokenSourceDoesNotHang()
{
    for (const double number : {0.0, 0.5, -7.0, 1e9}) {
        script({number});
        sizeShuffleHistory(4);
        QSet<int> seen;
        for (int i = 0; i < 4; ++i)
            seen.insert(takeShufflePosition());
        QCOMPARE(seen, (QSet<int>{1, 2, 3, 4}));
    }
}

void tst_shuffle::aListOfAnotherLengthBeginsAnew()
{
    seed(3);
    sizeShuffleHistory(3);
    takeShufflePosition();
    QVERIFY(shuffleHistoryFits(3) && !shuffleHistoryFits(2) && !shuffleHistoryFits(4));
    QCOMPARE(shufflePositionsAhead(1, false, 5), QVector<int>{1});
    QCOMPARE(globals.ShuffleCount, 1);
    sizeShuffleHistory(1);
    QCOMPARE(globals.ShuffleCount, 0);
    QCOMPARE(globals.ShuffleHistory, (QVector<bool>{false, false}));
}

void tst_shuffle::theStepsAhead_data()
{
    QTest::addColumn<bool>("forward");
    QTest::addColumn<bool>("reverse");
    QTest::addColumn<bool>("loop");
    QTest::addColumn<int>("current");
    QTest::addColumn<QVector<int>>("ahead");
    QTest::newRow("forward") << true << false << false << 2 << QVector<int>{3, 4};
    QTest::newRow("forward at the end") << true << false << false << 3 << QVector<int>{4};
    QTest::newRow("forward past the end") << true << false << false << 5 << QVector<int>{};
    QTest::newRow("forward round again") << true << false << true << 4 << QVector<int>{1, 2};
    QTest::newRow("reverse") << false << true << false << 3 << QVector<int>{2, 1};
    QTest::newRow("reverse at the beginning") << false << true << false << 1 << QVector<int>{};
    QTest::newRow("reverse round again") << false << true << true << 1 << QVector<int>{4, 3};
    QTest::newRow("neither") << false << false << true << 1 << QVector<int>{};
    QTest::newRow("both take each other back") << true << true << true << 1 << QVector<int>{};
}

void tst_shuffle::theStepsAhead()
{
    QFETCH(bool, forward);
    QFETCH(bool, reverse);
    QFETCH(bool, loop);
    QFETCH(int, current);
    QFETCH(QVector<int>, ahead);
    QCOMPARE(positionsAhead({false, forward, reverse, loop}, current, 4, 2), ahead);
    QCOMPARE(positionsAhead({false, forward, reverse, loop}, 0, 0, 2), QVector<int>());
}

void tst_shuffle::onlyOneToThirtySecondsAreAnInterval_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("seconds");
    QTest::newRow("least") << QStringLiteral("1") << 1;
    QTest::newRow("most, with blanks") << QStringLiteral(" 30 ") << 30;
    for (const char *text : {"0", "31", "-3", "2.5", "five", "7 s", "99999999999999999999"})
        QTest::newRow(text) << QString::fromLatin1(text) << 0;
}

void tst_shuffle::onlyOneToThirtySecondsAreAnInterval()
{
    QFETCH(QString, text);
    QFETCH(int, seconds);
    QCOMPARE(slideIntervalFromText(text).value_or(0), seconds);
}

QTEST_APPLESS_MAIN(tst_shuffle)
#include "tst_shuffle.moc"
