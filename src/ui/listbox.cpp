#include "ui/listbox.h"

#include "ui/guards.h"
#include "ui/listbox_private.h"

#include <QScrollBar>

#include <algorithm>

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

void ListBox::setItemText(int index, const QString &text)
{
    if (index < 0 || index >= count())
        return;
    d->model->setText(index, text);
    d->widths.forget();
}

void ListBox::removeItem(int index)
{
    if (index < 0 || index >= count())
        return;
    rowsChange();
    d->model->removeOne(index);
    d->selected.erase(d->selected.begin() + index);
    d->listIndex = qMin(d->listIndex - int(index < d->listIndex), count() - 1);
    d->widths.forget();
    selectionIsStale(false);
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
    if (!d->rowsHeld)
        scrollAsWanted();
    viewport()->update();
}

void ListBox::scrollAsWanted()
{
    if (const auto place = std::exchange(d->scrollBack, std::nullopt)) {
        executeDelayedItemsLayout();
        verticalScrollBar()->setValue(*place);
    }
    if (std::exchange(d->scrollToMark, false) && d->listIndex >= 0) {
        const int sideways = horizontalScrollBar()->value();
        scrollTo(d->model->index(d->listIndex));
        horizontalScrollBar()->setValue(sideways);
    }
}
