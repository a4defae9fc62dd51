#include "platform/sessionbus.h"

#include "platform/sessionbusaddress.h"

#include <mutex>
#include <thread>

struct SessionBus::Joining
{
    std::mutex mutex;
    SessionBus *owner = nullptr; ///< null once nobody waits any more
    bool connected = false;
};

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
