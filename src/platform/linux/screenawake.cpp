#include "platform/screenawake.h"

#include "platform/sessionbus.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QLoggingCategory>

#include <array>
#include <memory>

namespace {
Q_LOGGING_CATEGORY(logAwake, "lumora.awake", QtWarningMsg)

constexpr uint idle = 8; ///< of the flags of session manager and portal: what waits for nobody to touch anything

/// A service that can be asked, and how.
struct Service
{
    const char *name;
    const char *path;
    const char *interface;
    const char *release;
};

enum Asked : std::size_t { ScreenSaver, SessionManager, Portal };
// clang-format off
constexpr std::array<Service, 3> services{{
    {"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "UnInhibit"},
    {"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager", "Uninhibit"},
    {"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Inhibit", "Close"},
}};
// clang-format on

QVariantList inhibitArguments(std::size_t service)
{
    const QString program = QStringLiteral("org.lumora.Lumora");
    const QString reason = QCoreApplication::translate("ScreenAwake", "Showing media");
    switch (service) {
    case ScreenSaver:
        return {program, reason};
    case SessionManager:
        return {program, 0U, reason, idle};
    default:
        return {QString(), idle, QVariantMap{{QStringLiteral("reason"), reason}}};
    }
}

/// The one request of this process to the desktop.
class Inhibition
{
public:
    void want(bool wanted)
    {
        m_wanted = wanted;
        // While an answer is on its way, what is wanted then is done when it comes.
        if (wanted && m_state == State::Released)
            begin();
        else if (!wanted && m_state == State::Held)
            release();
    }

private:
    enum class State { Released, Asking, Held };

    void begin()
    {
        m_state = State::Asking;
        if (m_bus.isJoined())
            ask(0);
        else if (!m_bus.join([this] { ask(0); }))
            m_state = State::Released;
    }

    void ask(std::size_t service)
    {
        if (service == services.size() || !m_wanted) {
            qCDebug(logAwake, "nobody keeps the screen awake");
            m_state = State::Released;
            return;
        }
        const Service &asked = services[service];
        QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(asked.name), QLatin1String(asked.path),
            QLatin1String(asked.interface), QStringLiteral("Inhibit"));
        call.setArguments(inhibitArguments(service));
        // A screen saver that does not run blanks nothing; the portal is started by whoever first asks for it.
        call.setAutoStartService(service == Portal);
        auto *watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(call), &m_context);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_context,
            [this, service, watcher] { answered(service, *watcher); });
    }

    void answered(std::size_t service, QDBusPendingCallWatcher &watcher)
    {
        watcher.deleteLater();
        const QDBusMessage reply = watcher.reply();
        if (!m_bus.isJoined()) {
            // The bus went away; another one may have come.
            m_state = State::Released;
            want(m_wanted);
            return;
        }
        if (watcher.isError() || reply.arguments().isEmpty()) {
            ask(service + 1);
            return;
        }
        qCDebug(logAwake, "%s keeps the screen awake", services[service].name);
        m_service = service;
        m_cookie = reply.arguments().constFirst();
        m_state = State::Held;
        if (!m_wanted)
            release();
    }

    void release()
    {
        const Service &asked = services[m_service];
        // The portal gives an object to close, the others a number to give back.
        QString path = QLatin1String(asked.path);
        QString interface = QLatin1String(asked.interface);
        if (m_service == Portal) {
            path = m_cookie.value<QDBusObjectPath>().path();
            interface = QStringLiteral("org.freedesktop.portal.Request");
        }
        QDBusMessage call =
            QDBusMessage::createMethodCall(QLatin1String(asked.name), path, interface, QLatin1String(asked.release));
        if (m_service != Portal)
            call << m_cookie;
        m_bus.connection().send(call);
        m_state = State::Released;
    }

    SessionBus m_bus{QStringLiteral("lumora-awake")};
    QObject m_context;
    State m_state = State::Released;
    bool m_wanted = false;
    std::size_t m_service = 0;
    QVariant m_cookie;
};

/// Goes with the application object: no connection may outlive that.
std::unique_ptr<Inhibition> inhibition;
int holders = 0;

void changeHolders(int by)
{
    holders += by;
    if (!inhibition && holders > 0 && QCoreApplication::instance()) {
        inhibition = std::make_unique<Inhibition>();
        qAddPostRoutine([] { inhibition.reset(); });
    }
    if (inhibition)
        inhibition->want(holders > 0);
}

}

ScreenAwake::~ScreenAwake()
{
    release();
}

void ScreenAwake::hold()
{
    if (m_held)
        return;
    m_held = true;
    changeHolders(+1);
}

void ScreenAwake::release()
{
    if (!m_held)
        return;
    m_held = false;
    changeHolders(-1);
}
