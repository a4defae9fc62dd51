#include "builtpaths.h"
#include "engine/player.h"
#include "platform/filepath.h"
#include "platform/folders.h"
#include "support/support.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

using States = QList<int>;

/// Real files through the real module, ten times as fast and without a sound device.
class TestPlayer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void presenceIsTestedOnceAndRemembered();
    void withoutTheModuleThereIsNoPlayer();
    void everyTypePlaysToItsEnd_data();
    void everyTypePlaysToItsEnd();
    void framesShowTheColourOfTheirSecond();
    void aHiddenPlayerPlaysOnAndShowsTheFrameWhenAsked();
    void badFilesReturnToStopped_data();
    void badFilesReturnToStopped();
    void soundsAsShortAsAClickStandReadyAndPlay();
    void midiUnderAnotherNamePlays();
    void playListsPlayAsOneItem_data();
    void playListsPlayAsOneItem();
    void foreignBytesInANameReachTheFile();
    void aSecondUrlSilencesTheFirst();
    void theVolumeIsKeptFromBeforeTheFirstFile();
    void stopPauseAndPlayGoOnFromWhereTheyShould();
    void seekingLandsWhereItWasTold();
    void aFileThatDoesNotAnswerHoldsNobodyUp();
    void aPlayerMayBeDeletedByWhoItTells();

private:
    QString media(const QString &name) const { return samplesFolder() + QStringLiteral("media/") + name; }
    void make(const QMap<QString, QString> &more = {});
    States states() const;
    /// Plays `path` until it is stopped again.
    bool playToEnd(const QString &path, int milliseconds = 15000);

    TemporaryHome m_home;
    std::unique_ptr<Player> m_player;
    std::unique_ptr<QSignalSpy> m_spy;
};

void TestPlayer::initTestCase()
{
    qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules");
}

void TestPlayer::init()
{
    m_spy.reset();
    m_player.reset();
}

void TestPlayer::make(const QMap<QString, QString> &more)
{
    QMap<QString, QString> options{
        {QStringLiteral("ao"), QStringLiteral("null")}, {QStringLiteral("speed"), QStringLiteral("10")}};
    options.insert(more);
    m_player = createPlayer(options);
    QVERIFY(m_player);
    m_spy = std::make_unique<QSignalSpy>(m_player.get(), &Player::playStateChanged);
}

States TestPlayer::states() const
{
    States result;
    for (const QList<QVariant> &call : *m_spy)
        result.append(call.first().toInt());
    return result;
}

bool TestPlayer::playToEnd(const QString &path, int milliseconds)
{
    m_player->setUrl(path);
    m_spy->clear();
    m_player->play();
    return QTest::qWaitFor([&] { return m_player->playState() == Player::Stopped; }, milliseconds);
}

void TestPlayer::presenceIsTestedOnceAndRemembered()
{
    const QString memory = cacheFolder() + QStringLiteral("player-present");
    QVERIFY(!QFile::exists(memory));
    QVERIFY(playerIsPresent());
    QFile file(memory);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray told = file.readAll();
    QVERIFY2(told.contains("lumora-player.so ") && told.contains("libmpv"), told.constData());
    file.close();
    QVERIFY(playerIsPresent());

    // A line about other files is no answer: the test runs again and corrects the memory.
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(told).replace("libmpv", "other"));
    file.close();
    QVERIFY(playerIsPresent());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), told);
}

void TestPlayer::withoutTheModuleThereIsNoPlayer()
{
    const QByteArray modules = qgetenv("LUMORA_MODULES");
    const QString memory = cacheFolder() + QStringLiteral("player-present");
    QFile::remove(memory);
    m_home.write(QStringLiteral("broken/lumora-player.so"), "no library");
    m_home.write(QStringLiteral("empty/readme"), "");
    for (const QString &folder : {QStringLiteral("empty"), QStringLiteral("broken"), QStringLiteral("missing")}) {
        qputenv("LUMORA_MODULES", pathToBytes(m_home.path() + folder));
        QVERIFY(!playerIsPresent());
        QVERIFY(!createPlayer());
        QVERIFY2(!QFile::exists(memory), "a negative answer must not be remembered");
    }
    qputenv("LUMORA_MODULES", modules);
    QVERIFY(playerIsPresent());
}

