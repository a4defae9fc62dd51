#include "ui/pathlabel.h"

#include "platform/filepath.h"

#include <QEvent>

namespace {
constexpr int framePause = 40; ///< milliseconds
}

PathLabel::PathLabel(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    m_pause.setSingleShot(true);
    m_pause.setInterval(framePause);
    connect(&m_pause, &QTimer::timeout, this, [this] {
        if (m_path != m_shown)
            setText(m_path);
    });
}

void PathLabel::setText(const QString &path)
{
    m_path = path;
    if (!isVisible() || m_pause.isActive())
        return;
    showPath();
    m_pause.start();
}

void PathLabel::showPath()
{
    m_shown = m_path;
    const QString whole = displayPath(m_path);
    QLabel::setText(fontMetrics().elidedText(whole, Qt::ElideMiddle, contentsRect().width()));
    setAccessibleName(whole);
    setToolTip(Qt::mightBeRichText(whole) ? Qt::convertFromPlainText(whole) : whole);
}

void PathLabel::resizeEvent(QResizeEvent *event)
{
    QLabel::resizeEvent(event);
    showPath();
}

void PathLabel::showEvent(QShowEvent *event)
{
    QLabel::showEvent(event);
    showPath();
}

void PathLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        showPath();
}
