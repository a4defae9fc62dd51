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
const QString latest = QStringLiteral("You are currently running the latest version of Tessaly Lumora.");
const QString newer = QStringLiteral("A newer version of Tessaly Lumora is available for download.");
const QString beyond =
    QStringLiteral("You have a newer build than is currently available for download of Tessaly Lumora.");
const QByteArray local = LUMORA_VERSION;
}

/// "Check for New Version" against a server on this computer.
class tst_versioncheck : public QObject
{
    Q_OBJECT
public Q_SLOTS:
    void open(const QUrl &url) { m_opened.append(url); }
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void versionsAreComparedAsTexts();
    void theServersOwnTextCountsBehindItsMark();
    void yesOpensTheDownload();
    void whatIsNoVersionIsSaid();
    void withoutAServerNothingIsAsked();
    void aSecondCheckMeanwhileDoesNothing();
    void theEndOfTheProgramEndsTheCheck();

private:
    /// Serves a version, and another text under a name; gives the one box, which got its default answer or this one.
    Box check(const QByteArray &published, const QByteArray &name = "none", const QByteArray &body = {},
        Box::Answer answer = Box::Answer::No, QWidget *window = &form<frmMainViewer>())
    {
        serve("latestversion", published);
        serve(name, body);
        m_server->paths.clear();
        m_opened.clear();
        auto &dialogs = ScriptedDialogs::install();
        dialogs.answer(answer);
        CheckForNewVersion(window, {m_server->url(), QUrl(QStringLiteral("http://home.example.org/"))});
        m_asked = m_server->paths.join(' ').replace("/version3.0/", "").replace(".txt", "");
        if (globals.ProgramExiting)
            dialogs.forgetAnswers();
        return dialogs.boxes.size() == 1 ? dialogs.boxes.first() : Box();
    }
    void serve(const QByteArray &name, const QByteArray &body)
    {
        m_server->answers["/version3.0/" + name + ".txt"] = Server::page(body);
    }

    TemporaryHome m_home;
    std::unique_ptr<Server> m_server;
    QByteArray m_asked; ///< names of the texts, in order
    QList<QUrl> m_opened;
};

void tst_versioncheck::initTestCase()
{
    qputenv("no_proxy", "127.0.0.1");
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "open");
    QVERIFY(showMainViewer());
}

void tst_versioncheck::init()
{
    m_server = std::make_unique<Server>();
    for (const char *name : {"currentmessage", "newermessage", "newerlink", "betamessage"})
        m_server->answers[QByteArray("/version3.0/") + name + ".txt"] = Server::page("*b*", "text/html", 404);
}

void tst_versioncheck::cleanupTestCase()
{
    for (const char *scheme : {"http", "https", "file"})
        QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
    setDialogs(nullptr);
}

void tst_versioncheck::versionsAreComparedAsTexts()
{
    QCOMPARE(check("  " + local + " "), (Box{title, latest, Box::Icon::Information}));
    QCOMPARE(m_asked, QByteArray("latestversion currentmessage"));
    // A line end counts, and makes the same version a newer one.
    for (const QByteArray &version : {local + "\r\n", local + "0", QByteArray("4")})
        QCOMPARE(check(version), (Box{title, newer, Box::Icon::Information}));
    for (const char *version : {"3.0.99", "10.0.0", "   ", ""})
        QCOMPARE(check(version), (Box{title, beyond, Box::Icon::Information}));
    QCOMPARE(versionFinding(QStringLiteral("3.1.425"), QStringLiteral("3.1.99")).text, beyond);
}

void tst_versioncheck::theServersOwnTextCountsBehindItsMark()
{
    const QByteArray cases[][2] = {{local, "currentmessage"}, {"9", "newermessage"}, {"", "betamessage"}};
    for (const auto &[version, name] : cases) {
        Box expected{title, QStringLiteral("Hello.\nBye."), Box::Icon::Information};
        if (name == "newermessage")
            expected = {title, expected.text, Box::Icon::Question, Box::Buttons::YesNo, Box::Answer::No};
        QCOMPARE(check(version, name, "*B*Hello.\r\nBye."), expected);
        QCOMPARE(m_asked, "latestversion " + name);
        QVERIFY(m_opened.isEmpty());
        expected.text.clear();
        QCOMPARE(check(version, name, "*B*"), expected);
        for (const char *body : {"*b*Hello", " *B*Hello", "Hello", "*B*\x01"})
            QCOMPARE(check(version, name, body).text, version == "9" ? newer : version == local ? latest : beyond);
    }
}

