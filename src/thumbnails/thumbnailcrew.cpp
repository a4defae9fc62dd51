#include "thumbnails/thumbnailcrew.h"

#include <QDateTime>
#include <QHash>

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>

#include <csignal>

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
/// Enough for two pictures of 12 megapixels that no decoder can reduce.
constexpr qint64 memoryBudget = 256 * mebibyte;
/// A file system's clock ticks more slowly than files can change.
constexpr qint64 restlessNanoseconds = 100'000'000;
/// There are as many decoder processes, and one more.
constexpr unsigned mostThreads = 4;

unsigned threadCount()
{
    return std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads);
}

struct KeptSource
{
    FileStamp stamp;
    std::shared_ptr<const LoadedPicture> source;
};

}

/// Shared with the threads, so that one that is still decoding when the crew goes ends in peace.
struct ThumbnailCrew::Private
{
    mutable std::mutex mutex;
    std::condition_variable changed;
    std::deque<Job> waiting;
    qint64 inUse = 0; ///< bytes of memory of the jobs under way
    qint64 room = 0; ///< bytes that more sources may be kept in
    QHash<QString, KeptSource> kept;
    bool stopping = false;
    unsigned threads = 0;
    std::mutex waking; ///< held during a call of `wake`; taken alone
    std::function<void()> wake;

    void work();
    void take(const Job &job, qint64 bytes);
    void carryOut(ThumbnailJob &job);
    std::shared_ptr<const LoadedPicture> source(ThumbnailJob &job);
    std::shared_ptr<const LoadedPicture> keptSource(const ThumbnailJob &job) const;
    void keep(const ThumbnailJob &job, const std::shared_ptr<const LoadedPicture> &source);
    void finish(const Job &job);
};

void ThumbnailCrew::Private::work()
{
    while (true) {
        Job job;
        {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return stopping || !waiting.empty(); });
            if (stopping)
                return;
            job = std::move(waiting.front());
            waiting.pop_front();
        }
        const qint64 bytes = !job->readsFile || keptSource(*job) ? 0 : estimatedThumbnailMemory(job->work.path);
        take(job, bytes);
        carryOut(*job);
        {
            const std::lock_guard lock(mutex);
            inUse -= bytes;
        }
        finish(job);
    }
}

/// Waits until there is room for it, or nobody else is at work.
void ThumbnailCrew::Private::take(const Job &job, qint64 bytes)
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return stopping || job->abandoned || inUse == 0 || inUse + bytes <= memoryBudget; });
    inUse += bytes;
}

void ThumbnailCrew::Private::finish(const Job &job)
{
    {
        const std::lock_guard lock(mutex);
        job->done = true;
    }
    changed.notify_all();
    const std::lock_guard lock(waking);
    if (wake)
        wake();
}

/// Nobody else looks at the job before it is done.
void ThumbnailCrew::Private::carryOut(ThumbnailJob &job)
{
    try {
        const auto from = source(job);
        if (job.readsFile && !from)
            return;
        job.sourceSize = from ? from->info().size : QSize();
        const Picture thumbnail = thumbnailOf(from.get(), job.work.look);
        if (thumbnail.isNull()) {
            job.failure = QStringLiteral("not enough memory");
            return;
        }
        job.thumbnail = LoadedPicture::fromPicture(thumbnail);
        if (job.work.compressionLevel != ThumbnailWork::noBlob)
            job.blob = encodedThumbnail(job.thumbnail, job.work.compressionLevel);
        if (job.keepsSource)
            job.source = from;
    } catch (const std::exception &problem) {
        job.failure = QString::fromLocal8Bit(problem.what());
    }
}

std::shared_ptr<const LoadedPicture> ThumbnailCrew::Private::source(ThumbnailJob &job)
{
    if (!job.readsFile)
        return job.picture ? thumbnailSource(*job.picture) : nullptr;
    job.stamp = fileStamp(job.work.path);
    const qint64 now = QDateTime::currentMSecsSinceEpoch() * 1'000'000;
    job.restless = job.stamp && job.stamp->changed > now - restlessNanoseconds;
    {
        const std::lock_guard lock(mutex);
        if (stopping || job.abandoned)
            return {};
    }
    if (auto known = keptSource(job))
        return known;
    auto loaded = loadThumbnailSource(job.work.path);
    if (!loaded) {
        job.failure = loaded.reason();
        return {};
    }
    keep(job, *loaded);
    return *loaded;
}

std::shared_ptr<const LoadedPicture> ThumbnailCrew::Private::keptSource(const ThumbnailJob &job) const
{
    const std::optional<FileStamp> stamp = fileStamp(job.work.path);
    const std::lock_guard lock(mutex);
    const auto found = kept.constFind(job.work.path);
    return stamp && found != kept.constEnd() && found->stamp == *stamp ? found->source : nullptr;
}

/// A run goes through its list again and again in the same order: what came first is needed first again, and making
/// room for one by the loss of another gains nothing.
void ThumbnailCrew::Private::keep(const ThumbnailJob &job, const std::shared_ptr<const LoadedPicture> &source)
{
    const bool steady = job.stamp && !job.restless && fileStamp(job.work.path) == job.stamp;
    const std::lock_guard lock(mutex);
    if (!steady || source->cost() > room || kept.contains(job.work.path))
        return;
    room -= source->cost();
    kept.insert(job.work.path, {*job.stamp, source});
}

ThumbnailCrew::ThumbnailCrew(std::function<void()> wake, qint64 keptSources)
    : d(std::make_shared<Private>())
{
    d->room = keptSources;
    d->wake = std::move(wake);
    // The program's signals are for its own threads.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    unsigned started = 0;
    try {
        for (; started < threadCount(); ++started)
            std::thread([self = d] { self->work(); }).detach();
    } catch (const std::system_error &) {
        // Fewer do as well; without any the caller does the work.
    }
    d->threads = started;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ThumbnailCrew::~ThumbnailCrew()
{
    {
        const std::lock_guard lock(d->mutex);
        d->stopping = true;
        d->waiting.clear();
        d->kept.clear();
    }
    d->changed.notify_all();
    const std::lock_guard lock(d->waking);
    d->wake = nullptr;
}

int ThumbnailCrew::depth()
{
    return int(threadCount()) * 2 + 2;
}

void ThumbnailCrew::add(const Job &job)
{
    enter(job, false);
}

void ThumbnailCrew::addFirst(const Job &job)
{
    enter(job, true);
}

void ThumbnailCrew::enter(const Job &job, bool first)
{
    if (d->threads == 0) {
        d->carryOut(*job);
        d->finish(job);
        return;
    }
    {
        const std::lock_guard lock(d->mutex);
        d->waiting.insert(first ? d->waiting.begin() : d->waiting.end(), job);
    }
    d->changed.notify_all();
}

void ThumbnailCrew::abandon(const Job &job)
{
    {
        const std::lock_guard lock(d->mutex);
        job->abandoned = true;
        std::erase(d->waiting, job);
    }
    d->changed.notify_all();
}

bool ThumbnailCrew::isDone(const Job &job) const
{
    const std::lock_guard lock(d->mutex);
    return job->done;
}
