#include "builtpaths.h"
#include "engine/player.h"
#include "platform/filepath.h"
#include "support/support.h"

#include <QSignalSpy>
#include <QtEndian>
#include <QtTest>

#include <cmath>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

/// Media that lie about themselves, through the real module, ten times as fast and without a sound device.
class TestHostileMedia : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void numbersThatCannotBeTrue_data();
    void numbersThatCannotBeTrue();
    void hugePlayListsAreNotRead();
    void whatHangsInAPlayListIsPassedOver();
    void nothingIsFetched_data();
    void nothingIsFetched();

private:
    bool playsToTheEnd(const QString &path, int milliseconds = 15000);
    QByteArray sample(const char *name) const;

    TemporaryHome m_home;
    std::unique_ptr<Player> m_player;
    std::unique_ptr<QSignalSpy> m_states;
};

namespace {

template <class T> QByteArray little(T value)
{
    const T bytes = qToLittleEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&bytes), sizeof bytes);
}

template <class T> QByteArray big(T value)
{
    const T bytes = qToBigEndian(value);
    return QByteArray(reinterpret_cast<const char *>(&bytes), sizeof bytes);
}

/// A WAVE file of one second at the usual numbers: 8000 samples of 8 bits.
QByteArray wave(quint16 channels, quint32 rate, quint16 bits, quint32 dataLength)
{
    return "RIFF" + little(dataLength + 36U) + "WAVEfmt " + little(16U) + little(quint16(1)) + little(channels)
        + little(rate) + little(rate) + little(quint16(1)) + little(bits) + "data" + little(dataLength)
        + QByteArray(8000, '\x90');
}

QByteArray midi(quint16 division, const QByteArray &events, quint32 trackLength = 0, quint16 tracks = 1)
{
    return "MThd" + big(6U) + big(quint16(tracks > 1)) + big(tracks) + big(division) + "MTrk"
        + big(trackLength ? trackLength : quint32(events.size())) + events;
}

/// Writes a number over what stands `offset` bytes behind the first place of `mark`.
template <class T> QByteArray patched(QByteArray bytes, const QByteArray &mark, qsizetype offset, T value)
{
    const qsizetype at = bytes.indexOf(mark);
    return at < 0 ? QByteArray() : bytes.replace(at + offset, sizeof(T), little(value));
}

/// Listens on the loopback interface and tells whether anybody ever knocked.
class Listener
{
public:
    Listener()
        : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *name = reinterpret_cast<sockaddr *>(&address);
        m_listens = ::bind(m_socket, name, size) == 0 && ::listen(m_socket, 8) == 0
            && ::getsockname(m_socket, name, &size) == 0;
        m_port = ntohs(address.sin_port);
    }
    ~Listener() { ::close(m_socket); }
    bool listens() const { return m_listens; }
    QByteArray address() const { return "127.0.0.1:" + QByteArray::number(m_port); }
    bool wasCalled() const
    {
        const int connection = ::accept(m_socket, nullptr, nullptr);
        if (connection >= 0)
            ::close(connection);
        return connection >= 0;
    }

private:
    int m_socket;
    bool m_listens = false;
    int m_port = 0;
};

}

void TestHostileMedia::initTestCase()
{
    qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules");
}

void TestHostileMedia::init()
{
    m_states.reset();
    m_player =
        createPlayer({{QStringLiteral("ao"), QStringLiteral("null")}, {QStringLiteral("speed"), QStringLiteral("10")}});
    QVERIFY(m_player);
    m_states = std::make_unique<QSignalSpy>(m_player.get(), &Player::playStateChanged);
}

bool TestHostileMedia::playsToTheEnd(const QString &path, int milliseconds)
{
    m_player->setUrl(path);
    m_states->clear();
    m_player->play();
    return QTest::qWaitFor([&] { return m_player->playState() == Player::Stopped; }, milliseconds)
        && m_states->first().first().toInt() == Player::Transitioning;
}

