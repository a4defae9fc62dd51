// The part of the EMF player that draws bitmaps, gradients and text.

#include "engine/codecs/emfplayer.h"
#include "engine/codecs/metafilebitmap.h"

#include <algorithm>

namespace {

constexpr quint32 copySource = 0x00cc0020;
constexpr quint32 mostCharacters = 32768;

QRectF sizedBox(const MetafileRecord &record, size_t at)
{
    return QRectF(record.point32(at), QSizeF(record.i32(at + 8), record.i32(at + 12)));
}

/// Device functions count the rows of a bitmap from its first row in the file, which is the lowest one unless the
/// height is negative.
QRectF fromFirstRow(const MetafileRecord &record, QRectF part, const QImage &image)
{
    const bool topFirst = record.i32(record.u32(48) + 8) < 0;
    if (!topFirst)
        part.moveTop(image.height() - part.y() - part.height());
    return part;
}

QString wideText(const MetafileRecord &record, size_t at, quint32 count)
{
    QString text;
    for (size_t i = 0; i < count && record.has(at + 2 * i, 2); ++i)
        text += QChar(ushort(record.u16(at + 2 * i)));
    return text;
}

}

bool EmfPlayer::playBitmap(const MetafileRecord &record)
{
    switch (record.type) {
    case 76:
    case 77:
    case 114:
    case 116:
        blitRecord(record);
        return true;
    case 78:
        maskedBlit(record);
        return true;
    case 79:
        skewedBlit(record);
        return true;
    case 80:
        setDibToDevice(record);
        return true;
    case 81:
        stretchDib(record);
        return true;
    case 118:
        gradient(record);
        return true;
    default:
        return false;
    }
}

void EmfPlayer::blitRecord(const MetafileRecord &record)
{
    MetafileBlit blit;
    blit.target = sizedBox(record, 24);
    const bool blends = record.type == 114;
    blit.usesAlpha = blends && record.u8(43) == 1;
    blit.source = emfBitmap(record, 84, blit.usesAlpha);
    const QPointF from = record.point32(44);
    blit.part =
        record.type == 76 ? QRectF(from, blit.target.size()) : QRectF(from, QSizeF(record.i32(100), record.i32(104)));
    if (blends)
        blit.opacity = record.u8(42) / 255.0;
    else if (record.type == 116)
        blit.transparent = record.color(40).rgb();
    else
        blit.operation = record.u32(40);
    m_context.blit(blit);
}

/// A black-and-white mask says where the bitmap goes.
void EmfPlayer::maskedBlit(const MetafileRecord &record)
{
    MetafileBlit blit;
    blit.target = sizedBox(record, 24);
    blit.source = emfBitmap(record, 84);
    blit.part = QRectF(record.point32(44), blit.target.size());
    blit.operation = record.u32(40);
    const QImage mask = emfBitmap(record, 112);
    if (!mask.isNull() && !blit.source.isNull()) {
        const QPoint offset = record.point32(100).toPoint() - record.point32(44).toPoint();
        blit.operation = copySource;
        blit.usesAlpha = true;
        blit.source = blit.source.convertToFormat(QImage::Format_ARGB32_Premultiplied);
        for (int y = 0; y < blit.source.height(); ++y) {
            QRgb *row = reinterpret_cast<QRgb *>(blit.source.scanLine(y));
            for (int x = 0; x < blit.source.width(); ++x) {
                const QPoint at(x + offset.x(), y + offset.y());
                if (!mask.rect().contains(at) || (mask.pixel(at) & 0xffffff) == 0)
                    row[x] = 0;
            }
        }
    }
    m_context.blit(blit);
}

/// The bitmap goes into a parallelogram given by three of its corners.
void EmfPlayer::skewedBlit(const MetafileRecord &record)
{
    const QImage source = emfBitmap(record, 96);
    const QRectF part = sizedBox(record, 48);
    if (source.isNull() || part.width() == 0 || part.height() == 0)
        return;
    const QPointF corner = record.point32(24);
    const QPointF across = (record.point32(32) - corner) / part.width();
    const QPointF down = (record.point32(40) - corner) / part.height();
    const QTransform skew(across.x(), across.y(), down.x(), down.y(), corner.x(), corner.y());
    const QRectF shown = part & source.rect();
    if (!shown.isEmpty())
        m_context.drawTransformed(
            source, shown, QTransform::fromTranslate(-part.x(), -part.y()) * skew * m_context.matrix(), 1);
}

void EmfPlayer::setDibToDevice(const MetafileRecord &record)
{
    MetafileBlit blit;
    blit.source = emfBitmap(record, 48);
    blit.part = sizedBox(record, 32);
    // The size is in pixels whatever the map mode.
    const QPointF scale = m_context.state().mapping.scale();
    blit.target = QRectF(record.point32(24), QSizeF(blit.part.width() / scale.x(), blit.part.height() / scale.y()));
    blit.part = fromFirstRow(record, blit.part, blit.source);
    m_context.blit(blit);
}

