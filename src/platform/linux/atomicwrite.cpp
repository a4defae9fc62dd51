#include "platform/files.h"

#include "platform/filepath.h"
#include "platform/linux/descriptor.h"

#include <QDateTime>
#include <QRandomGenerator>

#include <array>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

constexpr QLatin1String temporaryStart(".lumora-");
constexpr QLatin1String temporaryEnd(".tmp");

/// A write beyond the process's file size limit sends a deadly signal; here it shall be an ordinary failure.
class SizeSignalBlocked
{
public:
    SizeSignalBlocked()
    {
        ::sigemptyset(&m_signal);
        ::sigaddset(&m_signal, SIGXFSZ);
        ::pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
    }
    ~SizeSignalBlocked()
    {
        const timespec atOnce = {};
        if (!::sigismember(&m_before, SIGXFSZ)) {
            while (::sigtimedwait(&m_signal, nullptr, &atOnce) > 0) { }
        }
        ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    Q_DISABLE_COPY_MOVE(SizeSignalBlocked)

private:
    sigset_t m_signal = {};
    sigset_t m_before = {};
};

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
    return systemFailure(QStringLiteral("cannot write"), path, ELOOP);
}

/// One replacement of one file, from the temporary to the synced folder.
class Replacement
{
public:
    explicit Replacement(const QString &target)
        : m_target(target)
    {
    }
    ~Replacement()
    {
        if (!m_temporaryName.isEmpty())
            ::unlinkat(m_folder.number(), m_temporaryName.constData(), 0);
    }
    Q_DISABLE_COPY_MOVE(Replacement)

    Result<void> carryOut(const QByteArray &bytes);

private:
    Failure failed(const char *what, int error) const { return systemFailure(QLatin1String(what), m_target, error); }
    Result<void> lookAtTarget();
    Result<void> openTemporary();
    Result<void> writeAll(const QByteArray &bytes);
    Result<void> keepState();
    void keepAttributes();
    Result<void> putInPlace();
    void nextTemporaryName();

    QString m_target;
    QByteArray m_fileName;
    bool m_existed = false;
    struct stat m_before = {};
    Descriptor m_folder;
    Descriptor m_file;
    QByteArray m_temporaryName; ///< set while a name of ours stands in the folder
};

Result<void> Replacement::carryOut(const QByteArray &bytes)
{
    if (Result<void> step = lookAtTarget(); !step)
        return step;
    if (Result<void> step = openTemporary(); !step)
        return step;
    if (Result<void> step = writeAll(bytes); !step)
        return step;
    if (Result<void> step = keepState(); !step)
        return step;
    return putInPlace();
}

Result<void> Replacement::lookAtTarget()
{
    if (nativePath(m_target).isEmpty())
        return failed("cannot write", ENOENT);
    const Result<QString> resolved = linkTarget(m_target);
    if (!resolved)
        return resolved.failure();
    m_target = *resolved;
    const PathParts parts = SplitFilePath(m_target);
    m_fileName = pathToBytes(parts.file);
    if (m_fileName.isEmpty())
        return failed("cannot write", EISDIR);
    const QByteArray folder = parts.folder.isEmpty() ? QByteArray(".") : pathToBytes(parts.folder);
    m_folder = Descriptor(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!m_folder)
        return failed("cannot open the folder of", errno);
    m_existed = ::fstatat(m_folder.number(), m_fileName.constData(), &m_before, AT_SYMLINK_NOFOLLOW) == 0;
    if (!m_existed)
        return errno == ENOENT ? Result<void>() : failed("cannot look at", errno);
    if (!S_ISREG(m_before.st_mode))
        return Failure{QStringLiteral("%1 is not a regular file").arg(displayPath(m_target))};
    // A rename would not ask, but a write-protected file is meant to stay.
    if (::faccessat(m_folder.number(), m_fileName.constData(), W_OK, AT_EACCESS) != 0)
        return failed("cannot write", errno);
    return {};
}

void Replacement::nextTemporaryName()
{
    const QString random = QString::number(QRandomGenerator::global()->generate64(), 16);
    m_temporaryName = (temporaryStart + random + temporaryEnd).toLatin1();
}

