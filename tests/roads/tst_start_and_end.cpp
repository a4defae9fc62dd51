#include "app/commandline.h"
#include "platform/files.h"
#include "roads/programrun.h"
#include "support/support.h"
#include "viewer/listfile.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <csignal>
/// From process entry to process end, with the program as it is installed.
class tst_start_and_end : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void helpAndVersionNeedNoDisplay();
    void unknownOptionIsSaidOnStandardError();
    void screenshotShowsThePicture();
    void screenshotIntoNowhereFails();
    void screenshotRunsBesideTheFirstInstance();
    void signalSavesListAndSettings_data();
    void signalSavesListAndSettings();
    void onePictureLeavesTheStandardListAlone();
    void secondStartHandsItsFileOver();
    void tenStartsAtOnceAllArrive();
    void startWhileTheFirstOneEndsBecomesTheNext();
    void editorStartEndsInItsWait();
    void fileAfterAnEditorStartBringsTheMainViewer();
    void withoutADisplayItSaysSo();
    void normalRunPrintsNothing();
    void nameOfForeignBytesArrives();
    void withoutThePlayerNothingIsWritten();
    void aSoundOfTheStartPlaysToItsEnd();
    void desktopOpensFilesOverTheBus();

private:
    QString standardList() const
    {
        return m_home->path() + QStringLiteral("app/") + QString::fromLatin1(standardListName);
    }
    QStringList listed() const
    {
        const auto bytes = readFile(standardList(), 1 << 20);
        return bytes ? readListFile(*bytes, 0).entries : QStringList();
    }
    QString userList(const QStringList &paths)
    {
        return m_home->write(QStringLiteral("user.lsl"), writeListFile(paths, QStringLiteral("1")));
    }
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_start_and_end::initTestCase()
{
    if (!QFileInfo::exists(program))
        QSKIP("PROGRAM MISSING: build the target lumora first");
}

void tst_start_and_end::init()
{
    m_home = std::make_unique<TemporaryHome>();
}

void tst_start_and_end::helpAndVersionNeedNoDisplay()
{
    const QMap<QString, QString> noDisplay{{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("nothing")}};
    Run help({QStringLiteral("--help")}, noDisplay);
    QCOMPARE(help.status(), 0);
    QCOMPARE(help.output(), helpText());
    Run version({QStringLiteral("--version")}, noDisplay);
    QCOMPARE(version.status(), 0);
    QCOMPARE(version.output(), versionText());
}

void tst_start_and_end::unknownOptionIsSaidOnStandardError()
{
    Run run({QStringLiteral("--nonsense")});
    QCOMPARE(run.status(), 2);
    QVERIFY2(run.log().contains(QStringLiteral("--nonsense")), qPrintable(run.log()));
    QCOMPARE(run.log().count(QLatin1Char('\n')), 1);
    QCOMPARE(run.output(), QString());
}

void tst_start_and_end::screenshotShowsThePicture()
{
    const QRgb color = qRgb(200, 30, 90);
    const QString picture = m_home->writePicture(QStringLiteral("a.png"), QSize(300, 200), color);
    const QString shot = m_home->path() + QStringLiteral("shot.png");
    Run run({QStringLiteral("--screenshot"), shot, picture});
    QCOMPARE(run.status(), 0);
    const QImage window(shot);
    QVERIFY(!window.isNull());
    int pixels = 0;
    for (int y = 0; y < window.height(); ++y) {
        for (int x = 0; x < window.width(); ++x)
            pixels += window.pixel(x, y) == color;
    }
    QVERIFY2(pixels >= 300 * 200, qPrintable(QStringLiteral("%1 pixels of the picture's colour").arg(pixels)));
}

void tst_start_and_end::screenshotIntoNowhereFails()
{
    Run run({QStringLiteral("--screenshot"), m_home->path() + QStringLiteral("no/such/folder/shot.png")});
    QCOMPARE(run.status(), 1);
    QVERIFY2(run.log().contains(QStringLiteral("shot.png")), qPrintable(run.log()));
}

void tst_start_and_end::screenshotRunsBesideTheFirstInstance()
{
    Run first({});
    QVERIFY2(first.stands(), qPrintable(first.log()));
    const QString shot = m_home->path() + QStringLiteral("shot.png");
    Run second({QStringLiteral("--screenshot"), shot});
    QCOMPARE(second.status(), 0);
    QVERIFY(QFileInfo::exists(shot));
    QCOMPARE(first.endedBy(SIGTERM), 0);
    QVERIFY2(!first.log().contains(QStringLiteral("command taken")), qPrintable(first.log()));
}

void tst_start_and_end::signalSavesListAndSettings_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("end of the session") << SIGTERM;
    QTest::newRow("interrupt from the terminal") << SIGINT;
    QTest::newRow("terminal closed") << SIGHUP;
}

