#include "app/globals.h"
#include "app/startup.h"
#include "shell/checkfornewversion.h"
#include "support/loopbackserver.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmThumbNail.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QDesktopServices>
#include <QtTest>

namespace {
using Box = MessageBox;
const QString title = QStringLiteral("Update Version Check:");
const QString latestText = QStringLiteral("You are currently running the latest version of Tessaly Lumora.");
const QString newerText = QStringLiteral("A newer version of Tessaly Lumora is available for download.");
const QString beyondText =
    QStringLiteral("You have a newer build than is currently available for download of Tessaly Lumora.");

QString file(const char *name)
{
    return QStringLiteral("/version3.0/%1.txt").arg(QLatin1String(name));
}
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
    void noOpensNothing();
    void whatIsNoVersionIsSaid_data();
    void whatIsNoVersionIsSaid();
    void withoutAServerNothingIsAsked();
    void aSecondCheckMeanwhileDoesNothing();
    void theThumbnailViewerMayGoMeanwhile();
    void theEndOfTheProgramEndsTheCheck();

private:
    UpdateServer server() const { return {m_server->url(), QUrl(QStringLiteral("http://home.example.org/"))}; }
    void check(QWidget *window = nullptr)
    {
        m_server->paths.clear();
        CheckForNewVersion(window ? window : &form<frmMainViewer>(), server());
    }
    void serve(const char *name, const QByteArray &body, const QByteArray &type = "text/plain", int status = 200)
    {
        m_server->answers[file(name)] = LoopbackServer::page(body, type, status);
    }

    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<LoopbackServer> m_server;
    ScriptedDialogs *m_dialogs = nullptr;
    QList<QUrl> m_opened;
};

void tst_versioncheck::init()
{
    qputenv("no_proxy", "127.0.0.1");
    m_home = std::make_unique<TemporaryHome>();
    globals = {};
    m_server = std::make_unique<LoopbackServer>();
    for (const char *name : {"latestversion", "currentmessage", "newermessage", "newerlink", "betamessage"})
        serve(name, "<html>no such page</html>", "text/html", 404);
    m_dialogs = &ScriptedDialogs::install();
    m_opened.clear();
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), this, "open");
    QVERIFY(showMainViewer());
}

void tst_versioncheck::cleanup()
{
    if (!globals.ProgramExiting)
        ShutDownProgram();
    finishShutDown();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    setDialogs(nullptr);
    globals = {};
}

void tst_versioncheck::versionsAreComparedAsTexts_data()
{
    QTest::addColumn<QByteArray>("published");
    QTest::addColumn<QString>("text");
    const QByteArray local = localVersion().toLatin1();
    QTest::newRow("the same") << local << latestText;
    QTest::newRow("blanks around it") << "  " + local + " " << latestText;
    QTest::newRow("a line end behind it is a newer version") << local + "\r\n" << newerText;
    QTest::newRow("a tab behind it too") << local + "\t" << newerText;
    QTest::newRow("one more character") << local + "0" << newerText;
    QTest::newRow("3.0.99, a text beyond 3.0.425 and behind 3.1") << QByteArray("3.0.99") << beyondText;
    QTest::newRow("10.0.0 begins with a 1") << QByteArray("10.0.0") << beyondText;
    QTest::newRow("4") << QByteArray("4") << newerText;
    QTest::newRow("nothing") << QByteArray() << beyondText;
    QTest::newRow("blanks alone") << QByteArray("   ") << beyondText;
}

void tst_versioncheck::versionsAreComparedAsTexts()
{
    QFETCH(QByteArray, published);
    QFETCH(QString, text);
    QVERIFY(QRegularExpression(QStringLiteral("^[0-9]+\\.[0-9]+\\.[0-9]+$")).match(localVersion()).hasMatch());
    serve("latestversion", published);
    m_dialogs->answer(Box::Answer::Ok);
    check();
    QCOMPARE(m_dialogs->boxes, QVector<Box>({{title, text, Box::Icon::Information}}));
    QCOMPARE(m_server->paths.size(), 2);
    QCOMPARE(m_server->paths.first(), file("latestversion"));
    QCOMPARE(versionFinding(QStringLiteral("3.1.425"), QStringLiteral("3.1.99")).text, beyondText);
}

