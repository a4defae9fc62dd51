#include "actions/conversionahead.h"
#include "actions/conversionengine.h"
#include "engine/polyimage.h"
#include "platform/files.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>

// The order of a run. Every yield may let anything in: what is read from the client is read when it is needed, and an
// entry that has gone is passed over.

namespace {

using namespace std::chrono_literals;

/// The engine that does each step when it is due.
class OneByOne : public ConversionEngine
{
public:
    OneByOne(ConversionClient &client, PolyImage &image, Gvbox &gvbox)
        : m_client(client)
        , m_image(image)
        , m_gvbox(gvbox)
    {
    }

    QString load(const QString &path, ConversionLoad how, int sizeIndex) override
    {
        if (how != ConversionLoad::Picture)
            return m_image.PolyLoad(path, sizeIndex) ? QString() : m_image.PolyLastError();
        return m_gvbox.load(path) ? QString() : QCoreApplication::translate("Engine", "cannot be read");
    }
    QString operate(const QVector<ConversionStep> &steps) override
    {
        QString failure;
        for (const ConversionStep &step : steps) {
            m_client.showOperation(operationTitle(step.operation));
            operateNoting(step, m_image, failure);
            m_client.showOperation({});
        }
        return failure;
    }
    QString prepare(const SavePlan &plan) override { return preparePicture(plan, m_image); }
    void write(const ConversionOutcome &outcome, const SavePlan &plan) override
    {
        ConversionOutcome told = outcome;
        if (!m_image.PolySave(outcome.target, plan.typeCode, plan.diffuse)) {
            told.what = ConversionOutcome::NotWritten;
            told.reason = m_image.PolyLastError();
        }
        m_client.finished(told);
    }
    void leave(const ConversionOutcome &outcome) override { m_client.finished(outcome); }

private:
    ConversionClient &m_client;
    PolyImage &m_image;
    Gvbox &m_gvbox;
};

class Run
{
public:
    Run(ConversionClient &client, PolyImage &image, Gvbox &gvbox, ConversionEngine &engine)
        : m_client(client)
        , m_image(image)
        , m_gvbox(gvbox)
        , m_engine(engine)
    {
    }

    void carryOut();

private:
    bool isWanted(int type) const { return m_client.options().types.test(std::size_t(type)); }
    bool isLast(int type) const;
    bool yield();
    bool passList(int type);
    void waitForTurn();
    bool convert(int type, int index);
    bool giveUp(ConversionOutcome &outcome, const QString &reason);
    bool load(ConversionOutcome &outcome, ConversionLoad how);
    SavePlan planFor(int type) const;
    void makeMissing(const QString &folder);
    void writeOrLeave(ConversionOutcome &outcome, int type);

