#pragma once

#include "thumbnails/thumbnailcrew.h"

#include <deque>

/// Thumbnails that are made before somebody asks for them. What is made ahead touches nothing and is only a guess: that
/// it will be asked for, with these settings, and of the file as it is now. A guess that does not hold is thrown away.
class ThumbnailAhead
{
public:
    using Job = ThumbnailCrew::Job;

    /// As of a ThumbnailCrew.
    explicit ThumbnailAhead(std::function<void()> wake, qint64 keptSources = 0);

    /// Adds a guess behind the others. `order` tells them apart and grows.
    void expect(qint64 order, const ThumbnailWork &work, bool keepsSource);
    /// Throws away those that come before `order`.
    void dropBefore(qint64 order);
    void clear();
    qsizetype size() const { return qsizetype(m_guesses.size()); }
    /// Whether nothing of that order is still under way.
    bool isReady(qint64 order) const;

    /// The guess of that work, ready or not; null when there is none. It is the caller's from now on.
    Job take(const ThumbnailWork &work);
    /// Starts what was not guessed, before everything else.
    Job start(const ThumbnailWork &work, bool keepsSource);
    /// The same of a picture in place of the file's; null for the ground alone.
    Job startFrom(const std::shared_ptr<const LoadedPicture> &picture, const ThumbnailWork &work);
    bool isDone(const Job &job) const { return m_crew.isDone(job); }
    /// What was taken or started is not wanted any more.
    void abandon(const Job &job) { m_crew.abandon(job); }
    /// Of one that is done: whether its file is the one that was read.
    static bool isStillTrue(const ThumbnailJob &job);

private:
    struct Guess
    {
        qint64 order;
        Job job;
    };
    ThumbnailCrew m_crew;
    std::deque<Guess> m_guesses;
};
