#include "engine/picturecache.h"

#include "engine/codec.h"
#include "engine/codecs/bytes.h"
#include "engine/isolation.h"
#include "engine/limits.h"
#include "platform/files.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <future>
#include <list>
#include <thread>
#include <vector>

namespace {

using Loaded = std::shared_ptr<const LoadedPicture>;
using Answer = Result<Loaded>;

/// What names a picture: a file in a state, and for a Photo CD which of its sizes.
struct Key
{
    FileStamp file;
    int sizeIndex;
    bool operator==(const Key &) const = default;
};

constexpr int anySize = -2;

int sizeIndexThatCounts(const QString &path, int sizeIndex)
{
    return path.endsWith(QStringLiteral(".pcd"), Qt::CaseInsensitive) ? sizeIndex : anySize;
}

// The picture itself tells when a Photo CD goes by another name.
bool answersFor(const Loaded &picture, int loadedWith, int wanted)
{
    return picture->info().codec != "Photo CD" || loadedWith == wanted;
}

struct Entry
{
    Key key;
    int sizeIndex;
    Loaded picture;
};

/// A decode under way. An empty answer: given up, do it yourself.
struct Flight
{
    Key key;
    int sizeIndex;
    std::promise<std::optional<Answer>> promise;
    std::shared_future<std::optional<Answer>> future = promise.get_future().share();
};

struct Waiting
{
    QString path;
    int sizeIndex;
    QSize target;
    PictureCache::Prepare prepare;
    bool isFirst;
};

}

/// Shared with the threads, so that one that is still decoding when the program lets go of the cache ends in peace.
struct PictureCache::Private : std::enable_shared_from_this<PictureCache::Private>
{
    mutable std::mutex mutex;
    std::condition_variable_any workCame;
    std::list<Entry> entries; ///< the last used first
    std::vector<std::shared_ptr<Flight>> flights;
    std::deque<Waiting> queue;
    std::vector<std::jthread> workers;
    quint64 generation = 0; ///< counts the calls of shutDown; what began before one is not kept

    Loaded find(const Key &key, int sizeIndex);
    std::shared_ptr<Flight> flightOf(const Key &key) const;
    void keep(const Key &key, int sizeIndex, const Loaded &picture);
    void trim();
    qint64 held() const;
    Answer decodeNow(const std::shared_ptr<Flight> &flight, const QString &path, QSize target);
    void land(
        const std::shared_ptr<Flight> &flight, quint64 startedIn, const QString &path, std::optional<Answer> answer);
    std::shared_ptr<Flight> takeOff(const Key &key, int sizeIndex);
    void work(const std::stop_token &stop);
    void decodeAhead(const Waiting &next);
    bool wouldPushOut() const;
    void enlarge(const Loaded &picture, QSize target);
    void startWorkers();
};

Loaded PictureCache::Private::find(const Key &key, int sizeIndex)
{
    const auto hit = std::find_if(entries.begin(), entries.end(),
        [&](const Entry &entry) { return entry.key == key && answersFor(entry.picture, entry.sizeIndex, sizeIndex); });
    if (hit == entries.end())
        return {};
    entries.splice(entries.begin(), entries, hit);
    return hit->picture;
}

std::shared_ptr<Flight> PictureCache::Private::flightOf(const Key &key) const
{
    const auto same = [&](const std::shared_ptr<Flight> &flight) { return flight->key == key; };
    const auto found = std::find_if(flights.begin(), flights.end(), same);
    return found == flights.end() ? nullptr : *found;
}

void PictureCache::Private::keep(const Key &key, int sizeIndex, const Loaded &picture)
{
    // An older state of the same file serves nobody any more.
    entries.remove_if([&](const Entry &entry) {
        const bool sameFile = entry.key.file.device == key.file.device && entry.key.file.inode == key.file.inode;
        return sameFile && (entry.key.file != key.file || (entry.key == key && entry.sizeIndex == sizeIndex));
    });
    entries.push_front({key, sizeIndex, picture});
    trim();
}

void PictureCache::Private::trim()
{
    qint64 bytes = held();
    while (entries.size() > 1 && bytes > limits::cacheBudget()) {
        bytes -= entries.back().picture->cost();
        entries.pop_back();
    }
}

qint64 PictureCache::Private::held() const
{
    qint64 bytes = 0;
    for (const Entry &entry : entries)
        bytes += entry.picture->cost();
    return bytes;
}

std::shared_ptr<Flight> PictureCache::Private::takeOff(const Key &key, int sizeIndex)
{
    auto flight = std::make_shared<Flight>();
    flight->key = key;
    flight->sizeIndex = sizeIndex;
    flights.push_back(flight);
    return flight;
}

void PictureCache::Private::land(
    const std::shared_ptr<Flight> &flight, quint64 startedIn, const QString &path, std::optional<Answer> answer)
{
    // A file that changed while it was read is answered for, but not remembered.
    const bool unchanged = answer && *answer && fileStamp(path) == flight->key.file;
    {
        const std::lock_guard lock(mutex);
        std::erase(flights, flight);
        if (unchanged && startedIn == generation)
            keep(flight->key, flight->sizeIndex, **answer);
    }
    flight->promise.set_value(std::move(answer));
}

Answer PictureCache::Private::decodeNow(const std::shared_ptr<Flight> &flight, const QString &path, QSize target)
{
    quint64 startedIn;
    {
        const std::lock_guard lock(mutex);
        startedIn = generation;
    }
    Answer answer = LoadedPicture::load(path, flight->sizeIndex, target);
    land(flight, startedIn, path, answer);
    return answer;
}

