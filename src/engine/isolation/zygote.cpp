#include "engine/isolation/zygote.h"

#include "engine/isolation/channel.h"
#include "engine/isolation/worker.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include <sys/prctl.h>
#include <sys/wait.h>

namespace isolation {

namespace {

/// Signals of children wait to be asked for, so that waiting for one can have an end.
sigset_t childSignal()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGCHLD);
    return set;
}

[[noreturn]] void becomeWorker(
    Descriptor control, Descriptor connection, pid_t zygote, Family family, Confinement &confinement)
{
    // Before anything else: with the zygote gone nobody would end this process.
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != zygote)
        _exit(1);
    const sigset_t set = childSignal();
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
    control = Descriptor();
    // One descriptor besides the standard ones, whatever the libraries have left open.
    constexpr int place = STDERR_FILENO + 1;
    if (connection.value() != place) {
        if (dup2(connection.value(), place) < 0)
            _exit(1);
        connection = Descriptor(place);
    }
    close_range(place + 1, ~0U, 0);
    work(std::move(connection), family, confinement);
}

ZygoteAnswer told(pid_t pid, int status)
{
    return {Kind::Ended, pid, WIFSIGNALED(status) ? WTERMSIG(status) : 0, WIFEXITED(status) ? WEXITSTATUS(status) : 0};
}

/// Waits for a child as long as it is given, then ends it.
ZygoteAnswer endChild(pid_t pid, std::chrono::milliseconds grace)
{
    const Clock::time_point until = Clock::now() + grace;
    const sigset_t set = childSignal();
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(until - Clock::now()).count();
        if (left <= 0) {
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            break;
        }
        const timespec timeout{left / 1'000'000'000, left % 1'000'000'000};
        sigtimedwait(&set, nullptr, &timeout);
    }
    return told(pid, status);
}

class Zygote
{
public:
    Zygote(Descriptor control, Family family, Confinement &confinement)
        : m_control(std::move(control))
        , m_family(family)
        , m_confinement(confinement)
    {
    }

    int serve();

private:
    ZygoteAnswer splitOff(Descriptor connection);
    ZygoteAnswer end(const ZygoteRequest &request);

    Descriptor m_control;
    Family m_family;
    Confinement &m_confinement;
    std::vector<pid_t> m_children;
};

ZygoteAnswer Zygote::splitOff(Descriptor connection)
{
    const pid_t self = getpid();
    const pid_t pid = connection ? fork() : -1;
    if (pid == 0)
        becomeWorker(std::move(m_control), std::move(connection), self, m_family, m_confinement);
    if (pid > 0)
        m_children.push_back(pid);
    return {Kind::Forked, std::max(pid, 0), 0, 0};
}

ZygoteAnswer Zygote::end(const ZygoteRequest &request)
{
    if (std::erase(m_children, request.pid) == 0)
        return {Kind::Ended, request.pid, 0, 0};
    return endChild(request.pid, std::chrono::milliseconds(request.grace));
}

int Zygote::serve()
{
    while (true) {
        ZygoteRequest request{};
        Received received = receive(m_control.value(), {reinterpret_cast<uchar *>(&request), sizeof request});
        if (received.bytes != sizeof request)
            break;
        const ZygoteAnswer answer =
            request.kind == Kind::Fork ? splitOff(std::move(received.descriptor)) : end(request);
        if (!send(m_control.value(), bytesOfStruct(answer)))
            break;
    }
    for (const pid_t child : m_children)
        endChild(child, std::chrono::milliseconds(0));
    return 0;
}

}

int serveAsZygote(Descriptor connection, Family family, Confinement &confinement)
{
    const sigset_t set = childSignal();
    sigprocmask(SIG_BLOCK, &set, nullptr);
    Hello hello;
    qstrncpy(hello.version.data(), LUMORA_VERSION, hello.version.size());
    if (!send(connection.value(), bytesOfStruct(hello)))
        return 0;
    return Zygote(std::move(connection), family, confinement).serve();
}

}
