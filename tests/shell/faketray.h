#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QMutex>
#include <QThread>

/// A desktop's register of status icons on a bus, on a thread of its own: whoever registers there waits for the answer.
class FakeTray : public QDBusVirtualObject
{
public:
    FakeTray(const QString &address, bool hasHost)
        : m_name(QStringLiteral("fake tray"))
        , m_hasHost(hasHost)
    {
        moveToThread(&m_thread);
        m_thread.start();
        QDBusConnection bus = QDBusConnection::connectToBus(address, m_name);
        bus.registerVirtualObject(path(), this);
        bus.registerService(interface());
    }
    ~FakeTray() override
    {
        QDBusConnection::disconnectFromBus(m_name);
        m_thread.quit();
        m_thread.wait();
    }

    /// The desktop begins to draw icons, or ends to.
    void setHost(bool hasHost)
    {
        m_hasHost = hasHost;
        QDBusConnection(m_name).send(QDBusMessage::createSignal(path(), interface(),
            hasHost ? QStringLiteral("StatusNotifierHostRegistered")
                    : QStringLiteral("StatusNotifierHostUnregistered")));
    }
    QStringList items() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_items;
    }

    QString introspect(const QString &) const override
    {
        return QStringLiteral("<interface name=\"org.kde.StatusNotifierWatcher\">"
                              "<property name=\"IsStatusNotifierHostRegistered\" type=\"b\" access=\"read\"/>"
                              "<property name=\"RegisteredStatusNotifierItems\" type=\"as\" access=\"read\"/>"
                              "<property name=\"ProtocolVersion\" type=\"i\" access=\"read\"/>"
                              "<method name=\"RegisterStatusNotifierItem\"><arg type=\"s\" direction=\"in\"/></method>"
                              "<signal name=\"StatusNotifierHostRegistered\"/></interface>");
    }
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override
    {
        if (message.member() == QLatin1String("Get"))
            return connection.send(
                message.createReply(QVariant::fromValue(QDBusVariant(property(message.arguments().at(1).toString())))));
        if (message.member() != QLatin1String("RegisterStatusNotifierItem"))
            return false;
        const QMutexLocker lock(&m_mutex);
        m_items.append(message.arguments().constFirst().toString());
        return connection.send(message.createReply());
    }

private:
    static QString path() { return QStringLiteral("/StatusNotifierWatcher"); }
    static QString interface() { return QStringLiteral("org.kde.StatusNotifierWatcher"); }
    QVariant property(const QString &name) const
    {
        if (name == QLatin1String("IsStatusNotifierHostRegistered"))
            return m_hasHost.load();
        return name == QLatin1String("ProtocolVersion") ? QVariant(0) : QVariant(items());
    }
    QThread m_thread;
    QString m_name;
    mutable QMutex m_mutex;
    QStringList m_items;
    std::atomic<bool> m_hasHost;
};

/// An entry of a menu as it stands on the bus (com.canonical.dbusmenu).
struct MenuEntry
{
    int id = 0;
    QString label;
    bool enabled = true;
};

/// The visible entries of the answer to GetLayout, without separators.
inline QList<MenuEntry> menuEntries(const QVariantList &answer)
{
    const auto read = [](const QVariant &item, int &id, QVariantList &children) {
        QVariantMap properties;
        const auto argument = item.value<QDBusArgument>();
        argument.beginStructure();
        argument >> id >> properties >> children;
        argument.endStructure();
        return properties;
    };
    int id = 0;
    QVariantList items, none;
    read(answer.value(1), id, items);
    QList<MenuEntry> entries;
    for (const QVariant &item : items) {
        const QVariantMap properties = read(item, id, none);
        const bool visible = properties.value(QStringLiteral("visible"), true).toBool();
        if (visible && properties.value(QStringLiteral("type")).toString() != QLatin1String("separator"))
            entries.append({id, properties.value(QStringLiteral("label")).toString(),
                properties.value(QStringLiteral("enabled"), true).toBool()});
    }
    return entries;
}

/// The title of a tool tip, a structure of icon name, icons, title and text.
inline QString titleOf(const QVariant &toolTip)
{
    const auto argument = toolTip.value<QDBusArgument>();
    QString iconName, title, text;
    argument.beginStructure();
    argument >> iconName;
    argument.beginArray();
    argument.endArray();
    argument >> title >> text;
    argument.endStructure();
    return title;
}
