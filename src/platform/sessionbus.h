#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

/// One connection to the desktop's session bus. Making it waits for the answer of the bus, which may take its time or
/// never come: it is made on a thread of its own, and nobody waits for that. Without a bus nothing happens; none is
/// ever started.
class SessionBus
{
public:
    /// `name` tells the connections inside this process apart.
    explicit SessionBus(const QString &name);
    /// Leaves the bus.
    ~SessionBus();
    SessionBus(const SessionBus &) = delete;
    SessionBus &operator=(const SessionBus &) = delete;

    /// `joined` is called later, once, on the thread of this call; never after leave(), nor when the bus does not take
    /// the connection. False when there is no bus at all.
    bool join(std::function<void()> joined);
    void leave();
    /// From the call of `joined` to leave() or the end of the bus.
    bool isJoined() const;
    /// While joined; before and afterwards one that is not connected.
    QDBusConnection connection() const { return QDBusConnection(m_name); }

private:
    /// The thread may outlive the owner.
    struct Joining;
    QString m_base;
    QString m_name; ///< a new one for each join
    QObject m_context; ///< receiver of the thread's word; what is on its way goes with it
    std::shared_ptr<Joining> m_joining;
    bool m_joined = false;
};
