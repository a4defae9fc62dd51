#include "actions/wallpaper.h"
#include "viewer/fit.h"
#include "viewer/frmBackground.h"
#include "viewer/showtest.h"

/// The full screen window and its show, on the second of two screens, which has two pixels to each unit.
class tst_fullscreen_show : public ShowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { m_dialogs = &fresh(); }
    void cleanup() { setDialogs(nullptr); }

    void theMenuTellsWhatRuns();
    void theTwoShowsExcludeEachOther();
    void itCoversTheScreenOfTheMainViewer();
    void aPictureIsFittedIntoThePixelsOfTheScreen();
    void keys_data();
    void keys();
    void enterPausesAndGoesOn();
    void theEndOfTheListLeavesTheLastPicture();
    void soundsAndVideosAreStoodInFor();
    void theCurrentItemWithoutAShow();
    void aBrokenPictureLeavesTheOneBefore();
    void howeverTheWindowGoesTheShowIsOver();
    void thePointerHidesAndComesBack();
    void theWallpaperBringsNoPointerBack();
    void disturbedAtEachYield_data();
    void disturbedAtEachYield();
    void picturesAreDecodedForTheScreen();
    void noFrameBetweenTwoPicturesIsEmpty();

private:
    void startShow(int count = 4)
    {
        fill(pictures(count));
        viewer().mnuSlideShowFullScreen->trigger();
    }
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_fullscreen_show::initTestCase()
{
    QCOMPARE(QGuiApplication::screens().size(), 2);
    viewer().setGeometry(QRect(QGuiApplication::screens()[1]->geometry().topLeft() + QPoint(20, 20), QSize(700, 500)));
    QVERIFY(start());
    viewer().setGeometry(QRect(QGuiApplication::screens()[1]->geometry().topLeft() + QPoint(20, 20), QSize(700, 500)));
    QTRY_COMPARE(viewer().screen(), QGuiApplication::screens()[1]);
}

void tst_fullscreen_show::theMenuTellsWhatRuns()
{
    QVERIFY(!viewer().mnuSlideShowFullViewer->isVisible());
    startShow();
    QVERIFY(viewer().mnuSlideShowFullScreen->isChecked() && slideButton()->isChecked());
    QCOMPARE(viewer().mnuSlideShowFullScreen->text(), QStringLiteral("&Stop Full Screen Media Show"));
    QVERIFY(viewer().mnuSlideShowFullViewer->isVisible() && globals.AutoPlayMotion);
    QCOMPARE(viewer().tmrSlideShow.interval(), 5000);
    QVERIFY(fullScreen().isVisible());
    QCOMPARE(current(), 2);
    QCOMPARE(fullScreen().Text1->text(), QStringLiteral("b.png"));
    tick();
    QCOMPARE(fullScreen().Text1->text(), QStringLiteral("c.png"));
    QCOMPARE(fullScreen().imgImage->picture(), viewer().Image1->picture());
    viewer().mnuSlideShowFullScreen->trigger();
    QVERIFY(isIdle() && !isFullScreenLoaded());
}

void tst_fullscreen_show::theTwoShowsExcludeEachOther()
{
    fill(pictures(8));
    viewer().mnuSlideShowRunSlideShow_Click();
    viewer().mnuSlideShowFullScreen_Click();
    QVERIFY(!viewer().mnuSlideShowRunSlideShow->isChecked() && viewer().mnuSlideShowFullScreen->isChecked());
    QCOMPARE(viewer().mnuSlideShowRunSlideShow->text(), QStringLiteral("S&tart Media Show"));
    QVERIFY(slideButton()->isChecked());
    viewer().mnuSlideShowRunSlideShow_Click();
    QVERIFY(viewer().mnuSlideShowRunSlideShow->isChecked() && !viewer().mnuSlideShowFullScreen->isChecked());
    QCOMPARE(viewer().mnuSlideShowFullScreen->text(), QStringLiteral("&Start Full Screen Media Show"));
    QVERIFY(!viewer().mnuSlideShowFullViewer->isVisible() && !isFullScreenLoaded());
    QVERIFY(slideButton()->isChecked() && viewer().tmrSlideShow.isActive() && globals.AutoPlayMotion);
    viewer().mnuSlideShowRunSlideShow_Click();
    QVERIFY(isIdle());
}

