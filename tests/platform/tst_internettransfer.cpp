#include "platform/internettransfer.h"
#include "platform/weblink.h"
#include "support/loopbackserver.h"
#include "support/support.h"

#include <QtTest>

/// Short texts from the web: what servers may do to whoever asks them.
class tst_internettransfer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void bodyTypeAndStatusArrive_data();
    void bodyTypeAndStatusArrive();
    void whatIsNoShortTextFails_data();
    void whatIsNoShortTextFails();
    void onlyTheChosenProtocolIsTaken();
    void eventsComeInAndAnotherTransferDoesNot();
    void onlyAddressesOfTheWebAreOpened();

private:
    Result<WebText> fetch(const QByteArray &answer)
    {
        m_server->answers["/a"] = answer;
        return m_inet.OpenURL(m_server->url("/a"));
    }
    InternetTransfer m_inet;
    std::unique_ptr<LoopbackServer> m_server;
};

namespace {
using Server = LoopbackServer;
}

void tst_internettransfer::init()
{
    qputenv("no_proxy", "127.0.0.1");
    m_server = std::make_unique<Server>();
    m_inet.Protocol = InternetTransfer::Via::Http;
}

void tst_internettransfer::bodyTypeAndStatusArrive_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QByteArray &answer, int status, const char *type, const QString &text) {
        QTest::newRow(name) << answer << status << QString::fromLatin1(type) << text;
    };
    row("text", Server::page(" 3.1.0\r\n", "Text/Plain; charset=x"), 200, "text/plain", QStringLiteral(" 3.1.0\r\n"));
    row("no type, no length", "HTTP/1.0 200 OK\r\n\r\n3.1.0", 200, "", QStringLiteral("3.1.0"));
    row("error page", Server::page("gone", "text/html", 404), 404, "text/html", QStringLiteral("gone"));
    row("UTF-8", Server::page("\xEF\xBB\xBF\xC3\xA4"), 200, "text/plain", QStringLiteral(u"\u00e4"));
    row("Windows-1252", Server::page("\xE4 \x80"), 200, "text/plain", QStringLiteral(u"\u00e4 \u20ac"));
    row("64 KiB", Server::page(QByteArray(65536, 'x')), 200, "text/plain", QString(65536, QLatin1Char('x')));
}

void tst_internettransfer::bodyTypeAndStatusArrive()
{
    QFETCH(QByteArray, answer);
    const Result<WebText> found = fetch(answer);
    QVERIFY2(found, qPrintable(found.reason()));
    QTEST(found->status, "status");
    QTEST(found->type, "type");
    QTEST(found->text, "text");
    QVERIFY(m_server->lastRequest.contains("Accept-Encoding: identity\r\n"));
}

void tst_internettransfer::whatIsNoShortTextFails_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("too long") << Server::page(QByteArray(65537, 'x'));
    QTest::newRow("endless") << QByteArray();
    QTest::newRow("silence") << QByteArray();
    QTest::newRow("nobody listens") << QByteArray();
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
    const QByteArray name = QTest::currentDataTag();
    if (name == "endless") {
        // Each piece comes in time, and none is the last.
        m_server->asked = [](QTcpSocket &client) {
            client.write("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n");
            connect(&client, &QTcpSocket::bytesWritten, &client, [&] { client.write(QByteArray(4096, 'x')); });
        };
    } else if (name == "nobody listens") {
        m_server->close();
    }
    const QUrl url = m_server->url("/a");
    if (!answer.isEmpty())
        m_server->answers["/a"] = answer;
    const Result<WebText> found = m_inet.OpenURL(url.port() > 0 ? url : QUrl(QStringLiteral("http://127.0.0.1:1/a")));
    QVERIFY2(!found, qPrintable(found ? found->text : QString()));
    QVERIFY(!found.reason().isEmpty() && !m_inet.StillExecuting());
    // The toolkit asks once more when the server closes just as it asks: a loop ends, after somewhat more than six.
    QVERIFY(m_server->paths.size() < 20);
    // The next one is as good as any.
    Server other;
    other.answers["/b"] = Server::page("good");
    other.answers["/a"] = Server::redirection("/b");
    const Result<WebText> next = m_inet.OpenURL(other.url("/a"));
    QVERIFY(next && next->text == QLatin1String("good"));
}

void tst_internettransfer::onlyTheChosenProtocolIsTaken()
{
    m_server->answers["/a"] = Server::page("a");
    for (const auto protocol : {InternetTransfer::Via::Nothing, InternetTransfer::Via::Https}) {
        m_inet.Protocol = protocol;
        QVERIFY(!m_inet.OpenURL(m_server->url("/a")));
    }
    QCOMPARE(m_server->paths, QByteArrayList());
}

void tst_internettransfer::eventsComeInAndAnotherTransferDoesNot()
{
    bool over = false;
    m_server->asked = [&](QTcpSocket &) {
        QVERIFY(m_inet.StillExecuting());
        QVERIFY(!m_inet.OpenURL(m_server->url("/b")));
        over = true;
    };
    // The server stays silent: who waits gives up.
    QElapsedTimer time;
    time.start();
    QVERIFY(!m_inet.OpenURL(m_server->url("/a"), [&] { return over; }));
    QVERIFY(over && time.elapsed() < 2900);
    QCOMPARE(m_server->paths, QByteArrayList{"/a"});
}

/// This platform has no way of its own to open anything, so that gio is asked.
void tst_internettransfer::onlyAddressesOfTheWebAreOpened()
{
    TemporaryHome home;
    const QByteArray note = (home.path() + QStringLiteral("note")).toUtf8();
    const QString gio = home.write(QStringLiteral("bin/gio"),
        "#!/bin/sh\nprintf '%s ' \"$#\" \"$@\" > '" + note + ".new'\nmv '" + note + ".new' '" + note + "'\n");
    QVERIFY(QFile::setPermissions(gio, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", (home.path() + QStringLiteral("bin:")).toUtf8() + path);
    for (const char *address : {"file:///etc/passwd", "/etc/passwd", "mailto:a@example.org", "javascript:alert(1)",
             "http://", "https:example.org", "http:///a", ""})
        QVERIFY2(!openWebAddress(QUrl(QString::fromLatin1(address))), address);
    const bool opened = openWebAddress(QUrl(QStringLiteral("HTTP://example.org/a b;$(x)")));
    qputenv("PATH", path);
    QVERIFY(opened);
    QFile file(QString::fromUtf8(note));
    QTRY_VERIFY(file.exists());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("2 open http://example.org/a%20b;$(x) "));
}

QTEST_MAIN(tst_internettransfer)
#include "tst_internettransfer.moc"
