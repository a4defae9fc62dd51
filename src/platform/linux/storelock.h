#pragma once

#include "engine/result.h"

#include <QString>

#include <chrono>

/// An exclusive lock between processes (flock) on a file that exists for nothing else; held until destruction.
class StoreLock
{
public:
    /// Waits at most `patience`: a lock that a dead file server never gives up costs that time and no more. On a file
    /// system that knows no locks it is given at once, since replacing files as a whole still keeps them sound.
    static Result<StoreLock> take(const QString &path, std::chrono::milliseconds patience);

    StoreLock(StoreLock &&other) noexcept;
    StoreLock &operator=(StoreLock &&other) noexcept;
    ~StoreLock();

private:
    explicit StoreLock(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    int m_descriptor = -1;
};
