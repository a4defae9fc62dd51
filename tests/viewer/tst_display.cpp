#include "app/checkjpg.h"
#include "app/globals.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/fit.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// A list entry on the pane: real window, pictures made in code.
class tst_display : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aClickShowsThePicture();
    void missingFileKeepsThePictureAndSaysSo();
    void whatIsNoPictureLeavesThePictureBefore_data();
    void whatIsNoPictureLeavesThePictureBefore();
    void gifKeepsTheDepthOfThePictureBefore();
    void zoomItemsAreFittedAndStopAtTheEnds();
    void stretchFillsThePaneButTellsTheZoom();
    void selectionListShowsWithoutTouchingThePosition();
    void clickInsideEachYieldEndsWithTheClickedItem();
    void wheelZoomsAtThePointerAndDraggingPans();
    void transparencyStandsOnACheckerboard();
    void resizeKeepsTheDecodedPicture();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    void fillDisplay(const QStringList &paths);
    QSize shownSize() { return window().Image1->size(); }
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_display::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_display::init()
{
    ScriptedDialogs::install();
    window().ClearDisplayList();
    window().cmdClearSelectionList_Click();
    window().mnuEditZoomLevel_Click(zoomItemAtStart);
    form<frmPreferences>().chkStretch->setChecked(false);
}

void tst_display::cleanup()
{
    setDialogs(nullptr);
}

void tst_display::fillDisplay(const QStringList &paths)
{
    window().tabFileList->setCurrentIndex(1);
    for (const QString &path : paths)
        window().lstDisplay->addItem(path);
    window().lblCount->setText(QString::number(paths.size()));
    window().UpdateMenuAndToolbarState();
}

void tst_display::aClickShowsThePicture()
{
    const QString path = m_home->writePicture(QStringLiteral("one two.png"), {300, 200}, 0xffcc3311);
    fillDisplay({path});
    window().lstDisplay->selectOnly(0);
    QCOMPARE(globals.CurrentListIndex, 1);
    QCOMPARE(window().CurrentPicture->text(), QStringLiteral("1"));
    QCOMPARE(shownSize(), QSize(300, 200));
    QCOMPARE(globals.OriginalImageWidth, 300);
    QCOMPARE(window().StatusBar1->panelText(2), QStringLiteral("One Two.Png"));
    QCOMPARE(window().StatusBar1->panelText(3), QStringLiteral("300 X 200 X 24"));
    QCOMPARE(window().StatusBar1->panelText(4), QStringLiteral("100%"));
    QVERIFY(!window().StatusBar1->panelIcon(2).isNull());
    const QImage grab = window().Picture1->grab().toImage();
    QCOMPARE(grab.pixelColor(grab.width() / 2, grab.height() / 2), QColor(0xcc, 0x33, 0x11));
}

void tst_display::missingFileKeepsThePictureAndSaysSo()
{
    const QString path = m_home->writePicture(QStringLiteral("there.png"), {60, 40});
    const QString gone = m_home->path() + QStringLiteral("gone.png");
    fillDisplay({path, gone});
    window().lstDisplay->selectOnly(0);
    const auto before = window().Image1->picture();
    QVERIFY(before);
    window().lstDisplay->selectOnly(1);
    QCOMPARE(window().Image1->picture(), before);
    QCOMPARE(globals.CurrentListIndex, 2);
    QCOMPARE(window().lstDisplay->count(), 2);
    QVERIFY2(window().StatusBar1->panelText(2).endsWith(QLatin1String("Gone.Png"), Qt::CaseInsensitive)
            || window().StatusBar1->panelText(2).contains(QLatin1String("Not Available"), Qt::CaseInsensitive),
        qPrintable(window().StatusBar1->panelText(2)));
}

void tst_display::whatIsNoPictureLeavesThePictureBefore_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("an empty file") << QByteArray();
    QTest::newRow("text under a picture's name") << QByteArray("this is no picture at all");
    QTest::newRow("a header and nothing behind it") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\1\0\0\0\1\0", 24);
}

void tst_display::whatIsNoPictureLeavesThePictureBefore()
{
    QFETCH(QByteArray, bytes);
    const QString good = m_home->writePicture(QStringLiteral("good.png"), {60, 40});
    const QString bad = m_home->write(QStringLiteral("bad.png"), bytes);
    fillDisplay({good, bad});
    window().lstDisplay->selectOnly(0);
    const auto before = window().Image1->picture();
    window().lstDisplay->selectOnly(1);
    QCOMPARE(window().Image1->picture(), before);
    QCOMPARE(shownSize(), QSize(60, 40));
    QCOMPARE(window().StatusBar1->panelText(2), QStringLiteral("Bad.Png"));
    QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
}

void tst_display::gifKeepsTheDepthOfThePictureBefore()
{
    // The smallest GIF: one black pixel, two colours.
    const QByteArray gif = QByteArray::fromBase64("R0lGODdhAQABAIAAAAAAAP///ywAAAAAAQABAAACAkQBADs=");
    const QString picture = m_home->writePicture(QStringLiteral("deep.png"), {60, 40});
    const QString small = m_home->write(QStringLiteral("small.gif"), gif);
    fillDisplay({picture, small});
    window().lstDisplay->selectOnly(0);
    window().lstDisplay->selectOnly(1);
    QCOMPARE(window().StatusBar1->panelText(3), QStringLiteral("1 X 1 X 24"));
}

