#include "engine/codecs/svguses.h"

#include <algorithm>

void SvgUses::enter(QStringView id, QStringView used)
{
    const size_t element = m_elements.size();
    m_elements.push_back({});
    m_open.push_back(element);
    if (!id.isEmpty() && !m_ids.contains(id.toString()))
        m_ids.insert(id.toString(), element);
    if (!used.isEmpty())
        m_uses.push_back({element, used.toString()});
}

void SvgUses::leave()
{
    if (m_open.empty())
        return;
    m_elements[m_open.back()].end = m_elements.size();
    m_open.pop_back();
}

qint64 SvgUses::cost(size_t element, int depth)
{
    constexpr qint64 most = 1'000'000;
    constexpr int deepest = 64;
    Element &counted = m_elements[element];
    if (counted.counting || depth > deepest)
        return unbounded;
    if (counted.cost != 0)
        return counted.cost;
    counted.counting = true;
    qint64 sum = qint64(counted.end - element);
    const auto first = std::lower_bound(
        m_uses.begin(), m_uses.end(), element, [](const Use &use, size_t at) { return use.element < at; });
    for (auto use = first; use != m_uses.end() && use->element < counted.end && sum <= most; ++use) {
        const auto target = m_ids.constFind(use->target);
        if (target == m_ids.constEnd())
            continue;
        const qint64 repeated = cost(*target, depth + 1);
        if (repeated == unbounded)
            return unbounded;
        sum += repeated;
    }
    counted.counting = false;
    counted.cost = sum;
    return sum <= most ? sum : unbounded;
}

bool SvgUses::areBounded()
{
    // Of a cut file the last elements are still open.
    while (!m_open.empty())
        leave();
    return m_elements.empty() || cost(0, 0) != unbounded;
}
