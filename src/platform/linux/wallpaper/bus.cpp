#include "platform/linux/wallpaper/bus.h"

#include "platform/sessionbusaddress.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace {

constexpr int patience = 5000; ///< milliseconds

/// A connection that stays: a portal drops the request of a caller who has gone.
QDBusConnection session()
{
    const QString name = QStringLiteral("lumora-wallpaper");
    const QDBusConnection present(name);
    const QString address = sessionBusAddress();
    if (present.isConnected() || address.isEmpty())
        return present;
    QDBusConnection::disconnectFromBus(name);
    return QDBusConnection::connectToBus(address, name);
}

}

Result<QVariantList> bus::call(const Object &object, const QString &method, const QVariantList &arguments)
{
    const QDBusConnection connection = session();
    if (!connection.isConnected())
        return Failure{QStringLiteral("no session bus")};
    QDBusMessage message = QDBusMessage::createMethodCall(object.service, object.path, object.interface, method);
    message.setArguments(arguments);
    const QDBusMessage answer = connection.call(message, QDBus::Block, patience);
    if (answer.type() != QDBusMessage::ReplyMessage)
        return Failure{QStringLiteral("%1.%2: %3").arg(object.interface, method, answer.errorMessage())};
    return answer.arguments();
}

bool bus::hasOwner(const QString &service)
{
    const Object daemon{QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus")};
    const auto answer = call(daemon, QStringLiteral("NameHasOwner"), {service});
    return answer && answer->value(0).toBool();
}
