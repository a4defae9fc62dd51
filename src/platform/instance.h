#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

/// One running instance per user and display.
///
/// A lock file in runtimeFolder() elects the first; a local socket served by a thread of its own takes the commands of
/// later starts and answers at once, so that a start is never lost while the first instance is busy. The lock goes with
/// the process, so nothing stale is ever left. Without a folder for the two files every start is an instance of its
/// own.
///
/// A message is 8 bytes "LUMORA1\n", the lengths of command and token as 32-bit numbers in big-endian order, and the
/// two texts as pathToBytes() gives them; the answer to one that was taken in is "ok". Only processes of the same user
/// are heard, and at most 16 MiB: a folder's worth of paths in one start stays far below.
class Instance
{
public:
    Instance();
    ~Instance();

    /// Tries to become the first instance.
    bool becomeFirst();

    /// First instance: from now on `received(command, activationToken)` is called on the thread of `becomeFirst()` for
    /// each command, in the order of arrival; those that arrived before this call too.
    void listen(std::function<void(const QString &command, const QString &activationToken)> received);

    /// Later instance: hands `command` over. False when nobody took it within `milliseconds`; then becomeFirst() may
    /// succeed, because the first one was on its way out.
    bool handOver(const QString &command, const QString &activationToken, int milliseconds);

    /// First instance on its way out: takes no more commands, so that a start that comes now waits for the end of this
    /// one and becomes the first itself. The election is kept until the Instance goes, when what this one saves is on
    /// disk.
    void retire();

    /// After retire(): the commands that were taken in and that `received` was never called for, in their order.
    QStringList untaken() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
