#pragma once

#include <QList>
#include <QRgb>

#include <array>
#include <vector>

/// The nearest entry of a palette of at most 256 colours, exactly, by the distance of stored numbers. The cube of
/// colours is cut into cells; a cell knows the few entries that can be nearest to any point in it, found when it is
/// first asked for.
class NearestColor
{
public:
    using Color = std::array<int, 3>; ///< red, green, blue, each 0 to 255
    explicit NearestColor(const QList<QRgb> &palette);

    static Color colorOf(QRgb pixel) { return {qRed(pixel), qGreen(pixel), qBlue(pixel)}; }
    int indexOf(const Color &color)
    {
        Cell &cell = m_cells[size_t(color[0] >> 3 << 10 | color[1] >> 3 << 5 | color[2] >> 3)];
        if (cell.count == 0)
            fill(cell, color);
        const uchar *const candidates = m_candidates.data() + cell.first;
        int nearest = candidates[0];
        int least = distance(m_palette[size_t(nearest)], color);
        for (int i = 1; i < cell.count; ++i) {
            const int there = distance(m_palette[candidates[i]], color);
            if (there < least) {
                least = there;
                nearest = candidates[i];
            }
        }
        return nearest;
    }
    const Color &colorAt(int index) const { return m_palette[size_t(index)]; }

private:
    struct Cell
    {
        quint32 first = 0;
        quint16 count = 0;
    };
    static int distance(const Color &a, const Color &b)
    {
        const int red = a[0] - b[0];
        const int green = a[1] - b[1];
        const int blue = a[2] - b[2];
        return red * red + green * green + blue * blue;
    }
    void fill(Cell &cell, const Color &inside);

    std::vector<Color> m_palette;
    std::vector<Cell> m_cells;
    std::vector<uchar> m_candidates;
};
