#include "app/endsignals.h"

#include <QSocketNotifier>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::array endingSignals{SIGTERM, SIGINT, SIGHUP};
std::atomic<int> writeEnd = -1;

/// All that a signal handler may do safely: one byte into the pipe.
extern "C" void tellPipe(int signal)
{
    const int before = errno;
    const char byte = static_cast<char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(writeEnd.load(), &byte, 1);
    errno = before;
}

}

struct EndSignals::Private
{
    std::function<void(int)> arrived;
    int pipe[2] = {-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
    bool any = false;
};

EndSignals::EndSignals(std::function<void(int)> arrived)
    : d(std::make_unique<Private>())
{
    d->arrived = std::move(arrived);
    if (::pipe2(d->pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    writeEnd = d->pipe[1];
    struct sigaction action
    {
    };
    action.sa_handler = &tellPipe;
    action.sa_flags = SA_RESTART;
    for (const int signal : endingSignals) {
        // Whoever starts a program with a signal ignored, as nohup does, wants it to stay so.
        struct sigaction before
        {
        };
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
            ::sigaction(signal, &action, nullptr);
    }
}

EndSignals::~EndSignals()
{
    // The program has ended its work: from here a signal just ends the process.
    for (const int signal : endingSignals)
        ::signal(signal, SIG_DFL);
    d->notifier.reset();
    writeEnd = -1;
    for (const int end : d->pipe) {
        if (end >= 0)
            ::close(end);
    }
}

void EndSignals::watch()
{
    if (d->pipe[0] < 0)
        return;
    d->notifier = std::make_unique<QSocketNotifier>(d->pipe[0], QSocketNotifier::Read);
    QObject::connect(d->notifier.get(), &QSocketNotifier::activated, d->notifier.get(), [this] {
        char byte = 0;
        while (::read(d->pipe[0], &byte, 1) == 1) {
            d->any = true;
            d->arrived(byte);
        }
    });
}

bool EndSignals::haveArrived() const
{
    return d->any;
}
