#include "engine/codecs/gemplayer.h"

#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr int tenthDegreesAround = 3600;
constexpr double heightOfEm = 1.35; ///< an em for each unit of what the format calls the height: base line to top

// Far outside of every picture; beyond it the painter's arithmetic wears out.
constexpr double farthest = 16000;
constexpr double mostDashes = 100'000; ///< of one call; a line of more is drawn solid
constexpr double costOfMarker = 10'000;

constexpr QRgb firstColors[] = {0xffffffff, 0xff000000, 0xffff0000, 0xff00ff00, 0xff0000ff, 0xff00ffff, 0xffffff00,
    0xffff00ff, 0xffc0c0c0, 0xff808080, 0xff800000, 0xff008000, 0xff000080, 0xff008080, 0xff808000, 0xff800080};

int integer(const GemRecord &record, size_t index, int fallback = 0)
{
    return index < record.integers.size() ? record.integers[index] : fallback;
}

QPointF point(const GemRecord &record, size_t index)
{
    return index < record.points.size() ? record.points[index] : QPointF();
}

/// Two flags lie in each integer, the first in its low byte: 1 begins a curve of four points, 2 is a jump.
int curveFlag(const GemRecord &record, size_t index)
{
    return integer(record, index / 2) >> (index % 2 * 8) & 0xff;
}

double lengthOf(const QPainterPath &path)
{
    double length = 0;
    for (int i = 1; i < path.elementCount(); ++i) {
        const QPainterPath::Element from = path.elementAt(i - 1);
        const QPainterPath::Element to = path.elementAt(i);
        length += std::hypot(to.x - from.x, to.y - from.y);
    }
    return length;
}

}

GemPlayer::GemPlayer(QPainter &painter, const QTransform &toDevice)
    : m_painter(painter)
    , m_toDevice(toDevice)
    , m_scale(std::sqrt(std::abs(toDevice.m11() * toDevice.m22())))
{
    std::transform(std::begin(firstColors), std::end(firstColors), m_colors.begin(),
        [](QRgb value) { return QColor::fromRgb(value); });
}

QPointF GemPlayer::map(const QPointF &point) const
{
    const QPointF mapped = m_toDevice.map(point);
    return {std::clamp(mapped.x(), -farthest, farthest), std::clamp(mapped.y(), -farthest, farthest)};
}

void GemPlayer::smoothUnlessTangled(double length)
{
    // Smooth edges cost the square of what crosses a row: a picture's lines cross it a few times, a scribble thousands.
    constexpr double mostCost = 2e7;
    m_painter.setRenderHint(QPainter::Antialiasing, length * length / m_painter.viewport().height() < mostCost);
}

void GemPlayer::fill(const QPainterPath &path, const QBrush &brush)
{
    if (!m_work.spend(vectorPathCost(path, m_painter.viewport().size())))
        return;
    smoothUnlessTangled(lengthOf(path));
    m_painter.fillPath(path, brush);
}

void GemPlayer::stroke(const QPainterPath &path, const QPen &pen)
{
    if (!m_work.spend(vectorPathCost(path, m_painter.viewport().size()) * 2))
        return;
    const double length = lengthOf(path);
    QPen used = pen;
    if (pen.style() != Qt::SolidLine && length > mostDashes * pen.widthF())
        used.setStyle(Qt::SolidLine);
    smoothUnlessTangled(length);
    m_painter.strokePath(path, used);
}

QColor GemPlayer::color(int index) const
{
    return index >= 0 && size_t(index) < m_colors.size() ? m_colors[size_t(index)] : QColor(Qt::black);
}

QRectF GemPlayer::mapped(const QPointF &corner, const QPointF &opposite) const
{
    return QRectF(map(corner), map(opposite)).normalized();
}

QPen GemPlayer::pen() const
{
    QPen pen(color(m_line.color), std::clamp(m_line.width * m_scale, 1.0, farthest));
    pen.setCapStyle(m_line.roundEnds ? Qt::RoundCap : Qt::FlatCap);
    pen.setJoinStyle(m_line.roundEnds ? Qt::RoundJoin : Qt::MiterJoin);
    switch (m_line.type) {
    case 2:
        pen.setDashPattern({12, 4});
        break;
    case 3:
        pen.setStyle(Qt::DotLine);
        break;
    case 4:
        pen.setStyle(Qt::DashDotLine);
        break;
    case 5:
        pen.setStyle(Qt::DashLine);
        break;
    case 6:
        pen.setStyle(Qt::DashDotDotLine);
        break;
    default:
        break;
    }
    return pen;
}

