#pragma once

#include <QImage>
#include <QMap>
#include <QString>

#include <functional>

/// What the player module offers the program: plain C++ on purpose. A class with signals would have its meta-object
/// once in the program and once in the module; the Player with the signals stays in the program and forwards to this.
/// The calls mean what they mean in engine/player.h. The events come on the thread that made the backend, and each may
/// delete the backend.
class PlayerBackend
{
public:
    struct Events
    {
        std::function<void(int state)> playStateChanged;
        std::function<void()> frameReady;
        std::function<void()> durationChanged;
    };

    virtual ~PlayerBackend() = default;

    virtual void setUrl(const QString &path) = 0;
    virtual QString url() const = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void stop() = 0;
    virtual int playState() const = 0;
    virtual int content() const = 0;
    virtual int volume() const = 0;
    virtual void setVolume(int volume) = 0;
    virtual bool isMuted() const = 0;
    virtual void setMuted(bool muted) = 0;
    virtual double duration() const = 0;
    virtual double currentPosition() const = 0;
    virtual void setCurrentPosition(double seconds) = 0;
    virtual QImage frame(QSize size) = 0;
    virtual void setVisible(bool visible) = 0;
};

/// The module's one entry: a new backend, or null when the library behind it does not start. The number in the name
/// goes up with every change of the class above, so that a stale module is not taken for a fitting one.
using PlayerFactory = PlayerBackend *(*)(const QMap<QString, QString> &options, const PlayerBackend::Events &events);
#define LUMORA_PLAYER_FACTORY lumoraPlayer2
#define LUMORA_PLAYER_FACTORY_NAME "lumoraPlayer2"
