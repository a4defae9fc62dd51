#pragma once

#include <QMap>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

#include <functional>

/// A web server on this computer, which answers as a test tells it to and notes what it was asked for.
class LoopbackServer : public QTcpServer
{
public:
    LoopbackServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *client = nextPendingConnection();
            connect(client, &QTcpSocket::readyRead, client, [this, client] { answer(*client); });
            connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
        });
    }

    QUrl url(const QString &path = {}) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path));
    }

    /// What a request for a path is answered with, head and all; silence where there is nothing.
    QMap<QString, QByteArray> answers;
    /// Called for each request, behind its answer.
    std::function<void(const QString &path, QTcpSocket &client)> asked;
    QStringList paths;
    QList<QByteArray> requests;

    static QByteArray page(const QByteArray &body, const QByteArray &type = "text/plain", int status = 200)
    {
        return "HTTP/1.1 " + QByteArray::number(status) + " Word\r\nContent-Type: " + type + "\r\nContent-Length: "
            + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body;
    }
    static QByteArray redirection(const QByteArray &to)
    {
        return "HTTP/1.1 302 Found\r\nLocation: " + to + "\r\nContent-Length: 0\r\nConnection: close\r\n\r\n";
    }

private:
    void answer(QTcpSocket &client)
    {
        const QByteArray request = client.peek(client.bytesAvailable());
        if (!request.contains("\r\n\r\n"))
            return;
        requests.append(client.readAll());
        const QString path = QString::fromLatin1(request.split(' ').value(1));
        paths.append(path);
        const QByteArray found = answers.value(path);
        if (!found.isEmpty()) {
            client.write(found);
            client.disconnectFromHost();
        }
        if (asked)
            asked(path, client);
    }
};