QBrush GemPlayer::brush() const
{
    const QColor ink = color(m_fill.color);
    switch (m_fill.interior) {
    case Hollow:
        return QBrush(Qt::white);
    case Pattern: {
        constexpr int full = 8; ///< patterns 1 to 8 are screens of so many eighths
        if (m_fill.style >= full)
            return m_fill.style == full ? QBrush(ink) : QBrush(ink, Qt::Dense4Pattern);
        const int parts = std::max(1, m_fill.style);
        const auto mix = [&](int channel) { return (channel * parts + 255 * (full - parts)) / full; };
        return QColor(mix(ink.red()), mix(ink.green()), mix(ink.blue()));
    }
    case Hatch: {
        constexpr Qt::BrushStyle hatches[] = {
            Qt::BDiagPattern, Qt::BDiagPattern, Qt::DiagCrossPattern, Qt::VerPattern, Qt::HorPattern, Qt::CrossPattern};
        return QBrush(ink, hatches[size_t(std::clamp(m_fill.style - 1, 0, int(std::size(hatches)) - 1))]);
    }
    default:
        return ink;
    }
}

void GemPlayer::draw(const QPainterPath &path, bool filled, bool outlined)
{
    // A hollow shape hides what lies behind it, unless the drawing asked for the transparent mode.
    if (filled && (m_fill.interior != Hollow || m_replaces))
        fill(path, brush());
    // What is hollow would be nothing without its edge.
    if (outlined || (filled && m_fill.interior == Hollow && m_fill.perimeter))
        stroke(path, filled ? QPen(color(m_fill.color), std::max(1.0, std::min(m_scale, farthest))) : pen());
}

QPainterPath GemPlayer::lines(const GemRecord &record, bool closed) const
{
    constexpr int startsCurve = 1;
    constexpr int jumps = 2;
    const bool curves = m_curves || record.subOpcode == 13;
    const std::vector<QPointF> &points = record.points;
    QPainterPath path;
    for (size_t i = 0; i < points.size(); ++i) {
        const int flag = curves ? curveFlag(record, i) : 0;
        if (i == 0 || flag & jumps) {
            if (i > 0 && closed)
                path.closeSubpath();
            path.moveTo(map(points[i]));
        } else if (!(curves && i > 0 && i + 2 < points.size() && curveFlag(record, i - 1) & startsCurve)) {
            path.lineTo(map(points[i]));
        } else {
            path.cubicTo(map(points[i]), map(points[i + 1]), map(points[i + 2]));
            i += 2;
        }
    }
    if (closed)
        path.closeSubpath();
    return path;
}

void GemPlayer::markers(const GemRecord &record)
{
    const double half = std::clamp(m_marker.height * m_scale / 2, 1.5, 64.0);
    m_painter.setPen(QPen(color(m_marker.color), 1));
    m_painter.setBrush(Qt::NoBrush);
    if (!m_work.spend(double(record.points.size()) * costOfMarker))
        return;
    for (const QPointF &place : record.points) {
        const QPointF at = map(place);
        switch (m_marker.type) {
        case 1:
            m_painter.fillRect(QRectF(at - QPointF(0.5, 0.5), QSizeF(1, 1)), color(m_marker.color));
            break;
        case 4:
            m_painter.drawRect(QRectF(at - QPointF(half, half), QSizeF(2 * half, 2 * half)));
            break;
        case 5:
            m_painter.drawLine(at - QPointF(half, half), at + QPointF(half, half));
            m_painter.drawLine(at + QPointF(-half, half), at + QPointF(half, -half));
            break;
        case 6:
            m_painter.drawPolygon(QPolygonF{
                at + QPointF(0, -half), at + QPointF(half, 0), at + QPointF(0, half), at + QPointF(-half, 0)});
            break;
        default:
            m_painter.drawLine(at - QPointF(half, 0), at + QPointF(half, 0));
            m_painter.drawLine(at - QPointF(0, half), at + QPointF(0, half));
            if (m_marker.type == 3)
                m_painter.drawLine(at - QPointF(half, half) * 0.7, at + QPointF(half, half) * 0.7);
        }
    }
}

