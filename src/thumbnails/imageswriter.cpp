#include "thumbnails/imageswriter.h"

#include "engine/result.h"
#include "platform/filepath.h"
#include "thumbnails/imagesschema.h"
#include "thumbnails/sqlite.h"

#include <QLoggingCategory>
#include <QSet>

#include <algorithm>
#include <iterator>

namespace {
Q_LOGGING_CATEGORY(logWriter, "lumora.cache", QtWarningMsg)

constexpr int patience = 250; ///< milliseconds for another process, at each attempt
constexpr int lastAttempts = 4; ///< when it is told to stop
constexpr std::chrono::milliseconds betweenAttempts(100);
constexpr std::size_t mostWaiting = 2000; ///< records: each find looks at all of them
constexpr qsizetype mostBytesWaiting = 32 * 1024 * 1024;
constexpr std::size_t atOnce = 50; ///< records in one transaction

qsizetype bytesOf(const ImageRecord &record)
{
    return record.picture.size() + record.name.size() * qsizetype(sizeof(QChar)) + qsizetype(sizeof record);
}

}

ImagesWriter::~ImagesWriter()
{
    stop();
}

bool ImagesWriter::add(const QString &path, const ImageRecord &record)
{
    if (path != m_path) {
        stop();
        m_path = path;
    }
    {
        const std::lock_guard guard(m_mutex);
        if (m_queue.size() >= mostWaiting || m_bytes >= mostBytesWaiting)
            return false;
        m_queue.push_back(record);
        m_bytes += bytesOf(record);
    }
    m_changed.notify_all();
    if (!m_thread.joinable())
        m_thread = std::jthread([this](const std::stop_token &stopping) { run(stopping); });
    return true;
}

std::optional<ImageRecord> ImagesWriter::waiting(const QString &name, int size)
{
    const std::lock_guard guard(m_mutex);
    const auto isIt = [&](const ImageRecord &record) {
        return record.thumbnailSize == size && record.name.size() == name.size()
            && record.name.compare(name, Qt::CaseInsensitive) == 0 && isSameImage(record.name, name);
    };
    // The one that came last is the one that will stay.
    for (const std::deque<ImageRecord> *records : {&m_queue, &m_writing}) {
        const auto found = std::find_if(records->rbegin(), records->rend(), isIt);
        if (found != records->rend())
            return *found;
    }
    return {};
}

std::vector<ImagesWriter::Key> ImagesWriter::waiting(std::optional<int> size)
{
    const std::lock_guard guard(m_mutex);
    std::vector<Key> keys;
    QSet<std::pair<QString, int>> known;
    for (const std::deque<ImageRecord> *records : {&m_writing, &m_queue}) {
        for (const ImageRecord &record : *records) {
            const qsizetype before = known.size();
            known.insert({record.name.toCaseFolded(), record.thumbnailSize});
            if (known.size() > before && size.value_or(record.thumbnailSize) == record.thumbnailSize)
                keys.push_back({record.name, record.thumbnailSize});
        }
    }
    return keys;
}

bool ImagesWriter::finish(std::chrono::milliseconds longest)
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, longest, [this] { return m_queue.empty() && m_writing.empty(); });
}

void ImagesWriter::stop()
{
    if (m_thread.joinable()) {
        m_thread.request_stop();
        m_thread.join();
    }
    m_damaged = false;
}

void ImagesWriter::run(const std::stop_token &stopping)
{
    SqliteConnection connection;
    int attempts = 0;
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, stopping, [this] { return !m_queue.empty(); });
        if (m_queue.empty())
            return; // it is told to stop, and nothing waits
        take();
        lock.unlock();
        const Outcome outcome = write(connection);
        lock.lock();
        if (outcome == Outcome::Busy)
            putBack();
        for (const ImageRecord &record : std::as_const(m_writing))
            m_bytes -= bytesOf(record);
        m_writing.clear();
        m_changed.notify_all();
        if (outcome == Outcome::Done)
            continue;
        if (stopping.stop_requested() && ++attempts >= lastAttempts) {
            qCInfo(logWriter, "%zu not stored: another process has the file", m_queue.size());
            m_queue.clear();
            m_bytes = 0;
        }
        m_changed.wait_for(lock, stopping, betweenAttempts, [] { return false; });
    }
}

void ImagesWriter::take()
{
    const auto end = m_queue.begin() + std::ptrdiff_t(std::min(m_queue.size(), atOnce));
    std::move(m_queue.begin(), end, std::back_inserter(m_writing));
    m_queue.erase(m_queue.begin(), end);
}

void ImagesWriter::putBack()
{
    m_queue.insert(m_queue.begin(), std::move_iterator(m_writing.begin()), std::move_iterator(m_writing.end()));
    m_writing.clear();
}

/// Writes m_writing, which nobody else changes meanwhile: all at once, and one by one when that fails.
ImagesWriter::Outcome ImagesWriter::write(SqliteConnection &connection)
{
    const bool isReady = (connection.isOpen() && !connection.isMoved())
        || (connection.open(m_path, SqliteConnection::Open::Existing, patience) && prepareImagesConnection(connection));
    if (!isReady) {
        const bool isBusy = noteFailure(connection);
        connection.close();
        return isBusy ? Outcome::Busy : Outcome::Done;
    }
    if (put(connection, 0, m_writing.size()))
        return Outcome::Done;
    if (noteFailure(connection))
        return Outcome::Busy;
    for (std::size_t at = 0; at < m_writing.size() && !m_damaged; ++at) {
        if (!put(connection, at, at + 1) && noteFailure(connection))
            break;
    }
    return Outcome::Done;
}

bool ImagesWriter::put(SqliteConnection &connection, std::size_t first, std::size_t end)
{
    const auto records = m_writing.begin();
    return connection.run("BEGIN IMMEDIATE")
        && std::all_of(records + std::ptrdiff_t(first), records + std::ptrdiff_t(end),
            [&](const ImageRecord &record) { return putRecord(connection, record); })
        && connection.run("COMMIT");
}

/// What the last failure was, and the end of what it was in. True for another process that has the file.
bool ImagesWriter::noteFailure(SqliteConnection &connection)
{
    const bool isBusy = connection.isBusy();
    m_damaged = m_damaged || (connection.isDamaged() && !connection.isMoved());
    if (!isBusy)
        qCInfo(logWriter, "not stored: %s", qPrintable(connection.reason()));
    ignore(connection.run("ROLLBACK"));
    return isBusy;
}
