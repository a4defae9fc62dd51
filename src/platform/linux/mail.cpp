#include "platform/mail.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/linux/defaulthandler.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/mailprograms.h"

#include <QCoreApplication>
#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QPointer>
#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QWidget>

#include <ctime>
#include <memory>
#include <mutex>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>

namespace {
Q_LOGGING_CATEGORY(logMail, "lumora.mail", QtWarningMsg)

constexpr QLatin1String portalService("org.freedesktop.portal.Desktop");
constexpr QLatin1String portalPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String emailInterface("org.freedesktop.portal.Email");
constexpr QLatin1String connectionName("lumora-mail");
constexpr int portalPatience = 5000; ///< milliseconds for each answer of the portal itself

constexpr qint64 largestCopy = 64 * 1024 * 1024; ///< no mail system takes more; the runtime folder is memory
constexpr std::time_t copyLifetime = 24 * 60 * 60; ///< seconds; the mail may be written and sent hours later

// --- other names of the attachment

/// A fresh folder of its own for one file, as the runtime folder only this user's.
QString freshFolder()
{
    const QString base = runtimeFolder() + QStringLiteral("mail/");
    ignore(::mkdir(nativePath(base).constData(), 0700));
    QByteArray pattern = nativePath(base) + "XXXXXX";
    return ::mkdtemp(pattern.data()) ? pathFromBytes(pattern) + QLatin1Char('/') : QString();
}

void removeOldCopies()
{
    const QString base = runtimeFolder() + QStringLiteral("mail/");
    const std::time_t now = std::time(nullptr);
    const auto folders = listFolder(base);
    if (!folders)
        return;
    for (const QString &name : folders->folders) {
        const QString folder = base + name + QLatin1Char('/');
        struct stat state = {};
        if (::lstat(nativePath(folder.chopped(1)).constData(), &state) != 0 || now - state.st_mtime < copyLifetime)
            continue;
        ignore(forEachEntry(
            folder,
            [&](const char *entry, EntryKind kind) {
                if (kind == EntryKind::File || kind == EntryKind::Other)
                    ignore(::unlink((nativePath(folder) + entry).constData()));
            },
            HiddenEntries::Told));
        ignore(::rmdir(nativePath(folder).constData()));
    }
}

/// The message with another name of its attachment. Where none can be made it stays as it is: better a name that
/// arrives mangled than no picture.
MailMessage withSafePath(MailMessage message, bool byLink)
{
    const QString folder = freshFolder();
    const QString path = folder + safeAttachmentName(message.attachmentName);
    bool made = false;
    if (byLink) {
        made = !folder.isEmpty()
            && ::symlink(nativePath(message.attachmentPath).constData(), nativePath(path).constData()) == 0;
    } else if (const auto bytes = readFile(message.attachmentPath, largestCopy); bytes && !folder.isEmpty()) {
        made = bool(writeFileAtomically(path, *bytes));
    }
    if (made)
        message.attachmentPath = path;
    else
        qCWarning(logMail, "no other name for \"%s\"", qPrintable(displayPath(message.attachmentPath)));
    return message;
}

// --- programs

/// False when it cannot be started. `words` end in the program's name.
bool start(const QStringList &words, const MailMessage &message)
{
    const MailProgram program = mailProgramOf(words.last());
    const bool renamed = !message.attachmentPath.isEmpty() && !carriesPath(program, message.attachmentPath);
    const MailMessage sent = renamed ? withSafePath(message, followsLinks(program)) : message;
    QProcess process;
    process.setProgram(words.first());
    process.setArguments(words.sliced(1) + mailArguments(program, sent));
    process.setStandardInputFile(QProcess::nullDevice());
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    const bool started = process.startDetached();
    qCInfo(logMail, "%s: %s", qPrintable(words.last()), started ? "started" : "cannot be started");
    return started;
}

/// Looks for a program and starts it. Runs beside the windows: it reads folders and may copy the file.
void startMailProgram(const MailMessage &message)
{
    removeOldCopies();
    const QStringList chosen = defaultHandlerCommand(QStringLiteral("x-scheme-handler/mailto"));
    if (!chosen.isEmpty() && mailProgramOf(chosen.last()) != MailProgram::Unknown && start(chosen, message))
        return;
    const QString script = QStandardPaths::findExecutable(QStringLiteral("xdg-email"));
    if (!script.isEmpty() && start({script}, message))
        return;
    // A program that is not known gets an address, and may take the attachment out of it or not.
    if (!chosen.isEmpty() && start(chosen, message))
        return;
    qCWarning(logMail, "no mail program answers");
}

// --- the portal

bool isSandboxed()
{
    return FileExists(QStringLiteral("/.flatpak-info")) || !qEnvironmentVariableIsEmpty("SNAP");
}

bool sessionBusExists()
{
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return true;
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    struct stat state = {};
    return !runtime.isEmpty() && ::stat((runtime + "/bus").constData(), &state) == 0 && S_ISSOCK(state.st_mode);
}

QString windowIdentifier(QWidget *owner)
{
    // A window of Wayland has no name that another process could use.
    if (!owner || QGuiApplication::platformName() != QLatin1String("xcb"))
        return {};
    return QStringLiteral("x11:") + QString::number(owner->window()->winId(), 16);
}

/// What the portal tells of one request when it is over.
class PortalRequest : public QDBusAbstractInterface
{
    Q_OBJECT
public:
    PortalRequest(const QString &portal, const QString &path, QObject *parent)
        : QDBusAbstractInterface(
            portal, path, "org.freedesktop.portal.Request", QDBusConnection(connectionName), parent)
    {
    }

Q_SIGNALS:
    void Response(uint response, const QVariantMap &results);
};

/// One message on its way. Lives until a road has taken it, or the program ends.
class MailOnItsWay : public QObject
{
    Q_OBJECT
public:
    MailOnItsWay(QWidget *owner, const MailMessage &message)
        : QObject(QCoreApplication::instance())
        , m_message(message)
        , m_window(windowIdentifier(owner))
    {
        setObjectName(QStringLiteral("MailOnItsWay"));
    }
    ~MailOnItsWay() override
    {
        const std::lock_guard guard(m_waiting->mutex);
        m_waiting->mail = nullptr;
    }

