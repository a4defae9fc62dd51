#pragma once

#include "engine/isolation/descriptor.h"
#include "engine/isolation/protocol.h"

#include <QByteArray>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>

namespace isolation {

/// The program's side of one zygote. Started and ended by one thread, which has to outlive it: the zygote ends with the
/// thread that started it. Asked by any thread.
class ZygoteLink
{
public:
    /// Starts the program and waits until it has said who it is, or until `givenUp`. A reason when that fails.
    static Result<std::unique_ptr<ZygoteLink>> start(
        const QByteArray &program, const QByteArray &modules, Family family, const std::atomic<bool> &givenUp);
    ~ZygoteLink();
    ZygoteLink(const ZygoteLink &) = delete;
    ZygoteLink &operator=(const ZygoteLink &) = delete;

    /// A new decoder process that owns the other end of this connection; 0 when there is none.
    qint32 splitOff(int connection);
    /// How the process ended; it is ended by force after `grace`. Nothing when the zygote does not answer.
    std::optional<ZygoteAnswer> end(qint32 pid, std::chrono::milliseconds grace);
    /// Lets the zygote go, with all its children; it may still be running for a moment.
    void hangUp();

private:
    ZygoteLink(Descriptor control, pid_t pid);
    bool isGreeted(const std::atomic<bool> &givenUp);
    std::optional<ZygoteAnswer> ask(const ZygoteRequest &request, int descriptor, Kind expected);

    Descriptor m_control;
    pid_t m_pid;
    bool m_greeted = false; ///< before that it has no children
    std::mutex m_mutex; ///< one question at a time
};

}
