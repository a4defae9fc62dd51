// Draws the two films of the progress window and writes them as AVI files into a folder:
//     makeanimations FOLDER
// Twice the size they are shown at, so that they are sharp on fine screens; no ground, so that they stand on any.

#include "ui/aviwriter.h"

#include <QFile>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

#include <cstdio>

namespace {

constexpr QSize frameSize(544, 120);
constexpr int frameCount = 36;
constexpr int frameTime = 50; ///< milliseconds

constexpr QColor folderColor(0xe9, 0xb4, 0x4c);
constexpr QColor folderEdge(0x9a, 0x6d, 0x1f);
constexpr QColor folderBack(0xc9, 0x92, 0x32);
constexpr QColor paperColor(0xf7, 0xf9, 0xfc);
constexpr QColor paperEdge(0x5b, 0x6b, 0x82);
constexpr QColor skyColor(0x7f, 0xb2, 0xe5);
constexpr QColor hillColor(0x5d, 0x9b, 0x62);
constexpr QColor sunColor(0xf2, 0xc1, 0x4e);
constexpr QColor binColor(0x8a, 0x97, 0xa8);
constexpr QColor binEdge(0x4c, 0x58, 0x68);

/// Slow at both ends.
double eased(double t)
{
    return t * t * (3 - 2 * t);
}

void drawFolderBack(QPainter &painter, QPointF corner)
{
    QPainterPath back;
    back.addRoundedRect(QRectF(corner + QPointF(0, 10), QSizeF(92, 60)), 5, 5);
    back.addRoundedRect(QRectF(corner, QSizeF(38, 22)), 5, 5);
    painter.setPen(QPen(folderEdge, 2.5));
    painter.setBrush(folderBack);
    painter.drawPath(back.simplified());
}

void drawFolderFront(QPainter &painter, QPointF corner)
{
    painter.setPen(QPen(folderEdge, 2.5));
    painter.setBrush(folderColor);
    painter.drawRoundedRect(QRectF(corner + QPointF(0, 24), QSizeF(92, 48)), 5, 5);
}

/// A small picture: sky, sun and a hill on paper.
void drawPicture(QPainter &painter, QPointF middle, double angle, double size)
{
    painter.save();
    painter.translate(middle);
    painter.rotate(angle);
    painter.scale(size, size);
    painter.setPen(QPen(paperEdge, 2.5));
    painter.setBrush(paperColor);
    painter.drawRoundedRect(QRectF(-27, -21, 54, 42), 3, 3);
    const QRectF inside(-21, -15, 42, 30);
    painter.setPen(Qt::NoPen);
    painter.setBrush(skyColor);
    painter.drawRect(inside);
    painter.setBrush(sunColor);
    painter.drawEllipse(QPointF(10, -6), 5, 5);
    painter.setBrush(hillColor);
    painter.drawPolygon(QPolygonF({{-21, 15}, {-21, 7}, {-8, -5}, {4, 7}, {11, 1}, {21, 9}, {21, 15}}));
    painter.restore();
}

void drawBin(QPainter &painter, QPointF top, double lid)
{
    painter.setPen(QPen(binEdge, 2.5));
    painter.setBrush(binColor);
    painter.drawPolygon(
        QPolygonF({top + QPointF(-34, 14), top + QPointF(34, 14), top + QPointF(27, 78), top + QPointF(-27, 78)}));
    for (const double x : {-15.0, 0.0, 15.0})
        painter.drawLine(top + QPointF(x, 26), top + QPointF(x * 0.8, 68));
    painter.save();
    painter.translate(top + QPointF(38, 12));
    painter.rotate(lid * 38);
    painter.drawRoundedRect(QRectF(-78, -8, 80, 9), 3, 3);
    painter.drawRoundedRect(QRectF(-48, -15, 20, 8), 3, 3);
    painter.restore();
}

QImage blankFrame()
{
    QImage frame(frameSize, QImage::Format_ARGB32_Premultiplied);
    frame.fill(Qt::transparent);
    return frame;
}

/// A picture flies from one folder into the other.
QImage copyFrame(int index)
{
    QImage frame = blankFrame();
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr QPointF left(40, 44);
    constexpr QPointF right(412, 44);
    drawFolderBack(painter, left);
    drawFolderBack(painter, right);
    // It rises out of the one, flies, and sinks into the other; a few frames of rest at the end.
    const double t = qMin(1.0, index / double(frameCount - 6));
    const double way = eased(t);
    const double x = left.x() + 46 + way * (right.x() - left.x());
    const double height = qSin(way * M_PI);
    const QPointF middle(x, 78 - 48 * qMin(1.0, height * 1.5));
    if (t < 1)
        drawPicture(painter, middle, -10 + 20 * way, 0.95);
    drawFolderFront(painter, left);
    drawFolderFront(painter, right);
    return frame;
}

/// A picture drops into the bin, and the lid closes.
QImage deleteFrame(int index)
{
    QImage frame = blankFrame();
    QPainter painter(&frame);
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr QPointF bin(272, 36);
    const double t = index / double(frameCount);
    const double lid = t < 0.2 ? eased(t / 0.2) : t < 0.75 ? 1 : t < 0.9 ? eased((0.9 - t) / 0.15) : 0;
    const double fall = qBound(0.0, (t - 0.1) / 0.6, 1.0);
    if (t > 0.02 && fall < 1) {
        const double x = bin.x() - 150 * (1 - eased(fall));
        const double y = 30 - 46 * qSin(qMin(1.0, fall * 1.25) * M_PI) * 0.5 + 72 * fall * fall;
        painter.setOpacity(qMin(1.0, (t - 0.02) / 0.06));
        drawPicture(painter, QPointF(x, y), 70 * fall, 0.95 - 0.35 * fall);
        painter.setOpacity(1);
    }
    drawBin(painter, bin, lid);
    return frame;
}

bool write(const QString &path, QImage (*draw)(int index))
{
    QVector<QImage> frames;
    for (int index = 0; index < frameCount; ++index)
        frames.append(draw(index).convertToFormat(QImage::Format_ARGB32));
    const QByteArray film = aviOf(frames, frameTime);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(film) == film.size() && file.flush();
}

}

int main(int count, char *arguments[])
{
    if (count != 2) {
        std::fputs("usage: makeanimations FOLDER\n", stderr);
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(arguments[1]) + QLatin1Char('/');
    if (write(folder + QStringLiteral("filecopy.avi"), &copyFrame)
        && write(folder + QStringLiteral("filedel.avi"), &deleteFrame))
        return 0;
    std::fputs("makeanimations: cannot write the films\n", stderr);
    return 1;
}
