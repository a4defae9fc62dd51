#include "ui/background.h"

#include "app/colorschemes.h"
#include "app/globals.h"
#include "shell/frmGradient.h"

#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QPainter>
#include <QRadioButton>
#include <QStatusBar>
#include <QStyle>
#include <QTabWidget>
#include <QToolBar>

#include <cmath>

namespace {
constexpr double readable = 4.5;

double luminance(QRgb color)
{
    const auto linear = [](int value) {
        const double share = value / 255.0;
        return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double leastContrast(const QVector<QRgb> &grounds, QRgb text)
{
    double least = 21;
    for (const QRgb ground : grounds)
        least = std::min(least, contrast(ground, text));
    return least;
}

QColor mixed(const QColor &a, const QColor &b)
{
    return QColor((a.red() + b.red()) / 2, (a.green() + b.green()) / 2, (a.blue() + b.blue()) / 2);
}

/// Paints one window's gradient before the window paints anything itself. Lives as the window's child.
class GradientPainter : public QObject
{
public:
    static GradientPainter &of(QWidget *window)
    {
        const QString name = QStringLiteral("GradientPainter");
        if (auto *painter = window->findChild<GradientPainter *>(name, Qt::FindDirectChildrenOnly))
            return *painter;
        auto *painter = new GradientPainter(window);
        painter->setObjectName(name);
        window->installEventFilter(painter);
        return *painter;
    }

    void set(const QString &scheme, const SchemeColors &colors)
    {
        m_scheme = scheme;
        m_colors = colors;
        m_pixmap = QPixmap();
        colorTexts();
        m_window->update();
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != m_window)
            return false;
        if (event->type() == QEvent::Paint)
            paint();
        else if (event->type() == QEvent::PaletteChange)
            colorTexts();
        return false;
    }

private:
    explicit GradientPainter(QWidget *window)
        : QObject(window)
        , m_window(window)
    {
    }

    void paint()
    {
        const double ratio = m_window->devicePixelRatioF();
        const QSize size = m_window->size() * ratio;
        if (m_pixmap.size() != size)
            fill(size, ratio);
        if (!m_pixmap.isNull())
            QPainter(m_window).drawPixmap(0, 0, m_pixmap);
    }

    // Each band reaches over the first line of the next, which then covers it: the order is part of the look.
    void fill(QSize size, double ratio)
    {
        const QVector<QRgb> bands = schemeBands(m_scheme, m_window->height(), m_colors);
        m_pixmap = QPixmap();
        if (bands.isEmpty())
            return;
        m_pixmap = QPixmap(size);
        m_pixmap.setDevicePixelRatio(ratio);
        QPainter painter(&m_pixmap);
        for (qsizetype band = 0; band < bands.size(); ++band)
            painter.fillRect(QRect(-1, int(band) * 2 - 1, m_window->width() + 2, 4), QColor(bands[band]));
    }

    void colorTexts()
    {
        const QVector<QRgb> bands = schemeBands(m_scheme, std::max(2, m_window->height()), m_colors);
        if (bands.isEmpty())
            return;
        const QVector<QRgb> grounds{bands.first(), bands[bands.size() / 2], bands.last()};
        const QColor text = readableOn(grounds, m_window->palette().color(QPalette::WindowText));
        colorTextsOf(m_window, text, mixed(text, QColor(grounds[1])));
    }

    // What paints a ground of its own keeps the palette's colours, with all it holds.
    static void colorTextsOf(QWidget *parent, const QColor &text, const QColor &disabledText)
    {
        for (QObject *object : parent->children()) {
            auto *child = qobject_cast<QWidget *>(object);
            if (!child || child->isWindow() || child->autoFillBackground() || qobject_cast<QTabWidget *>(child)
                || qobject_cast<QAbstractScrollArea *>(child) || qobject_cast<QToolBar *>(child)
                || qobject_cast<QMenuBar *>(child) || qobject_cast<QStatusBar *>(child))
                continue;
            if (qobject_cast<QLabel *>(child) || qobject_cast<QCheckBox *>(child) || qobject_cast<QRadioButton *>(child)
                || qobject_cast<QGroupBox *>(child)) {
                QPalette palette;
                palette.setColor(QPalette::WindowText, text);
                palette.setColor(QPalette::Disabled, QPalette::WindowText, disabledText);
                child->setPalette(palette);
            }
            colorTextsOf(child, text, disabledText);
        }
    }

    QWidget *m_window;
    QString m_scheme;
    SchemeColors m_colors;
    QPixmap m_pixmap;
};
}

double contrast(QRgb a, QRgb b)
{
    const double one = luminance(a) + 0.05;
    const double other = luminance(b) + 0.05;
    return std::max(one, other) / std::min(one, other);
}

QColor readableOn(const QVector<QRgb> &grounds, const QColor &wanted)
{
    if (leastContrast(grounds, wanted.rgb()) >= readable)
        return wanted;
    const QColor black(Qt::black);
    const QColor white(Qt::white);
    return leastContrast(grounds, black.rgb()) >= leastContrast(grounds, white.rgb()) ? black : white;
}

void PaintFormBackground(QWidget *window, const QString &scheme)
{
    // The scroll bars of the colours go with the other windows at the end; nothing is painted anew then.
    if (globals.ProgramExiting && !isLoaded<frmGradient>())
        return;
    GradientPainter::of(window).set(scheme, form<frmGradient>().colors());
}

void ApplyColorMenu(int value)
{
    // The six entries of the colour menu are kept in the settings; none of them has a look of its own.
    switch (value) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
    default:
        break;
    }
}
