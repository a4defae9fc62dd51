#pragma once

#include <QDBusAbstractInterface>
#include <QDBusConnection>

/// The desktop's register of status icons, for its signals.
class StatusNotifierWatcher : public QDBusAbstractInterface
{
    Q_OBJECT
public:
    explicit StatusNotifierWatcher(const QDBusConnection &bus);

Q_SIGNALS:
    // As they are called on the bus.
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();
};
