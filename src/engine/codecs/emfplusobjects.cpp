#include "engine/codecs/emfplusobjects.h"

#include "engine/codecs/metafilebitmap.h"
#include "engine/codecs/metafileshapes.h"
#include "engine/limits.h"

#include <algorithm>

namespace {

constexpr quint32 mostPoints = 200000;
constexpr quint32 mostRegionNodes = 1000;

QRectF boxAt(const MetafileRecord &data, size_t at)
{
    return QRectF(data.f32(at), data.f32(at + 4), data.f32(at + 8), data.f32(at + 12));
}

/// Colours along a gradient, when it has more than two.
QGradientStops stopsAt(const MetafileRecord &data, size_t at, quint32 flags, QColor first, QColor last)
{
    constexpr quint32 presetColors = 4;
    constexpr quint32 blendFactors = 8;
    const quint32 count = data.u32(at);
    QGradientStops stops;
    if ((flags & (presetColors | blendFactors)) != 0 && count >= 2 && count <= 256 && data.has(at + 4, count * 8)) {
        for (size_t i = 0; i < count; ++i) {
            const double position = std::clamp(data.f32(at + 4 + 4 * i), 0.0, 1.0);
            const size_t valueAt = at + 4 + 4 * (count + i);
            if ((flags & presetColors) != 0) {
                stops.append({position, plusColor(data, valueAt)});
                continue;
            }
            const double share = std::clamp(data.f32(valueAt), 0.0, 1.0);
            const auto mixed = [share](int from, int to) { return int(from + (to - from) * share); };
            stops.append({position,
                QColor(mixed(first.red(), last.red()), mixed(first.green(), last.green()),
                    mixed(first.blue(), last.blue()), mixed(first.alpha(), last.alpha()))});
        }
        return stops;
    }
    return {{0, first}, {1, last}};
}

QGradient::Spread spreadOf(int wrap)
{
    return wrap == 4 ? QGradient::PadSpread : wrap == 0 ? QGradient::RepeatSpread : QGradient::ReflectSpread;
}

PlusBrush linearGradient(const MetafileRecord &data)
{
    constexpr quint32 hasTransform = 2;
    const quint32 flags = data.u32(8);
    const QRectF box = boxAt(data, 16);
    QLinearGradient gradient(box.topLeft(), box.topRight());
    gradient.setSpread(spreadOf(data.i32(12)));
    const bool turned = (flags & hasTransform) != 0;
    gradient.setStops(stopsAt(data, turned ? 72 : 48, flags, plusColor(data, 32), plusColor(data, 36)));
    QBrush brush(gradient);
    if (turned)
        brush.setTransform(plusTransform(data, 48));
    return {brush, Qt::transparent};
}

QPainterPath pathOf(const MetafileRecord &data);

/// A gradient from a centre to an outline is drawn as one to the ellipse around that outline.
PlusBrush pathGradient(const MetafileRecord &data)
{
    constexpr quint32 outlineIsPath = 1;
    const quint32 surrounding = data.u32(28);
    if (surrounding > 4096)
        return {QBrush(plusColor(data, 16)), Qt::transparent};
    size_t at = 32 + 4 * size_t(surrounding);
    const QColor edge = surrounding > 0 ? plusColor(data, 32) : QColor(Qt::white);
    QRectF box;
    if ((data.u32(8) & outlineIsPath) != 0) {
        box = pathOf({0, data.part(at + 4, data.u32(at))}).controlPointRect();
    } else {
        const quint32 count = data.u32(at);
        at += 4;
        box = readPlusPoints(data, at, count, false, false).boundingRect();
    }
    QRadialGradient gradient(QPointF(), 1);
    gradient.setStops({{0, plusColor(data, 16)}, {1, edge}});
    QBrush brush(gradient);
    brush.setTransform(QTransform::fromScale(std::max(box.width() / 2, 1e-3), std::max(box.height() / 2, 1e-3))
        * QTransform::fromTranslate(box.center().x(), box.center().y()));
    return {brush, Qt::transparent};
}

QImage imageOf(const MetafileRecord &data);

PlusBrush brushOf(const MetafileRecord &data)
{
    switch (data.u32(4)) {
    case 0:
        return {QBrush(plusColor(data, 8)), Qt::transparent};
    case 1: {
        // The first six hatches are those of plain brushes; of the many others the colours count.
        const int hatch = data.i32(8);
        const Qt::BrushStyle style = hatch >= 0 && hatch <= 5 ? metafileHatch(hatch) : Qt::Dense4Pattern;
        return {QBrush(plusColor(data, 12), style), plusColor(data, 16)};
    }
    case 2: {
        constexpr quint32 hasTransform = 2;
        const bool turned = (data.u32(8) & hasTransform) != 0;
        const QImage image = imageOf({0, data.part(turned ? 40 : 16)});
        QBrush brush = image.isNull() ? QBrush(Qt::gray) : QBrush(image);
        if (turned)
            brush.setTransform(plusTransform(data, 16));
        return {brush, Qt::transparent};
    }
    case 3:
        return pathGradient(data);
    case 4:
        return linearGradient(data);
    default:
        return {};
    }
}

PlusPen penOf(const MetafileRecord &data)
{
    PlusPen result;
    QPen &pen = result.pen;
    const quint32 flags = data.u32(8);
    result.unit = data.i32(12);
    pen.setWidthF(std::clamp(data.f32(16), 0.0, 32767.0));
    pen.setCapStyle(Qt::FlatCap);
    pen.setJoinStyle(Qt::MiterJoin);
    size_t at = 20;
    if ((flags & 0x1) != 0)
        at += 24;
    if ((flags & 0x2) != 0) {
        const quint32 cap = data.u32(at);
        pen.setCapStyle(cap == 1 ? Qt::SquareCap : cap == 2 ? Qt::RoundCap : Qt::FlatCap);
        at += 4;
    }
    if ((flags & 0x4) != 0)
        at += 4;
    if ((flags & 0x8) != 0) {
        const quint32 join = data.u32(at);
        pen.setJoinStyle(join == 1 ? Qt::BevelJoin : join == 2 ? Qt::RoundJoin : Qt::MiterJoin);
        at += 4;
    }
    if ((flags & 0x10) != 0) {
        pen.setMiterLimit(std::clamp(data.f32(at), 1.0, 1000.0));
        at += 4;
    }
    quint32 style = 0;
    if ((flags & 0x20) != 0) {
        style = data.u32(at);
        at += 4;
    }
    for (const quint32 single : {0x40u, 0x80u})
        at += (flags & single) != 0 ? 4 : 0;
    QList<qreal> dashes;
    if ((flags & 0x100) != 0) {
        const quint32 count = data.u32(at);
        for (size_t i = 0; i < std::min<size_t>(count, 32); ++i)
            dashes.append(std::clamp(data.f32(at + 4 + 4 * i), 0.01, 1e6));
        at += 4 + 4 * size_t(count);
    }
    if ((flags & 0x200) != 0)
        at += 4;
    if ((flags & 0x400) != 0)
        at += 4 + 4 * size_t(data.u32(at));
    for (const quint32 sized : {0x800u, 0x1000u})
        at += (flags & sized) != 0 ? 4 + size_t(data.u32(at)) : 0;
    if (style >= 1 && style <= 4) {
        pen.setStyle(metafilePenStyle(style));
    } else if (style == 5 && !dashes.isEmpty()) {
        if (dashes.size() % 2 == 1)
            dashes.append(QList<qreal>(dashes));
        pen.setDashPattern(dashes);
    }
    result.brush = brushOf({0, data.part(at)});
    return result;
}

/// The kinds of a path's points: a byte each, or runs of them.
std::vector<quint8> pointKinds(const MetafileRecord &data, size_t at, quint32 count, bool runs)
{
    std::vector<quint8> kinds;
    while (kinds.size() < count && data.has(at, runs ? 2 : 1)) {
        const quint32 repeated = runs ? quint32(data.u8(at) & 0x3f) : 1;
        kinds.insert(
            kinds.end(), std::min<size_t>(repeated, count - kinds.size()), quint8(data.u8(runs ? at + 1 : at)));
        at += runs ? 2 : 1;
    }
    kinds.resize(count, 1);
    return kinds;
}

QPainterPath pathOf(const MetafileRecord &data)
{
    constexpr quint32 compressed = 0x4000;
    constexpr quint32 relative = 0x0800;
    constexpr quint32 runs = 0x1000;
    const quint32 flags = data.u32(8);
    size_t at = 12;
    const QPolygonF points = readPlusPoints(data, at, data.u32(4), (flags & compressed) != 0, (flags & relative) != 0);
    const std::vector<quint8> kinds = pointKinds(data, at, quint32(points.size()), (flags & runs) != 0);
    QPainterPath path;
    for (qsizetype i = 0; i < points.size(); ++i) {
        const int kind = kinds[size_t(i)] & 7;
        if (kind == 0) {
            path.moveTo(points[i]);
        } else if (kind == 3 && i + 2 < points.size()) {
            path.cubicTo(points[i], points[i + 1], points[i + 2]);
            i += 2;
        } else {
            path.lineTo(points[i]);
        }
        if ((kinds[size_t(i)] & 0x80) != 0)
            path.closeSubpath();
    }
    return path;
}

PlusRegion regionOf(const MetafileRecord &data)
{
    constexpr quint32 boxNode = 0x10000000;
    constexpr quint32 pathNode = 0x10000001;
    PlusRegion nodes;
    size_t at = 8;
    while (data.has(at, 4) && nodes.size() < mostRegionNodes) {
        PlusRegionNode node{data.u32(at), {}};
        at += 4;
        if (node.type == boxNode) {
            node.shape.addRect(boxAt(data, at));
            at += 16;
        } else if (node.type == pathNode) {
            const size_t size = data.u32(at);
            node.shape = pathOf({0, data.part(at + 4, size)});
            at += 4 + size;
        }
        nodes.push_back(node);
    }
    return nodes;
}

QImage rawPixels(const MetafileRecord &data)
{
    const QSize size(data.i32(8), data.i32(12));
    const int stride = data.i32(16);
    const quint32 format = data.u32(20);
    const int bytes = int(format >> 8 & 0xff) / 8;
    constexpr quint32 rgb24 = 0x21808;
    constexpr quint32 rgb32 = 0x22009;
    constexpr quint32 argb32 = 0x26200a;
    constexpr quint32 premultiplied32 = 0xe200b;
    if (format != rgb24 && format != rgb32 && format != argb32 && format != premultiplied32)
        return {};
    if (!limits::allows(size, 8) || stride < size.width() * bytes
        || !data.has(28, size_t(stride) * size_t(size.height())))
        return {};
    const QImage::Format kind = format == rgb24 ? QImage::Format_BGR888
        : format == rgb32                       ? QImage::Format_RGB32
        : format == argb32                      ? QImage::Format_ARGB32
                                                : QImage::Format_ARGB32_Premultiplied;
    QImage image(size, kind);
    if (image.isNull())
        return image;
    for (int y = 0; y < size.height(); ++y) {
        const Bytes row = data.part(28 + size_t(y) * size_t(stride), size_t(size.width() * bytes));
        std::copy(row.begin(), row.end(), image.scanLine(y));
    }
    const bool opaque = kind == QImage::Format_RGB32 || kind == QImage::Format_BGR888;
    // By way of plain opacity, so that no colour is brighter than its own.
    if (kind == QImage::Format_ARGB32_Premultiplied)
        image = image.convertToFormat(QImage::Format_ARGB32);
    return image.convertToFormat(opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
}

QImage imageOf(const MetafileRecord &data)
{
    constexpr quint32 bitmap = 1;
    constexpr quint32 compressed = 1;
    if (data.u32(4) != bitmap)
        return {};
    return data.u32(24) == compressed ? embeddedPicture(data.part(28)) : rawPixels(data);
}

PlusFont fontOf(const MetafileRecord &data)
{
    PlusFont font;
    QString name;
    for (size_t i = 0; i < std::min<size_t>(data.u32(20), 64); ++i)
        name += QChar(ushort(data.u16(24 + 2 * i)));
    const quint32 style = data.u32(12);
    font.face.family = vectorFamilyOf(name);
    font.face.size = std::clamp(data.f32(4), 0.01, 1e6);
    font.face.bold = (style & 1) != 0;
    font.face.italic = (style & 2) != 0;
    font.face.underline = (style & 4) != 0;
    font.face.strikeOut = (style & 8) != 0;
    font.unit = data.i32(8);
    return font;
}

}

QColor plusColor(const MetafileRecord &record, size_t at)
{
    return QColor::fromRgba(record.u32(at));
}

QTransform plusTransform(const MetafileRecord &record, size_t at)
{
    return QTransform(record.f32(at), record.f32(at + 4), record.f32(at + 8), record.f32(at + 12), record.f32(at + 16),
        record.f32(at + 20));
}

QPolygonF readPlusPoints(const MetafileRecord &record, size_t &at, quint32 count, bool compressed, bool relative)
{
    QPolygonF points;
    // A way is 7 bits, or 15 when the first bit says so.
    const auto step = [&record, &at] {
        const int first = record.u8(at++);
        if ((first & 0x80) == 0)
            return (first ^ 0x40) - 0x40;
        return ((((first & 0x7f) << 8) | record.u8(at++)) ^ 0x4000) - 0x4000;
    };
    QPointF last;
    for (quint32 i = 0; i < std::min(count, mostPoints); ++i) {
        const size_t bytes = relative ? 2 : compressed ? 4 : 8;
        if (!record.has(at, bytes))
            break;
        if (relative) {
            const int across = step();
            last += QPointF(across, step());
        } else {
            last = compressed ? record.point16(at) : QPointF(record.f32(at), record.f32(at + 4));
            at += bytes;
        }
        points.append(last);
    }
    return points;
}

PlusObject readPlusObject(int type, Bytes bytes)
{
    const MetafileRecord data(0, bytes);
    switch (type) {
    case 1:
        return brushOf(data);
    case 2:
        return penOf(data);
    case 3:
        return pathOf(data);
    case 4:
        return regionOf(data);
    case 5:
        return imageOf(data);
    case 6:
        return fontOf(data);
    case 7:
        return PlusFormat{data.u32(4), data.i32(12), data.i32(16)};
    default:
        return {};
    }
}