    void go()
    {
        if (sessionBusExists())
            connectToBus();
        else
            goByProgram();
    }

private:
    /// Who waits for the connection: the connecting thread may outlive the program's windows.
    struct Waiting
    {
        std::mutex mutex;
        MailOnItsWay *mail = nullptr;
    };

    void connectToBus()
    {
        m_waiting->mail = this;
        std::thread([state = m_waiting] {
            // A bus that has ended since then leaves a dead connection behind.
            if (!QDBusConnection(connectionName).isConnected())
                QDBusConnection::disconnectFromBus(connectionName);
            const bool connected =
                QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName).isConnected();
            const std::lock_guard guard(state->mutex);
            if (!state->mail)
                return;
            QMetaObject::invokeMethod(state->mail,
                [mail = state->mail, connected] { connected ? mail->askForPortal() : mail->goByProgram(); });
        }).detach();
    }

    /// A desktop with portals has them running. Starting one can take half a minute on a desktop without, so that is
    /// left to a sandbox, where there is no other road.
    void askForPortal()
    {
        QDBusMessage question = QDBusMessage::createMethodCall(
            portalService, portalPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        question.setArguments({QString(emailInterface), QStringLiteral("version")});
        question.setAutoStartService(isSandboxed());
        whenAnswered(question, [this](const QDBusMessage &answer) {
            if (answer.type() != QDBusMessage::ReplyMessage)
                return goByProgram();
            m_portal = answer.service(); // its own name, so that nothing has to be asked about it
            compose();
        });
    }

    void compose()
    {
        QDBusConnection bus(connectionName);
        const QString token = QStringLiteral("lumora_%1").arg(QRandomGenerator::global()->generate());
        QString sender = bus.baseService().mid(1);
        listenAt(
            QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender.replace(u'.', u'_'), token));
        QVariantMap options{{QStringLiteral("handle_token"), token}, {QStringLiteral("subject"), m_message.subject},
            {QStringLiteral("body"), m_message.note}};
        if (!m_message.attachmentPath.isEmpty()) {
            const auto file = openRegularFile(m_message.attachmentPath);
            if (!file)
                return goByProgram();
            const Descriptor descriptor(*file);
            options.insert(QStringLiteral("attachment_fds"),
                QVariant::fromValue(QList<QDBusUnixFileDescriptor>{QDBusUnixFileDescriptor(descriptor.number())}));
        }
        QDBusMessage call =
            QDBusMessage::createMethodCall(portalService, portalPath, emailInterface, QStringLiteral("ComposeEmail"));
        call.setArguments({m_window, options});
        whenAnswered(call, [this](const QDBusMessage &answer) {
            const QDBusPendingReply<QDBusObjectPath> handle(answer);
            if (handle.isError()) {
                qCInfo(logMail, "the portal refuses: %s", qPrintable(handle.error().message()));
                goByProgram();
            } else if (handle.value().path() != m_request) {
                listenAt(handle.value().path());
            }
        });
    }

    void listenAt(const QString &request)
    {
        m_request = request;
        auto *signals = new PortalRequest(m_portal, request, this);
        connect(signals, &PortalRequest::Response, this, [this](uint response) {
            // 0 done, 1 ended by the user, 2 ended in another way.
            qCInfo(logMail, "the portal ended with %u", response);
            if (response > 1)
                goByProgram();
            else
                deleteLater();
        });
    }

    void whenAnswered(const QDBusMessage &message, const std::function<void(const QDBusMessage &)> &act)
    {
        auto *watcher =
            new QDBusPendingCallWatcher(QDBusConnection(connectionName).asyncCall(message, portalPatience), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [act](QDBusPendingCallWatcher *finished) {
            finished->deleteLater();
            act(finished->reply());
        });
    }

    void goByProgram()
    {
        if (m_program.joinable())
            return;
        m_program = std::jthread([this, message = m_message] {
            startMailProgram(message);
            QMetaObject::invokeMethod(this, &QObject::deleteLater, Qt::QueuedConnection);
        });
    }

    const MailMessage m_message;
    const QString m_window;
    QString m_portal;
    QString m_request;
    std::shared_ptr<Waiting> m_waiting = std::make_shared<Waiting>();
    std::jthread m_program; ///< the last member: it ends before anything else goes
};

}

void openMailWindow(QWidget *owner, const MailMessage &message)
{
    qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
    (new MailOnItsWay(owner, message))->go();
}

#include "mail.moc"
