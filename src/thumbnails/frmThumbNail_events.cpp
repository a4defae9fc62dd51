#include "thumbnails/frmThumbNail.h"

#include "app/globals.h"
#include "app/mediatypes.h"
#include "platform/files.h"
#include "thumbnails/thumbnailcell.h"
#include "ui/guards.h"
#include "viewer/frmBackground.h"
#include "viewer/frmMainViewer.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMenu>

#include <utility>

// --- a click on a cell

void frmThumbNail::imgThumbnail_Click(int cell)
{
    if (!isOnPage(cell))
        return;
    selectCell(cell);
    if (std::exchange(SkipNextClick, false))
        return;
    refreshCell(cell);
}

/// What a click does before it looks at the thumbnail.
void frmThumbNail::selectCell(int cell)
{
    const QString file = itemAt(TopIndex + cell - 1);
    mnupopup[5]->setVisible(GetMediaKind(file) != kindMotion);
    mnupopupmain->setEnabled(true);
    mnupopup[6]->setVisible(false);
    mnupopup[7]->setVisible(false);
    enableSelectionCommands(true);
    const Hourglass hourglass;
    ShowThumbNailInfo(TopIndex + cell);
    SelectedIndex = TopIndex + cell;
    if (SkipNextClick)
        return;
    ClearThumbnailGrid(PageCapacity, true);
    imgThumbnail[std::size_t(cell)]->setBorderStyle(1);
    imgThumbnail[std::size_t(cell)]->setFocus();
}

/// Takes the thumbnail of a cell anew, which makes it anew where thumbnails are to be overwritten.
void frmThumbNail::refreshCell(int cell)
{
    if (!isOnPage(cell))
        return;
    if (PageBusy) {
        // The template is in use for the page.
        m_refreshAfterPage = true;
        return;
    }
    const QString file = itemAt(TopIndex + cell - 1);
    if (!FileExists(file))
        return;
    const QString kind = GetMediaKind(file);
    const Hourglass hourglass;
    if (kind == kindMotion)
        imgThumbnail[std::size_t(cell)]->setSign(form<frmBackground>().imgMedia);
    else
        takeThumbnail(cell, file, kind);
}

/// With the mouse, a click is the first half of a double click until the time for that is over: the thumbnail waits for
/// it, so that a double click makes none.
void frmThumbNail::cellClicked(int cell)
{
    if (SkipNextClick) {
        imgThumbnail_Click(cell);
    } else if (isOnPage(cell)) {
        selectCell(cell);
        m_remake.start(QApplication::doubleClickInterval());
    }
}

void frmThumbNail::imgThumbNail_DblClick(int cell)
{
    m_remake.stop();
    SkipNextClick = true;
    const int index = TopIndex + cell - 1;
    if (PageBusy || index < 0 || index >= itemCount())
        return;
    LeavingViewer = true;
    const QPointer<frmThumbNail> here(this);
    ListBox *list = form<frmMainViewer>().lstDisplay;
    {
        // Shown once, when it is selected.
        const ScopedFlag busy(globals.ItemSelectionBusy);
        list->setListIndex(index);
        list->clearSelections();
    }
    list->setSelected(index, true);
    if (here && !isUnloaded())
        mnuViewerCloseViewer_Click();
}

void frmThumbNail::imgThumbnail_MouseUp(int cell, Qt::MouseButton button, QPoint position)
{
    if (button != Qt::RightButton || PageBusy || !isOnPage(cell))
        return;
    const QPointer<frmThumbNail> here(this);
    imgThumbnail_Click(cell);
    if (!here || isUnloaded() || globals.ProgramExiting)
        return;
    mnupopup[6]->setVisible(false);
    mnupopup[7]->setVisible(false);
    mnupopupmain->menu()->popup(position);
}

bool frmThumbNail::eventFilter(QObject *watched, QEvent *event)
{
    // A click on a name is one on its cell.
    if (event->type() == QEvent::MouseButtonRelease && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        for (std::size_t cell = 1; cell < lblThumbNail.size(); ++cell) {
            if (lblThumbNail[cell] != watched)
                continue;
            cellClicked(int(cell));
            return true;
        }
    }
    return FormMainWindow::eventFilter(watched, event);
}

// --- keys

