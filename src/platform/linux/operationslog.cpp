#include "platform/operationslog.h"

#include "platform/filepath.h"
#include "platform/folders.h"
#include "platform/linux/temporaryfile.h"

#include <QDateTime>

#include <array>
#include <cstdio>
#include <mutex>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace {

constexpr std::array words = {
    "written", "carried over", "left alone", "copied", "moved", "deleted", "trashed", "restored", "renamed", "failed"};

class OperationsLog
{
public:
    void append(const QByteArray &line)
    {
        const std::lock_guard lock(m_mutex);
        const SizeSignalBlocked blocked;
        if (!m_file)
            open();
        struct stat state = {};
        if (!m_file || ::write(m_file.number(), line.constData(), std::size_t(line.size())) < 0
            || ::fstat(m_file.number(), &state) != 0 || state.st_size < mostLogBytes)
            return;
        putAside(state);
        m_file = Descriptor();
    }

private:
    void open()
    {
        m_path = nativePath(stateFolder() + QStringLiteral("operations.log"));
        m_file = Descriptor(
            ::open(m_path.constData(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600));
    }
    /// Unless another process has done it.
    void putAside(const struct stat &own) const
    {
        struct stat named = {};
        if (::flock(m_file.number(), LOCK_EX | LOCK_NB) == 0 && ::stat(m_path.constData(), &named) == 0
            && named.st_ino == own.st_ino && named.st_dev == own.st_dev)
            ignore(std::rename(m_path.constData(), (m_path + ".1").constData()));
    }

    std::mutex m_mutex;
    QByteArray m_path;
    Descriptor m_file;
};

} // namespace

void logOperation(Operation operation, const QString &path, const QString &remark)
{
    static OperationsLog log;
    const QString line = QDateTime::currentDateTime().toString(Qt::ISODate) + QLatin1Char('\t')
        + QLatin1String(words[std::size_t(operation)]) + QLatin1Char('\t') + displayPath(path) + QLatin1Char('\t')
        + displayPath(remark) + QLatin1Char('\n');
    log.append(line.toUtf8());
}
