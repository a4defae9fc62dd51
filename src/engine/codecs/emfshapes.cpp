// The part of the EMF player that draws lines, shapes, paths and regions, and clips.

#include "engine/codecs/emfplayer.h"
#include "engine/codecs/metafileshapes.h"

#include <algorithm>

namespace {

constexpr quint32 mostPoints = 200000; ///< in one record
constexpr size_t regionHeaderBytes = 32;

QPolygonF pointsAt(const MetafileRecord &record, size_t at, quint32 count, bool small)
{
    const size_t each = small ? 4 : 8;
    const size_t there = record.size() > at ? (record.size() - at) / each : 0;
    const size_t taken = std::min<size_t>({count, there, mostPoints});
    QPolygonF points;
    points.reserve(qsizetype(taken));
    for (size_t i = 0; i < taken; ++i)
        points.append(small ? record.point16(at + i * each) : record.point32(at + i * each));
    return points;
}

QPainterPath linesThrough(const QPolygonF &points, bool closed)
{
    QPainterPath path;
    path.addPolygon(points);
    if (closed)
        path.closeSubpath();
    return path;
}

/// The boxes of region data; those that come behind the end of the record are not there.
std::vector<QRectF> regionBoxes(const MetafileRecord &record, size_t at)
{
    const size_t there = record.size() > at + regionHeaderBytes ? (record.size() - at - regionHeaderBytes) / 16 : 0;
    const size_t count = std::min<size_t>({record.u32(at + 8), there, mostPoints});
    std::vector<QRectF> boxes;
    boxes.reserve(count);
    for (size_t i = 0; i < count; ++i)
        boxes.push_back(record.box32(at + regionHeaderBytes + 16 * i));
    return boxes;
}

}

bool EmfPlayer::playLines(const MetafileRecord &record)
{
    switch (record.type) {
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
        drawPoints(record, int(record.type), false);
        return true;
    case 85:
    case 86:
    case 87:
    case 88:
    case 89:
        drawPoints(record, int(record.type) - 83, true);
        return true;
    case 7:
    case 8:
        drawManyPolygons(record, record.type == 8, false);
        return true;
    case 90:
    case 91:
        drawManyPolygons(record, record.type == 91, true);
        return true;
    case 56:
    case 92:
        drawMixed(record, record.type == 92);
        return true;
    case 27:
        m_context.moveTo(record.point32(8));
        return true;
    case 54:
        m_context.lineTo(record.point32(8));
        return true;
    default:
        return false;
    }
}

/// Kinds: 2 Bezier curves, 3 polygon, 4 lines, 5 curves and 6 lines from the current point.
void EmfPlayer::drawPoints(const MetafileRecord &record, int kind, bool small)
{
    const QPolygonF points = pointsAt(record, 28, record.u32(24), small);
    if (points.isEmpty())
        return;
    if (kind == 2)
        m_context.draw(metafileBezier({points.constData(), size_t(points.size())}), MetafileContext::Stroke);
    else if (kind == 3)
        m_context.draw(linesThrough(points, true), MetafileContext::StrokeAndFill);
    else if (kind == 4)
        m_context.draw(linesThrough(points, false), MetafileContext::Stroke);
    else
        m_context.polylineTo(points, kind == 5);
}

void EmfPlayer::drawManyPolygons(const MetafileRecord &record, bool closed, bool small)
{
    const quint32 polygons = record.u32(24);
    if (polygons > mostPoints || !record.has(32, size_t(polygons) * 4))
        return;
    const QPolygonF points = pointsAt(record, 32 + size_t(polygons) * 4, record.u32(28), small);
    QPainterPath path;
    qsizetype first = 0;
    for (quint32 i = 0; i < polygons && first < points.size(); ++i) {
        const qsizetype count = std::min<qsizetype>(record.u32(32 + 4 * size_t(i)), points.size() - first);
        path.addPolygon(points.mid(first, count));
        if (closed && count > 0)
            path.closeSubpath();
        first += count;
    }
    m_context.draw(path, closed ? MetafileContext::StrokeAndFill : MetafileContext::Stroke);
}

