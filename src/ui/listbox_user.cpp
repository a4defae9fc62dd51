#include "ui/guards.h"
#include "ui/listbox_private.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPointer>

#include <cmath>

namespace {
constexpr double readableContrast = 4.5; // WCAG 2.1, success criterion 1.4.3
}

// --- selection and mark, as the user sets them

template <class Handler> void ListBox::userEvent(Raise raise, Handler handler)
{
    syncSelection();
    {
        const ScopedFlag inUserEvent(d->inUserEvent);
        d->userChange = false;
        handler();
    }
    if (std::exchange(d->userChange, false) || raise == Raise::Always)
        raiseClick();
}

void ListBox::takeOverSelection(const QItemSelection &selected, const QItemSelection &deselected)
{
    if (d->syncing)
        return;
    const auto take = [this](const QItemSelection &ranges, bool value) {
        for (const QItemSelectionRange &range : ranges) {
            for (int row = range.top(); row <= range.bottom() && row < count(); ++row)
                d->selected[std::size_t(row)] = value;
        }
    };
    take(deselected, false);
    take(selected, true);
    if (!selected.isEmpty())
        raiseClickLater();
}

void ListBox::takeOverMark(int row)
{
    if (d->syncing || row == d->listIndex)
        return;
    d->listIndex = row;
    if (row >= 0)
        raiseClickLater();
}

/// A gesture may change selection and mark in several steps; it raises one Click when all of them are done. Changes
/// that come from elsewhere (a screen reader) are a gesture of their own.
void ListBox::raiseClickLater()
{
    d->userChange = true;
    if (d->inUserEvent || std::exchange(d->clickQueued, true))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            d->clickQueued = false;
            if (std::exchange(d->userChange, false))
                raiseClick();
        },
        Qt::QueuedConnection);
}

void ListBox::mousePressEvent(QMouseEvent *event)
{
    const bool clicks = event->button() == Qt::LeftButton && indexAt(event->pos()).isValid();
    placeAnchor(event->modifiers());
    userEvent(clicks ? Raise::Always : Raise::WhenChanged, [&] { QListView::mousePressEvent(event); });
}

void ListBox::mouseMoveEvent(QMouseEvent *event)
{
    syncSelection();
    // A selection that grows under the pressed button is told at its release.
    const ScopedFlag inUserEvent(d->inUserEvent);
    QListView::mouseMoveEvent(event);
    Q_EMIT MouseMove();
}

void ListBox::mouseReleaseEvent(QMouseEvent *event)
{
    const bool grown = std::exchange(d->userChange, false);
    userEvent(grown ? Raise::Always : Raise::WhenChanged, [&] { QListView::mouseReleaseEvent(event); });
}

void ListBox::mouseDoubleClickEvent(QMouseEvent *event)
{
    const bool opens = event->button() == Qt::LeftButton && indexAt(event->pos()).isValid();
    const QPointer<ListBox> guard(this);
    userEvent(Raise::WhenChanged, [&] { QListView::mouseDoubleClickEvent(event); });
    if (opens && guard)
        Q_EMIT DblClick();
}

void ListBox::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const QPointer<ListBox> guard(this);
    if (enter)
        Q_EMIT KeyPress(13);
    else if (!event->text().isEmpty())
        Q_EMIT KeyPress(event->text().at(0).unicode());
    if (!guard)
        return;
    if (enter) {
        event->accept();
        return;
    }
    placeAnchor(event->modifiers());
    userEvent(Raise::WhenChanged, [&] { QListView::keyPressEvent(event); });
}

/// The view keeps to itself from where Shift selects, and learns it only from its own events: after the program has
/// moved the mark it is told by a key that "moves" there.
void ListBox::placeAnchor(Qt::KeyboardModifiers modifiers)
{
    if (!modifiers.testFlag(Qt::ShiftModifier)) {
        d->anchorAtMark = true;
        return;
    }
    if (!std::exchange(d->anchorAtMark, false) || d->listIndex < 0)
        return;
    {
        const ScopedFlag syncing(d->syncing);
        const ScopedFlag priming(d->priming);
        selectionModel()->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
        QListView::keyPressEvent(&key);
    }
    d->stale = true;
    syncSelection();
    const ScopedFlag syncing(d->syncing);
    if (modifiers.testFlag(Qt::ControlModifier)) // what is selected already stays beside the new range
        selectionModel()->select(QItemSelection(), QItemSelectionModel::Select);
}