PagePlace frmThumbNail::pagePlace() const
{
    return {GridColumns, PageCapacity, TopIndex, itemCount(), SelectedIndex};
}

void frmThumbNail::Form_KeyUp(int key)
{
    if (key < int(Arrow::Left) || key > int(Arrow::Down))
        return;
    if (const auto cell = cellForArrow(Arrow(key), pagePlace()))
        imgThumbnail_Click(*cell);
}

bool frmThumbNail::Form_KeyPress(int key)
{
    constexpr int tab = 9;
    const auto cell = key == tab ? cellForTab(pagePlace()) : std::nullopt;
    if (!cell || !isOnPage(*cell))
        return false;
    if (isOnPage(SelectedIndex))
        imgThumbnail[std::size_t(SelectedIndex)]->setBorderStyle(0);
    imgThumbnail_Click(*cell);
    return true;
}

bool frmThumbNail::gridHasKeyboard() const
{
    const QWidget *focus = focusWidget();
    return !focus || focus == picGrid || picGrid->isAncestorOf(focus);
}

bool frmThumbNail::focusNextPrevChild(bool next)
{
    constexpr int tab = 9;
    return (next && gridHasKeyboard() && Form_KeyPress(tab)) || FormMainWindow::focusNextPrevChild(next);
}

void frmThumbNail::keyReleaseEvent(QKeyEvent *event)
{
    FormMainWindow::keyReleaseEvent(event);
    if (!gridHasKeyboard() || event->modifiers() & ~Qt::KeypadModifier)
        return;
    switch (event->key()) {
    case Qt::Key_Left:
        return Form_KeyUp(int(Arrow::Left));
    case Qt::Key_Up:
        return Form_KeyUp(int(Arrow::Up));
    case Qt::Key_Right:
        return Form_KeyUp(int(Arrow::Right));
    case Qt::Key_Down:
        return Form_KeyUp(int(Arrow::Down));
    default:
        break;
    }
}

/// What the bar does with the mouse, and a way to a first cell and out of the window.
void frmThumbNail::keyPressEvent(QKeyEvent *event)
{
    const bool plain = !(event->modifiers() & ~Qt::KeypadModifier);
    switch (plain ? event->key() : 0) {
    case Qt::Key_PageUp:
        return scrollBy(-PageCapacity);
    case Qt::Key_PageDown:
        return scrollBy(PageCapacity);
    case Qt::Key_Home:
        return scrollTo(0);
    case Qt::Key_End:
        return scrollTo(VScroll1->maximum());
    case Qt::Key_Space:
        return imgThumbnail_Click(isOnPage(SelectedIndex - TopIndex) ? SelectedIndex - TopIndex : 1);
    case Qt::Key_Escape:
        if (mnuViewerCloseViewer->isEnabled())
            mnuViewerCloseViewer_Click();
        return;
    default:
        FormMainWindow::keyPressEvent(event);
    }
}

void frmThumbNail::contextMenuEvent(QContextMenuEvent *event)
{
    const int cell = SelectedIndex - TopIndex;
    if (event->reason() == QContextMenuEvent::Keyboard && isOnPage(cell)) {
        const ThumbnailCell *shown = imgThumbnail[std::size_t(cell)];
        imgThumbnail_MouseUp(cell, Qt::RightButton, shown->mapToGlobal(shown->rect().center()));
    }
}

// --- size

void frmThumbNail::resizeEvent(QResizeEvent *event)
{
    FormMainWindow::resizeEvent(event);
    Form_Resize();
}

void frmThumbNail::changeEvent(QEvent *event)
{
    FormMainWindow::changeEvent(event);
    const bool looks = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (looks && FormLoaded && !globals.ProgramExiting) {
        LastWidth = 0; // bars and names have other heights
        Form_Resize();
    }
}

void frmThumbNail::Form_Resize()
{
    if (FormLoaded && !isUnloaded())
        Timer4.start();
}

void frmThumbNail::Timer4_Timer()
{
    if (width() == LastWidth && height() == LastHeight)
        return;
    Timer4.stop();
    LastWidth = width();
    LastHeight = height();
    if (LeavingViewer || globals.ProgramExiting)
        return;
    ClearThumbnailGrid(PageCapacity * 2, false);
    SetItUp();
}
