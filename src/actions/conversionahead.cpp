#include "actions/conversionahead.h"

#include "engine/polyimage.h"

namespace {

/// Entries looked at in one go; those that are passed over cost hardly anything.
constexpr int mostLooks = 500;

}

ConversionAhead::ConversionAhead(ConversionClient &client, PolyImage &image, Gvbox &gvbox)
    : m_client(client)
    , m_image(image)
    , m_gvbox(gvbox)
    , m_crew([&client] { client.wake(); })
{
}

ConversionAhead::~ConversionAhead()
{
    stop();
    m_crew.settleAll();
    tellFinished();
}

void ConversionAhead::stop()
{
    for (const Job &job : std::exchange(m_ahead, {}))
        m_crew.abandon(job);
    endEntry();
    m_crew.stop();
}

void ConversionAhead::tellFinished()
{
    const QVector<ConversionOutcome> finished = m_crew.takeFinished();
    for (const ConversionOutcome &outcome : finished)
        m_client.finished(outcome);
}

// --- guesses

void ConversionAhead::reach(ConversionPlace place, bool diffuse)
{
    endEntry();
    tellFinished();
    m_here = place;
    m_diffuse = diffuse;
    m_crew.reach(place);
    while (!m_ahead.empty() && m_ahead.front()->place < place)
        forget(m_ahead.front());
    if (m_cursor < place) {
        m_cursor = place;
        m_diffuseAhead = diffuse;
    }
    lookAhead();
}

void ConversionAhead::lookAhead()
{
    const ConversionOptions options = m_client.options();
    const int count = m_client.entryCount();
    for (int looks = 0; looks < mostLooks && m_ahead.size() < std::size_t(m_crew.depth()); ++looks) {
        if (!advanceCursor(count, options))
            return;
        const ConversionPlace place = m_cursor;
        ++m_cursor.index;
        if (options.selectedOnly && !m_client.isSelected(place.index))
            continue;
        const Job job = guess(place, options, m_diffuseAhead);
        if (!job)
            continue;
        m_ahead.push_back(job);
        m_crew.add(job);
        m_diffuseAhead = options.diffuseTwoColor;
    }
}

/// To an entry in the pass of a type that is wanted; false behind the last one.
bool ConversionAhead::advanceCursor(int count, const ConversionOptions &options)
{
    if (count <= 0)
        return false;
    while (m_cursor.index >= count || !options.types.test(std::size_t(m_cursor.type))) {
        if (m_cursor.type + 1 >= conversionTypeCount)
            return false;
        m_cursor = {m_cursor.type + 1, 0};
    }
    return true;
}

/// What the run will ask for at this place as things stand; none for an entry that is not loaded there.
ConversionAhead::Job ConversionAhead::guess(ConversionPlace place, const ConversionOptions &options, bool diffuse) const
{
    const QString path = m_client.entry(place.index);
    const ConversionLoad how = path.isEmpty() ? ConversionLoad::None : conversionLoad(path);
    if (how == ConversionLoad::None || (how == ConversionLoad::PhotoCD && options.photoCDSize < 0))
        return {};
    const Job job = std::make_shared<ConversionJob>();
    job->place = place;
    job->work.path = path;
    job->work.load = how;
    job->work.sizeIndex = conversionSizeIndex(how, options);
    complete(*job, options, diffuse);
    return job;
}

void ConversionAhead::complete(ConversionJob &job, const ConversionOptions &options, bool diffuse)
{
    SaveOptions save = options.save;
    save.diffuseTwoColor = options.diffuseTwoColor;
    job.work.steps = conversionSteps(options, diffuse);
    job.work.plan = batchSavePlan(job.place.type, save).value_or(SavePlan());
    // What will be left alone is loaded all the same: it is what an unreadable entry behind it goes on with.
    job.encodes = options.overwriteFiles || !FileExists(conversionTarget(job.work.path, job.place.type, options).path);
}

ConversionAhead::Job ConversionAhead::guessedHere() const
{
    return !m_ahead.empty() && m_ahead.front()->place == m_here ? m_ahead.front() : nullptr;
}

/// By value: the one that is handed in may be the one that goes.
void ConversionAhead::forget(const Job &job)
{
    const Job gone = job;
    std::erase(m_ahead, gone);
    m_crew.abandon(gone);
}

