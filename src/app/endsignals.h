#pragma once

#include <functional>
#include <memory>

/// SIGTERM, SIGINT and SIGHUP as a call on the thread that made this, from its event loop: at the end of a session
/// nothing is lost. A signal that comes before there is an event loop waits for it.
class EndSignals
{
public:
    explicit EndSignals(std::function<void(int signal)> arrived);
    ~EndSignals();

    /// Begins to watch. Needs the application object.
    void watch();

    /// Whether one of the signals has come.
    bool haveArrived() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
