#include "viewer/frmlocatefiles.h"

#include "app/globals.h"
#include "ui/background.h"

#include <QBoxLayout>
#include <QPainter>

#include <QApplication>

#include <cmath>
#include <numbers>

namespace {

constexpr int stepMilliseconds = 50;
constexpr int frontMilliseconds = 500;
constexpr int phases = 80; ///< steps of one way there and back
constexpr int sheets = 6;

void paintSheet(QPainter &painter, const QRectF &sheet, const QPalette &palette)
{
    painter.setPen(QPen(palette.color(QPalette::Mid), 1));
    painter.setBrush(palette.color(QPalette::Base));
    painter.drawRoundedRect(sheet, 3, 3);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette.color(QPalette::PlaceholderText));
    const qreal line = sheet.height() / 8;
    for (int row = 2; row < 7; row += 2)
        painter.drawRect(
            QRectF(sheet.x() + sheet.width() / 5, sheet.y() + row * line, sheet.width() * 3 / 5, line / 2));
}

void paintMagnifier(QPainter &painter, QPointF center, qreal radius, const QPalette &palette)
{
    const QColor accent = palette.color(QPalette::Highlight);
    painter.setPen(QPen(accent, radius / 3, Qt::SolidLine, Qt::RoundCap));
    painter.drawLine(
        center + QPointF(radius, radius) * std::numbers::sqrt2 / 2, center + QPointF(radius, radius) * 1.5);
    QColor glass = accent;
    glass.setAlphaF(0.25F);
    painter.setBrush(glass);
    painter.setPen(QPen(accent, radius / 5));
    painter.drawEllipse(center, radius, radius);
}

} // namespace

SearchAnimation::SearchAnimation(QWidget *parent)
    : QWidget(parent)
{
    setMinimumSize(sizeHint());
    m_step.setInterval(stepMilliseconds);
    connect(&m_step, &QTimer::timeout, this, [this] {
        m_phase = (m_phase + 1) % phases;
        update();
    });
}

void SearchAnimation::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_step.start();
}

void SearchAnimation::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_step.stop();
}

void SearchAnimation::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal step = qreal(width()) / sheets;
    const qreal sheetHeight = qMin(qreal(height()) * 0.7, step);
    for (int sheet = 0; sheet < sheets; ++sheet) {
        const QRectF place(step * (sheet + 0.2), (height() - sheetHeight) / 2, step * 0.6, sheetHeight);
        paintSheet(painter, place, palette());
    }
    const qreal turn = 2 * std::numbers::pi * m_phase / phases;
    const QPointF center(
        width() / 2.0 - std::cos(turn) * width() * 0.4, height() / 2.0 + std::sin(2 * turn) * height() / 8);
    paintMagnifier(painter, center, sheetHeight / 4, palette());
}

frmlocatefiles::frmlocatefiles(QWidget *parent)
    : FormDialog(parent)
{
    setWindowTitle(tr("Lumora V3"));
    setModal(false);
    lblInfo->setText(tr("Lumora is scanning the selected Drive and Folder(s) for graphic image files."));
    lblInfo->setWordWrap(true);
    lblInfo->setAlignment(Qt::AlignCenter);
    Animation1->setAccessibleName(tr("Searching"));
    cmdCancel->setText(tr("&Cancel"));
    auto *all = new QVBoxLayout(this);
    all->addWidget(lblInfo);
    all->addWidget(Animation1, 1);
    all->addWidget(cmdCancel, 0, Qt::AlignHCenter);
    connect(cmdCancel, &QPushButton::clicked, this, &frmlocatefiles::cmdCancel_Click);
    connect(&Timer1, &QTimer::timeout, this, &frmlocatefiles::Timer1_Timer);
    resize(360, 180);
}

void frmlocatefiles::Form_Load()
{
    Timer1.start(frontMilliseconds);
}

void frmlocatefiles::Form_Activate()
{
    PaintFormBackground(this, QStringLiteral("OTHER"));
}

void frmlocatefiles::Form_QueryUnload(bool &)
{
    Timer1.stop();
    globals.SearchActive = false;
}

void frmlocatefiles::cmdCancel_Click()
{
    globals.SearchActive = false;
}

void frmlocatefiles::Timer1_Timer()
{
    // Not over a box or dialog that asks something.
    if (isVisible() && !QApplication::activeModalWidget())
        raise();
}

void frmlocatefiles::reject()
{
    cmdCancel_Click();
}
