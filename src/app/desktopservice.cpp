#include "app/desktopservice.h"

#include "app/commandline.h"
#include "app/startup.h"
#include "platform/filepath.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QLoggingCategory>

#include <memory>
#include <mutex>
#include <thread>

#include <sys/stat.h>

namespace {
Q_LOGGING_CATEGORY(logDesktop, "lumora.desktop", QtWarningMsg)

constexpr QLatin1String serviceName("org.lumora.Lumora");
constexpr QLatin1String objectPath("/org/lumora/Lumora");
constexpr QLatin1String connectionName("lumora");

/// Who waits for the connection. The connecting thread may outlive the program's windows when a bus does not answer.
struct Waiting
{
    std::mutex mutex;
    DesktopService *service = nullptr;
};

std::shared_ptr<Waiting> &waiting()
{
    static auto state = std::make_shared<Waiting>();
    return state;
}

/// Asking for a bus that is not there would start one.
bool sessionBusExists()
{
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return true;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    struct stat state
    {
    };
    return !runtime.isEmpty() && ::stat((runtime + "/bus").constData(), &state) == 0 && S_ISSOCK(state.st_mode);
}

QString tokenOf(const QVariantMap &platformData)
{
    const QString token = platformData.value(QStringLiteral("activation-token")).toString();
    return token.isEmpty() ? platformData.value(QStringLiteral("desktop-startup-id")).toString() : token;
}

}

DesktopService::~DesktopService()
{
    leaveBus();
}

void DesktopService::registerOnBus()
{
    if (!sessionBusExists())
        return;
    const std::shared_ptr<Waiting> state = waiting();
    {
        const std::lock_guard guard(state->mutex);
        state->service = this;
    }
    // Connecting waits for the answer of the bus, which may take its time; a start does not wait for it.
    std::thread([state] {
        if (!QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName).isConnected())
            return;
        const std::lock_guard guard(state->mutex);
        if (state->service)
            QMetaObject::invokeMethod(state->service, [service = state->service] { service->connected(); });
    }).detach();
}

void DesktopService::connected()
{
    QDBusConnection bus(connectionName);
    if (!bus.registerObject(objectPath, this, QDBusConnection::ExportAllSlots))
        return;
    m_onBus = true;
    QDBusMessage request = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    constexpr uint doNotQueue = 4;
    request << QString(serviceName) << doNotQueue;
    bus.asyncCall(request);
    qCDebug(logDesktop, "the desktop can reach the program as %s", serviceName.data());
}

void DesktopService::leaveBus()
{
    {
        const std::lock_guard guard(waiting()->mutex);
        waiting()->service = nullptr;
    }
    if (m_onBus)
        QDBusConnection::disconnectFromBus(connectionName);
    m_onBus = false;
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
