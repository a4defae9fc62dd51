#pragma once

#include "thumbnails/imagerecord.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

/// Writes records beside the windows: now and then a write waits for the disk, which a busy one makes a matter of a
/// second. Records that wait are found as if they were written; what cannot be written is dropped and told in the log.
/// While another process keeps the file to itself they go on waiting, but for stop(), which gives up after a moment.
class ImagesWriter
{
public:
    ImagesWriter() = default;
    /// As stop().
    ~ImagesWriter();
    ImagesWriter(const ImagesWriter &) = delete;
    ImagesWriter &operator=(const ImagesWriter &) = delete;

    /// False when more waits than can be kept; the record is dropped then.
    bool add(const QString &path, const ImageRecord &record);
    /// The record of this name and size that waits; names as in ImagesDatabase::find().
    std::optional<ImageRecord> waiting(const QString &name, int size);
    struct Key
    {
        QString name;
        int size = 0;
    };
    /// What waits of one size or of all, each key once.
    std::vector<Key> waiting(std::optional<int> size);
    /// Waits until all is written. False when the time is over before.
    bool finish(std::chrono::milliseconds longest);
    /// Writes all that waits and lets go of the file.
    void stop();
    /// The file was damaged; true until the next stop().
    bool isDamaged() const { return m_damaged; }

private:
    enum class Outcome { Done, Busy };
    void run(const std::stop_token &stopping);
    void take();
    void putBack();
    Outcome write(SqliteConnection &connection);
    bool put(SqliteConnection &connection, std::size_t first, std::size_t end);
    bool noteFailure(SqliteConnection &connection);
    QString m_path;
    std::mutex m_mutex; ///< guards the two queues and the bytes in them
    std::condition_variable_any m_changed;
    std::deque<ImageRecord> m_queue;
    std::deque<ImageRecord> m_writing; ///< taken out of the queue, not yet in the file
    qsizetype m_bytes = 0;
    std::atomic<bool> m_damaged = false;
    std::jthread m_thread;
};