void tst_start_and_end::signalSavesListAndSettings()
{
    QFETCH(int, number);
    const QStringList paths{
        m_home->writePicture(QStringLiteral("a.png"), QSize(30, 20)), QStringLiteral("/gone/b.jpg")};
    Run run({userList(paths)});
    QVERIFY2(run.saw(QStringLiteral("command taken")) && run.stands(), qPrintable(run.log()));
    QCOMPARE(run.endedBy(number), 0);
    QCOMPARE(listed(), paths);
    const auto settings = readFile(m_home->path() + QStringLiteral(".config/lumora/user.registry"), 1 << 20);
    QVERIFY(settings);
    QVERIFY(settings->contains("ViewMode"));
}

void tst_start_and_end::onePictureLeavesTheStandardListAlone()
{
    const QByteArray before = writeListFile({QStringLiteral("/kept/a.jpg")}, QStringLiteral("1"));
    m_home->write(QStringLiteral("app/") + QString::fromLatin1(standardListName), before);
    Run run({m_home->writePicture(QStringLiteral("a.png"), QSize(30, 20))});
    QVERIFY2(run.saw(QStringLiteral("command taken")) && run.stands(), qPrintable(run.log()));
    QCOMPARE(run.endedBy(SIGTERM), 0);
    QCOMPARE(*readFile(standardList(), 1 << 20), before);
}

void tst_start_and_end::secondStartHandsItsFileOver()
{
    Run first({});
    QVERIFY2(first.stands(), qPrintable(first.log()));
    const QStringList paths{QStringLiteral("/a b.jpg"), QStringLiteral("/c.jpg")};
    Run second({userList(paths)});
    QCOMPARE(second.status(), 0);
    QVERIFY2(!second.log().contains(QStringLiteral("activated")), "the second start made windows");
    QVERIFY2(first.saw(QStringLiteral("command taken")), qPrintable(first.log()));
    QCOMPARE(first.endedBy(SIGTERM), 0);
    QCOMPARE(listed(), paths);
}

void tst_start_and_end::tenStartsAtOnceAllArrive()
{
    Run first({});
    QVERIFY2(first.stands(), qPrintable(first.log()));
    std::vector<std::unique_ptr<Run>> starts;
    for (int i = 0; i < 10; ++i)
        starts.push_back(std::make_unique<Run>(QStringList{QStringLiteral("/nowhere/number-%1.jpg").arg(i)}));
    for (const auto &start : starts)
        QCOMPARE(start->status(), 0);
    QVERIFY2(first.saw(QStringLiteral("command taken"), 10), qPrintable(first.log()));
    for (int i = 0; i < 10; ++i)
        QCOMPARE(first.log().count(QStringLiteral("number-%1.jpg").arg(i)), 1);
    QCOMPARE(first.endedBy(SIGTERM), 0);
}

void tst_start_and_end::startWhileTheFirstOneEndsBecomesTheNext()
{
    Run first({});
    QVERIFY2(first.stands(), qPrintable(first.log()));
    first.signal(SIGTERM);
    QVERIFY2(first.saw(QStringLiteral("ended by signal")), qPrintable(first.log()));
    Run second({userList({QStringLiteral("/a.jpg")})});
    QCOMPARE(first.status(), 0);
    QVERIFY2(second.saw(QStringLiteral("command taken")) && second.stands(), qPrintable(second.log()));
    QCOMPARE(second.endedBy(SIGTERM), 0);
    QCOMPARE(listed(), QStringList{QStringLiteral("/a.jpg")});
}

void tst_start_and_end::editorStartEndsInItsWait()
{
    Run run({QStringLiteral("/editor")});
    QVERIFY2(run.saw(QStringLiteral("started by a switch")), qPrintable(run.log()));
    QElapsedTimer time;
    time.start();
    QCOMPARE(run.endedBy(SIGTERM), 0);
    QVERIFY2(time.elapsed() < 1700, qPrintable(QStringLiteral("it took %1 ms").arg(time.elapsed())));
    QVERIFY2(!run.log().contains(QStringLiteral("activated")), "the Main Viewer was shown");
}

void tst_start_and_end::fileAfterAnEditorStartBringsTheMainViewer()
{
    Run first({QStringLiteral("--editor")});
    QVERIFY2(first.saw(QStringLiteral("started by a switch")), qPrintable(first.log()));
    Run second({userList({QStringLiteral("/a.jpg")})});
    QCOMPARE(second.status(), 0);
    QVERIFY2(first.saw(QStringLiteral("command taken")) && first.stands(), qPrintable(first.log()));
    QCOMPARE(first.endedBy(SIGTERM), 0);
    QCOMPARE(listed(), QStringList{QStringLiteral("/a.jpg")});
}

void tst_start_and_end::withoutADisplayItSaysSo()
{
    Run run({},
        {{QStringLiteral("QT_QPA_PLATFORM"), QString()}, {QStringLiteral("DISPLAY"), QString()},
            {QStringLiteral("WAYLAND_DISPLAY"), QString()}});
    QCOMPARE(run.status(), 1);
    QVERIFY2(run.log().contains(QStringLiteral("no display")), qPrintable(run.log()));
    Run wrong({}, {{QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("nothing")}});
    QCOMPARE(wrong.status(), 1);
}

