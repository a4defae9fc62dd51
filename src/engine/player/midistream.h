#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>

/// A MIDI file played by a software synthesizer, as the bytes of a WAV file: 44100 Hz, stereo, 16 bit. The sound comes
/// from the system's General MIDI sound font. Open, read and seek belong to one thread, cancel() to any.
class MidiStream
{
public:
    /// Null for a file that is no MIDI file ("MThd", or RIFF with the form RMID), is no regular file or above 8 MiB,
    /// and when there is no sound font. Music beyond one hour is cut.
    static std::unique_ptr<MidiStream> open(const QString &path);
    ~MidiStream();

    /// Up to `size` bytes; 0 at the end, -1 after cancel().
    int64_t read(char *buffer, uint64_t size);
    /// Going back plays from the start again without being heard.
    bool seek(int64_t offset);
    int64_t size() const;
    void cancel() { m_cancelled = true; }

private:
    struct Synthesizer;
    MidiStream(QByteArray music, int64_t frames);
    bool restart();
    bool renderUpTo(int64_t frame);
    void renderBlock();

    QByteArray m_music;
    QByteArray m_header;
    QByteArray m_block; ///< the rendered frames before m_rendered
    int64_t m_frames; ///< length of the whole in sample frames
    int64_t m_rendered = 0;
    int64_t m_offset = 0; ///< in bytes, header included
    std::atomic<bool> m_cancelled = false;
    std::unique_ptr<Synthesizer> m_synthesizer;
};

/// Whether the name says MIDI; what the file holds is another matter.
bool isMidiName(const QString &path);

/// The sound of an RMID file's data chunk, a Standard MIDI File as it is, empty for anything else.
QByteArray standardMidiData(const QByteArray &bytes);