/// Lines and curves in one record, a byte for each point saying which.
void EmfPlayer::drawMixed(const MetafileRecord &record, bool small)
{
    const QPolygonF points = pointsAt(record, 28, record.u32(24), small);
    const size_t kindsAt = 28 + size_t(points.size()) * (small ? 4 : 8);
    QPainterPath path(m_context.state().current);
    for (qsizetype i = 0; i < points.size(); ++i) {
        const int kind = record.u8(kindsAt + size_t(i));
        if ((kind & 6) == 6) {
            path.moveTo(points[i]);
        } else if ((kind & 6) == 4 && i + 2 < points.size()) {
            path.cubicTo(points[i], points[i + 1], points[i + 2]);
            i += 2;
        } else {
            path.lineTo(points[i]);
        }
        if ((record.u8(kindsAt + size_t(i)) & 1) != 0)
            path.closeSubpath();
    }
    m_context.draw(path, MetafileContext::Stroke);
    if (!points.isEmpty())
        m_context.moveTo(points.last());
}

bool EmfPlayer::playShape(const MetafileRecord &record)
{
    const QRectF box = record.box32(8);
    switch (record.type) {
    case 15:
        m_context.setPixel(record.point32(8), record.color(16));
        return true;
    case 41:
        angleArc(record);
        return true;
    case 42:
        m_context.draw(metafileEllipse(box), MetafileContext::StrokeAndFill);
        return true;
    case 43: {
        QPainterPath path;
        path.addRect(box.normalized());
        m_context.draw(path, MetafileContext::StrokeAndFill);
        return true;
    }
    case 44:
        m_context.draw(metafileRoundedBox(box, QSizeF(record.i32(24), record.i32(28))), MetafileContext::StrokeAndFill);
        return true;
    case 45:
    case 46:
    case 47:
    case 55:
        drawArc(record);
        return true;
    default:
        return false;
    }
}

void EmfPlayer::drawArc(const MetafileRecord &record)
{
    const MetafileState &state = m_context.state();
    // The direction is meant as it looks: axes that the map mode turns over change it.
    const QPointF scale = state.mapping.scale();
    const bool clockwise = state.clockwise != (scale.x() * scale.y() < 0);
    const ArcKind kind = record.type == 46 ? ArcKind::Chord : record.type == 47 ? ArcKind::Pie : ArcKind::Open;
    const QPainterPath arc = metafileArc(record.box32(8), record.point32(24), record.point32(32), clockwise, kind);
    if (record.type != 55) {
        m_context.draw(arc, kind == ArcKind::Open ? MetafileContext::Stroke : MetafileContext::StrokeAndFill);
        return;
    }
    QPainterPath path(state.current);
    path.connectPath(arc);
    m_context.draw(path, MetafileContext::Stroke);
    m_context.moveTo(arc.currentPosition());
}

void EmfPlayer::angleArc(const MetafileRecord &record)
{
    const double radius = record.u32(16);
    const QPointF center = record.point32(8);
    const QRectF box(center - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius));
    const QPainterPath arc = metafileArc(box, std::fmod(record.f32(20), 360), record.f32(24), ArcKind::Open);
    QPainterPath path(m_context.state().current);
    path.connectPath(arc);
    m_context.draw(path, MetafileContext::Stroke);
    m_context.moveTo(arc.currentPosition());
}

