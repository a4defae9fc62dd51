#include "app/globals.h"
#include "app/settings.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/frmMainViewer.h"

#include <QSlider>
#include <QtTest>

#include <sys/stat.h>

namespace {

/// A player that is in the state it is put into, and plays at once when told to.
class SetPlayer final : public Player
{
public:
    PlayState state = Stopped;
    QString file;
    int loudness = 100;

    void change(PlayState now)
    {
        state = now;
        Q_EMIT playStateChanged(now);
    }
    void setUrl(const QString &path) override
    {
        file = path;
        change(Stopped);
    }
    QString url() const override { return file; }
    void play() override { change(Playing); }
    void pause() override { change(Paused); }
    void stop() override { change(Stopped); }
    PlayState playState() const override { return state; }
    int volume() const override { return loudness; }
    void setVolume(int volume) override { loudness = volume; }
    bool isMuted() const override { return false; }
    void setMuted(bool) override { }
    double duration() const override { return 3725.4; }
    double currentPosition() const override { return 61.9; }
    void setCurrentPosition(double) override { }
    QImage frame(QSize) override { return {}; }
    void setVisible(bool) override { }
};

}

/// Sounds and videos on the Main Viewer, with a player that a test puts into any state.
class tst_playback : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aClickLoadsSilentlyAndEnterPlays();
    void theTimeStandsInThePanelOnlyWhilePlaying();
    void aPictureTakesThePlayersPlaceWithItsDimensions();
    void theVolumeIsStoredAndComesBack();
    void aVolumeChosenBetweenTwoItemsIsKept();
    void volumeControlsOpenTheMixerOrSaySo();
    void theFlagsOfADoubleClickPlayOneItem();
    void onlyRegularFilesAreAvailable();
    void aClickInAYieldOfTheLoadWins();
    void aRealSoundPlaysToItsEnd();
    void theWideListGivesBackWhatWasOnShow();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    QString panel(int number) { return window().StatusBar1->panelText(number); }
    std::unique_ptr<TemporaryHome> m_home;
    SetPlayer *m_player = nullptr;
    QString m_sound;
    QString m_video;
    QString m_picture;
};

void tst_playback::initTestCase()
{
    useBuiltModules();
    m_home = std::make_unique<TemporaryHome>();
    saveOption("Show Intro Select at Startup", QStringLiteral("0"));
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    window().resize(1000, 700);
    window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&window()));
    QTRY_VERIFY(globals.MainViewerActivated);
    // The double plays anything: only names and the existence of the files count.
    m_picture = m_home->writePicture(QStringLiteral("still.png"), {120, 80});
    m_sound = m_home->path() + QStringLiteral("sound.mp3");
    m_video = m_home->path() + QStringLiteral("video.mpg");
    QVERIFY(QFile::copy(m_picture, m_sound));
    QVERIFY(QFile::copy(m_picture, m_video));
}

void tst_playback::init()
{
    ScriptedDialogs::install();
    globals.MediaPlayerVersion = 9.0f;
    globals.AutoPlayMotion = false;
    globals.AutoPlayOnce = false;
    auto player = std::make_unique<SetPlayer>();
    m_player = player.get();
    window().wmp9->setPlayer(std::move(player));
    saveOption("MMVolume", QStringLiteral("100"));
    window().ClearDisplayList();
    window().tabFileList->setCurrentIndex(1);
    for (const QString &path : {m_sound, m_video, m_picture})
        window().lstDisplay->addItem(path);
    window().lblCount->setText(QStringLiteral("3"));
}

void tst_playback::cleanup()
{
    window().wmp9->shutDown();
    window().tmrShowPlayTime.stop();
    setDialogs(nullptr);
}

void tst_playback::aClickLoadsSilentlyAndEnterPlays()
{
    window().lstDisplay->selectOnly(2);
    window().lstDisplay->selectOnly(0);
    QCOMPARE(m_player->file, m_sound);
    QCOMPARE(m_player->state, Player::Stopped);
    QVERIFY(window().wmp9->isVisible() && !window().Picture1->isVisible());
    QVERIFY2(panel(3).isEmpty(), "the dimensions of the picture before are none of a sound's");
    window().lstDisplay_KeyPress(13);
    QCOMPARE(m_player->state, Player::Playing);
    QVERIFY(window().tmrShowPlayTime.isActive());
}

