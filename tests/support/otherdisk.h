#pragma once

#include <QByteArray>
#include <QTemporaryDir>

#include <memory>

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

/// A file system that is not the one of the temporary files: one of its own in memory where the user may mount, else a
/// folder in the shared memory. Without either it says so and is not there.
class OtherDisk
{
public:
    explicit OtherDisk(const char *size = "64m")
    {
        if (::mount("tmpfs", qPrintable(m_folder.path()), "tmpfs", 0, QByteArray("size=").append(size).constData())
            == 0) {
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
            ::umount2(qPrintable(m_folder.path()), MNT_DETACH);
    }
    Q_DISABLE_COPY_MOVE(OtherDisk)

    bool isThere() const { return !m_path.isEmpty(); }
    /// It is as small as was asked for, so that it can be filled.
    bool hasSize() const { return m_mounted; }
    QString path() const { return m_path; }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QTemporaryDir> m_shared;
    QString m_path;
    bool m_mounted = false;
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
