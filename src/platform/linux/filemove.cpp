#include "platform/linux/filemove.h"

#include "platform/filepath.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <vector>

#include <fcntl.h>

namespace {

/// The system's answers to a rename after which a copy may do, and fail where the trouble is.
bool copyMayDo(int error)
{
    static constexpr std::array errors = {EXDEV, EACCES, EPERM, EROFS, EBUSY, ENOSYS, EOPNOTSUPP};
    return std::find(errors.begin(), errors.end(), error) != errors.end();
}

/// A file or a link that is there. Folders and devices are never moved or removed.
FileOutcome lookAtSource(const Place &source, const QString &path)
{
    if (!source.exists)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot find"), path, ENOENT);
    if (!S_ISREG(source.state.st_mode) && !S_ISLNK(source.state.st_mode))
        return refusedStep(path, QT_TRANSLATE_NOOP("Files", "is neither a regular file nor a link"));
    return {};
}

FileOutcome openSource(Place &source, const QString &path)
{
    const FileOutcome opened = source.open(path);
    return opened ? lookAtSource(source, path) : opened;
}

int renameTo(const Place &from, const Place &to)
{
    if (!to.exists)
        return renameNew(from.folder.number(), from.name, to.folder.number(), to.name);
    const int renamed =
        ::renameat(from.folder.number(), from.name.constData(), to.folder.number(), to.name.constData());
    return renamed == 0 ? 0 : errno;
}

int removeAt(const Place &place)
{
    return ::unlinkat(place.folder.number(), place.name.constData(), 0) == 0 ? 0 : errno;
}

/// Reads both from the disk as far as the system lets us, not from what was just written to memory.
int compareData(int one, int other, qint64 size)
{
    constexpr qint64 bufferSize = 256 << 10;
    ignore(::posix_fadvise(other, 0, 0, POSIX_FADV_DONTNEED));
    std::vector<char> first(static_cast<std::size_t>(std::min(bufferSize, size)));
    std::vector<char> second(first.size());
    for (qint64 at = 0; at < size;) {
        const auto length = static_cast<std::size_t>(std::min<qint64>(std::ssize(first), size - at));
        const ssize_t got = ::pread(one, first.data(), length, at);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return errno;
        if (got == 0 || ::pread(other, second.data(), static_cast<std::size_t>(got), at) != got
            || std::memcmp(first.data(), second.data(), static_cast<std::size_t>(got)) != 0)
            return EIO;
        at += got;
    }
    return 0;
}

/// The text of a link as it reads from anywhere.
Result<QByteArray> linkText(const Place &link, const QString &path)
{
    std::array<char, PATH_MAX> buffer = {};
    const ssize_t length = ::readlinkat(link.folder.number(), link.name.constData(), buffer.data(), buffer.size());
    if (length < 0 || length == std::ssize(buffer))
        return systemFailure(
            QT_TRANSLATE_NOOP("Files", "cannot read the link"), path, length < 0 ? errno : ENAMETOOLONG);
    const QByteArray text(buffer.data(), length);
    return text.startsWith('/') ? text : nativePath(SplitFilePath(path).folder) + text;
}

} // namespace

FileOutcome FileMove::look()
{
    if (FileOutcome step = openSource(m_from, m_files.source); !step)
        return step;
    State followed = {};
    if (!m_from.leadsTo(followed))
        followed = m_from.state;
    if (FileOutcome step = m_to.open(m_files.target); !step)
        return step;
    if (FileOutcome step = lookAtTarget(m_to, m_files.target, {&m_from.state, &followed}); !step)
        return step;
    m_willFail = m_from.writeProtection() != 0;
    m_linkText.clear();
    if (!S_ISLNK(m_from.state.st_mode))
        return {};
    const Result<QByteArray> text = linkText(m_from, m_files.source);
    if (!text)
        return {FileOutcome::Kind::Failed, 0, text.reason()};
    m_linkText = *text;
    return {};
}

bool FileMove::isWithinDisk() const
{
    State folder = {};
    return ::fstat(m_to.folder.number(), &folder) == 0 && folder.st_dev == m_from.state.st_dev;
}

