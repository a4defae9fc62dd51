#include "viewer/showtest.h"

#include "actions/wallpaper.h"
#include "app/allsettings.h"
#include "app/settings.h"
#include "platform/registrystore.h"

/// The show in the Main Viewer: its menu, its steps, its ends.
class tst_mediashow : public ShowTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(start()); }
    void init() { m_dialogs = &fresh(); }
    void cleanup() { setDialogs(nullptr); }

    void theMenuTellsWhatRuns();
    void aClickOfTheUserTurnsTheMarkOnce();
    void theListIsGoneThroughToItsEnd_data();
    void theListIsGoneThroughToItsEnd();
    void afterTheEndTheNextClickOnlyTurnsOff();
    void bothOrdersOrNoneStandStill();
    void oneEntry_data();
    void oneEntry();
    void theToolbarStartsTheChosenShow();
    void aPlayingItemIsNotCutOff();
    void whatIsGoneIsPassedOver();
    void theIntervalIsAskedForUntilItFits();
    void rubbishInTheStoreGivesTheUsualInterval_data();
    void rubbishInTheStoreGivesTheUsualInterval();
    void eachGroupKeepsOneMarkAndItsKeys();
    void whatEndsAShow();
    void disturbedAtEachYield_data();
    void disturbedAtEachYield();
    void eachPictureBecomesTheWallpaper();
    void whatComesNextIsDecoded_data();
    void whatComesNextIsDecoded();
    void noFrameBetweenTwoPicturesIsEmpty();

private:
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_mediashow::theMenuTellsWhatRuns()
{
    fill(pictures(4));
    QVERIFY(isIdle());
    globals.SlideShowInterval = 0;
    viewer().mnuSlideShowRunSlideShow_Click();
    QVERIFY(viewer().mnuSlideShowRunSlideShow->isChecked() && slideButton()->isChecked());
    QCOMPARE(viewer().mnuSlideShowRunSlideShow->text(), QStringLiteral("S&top Media Show"));
    QVERIFY(globals.AutoPlayMotion);
    QCOMPARE(globals.SlideShowInterval, 5);
    QVERIFY(viewer().tmrSlideShow.isActive());
    QCOMPARE(viewer().tmrSlideShow.interval(), 5000);
    QCOMPARE(viewer().tmrSlideShow.timerType(), Qt::PreciseTimer);
    QCOMPARE(globals.ShuffleHistory.size(), 5);
    QVERIFY2(current() == 2, "the first step comes at once");
    tick();
    QCOMPARE(current(), 3);
    QCOMPARE(viewer().StatusBar1->panelText(2), QStringLiteral("C.Png"));
    viewer().mnuSlideShowRunSlideShow_Click();
    QVERIFY(isIdle());
    QCOMPARE(current(), 3);
}

void tst_mediashow::aClickOfTheUserTurnsTheMarkOnce()
{
    fill(pictures(4));
    viewer().mnuSlideShowRunSlideShow->trigger();
    QVERIFY(viewer().mnuSlideShowRunSlideShow->isChecked());
    QCOMPARE(current(), 2);
    viewer().mnuSlideShowRunSlideShow->trigger();
    QVERIFY(isIdle());
}

void tst_mediashow::theListIsGoneThroughToItsEnd_data()
{
    QTest::addColumn<bool>("reverse");
    QTest::addColumn<bool>("loop");
    QTest::newRow("forward") << false << false;
    QTest::newRow("reverse") << true << false;
    QTest::newRow("forward, round again") << false << true;
    QTest::newRow("reverse, round again") << true << true;
}

void tst_mediashow::theListIsGoneThroughToItsEnd()
{
    QFETCH(bool, reverse);
    QFETCH(bool, loop);
    fill(pictures(3), reverse ? 3 : 1);
    (reverse ? viewer().mnuSlideShowReverseOrder : viewer().mnuSlideShowForwardOrder)->trigger();
    viewer().mnuSlideShowLoopAround->setChecked(loop);
    viewer().mnuSlideShowRunSlideShow_Click();
    tick();
    QCOMPARE(current(), reverse ? 1 : 3);
    tick();
    if (loop) {
        QCOMPARE(current(), reverse ? 3 : 1);
        QCOMPARE(viewer().lstDisplay->selectedIndices(), QList<int>{reverse ? 2 : 0});
        QVERIFY(viewer().isShowRunning());
        viewer().mnuSlideShowRunSlideShow_Click();
    } else {
        QVERIFY2(current() == (reverse ? 0 : 4), "one step past the end");
        QVERIFY(globals.ShowStopRequested);
        QCOMPARE(viewer().lstDisplay->listIndex(), reverse ? 0 : 2);
    }
    QVERIFY(isIdle());
}

