#include "engine/codecs/metafilecontext.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t mostSaved = 1000;
constexpr size_t mostObjects = 65536;

double nonZero(double value)
{
    return value == 0 ? 1 : value;
}

/// Logical units per millimetre of the modes that measure; 0 for the others.
double unitsPerMillimetre(MapMode mode)
{
    switch (mode) {
    case MapMode::LowMetric:
        return 10;
    case MapMode::HighMetric:
        return 100;
    case MapMode::LowEnglish:
        return 100 / 25.4;
    case MapMode::HighEnglish:
        return 1000 / 25.4;
    case MapMode::Twips:
        return 1440 / 25.4;
    default:
        return 0;
    }
}

}

QPointF MetafileMapping::scale() const
{
    if (mode == MapMode::Text)
        return {1, 1};
    if (const double units = unitsPerMillimetre(mode); units > 0)
        return {nonZero(pixelsPerMillimetre.x() / units), nonZero(-pixelsPerMillimetre.y() / units)};
    const double across = nonZero(viewportExtent.x() / nonZero(windowExtent.x()));
    const double down = nonZero(viewportExtent.y() / nonZero(windowExtent.y()));
    if (mode != MapMode::Isotropic)
        return {across, down};
    const double smaller = std::min(std::abs(across), std::abs(down));
    return {std::copysign(smaller, across), std::copysign(smaller, down)};
}

QTransform MetafileMapping::transform() const
{
    const QPointF factor = scale();
    return QTransform(factor.x(), 0, 0, factor.y(), viewportOrigin.x() - windowOrigin.x() * factor.x(),
        viewportOrigin.y() - windowOrigin.y() * factor.y());
}

MetafileContext::MetafileContext(QImage &canvas, const QTransform &toCanvas, VectorWork &work)
    : m_canvas(canvas)
    , m_toCanvas(toCanvas)
    , m_work(work)
    , m_painter(&canvas)
{
    m_state.clip.region = canvas.rect();
}

void MetafileContext::save()
{
    if (m_saved.size() < mostSaved)
        m_saved.push_back(m_state);
}

void MetafileContext::restore(int level)
{
    const qint64 depth = qint64(m_saved.size());
    const qint64 wanted = level < 0 ? depth + level : qint64(level) - 1;
    if (wanted < 0 || wanted >= depth)
        return;
    m_state = m_saved[size_t(wanted)];
    m_saved.resize(size_t(wanted));
    m_clipChanged = true;
}

void MetafileContext::setObject(size_t index, const MetafileObject &object)
{
    if (index >= mostObjects)
        return;
    if (index >= m_objects.size())
        m_objects.resize(index + 1);
    m_objects[index] = object;
}

void MetafileContext::addObject(const MetafileObject &object)
{
    if (m_freePlaces.empty()) {
        setObject(m_objects.size(), object);
        return;
    }
    setObject(*m_freePlaces.begin(), object);
    m_freePlaces.erase(m_freePlaces.begin());
}

void MetafileContext::removeObject(size_t index)
{
    if (index >= m_objects.size())
        return;
    m_objects[index] = {};
    m_freePlaces.insert(index);
}

const MetafileObject &MetafileContext::object(size_t index) const
{
    static const MetafileObject none;
    return index < m_objects.size() ? m_objects[index] : none;
}

void MetafileContext::selectObject(size_t index)
{
    select(object(index));
}

void MetafileContext::select(const MetafileObject &object)
{
    if (const QPen *pen = std::get_if<QPen>(&object))
        m_state.pen = *pen;
    else if (const QBrush *brush = std::get_if<QBrush>(&object))
        m_state.brush = *brush;
    else if (const MetafileFont *font = std::get_if<MetafileFont>(&object))
        m_state.font = *font;
}

QTransform MetafileContext::matrix() const
{
    return m_state.world * m_state.mapping.transform() * m_toCanvas;
}

