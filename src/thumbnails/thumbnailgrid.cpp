#include "thumbnails/thumbnailgrid.h"

#include "engine/rounding.h"

namespace {

constexpr int scrollBarGap = 20; ///< right of the columns, and below the rows
constexpr int sideGap = 40;
constexpr int columnGap = 2;

/// Towards minus infinity; `divisor` above 0.
int wholes(int value, int divisor)
{
    return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

}

ThumbnailGrid thumbnailGrid(const GridMeasures &m)
{
    ThumbnailGrid grid;
    grid.size = m.size;
    grid.label = m.label;
    grid.columns = wholes(m.width - m.scrollBar - scrollBarGap, m.size);
    grid.rows = wholes(m.height - m.statusBar - scrollBarGap - m.toolbar, m.label + m.size);
    grid.leftMargin = roundToInt((m.width - sideGap - grid.columns * m.size) / 2.0);
    const int topMargin = roundToInt((m.height - m.toolbar - m.statusBar - grid.rows * (m.size + m.label)) / 2.0);
    grid.firstTop = m.toolbar + 1 + topMargin;
    return grid;
}

int ThumbnailGrid::capacity() const
{
    return columns > 0 && rows > 0 ? columns * rows : 0;
}

QPoint ThumbnailGrid::place(int cell) const
{
    const int inRow = (cell - 1) % columns;
    const int firstOfRow = cell - inRow;
    const int row = firstOfRow / columns;
    return {leftMargin + inRow * (size + columnGap), firstTop + row * (size + label)};
}

bool ThumbnailGrid::showsPartAfter(int cell) const
{
    return cell * 3 % columns == 0;
}

ScrollRange scrollRange(int items, int capacity, int top)
{
    if (items >= capacity)
        return {true, items - capacity};
    return top == 0 ? ScrollRange{} : ScrollRange{true, top};
}

std::optional<int> cellForArrow(Arrow arrow, const PagePlace &p)
{
    if (p.selected <= 0)
        return std::nullopt;
    const bool back = arrow == Arrow::Left || arrow == Arrow::Up;
    const int step = arrow == Arrow::Left || arrow == Arrow::Right ? 1 : p.columns;
    const int wanted = p.selected + (back ? -step : step);
    if (back ? wanted <= p.top : wanted > p.items || wanted > p.capacity + p.top)
        return std::nullopt;
    return wanted - p.top;
}

std::optional<int> cellForTab(const PagePlace &p)
{
    if (p.selected <= 0 || p.selected + 1 >= p.capacity + p.top)
        return std::nullopt;
    return p.selected + 1;
}
