#pragma once

#include <QMap>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

/// A web server on this computer: answers each path as a test tells it to, with silence where it was told nothing.
class LoopbackServer : public QTcpServer
{
public:
    LoopbackServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *client = nextPendingConnection();
            connect(client, &QTcpSocket::readyRead, client, [this, client] { answer(*client); });
        });
    }
    QUrl url(const char *path = "") const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(QLatin1String(path)));
    }
    QMap<QByteArray, QByteArray> answers; ///< with their heads
    std::function<void(QTcpSocket &client)> asked; ///< called for each request, behind its answer
    QByteArrayList paths;
    QByteArray lastRequest;

    static QByteArray page(const QByteArray &body, const QByteArray &type = "text/plain", int status = 200)
    {
        return "HTTP/1.1 " + QByteArray::number(status) + " Word\r\nContent-Type: " + type
            + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
    }
    static QByteArray redirection(const QByteArray &to)
    {
        return "HTTP/1.1 302 Found\r\nLocation: " + to + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    }

private:
    void answer(QTcpSocket &client)
    {
        lastRequest = client.readAll();
        paths.append(lastRequest.split(' ').value(1));
        if (answers.contains(paths.constLast())) {
            client.write(answers.value(paths.constLast()));
            client.disconnectFromHost();
        }
        if (asked)
            asked(client);
    }
};
