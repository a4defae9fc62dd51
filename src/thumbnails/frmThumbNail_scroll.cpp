#include "thumbnails/frmThumbNail.h"

#include "app/globals.h"
#include "thumbnails/cachetexts.h"
#include "thumbnails/thumbnailsize.h"
#include "ui/guards.h"
#include "ui/yield.h"

#include <QApplication>
#include <QToolTip>
#include <QWheelEvent>

namespace {
constexpr int firstStepAfter = 400; ///< milliseconds that an arrow of the bar is held
constexpr int nextStepAfter = 40;
}

void frmThumbNail::VScroll1_Change()
{
    if (m_settingUp)
        return;
    if (!FormLoaded) {
        ++m_pageTicket; // the first page is for another item now: Form_Activate takes the bar's value
        return;
    }
    if (m_changingPage) {
        scrollTo(VScroll1->value());
        return;
    }
    const QPointer<frmThumbNail> here(this);
    m_changingPage = true;
    do {
        m_wantedTop = -1;
        VScroll1->setEnabled(false);
        TopIndex = VScroll1->value();
        holdFrame();
        ClearThumbnailGrid(PageCapacity, false);
        Yield();
        if (!here || isUnloaded() || globals.ProgramExiting)
            return;
        ShowThumbnailPage();
        if (!here || isUnloaded() || globals.ProgramExiting)
            return;
        Yield();
        if (!here || isUnloaded() || globals.ProgramExiting)
            return;
        applyScrollRange();
        const ScopedFlag settingUp(m_settingUp);
        if (m_wantedTop >= 0)
            VScroll1->setValue(m_wantedTop);
    } while (m_wantedTop >= 0);
    m_changingPage = false;
    if (isArrowHeld())
        m_repeat.start(m_repeating ? nextStepAfter : firstStepAfter);
}

/// The page that begins with this item, as near as the range allows. A page on its way makes room for it.
void frmThumbNail::scrollTo(int top)
{
    if (m_changingPage) {
        m_wantedTop = qBound(0, top, VScroll1->maximum());
        ++m_pageTicket;
    } else if (VScroll1->isEnabled()) {
        VScroll1->setValue(top);
    }
}

void frmThumbNail::showScrollTip(int top)
{
    QToolTip::showText(
        QCursor::pos(), tr("%1 of %2").arg(groupedNumber(top + 1), groupedNumber(itemCount())), VScroll1);
}

/// Steps add up while a page is on its way.
void frmThumbNail::scrollBy(int items)
{
    scrollTo((m_wantedTop >= 0 ? m_wantedTop : TopIndex) + items);
}

void frmThumbNail::wheelEvent(QWheelEvent *event)
{
    constexpr int notch = 120; // eighths of a degree
    m_wheelRest += event->angleDelta().y();
    const int notches = m_wheelRest / notch;
    m_wheelRest -= notches * notch;
    event->accept();
    if (notches == 0)
        return;
    if (event->modifiers() & Qt::ControlModifier) {
        stepSize(notches);
        return;
    }
    const int rows = qBound(1, QApplication::wheelScrollLines(), qMax(1, GridRows / 2));
    scrollBy(-notches * rows * qMax(1, GridColumns));
}

bool frmThumbNail::isArrowHeld() const
{
    const bool step = m_barAction == QScrollBar::SliderSingleStepAdd || m_barAction == QScrollBar::SliderSingleStepSub;
    return step && (QGuiApplication::mouseButtons() & Qt::LeftButton) && VScroll1->underMouse();
}

void frmThumbNail::repeatStep()
{
    const QPointer<frmThumbNail> here(this);
    m_repeating = isArrowHeld();
    if (m_repeating && VScroll1->isEnabled())
        VScroll1->triggerAction(QScrollBar::SliderAction(m_barAction));
    if (here)
        m_repeating = false;
}

/// To a larger size for steps above 0; the last one on either side stays.
void frmThumbNail::stepSize(int steps)
{
    const int size = qBound(smallestThumbnailSize, ThumbnailSize + steps * thumbnailSizeStep, largestThumbnailSize);
    if (size != ThumbnailSize && FormLoaded)
        mnuViewerThumbNailSize_Click(size);
}
