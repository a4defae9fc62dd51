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
#include <cmath>
#include <cstring>
#include <thread>

namespace {

constexpr int patienceSeconds = 10;
constexpr double shortSound = 1.0; // seconds; above what any sound device takes in at once
/// User data of requests and observed values; tickets of files start above them.
enum : quint64 { noReply = 0, durationTold = 1, positionTold = 2, firstTicket = 100 };

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

bool isMidiName(const QString &path)
{
    return path.endsWith(QLatin1String(".mid"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".midi"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".rmi"), Qt::CaseInsensitive);
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

/// Damaged files tell lengths and positions that are no numbers or lie before the start.
double sane(double seconds)
{
    return std::isfinite(seconds) ? std::max(0.0, seconds) : 0.0;
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
    m_position = m_duration > 0 ? std::min(sane(seconds), m_duration) : sane(seconds);
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
    m_hasPicture = m_imageIsCurrent = false;
    m_stillSeconds = 0;
}

void MpvPlayer::unload()
{
    command({"stop"});
    forgetFile(Phase::Nothing);
}

/// The length stays: it is that of the file which play() would start again.
void MpvPlayer::finish()
{
    forgetFile(Phase::Nothing);
    m_playWanted = m_pauseWanted = false;
    m_position = 0;
    settle();
}

void MpvPlayer::settle()
{
    const std::weak_ptr<int> alive = m_alive;
    m_events.frameReady();
    if (!alive.expired())
        setState(Stopped);
}

/// Files with broken time stamps and mounts that died give neither an end nor an error.
void MpvPlayer::giveUpWhenStuck()
{
    m_stillSeconds = m_position == m_watchedPosition ? m_stillSeconds + 1 : 0;
    m_watchedPosition = m_position;
    if (m_stillSeconds >= patienceSeconds)
        stop();
}

void MpvPlayer::drain()
{
    m_drainPosted = false;
    const std::weak_ptr<int> alive = m_alive;
    while (!alive.expired()) {
        const mpv_event *event = mpv_wait_event(m_mpv, 0);
        if (event->event_id == MPV_EVENT_NONE)
            return;
        handle(*event);
    }
}

void MpvPlayer::handle(const mpv_event &event)
{
    switch (event.event_id) {
    case MPV_EVENT_COMMAND_REPLY:
        loadReplied(event);
        break;
    case MPV_EVENT_START_FILE:
        m_startedId = static_cast<const mpv_event_start_file *>(event.data)->playlist_entry_id;
        break;
    case MPV_EVENT_FILE_LOADED:
        if (m_phase == Phase::Loading && m_entryId == m_startedId)
            fileLoaded();
        break;
    case MPV_EVENT_END_FILE: {
        const auto *end = static_cast<const mpv_event_end_file *>(event.data);
        // A stop is always our own doing, and the state was changed when it was asked for.
        if (end->playlist_entry_id == m_entryId && end->reason != MPV_END_FILE_REASON_STOP)
            fileEnded(end->reason != MPV_END_FILE_REASON_EOF, end->error);
        break;
    }
    case MPV_EVENT_PROPERTY_CHANGE:
    case MPV_EVENT_GET_PROPERTY_REPLY:
        valueTold(event);
        break;
    default:
        break;
    }
}

/// The answer to a request tells the library's number for the file; from then on its events can be told from older
/// ones.
void MpvPlayer::loadReplied(const mpv_event &event)
{
    if (event.reply_userdata != m_ticket || m_phase != Phase::Loading)
        return;
    const mpv_node &result = static_cast<const mpv_event_command *>(event.data)->result;
    if (event.error < 0 || result.format != MPV_FORMAT_NODE_MAP) {
        fileEnded(true, event.error);
        return;
    }
    for (int i = 0; i < result.u.list->num; ++i) {
        if (std::strcmp(result.u.list->keys[i], "playlist_entry_id") == 0)
            m_entryId = result.u.list->values[i].u.int64;
    }
}

void MpvPlayer::fileLoaded()
{
    m_phase = Phase::Loaded;
    m_position = 0;
    m_stillSeconds = 0;
    // Asked for and not only observed: what was observed last may still be the file's before.
    mpv_get_property_async(m_mpv, m_ticket, "current-tracks/video/id", MPV_FORMAT_INT64);
    mpv_get_property_async(m_mpv, m_ticket, "duration", MPV_FORMAT_DOUBLE);
    const std::weak_ptr<int> alive = m_alive;
    m_events.frameReady();
    if (!alive.expired() && m_playWanted)
        setState(m_pauseWanted ? Paused : Playing);
}

void MpvPlayer::fileEnded(bool failed, int error)
{
    const bool wasLoaded = m_phase == Phase::Loaded;
    const bool otherIsWorthIt = isMidiName(m_entries.at(m_entry)) || error == MPV_ERROR_UNKNOWN_FORMAT;
    if (failed && !wasLoaded && !m_otherWay && otherIsWorthIt) {
        m_otherWay = true;
        loadFile();
    } else if (m_playWanted && m_entry + 1 < m_entries.size()) {
        loadEntry(m_entry + 1);
    } else {
        finish();
    }
}

void MpvPlayer::valueTold(const mpv_event &event)
{
    const auto *property = static_cast<const mpv_event_property *>(event.data);
    const bool observed = event.event_id == MPV_EVENT_PROPERTY_CHANGE;
    if (m_phase != Phase::Loaded || event.error < 0 || (!observed && event.reply_userdata != m_ticket))
        return;
    if (property->format == MPV_FORMAT_INT64) {
        m_hasPicture = true;
        m_events.frameReady();
    } else if (property->format == MPV_FORMAT_DOUBLE && observed && event.reply_userdata == positionTold) {
        m_position = sane(*static_cast<const double *>(property->data));
    } else if (property->format == MPV_FORMAT_DOUBLE) {
        const double duration = sane(*static_cast<const double *>(property->data));
        if (duration > 0 && duration != m_duration) {
            m_duration = duration;
            m_events.durationChanged();
        }
    }
}

void MpvPlayer::pictureUpdated()
{
    m_picturePosted = false;
    if (!(mpv_render_context_update(m_render) & MPV_RENDER_UPDATE_FRAME))
        return;
    m_imageIsCurrent = false;
    if (m_visible)
        m_events.frameReady();
    else
        skipFrame();
}

/// A frame nobody takes would hold the library up for a fifth of a second.
void MpvPlayer::skipFrame()
{
    int skip = 1;
    int block = 0;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_SKIP_RENDERING, &skip},
        {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &block}, {MPV_RENDER_PARAM_INVALID, nullptr}};
    mpv_render_context_render(m_render, parameters);
}

