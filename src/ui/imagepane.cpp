#include "ui/imagepane.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <cmath>

namespace {

/// Scaled copies above this are not kept: they are painted from the source, only what is visible.
constexpr qint64 maximumScaledPixels = 24LL * 1024 * 1024;

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
    Picture source; ///< pixels that the scaled copy comes from
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

void ImagePane::paintEvent(QPaintEvent *event)
{
    if (!d->picture || width() < 1 || height() < 1)
        return;
    const double ratio = devicePixelRatioF();
    QSize target(std::max(1, int(std::lround(width() * ratio))), std::max(1, int(std::lround(height() * ratio))));
    QPainter painter(this);

    // A widget holds whole units of a scaled desktop. A picture that misses them by less than one is not resampled.
    const QSize rest = target - d->picture->current().pixels.size();
    if (std::abs(rest.width()) < ratio && std::abs(rest.height()) < ratio)
        target = d->picture->current().pixels.size();
    const bool keepScaled = qint64(target.width()) * target.height() <= maximumScaledPixels;
    if (d->source.isNull()
        || (d->source.isReduced()
            && (d->source.pixels.width() < target.width() || d->source.pixels.height() < target.height()))) {
        d->source = d->picture->atLeast(target);
        d->transparent = hasTransparency(d->source);
        d->scaled = {};
    }
    if (d->transparent)
        painter.fillRect(rect(), checkerboard(palette()));

    const QImage &pixels = d->source.pixels;
    if (keepScaled && d->scaled.size() != target) {
        const bool larger = target.width() > pixels.width() * 2;
        d->scaled = pixels.size() == target
            ? pixels
            : pixels.scaled(target, Qt::IgnoreAspectRatio, larger ? Qt::FastTransformation : Qt::SmoothTransformation);
        // What the window system takes without another conversion.
        const QImage::Format wanted = d->transparent ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
        if (d->scaled.format() != wanted)
            d->scaled.convertTo(wanted);
        d->scaled.setDevicePixelRatio(1);
    }
    const QRectF visible = event->rect();
    if (keepScaled) {
        const QRectF part(visible.x() * ratio, visible.y() * ratio, visible.width() * ratio, visible.height() * ratio);
        const QRect pixelsOfPart = part.toAlignedRect().intersected(d->scaled.rect());
        // In device pixels the copy needs no scaling, which would repeat or drop a row on a scaled desktop.
        painter.scale(1 / ratio, 1 / ratio);
        painter.drawImage(pixelsOfPart.topLeft(), d->scaled, pixelsOfPart);
    } else {
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
