#include "engine/player.h"
#include "viewer/playercontrols.h"

#include <QtTest>

/// The bar of the player without a player behind it.
class TestPlayerControls : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theBarPaintsNothingThatHasNotChanged();
    void playTimes_data();
    void playTimes();
};

/// It is told five times a second, also while the player pauses.
void TestPlayerControls::theBarPaintsNothingThatHasNotChanged()
{
    struct : QObject
    {
        int paints = 0;
        bool eventFilter(QObject *, QEvent *event) override
        {
            paints += int(event->type() == QEvent::Paint);
            return false;
        }
    } counter;
    PlayerControls bar;
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    for (QWidget *each : bar.findChildren<QWidget *>())
        each->installEventFilter(&counter);
    bar.showState(Player::Playing, true);
    bar.showTime(3, 200);
    QTRY_VERIFY(counter.paints > 0);
    QCoreApplication::processEvents();
    counter.paints = 0;
    bar.showState(Player::Playing, true);
    bar.showTime(3, 200);
    QCoreApplication::processEvents();
    QCOMPARE(counter.paints, 0);
}

void TestPlayerControls::playTimes_data()
{
    QTest::addColumn<double>("position");
    QTest::addColumn<double>("duration");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, double position, double duration, const char *text) {
        QTest::newRow(name) << position << duration << QString::fromLatin1(text);
    };
    row("nothing", 0, 0, "0:00 / 0:00");
    row("parts of a second are cut off", 9.99, 59.999, "0:09 / 0:59");
    row("minutes go up to an hour", 600, 3599, "10:00 / 59:59");
    row("hours in both when one has them", 62, 3600, "0:01:02 / 1:00:00");
    row("days are hours", 0, 360000, "0:00:00 / 100:00:00");
    row("before the start is the start", -5, 1, "0:00 / 0:01");
}

void TestPlayerControls::playTimes()
{
    QFETCH(double, position);
    QFETCH(double, duration);
    QTEST(playTimeText(position, duration), "text");
}

QTEST_MAIN(TestPlayerControls)
#include "tst_playercontrols.moc"
