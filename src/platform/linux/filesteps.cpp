#include "platform/linux/filesteps.h"

#include "platform/filepath.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>

#include <fcntl.h>

namespace {

/// What the run time calls a file access error, number 75.
constexpr std::array accessErrors = {EACCES, EPERM, EROFS, ETXTBSY, EBUSY, EISDIR};

bool isSameFile(const State &a, const State &b)
{
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

} // namespace

FileOutcome failedStep(const char *what, const QString &path, int error)
{
    const bool access = std::find(accessErrors.begin(), accessErrors.end(), error) != accessErrors.end();
    return {access ? FileOutcome::Kind::AccessError : FileOutcome::Kind::Failed, error,
        systemFailure(what, path, error).reason};
}

FileOutcome refusedStep(const QString &path, const char *why)
{
    return {
        FileOutcome::Kind::Failed, 0, displayPath(path) + QLatin1Char(' ') + QCoreApplication::translate("Files", why)};
}

qint64 modifiedAt(const State &state)
{
    return static_cast<qint64>(state.st_mtim.tv_sec) * 1'000'000'000 + state.st_mtim.tv_nsec;
}

bool isUnchanged(const State &before, const State &now)
{
    return isSameFile(before, now) && before.st_size == now.st_size && modifiedAt(before) == modifiedAt(now);
}

FileOutcome Place::open(const QString &path)
{
    const QByteArray native = nativePath(path);
    const qsizetype slash = native.lastIndexOf('/');
    name = native.mid(slash + 1);
    if (name.isEmpty() || name == "." || name == "..")
        return failedStep(
            QT_TRANSLATE_NOOP("Files", "cannot take as a file's name"), path, native.isEmpty() ? ENOENT : EISDIR);
    const QByteArray folderName = slash < 0 ? QByteArray(".") : native.left(slash + 1);
    folder = Descriptor(::open(folderName.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot find the folder of"), path, errno);
    exists = ::fstatat(folder.number(), name.constData(), &state, AT_SYMLINK_NOFOLLOW) == 0;
    return exists || errno == ENOENT ? FileOutcome()
                                     : failedStep(QT_TRANSLATE_NOOP("Files", "cannot look at"), path, errno);
}

int Place::writeProtection() const
{
    if (!S_ISREG(state.st_mode) || ::faccessat(folder.number(), name.constData(), W_OK, AT_EACCESS) == 0)
        return 0;
    return errno;
}

bool Place::leadsTo(State &followed) const
{
    return ::fstatat(folder.number(), name.constData(), &followed, 0) == 0;
}

int Place::sync() const
{
    const Descriptor readable(::openat(folder.number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return readable ? syncFolder(readable.number()) : 0;
}

FileOutcome lookAtTarget(const Place &target, const QString &path, std::initializer_list<const State *> own)
{
    if (!target.exists)
        return {};
    State followed = {};
    const bool leads = target.leadsTo(followed);
    for (const State *source : own) {
        if (isSameFile(*source, target.state) || (leads && isSameFile(*source, followed)))
            return refusedStep(path, QT_TRANSLATE_NOOP("Files", "is the file itself"));
    }
    if (S_ISDIR(target.state.st_mode))
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot replace"), path, EISDIR);
    if (!S_ISREG(target.state.st_mode) && !S_ISLNK(target.state.st_mode))
        return refusedStep(path, QT_TRANSLATE_NOOP("Files", "is not a regular file"));
    const int protection = target.writeProtection();
    return protection == 0 ? FileOutcome() : failedStep(QT_TRANSLATE_NOOP("Files", "cannot replace"), path, protection);
}

FileOutcome Source::open(const QString &name)
{
    path = name;
    const QByteArray native = nativePath(name);
    // Asked first by name: merely opening a FIFO or a device can wake its other end.
    if (::stat(native.constData(), &state) != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot find"), path, errno);
    if (!S_ISREG(state.st_mode))
        return refusedStep(path, QT_TRANSLATE_NOOP("Files", "is not a regular file"));
    file = Descriptor(::open(native.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot open"), path, errno);
    if (::fstat(file.number(), &state) != 0)
        return failedStep(QT_TRANSLATE_NOOP("Files", "cannot look at"), path, errno);
    return S_ISREG(state.st_mode) ? FileOutcome()
                                  : refusedStep(path, QT_TRANSLATE_NOOP("Files", "is not a regular file"));
}

bool Source::hasChanged() const
{
    State now = {};
    return ::fstat(file.number(), &now) != 0 || !isUnchanged(state, now);
}
