#pragma once

#include "engine/imagemaskcontrol.h"
#include "platform/files.h"

/// Which control decodes a file for a thumbnail: one keeps what it had when the next file cannot be read.
enum class ThumbnailDecoder { None, Gvbox, PolyImage };
ThumbnailDecoder thumbnailDecoder(QAnyStringView kind);

/// All that decides what a thumbnail comes to, besides what the file holds.
struct ThumbnailWork
{
    static constexpr int noBlob = -1;

    QString path;
    ThumbnailLook look;
    int compressionLevel = noBlob; ///< of the cache; noBlob: it is not to be stored
    bool operator==(const ThumbnailWork &) const = default;
};

/// The picture of a file as thumbnails of every size are made of it: decoded no larger than that takes, and safe to
/// keep many of. It never gives larger pixels. Takes as long as decoding takes.
Result<std::shared_ptr<const LoadedPicture>> loadThumbnailSource(const QString &path);

/// The same of a picture that is decoded already, at least in part.
std::shared_ptr<const LoadedPicture> thumbnailSource(const LoadedPicture &picture);

/// Bytes of memory that loadThumbnailSource() may take for a moment. Reads the head of the file.
qint64 estimatedThumbnailMemory(const QString &path);

/// What the cache stores of a thumbnail at a compression level, as it lies in the database; empty when there is nothing
/// to store, or no such level.
QByteArray encodedThumbnail(const std::shared_ptr<const LoadedPicture> &thumbnail, int compressionLevel);

/// The day on which a file was last changed; invalid when it is not there.
QDate thumbnailDate(const QString &path);