void tst_fullscreen_show::itCoversTheScreenOfTheMainViewer()
{
    startShow();
    QCOMPARE(fullScreen().screen(), viewer().screen());
    QTRY_COMPARE(fullScreen().geometry(), viewer().screen()->geometry());
    QVERIFY(fullScreen().windowFlags().testFlag(Qt::FramelessWindowHint));
    QCOMPARE(fullScreen().picImage->geometry(), fullScreen().rect());
    QVERIFY(fullScreen().cmdClose->geometry().right() < fullScreen().width());
    fullScreen().showPlayTime(QStringLiteral("00 : 00 : 01 | 00 : 00 : 02"));
    QVERIFY(fullScreen().lblFileName->geometry().right() < fullScreen().cmdClose->x());
    viewer().mnuSlideShowFullViewer->trigger();
    QTRY_VERIFY(fullScreen().isActiveWindow());
}

void tst_fullscreen_show::aPictureIsFittedIntoThePixelsOfTheScreen()
{
    const double ratio = viewer().screen()->devicePixelRatio();
    QCOMPARE(ratio, 2.0);
    const QSize screen = viewer().screen()->geometry().size() * ratio;
    const QSize wide(screen.width() * 2, screen.height());
    fill({pictures(1).first(), home().writePicture(QStringLiteral("wide.png"), wide), pictures(2).last()});
    viewer().mnuSlideShowFullScreen_Click();
    // Half as high as the screen, in its middle; the name stands above it, twice.
    const QRect place = fullScreen().imgImage->geometry();
    QCOMPARE(place.size() * ratio, fitIntoPane(wide, 1, screen));
    QCOMPARE(place.center(), fullScreen().rect().center());
    const int top = place.top();
    QCOMPARE(fullScreen().Text1->geometry(), QRect(0, top - 50, fullScreen().width(), 25));
    QCOMPARE(fullScreen().Text2->geometry(), QRect(0, top - 25, fullScreen().width(), 25));
    QVERIFY(fullScreen().Text1->isVisible() && fullScreen().Text2->isVisible());
    QCOMPARE(fullScreen().Text2->text(), QStringLiteral("wide.png"));
    tick();
    QCOMPARE(fullScreen().imgImage->size(), QSize(20, 15));
}

void tst_fullscreen_show::keys_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<bool>("running");
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("open");
    QTest::newRow("Escape stops the show") << Qt::Key_Escape << true << 4 << false;
    QTest::newRow("Escape closes") << Qt::Key_Escape << false << 4 << false;
    QTest::newRow("Space goes on at once") << Qt::Key_Space << true << 5 << true;
    QTest::newRow("Space closes without a show") << Qt::Key_Space << false << 4 << false;
    QTest::newRow("Page Down") << Qt::Key_PageDown << true << 5 << true;
    QTest::newRow("Page Up") << Qt::Key_PageUp << true << 3 << true;
    QTest::newRow("Page Up without a show") << Qt::Key_PageUp << false << 3 << true;
    QTest::newRow("any other key") << Qt::Key_A << true << 4 << true;
}

void tst_fullscreen_show::keys()
{
    QFETCH(Qt::Key, key);
    QFETCH(bool, running);
    QFETCH(int, position);
    QFETCH(bool, open);
    fill(pictures(8), running ? 3 : 4);
    if (running)
        viewer().mnuSlideShowFullScreen->trigger();
    else
        viewer().mnuViewFullScreen->trigger();
    QCOMPARE(current(), 4);
    globals.ShowStopRequested = true;
    QTest::keyClick(fullScreen().picImage, key);
    QCOMPARE(current(), position);
    QCOMPARE(isFullScreenLoaded(), open);
    QCOMPARE(isIdle(), !running || !open);
    QCOMPARE(globals.ShowStopRequested, key != Qt::Key_Escape);
    if (open)
        QCOMPARE(fullScreen().Text1->text(), QLatin1Char(char('a' + position - 1)) + QStringLiteral(".png"));
}

