#pragma once

#include "engine/codecs/metafilestate.h"
#include "engine/codecs/vectorcanvas.h"

#include <QPainter>

#include <set>
#include <vector>

/// A bitmap to be put somewhere. `part` may have negative sides: the picture is then turned over, as by `target`.
struct MetafileBlit
{
    QRectF target; ///< logical units
    QImage source; ///< null: the operation works on the brush and what is there
    QRectF part; ///< pixels of the source
    quint32 operation = 0x00cc0020; ///< the published ternary raster operations
    double opacity = 1;
    std::optional<QRgb> transparent; ///< the colour that is left out
    bool usesAlpha = false; ///< the source's own transparency counts
};

struct MetafileText
{
    QString text;
    QPointF at;
    std::vector<QPointF> advances; ///< of each character, y upwards; may be empty
    std::optional<QRectF> opaque; ///< filled with the background's colour first
    std::optional<QRectF> clip;
};

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
    QImage scaledSource(const MetafileBlit &blit, const QRectF &target, QRect visible) const;
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
    QRectF m_painted;
};
