#pragma once

#include "engine/codecs/iffchunks.h"
#include "engine/codecs/packbits.h"

#include <vector>

/// Gives the rows of a picture's planes (or bytes) from the top, whatever way they are packed.
class IffRows
{
public:
    /// Refers to `picture`, which must outlive it.
    explicit IffRows(const IffPicture &picture);
    /// Moves on to the next row; what the file lacks of it is 0. False when nothing of it is there.
    bool next();
    /// One plane of the row, first pixel in the high bit; or, as plane 0, the bytes of a PBM.
    const uchar *plane(int number) const { return m_row.data() + size_t(number) * m_picture.rowBytes(); }
    /// Whether anything was missing so far.
    bool isDamaged() const { return m_damaged; }

private:
    bool nextOfWholePlanes();
    bool nextOfStream();

    const IffPicture &m_picture;
    std::vector<uchar> m_row;
    std::vector<uchar> m_columns; ///< whole planes, unpacked
    size_t m_at = 0;
    int m_number = 0;
    PackBitsSpill m_spill; ///< some programs let a run go on into the next row
    bool m_damaged = false;
};
