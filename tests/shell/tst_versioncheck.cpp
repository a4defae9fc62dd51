#include "app/globals.h"
#include "app/startup.h"
#include "shell/checkfornewversion.h"
#include "support/loopbackserver.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmThumbNail.h"
#include "viewer/frmMainViewer.h"

#include <QDesktopServices>
#include <QtTest>

namespace {
using Box = MessageBox;
using Server = LoopbackServer;
const QString title = QStringLiteral("Update Version Check:");
const QString latestText = QStringLiteral("You are currently running the latest version of Tessaly Lumora.");
const QString newerText = QStringLiteral("A newer version of Tessaly Lumora is available for download.");
const QString beyondText =
    QStringLiteral("You have a newer build than is currently available for download of Tessaly Lumora.");
}

/// "Check for New Version" against a server on this computer.
class tst_versioncheck : public QObject
{
    Q_OBJECT
public Q_SLOTS:
    void open(const QUrl &url) { m_opened.append(url); }
private Q_SLOTS:
    void init();
    void cleanup();
    void versionsAreComparedAsTexts_data();
    void versionsAreComparedAsTexts();
    void theServersOwnTextCountsBehindItsMark_data();
    void theServersOwnTextCountsBehindItsMark();
    void yesOpensTheDownload_data();
    void yesOpensTheDownload();
    void whatIsNoVersionIsSaid_data();
    void whatIsNoVersionIsSaid();
    void withoutAServerNothingIsAsked();
    void aSecondCheckMeanwhileDoesNothing();
    void theEndOfTheProgramEndsTheCheck();

private:
    void check(QWidget *window = nullptr)
    {
        m_server->paths.clear();
        CheckForNewVersion(window ? window : &form<frmMainViewer>(),
            {m_server->url(), QUrl(QStringLiteral("http://home.example.org/"))});
    }
    void serve(const QByteArray &name, const QByteArray &body)
    {
        m_server->answers["/version3.0/" + name + ".txt"] = Server::page(body);
    }
    /// The names of the texts that were asked for.
    QByteArray asked() const { return m_server->paths.join(' ').replace("/version3.0/", "").replace(".txt", ""); }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<Server> m_server;
    ScriptedDialogs *m_dialogs = nullptr;
    QList<QUrl> m_opened;
};

void tst_versioncheck::init()
{
    qputenv("no_proxy", "127.0.0.1");
    m_home = std::make_unique<TemporaryHome>();
    globals = {};
    m_server = std::make_unique<Server>();
    for (const char *name : {"latestversion", "currentmessage", "newermessage", "newerlink", "betamessage"})
        m_server->answers[QByteArray("/version3.0/") + name + ".txt"] = Server::page("*b*", "text/html", 404);
    m_dialogs = &ScriptedDialogs::install();
    m_opened.clear();
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "open");
    QVERIFY(showMainViewer());
}

void tst_versioncheck::cleanup()
{
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
    ShutDownProgram();
    finishShutDown();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    setDialogs(nullptr);
}

void tst_versioncheck::versionsAreComparedAsTexts_data()
{
    QTest::addColumn<QByteArray>("published");
    QTest::addColumn<QString>("text");
    const QByteArray local = localVersion().toLatin1();
    QTest::newRow("blanks around it") << "  " + local + " " << latestText;
    QTest::newRow("a line end behind it is a newer version") << local + "\r\n" << newerText;
    QTest::newRow("one more character") << local + "0" << newerText;
    QTest::newRow("3.0.99") << QByteArray("3.0.99") << beyondText;
    QTest::newRow("10.0.0 begins with a 1") << QByteArray("10.0.0") << beyondText;
    QTest::newRow("nothing") << QByteArray() << beyondText;
}

void tst_versioncheck::versionsAreComparedAsTexts()
{
    QFETCH(QByteArray, published);
    QFETCH(QString, text);
    serve("latestversion", published);
    m_dialogs->answer(Box::Answer::Ok);
    check();
    QCOMPARE(m_dialogs->boxes, QVector<Box>({{title, text, Box::Icon::Information}}));
    QCOMPARE(m_server->paths.size(), 2);
    QCOMPARE(versionFinding(QStringLiteral("3.1.425"), QStringLiteral("3.1.99")).text, beyondText);
}

void tst_versioncheck::theServersOwnTextCountsBehindItsMark_data()
{
    QTest::addColumn<QByteArray>("published");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text"); ///< null: the program's own
    const QByteArray cases[][2] = {{LUMORA_VERSION, "currentmessage"}, {"9", "newermessage"}, {"", "betamessage"}};
    for (const auto &[published, name] : cases) {
        QTest::addRow("%s", name.constData())
            << published << name << QByteArray("*B*Hello.\r\nBye.") << QStringLiteral("Hello.\nBye.");
        QTest::addRow("%s: mark alone", name.constData())
            << published << name << QByteArray("*B*") << QStringLiteral("");
        for (const char *body : {"*b*Hello", " *B*Hello", "Hello", "*B*\x01"})
            QTest::addRow("%s: %s", name.constData(), body) << published << name << QByteArray(body) << QString();
    }
}

