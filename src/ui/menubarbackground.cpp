#include "ui/menubarbackground.h"

#include "ui/background.h"

#include <QApplication>
#include <QEvent>
#include <QMenuBar>
#include <QPainter>

#include <algorithm>
#include <array>

namespace {

constexpr double readable = 4.5;
constexpr int largestTile = 256; ///< pixels of a side
constexpr int steps = 16;

bool isTile(const QImage &picture)
{
    return picture.width() <= largestTile && picture.height() <= largestTile;
}

/// The middle of the picture, scaled to the width of the room, or to its height where that takes more.
QImage middleStrip(const QImage &picture, QSize room)
{
    const QSize part = room.scaled(picture.size(), Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    QRect middle(QPoint(), part);
    middle.moveCenter(picture.rect().center());
    return picture.copy(middle).scaled(room, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QColor mixed(const QColor &a, const QColor &b, int step)
{
    const auto channel = [step](int from, int to) { return from + (to - from) * step / steps; };
    return QColor(channel(a.red(), b.red()), channel(a.green(), b.green()), channel(a.blue(), b.blue()));
}

/// The darkest and the lightest colour that the channels could give; no pixel is beyond them.
std::array<QColor, 2> extremes(const QImage &picture)
{
    std::array<int, 3> low{255, 255, 255};
    std::array<int, 3> high{0, 0, 0};
    for (int y = 0; y < picture.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const std::array<int, 3> pixel{qRed(line[x]), qGreen(line[x]), qBlue(line[x])};
            for (std::size_t i = 0; i < 3; ++i) {
                low[i] = std::min(low[i], pixel[i]);
                high[i] = std::max(high[i], pixel[i]);
            }
        }
    }
    return {QColor(low[0], low[1], low[2]), QColor(high[0], high[1], high[2])};
}

/// Gives a menu bar its brush, and a new one when its size or the palette changes. Lives as the bar's child.
class BarPainter : public QObject
{
public:
    BarPainter(QMenuBar *bar, const QImage &picture)
        : QObject(bar)
        , m_bar(bar)
        , m_picture(picture.convertToFormat(QImage::Format_RGB32))
    {
        setObjectName(name());
        bar->installEventFilter(this);
        dress();
    }

    static QString name() { return QStringLiteral("MenuBarBackground"); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != m_bar)
            return false;
        const QEvent::Type type = event->type();
        if ((type == QEvent::Resize && !isTile(m_picture)) || type == QEvent::ApplicationPaletteChange)
            dress();
        else if (type == QEvent::Paint && m_ratio != m_bar->devicePixelRatioF()) // another screen
            QMetaObject::invokeMethod(this, &BarPainter::dress, Qt::QueuedConnection);
        return false;
    }

private:
    // The brush stands in the palette of the bar, which every style fills it with.
    void dress()
    {
        m_ratio = m_bar->devicePixelRatioF();
        const QSize room = (m_bar->size() * m_ratio).expandedTo(QSize(1, 1));
        const QPalette plain = QApplication::palette(m_bar);
        const QColor ground = plain.color(QPalette::Window);
        const QImage faded = fadedForText(isTile(m_picture) ? m_picture : middleStrip(m_picture, room), ground,
            plain.color(QPalette::ButtonText), plain.color(QPalette::WindowText));
        QBrush brush(ground, QPixmap::fromImage(faded));
        brush.setTransform(QTransform::fromScale(1 / m_ratio, 1 / m_ratio));
        QPalette palette;
        palette.setBrush(QPalette::Window, brush);
        m_bar->setPalette(palette);
        m_bar->setAutoFillBackground(true);
    }

    QMenuBar *m_bar;
    QImage m_picture;
    double m_ratio = 1;
};

}

QImage fadedForText(const QImage &picture, const QColor &ground, const QColor &text, const QColor &otherText)
{
    QImage faded = picture.convertToFormat(QImage::Format_RGB32);
    const std::array<QColor, 2> ends = extremes(faded);
    const auto canBeRead = [&](int step) {
        for (const QColor &end : ends) {
            for (const QColor &color : {text, otherText}) {
                if (contrast(mixed(end, ground, step).rgb(), color.rgb()) < readable)
                    return false;
            }
        }
        return true;
    };
    int step = 0;
    while (step < steps && !canBeRead(step))
        ++step;
    for (int y = 0; step > 0 && y < faded.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(faded.scanLine(y));
        for (int x = 0; x < faded.width(); ++x)
            line[x] = mixed(QColor(line[x]), ground, step).rgb();
    }
    return faded;
}

void setMenuBarBackground(QMenuBar *bar, const QImage &picture)
{
    delete bar->findChild<QObject *>(BarPainter::name(), Qt::FindDirectChildrenOnly);
    bar->setAutoFillBackground(false);
    bar->setPalette(QPalette());
    if (!picture.isNull())
        new BarPainter(bar, picture);
}
