#pragma once

#include "platform/sessionbus.h"

#include <QObject>

#include <memory>

class QDBusServiceWatcher;
class StatusNotifierWatcher;

/// Whether the desktop shows status icons: somebody has the name org.kde.StatusNotifierWatcher on the session bus and
/// says that icons are drawn. Nobody waits for any answer of theirs.
/// https://www.freedesktop.org/wiki/Specifications/StatusNotifierItem/StatusNotifierWatcher/
class TrayPresence : public QObject
{
    Q_OBJECT
public:
    explicit TrayPresence(QObject *parent = nullptr);
    ~TrayPresence() override;

    /// Begins to look and goes on looking: trays come and go. Returns at once; without a session bus nothing happens.
    void watch();
    /// Never true before watch(), nor after the end of the bus.
    bool isThere() const { return m_there && m_bus.isJoined(); }

Q_SIGNALS:
    void changed();

private:
    void joined();
    void ask();
    void setThere(bool there);

    SessionBus m_bus{QStringLiteral("lumora-tray")};
    std::unique_ptr<QDBusServiceWatcher> m_owner;
    std::unique_ptr<StatusNotifierWatcher> m_watcher;
    int m_question = 0; ///< an answer to an earlier question comes too late
    bool m_there = false;
};
