#include "engine/player/mpvplayer.h"

#include "engine/player/asx.h"
#include "engine/player/midistream.h"
#include "platform/filepath.h"

#include <QDir>

#include <mpv/client.h>
#include <mpv/render.h>
#include <mpv/stream_cb.h>

#include <algorithm>
#include <clocale>
#include <cstring>
#include <thread>

#include <dlfcn.h>

namespace {

constexpr double shortSound = 1.0; // seconds; above what any sound device takes in at once

/// No configuration, no windows, no scripts, and nothing that opens a second file beside the one that was asked for.
// clang-format off
constexpr std::pair<const char *, const char *> startOptions[] = {
    {"config", "no"}, {"vo", "libmpv"}, {"idle", "yes"}, {"terminal", "no"}, {"osc", "no"}, {"osd-level", "0"},
    {"load-scripts", "no"}, {"ytdl", "no"}, {"input-default-bindings", "no"}, {"audio-display", "no"}, {"hwdec", "no"},
    {"sub-auto", "no"}, {"audio-file-auto", "no"}, {"cover-art-auto", "no"}, {"volume-max", "100"},
    {"cache", "no"}, {"resume-playback", "no"}, {"ao", "pulse,alsa,null"}, {"audio-fallback-to-null", "yes"},
    {"demuxer", "lavf"},
};
// clang-format on

/// Containers only: play lists and streaming texts in disguise would make the library fetch what they name.
bool allowContainersOnly(mpv_handle *mpv)
{
    QByteArray key("format_whitelist");
    QByteArray formats("asf,avi,wav,w64,mpeg,mpegvideo,mpegts,mp3,aac,ac3,mov");
    char *keys[] = {key.data()};
    mpv_node value{};
    value.format = MPV_FORMAT_STRING;
    value.u.string = formats.data();
    mpv_node_list list{1, &value, keys};
    mpv_node map{};
    map.format = MPV_FORMAT_NODE_MAP;
    map.u.list = &list;
    return mpv_set_option(mpv, "demuxer-lavf-o", MPV_FORMAT_NODE, &map) >= 0;
}

void sayNothing(const char *, int, const char *, int, const char *, ...)
{
}

/// The libraries below the player write to whoever started the program: a dozen lines where there is no sound card, and
/// what they think of a damaged file. They are found among what this module has brought in, or are not there.
void silenceLibraries()
{
    using SetHandler = int (*)(decltype(&sayNothing));
    using SetLevel = void (*)(int);
    constexpr int quiet = -8;
    if (const auto setHandler = reinterpret_cast<SetHandler>(dlsym(RTLD_DEFAULT, "snd_lib_error_set_handler")))
        setHandler(&sayNothing);
    if (const auto setLevel = reinterpret_cast<SetLevel>(dlsym(RTLD_DEFAULT, "av_log_set_level")))
        setLevel(quiet);
}

constexpr char midiScheme[] = "midi://";

/// In hexadecimal digits, so that no sign of a path can mean something in an address.
QByteArray midiAddress(const QString &path)
{
    return midiScheme + pathToBytes(path).toHex();
}

MidiStream *midi(void *cookie)
{
    return static_cast<MidiStream *>(cookie);
}

/// Runs on a thread of the library, as all that it sets up does.
int openMidi(void *, char *address, mpv_stream_cb_info *info)
{
    const QByteArray digits = QByteArray(address).mid(qsizetype(std::strlen(midiScheme)));
    std::unique_ptr<MidiStream> stream = MidiStream::open(pathFromBytes(QByteArray::fromHex(digits)));
    if (!stream)
        return MPV_ERROR_LOADING_FAILED;
    info->cookie = stream.release();
    info->read_fn = [](void *cookie, char *buffer, uint64_t size) { return midi(cookie)->read(buffer, size); };
    info->seek_fn = [](void *cookie, int64_t offset) {
        return midi(cookie)->seek(offset) ? offset : int64_t(MPV_ERROR_GENERIC);
    };
    info->size_fn = [](void *cookie) { return midi(cookie)->size(); };
    info->close_fn = [](void *cookie) { delete midi(cookie); };
    info->cancel_fn = [](void *cookie) { midi(cookie)->cancel(); };
    return 0;
}

}

MpvPlayer::MpvPlayer(const QMap<QString, QString> &options, const Events &events)
    : m_events(events)
{
    m_mailbox->owner = this;
    m_watchdog.setInterval(1000);
    QObject::connect(&m_watchdog, &QTimer::timeout, &m_context, [this] { giveUpWhenStuck(); });
    if (!start(options) && m_mpv) {
        mpv_terminate_destroy(m_mpv);
        m_mpv = nullptr;
    }
}

