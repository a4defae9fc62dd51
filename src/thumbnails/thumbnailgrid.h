#pragma once

#include <QPoint>

#include <optional>

/// What the grid of thumbnails is laid out in: all in pixels of the window.
struct GridMeasures
{
    int size = 0; ///< edge of a thumbnail
    int width = 0; ///< of the client area, which tool bar and status bar stand in too
    int height = 0;
    int scrollBar = 0; ///< its width
    int toolbar = 0; ///< its height; 0 when it is off
    int statusBar = 0;
    int label = 0; ///< height of a name; 0 when names are off
};

/// Where the cells of a page stand in the client area. Columns are counted with a pitch of the edge and placed with two
/// pixels more, rows stand without a gap. A grid of one column begins a row lower. Both are part of the look.
struct ThumbnailGrid
{
    int columns = 0;
    int rows = 0;
    int leftMargin = 0;
    int firstTop = 0; ///< of the first row
    int size = 0;
    int label = 0;

    /// Cells of a page; 0 when the window is too small for one.
    int capacity() const;
    /// Top left of a cell, which are numbered from 1.
    QPoint place(int cell) const;
    /// The page is shown up to this cell before the next one is made: about three times a row.
    bool showsPartAfter(int cell) const;
};
ThumbnailGrid thumbnailGrid(const GridMeasures &measures);

/// The scroll bar counts items.
struct ScrollRange
{
    bool enabled = false;
    std::optional<int> maximum; ///< none: it stays as it is
};
ScrollRange scrollRange(int items, int capacity, int top);

/// A page and the item selected in the list.
struct PagePlace
{
    int columns = 0;
    int capacity = 0;
    int top = 0; ///< zero-based index of the first item
    int items = 0; ///< of the whole list
    int selected = 0; ///< one-based position in the list; 0 or less for none
};

enum class Arrow { Left = 37, Up = 38, Right = 39, Down = 40 };
/// The cell that an arrow key selects; none when the key has nothing to do. The page never scrolls for it.
std::optional<int> cellForArrow(Arrow arrow, const PagePlace &place);
/// The cell that Tab selects, by numbers that only fit the first page.
std::optional<int> cellForTab(const PagePlace &place);
