#pragma once

#include "engine/player/playerbackend.h"

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <atomic>
#include <initializer_list>
#include <memory>
#include <mutex>

struct mpv_event;
struct mpv_handle;
struct mpv_render_context;

/// The player on libmpv. Every call to the library is an asynchronous one, and what the library tells is fetched on the
/// thread that made the object: its own threads only say that there is something to fetch.
class MpvPlayer final : public PlayerBackend
{
public:
    MpvPlayer(const QMap<QString, QString> &options, const Events &events);
    ~MpvPlayer() override;
    MpvPlayer(const MpvPlayer &) = delete;
    MpvPlayer &operator=(const MpvPlayer &) = delete;
    /// False when the library did not start; nothing else may be called then.
    bool started() const { return m_render; }

    void setUrl(const QString &path) override;
    QString url() const override { return m_url; }
    void play() override;
    void pause() override;
    void stop() override;
    int playState() const override { return m_state; }
    int content() const override { return m_content; }
    int volume() const override { return m_volume; }
    void setVolume(int volume) override;
    bool isMuted() const override { return m_muted; }
    void setMuted(bool muted) override;
    double duration() const override { return m_duration; }
    double currentPosition() const override { return m_position; }
    void setCurrentPosition(double seconds) override;
    QImage frame(QSize room) override;
    void setVisible(bool visible) override;

private:
    enum State { Stopped = 1, Paused = 2, Playing = 3, Transitioning = 9 };
    enum Content { None, Unknown, Sound, Video };
    /// User data of requests and of observed values; the tickets of files start above them.
    enum : quint64 { noReply = 0, durationTold, positionTold, widthTold, heightTold, firstTicket = 100 };

    /// What the library has of the current file: nothing (none set, ended, stopped, failed), not yet all, or all.
    enum class Phase { Nothing, ReadingList, Loading, Loaded };

    /// How a thread that reads a play list reaches a player that may be gone by then.
    struct Mailbox
    {
        std::mutex mutex;
        MpvPlayer *owner = nullptr;
    };

    /// Damaged files tell lengths and positions that are no numbers or lie before the start.
    static double saneSeconds(double seconds);

    bool start(const QMap<QString, QString> &options);
    void command(std::initializer_list<const char *> words);
    void setFlag(const char *property, bool value);
    void hold(bool held);
    void setState(State state);

    void loadFirst();
    void readList();
    void listRead(quint64 ticket, const QStringList &entries);
    void loadEntry(qsizetype index);
    void loadFile();
    void forgetFile(Phase phase);
    void unload();
    void finish();
    void settle();
    void giveUpWhenStuck();

    void drain();
    void handle(const mpv_event &event);
    void loadReplied(const mpv_event &event);
    void fileLoaded();
    void fileEnded(bool failed, int error);
    void valueTold(const mpv_event &event);
    void shapeTold(quint64 side, qint64 length);
    void contentTold(bool picture);
    void firstFrameShown();
    void pictureUpdated();
    void skipFrame();

    Events m_events;
    mpv_handle *m_mpv = nullptr;
    mpv_render_context *m_render = nullptr;
    QObject m_context; ///< receiver of the queued calls; what is queued goes with it
    std::shared_ptr<int> m_alive = std::make_shared<int>();
    std::shared_ptr<Mailbox> m_mailbox = std::make_shared<Mailbox>();
    std::atomic<bool> m_drainPosted = false;
    std::atomic<bool> m_picturePosted = false;

    QString m_url;
    QStringList m_entries; ///< the files behind the URL: itself, or those of the play list
    qsizetype m_entry = 0;
    bool m_otherWay = false; ///< a MIDI name is tried as media, or the other way round
    Phase m_phase = Phase::Nothing;
    quint64 m_ticket = 0; ///< of the newest request; answers to older ones are not looked at
    qint64 m_entryId = -1; ///< the library's number for the file, from the answer to the newest request
    qint64 m_startedId = -1;

    State m_state = Stopped;
    bool m_playWanted = false;
    bool m_pauseWanted = false;
    int m_volume = 100;
    bool m_muted = false;
    double m_duration = 0;
    double m_position = 0;

    QImage m_image;
    Content m_content = None;
    bool m_hasPicture = false; ///< the loaded file has a video track
    bool m_hasFrame = false; ///< and its first frame can be rendered
    bool m_imageIsCurrent = false;
    QSize m_shape; ///< of the frames as they are to be shown; only the relation of its sides counts
    bool m_visible = true;

    QTimer m_watchdog;
    int m_stillSeconds = 0;
    double m_watchedPosition = 0;
};