FileOutcome FileMove::begin(const StillWanted &wanted)
{
    if (FileOutcome step = look(); !step)
        return step;
    // A link that has to lead elsewhere from there is made anew.
    const bool isLink = !m_linkText.isEmpty();
    if (isLink ? m_linkText.size() == size() : !m_willFail) {
        const int error = renameTo(m_from, m_to);
        m_done = error == 0;
        if (m_done || !copyMayDo(error))
            return m_done ? FileOutcome()
                          : failedStep(QT_TRANSLATE_NOOP("Files", "cannot move to"), m_files.target, error);
        m_willFail = error != EXDEV;
    }
    if (isLink)
        return {};
    Source source;
    const FileOutcome opened = source.open(m_files.source);
    return opened ? fillCopy(m_copy, m_to, m_files.target, source, wanted) : opened;
}

FileOutcome FileMove::makeLink()
{
    Place made;
    made.folder = Descriptor(::openat(m_to.folder.number(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    made.name = temporaryName();
    if (!made.folder || ::symlinkat(m_linkText.constData(), made.folder.number(), made.name.constData()) != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot make the link"), m_files.target, errno);
    const int error = renameTo(made, m_to);
    if (error == 0)
        return {};
    ignore(removeAt(made));
    return failedStep(QT_TRANSLATE_NOOP("Files", "cannot put in place"), m_files.target, error);
}

FileOutcome FileMove::place()
{
    if (!m_linkText.isEmpty())
        return makeLink();
    Source source;
    if (FileOutcome step = source.open(m_files.source); !step)
        return step;
    int error = compareData(source.file.number(), m_copy.number(), source.state.st_size);
    if (error == 0)
        error = m_to.exists ? m_copy.replace(m_to.name) : m_copy.placeNew(m_to.name);
    if (error == EEXIST) {
        // It came meanwhile, or the disk does not tell its name from another one's.
        if (FileOutcome step = m_to.open(m_files.target); !step)
            return step;
        if (FileOutcome step = lookAtTarget(m_to, m_files.target, {&m_from.state}); !step)
            return step;
        error = m_copy.replace(m_to.name);
    }
    return error == 0 ? FileOutcome()
                      : failedStep(QT_TRANSLATE_NOOP("Files", "cannot put in place"), m_files.target, error);
}

FileOutcome FileMove::placeAgain(const StillWanted &wanted)
{
    if (FileOutcome step = begin(wanted); !step || m_done)
        return step;
    if (descriptor() >= 0 && ::fsync(descriptor()) != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot write to disk"), m_files.target, errno);
    return place();
}

FileOutcome FileMove::removeSource()
{
    Place now;
    if (FileOutcome step = openSource(now, m_files.source); !step)
        return step;
    if (!isUnchanged(m_from.state, now.state))
        return refusedStep(m_files.source, QT_TRANSLATE_NOOP("Files", "has changed since it was copied"));
    FileOutcome removed = removeFile(m_files.source);
    m_done = bool(removed);
    return removed;
}

FileOutcome removeFile(const QString &path)
{
    Place file;
    if (FileOutcome step = openSource(file, path); !step)
        return step;
    if (const int error = file.writeProtection(); error != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot remove"), path, error);
    const int error = removeAt(file);
    return error == 0 ? FileOutcome() : failedStep(QT_TRANSLATE_NOOP("Files", "cannot remove"), path, error);
}

FileOutcome renameFile(const QString &path, const QString &newPath)
{
    Place from;
    if (FileOutcome step = openSource(from, path); !step)
        return step;
    Place to;
    if (FileOutcome step = to.open(newPath); !step)
        return step;
    // On a disk without letter case the new name may be the file's own.
    const bool isOwnName = to.exists && to.state.st_dev == from.state.st_dev && to.state.st_ino == from.state.st_ino
        && from.state.st_nlink == 1;
    const int error = to.exists && !isOwnName ? EEXIST : renameTo(from, to);
    return error == 0 ? FileOutcome() : failedStep(QT_TRANSLATE_NOOP("Files", "cannot rename to"), newPath, error);
}