void tst_display::zoomItemsAreFittedAndStopAtTheEnds()
{
    const QString path = m_home->writePicture(QStringLiteral("zoom.png"), {100, 60});
    fillDisplay({path});
    window().lstDisplay->selectOnly(0);
    for (int i = 0; i < 12; ++i)
        window().zoominc_Click();
    QVERIFY(window().mnuEditZoomLevel[11]->isChecked());
    QCOMPARE(shownSize(), fitIntoPane({100, 60}, 5, window().Picture1->size()));
    QCOMPARE(window().StatusBar1->panelText(4), QStringLiteral("500%"));
    for (int i = 0; i < 12; ++i)
        window().zoomdec_Click();
    QVERIFY(window().mnuEditZoomLevel[1]->isChecked());
    QCOMPARE(shownSize(), QSize(25, 15));
}

void tst_display::stretchFillsThePaneButTellsTheZoom()
{
    const QString path = m_home->writePicture(QStringLiteral("stretch.png"), {100, 60});
    form<frmPreferences>().chkStretch->setChecked(true);
    fillDisplay({path});
    window().lstDisplay->selectOnly(0);
    QCOMPARE(window().Image1->geometry(), window().Picture1->rect());
    QCOMPARE(window().StatusBar1->panelText(4), QStringLiteral("100%"));
}

void tst_display::selectionListShowsWithoutTouchingThePosition()
{
    const QString a = m_home->writePicture(QStringLiteral("a.png"), {100, 60});
    const QString b = m_home->writePicture(QStringLiteral("b.png"), {50, 20});
    fillDisplay({a});
    window().lstDisplay->selectOnly(0);
    window().lstSelect->addItem(b);
    window().lstSelect->selectOnly(0);
    QCOMPARE(shownSize(), QSize(50, 20));
    QCOMPARE(globals.CurrentListIndex, 1);
    QCOMPARE(window().CurrentPicture->text(), QStringLiteral("1"));
}

void tst_display::clickInsideEachYieldEndsWithTheClickedItem()
{
    const QString a = m_home->writePicture(QStringLiteral("ya.png"), {100, 60});
    const QString b = m_home->writePicture(QStringLiteral("yb.png"), {50, 20});
    const QString c = m_home->writePicture(QStringLiteral("yc.png"), {30, 70});
    const auto prepare = [&] {
        init();
        fillDisplay({a, b, c});
        window().lstDisplay->selectOnly(0);
    };
    const auto work = [&] { window().lstDisplay->selectOnly(1); };
    const auto disturb = [&] { window().lstDisplay->selectOnly(2); };
    const auto check = [&](int yield) {
        const QString what = QStringLiteral("yield %1").arg(yield);
        QVERIFY2(shownSize() == (yield == 0 ? QSize(50, 20) : QSize(30, 70)), qPrintable(what));
        QVERIFY2(globals.CurrentListIndex == (yield == 0 ? 2 : 3), qPrintable(what));
        QVERIFY2(
            window().StatusBar1->panelText(2) == (yield == 0 ? QStringLiteral("Yb.Png") : QStringLiteral("Yc.Png")),
            qPrintable(what));
        QVERIFY2(!QGuiApplication::overrideCursor(), qPrintable(what));
    };
    forEachYield(prepare, work, disturb, check);
}

void tst_display::wheelZoomsAtThePointerAndDraggingPans()
{
    const QString path = m_home->writePicture(QStringLiteral("wheel.png"), {2000, 1500});
    fillDisplay({path});
    window().lstDisplay->selectOnly(0);
    const QSize fitted = shownSize();
    QVERIFY(fitted.width() < 2000);
    ImagePane *image = window().Image1;
    const QPoint pointer(fitted.width() / 4, fitted.height() / 4);
    Q_EMIT image->wheelTurned(1, pointer);
    Q_EMIT image->wheelTurned(
        1, image->mapFromGlobal(window().Picture1->mapToGlobal(QPoint(window().Picture1->width() / 4, 100))));
    QVERIFY(shownSize().width() > window().Picture1->width());
    const QPoint before = image->pos();
    Q_EMIT image->dragged(QPoint(-40, -30));
    QVERIFY(image->pos() != before);
    // Never past the picture's edge.
    Q_EMIT image->dragged(QPoint(100000, 100000));
    QVERIFY(image->x() <= qMax(0, (window().Picture1->width() - image->width()) / 2)
        && image->y() <= qMax(0, (window().Picture1->height() - image->height()) / 2));
    // Turning back ends in the fit, with the zoom item that was chosen before.
    for (int i = 0; i < 12; ++i)
        Q_EMIT image->wheelTurned(-1, QPoint(5, 5));
    QCOMPARE(shownSize(), fitted);
    QVERIFY(window().mnuEditZoomLevel[zoomItemAtStart]->isChecked());
}

void tst_display::transparencyStandsOnACheckerboard()
{
    QImage image(64, 64, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    const QString path = m_home->path() + QStringLiteral("clear.png");
    QVERIFY(image.save(path));
    fillDisplay({path});
    window().lstDisplay->selectOnly(0);
    const QImage grab = window().Image1->grab().toImage();
    QVERIFY(grab.pixel(4, 4) != grab.pixel(12, 4));
    QCOMPARE(grab.pixel(4, 4), grab.pixel(12, 12));
}

void tst_display::resizeKeepsTheDecodedPicture()
{
    const QString path = m_home->writePicture(QStringLiteral("resize.png"), {3000, 500});
    fillDisplay({path});
    window().lstDisplay->selectOnly(0);
    const auto before = window().Image1->picture();
    window().resize(1200, 800);
    QTRY_COMPARE(shownSize().width(), window().Picture1->width());
    QCOMPARE(window().Image1->picture(), before);
    window().resize(300, 200);
    QTRY_VERIFY(window().width() >= 633 && window().height() >= 426);
    window().resize(1000, 700);
}

QTEST_MAIN(tst_display)
#include "tst_display.moc"
