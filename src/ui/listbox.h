#pragma once

#include <QListView>
#include <QStringList>

#include <memory>

/// A list box whose rows are the data: entries are texts and nothing else, addressed from 0, several may be selected.
///
/// `listIndex` is the entry with the focus mark, -1 when there is none; it need not be selected. A change of listIndex
/// or of an entry from not selected to selected raises Click, by the user and by the program alike; clearing a
/// selection, taking the mark away and the bulk operations do not. A click with the mouse raises it also when nothing
/// changed by it. At most `maximumCount` entries: adding past it fails.
///
/// Entries put in or taken out before the mark leave it on its entry; a mark whose entry goes stays at its place, on
/// the last entry at most.
///
/// Selection and mark are kept here, in one bit per entry; the view's own selection follows before the next paint or
/// event. That keeps loops over a full list fast, where a selection model of thousands of ranges would stand still.
///
/// Dragging entries out needs setDragEnabled(true), dropping needs setAcceptDrops(true); both are off at first.
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
    /// Gives an entry another text; selection and mark stay, and nothing is raised.
    void setItemText(int index, const QString &text);
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
    QList<int> selectedIndices() const; ///< ascending

    /// While entries go one by one with events in between, the rows are laid out and painted now and then, not for each
    /// of them. Undone by holdRows(false).
    void holdRows(bool hold);
    /// While many entries come in portions with events in between, the rows are laid out again only each time the list
    /// has doubled, not for each portion. Undone by holdLayout(false).
    void holdLayout(bool hold);
    void doItemsLayout() override;

    /// Width of the widest entry in pixels decides how far the list scrolls sideways.
    void setHorizontalExtent(int pixels);
    int horizontalExtent() const;
    /// The widest entry in pixels; quick for a full list.
    int widestEntry() const;

    /// The list's colour with and without entries; text keeps a contrast of 4.5 on it in light and dark palettes.
    void setBackColor(QRgb rgb);
    QRgb backColor() const;

    /// Typed letters look for a file name: what follows the last separator of an entry.
    void keyboardSearch(const QString &search) override;
    void selectAll() override;

Q_SIGNALS:
    void Click();
    void DblClick();
    /// Before the list's own handling; Enter is 13.
    void KeyPress(int keyCode);
    /// The pointer moves over the list, a button pressed or not.
    void MouseMove();
    /// Text in the list's own drag format was dropped here. Raised when the drop itself is over.
    void DragDrop();
    /// Files and folders from outside were dropped here. Raised when the drop itself is over.
    void filesDropped(const QStringList &paths);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;

private:
    struct Private;
    class Model;
    class RowDelegate;
    enum class Raise { WhenChanged, Always };
    template <class Handler> void userEvent(Raise raise, Handler handler);
    void raiseClick();
    void setMark(int index);
    void rowsChange();
    void selectionIsStale(bool scrollToMark);
    void syncSelection();
    void scrollAsWanted();
    void takeOverSelection(const QItemSelection &selected, const QItemSelection &deselected);
    void takeOverMark(int row);
    void raiseClickLater();
    void placeAnchor(Qt::KeyboardModifiers modifiers);
    void applyBackColor();
    bool accepts(const QDropEvent *event) const;
    std::unique_ptr<Private> d;
};

/// Paths of the local files in a "text/uri-list", bytes that are not UTF-8 kept.
QStringList pathsOfUriList(const QByteArray &uriList);

/// Contrast of two colours, 1 to 21 (WCAG 2.1, relative luminance of sRGB).
double colorContrast(QRgb a, QRgb b);