void TestPlayer::everyTypePlaysToItsEnd_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<double>("shortest");
    QTest::addColumn<double>("longest");
    const auto row = [](const char *name, double shortest, double longest) {
        QTest::newRow(name) << QString::fromUtf8(name) << shortest << longest;
    };
    row("count.asf", 3.0, 3.1);
    row("count.wmv", 3.0, 3.1);
    row("count.avi", 3.0, 3.1);
    row("mjpeg.avi", 3.0, 3.05);
    row("cinepak.avi", 3.0, 3.05);
    row("msv1.avi", 3.0, 3.05);
    row("silent.avi", 3.0, 3.05);
    row("count.mpg", 2.8, 3.0);
    row("count.mpeg", 2.8, 3.0);
    row("hd720.wmv", 5.0, 5.1);
    row("tone.wma", 3.0, 3.1);
    row("count.wav", 3.0, 3.05);
    row("adpcm.wav", 3.0, 3.06);
    row("mulaw.wav", 3.0, 3.05);
    row("tone.mp2", 2.95, 3.05);
    row("count.mp3", 2.95, 3.1);
    row("cover.mp3", 2.95, 3.1);
    row("long30.mp3", 30.0, 30.2);
    row("Zähl #1 100% (a+b) & 'c'.mp3", 2.95, 3.1);
    row("scale.mid", 4.0, 5.0);
    row("single.asx", 3.0, 3.1);
    row("two.asx", 3.0, 3.1);
}

void TestPlayer::everyTypePlaysToItsEnd()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QString, name);
    QFETCH(double, shortest);
    QFETCH(double, longest);
    // The null device takes 0.2 s and more at once, which must not be the whole of a sound.
    static const QRegularExpression shortSound(QStringLiteral("(wav|wma|mp2|count.mp3|cover.mp3|\\)|mid|asx)"));
    make({{QStringLiteral("speed"), name.contains(shortSound) ? QStringLiteral("4") : QStringLiteral("10")}});
    QSignalSpy lengths(m_player.get(), &Player::durationChanged);
    m_player->setUrl(media(name));
    QTRY_VERIFY(m_player->duration() > 0);
    QVERIFY(!lengths.isEmpty());
    QVERIFY2(states().isEmpty(), "a file that is only set stands ready and stopped");
    QVERIFY2(m_player->duration() > shortest - 0.02 && m_player->duration() < longest + 0.02,
        qPrintable(QString::number(m_player->duration())));

    double farthest = 0;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&] { farthest = std::max(farthest, m_player->currentPosition()); });
    watch.start(5);
    QVERIFY(playToEnd(media(name)));
    QCOMPARE(states(), (States{Player::Transitioning, Player::Playing, Player::Stopped}));
    QVERIFY2(farthest > 0.3 && farthest <= longest + 0.1, qPrintable(QString::number(farthest)));
    QCOMPARE(m_player->currentPosition(), 0.0);
    QVERIFY(m_player->duration() >= shortest - 0.02);
}

