#pragma once

#include "engine/codecs/vectortext.h"

#include <QBrush>
#include <QPen>
#include <QRegion>
#include <QTransform>

#include <optional>
#include <variant>

/// What the records of a metafile select and set, and what saving and restoring carries.

struct MetafileFont : VectorFont
{
    int charset = 0; ///< the published numbers of character sets

    /// What a font's description says of its face: name, character set, pitch and family.
    void describe(const QString &name, int charsetNumber, int pitchAndFamily);
    /// Text of one byte a character, in the font's character set.
    QString decoded(std::span<const uchar> bytes) const;
};

/// A pen's width is in logical units, 0 for one pixel; a brush with a texture holds it as a QImage; a path is a region.
using MetafileObject = std::variant<std::monostate, QPen, QBrush, MetafileFont, QPainterPath>;

enum class MapMode { Text = 1, LowMetric, HighMetric, LowEnglish, HighEnglish, Twips, Isotropic, Anisotropic };

/// From logical units to the picture's pixels by two rectangles that lie on each other.
struct MetafileMapping
{
    MapMode mode = MapMode::Text;
    QPointF windowOrigin;
    QPointF windowExtent{1, 1};
    QPointF viewportOrigin;
    QPointF viewportExtent{1, 1};
    QPointF pixelsPerMillimetre{96 / 25.4, 96 / 25.4};

    /// Across and down; never 0.
    QPointF scale() const;
    QTransform transform() const;
};

struct MetafileClip
{
    QRegion region; ///< pixels; always within the canvas
    std::optional<QPainterPath> outline; ///< what is clipped besides, with smooth edges
};

struct MetafileState
{
    QPen pen{Qt::black, 0};
    QBrush brush{Qt::white};
    MetafileFont font;
    QColor textColor = Qt::black;
    QColor backColor = Qt::white;
    bool opaqueBack = true;
    Qt::FillRule fillRule = Qt::OddEvenFill;
    int rasterOperation = 13; ///< 1..16, the published numbers of the binary raster operations
    int textAlign = 0; ///< bits: 1 moves the current point, 6 centre, 2 right, 24 base line, 8 bottom
    double characterExtra = 0;
    bool clockwise = false; ///< arcs
    double miterLimit = 10;
    MetafileMapping mapping;
    QTransform world;
    QPointF current;
    QPointF brushOrigin; ///< pixels
    MetafileClip clip;
};
