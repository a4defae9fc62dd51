#include "platform/filepath.h"
#include "platform/linux/filemove.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include <linux/magic.h>
#include <sys/vfs.h>

namespace {

constexpr std::size_t mostWaiting = 100;
constexpr qint64 mostBytesWaiting = 256 << 20;

using Ended = std::function<bool(int order, const FileOutcome &outcome)>;

class MoveRun
{
public:
    MoveRun(const QVector<MoveOrder> &orders, const Ended &ended, const StillWanted &wanted)
        : m_orders(orders)
        , m_ended(ended)
        , m_wanted(wanted)
    {
    }

    void carryOut();

private:
    struct Waiting
    {
        int order;
        std::unique_ptr<FileMove> move;
    };
    bool add(int order);
    bool canWaitTogether(int order) const;
    bool finishWaiting();
    bool removeSources(std::size_t first, std::size_t end);
    FileOutcome syncCopies() const;
    template <class Step> bool insist(int order, Step step);

    const QVector<MoveOrder> &m_orders;
    const Ended &m_ended;
    const StillWanted &m_wanted;
    std::vector<Waiting> m_waiting; ///< copies without a name, for one folder
    qint64 m_bytesWaiting = 0;
};

void MoveRun::carryOut()
{
    for (int order = 0; order < m_orders.size(); ++order) {
        if (!add(order))
            return;
    }
    finishWaiting();
}

/// Takes a step until it succeeds. False when the answer to its failure is to end.
template <class Step> bool MoveRun::insist(int order, Step step)
{
    while (true) {
        const FileOutcome outcome = step();
        if (outcome)
            return true;
        if (!m_ended(order, outcome))
            return false;
    }
}

/// One folder takes them all, and none has to see what another one leaves.
bool MoveRun::canWaitTogether(int order) const
{
    const MoveOrder &files = m_orders[order];
    const QString folder = SplitFilePath(files.target).folder;
    return std::all_of(m_waiting.begin(), m_waiting.end(), [&](const Waiting &waiting) {
        const MoveOrder &other = m_orders[waiting.order];
        return other.source != files.source && other.target != files.target && other.source != files.target
            && other.target != files.source && SplitFilePath(other.target).folder == folder;
    });
}

bool MoveRun::add(int order)
{
    if (!canWaitTogether(order) && !finishWaiting())
        return false;
    auto move = std::make_unique<FileMove>(m_orders[order]);
    // What is done at once, and what the user will be asked about, comes when those in front of it are done.
    const bool alone = !move->look() || move->isWithinDisk() || move->willFail();
    if (alone && !finishWaiting())
        return false;
    const auto begin = [&] { return move->begin(m_wanted); };
    const FileOutcome begun = begin();
    if (!begun && (!finishWaiting() || !m_ended(order, begun) || !insist(order, begin)))
        return false;
    if (move->isDone()) {
        ignore(m_ended(order, {}));
        return true;
    }
    m_bytesWaiting += move->size();
    m_waiting.push_back({order, std::move(move)});
    const bool full = m_waiting.size() >= mostWaiting || m_bytesWaiting >= mostBytesWaiting;
    return (!alone && !full) || finishWaiting();
}

/// One call for the whole file system is many times faster than one for each file; but a file system in user space does
/// not hear of it.
FileOutcome MoveRun::syncCopies() const
{
    struct statfs system = {};
    bool everything = false;
    for (const Waiting &waiting : m_waiting) {
        const int copy = waiting.move->descriptor();
        if (copy < 0 || everything)
            continue;
        everything = ::fstatfs(copy, &system) == 0 && system.f_type != FUSE_SUPER_MAGIC && ::syncfs(copy) == 0;
        if (!everything && ::fsync(copy) != 0)
            return failedStep(
                QT_TRANSLATE_NOOP("Files", "cannot write to disk"), m_orders[waiting.order].target, errno);
    }
    return {};
}

bool MoveRun::finishWaiting()
{
    if (m_waiting.empty())
        return true;
    bool wanted = insist(m_waiting.front().order, [this] { return syncCopies(); });
    std::size_t finished = 0;
    for (std::size_t i = 0; i < m_waiting.size() && wanted; ++i) {
        const auto &[order, move] = m_waiting[i];
        const FileOutcome placed = move->place();
        if (placed)
            continue;
        // Before anything is asked about this one, those in front of it are done.
        wanted = removeSources(finished, i) && m_ended(order, placed)
            && insist(order, [&step = *move, this] { return step.placeAgain(m_wanted); });
        finished = i;
    }
    wanted = wanted && removeSources(finished, m_waiting.size());
    m_waiting.clear();
    m_bytesWaiting = 0;
    return wanted;
}

bool MoveRun::removeSources(std::size_t first, std::size_t end)
{
    if (first == end)
        return true;
    const bool named = insist(m_waiting[first].order, [&] {
        const int error = m_waiting[first].move->target().sync();
        return error == 0 ? FileOutcome()
                          : failedStep(QT_TRANSLATE_NOOP("Files", "cannot write to disk the name"),
                              m_orders[m_waiting[first].order].target, error);
    });
    for (std::size_t i = first; i < end; ++i) {
        const auto &[order, move] = m_waiting[i];
        if (!named || (!move->isDone() && !insist(order, [&step = *move] { return step.removeSource(); })))
            return false;
        ignore(m_ended(order, {}));
    }
    return true;
}

} // namespace

void moveFiles(const QVector<MoveOrder> &orders, const Ended &ended, const StillWanted &wanted)
{
    MoveRun(orders, ended, wanted).carryOut();
}
