#include "platform/fileassociations.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/linux/associationmemory.h"
#include "platform/linux/desktopfiles.h"
#include "platform/linux/mimeapps.h"
#include "platform/operationslog.h"

#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr qint64 largestList = 16 * 1024 * 1024; ///< bytes; lists of real systems hold some thousand
const QByteArray ownEntry(desktopEntryName);

QString listPath()
{
    return configFolder().chopped(qsizetype(strlen("lumora/"))) + QStringLiteral("mimeapps.list");
}

QString memoryPath()
{
    return configFolder() + QStringLiteral("associations.json");
}

/// Nothing at all when there is no file; a link that leads nowhere is one that holds nothing.
Result<std::optional<QByteArray>> readList(const QString &path)
{
    struct stat state = {};
    if (::stat(pathToBytes(path).constData(), &state) != 0 && errno == ENOENT) {
        const bool link = ::lstat(pathToBytes(path).constData(), &state) == 0;
        return link ? std::optional(QByteArray()) : std::nullopt;
    }
    const Result<QByteArray> bytes = readFile(path, largestList);
    if (!bytes)
        return bytes.failure();
    return std::optional(*bytes);
}

QByteArray firstEntry(const QByteArray &value)
{
    return value.split(';').constFirst().trimmed();
}

/// The entries of a list without the program's own.
QByteArray withoutOwn(const QByteArray &value)
{
    QByteArrayList entries = value.split(';');
    entries.removeIf([](const QByteArray &entry) { return entry.trimmed() == ownEntry; });
    return entries.join(';');
}

QByteArray withOwnInFront(const QByteArray &value)
{
    const QByteArray others = withoutOwn(value);
    const qsizetype blanks =
        std::find_if(others.begin(), others.end(), [](char c) { return c != ' ' && c != '\t'; }) - others.begin();
    return others.left(blanks) + ownEntry + ';' + others.mid(blanks);
}

bool isOwn(const QVector<QByteArray> &values)
{
    return !values.isEmpty() && std::all_of(values.begin(), values.end(), [](const QByteArray &value) {
        return firstEntry(value) == ownEntry;
    });
}

/// Makes a type the program's own, unless it is.
void claim(MimeApps &list, AssociationMemory &memory, const QByteArray &type)
{
    const QVector<QByteArray> before = list.values(type);
    if (isOwn(before))
        return;
    AssociationMemory::Lines lines{before, {}};
    if (before.isEmpty()) {
        lines.written.append(ownEntry);
        list.addLine(type, ownEntry);
    } else {
        QVector<std::optional<QByteArray>> values;
        for (const QByteArray &value : before) {
            lines.written.append(withOwnInFront(value));
            values.append(lines.written.last());
        }
        list.setValues(type, values);
    }
    memory.types.insert(type, lines);
}

/// Gives a type back. Where another program has written since, only the own name is taken out, and a line that another
/// now leads is its choice.
void giveBack(MimeApps &list, AssociationMemory &memory, const QByteArray &type)
{
    const AssociationMemory::Lines lines = memory.types.take(type);
    const QVector<QByteArray> now = list.values(type);
    const auto earlier = [&](qsizetype at) -> std::optional<QByteArray> {
        if (lines.before.isEmpty())
            return std::nullopt;
        return lines.before.value(at, lines.before.first());
    };
    QVector<std::optional<QByteArray>> values;
    for (qsizetype i = 0; i < now.size(); ++i) {
        const QByteArray others = withoutOwn(now[i]);
        if (firstEntry(now[i]) != ownEntry)
            values.append(now[i]);
        else if (now == lines.written || others.trimmed().isEmpty())
            values.append(earlier(i));
        else
            values.append(others);
    }
    list.setValues(type, values);
}

/// The list and the memory of it, with all that goes with a change.
class AssociationChange
{
public:
    AssociationChange(const std::optional<QByteArray> &text, const QVector<DesktopType> &types);
    /// `canClaim` is false when no desktop would know the program.
    void decide(const QVector<DesktopType> &types, bool canClaim);
    Result<void> write();

    AssociationMemory memory;

private:
    QVector<QByteArray> names(const QVector<DesktopType> &types) const;
    Result<void> writeList(const QByteArray &text);

    std::optional<QByteArray> m_before;
    AssociationMemory m_memoryBefore;
    MimeApps m_list;
};

AssociationChange::AssociationChange(const std::optional<QByteArray> &text, const QVector<DesktopType> &types)
    : memory(AssociationMemory::read(memoryPath()))
    , m_before(text)
    , m_memoryBefore(memory)
    , m_list(text.value_or(QByteArray()), names(types))
{
}

QVector<QByteArray> AssociationChange::names(const QVector<DesktopType> &types) const
{
    QVector<QByteArray> names = memory.types.keys();
    for (const DesktopType &type : types)
        names.append(type.name);
    return names;
}