void tst_versioncheck::theServersOwnTextCountsBehindItsMark_data()
{
    QTest::addColumn<QByteArray>("published");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text"); ///< null: the program's own
    const struct
    {
        const char *published;
        const char *name;
    } cases[] = {{LUMORA_VERSION, "currentmessage"}, {"9", "newermessage"}, {"", "betamessage"}};
    for (const auto &[published, name] : cases) {
        const auto row = [&, published = published, name = name](const char *what, const char *body, const char *text) {
            QTest::addRow("%s: %s", name, what)
                << QByteArray(published) << QByteArray(name) << QByteArray(body) << (text ? QString::fromLatin1(text) : QString());
        };
        row("text", "*B*Hello.\r\nBye.", "Hello.\nBye.");
        row("mark alone", "*B*", "");
        row("mark in small letters", "*b*Hello", nullptr);
        row("blank before the mark", " *B*Hello", nullptr);
        row("no mark", "Hello", nullptr);
        row("binary", "*B*\x01", nullptr);
    }
}

void tst_versioncheck::theServersOwnTextCountsBehindItsMark()
{
    QFETCH(QByteArray, published);
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    serve("latestversion", published);
    serve(name.constData(), body);
    const bool asks = !text.isNull() && name == "newermessage";
    m_dialogs->answer(asks ? Box::Answer::No : Box::Answer::Ok);
    check();
    Box expected{title, text, Box::Icon::Information};
    if (asks)
        expected = {title, text, Box::Icon::Question, Box::Buttons::YesNo, Box::Answer::No};
    else if (text.isNull())
        expected.text = versionFinding(QString::fromLatin1(published), localVersion()).text;
    QCOMPARE(m_dialogs->boxes, QVector<Box>({expected}));
    QCOMPARE(m_server->paths, (QStringList{file("latestversion"), file(name.constData())}));
    QCOMPARE(m_opened.size(), 0);
}

void tst_versioncheck::yesOpensTheDownload_data()
{
    QTest::addColumn<QByteArray>("link");
    QTest::addColumn<QString>("opened");
    const QString home = QStringLiteral("http://home.example.org/");
    QTest::newRow("link") << QByteArray("*B*https://get.example.org/3?a=b\r\n")
                          << QStringLiteral("https://get.example.org/3?a=b");
    QTest::newRow("without its mark") << QByteArray("https://get.example.org/3") << home;
    QTest::newRow("mark alone") << QByteArray("*B*") << home;
    QTest::newRow("a program of this computer") << QByteArray("*B*/usr/bin/true") << home;
    QTest::newRow("a file") << QByteArray("*B*file:///etc/passwd") << home;
    QTest::newRow("no address") << QByteArray("*B*http://a b/%%") << home;
}

void tst_versioncheck::yesOpensTheDownload()
{
    QFETCH(QByteArray, link);
    QFETCH(QString, opened);
    serve("latestversion", "9");
    serve("newermessage", "*B*Download it now?");
    serve("newerlink", link);
    m_dialogs->answer(Box::Answer::Yes);
    check();
    QCOMPARE(m_opened, QList<QUrl>{QUrl(opened)});
    QCOMPARE(m_server->paths, (QStringList{file("latestversion"), file("newermessage"), file("newerlink")}));
}

void tst_versioncheck::noOpensNothing()
{
    serve("latestversion", "9");
    serve("newermessage", "*B*Download it now?");
    serve("newerlink", "*B*https://get.example.org/");
    m_dialogs->answer(Box::Answer::No);
    check();
    QCOMPARE(m_opened.size(), 0);
    QCOMPARE(m_server->paths.size(), 2);
}

