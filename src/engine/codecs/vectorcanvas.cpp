#include "engine/codecs/vectorcanvas.h"

#include "engine/codecs/pixels.h"
#include "engine/limits.h"

#include <QColor>

#include <algorithm>
#include <cmath>

namespace {

constexpr double farthest = 1e6; ///< pixels from the canvas's corner; beyond it nothing is seen anyway

double safe(double value)
{
    return std::isfinite(value) ? std::clamp(value, -farthest, farthest) : 0;
}

bool isSafe(const QPainterPath &path)
{
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element element = path.elementAt(i);
        if (!(std::abs(element.x) <= farthest && std::abs(element.y) <= farthest))
            return false;
    }
    return true;
}

}

QSize naturalVectorSize(QSizeF wanted, int longestSide)
{
    if (!(wanted.width() > 0 && wanted.height() > 0) || !std::isfinite(wanted.width())
        || !std::isfinite(wanted.height()))
        return {};
    const double longest = std::max(wanted.width(), wanted.height());
    const double scale = longest > longestSide ? longestSide / longest : 1;
    const auto pixels = [scale](double side) { return std::max(1, int(std::lround(side * scale))); };
    return {pixels(wanted.width()), pixels(wanted.height())};
}

QSize renderedVectorSize(QSize natural, QSize target)
{
    if (target.isEmpty() || natural.isEmpty())
        return natural;
    const double scale = std::min(target.width() / double(natural.width()), target.height() / double(natural.height()));
    if (scale >= 1)
        return natural;
    return {
        std::max(1, int(std::ceil(natural.width() * scale))), std::max(1, int(std::ceil(natural.height() * scale)))};
}

Result<QImage> vectorGround(QSize size, const QColor &ground)
{
    if (!limits::allows(size, 8))
        return Failure{tooLarge(size)};
    const bool opaque = ground.alpha() == 255;
    QImage image = allocateImage(size, opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
    if (image.isNull())
        return Failure{outOfMemory(size)};
    image.fill(ground);
    return image;
}

Picture vectorPicture(const QImage &drawn, const ImageInfo &info, bool partial)
{
    Picture picture;
    picture.pixels = drawn.format() == QImage::Format_RGB32 ? drawn : drawn.convertToFormat(QImage::Format_ARGB32);
    picture.info = info;
    picture.partial = partial;
    return picture;
}

double vectorCellCost(double cells, double rows, QSize size)
{
    // The rasteriser walks the cells of a row to find each.
    return cells * (20 + 0.4 * std::min(cells / std::max(rows, 1.0), double(size.width())));
}

double vectorEdgeCost(const QPainterPath &path, QSize size)
{
    // Each pixel that an edge crosses is a cell of its own, also to the left and right of the canvas.
    constexpr double walked = 32768;
    const auto row = [size](double y) { return std::clamp(y, 0.0, double(size.height())); };
    double cells = 0;
    for (int i = 1; i < path.elementCount(); ++i) {
        const QPainterPath::Element from = path.elementAt(i - 1);
        const QPainterPath::Element to = path.elementAt(i);
        const double down = std::abs(row(to.y) - row(from.y));
        const double across = std::abs(std::clamp(to.x, -walked, walked) - std::clamp(from.x, -walked, walked));
        const bool within = down > 0 || (to.y >= 0 && to.y <= size.height());
        cells += within ? down + across : 0;
    }
    const QRectF bounds = path.controlPointRect();
    return 1000.0 + 200.0 * path.elementCount() + vectorCellCost(cells, row(bounds.bottom()) - row(bounds.top()), size);
}

double vectorPathCost(const QPainterPath &path, QSize size)
{
    const QRectF visible = path.controlPointRect() & QRectF(QPointF(), QSizeF(size));
    return vectorEdgeCost(path, size) + visible.width() * visible.height();
}

QPainterPath safeVectorPath(const QPainterPath &path)
{
    if (isSafe(path))
        return path;
    QPainterPath result = path;
    for (int i = 0; i < result.elementCount(); ++i)
        result.setElementPositionAt(i, safe(path.elementAt(i).x), safe(path.elementAt(i).y));
    return result;
}
