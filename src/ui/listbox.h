#pragma once

#include <QListView>
#include <QStringList>

/// A list box whose rows are the data: entries are texts and nothing else, addressed from 0, several may be selected.
///
/// `listIndex` is the entry with the focus mark, -1 when there is none; it need not be selected. A change of listIndex or of
/// an entry from not selected to selected raises Click, by the user and by the program alike; clearing a selection and the
/// bulk operations do not. At most `maximumCount` entries: adding past it fails.
class ListBox : public QListView
{
    Q_OBJECT
public:
    static constexpr int maximumCount = 32767;

    explicit ListBox(QWidget *parent = nullptr);
    ~ListBox() override;

    int count() const;
    bool isEmpty() const { return count() == 0; }
    /// Empty for an index that is not there.
    QString itemText(int index) const;
    QStringList items() const;
    /// The entry at listIndex when there is one.
    QString text() const;

    /// False when the list is full.
    bool addItem(const QString &text);
    /// As many as fit; false when some did not. One repaint.
    bool addItems(const QStringList &texts);
    bool insertItem(int index, const QString &text);
    void removeItem(int index);
    void removeItems(const QList<int> &ascendingIndices);
    void clear();

    int listIndex() const;
    /// Moves the focus mark only; out of range is ignored (-1 takes it away).
    void setListIndex(int index);
    bool isSelected(int index) const;
    /// Selecting moves listIndex there too.
    void setSelected(int index, bool selected);
    void clearSelections();
    /// Makes this the only selected entry and the listIndex; one Click, none when that was already so.
    void selectOnly(int index);
    QList<int> selectedIndices() const;     ///< ascending

    /// Width of the widest entry in pixels decides how far the list scrolls sideways.
    void setHorizontalExtent(int pixels);
    int horizontalExtent() const;
    /// The widest entry in pixels; quick for a full list.
    int widestEntry() const;

    /// The list's colour with and without entries; text keeps a contrast of 4.5 on it in light and dark palettes.
    void setBackColor(QRgb rgb);
    QRgb backColor() const;

Q_SIGNALS:
    void Click();
    void DblClick();
    /// Before the list's own handling; Enter is 13.
    void KeyPress(int keyCode);
    /// Text in the list's own drag format was dropped here.
    void DragDrop();
    /// Files and folders from outside were dropped here.
    void filesDropped(const QStringList &paths);

private:
    struct Private;
    Private *d;
};
