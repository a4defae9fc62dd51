#pragma once

#include <QPainterPath>

#include <span>

/// Shapes that metafiles describe in ways of their own, in logical units.

enum class ArcKind { Open, Chord, Pie };

/// The part of the ellipse in `box` from the ray through `start` to the ray through `end`; all of it when they are the
/// same. `clockwise`: as it looks with y downwards.
QPainterPath metafileArc(const QRectF &box, QPointF start, QPointF end, bool clockwise, ArcKind kind);

/// The arc by angles in degrees, anticlockwise with y downwards.
QPainterPath metafileArc(const QRectF &box, double startAngle, double sweep, ArcKind kind);

QPainterPath metafileRoundedBox(const QRectF &box, QSizeF corners);

QPainterPath metafileEllipse(const QRectF &box);

/// Points three by three behind the first one; what is left over is dropped.
QPainterPath metafileBezier(std::span<const QPointF> points);

/// The published patterns of hatched brushes by number; a plain brush for others.
Qt::BrushStyle metafileHatch(int number);

/// The published pen styles by number (the lowest four bits).
Qt::PenStyle metafilePenStyle(quint32 style);
