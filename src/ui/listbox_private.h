#pragma once

#include "ui/listbox.h"

#include <QAbstractListModel>
#include <QElapsedTimer>
#include <QFont>
#include <QStyledItemDelegate>

#include <optional>
#include <vector>

// The insides of ListBox.

/// The rows. Changes keep to one signal each.
class ListBox::Model : public QAbstractListModel
{
public:
    using QAbstractListModel::QAbstractListModel;

    QStringList texts;

    void append(const QStringList &more);
    void insert(int index, const QString &text);
    void setText(int row, const QString &text);
    void removeOne(int row);
    /// Takes out the marked rows. False when so many places were cut that the model was replaced as a whole.
    bool remove(const std::vector<bool> &goes);
    void replace(const QStringList &other);
    /// The next entry after `from` whose file name starts with `search`, round the end; -1 when there is none. More
    /// than one letter looks at `from` itself too.
    int findFileName(const QString &search, int from) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override { return Qt::CopyAction; }
};

/// A row is as wide as the widest entry and as high as one line.
class ListBox::RowDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    int extent = 0;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

/// Finds the widest of many texts: all of them by the sum of their characters' advances, the best few exactly.
class EntryWidths
{
public:
    int widest(const QStringList &texts, const QFont &font);
    /// The entries are others now.
    void forget() { m_known = -1; }

private:
    float estimate(const QString &text, const class QFontMetricsF &metrics);
    std::vector<float> m_advances; ///< by UTF-16 unit; below 0 not measured yet
    int m_known = -1;
};

/// The drag format: the entries' bytes, each closed by a NUL.
inline constexpr char listDragFormat[] = "application/x-lumora-list-entries";

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
    bool rowsHeld = false;
    QElapsedTimer rowsShown; ///< since the rows were painted while they are held
    int laidOut = 0; ///< entries at the last layout

    mutable EntryWidths widths;
    QRgb backColor = 0;
    bool applyingColor = false;
};
