#pragma once

#include "engine/codecs/metafilerecord.h"
#include "engine/codecs/vectortext.h"

#include <QBrush>
#include <QImage>
#include <QPen>

#include <variant>
#include <vector>

/// What the object records of EMF+ hold. Source: the published [MS-EMFPLUS].

struct PlusBrush
{
    QBrush brush; ///< its transform leads to world units
    QColor back = Qt::transparent; ///< below a hatch
};

struct PlusPen
{
    QPen pen; ///< the width is in the pen's own units
    PlusBrush brush;
    int unit = 0; ///< 0: world units, else as pages are measured
};

/// Regions are formulas: operators before their two operands.
struct PlusRegionNode
{
    quint32 type = 0;
    QPainterPath shape;
};
using PlusRegion = std::vector<PlusRegionNode>;

struct PlusFont
{
    VectorFont face; ///< the size is in the font's own units
    int unit = 0;
};

struct PlusFormat
{
    quint32 flags = 0;
    int across = 0; ///< 0 near, 1 centre, 2 far
    int down = 0;
};

using PlusObject =
    std::variant<std::monostate, PlusBrush, PlusPen, QPainterPath, PlusRegion, QImage, PlusFont, PlusFormat>;

/// The object of one record, or none when its kind is not known. `type` by the published numbers.
PlusObject readPlusObject(int type, Bytes data);

/// Points as several records hold them: at `at`, as floats, as 16-bit numbers, or each as the way from the one before.
/// `at` is moved behind them.
QPolygonF readPlusPoints(const MetafileRecord &record, size_t &at, quint32 count, bool compressed, bool relative);

/// The four bytes of a colour: blue, green, red, opacity.
QColor plusColor(const MetafileRecord &record, size_t at);

QTransform plusTransform(const MetafileRecord &record, size_t at);
