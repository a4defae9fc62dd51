#include "viewer/playercontrols.h"

#include "engine/player.h"
#include "ui/icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QSlider>
#include <QStyle>
#include <QToolButton>

#include <algorithm>
#include <limits>
#include <utility>

namespace {

constexpr double milliseconds = 1000.0;
constexpr int widthForTime = 240;
constexpr int widthForVolume = 320;

/// A click leads to the place clicked at; the usual page step is of no use in a film.
class PlaceSlider final : public QSlider
{
public:
    using QSlider::QSlider;

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        if (event->button() == Qt::LeftButton) {
            const int handle = style()->pixelMetric(QStyle::PM_SliderLength, nullptr, this);
            const int x = qRound(event->position().x()) - handle / 2;
            const bool mirrored = layoutDirection() == Qt::RightToLeft;
            setValue(QStyle::sliderValueFromPosition(minimum(), maximum(), x, std::max(1, width() - handle), mirrored));
        }
        // The handle is under the pointer now, so the base class starts a drag.
        QSlider::mousePressEvent(event);
    }
};

void name(QToolButton *button, const QString &icon, const QString &text)
{
    button->setIcon(themedIcon(icon));
    button->setToolTip(text);
    button->setAccessibleName(text);
}

QString timeText(qint64 seconds, bool withHours)
{
    const auto twoDigits = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    const QString rest = twoDigits(seconds % 60);
    if (withHours)
        return QStringLiteral("%1:%2:%3").arg(seconds / 3600).arg(twoDigits(seconds / 60 % 60), rest);
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(rest);
}

}

QString playTimeText(double position, double duration)
{
    // Damaged files tell anything: what is no number is the start, and sixty years are the most.
    const auto whole = [](double seconds) { return qint64(std::min(std::max(0.0, seconds), 2e9)); };
    const bool withHours = std::max(position, duration) >= 3600;
    return timeText(whole(position), withHours) + QStringLiteral(" / ") + timeText(whole(duration), withHours);
}

PlayerControls::PlayerControls(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("playerControls"));
    setAutoFillBackground(true);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(4, 2, 4, 2);
    row->setSpacing(4);

    m_play = addButton("playOrPause");
    m_stop = addButton("stop");
    name(m_stop, QStringLiteral("media-playback-stop"), tr("Stop"));
    m_position = addSlider("position", tr("Position"));
    m_position->setSingleStep(5 * int(milliseconds));
    m_position->setPageStep(30 * int(milliseconds));
    m_time = new QLabel(this);
    m_time->setObjectName(QStringLiteral("time"));
    row->addWidget(m_time);
    m_mute = addButton("mute");
    m_mute->setCheckable(true);
    m_volume = addSlider("volume", tr("Volume"));
    m_volume->setRange(0, 100);
    row->setStretchFactor(m_position, 4);
    row->setStretchFactor(m_volume, 1);
    m_volume->setMaximumWidth(120);

    connect(m_play, &QToolButton::clicked, this, [this] {
        if (m_playing)
            Q_EMIT pauseWanted();
        else
            Q_EMIT playWanted();
    });
    connect(m_stop, &QToolButton::clicked, this, &PlayerControls::stopWanted);
    connect(
        m_position, &QSlider::valueChanged, this, [this](int value) { Q_EMIT positionWanted(value / milliseconds); });
    connect(m_mute, &QToolButton::clicked, this, &PlayerControls::muteWanted);
    connect(m_volume, &QSlider::valueChanged, this, [this](int value) {
        Q_EMIT volumeWanted(value);
        if (!m_volume->isSliderDown())
            Q_EMIT volumeChosen(value);
    });
    connect(m_volume, &QSlider::sliderReleased, this, [this] { Q_EMIT volumeChosen(m_volume->value()); });
    showState(Player::Stopped, false);
    showTime(0, 0);
    showVolume(100, false);
}

QToolButton *PlayerControls::addButton(const char *name)
{
    auto *button = new QToolButton(this);
    button->setObjectName(QLatin1String(name));
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    layout()->addWidget(button);
    return button;
}

QSlider *PlayerControls::addSlider(const char *name, const QString &label)
{
    auto *slider = new PlaceSlider(Qt::Horizontal, this);
    slider->setObjectName(QLatin1String(name));
    slider->setToolTip(label);
    slider->setAccessibleName(label);
    slider->setFocusPolicy(Qt::TabFocus);
    slider->setMinimumWidth(40);
    layout()->addWidget(slider);
    return slider;
}

void PlayerControls::showState(int state, bool hasFile)
{
    const bool playing = state == Player::Playing || state == Player::Transitioning;
    // Told several times a second: an icon set anew is painted anew, and screen readers speak of the name.
    if (std::exchange(m_playing, playing) != playing || m_play->icon().isNull())
        name(m_play, playing ? QStringLiteral("media-playback-pause") : QStringLiteral("media-playback-start"),
            playing ? tr("Pause") : tr("Play"));
    m_play->setEnabled(hasFile);
    m_stop->setEnabled(hasFile && state != Player::Stopped);
    m_position->setEnabled(hasFile && (state == Player::Playing || state == Player::Paused));
}

void PlayerControls::showTime(double position, double duration)
{
    m_time->setText(playTimeText(position, duration));
    if (m_position->isSliderDown())
        return;
    const QSignalBlocker blocker(m_position);
    constexpr double largest = std::numeric_limits<int>::max();
    m_position->setRange(0, int(std::min(duration * milliseconds, largest)));
    m_position->setValue(int(std::min(position * milliseconds, largest)));
}

/// A narrow bar leaves out what a person misses least.
void PlayerControls::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_time->setVisible(width() >= widthForTime);
    m_volume->setVisible(width() >= widthForVolume);
}

void PlayerControls::showVolume(int volume, bool muted)
{
    const QSignalBlocker blocker(m_volume);
    m_volume->setValue(volume);
    m_mute->setChecked(muted);
    name(m_mute, muted ? QStringLiteral("audio-volume-muted") : QStringLiteral("audio-volume-high"),
        muted ? tr("Sound on") : tr("Sound off"));
}