void TestPlayer::framesShowTheColourOfTheirSecond()
{
    SKIP_WITHOUT_SAMPLES();
    make({{QStringLiteral("speed"), QStringLiteral("1")}});
    for (const char *name : {"count.wmv", "msv1.avi", "count.mpg"}) {
        m_player->setUrl(media(QString::fromLatin1(name)));
        QTRY_VERIFY(m_player->duration() > 0);
        for (int second = 0; second < 3; ++second) {
            m_player->setCurrentPosition(second + 0.5);
            const QColor wanted(second == 0 ? 255 : 0, second == 1 ? 255 : 0, second == 2 ? 255 : 0);
            const auto shows = [&](QPoint at, QColor color) {
                const QColor found = m_player->frame(QSize(200, 300)).pixelColor(at);
                return std::abs(found.red() - color.red()) <= 6 && std::abs(found.green() - color.green()) <= 6
                    && std::abs(found.blue() - color.blue()) <= 6;
            };
            QTRY_VERIFY2(!m_player->frame(QSize(200, 300)).isNull() && shows(QPoint(100, 75), wanted), name);
            // 4 : 3 in 200 x 300 is 200 x 150, and the frame is nothing but the picture.
            QCOMPARE(m_player->frame(QSize(200, 300)).size(), QSize(200, 150));
            QVERIFY(shows(QPoint(2, 2), wanted) && shows(QPoint(197, 147), wanted));
        }
        const QImage small = m_player->frame(QSize(33, 77));
        QCOMPARE(small.size(), QSize(33, 24));
        QCOMPARE(small.format(), QImage::Format_RGB32);
        QVERIFY(!m_player->frame(QSize(1, 500)).isNull());
        // Also where a row of an odd width ends: what is behind the window must not shine
        // through.
        for (int y = 0; y < small.height(); ++y) {
            const auto *line = reinterpret_cast<const QRgb *>(small.constScanLine(y));
            QVERIFY(std::all_of(line, line + small.width(), [](QRgb pixel) { return qAlpha(pixel) == 255; }));
        }
        QVERIFY(m_player->frame(QSize()).isNull());
    }
    m_player->setUrl(QString());
    QVERIFY(m_player->frame(QSize(20, 20)).isNull());
    m_player->setUrl(media(QStringLiteral("cover.mp3")));
    QTRY_VERIFY(m_player->duration() > 0);
    QVERIFY2(m_player->frame(QSize(20, 20)).isNull(), "a cover is no picture to watch");
}

void TestPlayer::aHiddenPlayerPlaysOnAndShowsTheFrameWhenAsked()
{
    SKIP_WITHOUT_SAMPLES();
    make({{QStringLiteral("speed"), QStringLiteral("2")}});
    m_player->setVisible(false);
    QSignalSpy frames(m_player.get(), &Player::frameReady);
    m_player->setUrl(media(QStringLiteral("count.avi")));
    m_player->play();
    QTRY_VERIFY(m_player->currentPosition() > 1.3);
    QVERIFY2(frames.size() < 6, "a hidden player announces no frames");
    m_player->pause();
    m_player->setVisible(true);
    QTRY_VERIFY(m_player->frame(QSize(40, 30)).pixelColor(20, 15).green() > 240);
}

void TestPlayer::badFilesReturnToStopped_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
        {"half.avi", "half.mid", "half.mp3", "half.mpg", "half.wma", "half.wmv", "noise.mpg", "text.mid", "text.mp3",
            "text.wmv", "empty.mp3", "empty.wmv", "empty.asx", "dangling.asx", "not-there.wmv", ""})
        QTest::newRow(name) << QLatin1String("damaged/") + QLatin1String(name);
}

void TestPlayer::badFilesReturnToStopped()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QString, name);
    make();
    QVERIFY(playToEnd(media(name)));
    QCOMPARE(states().first(), int(Player::Transitioning));
    QCOMPARE(states().last(), int(Player::Stopped));
    QVERIFY(!name.contains(QLatin1String("half.w")) || states().contains(Player::Playing));
    QVERIFY(!name.contains(QLatin1String("not-there")) || states().size() == 2);
    QCOMPARE(m_player->currentPosition(), 0.0);
    QVERIFY(m_player->frame(QSize(8, 8)).isNull());
}

void TestPlayer::soundsAsShortAsAClickStandReadyAndPlay()
{
    for (const int milliseconds : {50, 150, 400}) {
        const int bytes = milliseconds * 8;
        QByteArray wave("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1f\0\0\x40\x1f\0\0\1\0\x8\0data", 40);
        wave += char(bytes & 255);
        wave += char(bytes >> 8);
        wave += QByteArray(2, '\0') + QByteArray(bytes, '\x90');
        const QString path = m_home.write(QStringLiteral("click%1.wav").arg(milliseconds), wave);
        make({{QStringLiteral("speed"), QStringLiteral("1")}});
        m_player->setUrl(path);
        QTRY_VERIFY2(m_player->duration() > 0, qPrintable(path));
        QVERIFY(std::abs(m_player->duration() - milliseconds / 1000.0) < 0.01);
        m_player->play();
        QTRY_COMPARE(m_player->playState(), Player::Stopped);
        QVERIFY(states().contains(Player::Playing));
        QVERIFY(m_player->duration() > 0);
    }
}

