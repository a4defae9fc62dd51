#include "ui/listbox.h"

#include "ui/guards.h"
#include "ui/listbox_model.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QPointer>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <optional>

namespace {
constexpr double readableContrast = 4.5; // WCAG 2.1, success criterion 1.4.3
}

struct ListBox::Private
{
    Model *model = nullptr;
    RowDelegate *delegate = nullptr;
    std::vector<bool> selected; ///< one per entry
    int listIndex = -1;

    bool stale = false; ///< the view's selection differs from `selected` and `listIndex`
    bool scrollToMark = false;
    std::optional<int> scrollBack; ///< the place to show again after the rows were replaced
    bool syncing = false;
    bool inUserEvent = false;
    bool userChange = false;
    bool clickQueued = false;
    bool anchorAtMark = true; ///< Shift selects from the mark on, not from where it did before
    bool priming = false;

    QString typed; ///< what keyboardSearch looks for, letter by letter
    QElapsedTimer typing;

    bool layoutHeld = false;
    int laidOut = 0; ///< entries at the last layout

    mutable EntryWidths widths;
    QRgb backColor = 0;
    bool applyingColor = false;
};

ListBox::ListBox(QWidget *parent)
    : QListView(parent)
    , d(std::make_unique<Private>())
{
    d->model = new Model(this);
    d->delegate = new RowDelegate(this);
    setModel(d->model);
    setItemDelegate(d->delegate);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setUniformItemSizes(true);
    setTextElideMode(Qt::ElideNone);
    setHorizontalScrollMode(ScrollPerPixel);
    setDragDropMode(NoDragDrop);
    setDefaultDropAction(Qt::CopyAction);
    viewport()->setMouseTracking(true);
    setMouseTracking(true);
    d->backColor = palette().color(QPalette::Base).rgb();
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &ListBox::takeOverSelection);
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
        [this](const QModelIndex &current) { takeOverMark(current.row()); });
}

ListBox::~ListBox()
{
    // The view's destructor takes the selection apart; by then nothing of this box is left to follow it.
    disconnect(selectionModel(), nullptr, this, nullptr);
}

// --- the entries

int ListBox::count() const
{
    return int(d->model->texts.size());
}

QString ListBox::itemText(int index) const
{
    return d->model->texts.value(index);
}

QStringList ListBox::items() const
{
    return d->model->texts;
}

QString ListBox::text() const
{
    return itemText(d->listIndex);
}

bool ListBox::addItem(const QString &text)
{
    return insertItem(count(), text);
}

bool ListBox::addItems(const QStringList &texts)
{
    const qsizetype fitting = qMin<qsizetype>(texts.size(), maximumCount - count());
    if (fitting > 0) {
        d->model->append(fitting == texts.size() ? texts : texts.first(fitting));
        d->selected.resize(std::size_t(count()));
        d->widths.forget();
    }
    return fitting == texts.size();
}

bool ListBox::insertItem(int index, const QString &text)
{
    if (index < 0 || index > count() || count() >= maximumCount)
        return false;
    if (index < count())
        rowsChange();
    d->model->insert(index, text);
    d->selected.insert(d->selected.begin() + index, false);
    d->widths.forget();
    if (d->listIndex >= index)
        ++d->listIndex;
    return true;
}

void ListBox::removeItem(int index)
{
    removeItems({index});
}

void ListBox::removeItems(const QList<int> &ascendingIndices)
{
    std::vector<bool> goes(std::size_t(count()), false);
    for (const int index : ascendingIndices) {
        if (index >= 0 && index < count())
            goes[std::size_t(index)] = true;
    }
    const auto removed = int(std::count(goes.begin(), goes.end(), true));
    if (removed == 0)
        return;
    rowsChange();
    if (!d->model->remove(goes))
        d->scrollBack = verticalScrollBar()->value();

    int before = 0;
    std::size_t to = 0;
    for (std::size_t from = 0; from < goes.size(); ++from) {
        if (!goes[from])
            d->selected[to++] = d->selected[from];
        else if (int(from) < d->listIndex)
            ++before;
    }
    d->selected.resize(to);
    d->listIndex = qMin(d->listIndex - before, count() - 1);
    d->widths.forget();
    selectionIsStale(false);
}

