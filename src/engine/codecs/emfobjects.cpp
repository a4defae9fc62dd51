// The part of the EMF player that makes and selects objects and sets the state.

#include "engine/codecs/emfplayer.h"
#include "engine/codecs/metafilebitmap.h"
#include "engine/codecs/metafileshapes.h"

#include <algorithm>

namespace {

constexpr quint32 stockObject = 0x80000000;
constexpr quint32 geometric = 0x10000;

MetafileObject stock(quint32 number)
{
    switch (number) {
    case 0:
    case 18:
        return QBrush(Qt::white);
    case 1:
        return QBrush(QColor(0xc0, 0xc0, 0xc0));
    case 2:
        return QBrush(QColor(0x80, 0x80, 0x80));
    case 3:
        return QBrush(QColor(0x40, 0x40, 0x40));
    case 4:
        return QBrush(Qt::black);
    case 5:
        return QBrush(Qt::NoBrush);
    case 6:
        return QPen(Qt::white, 0);
    case 7:
    case 19:
        return QPen(Qt::black, 0);
    case 8:
        return QPen(Qt::NoPen);
    default:
        break;
    }
    if (number < 10 || number > 17 || number == 15)
        return {};
    MetafileFont font;
    const bool fixed = number == 10 || number == 11 || number == 16;
    font.family = fixed ? VectorFont::Family::Monospaced : VectorFont::Family::Sans;
    font.bold = number == 13;
    return font;
}

QBrush plainBrush(const MetafileRecord &record)
{
    const quint32 style = record.u32(12);
    if (style == 1)
        return QBrush(Qt::NoBrush);
    return QBrush(record.color(16), style == 2 ? metafileHatch(record.i32(20)) : Qt::SolidPattern);
}

QPen plainPen(const MetafileRecord &record)
{
    QPen pen(record.color(24), std::abs(double(record.i32(16))), metafilePenStyle(record.u32(12)), Qt::RoundCap,
        Qt::RoundJoin);
    // Plain pens have dashes only as long as they are thin.
    if (pen.widthF() > 1 && pen.style() != Qt::NoPen)
        pen.setStyle(Qt::SolidLine);
    return pen;
}

QTransform transformAt(const MetafileRecord &record, size_t at)
{
    return QTransform(record.f32(at), record.f32(at + 4), record.f32(at + 8), record.f32(at + 12), record.f32(at + 16),
        record.f32(at + 20));
}

void scaleExtent(QPointF &extent, const MetafileRecord &record)
{
    const auto factor = [&record](size_t at) {
        return record.i32(at + 4) == 0 || record.i32(at) == 0 ? 1.0 : double(record.i32(at)) / record.i32(at + 4);
    };
    extent = {std::clamp(extent.x() * factor(8), -1e9, 1e9), std::clamp(extent.y() * factor(16), -1e9, 1e9)};
}

}

QImage emfBitmap(const MetafileRecord &record, size_t at, bool keepAlpha)
{
    const Bytes header = record.whole(record.u32(at), record.u32(at + 4));
    const Bytes pixels = record.whole(record.u32(at + 8), record.u32(at + 12));
    if (header.empty() || pixels.empty())
        return {};
    return metafileBitmap(header, pixels, keepAlpha);
}

bool EmfPlayer::playMapping(const MetafileRecord &record)
{
    MetafileMapping &mapping = m_context.state().mapping;
    const bool scalable = mapping.mode == MapMode::Isotropic || mapping.mode == MapMode::Anisotropic;
    switch (record.type) {
    case 9:
        if (scalable)
            mapping.windowExtent = record.point32(8);
        return true;
    case 10:
        mapping.windowOrigin = record.point32(8);
        return true;
    case 11:
        if (scalable)
            mapping.viewportExtent = record.point32(8);
        return true;
    case 12:
        mapping.viewportOrigin = record.point32(8);
        return true;
    case 17:
        if (record.u32(8) >= 1 && record.u32(8) <= 8)
            mapping.mode = MapMode(record.u32(8));
        return true;
    case 31:
        scaleExtent(mapping.viewportExtent, record);
        return true;
    case 32:
        scaleExtent(mapping.windowExtent, record);
        return true;
    case 35:
        m_context.state().world = transformAt(record, 8);
        return true;
    case 36:
        modifyWorld(record);
        return true;
    default:
        return false;
    }
}

void EmfPlayer::modifyWorld(const MetafileRecord &record)
{
    QTransform &world = m_context.state().world;
    const QTransform by = transformAt(record, 8);
    switch (record.u32(32)) {
    case 1:
        world = QTransform();
        break;
    case 2:
        world = by * world;
        break;
    case 3:
        world = world * by;
        break;
    case 4:
        world = by;
        break;
    default:
        break;
    }
}

