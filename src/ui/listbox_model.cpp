#include "ui/listbox_private.h"

#include "platform/filepath.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QMimeData>
#include <QStyle>

#include <algorithm>
#include <cmath>

void ListBox::Model::append(const QStringList &more)
{
    beginInsertRows({}, int(texts.size()), int(texts.size() + more.size()) - 1);
    texts.append(more);
    endInsertRows();
}

void ListBox::Model::insert(int index, const QString &text)
{
    beginInsertRows({}, index, index);
    texts.insert(index, text);
    endInsertRows();
}

void ListBox::Model::setText(int row, const QString &text)
{
    texts[row] = text;
    Q_EMIT dataChanged(index(row), index(row));
}

void ListBox::Model::removeOne(int row)
{
    beginRemoveRows({}, row, row);
    texts.removeAt(row);
    endRemoveRows();
}

bool ListBox::Model::remove(const std::vector<bool> &goes)
{
    struct Run
    {
        int first;
        int last;
    };
    std::vector<Run> runs;
    for (int row = 0; row < int(goes.size()); ++row) {
        if (!goes[std::size_t(row)])
            continue;
        const int first = row;
        while (row + 1 < int(goes.size()) && goes[std::size_t(row) + 1])
            ++row;
        runs.push_back({first, row});
    }
    constexpr std::size_t cheaperByOne = 32;
    if (runs.size() <= cheaperByOne) {
        for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
            beginRemoveRows({}, run->first, run->last);
            texts.remove(run->first, run->last - run->first + 1);
            endRemoveRows();
        }
        return true;
    }
    QStringList kept;
    kept.reserve(texts.size());
    for (qsizetype row = 0; row < texts.size(); ++row) {
        if (!goes[std::size_t(row)])
            kept.append(texts[row]);
    }
    replace(kept);
    return false;
}

void ListBox::Model::replace(const QStringList &other)
{
    beginResetModel();
    texts = other;
    endResetModel();
}

int ListBox::Model::findFileName(const QString &search, int from) const
{
    const auto count = int(texts.size());
    const int start = search.size() > 1 ? qMax(0, from) : from + 1;
    for (int step = 0; step < count; ++step) {
        const int row = (start + step) % count;
        const QStringView text(texts[row]);
        if (text.sliced(text.lastIndexOf(u'/') + 1).startsWith(search, Qt::CaseInsensitive))
            return row;
    }
    return -1;
}

int ListBox::Model::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(texts.size());
}

QVariant ListBox::Model::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= texts.size() || role != Qt::DisplayRole)
        return {};
    return displayPath(texts[index.row()]);
}

Qt::ItemFlags ListBox::Model::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
}

QStringList ListBox::Model::mimeTypes() const
{
    return {QString::fromLatin1(listDragFormat)};
}

QMimeData *ListBox::Model::mimeData(const QModelIndexList &indexes) const
{
    QByteArray bytes;
    for (const QModelIndex &index : indexes) {
        bytes += pathToBytes(texts.value(index.row()));
        bytes += '\0';
    }
    auto *mime = new QMimeData;
    mime->setData(QString::fromLatin1(listDragFormat), bytes);
    return mime;
}

QSize ListBox::RowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    Q_UNUSED(index);
    const QStyle *style = option.widget ? option.widget->style() : QApplication::style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    return {extent > 0 ? extent + 2 * margin : 0, option.fontMetrics.height() + 4};
}

float EntryWidths::estimate(const QString &text, const QFontMetricsF &metrics)
{
    float sum = 0;
    for (const QChar character : text) {
        float &advance = m_advances[character.unicode()];
        if (advance < 0)
            advance = float(metrics.horizontalAdvance(character.isSurrogate() ? QChar(0xfffd) : character));
        sum += advance;
    }
    return sum;
}

int EntryWidths::widest(const QStringList &texts, const QFont &font)
{
    if (m_known >= 0)
        return m_known;
    if (m_advances.empty())
        m_advances.assign(0x10000, -1.0F);
    const QFontMetricsF metrics(font);
    std::vector<std::pair<float, qsizetype>> order;
    order.reserve(std::size_t(texts.size()));
    for (qsizetype at = 0; at < texts.size(); ++at)
        order.emplace_back(estimate(texts[at], metrics), at);
    // Kerning and joined letters make the sum differ a little from the text as it is drawn.
    const std::size_t measured = qMin<std::size_t>(order.size(), 12);
    std::partial_sort(order.begin(), order.begin() + qsizetype(measured), order.end(), std::greater<>());
    double widest = 0;
    for (std::size_t at = 0; at < measured; ++at)
        widest = qMax(widest, metrics.horizontalAdvance(displayPath(texts[order[at].second])));
    return m_known = int(std::ceil(widest));
}
