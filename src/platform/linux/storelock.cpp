#include "platform/linux/storelock.h"

#include "platform/filepath.h"

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {
Failure failure(const QString &path, const char *what)
{
    return {QStringLiteral("%1: %2").arg(displayPath(path), QString::fromLocal8Bit(what))};
}

bool knowsNoLocks(int error)
{
    return error == ENOLCK || error == EOPNOTSUPP || error == ENOSYS || error == EINVAL;
}

int waitForLock(int descriptor)
{
    while (::flock(descriptor, LOCK_EX) != 0) {
        if (errno != EINTR)
            return errno;
    }
    return 0;
}

// What the waiting thread and the one that asked share; who comes last cleans up.
struct Wait
{
    std::mutex mutex;
    std::condition_variable changed;
    bool done = false;
    bool givenUp = false;
    int error = 0;
};

// flock() has no time limit of its own, and asking again and again would let a busy neighbour win every time. So a
// thread stands in the kernel's queue; when the time is up it is left to itself and drops the lock as soon as it gets
// it.
int waitAtMost(int descriptor, std::chrono::milliseconds patience)
{
    const auto wait = std::make_shared<Wait>();
    std::thread([wait, descriptor] {
        const int error = waitForLock(descriptor);
        const std::lock_guard guard(wait->mutex);
        wait->done = true;
        wait->error = error;
        if (wait->givenUp)
            ::close(descriptor);
        wait->changed.notify_one();
    }).detach();

    std::unique_lock guard(wait->mutex);
    if (wait->changed.wait_for(guard, patience, [&] { return wait->done; }))
        return wait->error;
    wait->givenUp = true;
    return ETIMEDOUT;
}
}

Result<StoreLock> StoreLock::take(const QString &path, std::chrono::milliseconds patience)
{
    // A link or a FIFO under the name is not followed, nor waited for.
    const int descriptor =
        ::open(pathToBytes(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (descriptor < 0)
        return failure(path, std::strerror(errno));
    StoreLock lock(descriptor);
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || knowsNoLocks(errno))
        return lock;
    if (errno != EWOULDBLOCK && errno != EINTR)
        return failure(path, std::strerror(errno));
    const int error = waitAtMost(descriptor, patience);
    if (error == 0 || knowsNoLocks(error))
        return lock;
    if (error == ETIMEDOUT) {
        lock.m_descriptor = -1; // the thread that still waits closes it
        return failure(path, "another program keeps it locked");
    }
    return failure(path, std::strerror(error));
}

StoreLock::StoreLock(StoreLock &&other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

StoreLock &StoreLock::operator=(StoreLock &&other) noexcept
{
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

StoreLock::~StoreLock()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}
