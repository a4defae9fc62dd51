#include "viewer/frmBackground.h"

#include "ui/icons.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr QSize standingSize(1280, 720);
constexpr QColor groundTop(0x2a, 0x32, 0x3e);
constexpr QColor groundBottom(0x14, 0x18, 0x1f);
constexpr QColor film(0x0c, 0x0f, 0x14);
constexpr QColor hole(0x3c, 0x47, 0x57);
constexpr QColor sign(0x6f, 0x93, 0xc0);

/// A strip of film with a sign that says "playing".
QImage drawStandingPicture()
{
    QImage image(standingSize, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient ground(0, 0, 0, standingSize.height());
    ground.setColorAt(0, groundTop);
    ground.setColorAt(1, groundBottom);
    painter.fillRect(image.rect(), ground);
    painter.setPen(Qt::NoPen);

    const QRectF strip(320, 180, 640, 360);
    painter.setBrush(film);
    painter.drawRoundedRect(strip, 18, 18);
    painter.setBrush(hole);
    constexpr int holes = 10;
    for (int i = 0; i < holes; ++i) {
        const qreal left = strip.left() + 26 + i * (strip.width() - 52 - 34) / (holes - 1);
        painter.drawRoundedRect(QRectF(left, strip.top() + 18, 34, 24), 6, 6);
        painter.drawRoundedRect(QRectF(left, strip.bottom() - 42, 34, 24), 6, 6);
    }
    painter.setBrush(groundTop);
    painter.drawRect(strip.adjusted(26, 60, -26, -60));
    QPainterPath triangle;
    triangle.addPolygon(QPolygonF({{590, 285}, {720, 360}, {590, 435}, {590, 285}}));
    painter.setPen(QPen(sign, 18, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(sign);
    painter.drawPath(triangle);
    return image;
}

}

frmBackground::frmBackground(QWidget *parent)
    : FormWindow(parent)
    , Picture(LoadedPicture::fromPicture(::Picture::fromImage(drawStandingPicture())))
    , imgNotAvailable(themedIcon(QStringLiteral("lumora-thumbnail-missing")))
    , imgMedia(themedIcon(QStringLiteral("lumora-thumbnail-media")))
{
}
