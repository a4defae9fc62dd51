#include "platform/linux/temporaryfile.h"

#include <QList>
#include <QRandomGenerator>

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {
constexpr int mostAttempts = 16;
}

SizeSignalBlocked::SizeSignalBlocked()
{
    ::sigemptyset(&m_signal);
    ::sigaddset(&m_signal, SIGXFSZ);
    ::pthread_sigmask(SIG_BLOCK, &m_signal, &m_before);
}

SizeSignalBlocked::~SizeSignalBlocked()
{
    const timespec atOnce = {};
    if (!::sigismember(&m_before, SIGXFSZ)) {
        while (::sigtimedwait(&m_signal, nullptr, &atOnce) > 0) { }
    }
    ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

QByteArray temporaryName()
{
    return temporaryStart + QByteArray::number(QRandomGenerator::global()->generate64(), 16) + temporaryEnd;
}

TemporaryFile::~TemporaryFile()
{
    discard();
}

void TemporaryFile::discard()
{
    if (!m_name.isEmpty())
        ::unlinkat(m_folder.number(), m_name.constData(), 0);
    m_name.clear();
    m_file = Descriptor();
}

int TemporaryFile::open(int folder, mode_t mode)
{
    discard();
    m_folder = Descriptor(::fcntl(folder, F_DUPFD_CLOEXEC, 3));
    if (!m_folder)
        return errno;
    m_file = Descriptor(::openat(folder, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode));
    if (m_file)
        return 0;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT && errno != EINVAL && errno != ENOSYS)
        return errno;
    // Network and user-space file systems know no unnamed files.
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        const QByteArray name = temporaryName();
        m_file = Descriptor(::openat(folder, name.constData(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode));
        if (m_file) {
            m_name = name;
            return 0;
        }
        if (errno != EEXIST)
            break;
    }
    return errno;
}

/// What was lost on the way to the file system may come out only here.
bool TemporaryFile::close()
{
    return !m_file || m_file.close();
}

int TemporaryFile::linkAs(const QByteArray &name) const
{
    const QByteArray opened = "/proc/self/fd/" + QByteArray::number(m_file.number());
    const int linked = ::linkat(AT_FDCWD, opened.constData(), m_folder.number(), name.constData(), AT_SYMLINK_FOLLOW);
    return linked == 0 ? 0 : errno;
}

int TemporaryFile::placeNew(const QByteArray &name)
{
    if (m_name.isEmpty()) {
        const int error = linkAs(name);
        if (error != 0 || close())
            return error;
        const int lost = errno;
        ::unlinkat(m_folder.number(), name.constData(), 0);
        return lost;
    }
    if (!close())
        return errno;
    const int error = renameNew(m_folder.number(), m_name, m_folder.number(), name);
    if (error == 0)
        m_name.clear();
    return error;
}

int TemporaryFile::replace(const QByteArray &name)
{
    for (int attempt = 0; m_name.isEmpty(); ++attempt) {
        const QByteArray temporary = temporaryName();
        const int error = linkAs(temporary);
        if (error == 0)
            m_name = temporary;
        else if (error != EEXIST || attempt == mostAttempts)
            return error;
    }
    if (!close() || ::renameat(m_folder.number(), m_name.constData(), m_folder.number(), name.constData()) != 0)
        return errno;
    m_name.clear();
    return 0;
}

int renameNew(int oldFolder, const QByteArray &oldName, int newFolder, const QByteArray &newName)
{
    if (::renameat2(oldFolder, oldName.constData(), newFolder, newName.constData(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A hard link fails on a taken name too; where there are no links, looking first is the best there is.
    if (::linkat(oldFolder, oldName.constData(), newFolder, newName.constData(), 0) == 0)
        return ::unlinkat(oldFolder, oldName.constData(), 0) == 0 ? 0 : errno;
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS)
        return errno;
    struct stat state = {};
    if (::fstatat(newFolder, newName.constData(), &state, AT_SYMLINK_NOFOLLOW) == 0)
        return EEXIST;
    return ::renameat(oldFolder, oldName.constData(), newFolder, newName.constData()) == 0 ? 0 : errno;
}

void copyAttributes(const QByteArray &from, int to)
{
    const ssize_t size = ::listxattr(from.constData(), nullptr, 0);
    if (size <= 0)
        return;
    QByteArray names(size, '\0');
    const ssize_t listed = ::listxattr(from.constData(), names.data(), static_cast<size_t>(names.size()));
    if (listed <= 0)
        return;
    names.truncate(listed);
    const QList<QByteArray> each = names.split('\0');
    for (const QByteArray &name : each) {
        const ssize_t length = name.isEmpty() ? -1 : ::getxattr(from.constData(), name.constData(), nullptr, 0);
        if (length < 0)
            continue;
        QByteArray value(length, '\0');
        const ssize_t got = ::getxattr(from.constData(), name.constData(), value.data(), static_cast<size_t>(length));
        if (got >= 0)
            ignore(::fsetxattr(to, name.constData(), value.constData(), static_cast<size_t>(got), 0));
    }
}

int syncFolder(int folder)
{
    if (::fsync(folder) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS)
        return 0;
    return errno;
}
