#include "platform/internettransfer.h"
#include "platform/weblink.h"
#include "support/loopbackserver.h"
#include "support/support.h"

#include <QDesktopServices>
#include <QtTest>

/// Short texts from the web: what servers may do to whoever asks them.
class tst_internettransfer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void bodyTypeAndStatusArrive_data();
    void bodyTypeAndStatusArrive();
    void aRequestTellsNothingOfTheUser();
    void whatIsNoShortTextFails_data();
    void whatIsNoShortTextFails();
    void aServerThatSaysNothingIsGivenUp();
    void anEndlessBodyIsCutOff();
    void nobodyListens();
    void onlyTheChosenProtocolIsTaken();
    void eventsComeInAndAnotherTransferDoesNot();
    void whoeverWaitsCanGiveUp();
    void onlyTheWebIsOpened_data();
    void onlyTheWebIsOpened();
    void gioOpensWhatTheDesktopCannot();

private:
    Result<WebText> fetch(const QByteArray &answer)
    {
        m_server->answers[QStringLiteral("/a")] = answer;
        return m_inet.OpenURL(m_server->url(QStringLiteral("/a")));
    }
    InternetTransfer m_inet;
    std::unique_ptr<LoopbackServer> m_server;
};

void tst_internettransfer::init()
{
    qputenv("no_proxy", "127.0.0.1");
    m_server = std::make_unique<LoopbackServer>();
    m_inet.Protocol = InternetTransfer::Via::Http;
}

void tst_internettransfer::bodyTypeAndStatusArrive_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("text");
    using Server = LoopbackServer;
    const QString plain = QStringLiteral("text/plain");
    QTest::newRow("text") << Server::page(" 3.1.0\r\n") << 200 << plain << QStringLiteral(" 3.1.0\r\n");
    QTest::newRow("nothing") << Server::page("") << 200 << plain << QString();
    QTest::newRow("type with parameters")
        << Server::page("a", "Text/HTML; charset=x") << 200 << QStringLiteral("text/html") << QStringLiteral("a");
    QTest::newRow("no type") << QByteArray("HTTP/1.0 200 OK\r\n\r\n3.1.0") << 200 << QString()
                             << QStringLiteral("3.1.0");
    QTest::newRow("error page") << Server::page("gone", "text/plain", 404) << 404 << plain << QStringLiteral("gone");
    QTest::newRow("UTF-8 behind its mark") << Server::page("\xEF\xBB\xBF\xC3\xA4") << 200 << plain
                                           << QStringLiteral(u"\u00e4");
    QTest::newRow("Windows-1252") << Server::page("\xE4 \x80") << 200 << plain << QStringLiteral(u"\u00e4 \u20ac");
    QTest::newRow("exactly 64 KiB") << Server::page(QByteArray(65536, 'x')) << 200 << plain
                                    << QString(65536, QLatin1Char('x'));
}

void tst_internettransfer::bodyTypeAndStatusArrive()
{
    QFETCH(QByteArray, answer);
    const Result<WebText> found = fetch(answer);
    QVERIFY2(found, qPrintable(found.reason()));
    QTEST(found->status, "status");
    QTEST(found->type, "type");
    QTEST(found->text, "text");
}

void tst_internettransfer::aRequestTellsNothingOfTheUser()
{
    QVERIFY(fetch("HTTP/1.1 200 OK\r\nSet-Cookie: a=b\r\nContent-Length: 1\r\nConnection: close\r\n\r\nx"));
    QVERIFY(fetch(LoopbackServer::page("x")));
    const QByteArray second = m_server->requests.value(1);
    QVERIFY(second.contains("User-Agent: Lumora/" LUMORA_VERSION "\r\n"));
    QVERIFY(second.contains("Accept-Encoding: identity\r\n"));
    QVERIFY(!second.contains("Cookie"));
}

void tst_internettransfer::whatIsNoShortTextFails_data()
{
    QTest::addColumn<QByteArray>("answer");
    using Server = LoopbackServer;
    QTest::newRow("too long") << Server::page(QByteArray(65537, 'x'));
    QTest::newRow("binary") << Server::page(QByteArray("3.1\0.0", 6));
    QTest::newRow("cut off") << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n3.1.0");
    QTest::newRow("no web server") << QByteArray("SSH-2.0-OpenSSH_9.2\r\n\r\n");
    QTest::newRow("redirection to itself") << Server::redirection("/a");
    QTest::newRow("redirection to a file") << Server::redirection("file:///etc/passwd");
    QTest::newRow("redirection to data") << Server::redirection("data:text/plain,3.1.0");
}

void tst_internettransfer::whatIsNoShortTextFails()
{
    QFETCH(QByteArray, answer);
    const Result<WebText> found = fetch(answer);
    QVERIFY2(!found, qPrintable(found ? found->text : QString()));
    QVERIFY(!found.reason().isEmpty());
    QVERIFY(m_server->paths.size() <= 6);
    QVERIFY(!m_inet.StillExecuting());
    // The next one is as good as any.
    m_server->answers[QStringLiteral("/b")] = LoopbackServer::page("good");
    m_server->answers[QStringLiteral("/a")] = LoopbackServer::redirection("/b");
    const Result<WebText> next = m_inet.OpenURL(m_server->url(QStringLiteral("/a")));
    QVERIFY(next && next->text == QLatin1String("good"));
}

