#include "platform/filepath.h"
#include "platform/linux/filesteps.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include <fcntl.h>

namespace {

constexpr qint64 portion = 4 << 20; ///< bytes between two questions whether the work is still wanted
constexpr qint64 bufferSize = 256 << 10;

bool isStillWanted(const StillWanted &wanted)
{
    return !wanted || wanted();
}

/// Through memory, for small files and where the system cannot do it by itself.
int copyBuffered(int from, int to, qint64 at, qint64 end, const StillWanted &wanted)
{
    std::vector<char> buffer(static_cast<std::size_t>(std::min(bufferSize, end - at)));
    for (qint64 asked = at; at < end;) {
        const ssize_t got =
            ::pread(from, buffer.data(), static_cast<std::size_t>(std::min<qint64>(std::ssize(buffer), end - at)), at);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return got == 0 ? ESTALE : errno;
        for (ssize_t written = 0; written < got;) {
            const ssize_t count =
                ::pwrite(to, buffer.data() + written, static_cast<std::size_t>(got - written), at + written);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return count == 0 ? ENOSPC : errno;
            written += count;
        }
        at += got;
        if (at - asked >= portion) {
            asked = at;
            if (!isStillWanted(wanted))
                return ECANCELED;
        }
    }
    return 0;
}

int copyRange(int from, int to, qint64 at, qint64 end, const StillWanted &wanted)
{
    if (end - at <= bufferSize)
        return copyBuffered(from, to, at, end, wanted);
    while (at < end) {
        off64_t source = at;
        off64_t target = at;
        const ssize_t count =
            ::copy_file_range(from, &source, to, &target, static_cast<std::size_t>(std::min(portion, end - at)), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && (errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO))
            return errno;
        // Not between these two file systems, or not on this kernel; some say 0 then.
        if (count <= 0)
            return copyBuffered(from, to, at, end, wanted);
        at += count;
        if (at < end && !isStillWanted(wanted))
            return ECANCELED;
    }
    return 0;
}

/// Holes stay holes.
int copyData(int from, int to, const State &source, const StillWanted &wanted)
{
    const qint64 size = source.st_size;
    if (source.st_blocks * 512 >= size)
        return copyRange(from, to, 0, size, wanted);
    if (::ftruncate(to, size) != 0)
        return errno;
    for (qint64 at = 0; at < size;) {
        const off_t data = ::lseek(from, at, SEEK_DATA);
        if (data < 0)
            return errno == ENXIO ? 0 : errno;
        const off_t hole = ::lseek(from, data, SEEK_HOLE);
        if (hole < 0)
            return errno;
        if (const int error = copyRange(from, to, data, std::min<qint64>(hole, size), wanted); error != 0)
            return error;
        at = hole;
    }
    return 0;
}

/// Mode, owner, attributes and, last of all, times. An owner that cannot be kept takes its special rights along.
int copyState(const Source &source, int to)
{
    State now = {};
    if (::fstat(to, &now) != 0)
        return errno;
    const State &wanted = source.state;
    mode_t mode = wanted.st_mode & 07777;
    if (now.st_gid != wanted.st_gid && ::fchown(to, static_cast<uid_t>(-1), wanted.st_gid) != 0)
        mode &= ~static_cast<mode_t>(S_ISGID);
    if (now.st_uid != wanted.st_uid && ::fchown(to, wanted.st_uid, static_cast<gid_t>(-1)) != 0)
        mode &= ~static_cast<mode_t>(S_ISUID);
    // Some file systems know no modes, attributes or times to that degree; the data is what counts.
    if (::fchmod(to, mode) != 0 && errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS)
        return errno;
    copyAttributes(nativePath(source.path), to);
    const timespec times[] = {wanted.st_atim, wanted.st_mtim};
    ignore(::futimens(to, times));
    return 0;
}

} // namespace

FileOutcome fillCopy(
    TemporaryFile &copy, const Place &target, const QString &path, const Source &source, const StillWanted &wanted)
{
    const SizeSignalBlocked blocked;
    int error = copy.open(target.folder.number(), 0600);
    if (error != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot make a temporary file for"), path, error);
    error = copyData(source.file.number(), copy.number(), source.state, wanted);
    if (error == 0)
        error = copyState(source, copy.number());
    if (error != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot write"), path, error);
    return source.hasChanged() ? refusedStep(source.path, QT_TRANSLATE_NOOP("Files", "has changed while it was copied"))
                               : FileOutcome();
}

FileOutcome copyFile(const QString &source, const QString &target, bool replace, const StillWanted &wanted)
{
    Source from;
    if (FileOutcome step = from.open(source); !step)
        return step;
    Place to;
    if (FileOutcome step = to.open(target); !step)
        return step;
    if (to.exists && S_ISLNK(to.state.st_mode)) {
        // As every writer: what the link leads to is replaced. A link to nowhere would make a file where nobody looks.
        const std::unique_ptr<char, decltype(&std::free)> resolved(
            ::realpath(nativePath(target).constData(), nullptr), &std::free);
        if (!resolved)
            return refusedStep(target, QT_TRANSLATE_NOOP("Files", "is a link that leads nowhere"));
        if (FileOutcome step = to.open(pathFromBytes(resolved.get())); !step)
            return step;
    }
    if (FileOutcome step = lookAtTarget(to, target, {&from.state}); !step)
        return step;
    if (to.exists && !replace)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot write"), target, EEXIST);
    TemporaryFile copy;
    if (FileOutcome step = fillCopy(copy, to, target, from, wanted); !step)
        return step;
    // What is replaced must not be gone before the new bytes are on the disk.
    if (to.exists && ::fsync(copy.number()) != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot write to disk"), target, errno);
    const int error = to.exists ? copy.replace(to.name) : copy.placeNew(to.name);
    return error == 0 ? FileOutcome() : failedStep(QT_TRANSLATE_NOOP("Files", "cannot put in place"), target, error);
}
