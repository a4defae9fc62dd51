// The part of the metafile's device context that puts paths on the canvas and clips.

#include "engine/codecs/metafilecontext.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double mostDashes = 20000; ///< in one path; more look solid anyway

/// The published binary raster operations from 1 on, as the painter calls them. Black, white and copy are plain.
constexpr std::array<QPainter::CompositionMode, 16> operations{QPainter::CompositionMode_SourceOver,
    QPainter::RasterOp_NotSourceAndNotDestination, QPainter::RasterOp_NotSourceAndDestination,
    QPainter::RasterOp_NotSource, QPainter::RasterOp_SourceAndNotDestination, QPainter::RasterOp_NotDestination,
    QPainter::RasterOp_SourceXorDestination, QPainter::RasterOp_NotSourceOrNotDestination,
    QPainter::RasterOp_SourceAndDestination, QPainter::RasterOp_NotSourceXorDestination,
    QPainter::CompositionMode_Destination, QPainter::RasterOp_NotSourceOrDestination,
    QPainter::CompositionMode_SourceOver, QPainter::RasterOp_SourceOrNotDestination,
    QPainter::RasterOp_SourceOrDestination, QPainter::CompositionMode_SourceOver};

/// The box when a path is nothing but an upright one.
std::optional<QRectF> uprightBox(const QPainterPath &path)
{
    if (path.elementCount() != 5 && path.elementCount() != 4)
        return std::nullopt;
    for (int i = 1; i < path.elementCount(); ++i) {
        const QPainterPath::Element from = path.elementAt(i - 1);
        const QPainterPath::Element to = path.elementAt(i);
        const bool across = std::abs(from.y - to.y) < 1e-3;
        const bool down = std::abs(from.x - to.x) < 1e-3;
        // The sides take turns.
        if (!to.isLineTo() || (!across && !down)
            || (i > 1 && across == (std::abs(path.elementAt(i - 2).y - from.y) < 1e-3)))
            return std::nullopt;
    }
    if (path.elementCount() == 5 && QPointF(path.elementAt(0)) != QPointF(path.elementAt(4)))
        return std::nullopt;
    return path.boundingRect();
}

QRect wholePixels(const QRectF &box)
{
    const QPoint first(int(std::lround(box.left())), int(std::lround(box.top())));
    return QRect(first, QPoint(int(std::lround(box.right())), int(std::lround(box.bottom()))) - QPoint(1, 1));
}

QList<qreal> dashes(const QPen &pen)
{
    const bool thin = pen.widthF() <= 1.5;
    switch (pen.style()) {
    case Qt::DashLine:
        return thin ? QList<qreal>{18, 6} : QList<qreal>{3, 1};
    case Qt::DotLine:
        return thin ? QList<qreal>{3, 3} : QList<qreal>{1, 1};
    case Qt::DashDotLine:
        return thin ? QList<qreal>{9, 6, 3, 6} : QList<qreal>{3, 1, 1, 1};
    case Qt::DashDotDotLine:
        return thin ? QList<qreal>{9, 3, 3, 3, 3, 3} : QList<qreal>{3, 1, 1, 1, 1, 1};
    default:
        return pen.dashPattern();
    }
}

double lengthOf(const QPainterPath &path)
{
    double length = 0;
    for (int i = 1; i < path.elementCount(); ++i) {
        const QPainterPath::Element from = path.elementAt(i - 1);
        const QPainterPath::Element to = path.elementAt(i);
        length += to.isMoveTo() ? 0 : std::hypot(to.x - from.x, to.y - from.y);
    }
    return length;
}

/// What stroking costs: each point of a line, and each dash, has edges as long as the pen is wide.
double strokeCost(const QPainterPath &path, double width, double dashCount, QSize size)
{
    const double pieces = path.elementCount() + dashCount;
    const double rows = std::min(path.controlPointRect().height() + width, double(size.height()));
    return 4 * vectorPathCost(path, size) + 3000 * pieces + vectorCellCost(4 * pieces * width, rows, size);
}

}

