#include "thumbnails/frmThumbNail.h"

#include "app/globals.h"
#include "platform/dialogs.h"
#include "thumbnails/cachetexts.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmDatabaseStats.h"
#include "ui/yield.h"
#include "viewer/frmMessage.h"

#include <QPointer>

#include <utility>

/// The cache is at work until this goes; the window may have gone by then.
class frmThumbNail::CacheWork
{
public:
    explicit CacheWork(frmThumbNail &window)
        : m_window(&window)
    {
        window.m_cacheAtWork = true;
        window.mnuThumbnailS->setEnabled(false);
    }
    ~CacheWork()
    {
        if (!m_window)
            return;
        m_window->m_cacheAtWork = false;
        m_window->mnuThumbnailS->setEnabled(isLoaded<frmDataBase>() && form<frmDataBase>().DatabaseOpen);
    }
    CacheWork(const CacheWork &) = delete;
    CacheWork &operator=(const CacheWork &) = delete;

private:
    QPointer<frmThumbNail> m_window;
};

void frmThumbNail::mnuThumbnailsCompact_Click()
{
    if (m_cacheAtWork)
        return;
    const CacheWork work(*this);
    form<frmMessage>().showOver(this, compactionText(CompactionTakes::Minutes));
    Yield();
    if (!globals.ProgramExiting)
        form<frmDataBase>().CompactDatabase();
    unload<frmMessage>();
}

/// Asks, and empties what is open or the whole table.
void frmThumbNail::clearCache(bool (frmDataBase::*clear)())
{
    if (m_cacheAtWork)
        return;
    const QPointer<frmThumbNail> here(this);
    const auto goesOn = [&] { return here && !isUnloaded() && !globals.ProgramExiting; };
    if (dialogs().show(this, clearCacheQuestion()) != MessageBox::Answer::Yes || !goesOn())
        return;
    bool cleared = false;
    const int size = ThumbnailSize;
    {
        const CacheWork work(*this);
        cleared = (form<frmDataBase>().*clear)();
    }
    if (goesOn() && ThumbnailSize != size) {
        // A size that was chosen meanwhile found the cache at work.
        form<frmDataBase>().CloseDatabase();
        form<frmDataBase>().Form_Load();
    }
    if (goesOn())
        dialogs().show(this, cleared ? cacheClearedBox() : clearingFailedBox());
}

void frmThumbNail::mnuThumbnailsClearAllCache_Click()
{
    clearCache(&frmDataBase::DeleteAllClick);
}

void frmThumbNail::mnuThumbnailsClearCache_Click()
{
    clearCache(&frmDataBase::DeleteAllOfSizeClick);
}

void frmThumbNail::mnuThumbnailStats_Click()
{
    if (m_cacheAtWork)
        return;
    auto &stats = form<frmDatabaseStats>();
    stats.show();
    stats.raise();
    stats.activateWindow();
    if (std::exchange(m_showingStats, true))
        return;
    constexpr int look = 50; // milliseconds
    const QPointer<frmThumbNail> here(this);
    while (isLoaded<frmDatabaseStats>() && form<frmDatabaseStats>().IsOpen && !globals.ProgramExiting && here
        && !isUnloaded())
        YieldFor(look);
    if (here)
        m_showingStats = false;
}
