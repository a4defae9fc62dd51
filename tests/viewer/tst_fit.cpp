#include "viewer/fit.h"
#include "viewer/statustext.h"

#include <QtTest>

/// Where a picture stands in the pane, and what the status bar says of it.
class tst_fit : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void pictureIsFittedOnOneAxis_data();
    void pictureIsFittedOnOneAxis();
    void zoomItemsCoverTheSpecifiedSteps();
    void placedInTheMiddleOrStretched();
    void aScaledDesktopHasRoomForEachPixel();
    void statusTextIsProperCase_data();
    void statusTextIsProperCase();
};

void tst_fit::pictureIsFittedOnOneAxis_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<double>("zoom");
    QTest::addColumn<QSize>("pane");
    QTest::addColumn<QSize>("expected");
    const auto row = [](const char *name, QSize picture, double zoom, QSize pane, QSize expected) {
        QTest::newRow(name) << picture << zoom << pane << expected;
    };
    row("smaller than the pane: kept", {100, 50}, 1, {500, 400}, {100, 50});
    row("exactly the pane: kept", {500, 400}, 1, {500, 400}, {500, 400});
    row("too wide: width fits, height follows", {1000, 300}, 1, {500, 400}, {500, 150});
    row("too high: height fits, width follows", {300, 800}, 1, {500, 400}, {150, 400});
    row("too wide, height just fits: no case applies, clipped", {1000, 400}, 1, {500, 400}, {1000, 400});
    row("too high, width just fits: no case applies, clipped", {500, 900}, 1, {500, 400}, {500, 900});
    row("both over, width more: width fits", {2000, 900}, 1, {500, 400}, {500, 225});
    row("both over, height more: height fits", {900, 2000}, 1, {500, 400}, {180, 400});
    row("equal excesses: clipped", {1000, 1000}, 1, {500, 500}, {1000, 1000});
    row("one axis only: the other may stay outside", {1200, 1000}, 1, {500, 400}, {500, 417});
    row("zoom down is applied before the fit", {1000, 800}, 0.25, {500, 400}, {250, 200});
    row("zoom up of a small picture", {100, 60}, 3, {500, 400}, {300, 180});
    row("a half is rounded to even, down", {5, 4}, 0.5, {500, 400}, {2, 2});
    row("a half is rounded to even, up", {3, 7}, 0.5, {500, 400}, {2, 4});
    row("fitted height rounds a half to even", {1000, 101}, 1, {500, 400}, {500, 50});
}

void tst_fit::pictureIsFittedOnOneAxis()
{
    QFETCH(QSize, picture);
    QFETCH(double, zoom);
    QFETCH(QSize, pane);
    QTEST(fitIntoPane(picture, zoom, pane), "expected");
}

void tst_fit::zoomItemsCoverTheSpecifiedSteps()
{
    double before = 0;
    for (int i = zoomItemFirst; i <= zoomItemLast; ++i) {
        const double factor = zoomFactor(i);
        QVERIFY(factor > before);
        before = factor;
        // The caption tells the factor.
        QCOMPARE(QString::fromLatin1(zoomCaptions[i - 1]).remove(QLatin1Char(' ')),
            QString::number(factor * 100) + QLatin1Char('%'));
    }
    QCOMPARE(zoomFactor(zoomItemAtStart), 1.0);
}

void tst_fit::placedInTheMiddleOrStretched()
{
    QCOMPARE(placeInPane({1000, 1000}, {500, 500}, false), QRect(-250, -250, 1000, 1000));
    QCOMPARE(placeInPane({100, 50}, {500, 400}, false), QRect(200, 175, 100, 50));
    QCOMPARE(placeInPane({100, 50}, {500, 400}, true), QRect(0, 0, 500, 400));
}

void tst_fit::aScaledDesktopHasRoomForEachPixel()
{
    QCOMPARE(onDesktop({-7, 3, 101, 77}, 1), QRect(-7, 3, 101, 77));
    QCOMPARE(onDesktop({-7, 3, 101, 77}, 1.5), QRect(-5, 2, 68, 52));
    QCOMPARE(onDesktop({0, 0, 0, 0}, 2), QRect(0, 0, 1, 1));
}

void tst_fit::statusTextIsProperCase_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("withDimensions");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    const auto row = [](const char *title, const char *text, bool with, const char *name, const char *extension) {
        QTest::newRow(title) << QString::fromUtf8(text) << with << QString::fromUtf8(name)
                             << QString::fromUtf8(extension);
    };
    row("with dimensions only the name is told", "/srv/me/MY picture.JPG", true, "My Picture.Jpg", ".Jpg");
    row("without them the whole text", "/srv/me/x.mp3", false, "/Srv/Me/X.Mp3", ".Mp3");
    row("a dot in a folder: the extension holds a path", "/a.b/c.png", true, "C.Png", ".B/C.Png");
    row("no dot, no extension", "/srv/me/README", true, "Readme", "");
    row("umlauts", "/bilder/ÄPFEL über.gif", true, "Äpfel Über.Gif", ".Gif");
    row("an empty text", "", false, "", "");
}

void tst_fit::statusTextIsProperCase()
{
    QFETCH(QString, text);
    QFETCH(bool, withDimensions);
    const StatusText status = statusText(text, withDimensions);
    QTEST(status.name, "name");
    QTEST(status.extension, "extension");
}

QTEST_GUILESS_MAIN(tst_fit)
#include "tst_fit.moc"