bool MetafileContext::prepare(double cost, const QRectF &bounds)
{
    m_painted |= bounds;
    if (!m_work.spend(cost + m_clipCost))
        return false;
    if (!m_clipChanged)
        return true;
    m_clipChanged = false;
    const MetafileClip &clip = m_state.clip;
    const double outlineCost = clip.outline ? vectorEdgeCost(*clip.outline, m_canvas.size()) : 0;
    m_clipCost = outlineCost / 4 + 20.0 * clip.region.rectCount();
    if (!m_work.spend(outlineCost + 100.0 * clip.region.rectCount())) {
        m_clipChanged = true;
        return false;
    }
    m_painter.setRenderHint(QPainter::Antialiasing);
    if (clip.region == QRegion(m_canvas.rect()))
        m_painter.setClipping(false);
    else
        m_painter.setClipRegion(clip.region);
    if (clip.outline)
        m_painter.setClipPath(
            *clip.outline, clip.region == QRegion(m_canvas.rect()) ? Qt::ReplaceClip : Qt::IntersectClip);
    return true;
}

bool MetafileContext::setOperation()
{
    const int operation = std::clamp(m_state.rasterOperation, 1, 16);
    const QPainter::CompositionMode mode = operations[size_t(operation) - 1];
    m_painter.setCompositionMode(mode);
    // Operations on bits know no half-covered pixels.
    m_painter.setRenderHint(QPainter::Antialiasing, mode == QPainter::CompositionMode_SourceOver);
    return mode != QPainter::CompositionMode_Destination;
}

QPen MetafileContext::canvasPen() const
{
    QPen pen = m_state.pen;
    const double width = pen.isCosmetic() ? pen.widthF() : pen.widthF() * std::sqrt(std::abs(matrix().determinant()));
    pen.setWidthF(std::isfinite(width) ? std::clamp(width, 1.0, 32767.0) : 1.0);
    pen.setMiterLimit(m_state.miterLimit);
    pen.setCosmetic(false);
    return pen;
}

void MetafileContext::paint(const QPainterPath &canvasPath, int parts)
{
    const bool strokes = (parts & Stroke) != 0 && m_state.pen.style() != Qt::NoPen;
    const bool fills = (parts & Fill) != 0 && m_state.brush.style() != Qt::NoBrush;
    const bool black = m_state.rasterOperation == 1;
    const bool forced = black || m_state.rasterOperation == 16;
    const QColor plain = black ? Qt::black : Qt::white;
    if (fills) {
        QBrush brush = forced ? QBrush(plain) : m_state.brush;
        const bool hatched = brush.style() >= Qt::HorPattern && brush.style() <= Qt::DiagCrossPattern;
        if (hatched && m_state.opaqueBack)
            fillCanvasPath(canvasPath, m_state.backColor);
        brush.setTransform(QTransform::fromTranslate(m_state.brushOrigin.x(), m_state.brushOrigin.y()));
        fillCanvasPath(canvasPath, brush);
        // Areas that touch would let the ground shine through along their half-covered edges: they overlap a little.
        const bool covers = brush.style() == Qt::SolidPattern && (forced || m_state.rasterOperation == 13);
        if (covers && !strokes && !uprightBox(canvasPath))
            m_painter.strokePath(canvasPath, QPen(brush, 0.8, Qt::SolidLine, Qt::FlatCap, Qt::BevelJoin));
    }
    if (strokes) {
        QPen pen = canvasPen();
        if (forced)
            pen.setColor(plain);
        strokeCanvasPath(canvasPath, pen);
    }
}

void MetafileContext::fillCanvasPath(const QPainterPath &path, const QBrush &brush)
{
    if (path.isEmpty() || !prepare(vectorPathCost(path, m_canvas.size()), path.controlPointRect()) || !setOperation())
        return;
    // Boxes that touch each other must not let the ground shine through between them.
    const std::optional<QRectF> box = uprightBox(path);
    if (box && box->width() >= 1.5 && box->height() >= 1.5)
        m_painter.fillRect(wholePixels(*box), brush);
    else
        m_painter.fillPath(path, brush);
}

