// The part of the metafile's device context that draws text.

#include "engine/codecs/metafilecontext.h"

#include <array>
#include <cmath>

namespace {

constexpr int movesCurrent = 1;
constexpr int horizontal = 6;
constexpr int right = 2;
constexpr int center = 6;
constexpr int vertical = 24;
constexpr int bottom = 8;

QTransform linearPart(const QTransform &transform)
{
    return QTransform(transform.m11(), transform.m12(), transform.m21(), transform.m22(), 0, 0);
}

}

void MetafileFont::describe(const QString &name, int charsetNumber, int pitchAndFamily)
{
    constexpr int symbolCharset = 2;
    charset = charsetNumber;
    family = vectorFamilyOf(name);
    if (family == Family::Sans && (pitchAndFamily & 0xf0) == 0x10)
        family = Family::Serif;
    else if (family == Family::Sans && (pitchAndFamily & 0xf3) == 0x31)
        family = Family::Monospaced;
    if (charset == symbolCharset && family != Family::Pictographs)
        family = Family::Symbol;
}

QString MetafileFont::decoded(std::span<const uchar> bytes) const
{
    // What the western character set has where Latin-1 has controls.
    static constexpr std::array<ushort, 32> western{0x20ac, 0x81, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
        0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0x8d, 0x017d, 0x8f, 0x90, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
        0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x9d, 0x017e, 0x0178};
    constexpr int greek = 161;
    constexpr int cyrillic = 204;
    QString text;
    text.reserve(qsizetype(bytes.size()));
    for (const uchar byte : bytes) {
        ushort character = byte;
        if (family == Family::Symbol || family == Family::Pictographs)
            character = byte;
        else if (byte >= 0x80 && byte < 0xa0)
            character = western[byte - 0x80];
        else if (charset == cyrillic && byte >= 0xc0)
            character = ushort(0x0410 + byte - 0xc0);
        else if (charset == greek && byte >= 0xc0)
            character = ushort(0x0390 + byte - 0xc0);
        text += QChar(character);
    }
    return text;
}

void MetafileContext::drawText(const MetafileText &text)
{
    if (!m_work.spend(2000 + 20000.0 * double(text.text.size())))
        return;
    const MetafileClip clipBefore = m_state.clip;
    const int operationBefore = std::exchange(m_state.rasterOperation, 13);
    const auto fillBox = [this](const QPainterPath &canvasPath) {
        if (!m_pathIsOpen)
            fillCanvasPath(safeVectorPath(canvasPath), m_state.backColor);
    };
    const QTransform map = matrix();
    if (text.opaque) {
        QPainterPath path;
        path.addRect(text.opaque->normalized());
        fillBox(map.map(path));
    }
    if (text.clip)
        clipLogical(*text.clip, Combine::And);

    std::vector<QPointF> advances = text.advances;
    for (QPointF &advance : advances)
        advance.setY(-advance.y());
    const VectorText line = layOutVectorText(m_state.font, text.text, advances);
    QPointF length = line.advance;
    if (advances.empty())
        length.rx() += m_state.characterExtra * double(text.text.size());

    QPointF start;
    if ((m_state.textAlign & horizontal) == center)
        start = -length / 2;
    else if ((m_state.textAlign & horizontal) == right)
        start = -length;
    if ((m_state.textAlign & vertical) == bottom)
        start.ry() -= line.descent;
    else if ((m_state.textAlign & vertical) == 0)
        start.ry() += line.ascent;

    // Text stands upright whichever way the axes of the map mode point; only the world transform turns it over.
    const QPointF scale = m_state.mapping.scale();
    const QTransform upright = QTransform::fromScale(std::copysign(1, scale.x()), std::copysign(1, scale.y()));
    const bool fromCurrent = (m_state.textAlign & movesCurrent) != 0;
    const QPointF at = map.map(fromCurrent ? m_state.current : text.at);
    const QTransform turned = QTransform().rotate(-m_state.font.angle);
    const QTransform place = upright * linearPart(map) * QTransform::fromTranslate(at.x(), at.y());

    if (m_state.opaqueBack && !text.text.isEmpty()) {
        QPainterPath cell;
        cell.addRect(start.x(), start.y() - line.ascent, length.x(), line.ascent + line.descent);
        fillBox((turned * place).map(cell));
    }
    const QPointF offset = turned.map(start);
    const QPainterPath outlines =
        safeVectorPath((QTransform::fromTranslate(offset.x(), offset.y()) * place).map(line.outlines));
    if (m_pathIsOpen)
        m_path.addPath(outlines);
    else
        fillCanvasPath(outlines, m_state.textColor);
    if (fromCurrent)
        m_state.current += upright.map(turned.map(length));

    m_state.rasterOperation = operationBefore;
    if (text.clip)
        setClip(clipBefore);
}
