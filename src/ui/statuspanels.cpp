#include "ui/statuspanels.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>

StatusPanels::StatusPanels(const QVector<int> &stretches, QWidget *parent)
    : QStatusBar(parent)
{
    setSizeGripEnabled(true);
    for (qsizetype i = 0; i < stretches.size(); ++i) {
        Panel panel;
        auto *frame = new QWidget(this);
        frame->setObjectName(QStringLiteral("%1(%2)").arg(QStringLiteral("Panels")).arg(i + 1));
        auto *row = new QHBoxLayout(frame);
        row->setContentsMargins(6, 0, 6, 0);
        row->setSpacing(4);
        panel.icon = new QLabel(frame);
        panel.icon->hide();
        panel.text = new QLabel(frame);
        panel.text->setTextFormat(Qt::PlainText);
        panel.text->setMinimumWidth(1);
        row->addWidget(panel.icon);
        row->addWidget(panel.text, 1);
        if (stretches[i] > 0)
            panel.text->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        panel.text->installEventFilter(this);
        addWidget(frame, stretches[i]);
        m_panels.append(panel);
    }
}

void StatusPanels::setPanelText(int panel, const QString &text)
{
    Panel &p = m_panels[panel - 1];
    if (p.full == text)
        return;
    p.full = text;
    p.text->setAccessibleName(text);
    showShortened(panel);
}

QString StatusPanels::panelText(int panel) const
{
    return m_panels[panel - 1].full;
}

void StatusPanels::setPanelIcon(int panel, const QIcon &icon)
{
    Panel &p = m_panels[panel - 1];
    p.image = icon;
    p.icon->setPixmap(icon.isNull() ? QPixmap() : icon.pixmap(QSize(20, 20), devicePixelRatioF()));
    p.icon->setVisible(!icon.isNull());
    showShortened(panel);
}

QIcon StatusPanels::panelIcon(int panel) const
{
    return m_panels[panel - 1].image;
}

/// A panel changes its room without a new size of the bar too: an icon comes, a neighbour gets a longer text.
bool StatusPanels::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize) {
        for (int i = 1; i <= m_panels.size(); ++i) {
            if (m_panels[i - 1].text == watched)
                showShortened(i);
        }
    }
    return QStatusBar::eventFilter(watched, event);
}

void StatusPanels::showShortened(int panel)
{
    Panel &p = m_panels[panel - 1];
    const bool flexible = p.text->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored;
    const QString shown =
        flexible ? p.text->fontMetrics().elidedText(p.full, Qt::ElideMiddle, p.text->width()) : p.full;
    p.text->setText(shown);
    p.text->setToolTip(shown == p.full ? QString() : p.full);
}