    ConversionClient &m_client;
    PolyImage &m_image;
    Gvbox &m_gvbox;
    ConversionEngine &m_engine;
    int m_types = 0;
    qint64 m_done = 0; ///< entries passed in all formats so far
    bool m_diffuse = false; ///< as the entry before has left it
};

bool Run::isLast(int type) const
{
    const auto types = m_client.options().types;
    return (types >> (std::size_t(type) + 1)).none();
}

/// False when the run has to end here.
bool Run::yield()
{
    m_client.letEventsIn({});
    return m_client.goesOn();
}

void Run::carryOut()
{
    m_types = int(m_client.options().types.count());
    m_diffuse = !m_client.options().carryOver && m_client.options().diffuseTwoColor;
    for (int type = 0; type < conversionTypeCount; ++type) {
        if (!isWanted(type))
            continue;
        if (!passList(type))
            break;
        const bool cancelled = m_client.cancelled();
        const bool last = cancelled || isLast(type);
        if (last)
            m_engine.stop();
        if (!cancelled || !m_engine.isOver())
            m_client.letEventsIn([&] { return !last || m_engine.isOver(); });
        if (cancelled)
            m_client.clearCancel();
        if (cancelled || !m_client.goesOn())
            break;
    }
    m_engine.stop();
}

void Run::waitForTurn()
{
    std::optional<ConversionOperation> shown;
    m_client.letEventsIn([&] {
        if (m_client.cancelled() || !m_client.goesOn())
            return true;
        const auto now = m_engine.operationUnderWay();
        if (now != shown)
            m_client.showOperation(now ? operationTitle(*now) : QString());
        shown = now;
        return m_engine.isReady();
    });
    if (shown && m_client.goesOn())
        m_client.showOperation({});
}

/// One pass over the list. False when the run has to end.
bool Run::passList(int type)
{
    const int last = m_client.entryCount() - 1;
    for (int index = 0; index <= last; ++index) {
        m_engine.reach({type, index}, m_diffuse);
        ++m_done;
        waitForTurn();
        if (!m_client.goesOn())
            return false;
        m_client.showPercent(conversionPercent(m_done, m_client.entryCount(), m_types));
        if (m_client.cancelled())
            break;
        if (m_client.options().selectedOnly && !m_client.isSelected(index))
            continue;
        if (!convert(type, index))
            return false;
    }
    return true;
}

bool Run::convert(int type, int index)
{
    ConversionOutcome outcome;
    outcome.entry = m_client.entry(index);
    const ConversionLoad how = conversionLoad(outcome.entry);
    if (outcome.entry.isEmpty() || how == ConversionLoad::None)
        return true;
    if (!load(outcome, how))
        return false;
    if (!outcome.loaded && !m_client.options().carryOver)
        return giveUp(outcome, outcome.reason);
    QString failure = m_engine.operate(conversionSteps(m_client.options(), m_diffuse));
    const ConversionTarget target = conversionTarget(outcome.entry, type, m_client.options());
    outcome.target = target.path;
    makeMissing(target.convertFolder);
    // Behind the operations: the reduction among them went by what the entry before has left here.
    m_diffuse = m_client.options().diffuseTwoColor;
    const QString unprepared = m_engine.prepare(planFor(type));
    if (failure.isEmpty())
        failure = unprepared;
    if (!failure.isEmpty() && !m_client.options().carryOver)
        return giveUp(outcome, failure);
    makeMissing(target.typeFolder);
    m_client.showFiles(outcome.entry, outcome.target);
    if (!yield())
        return false;
    writeOrLeave(outcome, type);
    return m_client.goesOn();
}

/// The entry ends here. What is carried over from it is no more than the controls hold.
bool Run::giveUp(ConversionOutcome &outcome, const QString &reason)
{
    outcome.what = ConversionOutcome::NotWritten;
    outcome.reason = reason;
    m_engine.leave(outcome);
    return m_client.goesOn();
}

bool Run::load(ConversionOutcome &outcome, ConversionLoad how)
{
    const int sizeIndex = conversionSizeIndex(how, m_client.options());
    if (how != ConversionLoad::PhotoCD || sizeIndex >= 0) {
        outcome.reason = m_engine.load(outcome.entry, how, sizeIndex);
        outcome.loaded = outcome.reason.isEmpty();
    }
    const auto &read = how == ConversionLoad::Picture ? m_gvbox.picture() : m_image.held();
    outcome.damaged = outcome.loaded && read && read->current().partial;
    // What the one control holds by now goes to the other, be it of this file or of one before.
    if (how == ConversionLoad::Picture) {
        if (!yield())
            return false;
        if (m_gvbox.picture())
            m_image.setPolyPicture(m_gvbox.picture());
        return yield();
    }
    if (how == ConversionLoad::Poly) {
        if (m_image.held())
            m_gvbox.setPicture(m_image.held());
        return yield();
    }
    return true;
}

SavePlan Run::planFor(int type) const
{
    SaveOptions options = m_client.options().save;
    options.diffuseTwoColor = m_diffuse;
    return batchSavePlan(type, options).value_or(SavePlan());
}

void Run::makeMissing(const QString &folder)
{
    if (folder.isEmpty() || FileExists(folder))
        return;
    m_engine.settleAll();
    if (!FileExists(folder))
        ignore(makeFolder(folder));
}

void Run::writeOrLeave(ConversionOutcome &outcome, int type)
{
    const SavePlan plan = planFor(type);
    const auto setOption = [&](auto wanted) {
        for (const SaveStep &step : plan.steps) {
            if (std::holds_alternative<decltype(wanted)>(step))
                ignore(takeStep(step, m_image));
        }
    };
    setOption(savestep::JpegOptions());
    m_engine.settle(outcome.target);
    const bool mayOverwrite = OverWriteInConvert(
        outcome.target, m_client.options(), [this](const MessageBox &box) { return m_client.ask(box); });
    if (!m_client.goesOn())
        return;
    if (!mayOverwrite && FileExists(outcome.target)) {
        outcome.what = ConversionOutcome::LeftAlone;
        m_engine.leave(outcome);
        return;
    }
    setOption(savestep::Jpeg2000Option());
    m_engine.write(outcome, plan);
}

}

bool isSaveOption(const SaveStep &step)
{
    return std::holds_alternative<savestep::JpegOptions>(step)
        || std::holds_alternative<savestep::Jpeg2000Option>(step);
}

QString preparePicture(const SavePlan &plan, PolyImage &image)
{
    QString failure;
    for (const SaveStep &step : plan.steps) {
        if (!isSaveOption(step) && !takeStep(step, image) && failure.isEmpty())
            failure = image.PolyLastError();
    }
    return failure;
}

void operateNoting(const ConversionStep &step, PolyImage &image, QString &failure)
{
    if (!operate(step, image) && failure.isEmpty())
        failure = image.PolyLastError();
}

void runConversion(ConversionClient &client, PolyImage &image, Gvbox &gvbox, LookAhead lookAhead)
{
    const auto run = [&](ConversionEngine &engine) { Run(client, image, gvbox, engine).carryOut(); };
    if (lookAhead == LookAhead::AllCores) {
        ConversionAhead engine(client, image, gvbox);
        if (engine.works())
            return run(engine);
    }
    OneByOne engine(client, image, gvbox);
    run(engine);
}

// --- a client without windows

struct ConversionClient::Waiting
{
    std::mutex mutex;
    std::condition_variable changed;
};

ConversionClient::ConversionClient()
    : m_waiting(std::make_unique<Waiting>())
{
}

ConversionClient::~ConversionClient() = default;

void ConversionClient::letEventsIn(const std::function<bool()> &ready)
{
    if (!ready)
        return;
    // A cancel by a signal comes without a wake().
    constexpr auto look = 100ms;
    std::unique_lock lock(m_waiting->mutex);
    while (!ready())
        m_waiting->changed.wait_for(lock, look);
}

void ConversionClient::wake()
{
    const std::lock_guard lock(m_waiting->mutex);
    m_waiting->changed.notify_all();
}
