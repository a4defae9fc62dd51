#include "platform/files.h"

#include "platform/filepath.h"
#include "platform/linux/temporaryfile.h"

#include <QCoreApplication>
#include <QDateTime>

#include <array>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

/// The path at the end of a chain of links; the last one need not exist.
Result<QString> linkTarget(QString path)
{
    constexpr int mostLinks = 40; // as many as the kernel follows
    for (int count = 0; count < mostLinks; ++count) {
        std::array<char, 4096> buffer = {};
        const ssize_t length = ::readlink(nativePath(path).constData(), buffer.data(), buffer.size());
        if (length < 0)
            return path;
        const QString target = pathFromBytes(QByteArray(buffer.data(), length));
        path = target.startsWith(QLatin1Char('/')) ? target : SplitFilePath(path).folder + target;
    }
    return systemFailure(QT_TRANSLATE_NOOP("Files", "cannot write"), path, ELOOP);
}

} // namespace

struct FileReplacement::Private
{
    Failure failed(const char *what, int error) const { return systemFailure(what, m_target, error); }
    Result<void> lookAtTarget();
    Result<void> openTemporary();
    Result<void> writeAll(const QByteArray &bytes);
    Result<void> keepState();

    QString m_target;
    QByteArray m_fileName;
    bool m_existed = false;
    struct stat m_before = {};
    Descriptor m_folder;
    TemporaryFile m_file;
};

Result<void> FileReplacement::Private::lookAtTarget()
{
    if (nativePath(m_target).isEmpty())
        return failed(QT_TRANSLATE_NOOP("Files", "cannot write"), ENOENT);
    const Result<QString> resolved = linkTarget(m_target);
    if (!resolved)
        return resolved.failure();
    m_target = *resolved;
    const PathParts parts = SplitFilePath(m_target);
    m_fileName = pathToBytes(parts.file);
    if (m_fileName.isEmpty())
        return failed(QT_TRANSLATE_NOOP("Files", "cannot write"), EISDIR);
    const QByteArray folder = parts.folder.isEmpty() ? QByteArray(".") : pathToBytes(parts.folder);
    m_folder = Descriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder)
        return failed(QT_TRANSLATE_NOOP("Files", "cannot open the folder of"), errno);
    m_existed = ::fstatat(m_folder.number(), m_fileName.constData(), &m_before, AT_SYMLINK_NOFOLLOW) == 0;
    if (!m_existed)
        return errno == ENOENT ? Result<void>() : failed(QT_TRANSLATE_NOOP("Files", "cannot look at"), errno);
    if (!S_ISREG(m_before.st_mode))
        return Failure{QCoreApplication::translate("Files", "%1 is not a regular file").arg(displayPath(m_target))};
    // A rename would not ask, but a write-protected file is meant to stay.
    if (::faccessat(m_folder.number(), m_fileName.constData(), W_OK, AT_EACCESS) != 0)
        return failed(QT_TRANSLATE_NOOP("Files", "cannot write"), errno);
    return {};
}

Result<void> FileReplacement::Private::openTemporary()
{
    // Nobody else shall read the new bytes before the mode of the old file is set.
    const int error = m_file.open(m_folder.number(), m_existed ? 0600 : 0666);
    return error == 0 ? Result<void>() : failed(QT_TRANSLATE_NOOP("Files", "cannot make a temporary file for"), error);
}

Result<void> FileReplacement::Private::writeAll(const QByteArray &bytes)
{
    qint64 written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            ::write(m_file.number(), bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return failed(QT_TRANSLATE_NOOP("Files", "cannot write"), count == 0 ? ENOSPC : errno);
        written += count;
    }
    return {};
}

Result<void> FileReplacement::Private::keepState()
{
    if (m_existed) {
        mode_t mode = m_before.st_mode & 07777;
        struct stat now = {};
        if (::fstat(m_file.number(), &now) != 0)
            return failed(QT_TRANSLATE_NOOP("Files", "cannot look at the temporary file of"), errno);
        const bool sameUser =
            now.st_uid == m_before.st_uid || ::fchown(m_file.number(), m_before.st_uid, static_cast<gid_t>(-1)) == 0;
        const bool sameGroup =
            now.st_gid == m_before.st_gid || ::fchown(m_file.number(), static_cast<uid_t>(-1), m_before.st_gid) == 0;
        if (!sameUser)
            mode &= ~static_cast<mode_t>(S_ISUID);
        if (!sameGroup) // what the old group might do is not for another group: it gets what everybody has
            mode = (mode & ~static_cast<mode_t>(S_ISGID | 070)) | (mode & 07) << 3;
        copyAttributes(nativePath(m_target), m_file.number());
        if (::fchmod(m_file.number(), mode) != 0)
            return failed(QT_TRANSLATE_NOOP("Files", "cannot keep the mode of"), errno);
    }
    if (::fsync(m_file.number()) != 0)
        return failed(QT_TRANSLATE_NOOP("Files", "cannot write to disk"), errno);
    return {};
}

FileReplacement::FileReplacement(const QString &path)
    : d(std::make_unique<Private>())
{
    d->m_target = path;
}

FileReplacement::~FileReplacement() = default;

Result<void> FileReplacement::prepare(const QByteArray &bytes)
{
    const SizeSignalBlocked blocked;
    if (Result<void> step = d->lookAtTarget(); !step)
        return step;
    if (Result<void> step = d->openTemporary(); !step)
        return step;
    if (Result<void> step = d->writeAll(bytes); !step)
        return step;
    return d->keepState();
}

Result<void> FileReplacement::putInPlace()
{
    const int error = d->m_file.replace(d->m_fileName);
    return error == 0 ? Result<void>() : d->failed(QT_TRANSLATE_NOOP("Files", "cannot replace"), error);
}

Result<void> FileReplacement::makeLast()
{
    const int error = syncFolder(d->m_folder.number());
    return error == 0 ? Result<void>()
                      : d->failed(QT_TRANSLATE_NOOP("Files", "cannot write the folder to disk of"), error);
}

std::optional<FilePlace> filePlace(const QString &path)
{
    const Result<QString> resolved = linkTarget(path);
    if (!resolved)
        return std::nullopt;
    const PathParts parts = SplitFilePath(*resolved);
    const QByteArray folder = parts.folder.isEmpty() ? QByteArray(".") : nativePath(parts.folder);
    struct stat state = {};
    if (::stat(folder.constData(), &state) != 0)
        return std::nullopt;
    return FilePlace{state.st_dev, state.st_ino, parts.file.normalized(QString::NormalizationForm_C).toCaseFolded()};
}

Result<void> writeFileAtomically(const QString &path, const QByteArray &bytes)
{
    FileReplacement replacement(path);
    if (Result<void> step = replacement.prepare(bytes); !step)
        return step;
    if (Result<void> step = replacement.putInPlace(); !step)
        return step;
    return replacement.makeLast();
}

void removeOldTemporaries(const QString &folder)
{
    constexpr qint64 secondsOfADay = 24 * 60 * 60;
    const Descriptor opened(::open(nativePath(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened)
        return;
    ignore(forEachEntry(
        folder,
        [&](const char *name, EntryKind kind) {
            struct stat state = {};
            const QByteArrayView text(name);
            if (kind == EntryKind::File && text.startsWith(temporaryStart) && text.endsWith(temporaryEnd)
                && ::fstatat(opened.number(), name, &state, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(state.st_mode)
                && state.st_mtim.tv_sec < QDateTime::currentSecsSinceEpoch() - secondsOfADay)
                ignore(::unlinkat(opened.number(), name, 0));
        },
        HiddenEntries::Told));
}