QByteArray TestHostileMedia::sample(const char *name) const
{
    QFile file(samplesFolder() + QStringLiteral("media/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestHostileMedia::numbersThatCannotBeTrue_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("ends");
    const auto row = [](const char *what, const char *name, const QByteArray &bytes, bool ends = true) {
        QTest::newRow(what) << QString::fromLatin1(name) << bytes << ends;
    };
    row("a wave that says it is 4 GiB long", "a.wav", wave(1, 8000, 8, 0xffffffff));
    row("a wave that says it is empty", "a.wav", wave(1, 8000, 8, 0));
    row("no samples a second", "a.wav", wave(1, 0, 8, 8000));
    row("4 thousand million samples a second", "a.wav", wave(1, 0xffffffff, 8, 8000));
    row("no channels", "a.wav", wave(0, 8000, 8, 8000));
    row("65535 channels", "a.wav", wave(65535, 8000, 8, 8000));
    row("samples without bits", "a.wav", wave(1, 8000, 0, 8000));

    const QByteArray fileProperties = QByteArray::fromHex("a1dcab8c47a9cf118ee400c00c205365");
    row("an ASF as long as the universe is old", "a.wmv",
        patched(sample("count.wmv"), fileProperties, 64, Q_INT64_C(0x7fffffffffffffff)));
    row("an ASF of a negative length", "a.asf", patched(sample("count.asf"), fileProperties, 64, qint64(-1)));
    row("an ASF that begins in a thousand years", "a.wma",
        patched(sample("tone.wma"), fileProperties, 80, Q_INT64_C(31536000000000)));
    row("an AVI of 4 thousand million frames", "a.avi", patched(sample("count.avi"), "avih", 24, 0xffffffffU));
    row("an AVI whose frames last no time", "a.avi",
        patched(patched(sample("silent.avi"), "avih", 8, 0U), "strh", 28, 0U));
    row("an AVI of a picture 2 thousand million pixels wide", "a.avi",
        patched(sample("mjpeg.avi"), "strf", 12, 0x7fffffffU));

    const QByteArray note = QByteArray::fromHex("00903c40"
                                                "60803c00");
    const QByteArray end = QByteArray::fromHex("00ff2f00");
    row("a MIDI with no ticks in a beat", "a.mid", midi(0, note + end));
    row("a MIDI counted in film frames", "a.mid", midi(0xe250, note + end));
    row("a MIDI whose beats last no time", "a.mid", midi(96, QByteArray::fromHex("00ff5103000000") + note + end));
    row("a MIDI with a track beyond the file", "a.mid", midi(96, note + end, 0xffffffff));
    row("a MIDI with 65535 tracks, all but one missing", "a.mid", midi(96, note + end, 0, 65535));
    row("a MIDI that begins with a note that goes on", "a.mid", midi(96, QByteArray::fromHex("003c40603c00") + end));
    row("a MIDI with a message of 256 MiB", "a.mid", midi(96, QByteArray::fromHex("00f0ffffff7f") + note + end));
    row("a MIDI of years", "a.mid", midi(96, note + QByteArray::fromHex("ffffff7f903c40").repeated(50) + end), false);
    row("a MIDI without the end of its track", "a.mid", midi(96, note));
}

/// Whatever a header says: the length shown is a number, the file ends or can be stopped, and the next one plays.
void TestHostileMedia::numbersThatCannotBeTrue()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, ends);
    QVERIFY(!bytes.isEmpty());
    const QString path = m_home.write(name, bytes);
    m_player->setUrl(path);
    m_player->play();
    QTRY_VERIFY_WITH_TIMEOUT(m_player->playState() != Player::Transitioning, 12000);
    if (ends)
        QTRY_COMPARE_WITH_TIMEOUT(m_player->playState(), Player::Stopped, 15000);
    QVERIFY2(std::isfinite(m_player->duration()) && m_player->duration() >= 0,
        qPrintable(QString::number(m_player->duration())));
    m_player->stop();
    QCOMPARE(m_player->playState(), Player::Stopped);
    QVERIFY(playsToTheEnd(samplesFolder() + QStringLiteral("media/count.wav")));
    QCOMPARE(m_states->size(), 3);
}

void TestHostileMedia::hugePlayListsAreNotRead()
{
    SKIP_WITHOUT_SAMPLES();
    const QByteArray entry = "<ref href='" + pathToBytes(samplesFolder()) + "media/count.wav'/>";
    QVERIFY(playsToTheEnd(m_home.write(QStringLiteral("huge.asx"), "<asx>" + entry + QByteArray(2 << 20, ' '))));
    QCOMPARE(m_states->size(), 2);
    QCOMPARE(m_player->content(), Player::None);
}

/// A file on a mount that died is given up after ten seconds; what stands behind it in the list still plays.
void TestHostileMedia::whatHangsInAPlayListIsPassedOver()
{
    SKIP_WITHOUT_SAMPLES();
    QCOMPARE(mkfifo((pathToBytes(m_home.path()) + "dead.wav").constData(), 0600), 0);
    const QString list = m_home.write(QStringLiteral("list.asx"),
        "<asx><ref href='dead.wav'/><ref href='" + pathToBytes(samplesFolder()) + "media/count.wav'/></asx>");
    QVERIFY(playsToTheEnd(list, 20000));
    QCOMPARE(m_states->size(), 3);
    QCOMPARE(m_player->content(), Player::Sound);
}

void TestHostileMedia::nothingIsFetched_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const char *text) {
        QTest::newRow(name) << QString::fromLatin1(name) << QByteArray(text);
    };
    row("a.asx", "<asx><ref href='http://ADDRESS/a.wav'/><ref href='mms://ADDRESS/b'/></asx>");
    row("b.asx", "[Reference]\nRef1=http://ADDRESS/a.wav\nRef2=//ADDRESS/b.wav\n");
    row("a.wmv", "[Reference]\nRef1=http://ADDRESS/a.wmv?MSWMExt=.asf\n");
    row("b.wmv", "<asx version='3'><entry><ref href='http://ADDRESS/a.wmv'/></entry></asx>");
    row("a.mp3", "#EXTM3U\n#EXTINF:3,a\nhttp://ADDRESS/a.mp3\n");
    row("a.mpg",
        "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:9\n#EXTINF:9,\nhttp://ADDRESS/a.ts\n#EXT-X-ENDLIST\n");
    row("a.avi", "# mpv EDL v0\nhttp://ADDRESS/a.avi\n");
    row("b.avi", "ffconcat version 1.0\nfile 'http://ADDRESS/a.avi'\n");
    row("b.mp3", "[playlist]\nFile1=http://ADDRESS/a.mp3\nNumberOfEntries=1\n");
    row("a.wma",
        "<?xml version='1.0'?><MPD xmlns='urn:mpeg:dash:schema:mpd:2011' type='static'>"
        "<BaseURL>http://ADDRESS/</BaseURL></MPD>");
}

/// No local file makes the program call anybody.
void TestHostileMedia::nothingIsFetched()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, text);
    const Listener listener;
    QVERIFY(listener.listens());
    QVERIFY(playsToTheEnd(m_home.write(name, text.replace("ADDRESS", listener.address()))));
    QVERIFY2(!listener.wasCalled(), "somebody was called");
    QVERIFY(!m_states->contains({int(Player::Playing)}));
}

QTEST_GUILESS_MAIN(TestHostileMedia)
#include "tst_hostilemedia.moc"
