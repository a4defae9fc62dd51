#include "actions/conversioncrew.h"

#include "engine/polyimage.h"

#include <QDateTime>
#include <QThreadPool>

#include <algorithm>
#include <numeric>
#include <system_error>

#include <csignal>

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
/// Enough for two photographs of 12 megapixels under way and what is to be written of those before.
constexpr qint64 memoryBudget = 320 * mebibyte;
/// Of pictures that have gone, for the next ones.
constexpr qint64 keptMemory = 112 * mebibyte;
constexpr unsigned mostThreads = 16;
/// They wait for the disk most of the time.
constexpr unsigned writerCount = 3;
/// A file system's clock ticks more slowly than files can change.
constexpr qint64 restlessNanoseconds = 100'000'000;

unsigned threadCount()
{
    return std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads);
}

qint64 bytesOf(const std::shared_ptr<const LoadedPicture> &picture)
{
    return picture ? picture->cost() : 0;
}

/// The most that a job holds at once: the picture, its copy when it is changed, and what the writer makes of it.
qint64 estimated(const ConversionWork &work)
{
    const Result<ImageInfo> info = probeFile(work.path, work.sizeIndex);
    if (!info)
        return 16 * mebibyte;
    const qint64 bytesPerPixel = info->bitsPerPixel > 32 ? 8 : 4;
    const qint64 pixels = qint64(info->size.width()) * info->size.height() * bytesPerPixel;
    const bool changes = !work.steps.isEmpty() || !work.plan.steps.isEmpty();
    return pixels * (changes ? 5 : 4) / 2 + mebibyte;
}

/// What is left for one thread of the program's pool while this one works.
class ReservedThread
{
public:
    ReservedThread() { QThreadPool::globalInstance()->reserveThread(); }
    ~ReservedThread() { QThreadPool::globalInstance()->releaseThread(); }
    Q_DISABLE_COPY_MOVE(ReservedThread)
};

}

ConversionCrew::ConversionCrew(std::function<void()> wake)
    : m_pictureMemory(keptMemory)
    , m_wake(std::move(wake))
    , m_depth(int(threadCount()) * 2 + 2)
    , m_budget(memoryBudget)
{
    // The program's signals are for its own threads.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        m_threads.emplace_back([this] { writeBehind(); });
        m_threads.emplace_back([this] { work(); });
        for (unsigned i = 1; i < threadCount(); ++i)
            m_threads.emplace_back([this] { work(); });
        for (unsigned i = 1; i < writerCount; ++i)
            m_threads.emplace_back([this] { writeBehind(); });
    } catch (const std::system_error &) {
        // One of each kind is enough.
        if (m_threads.size() < 2)
            end();
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ConversionCrew::~ConversionCrew()
{
    end();
}

void ConversionCrew::end()
{
    stop();
    for (std::thread &thread : m_threads)
        thread.join();
    m_threads.clear();
}

/// To be called without the lock.
void ConversionCrew::changed()
{
    m_changed.notify_all();
    m_wake();
}

void ConversionCrew::setCost(ConversionJob &job, qint64 bytes)
{
    m_held += bytes - job.cost;
    job.cost = bytes;
}

/// What a job holds while nobody works on it.
void ConversionCrew::count(ConversionJob &job)
{
    if (job.running)
        return;
    if (job.released || job.abandoned) {
        job.source.reset();
        job.result.reset();
        job.picture.reset();
    }
    if (job.abandoned)
        job.bytes.reset();
    const qint64 pictures = bytesOf(job.source) + (job.result == job.source ? 0 : bytesOf(job.result));
    setCost(job, pictures + (job.bytes && *job.bytes ? (*job.bytes)->size() : 0));
}

// --- for the run

void ConversionCrew::add(const Job &job)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_back(job);
    }
    m_changed.notify_all();
}

void ConversionCrew::addFirst(const Job &job)
{
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.push_front(job);
    }
    m_changed.notify_all();
}

