#pragma once

#include "engine/player.h"
#include "platform/screenawake.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class PlayerControls;
class QPainter;

/// The player control: a black rectangle that shows the frames of the Player behind it, over a bar to work it with. The
/// player is made at the first file; until then state and volume are plain values. For sound without a picture it shows
/// a note and the file's name. While a video plays, the screen is kept awake.
///
/// With the focus on it, Space plays and pauses, S stops, M turns the sound off and on, Left and Right move by five
/// seconds, Home goes to the start, Up and Down change the volume. The keyboard's own media keys work from anywhere in
/// the window.
class MediaPlayerControl : public QWidget
{
    Q_OBJECT
public:
    explicit MediaPlayerControl(QWidget *parent = nullptr);
    ~MediaPlayerControl() override;

    void setUrl(const QString &path);
    QString url() const;
    void play();
    void pause();
    void stop();
    int playState() const;
    int volume() const;
    void setVolume(int volume);
    bool isMuted() const;
    void setMuted(bool muted);
    double duration() const;
    double currentPosition() const;
    void setCurrentPosition(double seconds);
    /// False while there is more to be seen of the file soon: it loads, or its first frame is not there yet.
    bool isReady() const;

    /// For tests: uses this player instead of making one.
    void setPlayer(std::unique_ptr<Player> player);
    /// Frees the player; later calls make a new one.
    void shutDown();

Q_SIGNALS:
    void PlayStateChange(int newState);
    /// A person has chosen this volume; setVolume() does not tell.
    void VolumeChosen(int volume);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    bool ensurePlayer();
    void adopt(std::unique_ptr<Player> player);
    void connectControls();
    void connectMediaKeys();
    void playOrPause();
    void moveBy(double seconds);
    void chooseVolume(int volume);
    void keepAwake();
    void frameArrived();
    void stateChanged(int state);
    void refreshControls();
    QRect pictureRect() const;
    void paintFrame(QPainter &painter, const QImage &frame);
    void paintSound(QPainter &painter) const;

    PlayerControls *m_controls;
    QTimer m_refresh; ///< moves the bar's slider while something plays or pauses
    std::unique_ptr<Player> m_player;
    bool m_unavailable = false;
    int m_volume = 100;
    bool m_muted = false;
    QString m_url;
    QRect m_frameRect; ///< where the frames stand; the rest of the picture's place is black
    int m_wheel = 0; ///< what fine wheels have turned without making a whole step
    bool m_focusByKey = false; ///< a frame shows where the focus is; who has clicked knows
    ScreenAwake m_awake;
};