void tst_fullscreen_show::enterPausesAndGoesOn()
{
    startShow();
    QTest::keyClick(fullScreen().picImage, Qt::Key_Return);
    QVERIFY(!viewer().tmrSlideShow.isActive());
    QCOMPARE(fullScreen().lblFileName->text(), QStringLiteral("Stopped"));
    QVERIFY(fullScreen().lblFileName->isVisible());
    viewer().ShowPlayTime();
    fullScreen().showPlayTime(QStringLiteral("00 : 00"));
    QVERIFY2(fullScreen().isPaused(), "the play time does not end the pause");
    QTest::keyClick(fullScreen().picImage, Qt::Key_Enter);
    QVERIFY(viewer().tmrSlideShow.isActive());
    QCOMPARE(viewer().tmrSlideShow.interval(), 5000);
    QVERIFY(fullScreen().lblFileName->text().isEmpty() && !fullScreen().lblFileName->isVisible());
    // A pause ends with its show, and none begins anything where there is no show.
    fullScreen().KeyDown(13);
    viewer().mnuSlideShowFullScreen_Click();
    QVERIFY(isIdle() && isFullScreenLoaded() && !fullScreen().isPaused());
    fullScreen().KeyDown(13);
    fullScreen().KeyDown(13);
    QVERIFY(isIdle());
}

void tst_fullscreen_show::theEndOfTheListLeavesTheLastPicture()
{
    startShow(2);
    tick();
    QVERIFY(isIdle() && globals.ShowStopRequested);
    QVERIFY(isFullScreenLoaded() && fullScreen().isVisible());
    QCOMPARE(fullScreen().Text1->text(), QStringLiteral("b.png"));
    QTest::keyClick(fullScreen().picImage, Qt::Key_Space);
    QVERIFY(!isFullScreenLoaded());
}

void tst_fullscreen_show::soundsAndVideosAreStoodInFor()
{
    ObedientPlayer *player = usePlayer();
    const QStringList all = pictures(2);
    fill({all.first(), motion(QStringLiteral("film.mpg")), all.last()});
    viewer().mnuSlideShowFullScreen_Click();
    const auto standing = form<frmBackground>().Picture;
    QCOMPARE(player->state, Player::Playing);
    QCOMPARE(fullScreen().imgImage->picture(), standing);
    QCOMPARE(fullScreen().imgImage->size() * 2, standing->info().size);
    QVERIFY(!fullScreen().Text1->isVisible() && !fullScreen().Text2->isVisible());
    QVERIFY2(viewer().wmp9->window() == &viewer(), "the player stays where it is");
    viewer().ShowPlayTime();
    QCOMPARE(fullScreen().lblFileName->text(), QStringLiteral("00 : 01 : 01 | 01 : 02 : 05"));
    QCOMPARE(viewer().StatusBar1->panelText(3), fullScreen().lblFileName->text());
    QVERIFY(fullScreen().lblFileName->isVisible());
    player->change(Player::Stopped);
    tick();
    QVERIFY(fullScreen().imgImage->picture() != standing);
    QVERIFY(fullScreen().lblFileName->text().isEmpty());
    withoutPlayer();
}

void tst_fullscreen_show::theCurrentItemWithoutAShow()
{
    const QStringList all = pictures(3);
    const QString gone = home().path() + QStringLiteral("gone.png");
    fill({all[0], gone, all[2]});
    viewer().lstSelect->addItem(all[1]);
    viewer().lstSelect->selectOnly(0);
    QCOMPARE(globals.CurrentMediaFile, all[1]);
    viewer().mnuViewFullScreen->trigger();
    QVERIFY(isIdle());
    QCOMPARE(fullScreen().Text1->text(), QStringLiteral("a.png"));
    QCOMPARE(fullScreen().imgImage->picture()->current().pixels, viewer().Image1->picture()->current().pixels);
    const auto before = fullScreen().imgImage->picture();
    fullScreen().KeyDown(34);
    QCOMPARE(fullScreen().Text1->text(), QStringLiteral("gone.png - not available"));
    QCOMPARE(fullScreen().imgImage->picture(), before);
}