void tst_mediashow::afterTheEndTheNextClickOnlyTurnsOff()
{
    fill(pictures(2), 2);
    viewer().NextListItem();
    QVERIFY(globals.ShowStopRequested);
    viewer().mnuSlideShowRunSlideShow->trigger();
    QVERIFY(isIdle());
    QVERIFY(!globals.ShowStopRequested);
    viewer().lstDisplay->selectOnly(0);
    viewer().mnuSlideShowRunSlideShow->trigger();
    QVERIFY(viewer().mnuSlideShowRunSlideShow->isChecked());
    QCOMPARE(current(), 2);
    viewer().mnuSlideShowRunSlideShow->trigger();
}

void tst_mediashow::bothOrdersOrNoneStandStill()
{
    fill(pictures(4), 2);
    for (const bool marked : {true, false}) {
        viewer().mnuSlideShowForwardOrder->setChecked(marked);
        viewer().mnuSlideShowReverseOrder->setChecked(marked);
        viewer().mnuSlideShowRunSlideShow_Click();
        QCOMPARE(current(), 2);
        QVERIFY(viewer().isShowRunning());
        viewer().mnuSlideShowRunSlideShow_Click();
    }
}

void tst_mediashow::oneEntry_data()
{
    QTest::addColumn<bool>("shuffle");
    QTest::addColumn<bool>("loop");
    QTest::newRow("forward") << false << false;
    QTest::newRow("forward, round again") << false << true;
    QTest::newRow("shuffle") << true << false;
    QTest::newRow("shuffle, round again") << true << true;
}

void tst_mediashow::oneEntry()
{
    QFETCH(bool, shuffle);
    QFETCH(bool, loop);
    fill(pictures(1));
    if (shuffle)
        viewer().mnuSlideShowShuffleOrder->trigger();
    viewer().mnuSlideShowLoopAround->setChecked(loop);
    viewer().mnuSlideShowRunSlideShow_Click();
    // The draw finds the one position; a step forward finds nothing behind it.
    QCOMPARE(viewer().isShowRunning(), shuffle || loop);
    QCOMPARE(globals.ShuffleCount, shuffle ? 1 : 0);
    tick();
    QCOMPARE(viewer().isShowRunning(), loop);
    if (loop)
        viewer().mnuSlideShowRunSlideShow_Click();
    QVERIFY(isIdle());
}

void tst_mediashow::theToolbarStartsTheChosenShow()
{
    fill(pictures(8));
    viewer().mnuSlideShowToolbarButton[1]->trigger();
    slideButton()->trigger();
    QVERIFY(viewer().mnuSlideShowRunSlideShow->isChecked() && slideButton()->isChecked());
    // What runs is stopped, whatever the button starts by now.
    viewer().mnuSlideShowToolbarButton[0]->trigger();
    slideButton()->trigger();
    QVERIFY(isIdle());
    slideButton()->trigger();
    QVERIFY(viewer().mnuSlideShowFullScreen->isChecked() && isFullScreenLoaded());
    slideButton()->trigger();
    QVERIFY(isIdle() && !isFullScreenLoaded());
}

void tst_mediashow::aPlayingItemIsNotCutOff()
{
    ObedientPlayer *player = usePlayer();
    const QString sound = motion(QStringLiteral("long.mp3"));
    fill({pictures(1).first(), sound, pictures(2).last(), sound});
    viewer().mnuSlideShowRunSlideShow_Click();
    QCOMPARE(player->file, sound);
    QCOMPARE(player->state, Player::Playing);
    viewer().tmrShowPlayTime.stop();
    tick();
    tick();
    QCOMPARE(current(), 2);
    QVERIFY(viewer().tmrShowPlayTime.isActive());
    player->change(Player::Stopped);
    tick();
    QVERIFY2(current() == 3, "the first tick after its end goes on");
    QVERIFY(!viewer().tmrShowPlayTime.isActive());
    // One item as by a double click: the show does not lose its way by it.
    globals.AutoPlayOnce = true;
    tick();
    QVERIFY(current() == 4 && player->state == Player::Playing && globals.AutoPlayMotion);
    player->change(Player::Stopped);
    const int plays = player->plays;
    tick();
    QVERIFY2(isIdle() && player->plays == plays, "the last sound is not played again at the end of the list");
    QCOMPARE(player->position, 0.0);
    withoutPlayer();
}