void tst_versioncheck::whatIsNoVersionIsSaid_data()
{
    QTest::addColumn<QByteArray>("answer");
    using Server = LoopbackServer;
    QTest::newRow("not found") << Server::page("3.1.0", "text/plain", 404);
    QTest::newRow("a page to sign in") << Server::page("<html>Sign in</html>", "text/html");
    QTest::newRow("a picture") << Server::page("GIF89a", "image/gif");
    QTest::newRow("binary") << Server::page(QByteArray("3\0", 2));
    QTest::newRow("a file of this computer") << Server::redirection("file:///etc/hostname");
}

void tst_versioncheck::whatIsNoVersionIsSaid()
{
    QFETCH(QByteArray, answer);
    m_server->answers[file("latestversion")] = answer;
    m_dialogs->answer(Box::Answer::Ok);
    check();
    QCOMPARE(m_dialogs->boxes.size(), 1);
    QCOMPARE(m_dialogs->boxes.first().title, title);
    QVERIFY(m_dialogs->boxes.first().icon == Box::Icon::Exclamation);
    QVERIFY(m_dialogs->boxes.first().text.contains(QStringLiteral("\n\n")));
    QCOMPARE(m_server->paths.size(), 1);
}

/// So it is unless whoever builds the program names a server.
void tst_versioncheck::withoutAServerNothingIsAsked()
{
    m_dialogs->answer(Box::Answer::Ok);
    CheckForNewVersion(&form<frmMainViewer>(), {});
    QCOMPARE(m_dialogs->boxes, QVector<Box>{noUpdateServerBox()});
    QVERIFY(!m_dialogs->boxes.first().text.isEmpty());
    if (builtInUpdateServer().address.isEmpty()) {
        m_dialogs->answer(Box::Answer::Ok);
        form<frmMainViewer>().mnuHelpNewVersion->trigger();
        QCOMPARE(m_dialogs->boxes.size(), 2);
    }
    QVERIFY(form<frmMainViewer>().mnuHelpNewVersion->isVisible());
}

void tst_versioncheck::aSecondCheckMeanwhileDoesNothing()
{
    serve("latestversion", localVersion().toLatin1());
    bool busy = false;
    m_server->asked = [&](const QString &, QTcpSocket &) {
        const QCursor *pointer = QGuiApplication::overrideCursor();
        busy = pointer && pointer->shape() == Qt::WaitCursor;
        CheckForNewVersion(&form<frmMainViewer>(), server());
        // Not even without a server: the first check comes first.
        CheckForNewVersion(&form<frmMainViewer>(), {});
    };
    m_dialogs->answer(Box::Answer::Ok);
    check();
    QVERIFY(busy);
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(m_dialogs->boxes.size(), 1);
    QCOMPARE(m_server->paths.size(), 2);
}

void tst_versioncheck::theThumbnailViewerMayGoMeanwhile()
{
    serve("latestversion", localVersion().toLatin1());
    QWidget *window = &form<frmThumbNail>();
    window->show();
    m_server->asked = [](const QString &, QTcpSocket &) {
        unload<frmThumbNail>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    m_dialogs->answer(Box::Answer::Ok);
    check(window);
    QCOMPARE(m_dialogs->boxes.size(), 1);
}

void tst_versioncheck::theEndOfTheProgramEndsTheCheck()
{
    serve("newermessage", "*B*Download it now?");
    const auto prepare = [this] {
        globals.ProgramExiting = false;
        m_dialogs = &ScriptedDialogs::install();
        m_dialogs->answer(Box::Answer::Yes);
    };
    serve("latestversion", "9");
    serve("newerlink", "*B*https://get.example.org/");
    forEachYield(
        prepare, [this] { check(); }, [] { globals.ProgramExiting = true; },
        [this](int yield) {
            QCOMPARE(m_opened.size(), yield == 0 ? 1 : 0);
            QCOMPARE(m_dialogs->boxes.size(), yield == 0 || yield == 3 ? 1 : 0);
            m_dialogs->forgetAnswers();
            m_opened.clear();
        });
    globals.ProgramExiting = false;
}

QTEST_MAIN(tst_versioncheck)
#include "tst_versioncheck.moc"