void MetafileContext::strokeCanvasPath(const QPainterPath &path, QPen pen)
{
    if (path.isEmpty())
        return;
    double dashCount = 0;
    if (pen.style() != Qt::SolidLine) {
        const QList<qreal> pattern = dashes(pen);
        const double period = std::accumulate(pattern.begin(), pattern.end(), 0.0) * pen.widthF();
        dashCount = period > 0 ? lengthOf(path) / period : mostDashes + 1;
        if (dashCount > mostDashes) {
            pen.setStyle(Qt::SolidLine);
            dashCount = 0;
        } else {
            pen.setDashPattern(pattern);
        }
    }
    const double cost = strokeCost(path, pen.widthF(), dashCount, m_canvas.size());
    const double half = pen.widthF() / 2;
    if (!prepare(cost, path.controlPointRect().adjusted(-half, -half, half, half)) || !setOperation())
        return;
    // A line's coordinates name the middle of pixels, an area's their corners.
    m_painter.translate(0.5, 0.5);
    m_painter.strokePath(path, pen);
    m_painter.resetTransform();
}

QRegion MetafileContext::regionOf(const QPainterPath &canvasPath)
{
    const QRect canvas = m_canvas.rect();
    if (const std::optional<QRectF> box = uprightBox(canvasPath))
        return QRegion(wholePixels(*box) & canvas);
    const QRectF bounds = canvasPath.controlPointRect();
    if (!m_work.spend(1000 + double(canvasPath.elementCount()) * std::min(bounds.height(), 32768.0)))
        return canvas;
    QPolygon polygon = canvasPath.toFillPolygon().toPolygon();
    for (QPoint &point : polygon)
        point = {std::clamp(point.x(), -16384, 16384), std::clamp(point.y(), -16384, 16384)};
    return QRegion(polygon, canvasPath.fillRule()) & canvas;
}

void MetafileContext::combineClip(const QPainterPath &canvasPath, Combine how)
{
    MetafileClip &clip = m_state.clip;
    m_clipChanged = true;
    const bool narrows = how == Combine::And || how == Combine::Copy;
    if (!narrows || uprightBox(canvasPath)) {
        combineClipRegion(regionOf(canvasPath), how);
        return;
    }
    if (how == Combine::Copy)
        clip.region = m_canvas.rect();
    else if (clip.outline)
        combineClipRegion(regionOf(*clip.outline), how);
    if (m_work.spend(vectorPathCost(canvasPath, m_canvas.size())))
        clip.outline = canvasPath;
}

void MetafileContext::combineClipRegion(const QRegion &canvasRegion, Combine how)
{
    MetafileClip &clip = m_state.clip;
    m_clipChanged = true;
    if (!m_work.spend(1000 + 200.0 * (clip.region.rectCount() + canvasRegion.rectCount())))
        return;
    // Only narrowing leaves a smooth outline as it is.
    if (clip.outline && how != Combine::And && how != Combine::Difference) {
        if (how != Combine::Copy)
            clip.region &= regionOf(*clip.outline);
        clip.outline.reset();
    }
    switch (how) {
    case Combine::And:
        clip.region &= canvasRegion;
        break;
    case Combine::Or:
        clip.region |= canvasRegion;
        break;
    case Combine::Xor:
        clip.region ^= canvasRegion;
        break;
    case Combine::Difference:
        clip.region -= canvasRegion;
        break;
    case Combine::Copy:
        clip.region = canvasRegion;
        break;
    }
    clip.region &= m_canvas.rect();
}

void MetafileContext::clipLogical(const QRectF &box, Combine how)
{
    QPainterPath path;
    path.addRect(box.normalized());
    combineClip(safeVectorPath(matrix().map(path)), how);
}

void MetafileContext::offsetClip(QPointF logical)
{
    const QTransform map = matrix();
    QPainterPath moved(map.map(logical) - map.map(QPointF()));
    const QPointF by = safeVectorPath(moved).elementAt(0);
    m_state.clip.region.translate(by.toPoint());
    m_state.clip.region &= m_canvas.rect();
    if (m_state.clip.outline)
        m_state.clip.outline->translate(by);
    m_clipChanged = true;
}

void MetafileContext::resetClip()
{
    m_state.clip = {m_canvas.rect(), std::nullopt};
    m_clipChanged = true;
}

void MetafileContext::setClip(const MetafileClip &clip)
{
    m_state.clip = clip;
    m_clipChanged = true;
}