void TestPlayer::midiUnderAnotherNamePlays()
{
    SKIP_WITHOUT_SAMPLES();
    make();
    QFile source(media(QStringLiteral("scale.mid")));
    QVERIFY(source.open(QIODevice::ReadOnly));
    const QByteArray midi = source.readAll();
    QVERIFY(playToEnd(m_home.write(QStringLiteral("tune.mp3"), midi)));
    QCOMPARE(states(), (States{Player::Transitioning, Player::Playing, Player::Stopped}));

    // The other container of MIDI files: a RIFF form with a chunk to step over.
    const QByteArray riff = QByteArray("RIFF\0\0\0\0RMIDDISP\3\0\0\0abc\0data", 28) + QByteArray(1, char(midi.size()))
        + QByteArray(3, '\0') + midi;
    QVERIFY(playToEnd(m_home.write(QStringLiteral("tune.mid"), riff)));
    QVERIFY(states().contains(Player::Playing));

    QFile wave(media(QStringLiteral("count.wav")));
    QVERIFY(wave.open(QIODevice::ReadOnly));
    QVERIFY(playToEnd(m_home.write(QStringLiteral("speech.mid"), wave.readAll())));
    QVERIFY2(states().contains(Player::Playing), "a wave under a MIDI name plays too");

    make({{QStringLiteral("speed"), QStringLiteral("2")}});
    m_player->setUrl(media(QStringLiteral("scale.mid")));
    m_player->play();
    QTRY_VERIFY(m_player->currentPosition() > 1);
    m_player->pause();
    m_player->setCurrentPosition(0.2);
    m_player->play();
    QTRY_VERIFY2(
        m_player->currentPosition() > 0.2 && m_player->playState() == Player::Playing, "it goes on behind a seek back");
    QTRY_COMPARE(m_player->playState(), Player::Stopped);
}

void TestPlayer::playListsPlayAsOneItem_data()
{
    QTest::addColumn<QByteArray>("entries");
    QTest::addColumn<int>("files");
    QTest::newRow("two files") << QByteArray("count.wav tone.wma") << 2;
    QTest::newRow("a missing one first") << QByteArray("none.wav count.wav") << 1;
    QTest::newRow("a missing one last") << QByteArray("count.wav none.wav") << 1;
    QTest::newRow("an address between") << QByteArray("count.wav http://127.0.0.1:9/a.wav tone.wma") << 2;
    QTest::newRow("itself and a file") << QByteArray("SELF count.wmv") << 1;
    QTest::newRow("nothing but itself") << QByteArray("SELF") << 0;
}

void TestPlayer::playListsPlayAsOneItem()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QByteArray, entries);
    QFETCH(int, files);
    QByteArray text("<asx>");
    for (const QByteArray &entry : entries.split(' ')) {
        const bool sample = !entry.contains(':') && entry != "SELF";
        text += "<ref href='" + (entry == "SELF" ? "list.asx" : (sample ? pathToBytes(media(QString())) : "") + entry)
            + "'/>";
    }
    make({{QStringLiteral("speed"), QStringLiteral("4")}});
    int restarts = 0;
    double before = 0;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&] {
        restarts += m_player->currentPosition() < before && m_player->playState() == Player::Playing;
        before = m_player->currentPosition();
    });
    watch.start(5);
    QVERIFY(playToEnd(m_home.write(QStringLiteral("list.asx"), text)));
    QCOMPARE(states(),
        files > 0 ? (States{Player::Transitioning, Player::Playing, Player::Stopped})
                  : (States{Player::Transitioning, Player::Stopped}));
    QCOMPARE(restarts, std::max(0, files - 1));
}

void TestPlayer::foreignBytesInANameReachTheFile()
{
    SKIP_WITHOUT_SAMPLES();
    make();
    const auto copyTo = [&](const QString &name, const QByteArray &target) {
        QFile source(media(name));
        FILE *file = std::fopen(target.constData(), "wb");
        const bool ok = source.open(QIODevice::ReadOnly) && file
            && std::fwrite(source.readAll().constData(), 1, std::size_t(source.size()), file)
                == std::size_t(source.size());
        return file && std::fclose(file) == 0 && ok;
    };
    const QByteArray folder = pathToBytes(m_home.path());
    for (const auto &[name, target] :
        {std::pair("count.wav", "f\xE4hl%20#?.wav"), std::pair("scale.mid", "f\xE4hl%20#?.mid")}) {
        QVERIFY(copyTo(QString::fromLatin1(name), folder + target));
        QVERIFY(playToEnd(pathFromBytes(folder + target)));
        QVERIFY2(states().contains(Player::Playing), name);
        QCOMPARE(unlink((folder + target).constData()), 0);
    }
}

