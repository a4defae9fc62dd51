#include "engine/playertest.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <sys/stat.h>

#include <algorithm>

/// What the player is told to do while it plays, and what may go wrong below it.
class TestPlayerCommands : public PlayerTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules"); }
    void init() { fresh(); }
    void aSecondUrlSilencesTheFirst();
    void theVolumeIsKeptFromBeforeTheFirstFile();
    void stopPauseAndPlayGoOnFromWhereTheyShould();
    void seekingLandsWhereItWasTold();
    void aFileThatDoesNotAnswerHoldsNobodyUp();
    void aPlayerMayBeDeletedByWhoItTells();
};

void TestPlayerCommands::aSecondUrlSilencesTheFirst()
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

void TestPlayerCommands::theVolumeIsKeptFromBeforeTheFirstFile()
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
        fresh();
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

void TestPlayerCommands::stopPauseAndPlayGoOnFromWhereTheyShould()
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

void TestPlayerCommands::seekingLandsWhereItWasTold()
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
void TestPlayerCommands::aFileThatDoesNotAnswerHoldsNobodyUp()
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
    fresh();
    clock.restart();
    QVERIFY2(latest < 300, qPrintable(QString::number(latest)));
}

void TestPlayerCommands::aPlayerMayBeDeletedByWhoItTells()
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

QTEST_GUILESS_MAIN(TestPlayerCommands)
#include "tst_playercommands.moc"
