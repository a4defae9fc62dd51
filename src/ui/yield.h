#pragma once

#include <functional>

/// The only place that lets waiting events in. Every routine that calls it states what it guards.
void Yield();

/// For tests: called inside each Yield() with its running number since the hook was set.
void setYieldHook(std::function<void(int number)> hook);
