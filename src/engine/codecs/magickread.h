#pragma once

#include "engine/picture.h"
#include "engine/result.h"

/// What GraphicsMagick made of some bytes.
struct MagickPicture
{
    QImage pixels; ///< palettes as Indexed8, two colours as Mono
    bool damaged = false;
};

/// Reads the picture `page` of bytes in memory, which must be of the named format: the library is never left to guess,
/// is never given a path, and is not allowed to open files or start programs. `deep` keeps 16 bits a channel.
Result<MagickPicture> readByMagick(const QByteArray &bytes, const char *magick, int page, bool deep);
