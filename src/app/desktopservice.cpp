#include "app/desktopservice.h"

#include "app/commandline.h"
#include "app/startup.h"
#include "platform/filepath.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QLoggingCategory>

namespace {
Q_LOGGING_CATEGORY(logDesktop, "lumora.desktop", QtWarningMsg)

constexpr QLatin1String serviceName("org.lumora.Lumora");
constexpr QLatin1String objectPath("/org/lumora/Lumora");

QString tokenOf(const QVariantMap &platformData)
{
    const QString token = platformData.value(QStringLiteral("activation-token")).toString();
    return token.isEmpty() ? platformData.value(QStringLiteral("desktop-startup-id")).toString() : token;
}

}

void DesktopService::registerOnBus()
{
    m_bus.join([this] { connected(); });
}

void DesktopService::connected()
{
    QDBusConnection bus = m_bus.connection();
    if (!bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots))
        return;
    QDBusMessage request = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    constexpr uint doNotQueue = 4;
    request << QString(serviceName) << doNotQueue;
    bus.asyncCall(request);
    qCDebug(logDesktop, "the desktop can reach the program as %s", serviceName.data());
}

void DesktopService::leaveBus()
{
    m_bus.leave();
}

void DesktopService::Activate(const QVariantMap &platformData)
{
    commandArrived(QString(), tokenOf(platformData));
}

void DesktopService::Open(const QStringList &uris, const QVariantMap &platformData)
{
    QStringList paths;
    for (const QString &uri : uris) {
        const QString path = pathFromFileUri(uri);
        if (!path.isEmpty())
            paths.append(path);
        else
            qCInfo(logDesktop, "not a local file: %s", qPrintable(displayPath(uri)));
    }
    commandArrived(fileCommand(paths), tokenOf(platformData));
}

void DesktopService::ActivateAction(const QString &name, const QVariantList &, const QVariantMap &platformData)
{
    if (name == QLatin1String("editor") || name == QLatin1String("folder"))
        commandArrived(QLatin1Char('/') + name, tokenOf(platformData));
}
