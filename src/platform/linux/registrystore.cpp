#include "platform/registrystore.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/linux/registrytext.h"
#include "platform/linux/storelock.h"

#include <QScopeGuard>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
using Root = RegistryStore::Root;
constexpr std::array<Root, 3> allRoots{Root::CurrentUser, Root::LocalMachine, Root::ClassesRoot};
constexpr std::array<const char *, 3> fileNames{"user.registry", "machine.registry", "classes.registry"};
constexpr std::chrono::milliseconds usualPatience{3000};
constexpr std::chrono::milliseconds shortPatience{100};

struct Change
{
    enum Kind { CreateKey, SetValue, DeleteValue, DeleteKey };
    Kind kind;
    Root root;
    QString key;
    QString name;
    QString value;
};

bool apply(const Change &change, RegistryTree &tree)
{
    switch (change.kind) {
    case Change::CreateKey:
        return tree.createKey(change.key);
    case Change::SetValue:
        return tree.setValue(change.key, change.name, change.value);
    case Change::DeleteValue:
        return tree.deleteValue(change.key, change.name);
    case Change::DeleteKey:
        return tree.deleteKey(change.key);
    }
    return false;
}

Result<void> checked(const Change &change)
{
    if (change.key.isEmpty())
        return Failure{QStringLiteral("a key of the store needs a name")};
    if (change.key.size() > RegistryTree::longestPath || change.name.size() > RegistryTree::longestName
        || change.value.size() > RegistryTree::longestValue)
        return Failure{QStringLiteral("too long for the store: %1").arg(change.key.left(80))};
    return {};
}

Failure systemFailure(const QString &path)
{
    return {QStringLiteral("%1: %2").arg(displayPath(path), QString::fromLocal8Bit(std::strerror(errno)))};
}

// A file that is not there reads as empty. One that is there and cannot be read is a failure, so that it is never
// replaced. Of one that does not end, the beginning is read.
Result<QByteArray> readText(const QString &path)
{
    struct stat status;
    if (::stat(pathToBytes(path).constData(), &status) != 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return QByteArray();
        return systemFailure(path);
    }
    const Result<int> descriptor = openRegularFile(path);
    if (!descriptor)
        return descriptor.failure();
    QByteArray text;
    std::array<char, 65536> part;
    ssize_t got = 0;
    do {
        got = ::read(*descriptor, part.data(), part.size());
        if (got > 0)
            text.append(part.data(), got);
    } while ((got > 0 && text.size() < RegistryTree::largestFile) || (got < 0 && errno == EINTR));
    const Failure failure = systemFailure(path);
    ::close(*descriptor);
    if (got < 0)
        return failure;
    return text;
}

Result<void> makeFolders(const QString &folder)
{
    for (qsizetype end = folder.indexOf(u'/', 1); end >= 0; end = folder.indexOf(u'/', end + 1)) {
        const QString part = folder.left(end);
        if (::mkdir(pathToBytes(part).constData(), 0700) != 0 && errno != EEXIST && !folderExists(part))
            return systemFailure(part);
    }
    return {};
}

// The damaged file stays under a name beside it, before it is replaced: as a second link to the very file, or, where
// there are none, as a copy of what could be read.
Result<void> keepAside(const QString &path, const QByteArray &bytes)
{
    constexpr int mostKept = 9;
    for (int number = 1; number <= mostKept; ++number) {
        const QString aside =
            path + QStringLiteral(".damaged") + (number > 1 ? QStringLiteral(".%1").arg(number) : QString());
        if (::linkat(
                AT_FDCWD, pathToBytes(path).constData(), AT_FDCWD, pathToBytes(aside).constData(), AT_SYMLINK_FOLLOW)
            == 0)
            return {};
        if (errno != EEXIST)
            return writeFileAtomically(aside, bytes);
    }
    return {}; // nine are enough to look into
}
}

struct RegistryStore::Private
{
    struct File
    {
        QString path;
        RegistryTree tree;
        std::optional<FileStamp> stamp;
        bool known = false;
    };

    QString folder;
    std::array<File, 3> files;
    QVector<Change> pending;
    int depth = 0;
    std::chrono::milliseconds patience = usualPatience;
    bool waitedInVain = false;

    File &file(Root root) { return files[std::size_t(root)]; }
    const RegistryTree &tree(Root root);
    Result<void> change(Change change);
    void abandon();
    Result<void> commit(const QVector<Change> &changes);
    Result<void> commitFile(File &file, const QVector<Change> &changes);
    Result<StoreLock> lock(const QString &path);
};

// What another process wrote is seen at the next read: each replacement is a new file.
const RegistryTree &RegistryStore::Private::tree(Root root)
{
    File &file = this->file(root);
    const std::optional<FileStamp> stamp = fileStamp(file.path);
    if (file.known && stamp == file.stamp)
        return file.tree;
    const Result<QByteArray> text = readText(file.path);
    bool damaged = false;
    file.tree = text ? RegistryTree::fromText(*text, damaged) : RegistryTree();
    file.stamp = stamp;
    file.known = true;
    for (const Change &change : std::as_const(pending)) {
        if (change.root == root)
            apply(change, file.tree);
    }
    return file.tree;
}

