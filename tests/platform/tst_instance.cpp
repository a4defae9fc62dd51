#include "platform/folders.h"
#include "platform/instance.h"
#include "support/support.h"

#include <QDir>
#include <QProcess>
#include <QSocketNotifier>
#include <QtTest>

#include <csignal>
#include <cstdio>
#include <memory>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

/// A start of the program as a process of its own: this test program with other arguments. It says what happens to it
/// in lines on its standard output.
class Start
{
public:
    explicit Start(const QStringList &arguments)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(), arguments);
    }
    ~Start()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    /// The next line; empty when none comes within ten seconds.
    QString line()
    {
        QDeadlineTimer patience(10'000);
        while (!m_process.canReadLine() && !patience.hasExpired()) {
            if (!m_process.waitForReadyRead(int(patience.remainingTime())))
                break;
        }
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }
    void tell(const char *order)
    {
        m_process.write(order);
        m_process.write("\n");
        m_process.waitForBytesWritten();
    }
    pid_t processId() const { return pid_t(m_process.processId()); }
    bool ended() { return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(10'000); }
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

std::unique_ptr<Start> first()
{
    return std::make_unique<Start>(QStringList{QStringLiteral("--start")});
}

std::unique_ptr<Start> later(const QString &command, int milliseconds = 10'000)
{
    return std::make_unique<Start>(QStringList{QStringLiteral("--start"), command, QString::number(milliseconds)});
}

void say(const QString &line)
{
    std::printf("%s\n", qPrintable(QString(line).replace(QLatin1Char('\n'), QLatin1Char('|'))));
    std::fflush(stdout);
}

QByteArray orderFromInput()
{
    char buffer[100];
    return std::fgets(buffer, sizeof buffer, stdin) ? QByteArray(buffer).trimmed() : QByteArrayLiteral("end");
}

/// What a process does that the test starts: elect, listen or hand over, and follow orders.
int runAsStart(const QStringList &arguments)
{
    std::setvbuf(stdin, nullptr, _IONBF, 0);
    Instance instance;
    if (!instance.becomeFirst()) {
        if (instance.handOver(arguments.value(2), QStringLiteral("token"), arguments.value(3).toInt())) {
            say(QStringLiteral("handed over"));
            return 0;
        }
        if (!instance.becomeFirst()) {
            say(QStringLiteral("nobody took it"));
            return 1;
        }
    }
    say(QStringLiteral("first"));
    instance.listen([](const QString &command, const QString &token) { say(token + QLatin1Char(' ') + command); });
    QSocketNotifier orders(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&orders, &QSocketNotifier::activated, [&] {
        const QByteArray order = orderFromInput();
        if (order == "retire")
            instance.retire();
        if (order == "end")
            QCoreApplication::exit();
        say(QString::fromLatin1(order));
        if (order == "block") {
            const QByteArray next = orderFromInput();
            say(QString::fromLatin1(next));
            if (next == "retire") {
                instance.retire();
                say(instance.untaken().join(QLatin1Char(' ')));
            }
        }
    });
    return QCoreApplication::exec();
}

/// A connection to the first instance's socket by somebody who does not keep to the form.
class RawClient
{
public:
    RawClient()
        : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const QStringList names = QDir(runtimeFolder()).entryList({QStringLiteral("*.socket")}, QDir::System);
        const QByteArray path = QFile::encodeName(runtimeFolder() + names.value(0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, path.constData(), sizeof address.sun_path);
        m_connected = ::connect(m_socket, static_cast<sockaddr *>(static_cast<void *>(&address)), sizeof address) == 0;
    }
    ~RawClient() { ::close(m_socket); }
    bool connected() const { return m_connected; }
    bool send(const QByteArray &bytes)
    {
        return ::send(m_socket, bytes.constData(), std::size_t(bytes.size()), MSG_NOSIGNAL) == bytes.size();
    }
    /// What the other side answers before it closes or goes on waiting.
    QByteArray answer()
    {
        char buffer[16];
        const ssize_t count = ::recv(m_socket, buffer, sizeof buffer, 0);
        return QByteArray(buffer, qMax<ssize_t>(0, count));
    }

private:
    int m_socket;
    bool m_connected = false;
};

} // namespace

/// Starts of the program against each other, each a real process.
class tst_instance : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_home = std::make_unique<TemporaryHome>(); }
    void laterStartHandsItsCommandOver_data();
    void laterStartHandsItsCommandOver();
    void tenStartsAtOnceAllArrive();
    void blockedFirstStillTakesCommands();
    void commandsKeepTheirOrder();
    void retiredFirstLetsALaterOneBecomeFirst();
    void commandsThatTheEndComesBeforeAreKnown();
    void killedFirstLeavesNothingStale();
    void stoppedFirstIsNotWaitedForForEver();
    void strangersDoNotDisturb_data();
    void strangersDoNotDisturb();
    void onlyTheUserCanReachTheSocket();
    void worksWithoutARuntimeFolder();
    void longRuntimeFolderWorks();
    void withoutALockEachStartIsOnItsOwn();

private:
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_instance::laterStartHandsItsCommandOver_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("an empty command") << QString();
    QTest::newRow("a path") << QStringLiteral("\"/srv/me/a b.jpg\"");
    QTest::newRow("letters of many scripts") << QStringLiteral("\"/ä/日本/\U0001f33b.jpg\"");
    QTest::newRow("a hundred thousand letters") << QString(100'000, QLatin1Char('x'));
}

void tst_instance::laterStartHandsItsCommandOver()
{
    QFETCH(QString, command);
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    const auto start = later(command);
    QCOMPARE(start->line(), QStringLiteral("handed over"));
    QCOMPARE(running->line(), (QStringLiteral("token ") + command).trimmed());
}

void tst_instance::tenStartsAtOnceAllArrive()
{
    // Nobody runs yet: the ten elect one among themselves, and the other nine reach it.
    std::vector<std::unique_ptr<Start>> starts;
    for (int i = 0; i < 10; ++i)
        starts.push_back(later(QString::number(i)));
    Start *elected = nullptr;
    QStringList expected;
    for (int i = 0; i < 10; ++i) {
        const QString line = starts[std::size_t(i)]->line();
        if (line == QStringLiteral("first")) {
            QVERIFY2(!elected, "two starts became the first");
            elected = starts[std::size_t(i)].get();
        } else {
            QCOMPARE(line, QStringLiteral("handed over"));
            expected.append(QStringLiteral("token %1").arg(i));
        }
    }
    QVERIFY(elected);
    QStringList arrived;
    for (int i = 0; i < 9; ++i)
        arrived.append(elected->line());
    arrived.sort();
    QCOMPARE(arrived, expected);
}

void tst_instance::blockedFirstStillTakesCommands()
{
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    running->tell("block");
    QCOMPARE(running->line(), QStringLiteral("block"));
    const auto start = later(QStringLiteral("a.jpg"));
    QCOMPARE(start->line(), QStringLiteral("handed over"));
    QVERIFY(start->ended());
    running->tell("go on");
    QCOMPARE(running->line(), QStringLiteral("go on"));
    QCOMPARE(running->line(), QStringLiteral("token a.jpg"));
}

void tst_instance::commandsKeepTheirOrder()
{
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    running->tell("block");
    QCOMPARE(running->line(), QStringLiteral("block"));
    for (int i = 0; i < 5; ++i)
        QCOMPARE(later(QString::number(i))->line(), QStringLiteral("handed over"));
    running->tell("go on");
    QCOMPARE(running->line(), QStringLiteral("go on"));
    for (int i = 0; i < 5; ++i)
        QCOMPARE(running->line(), QStringLiteral("token %1").arg(i));
}

void tst_instance::retiredFirstLetsALaterOneBecomeFirst()
{
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    running->tell("retire");
    QCOMPARE(running->line(), QStringLiteral("retire"));
    // It still holds the election, so that one who gives up soon finds nobody...
    QCOMPARE(later(QStringLiteral("a.jpg"), 50)->line(), QStringLiteral("nobody took it"));
    // ...and one who waits follows it as soon as it has gone.
    const auto successor = later(QStringLiteral("b.jpg"));
    running->tell("end");
    QVERIFY(running->ended());
    QCOMPARE(successor->line(), QStringLiteral("first"));
    QCOMPARE(later(QStringLiteral("c.jpg"))->line(), QStringLiteral("handed over"));
    QCOMPARE(successor->line(), QStringLiteral("token c.jpg"));
}

void tst_instance::commandsThatTheEndComesBeforeAreKnown()
{
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    QCOMPARE(later(QStringLiteral("a.jpg"))->line(), QStringLiteral("handed over"));
    QCOMPARE(running->line(), QStringLiteral("token a.jpg"));
    running->tell("block");
    QCOMPARE(running->line(), QStringLiteral("block"));
    for (int i = 0; i < 2; ++i)
        QCOMPARE(later(QString::number(i))->line(), QStringLiteral("handed over"));
    running->tell("retire");
    QCOMPARE(running->line(), QStringLiteral("retire"));
    QCOMPARE(running->line(), QStringLiteral("0 1"));
}

void tst_instance::killedFirstLeavesNothingStale()
{
    const auto killed = first();
    QCOMPARE(killed->line(), QStringLiteral("first"));
    killed->kill();
    const auto running = later(QStringLiteral("a.jpg"));
    QCOMPARE(running->line(), QStringLiteral("first"));
    QCOMPARE(later(QStringLiteral("b.jpg"))->line(), QStringLiteral("handed over"));
    QCOMPARE(running->line(), QStringLiteral("token b.jpg"));
}

void tst_instance::stoppedFirstIsNotWaitedForForEver()
{
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    ::kill(running->processId(), SIGSTOP);
    QElapsedTimer time;
    time.start();
    QCOMPARE(later(QStringLiteral("a.jpg"), 200)->line(), QStringLiteral("nobody took it"));
    QVERIFY2(time.elapsed() < 5000, "giving up took far longer than allowed");
}

void tst_instance::strangersDoNotDisturb_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("closed");
    const QByteArray magic("LUMORA1\n");
    QTest::newRow("somebody who says nothing") << QByteArray() << false;
    QTest::newRow("half a header") << magic.left(3) << false;
    QTest::newRow("another protocol") << QByteArray("GET / HTTP/1.1\r\n\r\n") << true;
    QTest::newRow("a message of four gigabytes") << magic + QByteArray("\xff\xff\xff\xff\xff\xff\xff\xff", 8) << true;
    QTest::newRow("a message that stops half-way") << magic + QByteArray("\0\0\0\x05\0\0\0\0ab", 10) << false;
}

void tst_instance::strangersDoNotDisturb()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, closed);
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    RawClient stranger;
    QVERIFY(stranger.connected());
    QVERIFY(stranger.send(bytes));
    if (closed)
        QCOMPARE(stranger.answer(), QByteArray());
    QCOMPARE(later(QStringLiteral("a.jpg"))->line(), QStringLiteral("handed over"));
    QCOMPARE(running->line(), QStringLiteral("token a.jpg"));
}