void MetafileContext::draw(const QPainterPath &logical, int parts)
{
    QPainterPath path = safeVectorPath(matrix().map(logical));
    if (m_pathIsOpen) {
        m_path.addPath(path);
        m_figureContinues = false;
        return;
    }
    path.setFillRule(m_state.fillRule);
    paint(path, parts);
}

void MetafileContext::moveTo(QPointF point)
{
    m_state.current = point;
    m_figureContinues = false;
}

void MetafileContext::lineTo(QPointF point)
{
    polylineTo(QPolygonF({point}), false);
}

void MetafileContext::polylineTo(const QPolygonF &points, bool bezier)
{
    if (points.isEmpty())
        return;
    QPainterPath path(m_state.current);
    if (bezier) {
        for (qsizetype i = 0; i + 2 < points.size(); i += 3)
            path.cubicTo(points[i], points[i + 1], points[i + 2]);
    } else {
        for (const QPointF &point : points)
            path.lineTo(point);
    }
    m_state.current = path.currentPosition();
    if (!m_pathIsOpen) {
        draw(path, Stroke);
        return;
    }
    // Within a path, lines one after another are one figure.
    const QPainterPath mapped = safeVectorPath(matrix().map(path));
    if (m_figureContinues && !m_path.isEmpty())
        m_path.connectPath(mapped);
    else
        m_path.addPath(mapped);
    m_figureContinues = true;
}

void MetafileContext::setPixel(QPointF point, const QColor &color)
{
    const QPointF at = matrix().map(point);
    QPainterPath path;
    path.addRect(std::floor(at.x()), std::floor(at.y()), 1, 1);
    fillCanvasPath(safeVectorPath(path), color);
}

void MetafileContext::beginPath()
{
    m_path = QPainterPath();
    m_pathIsOpen = true;
    m_figureContinues = false;
}

void MetafileContext::closeFigure()
{
    if (m_pathIsOpen && !m_path.isEmpty())
        m_path.closeSubpath();
    m_figureContinues = false;
}

void MetafileContext::dropPath()
{
    m_path = QPainterPath();
    m_pathIsOpen = false;
}

void MetafileContext::drawPath(int parts)
{
    QPainterPath path = m_path;
    dropPath();
    path.setFillRule(m_state.fillRule);
    paint(path, parts);
}

void MetafileContext::clipToPath(Combine how)
{
    QPainterPath path = m_path;
    dropPath();
    path.setFillRule(m_state.fillRule);
    combineClip(path, how);
}

void MetafileContext::flattenPath()
{
    if (!m_work.spend(vectorPathCost(m_path, m_canvas.size())))
        return;
    QPainterPath flat;
    const QList<QPolygonF> polygons = m_path.toSubpathPolygons();
    for (const QPolygonF &polygon : polygons)
        flat.addPolygon(polygon);
    m_path = flat;
}

void MetafileContext::widenPath()
{
    const double cost = 4 * vectorPathCost(m_path, m_canvas.size());
    // The path takes the place of itself: its outline has many more points, which must not grow without end.
    if (m_path.elementCount() > 100000 || !m_work.spend(cost))
        return;
    const QPen pen = canvasPen();
    QPainterPathStroker stroker;
    stroker.setWidth(pen.widthF());
    stroker.setCapStyle(pen.capStyle());
    stroker.setJoinStyle(pen.joinStyle());
    m_path = stroker.createStroke(m_path);
}

Result<Picture> drawnMetafile(
    const ImageInfo &info, const QRectF &bounds, QSize target, const std::function<bool(MetafileContext &)> &play)
{
    Result<QImage> canvas = vectorGround(renderedVectorSize(info.size, target), Qt::white);
    if (!canvas)
        return canvas.failure();
    const QTransform toCanvas = QTransform::fromTranslate(-bounds.x(), -bounds.y())
        * QTransform::fromScale(canvas->width() / bounds.width(), canvas->height() / bounds.height());
    VectorWork work;
    bool complete = false;
    {
        // Its painter ends before the canvas is handed on.
        MetafileContext context(*canvas, toCanvas, work);
        complete = play(context);
    }
    return vectorPicture(*canvas, info, !complete || work.isIncomplete());
}
