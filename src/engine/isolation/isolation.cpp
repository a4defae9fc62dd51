#include "engine/isolation.h"

#include "engine/isolation/pool.h"

namespace isolation {

namespace {

/// Never destroyed: a thread may still be decoding while the program's statics go.
struct State
{
    std::mutex mutex;
    std::shared_ptr<Pool> pool;
    bool stopped = false;
};

State &state()
{
    static State *const one = new State;
    return *one;
}

}

std::shared_ptr<Pool> currentPool(bool *stopped)
{
    const std::lock_guard lock(state().mutex);
    *stopped = state().stopped;
    return state().pool;
}

}

void startDecoderProcesses(const DecoderOptions &options)
{
    if (qgetenv("LUMORA_DECODER") == "inprocess")
        return;
    isolation::State &state = isolation::state();
    const std::lock_guard lock(state.mutex);
    if (state.pool)
        return;
    state.pool = std::make_shared<isolation::Pool>(options);
    state.stopped = false;
}

void stopDecoderProcesses()
{
    std::shared_ptr<isolation::Pool> pool;
    {
        isolation::State &state = isolation::state();
        const std::lock_guard lock(state.mutex);
        pool = std::move(state.pool);
        state.pool.reset();
        state.stopped = state.stopped || pool;
    }
    if (pool)
        pool->stop();
}

bool decoderProcessesRun()
{
    bool stopped = false;
    const std::shared_ptr<isolation::Pool> pool = isolation::currentPool(&stopped);
    return pool && pool->canStart();
}

QString decoderProtection()
{
    bool stopped = false;
    const std::shared_ptr<isolation::Pool> pool = isolation::currentPool(&stopped);
    if (pool)
        return pool->protection();
    return QStringLiteral("Files are decoded inside the program.");
}
