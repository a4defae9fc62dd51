#include "ui/pathlabel.h"

#include "platform/filepath.h"

#include <QDateTime>
#include <QEvent>

#include <utility>

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
            showPath();
    });
}

void PathLabel::setText(const QString &path)
{
    m_path = path;
    if (!isVisible())
        return;
    // All labels change in the same frames: a pair that tells where from and where to belongs together.
    const qint64 frame = QDateTime::currentMSecsSinceEpoch() / framePause;
    if (std::exchange(m_frame, frame) != frame)
        showPath();
    else if (!m_pause.isActive())
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
