#include "engine/player/midistream.h"

#include "platform/files.h"

#include <QtEndian>

#include <fluidsynth.h>

#include <algorithm>
#include <cstring>

namespace {

constexpr qint64 maximumBytes = 8 << 20;
constexpr int sampleRate = 44100;
constexpr int64_t maximumSeconds = 3600;
constexpr int frameBytes = 4;
constexpr int blockFrames = 1024;

using Settings = std::unique_ptr<fluid_settings_t, void (*)(fluid_settings_t *)>;
using Synth = std::unique_ptr<fluid_synth_t, void (*)(fluid_synth_t *)>;
using MidiPlayer = std::unique_ptr<fluid_player_t, void (*)(fluid_player_t *)>;

const char *soundFont()
{
    for (const char *path : {"/usr/share/sounds/sf2/default-GM.sf2", "/usr/share/sounds/sf3/default-GM.sf3",
             "/usr/share/sounds/sf2/TimGM6mb.sf2", "/usr/share/sounds/sf2/FluidR3_GM.sf2"}) {
        if (fluid_is_soundfont(path))
            return path;
    }
    return nullptr;
}

MidiPlayer startedPlayer(fluid_synth_t *synth, const QByteArray &music)
{
    MidiPlayer player(new_fluid_player(synth), delete_fluid_player);
    if (!player || fluid_player_add_mem(player.get(), music.constData(), std::size_t(music.size())) != FLUID_OK
        || fluid_player_play(player.get()) != FLUID_OK)
        player.reset();
    return player;
}

/// Runs the music through a synthesizer without voices and counts. -1 when the file is refused.
int64_t lengthInFrames(const QByteArray &music)
{
    constexpr int rate = 8000;
    constexpr int block = 64;
    constexpr double voicesWait = 2.0; // seconds fluidsynth waits for voices to fade once the music is over
    Settings settings(new_fluid_settings(), delete_fluid_settings);
    fluid_settings_setnum(settings.get(), "synth.sample-rate", rate);
    fluid_settings_setint(settings.get(), "synth.polyphony", 1);
    fluid_settings_setint(settings.get(), "synth.reverb.active", 0);
    fluid_settings_setint(settings.get(), "synth.chorus.active", 0);
    fluid_settings_setint(settings.get(), "synth.lock-memory", 0);
    Synth synth(new_fluid_synth(settings.get()), delete_fluid_synth);
    const MidiPlayer player = synth ? startedPlayer(synth.get(), music) : MidiPlayer(nullptr, delete_fluid_player);
    if (!player)
        return -1;
    int16_t ignored[2 * block];
    int64_t frames = 0;
    while (fluid_player_get_status(player.get()) == FLUID_PLAYER_PLAYING && frames < (maximumSeconds + 2) * rate) {
        if (fluid_synth_write_s16(synth.get(), block, ignored, 0, 2, ignored, 1, 2) != FLUID_OK)
            return -1;
        frames += block;
    }
    const double seconds = std::clamp(double(frames) / rate - voicesWait, 0.0, double(maximumSeconds));
    return int64_t(seconds * sampleRate);
}

/// The 44 bytes in front of PCM data; the layout is that of the RIFF/WAVE format with a plain "fmt " chunk.
QByteArray wavHeader(int64_t frames)
{
    const auto number = [](auto value) {
        const auto little = qToLittleEndian(value);
        return QByteArray(reinterpret_cast<const char *>(&little), sizeof little);
    };
    const quint32 bytes = quint32(frames * frameBytes);
    return "RIFF" + number(bytes + 36) + "WAVEfmt " + number(quint32(16)) + number(quint16(1)) + number(quint16(2))
        + number(quint32(sampleRate)) + number(quint32(sampleRate * frameBytes)) + number(quint16(frameBytes))
        + number(quint16(16)) + "data" + number(bytes);
}

}

struct MidiStream::Synthesizer
{
    Settings settings{new_fluid_settings(), delete_fluid_settings};
    Synth synth{nullptr, delete_fluid_synth};
    MidiPlayer player{nullptr, delete_fluid_player}; // goes first: it hangs on the synthesizer
};

