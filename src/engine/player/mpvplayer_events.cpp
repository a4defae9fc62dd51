#include "engine/player/midistream.h"
#include "engine/player/mpvplayer.h"

#include <mpv/client.h>
#include <mpv/render.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace {
constexpr int patienceSeconds = 10;
constexpr qint64 largestSide = 1 << 20;
constexpr const char *videoTrack = "current-tracks/video/id"; // an error where there is none
}

double MpvPlayer::saneSeconds(double seconds)
{
    return std::isfinite(seconds) ? std::max(0.0, seconds) : 0.0;
}

/// Files with broken time stamps and mounts that died give neither an end nor an error. The rest of a play list may be
/// better.
void MpvPlayer::giveUpWhenStuck()
{
    m_stillSeconds = m_position == m_watchedPosition ? m_stillSeconds + 1 : 0;
    m_watchedPosition = m_position;
    if (m_stillSeconds < patienceSeconds)
        return;
    if (m_entry + 1 < m_entries.size())
        loadEntry(m_entry + 1);
    else
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
    case MPV_EVENT_PLAYBACK_RESTART:
        if (m_phase == Phase::Loaded && m_entryId == m_startedId)
            firstFrameShown();
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
    mpv_get_property_async(m_mpv, m_ticket, videoTrack, MPV_FORMAT_INT64);
    mpv_get_property_async(m_mpv, m_ticket, "duration", MPV_FORMAT_DOUBLE);
    const std::weak_ptr<int> alive = m_alive;
    m_events.frameReady();
    if (!alive.expired() && m_playWanted)
        setState(m_pauseWanted ? Paused : Playing);
}

void MpvPlayer::fileEnded(bool failed, int error)
{
    const bool wasLoaded = m_phase == Phase::Loaded;
    // Over before anything was told of it: so short a file is a sound, or has nothing to show.
    if (wasLoaded && m_content == Unknown)
        m_content = Sound;
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
    if (observed && property->format == MPV_FORMAT_INT64) {
        shapeTold(event.reply_userdata, *static_cast<const int64_t *>(property->data));
        return;
    }
    if (m_phase != Phase::Loaded || (!observed && event.reply_userdata != m_ticket))
        return;
    if (!observed && std::strcmp(property->name, videoTrack) == 0) {
        contentTold(event.error >= 0);
    } else if (event.error < 0) {
        return;
    } else if (property->format == MPV_FORMAT_DOUBLE && observed && event.reply_userdata == positionTold) {
        m_position = saneSeconds(*static_cast<const double *>(property->data));
    } else if (property->format == MPV_FORMAT_DOUBLE) {
        const double duration = saneSeconds(*static_cast<const double *>(property->data));
        if (duration > 0 && duration != m_duration) {
            m_duration = duration;
            m_events.durationChanged();
        }
    }
}

/// Comes before or after the file is loaded. A shape that is not right yet only puts black bars into the frame.
void MpvPlayer::shapeTold(quint64 side, qint64 length)
{
    const int pixels = int(std::clamp<qint64>(length, 0, largestSide));
    if (side == widthTold)
        m_shape.setWidth(pixels);
    else
        m_shape.setHeight(pixels);
    m_imageIsCurrent = false;
    if (m_visible)
        m_events.frameReady();
}

void MpvPlayer::contentTold(bool picture)
{
    m_hasPicture = picture;
    if (!picture)
        m_content = Sound;
    else if (m_hasFrame)
        m_content = Video;
    m_events.frameReady();
}

/// The library tells the start of a file once its first frame is on the output. Before that it would render black, or
/// what the file before has left.
void MpvPlayer::firstFrameShown()
{
    if (std::exchange(m_hasFrame, true) || !m_hasPicture)
        return;
    m_content = Video;
    m_imageIsCurrent = false;
    m_events.frameReady();
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

/// Rows that begin where the scaler's widest registers like them; elsewhere it would copy the whole frame.
static QImage alignedImage(QSize size)
{
    constexpr std::size_t alignment = 64;
    const std::size_t rowBytes = (std::size_t(size.width()) * 4 + alignment - 1) / alignment * alignment;
    void *pixels = std::aligned_alloc(alignment, rowBytes * std::size_t(size.height()));
    if (!pixels)
        return QImage();
    return QImage(static_cast<uchar *>(pixels), size.width(), size.height(), qsizetype(rowBytes), QImage::Format_RGB32,
        std::free, pixels);
}

/// The library leaves the fourth byte of a pixel open. A window whose surface has transparency would let what is behind
/// it shine through the video. Two pixels at a time: the rows of alignedImage() lie in one piece.
static void makeOpaque(QImage &image)
{
    constexpr quint64 opaque = 0xff000000ff000000U;
    auto *pixels = reinterpret_cast<quint64 *>(image.bits());
    const qsizetype pairs = image.sizeInBytes() / qsizetype(sizeof *pixels);
    for (qsizetype at = 0; at < pairs; ++at)
        pixels[at] |= opaque;
}

QImage MpvPlayer::frame(QSize room)
{
    if (m_phase != Phase::Loaded || !m_hasPicture || !m_hasFrame || room.isEmpty())
        return QImage();
    const QSize size = m_shape.isEmpty() ? room : m_shape.scaled(room, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    if (m_imageIsCurrent && m_image.size() == size)
        return m_image;
    if (m_image.size() != size || !m_image.isDetached())
        m_image = alignedImage(size);
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
    makeOpaque(m_image);
    return m_imageIsCurrent ? m_image : QImage();
}
