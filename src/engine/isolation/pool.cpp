#include "engine/isolation/pool.h"

#include "engine/codec.h"
#include "engine/limits.h"

#include <QCoreApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <csignal>
#include <cstring>

#include <fcntl.h>

namespace isolation {

namespace {
Q_LOGGING_CATEGORY(logDecoder, "lumora.decoder", QtWarningMsg)

constexpr std::chrono::seconds idlePatience(5);
constexpr std::chrono::seconds introductionPatience(10);
constexpr int attemptsAtWorker = 3;

QByteArray programOf(const DecoderOptions &options)
{
    if (!options.program.isEmpty())
        return options.program;
    for (const QByteArray &folder : moduleFolders()) {
        const QByteArray program = folder + "/lumora-decoder";
        if (access(program.constData(), X_OK) == 0)
            return program;
    }
    return "lumora-decoder";
}

QByteArray modulesOf(const DecoderOptions &options, const QByteArray &program)
{
    if (!options.modules.isEmpty())
        return options.modules;
    const QByteArray asked = qgetenv("LUMORA_MODULES");
    return asked.isEmpty() ? program.left(program.lastIndexOf('/')) : asked;
}

/// Whether a process without a request has said nothing and is still there.
bool isQuiet(const Worker &worker)
{
    return !waitReadable(worker.connection.value(), Clock::time_point());
}

bool introduce(Worker &worker, Ready &ready)
{
    worker.introduced = waitReadable(worker.connection.value(), Clock::now() + introductionPatience)
        && receive(worker.connection.value(), {reinterpret_cast<uchar *>(&ready), sizeof ready}).bytes == sizeof ready
        && ready.kind == Kind::Ready;
    return worker.introduced;
}

}

Pool::Pool(const DecoderOptions &options)
    : m_options(options)
    , m_limit(int(std::clamp(std::thread::hardware_concurrency(), 1U, 4U)) + 1)
{
    of(Family::Quick).wanted = true;
    // The program's signals are for its own threads.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    m_keeper = std::thread([this] { keepHouse(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

Pool::~Pool()
{
    stop();
}

Pool::Lease Pool::acquire(Family family)
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_stopping || m_busy < m_limit; });
    ++m_busy;
    Lease lease;
    for (int attempt = 0; attempt < attemptsAtWorker && !lease.worker; ++attempt) {
        lease.worker = idleWorker(family);
        if (lease.worker)
            break;
        const std::shared_ptr<ZygoteLink> zygote = zygoteOf(family, lock);
        if (!zygote)
            break;
        lock.unlock();
        lease.worker = makeWorker(family, zygote);
        lock.lock();
        if (!lease.worker)
            forget(family, zygote);
    }
    m_work.notify_one(); // for a new spare
    if (!lease.worker) {
        --m_busy;
        m_changed.notify_all();
        lease.lack = m_stopping ? Lack::Stopped : of(family).failed ? Lack::NoProcesses : Lack::NoWorker;
    }
    return lease;
}

/// One of those that wait; those that have died or misbehave meanwhile are put out.
std::unique_ptr<Worker> Pool::idleWorker(Family family)
{
    std::vector<std::unique_ptr<Worker>> &idle = of(family).idle;
    while (!idle.empty()) {
        std::unique_ptr<Worker> worker = std::move(idle.back());
        idle.pop_back();
        if (isQuiet(*worker))
            return worker;
        m_usedUp.push_back(std::move(worker));
    }
    return {};
}

/// Waits until the keeper has started one. None when that fails.
std::shared_ptr<ZygoteLink> Pool::zygoteOf(Family family, std::unique_lock<std::mutex> &lock)
{
    Household &household = of(family);
    household.wanted = true;
    m_work.notify_one();
    m_changed.wait(lock, [&] { return m_stopping || household.failed || household.zygote; });
    return m_stopping || household.failed ? nullptr : household.zygote;
}

/// The zygote does not answer: the next one that needs one gets another.
void Pool::forget(Family family, const std::shared_ptr<ZygoteLink> &zygote)
{
    Household &household = of(family);
    zygote->hangUp();
    if (household.zygote != zygote)
        return;
    household.zygote.reset();
    for (std::unique_ptr<Worker> &worker : household.idle)
        m_usedUp.push_back(std::move(worker));
    household.idle.clear();
}

std::unique_ptr<Worker> Pool::makeWorker(Family family, const std::shared_ptr<ZygoteLink> &zygote)
{
    auto [ours, theirs] = connectedPair();
    // A process that reads nothing must not hold up the program that writes to it.
    if (!ours || fcntl(ours.value(), F_SETFL, O_NONBLOCK) != 0)
        return {};
    auto worker = std::make_unique<Worker>();
    worker->family = family;
    worker->pid = zygote->splitOff(theirs.value());
    worker->connection = std::move(ours);
    worker->zygote = zygote;
    return worker->pid > 0 ? std::move(worker) : nullptr;
}

