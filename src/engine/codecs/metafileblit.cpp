// The part of the metafile's device context that puts bitmaps and gradients on the canvas.

#include "engine/codecs/metafilecontext.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr quint32 copySource = 0xcc;

bool dependsOnSource(quint32 operation)
{
    return (operation >> 2 & 0x33) != (operation & 0x33);
}

bool dependsOnPattern(quint32 operation)
{
    return (operation >> 4 & 0x0f) != (operation & 0x0f);
}

/// A ternary operation is a table: its bit number 4 p + 2 s + d is the result for these bits of pattern, source and
/// what is there.
quint32 combined(quint32 operation, quint32 pattern, quint32 source, quint32 there)
{
    quint32 result = 0;
    for (quint32 row = 0; row < 8; ++row) {
        if ((operation >> row & 1) != 0)
            result |= (row & 4 ? pattern : ~pattern) & (row & 2 ? source : ~source) & (row & 1 ? there : ~there);
    }
    return result | 0xff000000;
}

/// The whole pixels of a box; one at least in each direction.
QRect pixelsOf(const QRectF &box)
{
    const QRectF upright = box.normalized();
    const int left = int(std::lround(upright.left()));
    const int top = int(std::lround(upright.top()));
    return QRect(left, top, std::max(1, int(std::lround(upright.right())) - left),
        std::max(1, int(std::lround(upright.bottom())) - top));
}

/// Leads one box onto another; sides may be negative.
QTransform boxToBox(const QRectF &from, const QRectF &to)
{
    const double across = to.width() / from.width();
    const double down = to.height() / from.height();
    return QTransform(across, 0, 0, down, to.left() - from.left() * across, to.top() - from.top() * down);
}

QRectF mappedBox(const QTransform &map, const QRectF &box)
{
    QPainterPath corners(map.map(box.topLeft()));
    corners.lineTo(map.map(box.bottomRight()));
    corners = safeVectorPath(corners);
    return QRectF(QPointF(corners.elementAt(0)), QPointF(corners.elementAt(1)));
}

}

void MetafileContext::drawTransformed(
    const QImage &image, const QRectF &part, const QTransform &toCanvas, double opacity)
{
    QPainterPath shape;
    shape.addRect(part.normalized());
    shape = safeVectorPath(toCanvas.map(shape));
    const double cost = 20 * vectorPathCost(shape, m_canvas.size()) + double(image.width()) * image.height();
    if (image.isNull() || !toCanvas.isInvertible() || !prepare(cost, shape.controlPointRect()))
        return;
    m_painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.setRenderHint(QPainter::SmoothPixmapTransform);
    m_painter.setOpacity(opacity);
    m_painter.setTransform(toCanvas);
    m_painter.drawImage(part.normalized(), image, part.normalized());
    m_painter.resetTransform();
    m_painter.setOpacity(1);
}

void MetafileContext::blit(const MetafileBlit &blit)
{
    const quint32 operation = blit.operation >> 16 & 0xff;
    const QTransform map = matrix();
    if (!dependsOnSource(operation)) {
        QPainterPath path;
        path.addRect(blit.target.normalized());
        const int before = std::exchange(m_state.rasterOperation, int((operation & 3) | (operation >> 4 & 3) << 2) + 1);
        paint(safeVectorPath(map.map(path)), Fill);
        m_state.rasterOperation = before;
        return;
    }
    if (blit.source.isNull() || blit.part.width() == 0 || blit.part.height() == 0)
        return;
    if (map.type() <= QTransform::TxScale) {
        combinePixels(blit, mappedBox(map, blit.target));
        return;
    }
    const QRectF part = blit.part & blit.source.rect();
    if (!part.isEmpty())
        drawTransformed(blit.source, part, boxToBox(blit.part, blit.target) * map, blit.opacity);
}

QImage MetafileContext::scaledSource(const MetafileBlit &blit, const QRectF &target, QRect visible) const
{
    QImage source = blit.source;
    QRectF part = blit.part;
    const double across = std::abs(target.width() / part.width());
    const double down = std::abs(target.height() / part.height());
    const bool few = std::abs(part.width()) < 16 || std::abs(part.height()) < 16;
    if (!blit.transparent && (across < 0.7 || down < 0.7)) {
        // Averaged first: a painter looks at four pixels only, however many fall into one.
        const QSize size(std::max(1, int(std::ceil(source.width() * std::min(across, 1.0)))),
            std::max(1, int(std::ceil(source.height() * std::min(down, 1.0)))));
        const QTransform shrink = boxToBox(QRectF(source.rect()), QRectF(QPointF(), QSizeF(size)));
        part = QRectF(shrink.map(part.topLeft()), shrink.map(part.bottomRight()));
        source = source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    // Parts outside of the source leave what is there.
    QImage scaled(visible.size(), QImage::Format_ARGB32_Premultiplied);
    if (scaled.isNull())
        return scaled;
    scaled.fill(Qt::transparent);
    QPainter painter(&scaled);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, !blit.transparent && !few && (across != 1 || down != 1));
    painter.setTransform(boxToBox(part, target) * QTransform::fromTranslate(-visible.x(), -visible.y()));
    const QRectF shown = part.normalized() & QRectF(source.rect());
    painter.drawImage(shown, source, shown);
    return scaled;
}

