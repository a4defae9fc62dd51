#include "ui/yield.h"

#include <QCoreApplication>

namespace {
std::function<void(int)> hook;
int yieldNumber = 0;
}

void Yield()
{
    if (hook)
        hook(++yieldNumber);
    QCoreApplication::processEvents();
}

void setYieldHook(std::function<void(int)> other)
{
    hook = std::move(other);
    yieldNumber = 0;
}
