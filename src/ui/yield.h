#pragma once

#include <functional>

/// The only place that lets waiting events in. Every routine that calls it states what it guards.
void Yield();

/// As Yield(), but waits for an event up to so many milliseconds: for loops that wait by the clock.
void YieldFor(int milliseconds);

/// As Yield(), and goes on letting events in until `ready` is true. It looks after each event and after wakeYield().
void YieldUntil(const std::function<bool()> &ready);
/// From any thread: what a YieldUntil() waits for may have come.
void wakeYield();

/// How many yields are under way in each other: above 0, some routine waits for its yield to return.
int yieldDepth();

/// For tests: called inside each Yield() with its running number since the hook was set.
void setYieldHook(std::function<void(int number)> hook);