QByteArray standardMidiData(const QByteArray &bytes)
{
    if (bytes.startsWith("MThd"))
        return bytes;
    if (!bytes.startsWith("RIFF") || bytes.mid(8, 4) != "RMID")
        return {};
    for (qsizetype at = 12; at + 8 <= bytes.size();) {
        const qint64 length = qFromLittleEndian<quint32>(bytes.constData() + at + 4);
        if (bytes.mid(at, 4) == "data") {
            const QByteArray data = bytes.mid(at + 8, length);
            return data.startsWith("MThd") ? data : QByteArray();
        }
        at += 8 + length + (length & 1);
    }
    return {};
}

bool isMidiName(const QString &path)
{
    return path.endsWith(QLatin1String(".mid"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".midi"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".rmi"), Qt::CaseInsensitive);
}

std::unique_ptr<MidiStream> MidiStream::open(const QString &path)
{
    for (const int level : {FLUID_PANIC, FLUID_ERR, FLUID_WARN, FLUID_INFO, FLUID_DBG})
        fluid_set_log_function(level, nullptr, nullptr);
    const Result<QByteArray> bytes = readFile(path, maximumBytes);
    const QByteArray music = bytes ? standardMidiData(*bytes) : QByteArray();
    if (music.isEmpty() || !soundFont())
        return nullptr;
    const int64_t frames = lengthInFrames(music);
    if (frames <= 0)
        return nullptr;
    std::unique_ptr<MidiStream> stream(new MidiStream(music, frames));
    return stream->restart() ? std::move(stream) : nullptr;
}

MidiStream::MidiStream(QByteArray music, int64_t frames)
    : m_music(std::move(music))
    , m_header(wavHeader(frames))
    , m_frames(frames)
{
}

MidiStream::~MidiStream() = default;

bool MidiStream::restart()
{
    m_rendered = 0;
    m_block.clear();
    m_synthesizer = std::make_unique<Synthesizer>();
    fluid_settings_t *settings = m_synthesizer->settings.get();
    fluid_settings_setnum(settings, "synth.sample-rate", sampleRate);
    fluid_settings_setnum(settings, "synth.gain", 0.6);
    fluid_settings_setint(settings, "synth.lock-memory", 0);
    m_synthesizer->synth.reset(new_fluid_synth(settings));
    fluid_synth_t *synth = m_synthesizer->synth.get();
    if (!synth || fluid_synth_sfload(synth, soundFont(), 1) == FLUID_FAILED)
        return false;
    m_synthesizer->player = startedPlayer(synth, m_music);
    return bool(m_synthesizer->player);
}

void MidiStream::renderBlock()
{
    m_block.resize(blockFrames * frameBytes);
    int16_t samples[2 * blockFrames];
    if (fluid_synth_write_s16(m_synthesizer->synth.get(), blockFrames, samples, 0, 2, samples, 1, 2) == FLUID_OK)
        std::memcpy(m_block.data(), samples, sizeof samples);
    else
        m_block.fill('\0');
    m_rendered += blockFrames;
}

/// Afterwards the block holds `frame`.
bool MidiStream::renderUpTo(int64_t frame)
{
    if (frame < m_rendered - m_block.size() / frameBytes && !restart())
        return false;
    while (m_rendered <= frame && !m_cancelled)
        renderBlock();
    return !m_cancelled;
}

int64_t MidiStream::read(char *buffer, uint64_t size)
{
    const int64_t wanted = int64_t(std::min<uint64_t>(size, uint64_t(std::max<int64_t>(0, this->size() - m_offset))));
    if (wanted == 0)
        return m_cancelled ? -1 : 0;
    QByteArray source = m_header;
    int64_t begin = m_offset; // where in the source the offset lies
    if (m_offset >= m_header.size()) {
        const int64_t sound = m_offset - m_header.size();
        if (!renderUpTo(sound / frameBytes))
            return -1;
        source = m_block;
        begin = sound - m_rendered * frameBytes + m_block.size();
    }
    const int64_t given = std::min<int64_t>(wanted, source.size() - begin);
    std::memcpy(buffer, source.constData() + begin, std::size_t(given));
    m_offset += given;
    return given;
}

bool MidiStream::seek(int64_t offset)
{
    if (offset < 0 || offset > size())
        return false;
    m_offset = offset;
    return true;
}

int64_t MidiStream::size() const
{
    return m_header.size() + m_frames * frameBytes;
}