void tst_versioncheck::theServersOwnTextCountsBehindItsMark()
{
    QFETCH(QByteArray, published);
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    serve("latestversion", published);
    serve(name, body);
    serve("newerlink", "*B*https://get.example.org/");
    Box expected{title, text, Box::Icon::Information};
    if (text.isNull())
        expected.text = versionFinding(QString::fromLatin1(published), localVersion()).text;
    else if (name == "newermessage")
        expected = {title, text, Box::Icon::Question, Box::Buttons::YesNo, Box::Answer::No};
    m_dialogs->answer(expected.defaultAnswer);
    check();
    QCOMPARE(m_dialogs->boxes, QVector<Box>({expected}));
    QCOMPARE(asked(), "latestversion " + name);
    QVERIFY(m_opened.isEmpty());
}

void tst_versioncheck::yesOpensTheDownload_data()
{
    QTest::addColumn<QString>("opened");
    const QString home = QStringLiteral("http://home.example.org/");
    QTest::newRow("*B*https://get.example.org/3?a=b\r\n") << QStringLiteral("https://get.example.org/3?a=b");
    for (const char *link : {"https://get.example.org/3", "*B*", "*B*/usr/bin/true", "*B*file:///etc/passwd"})
        QTest::newRow(link) << home;
}

void tst_versioncheck::yesOpensTheDownload()
{
    QFETCH(QString, opened);
    serve("latestversion", "9");
    serve("newermessage", "*B*Download it now?");
    serve("newerlink", QTest::currentDataTag());
    m_dialogs->answer(Box::Answer::Yes);
    check();
    QCOMPARE(m_opened, QList<QUrl>{QUrl(opened)});
    QCOMPARE(asked(), QByteArray("latestversion newermessage newerlink"));
}

void tst_versioncheck::whatIsNoVersionIsSaid_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("not found") << Server::page("3.1.0", "text/plain", 404);
    QTest::newRow("a page to sign in") << Server::page("<html>Sign in</html>", "text/html");
    QTest::newRow("a picture") << Server::page("GIF89a", "image/gif");
    QTest::newRow("a file of this computer") << Server::redirection("file:///etc/hostname");
}

void tst_versioncheck::whatIsNoVersionIsSaid()
{
    QFETCH(QByteArray, answer);
    m_server->answers["/version3.0/latestversion.txt"] = answer;
    m_dialogs->answer(Box::Answer::Ok);
    check();
    QCOMPARE(m_dialogs->boxes.size(), 1);
    QVERIFY(m_dialogs->boxes.first().icon == Box::Icon::Exclamation);
    QCOMPARE(m_server->paths.size(), 1);
}

/// So it is unless whoever builds the program names a server.
void tst_versioncheck::withoutAServerNothingIsAsked()
{
    m_dialogs->answer(Box::Answer::Ok);
    if (builtInUpdateServer().address.isEmpty())
        form<frmMainViewer>().mnuHelpNewVersion->trigger();
    else
        CheckForNewVersion(&form<frmMainViewer>(), {});
    QCOMPARE(m_dialogs->boxes, QVector<Box>{noUpdateServerBox()});
    QVERIFY(form<frmMainViewer>().mnuHelpNewVersion->isVisible());
    QVERIFY(form<frmThumbNail>().mnuHelpNewVersion->isVisible());
}

/// Nor does it matter that the window has gone from which the first one came.
void tst_versioncheck::aSecondCheckMeanwhileDoesNothing()
{
    serve("latestversion", localVersion().toLatin1());
    QWidget *window = &form<frmThumbNail>();
    window->show();
    bool busy = true;
    m_server->asked = [&](QTcpSocket &) {
        const QCursor *pointer = QGuiApplication::overrideCursor();
        busy = busy && pointer && pointer->shape() == Qt::WaitCursor;
        CheckForNewVersion(&form<frmMainViewer>(), {});
        unload<frmThumbNail>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    m_dialogs->answer(Box::Answer::Ok);
    check(window);
    QVERIFY(busy && !QGuiApplication::overrideCursor());
    QCOMPARE(m_dialogs->boxes.size(), 1);
    QCOMPARE(m_server->paths.size(), 2);
}

void tst_versioncheck::theEndOfTheProgramEndsTheCheck()
{
    serve("latestversion", "9");
    serve("newermessage", "*B*Download it now?");
    serve("newerlink", "*B*https://get.example.org/");
    const auto prepare = [this] {
        globals.ProgramExiting = false;
        m_opened.clear();
        m_dialogs = &ScriptedDialogs::install();
        m_dialogs->answer(Box::Answer::Yes);
    };
    forEachYield(
        prepare, [this] { check(); }, [] { globals.ProgramExiting = true; },
        [this](int yield) {
            QCOMPARE(m_opened.size(), yield == 0 ? 1 : 0);
            QCOMPARE(m_dialogs->boxes.size(), yield == 0 || yield == 3 ? 1 : 0);
            m_dialogs->forgetAnswers();
        });
    globals.ProgramExiting = false;
}

QTEST_MAIN(tst_versioncheck)
#include "tst_versioncheck.moc"
