#pragma once

#include <QString>

#include <functional>
#include <memory>

/// One running instance per user and display.
///
/// A lock file in runtimeFolder() elects the first; a local socket served by a thread of its own takes the commands of later
/// starts and answers at once, so that a start is never lost while the first instance is busy. The lock goes with the
/// process, so nothing stale is ever left.
class Instance
{
public:
    Instance();
    ~Instance();

    /// Tries to become the first instance.
    bool becomeFirst();

    /// First instance: from now on `received(command, activationToken)` is called on the thread of `becomeFirst()` for each
    /// command, in the order of arrival; those that arrived before this call too.
    void listen(std::function<void(const QString &command, const QString &activationToken)> received);

    /// Later instance: hands `command` over. False when nobody took it within `milliseconds`; then becomeFirst() may
    /// succeed, because the first one was on its way out.
    bool handOver(const QString &command, const QString &activationToken, int milliseconds);

private:
    struct Private;
    std::unique_ptr<Private> d;
};
