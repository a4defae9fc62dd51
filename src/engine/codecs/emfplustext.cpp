// The part of the EMF+ player that draws pictures and text.

#include "engine/codecs/emfplus.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int compressedFlag = 0x4000;
constexpr quint32 mostCharacters = 32768;

QRectF floatBox(const MetafileRecord &data, size_t at)
{
    return QRectF(data.f32(at), data.f32(at + 4), data.f32(at + 8), data.f32(at + 12));
}

QString textAt(const MetafileRecord &data, size_t at, quint32 count)
{
    QString text;
    for (size_t i = 0; i < std::min(count, mostCharacters) && data.has(at + 2 * i, 2); ++i)
        text += QChar(ushort(data.u16(at + 2 * i)));
    return text;
}

/// Breaks paragraphs into lines at blanks, so that each fits.
QStringList brokenLines(const VectorFont &font, const QString &text, double width)
{
    QStringList lines;
    const QStringList paragraphs = QString(text).remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
    for (const QString &paragraph : paragraphs) {
        if (width <= 0 || paragraph.size() > 2000) {
            lines.append(paragraph);
            continue;
        }
        QString line;
        double used = 0;
        const QStringList words = paragraph.split(QLatin1Char(' '));
        for (const QString &word : words) {
            const double wide = layOutVectorText(font, word + QLatin1Char(' ')).advance.x();
            if (!line.isEmpty() && used + wide > width * 1.02) {
                lines.append(line);
                line.clear();
                used = 0;
            }
            line += line.isEmpty() ? word : QLatin1Char(' ') + word;
            used += wide;
        }
        lines.append(line);
    }
    return lines;
}

}

bool EmfPlusPlayer::playPicture(int type, int flags, const MetafileRecord &data)
{
    const QImage *image = object<QImage>(flags);
    const QRectF part = floatBox(data, 8);
    switch (type) {
    case 0x401a:
    case 0x401b: {
        if (image == nullptr || image->isNull() || part.width() == 0 || part.height() == 0)
            return true;
        QTransform place;
        if (type == 0x401a) {
            const bool small = (flags & compressedFlag) != 0;
            const QRectF to =
                small ? QRectF(data.i16(24), data.i16(26), data.i16(28), data.i16(30)) : floatBox(data, 24);
            place = QTransform(to.width() / part.width(), 0, 0, to.height() / part.height(), to.x(), to.y());
        } else {
            size_t at = 28;
            constexpr int relativeFlag = 0x0800;
            const QPolygonF corners =
                readPlusPoints(data, at, data.u32(24), (flags & compressedFlag) != 0, (flags & relativeFlag) != 0);
            if (corners.size() < 3)
                return true;
            const QPointF across = (corners[1] - corners[0]) / part.width();
            const QPointF down = (corners[2] - corners[0]) / part.height();
            place = QTransform(across.x(), across.y(), down.x(), down.y(), corners[0].x(), corners[0].y());
        }
        const QRectF shown = part & image->rect();
        if (!shown.isEmpty())
            m_context.drawTransformed(
                *image, shown, QTransform::fromTranslate(-part.x(), -part.y()) * place * toPixels(), 1);
        return true;
    }
    case 0x401c:
        drawString(flags, data);
        return true;
    case 0x4036:
        drawGlyphs(flags, data);
        return true;
    default:
        return false;
    }
}

double EmfPlusPlayer::fontSize(const PlusFont &font) const
{
    const double inch = m_pixelsPerInch;
    const std::array<double, 7> pixels{1, 1, 1, inch / 72, inch, inch / 300, inch / 25.4};
    const double page = m_page.m11() == 0 ? 1 : m_page.m11();
    if (font.unit < 2 || size_t(font.unit) >= pixels.size())
        return font.face.size;
    return font.face.size * pixels[size_t(font.unit)] / page;
}

void EmfPlusPlayer::drawLine(const VectorText &line, QPointF at, const QTransform &turn, int flags, quint32 brush)
{
    fill((turn * QTransform::fromTranslate(at.x(), at.y())).map(line.outlines), flags, brush);
}

void EmfPlusPlayer::drawString(int flags, const MetafileRecord &data)
{
    const PlusFont *made = object<PlusFont>(flags);
    const QString text = textAt(data, 28, data.u32(8));
    if (made == nullptr || !m_context.spend(2000 + 60000.0 * double(text.size())))
        return;
    constexpr quint32 noWrap = 0x1000;
    const PlusFormat *set = object<PlusFormat>(int(data.u32(4) & 63));
    const PlusFormat format = set == nullptr ? PlusFormat{} : *set;
    const QRectF box = floatBox(data, 12);
    VectorFont font = made->face;
    font.size = fontSize(*made);
    // Text keeps a sixth of its size away from the sides of its box.
    const double margin = font.size / 6;
    const double width = box.width() > 0 && (format.flags & noWrap) == 0 ? box.width() - 2 * margin : 0;
    const QStringList lines = brokenLines(font, text, width);
    const VectorText sample = layOutVectorText(font, QStringLiteral("x"));
    const double height = sample.ascent + sample.descent;
    double y = box.y();
    if (format.down != 0 && box.height() > 0)
        y += (box.height() - height * double(lines.size())) / (format.down == 1 ? 2 : 1);
    for (const QString &words : lines) {
        if (m_context.isSpent())
            return;
        const VectorText line = layOutVectorText(font, words);
        double x = box.x() + margin;
        if (format.across == 1)
            x = box.x() + (box.width() - line.advance.x()) / 2;
        else if (format.across == 2)
            x = box.x() + box.width() - line.advance.x() - margin;
        drawLine(line, {x, y + line.ascent}, {}, flags, data.u32(0));
        y += height;
    }
}

/// Characters with a place for each.
void EmfPlusPlayer::drawGlyphs(int flags, const MetafileRecord &data)
{
    constexpr quint32 areCharacters = 1;
    constexpr quint32 onlyFirstPlace = 4;
    const PlusFont *made = object<PlusFont>(flags);
    const quint32 count = data.u32(12);
    const quint32 options = data.u32(4);
    const QString text = textAt(data, 16, count);
    const size_t placesAt = 16 + 2 * size_t(text.size());
    // Numbers of glyphs mean nothing without the very font that they were taken from.
    if (made == nullptr || text.isEmpty() || (options & areCharacters) == 0
        || !m_context.spend(2000 + 40000.0 * double(text.size())))
        return;
    VectorFont font = made->face;
    font.size = fontSize(*made);
    const bool running = (options & onlyFirstPlace) != 0;
    const size_t places = running ? 1 : size_t(text.size());
    const QTransform turn = data.u32(8) != 0 ? plusTransform(data, placesAt + 8 * places) : QTransform();
    for (size_t i = 0; i < places && data.has(placesAt + 8 * i, 8); ++i) {
        const VectorText glyph = layOutVectorText(font, running ? text : QString(text.at(qsizetype(i))));
        drawLine(glyph, {data.f32(placesAt + 8 * i), data.f32(placesAt + 8 * i + 4)}, turn, flags, data.u32(0));
    }
}