QImage MetafileContext::patternPixels(QRect visible) const
{
    QImage pattern(visible.size(), QImage::Format_RGB32);
    if (pattern.isNull())
        return pattern;
    pattern.fill(m_state.backColor);
    QBrush brush = m_state.brush;
    brush.setTransform(QTransform::fromTranslate(m_state.brushOrigin.x(), m_state.brushOrigin.y()));
    QPainter painter(&pattern);
    painter.translate(-visible.topLeft());
    painter.fillRect(visible, brush);
    return pattern;
}

void MetafileContext::combinePixels(const MetafileBlit &blit, const QRectF &target)
{
    const QRect pixels = pixelsOf(target);
    // A side that came out as nothing still has its one pixel, on its own side.
    const QRectF snapped(QPointF(target.width() < 0 ? pixels.right() + 1 : pixels.left(),
                             target.height() < 0 ? pixels.bottom() + 1 : pixels.top()),
        QSizeF(target.width() < 0 ? -pixels.width() : pixels.width(),
            target.height() < 0 ? -pixels.height() : pixels.height()));
    const QRect visible = pixels & m_state.clip.region.boundingRect();
    const double cost =
        5000 + 25.0 * visible.width() * visible.height() + 4.0 * blit.source.width() * blit.source.height();
    if (!prepare(visible.isEmpty() ? 1000 : cost, pixels) || visible.isEmpty())
        return;
    QImage source = scaledSource(blit, snapped, visible);
    if (source.isNull())
        return;
    const quint32 operation = blit.operation >> 16 & 0xff;
    if (blit.transparent || operation != copySource) {
        const QImage pattern = dependsOnPattern(operation) ? patternPixels(visible) : source;
        const quint32 key = blit.transparent.value_or(0) | 0xff000000;
        for (int y = 0; y < visible.height(); ++y) {
            QRgb *row = reinterpret_cast<QRgb *>(source.scanLine(y));
            const QRgb *brush = reinterpret_cast<const QRgb *>(pattern.constScanLine(y));
            const QRgb *there = reinterpret_cast<const QRgb *>(m_canvas.constScanLine(y + visible.y())) + visible.x();
            for (int x = 0; x < visible.width(); ++x) {
                if (blit.transparent && row[x] == key)
                    row[x] = 0;
                else if (row[x] != 0)
                    row[x] = combined(operation, brush[x], row[x], there[x]);
            }
        }
    }
    m_painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    m_painter.setOpacity(blit.opacity);
    m_painter.drawImage(visible.topLeft(), source);
    m_painter.setOpacity(1);
}

void MetafileContext::gradientBox(const QRectF &box, QRgb first, QRgb last, bool downwards)
{
    const QTransform map = matrix();
    const QPointF end = downwards ? box.bottomLeft() : box.topRight();
    QLinearGradient gradient(map.map(box.topLeft()), map.map(end));
    gradient.setColorAt(0, QColor(first));
    gradient.setColorAt(1, QColor(last));
    QPainterPath path;
    path.addRect(box.normalized());
    fillCanvasPath(safeVectorPath(map.map(path)), gradient);
}

void MetafileContext::gradientTriangle(const QPolygonF &corners, const std::array<QRgb, 3> &colors)
{
    QPainterPath outline;
    outline.addPolygon(matrix().map(corners));
    outline = safeVectorPath(outline);
    const QPointF a = outline.elementAt(0);
    const QPointF b = QPointF(outline.elementAt(1)) - a;
    const QPointF c = QPointF(outline.elementAt(2)) - a;
    const double area = b.x() * c.y() - b.y() * c.x();
    const QRect visible = outline.boundingRect().toAlignedRect() & m_canvas.rect();
    if (area == 0 || !prepare(2000 + 30.0 * visible.width() * visible.height(), outline.boundingRect())
        || visible.isEmpty())
        return;
    QImage image(visible.size(), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return;
    image.fill(Qt::transparent);
    for (int y = 0; y < visible.height(); ++y) {
        QRgb *row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < visible.width(); ++x) {
            const QPointF at = QPointF(visible.x() + x + 0.5, visible.y() + y + 0.5) - a;
            const double second = (at.x() * c.y() - at.y() * c.x()) / area;
            const double third = (b.x() * at.y() - b.y() * at.x()) / area;
            const double first = 1 - second - third;
            if (first < 0 || second < 0 || third < 0)
                continue;
            const auto mixed = [&](int (*channel)(QRgb)) {
                return int(first * channel(colors[0]) + second * channel(colors[1]) + third * channel(colors[2]) + 0.5);
            };
            row[x] = qRgb(mixed(qRed), mixed(qGreen), mixed(qBlue));
        }
    }
    m_painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    m_painter.drawImage(visible.topLeft(), image);
}
