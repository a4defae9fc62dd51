#pragma once

#include "engine/codecs/bytes.h"
#include "engine/picture.h"
#include "engine/result.h"

#include <QList>

/// What the chunks of an IFF picture say. The spans point into the file's bytes.
struct IffPicture
{
    enum class Layout {
        Rows, ///< ILBM: a row of each plane, then the next row
        Chunky, ///< PBM: one byte a pixel
        Planes ///< ACBM: a whole plane, then the next one
    };
    enum class Colors { Palette, HalfBright, HoldAndModify, True };
    enum Compression { Plain = 0, RunLengths = 1, Columns = 2 };

    Layout layout = Layout::Rows;
    Colors colors = Colors::Palette;
    QSize size;
    int planes = 0; ///< 1 to 8, 24 or 32; the mask not counted
    bool hasMask = false; ///< one more plane, 1 = opaque
    int transparentIndex = -1; ///< -1: none
    int compression = Plain;
    QList<QRgb> palette; ///< complete: as many entries as the planes can tell apart colours
    Bytes pixels; ///< BODY or ABIT
    bool isCut = false; ///< the file ends inside the pixels
    Bytes sham; ///< SHAM without its version word, or CTBL: a palette of 16 for each row or group of rows
    Bytes pchg; ///< changes of the palette from row to row
    QSize dotsPerInch; ///< 0 where the file does not say

    /// Bytes of one row of one plane, or of one row of a PBM.
    size_t rowBytes() const
    {
        const size_t width = size_t(size.width());
        return layout == Layout::Chunky ? (width + 1) / 2 * 2 : (width + 15) / 16 * 2;
    }
    int storedPlanes() const { return layout == Layout::Chunky ? 1 : planes + (hasMask ? 1 : 0); }
    bool hasRowPalettes() const { return !sham.empty() || !pchg.empty(); }
};

/// Walks the chunks up to the end of the file. Fails for what is no picture, for shapes that no program knows and for
/// sizes beyond the limits.
Result<IffPicture> openIff(const QByteArray &file);

/// The metadata chunks alone; ICC profile apart. Sizes are bounded by limits::maximumMetadataBytes.
struct IffMetadata
{
    Metadata metadata;
    QByteArray iccProfile;
};
IffMetadata readIffMetadataChunks(const QByteArray &file);
