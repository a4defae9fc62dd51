#include "ui/toolbarcaptions.h"

#include "ui/guards.h"

#include <QEvent>
#include <QLayout>
#include <QToolBar>
#include <QToolButton>

#include <utility>

ToolbarCaptions::ToolbarCaptions(QToolBar *bar, QVector<QVector<QAction *>> leftOutFirst)
    : QObject(bar)
    , m_bar(bar)
    , m_leftOutFirst(std::move(leftOutFirst))
{
    bar->installEventFilter(this);
    // The buttons are told first and take the style of the bar; then it is decided who keeps it.
    connect(bar, &QToolBar::toolButtonStyleChanged, this, &ToolbarCaptions::fit);
}

bool ToolbarCaptions::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Resize:
    case QEvent::Show:
    case QEvent::FontChange:
    case QEvent::StyleChange:
        fit();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void ToolbarCaptions::fit()
{
    if (m_fitting || m_bar->toolButtonStyle() != Qt::ToolButtonTextBesideIcon)
        return;
    const ScopedFlag fitting(m_fitting);
    const QList<QAction *> all = m_bar->actions();
    for (QAction *action : all)
        setStyle(action, action->text().isEmpty() ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
    const int room = m_bar->parentWidget() ? m_bar->parentWidget()->width() : m_bar->width();
    for (const QVector<QAction *> &group : std::as_const(m_leftOutFirst)) {
        if (m_bar->sizeHint().width() <= room)
            break;
        for (QAction *action : group)
            setStyle(action, Qt::ToolButtonIconOnly);
    }
}

void ToolbarCaptions::setStyle(QAction *action, Qt::ToolButtonStyle style) const
{
    if (auto *button = qobject_cast<QToolButton *>(m_bar->widgetForAction(action)))
        button->setToolButtonStyle(style);
    // A button that has no room is hidden and does not tell the bar of its new size.
    m_bar->layout()->invalidate();
}