void tst_mediashow::whatIsGoneIsPassedOver()
{
    ObedientPlayer *player = usePlayer();
    const QString sound = motion(QStringLiteral("there.mp3"));
    const QString picture = home().writePicture(QStringLiteral("going.png"), {20, 20});
    fill({pictures(1).first(), picture, sound, home().path() + QStringLiteral("never.avi"), pictures(2).last()});
    QVERIFY(QFile::remove(picture));
    viewer().mnuSlideShowRunSlideShow_Click();
    QCOMPARE(current(), 2);
    QVERIFY(viewer().StatusBar1->panelText(2).endsWith(QLatin1String(" - Not Available")));
    tick();
    QCOMPARE(player->plays, 1);
    player->change(Player::Stopped);
    tick();
    QCOMPARE(current(), 4);
    QVERIFY2(player->plays == 1, "the sound before does not stand in for what is gone");
    tick();
    QCOMPARE(current(), 5);
    QCOMPARE(viewer().StatusBar1->panelText(2), QStringLiteral("B.Png"));
    viewer().mnuSlideShowRunSlideShow_Click();
    withoutPlayer();
}

void tst_mediashow::theIntervalIsAskedForUntilItFits()
{
    fill(pictures(8));
    globals.SlideShowInterval = 0;
    m_dialogs->answerText(std::nullopt);
    viewer().mnuSlideShowInterval->trigger();
    QCOMPARE(globals.SlideShowInterval, 5);
    QCOMPARE(m_dialogs->textTitles.first(), QStringLiteral("Slide Interval"));
    QCOMPARE(m_dialogs->textPrompts.first(), QStringLiteral("Please enter slide interval in seconds (1 - 30):"));
    QCOMPARE(m_dialogs->textValues.first(), QStringLiteral("5"));
    QVERIFY(!viewer().tmrSlideShow.isActive());
    m_dialogs->answerText(QString());
    viewer().mnuSlideShowInterval_Click();
    QCOMPARE(globals.SlideShowInterval, 5);

    viewer().mnuSlideShowRunSlideShow_Click();
    for (const char *text : {"0", "31", "soon", "30"})
        m_dialogs->answerText(QString::fromLatin1(text));
    viewer().mnuSlideShowInterval_Click();
    QCOMPARE(globals.SlideShowInterval, 30);
    QCOMPARE(viewer().tmrSlideShow.interval(), 30000);
    QVERIFY(viewer().tmrSlideShow.isActive());
    viewer().mnuSlideShowRunSlideShow_Click();
}

void tst_mediashow::rubbishInTheStoreGivesTheUsualInterval_data()
{
    QTest::addColumn<QString>("stored");
    for (const char *stored : {"0", "99", "-1", "soon", "99999999999999"})
        QTest::newRow(stored) << QString::fromLatin1(stored);
}

void tst_mediashow::rubbishInTheStoreGivesTheUsualInterval()
{
    QFETCH(QString, stored);
    saveOption("SlideShowInterval", stored);
    LoadAllSettings();
    fill(pictures(3));
    viewer().mnuSlideShowRunSlideShow_Click();
    QCOMPARE(viewer().tmrSlideShow.interval(), 5000);
    viewer().mnuSlideShowRunSlideShow_Click();
}

void tst_mediashow::eachGroupKeepsOneMarkAndItsKeys()
{
    const QVector<QVector<std::pair<QAction *, const char *>>> groups{
        {{viewer().mnuSlideShowForwardOrder, "SlideShowForward"},
            {viewer().mnuSlideShowReverseOrder, "SlideShowReverse"},
            {viewer().mnuSlideShowShuffleOrder, "SlideShowShuffle"}},
        {{viewer().mnuSlideShowViewerOnly, "SlideShowViewerOnly"},
            {viewer().mnuSlideshowDesktopCentered, "SlideshowDesktopCentered"},
            {viewer().mnuSlideshowDesktopStretched, "SlideshowDesktopStretched"}},
        {{viewer().mnuSlideShowToolbarButton[0], "MediaToolBar0"},
            {viewer().mnuSlideShowToolbarButton[1], "MediaToolBar1"}}};
    for (const auto &group : groups) {
        for (const auto &clicked : group) {
            // Twice: a click on the one that is checked leaves it so.
            clicked.first->trigger();
            clicked.first->trigger();
            for (const auto &[item, key] : group) {
                QCOMPARE(item->isChecked(), item == clicked.first);
                QCOMPARE(option(key, ""), item == clicked.first ? QStringLiteral("True") : QStringLiteral("False"));
            }
            const bool shuffles = viewer().mnuSlideShowShuffleOrder->isChecked();
            QCOMPARE(viewer().mnuSlideShowShuffleMediaFile->isEnabled(), shuffles);
            QCOMPARE(viewer().mnuSlideShowResetShuffleHistory->isEnabled(), shuffles);
        }
    }
    QCOMPARE(viewer().mnuSlideShowToolbarButton[0]->text(), QStringLiteral("Full Screen Show"));
    QCOMPARE(viewer().mnuSlideshowDesktopCentered->text(), QStringLiteral("     + Desktop &Centered"));
    viewer().mnuSlideShowLoopAround->trigger();
    QCOMPARE(option("MediaShowLoop", ""), QStringLiteral("True"));
    viewer().mnuSlideShowLoopAround->trigger();
    QCOMPARE(option("MediaShowLoop", ""), QStringLiteral("False"));
}

