#pragma once

#include <utility>

#include <unistd.h>

namespace isolation {

/// A file descriptor that is closed with its owner.
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int value)
        : m_value(value)
    {
    }
    Descriptor(Descriptor &&other) noexcept
        : m_value(std::exchange(other.m_value, -1))
    {
    }
    Descriptor &operator=(Descriptor &&other) noexcept
    {
        std::swap(m_value, other.m_value);
        return *this;
    }
    ~Descriptor()
    {
        if (m_value >= 0)
            ::close(m_value);
    }

    int value() const { return m_value; }
    explicit operator bool() const { return m_value >= 0; }

private:
    int m_value = -1;
};

}