void GemPlayer::ellipse(const GemRecord &record, QPointF radii, bool sector, bool outlineOnly)
{
    const QPointF center = map(point(record, 0));
    const double across = std::min(std::abs(radii.x() * m_toDevice.m11()), farthest);
    const double down = std::min(std::abs(radii.y() * m_toDevice.m22()), farthest);
    const QRectF around(center - QPointF(across, down), QSizeF(2 * across, 2 * down));
    QPainterPath path;
    if (record.integers.size() < 2) {
        path.addEllipse(around);
    } else {
        const int begin = integer(record, 0);
        int sweep = (integer(record, 1) - begin) % tenthDegreesAround;
        if (sweep <= 0)
            sweep += tenthDegreesAround;
        if (sector)
            path.moveTo(center);
        else
            path.arcMoveTo(around, begin / 10.0);
        path.arcTo(around, begin / 10.0, sweep / 10.0);
        if (sector)
            path.closeSubpath();
    }
    draw(path, !outlineOnly, outlineOnly || (m_fill.perimeter && m_outlines));
}

void GemPlayer::roundedRectangle(const GemRecord &record, bool filled)
{
    const QRectF box = mapped(point(record, 0), point(record, 1));
    const double radius = std::min(box.width(), box.height()) / 5;
    QPainterPath path;
    path.addRoundedRect(box, radius, radius);
    draw(path, filled, !filled || (m_fill.perimeter && m_outlines));
}

void GemPlayer::shape(const GemRecord &record)
{
    switch (record.subOpcode) {
    case 1: {
        QPainterPath path;
        path.addRect(mapped(point(record, 0), point(record, 1)));
        draw(path, true, m_fill.perimeter && m_outlines);
        break;
    }
    case 2:
    case 3: {
        const double radius = point(record, 3).x();
        ellipse(record, {radius, radius * std::abs(m_toDevice.m11() / m_toDevice.m22())}, record.subOpcode == 3,
            record.subOpcode == 2);
        break;
    }
    case 4: {
        const double radius = point(record, 2).x();
        ellipse(record, {radius, radius * std::abs(m_toDevice.m11() / m_toDevice.m22())}, false, false);
        break;
    }
    case 5:
        ellipse(record, point(record, 1), false, false);
        break;
    case 6:
    case 7:
        ellipse(record, point(record, 1), record.subOpcode == 7, record.subOpcode == 6);
        break;
    case 8:
    case 9:
        roundedRectangle(record, record.subOpcode == 9);
        break;
    case 10:
        if (record.integers.size() > 2)
            text(point(record, 0), std::span(record.integers).subspan(2), point(record, 1).x());
        break;
    case 13:
        m_curves = integer(record, 0) != 0 || record.integers.empty();
        break;
    default:
        break;
    }
}

void GemPlayer::text(const QPointF &at, std::span<const int> characters, double length)
{
    QString line;
    for (const int character : characters) {
        if (character > 0)
            line.append(QChar(ushort(character & 0xff)));
    }
    constexpr double usualSize = 12;
    constexpr double largestSize = 4096;
    VectorFont font = m_text.font;
    const double size = m_text.height * heightOfEm * m_scale;
    font.size = size > 0 ? std::clamp(size, 1.0, largestSize) : usualSize;
    VectorText laidOut = layOutVectorText(font, line);
    const double width = std::hypot(laidOut.advance.x(), laidOut.advance.y());
    double stretch = 1;
    if (length > 0 && width > 0)
        stretch = std::clamp(length * m_scale / width, 0.25, 4.0);

    double down = 0;
    switch (m_text.vertical) {
    case 1:
        down = laidOut.ascent * 0.35;
        break;
    case 2:
    case 5:
        down = laidOut.ascent;
        break;
    case 3:
    case 4:
        down = -laidOut.descent;
        break;
    default:
        break;
    }
    const double left = m_text.horizontal == 1 ? width * stretch / 2 : m_text.horizontal == 2 ? width * stretch : 0;
    QTransform place;
    const QPointF start = map(at);
    place.translate(start.x(), start.y());
    place.rotate(-font.angle);
    place.translate(-left, down);
    place.scale(stretch, 1);
    place.rotate(font.angle);
    laidOut.outlines.setFillRule(Qt::WindingFill);
    const QPainterPath placed = place.map(laidOut.outlines);
    fill(placed, color(m_text.color));
}

