#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

#include <functional>

/// A session bus of the test's own. While it lives, it is the session bus of this process.
class PrivateBus
{
public:
    PrivateBus()
    {
        const QString daemon = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
        if (daemon.isEmpty())
            return;
        m_process.start(
            daemon, {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address")});
        if (m_process.waitForReadyRead())
            m_address = QString::fromUtf8(m_process.readLine()).trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toUtf8());
    }
    ~PrivateBus()
    {
        qunsetenv("DBUS_SESSION_BUS_ADDRESS");
        m_process.terminate();
        m_process.waitForFinished();
    }
    QString address() const { return m_address; }

private:
    QProcess m_process;
    QString m_address;
};

#define SKIP_WITHOUT_BUS(bus)                                                                                          \
    do {                                                                                                               \
        if ((bus).address().isEmpty())                                                                                 \
            QSKIP("BUS MISSING: this test needs dbus-daemon");                                                         \
    } while (false)

/// A service on a bus that notes each call as "Interface.Member(first, second)" and answers what it is told to.
class NotingService : public QDBusVirtualObject
{
public:
    /// Takes `service` on the bus at `address` and answers for every object of it.
    NotingService(const QString &address, const QString &service)
        : m_connection(QDBusConnection::connectToBus(address, service))
        , m_service(service)
    {
        m_connection.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        m_connection.registerService(service);
    }
    ~NotingService() override { QDBusConnection::disconnectFromBus(m_service); }

    QStringList calls;
    std::function<QDBusMessage(const QDBusMessage &)> answer = [](const QDBusMessage &call) {
        return call.createReply();
    };

    QString introspect(const QString &) const override { return QString(); }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        QStringList texts;
        for (const QVariant &argument : message.arguments())
            texts.append(argument.toString());
        calls.append(message.path() + QLatin1Char(' ') + message.interface() + QLatin1Char('.') + message.member()
            + QLatin1Char('(') + texts.join(QStringLiteral(", ")) + QLatin1Char(')'));
        return connection.send(answer(message));
    }

private:
    QDBusConnection m_connection;
    QString m_service;
};