void tst_mediashow::whatEndsAShow()
{
    const auto started = [this] {
        viewer().ClearDisplayList();
        globals.ShowStopRequested = false;
        fill(pictures(4));
        viewer().mnuSlideShowRunSlideShow_Click();
        return viewer().isShowRunning();
    };
    QVERIFY(started());
    viewer().ClearDisplayList();
    QVERIFY(isIdle());
    QVERIFY(!viewer().mnuSlideShow->isEnabled() && !slideButton()->isEnabled());
    QVERIFY(started());
    viewer().lstDisplay->selectAll();
    viewer().RemoveSelectedFromDisplayList();
    QVERIFY(isIdle());
    QVERIFY(started());
    viewer().lstSelect->addItem(pictures(4).last());
    viewer().lstSelect->selectOnly(0);
    QVERIFY(isIdle());
}

void tst_mediashow::disturbedAtEachYield_data()
{
    QTest::addColumn<bool>("shuffle");
    QTest::addColumn<QString>("by");
    for (const bool shuffle : {false, true}) {
        for (const char *by :
            {"a stop", "an empty list", "another list", "a start and a stop", "another step", "the end"})
            QTest::addRow("%s, %s", shuffle ? "shuffle" : "forward", by) << shuffle << QString::fromLatin1(by);
    }
}

void tst_mediashow::disturbedAtEachYield()
{
    QFETCH(bool, shuffle);
    QFETCH(QString, by);
    const auto prepare = [&] {
        globals.ProgramExiting = false;
        fresh();
        fill(pictures(6), 2);
        viewer().mnuSlideShowLoopAround->setChecked(true);
        if (shuffle)
            viewer().mnuSlideShowShuffleOrder->trigger();
    };
    const auto disturb = [&] {
        if (by == QLatin1String("a stop")) {
            viewer().mnuSlideShowRunSlideShow_Click();
        } else if (by == QLatin1String("an empty list")) {
            viewer().ClearDisplayList();
        } else if (by == QLatin1String("another list")) {
            viewer().lstDisplay->clear();
            fill(pictures(2));
        } else if (by == QLatin1String("a start and a stop")) {
            viewer().mnuSlideShowRunSlideShow_Click();
            viewer().mnuSlideShowRunSlideShow_Click();
        } else if (by == QLatin1String("another step")) {
            viewer().ChangeSlides();
            tick();
        } else {
            globals.ProgramExiting = true;
        }
    };
    const auto check = [&](int yield) {
        const QByteArray where = QByteArray("yield ") + QByteArray::number(yield);
        const bool goesOn = yield == 0 || (by != QLatin1String("a stop") && by != QLatin1String("an empty list"));
        QVERIFY2(viewer().isShowRunning() == goesOn, where);
        QVERIFY2(goesOn || isIdle(), where);
        const int count = viewer().lstDisplay->count();
        QVERIFY2(current() >= 0 && current() <= count, where);
        if (goesOn && !globals.ProgramExiting) {
            // It still steps, and what it shows is what is selected.
            tick();
            QVERIFY2(viewer().lstDisplay->listIndex() == current() - 1, where);
            QVERIFY2(globals.CurrentMediaFile == viewer().lstDisplay->text(), where);
        }
        QVERIFY2(globals.ShuffleCount == globals.ShuffleHistory.count(true), where);
        globals.ProgramExiting = false;
    };
    forEachYield(
        prepare, [&] { viewer().mnuSlideShowRunSlideShow_Click(); }, disturb, check);
}

