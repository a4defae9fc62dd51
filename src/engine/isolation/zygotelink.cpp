#include "engine/isolation/zygotelink.h"

#include "engine/isolation/channel.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>

namespace isolation {

namespace {

constexpr std::chrono::seconds startPatience(20); ///< a cold disk and a busy machine
constexpr std::chrono::seconds answerPatience(10);
constexpr int firstSafePlace = 10; ///< above the numbers that the new process gives its own descriptors

/// What the libraries of the decoder process read, and nothing else of the user's.
std::vector<QByteArray> environmentOf(const QByteArray &modules)
{
    std::vector<QByteArray> variables{
        "QT_QPA_PLATFORM=offscreen", "LC_ALL=C.UTF-8", "QT_NO_GLIB=1", "LUMORA_MODULES=" + modules};
    for (const char *name : {"LUMORA_DECODER", "HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME",
             "XDG_DATA_DIRS", "FONTCONFIG_FILE", "FONTCONFIG_PATH", "QT_PLUGIN_PATH", "QT_LOGGING_RULES",
             "LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (const QByteArray value = qgetenv(name); !value.isEmpty())
            variables.push_back(QByteArray(name) + '=' + value);
    }
    return variables;
}

std::vector<char *> pointersTo(std::vector<QByteArray> &texts)
{
    std::vector<char *> pointers;
    pointers.reserve(texts.size() + 1);
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

struct Actions
{
    posix_spawn_file_actions_t value;
    Actions() { posix_spawn_file_actions_init(&value); }
    ~Actions() { posix_spawn_file_actions_destroy(&value); }
    Actions(const Actions &) = delete;
    Actions &operator=(const Actions &) = delete;
};

struct Attributes
{
    posix_spawnattr_t value;
    Attributes()
    {
        posix_spawnattr_init(&value);
        // The signals of a terminal are the program's affair, and so are its own handlers.
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&value, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&value, &signals);
        posix_spawnattr_setpgroup(&value, 0);
        posix_spawnattr_setflags(&value, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
    }
    ~Attributes() { posix_spawnattr_destroy(&value); }
    Attributes(const Attributes &) = delete;
    Attributes &operator=(const Attributes &) = delete;
};

/// The number of the new process, or the negative reason.
int spawn(const QByteArray &program, const QByteArray &modules, Family family, int connection)
{
    const Descriptor high(fcntl(connection, F_DUPFD_CLOEXEC, firstSafePlace));
    if (!high)
        return -errno;
    Actions actions;
    const QByteArray mode = qgetenv("LUMORA_DECODER");
    const bool mayTalk = mode == "debug" || mode == "strict";
    posix_spawn_file_actions_adddup2(&actions.value, high.value(), STDERR_FILENO + 1);
    posix_spawn_file_actions_addopen(&actions.value, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&actions.value, STDIN_FILENO, STDOUT_FILENO);
    if (!mayTalk)
        posix_spawn_file_actions_adddup2(&actions.value, STDIN_FILENO, STDERR_FILENO);
    posix_spawn_file_actions_addclosefrom_np(&actions.value, STDERR_FILENO + 2);
    const Attributes attributes;
    std::vector<QByteArray> words{
        "lumora-decoder", family == Family::Quick ? "quick" : "full", QByteArray::number(qlonglong(getpid()))};
    std::vector<QByteArray> variables = environmentOf(modules);
    pid_t pid = 0;
    const int outcome = posix_spawn(&pid, program.constData(), &actions.value, &attributes.value,
        pointersTo(words).data(), pointersTo(variables).data());
    return outcome == 0 ? pid : -outcome;
}

}

ZygoteLink::ZygoteLink(Descriptor control, pid_t pid)
    : m_control(std::move(control))
    , m_pid(pid)
{
}

Result<std::unique_ptr<ZygoteLink>> ZygoteLink::start(
    const QByteArray &program, const QByteArray &modules, Family family, const std::atomic<bool> &givenUp)
{
    auto [ours, theirs] = connectedPair();
    if (!ours)
        return Failure{QStringLiteral("no connection: ") + QString::fromLocal8Bit(strerror(errno))};
    const int pid = spawn(program, modules, family, theirs.value());
    theirs = Descriptor();
    if (pid < 0)
        return Failure{QString::fromLocal8Bit(program) + QStringLiteral(": ") + QString::fromLocal8Bit(strerror(-pid))};
    std::unique_ptr<ZygoteLink> link(new ZygoteLink(std::move(ours), pid));
    if (!link->isGreeted(givenUp))
        return Failure{QString::fromLocal8Bit(program) + QStringLiteral(" does not answer")};
    Hello hello;
    const Received received = receive(link->m_control.value(), {reinterpret_cast<uchar *>(&hello), sizeof hello});
    hello.version.back() = 0;
    if (received.bytes != sizeof hello || hello.kind != Kind::Hello
        || qstrcmp(hello.version.data(), LUMORA_VERSION) != 0)
        return Failure{QString::fromLocal8Bit(program) + QStringLiteral(" ended, or belongs to another version")};
    link->m_greeted = true;
    return link;
}

bool ZygoteLink::isGreeted(const std::atomic<bool> &givenUp)
{
    const Clock::time_point until = Clock::now() + startPatience;
    while (!givenUp && Clock::now() < until) {
        if (waitReadable(m_control.value(), Clock::now() + std::chrono::milliseconds(10)))
            return true;
    }
    return false;
}

ZygoteLink::~ZygoteLink()
{
    hangUp();
    // It ends its children first; then the connection is closed on its side too.
    uchar nothing[64];
    const Clock::time_point until = Clock::now() + std::chrono::seconds(2);
    while (m_greeted && waitReadable(m_control.value(), until) && receive(m_control.value(), nothing).bytes > 0)
        ;
    kill(m_pid, SIGKILL);
    int status;
    while (waitpid(m_pid, &status, 0) < 0 && errno == EINTR)
        ;
}

void ZygoteLink::hangUp()
{
    shutdown(m_control.value(), SHUT_WR);
}

std::optional<ZygoteAnswer> ZygoteLink::ask(const ZygoteRequest &request, int descriptor, Kind expected)
{
    const std::lock_guard lock(m_mutex);
    ZygoteAnswer answer;
    if (!send(m_control.value(), bytesOfStruct(request), {}, descriptor)
        || !waitReadable(m_control.value(), Clock::now() + answerPatience)
        || receive(m_control.value(), {reinterpret_cast<uchar *>(&answer), sizeof answer}).bytes != sizeof answer
        || answer.kind != expected) {
        hangUp();
        return {};
    }
    return answer;
}

qint32 ZygoteLink::splitOff(int connection)
{
    const std::optional<ZygoteAnswer> answer = ask({Kind::Fork}, connection, Kind::Forked);
    return answer ? answer->pid : 0;
}

std::optional<ZygoteAnswer> ZygoteLink::end(qint32 pid, std::chrono::milliseconds grace)
{
    return ask({Kind::End, pid, qint32(grace.count())}, -1, Kind::Ended);
}

}
