#pragma once

#include <QWidget>

class QLabel;
class QSlider;
class QToolButton;

/// The bar at the bottom of the player: play or pause, stop, the place in the file, the time, sound on or off, volume.
/// It shows what it is told and tells what the person wants; clicks leave the focus where it was, the Tab key reaches
/// it.
class PlayerControls : public QWidget
{
    Q_OBJECT
public:
    explicit PlayerControls(QWidget *parent = nullptr);

    /// `state` as in Player::PlayState; without a file nothing but the sound can be worked.
    void showState(int state, bool hasFile);
    /// Seconds; a length of 0 is unknown.
    void showTime(double position, double duration);
    void showVolume(int volume, bool muted);

Q_SIGNALS:
    void playWanted();
    void pauseWanted();
    void stopWanted();
    void positionWanted(double seconds);
    void volumeWanted(int volume);
    /// The last word on it: after a drag, not at each place on the way.
    void volumeChosen(int volume);
    void muteWanted(bool muted);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    QToolButton *addButton(const char *name);
    QSlider *addSlider(const char *name, const QString &label);

    bool m_playing = false;
    QToolButton *m_play = nullptr;
    QToolButton *m_stop = nullptr;
    QSlider *m_position = nullptr;
    QLabel *m_time = nullptr;
    QToolButton *m_mute = nullptr;
    QSlider *m_volume = nullptr;
};

/// "1:02 / 12:34"; with hours "1:00:02 / 2:00:00". Parts of a second are cut off.
QString playTimeText(double position, double duration);