void tst_playback::theTimeStandsInThePanelOnlyWhilePlaying()
{
    window().lstDisplay->selectOnly(1);
    m_player->play();
    window().tmrShowPlayTime_Timer();
    QCOMPARE(panel(3), QStringLiteral("00 : 01 : 01 | 01 : 02 : 05"));
    m_player->pause();
    window().tmrShowPlayTime_Timer();
    QVERIFY2(window().tmrShowPlayTime.isActive() && !panel(3).isEmpty(), "a pause is not the end");
    m_player->stop();
    QVERIFY(panel(3).isEmpty());
    QVERIFY(!window().tmrShowPlayTime.isActive());
}

void tst_playback::aPictureTakesThePlayersPlaceWithItsDimensions()
{
    window().lstDisplay->selectOnly(1);
    m_player->play();
    window().lstDisplay->selectOnly(2);
    QVERIFY(m_player->file.isEmpty());
    QVERIFY(!window().wmp9->isVisible() && window().Picture1->isVisible());
    QCOMPARE(panel(3), QStringLiteral("120 X 80 X 24"));
    // A tick that was on its way and the player's late word leave the panel to the picture.
    window().tmrShowPlayTime_Timer();
    m_player->change(Player::Stopped);
    QCOMPARE(panel(3), QStringLiteral("120 X 80 X 24"));
    QVERIFY(!window().tmrShowPlayTime.isActive());
}

void tst_playback::theVolumeIsStoredAndComesBack()
{
    window().lstDisplay->selectOnly(0);
    m_player->play();
    window().wmp9->setVolume(0);
    window().tmrShowPlayTime_Timer();
    QCOMPARE(option("MMVolume", "100"), QStringLiteral("0"));
    m_player->stop();
    window().wmp9->setVolume(70);
    window().lstDisplay->selectOnly(1);
    QCOMPARE(m_player->loudness, 0);
}

void tst_playback::aVolumeChosenBetweenTwoItemsIsKept()
{
    window().lstDisplay->selectOnly(0);
    QVERIFY(!window().tmrShowPlayTime.isActive());
    window().wmp9->findChild<QSlider *>(QStringLiteral("volume"))->setValue(35);
    window().lstDisplay->selectOnly(1);
    m_player->play();
    QCOMPARE(m_player->loudness, 35);

    // Rubbish in the store is the default, numbers out of range are the nearest.
    for (const auto &[text, volume] : {std::pair("loud", 100), std::pair("-3", 0), std::pair("1000", 100)}) {
        saveOption("MMVolume", QString::fromLatin1(text));
        m_player->change(Player::Playing);
        QCOMPARE(m_player->loudness, volume);
    }
    QVERIFY(regSettings().DeleteUserSetting(QStringLiteral("Options"), QStringLiteral("MMVolume")));
    m_player->loudness = 0;
    m_player->change(Player::Playing);
    QVERIFY2(m_player->loudness == 100, "the first item of a new user is heard");
}

void tst_playback::volumeControlsOpenTheMixerOrSaySo()
{
    QVERIFY(window().mnuTools->isVisible() && window().mnuToolsVolumeControls->isVisible());
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", m_home->path().toUtf8() + "programs");
    auto &dialogs = ScriptedDialogs::install();
    dialogs.answer(MessageBox::Answer::Ok);
    window().mnuToolsVolumeControls->trigger();
    QCOMPARE(dialogs.boxes.size(), 1);
    QVERIFY(dialogs.boxes.first().text.contains(QLatin1String("pavucontrol")));

    const QString mixer = m_home->write(QStringLiteral("programs/pavucontrol"), "#!/bin/sh\n: > \"$HOME/mixer\"\n");
    QFile::setPermissions(mixer, QFile::ReadOwner | QFile::ExeOwner);
    window().mnuToolsVolumeControls->trigger();
    qputenv("PATH", path);
    QTRY_VERIFY(QFile::exists(m_home->path() + QStringLiteral("mixer")));
    QCOMPARE(dialogs.boxes.size(), 1);
}