void tst_internettransfer::aServerThatSaysNothingIsGivenUp()
{
    const Result<WebText> found = m_inet.OpenURL(m_server->url(QStringLiteral("/silent")));
    QVERIFY(!found);
    QCOMPARE(found.reason(), QStringLiteral("The server did not answer within 3 seconds."));
}

/// Each piece comes in time, and none is the last.
void tst_internettransfer::anEndlessBodyIsCutOff()
{
    qint64 written = 0;
    m_server->asked = [&](const QString &, QTcpSocket &client) {
        client.write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n");
        connect(&client, &QTcpSocket::bytesWritten, &client, [&] { written += client.write(QByteArray(4096, 'x')); });
    };
    const Result<WebText> found = m_inet.OpenURL(m_server->url(QStringLiteral("/endless")));
    QVERIFY(!found);
    QCOMPARE(found.reason(), QStringLiteral("The server's answer is too long."));
    m_server->asked = nullptr;
    QVERIFY2(written < 32 << 20, qPrintable(QString::number(written)));
}

void tst_internettransfer::nobodyListens()
{
    m_server->close();
    const Result<WebText> found = m_inet.OpenURL(QUrl(QStringLiteral("http://127.0.0.1:1/a")));
    QVERIFY(!found);
    QVERIFY(!found.reason().isEmpty());
}

void tst_internettransfer::onlyTheChosenProtocolIsTaken()
{
    m_server->answers[QStringLiteral("/a")] = LoopbackServer::page("a");
    for (const auto protocol : {InternetTransfer::Via::Nothing, InternetTransfer::Via::Https}) {
        m_inet.Protocol = protocol;
        QVERIFY(!m_inet.OpenURL(m_server->url(QStringLiteral("/a"))));
    }
    m_inet.Protocol = InternetTransfer::Via::Http;
    for (const char *address : {"file:///etc/passwd", "http:///a", "ftp://127.0.0.1/a", ""})
        QVERIFY2(!m_inet.OpenURL(QUrl(QString::fromLatin1(address))), address);
    QCOMPARE(m_server->paths, QStringList());
}

void tst_internettransfer::eventsComeInAndAnotherTransferDoesNot()
{
    bool second = true;
    m_server->asked = [&](const QString &, QTcpSocket &client) {
        QVERIFY(m_inet.StillExecuting());
        second = bool(m_inet.OpenURL(m_server->url(QStringLiteral("/b"))));
        client.write(LoopbackServer::page("first"));
        client.disconnectFromHost();
    };
    const Result<WebText> found = m_inet.OpenURL(m_server->url(QStringLiteral("/a")));
    m_server->asked = nullptr;
    QVERIFY(!second);
    QCOMPARE(found ? found->text : found.reason(), QStringLiteral("first"));
    QCOMPARE(m_server->paths, QStringList{QStringLiteral("/a")});
}

void tst_internettransfer::whoeverWaitsCanGiveUp()
{
    bool over = false;
    m_server->asked = [&](const QString &, QTcpSocket &) { over = true; };
    QElapsedTimer time;
    time.start();
    QVERIFY(!m_inet.OpenURL(m_server->url(QStringLiteral("/silent")), [&] { return over; }));
    m_server->asked = nullptr;
    QVERIFY(over && time.elapsed() < 3000);
}

// --- links

void tst_internettransfer::onlyTheWebIsOpened_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("opened");
    QTest::newRow("http") << QStringLiteral("http://example.org/a b?c=d") << true;
    QTest::newRow("https") << QStringLiteral("HTTPS://example.org") << true;
    for (const char *address : {"file:///etc/passwd", "/etc/passwd", "mailto:a@example.org", "javascript:alert(1)",
             "http://", "https:example.org", "http:///a", ""})
        QTest::newRow(address) << QString::fromLatin1(address) << false;
}

namespace {
struct Browser : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};
}

void tst_internettransfer::onlyTheWebIsOpened()
{
    QFETCH(QString, address);
    QFETCH(bool, opened);
    Browser browser;
    const auto schemes = {"http", "https", "file", "mailto", "javascript"};
    for (const char *scheme : schemes)
        QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), &browser, "open");
    const bool said = openWebAddress(QUrl(address));
    for (const char *scheme : schemes)
        QDesktopServices::unsetUrlHandler(QString::fromLatin1(scheme));
    QCOMPARE(said, opened);
    QCOMPARE(browser.opened.size(), opened ? 1 : 0);
}

/// Here no desktop is found: this platform has no way of its own.
void tst_internettransfer::gioOpensWhatTheDesktopCannot()
{
    TemporaryHome home;
    const QString note = home.path() + QStringLiteral("note");
    const QString gio = home.write(QStringLiteral("bin/gio"),
        "#!/bin/sh\nprintf '%s\\n' \"$#\" \"$1\" \"$2\" > '" + note.toUtf8() + ".new'\nmv '" + note.toUtf8() + ".new' '"
            + note.toUtf8() + "'\n");
    QFile::setPermissions(gio, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", (home.path() + QStringLiteral("bin:")).toUtf8() + path);
    const bool started = openWebAddress(QUrl(QStringLiteral("http://example.org/a b;$(x)")));
    qputenv("PATH", path);
    QVERIFY(started);
    QTRY_VERIFY(QFile::exists(note));
    QFile file(note);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("2\nopen\nhttp://example.org/a%20b;$(x)\n"));
}

QTEST_MAIN(tst_internettransfer)
#include "tst_internettransfer.moc"
