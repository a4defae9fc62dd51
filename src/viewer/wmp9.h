#pragma once

#include "engine/player.h"

#include <QWidget>

#include <memory>

/// The player control: a black rectangle that shows the frames of the Player behind it. The player is made at the first
/// file; until then state and volume are plain values.
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

private:
    bool ensurePlayer();
    void adopt(std::unique_ptr<Player> player);
    std::unique_ptr<Player> m_player;
    bool m_unavailable = false;
    int m_volume = 100;
    QString m_url;
};
