#include "viewer/foldersearch.h"

#include "platform/filepath.h"
#include "platform/files.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <list>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

/// Entries that may be listed and not yet delivered: enough to bridge a slow folder, little enough for memory.
constexpr qsizetype windowEntries = 20'000;
constexpr std::chrono::milliseconds waitStep(15);
constexpr std::chrono::milliseconds longestFarewell(100);

constexpr std::size_t groupCount = 3;

/// The enabled extensions, each name looked up once: the groups that its extension belongs to.
class ExtensionTable
{
public:
    explicit ExtensionTable(const FilePatterns &patterns)
    {
        const std::array<const QString *, groupCount> groups = {&patterns.picture, &patterns.motion, &patterns.poly};
        for (std::size_t group = 0; group < groupCount; ++group) {
            const QStringList each = groups[group]->split(QLatin1Char(';'), Qt::SkipEmptyParts);
            for (const QString &pattern : each) {
                const QByteArray extension = pathToBytes(pattern.mid(pattern.lastIndexOf(QLatin1Char('.')) + 1));
                m_groups[packed(extension.constData())] |= 1U << group;
            }
        }
    }

    unsigned groupsOf(const char *name) const
    {
        const char *dot = std::strrchr(name, '.');
        if (!dot)
            return 0;
        const auto found = m_groups.find(packed(dot + 1));
        return found == m_groups.end() ? 0 : found->second;
    }

private:
    /// The upper-case letters as one number; what is longer than any known extension is none of them.
    static quint64 packed(const char *extension)
    {
        const std::size_t length = std::strlen(extension);
        if (length == 0 || length > sizeof(quint64))
            return 0;
        quint64 key = 0;
        for (std::size_t at = 0; at < length; ++at) {
            const char letter = extension[at];
            const bool lower = letter >= 'a' && letter <= 'z';
            key = key << 8 | static_cast<uchar>(lower ? letter - 'a' + 'A' : letter);
        }
        return key;
    }

    std::unordered_map<quint64, unsigned> m_groups;
};

struct MatchedEntries
{
    QStringList files;
    QStringList folders;
    bool readable = false;
};

MatchedEntries listMatching(const QString &folder, const ExtensionTable &extensions, bool withFolders)
{
    MatchedEntries entries;
    std::array<QStringList, groupCount> groups;
    bool anything = false;
    const Result<void> listed = forEachEntry(folder, [&](const char *name, EntryKind kind) {
        anything = true;
        if (kind == EntryKind::Folder && withFolders)
            entries.folders.append(pathFromBytes(QByteArray::fromRawData(name, qstrlen(name))));
        if (kind != EntryKind::File)
            return;
        const unsigned mask = extensions.groupsOf(name);
        for (std::size_t group = 0; mask != 0 && group < groupCount; ++group) {
            if (mask & 1U << group)
                groups[group].append(pathFromBytes(QByteArray::fromRawData(name, qstrlen(name))));
        }
    });
    // A folder that fails in the middle still gives what it told so far.
    entries.readable = listed || anything;
    for (QStringList &group : groups) {
        std::sort(group.begin(), group.end(), nameLess);
        entries.files += group;
    }
    std::sort(entries.folders.begin(), entries.folders.end(), nameLess);
    return entries;
}

bool isKernelTree(const QString &parent, const QString &name)
{
    return parent == QLatin1String("/") && (name == QLatin1String("proc") || name == QLatin1String("sys"));
}

struct Node
{
    enum State { Waiting, Listing, Done };
    QString path; ///< with a separator at its end
    State state = Waiting;
    bool readable = false;
    bool entered = false;
    QStringList files; ///< full paths
    std::vector<std::unique_ptr<Node>> children; ///< in order; the walk takes them from the back
    std::list<Node *>::iterator place;

    qsizetype cost() const { return 1 + files.size(); }
};

/// What caller and workers share. Everything but `extensions` is guarded by the mutex; a node that is done belongs to
/// the caller alone.
struct SharedWalk
{
    explicit SharedWalk(const FilePatterns &patterns)
        : extensions(patterns)
    {
    }

    const ExtensionTable extensions;
    std::mutex mutex;
    std::condition_variable_any workToDo;
    std::condition_variable somethingListed;
    Node root;
    std::list<Node *> open; ///< waiting or being listed, in the order in which the walk will need them
    qsizetype ahead = 0; ///< entries listed and not yet delivered
    int listing = 0;
    int idle = 0;
    Node *wanted = nullptr; ///< what the caller waits for

    Node *nextToList() const
    {
        if (ahead >= windowEntries && !(wanted && wanted->state == Node::Waiting))
            return nullptr;
        const auto waiting = [](const Node *node) { return node->state == Node::Waiting; };
        const auto next = std::find_if(open.begin(), open.end(), waiting);
        return next == open.end() ? nullptr : *next;
    }

