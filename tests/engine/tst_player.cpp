#include "engine/playertest.h"

#include "platform/folders.h"

#include <QFile>
#include <QTimer>

#include <unistd.h>

#include <algorithm>

/// Files of every kind: what plays, what does not, and how it looks.
class TestPlayer : public PlayerTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules"); }
    void init() { fresh(); }
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
};

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

QTEST_GUILESS_MAIN(TestPlayer)
#include "tst_player.moc"
