#pragma once

#include "engine/codecs/bytes.h"

/// PackBits, the run-length code of MacPaint, IFF and PSD: n of 0..127: n + 1 bytes follow as they are; 129..255: the
/// next byte 257 - n times; 128: nothing.

/// Unpacks from `packed` at `at`, which moves on, until `out` is full; false when the input ends before. What is
/// missing stays as it was. With `spill` not null a run that is longer than `out` leaves its rest there for the next
/// call, as some programs let a run go on into the next row; otherwise the rest is dropped.
struct PackBitsSpill
{
    size_t count = 0; ///< bytes still to come
    bool isRun = false;
    uchar value = 0; ///< of a run
};
bool unpackBits(Bytes packed, size_t &at, std::span<uchar> out, PackBitsSpill *spill = nullptr);

/// Appends `row` packed on its own.
void packBits(Bytes row, QByteArray &out);