    /// Lists one folder with the lock let go meanwhile.
    void list(Node *node, std::unique_lock<std::mutex> &lock)
    {
        node->state = Node::Listing;
        ++listing;
        lock.unlock();
        MatchedEntries entries = listMatching(node->path, extensions, true);
        for (QString &file : entries.files)
            file.prepend(node->path);
        std::vector<std::unique_ptr<Node>> children;
        children.reserve(static_cast<std::size_t>(entries.folders.size()));
        for (const QString &name : std::as_const(entries.folders)) {
            if (isKernelTree(node->path, name))
                continue;
            children.push_back(std::make_unique<Node>());
            children.back()->path = node->path + name + QLatin1Char('/');
        }
        lock.lock();
        // The children are needed before what follows this folder, the last of them first.
        for (auto child = children.rbegin(); child != children.rend(); ++child)
            (*child)->place = open.insert(node->place, child->get());
        open.erase(node->place);
        node->children = std::move(children);
        node->files = std::move(entries.files);
        node->readable = entries.readable;
        node->state = Node::Done;
        ahead += node->cost();
        --listing;
        if (idle > 0 && node->children.size() > 1)
            workToDo.notify_all();
        if (wanted == node || listing == 0)
            somethingListed.notify_all();
    }
};

void work(const std::stop_token &stop, const std::shared_ptr<SharedWalk> &walk)
{
    std::unique_lock lock(walk->mutex);
    while (!stop.stop_requested()) {
        if (Node *node = walk->nextToList()) {
            walk->list(node, lock);
            continue;
        }
        ++walk->idle;
        walk->workToDo.wait(lock, stop, [&] { return walk->nextToList() != nullptr; });
        --walk->idle;
    }
}

/// The caller's side: follows the order and waits where a listing is not there yet.
class Walker
{
public:
    Walker(const QString &folder, const FilePatterns &patterns, const FolderWalk &owner)
        : m_owner(owner)
        , m_shared(std::make_shared<SharedWalk>(patterns))
    {
        m_shared->root.path = folderWithSeparator(folder);
        m_shared->open.push_back(&m_shared->root);
        m_shared->root.place = m_shared->open.begin();
        const unsigned count = std::clamp(2 * std::thread::hardware_concurrency(), 2U, 8U);
        try {
            while (m_workers.size() < count)
                m_workers.emplace_back([shared = m_shared](const std::stop_token &stop) { work(stop, shared); });
        } catch (const std::system_error &) {
            // Fewer threads will do; with none the caller lists for itself.
        }
    }

    ~Walker()
    {
        for (std::jthread &worker : m_workers)
            worker.request_stop();
        std::unique_lock lock(m_shared->mutex);
        const bool allBack =
            m_shared->somethingListed.wait_for(lock, longestFarewell, [&] { return m_shared->listing == 0; });
        lock.unlock();
        // A server that does not answer must not hold the window up; the thread ends with its call and touches nothing
        // but what it owns together with this object.
        for (std::jthread &worker : m_workers) {
            if (!allBack)
                worker.detach();
        }
    }
    Q_DISABLE_COPY_MOVE(Walker)

    WalkEnd run()
    {
        std::vector<Node *> path;
        WalkEnd end = WalkEnd::Finished;
        if (!enter(&m_shared->root, path, end))
            return end;
        while (!path.empty()) {
            Node *node = path.back();
            if (!node->children.empty()) {
                Node *child = node->children.back().get();
                if (child->entered)
                    node->children.pop_back();
                else if (!enter(child, path, end))
                    return end;
                continue;
            }
            path.pop_back();
            if (!node->files.isEmpty() && !m_owner.found(node->files))
                return WalkEnd::ListFull;
            node->files.clear();
            if (m_owner.goOn && !m_owner.goOn())
                return WalkEnd::Cancelled;
        }
        return WalkEnd::Finished;
    }

private:
    /// Waits for the folder's listing and puts it on the path when it can be read. False ends the walk.
    bool enter(Node *node, std::vector<Node *> &path, WalkEnd &end)
    {
        node->entered = true;
        end = WalkEnd::Cancelled;
        if (!await(node))
            return false;
        if (!node->readable)
            return true;
        if (m_owner.entered && !m_owner.entered())
            return false;
        path.push_back(node);
        return true;
    }

    bool await(Node *node)
    {
        std::unique_lock lock(m_shared->mutex);
        while (node->state != Node::Done) {
            m_shared->wanted = node;
            if (m_workers.empty()) {
                m_shared->list(node, lock);
                continue;
            }
            m_shared->workToDo.notify_one();
            if (m_shared->somethingListed.wait_for(lock, waitStep, [&] { return node->state == Node::Done; }))
                break;
            lock.unlock();
            if (m_owner.goOn && !m_owner.goOn())
                return false;
            lock.lock();
        }
        m_shared->wanted = nullptr;
        const bool wasFull = m_shared->ahead >= windowEntries;
        m_shared->ahead -= node->cost();
        if (wasFull && m_shared->ahead < windowEntries)
            m_shared->workToDo.notify_all();
        return true;
    }

    const FolderWalk &m_owner;
    const std::shared_ptr<SharedWalk> m_shared;
    std::vector<std::jthread> m_workers;
};

} // namespace

QStringList collectFiles(const QString &folder, const FilePatterns &patterns)
{
    return listMatching(folder, ExtensionTable(patterns), false).files;
}

WalkEnd walkFolders(const QString &folder, const FilePatterns &patterns, const FolderWalk &walk)
{
    if (folder.isEmpty())
        return WalkEnd::Finished;
    return Walker(folder, patterns, walk).run();
}

QString folderWithSeparator(const QString &folder)
{
    return folder.isEmpty() || folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
}