void tst_versioncheck::yesOpensTheDownload()
{
    serve("newermessage", "*B*Download it now?");
    QCOMPARE(check("9", "newerlink", "*B*https://get.example.org/3?a=b\r\n", Box::Answer::Yes).text,
        QStringLiteral("Download it now?"));
    QCOMPARE(m_opened, QList<QUrl>{QUrl(QStringLiteral("https://get.example.org/3?a=b"))});
    QCOMPARE(m_asked, QByteArray("latestversion newermessage newerlink"));
    for (const char *link : {"https://get.example.org/3", "*B*", "*B*/usr/bin/true", "*B*file:///etc/passwd"}) {
        ignore(check("9", "newerlink", link, Box::Answer::Yes));
        QCOMPARE(m_opened, QList<QUrl>{QUrl(QStringLiteral("http://home.example.org/"))});
    }
}

void tst_versioncheck::whatIsNoVersionIsSaid()
{
    for (const QByteArray &answer : {Server::page(local, "text/plain", 404), Server::page("<html>", "text/html"),
             Server::page("GIF89a", "image/gif"), Server::redirection("file:///etc/hostname")}) {
        m_server->answers["/version3.0/latestversion.txt"] = answer;
        auto &dialogs = ScriptedDialogs::install();
        dialogs.answer(Box::Answer::Ok);
        CheckForNewVersion(nullptr, {m_server->url(), {}});
        QVERIFY(dialogs.boxes.size() == 1 && dialogs.boxes.first().icon == Box::Icon::Exclamation);
    }
    QCOMPARE(m_server->paths.size(), 4);
}

/// So it is unless whoever builds the program names a server.
void tst_versioncheck::withoutAServerNothingIsAsked()
{
    auto &dialogs = ScriptedDialogs::install();
    dialogs.answer(Box::Answer::Ok);
    if (builtInUpdateServer().address.isEmpty())
        form<frmMainViewer>().mnuHelpNewVersion->trigger();
    else
        CheckForNewVersion(nullptr, {});
    QCOMPARE(dialogs.boxes, QVector<Box>{noUpdateServerBox()});
    QVERIFY(form<frmMainViewer>().mnuHelpNewVersion->isVisible());
}

/// Nor does it matter that the window has gone from which the first one came.
void tst_versioncheck::aSecondCheckMeanwhileDoesNothing()
{
    QWidget *window = &form<frmThumbNail>();
    QVERIFY(form<frmThumbNail>().mnuHelpNewVersion->isVisible());
    window->show();
    bool busy = true;
    m_server->asked = [&](QTcpSocket &) {
        const QCursor *pointer = QGuiApplication::overrideCursor();
        busy = busy && pointer && pointer->shape() == Qt::WaitCursor;
        CheckForNewVersion(&form<frmMainViewer>(), {});
        unload<frmThumbNail>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    QCOMPARE(check(local, "none", "", Box::Answer::Ok, window).text, latest);
    QVERIFY(busy && !QGuiApplication::overrideCursor());
}

void tst_versioncheck::theEndOfTheProgramEndsTheCheck()
{
    serve("newermessage", "*B*Download it now?");
    Box box;
    forEachYield([] { globals.ProgramExiting = false; },
        [&] { box = check("9", "newerlink", "*B*https://get.example.org/", Box::Answer::Yes); },
        [] { globals.ProgramExiting = true; },
        [&](int yield) {
            QCOMPARE(m_opened.size(), yield == 0 ? 1 : 0);
            QCOMPARE(box == Box(), yield == 1 || yield == 2);
        });
    globals.ProgramExiting = false;
}

QTEST_MAIN(tst_versioncheck)
#include "tst_versioncheck.moc"
