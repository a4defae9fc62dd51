#pragma once

#include "platform/sessionbus.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

/// org.freedesktop.Application: the way in which a desktop asks the running program to open files. Its calls feed the
/// same queue as later starts. https://specifications.freedesktop.org/desktop-entry-spec/latest/dbus.html
class DesktopService : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    /// Takes the name org.lumora.Lumora on the session bus. Returns at once; without a bus nothing happens.
    void registerOnBus();
    /// Gives the name back, so that a request that comes now starts the program anew.
    void leaveBus();

public Q_SLOTS:
    void Activate(const QVariantMap &platformData);
    void Open(const QStringList &uris, const QVariantMap &platformData);
    /// "editor" and "folder", the actions of the desktop entry.
    void ActivateAction(const QString &name, const QVariantList &parameter, const QVariantMap &platformData);

private:
    void connected();
    SessionBus m_bus{QStringLiteral("lumora")};
};
