#pragma once

#include "engine/codecs/gemfile.h"
#include "engine/codecs/vectorcanvas.h"
#include "engine/codecs/vectortext.h"

#include <QColor>
#include <QPainter>

#include <array>

/// Carries out the calls of a GEM metafile on a painter whose device is the picture.
class GemPlayer
{
public:
    GemPlayer(QPainter &painter, const QTransform &toDevice);
    void play(const GemRecord &record);
    /// More was asked for than a drawing ever needs, and not all of it was painted.
    bool leftOut() const { return m_work.isIncomplete(); }

private:
    enum Interior { Hollow, Solid, Pattern, Hatch, UserPattern };

    void shape(const GemRecord &record);
    void attribute(const GemRecord &record);
    void escape(const GemRecord &record);
    void text(const QPointF &at, std::span<const int> characters, double length);
    void markers(const GemRecord &record);
    void ellipse(const GemRecord &record, QPointF radii, bool sector, bool outlineOnly);
    void roundedRectangle(const GemRecord &record, bool filled);
    void clip(const GemRecord &record);
    void draw(const QPainterPath &path, bool filled, bool outlined);
    QPainterPath lines(const GemRecord &record, bool closed) const;
    void smoothUnlessTangled(double length);
    void fill(const QPainterPath &path, const QBrush &brush);
    void stroke(const QPainterPath &path, const QPen &pen);
    QPointF map(const QPointF &point) const;
    QRectF mapped(const QPointF &corner, const QPointF &opposite) const;
    QPen pen() const;
    QBrush brush() const;
    QColor color(int index) const;

    QPainter &m_painter;
    QTransform m_toDevice;
    double m_scale; ///< pixels a unit
    VectorWork m_work;
    std::array<QColor, 16> m_colors;
    bool m_curves = false; ///< flags of Bézier points count
    bool m_replaces = true; ///< the writing mode: new shapes replace what is there
    bool m_outlines = true; ///< an area group may switch the outlines of its parts off
    struct
    {
        int color = 1, type = 1;
        double width = 1;
        bool roundEnds = false;
    } m_line;
    struct
    {
        int interior = Hollow, style = 1, color = 1;
        bool perimeter = true;
    } m_fill;
    struct
    {
        int color = 1, type = 3;
        double height = 0;
    } m_marker;
    struct
    {
        int color = 1, horizontal = 0, vertical = 0;
        double height = 0;
        VectorFont font;
    } m_text;
};