/// Whether one more picture like the newest would take the room of that one or of the one on show: what comes first
/// must not go for what comes after it.
bool PictureCache::Private::wouldPushOut() const
{
    return !entries.empty() && 3 * entries.front().picture->cost() > limits::cacheBudget();
}

void PictureCache::Private::decodeAhead(const Waiting &next)
{
    const std::optional<FileStamp> stamp = fileStamp(next.path);
    if (!stamp)
        return;
    const Key key{*stamp, sizeIndexThatCounts(next.path, next.sizeIndex)};
    std::shared_ptr<Flight> flight;
    Loaded picture;
    {
        const std::lock_guard lock(mutex);
        picture = find(key, next.sizeIndex);
        if (!picture && (flightOf(key) || (!next.isFirst && wouldPushOut())))
            return;
        if (!picture)
            flight = takeOff(key, next.sizeIndex);
    }
    if (picture)
        enlarge(picture, next.target);
    else if (const Answer answer = decodeNow(flight, next.path, next.target))
        picture = *answer;
    if (picture && next.prepare)
        next.prepare(*picture);
}

/// A picture that was decoded for a smaller pane gets the pixels for a larger one.
void PictureCache::Private::enlarge(const Loaded &picture, QSize target)
{
    const QSize size = picture->info().size;
    ignore(picture->atLeast(target.isEmpty() ? size : size.scaled(target, Qt::KeepAspectRatio)));
    const std::lock_guard lock(mutex);
    trim();
}

void PictureCache::Private::work(const std::stop_token &stop)
{
    while (true) {
        Waiting next;
        {
            std::unique_lock lock(mutex);
            if (!workCame.wait(lock, stop, [this] { return !queue.empty(); }) || stop.stop_requested())
                return;
            next = std::move(queue.front());
            queue.pop_front();
        }
        decodeAhead(next);
    }
}

void PictureCache::Private::startWorkers()
{
    if (!workers.empty())
        return;
    const unsigned count = std::clamp(std::thread::hardware_concurrency() / 2, 1U, 4U);
    for (unsigned i = 0; i < count; ++i)
        workers.emplace_back([self = shared_from_this()](const std::stop_token &stop) { self->work(stop); });
}

PictureCache::PictureCache()
    : d(std::make_shared<Private>())
{
}

PictureCache::~PictureCache() = default;

PictureCache &PictureCache::instance()
{
    // Never destroyed: a thread may still be decoding while the program's statics go.
    static PictureCache *const cache = new PictureCache;
    return *cache;
}

Result<Loaded> PictureCache::load(const QString &path, int sizeIndex, QSize target)
{
    const std::optional<FileStamp> stamp = fileStamp(path);
    if (!stamp)
        return LoadedPicture::load(path, sizeIndex, target);
    const Key key{*stamp, sizeIndexThatCounts(path, sizeIndex)};
    std::shared_ptr<Flight> flight;
    bool isOurs = false;
    Loaded picture;
    {
        const std::lock_guard lock(d->mutex);
        picture = d->find(key, sizeIndex);
        flight = picture ? nullptr : d->flightOf(key);
        if (!picture && !flight) {
            flight = d->takeOff(key, sizeIndex);
            isOurs = true;
        }
    }
    if (isOurs)
        return d->decodeNow(flight, path, target);
    if (!picture) {
        const std::optional<Answer> answer = flight->future.get();
        if (!answer || (*answer && !answersFor(**answer, flight->sizeIndex, sizeIndex)))
            return d->decodeNow(std::make_shared<Flight>(Flight{key, sizeIndex, {}}), path, target);
        if (!*answer)
            return *answer;
        picture = **answer;
    }
    d->enlarge(picture, target);
    return picture;
}

void PictureCache::prefetch(const QStringList &paths, int sizeIndex, QSize target, const Prepare &prepare)
{
    const std::lock_guard lock(d->mutex);
    d->queue.clear();
    for (const QString &path : paths)
        d->queue.push_back({path, sizeIndex, target, prepare, d->queue.empty()});
    d->startWorkers();
    d->workCame.notify_all();
}

void PictureCache::startEarly(const QString &path, int sizeIndex, QSize target)
{
    const std::optional<FileStamp> stamp = fileStamp(path);
    if (!stamp)
        return;
    const std::lock_guard lock(d->mutex);
    const Key key{*stamp, sizeIndexThatCounts(path, sizeIndex)};
    if (d->find(key, sizeIndex) || d->flightOf(key))
        return;
    const std::shared_ptr<Flight> flight = d->takeOff(key, sizeIndex);
    const auto decodeEarly = [self = d, flight, path, target, startedIn = d->generation] {
        Result<EncodedFile> file = readEncodedFile(path);
        const bool elsewhere = decoderProcessesRun();
        const auto fits = [&](const Codec *codec) {
            const Bytes bytes = file ? bytesOf(file->bytes) : Bytes();
            return (codec->worksEarly || elsewhere) && codec->sniff
                && codec->sniff(bytes.first(std::min<size_t>(bytes.size(), 64)));
        };
        const auto table = codecTable();
        std::optional<Answer> answer;
        // Others want the application object; they are left to the load that follows.
        if (std::any_of(table.begin(), table.end(), fits))
            answer = LoadedPicture::fromFile(*std::move(file), flight->sizeIndex, target);
        self->land(flight, startedIn, path, std::move(answer));
    };
    std::thread(decodeEarly).detach();
}

void PictureCache::shutDown()
{
    const std::lock_guard lock(d->mutex);
    ++d->generation;
    d->queue.clear();
    d->entries.clear();
    for (std::jthread &worker : d->workers) {
        worker.request_stop();
        worker.detach();
    }
    d->workers.clear();
}

qint64 PictureCache::bytesHeld() const
{
    const std::lock_guard lock(d->mutex);
    d->trim();
    return d->held();
}
