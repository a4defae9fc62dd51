#include "platform/instance.h"

#include "platform/filepath.h"
#include "platform/folders.h"
#include "platform/linux/descriptor.h"

#include <QLoggingCategory>
#include <QMetaObject>
#include <QObject>
#include <QtEndian>

#include <chrono>
#include <cstring>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

namespace {
Q_LOGGING_CATEGORY(logInstance, "lumora.instance", QtWarningMsg)

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr char magic[] = "LUMORA1\n";
constexpr int magicSize = 8;
constexpr int headerSize = magicSize + 8;
constexpr char answer[] = "ok";
constexpr qsizetype maximumMessage = 16 * 1024 * 1024;
constexpr std::size_t maximumClients = 64;
/// A sender is one write of a process of this program; whoever is slower than this is something else.
constexpr auto clientPatience = 5s;

struct Message
{
    QString command;
    QString token;
};

QByteArray encode(const Message &message)
{
    const QByteArray command = pathToBytes(message.command);
    const QByteArray token = pathToBytes(message.token);
    QByteArray bytes(headerSize, Qt::Uninitialized);
    std::memcpy(bytes.data(), magic, magicSize);
    qToBigEndian(quint32(command.size()), bytes.data() + magicSize);
    qToBigEndian(quint32(token.size()), bytes.data() + magicSize + 4);
    return bytes + command + token;
}

enum class Reading { Incomplete, Complete, Refused };

Reading decode(const QByteArray &bytes, Message &message)
{
    const qsizetype known = qMin<qsizetype>(bytes.size(), magicSize);
    if (std::memcmp(bytes.constData(), magic, std::size_t(known)) != 0)
        return Reading::Refused;
    if (bytes.size() < headerSize)
        return Reading::Incomplete;
    const qsizetype command = qFromBigEndian<quint32>(bytes.constData() + magicSize);
    const qsizetype token = qFromBigEndian<quint32>(bytes.constData() + magicSize + 4);
    if (headerSize + command + token > maximumMessage)
        return Reading::Refused;
    if (bytes.size() < headerSize + command + token)
        return Reading::Incomplete;
    message = {pathFromBytes(bytes.mid(headerSize, command)), pathFromBytes(bytes.mid(headerSize + command, token))};
    return Reading::Complete;
}

/// Files of one display: a person on two of them has two programs.
QString fileName(const char *extension)
{
    QByteArray display = qgetenv("WAYLAND_DISPLAY");
    if (display.isEmpty())
        display = qgetenv("DISPLAY");
    QString name;
    for (const char letter : std::as_const(display))
        name += QChar::isLetterOrNumber(uchar(letter)) ? QLatin1Char(letter) : QLatin1Char('_');
    return QStringLiteral("instance-") + name.left(80) + QLatin1String(extension);
}

bool isOwnUser(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}

Descriptor streamSocket()
{
    return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

/// The address of the socket: a longer path than an address can hold goes by way of its opened folder.
std::optional<sockaddr_un> socketAddress(const Descriptor &folder, const QString &folderPath)
{
    const QByteArray name = fileName(".socket").toLatin1();
    QByteArray path = pathToBytes(folderPath) + name;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= qsizetype(sizeof address.sun_path))
        path = "/proc/self/fd/" + QByteArray::number(folder.number()) + '/' + name;
    if (path.size() >= qsizetype(sizeof address.sun_path))
        return std::nullopt;
    std::memcpy(address.sun_path, path.constData(), std::size_t(path.size()));
    return address;
}

template <class Call> bool withAddress(sockaddr_un &address, Call call)
{
    return call(static_cast<sockaddr *>(static_cast<void *>(&address)), socklen_t(sizeof address)) == 0;
}

int millisecondsUntil(Clock::time_point time)
{
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(time - Clock::now()).count();
    return int(std::clamp<long long>(left, 0, 60'000));
}

bool waitFor(int descriptor, short events, Clock::time_point deadline)
{
    pollfd wait{descriptor, events, 0};
    int ready = 0;
    do {
        ready = ::poll(&wait, 1, millisecondsUntil(deadline));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

bool sendAll(int socket, const QByteArray &bytes, Clock::time_point deadline)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(socket, bytes.constData() + sent, std::size_t(bytes.size() - sent), MSG_NOSIGNAL);
        if (count > 0)
            sent += count;
        else if (errno != EINTR && (errno != EAGAIN || !waitFor(socket, POLLOUT, deadline)))
            return false;
    }
    return true;
}

/// One conversation as the sender has it. False when nobody listens or the listener went before its answer.
bool deliver(sockaddr_un address, const QByteArray &message, Clock::time_point deadline)
{
    const Descriptor socket = streamSocket();
    if (!socket
        || !withAddress(address, [&](auto *to, socklen_t size) { return ::connect(socket.number(), to, size); }))
        return false;
    if (!isOwnUser(socket.number()) || !sendAll(socket.number(), message, deadline))
        return false;
    char reply[sizeof answer] = {};
    if (!waitFor(socket.number(), POLLIN, deadline))
        return false;
    return ::recv(socket.number(), reply, sizeof reply - 1, MSG_WAITALL) == ssize_t(sizeof reply - 1)
        && std::memcmp(reply, answer, sizeof reply) == 0;
}

struct Client
{
    Descriptor socket;
    QByteArray received;
    Clock::time_point deadline;
};

/// Reads what there is. True when the conversation is over; `message` holds what came when it was a whole message.
bool readFrom(Client &client, std::optional<Message> &message)
{
    char buffer[64 * 1024];
    const ssize_t count = ::recv(client.socket.number(), buffer, sizeof buffer, 0);
    if (count < 0)
        return errno != EAGAIN && errno != EINTR;
    if (count == 0)
        return true;
    client.received.append(buffer, count);
    Message read;
    const Reading state = decode(client.received, read);
    if (state == Reading::Complete)
        message = std::move(read);
    return state != Reading::Incomplete;
}

} // namespace

struct Instance::Private
{
    enum class Lock { Taken, Busy, Impossible };

    QString folderPath = runtimeFolder();
    Descriptor folder{::open(pathToBytes(folderPath).constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
    Descriptor lockFile;
    Descriptor listener;
    Descriptor wake;
    std::unique_ptr<QObject> receiver;
    std::function<void(const QString &, const QString &)> received;
    std::mutex mutex;
    std::deque<Message> waiting;
    bool retired = false;
    std::jthread server;

    Lock takeLock();
    void startServer();
    bool openListener();
    void serve(const std::stop_token &stop);
    void acceptClient(std::vector<Client> &clients);
    void takeIn(const Client &client, Message message);
    void handToOwner();
};

Instance::Private::Lock Instance::Private::takeLock()
{
    if (lockFile)
        return Lock::Taken;
    const QByteArray name = fileName(".lock").toLatin1();
    Descriptor file(::openat(folder.number(), name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file)
        return Lock::Impossible;
    if (::flock(file.number(), LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? Lock::Busy : Lock::Impossible;
    lockFile = std::move(file);
    return Lock::Taken;
}

bool Instance::Private::openListener()
{
    auto address = socketAddress(folder, folderPath);
    Descriptor socket = streamSocket();
    if (!address || !socket)
        return false;
    // Whoever holds the lock owns the name: what stands there is left of a process that is gone. The mode of the socket
    // before bind() is that of the file which bind() makes.
    ::unlinkat(folder.number(), fileName(".socket").toLatin1().constData(), 0);
    if (::fchmod(socket.number(), 0600) != 0)
        return false;
    if (!withAddress(*address, [&](auto *to, socklen_t size) { return ::bind(socket.number(), to, size); }))
        return false;
    if (::listen(socket.number(), int(maximumClients)) != 0)
        return false;
    listener = std::move(socket);
    return true;
}

void Instance::Private::startServer()
{
    wake = Descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wake || !openListener()) {
        qCWarning(logInstance, "no socket in %s: later starts cannot reach this one", qPrintable(folderPath));
        return;
    }
    receiver = std::make_unique<QObject>();
    server = std::jthread([this](const std::stop_token &stop) { serve(stop); });
}

void Instance::Private::serve(const std::stop_token &stop)
{
    std::vector<Client> clients;
    while (!stop.stop_requested()) {
        std::vector<pollfd> waits{{wake.number(), POLLIN, 0}};
        waits.push_back({clients.size() < maximumClients ? listener.number() : -1, POLLIN, 0});
        auto nearest = Clock::time_point::max();
        for (const Client &client : clients) {
            waits.push_back({client.socket.number(), POLLIN, 0});
            nearest = std::min(nearest, client.deadline);
        }
        if (::poll(waits.data(), waits.size(), clients.empty() ? -1 : millisecondsUntil(nearest)) < 0 && errno != EINTR)
            return;
        const auto now = Clock::now();
        std::vector<Client> kept;
        for (std::size_t i = 0; i < clients.size(); ++i) {
            std::optional<Message> message;
            const bool over = waits[i + 2].revents != 0 ? readFrom(clients[i], message) : now >= clients[i].deadline;
            if (message)
                takeIn(clients[i], std::move(*message));
            if (!over)
                kept.push_back(std::move(clients[i]));
        }
        clients = std::move(kept);
        if (waits[1].revents != 0)
            acceptClient(clients);
    }
}

void Instance::Private::acceptClient(std::vector<Client> &clients)
{
    Descriptor socket(::accept4(listener.number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket)
        waitFor(wake.number(), POLLIN, Clock::now() + 100ms); // out of descriptors: asking again at once would spin
    else if (isOwnUser(socket.number()))
        clients.push_back({std::move(socket), {}, Clock::now() + clientPatience});
}

void Instance::Private::takeIn(const Client &client, Message message)
{
    {
        const std::lock_guard guard(mutex);
        waiting.push_back(std::move(message));
    }
    // From here on the command is ours, so the sender may go, however busy the owner's thread is.
    ::send(client.socket.number(), answer, sizeof answer - 1, MSG_NOSIGNAL);
    QMetaObject::invokeMethod(
        receiver.get(), [this] { handToOwner(); }, Qt::QueuedConnection);
}

void Instance::Private::handToOwner()
{
    while (received && !retired) {
        Message next;
        {
            const std::lock_guard guard(mutex);
            if (waiting.empty())
                return;
            next = std::move(waiting.front());
            waiting.pop_front();
        }
        received(next.command, next.token);
    }
}

Instance::Instance()
    : d(std::make_unique<Private>())
{
}

Instance::~Instance()
{
    retire();
}

bool Instance::becomeFirst()
{
    if (d->receiver)
        return true;
    switch (d->takeLock()) {
    case Private::Lock::Busy:
        return false;
    case Private::Lock::Impossible:
        qCWarning(logInstance, "no lock in %s: this start is on its own", qPrintable(d->folderPath));
        return true;
    case Private::Lock::Taken:
        d->startServer();
    }
    return true;
}

void Instance::listen(std::function<void(const QString &, const QString &)> received)
{
    d->received = std::move(received);
    if (d->receiver)
        QMetaObject::invokeMethod(
            d->receiver.get(), [this] { d->handToOwner(); }, Qt::QueuedConnection);
}

bool Instance::handOver(const QString &command, const QString &activationToken, int milliseconds)
{
    const QByteArray message = encode({command, activationToken});
    const auto address = socketAddress(d->folder, d->folderPath);
    if (!address || message.size() > maximumMessage)
        return false;
    const auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
    do {
        if (deliver(*address, message, deadline))
            return true;
        if (d->takeLock() != Private::Lock::Busy)
            return false;
        // The first one is between its lock and its socket, or on its way out: neither can be waited for as such.
        ignore(::poll(nullptr, 0, qMin(10, millisecondsUntil(deadline))));
    } while (Clock::now() < deadline);
    return false;
}

void Instance::retire()
{
    d->retired = true;
    if (!d->server.joinable())
        return;
    d->server.request_stop();
    ::eventfd_write(d->wake.number(), 1);
    d->server.join();
    ::unlinkat(d->folder.number(), fileName(".socket").toLatin1().constData(), 0);
    d->listener = Descriptor();
}

QStringList Instance::untaken() const
{
    const std::lock_guard guard(d->mutex);
    QStringList commands;
    for (const Message &message : d->waiting)
        commands.append(message.command);
    return commands;
}
