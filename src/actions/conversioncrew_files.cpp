#include "actions/conversioncrew.h"

#include <algorithm>

// The files of a run. Each is brought to the disk without a name, several at a time; then they get their names in the
// order of the run, and the folders of those that stand together are synced once.

void ConversionCrew::writeBehind()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        if (canPlace()) {
            placeFirst(lock);
        } else if (const auto write = preparable(); write != m_writes.end()) {
            prepare(lock, *write);
        } else if (m_stopping && m_writes.empty()) {
            return;
        } else {
            m_changed.wait(lock);
        }
    }
}

/// The next file that may be brought to the disk.
ConversionCrew::Writes::iterator ConversionCrew::preparable()
{
    for (auto write = m_writes.begin(); write != m_writes.end(); ++write) {
        if (write->alone && write->state == Write::Waiting) {
            if (write != m_writes.begin() || m_preparing > 0)
                break;
            for (Write &other : m_writes) {
                if (other.state == Write::Prepared)
                    other.state = Write::Waiting;
                other.file.reset();
            }
            return write;
        }
        if (write->alone && write->state == Write::Preparing)
            break;
        const bool isTaken = std::any_of(m_writes.begin(), write,
            [&](const Write &other) { return write->place && other.place && *write->place == *other.place; });
        if (write->state == Write::Waiting && write->job->stage == write->job->done() && !isTaken)
            return write;
    }
    return m_writes.end();
}

void ConversionCrew::prepare(std::unique_lock<std::mutex> &lock, Write &write)
{
    const QString target = write.end->outcome.target;
    const Result<QByteArray> bytes = write.job->bytes.value_or(Failure{write.job->failure});
    write.state = Write::Preparing;
    ++m_preparing;
    lock.unlock();
    auto file = std::make_unique<FileReplacement>(target);
    const Result<void> prepared = bytes ? file->prepare(*bytes) : bytes.failure();
    if (!prepared)
        file.reset();
    lock.lock();
    --m_preparing;
    write.file = std::move(file);
    if (prepared) {
        write.state = Write::Prepared;
    } else if (bytes && !write.alone) {
        write.alone = true;
        write.state = Write::Waiting;
    } else {
        write.state = Write::Failed;
        write.end->outcome.reason = prepared.reason();
    }
    m_changed.notify_all();
}

bool ConversionCrew::canPlace() const
{
    return !m_placing && !m_writes.empty()
        && (m_writes.front().state == Write::Prepared || m_writes.front().state == Write::Failed);
}

/// Gives the first files their names, up to the first that is not on the disk yet.
void ConversionCrew::placeFirst(std::unique_lock<std::mutex> &lock)
{
    m_placing = true;
    std::vector<Write *> first;
    for (Write &write : m_writes) {
        if (write.state != Write::Prepared && write.state != Write::Failed)
            break;
        first.push_back(&write);
    }
    lock.unlock();
    std::vector<Result<void>> results;
    results.reserve(first.size());
    for (const Write *write : first)
        results.push_back(write->file ? write->file->putInPlace() : Failure{write->end->outcome.reason});
    // From the last one back: a folder that is synced behind its last file needs it no more for those before.
    std::vector<FilePlace> synced;
    for (std::size_t i = first.size(); i-- > 0;) {
        const auto isSynced = [&](const FilePlace &folder) {
            return first[i]->place && folder.device == first[i]->place->device
                && folder.folder == first[i]->place->folder;
        };
        if (!results[i] || std::any_of(synced.begin(), synced.end(), isSynced))
            continue;
        results[i] = first[i]->file->makeLast();
        if (results[i] && first[i]->place)
            synced.push_back(*first[i]->place);
    }
    lock.lock();
    for (const Result<void> &result : results) {
        Write &write = m_writes.front();
        if (!result) {
            write.end->outcome.what = ConversionOutcome::NotWritten;
            write.end->outcome.reason = result.reason();
        }
        write.end->over = true;
        write.job->released = true;
        write.job->bytes.reset();
        count(*write.job);
        m_writes.pop_front();
    }
    m_placing = false;
    lock.unlock();
    changed();
    lock.lock();
}
