#include "thumbnails/frmDataBase.h"

#include "app/globals.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "thumbnails/frmDatabaseStats.h"
#include "thumbnails/imagescompaction.h"
#include "thumbnails/imagesschema.h"
#include "thumbnails/thumbnailsize.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMessage.h"

#include <QPointer>

#include <atomic>
#include <mutex>
#include <thread>

// What is about many records at once, and takes long with them: it holds the window and lets nothing else near the
// database.

namespace {
constexpr int tick = 20; ///< milliseconds between two looks at long work
}

/// Runs it on a thread of its own, which has the database meanwhile, and lets events in until it has ended.
bool frmDataBase::runBeside(const std::function<bool()> &work, const std::function<void()> &interrupt)
{
    const ScopedFlag working(m_working);
    std::atomic<bool> ended = false;
    bool outcome = false;
    std::jthread worker([&] {
        outcome = work();
        ended = true;
    });
    while (!ended) {
        YieldFor(tick);
        if (globals.ProgramExiting)
            interrupt();
        if (isLoaded<frmMessage>())
            form<frmMessage>().stillWorking();
    }
    worker.join();
    return outcome;
}

bool frmDataBase::DeleteAllOfSizeClick()
{
    if (m_working || !m_database.isOpen())
        return false;
    const bool any = RecordTotal > 0;
    std::atomic<bool> wanted = true;
    const bool emptied =
        runBeside([&] { return m_database.removeAll([&] { return wanted.load(); }); }, [&] { wanted = false; });
    if (emptied) {
        RecordTotal = 0;
        CurrentRecord = any ? 1 : CurrentRecord;
    } else {
        RecordTotal = m_database.count().value_or(0);
    }
    m_current.reset();
    reopenIfDamaged();
    return emptied;
}

bool frmDataBase::DeleteAllClick()
{
    if (m_working)
        return false;
    CloseDatabase();
    OpenImagesDatabase(QStringLiteral("All"));
    const bool emptied = DatabaseOpen && DeleteAllOfSizeClick();
    CloseDatabase();
    OpenImagesDatabase(QString());
    return emptied;
}

bool frmDataBase::CompactDatabase()
{
    if (m_working)
        return false;
    ++m_openings;
    m_current.reset();
    m_database.close();
    const QString folder = AppFolder();
    if (!FileExists(folder + QLatin1String(imagesFile)))
        return false;
    std::mutex mutex;
    SqliteConnection *atWork = nullptr;
    const bool compacted = runBeside(
        [&] {
            m_database.settle();
            const Result<void> done = compactImages(folder, [&](SqliteConnection *connection) {
                const std::lock_guard guard(mutex);
                atWork = connection;
            });
            return bool(done);
        },
        [&] {
            const std::lock_guard guard(mutex);
            if (atWork)
                atWork->interrupt();
        });
    Form_Load();
    const QPointer<frmDataBase> here(this);
    Yield();
    return compacted && here;
}

// --- statistics

qint64 frmDataBase::FileSize()
{
    const QString folder = AppFolder();
    if (!m_working) {
        m_database.settle();
        takeInLog(folder);
    }
    const auto file = fileStamp(folder + QLatin1String(imagesFile));
    return file ? file->size : 0;
}

void frmDataBase::DatabaseStats()
{
    if (m_working)
        return;
    auto &stats = form<frmDatabaseStats>();
    CloseDatabase();
    OpenImagesDatabase(QStringLiteral("All"));
    stats.showTotal(RecordTotal);
    CloseDatabase();
    for (int size = smallestThumbnailSize; size <= largestThumbnailSize; size += thumbnailSizeStep) {
        RecordTotal = 0;
        OpenImagesDatabase(QString::number(size));
        stats.lblThumbnailCount(size)->setText(QString::number(RecordTotal));
        CloseDatabase();
    }
    OpenImagesDatabase(QString());
}