bool EmfPlayer::playPath(const MetafileRecord &record)
{
    switch (record.type) {
    case 59:
        m_context.beginPath();
        return true;
    case 60:
        m_context.endPath();
        return true;
    case 61:
        m_context.closeFigure();
        return true;
    case 62:
        m_context.drawPath(MetafileContext::Fill);
        return true;
    case 63:
        m_context.drawPath(MetafileContext::StrokeAndFill);
        return true;
    case 64:
        m_context.drawPath(MetafileContext::Stroke);
        return true;
    case 65:
        m_context.flattenPath();
        return true;
    case 66:
        m_context.widenPath();
        return true;
    case 67:
        if (record.u32(8) >= 1 && record.u32(8) <= 5)
            m_context.clipToPath(MetafileContext::Combine(record.u32(8)));
        return true;
    case 68:
        m_context.dropPath();
        return true;
    default:
        return false;
    }
}

bool EmfPlayer::playClip(const MetafileRecord &record)
{
    switch (record.type) {
    case 26:
        m_context.offsetClip(record.point32(8));
        return true;
    case 29:
        m_context.clipLogical(record.box32(8), MetafileContext::Combine::Difference);
        return true;
    case 30:
        m_context.clipLogical(record.box32(8), MetafileContext::Combine::And);
        return true;
    case 75:
        clipToRegion(record);
        return true;
    default:
        return false;
    }
}

void EmfPlayer::clipToRegion(const MetafileRecord &record)
{
    if (record.u32(8) == 0) {
        m_context.resetClip();
        return;
    }
    const quint32 how = record.u32(12);
    if (how < 1 || how > 5)
        return;
    // The boxes of a region are in pixels of the picture. Joining them costs the square of their number.
    constexpr double mostBoxes = 20000;
    const std::vector<QRectF> boxes = regionBoxes(record, 16);
    const double count = double(boxes.size());
    if (count > mostBoxes || !m_context.spend(count * count * 4))
        return;
    QRegion region;
    const QRectF reach(-32768, -32768, 65536, 65536);
    for (const QRectF &box : boxes)
        region += (m_context.toCanvas().mapRect(box.normalized()) & reach).toRect();
    m_context.combineClipRegion(region, MetafileContext::Combine(how));
}

bool EmfPlayer::playRegion(const MetafileRecord &record)
{
    MetafileState &state = m_context.state();
    const QBrush brush = state.brush;
    const int operation = state.rasterOperation;
    switch (record.type) {
    case 71:
        m_context.selectObject(record.u32(28));
        fillRegion(record, 32);
        break;
    case 72:
        frameRegion(record);
        break;
    case 73:
        state.rasterOperation = 6;
        fillRegion(record, 28);
        break;
    case 74:
        fillRegion(record, 28);
        break;
    default:
        return false;
    }
    state.brush = brush;
    state.rasterOperation = operation;
    return true;
}

void EmfPlayer::frameRegion(const MetafileRecord &record)
{
    QPainterPath path;
    const std::vector<QRectF> boxes = regionBoxes(record, 40);
    // Making one outline of many boxes takes long; regions that are framed have few.
    constexpr size_t mostBoxes = 200;
    if (boxes.size() > mostBoxes)
        return;
    path.setFillRule(Qt::WindingFill);
    for (const QRectF &box : boxes)
        path.addRect(box.normalized());
    m_context.save();
    m_context.selectObject(record.u32(28));
    // A pen of double width whose outer half is clipped away.
    const QPen pen(
        m_context.state().brush, 2.0 * std::abs(double(record.i32(32))), Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin);
    m_context.select(pen);
    const QPainterPath outline = path.simplified();
    m_context.combineClip(safeVectorPath(m_context.matrix().map(outline)), MetafileContext::Combine::And);
    m_context.draw(outline, MetafileContext::Stroke);
    m_context.restore(-1);
}

void EmfPlayer::fillRegion(const MetafileRecord &record, size_t dataAt)
{
    QPainterPath path;
    for (const QRectF &box : regionBoxes(record, dataAt))
        path.addRect(box.normalized());
    const Qt::FillRule rule = std::exchange(m_context.state().fillRule, Qt::WindingFill);
    m_context.draw(path, MetafileContext::Fill);
    m_context.state().fillRule = rule;
}