void tst_start_and_end::normalRunPrintsNothing()
{
    Run run({m_home->writePicture(QStringLiteral("a.png"), QSize(30, 20))},
        {{QStringLiteral("QT_LOGGING_RULES"), QString()}});
    const QString lock = m_home->path() + QStringLiteral(".config/lumora/user.registry.lock");
    QTRY_VERIFY_WITH_TIMEOUT(QFileInfo::exists(lock), patience);
    QCOMPARE(run.endedBy(SIGTERM), 0);
    QString said = run.log() + run.output();
    // Words of the platform without a screen; when they come depends on how far the start got.
    said.remove(QRegularExpression(QStringLiteral("This plugin does not support \\w+\\(\\)\n")));
    QCOMPARE(said, QString());
}

void tst_start_and_end::nameOfForeignBytesArrives()
{
    // The shell makes the name, since a QProcess argument cannot hold such bytes.
    const QString folder = m_home->path() + QStringLiteral("foreign/");
    QVERIFY(QDir().mkpath(folder));
    const QString list = userList({QStringLiteral("/a.jpg")});
    const QString script =
        QStringLiteral("cd \"$1\"; name=$(printf 'caf\\351.lsl'); cp \"$2\" \"$name\"; exec \"$3\" \"$name\"");
    Run run({QStringLiteral("-c"), script, QStringLiteral("sh"), folder, list, program}, {}, QStringLiteral("/bin/sh"));
    QVERIFY2(run.saw(QStringLiteral("command taken")) && run.stands(), qPrintable(run.log()));
    QCOMPARE(run.endedBy(SIGTERM), 0);
    QCOMPARE(listed(), QStringList{QStringLiteral("/a.jpg")});
}

void tst_start_and_end::withoutThePlayerNothingIsWritten()
{
    Run run({}, {{QStringLiteral("LUMORA_MODULES"), m_home->path() + QStringLiteral("empty")}});
    QVERIFY2(run.saw(QStringLiteral("the player is missing")), qPrintable(run.log()));
    QCOMPARE(run.endedBy(SIGTERM), 1);
    QVERIFY(!QFileInfo::exists(m_home->path() + QStringLiteral(".config/lumora/user.registry")));
    QVERIFY(!QFileInfo::exists(standardList()));
}

/// With whatever this machine has for sound, or nothing.
void tst_start_and_end::aSoundOfTheStartPlaysToItsEnd()
{
    SKIP_WITHOUT_SAMPLES();
    Run run({samplesFolder() + QStringLiteral("media/count.mp3")});
    QVERIFY2(run.saw(QStringLiteral("lumora.wmp9: state 3: ")), qPrintable(run.log()));
    QVERIFY2(run.saw(QStringLiteral("lumora.wmp9: state 1: ")), qPrintable(run.log()));
    QCOMPARE(run.endedBy(SIGTERM), 0);
}

void tst_start_and_end::desktopOpensFilesOverTheBus()
{
    const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (daemon.isEmpty())
        QSKIP("BUS MISSING: this test needs dbus-daemon");
    QProcess bus;
    bus.start(daemon, {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
    QVERIFY(bus.waitForReadyRead());
    const QString address = QString::fromUtf8(bus.readLine()).trimmed();
    const QString list = userList({QStringLiteral("/a.jpg")});
    {
        Run run({}, {{QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address}});
        QVERIFY2(run.saw(QStringLiteral("org.lumora.Lumora")), qPrintable(run.log()));
        QDBusConnection connection = QDBusConnection::connectToBus(address, QStringLiteral("test"));
        QVERIFY(connection.isConnected());
        QDBusMessage open =
            QDBusMessage::createMethodCall(QStringLiteral("org.lumora.Lumora"), QStringLiteral("/org/lumora/Lumora"),
                QStringLiteral("org.freedesktop.Application"), QStringLiteral("Open"));
        open << QStringList{QStringLiteral("file://") + list} << QVariantMap();
        // Asked until the name is there, and answered once: a second Open would load the list again under the end.
        bool opened = false;
        const auto ask = [&] { return opened = opened || connection.call(open).type() == QDBusMessage::ReplyMessage; };
        QTRY_VERIFY_WITH_TIMEOUT(ask(), patience);
        QVERIFY2(run.saw(QStringLiteral("command taken")), qPrintable(run.log()));
        QCOMPARE(run.endedBy(SIGTERM), 0);
        QCOMPARE(listed(), QStringList{QStringLiteral("/a.jpg")});
    }
    QDBusConnection::disconnectFromBus(QStringLiteral("test"));
    bus.terminate();
    QVERIFY(bus.waitForFinished(patience));
}

QTEST_GUILESS_MAIN(tst_start_and_end)
#include "tst_start_and_end.moc"
