#pragma once

#include "actions/conversionengine.h"
#include "engine/loadedpicture.h"
#include "platform/files.h"

#include <condition_variable>
#include <deque>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

/// All that decides what an entry comes to in one format, besides what the file holds.
struct ConversionWork
{
    QString path;
    ConversionLoad load = ConversionLoad::None;
    int sizeIndex = -1;
    QVector<ConversionStep> steps;
    SavePlan plan;
    bool operator==(const ConversionWork &) const = default;
};

/// One entry in one format on its way from the file to the bytes of the new one.
struct ConversionJob
{
    // Set by who makes the job.
    ConversionPlace place;
    ConversionWork work;
    /// Taken instead of a file: prepared already, and only to be encoded.
    std::shared_ptr<const LoadedPicture> picture = {};
    bool encodes = true; ///< false: ends when it is prepared

    // The stages, counted up.
    static constexpr int loaded = 1;
    int operated(qsizetype step) const { return loaded + 1 + int(step); }
    int prepared() const { return operated(work.steps.size()); }
    int done() const { return prepared() + 1; }

    // Written by the crew under its lock, and steady from the stage on that brings it.
    int stage = 0;
    std::optional<FileStamp> stamp = {}; ///< of the file, before it was read
    bool restless = false; ///< the file had just been changed: the next change may not show in its stamp
    std::shared_ptr<const LoadedPicture> source = {};
    QString failure = {}; ///< why there is no `source`; such a job is done
    std::shared_ptr<const LoadedPicture> result = {}; ///< prepared
    QString stepFailure = {}; ///< of the first operation or preparation that failed
    std::optional<Result<QByteArray>> bytes = {};

    // The crew's own.
    qint64 estimate = -1; ///< bytes of memory at the most; -1: not known yet
    qint64 cost = 0; ///< bytes that are counted for it now
    bool estimating = false;
    bool running = false;
    bool released = false; ///< the run needs its pictures no more
    bool wanted = false; ///< a file is to be made of it
    bool abandoned = false;
};

/// The threads of a run. Jobs are done in the order in which they come, several at a time, within a bound of memory.
/// Files appear in the order in which they are given to it, although several are brought to the disk at a time.
class ConversionCrew
{
public:
    using Job = std::shared_ptr<ConversionJob>;

    /// `wake` is called from any thread when a job has come further or a file stands.
    explicit ConversionCrew(std::function<void()> wake);
    /// Drops what is ahead, waits for what is behind.
    ~ConversionCrew();

    /// False when the system gave no threads: nothing may be asked of it then.
    bool works() const { return !m_threads.empty(); }
    /// How many jobs are worth having ahead.
    int depth() const { return m_depth; }
    void add(const Job &job);
    /// Before all others.
    void addFirst(const Job &job);
    /// The run has come to this place: it may wait for a job of it.
    void reach(ConversionPlace place);
    void abandon(const Job &job);

    int stageOf(const Job &job) const;
    void waitFor(const Job &job, int stage);
    /// The run has taken what it needs of the pictures.
    void release(const Job &job);

    /// Has the bytes of the job written when they are there.
    void write(const Job &job, const ConversionOutcome &outcome);
    void record(const ConversionOutcome &outcome);
    /// What has been written or recorded since the last call, in order.
    QVector<ConversionOutcome> takeFinished();
    /// Whether write() will take one more without a wait.
    bool hasRoom() const;
    /// Waits until files on their way to that path stand.
    void settle(const QString &path);
    void settleAll();

    void stop();
    bool isOver() const;

private:
    struct Ended
    {
        ConversionOutcome outcome;
        bool over = true; ///< its file stands, or is not to be
    };
    struct Write
    {
        Job job;
        std::optional<FilePlace> place;
        std::list<Ended>::iterator end;
        enum State { Waiting, Preparing, Prepared, Failed } state = Waiting;
        /// It failed beside others, which may have taken the room that it needs: it gets another try without them.
        bool alone = false;
        std::unique_ptr<FileReplacement> file = {};
    };
    using Writes = std::list<Write>;

    void work();
    Job startable() const;
    bool mayStart(const ConversionJob &job) const;
    void estimateNext(std::unique_lock<std::mutex> &lock, const Job &job);
    void runNext(std::unique_lock<std::mutex> &lock, const Job &job);
    void carryOut(ConversionJob &job);
    Result<std::shared_ptr<const LoadedPicture>> load(ConversionJob &job);
    template <class Change> bool advance(ConversionJob &job, int stage, Change change);
    void count(ConversionJob &job);
    void setCost(ConversionJob &job, qint64 bytes);
    bool isFull() const;
    void writeBehind();
    bool canPlace() const;
    Writes::iterator preparable();
    void prepare(std::unique_lock<std::mutex> &lock, Write &write);
    void placeFirst(std::unique_lock<std::mutex> &lock);
    void end();
    void changed();

    const KeptPictureMemory m_pictureMemory;
    const std::function<void()> m_wake;
    const int m_depth;
    const qint64 m_budget; ///< bytes
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_waiting;
    std::vector<Job> m_running;
    Writes m_writes; ///< in the order of the run
    int m_preparing = 0;
    bool m_placing = false;
    std::list<Ended> m_ended; ///< in the order of the run; the first whose file is still to come holds up the rest
    ConversionPlace m_here;
    qint64 m_held = 0; ///< bytes that are counted for all jobs
    bool m_stopping = false;
    std::vector<std::thread> m_threads;
};
