#include "viewer/preview.h"

#include "app/mediatypes.h"
#include "engine/decode.h"
#include "platform/files.h"

#include <QPointer>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

namespace {

using Answer = std::function<void(const FilePreview &)>;

struct Order
{
    PreviewQuestion question;
    QPointer<QObject> context;
    Answer answer;
    int ticket = 0;
};

/// One thread for the life of the program: closing a dialog never waits for a decoder.
class PreviewThread
{
public:
    PreviewThread()
        : m_thread([this](const std::stop_token &stop) { run(stop); })
    {
    }

    void take(Order order)
    {
        {
            const std::lock_guard lock(m_mutex);
            order.ticket = ++m_latest;
            m_waiting = std::move(order);
        }
        m_arrived.notify_one();
    }

private:
    void run(const std::stop_token &stop)
    {
        while (true) {
            std::unique_lock lock(m_mutex);
            if (!m_arrived.wait(lock, stop, [this] { return m_waiting.has_value(); }))
                return;
            const Order order = *std::exchange(m_waiting, std::nullopt);
            lock.unlock();
            const FilePreview preview = readPreview(order.question);
            QMetaObject::invokeMethod(
                &m_home,
                [this, order, preview] {
                    if (order.ticket == m_latest && order.context)
                        order.answer(preview);
                },
                Qt::QueuedConnection);
        }
    }

    QObject m_home; ///< lives where the questions come from; answers are posted to it
    std::mutex m_mutex;
    std::condition_variable_any m_arrived;
    std::optional<Order> m_waiting;
    int m_latest = 0; ///< changed only by the asking thread
    std::jthread m_thread; ///< last: it ends before what it uses
};

} // namespace

void requestPreview(const PreviewQuestion &question, QObject *context, const Answer &answer)
{
    static PreviewThread thread;
    thread.take({question, context, answer, 0});
}

FilePreview readPreview(const PreviewQuestion &question)
{
    FilePreview preview;
    preview.path = question.path;
    const std::optional<FileStamp> stamp = fileStamp(question.path);
    if (!stamp)
        return preview;
    preview.bytes = stamp->size;
    if (GetMediaKind(question.path) == kindMotion)
        return preview;
    DecodeHint hint;
    hint.target = question.target;
    hint.sizeIndex = usesPhotoCDSize(question.path) ? question.photoCDSize : 0;
    const Result<Picture> picture = decodeFile(question.path, hint);
    if (!picture || picture->isNull())
        return preview;
    preview.size = picture->info.size;
    preview.bitsPerPixel = picture->info.bitsPerPixel;
    const QSize fitted = picture->pixels.size().scaled(question.target, Qt::KeepAspectRatio);
    const bool larger = fitted.width() >= picture->pixels.width();
    preview.image = larger
        ? picture->pixels
        : picture->pixels.scaled(fitted.expandedTo(QSize(1, 1)), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return preview;
}