Result<void> Replacement::openTemporary()
{
    // Nobody else shall read the new bytes before the mode of the old file is set.
    const mode_t mode = m_existed ? 0600 : 0666;
    m_file = Descriptor(::openat(m_folder.number(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
    if (m_file)
        return {};
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT && errno != EINVAL && errno != ENOSYS)
        return failed("cannot make a temporary file for", errno);
    // Network and user-space file systems know no unnamed files.
    for (int attempt = 0; attempt < 16; ++attempt) {
        nextTemporaryName();
        m_file = Descriptor(
            ::openat(m_folder.number(), m_temporaryName.constData(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode));
        if (m_file)
            return {};
        m_temporaryName.clear(); // not ours
        if (errno != EEXIST)
            break;
    }
    return failed("cannot make a temporary file for", errno);
}

Result<void> Replacement::writeAll(const QByteArray &bytes)
{
    qint64 written = 0;
    while (written < bytes.size()) {
        const ssize_t count =
            ::write(m_file.number(), bytes.constData() + written, static_cast<size_t>(bytes.size() - written));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return failed("cannot write", count == 0 ? ENOSPC : errno);
        written += count;
    }
    return {};
}

/// Extended attributes, access lists among them, as far as the user may set them.
void Replacement::keepAttributes()
{
    const QByteArray target = nativePath(m_target);
    const ssize_t size = ::listxattr(target.constData(), nullptr, 0);
    if (size <= 0)
        return;
    QByteArray names(size, '\0');
    const ssize_t listed = ::listxattr(target.constData(), names.data(), static_cast<size_t>(names.size()));
    if (listed <= 0)
        return;
    names.truncate(listed);
    const QList<QByteArray> each = names.split('\0');
    for (const QByteArray &name : each) {
        const ssize_t length = name.isEmpty() ? -1 : ::getxattr(target.constData(), name.constData(), nullptr, 0);
        if (length < 0)
            continue;
        QByteArray value(length, '\0');
        const ssize_t got = ::getxattr(target.constData(), name.constData(), value.data(), static_cast<size_t>(length));
        if (got >= 0)
            ignore(::fsetxattr(m_file.number(), name.constData(), value.constData(), static_cast<size_t>(got), 0));
    }
}

Result<void> Replacement::keepState()
{
    if (m_existed) {
        mode_t mode = m_before.st_mode & 07777;
        struct stat now = {};
        if (::fstat(m_file.number(), &now) != 0)
            return failed("cannot look at the temporary file of", errno);
        const bool sameUser =
            now.st_uid == m_before.st_uid || ::fchown(m_file.number(), m_before.st_uid, static_cast<gid_t>(-1)) == 0;
        const bool sameGroup =
            now.st_gid == m_before.st_gid || ::fchown(m_file.number(), static_cast<uid_t>(-1), m_before.st_gid) == 0;
        if (!sameUser)
            mode &= ~static_cast<mode_t>(S_ISUID);
        if (!sameGroup) // what the old group might do is not for another group: it gets what everybody has
            mode = (mode & ~static_cast<mode_t>(S_ISGID | 070)) | (mode & 07) << 3;
        keepAttributes();
        if (::fchmod(m_file.number(), mode) != 0)
            return failed("cannot keep the mode of", errno);
    }
    if (::fsync(m_file.number()) != 0)
        return failed("cannot write to disk", errno);
    return {};
}

Result<void> Replacement::putInPlace()
{
    if (m_temporaryName.isEmpty()) {
        const QByteArray opened = "/proc/self/fd/" + QByteArray::number(m_file.number());
        int outcome = -1;
        for (int attempt = 0; attempt < 16; ++attempt) {
            nextTemporaryName();
            outcome = ::linkat(
                AT_FDCWD, opened.constData(), m_folder.number(), m_temporaryName.constData(), AT_SYMLINK_FOLLOW);
            if (outcome == 0 || errno != EEXIST)
                break;
        }
        if (outcome != 0) {
            m_temporaryName.clear();
            return failed("cannot name the temporary file of", errno);
        }
    }
    if (!m_file.close())
        return failed("cannot write", errno);
    if (::renameat(m_folder.number(), m_temporaryName.constData(), m_folder.number(), m_fileName.constData()) != 0)
        return failed("cannot replace", errno);
    m_temporaryName.clear();
    // Some file systems cannot sync a folder and say so; any other failure means the new name may not last.
    if (::fsync(m_folder.number()) != 0 && errno != EINVAL && errno != ENOTSUP && errno != EROFS)
        return failed("cannot write the folder to disk of", errno);
    return {};
}

} // namespace

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
    const SizeSignalBlocked blocked;
    return Replacement(path).carryOut(bytes);
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
            const QLatin1String text(name);
            if (kind == EntryKind::File && text.startsWith(temporaryStart) && text.endsWith(temporaryEnd)
                && ::fstatat(opened.number(), name, &state, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(state.st_mode)
                && state.st_mtim.tv_sec < QDateTime::currentSecsSinceEpoch() - secondsOfADay)
                ignore(::unlinkat(opened.number(), name, 0));
        },
        HiddenEntries::Told));
}
