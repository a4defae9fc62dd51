#include "engine/codecs/emfplus.h"

#include "engine/codecs/metafileshapes.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int compressedFlag = 0x4000;
constexpr int relativeFlag = 0x0800;
constexpr int colorFlag = 0x8000; ///< the brush number is a colour
constexpr int appendFlag = 0x2000;
constexpr int closedFlag = 0x2000;
constexpr size_t mostSaved = 1000;

QRectF boxAt(const MetafileRecord &data, size_t at, bool compressed)
{
    if (compressed)
        return QRectF(data.i16(at), data.i16(at + 2), data.i16(at + 4), data.i16(at + 6));
    return QRectF(data.f32(at), data.f32(at + 4), data.f32(at + 8), data.f32(at + 12));
}

QPainterPath boxesAt(const MetafileRecord &data, size_t at, bool compressed)
{
    const size_t each = compressed ? 8 : 16;
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    for (size_t i = 0; i < data.u32(at) && data.has(at + 4 + i * each, each); ++i)
        path.addRect(boxAt(data, at + 4 + i * each, compressed));
    return path;
}

QPolygonF pointsAt(const MetafileRecord &data, size_t at, int flags)
{
    size_t pointsAt = at + 4;
    return readPlusPoints(data, pointsAt, data.u32(at), (flags & compressedFlag) != 0, (flags & relativeFlag) != 0);
}

/// A curve through all points: at each it runs along the line between its neighbours.
QPainterPath curveThrough(const QPolygonF &points, double tension, bool closed)
{
    QPainterPath path;
    const qsizetype count = points.size();
    if (count < 2)
        return path;
    const auto at = [&](qsizetype i) {
        return closed ? points[(i % count + count) % count] : points[std::clamp<qsizetype>(i, 0, count - 1)];
    };
    const auto along = [&](qsizetype i) { return (at(i + 1) - at(i - 1)) * tension / 3; };
    path.moveTo(points.first());
    for (qsizetype i = 0; i < (closed ? count : count - 1); ++i)
        path.cubicTo(at(i) + along(i), at(i + 1) - along(i + 1), at(i + 1));
    if (closed)
        path.closeSubpath();
    return path;
}

MetafileContext::Combine combineOf(int flags)
{
    switch (flags >> 8 & 15) {
    case 1:
        return MetafileContext::Combine::And;
    case 2:
        return MetafileContext::Combine::Or;
    case 3:
        return MetafileContext::Combine::Xor;
    case 4:
        return MetafileContext::Combine::Difference;
    default:
        return MetafileContext::Combine::Copy;
    }
}

}

void EmfPlusPlayer::play(Bytes records)
{
    const ByteReader reader(records);
    for (size_t at = 0; reader.has(at, 12) && !m_context.isSpent();) {
        const quint32 size = reader.u32le(at + 4);
        const quint32 dataSize = reader.u32le(at + 8);
        if (size < 12 || dataSize > size - 12 || !reader.has(at, size) || !m_context.spend(200))
            return;
        playRecord(reader.u16le(at), reader.u16le(at + 2), {0, records.subspan(at + 12, dataSize)});
        at += size;
    }
}

void EmfPlusPlayer::playRecord(int type, int flags, const MetafileRecord &data)
{
    if (type == 0x4001) {
        // Files that hold everything twice are drawn from the plain records - if those are there as promised.
        m_active = (flags & 1) == 0 || !m_hasPlainDrawing;
        m_pixelsPerInch = std::clamp<double>(data.u32(8), 10, 10000);
        m_plain = !m_active;
        return;
    }
    if (!m_active)
        return;
    m_plain = type == 0x4004;
    if (type == 0x4009) {
        QPainterPath all;
        all.addRect(m_context.state().clip.region.boundingRect());
        m_context.fillCanvasPath(all, plusColor(data, 0));
        return;
    }
    if (playObject(type, flags, data) || playTransform(type, flags, data) || playSaving(type, data)
        || playClip(type, flags, data) || playShape(type, flags, data) || playCurve(type, flags, data)
        || playPath(type, flags, data))
        return;
    playPicture(type, flags, data);
}

bool EmfPlusPlayer::playObject(int type, int flags, const MetafileRecord &data)
{
    constexpr int continued = 0x8000;
    if (type != 0x4008)
        return false;
    const int kind = flags >> 8 & 0x7f;
    Bytes bytes = data.part(0);
    // A large object comes in pieces, each with the size of the whole in front; the last piece completes it.
    if ((flags & continued) != 0) {
        const Bytes piece = data.part(4);
        m_partialObject.append(reinterpret_cast<const char *>(piece.data()), qsizetype(piece.size()));
        if (size_t(m_partialObject.size()) < data.u32(0))
            return true;
        bytes = bytesOf(m_partialObject);
    }
    m_objects[size_t(flags & 63)] = readPlusObject(kind, bytes);
    m_partialObject.clear();
    return true;
}

