#pragma once

#include "engine/picture.h"
#include "engine/result.h"

#include <QPainterPath>

#include <algorithm>

/// What all vector formats decide alike: how many pixels a drawing has, what it is painted on, and how much painting
/// one file may ask for.

inline constexpr int longestVectorSide = 8192; ///< pixels; larger drawings are scaled down

/// The size in pixels for a drawing that measures `wanted`: rounded, at least one pixel, scaled down to at most
/// `longestSide`. Empty when `wanted` is no size.
QSize naturalVectorSize(QSizeF wanted, int longestSide = longestVectorSide);

/// The pixels to paint for a wish: the natural size, or smaller when `target` is smaller (empty: everything).
QSize renderedVectorSize(QSize natural, QSize target);

/// The ground to paint on: Format_RGB32 filled with an opaque colour, or Format_ARGB32_Premultiplied.
Result<QImage> vectorGround(QSize size, const QColor &ground);

/// The finished picture; `drawn` comes from vectorGround().
Picture vectorPicture(const QImage &drawn, const ImageInfo &info, bool partial);

/// Bounds what one file may have painted, in units of about a nanosecond: a few bytes can ask for hours of it. Counted,
/// not measured, so that a file always gives the same picture.
class VectorWork
{
public:
    /// False when that is more than what is left: it must not be done. Smaller things may still be.
    bool spend(double units)
    {
        const bool affordable = units <= m_left;
        m_refused |= !affordable;
        m_left -= affordable ? std::max(units, 0.0) : costOfRefusing;
        return affordable;
    }
    bool isSpent() const { return m_left <= 0; }
    /// Whether something was left out.
    bool isIncomplete() const { return m_refused; }

private:
    static constexpr double costOfRefusing = 1e6; ///< what was refused had to be measured

    double m_left = 6e9;
    bool m_refused = false;
};

/// What filling so many cells - pixels that edges cross - in so many rows costs.
double vectorCellCost(double cells, double rows, QSize size);

/// What following the edges of a path in pixels costs on a canvas of `size`.
double vectorEdgeCost(const QPainterPath &path, QSize size);

/// What filling and stroking a path in pixels costs on a canvas of `size`.
double vectorPathCost(const QPainterPath &path, QSize size);

/// Brings every coordinate of a path in pixels into a range that painting is safe with; what is no number becomes 0.
QPainterPath safeVectorPath(const QPainterPath &path);
