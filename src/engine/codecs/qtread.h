#pragma once

#include "engine/picture.h"
#include "engine/result.h"

/// Which picture of a file to take, as QImageReader counts.
struct QtPicture
{
    int skippedFrames = 0; ///< frames to read and drop first, for readers that can only go on
    int number = -1; ///< picture to jump to; -1 stays at the first
};

/// Runs one of Qt's readers over bytes in memory and brings the outcome into a form that a Picture may hold.
Result<QImage> readByQt(const QByteArray &bytes, const char *format, QtPicture wanted = {});

/// The size as Qt's reader sees it; empty when it cannot tell.
QSize sizeByQt(const QByteArray &bytes, const char *format);