void EmfPlusPlayer::transformWorld(const QTransform &by, int flags)
{
    m_world = (flags & appendFlag) != 0 ? m_world * by : by * m_world;
}

void EmfPlusPlayer::setPage(int unit, double scale)
{
    const double inch = m_pixelsPerInch;
    const std::array<double, 7> pixels{1, 1, 1, inch / 72, inch, inch / 300, inch / 25.4};
    const double factor = scale * (unit >= 0 && size_t(unit) < pixels.size() ? pixels[size_t(unit)] : 1);
    m_page = QTransform::fromScale(factor, factor);
}

bool EmfPlusPlayer::playTransform(int type, int flags, const MetafileRecord &data)
{
    switch (type) {
    case 0x402a:
        m_world = plusTransform(data, 0);
        return true;
    case 0x402b:
        m_world = {};
        return true;
    case 0x402c:
        transformWorld(plusTransform(data, 0), flags);
        return true;
    case 0x402d:
        transformWorld(QTransform::fromTranslate(data.f32(0), data.f32(4)), flags);
        return true;
    case 0x402e:
        transformWorld(QTransform::fromScale(data.f32(0), data.f32(4)), flags);
        return true;
    case 0x402f:
        transformWorld(QTransform().rotate(data.f32(0)), flags);
        return true;
    case 0x4030:
        setPage(flags & 0xff, data.f32(0));
        return true;
    default:
        return false;
    }
}

bool EmfPlusPlayer::playSaving(int type, const MetafileRecord &data)
{
    switch (type) {
    case 0x4025:
    case 0x4027:
    case 0x4028: {
        const bool container = type == 0x4027;
        if (m_saved.size() < mostSaved)
            m_saved.push_back({data.u32(container ? 32 : 0), m_world, m_page, m_context.state().clip});
        if (!container)
            return true;
        const QRectF to = boxAt(data, 0, false);
        const QRectF from = boxAt(data, 16, false);
        if (from.width() != 0 && from.height() != 0) {
            const double across = to.width() / from.width();
            const double down = to.height() / from.height();
            m_world = QTransform(across, 0, 0, down, to.x() - from.x() * across, to.y() - from.y() * down) * m_world;
        }
        return true;
    }
    case 0x4026:
    case 0x4029:
        restore(data.u32(0));
        return true;
    default:
        return false;
    }
}

void EmfPlusPlayer::restore(quint32 index)
{
    const auto found =
        std::find_if(m_saved.rbegin(), m_saved.rend(), [index](const Saved &saved) { return saved.index == index; });
    if (found == m_saved.rend())
        return;
    m_world = found->world;
    m_page = found->page;
    m_context.setClip(found->clip);
    m_saved.erase(std::next(found).base(), m_saved.end());
}

QRegion EmfPlusPlayer::regionPixels(const PlusRegion &region)
{
    constexpr quint32 emptyNode = 0x10000002;
    constexpr quint32 infiniteNode = 0x10000003;
    std::vector<QRegion> operands;
    // Read backwards, each operator finds its operands already there.
    for (auto node = region.rbegin(); node != region.rend(); ++node) {
        if (node->type > 5 || node->type < 1) {
            if (node->type == emptyNode)
                operands.emplace_back();
            else if (node->type == infiniteNode)
                operands.push_back(m_context.canvasRegion());
            else
                operands.push_back(m_context.regionOf(safeVectorPath(toPixels().map(node->shape))));
            continue;
        }
        if (operands.size() < 2)
            return m_context.canvasRegion();
        const QRegion first = operands.back();
        operands.pop_back();
        QRegion &second = operands.back();
        if (!m_context.spend(200.0 * (first.rectCount() + second.rectCount())))
            return {};
        switch (node->type) {
        case 1:
            second = first & second;
            break;
        case 2:
            second = first | second;
            break;
        case 3:
            second = first ^ second;
            break;
        case 4:
            second = first - second;
            break;
        default:
            second = second - first;
            break;
        }
    }
    return operands.empty() ? QRegion() : operands.back();
}

bool EmfPlusPlayer::playClip(int type, int flags, const MetafileRecord &data)
{
    switch (type) {
    case 0x4031:
        m_context.resetClip();
        return true;
    case 0x4032: {
        QPainterPath path;
        path.addRect(boxAt(data, 0, false));
        m_context.combineClip(safeVectorPath(toPixels().map(path)), combineOf(flags));
        return true;
    }
    case 0x4033:
        if (const QPainterPath *path = object<QPainterPath>(flags))
            m_context.combineClip(safeVectorPath(toPixels().map(*path)), combineOf(flags));
        return true;
    case 0x4034:
        if (const PlusRegion *region = object<PlusRegion>(flags))
            m_context.combineClipRegion(regionPixels(*region), combineOf(flags));
        return true;
    default:
        return false;
    }
}

