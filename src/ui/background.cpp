#include "ui/background.h"

#include "app/colorschemes.h"
#include "app/globals.h"
#include "shell/frmGradient.h"

#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QPaintEvent>
#include <QPainter>
#include <QRadioButton>
#include <QStatusBar>
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

/// Lines of one colour.
struct Stripe
{
    int top;
    int height;
    QRgb color;
};

// Band n is a box from line 2n - 1 to 2n + 2, and the next one covers its lower half. A slow ramp repeats its colours:
// what is equal is one stripe.
QVector<Stripe> stripesOf(const QVector<QRgb> &bands)
{
    QVector<Stripe> stripes;
    for (qsizetype band = 0; band < bands.size(); ++band) {
        const int top = int(band) * 2 - 1;
        const int height = band + 1 == bands.size() ? 4 : 2;
        if (!stripes.isEmpty() && stripes.last().color == bands[band])
            stripes.last().height = top + height - stripes.last().top;
        else
            stripes.append({top, height, bands[band]});
    }
    return stripes;
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
        const bool same = scheme == m_scheme && colors == m_colors;
        m_scheme = scheme;
        m_colors = colors;
        colorTexts();
        if (same) // each activation comes here, and most bring nothing new
            return;
        m_height = 0;
        m_window->update();
    }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (watched != m_window)
            return false;
        if (event->type() == QEvent::Paint)
            paint(static_cast<QPaintEvent *>(event)->region());
        else if (event->type() == QEvent::PaletteChange || event->type() == QEvent::Resize)
            colorTexts();
        return false;
    }

private:
    explicit GradientPainter(QWidget *window)
        : QObject(window)
        , m_window(window)
    {
    }

    void paint(const QRegion &region)
    {
        if (m_height != m_window->height()) {
            m_height = m_window->height();
            m_stripes = stripesOf(schemeBands(m_scheme, m_height, m_colors));
        }
        // The painter cuts to the region, box by box; one box is cheaper than a hundred.
        const QRect dirty = region.boundingRect();
        QPainter painter(m_window);
        for (const Stripe &stripe : std::as_const(m_stripes)) {
            if (stripe.top <= dirty.bottom() && stripe.top + stripe.height > dirty.top())
                painter.fillRect(dirty.left(), stripe.top, dirty.width(), stripe.height, QColor(stripe.color));
        }
    }

    void colorTexts()
    {
        m_bands = schemeBands(m_scheme, std::max(2, m_window->height()), m_colors);
        if (m_bands.isEmpty())
            return;
        const QColor wanted = m_window->palette().color(QPalette::WindowText);
        const QColor text = readableOn(m_bands, wanted);
        // One colour for all texts, where one can be read from top to bottom.
        m_textOfAll = leastContrast(m_bands, text.rgb()) >= readable ? text : QColor();
        colorTextsOf(m_window, wanted);
    }

    /// What a control at those lines of the window stands on.
    QVector<QRgb> groundOf(int top, int height) const
    {
        const qsizetype first = std::clamp<qsizetype>(top / 2, 0, m_bands.size() - 1);
        const qsizetype last = std::clamp<qsizetype>((top + height) / 2, first, m_bands.size() - 1);
        return m_bands.mid(first, last - first + 1);
    }

    // What paints a ground of its own keeps the palette's colours, with all it holds.
    void colorTextsOf(QWidget *parent, const QColor &wanted)
    {
        for (QObject *object : parent->children()) {
            auto *child = qobject_cast<QWidget *>(object);
            if (!child || child->isWindow() || child->autoFillBackground() || qobject_cast<QTabWidget *>(child)
                || qobject_cast<QAbstractScrollArea *>(child) || qobject_cast<QToolBar *>(child)
                || qobject_cast<QMenuBar *>(child) || qobject_cast<QStatusBar *>(child))
                continue;
            const bool group = qobject_cast<QGroupBox *>(child);
            if (group || qobject_cast<QLabel *>(child) || qobject_cast<QCheckBox *>(child)
                || qobject_cast<QRadioButton *>(child)) {
                // The text of a group is its title.
                const int height = group ? child->fontMetrics().height() : child->height();
                const auto ground = groundOf(child->mapTo(m_window, QPoint()).y(), height);
                colorText(child, m_textOfAll.isValid() ? m_textOfAll : readableOn(ground, wanted), ground);
            }
            colorTextsOf(child, wanted);
        }
    }

    static void colorText(QWidget *control, const QColor &text, const QVector<QRgb> &ground)
    {
        QPalette palette;
        palette.setColor(QPalette::WindowText, text);
        palette.setColor(QPalette::Disabled, QPalette::WindowText, mixed(text, QColor(ground[ground.size() / 2])));
        control->setPalette(palette);
    }

    QWidget *m_window;
    QString m_scheme;
    SchemeColors m_colors;
    int m_height = 0; ///< that the stripes are made for
    QVector<Stripe> m_stripes;
    QVector<QRgb> m_bands; ///< for the texts
    QColor m_textOfAll;
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