void tst_fullscreen_show::aBrokenPictureLeavesTheOneBefore()
{
    fill({pictures(1).first(), home().writePicture(QStringLiteral("large.jpg"), {3200, 2400}),
        home().write(QStringLiteral("broken.png"), "no picture")});
    viewer().mnuSlideShowFullScreen_Click();
    const QRect place = fullScreen().imgImage->geometry();
    const auto before = fullScreen().imgImage->picture();
    tick();
    QCOMPARE(fullScreen().Text1->text(), QStringLiteral("broken.png"));
    QCOMPARE(fullScreen().imgImage->picture(), before);
    QVERIFY2(fullScreen().imgImage->geometry() == place, "it does not shrink to the size that it had on the pane");
}

void tst_fullscreen_show::howeverTheWindowGoesTheShowIsOver()
{
    startShow();
    QTest::mouseDClick(fullScreen().imgImage, Qt::LeftButton);
    QVERIFY(isIdle() && !isFullScreenLoaded());
    startShow(3);
    fullScreen().close();
    QVERIFY(isIdle() && !isFullScreenLoaded());
    startShow(3);
    QTest::mouseClick(fullScreen().imgImage, Qt::LeftButton);
    QVERIFY(isFullScreenLoaded());
    QCOMPARE(fullScreen().focusWidget(), fullScreen().picImage);
    fullScreen().cmdClose->click();
    QVERIFY(isIdle() && !isFullScreenLoaded());
    // A show of the Main Viewer goes on when a full screen window that is not its own is closed.
    viewer().lstDisplay->selectOnly(0);
    viewer().mnuSlideShowRunSlideShow_Click();
    viewer().mnuViewFullScreen_Click();
    fullScreen().KeyDown(27);
    QVERIFY(!isFullScreenLoaded() && viewer().mnuSlideShowRunSlideShow->isChecked());
    viewer().mnuSlideShowRunSlideShow_Click();
}

void tst_fullscreen_show::thePointerHidesAndComesBack()
{
    startShow();
    QTRY_VERIFY(fullScreen().tmrPointer.isActive());
    elapse(fullScreen().tmrPointer);
    QCOMPARE(fullScreen().cursor().shape(), Qt::BlankCursor);
    QVERIFY(!fullScreen().cmdClose->isVisible());
    tick();
    QVERIFY2(!QGuiApplication::overrideCursor(), "no busy pointer between two pictures");
    const QPointF place(3, 3);
    QMouseEvent move(QEvent::MouseMove, place, fullScreen().imgImage->mapToGlobal(place), Qt::NoButton, Qt::NoButton,
        Qt::NoModifier);
    QCoreApplication::sendEvent(fullScreen().imgImage, &move);
    QVERIFY(fullScreen().cursor().shape() != Qt::BlankCursor);
    QVERIFY(fullScreen().cmdClose->isVisible());
}

/// The warning of a file that cannot be written comes in the middle of the work.
void tst_fullscreen_show::theWallpaperBringsNoPointerBack()
{
    static int warnings = 0;
    static int withBusyPointer = 0;
    QVERIFY(QDir().mkpath(wallpaperFileName()));
    startShow();
    viewer().mnuSlideshowDesktopCentered->trigger();
    const auto before = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &message) {
        warnings += int(message.startsWith(QLatin1String("picture not written")));
        withBusyPointer += int(QGuiApplication::overrideCursor() != nullptr);
    });
    tick();
    qInstallMessageHandler(before);
    QCOMPARE(warnings, 1);
    QCOMPARE(withBusyPointer, 0);
    QVERIFY(QDir().rmdir(wallpaperFileName()));
}

void tst_fullscreen_show::disturbedAtEachYield_data()
{
    QTest::addColumn<QString>("by");
    for (const char *by : {"an empty list", "Escape", "the Main Viewer's show", "the end"})
        QTest::newRow(by) << QString::fromLatin1(by);
}

