#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <memory>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

/// A file system that is not the one of the temporary files: one of its own in memory where the user may mount, else a
/// folder in the shared memory. Without either it says so and is not there.
class OtherDisk
{
public:
    explicit OtherDisk(const char *size = "64m")
    {
        const QByteArray options = QByteArray("size=").append(size);
        if (::syscall(SYS_mount, "tmpfs", qPrintable(m_folder.path()), "tmpfs", 0, options.constData()) == 0) {
            m_mounted = true;
            m_path = m_folder.path() + QLatin1Char('/');
            return;
        }
        struct stat here = {};
        struct stat there = {};
        if (::stat(qPrintable(m_folder.path()), &here) != 0 || ::stat("/dev/shm", &there) != 0
            || here.st_dev == there.st_dev)
            return;
        m_shared = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/lumora-test-XXXXXX"));
        if (m_shared->isValid())
            m_path = m_shared->path() + QLatin1Char('/');
    }
    ~OtherDisk()
    {
        if (m_mounted)
            ::syscall(SYS_umount2, qPrintable(m_folder.path()), lazily);
    }
    Q_DISABLE_COPY_MOVE(OtherDisk)

    bool isThere() const { return !m_path.isEmpty(); }
    /// It is as small as was asked for, so that it can be filled.
    bool hasSize() const { return m_mounted; }
    QString path() const { return m_path; }

private:
    static constexpr int lazily = 2; ///< MNT_DETACH, which the kernel's headers beside this one do not name

    QTemporaryDir m_folder;
    std::unique_ptr<QTemporaryDir> m_shared;
    QString m_path;
    bool m_mounted = false;
};

/// While it lasts nobody may write or remove the file: by its mode, or where that does not hold root back by its flag.
class Immutable
{
public:
    explicit Immutable(const QString &path)
        : m_path(path.toLocal8Bit())
    {
        m_works = ::geteuid() == 0 ? setFlag(true) : ::chmod(m_path.constData(), 0444) == 0;
    }
    ~Immutable()
    {
        if (m_works && ::geteuid() == 0)
            setFlag(false);
        else
            ::chmod(m_path.constData(), 0644);
    }
    Q_DISABLE_COPY_MOVE(Immutable)

    bool works() const { return m_works; }

private:
    bool setFlag(bool on)
    {
        const int file = ::open(m_path.constData(), O_RDONLY | O_CLOEXEC);
        int flags = 0;
        bool set = file >= 0 && ::ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
        flags = on ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
        set = set && ::ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
        if (file >= 0)
            ::close(file);
        return set;
    }
    QByteArray m_path;
    bool m_works = false;
};

/// While it lasts a test run by root is an ordinary user, whom modes of files hold back.
class OrdinaryUser
{
public:
    OrdinaryUser()
    {
        if (::geteuid() == 0)
            m_changed = ::setegid(65534) == 0 && ::seteuid(65534) == 0;
    }
    ~OrdinaryUser()
    {
        if (m_changed && (::seteuid(0) != 0 || ::setegid(0) != 0))
            qFatal("cannot be root again");
    }
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

private:
    bool m_changed = false;
};
