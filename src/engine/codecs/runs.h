#pragma once

#include "engine/codecs/bytes.h"

#include <array>

/// Run-length codes whose runs and literals are counted in units of whole pixels. PackBits, which counts bytes, has a
/// file of its own.
enum class RunCode {
    /// c of 0..127: the next unit c + 1 times; c of 128..255: 256 - c units follow as they are.
    Symbian,
    /// A little-endian word a time: the high four bits are the count - 1, the rest is the pixel of 12 bits.
    Symbian12,
    /// c of 128..255: the next unit c - 127 times; c of 0..127: c + 1 units follow as they are.
    Targa,
    /// 80 00: one byte 80; 80 n v: v n + 1 times; other bytes stand for themselves.
    Sun,
};

/// Unpacks such data piece by piece, as a picture's rows are asked for; a run may go on from one piece into the next.
class RunReader
{
public:
    /// `unit` is the size of a pixel in bytes, 1 to 4.
    RunReader(Bytes packed, RunCode code, size_t unit)
        : m_packed(packed)
        , m_code(code)
        , m_unit(unit)
    {
    }

    /// Fills `out`, whose size is a multiple of the unit. The answer is how many bytes could be filled; the others stay
    /// as they were.
    size_t read(std::span<uchar> out);

private:
    bool readControl();
    void repeat(std::span<uchar> out) const;

    Bytes m_packed;
    RunCode m_code;
    size_t m_unit;
    size_t m_at = 0;
    size_t m_pending = 0; ///< units still to come of the current run or literal
    bool m_isRun = false;
    std::array<uchar, 4> m_value{}; ///< of a run
};

/// Appends `units`, whose size is a multiple of `unit`, packed on their own by the codes Symbian or Targa.
void packRuns(Bytes units, RunCode code, size_t unit, QByteArray &out);