void ListBox::clear()
{
    if (isEmpty())
        return;
    rowsChange();
    d->model->replace({});
    d->selected.clear();
    d->listIndex = -1;
    d->scrollBack.reset();
    d->widths.forget();
}

// --- selection and mark, as the program sets them

int ListBox::listIndex() const
{
    return d->listIndex;
}

void ListBox::setListIndex(int index)
{
    if (index < -1 || index >= count() || index == d->listIndex)
        return;
    setMark(index);
    if (index >= 0)
        raiseClick();
}

bool ListBox::isSelected(int index) const
{
    return index >= 0 && index < count() && d->selected[std::size_t(index)];
}

void ListBox::setSelected(int index, bool selected)
{
    if (index < 0 || index >= count() || (isSelected(index) == selected && (!selected || d->listIndex == index)))
        return;
    d->selected[std::size_t(index)] = selected;
    if (!selected) {
        selectionIsStale(false);
        return;
    }
    setMark(index);
    raiseClick();
}

void ListBox::clearSelections()
{
    if (std::find(d->selected.begin(), d->selected.end(), true) == d->selected.end())
        return;
    d->selected.assign(d->selected.size(), false);
    selectionIsStale(false);
}

void ListBox::selectOnly(int index)
{
    if (index < 0 || index >= count())
        return;
    const bool changes = !isSelected(index) || d->listIndex != index;
    d->selected.assign(d->selected.size(), false);
    d->selected[std::size_t(index)] = true;
    setMark(index);
    if (changes)
        raiseClick();
}

QList<int> ListBox::selectedIndices() const
{
    QList<int> indices;
    for (int index = 0; index < count(); ++index) {
        if (d->selected[std::size_t(index)])
            indices.append(index);
    }
    return indices;
}

void ListBox::setMark(int index)
{
    d->listIndex = index;
    d->anchorAtMark = true;
    selectionIsStale(true);
}

void ListBox::raiseClick()
{
    Q_EMIT Click();
}

/// Before rows go or move: a selection model that has to follow thousands of ranges through each change is what makes
/// list views slow, so it is emptied and filled again afterwards.
void ListBox::rowsChange()
{
    const ScopedFlag syncing(d->syncing);
    if (selectionModel()->hasSelection() || selectionModel()->currentIndex().isValid())
        selectionModel()->reset();
    selectionIsStale(false);
}

void ListBox::selectionIsStale(bool scrollToMark)
{
    d->scrollToMark = d->scrollToMark || scrollToMark;
    if (d->stale)
        return;
    d->stale = true;
    QMetaObject::invokeMethod(this, &ListBox::syncSelection, Qt::QueuedConnection);
    viewport()->update();
}

void ListBox::syncSelection()
{
    if (!d->stale || d->syncing)
        return;
    const ScopedFlag syncing(d->syncing);
    d->stale = false;
    QItemSelection selection;
    for (int row = 0; row < count(); ++row) {
        if (!d->selected[std::size_t(row)])
            continue;
        const int first = row;
        while (row + 1 < count() && d->selected[std::size_t(row) + 1])
            ++row;
        selection.append(QItemSelectionRange(d->model->index(first), d->model->index(row)));
    }
    const bool scrolls = hasAutoScroll();
    setAutoScroll(false);
    selectionModel()->reset();
    selectionModel()->select(selection, QItemSelectionModel::Select);
    selectionModel()->setCurrentIndex(d->model->index(d->listIndex), QItemSelectionModel::NoUpdate);
    setAutoScroll(scrolls);
    if (const auto place = std::exchange(d->scrollBack, std::nullopt)) {
        executeDelayedItemsLayout();
        verticalScrollBar()->setValue(*place);
    }
    if (std::exchange(d->scrollToMark, false) && d->listIndex >= 0) {
        const int sideways = horizontalScrollBar()->value();
        scrollTo(d->model->index(d->listIndex));
        horizontalScrollBar()->setValue(sideways);
    }
    viewport()->update();
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

void ListBox::doItemsLayout()
{
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
