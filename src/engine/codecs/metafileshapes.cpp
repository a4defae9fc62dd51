#include "engine/codecs/metafileshapes.h"

#include <array>
#include <cmath>

namespace {

double angleTo(QPointF point, const QRectF &box)
{
    const QPointF from = point - box.center();
    return std::atan2(-from.y() * std::abs(box.width()), from.x() * std::abs(box.height())) * 180 / M_PI;
}

}

QPainterPath metafileArc(const QRectF &box, QPointF start, QPointF end, bool clockwise, ArcKind kind)
{
    const QRectF upright = box.normalized();
    const double first = angleTo(start, upright);
    double sweep = angleTo(end, upright) - first;
    if (clockwise)
        sweep -= sweep >= 0 ? 360 : 0;
    else
        sweep += sweep <= 0 ? 360 : 0;
    return metafileArc(upright, first, sweep, kind);
}

QPainterPath metafileArc(const QRectF &box, double startAngle, double sweep, ArcKind kind)
{
    QPainterPath path;
    // Without an extent there is no arc to start on.
    if (box.width() == 0 || box.height() == 0) {
        path.moveTo(box.topLeft());
        path.lineTo(box.bottomRight());
        return path;
    }
    const double turn = std::fmod(sweep, 720);
    path.arcMoveTo(box, startAngle);
    if (kind == ArcKind::Pie) {
        path.moveTo(box.center());
        path.arcTo(box, startAngle, turn);
    } else {
        path.arcTo(box, startAngle, turn);
    }
    if (kind != ArcKind::Open)
        path.closeSubpath();
    return path;
}

QPainterPath metafileRoundedBox(const QRectF &box, QSizeF corners)
{
    QPainterPath path;
    path.addRoundedRect(box.normalized(), std::abs(corners.width()) / 2, std::abs(corners.height()) / 2);
    return path;
}

QPainterPath metafileEllipse(const QRectF &box)
{
    QPainterPath path;
    path.addEllipse(box.normalized());
    return path;
}

QPainterPath metafileBezier(std::span<const QPointF> points)
{
    QPainterPath path;
    if (points.empty())
        return path;
    path.moveTo(points[0]);
    for (size_t i = 1; i + 2 < points.size(); i += 3)
        path.cubicTo(points[i], points[i + 1], points[i + 2]);
    return path;
}

Qt::BrushStyle metafileHatch(int number)
{
    constexpr std::array<Qt::BrushStyle, 6> styles{
        Qt::HorPattern, Qt::VerPattern, Qt::FDiagPattern, Qt::BDiagPattern, Qt::CrossPattern, Qt::DiagCrossPattern};
    return number >= 0 && size_t(number) < styles.size() ? styles[size_t(number)] : Qt::SolidPattern;
}

Qt::PenStyle metafilePenStyle(quint32 style)
{
    constexpr std::array<Qt::PenStyle, 9> styles{Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine,
        Qt::DashDotDotLine, Qt::NoPen, Qt::SolidLine, Qt::SolidLine, Qt::DotLine};
    return (style & 15) < styles.size() ? styles[style & 15] : Qt::SolidLine;
}
