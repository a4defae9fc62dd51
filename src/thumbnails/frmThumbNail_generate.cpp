#include "thumbnails/frmThumbNail.h"

#include "app/globals.h"
#include "app/mediatypes.h"
#include "platform/files.h"
#include "shell/frmPreferences.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/generationrun.h"
#include "thumbnails/thumbnailahead.h"
#include "ui/yield.h"

// A thumbnail of a page is waited for with events let in. They may change the page, make another thumbnail, or take the
// window away: what is needed afterwards is kept by value or looked for again.

namespace {

/// Makes the thumbnails of a page ahead. Lives as the window's child.
class PageThumbnails : public QObject
{
public:
    static ThumbnailAhead &of(QWidget *window)
    {
        const QString name = QStringLiteral("PageThumbnails");
        auto *page = window->findChild<PageThumbnails *>(name, Qt::FindDirectChildrenOnly);
        if (!page) {
            page = new PageThumbnails(window);
            page->setObjectName(name);
        }
        return page->m_ahead;
    }

private:
    explicit PageThumbnails(QWidget *window)
        : QObject(window)
    {
    }
    ThumbnailAhead m_ahead{&wakeYield};
};

/// The cache is at work until this goes, if it was not before; the window may have gone by then.
class CacheTaken
{
public:
    CacheTaken(QWidget &window, bool &atWork)
        : m_window(&window)
        , m_atWork(atWork)
        , m_taken(!std::exchange(atWork, true))
    {
    }
    ~CacheTaken()
    {
        if (m_window && m_taken)
            m_atWork = false;
    }
    Q_DISABLE_COPY_MOVE(CacheTaken)
    explicit operator bool() const { return m_taken; }

private:
    const QPointer<QWidget> m_window;
    bool &m_atWork;
    const bool m_taken;
};

}

void frmThumbNail::prepareThumbnails(const QStringList &files)
{
    const auto &preferences = form<frmPreferences>();
    const bool caches = preferences.chkCacheThumbnails->isChecked();
    const bool overwrites = preferences.chkOverWriteThumbnails->isChecked();
    ThumbnailAhead &ahead = PageThumbnails::of(this);
    ahead.clear();
    for (const QString &file : files) {
        const bool isPicture = thumbnailDecoder(GetMediaKind(file)) != ThumbnailDecoder::None;
        const bool isCached = caches && !overwrites && isPicture && form<frmDataBase>().Holds(file, ThumbnailSize);
        if (isPicture && !isCached)
            ahead.expect(ahead.size(), thumbnailWork(file, ThumbnailSize, ThumbnailBackColor, caches), false);
    }
}

void frmThumbNail::MakeOrLoadThumbnail(const QString &file, const QString &kind)
{
    setTemplatePicture({});
    if (!FileExists(file))
        return;
    const int size = ThumbnailSize;
    const auto &preferences = form<frmPreferences>();
    const bool caches = preferences.chkCacheThumbnails->isChecked();
    bool found = caches && form<frmDataBase>().Find_Click(file, size);
    if (found && !preferences.chkOverWriteThumbnails->isChecked()) {
        setTemplatePicture(form<frmDataBase>().ImageBox1.PolyPicture());
        return;
    }
    if (thumbnailDecoder(kind) == ThumbnailDecoder::None)
        return;
    const QPointer<frmThumbNail> here(this);
    const int ticket = m_pageTicket;
    const auto goesOn = [&] { return here && !here->isOver(ticket); };
    const ThumbnailWork work = thumbnailWork(file, size, ThumbnailBackColor, caches);
    ThumbnailAhead &ahead = PageThumbnails::of(this);
    ThumbnailAhead::Job job = ahead.take(work);
    bool waited = false;
    const auto isReady = [&] {
        if (!ahead.isDone(job)) {
            waited = true;
            YieldUntil([&] { return !goesOn() || ahead.isDone(job); });
        }
        return goesOn() && ThumbnailAhead::isStillTrue(*job);
    };
    if (!job || (!isReady() && goesOn())) {
        job = ahead.start(work, false);
        isReady();
    }
    if (!goesOn()) {
        if (here)
            ahead.abandon(job);
        return;
    }
    if (!job->thumbnail)
        return;
    const Picture thumbnail = job->thumbnail->current();
    if (caches) {
        auto &cache = form<frmDataBase>();
        // Whoever came in meanwhile may have stood on another record.
        if (waited)
            found = cache.Find_Click(file, size);
        cache.setPicture(job->thumbnail, work.compressionLevel, job->blob);
        const QSize source = job->sourceSize;
        cache.Store_Click(!found, file, source.height(), source.width(), thumbnailDate(file));
    }
    if (goesOn())
        setTemplatePicture(thumbnail);
}

void frmThumbNail::mnuThumbnailsGenerateAll_Click()
{
    const CacheTaken taken(*this, m_cacheAtWork);
    if (taken)
        generateThumbnails(*this, GenerationSizes::Current);
}

void frmThumbNail::mnuThumbnailsGenerateAllSizes_Click()
{
    const CacheTaken taken(*this, m_cacheAtWork);
    if (taken)
        generateThumbnails(*this, GenerationSizes::All);
}
