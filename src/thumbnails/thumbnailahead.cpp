#include "thumbnails/thumbnailahead.h"

#include <algorithm>

ThumbnailAhead::ThumbnailAhead(std::function<void()> wake, qint64 keptSources)
    : m_crew(std::move(wake), keptSources)
{
}

void ThumbnailAhead::expect(qint64 order, const ThumbnailWork &work, bool keepsSource)
{
    auto job = std::make_shared<ThumbnailJob>();
    job->work = work;
    job->keepsSource = keepsSource;
    m_guesses.push_back({order, job});
    m_crew.add(job);
}

void ThumbnailAhead::dropBefore(qint64 order)
{
    for (; !m_guesses.empty() && m_guesses.front().order < order; m_guesses.pop_front())
        m_crew.abandon(m_guesses.front().job);
}

void ThumbnailAhead::clear()
{
    for (const Guess &guess : m_guesses)
        m_crew.abandon(guess.job);
    m_guesses.clear();
}

bool ThumbnailAhead::isReady(qint64 order) const
{
    return std::none_of(m_guesses.begin(), m_guesses.end(),
        [&](const Guess &guess) { return guess.order == order && !m_crew.isDone(guess.job); });
}

ThumbnailAhead::Job ThumbnailAhead::take(const ThumbnailWork &work)
{
    const auto found =
        std::find_if(m_guesses.begin(), m_guesses.end(), [&](const Guess &guess) { return guess.job->work == work; });
    if (found == m_guesses.end())
        return {};
    Job job = found->job;
    m_guesses.erase(found);
    return job;
}

ThumbnailAhead::Job ThumbnailAhead::start(const ThumbnailWork &work, bool keepsSource)
{
    auto job = std::make_shared<ThumbnailJob>();
    job->work = work;
    job->keepsSource = keepsSource;
    m_crew.addFirst(job);
    return job;
}

ThumbnailAhead::Job ThumbnailAhead::startFrom(
    const std::shared_ptr<const LoadedPicture> &picture, const ThumbnailWork &work)
{
    auto job = std::make_shared<ThumbnailJob>();
    job->work = work;
    job->readsFile = false;
    job->picture = picture;
    m_crew.addFirst(job);
    return job;
}

bool ThumbnailAhead::isStillTrue(const ThumbnailJob &job)
{
    return !job.restless && job.stamp == fileStamp(job.work.path);
}