void EmfPlayer::stretchDib(const MetafileRecord &record)
{
    MetafileBlit blit;
    blit.target = QRectF(record.point32(24), QSizeF(record.i32(72), record.i32(76)));
    blit.source = emfBitmap(record, 48);
    blit.part = fromFirstRow(record, sizedBox(record, 32), blit.source);
    blit.operation = record.u32(68);
    m_context.blit(blit);
}

void EmfPlayer::gradient(const MetafileRecord &record)
{
    const quint32 vertices = record.u32(24);
    const quint32 shapes = record.u32(28);
    const quint32 mode = record.u32(32);
    const size_t corners = mode == 2 ? 3 : 2;
    const size_t shapesAt = 36 + size_t(vertices) * 16;
    if (mode > 2 || vertices > 200000 || shapes > 200000 || !record.has(shapesAt, size_t(shapes) * corners * 4))
        return;
    const auto point = [&record](quint32 vertex) { return record.point32(36 + size_t(vertex) * 16); };
    const auto color = [&record](quint32 vertex) {
        const size_t at = 36 + size_t(vertex) * 16 + 8;
        return qRgb(record.u8(at + 1), record.u8(at + 3), record.u8(at + 5));
    };
    for (quint32 i = 0; i < shapes && !m_context.isSpent(); ++i) {
        const size_t at = shapesAt + size_t(i) * corners * 4;
        const std::array<quint32, 3> used{record.u32(at), record.u32(at + 4), corners == 3 ? record.u32(at + 8) : 0};
        if (std::any_of(used.begin(), used.end(), [vertices](quint32 vertex) { return vertex >= vertices; }))
            continue;
        if (mode == 2)
            m_context.gradientTriangle(QPolygonF({point(used[0]), point(used[1]), point(used[2])}),
                {color(used[0]), color(used[1]), color(used[2])});
        else
            m_context.gradientBox(QRectF(point(used[0]), point(used[1])), color(used[0]), color(used[1]), mode == 1);
    }
}

bool EmfPlayer::playText(const MetafileRecord &record)
{
    switch (record.type) {
    case 83:
    case 84:
        drawTextAt(record, 36, record.type == 84);
        return true;
    case 96:
    case 97: {
        constexpr size_t each = 40;
        const quint32 strings = record.u32(36);
        for (size_t i = 0; i < strings && record.has(40 + i * each, each) && !m_context.isSpent(); ++i)
            drawTextAt(record, 40 + i * each, record.type == 97);
        return true;
    }
    case 108:
        drawSmallText(record);
        return true;
    default:
        return false;
    }
}

namespace {

constexpr quint32 opaqueOption = 2;
constexpr quint32 clippedOption = 4;
constexpr quint32 glyphIndexOption = 0x10;
constexpr quint32 noBoxOption = 0x100;
constexpr quint32 narrowOption = 0x200;
constexpr quint32 pairsOption = 0x2000;

}

void EmfPlayer::drawTextAt(const MetafileRecord &record, size_t at, bool wide)
{
    MetafileText text;
    text.at = record.point32(at);
    const quint32 count = std::min(record.u32(at + 8), mostCharacters);
    const size_t textAt = record.u32(at + 12);
    const quint32 options = record.u32(at + 16);
    const size_t advancesAt = record.u32(at + 36);
    // Numbers of glyphs mean nothing without the very font that they were taken from.
    if ((options & glyphIndexOption) == 0 && textAt >= 8)
        text.text = wide ? wideText(record, textAt, count) : m_context.state().font.decoded(record.part(textAt, count));
    const size_t each = (options & pairsOption) != 0 ? 8 : 4;
    for (size_t i = 0; advancesAt >= 8 && i < size_t(text.text.size()) && record.has(advancesAt + i * each, each); ++i)
        text.advances.emplace_back(
            record.i32(advancesAt + i * each), each == 8 ? record.i32(advancesAt + i * each + 4) : 0);
    const QRectF box = record.box32(at + 20);
    if ((options & opaqueOption) != 0)
        text.opaque = box;
    if ((options & clippedOption) != 0)
        text.clip = box;
    m_context.drawText(text);
}

void EmfPlayer::drawSmallText(const MetafileRecord &record)
{
    MetafileText text;
    text.at = record.point32(8);
    const quint32 count = std::min(record.u32(16), mostCharacters);
    const quint32 options = record.u32(20);
    const bool hasBox = (options & noBoxOption) == 0;
    const size_t textAt = hasBox ? 52 : 36;
    if (hasBox && (options & opaqueOption) != 0)
        text.opaque = record.box32(36);
    if (hasBox && (options & clippedOption) != 0)
        text.clip = record.box32(36);
    if ((options & glyphIndexOption) == 0)
        text.text = (options & narrowOption) != 0 ? m_context.state().font.decoded(record.part(textAt, count))
                                                  : wideText(record, textAt, count);
    m_context.drawText(text);
}
