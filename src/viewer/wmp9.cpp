#include "viewer/wmp9.h"

#include "platform/filepath.h"
#include "viewer/playercontrols.h"

#include <QKeyEvent>
#include <QLoggingCategory>
#include <QShortcut>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {
Q_LOGGING_CATEGORY(logPlayer, "lumora.wmp9", QtWarningMsg)

constexpr double secondsPerKey = 5;
constexpr int volumePerStep = 5;

}

MediaPlayerControl::MediaPlayerControl(QWidget *parent)
    : QWidget(parent)
    , m_controls(new PlayerControls(this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::TabFocus);
    m_refresh.setInterval(200);
    connect(&m_refresh, &QTimer::timeout, this, &MediaPlayerControl::refreshControls);
    connectControls();
    connectMediaKeys();
}

MediaPlayerControl::~MediaPlayerControl() = default;

void MediaPlayerControl::connectControls()
{
    connect(m_controls, &PlayerControls::playWanted, this, &MediaPlayerControl::play);
    connect(m_controls, &PlayerControls::pauseWanted, this, &MediaPlayerControl::pause);
    connect(m_controls, &PlayerControls::stopWanted, this, &MediaPlayerControl::stop);
    connect(m_controls, &PlayerControls::positionWanted, this, &MediaPlayerControl::setCurrentPosition);
    connect(m_controls, &PlayerControls::volumeWanted, this, &MediaPlayerControl::setVolume);
    connect(m_controls, &PlayerControls::volumeChosen, this, &MediaPlayerControl::VolumeChosen);
    connect(m_controls, &PlayerControls::muteWanted, this, &MediaPlayerControl::setMuted);
}

void MediaPlayerControl::connectMediaKeys()
{
    const auto on = [this](Qt::Key key, void (MediaPlayerControl::*act)()) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, act);
    };
    on(Qt::Key_MediaTogglePlayPause, &MediaPlayerControl::playOrPause);
    on(Qt::Key_MediaPlay, &MediaPlayerControl::playOrPause);
    on(Qt::Key_MediaPause, &MediaPlayerControl::pause);
    on(Qt::Key_MediaStop, &MediaPlayerControl::stop);
}

/// False when there is no player on this machine; that is asked for once.
bool MediaPlayerControl::ensurePlayer()
{
    if (!m_player && !m_unavailable) {
        adopt(createPlayer());
        m_unavailable = !m_player;
    }
    return bool(m_player);
}

void MediaPlayerControl::adopt(std::unique_ptr<Player> player)
{
    m_player = std::move(player);
    if (!m_player)
        return;
    connect(m_player.get(), &Player::playStateChanged, this, &MediaPlayerControl::stateChanged);
    connect(m_player.get(), &Player::frameReady, this, &MediaPlayerControl::frameArrived);
    connect(m_player.get(), &Player::durationChanged, this, [this] {
        refreshControls();
        update();
    });
    m_player->setVolume(m_volume);
    m_player->setMuted(m_muted);
    m_player->setVisible(isVisible());
    if (!m_url.isEmpty())
        m_player->setUrl(m_url);
}

void MediaPlayerControl::setPlayer(std::unique_ptr<Player> player)
{
    m_unavailable = false;
    adopt(std::move(player));
    refreshControls();
    update();
}

void MediaPlayerControl::shutDown()
{
    if (m_player)
        m_player->stop();
    m_player.reset();
    m_unavailable = false;
    m_refresh.stop();
    keepAwake();
    refreshControls();
    update();
}

void MediaPlayerControl::setUrl(const QString &path)
{
    m_url = path;
    if (m_player)
        m_player->setUrl(path);
    else if (!path.isEmpty())
        ensurePlayer();
    refreshControls();
    update();
}

QString MediaPlayerControl::url() const
{
    return m_url;
}

void MediaPlayerControl::play()
{
    if (ensurePlayer())
        m_player->play();
}

void MediaPlayerControl::pause()
{
    if (m_player)
        m_player->pause();
}

void MediaPlayerControl::stop()
{
    if (m_player)
        m_player->stop();
}

int MediaPlayerControl::playState() const
{
    return m_player ? m_player->playState() : Player::Stopped;
}

int MediaPlayerControl::volume() const
{
    return m_volume;
}

void MediaPlayerControl::setVolume(int volume)
{
    m_volume = std::clamp(volume, 0, 100);
    if (m_player)
        m_player->setVolume(m_volume);
    m_controls->showVolume(m_volume, m_muted);
}

bool MediaPlayerControl::isMuted() const
{
    return m_muted;
}

void MediaPlayerControl::setMuted(bool muted)
{
    m_muted = muted;
    if (m_player)
        m_player->setMuted(muted);
    m_controls->showVolume(m_volume, m_muted);
}

