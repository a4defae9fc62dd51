#pragma once

#include "engine/codecs/metafilestate.h"
#include "engine/codecs/vectorcanvas.h"

#include <QPainter>

#include <functional>
#include <set>
#include <vector>

/// The device context that metafiles draw through: state, objects, and all drawing, in logical units, on one canvas.
/// Source: the published [MS-EMF] and [MS-WMF]. All drawing is bounded by the VectorWork.
class MetafileContext
{
public:
    enum Part { Stroke = 1, Fill = 2, StrokeAndFill = 3 };
    enum class Combine { And = 1, Or, Xor, Difference, Copy };

    /// `toCanvas` leads from the picture's pixels to those of the canvas.
    MetafileContext(QImage &canvas, const QTransform &toCanvas, VectorWork &work);

    MetafileState &state() { return m_state; }
    bool isSpent() const { return m_work.isSpent(); }
    /// Of everything drawn, visible or not, in pixels of the canvas.
    QRectF paintedBounds() const { return m_painted; }

    void save();
    /// To a level counted from the bottom (positive) or back from here (negative).
    void restore(int level);

    void setObject(size_t index, const MetafileObject &object);
    /// Into the lowest free place.
    void addObject(const MetafileObject &object);
    void removeObject(size_t index);
    const MetafileObject &object(size_t index) const;
    void selectObject(size_t index);
    void select(const MetafileObject &object);

    /// Logical units to pixels of the canvas.
    QTransform matrix() const;
    const QTransform &toCanvas() const { return m_toCanvas; }
    /// Notes work done outside of here; false when all is spent.
    bool spend(double units) { return m_work.spend(units); }

    void draw(const QPainterPath &logical, int parts);
    void moveTo(QPointF point);
    void lineTo(QPointF point);
    /// Continues from the current point and leaves it at the last of the points.
    void polylineTo(const QPolygonF &points, bool bezier);
    void setPixel(QPointF point, const QColor &color);

    void beginPath();
    void endPath() { m_pathIsOpen = false; }
    void closeFigure();
    void dropPath();
    /// Draws the collected path and drops it.
    void drawPath(int parts);
    void clipToPath(Combine how);
    void flattenPath();
    void widenPath();

    void combineClip(const QPainterPath &canvasPath, Combine how);
    void combineClipRegion(const QRegion &canvasRegion, Combine how);
    void clipLogical(const QRectF &box, Combine how);
    void offsetClip(QPointF logical);
    void resetClip();
    void setClip(const MetafileClip &clip);
    /// The pixels of the canvas that a path covers.
    QRegion regionOf(const QPainterPath &canvasPath);
    QRegion canvasRegion() const { return QRegion(m_canvas.rect()); }

    /// Paths in canvas pixels, with any brush and pen; widths in canvas pixels.
    void fillCanvasPath(const QPainterPath &path, const QBrush &brush);
    void strokeCanvasPath(const QPainterPath &path, QPen pen);
    /// Blends a picture by any transform into canvas pixels.
    void drawTransformed(const QImage &image, const QRectF &part, const QTransform &toCanvas, double opacity);

    void blit(const MetafileBlit &blit);
    void drawText(const MetafileText &text);
    void gradientBox(const QRectF &box, QRgb first, QRgb last, bool downwards);
    void gradientTriangle(const QPolygonF &corners, const std::array<QRgb, 3> &colors);

private:
    bool prepare(double cost, const QRectF &bounds);
    QPen canvasPen() const;
    bool setOperation();
    void paint(const QPainterPath &canvasPath, int parts);
    void combinePixels(const MetafileBlit &blit, const QRectF &target);
    void combineRows(const MetafileBlit &blit, QRect band, QImage &source) const;
    static MetafileBlit shrunk(const MetafileBlit &blit, const QRectF &target);
    static QImage scaledSource(const MetafileBlit &blit, const QRectF &target, QRect band);
    QImage patternPixels(QRect visible) const;

    QImage &m_canvas;
    QTransform m_toCanvas;
    VectorWork &m_work;
    QPainter m_painter;
    MetafileState m_state;
    std::vector<MetafileState> m_saved;
    std::vector<MetafileObject> m_objects;
    std::set<size_t> m_freePlaces;
    QPainterPath m_path;
    bool m_pathIsOpen = false;
    bool m_figureContinues = false;
    bool m_clipChanged = false;
    double m_clipCost = 0; ///< what the clip adds to each painting
    QRectF m_painted;
};

/// A metafile's picture: what `play` paints of `bounds`, the drawing in its device's units, on white in `target` or in
/// the size that `info` tells. `play` answers whether the file's own end was reached.
Result<Picture> drawnMetafile(
    const ImageInfo &info, const QRectF &bounds, QSize target, const std::function<bool(MetafileContext &)> &play);
