#include "ui/yield.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QTimer>

namespace {

std::function<void(int)> hook;
int yieldNumber = 0;
int depth = 0;

struct YieldScope
{
    YieldScope()
    {
        ++depth;
        if (hook)
            hook(++yieldNumber);
    }
    ~YieldScope() { --depth; }
};

}

void Yield()
{
    const YieldScope scope;
    QCoreApplication::processEvents();
}

void YieldFor(int milliseconds)
{
    const YieldScope scope;
    QTimer end;
    end.start(milliseconds);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void YieldUntil(const std::function<bool()> &ready)
{
    const YieldScope scope;
    QCoreApplication::processEvents();
    while (!ready())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void wakeYield()
{
    if (QAbstractEventDispatcher *const dispatcher = QCoreApplication::eventDispatcher())
        dispatcher->wakeUp();
}

int yieldDepth()
{
    return depth;
}

void setYieldHook(std::function<void(int)> other)
{
    hook = std::move(other);
    yieldNumber = 0;
}