void TestPlayer::aSecondUrlSilencesTheFirst()
{
    SKIP_WITHOUT_SAMPLES();
    make();
    for (const char *first : {"count.wmv", "damaged/text.mp3", "two.asx", "none.wav"}) {
        m_player->setUrl(media(QString::fromLatin1(first)));
        m_player->play();
        m_player->setUrl(media(QStringLiteral("long30.mp3")));
        m_spy->clear();
        m_player->play();
        QTRY_VERIFY(m_player->currentPosition() > 2);
        QCOMPARE(states(), (States{Player::Transitioning, Player::Playing}));
        QVERIFY(m_player->duration() > 29);
    }
    // A playing file gives way to one that stands ready, and to nothing.
    m_player->setUrl(media(QStringLiteral("count.avi")));
    QTRY_VERIFY(m_player->duration() > 0);
    QCOMPARE(states().last(), int(Player::Stopped));
    m_player->play();
    m_player->setUrl(QString());
    QCOMPARE(m_player->playState(), Player::Stopped);
    QCOMPARE(m_player->duration(), 0.0);
    m_player->play();
    QCOMPARE(m_player->playState(), Player::Stopped);
}

void TestPlayer::theVolumeIsKeptFromBeforeTheFirstFile()
{
    SKIP_WITHOUT_SAMPLES();
    // The sound goes into a file here: what is told and what is heard are two things.
    const auto loudness = [&](int volume, bool muted) {
        const QString heard = m_home.path() + QStringLiteral("heard-%1.wav").arg(volume);
        make({{QStringLiteral("ao"), QStringLiteral("pcm")}, {QStringLiteral("ao-pcm-file"), heard},
            {QStringLiteral("audio-format"), QStringLiteral("s16")}, {QStringLiteral("speed"), QStringLiteral("1")}});
        m_player->setVolume(volume);
        m_player->setMuted(muted);
        playToEnd(media(QStringLiteral("tone.wma")));
        const bool kept = m_player->volume() == volume && m_player->isMuted() == muted;
        init();
        QFile file(heard);
        const QByteArray samples = file.open(QIODevice::ReadOnly) && kept ? file.readAll().mid(100) : QByteArray();
        int loudest = samples.isEmpty() ? -1 : 0;
        for (qsizetype at = 0; at + 1 < samples.size(); at += 2)
            loudest = std::max(loudest, std::abs(int(qint16(uchar(samples[at]) | uchar(samples[at + 1]) << 8))));
        return loudest;
    };
    const int full = loudness(100, false);
    QVERIFY2(full > 3000, qPrintable(QString::number(full)));
    const int half = loudness(50, false);
    // Half the volume is an eighth of the amplitude.
    QVERIFY2(half > full / 10 && half < full / 6, qPrintable(QString::number(half)));
    QCOMPARE(loudness(0, false), 0);
    QCOMPARE(loudness(99, true), 0);

    make();
    m_player->setVolume(170);
    QCOMPARE(m_player->volume(), 100);
    m_player->setVolume(-3);
    QCOMPARE(m_player->volume(), 0);
}