void MpvPlayer::setVisible(bool visible)
{
    if (m_visible && !visible)
        skipFrame();
    m_visible = visible;
}

QImage MpvPlayer::frame(QSize size)
{
    if (m_phase != Phase::Loaded || !m_hasPicture || size.isEmpty())
        return QImage();
    if (m_imageIsCurrent && m_image.size() == size)
        return m_image;
    if (m_image.size() != size || !m_image.isDetached())
        m_image = QImage(size, QImage::Format_RGB32);
    if (m_image.isNull())
        return m_image;
    int extent[] = {size.width(), size.height()};
    char format[] = "bgr0";
    std::size_t stride = std::size_t(m_image.bytesPerLine());
    int block = 0;
    mpv_render_param parameters[] = {{MPV_RENDER_PARAM_SW_SIZE, extent}, {MPV_RENDER_PARAM_SW_FORMAT, format},
        {MPV_RENDER_PARAM_SW_STRIDE, &stride}, {MPV_RENDER_PARAM_SW_POINTER, m_image.bits()},
        {MPV_RENDER_PARAM_BLOCK_FOR_TARGET_TIME, &block}, {MPV_RENDER_PARAM_INVALID, nullptr}};
    m_imageIsCurrent = mpv_render_context_render(m_render, parameters) >= 0;
    return m_imageIsCurrent ? m_image : QImage();
}

extern "C" Q_DECL_EXPORT PlayerBackend *LUMORA_PLAYER_FACTORY(
    const QMap<QString, QString> &options, const PlayerBackend::Events &events)
{
    auto player = std::make_unique<MpvPlayer>(options, events);
    return player->started() ? player.release() : nullptr;
}
