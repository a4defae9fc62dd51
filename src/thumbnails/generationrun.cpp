#include "thumbnails/generationrun.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "shell/frmPreferences.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmMakeThumbNails.h"
#include "thumbnails/frmThumbNail.h"
#include "thumbnails/thumbnailahead.h"
#include "thumbnails/thumbnailblob.h"
#include "thumbnails/thumbnailrun.h"
#include "thumbnails/thumbnailsize.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QElapsedTimer>

#include <array>

// The run goes through the list as it is at each file; entries that have gone are passed over. Every yield may change
// list, options and sizes or take a window away: after each of them it looks whether all windows are still there, and
// what was made ahead counts only when it is what the file would be made to now.

namespace {

/// Files looked at in one go; those that are in the cache cost a search each.
constexpr int mostLooks = 100;
constexpr qint64 keptSources = 192LL * 1024 * 1024; ///< bytes
/// Of the order of all entries in all passes.
constexpr qint64 passStride = ListBox::maximumCount + 1;

class GenerationRun
{
public:
    GenerationRun(frmThumbNail &viewer, frmMakeThumbNails &progress, GenerationSizes sizes)
        : m_viewer(&viewer)
        , m_progress(&progress)
        , m_allSizes(sizes == GenerationSizes::All)
        , m_ahead(&wakeYield, m_allSizes ? keptSources : 0)
        , m_held{form<checkjpg>().Gvbox2.picture(), form<checkjpg>().polImageBox1.held()}
    {
        m_clock.start();
    }

    void carryOut();

private:
    bool goesOn() const;
    bool passList(int pass);
    bool passFile(int index, int last);
    int sizeOf(int pass) const;
    bool letEventsIn();
    bool userGoesOn();
    void showCount(int index, int last);
    void showRate(int remaining);
    void lookAhead();
    bool isWanted(bool found) const;
    ThumbnailWork workFor(const QString &file, int size) const;
    bool make(const QString &file, ThumbnailDecoder decoder, bool found);
    bool wait(const ThumbnailAhead::Job &job);
    double seconds() const { return double(m_clock.nsecsElapsed()) / 1e9; }

