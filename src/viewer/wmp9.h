#pragma once

#include "engine/player.h"

#include <QTimer>
#include <QWidget>

#include <memory>

class PlayerControls;
class QPainter;

/// The player control: a black rectangle that shows the frames of the Player behind it, over a bar to work it with. The
/// player is made at the first file; until then state and volume are plain values. For sound without a picture it shows
/// a note and the file's name.
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

    /// For tests: uses this player instead of making one.
    void setPlayer(std::unique_ptr<Player> player);
    /// Frees the player; later calls make a new one.
    void shutDown();

Q_SIGNALS:
    void PlayStateChange(int newState);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    bool ensurePlayer();
    void adopt(std::unique_ptr<Player> player);
    void connectControls();
    void frameArrived();
    void stateChanged(int state);
    void refreshControls();
    QRect pictureRect() const;
    bool isSoundOnly() const;
    void paintSound(QPainter &painter) const;

    PlayerControls *m_controls;
    QTimer m_refresh; ///< moves the bar's slider while something plays
    std::unique_ptr<Player> m_player;
    bool m_unavailable = false;
    bool m_hadPicture = false; ///< the current file has shown a frame, so it is no sound
    int m_volume = 100;
    bool m_muted = false;
    QString m_url;
};
