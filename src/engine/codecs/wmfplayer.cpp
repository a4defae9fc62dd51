#include "engine/codecs/wmfplayer.h"

#include "engine/codecs/metafilebitmap.h"
#include "engine/codecs/metafileshapes.h"

#include <algorithm>

namespace {

QPointF turnedPoint(const MetafileRecord &record, size_t at)
{
    return {double(record.i16(at + 2)), double(record.i16(at))};
}

/// Bottom, right, top, left.
QRectF turnedBox(const MetafileRecord &record, size_t at)
{
    return QRectF(turnedPoint(record, at + 4), turnedPoint(record, at));
}

/// Height, width, y, x.
QRectF sizedBox(const MetafileRecord &record, size_t at)
{
    const QPointF size = turnedPoint(record, at);
    return QRectF(turnedPoint(record, at + 4), QSizeF(size.x(), size.y()));
}

QPolygonF pointsAt(const MetafileRecord &record, size_t at, int count)
{
    QPolygonF points;
    for (size_t i = 0; i < size_t(count) && record.has(at + 4 * i, 4); ++i)
        points.append(record.point16(at + 4 * i));
    return points;
}

void scaleExtent(QPointF &extent, const MetafileRecord &record)
{
    const auto factor = [&record](size_t at) {
        return record.i16(at) == 0 || record.i16(at + 2) == 0 ? 1.0 : double(record.i16(at + 2)) / record.i16(at);
    };
    extent = {std::clamp(extent.x() * factor(10), -1e9, 1e9), std::clamp(extent.y() * factor(6), -1e9, 1e9)};
}

QPen plainPen(const MetafileRecord &record)
{
    QPen pen(record.color(12), std::abs(record.i16(8)), metafilePenStyle(quint32(record.u16(6))), Qt::RoundCap,
        Qt::RoundJoin);
    // Plain pens have dashes only as long as they are thin.
    if (pen.widthF() > 1 && pen.style() != Qt::NoPen)
        pen.setStyle(Qt::SolidLine);
    return pen;
}

QBrush plainBrush(const MetafileRecord &record)
{
    const int style = record.u16(6);
    if (style == 1)
        return QBrush(Qt::NoBrush);
    return QBrush(record.color(8), style == 2 ? metafileHatch(record.u16(12)) : Qt::SolidPattern);
}

QBrush patternBrush(const QImage &pattern)
{
    return pattern.isNull() ? QBrush(Qt::gray) : QBrush(pattern);
}

}

void WmfPlayer::play(const MetafileRecord &record)
{
    if (playMapping(record) || playState(record) || playObject(record) || playClip(record) || playRegion(record)
        || playShape(record) || playBitmap(record))
        return;
    playText(record);
}

/// The viewport is the picture: records that would move it are for the window that showed the file once.
bool WmfPlayer::playMapping(const MetafileRecord &record)
{
    MetafileMapping &mapping = m_context.state().mapping;
    switch (record.type) {
    case 0x020b:
        mapping.windowOrigin = turnedPoint(record, 6);
        return true;
    case 0x020c:
        mapping.windowExtent = turnedPoint(record, 6);
        return true;
    case 0x020f:
        mapping.windowOrigin += turnedPoint(record, 6);
        return true;
    case 0x0410:
        scaleExtent(mapping.windowExtent, record);
        return true;
    default:
        return false;
    }
}

bool WmfPlayer::playState(const MetafileRecord &record)
{
    MetafileState &state = m_context.state();
    switch (record.type) {
    case 0x001e:
        m_context.save();
        return true;
    case 0x0127:
        m_context.restore(record.i16(6));
        return true;
    case 0x0102:
        state.opaqueBack = record.u16(6) == 2;
        return true;
    case 0x0104:
        state.rasterOperation = record.u16(6);
        return true;
    case 0x0106:
        state.fillRule = record.u16(6) == 2 ? Qt::WindingFill : Qt::OddEvenFill;
        return true;
    case 0x0108:
        state.characterExtra = record.i16(6);
        return true;
    case 0x0201:
        state.backColor = record.color(6);
        return true;
    case 0x0209:
        state.textColor = record.color(6);
        return true;
    case 0x012e:
        state.textAlign = record.u16(6);
        return true;
    case 0x0214:
        m_context.moveTo(turnedPoint(record, 6));
        return true;
    default:
        return false;
    }
}