double MediaPlayerControl::duration() const
{
    return m_player ? m_player->duration() : 0;
}

double MediaPlayerControl::currentPosition() const
{
    return m_player ? m_player->currentPosition() : 0;
}

void MediaPlayerControl::setCurrentPosition(double seconds)
{
    if (m_player)
        m_player->setCurrentPosition(seconds);
    refreshControls();
}

bool MediaPlayerControl::isReady() const
{
    return !m_player || m_player->content() != Player::Unknown;
}

void MediaPlayerControl::playOrPause()
{
    const int state = playState();
    if (state == Player::Playing || state == Player::Transitioning)
        pause();
    else if (!m_url.isEmpty())
        play();
}

void MediaPlayerControl::moveBy(double seconds)
{
    if (playState() == Player::Playing || playState() == Player::Paused)
        setCurrentPosition(std::max(0.0, currentPosition() + seconds));
}

void MediaPlayerControl::chooseVolume(int volume)
{
    setVolume(volume);
    Q_EMIT VolumeChosen(m_volume);
}

/// Sound goes on behind a blank screen; who watches a video touches nothing for an hour.
void MediaPlayerControl::keepAwake()
{
    m_awake.setHeld(m_player && m_player->playState() == Player::Playing && m_player->content() == Player::Video);
}

void MediaPlayerControl::keyPressEvent(QKeyEvent *event)
{
    if (event->modifiers() & ~Qt::KeypadModifier) {
        QWidget::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
    case Qt::Key_Space:
        playOrPause();
        break;
    case Qt::Key_S:
        stop();
        break;
    case Qt::Key_M:
        setMuted(!m_muted);
        break;
    case Qt::Key_Left:
        moveBy(-secondsPerKey);
        break;
    case Qt::Key_Right:
        moveBy(secondsPerKey);
        break;
    case Qt::Key_Home:
        moveBy(-currentPosition());
        break;
    case Qt::Key_Up:
        chooseVolume(m_volume + volumePerStep);
        break;
    case Qt::Key_Down:
        chooseVolume(m_volume - volumePerStep);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

/// The bar lies on this control: a click beside its buttons arrives here too and is not meant for the player.
void MediaPlayerControl::mousePressEvent(QMouseEvent *event)
{
    if (pictureRect().contains(event->position().toPoint()))
        setFocus(Qt::MouseFocusReason);
    QWidget::mousePressEvent(event);
}

void MediaPlayerControl::wheelEvent(QWheelEvent *event)
{
    m_wheel += event->angleDelta().y();
    const int steps = m_wheel / QWheelEvent::DefaultDeltasPerStep;
    m_wheel -= steps * QWheelEvent::DefaultDeltasPerStep;
    if (steps != 0)
        chooseVolume(m_volume + steps * volumePerStep);
    event->accept();
}

void MediaPlayerControl::focusInEvent(QFocusEvent *event)
{
    m_focusByKey = event->reason() == Qt::TabFocusReason || event->reason() == Qt::BacktabFocusReason;
    QWidget::focusInEvent(event);
}

void MediaPlayerControl::focusOutEvent(QFocusEvent *event)
{
    m_focusByKey = false;
    QWidget::focusOutEvent(event);
}

void MediaPlayerControl::stateChanged(int state)
{
    keepAwake();
    qCDebug(logPlayer, "state %d: %s", state, qPrintable(displayPath(m_url)));
    if (state == Player::Stopped)
        m_refresh.stop();
    else
        m_refresh.start();
    refreshControls();
    update();
    Q_EMIT PlayStateChange(state);
}

void MediaPlayerControl::refreshControls()
{
    m_controls->showState(playState(), !m_url.isEmpty());
    m_controls->showTime(currentPosition(), duration());
}

/// A window that is minimised or covered is not painted, and frames nobody fetches slow the player down.
void MediaPlayerControl::frameArrived()
{
    keepAwake();
    const QWindow *handle = window()->windowHandle();
    // What is around the frames is painted already, unless there was no frame before.
    if (isVisible() && (!handle || handle->isExposed()))
        update(m_frameRect.isEmpty() || playState() != Player::Playing ? pictureRect() : m_frameRect);
    else
        m_player->setVisible(false);
}

QRect MediaPlayerControl::pictureRect() const
{
    return QRect(0, 0, width(), std::max(0, height() - m_controls->height()));
}

void MediaPlayerControl::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_player)
        m_player->setVisible(true);
    refreshControls();
}

void MediaPlayerControl::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (m_player)
        m_player->setVisible(false);
}

void MediaPlayerControl::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    const int bar = m_controls->sizeHint().height();
    m_controls->setGeometry(0, std::max(0, height() - bar), width(), bar);
}