bool MpvPlayer::start(const QMap<QString, QString> &options)
{
    // The library refuses to start where a comma separates decimals.
    if (std::strcmp(std::setlocale(LC_NUMERIC, nullptr), "C") != 0)
        std::setlocale(LC_NUMERIC, "C");
    m_mpv = mpv_create();
    if (!m_mpv)
        return false;
    silenceLibraries();
    for (const auto &[name, value] : startOptions)
        mpv_set_option_string(m_mpv, name, value);
    for (auto option = options.begin(); option != options.end(); ++option)
        mpv_set_option_string(m_mpv, option.key().toUtf8().constData(), option.value().toUtf8().constData());
    if (!allowContainersOnly(m_mpv) || mpv_initialize(m_mpv) < 0
        || mpv_stream_cb_add_ro(m_mpv, "midi", nullptr, openMidi) < 0)
        return false;

    char softwareType[] = MPV_RENDER_API_TYPE_SW;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_API_TYPE, softwareType}, {MPV_RENDER_PARAM_INVALID, nullptr}};
    if (mpv_render_context_create(&m_render, m_mpv, parameters) < 0)
        return false;

    mpv_observe_property(m_mpv, durationTold, "duration", MPV_FORMAT_DOUBLE);
    mpv_observe_property(m_mpv, positionTold, "time-pos", MPV_FORMAT_DOUBLE);
    mpv_observe_property(m_mpv, widthTold, "video-out-params/dw", MPV_FORMAT_INT64);
    mpv_observe_property(m_mpv, heightTold, "video-out-params/dh", MPV_FORMAT_INT64);
    const auto wakeUp = [](void *player) {
        auto *self = static_cast<MpvPlayer *>(player);
        if (!self->m_drainPosted.exchange(true))
            QMetaObject::invokeMethod(
                &self->m_context, [self] { self->drain(); }, Qt::QueuedConnection);
    };
    const auto update = [](void *player) {
        auto *self = static_cast<MpvPlayer *>(player);
        if (!self->m_picturePosted.exchange(true))
            QMetaObject::invokeMethod(
                &self->m_context, [self] { self->pictureUpdated(); }, Qt::QueuedConnection);
    };
    m_ticket = firstTicket;
    mpv_set_wakeup_callback(m_mpv, wakeUp, this);
    mpv_render_context_set_update_callback(m_render, update, this);
    return true;
}

MpvPlayer::~MpvPlayer()
{
    {
        const std::lock_guard lock(m_mailbox->mutex);
        m_mailbox->owner = nullptr;
    }
    if (!m_mpv)
        return;
    mpv_render_context_set_update_callback(m_render, nullptr, nullptr);
    mpv_set_wakeup_callback(m_mpv, nullptr, nullptr);
    mpv_render_context_free(m_render);
    mpv_terminate_destroy(m_mpv);
}

void MpvPlayer::setUrl(const QString &path)
{
    m_url = path;
    m_entries.clear();
    m_playWanted = m_pauseWanted = false;
    m_duration = m_position = 0;
    m_content = path.isEmpty() ? None : Unknown;
    if (path.isEmpty())
        unload();
    else
        loadFirst();
    settle();
}

void MpvPlayer::play()
{
    if (m_url.isEmpty() || (m_playWanted && !m_pauseWanted))
        return;
    m_playWanted = true;
    m_pauseWanted = false;
    // A sound that fits into the device's buffer has ended there while it was held; only a new start lets it be heard.
    if (m_phase == Phase::Nothing || (m_phase == Phase::Loaded && m_state == Stopped && m_duration < shortSound))
        loadFirst();
    else
        hold(false);
    setState(m_phase == Phase::Loaded ? Playing : Transitioning);
}

void MpvPlayer::pause()
{
    if (!m_playWanted || m_pauseWanted)
        return;
    m_pauseWanted = true;
    hold(true);
    if (m_phase == Phase::Loaded)
        setState(Paused);
}

void MpvPlayer::stop()
{
    if (m_state == Stopped)
        return;
    unload();
    finish();
}

void MpvPlayer::setVolume(int volume)
{
    m_volume = std::clamp(volume, 0, 100);
    double value = m_volume;
    mpv_set_property_async(m_mpv, noReply, "volume", MPV_FORMAT_DOUBLE, &value);
}

void MpvPlayer::setMuted(bool muted)
{
    m_muted = muted;
    setFlag("mute", muted);
}