void GemPlayer::attribute(const GemRecord &record)
{
    const int value = integer(record, 0);
    switch (record.opcode) {
    case 12:
        m_text.height = std::abs(point(record, 0).y());
        break;
    case 13:
        m_text.font.angle = value % tenthDegreesAround / 10.0;
        break;
    case 14:
        if (value >= 0 && size_t(value) < m_colors.size() && record.integers.size() >= 4) {
            const auto channel = [&](size_t i) { return std::clamp(integer(record, i), 0, 1000) * 255 / 1000; };
            m_colors[size_t(value)] = QColor(channel(1), channel(2), channel(3));
        }
        break;
    case 15:
        m_line.type = value;
        break;
    case 16:
        m_line.width = std::abs(point(record, 0).x());
        break;
    case 17:
        m_line.color = value;
        break;
    case 18:
        m_marker.type = value;
        break;
    case 19:
        m_marker.height = std::abs(point(record, 0).y());
        break;
    case 20:
        m_marker.color = value;
        break;
    case 21: {
        // The system's own face is 1; 2 was the sans serif one of its applications, 14 the one with serifs.
        constexpr int withSerifs = 14;
        m_text.font.family = value == withSerifs ? VectorFont::Family::Serif : VectorFont::Family::Sans;
        break;
    }
    case 22:
        m_text.color = value;
        break;
    case 23:
        m_fill.interior = std::clamp(value, int(Hollow), int(UserPattern));
        break;
    case 24:
        m_fill.style = value;
        break;
    case 25:
        m_fill.color = value;
        break;
    case 32:
        m_replaces = value <= 1;
        break;
    case 39:
        m_text.horizontal = value;
        m_text.vertical = integer(record, 1);
        break;
    case 104:
        m_fill.perimeter = value != 0;
        break;
    case 106:
        m_text.font.bold = value & 1;
        m_text.font.italic = value & 4;
        m_text.font.underline = value & 8;
        break;
    case 107: {
        constexpr double pixelsPerPoint = 96 / 72.0;
        m_text.height = value * pixelsPerPoint / heightOfEm / std::max(m_scale, 1e-6);
        break;
    }
    case 108:
        m_line.roundEnds = value == 2 || integer(record, 1) == 2;
        break;
    default:
        break;
    }
}

void GemPlayer::escape(const GemRecord &record)
{
    constexpr int writesItem = 99;
    if (record.subOpcode != writesItem)
        return;
    constexpr int noOutline = 49;
    constexpr int areaEnds = 81;
    if (integer(record, 0) == noOutline)
        m_outlines = false;
    else if (integer(record, 0) == areaEnds)
        m_outlines = true;
}

void GemPlayer::clip(const GemRecord &record)
{
    if (integer(record, 0) != 0 && record.points.size() >= 2)
        m_painter.setClipRect(mapped(record.points[0], record.points[1]));
    else
        m_painter.setClipping(false);
}

void GemPlayer::play(const GemRecord &record)
{
    switch (record.opcode) {
    case 5:
        escape(record);
        break;
    case 6:
        if (m_outlines)
            draw(lines(record, false), false, true);
        break;
    case 7:
        markers(record);
        break;
    case 8:
        text(point(record, 0), record.integers, 0);
        break;
    case 9:
        draw(lines(record, true), true, m_fill.perimeter && m_outlines);
        break;
    case 11:
        shape(record);
        break;
    case 114: {
        QPainterPath box;
        box.addRect(mapped(point(record, 0), point(record, 1)));
        fill(box, brush());
        break;
    }
    case 129:
        clip(record);
        break;
    default:
        attribute(record);
    }
}