void tst_mediashow::eachPictureBecomesTheWallpaper()
{
    ObedientPlayer *player = usePlayer();
    const auto style = [] {
        const auto value = registryStore().value(RegistryStore::Root::CurrentUser,
            QStringLiteral("Control Panel\\Desktop"), QStringLiteral("WallpaperStyle"));
        return value ? *value : QString();
    };
    const auto hung = [] { return QImage(wallpaperFileName()).pixel(0, 0); };
    fill({pictures(1)[0], pictures(2)[1], motion(QStringLiteral("film.avi")), pictures(3)[2]});
    viewer().mnuSlideshowDesktopCentered->trigger();
    viewer().mnuSlideShowRunSlideShow_Click();
    QCOMPARE(style(), QStringLiteral("0"));
    const QRgb first = viewer().Image1->picture()->current().pixels.pixel(0, 0);
    QCOMPARE(hung(), first);
    tick();
    QCOMPARE(player->state, Player::Playing);
    QVERIFY2(hung() == first, "a film hangs nothing up");
    player->change(Player::Stopped);
    viewer().mnuSlideshowDesktopStretched->trigger();
    tick();
    QCOMPARE(style(), QStringLiteral("2"));
    QVERIFY(hung() != first);
    viewer().mnuSlideShowRunSlideShow_Click();
    withoutPlayer();
}

void tst_mediashow::whatComesNextIsDecoded_data()
{
    QTest::addColumn<QString>("order");
    QTest::addColumn<QVector<int>>("held");
    QTest::newRow("forward") << QStringLiteral("forward") << QVector<int>{5, 6, 7};
    QTest::newRow("reverse") << QStringLiteral("reverse") << QVector<int>{3, 2, 1};
    QTest::newRow("shuffle") << QStringLiteral("shuffle") << QVector<int>{6, 1, 4};
}

/// Each picture has another size, so the bytes that the cache holds tell which ones they are.
void tst_mediashow::whatComesNextIsDecoded()
{
    QFETCH(QString, order);
    QFETCH(QVector<int>, held);
    QStringList paths;
    for (int i = 1; i <= 8; ++i)
        paths.append(home().writePicture(QStringLiteral("size%1.png").arg(i), {1 << i, 4}));
    fill(paths, 4);
    viewer().mnuSlideShowLoopAround->setChecked(true);
    (order == QLatin1String("forward")          ? viewer().mnuSlideShowForwardOrder
            : order == QLatin1String("reverse") ? viewer().mnuSlideShowReverseOrder
                                                : viewer().mnuSlideShowShuffleOrder)
        ->trigger();
    const QVector<double> numbers{0.75, 0.75, 0.125, 0.01, 0.5};
    shuffleNumbers().setSource([numbers, at = 0]() mutable { return numbers[at++ % numbers.size()]; });
    viewer().lstDisplay->clearSelections();
    PictureCache::instance().shutDown();
    viewer().mnuSlideShowRunSlideShow_Click();
    qint64 bytes = 0;
    for (const int position : held)
        bytes += (1 << position) * 4 * 4;
    QCOMPARE(current(), held.first());
    QTRY_COMPARE(PictureCache::instance().bytesHeld(), bytes);
    tick();
    QCOMPARE(current(), held[1]);
    tick();
    QCOMPARE(current(), held[2]);
    viewer().mnuSlideShowRunSlideShow_Click();
}

void tst_mediashow::noFrameBetweenTwoPicturesIsEmpty()
{
    ObedientPlayer *player = usePlayer();
    fill(QStringList(pictures(4)) + QStringList{motion(QStringLiteral("film.mpg")), pictures(5).last()});
    QTRY_COMPARE(onScreen(*viewer().Picture1), viewer().Image1->picture()->current().pixels.pixelColor(0, 0));
    FrameWatch watch([this] { return onScreen(*viewer().Picture1); });
    QVector<QColor> expected{onScreen(*viewer().Picture1)};
    viewer().mnuSlideShowRunSlideShow_Click();
    for (int i = 0; i < 5; ++i) {
        const auto picture = viewer().Image1->picture();
        expected.append(picture ? picture->current().pixels.pixelColor(0, 0) : QColor(ObedientPlayer::frameColor));
        QTRY_COMPARE(onScreen(*viewer().Picture1), expected.last());
        player->change(Player::Stopped);
        tick();
    }
    QCOMPARE(expected.size(), 6);
    QCOMPARE(watch.seen, expected);
    withoutPlayer();
}

QTEST_MAIN(tst_mediashow)
#include "tst_mediashow.moc"
