#include "platform/sessionbus.h"

#include <mutex>
#include <thread>

#include <sys/stat.h>

struct SessionBus::Joining
{
    std::mutex mutex;
    SessionBus *owner = nullptr; ///< null once nobody waits any more
    bool connected = false;
};

namespace {

/// Empty when there is no bus: asking the library for one then would start it.
QString sessionBusAddress()
{
    const QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return QString::fromUtf8(address);
    const QByteArray path = qgetenv("XDG_RUNTIME_DIR") + "/bus";
    struct stat state
    {
    };
    if (path.startsWith('/') && ::stat(path.constData(), &state) == 0 && S_ISSOCK(state.st_mode))
        return QStringLiteral("unix:path=") + QString::fromLatin1(path.toPercentEncoding("/"));
    return QString();
}

}

SessionBus::SessionBus(const QString &name)
    : m_base(name)
{
}

SessionBus::~SessionBus()
{
    leave();
}

bool SessionBus::join(std::function<void()> joined)
{
    const QString address = sessionBusAddress();
    if (address.isEmpty())
        return false;
    leave();
    static int joins = 0;
    m_name = QStringLiteral("%1-%2").arg(m_base).arg(++joins);
    m_joining = std::make_shared<Joining>();
    m_joining->owner = this;
    std::thread([address, joining = m_joining, name = m_name, joined = std::move(joined)] {
        const bool connected = QDBusConnection::connectToBus(address, name).isConnected();
        const std::lock_guard guard(joining->mutex);
        SessionBus *owner = joining->owner;
        if (!owner || !connected) {
            QDBusConnection::disconnectFromBus(name);
            return;
        }
        joining->connected = true;
        QMetaObject::invokeMethod(&owner->m_context, [owner, joining, joined] {
            // Left, and perhaps joined anew, while this was on its way.
            if (owner->m_joining != joining)
                return;
            owner->m_joined = true;
            joined();
        });
    }).detach();
    return true;
}

void SessionBus::leave()
{
    if (!m_joining)
        return;
    bool connected = false;
    {
        const std::lock_guard guard(m_joining->mutex);
        m_joining->owner = nullptr;
        connected = m_joining->connected;
    }
    m_joining.reset();
    m_joined = false;
    // Asking for a connection that is still being made would wait for it; the thread finds nobody and drops it itself.
    if (connected)
        QDBusConnection::disconnectFromBus(m_name);
}

bool SessionBus::isJoined() const
{
    return m_joined && connection().isConnected();
}
