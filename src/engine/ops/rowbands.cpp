#include "engine/ops/rowbands.h"

#include <QSemaphore>
#include <QThreadPool>

#include <memory>

namespace {

/// Below this a thread costs more than it saves.
constexpr qint64 pixelsWorthAThread = 512 * 1024;

}

void forRowBands(QSize size, const std::function<void(int first, int end)> &work)
{
    QThreadPool &pool = *QThreadPool::globalInstance();
    const qint64 pixels = qint64(size.width()) * size.height();
    const int most = std::min(pool.maxThreadCount(), std::max(1, size.height()));
    const int bands = int(std::clamp<qint64>(pixels / pixelsWorthAThread, 1, most));
    const auto firstRow = [&](int band) { return int(qint64(size.height()) * band / bands); };
    // Shared, because the last band may still be about to leave it when this returns.
    const auto done = std::make_shared<QSemaphore>();
    int away = 0;
    for (int band = 1; band < bands; ++band) {
        const auto task = [&work, done, first = firstRow(band), end = firstRow(band + 1)] {
            work(first, end);
            done->release();
        };
        // Never queued: a band that waits for a thread that waits for bands would wait for ever.
        if (pool.tryStart(task))
            ++away;
        else
            work(firstRow(band), firstRow(band + 1));
    }
    work(firstRow(0), firstRow(1));
    done->acquire(away);
}
