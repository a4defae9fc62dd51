#pragma once

#include "engine/codecs/bytes.h"
#include "engine/result.h"

#include <QImage>
#include <QSize>

/// Reader of the frames of a GIF: the published GIF89a format with its LZW.

struct GifPicture
{
    QImage pixels;
    bool complete = true; ///< every pixel of the frame asked for was in the file
};

/// Frame `page` on its canvas, with all that the frames before it leave there. The first frame keeps its palette
/// (Format_Indexed8) when it covers the canvas; everything else comes as Format_ARGB32, or Format_RGB32 where nothing
/// shows through. `canvas` has been judged.
Result<GifPicture> readGifFrame(const QByteArray &file, QSize canvas, int page);
