#pragma once

#include "engine/codecs/bytes.h"
#include "engine/result.h"

#include <QColor>
#include <QList>
#include <QRect>

#include <vector>

/// One bitmap that a QuickDraw picture draws. Layout: "Imaging With QuickDraw", appendix A.
struct PictBits
{
    enum Packing { Raw, PackedBytes, PackedWords, PackedPlanes, PixelsOfThree, QuickTime };
    QSize size;
    int depth = 1; ///< 1, 2, 4, 8: indices; 16: five bits a colour; 24 and 32
    int packing = Raw;
    int components = 3; ///< of packed planes: with alpha 4
    size_t rowBytes = 0;
    QList<QRgb> palette;
    QRect source; ///< the part of the bitmap that is drawn
    QRect target; ///< on the picture
    QByteArray codec; ///< of QuickTime: "jpeg", "raw "
    Bytes data; ///< from the first row on
};

/// A QuickDraw picture taken apart: the bitmaps in it, in drawing order. What it draws with lines and text is left out.
struct PictFile
{
    QRect frame;
    std::vector<PictBits> bitmaps;
    bool isCut = false; ///< ended before its end mark, or an operation makes no sense
};

/// Whether the bytes begin a picture, with the 512 bytes that a file has in front or as the clipboard holds it.
bool isPict(Bytes head);

Result<PictFile> readPictFile(Bytes bytes);
