#include "thumbnails/thumbnailcell.h"

#include <QAccessibleWidget>
#include <QMouseEvent>
#include <QPainter>

#include <mutex>

namespace {

constexpr int frameWidth = 4; ///< the last pixel of it parts the frame from the picture
constexpr double signShare = 0.5; ///< of the face's edge
constexpr double signStrength = 0.55; ///< a sign is no picture: it stands back behind those

/// A cell is an entry of the grid, for those who hear it.
class AccessibleCell : public QAccessibleWidget
{
public:
    explicit AccessibleCell(QWidget *cell)
        : QAccessibleWidget(cell, QAccessible::ListItem)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.selectable = true;
        state.selected = static_cast<const ThumbnailCell *>(object())->borderStyle() == 1;
        return state;
    }
};

QAccessibleInterface *accessibleCell(const QString &name, QObject *object)
{
    return name == QLatin1String(ThumbnailCell::staticMetaObject.className())
        ? new AccessibleCell(qobject_cast<QWidget *>(object))
        : nullptr;
}

}

ThumbnailCell::ThumbnailCell(QWidget *parent)
    : QWidget(parent)
{
    static std::once_flag once;
    std::call_once(once, [] { QAccessible::installFactory(&accessibleCell); });
    // Tab belongs to the grid as a whole.
    setFocusPolicy(Qt::ClickFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ThumbnailCell::setPicture(const QImage &picture)
{
    m_sign = {};
    m_picture =
        picture.convertToFormat(picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    update();
}

void ThumbnailCell::setSign(const QIcon &sign)
{
    m_picture = {};
    m_sign = sign;
    update();
}

void ThumbnailCell::setBorderStyle(int style)
{
    if (m_borderStyle == style)
        return;
    m_borderStyle = style;
    update();
    if (QAccessible::isActive()) {
        QAccessible::State changed;
        changed.selected = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    }
}

void ThumbnailCell::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_picture.isNull() || m_picture.hasAlphaChannel())
        painter.fillRect(rect(), palette().color(QPalette::Base));
    if (m_picture.isNull()) {
        paintSign(painter);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(rect(), m_picture);
    }
    if (m_borderStyle == 1)
        paintFrame(painter);
}

void ThumbnailCell::paintSign(QPainter &painter) const
{
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    QRect place(0, 0, int(width() * signShare), int(height() * signShare));
    place.moveCenter(rect().center());
    painter.setOpacity(signStrength);
    m_sign.paint(&painter, place);
    painter.setOpacity(1);
}

void ThumbnailCell::paintFrame(QPainter &painter) const
{
    const auto lines = [&](int from, int to, const QColor &color) {
        painter.setPen(color);
        for (int inset = from; inset < to; ++inset)
            painter.drawRect(rect().adjusted(inset, inset, -1 - inset, -1 - inset));
    };
    lines(0, frameWidth - 1, palette().color(QPalette::Highlight));
    lines(frameWidth - 1, frameWidth, palette().color(QPalette::Base));
}

void ThumbnailCell::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

void ThumbnailCell::mouseReleaseEvent(QMouseEvent *event)
{
    if (!rect().contains(event->position().toPoint()))
        return;
    if (event->button() == Qt::LeftButton)
        Q_EMIT Click();
    else
        Q_EMIT MouseUp(event->button(), event->globalPosition().toPoint());
}

void ThumbnailCell::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        Q_EMIT DblClick();
}