    const QPointer<frmThumbNail> m_viewer;
    const QPointer<frmMakeThumbNails> m_progress;
    const bool m_allSizes;
    ThumbnailAhead m_ahead;
    /// What each decoder has read last, small: it stands in for a file that cannot be read. The run has pictures of its
    /// own, so that those of the display, which are saved and printed, stay.
    std::array<std::shared_ptr<const LoadedPicture>, 2> m_held;
    QElapsedTimer m_clock;
    ThumbnailRate m_rate{0};
    qint64 m_here = 0; ///< pass * passStride + index
    qint64 m_cursor = 0; ///< the next place to look ahead at
};

bool GenerationRun::goesOn() const
{
    return !globals.ProgramExiting && m_viewer && !m_viewer->isUnloaded() && m_progress && isLoaded<frmDataBase>()
        && isLoaded<frmMainViewer>() && isLoaded<frmPreferences>();
}

int GenerationRun::sizeOf(int pass) const
{
    return m_allSizes ? smallestThumbnailSize + pass * thumbnailSizeStep : m_viewer->ThumbnailSize;
}

void GenerationRun::carryOut()
{
    if (!m_allSizes) {
        ignore(passList(0));
        return;
    }
    const int before = m_viewer->ThumbnailSize;
    const int storedBefore = currentThumbnailSize();
    constexpr int passes = (largestThumbnailSize - smallestThumbnailSize) / thumbnailSizeStep + 1;
    for (int pass = 0; pass < passes; ++pass) {
        m_viewer->ThumbnailSize = sizeOf(pass);
        if (!passList(pass))
            break;
    }
    // A size that was chosen in the run is the one of the open records by now.
    if (m_viewer)
        m_viewer->ThumbnailSize = currentThumbnailSize() == storedBefore ? before : currentThumbnailSize();
}

/// False when the run has to end here.
bool GenerationRun::passList(int pass)
{
    const int last = form<frmMainViewer>().lstDisplay->count() - 1;
    for (int index = 0; index <= last; ++index) {
        m_here = pass * passStride + index;
        lookAhead();
        if (!letEventsIn() || !passFile(index, last))
            return false;
    }
    return true;
}

bool GenerationRun::passFile(int index, int last)
{
    const ListBox &list = *form<frmMainViewer>().lstDisplay;
    if (index >= list.count())
        return true;
    const QString file = list.itemText(index);
    showCount(index, last);
    const bool found = form<frmDataBase>().Find_Click(file, m_viewer->ThumbnailSize);
    if (!isWanted(found)) {
        m_progress->lblFileName->setText(frmMakeThumbNails::tr("Scanning"));
        return true;
    }
    m_progress->lblFileName->setText(FileNameOfPath(file));
    const ThumbnailDecoder decoder = thumbnailDecoder(GetMediaKind(file));
    if (decoder != ThumbnailDecoder::None && !make(file, decoder, found))
        return false;
    m_rate.count(seconds());
    showRate(last - index);
    return true;
}

// --- what the window tells and asks

/// Until the file here can be gone on with. False when the run has to end.
bool GenerationRun::letEventsIn()
{
    while (true) {
        YieldUntil([this] { return !goesOn() || !m_progress->KeepGoing || m_ahead.isReady(m_here); });
        if (!goesOn())
            return false;
        if (m_progress->KeepGoing)
            return true;
        if (!userGoesOn())
            return false;
    }
}

bool GenerationRun::userGoesOn()
{
    const MessageBox::Answer answer = dialogs().show(m_progress, cancelRunBox());
    if (!goesOn() || answer == MessageBox::Answer::Yes)
        return false;
    // So that the focus can come to txtClose once more.
    if (!m_allSizes)
        m_progress->chkShowThumbnail->setFocus();
    Yield();
    if (!goesOn())
        return false;
    m_progress->KeepGoing = true;
    Yield();
    return goesOn();
}

void GenerationRun::showCount(int index, int last)
{
    const CountFormat format = m_allSizes ? CountFormat::Plain : CountFormat::Grouped;
    if (m_allSizes)
        m_progress->lblCurrentSize->setText(currentSizeText(m_viewer->ThumbnailSize));
    m_progress->lblFileCount->setText(fileCountText(index, last, format));
    m_progress->pgbThumbnails->setValue(progressValue(index, last));
}

void GenerationRun::showRate(int remaining)
{
    const QString rate = rateText(m_rate.perMinute());
    m_progress->lblSpeed->setText(rate);
    if (!isEstimateDue(remaining, m_rate.perMinute()))
        return;
    if (const auto text = estimateText(remaining, rate))
        m_progress->lblTimeRemaining->setText(*text);
}

// --- making them

bool GenerationRun::isWanted(bool found) const
{
    return !found || form<frmPreferences>().chkOverWriteThumbnails->isChecked();
}

ThumbnailWork GenerationRun::workFor(const QString &file, int size) const
{
    return thumbnailWork(file, size, m_viewer->ThumbnailBackColor, true);
}

/// Guesses which files will be made next.
void GenerationRun::lookAhead()
{
    m_ahead.dropBefore(m_here);
    m_cursor = qMax(m_cursor, m_here);
    const ListBox &list = *form<frmMainViewer>().lstDisplay;
    for (int looks = 0; looks < mostLooks && m_ahead.size() < ThumbnailCrew::depth(); ++looks) {
        int pass = int(m_cursor / passStride);
        if (m_cursor % passStride >= list.count()) {
            ++pass;
            m_cursor = pass * passStride;
        }
        const int size = sizeOf(pass);
        if (list.isEmpty() || pass > (m_allSizes ? m_here / passStride + 1 : 0) || size > largestThumbnailSize)
            return;
        const qint64 place = m_cursor++;
        const QString file = list.itemText(int(place % passStride));
        if (thumbnailDecoder(GetMediaKind(file)) == ThumbnailDecoder::None)
            continue;
        if (isWanted(form<frmDataBase>().Holds(file, size)))
            m_ahead.expect(place, workFor(file, size), true);
    }
}

bool GenerationRun::wait(const ThumbnailAhead::Job &job)
{
    YieldUntil([&] { return !goesOn() || m_ahead.isDone(job); });
    return goesOn();
}

/// False when the run has to end here.
bool GenerationRun::make(const QString &file, ThumbnailDecoder decoder, bool found)
{
    const QDate date = thumbnailDate(file);
    if (!date.isValid()) // a file that is not there leaves no record
        return true;
    const ThumbnailWork work = workFor(file, m_viewer->ThumbnailSize);
    ThumbnailAhead::Job job = m_ahead.take(work);
    bool waited = false;
    if (!job || !m_ahead.isDone(job) || !ThumbnailAhead::isStillTrue(*job)) {
        job = m_ahead.start(work, true);
        waited = true;
        if (!wait(job))
            return false;
    }
    auto &held = m_held[decoder == ThumbnailDecoder::Gvbox ? 0 : 1];
    // A file that cannot be read gets the picture of the one before.
    if (!job->source) {
        job = m_ahead.startFrom(held, work);
        waited = true;
        if (!wait(job))
            return false;
    }
    if (!job->thumbnail)
        return true;
    held = job->source;
    auto &mask = form<checkjpg>().ImageMaskControl1;
    mask.setMaskBackColor(work.look.backColor);
    mask.setMaskStyle(work.look.frame ? 1 : 0);
    mask.setMaskSourcePicture(held);
    mask.setMaskResultPicture(job->thumbnail->current());
    if (m_progress->chkShowThumbnail->isChecked() && held)
        m_progress->showPreview(held->current().pixels);
    auto &cache = form<frmDataBase>();
    // Whoever came in meanwhile may have stood on another record.
    if (waited)
        found = cache.Find_Click(file, work.look.size.width());
    cache.setPicture(job->thumbnail, work.compressionLevel, job->blob);
    const int height = mask.MaskImageHeight();
    const int width = mask.MaskImageWidth();
    mask.setMaskSourcePicture(nullptr);
    cache.Store_Click(!found, file, height, width, date);
    return goesOn();
}

/// The busy pointer over both windows, and no command that would disturb the run or take the viewer away.
class BusyViewer
{
public:
    BusyViewer(frmThumbNail &viewer, frmMakeThumbNails &progress)
        : m_windows{&viewer, &progress}
    {
        for (const auto &window : m_windows)
            window->setCursor(Qt::WaitCursor);
        for (QAction *command :
            {viewer.mnuViewerCloseViewer, viewer.toolbarButton(QStringLiteral("Close")), viewer.mnuThumbnailS}) {
            if (command->isEnabled())
                m_commands.append(command);
            command->setEnabled(false);
        }
    }
    ~BusyViewer()
    {
        for (const auto &window : m_windows) {
            if (window)
                window->unsetCursor();
        }
        for (const auto &command : std::as_const(m_commands)) {
            if (command)
                command->setEnabled(true);
        }
    }
    Q_DISABLE_COPY_MOVE(BusyViewer)

private:
    const std::array<QPointer<QWidget>, 2> m_windows;
    QVector<QPointer<QAction>> m_commands; ///< those that can be given again afterwards
};

}

ThumbnailWork thumbnailWork(const QString &file, int size, const QColor &backColor, bool stores)
{
    ThumbnailWork work;
    work.path = file;
    work.look = {QSize(size, size), backColor, form<frmPreferences>().chkThumbNailStyle->isChecked()};
    if (stores) {
        const int level = number(option("ThumbnailCompressionLevel", "1")).value_or(ThumbnailWork::noBlob);
        work.compressionLevel = thumbnailFormat(level) ? level : ThumbnailWork::noBlob;
    }
    return work;
}

void generateThumbnails(frmThumbNail &viewer, GenerationSizes sizes)
{
    static bool underWay = false;
    if (underWay)
        return;
    const ScopedFlag flag(underWay);
    const QPointer<frmThumbNail> here(&viewer);
    auto &progress = form<frmMakeThumbNails>();
    const QPointer<frmMakeThumbNails> shown(&progress);
    progress.showOver(&viewer);
    {
        const BusyViewer busy(viewer, progress);
        GenerationRun(viewer, progress, sizes).carryOut();
    }
    if (shown) {
        shown->hide();
        unload<frmMakeThumbNails>();
    }
    if (here && !here->isUnloaded() && !globals.ProgramExiting)
        here->mnuViewerRefresh_Click();
}