void Pool::release(std::unique_ptr<Worker> worker)
{
    const std::lock_guard lock(m_mutex);
    --m_busy;
    ++worker->served;
    worker->idleSince = Clock::now();
    const bool goesOn = !m_stopping && worker->served < filesOf(worker->family);
    (goesOn ? of(worker->family).idle : m_usedUp).push_back(std::move(worker));
    m_changed.notify_all();
    m_work.notify_one();
}

QString Pool::discard(std::unique_ptr<Worker> worker, std::chrono::milliseconds grace)
{
    const std::optional<ZygoteAnswer> ended = worker->zygote->end(worker->pid, grace);
    worker.reset();
    const std::lock_guard lock(m_mutex);
    --m_busy;
    m_changed.notify_all();
    m_work.notify_one();
    if (m_stopping || !ended)
        return QCoreApplication::translate("Engine", "the decoder process was ended");
    if (ended->signal != 0)
        return QCoreApplication::translate("Engine", "the decoder process crashed (signal %1, %2)")
            .arg(ended->signal)
            .arg(QString::fromLocal8Bit(strsignal(ended->signal)));
    return QCoreApplication::translate("Engine", "the decoder process ended by itself (status %1)")
        .arg(ended->exitCode);
}

bool Pool::grant(qint64 bytes)
{
    std::unique_lock lock(m_mutex);
    // What is more than all may use together is refused by its size; here it would wait for the others at most.
    m_changed.wait(lock, [&] { return m_stopping || m_granted == 0 || m_granted + bytes <= limits::decodeBudget(); });
    if (m_stopping)
        return false;
    m_granted += bytes;
    return true;
}

void Pool::giveBack(qint64 bytes)
{
    const std::lock_guard lock(m_mutex);
    m_granted -= bytes;
    m_changed.notify_all();
}

std::optional<Arena> Pool::takeArena(qint64 bytes)
{
    {
        const std::lock_guard lock(m_mutex);
        const auto smaller = [](const SpareArena &a, const SpareArena &b) { return a.arena.size() < b.arena.size(); };
        std::sort(m_spareArenas.begin(), m_spareArenas.end(), smaller);
        const auto found = std::find_if(m_spareArenas.begin(), m_spareArenas.end(),
            [&](const SpareArena &spare) { return spare.arena.size() >= bytes; });
        if (found != m_spareArenas.end()) {
            Arena arena = std::move(found->arena);
            m_spareArenas.erase(found);
            return arena;
        }
    }
    return Arena::make(bytes);
}

void Pool::noteLayers(quint32 layers)
{
    const std::lock_guard lock(m_mutex);
    m_layers = m_layersKnown ? m_layers & layers : layers;
    m_layersKnown = true;
}

QString Pool::protection() const
{
    const std::lock_guard lock(m_mutex);
    if (m_households[0].failed || m_households[1].failed)
        return QStringLiteral("No decoder process can be started: files are decoded inside the program.");
    if (!m_layersKnown)
        return QStringLiteral("Files are decoded in processes of their own; none has been needed yet.");
    static constexpr std::pair<Layer, const char *> names[] = {{Limits, "limits of memory and time"},
        {NoNewPrivileges, "no new privileges"}, {FileRules, "no files and no network"}, {CallFilter, "filtered calls"}};
    QStringList inForce;
    QStringList missing;
    for (const auto &[layer, name] : names)
        (m_layers & layer ? inForce : missing).append(QLatin1String(name));
    QString text =
        QStringLiteral("Files are decoded in processes of their own with ") + inForce.join(QStringLiteral(", "));
    if (!missing.isEmpty())
        text += QStringLiteral("; this system does not offer: ") + missing.join(QStringLiteral(", "));
    return text + QLatin1Char('.');
}

std::chrono::milliseconds Pool::patienceFor(qint64 fileBytes) const
{
    return m_options.patience.count() > 0 ? m_options.patience : std::chrono::seconds(limits::decodeSeconds(fileBytes));
}

bool Pool::canStart() const
{
    const std::lock_guard lock(m_mutex);
    return !m_stopping && !of(Family::Quick).failed;
}

void Pool::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        // Their children end with them, and with those every wait for an answer.
        for (const Household &household : m_households) {
            if (household.zygote)
                household.zygote->hangUp();
        }
        m_changed.notify_all();
        m_work.notify_all();
    }
    if (m_keeper.joinable())
        m_keeper.join();
}