void tst_fullscreen_show::disturbedAtEachYield()
{
    QFETCH(QString, by);
    const auto prepare = [&] {
        globals.ProgramExiting = false;
        fresh();
        fill(pictures(5), 2);
    };
    const auto disturb = [&] {
        if (by == QLatin1String("an empty list")) {
            viewer().ClearDisplayList();
        } else if (by == QLatin1String("Escape")) {
            if (isFullScreenLoaded())
                fullScreen().KeyDown(27);
            else
                viewer().mnuSlideShowFullScreen_Click();
        } else if (by == QLatin1String("the Main Viewer's show")) {
            viewer().mnuSlideShowRunSlideShow_Click();
        } else {
            globals.ProgramExiting = true;
        }
    };
    const auto check = [&](int yield) {
        const QByteArray where = QByteArray("yield ") + QByteArray::number(yield);
        const bool ended = yield > 0 && (by == QLatin1String("an empty list") || by == QLatin1String("Escape"));
        const bool other = yield > 0 && by == QLatin1String("the Main Viewer's show");
        QVERIFY2(viewer().mnuSlideShowFullScreen->isChecked() == (!ended && !other), where);
        QVERIFY2(viewer().mnuSlideShowRunSlideShow->isChecked() == other, where);
        QVERIFY2(!ended || isIdle(), where);
        QVERIFY2(!(ended || other) || !isFullScreenLoaded(), where);
        globals.ProgramExiting = false;
    };
    forEachYield(
        prepare, [&] { viewer().mnuSlideShowFullScreen_Click(); }, disturb, check);
}

void tst_fullscreen_show::picturesAreDecodedForTheScreen()
{
    const QSize large(3200, 2400);
    QStringList paths = pictures(1);
    for (const char *name : {"one.jpg", "two.jpg"})
        paths.append(home().writePicture(QString::fromLatin1(name), large));
    PictureCache::instance().shutDown();
    fill(paths);
    viewer().mnuSlideShowFullScreen_Click();
    const QSize place = fitIntoPane(large, 1, fullScreen().paneSize());
    QVERIFY2(place.width() > viewer().Picture1->width() * 2, "the screen shows more than the pane");
    // The next one, which no window has asked for yet.
    const auto ahead = [&] {
        const auto next = PictureCache::instance().load(paths.last(), -1, QSize(8, 8));
        return next ? (*next)->current().pixels.width() : 0;
    };
    QTRY_VERIFY(ahead() >= place.width());
}

void tst_fullscreen_show::noFrameBetweenTwoPicturesIsEmpty()
{
    ObedientPlayer *player = usePlayer();
    fill(QStringList(pictures(4)) + QStringList{motion(QStringLiteral("film.mpg")), pictures(5).last()});
    viewer().mnuSlideShowFullScreen_Click();
    const auto middle = [this] {
        const QImage pixels = fullScreen().imgImage->picture()->current().pixels;
        return pixels.pixelColor(pixels.width() / 2, pixels.height() / 2);
    };
    QTRY_COMPARE(onScreen(*fullScreen().picImage), middle());
    FrameWatch watch([this] { return isFullScreenLoaded() ? onScreen(*fullScreen().picImage) : QColor(); });
    QVector<QColor> expected{middle()};
    for (int i = 0; i < 4; ++i) {
        player->change(Player::Stopped);
        tick();
        expected.append(middle());
        QTRY_COMPARE(onScreen(*fullScreen().picImage), expected.last());
    }
    fullScreen().update();
    QTRY_COMPARE(watch.seen.last(), expected.last());
    QCOMPARE(watch.seen, expected);
    withoutPlayer();
}

int main(int argc, char **argv)
{
    // Two screens side by side; the second one is scaled.
    QTemporaryDir folder;
    QFile screens(folder.filePath(QStringLiteral("screens.json")));
    if (!screens.open(QIODevice::WriteOnly))
        return 1;
    screens.write(R"({"screens": [{"name": "one", "x": 0, "y": 0, "width": 1024, "height": 768, "dpr": 1},
        {"name": "two", "x": 1024, "y": 0, "width": 1280, "height": 720, "dpr": 2}]})");
    screens.close();
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")
        || qEnvironmentVariable("QT_QPA_PLATFORM") == QLatin1String("offscreen"))
        qputenv("QT_QPA_PLATFORM", QByteArray("offscreen:configfile=") + QFile::encodeName(screens.fileName()));
    QApplication application(argc, argv);
    tst_fullscreen_show test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_fullscreen_show.moc"
