#include "platform/traypresence.h"

#include "platform/linux/statusnotifierwatcher.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QLoggingCategory>

namespace {
Q_LOGGING_CATEGORY(logTray, "lumora.tray", QtWarningMsg)

QString watcherName()
{
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

constexpr QLatin1String watcherPath("/StatusNotifierWatcher");
}

StatusNotifierWatcher::StatusNotifierWatcher(const QDBusConnection &bus)
    : QDBusAbstractInterface(watcherName(), watcherPath, "org.kde.StatusNotifierWatcher", bus, nullptr)
{
}

TrayPresence::TrayPresence(QObject *parent)
    : QObject(parent)
{
}

TrayPresence::~TrayPresence() = default;

void TrayPresence::watch()
{
    if (!m_watcher)
        m_bus.join([this] { joined(); });
}

void TrayPresence::joined()
{
    const QDBusConnection bus = m_bus.connection();
    m_owner = std::make_unique<QDBusServiceWatcher>(watcherName(), bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_owner.get(), &QDBusServiceWatcher::serviceRegistered, this, &TrayPresence::ask);
    connect(m_owner.get(), &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        ++m_question;
        setThere(false);
    });
    m_watcher = std::make_unique<StatusNotifierWatcher>(bus);
    connect(m_watcher.get(), &StatusNotifierWatcher::StatusNotifierHostRegistered, this, &TrayPresence::ask);
    connect(m_watcher.get(), &StatusNotifierWatcher::StatusNotifierHostUnregistered, this, &TrayPresence::ask);
    ask();
}

void TrayPresence::ask()
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        watcherName(), watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << watcherName() << QStringLiteral("IsStatusNotifierHostRegistered");
    // A watcher that does not run shows nothing; none is started for this program.
    question.setAutoStartService(false);
    auto *answer = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, number = ++m_question] {
        answer->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *answer;
        if (number == m_question)
            setThere(reply.isValid() && reply.value().variant().toBool());
    });
}

void TrayPresence::setThere(bool there)
{
    if (m_there == there)
        return;
    m_there = there;
    qCDebug(logTray, "the desktop %s status icons", there ? "shows" : "does not show");
    Q_EMIT changed();
}
