#include "engine/ops/nearestcolor.h"

#include <algorithm>
#include <climits>
#include <iterator>

NearestColor::NearestColor(const QList<QRgb> &palette)
    : m_cells(32 * 32 * 32)
{
    std::transform(palette.begin(), palette.end(), std::back_inserter(m_palette), colorOf);
}

void NearestColor::fill(Cell &cell, const Color &inside)
{
    std::vector<int> nearEnd(m_palette.size());
    int leastFarEnd = INT_MAX;
    for (size_t i = 0; i < m_palette.size(); ++i) {
        int farEnd = 0;
        for (size_t channel = 0; channel < 3; ++channel) {
            const int low = inside[channel] & ~7;
            const int high = low + 7;
            const int value = m_palette[i][channel];
            const int near = std::max({low - value, value - high, 0});
            const int far = std::max(std::abs(value - low), std::abs(value - high));
            nearEnd[i] += near * near;
            farEnd += far * far;
        }
        leastFarEnd = std::min(leastFarEnd, farEnd);
    }
    cell.first = quint32(m_candidates.size());
    for (size_t i = 0; i < m_palette.size(); ++i) {
        if (nearEnd[i] <= leastFarEnd)
            m_candidates.push_back(uchar(i));
    }
    cell.count = quint16(m_candidates.size() - cell.first);
}
