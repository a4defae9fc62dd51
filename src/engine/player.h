#pragma once

#include <QImage>
#include <QMap>
#include <QObject>
#include <QString>

#include <memory>

/// Plays audio and video files behind `wmp9`. No call blocks: each returns at once and what happens is told by signals,
/// which come on the thread that made the player.
class Player : public QObject
{
    Q_OBJECT
public:
    /// playState as the windows read it.
    enum PlayState { Stopped = 1, Paused = 2, Playing = 3, Transitioning = 9 };

    /// What the file set last holds. Unknown while it loads, and until the first frame of a video is there; None for no
    /// file and for one that cannot be played.
    enum Content { None, Unknown, Sound, Video };

    using QObject::QObject;

    /// Loads a file so that it stands ready: first frame and length come without playing. Empty unloads.
    virtual void setUrl(const QString &path) = 0;
    virtual QString url() const = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;
    virtual PlayState playState() const = 0;
    virtual Content content() const { return None; }
    /// 0 to 100; kept over files and before the first one.
    virtual int volume() const = 0;
    virtual void setVolume(int volume) = 0;
    virtual bool isMuted() const = 0;
    virtual void setMuted(bool muted) = 0;
    virtual double duration() const = 0; ///< seconds; 0 while unknown
    virtual double currentPosition() const = 0; ///< seconds
    virtual void setCurrentPosition(double seconds) = 0;

    /// The frame of now, as large as it can be within `size` device pixels in its own shape; null when there is none
    /// (sound, nothing loaded).
    virtual QImage frame(QSize size) = 0;
    /// Tells whether anybody looks: a hidden player decodes on but renders nothing.
    virtual void setVisible(bool visible) = 0;

Q_SIGNALS:
    void playStateChanged(int state);
    /// Something else is to be seen: the next frame, or another content.
    void frameReady();
    void durationChanged();
};

/// Whether the player module and the libraries behind it can be loaded. The full test runs once per installation and is
/// remembered in the cache folder by the files' times; LUMORA_MODULES names another folder to look for the module in.
bool playerIsPresent();

/// Loads the module at the first call. Null when it cannot be loaded. `options` are extra player options ("ao" =
/// "null"), for tests.
std::unique_ptr<Player> createPlayer(const QMap<QString, QString> &options = {});
