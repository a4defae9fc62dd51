#pragma once

#include "engine/loadedpicture.h"

#include <QStringList>

#include <functional>

/// Decoded pictures by file, kept within limits::cacheBudget(), and a few threads that decode ahead.
///
/// An entry belongs to a file as it was: device, inode, size and time of change take part in the key, so a changed file
/// is decoded anew. What a caller sees is as if each picture had been decoded at the moment of the call.
class PictureCache
{
public:
    static PictureCache &instance();

    /// The picture of `path`, from the cache, from a decode under way, or decoded now.
    Result<std::shared_ptr<const LoadedPicture>> load(const QString &path, int sizeIndex, QSize target);

    /// What is done with a picture that was decoded ahead, on the thread that did it.
    using Prepare = std::function<void(const LoadedPicture &picture)>;
    /// Decodes these in the background, first ones first; whatever waited from an earlier call is dropped. Of pictures
    /// so large that the cache holds only two, the first alone.
    void prefetch(const QStringList &paths, int sizeIndex, QSize target, const Prepare &prepare = {});

    /// Starts decoding one file at once on a thread of its own, before anything else of the program stands.
    void startEarly(const QString &path, int sizeIndex, QSize target);

    /// Waits for nothing, drops what waits, forgets all. Called at the end of the program.
    void shutDown();

    /// Bytes held now; never above limits::cacheBudget() plus the newest entry.
    qint64 bytesHeld() const;

private:
    PictureCache();
    ~PictureCache();
    struct Private;
    std::shared_ptr<Private> d;
};