void tst_instance::onlyTheUserCanReachTheSocket()
{
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    int files = 0;
    for (const QFileInfo &entry : QDir(runtimeFolder()).entryInfoList(QDir::Files | QDir::System)) {
        struct stat state
        {
        };
        QCOMPARE(::stat(QFile::encodeName(entry.filePath()).constData(), &state), 0);
        QVERIFY2((state.st_mode & 077) == 0, qPrintable(entry.fileName()));
        ++files;
    }
    QVERIFY(files >= 2);
}

void tst_instance::worksWithoutARuntimeFolder()
{
    // The display keeps this election apart from that of a program which runs on this machine.
    qputenv("DISPLAY", "test-" + QByteArray::number(QCoreApplication::applicationPid()));
    for (const QByteArray &folder : {QByteArray(), QByteArray("relative"), QByteArray("/dev/null")}) {
        qputenv("XDG_RUNTIME_DIR", folder);
        const auto running = first();
        QCOMPARE(running->line(), QStringLiteral("first"));
        QCOMPARE(later(QStringLiteral("a.jpg"))->line(), QStringLiteral("handed over"));
        QCOMPARE(running->line(), QStringLiteral("token a.jpg"));
        running->tell("end");
        QVERIFY(running->ended());
    }
    const QStringList left =
        QDir(runtimeFolder())
            .entryList({QStringLiteral("*test-*"), QStringLiteral("*test_*")}, QDir::Files | QDir::System);
    for (const QString &name : left)
        QVERIFY(QFile::remove(runtimeFolder() + name));
    qunsetenv("DISPLAY");
}

void tst_instance::longRuntimeFolderWorks()
{
    const QString folder = m_home->path() + QString(150, QLatin1Char('r'));
    QVERIFY(QDir().mkpath(folder));
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder));
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    QCOMPARE(later(QStringLiteral("a.jpg"))->line(), QStringLiteral("handed over"));
    QCOMPARE(running->line(), QStringLiteral("token a.jpg"));
    QVERIFY(!QDir(folder).isEmpty());
}

void tst_instance::withoutALockEachStartIsOnItsOwn()
{
    const auto running = first();
    QCOMPARE(running->line(), QStringLiteral("first"));
    const QString lock =
        QDir(runtimeFolder()).entryInfoList({QStringLiteral("*.lock")}, QDir::Files).value(0).filePath();
    running->tell("end");
    QVERIFY(running->ended());
    QVERIFY(QFile::remove(lock));
    QVERIFY(QDir().mkpath(lock));
    const auto one = first();
    const auto two = first();
    QCOMPARE(one->line(), QStringLiteral("first"));
    QCOMPARE(two->line(), QStringLiteral("first"));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (application.arguments().value(1) == QStringLiteral("--start"))
        return runAsStart(application.arguments());
    tst_instance test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_instance.moc"
