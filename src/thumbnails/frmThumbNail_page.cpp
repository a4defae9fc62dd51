#include "thumbnails/frmThumbNail.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "engine/decode.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "shell/frmPreferences.h"
#include "thumbnails/cachetexts.h"
#include "thumbnails/thumbnailcell.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmBackground.h"
#include "viewer/frmMainViewer.h"
#include "viewer/statustext.h"

#include <QElapsedTimer>
#include <QLayout>

#include <utility>

// A yield may scroll, lay out anew, change or empty the list, or unload this window. A fill that finds a newer page, or
// no window, ends; what it still needs of the list it asks the list for, item by item.

namespace {

constexpr qint64 frameHeldFor = 50; ///< milliseconds: a page that is done by then appears as a whole
constexpr int nameGap = 4; ///< pixels of a name's label besides its line
constexpr qint64 inputWaitsAtMost = 30; ///< milliseconds between two yields of a fill

int photoCDSizeIndex()
{
    const auto &sizes = form<frmPreferences>().optPhotoCDSize;
    for (int index = sizes.first; index <= sizes.last; ++index) {
        if (sizes[index]->isChecked())
            return index;
    }
    return 0;
}

QString dimensionsOf(const QString &file)
{
    if (GetMediaKind(file) == kindMotion)
        return {};
    const auto info = probeFile(file, usesPhotoCDSize(file) ? photoCDSizeIndex() : -1);
    return info ? dimensionsText(info->size.width(), info->size.height(), info->bitsPerPixel) : QString();
}

/// Raised while a window that may be gone at the end runs a routine.
class PageBusyWhile
{
public:
    explicit PageBusyWhile(frmThumbNail &window)
        : m_window(&window)
        , m_wasBusy(std::exchange(window.PageBusy, true))
        , m_couldClose(window.mnuViewerCloseViewer->isEnabled())
    {
        window.mnuViewerCloseViewer->setEnabled(false);
        window.toolbarButton(QStringLiteral("Close"))->setEnabled(false);
    }
    ~PageBusyWhile()
    {
        if (!m_window || m_wasBusy)
            return;
        m_window->PageBusy = false;
        m_window->mnuViewerCloseViewer->setEnabled(m_couldClose);
        m_window->toolbarButton(QStringLiteral("Close"))->setEnabled(m_couldClose);
    }
    PageBusyWhile(const PageBusyWhile &) = delete;
    PageBusyWhile &operator=(const PageBusyWhile &) = delete;

private:
    QPointer<frmThumbNail> m_window;
    bool m_wasBusy;
    bool m_couldClose; ///< a run over the whole list keeps the viewer
};

}

// --- what is measured

GridMeasures frmThumbNail::measures() const
{
    layout()->activate();
    GridMeasures m;
    m.size = ThumbnailSize;
    m.scrollBar = VScroll1->sizeHint().width();
    m.toolbar = mnuMainToolbar->isChecked() ? tblThumbnails->height() : 0;
    m.statusBar = StatusBar1->height();
    m.label = ShowNames ? lblThumbNail.front()->fontMetrics().height() + nameGap : 0;
    m.width = picGrid->width();
    m.height = m.toolbar + picGrid->height() + m.statusBar;
    return m;
}

ThumbnailGrid frmThumbNail::computeGrid()
{
    const ThumbnailGrid grid = thumbnailGrid(measures());
    GridColumns = grid.columns;
    GridRows = grid.rows;
    PageCapacity = grid.capacity();
    return grid;
}

int frmThumbNail::itemCount() const
{
    const auto &viewer = form<frmMainViewer>();
    return qBound(0, int(leadingNumber(viewer.lblCount->text())), viewer.lstDisplay->count());
}

QString frmThumbNail::itemAt(int index) const
{
    return form<frmMainViewer>().lstDisplay->itemText(index);
}

QStringList frmThumbNail::pageFiles() const
{
    QStringList files;
    for (int index = TopIndex; index < qMin(itemCount(), TopIndex + PageCapacity); ++index)
        files << itemAt(index);
    return files;
}

bool frmThumbNail::isOver(int ticket) const
{
    return ticket != m_pageTicket || isUnloaded() || globals.ProgramExiting;
}

// --- the layout as a whole

void frmThumbNail::applyScrollRange()
{
    const ScrollRange range = scrollRange(itemCount(), PageCapacity, TopIndex);
    VScroll1->setEnabled(range.enabled);
    if (range.maximum)
        VScroll1->setMaximum(*range.maximum);
}