void TestPlayer::stopPauseAndPlayGoOnFromWhereTheyShould()
{
    SKIP_WITHOUT_SAMPLES();
    make();
    m_player->pause();
    m_player->stop();
    m_player->setUrl(media(QStringLiteral("long30.mp3")));
    m_player->stop();
    QTRY_VERIFY2(m_player->duration() > 29, "a stop leaves a file that stands ready alone");
    m_player->play();
    m_player->play();
    QTRY_VERIFY(m_player->currentPosition() > 2);
    m_player->pause();
    QCOMPARE(m_player->playState(), Player::Paused);
    const double paused = m_player->currentPosition();
    m_player->play();
    QTRY_VERIFY(m_player->currentPosition() > paused + 1);
    m_player->stop();
    QCOMPARE(m_player->playState(), Player::Stopped);
    QCOMPARE(m_player->currentPosition(), 0.0);
    QVERIFY(m_player->duration() > 29);
    m_player->stop();
    QCOMPARE(states(), (States{Player::Playing, Player::Paused, Player::Playing, Player::Stopped}));

    m_spy->clear();
    m_player->play();
    m_player->pause();
    QTRY_COMPARE(m_player->playState(), Player::Paused);
    QVERIFY(m_player->currentPosition() < 1);
    m_player->play();
    QTRY_VERIFY(m_player->currentPosition() > 1);
    QVERIFY2(m_player->currentPosition() < 8, "after a stop it starts at the beginning");
    QCOMPARE(states(), (States{Player::Transitioning, Player::Paused, Player::Playing}));
    m_player->stop();
    m_player->play();
    m_player->stop();
    QCOMPARE(states().mid(3), (States{Player::Stopped, Player::Transitioning, Player::Stopped}));
}

void TestPlayer::seekingLandsWhereItWasTold()
{
    SKIP_WITHOUT_SAMPLES();
    make();
    m_player->setCurrentPosition(5);
    QCOMPARE(m_player->currentPosition(), 0.0);
    m_player->setUrl(media(QStringLiteral("long30.mp3")));
    QTRY_VERIFY(m_player->duration() > 29);
    m_player->setCurrentPosition(20);
    QCOMPARE(m_player->currentPosition(), 20.0);
    m_player->play();
    QTRY_VERIFY(m_player->currentPosition() > 21);
    m_player->setCurrentPosition(-4);
    QCOMPARE(m_player->currentPosition(), 0.0);
    QTRY_VERIFY(m_player->currentPosition() > 1 && m_player->currentPosition() < 15);
    m_player->setCurrentPosition(1e9);
    QTRY_COMPARE(m_player->playState(), Player::Stopped);
}

/// A FIFO nobody writes to behaves as a file on a mount that died. The player gives it up after ten seconds.
void TestPlayer::aFileThatDoesNotAnswerHoldsNobodyUp()
{
    SKIP_WITHOUT_SAMPLES();
    make();
    const QByteArray fifo = pathToBytes(m_home.path()) + "dead";
    for (const char *suffix : {".wmv", ".mid", ".asx"})
        QCOMPARE(mkfifo((fifo + suffix).constData(), 0600), 0);
    qint64 latest = 0;
    QElapsedTimer clock;
    QTimer tick;
    connect(&tick, &QTimer::timeout, this, [&] { latest = std::max(latest, clock.restart()); });
    clock.start();
    tick.start(5);

    QVERIFY(playToEnd(pathFromBytes(fifo + ".asx"), 2000));
    m_player->setUrl(pathFromBytes(fifo + ".wmv"));
    m_player->play();
    QVERIFY2(playToEnd(media(QStringLiteral("count.wav"))), "the next file plays although the first still hangs");
    QVERIFY(states().contains(Player::Playing));
    QElapsedTimer whole;
    whole.start();
    QVERIFY(playToEnd(pathFromBytes(fifo + ".mid"), 20000));
    QCOMPARE(states(), (States{Player::Transitioning, Player::Stopped}));
    QVERIFY(whole.elapsed() > 7000);
    m_player->setUrl(pathFromBytes(fifo + ".wmv"));
    init();
    clock.restart();
    QVERIFY2(latest < 300, qPrintable(QString::number(latest)));
}

void TestPlayer::aPlayerMayBeDeletedByWhoItTells()
{
    SKIP_WITHOUT_SAMPLES();
    for (const int state : {Player::Transitioning, Player::Playing, Player::Stopped}) {
        make();
        connect(m_player.get(), &Player::playStateChanged, this, [this, state](int now) {
            if (now == state)
                m_player.reset();
        });
        m_player->setUrl(media(QStringLiteral("count.avi")));
        m_player->play();
        QTRY_VERIFY(!m_player);
    }
}

QTEST_GUILESS_MAIN(TestPlayer)
#include "tst_player.moc"
