#pragma once

#include "engine/isolation.h"
#include "engine/isolation/arena.h"
#include "engine/isolation/channel.h"
#include "engine/isolation/zygotelink.h"

#include <array>
#include <condition_variable>
#include <memory>
#include <thread>
#include <vector>

namespace isolation {

/// The program's side of one decoder process.
struct Worker
{
    Family family;
    qint32 pid = 0;
    Descriptor connection;
    std::shared_ptr<ZygoteLink> zygote;
    std::optional<Arena> input;
    std::optional<Arena> output;
    bool introduced = false; ///< it has told its layers
    int served = 0;
    Clock::time_point idleSince;
};

/// The decoder processes of one start and stop. A caller has one process at a time and never waits for a second one, so
/// callers cannot block each other for good.
class Pool
{
public:
    explicit Pool(const DecoderOptions &options);
    ~Pool();

    enum class Lack { None, NoProcesses, NoWorker, Stopped };
    struct Lease
    {
        std::unique_ptr<Worker> worker;
        Lack lack = Lack::None;
    };
    /// A process that waits for a request; waits itself while all are busy. NoProcesses: there cannot be any here.
    Lease acquire(Family family);
    /// After a request that was answered.
    void release(std::unique_ptr<Worker> worker);
    /// After one that was not: ends the process and says what became of it.
    QString discard(std::unique_ptr<Worker> worker, std::chrono::milliseconds grace);

    /// Memory for one picture, out of what all requests together may use: waits until there is as much. False when the
    /// pool stops meanwhile. A request has at most one grant.
    bool grant(qint64 bytes);
    void giveBack(qint64 bytes);
    /// A kept arena of at least that size, or a new one.
    std::optional<Arena> takeArena(qint64 bytes);

    void noteLayers(quint32 layers);
    QString protection() const;
    std::chrono::milliseconds patienceFor(qint64 fileBytes) const;
    /// Not known to be impossible.
    bool canStart() const;
    void stop();

private:
    struct SpareArena
    {
        Arena arena;
        Clock::time_point idleSince;
    };
    struct Household ///< what belongs to one family
    {
        std::shared_ptr<ZygoteLink> zygote;
        std::vector<std::unique_ptr<Worker>> idle;
        bool wanted = false;
        bool failed = false;
    };

    const Household &of(Family family) const { return m_households[family == Family::Quick ? 0 : 1]; }
    Household &of(Family family) { return m_households[family == Family::Quick ? 0 : 1]; }
    std::unique_ptr<Worker> idleWorker(Family family);
    std::shared_ptr<ZygoteLink> zygoteOf(Family family, std::unique_lock<std::mutex> &lock);
    void forget(Family family, const std::shared_ptr<ZygoteLink> &zygote);
    static std::unique_ptr<Worker> makeWorker(Family family, const std::shared_ptr<ZygoteLink> &zygote);
    void keepHouse();
    bool startWanted(std::unique_lock<std::mutex> &lock);
    bool endUsedUp(std::unique_lock<std::mutex> &lock);
    bool makeSpare(std::unique_lock<std::mutex> &lock);
    void retireIdle(Clock::time_point now);
    std::optional<Clock::time_point> nextRetirement(Clock::time_point now) const;
    void keepArenas(Worker &worker);

    const DecoderOptions m_options;
    const int m_limit;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed; ///< for callers: a free place, a zygote, memory
    std::condition_variable m_work; ///< for the keeper
    std::array<Household, 2> m_households;
    std::vector<std::unique_ptr<Worker>> m_usedUp;
    std::vector<SpareArena> m_spareArenas;
    int m_busy = 0;
    qint64 m_granted = 0;
    quint32 m_layers = 0;
    bool m_layersKnown = false;
    std::atomic<bool> m_stopping = false; ///< changes under the mutex
    /// Starts the zygotes, which end with the thread that has started them, and does what no caller should wait for.
    std::thread m_keeper;
};

/// The pool of the last start. `stopped`: there was one, and it has been stopped.
std::shared_ptr<Pool> currentPool(bool *stopped);

}