/// Places the bar for the grid and brings the first item of the page into its range.
void frmThumbNail::setUpScrollBar(const GridMeasures &m)
{
    const ScopedFlag settingUp(m_settingUp);
    const int items = itemCount();
    VScroll1->setGeometry(m.width - m.scrollBar, 0, m.scrollBar, picGrid->height());
    VScroll1->setRange(0, qMax(0, items - 1));
    VScroll1->setSingleStep(qMax(1, GridColumns));
    VScroll1->setPageStep(qMax(1, PageCapacity));
    applyScrollRange();
    if (items < TopIndex)
        TopIndex = 0;
    if (VScroll1->isEnabled()) {
        VScroll1->setValue(TopIndex);
        TopIndex = VScroll1->value();
    }
}

void frmThumbNail::SetItUp()
{
    const QPointer<frmThumbNail> here(this);
    const int ticket = ++m_pageTicket;
    computeGrid();
    setUpScrollBar(measures());
    // The size that is laid out: one that comes inside the yields below differs from it.
    LastWidth = width();
    LastHeight = height();
    holdFrame();
    Yield();
    if (!here || isOver(ticket))
        return;
    ClearThumbnailGrid(PageCapacity, false);
    ShowThumbnailPage();
    if (!here || isUnloaded() || globals.ProgramExiting)
        return;
    ShowThumbNailInfo(TopIndex + 1);
    Yield();
}

void frmThumbNail::ClearThumbnailGrid(int count, bool bordersOnly)
{
    if (bordersOnly) {
        for (int cell = qMin(count * 2, int(imgThumbnail.size()) - 1); cell >= 1; --cell)
            imgThumbnail[std::size_t(cell)]->setBorderStyle(0);
        return;
    }
    // A cell that goes must not hand the keyboard to the tool bar.
    if (picGrid->isAncestorOf(focusWidget()))
        picGrid->setFocus();
    for (int cell = qMin(count * 2, int(imgThumbnail.size()) - 1); cell >= 1; --cell) {
        imgThumbnail[std::size_t(cell)]->hide();
        lblThumbNail[std::size_t(cell)]->hide();
    }
    enableSelectionCommands(false);
}

// --- one page

void frmThumbNail::holdFrame()
{
    m_heldSince.start();
    if (!m_frame)
        m_frame.emplace(picGrid);
    // The first thumbnail may be long in coming.
    QTimer::singleShot(frameHeldFor + 1, this, [this] {
        if (m_heldSince.hasExpired(frameHeldFor))
            m_frame.reset();
    });
}

void frmThumbNail::ShowThumbnailPage()
{
    const QPointer<frmThumbNail> here(this);
    const Hourglass hourglass;
    const PageBusyWhile busy(*this);
    const int ticket = ++m_pageTicket;
    const ThumbnailGrid grid = computeGrid();
    lblThumbNail.front()->setText(displayPath(FileNameOfPath(itemAt(TopIndex))));
    m_pageFiles = pageFiles();
    dropSharpening();
    if (itemCount() != TopIndex) {
        if (SelectedIndex < TopIndex || SelectedIndex > TopIndex + PageCapacity)
            ShowThumbNailInfo(-1);
        prepareThumbnails(filesToPrepare());
        fillPage(grid, ticket);
    }
    if (!here || isOver(ticket))
        return;
    m_frame.reset();
    sharpenPage();
    if (std::exchange(m_refreshAfterPage, false))
        m_remake.start(0);
    if (picGrid->hasFocus() && isOnPage(SelectedIndex - TopIndex))
        imgThumbnail[std::size_t(SelectedIndex - TopIndex)]->setFocus();
    Q_EMIT pageShown();
}

QStringList frmThumbNail::filesToPrepare() const
{
    QStringList files;
    for (const QString &file : m_pageFiles) {
        if (GetMediaKind(file) != kindMotion && FileExists(file))
            files << file;
    }
    return files;
}

void frmThumbNail::fillPage(const ThumbnailGrid &grid, int ticket)
{
    const QPointer<frmThumbNail> here(this);
    QElapsedTimer sinceYield;
    sinceYield.start();
    for (int cell = 1; cell <= PageCapacity && cell + TopIndex <= itemCount(); ++cell) {
        placeCell(cell, grid);
        fillCell(cell);
        if (!here || isOver(ticket))
            return;
        imgThumbnail[std::size_t(cell)]->show();
        placeName(cell, grid);
        if (m_heldSince.hasExpired(frameHeldFor))
            m_frame.reset();
        if (!grid.showsPartAfter(cell) && !sinceYield.hasExpired(inputWaitsAtMost))
            continue;
        Yield();
        if (!here || isOver(ticket))
            return;
        sinceYield.start();
    }
}