void ConversionCrew::reach(ConversionPlace place)
{
    {
        const std::lock_guard lock(m_mutex);
        m_here = place;
    }
    m_changed.notify_all();
}

void ConversionCrew::abandon(const Job &job)
{
    {
        const std::lock_guard lock(m_mutex);
        job->abandoned = true;
        std::erase(m_waiting, job);
        count(*job);
    }
    m_changed.notify_all();
}

int ConversionCrew::stageOf(const Job &job) const
{
    const std::lock_guard lock(m_mutex);
    return job->stage;
}

void ConversionCrew::waitFor(const Job &job, int stage)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return job->stage >= stage; });
}

void ConversionCrew::release(const Job &job)
{
    {
        const std::lock_guard lock(m_mutex);
        job->released = true;
        count(*job);
    }
    m_changed.notify_all();
}

/// A few large files, or many small ones.
bool ConversionCrew::isFull() const
{
    constexpr std::size_t fewWrites = 4;
    constexpr std::size_t manyWrites = 16;
    constexpr qint64 smallBytes = 8 * mebibyte;
    const auto sum = [](qint64 bytes, const Write &write) { return bytes + write.job->cost; };
    return m_writes.size() >= manyWrites
        || (m_writes.size() >= fewWrites
            && std::accumulate(m_writes.begin(), m_writes.end(), qint64(0), sum) > smallBytes);
}

bool ConversionCrew::hasRoom() const
{
    const std::lock_guard lock(m_mutex);
    return !isFull();
}

void ConversionCrew::write(const Job &job, const ConversionOutcome &outcome)
{
    const std::optional<FilePlace> place = filePlace(outcome.target);
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !isFull(); });
        job->wanted = true;
        m_writes.push_back({job, place, m_ended.insert(m_ended.end(), {outcome, false})});
    }
    m_changed.notify_all();
}

void ConversionCrew::record(const ConversionOutcome &outcome)
{
    const std::lock_guard lock(m_mutex);
    m_ended.push_back({outcome});
}

QVector<ConversionOutcome> ConversionCrew::takeFinished()
{
    const std::lock_guard lock(m_mutex);
    QVector<ConversionOutcome> finished;
    for (; !m_ended.empty() && m_ended.front().over; m_ended.pop_front())
        finished.append(m_ended.front().outcome);
    return finished;
}

void ConversionCrew::settle(const QString &path)
{
    std::unique_lock lock(m_mutex);
    if (m_writes.empty())
        return;
    lock.unlock();
    const std::optional<FilePlace> place = filePlace(path);
    lock.lock();
    m_changed.wait(lock, [&] {
        return std::none_of(m_writes.begin(), m_writes.end(),
            [&](const Write &write) { return place && write.place && *write.place == *place; });
    });
}

void ConversionCrew::settleAll()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_writes.empty(); });
}

void ConversionCrew::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        std::erase_if(m_waiting, [](const Job &job) { return !job->wanted; });
        for (const Job &job : m_running)
            job->abandoned = job->abandoned || !job->wanted;
    }
    m_changed.notify_all();
}

bool ConversionCrew::isOver() const
{
    const std::lock_guard lock(m_mutex);
    return m_stopping && m_waiting.empty() && m_running.empty() && m_writes.empty();
}

// --- ahead

/// Within the bound of memory, or when the run waits for this one and nothing gives memory back by itself.
bool ConversionCrew::mayStart(const ConversionJob &job) const
{
    if (m_held == 0 || m_held + job.estimate <= m_budget)
        return true;
    const bool fileOnItsWay = !m_writes.empty() && m_writes.front().job->stage == m_writes.front().job->done();
    return m_running.empty() && !fileOnItsWay && job.place <= m_here;
}

