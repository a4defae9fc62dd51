#pragma once

#include "engine/result.h"

#include <QString>
#include <QVector>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// The hierarchical store behind the settings, the file associations and the wallpaper values: roots, key paths
/// separated by "\\", named text values; the unnamed value of a key has the empty name. Names compare without regard to
/// case and keep the spelling of their first writer.
///
/// One text file per root. Every write takes a lock, reads what other processes wrote, changes only what it was asked
/// to, and replaces the file atomically. A damaged file gives what can be read of it and is kept aside; a store that
/// cannot be written says so in the result and changes nothing. Paths are at most 1024, names 16383 and values 2^20
/// characters long. For the GUI thread only.
class RegistryStore
{
public:
    enum class Root { CurrentUser, LocalMachine, ClassesRoot };

    /// `folder` ends in a separator. The files stand in it: "user.registry", "machine.registry", "classes.registry".
    explicit RegistryStore(const QString &folder);
    ~RegistryStore();

    std::optional<QString> value(Root root, const QString &key, const QString &name) const;
    bool keyExists(Root root, const QString &key) const;
    /// Name and value pairs in the order of their creation.
    QVector<std::pair<QString, QString>> values(Root root, const QString &key) const;
    QStringList subKeys(Root root, const QString &key) const;

    /// Makes a key, with those above it, when it is not there.
    Result<void> createKey(Root root, const QString &key);
    Result<void> setValue(Root root, const QString &key, const QString &name, const QString &value);
    /// Deleting what is not there is no failure.
    Result<void> deleteValue(Root root, const QString &key, const QString &name);
    /// The key with everything below it. The empty path, which is everything, is refused.
    Result<void> deleteKey(Root root, const QString &key);

    /// Runs `changes`, whose writes go out as one replacement of the file at its end.
    /// What is read inside already shows them; the single results tell nothing yet. One inside another joins it.
    Result<void> transaction(const std::function<void()> &changes);

    /// How long a write waits for other processes. After it was in vain once, later writes wait a tenth of a second
    /// until the lock is free again, so that a dead lock does not stall every click.
    void setLockPatience(std::chrono::milliseconds patience);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

/// The user's store, in configFolder(). Made at first use.
RegistryStore &registryStore();
/// For tests: puts the store into another folder.
void setRegistryStoreFolder(const QString &folder);