/// Makes cells up to this number.
ThumbnailCell *frmThumbNail::cellAt(int number)
{
    while (int(imgThumbnail.size()) <= number) {
        const int index = int(imgThumbnail.size());
        auto *cell = new ThumbnailCell(picGrid);
        cell->setObjectName(QStringLiteral("imgThumbnail(%1)").arg(index));
        cell->setToolTip(tr("Click thumbnail to display image information in status bar.  Double-click to show file in "
                            "the Main Viewer."));
        setTabOrder(index > 0 ? imgThumbnail.back() : picGrid, cell);
        cell->hide();
        auto *name = new QLabel(picGrid);
        name->setObjectName(QStringLiteral("lblThumbNail(%1)").arg(index));
        name->setTextFormat(Qt::PlainText);
        name->setAlignment(Qt::AlignCenter);
        name->hide();
        name->installEventFilter(this);
        if (index > 0)
            name->setPalette(lblThumbNail.front()->palette());
        connect(cell, &ThumbnailCell::Click, this, [this, index] { cellClicked(index); });
        connect(cell, &ThumbnailCell::DblClick, this, [this, index] { imgThumbNail_DblClick(index); });
        connect(cell, &ThumbnailCell::MouseUp, this,
            [this, index](Qt::MouseButton button, QPoint position) { imgThumbnail_MouseUp(index, button, position); });
        imgThumbnail.push_back(cell);
        lblThumbNail.push_back(name);
    }
    return imgThumbnail[std::size_t(number)];
}

void frmThumbNail::placeCell(int number, const ThumbnailGrid &grid)
{
    ThumbnailCell *cell = cellAt(number);
    cell->setBorderStyle(0);
    cell->setSign(form<checkjpg>().imgEmpty);
    // The grid counts from the top of the client area, the cells stand in what is below the tool bar.
    const int above = mnuMainToolbar->isChecked() ? tblThumbnails->height() : 0;
    cell->setGeometry(QRect(grid.place(number) - QPoint(0, above), QSize(grid.size, grid.size)));
    cell->setBorderStyle(number + TopIndex == SelectedIndex);
}

/// Gives a cell the thumbnail of its file. May let events in.
void frmThumbNail::fillCell(int number)
{
    const QString file = itemAt(number + TopIndex - 1);
    ThumbnailCell *cell = imgThumbnail[std::size_t(number)];
    cell->setAccessibleName(displayPath(FileNameOfPath(file)));
    if (!FileExists(file)) {
        cell->setSign(form<frmBackground>().imgNotAvailable);
        return;
    }
    CurrentKind = GetMediaKind(file);
    if (CurrentKind == kindMotion) {
        cell->setSign(form<frmBackground>().imgMedia);
        return;
    }
    takeThumbnail(number, file, CurrentKind);
}

/// Puts the thumbnail of a file into a cell. The template may have served another cell by the time it is there; then
/// this one keeps what it has, as it does for a file without a thumbnail.
void frmThumbNail::takeThumbnail(int number, const QString &file, const QString &kind)
{
    const QPointer<frmThumbNail> here(this);
    const int ticket = m_pageTicket;
    const int use = ++m_templateUse;
    MakeOrLoadThumbnail(file, kind);
    if (here && !isOver(ticket) && use == m_templateUse && !m_templatePicture.isNull())
        imgThumbnail[std::size_t(number)]->setPicture(m_templatePicture.pixels);
}

void frmThumbNail::placeName(int number, const ThumbnailGrid &grid)
{
    QLabel *name = lblThumbNail[std::size_t(number)];
    if (!ShowNames) {
        name->hide();
        return;
    }
    const QString text = displayPath(FileNameOfPath(itemAt(number + TopIndex - 1)));
    const QRect face = imgThumbnail[std::size_t(number)]->geometry();
    name->setText(name->fontMetrics().elidedText(text, Qt::ElideMiddle, grid.size));
    name->setToolTip(text);
    name->setAccessibleName(text);
    name->setGeometry(face.left(), face.bottom() + 1, grid.size, grid.label);
    name->raise();
    name->show();
}

bool frmThumbNail::isOnPage(int cell) const
{
    return !isUnloaded() && cell >= 1 && cell <= PageCapacity && cell + TopIndex <= itemCount()
        && cell < int(imgThumbnail.size()) && imgThumbnail[std::size_t(cell)]->isVisibleTo(picGrid);
}

void frmThumbNail::ShowThumbNailInfo(int position)
{
    if (position == -1) {
        for (int panel = 2; panel <= 5; ++panel)
            StatusBar1->setPanelText(panel, QString());
        return;
    }
    const QString file = itemAt(position - 1);
    if (!FileExists(file))
        return;
    const auto stamp = fileStamp(file);
    StatusBar1->setPanelText(2, displayPath(FileNameOfPath(file)));
    StatusBar1->setPanelText(3, dimensionsOf(file));
    StatusBar1->setPanelText(4, groupedNumber(stamp ? stamp->size : 0));
    StatusBar1->setPanelText(5, tr("%1 of %2").arg(groupedNumber(position), groupedNumber(itemCount())));
}
