#pragma once

#include "engine/codecs/iffchunks.h"

#include <span>

/// The palettes of a picture whose colours change down the rows.
///
/// SHAM and CTBL hold whole palettes of 16 colours, spread evenly over the rows; PCHG (published by its author as
/// "PCHG specification") tells single changes, which stay in force for the rows below.
class IffRowPalettes
{
public:
    explicit IffRowPalettes(const IffPicture &picture);
    /// Brings `colors`, the palette of the row before, to that of row `row`. Rows are asked for in order from 0.
    void advanceTo(int row, std::span<QRgb> colors);

private:
    void readChanges(Bytes chunk);
    void replaceSixteen(int row, std::span<QRgb> colors) const;
    void applyRow(std::span<QRgb> colors);
    void applySmallChanges(std::span<QRgb> colors);
    void applyBigChanges(std::span<QRgb> colors);

    Bytes m_palettes; ///< of SHAM or CTBL
    int m_height = 0;
    bool m_halfBright = false;
    QByteArray m_unpacked; ///< of a PCHG with Huffman codes
    Bytes m_changes; ///< marks of the rows, then the changes of each marked row
    bool m_bigChanges = false;
    int m_firstRow = 0; ///< above the picture when negative
    int m_rowCount = 0;
    int m_nextRow = 0; ///< counted from m_firstRow
    size_t m_at = 0;
};