bool WmfPlayer::playObject(const MetafileRecord &record)
{
    switch (record.type) {
    case 0x012d:
        m_context.selectObject(size_t(record.u16(6)));
        return true;
    case 0x01f0:
        m_context.removeObject(size_t(record.u16(6)));
        return true;
    case 0x02fa:
        m_context.addObject(plainPen(record));
        return true;
    case 0x02fb:
        createFont(record);
        return true;
    case 0x02fc:
        m_context.addObject(plainBrush(record));
        return true;
    case 0x0142:
        m_context.addObject(patternBrush(packedMetafileBitmap(record.part(10))));
        return true;
    case 0x01f9:
        m_context.addObject(patternBrush(deviceBitmap(record.part(6))));
        return true;
    case 0x06ff:
        createRegion(record);
        return true;
    case 0x00f7:
        // A palette is not used, but takes its place in the table.
        m_context.addObject({});
        return true;
    default:
        return false;
    }
}

void WmfPlayer::createFont(const MetafileRecord &record)
{
    const Bytes nameBytes = record.part(24, 32);
    const auto end = std::find(nameBytes.begin(), nameBytes.end(), uchar(0));
    const QString name =
        QString::fromLatin1(reinterpret_cast<const char *>(nameBytes.data()), qsizetype(end - nameBytes.begin()));
    MetafileFont font;
    font.describe(name, record.u8(19), record.u8(23));
    const int height = record.i16(6);
    font.size = height == 0 ? 12 : std::abs(height);
    font.measure = height > 0 ? VectorFont::Height::Cell : VectorFont::Height::Em;
    font.averageWidth = std::abs(record.i16(8));
    font.angle = record.i16(10) / 10.0;
    font.bold = record.i16(14) > 550;
    font.italic = record.u8(16) != 0;
    font.underline = record.u8(17) != 0;
    font.strikeOut = record.u8(18) != 0;
    m_context.addObject(font);
}

/// A region is a list of bands: top and bottom, then pairs of left and right.
void WmfPlayer::createRegion(const MetafileRecord &record)
{
    QPainterPath region;
    region.setFillRule(Qt::WindingFill);
    size_t at = 28;
    for (int band = 0; band < record.u16(16) && record.has(at, 8); ++band) {
        const int numbers = record.u16(at);
        const double top = record.i16(at + 2);
        const double bottom = record.i16(at + 4);
        for (size_t i = 0; i + 1 < size_t(numbers) && record.has(at + 6 + 2 * i, 4); i += 2) {
            const double left = record.i16(at + 6 + 2 * i);
            region.addRect(left, top, record.i16(at + 8 + 2 * i) - left, bottom - top);
        }
        at += 8 + 2 * size_t(numbers);
    }
    m_context.addObject(region);
}

bool WmfPlayer::playClip(const MetafileRecord &record)
{
    switch (record.type) {
    case 0x0415:
        m_context.clipLogical(turnedBox(record, 6), MetafileContext::Combine::Difference);
        return true;
    case 0x0416:
        m_context.clipLogical(turnedBox(record, 6), MetafileContext::Combine::And);
        return true;
    case 0x0220:
        m_context.offsetClip(turnedPoint(record, 6));
        return true;
    case 0x012c: {
        m_context.resetClip();
        const QPainterPath *region = std::get_if<QPainterPath>(&m_context.object(size_t(record.u16(6))));
        // Its numbers are pixels of the device that the file was made for: the window's units.
        if (region != nullptr && !region->isEmpty())
            m_context.combineClip(safeVectorPath(m_context.matrix().map(*region)), MetafileContext::Combine::And);
        return true;
    }
    default:
        return false;
    }
}

