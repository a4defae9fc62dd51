#pragma once

#include "engine/result.h"

#include <QByteArray>
#include <QString>

#include <cerrno>
#include <utility>

#include <unistd.h>

/// An owned file descriptor, closed at the end of the scope.
class Descriptor
{
public:
    explicit Descriptor(int number = -1)
        : m_number(number)
    {
    }
    Descriptor(Descriptor &&other) noexcept
        : m_number(std::exchange(other.m_number, -1))
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~Descriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    explicit operator bool() const { return m_number >= 0; }
    int number() const { return m_number; }
    /// Closes now and says whether that went well: some file systems report a failed write only here.
    [[nodiscard]] bool close() { return ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number;
};

/// The path as the system takes it; empty, which no call accepts, when it holds a null byte.
QByteArray nativePath(const QString &path);
/// "cannot open /a/b: Permission denied"
Failure systemFailure(const char *what, const QString &path, int error);