Result<void> RegistryStore::Private::change(Change change)
{
    change.key = RegistryTree::cleanPath(change.key);
    if (Result<void> result = checked(change); !result)
        return result;
    if (depth == 0)
        return commit({change});
    tree(change.root);
    apply(change, file(change.root).tree);
    pending.append(std::move(change));
    return {};
}

// A group was left by an exception: nothing was written, and nothing of it may be read.
void RegistryStore::Private::abandon()
{
    pending.clear();
    for (File &file : files)
        file.known = false;
}

Result<void> RegistryStore::Private::commit(const QVector<Change> &changes)
{
    Result<void> result;
    for (const Root root : allRoots) {
        QVector<Change> own;
        std::copy_if(changes.begin(), changes.end(), std::back_inserter(own),
            [root](const Change &change) { return change.root == root; });
        if (own.isEmpty())
            continue;
        Result<void> one = commitFile(file(root), own);
        if (!one) {
            file(root).known = false; // what was not written must not be read either
            result = std::move(one);
        }
    }
    return result;
}

Result<StoreLock> RegistryStore::Private::lock(const QString &path)
{
    Result<StoreLock> lock =
        StoreLock::take(path + QStringLiteral(".lock"), waitedInVain ? std::min(patience, shortPatience) : patience);
    waitedInVain = !lock;
    return lock;
}

Result<void> RegistryStore::Private::commitFile(File &file, const QVector<Change> &changes)
{
    if (Result<void> made = makeFolders(folder); !made)
        return made;
    const Result<StoreLock> held = lock(file.path);
    if (!held)
        return held.failure();
    const Result<QByteArray> before = readText(file.path);
    if (!before)
        return before.failure();
    bool damaged = false;
    RegistryTree tree = RegistryTree::fromText(*before, damaged);
    bool changed = false;
    for (const Change &change : changes)
        changed = apply(change, tree) || changed;
    if (changed) {
        const QByteArray text = tree.text();
        if (text.size() > RegistryTree::largestFile)
            return Failure{QStringLiteral("%1 would become too large").arg(displayPath(file.path))};
        if (damaged && !before->isEmpty()) {
            if (Result<void> kept = keepAside(file.path, *before); !kept)
                return kept;
        }
        if (Result<void> written = writeFileAtomically(file.path, text); !written)
            return written;
    }
    file.tree = std::move(tree);
    file.stamp = fileStamp(file.path);
    file.known = true;
    return {};
}

RegistryStore::RegistryStore(const QString &folder)
    : d(std::make_unique<Private>())
{
    d->folder = folder.endsWith(u'/') ? folder : folder + u'/';
    for (std::size_t i = 0; i < fileNames.size(); ++i)
        d->files[i].path = d->folder + QLatin1String(fileNames[i]);
}

RegistryStore::~RegistryStore() = default;

std::optional<QString> RegistryStore::value(Root root, const QString &key, const QString &name) const
{
    const QString *value = d->tree(root).value(RegistryTree::cleanPath(key), name);
    return value ? std::optional(*value) : std::nullopt;
}

bool RegistryStore::keyExists(Root root, const QString &key) const
{
    return d->tree(root).hasKey(RegistryTree::cleanPath(key));
}

QVector<std::pair<QString, QString>> RegistryStore::values(Root root, const QString &key) const
{
    return d->tree(root).values(RegistryTree::cleanPath(key));
}

QStringList RegistryStore::subKeys(Root root, const QString &key) const
{
    return d->tree(root).subKeys(RegistryTree::cleanPath(key));
}

Result<void> RegistryStore::createKey(Root root, const QString &key)
{
    return d->change({Change::CreateKey, root, key, {}, {}});
}

Result<void> RegistryStore::setValue(Root root, const QString &key, const QString &name, const QString &value)
{
    return d->change({Change::SetValue, root, key, name, value});
}

Result<void> RegistryStore::deleteValue(Root root, const QString &key, const QString &name)
{
    return d->change({Change::DeleteValue, root, key, name, {}});
}

Result<void> RegistryStore::deleteKey(Root root, const QString &key)
{
    return d->change({Change::DeleteKey, root, key, {}, {}});
}

Result<void> RegistryStore::transaction(const std::function<void()> &changes)
{
    ++d->depth;
    const auto leave = qScopeGuard([this] {
        if (--d->depth == 0 && !d->pending.isEmpty())
            d->abandon();
    });
    changes();
    if (d->depth > 1)
        return {};
    return d->commit(std::exchange(d->pending, {}));
}

void RegistryStore::setLockPatience(std::chrono::milliseconds patience)
{
    d->patience = patience;
    d->waitedInVain = false;
}

namespace {
std::unique_ptr<RegistryStore> &currentStore()
{
    static std::unique_ptr<RegistryStore> store;
    return store;
}
}

RegistryStore &registryStore()
{
    if (!currentStore())
        currentStore() = std::make_unique<RegistryStore>(configFolder());
    return *currentStore();
}

void setRegistryStoreFolder(const QString &folder)
{
    currentStore() = std::make_unique<RegistryStore>(folder);
}