/// The job that a thread may do something for: run the first, or find out what a later one will take.
ConversionCrew::Job ConversionCrew::startable() const
{
    if (m_waiting.empty())
        return {};
    if (m_waiting.front()->estimate >= 0 && mayStart(*m_waiting.front()))
        return m_waiting.front();
    const auto unknown = std::find_if(
        m_waiting.begin(), m_waiting.end(), [](const Job &job) { return job->estimate < 0 && !job->estimating; });
    return unknown == m_waiting.end() ? nullptr : *unknown;
}

void ConversionCrew::work()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        Job job;
        m_changed.wait(lock, [&] { return (job = startable()) || (m_stopping && m_waiting.empty()); });
        if (!job)
            return;
        if (job->estimate < 0)
            estimateNext(lock, job);
        else
            runNext(lock, job);
    }
}

void ConversionCrew::estimateNext(std::unique_lock<std::mutex> &lock, const Job &job)
{
    job->estimating = true;
    lock.unlock();
    const qint64 bytes = estimated(job->work);
    lock.lock();
    job->estimate = bytes;
    m_changed.notify_all();
}

void ConversionCrew::runNext(std::unique_lock<std::mutex> &lock, const Job &job)
{
    m_waiting.pop_front();
    m_running.push_back(job);
    job->running = true;
    setCost(*job, job->estimate);
    lock.unlock();
    carryOut(*job);
    lock.lock();
    job->running = false;
    job->stage = job->done();
    std::erase(m_running, job);
    count(*job);
    lock.unlock();
    changed();
    lock.lock();
}

/// Takes a job to its next stage with what `change` puts into it. False when nobody wants it any more.
template <class Change> bool ConversionCrew::advance(ConversionJob &job, int stage, Change change)
{
    {
        const std::lock_guard lock(m_mutex);
        if (job.abandoned)
            return false;
        change();
        job.stage = stage;
    }
    changed();
    return true;
}

Result<std::shared_ptr<const LoadedPicture>> ConversionCrew::load(ConversionJob &job)
{
    const std::optional<FileStamp> stamp = fileStamp(job.work.path);
    const qint64 now = QDateTime::currentMSecsSinceEpoch() * 1'000'000;
    {
        const std::lock_guard lock(m_mutex);
        job.stamp = stamp;
        job.restless = stamp && stamp->changed > now - restlessNanoseconds;
    }
    return LoadedPicture::load(job.work.path, job.work.sizeIndex, {});
}

void ConversionCrew::carryOut(ConversionJob &job)
{
    const ReservedThread reserved;
    const auto fail = [&](const QString &reason) {
        ignore(advance(job, job.stage, [&] {
            job.failure = job.source ? QString() : reason;
            job.bytes = Result<QByteArray>(Failure{reason});
        }));
    };
    try {
        PolyImage image;
        image.setPolyPicture(job.picture);
        if (!job.picture) {
            auto loaded = load(job);
            if (!loaded)
                return fail(loaded.reason());
            image.setPolyPicture(*loaded);
        }
        if (!advance(job, job.loaded, [&] { job.source = image.held(); }))
            return;
        QString failure;
        for (qsizetype step = 0; step < job.work.steps.size(); ++step) {
            operateNoting(job.work.steps[step], image, failure);
            if (!advance(job, job.operated(step), [] {}))
                return;
        }
        const QString unprepared = job.picture ? QString() : preparePicture(job.work.plan, image);
        const auto keep = [&] {
            job.result = image.held();
            job.stepFailure = failure.isEmpty() ? unprepared : failure;
        };
        if (!advance(job, job.prepared(), keep) || !job.encodes)
            return;
        for (const SaveStep &step : job.work.plan.steps) {
            if (isSaveOption(step))
                ignore(takeStep(step, image));
        }
        Result<QByteArray> bytes = image.encoded(job.work.plan.typeCode, job.work.plan.diffuse);
        const std::lock_guard lock(m_mutex);
        job.bytes = std::move(bytes);
    } catch (const std::exception &problem) {
        fail(QString::fromLocal8Bit(problem.what()));
    }
}
