#pragma once

#include "thumbnails/thumbnailwork.h"

#include <functional>
#include <memory>

/// One thumbnail on its way from the file to what the cache stores.
struct ThumbnailJob
{
    // Set by who makes the job.
    ThumbnailWork work;
    bool readsFile = true; ///< false: `picture` is taken instead, and without one there is only the ground
    std::shared_ptr<const LoadedPicture> picture = {};
    bool keepsSource = true; ///< false: the thumbnail is all that is wanted

    // Written by the crew, and steady once isDone() says so.
    std::optional<FileStamp> stamp = {}; ///< of the file, before it was read
    bool restless = false; ///< the file had just been changed: the next change may not show in its stamp
    std::shared_ptr<const LoadedPicture> source = {}; ///< what the thumbnail was made of, small
    QSize sourceSize = {}; ///< pixels of the file's picture
    QString failure = {}; ///< why there is no thumbnail
    std::shared_ptr<const LoadedPicture> thumbnail = {};
    QByteArray blob = {};

    // The crew's own.
    bool done = false;
    bool abandoned = false;
};

/// Threads that make thumbnails, one for each decoder process, but for the one that the windows use. Jobs are begun in
/// the order in which they come. The end of a crew waits for nothing: what is under way ends by itself.
class ThumbnailCrew
{
public:
    using Job = std::shared_ptr<ThumbnailJob>;

    /// `wake` is called from any thread when a job is done, and never after the end of the crew. Sources up to
    /// `keptSources` bytes are kept for the next thumbnails of the same files.
    explicit ThumbnailCrew(std::function<void()> wake, qint64 keptSources = 0);
    ~ThumbnailCrew();
    Q_DISABLE_COPY_MOVE(ThumbnailCrew)

    /// How many jobs are worth having ahead.
    static int depth();

    void add(const Job &job);
    /// Before all others.
    void addFirst(const Job &job);
    /// Nobody waits for it any more.
    void abandon(const Job &job);
    bool isDone(const Job &job) const;

private:
    void enter(const Job &job, bool first);
    struct Private;
    std::shared_ptr<Private> d; ///< shared with the threads
};