void MpvPlayer::setCurrentPosition(double seconds)
{
    if (m_phase != Phase::Loaded)
        return;
    m_position = m_duration > 0 ? std::min(saneSeconds(seconds), m_duration) : saneSeconds(seconds);
    command({"seek", QByteArray::number(m_position, 'f', 3).constData(), "absolute+exact"});
}

void MpvPlayer::command(std::initializer_list<const char *> words)
{
    std::vector<const char *> arguments(words);
    arguments.push_back(nullptr);
    mpv_command_async(m_mpv, noReply, arguments.data());
}

void MpvPlayer::setFlag(const char *property, bool value)
{
    int flag = value;
    mpv_set_property_async(m_mpv, noReply, property, MPV_FORMAT_FLAG, &flag);
}

/// A held file stays open also at its end.
void MpvPlayer::hold(bool held)
{
    const char *keepOpen = held ? "yes" : "no";
    mpv_set_property_async(m_mpv, noReply, "keep-open", MPV_FORMAT_STRING, &keepOpen);
    setFlag("pause", held);
}

/// Last in whatever calls it: who is told may delete the player.
void MpvPlayer::setState(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    m_stillSeconds = 0;
    if (state == Playing || state == Transitioning)
        m_watchdog.start();
    else
        m_watchdog.stop();
    m_events.playStateChanged(state);
}

void MpvPlayer::loadFirst()
{
    const QString path = absolutePath(m_url, QDir::currentPath() + QLatin1Char('/'));
    if (m_entries.isEmpty() && isAsxName(path)) {
        readList();
        return;
    }
    if (m_entries.isEmpty())
        m_entries = {path};
    loadEntry(0);
}

/// On a thread of its own, which is left to itself: on a mount that died it may never come back.
void MpvPlayer::readList()
{
    command({"stop"});
    forgetFile(Phase::ReadingList);
    const QString path = absolutePath(m_url, QDir::currentPath() + QLatin1Char('/'));
    std::thread([mailbox = m_mailbox, ticket = m_ticket, path] {
        const QStringList entries = readAsx(path);
        const std::lock_guard lock(mailbox->mutex);
        MpvPlayer *owner = mailbox->owner;
        if (owner)
            QMetaObject::invokeMethod(
                &owner->m_context, [owner, ticket, entries] { owner->listRead(ticket, entries); },
                Qt::QueuedConnection);
    }).detach();
}

void MpvPlayer::listRead(quint64 ticket, const QStringList &entries)
{
    if (ticket != m_ticket)
        return;
    m_entries = entries;
    if (entries.isEmpty())
        finish();
    else
        loadEntry(0);
}

void MpvPlayer::loadEntry(qsizetype index)
{
    m_entry = index;
    m_otherWay = false;
    loadFile();
}

void MpvPlayer::loadFile()
{
    const QString &path = m_entries.at(m_entry);
    QByteArray verb("loadfile");
    QByteArray address = isMidiName(path) != m_otherWay ? midiAddress(path) : pathToBytes(path);
    forgetFile(Phase::Loading);
    hold(!m_playWanted || m_pauseWanted);
    mpv_node words[2] = {};
    words[0].format = words[1].format = MPV_FORMAT_STRING;
    words[0].u.string = verb.data();
    words[1].u.string = address.data();
    mpv_node_list list{2, words, nullptr};
    mpv_node request{};
    request.format = MPV_FORMAT_NODE_ARRAY;
    request.u.list = &list;
    mpv_command_node_async(m_mpv, m_ticket, &request);
}

/// From here on nothing that is told about the file before counts.
void MpvPlayer::forgetFile(Phase phase)
{
    ++m_ticket;
    m_entryId = -1;
    m_phase = phase;
    m_hasPicture = m_hasFrame = m_imageIsCurrent = false;
    m_stillSeconds = 0;
}

void MpvPlayer::unload()
{
    command({"stop"});
    forgetFile(Phase::Nothing);
}

/// Length and content stay: they are those of the file which play() would start again.
void MpvPlayer::finish()
{
    forgetFile(Phase::Nothing);
    m_playWanted = m_pauseWanted = false;
    m_position = 0;
    if (m_content == Unknown)
        m_content = None;
    settle();
}

void MpvPlayer::settle()
{
    const std::weak_ptr<int> alive = m_alive;
    m_events.frameReady();
    if (!alive.expired())
        setState(Stopped);
}

extern "C" Q_DECL_EXPORT PlayerBackend *LUMORA_PLAYER_FACTORY(
    const QMap<QString, QString> &options, const PlayerBackend::Events &events)
{
    auto player = std::make_unique<MpvPlayer>(options, events);
    return player->started() ? player.release() : nullptr;
}
