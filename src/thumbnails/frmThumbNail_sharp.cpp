#include "thumbnails/frmThumbNail.h"

#include "app/globals.h"
#include "engine/rounding.h"
#include "shell/frmPreferences.h"
#include "thumbnails/thumbnailcell.h"
#include "thumbnails/thumbnailcrew.h"
#include "thumbnails/thumbnailsharpening.h"

// On a screen that is scaled up the thumbnails of the cache have too few pixels. A page shows them at once and gets
// sharper ones when it stands, one by one; nothing waits for those, and they are not stored.

namespace {
constexpr qint64 keptSources = 16 << 20; ///< bytes: both thumbnails of a file are made of one decode
}

struct frmThumbNail::Sharpening
{
    struct Cell
    {
        int number;
        QImage shown;
        ThumbnailCrew::Job plain;
        ThumbnailCrew::Job sharp;
    };
    std::vector<Cell> cells;
    ThumbnailCrew crew;

    explicit Sharpening(std::function<void()> wake)
        : crew(std::move(wake), keptSources)
    {
    }

    ThumbnailCrew::Job begun(const ThumbnailWork &work)
    {
        auto job = std::make_shared<ThumbnailJob>();
        job->work = work;
        job->keepsSource = false;
        crew.add(job);
        return job;
    }
};

void frmThumbNail::dropSharpening()
{
    if (!m_sharpening)
        return;
    for (const Sharpening::Cell &cell : m_sharpening->cells) {
        m_sharpening->crew.abandon(cell.plain);
        m_sharpening->crew.abandon(cell.sharp);
    }
    m_sharpening->cells.clear();
}

void frmThumbNail::sharpenPage()
{
    const double ratio = devicePixelRatioF();
    if (ratio <= 1)
        return;
    if (!m_sharpening) {
        const auto wake = [this] { QMetaObject::invokeMethod(this, &frmThumbNail::takeSharper, Qt::QueuedConnection); };
        m_sharpening = std::make_shared<Sharpening>(wake);
    }
    ThumbnailLook look;
    look.size = QSize(ThumbnailSize, ThumbnailSize);
    look.backColor = ThumbnailBackColor;
    look.frame = form<frmPreferences>().chkThumbNailStyle->isChecked();
    ThumbnailWork work;
    const int larger = roundToInt(ThumbnailSize * ratio);
    for (int number = 1; isOnPage(number); ++number) {
        const QImage shown = imgThumbnail[std::size_t(number)]->picture();
        if (shown.isNull())
            continue;
        work.path = itemAt(number + TopIndex - 1);
        work.look = look;
        auto plain = m_sharpening->begun(work);
        work.look.size = QSize(larger, larger);
        work.look.frameWidth = roundToInt(look.frameWidth * ratio);
        m_sharpening->cells.push_back({number, shown, std::move(plain), m_sharpening->begun(work)});
    }
}

void frmThumbNail::takeSharper()
{
    if (!m_sharpening || globals.ProgramExiting)
        return;
    const auto take = [this](const Sharpening::Cell &waiting) {
        if (!m_sharpening->crew.isDone(waiting.plain) || !m_sharpening->crew.isDone(waiting.sharp))
            return false;
        ThumbnailCell *cell = imgThumbnail[std::size_t(waiting.number)];
        const QImage sharper = sharperThumbnail(*waiting.plain, *waiting.sharp, waiting.shown);
        if (!sharper.isNull() && cell->picture().cacheKey() == waiting.shown.cacheKey())
            cell->setPicture(sharper);
        return true;
    };
    std::erase_if(m_sharpening->cells, take);
}
