#include "ui/imagepane.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace {

/// Scaled copies above this are not kept: they are painted from the source, only what is visible.
constexpr qint64 maximumScaledPixels = 24LL * 1024 * 1024;

/// The pixels that a picture has on a pane of `size` units. A widget holds whole units of a scaled desktop: a picture
/// that misses them by less than one is not resampled.
QSize pixelsOnPane(const LoadedPicture &picture, QSize size, double ratio)
{
    const QSize target(
        std::max(1, int(std::lround(size.width() * ratio))), std::max(1, int(std::lround(size.height() * ratio))));
    const QSize decoded = picture.current().pixels.size();
    const QSize rest = target - decoded;
    return std::abs(rest.width()) < ratio && std::abs(rest.height()) < ratio ? decoded : target;
}

bool keepsScaled(QSize target)
{
    return qint64(target.width()) * target.height() <= maximumScaledPixels;
}

/// The ground under transparent pictures, fixed to the widget's corner.
QBrush checkerboard(const QPalette &palette)
{
    const bool dark = palette.color(QPalette::Window).lightness() < 128;
    const QColor a = dark ? QColor(0x50, 0x50, 0x50) : QColor(0xff, 0xff, 0xff);
    const QColor b = dark ? QColor(0x3c, 0x3c, 0x3c) : QColor(0xd4, 0xd4, 0xd4);
    QPixmap tile(16, 16);
    tile.fill(a);
    QPainter painter(&tile);
    painter.fillRect(8, 0, 8, 8, b);
    painter.fillRect(0, 8, 8, 8, b);
    return QBrush(tile);
}

}

struct ImagePane::Private
{
    std::shared_ptr<const LoadedPicture> picture;
    Picture source; ///< pixels of a picture too large to be kept scaled
    QImage scaled; ///< in device pixels
    bool transparent = false;
    bool announced = false; ///< painted() was told for this picture
    QPoint dragFrom;
    bool dragging = false;
    int wheelRest = 0;
};

ImagePane::ImagePane(QWidget *parent)
    : QWidget(parent)
    , d(std::make_unique<Private>())
{
    setFocusPolicy(Qt::NoFocus);
}

ImagePane::~ImagePane() = default;

void ImagePane::setPicture(std::shared_ptr<const LoadedPicture> picture)
{
    if (d->picture == picture)
        return;
    d->picture = std::move(picture);
    d->source = {};
    d->scaled = {};
    d->announced = false;
    update();
}

std::shared_ptr<const LoadedPicture> ImagePane::picture() const
{
    return d->picture;
}

bool ImagePane::isEmpty() const
{
    return !d->picture;
}

void ImagePane::prepare(const LoadedPicture &picture, QSize size, double ratio)
{
    const QSize target = pixelsOnPane(picture, size, ratio);
    if (keepsScaled(target))
        picture.scaled(target);
}

void ImagePane::paintEvent(QPaintEvent *event)
{
    if (!d->picture || width() < 1 || height() < 1)
        return;
    const double ratio = devicePixelRatioF();
    const QSize target = pixelsOnPane(*d->picture, size(), ratio);
    const bool keepScaled = keepsScaled(target);
    QPainter painter(this);
    if (keepScaled && d->scaled.size() != target) {
        d->scaled = d->picture->scaled(target);
        d->transparent = d->scaled.hasAlphaChannel();
        d->source = {};
    }
    const QSize have = d->source.pixels.size();
    if (!keepScaled
        && (d->source.isNull()
            || (d->source.isReduced() && (have.width() < target.width() || have.height() < target.height())))) {
        d->source = d->picture->atLeast(target);
        d->transparent = hasTransparency(d->source);
        d->scaled = {};
    }
    if (d->transparent)
        painter.fillRect(rect(), checkerboard(palette()));
    const QRectF visible = event->rect();
    if (keepScaled) {
        const QRectF part(visible.x() * ratio, visible.y() * ratio, visible.width() * ratio, visible.height() * ratio);
        const QRect pixelsOfPart = part.toAlignedRect().intersected(d->scaled.rect());
        // In device pixels the copy needs no scaling, which would repeat or drop a row on a scaled desktop.
        painter.scale(1 / ratio, 1 / ratio);
        painter.drawImage(pixelsOfPart.topLeft(), d->scaled, pixelsOfPart);
    } else {
        const QImage &pixels = d->source.pixels;
        const double sx = double(pixels.width()) / width();
        const double sy = double(pixels.height()) / height();
        painter.setRenderHint(QPainter::SmoothPixmapTransform, sx > 0.5);
        painter.drawImage(
            visible, pixels, QRectF(visible.x() * sx, visible.y() * sy, visible.width() * sx, visible.height() * sy));
    }
    if (!d->announced) {
        d->announced = true;
        QMetaObject::invokeMethod(this, &ImagePane::painted, Qt::QueuedConnection);
    }
}

void ImagePane::wheelEvent(QWheelEvent *event)
{
    d->wheelRest += event->angleDelta().y();
    const int steps = d->wheelRest / 120;
    d->wheelRest -= steps * 120;
    if (steps != 0)
        Q_EMIT wheelTurned(steps, event->position().toPoint());
    event->accept();
}

void ImagePane::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    d->dragFrom = event->globalPosition().toPoint();
    d->dragging = true;
    setCursor(Qt::ClosedHandCursor);
}

void ImagePane::mouseMoveEvent(QMouseEvent *event)
{
    if (!d->dragging)
        return;
    const QPoint now = event->globalPosition().toPoint();
    Q_EMIT dragged(now - d->dragFrom);
    d->dragFrom = now;
}

void ImagePane::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    d->dragging = false;
    unsetCursor();
}

void ImagePane::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        Q_EMIT doubleClicked();
}