bool ConversionAhead::isReady()
{
    const Job job = guessedHere();
    return m_crew.hasRoom() && (!job || m_crew.stageOf(job) >= job->prepared());
}

std::optional<ConversionOperation> ConversionAhead::operationUnderWay()
{
    const Job job = guessedHere();
    if (!job)
        return {};
    const qsizetype step = m_crew.stageOf(job) - ConversionJob::loaded;
    return step >= 0 && step < job->work.steps.size() ? std::optional(job->work.steps[step].operation) : std::nullopt;
}

// --- the entry under way

/// The guess for this entry when its file is the one that was read.
ConversionAhead::Job ConversionAhead::takeGuess()
{
    const Job job = guessedHere();
    if (!job)
        return {};
    m_crew.waitFor(job, ConversionJob::loaded);
    if (job->restless || job->stamp != fileStamp(job->work.path)) {
        forget(job);
        return {};
    }
    m_ahead.pop_front();
    return job;
}

QString ConversionAhead::load(const QString &path, ConversionLoad how, int sizeIndex)
{
    m_crew.settle(path);
    Job job = takeGuess();
    if (job && (job->work.path != path || job->work.load != how || job->work.sizeIndex != sizeIndex)) {
        m_crew.abandon(job);
        job.reset();
    }
    if (!job) {
        job = std::make_shared<ConversionJob>();
        job->place = m_here;
        job->work.path = path;
        job->work.load = how;
        job->work.sizeIndex = sizeIndex;
        complete(*job, m_client.options(), m_diffuse);
        m_crew.addFirst(job);
        m_crew.waitFor(job, ConversionJob::loaded);
    }
    if (!job->source) {
        m_crew.abandon(job);
        return job->failure;
    }
    m_job = job;
    m_isOperated = m_isPrepared = false;
    if (how == ConversionLoad::Picture)
        m_gvbox.setPicture(job->source);
    else
        m_image.setPolyPicture(job->source);
    return {};
}

QString ConversionAhead::operate(const QVector<ConversionStep> &steps)
{
    QString failure;
    m_isOperated = m_job && m_job->work.steps == steps;
    for (qsizetype step = 0; step < steps.size(); ++step) {
        m_client.showOperation(operationTitle(steps[step].operation));
        if (m_isOperated)
            m_crew.waitFor(m_job, m_job->operated(step));
        else
            operateNoting(steps[step], m_image, failure);
        m_client.showOperation({});
    }
    return failure;
}

/// Of operations that were left to the job, their failure as well.
QString ConversionAhead::prepare(const SavePlan &plan)
{
    m_isPrepared = m_isOperated && m_job->work.plan == plan;
    if (m_isPrepared) {
        m_crew.waitFor(m_job, m_job->prepared());
        m_image.setPolyPicture(m_job->result);
        return m_job->stepFailure;
    }
    QString failure;
    // The operations were left to the job until here.
    if (m_isOperated) {
        for (const ConversionStep &step : m_job->work.steps)
            operateNoting(step, m_image, failure);
    }
    const QString unprepared = preparePicture(plan, m_image);
    return failure.isEmpty() ? unprepared : failure;
}

void ConversionAhead::write(const ConversionOutcome &outcome, const SavePlan &plan)
{
    if (!m_image.held()) {
        ConversionOutcome told = outcome;
        told.what = ConversionOutcome::NotWritten;
        leave(told);
        return;
    }
    Job job = m_job;
    if (!m_isPrepared || m_job->work.plan != plan || !m_job->encodes) {
        job = std::make_shared<ConversionJob>();
        job->place = m_here;
        job->work.plan = plan;
        job->picture = m_image.held();
        job->estimate = 2 * job->picture->cost();
        m_crew.write(job, outcome);
        m_crew.addFirst(job);
    } else {
        m_crew.write(job, outcome);
    }
    if (job == m_job) {
        m_crew.release(job);
        m_job.reset();
    }
    tellFinished();
}

void ConversionAhead::leave(const ConversionOutcome &outcome)
{
    m_crew.record(outcome);
    tellFinished();
}

void ConversionAhead::endEntry()
{
    if (m_job)
        m_crew.abandon(m_job);
    m_job.reset();
    m_isOperated = m_isPrepared = false;
}
