#pragma once

#include <QHash>
#include <QStringView>

#include <vector>

/// Counts what a drawing's "use" elements make of it: a few lines can repeat each other into billions of shapes.
class SvgUses
{
public:
    /// An element begins; `used` is the id that a "use" repeats, empty for all others.
    void enter(QStringView id, QStringView used);
    void leave();
    /// Whether all of it together stays below a million elements and nothing repeats itself.
    bool areBounded();

private:
    static constexpr qint64 unbounded = -1;
    qint64 cost(size_t element, int depth);

    struct Element
    {
        size_t end = 0; ///< behind its last descendant
        qint64 cost = 0; ///< 0: not counted yet
        bool counting = false;
    };
    struct Use
    {
        size_t element;
        QString target;
    };
    std::vector<Element> m_elements; ///< in the order in which they begin
    std::vector<size_t> m_open;
    std::vector<Use> m_uses; ///< in the same order
    QHash<QString, size_t> m_ids;
};