void AssociationChange::decide(const QVector<DesktopType> &types, bool canClaim)
{
    const QVector<QByteArray> held = memory.types.keys();
    for (const QByteArray &type : held) {
        if (!types.contains(DesktopType{type, true}))
            giveBack(m_list, memory, type);
    }
    for (const DesktopType &type : types) {
        if (type.wanted && canClaim)
            claim(m_list, memory, type.name);
    }
    if (memory.types.isEmpty() && memory.madeGroup) {
        m_list.removeEmptyGroup();
    } else if (m_memoryBefore.types.isEmpty()) {
        memory.madeList = !m_before;
        memory.madeGroup = !m_list.hasGroup();
    }
}

/// The memory goes first: a list without it could not be put back, and a memory without the list does no harm.
Result<void> AssociationChange::write()
{
    const QByteArray text = m_list.text();
    const bool changed = text != m_before.value_or(QByteArray());
    if (changed && m_before && m_memoryBefore.types.isEmpty()) {
        const QString copy = configFolder() + QStringLiteral("mimeapps.list.before");
        if (Result<void> copied = writeFileAtomically(copy, *m_before); !copied)
            return copied;
    }
    if (!changed && memory == m_memoryBefore)
        return {};
    if (!memory.isEmpty()) {
        if (Result<void> kept = memory.write(memoryPath()); !kept)
            return kept;
    }
    if (Result<void> written = changed ? writeList(text) : Result<void>(); !written) {
        // As it was: what was to be given back is still to be given back.
        AssociationMemory unchanged = m_memoryBefore;
        unchanged.files = memory.files;
        ignore(unchanged.write(memoryPath()));
        return written;
    }
    return memory.isEmpty() ? memory.write(memoryPath()) : Result<void>();
}

Result<void> AssociationChange::writeList(const QByteArray &text)
{
    const QString path = listPath();
    struct stat state = {};
    const bool own = ::lstat(pathToBytes(path).constData(), &state) == 0 && S_ISREG(state.st_mode);
    if (text.isEmpty() && m_memoryBefore.madeList && memory.types.isEmpty() && own) {
        if (::unlink(pathToBytes(path).constData()) != 0)
            return Failure{QStringLiteral("%1: %2").arg(displayPath(path), QString::fromLocal8Bit(strerror(errno)))};
        logOperation(Operation::Deleted, path);
        return {};
    }
    Result<void> written = writeFileAtomically(path, text);
    logOperation(written ? Operation::Written : Operation::Failed, path, written.reason());
    return written;
}

/// Files that nobody remembers would be taken for somebody else's.
void forgetDesktopFiles(QStringList files)
{
    const QStringList remembered = AssociationMemory::read(memoryPath()).files;
    files.removeIf([&](const QString &file) { return remembered.contains(file); });
    ignore(removeDesktopFiles(files));
}

bool isWanted(const DesktopType &type)
{
    return type.wanted;
}

} // namespace

Result<QList<ToolCommand>> setDesktopTypes(const QVector<DesktopType> &types, const DesktopFiles &files)
{
    const QString path = listPath();
    const Result<std::optional<QByteArray>> text = readList(path);
    if (!text) {
        logOperation(Operation::Failed, path, text.reason());
        return text.failure();
    }
    AssociationChange change(*text, types);
    MadeFiles made;
    if (std::any_of(types.begin(), types.end(), isWanted)) {
        made = makeDesktopFiles(files, change.memory.files);
        change.memory.files = made.files;
    } else {
        made = removeDesktopFiles(change.memory.files);
        change.memory.files.clear();
    }
    change.decide(types, bool(made.result));
    if (Result<void> written = change.write(); !written) {
        forgetDesktopFiles(made.files);
        return written.failure();
    }
    if (!made.result)
        return made.result.failure();
    return made.commands;
}

QVector<QByteArray> ownDesktopTypes(const QVector<QByteArray> &types)
{
    const Result<std::optional<QByteArray>> text = readList(listPath());
    if (!text)
        return {};
    const MimeApps list(text->value_or(QByteArray()), types);
    QVector<QByteArray> own;
    std::copy_if(types.begin(), types.end(), std::back_inserter(own),
        [&](const QByteArray &type) { return isOwn(list.values(type)); });
    return own;
}

void startTools(const QList<ToolCommand> &commands)
{
    for (const ToolCommand &command : commands) {
        QProcess process;
        process.setProgram(QStandardPaths::findExecutable(command.program));
        process.setArguments(command.arguments);
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        if (!process.program().isEmpty())
            ignore(process.startDetached());
    }
}

QString programFile()
{
    std::array<char, 4096> buffer = {};
    const ssize_t length = ::readlink("/proc/self/exe", buffer.data(), buffer.size());
    return length > 0 ? pathFromBytes(QByteArray(buffer.data(), length)) : QString();
}
