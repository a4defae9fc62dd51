#pragma once

#include "engine/picture.h"
#include "engine/result.h"

#include <QByteArray>
#include <QString>

/// The bytes of a picture file and the extension that its name had: all that a decoder gets to see.
///
/// This and DecodeHint are the whole input of decode(), and Picture or a reason its whole output, so that the work can
/// be done in another process.
struct EncodedFile
{
    QByteArray bytes;
    QString extension; ///< lower case, without the dot
    /// Of the file that goes with it, for the few formats that lie in two: the palette of a CUT. Empty for all others.
    QByteArray companion = {};
};

struct DecodeHint
{
    /// The decoder may return a reduced picture as long as it is at least this large in both directions (after the
    /// aspect is kept). Empty: the full size.
    QSize target;
    /// Photo CD: 0 = 192x128 ... 4 = 3072x2048. -1 takes the decoder's own choice (the base size, 2). Others ignore it.
    int sizeIndex = -1;
    /// 0-based picture of a multi-picture file.
    int page = 0;
};

/// Decodes a picture. The decoder is chosen by content first, by extension second; at most two are tried.
Result<Picture> decode(const EncodedFile &file, const DecodeHint &hint = {});

/// Size, depth and page count from the header, the same numbers as decode() gives. `file.bytes` must be the whole file.
Result<ImageInfo> probe(const EncodedFile &file, int sizeIndex = -1);

/// Reads a regular file into memory: never a folder, FIFO or device, never more than limits::maximumFileBytes, never by
/// a mapping (another program may cut the file meanwhile). `path` follows platform/filepath.h. A CUT's companion is the
/// regular file of the same name that ends in .pal, .PAL or .Pal.
Result<EncodedFile> readEncodedFile(const QString &path);

/// readEncodedFile and decode in one.
Result<Picture> decodeFile(const QString &path, const DecodeHint &hint = {});

/// As probe(), reading only as much of the file as the header needs.
Result<ImageInfo> probeFile(const QString &path, int sizeIndex = -1);