void EmfPlusPlayer::fill(const QPainterPath &world, int flags, quint32 brushNumber)
{
    PlusBrush brush;
    if ((flags & colorFlag) != 0)
        brush.brush = QColor::fromRgba(brushNumber);
    else if (const PlusBrush *made = object<PlusBrush>(int(brushNumber & 63)))
        brush = *made;
    else
        return;
    const QPainterPath path = safeVectorPath(toPixels().map(world));
    if (brush.back.alpha() > 0)
        m_context.fillCanvasPath(path, brush.back);
    // Hatches stay in pixels, gradients and pictures go with the drawing.
    const Qt::BrushStyle style = brush.brush.style();
    if (style == Qt::TexturePattern || style >= Qt::LinearGradientPattern)
        brush.brush.setTransform(brush.brush.transform() * toPixels());
    m_context.fillCanvasPath(path, brush.brush);
}

void EmfPlusPlayer::stroke(const QPainterPath &world, int penNumber)
{
    const PlusPen *made = object<PlusPen>(penNumber);
    if (made == nullptr)
        return;
    QPen pen = made->pen;
    const QTransform map = toPixels();
    QBrush brush = made->brush.brush;
    if (brush.style() == Qt::TexturePattern || brush.style() >= Qt::LinearGradientPattern)
        brush.setTransform(brush.transform() * map);
    pen.setBrush(brush);
    const double scale = std::sqrt(std::abs((made->unit == 2 ? m_context.toCanvas() : map).determinant()));
    pen.setWidthF(std::clamp(pen.widthF() * (std::isfinite(scale) ? scale : 1), 1.0, 32767.0));
    m_context.strokeCanvasPath(safeVectorPath(map.map(world)), pen);
}

bool EmfPlusPlayer::playShape(int type, int flags, const MetafileRecord &data)
{
    const bool small = (flags & compressedFlag) != 0;
    switch (type) {
    case 0x400a:
        fill(boxesAt(data, 4, small), flags, data.u32(0));
        return true;
    case 0x400b:
        stroke(boxesAt(data, 0, small), flags);
        return true;
    case 0x400e:
        fill(metafileEllipse(boxAt(data, 4, small)), flags, data.u32(0));
        return true;
    case 0x400f:
        stroke(metafileEllipse(boxAt(data, 0, small)), flags);
        return true;
    case 0x4010:
        fill(metafileArc(boxAt(data, 12, small), -data.f32(4), -data.f32(8), ArcKind::Pie), flags, data.u32(0));
        return true;
    case 0x4011:
    case 0x4012:
        stroke(metafileArc(
                   boxAt(data, 8, small), -data.f32(0), -data.f32(4), type == 0x4011 ? ArcKind::Pie : ArcKind::Open),
            flags);
        return true;
    default:
        return false;
    }
}

bool EmfPlusPlayer::playCurve(int type, int flags, const MetafileRecord &data)
{
    QPainterPath path;
    switch (type) {
    case 0x400c:
        path.addPolygon(pointsAt(data, 4, flags));
        fill(path, flags, data.u32(0));
        return true;
    case 0x400d:
        path.addPolygon(pointsAt(data, 0, flags));
        if ((flags & closedFlag) != 0)
            path.closeSubpath();
        stroke(path, flags);
        return true;
    case 0x4016:
        path = curveThrough(pointsAt(data, 8, flags), data.f32(4), true);
        path.setFillRule((flags & closedFlag) != 0 ? Qt::WindingFill : Qt::OddEvenFill);
        fill(path, flags, data.u32(0));
        return true;
    case 0x4017:
        stroke(curveThrough(pointsAt(data, 4, flags), data.f32(0), true), flags);
        return true;
    case 0x4018: {
        const QPolygonF points = pointsAt(data, 12, flags);
        const qsizetype first = std::min<qsizetype>(data.u32(4), points.size());
        const qsizetype segments = std::min<qsizetype>(data.u32(8), points.size());
        stroke(curveThrough(points.mid(first, segments + 1), data.f32(0), false), flags);
        return true;
    }
    case 0x4019: {
        const QPolygonF points = pointsAt(data, 0, flags);
        stroke(metafileBezier({points.constData(), size_t(points.size())}), flags);
        return true;
    }
    default:
        return false;
    }
}

bool EmfPlusPlayer::playPath(int type, int flags, const MetafileRecord &data)
{
    switch (type) {
    case 0x4013:
        if (const PlusRegion *region = object<PlusRegion>(flags)) {
            const MetafileClip before = m_context.state().clip;
            m_context.combineClipRegion(regionPixels(*region), MetafileContext::Combine::And);
            QPainterPath all;
            all.addRect(m_context.state().clip.region.boundingRect());
            fill(toPixels().inverted().map(all), flags, data.u32(0));
            m_context.setClip(before);
        }
        return true;
    case 0x4014:
        if (const QPainterPath *path = object<QPainterPath>(flags))
            fill(*path, flags, data.u32(0));
        return true;
    case 0x4015:
        if (const QPainterPath *path = object<QPainterPath>(flags))
            stroke(*path, int(data.u32(0) & 63));
        return true;
    default:
        return false;
    }
}