bool WmfPlayer::playRegion(const MetafileRecord &record)
{
    if (record.type != 0x0228 && record.type != 0x0429 && record.type != 0x012a && record.type != 0x012b)
        return false;
    const QPainterPath *region = std::get_if<QPainterPath>(&m_context.object(size_t(record.u16(6))));
    if (region == nullptr)
        return true;
    m_context.save();
    MetafileState &state = m_context.state();
    state.fillRule = Qt::WindingFill;
    if (record.type == 0x0228 || record.type == 0x0429)
        m_context.selectObject(size_t(record.u16(8)));
    if (record.type == 0x012a)
        state.rasterOperation = 6;
    if (record.type == 0x0429)
        m_context.select(QPen(state.brush, std::abs(record.i16(12)), Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
    m_context.draw(*region, record.type == 0x0429 ? MetafileContext::Stroke : MetafileContext::Fill);
    m_context.restore(-1);
    return true;
}

QRectF WmfPlayer::outlinedBox(const MetafileRecord &record, size_t at)
{
    const QRectF box = turnedBox(record, at).normalized();
    const MetafileState &state = m_context.state();
    const QPointF scale = state.mapping.scale();
    const QPointF pixel(1 / std::abs(scale.x()), 1 / std::abs(scale.y()));
    if (state.pen.style() == Qt::NoPen || box.width() <= pixel.x() || box.height() <= pixel.y())
        return box;
    return scale.y() > 0 ? box.adjusted(0, 0, -pixel.x(), -pixel.y()) : box.adjusted(0, pixel.y(), -pixel.x(), 0);
}

bool WmfPlayer::playShape(const MetafileRecord &record)
{
    constexpr int both = MetafileContext::StrokeAndFill;
    QPainterPath path;
    switch (record.type) {
    case 0x0213:
        m_context.lineTo(turnedPoint(record, 6));
        return true;
    case 0x041f:
        m_context.setPixel(turnedPoint(record, 10), record.color(6));
        return true;
    case 0x0324:
        path.addPolygon(pointsAt(record, 8, record.u16(6)));
        path.closeSubpath();
        m_context.draw(path, both);
        return true;
    case 0x0325:
        path.addPolygon(pointsAt(record, 8, record.u16(6)));
        m_context.draw(path, MetafileContext::Stroke);
        return true;
    case 0x0538:
        drawPolygons(record);
        return true;
    case 0x0418:
        m_context.draw(metafileEllipse(outlinedBox(record, 6)), both);
        return true;
    case 0x041b:
        path.addRect(outlinedBox(record, 6));
        m_context.draw(path, both);
        return true;
    case 0x061c:
        m_context.draw(metafileRoundedBox(outlinedBox(record, 10), QSizeF(record.i16(8), record.i16(6))), both);
        return true;
    case 0x0817:
        drawArc(record, int(ArcKind::Open));
        return true;
    case 0x081a:
        drawArc(record, int(ArcKind::Pie));
        return true;
    case 0x0830:
        drawArc(record, int(ArcKind::Chord));
        return true;
    default:
        return false;
    }
}

void WmfPlayer::drawArc(const MetafileRecord &record, int kind)
{
    // Anticlockwise as it looks: axes that the window turns over change that.
    const QPointF scale = m_context.state().mapping.scale();
    const QPainterPath arc = metafileArc(outlinedBox(record, 14), turnedPoint(record, 10), turnedPoint(record, 6),
        scale.x() * scale.y() < 0, ArcKind(kind));
    m_context.draw(arc, ArcKind(kind) == ArcKind::Open ? MetafileContext::Stroke : MetafileContext::StrokeAndFill);
}

void WmfPlayer::drawPolygons(const MetafileRecord &record)
{
    const int polygons = record.u16(6);
    size_t at = 8 + 2 * size_t(polygons);
    QPainterPath path;
    for (int i = 0; i < polygons && at < record.size(); ++i) {
        const int count = record.u16(8 + 2 * size_t(i));
        const QPolygonF points = pointsAt(record, at, count);
        if (!points.isEmpty()) {
            path.addPolygon(points);
            path.closeSubpath();
        }
        at += 4 * size_t(count);
    }
    m_context.draw(path, MetafileContext::StrokeAndFill);
}

bool WmfPlayer::playBitmap(const MetafileRecord &record)
{
    switch (record.type) {
    case 0x061d: {
        MetafileBlit fill;
        fill.target = sizedBox(record, 10);
        fill.operation = record.u32(6);
        m_context.blit(fill);
        return true;
    }
    case 0x0922:
    case 0x0940:
        blit(record, false, record.type == 0x0940);
        return true;
    case 0x0b23:
    case 0x0b41:
        blit(record, true, record.type == 0x0b41);
        return true;
    case 0x0f43:
        stretchDib(record);
        return true;
    case 0x0d33:
        setDibToDevice(record);
        return true;
    default:
        return false;
    }
}

/// Without a bitmap a reserved word stands before the target, and the record is as long as its function number says.
void WmfPlayer::blit(const MetafileRecord &record, bool stretches, bool independent)
{
    const bool hasSource = record.size() != ((record.type >> 8) + 3) * 2;
    const size_t targetAt = (stretches ? 18 : 14) + (hasSource ? 0 : 2);
    MetafileBlit blit;
    blit.operation = record.u32(6);
    blit.target = sizedBox(record, targetAt);
    if (hasSource) {
        const Bytes bitmap = record.part(targetAt + 8);
        blit.source = independent ? packedMetafileBitmap(bitmap) : deviceBitmap(bitmap);
    }
    blit.part = stretches ? sizedBox(record, 10) : QRectF(turnedPoint(record, 10), blit.target.size());
    m_context.blit(blit);
}

void WmfPlayer::stretchDib(const MetafileRecord &record)
{
    MetafileBlit blit;
    blit.operation = record.u32(6);
    blit.source = packedMetafileBitmap(record.part(28));
    blit.part = sizedBox(record, 12);
    blit.target = sizedBox(record, 20);
    // Rows count from the first one in the file, which is the lowest unless the height is negative.
    if (record.i32(28 + 8) >= 0)
        blit.part.moveTop(blit.source.height() - blit.part.y() - blit.part.height());
    m_context.blit(blit);
}

void WmfPlayer::setDibToDevice(const MetafileRecord &record)
{
    MetafileBlit blit;
    blit.source = packedMetafileBitmap(record.part(24));
    blit.target = sizedBox(record, 16);
    blit.part = QRectF(turnedPoint(record, 12), blit.target.size());
    if (record.i32(24 + 8) >= 0)
        blit.part.moveTop(blit.source.height() - blit.part.y() - blit.part.height());
    m_context.blit(blit);
}

bool WmfPlayer::playText(const MetafileRecord &record)
{
    if (record.type == 0x0521)
        drawText(record);
    else if (record.type == 0x0a32)
        drawExtendedText(record);
    else
        return false;
    return true;
}

void WmfPlayer::drawText(const MetafileRecord &record)
{
    const size_t count = size_t(record.u16(6));
    const size_t behind = 8 + (count + 1) / 2 * 2;
    MetafileText text;
    text.text = m_context.state().font.decoded(record.part(8, count));
    text.at = turnedPoint(record, behind);
    m_context.drawText(text);
}

void WmfPlayer::drawExtendedText(const MetafileRecord &record)
{
    constexpr int opaqueOption = 2;
    constexpr int clippedOption = 4;
    constexpr int glyphIndexOption = 0x10;
    constexpr int pairsOption = 0x2000;
    const size_t count = size_t(record.u16(10));
    const int options = record.u16(12);
    const bool hasBox = (options & (opaqueOption | clippedOption)) != 0;
    const size_t textAt = hasBox ? 22 : 14;
    MetafileText text;
    text.at = turnedPoint(record, 6);
    if ((options & glyphIndexOption) == 0)
        text.text = m_context.state().font.decoded(record.part(textAt, count));
    const QRectF box(record.point16(14), record.point16(18));
    if ((options & opaqueOption) != 0)
        text.opaque = box;
    if ((options & clippedOption) != 0)
        text.clip = box;
    const size_t advancesAt = textAt + (count + 1) / 2 * 2;
    const size_t each = (options & pairsOption) != 0 ? 4 : 2;
    for (size_t i = 0; i < count && record.has(advancesAt + i * each, each); ++i)
        text.advances.emplace_back(
            record.i16(advancesAt + i * each), each == 4 ? record.i16(advancesAt + i * each + 2) : 0);
    m_context.drawText(text);
}
