#include "thumbnails/imageswriter.h"

#include "engine/result.h"
#include "platform/filepath.h"
#include "thumbnails/imagesschema.h"
#include "thumbnails/sqlite.h"

#include <QLoggingCategory>

#include <algorithm>

namespace {
Q_LOGGING_CATEGORY(logWriter, "lumora.cache", QtWarningMsg)

constexpr int patience = 2000; ///< milliseconds for another process
constexpr std::size_t mostWaiting = 2000; ///< records, some ten megabytes
constexpr std::size_t atOnce = 50; ///< records in one transaction

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
        if (m_queue.size() >= mostWaiting)
            return false;
        m_queue.push_back(record);
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

void ImagesWriter::finish()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_queue.empty() && m_writing.empty(); });
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
    if (!connection.open(m_path, SqliteConnection::Open::Existing, patience) || !prepareImagesConnection(connection))
        qCWarning(logWriter, "%s: %s", qPrintable(displayPath(m_path)), qPrintable(connection.reason()));
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, stopping, [this] { return !m_queue.empty(); });
        if (m_queue.empty())
            return; // it is told to stop, and nothing waits
        const auto taken = std::min(m_queue.size(), atOnce);
        std::move(m_queue.begin(), m_queue.begin() + std::ptrdiff_t(taken), std::back_inserter(m_writing));
        m_queue.erase(m_queue.begin(), m_queue.begin() + std::ptrdiff_t(taken));
        lock.unlock();
        write(connection);
        lock.lock();
        m_writing.clear();
        m_changed.notify_all();
    }
}

/// Writes m_writing, which nobody else changes meanwhile: all at once, and one by one when that fails.
void ImagesWriter::write(SqliteConnection &connection)
{
    const auto put = [&](auto first, auto last) {
        const bool written = connection.run("BEGIN IMMEDIATE")
            && std::all_of(first, last, [&](const ImageRecord &record) { return putRecord(connection, record); })
            && connection.run("COMMIT");
        if (!written) {
            m_damaged = m_damaged || connection.isDamaged();
            qCInfo(logWriter, "not stored: %s", qPrintable(connection.reason()));
            ignore(connection.run("ROLLBACK"));
        }
        return written;
    };
    if (put(m_writing.begin(), m_writing.end()))
        return;
    for (auto record = m_writing.begin(); record != m_writing.end() && !m_damaged; ++record)
        ignore(put(record, record + 1));
}