void Pool::keepHouse()
{
    std::unique_lock lock(m_mutex);
    while (!m_stopping) {
        if (startWanted(lock) || makeSpare(lock) || endUsedUp(lock))
            continue;
        const Clock::time_point now = Clock::now();
        retireIdle(now);
        if (!m_usedUp.empty())
            continue;
        if (const auto next = nextRetirement(now))
            m_work.wait_until(lock, *next);
        else
            m_work.wait(lock);
    }
    std::array<Household, 2> households = std::move(m_households);
    m_households = {};
    m_usedUp.clear();
    m_spareArenas.clear();
    lock.unlock();
    for (Household &household : households)
        household.idle.clear();
}

bool Pool::startWanted(std::unique_lock<std::mutex> &lock)
{
    for (const Family family : {Family::Quick, Family::Full}) {
        Household &household = of(family);
        if (!household.wanted || household.zygote || household.failed)
            continue;
        lock.unlock();
        const QByteArray program = programOf(m_options);
        Result<std::unique_ptr<ZygoteLink>> started =
            ZygoteLink::start(program, modulesOf(m_options, program), family, m_stopping);
        lock.lock();
        if (m_stopping)
            return true;
        if (started) {
            household.zygote = *std::move(started);
        } else {
            // The other family would fail alike; one line is enough for both.
            if (!m_households[0].failed && !m_households[1].failed)
                qCWarning(logDecoder, "files are decoded inside the program, without protection: %s",
                    qPrintable(started.reason()));
            household.failed = true;
        }
        m_changed.notify_all();
        return true;
    }
    return false;
}

/// One process of each family that is used waits for the next request.
bool Pool::makeSpare(std::unique_lock<std::mutex> &lock)
{
    for (const Family family : {Family::Quick, Family::Full}) {
        Household &household = of(family);
        const std::shared_ptr<ZygoteLink> zygote = household.zygote;
        if (!zygote || !household.idle.empty())
            continue;
        lock.unlock();
        std::unique_ptr<Worker> spare = makeWorker(family, zygote);
        Ready ready;
        const bool good = spare && introduce(*spare, ready);
        if (good)
            noteLayers(ready.layers);
        lock.lock();
        if (!good) {
            forget(family, zygote);
            household.wanted = false;
            return true;
        }
        spare->idleSince = Clock::now();
        household.idle.insert(household.idle.begin(), std::move(spare));
        return true;
    }
    return false;
}

void Pool::keepArenas(Worker &worker)
{
    const Clock::time_point now = Clock::now();
    for (std::optional<Arena> *arena : {&worker.input, &worker.output}) {
        if (*arena && now - worker.idleSince < idlePatience)
            m_spareArenas.push_back({std::move(**arena), now});
    }
}

/// Their arenas serve others once they are gone for sure.
bool Pool::endUsedUp(std::unique_lock<std::mutex> &lock)
{
    if (m_usedUp.empty())
        return false;
    std::unique_ptr<Worker> worker = std::move(m_usedUp.back());
    m_usedUp.pop_back();
    lock.unlock();
    const bool gone = worker->zygote->end(worker->pid, std::chrono::milliseconds(0)).has_value();
    lock.lock();
    if (gone)
        keepArenas(*worker);
    else
        forget(worker->family, worker->zygote);
    lock.unlock();
    worker.reset();
    lock.lock();
    return true;
}

/// Of the processes that nobody uses one stays, without arenas.
void Pool::retireIdle(Clock::time_point now)
{
    std::erase_if(m_spareArenas, [&](const SpareArena &spare) { return now - spare.idleSince >= idlePatience; });
    for (Household &household : m_households) {
        std::vector<std::unique_ptr<Worker>> staying;
        for (std::unique_ptr<Worker> &worker : household.idle) {
            const bool old = now - worker->idleSince >= idlePatience;
            const bool stays = !old || (staying.empty() && !worker->input && !worker->output);
            (stays ? staying : m_usedUp).push_back(std::move(worker));
        }
        household.idle = std::move(staying);
    }
}

/// The first moment after `now` at which another one becomes old. The one that stays is old already, and waiting for
/// its moment again would never wait at all.
std::optional<Clock::time_point> Pool::nextRetirement(Clock::time_point now) const
{
    std::optional<Clock::time_point> next;
    const auto consider = [&](Clock::time_point since) {
        if (since + idlePatience > now && (!next || since + idlePatience < *next))
            next = since + idlePatience;
    };
    for (const SpareArena &spare : m_spareArenas)
        consider(spare.idleSince);
    for (const Household &household : m_households) {
        for (const std::unique_ptr<Worker> &worker : household.idle) {
            if (household.idle.size() > 1 || worker->input || worker->output)
                consider(worker->idleSince);
        }
    }
    return next;
}

}
