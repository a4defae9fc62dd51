#include "viewer/wmp9.h"

#include "platform/filepath.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <utility>

// What the player shows: frames, a note for sound, the frame of the focus.

namespace {

constexpr QColor ground(0x1c, 0x22, 0x2b);
constexpr QColor noteColor(0x6f, 0x93, 0xc0);
constexpr QColor nameColor(0xe6, 0xea, 0xf0);

/// Two quavers under one beam, one unit high.
QPainterPath notePath()
{
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    path.addEllipse(QPointF(0.20, 0.86), 0.17, 0.12);
    path.addEllipse(QPointF(0.78, 0.76), 0.17, 0.12);
    path.addPolygon(QPolygonF({{0.30, 0.14}, {0.95, 0.02}, {0.95, 0.22}, {0.30, 0.34}, {0.30, 0.14}}));
    path.addRect(QRectF(0.30, 0.14, 0.07, 0.72));
    path.addRect(QRectF(0.88, 0.05, 0.07, 0.71));
    return path;
}

}

void MediaPlayerControl::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QRect place = pictureRect();
    if (m_player)
        m_player->setVisible(isVisible());
    const QImage frame = m_player ? m_player->frame((QSizeF(place.size()) * devicePixelRatioF()).toSize()) : QImage();
    if (frame.isNull())
        m_frameRect = QRect();
    if (!frame.isNull())
        paintFrame(painter, frame);
    else if (m_player && m_player->content() == Player::Sound && !m_url.isEmpty())
        paintSound(painter);
    else
        painter.fillRect(place, Qt::black);
    if (m_focusByKey && hasFocus()) {
        QPen frameLine(palette().color(QPalette::Highlight));
        frameLine.setWidth(2);
        frameLine.setJoinStyle(Qt::MiterJoin);
        painter.setPen(frameLine);
        painter.drawRect(place.adjusted(1, 1, -1, -1));
    }
}

void MediaPlayerControl::paintFrame(QPainter &painter, const QImage &frame)
{
    const QRect place = pictureRect();
    QRect rect(QPoint(), (QSizeF(frame.size()) / devicePixelRatioF()).toSize().boundedTo(place.size()));
    rect.moveCenter(place.center());
    for (const QRect &bar : QRegion(place) - rect)
        painter.fillRect(bar, Qt::black);
    painter.drawImage(rect, frame);
    // A new shape moves the bars, and this may be the paint of the old frame's place only.
    if (std::exchange(m_frameRect, rect) != rect)
        update(place);
}

void MediaPlayerControl::paintSound(QPainter &painter) const
{
    const QRect place = pictureRect();
    painter.fillRect(place, ground);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = this->font();
    font.setPointSizeF(font.pointSizeF() * 1.3);
    const QFontMetrics metrics(font);
    const qreal side = std::min({place.width() / 4.0, place.height() / 3.0, 160.0});
    const QPointF corner(place.center().x() - side / 2, place.center().y() - (side + 2 * metrics.height()) / 2);

    painter.save();
    painter.translate(corner);
    painter.scale(side, side);
    painter.fillPath(notePath(), noteColor);
    painter.restore();

    const QRect line(place.left() + 12, qRound(corner.y() + side) + metrics.height(), std::max(0, place.width() - 24),
        metrics.height());
    const QString text = metrics.elidedText(displayPath(FileNameOfPath(m_url)), Qt::ElideMiddle, line.width());
    painter.setFont(font);
    painter.setPen(nameColor);
    painter.drawText(line, Qt::AlignCenter | Qt::TextSingleLine, text);
}