QModelIndex ListBox::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers)
{
    return d->priming ? d->model->index(d->listIndex) : QListView::moveCursor(action, modifiers);
}

void ListBox::focusInEvent(QFocusEvent *event)
{
    syncSelection();
    // The view would put a mark on the first entry as soon as the list has the focus; looking at a list is no click on
    // it.
    const ScopedFlag syncing(d->syncing);
    QListView::focusInEvent(event);
    if (selectionModel()->currentIndex().row() != d->listIndex)
        selectionModel()->setCurrentIndex(d->model->index(d->listIndex), QItemSelectionModel::NoUpdate);
}

void ListBox::selectAll()
{
    syncSelection();
    QListView::selectAll();
}

void ListBox::keyboardSearch(const QString &search)
{
    // Letters typed quickly belong to one name.
    if (!d->typing.isValid() || d->typing.hasExpired(QApplication::keyboardInputInterval()))
        d->typed.clear();
    d->typing.start();
    d->typed += search;
    const int found = d->model->findFileName(d->typed, d->listIndex);
    if (found >= 0)
        selectionModel()->setCurrentIndex(d->model->index(found), QItemSelectionModel::ClearAndSelect);
}

// --- looks

void ListBox::holdLayout(bool hold)
{
    d->layoutHeld = hold;
    if (!hold)
        scheduleDelayedItemsLayout();
}

void ListBox::holdRows(bool hold)
{
    d->rowsHeld = hold;
    d->rowsShown.start();
    viewport()->setUpdatesEnabled(!hold);
    if (hold)
        return;
    doItemsLayout();
    scrollAsWanted();
}

void ListBox::doItemsLayout()
{
    constexpr int pause = 100; // milliseconds in which a list that runs away is not followed
    if (d->rowsHeld && !d->rowsShown.hasExpired(pause))
        return;
    if (d->rowsHeld) {
        QListView::doItemsLayout();
        viewport()->setUpdatesEnabled(true);
        viewport()->repaint();
        viewport()->setUpdatesEnabled(false);
        d->rowsShown.restart();
        return;
    }
    if (d->layoutHeld && count() > d->laidOut && count() < 2 * d->laidOut)
        return;
    d->laidOut = count();
    QListView::doItemsLayout();
}

void ListBox::setHorizontalExtent(int pixels)
{
    if (pixels == d->delegate->extent)
        return;
    d->delegate->extent = pixels;
    scheduleDelayedItemsLayout();
}

int ListBox::horizontalExtent() const
{
    return d->delegate->extent;
}

int ListBox::widestEntry() const
{
    return d->widths.widest(d->model->texts, font());
}

void ListBox::setBackColor(QRgb rgb)
{
    d->backColor = rgb;
    applyBackColor();
}

QRgb ListBox::backColor() const
{
    return d->backColor;
}

void ListBox::applyBackColor()
{
    const ScopedFlag applying(d->applyingColor);
    const QPalette plain = parentWidget() ? parentWidget()->palette() : QPalette();
    QPalette own = plain;
    own.setResolveMask(0);
    own.setColor(QPalette::Base, QColor(d->backColor));
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        if (colorContrast(d->backColor, plain.color(group, QPalette::Text).rgb()) >= readableContrast)
            continue;
        const bool black =
            colorContrast(d->backColor, qRgb(0, 0, 0)) >= colorContrast(d->backColor, qRgb(255, 255, 255));
        own.setColor(group, QPalette::Text, black ? Qt::black : Qt::white);
    }
    setPalette(own);
}

void ListBox::paintEvent(QPaintEvent *event)
{
    syncSelection();
    QListView::paintEvent(event);
}

void ListBox::changeEvent(QEvent *event)
{
    QListView::changeEvent(event);
    const bool palette = event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange;
    if (palette && !d->applyingColor && testAttribute(Qt::WA_SetPalette))
        applyBackColor();
    if (event->type() == QEvent::FontChange)
        d->widths = {};
}

double colorContrast(QRgb a, QRgb b)
{
    const auto linear = [](int channel) {
        const double value = channel / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](QRgb rgb) {
        return 0.2126 * linear(qRed(rgb)) + 0.7152 * linear(qGreen(rgb)) + 0.0722 * linear(qBlue(rgb));
    };
    const double first = luminance(a) + 0.05;
    const double second = luminance(b) + 0.05;
    return qMax(first, second) / qMin(first, second);
}