bool EmfPlayer::playState(const MetafileRecord &record)
{
    MetafileState &state = m_context.state();
    switch (record.type) {
    case 13:
        state.brushOrigin = m_context.toCanvas().map(record.point32(8));
        return true;
    case 18:
        state.opaqueBack = record.u32(8) == 2;
        return true;
    case 19:
        state.fillRule = record.u32(8) == 2 ? Qt::WindingFill : Qt::OddEvenFill;
        return true;
    case 20:
        state.rasterOperation = int(record.u32(8) & 0xff);
        return true;
    case 22:
        state.textAlign = int(record.u32(8) & 0xffff);
        return true;
    case 24:
        state.textColor = record.color(8);
        return true;
    case 25:
        state.backColor = record.color(8);
        return true;
    case 33:
        m_context.save();
        return true;
    case 34:
        m_context.restore(record.i32(8));
        return true;
    case 57:
        state.clockwise = record.u32(8) == 2;
        return true;
    case 58:
        state.miterLimit = std::clamp(record.f32(8) > 0 ? record.f32(8) : double(record.u32(8)), 1.0, 1000.0);
        return true;
    default:
        return false;
    }
}

bool EmfPlayer::playObject(const MetafileRecord &record)
{
    switch (record.type) {
    case 37:
        selectObject(record.u32(8));
        return true;
    case 38:
        m_context.setObject(record.u32(8), plainPen(record));
        return true;
    case 39:
        m_context.setObject(record.u32(8), plainBrush(record));
        return true;
    case 40:
        m_context.setObject(record.u32(8), {});
        return true;
    case 82:
        createFont(record);
        return true;
    case 93:
    case 94:
        createPatternBrush(record);
        return true;
    case 95:
        createExtendedPen(record);
        return true;
    default:
        return false;
    }
}

void EmfPlayer::selectObject(quint32 index)
{
    if ((index & stockObject) == 0) {
        m_context.selectObject(index);
        return;
    }
    MetafileObject object = stock(index & ~stockObject);
    // Stock fonts measure in pixels whatever the map mode.
    if (MetafileFont *font = std::get_if<MetafileFont>(&object))
        font->size = 13 / std::max(std::abs(m_context.state().mapping.scale().y()), 1e-6);
    m_context.select(object);
}

void EmfPlayer::createPatternBrush(const MetafileRecord &record)
{
    const QImage pattern = emfBitmap(record, 16);
    m_context.setObject(record.u32(8), pattern.isNull() ? QBrush(Qt::gray) : QBrush(pattern));
}

void EmfPlayer::createExtendedPen(const MetafileRecord &record)
{
    const quint32 style = record.u32(28);
    const bool wide = (style & geometric) != 0;
    const double width = wide ? double(record.u32(32)) : 0;
    QPen pen(record.color(40), width, metafilePenStyle(style));
    if (record.u32(36) == 1)
        pen.setStyle(Qt::NoPen);
    const quint32 cap = style & 0xf00;
    const quint32 join = style & 0xf000;
    pen.setCapStyle(cap == 0x100 ? Qt::SquareCap : cap == 0x200 ? Qt::FlatCap : Qt::RoundCap);
    pen.setJoinStyle(join == 0x1000 ? Qt::BevelJoin : join == 0x2000 ? Qt::MiterJoin : Qt::RoundJoin);
    const quint32 entries = std::min<quint32>(record.u32(48), 16);
    if ((style & 15) == 7 && entries > 0 && record.has(52, entries * 4)) {
        // Lengths are in the units of the width here and multiples of it in the painter.
        QList<qreal> dashes;
        for (quint32 i = 0; i < entries; ++i)
            dashes.append(std::max(record.u32(52 + 4 * i), 1u) / std::max(width, 1.0));
        if (entries % 2 == 1)
            dashes.append(dashes);
        pen.setDashPattern(dashes);
    }
    m_context.setObject(record.u32(8), pen);
}

void EmfPlayer::createFont(const MetafileRecord &record)
{
    QString name;
    for (size_t i = 0; i < 32 && record.u16(40 + 2 * i) != 0; ++i)
        name += QChar(ushort(record.u16(40 + 2 * i)));
    MetafileFont font;
    font.describe(name, record.u8(35), record.u8(39));
    const double height = record.i32(12);
    font.size = height == 0 ? 12 : std::abs(height);
    font.measure = height > 0 ? VectorFont::Height::Cell : VectorFont::Height::Em;
    font.averageWidth = std::abs(double(record.i32(16)));
    font.angle = record.i32(20) / 10.0;
    font.bold = record.i32(28) > 550;
    font.italic = record.u8(32) != 0;
    font.underline = record.u8(33) != 0;
    font.strikeOut = record.u8(34) != 0;
    m_context.setObject(record.u32(8), font);
}