void tst_playback::theFlagsOfADoubleClickPlayOneItem()
{
    globals.AutoPlayMotion = true;
    globals.AutoPlayOnce = true;
    window().lstDisplay->selectOnly(0);
    QCOMPARE(m_player->state, Player::Playing);
    QVERIFY(!globals.AutoPlayMotion && !globals.AutoPlayOnce);
    window().lstDisplay->selectOnly(1);
    QCOMPARE(m_player->state, Player::Stopped);
}

/// Opening a FIFO would wait for whoever writes to it.
void tst_playback::onlyRegularFilesAreAvailable()
{
    window().lstDisplay->selectOnly(0);
    const QString fifo = m_home->path() + QStringLiteral("live.wav");
    QCOMPARE(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    window().lstDisplay->addItem(fifo);
    window().lstDisplay->addItem(m_home->path() + QStringLiteral("gone.mp3"));
    for (const int item : {3, 4}) {
        window().lstDisplay->selectOnly(item);
        QVERIFY2(panel(2).endsWith(QLatin1String(" - Not Available")), qPrintable(panel(2)));
        QCOMPARE(m_player->file, m_sound);
    }
}

void tst_playback::aClickInAYieldOfTheLoadWins()
{
    window().lstDisplay->selectOnly(2);
    const auto prepare = [&] {
        globals.AutoPlayMotion = true;
        globals.AutoPlayOnce = true;
        window().lstDisplay->selectOnly(2);
    };
    forEachYield(
        prepare, [&] { window().lstDisplay->selectOnly(0); }, [&] { window().lstDisplay->selectOnly(2); },
        [&](int yield) {
            if (yield == 0)
                return;
            QCOMPARE(window().lstDisplay->listIndex(), 2);
            QVERIFY2(
                m_player->file.isEmpty() && m_player->state == Player::Stopped, qPrintable(QString::number(yield)));
            QVERIFY(window().Picture1->isVisible() && !window().wmp9->isVisible());
            QVERIFY(!window().tmrShowPlayTime.isActive());
            QCOMPARE(panel(3), QStringLiteral("120 X 80 X 24"));
        });

    // So does a list that is emptied: nothing plays that no list holds.
    forEachYield(
        [&] {
            init();
            prepare();
        },
        [&] { window().lstDisplay->selectOnly(0); }, [&] { window().ClearDisplayList(); },
        [&](int yield) {
            if (yield == 0)
                return;
            QVERIFY2(m_player->state == Player::Stopped && panel(2).isEmpty(), qPrintable(QString::number(yield)));
            QVERIFY(!window().tmrShowPlayTime.isActive());
        });
}

void tst_playback::aRealSoundPlaysToItsEnd()
{
    SKIP_WITHOUT_SAMPLES();
    window().wmp9->setPlayer(
        createPlayer({{QStringLiteral("ao"), QStringLiteral("null")}, {QStringLiteral("speed"), QStringLiteral("2")}}));
    window().lstDisplay->addItem(samplesFolder() + QStringLiteral("media/tone.wma"));
    window().lstDisplay->selectOnly(3);
    QTRY_VERIFY(window().wmp9->duration() > 2.9);
    QVERIFY(window().wmp9->playState() == Player::Stopped && panel(3).isEmpty());
    window().lstDisplay_DblClick();
    // Which second is seen depends on how busy the machine is.
    QTRY_VERIFY(
        panel(3).startsWith(QLatin1String("00 : 00 : 0")) && panel(3).endsWith(QLatin1String(" | 00 : 00 : 03")));
    QTRY_VERIFY(panel(3).isEmpty());
    QCOMPARE(window().wmp9->playState(), int(Player::Stopped));
    QVERIFY(!window().tmrShowPlayTime.isActive());
}

void tst_playback::theWideListGivesBackWhatWasOnShow()
{
    window().lstDisplay->selectOnly(0);
    window().lstSelect->clear();
    window().lstSelect->addItem(m_picture);
    window().lstSelect->selectOnly(0);
    QVERIFY(window().Picture1->isVisible());
    window().mnuViewFullWidthList->trigger();
    QVERIFY(!window().Picture1->isVisible() && !window().wmp9->isVisible());
    window().mnuViewFullWidthList->trigger();
    QVERIFY2(window().Picture1->isVisible() && !window().wmp9->isVisible(),
        "the picture of the Selection list is back, although the Display list stands on a sound");
}

QTEST_MAIN(tst_playback)
#include "tst_playback.moc"
