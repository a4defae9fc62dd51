#pragma once

#include <QString>

#include <optional>
#include <utility>
#include <variant>

/// Why something failed, as one sentence for a log or a developer. Users see only the program's own boxes.
struct Failure
{
    QString reason;
};

/// A value or the reason why there is none. It must be looked at; `ignore()` discards one on purpose.
template <class T> class [[nodiscard]] Result
{
public:
    Result(T value)
        : m_state(std::move(value))
    {
    }
    Result(Failure failure)
        : m_state(std::move(failure))
    {
    }

    explicit operator bool() const { return std::holds_alternative<T>(m_state); }
    const T &operator*() const & { return std::get<T>(m_state); }
    T &operator*() & { return std::get<T>(m_state); }
    T &&operator*() && { return std::get<T>(std::move(m_state)); }
    const T *operator->() const { return &std::get<T>(m_state); }
    T *operator->() { return &std::get<T>(m_state); }
    /// The reason; empty when there is a value.
    QString reason() const { return *this ? QString() : std::get<Failure>(m_state).reason; }
    Failure failure() const { return Failure{reason()}; }

private:
    std::variant<T, Failure> m_state;
};

template <> class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Failure failure)
        : m_failure(std::move(failure))
    {
    }

    explicit operator bool() const { return !m_failure; }
    QString reason() const { return m_failure ? m_failure->reason : QString(); }
    Failure failure() const { return Failure{reason()}; }

private:
    std::optional<Failure> m_failure;
};

/// Says that an outcome is deliberately not looked at.
template <class T> void ignore(T &&)
{
}
