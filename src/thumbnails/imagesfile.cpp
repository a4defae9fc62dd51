#include "thumbnails/imagesfile.h"

#include "platform/filepath.h"
#include "platform/filetransfer.h"
#include "thumbnails/imagesschema.h"

#include <QLoggingCategory>

#include <filesystem>

#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

namespace {
Q_LOGGING_CATEGORY(logFile, "lumora.cache", QtWarningMsg)

constexpr int attempts = 100; ///< of five milliseconds each: the other one copies a small file
constexpr int betweenAttempts = 5;

QString pathOf(const QString &folder, const char *file)
{
    return folder + QLatin1String(file);
}

/// A template that nobody may write to gives a copy that its owner may.
void makeWritable(const QString &path)
{
    std::error_code failed;
    std::filesystem::permissions(pathToBytes(path).toStdString(),
        std::filesystem::perms::owner_read | std::filesystem::perms::owner_write, std::filesystem::perm_options::add,
        failed);
}

/// The only one at the file, by a lock on its template: unlike a lock file it goes with a process that is killed.
class OnlyOne
{
public:
    explicit OnlyOne(const QString &folder)
    {
        const Result<int> opened = openRegularFile(pathOf(folder, imagesTemplateFile));
        if (!opened)
            return;
        m_template = *opened;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            m_isLocked = ::flock(m_template, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
            if (!m_isLocked)
                return;
            ::poll(nullptr, 0, betweenAttempts);
        }
        qCWarning(logFile, "%s: another process is at it", qPrintable(displayPath(folder)));
    }
    ~OnlyOne()
    {
        if (m_template >= 0)
            ::close(m_template);
    }
    OnlyOne(const OnlyOne &) = delete;
    OnlyOne &operator=(const OnlyOne &) = delete;
    /// Where nothing can be locked it goes without.
    bool isAlone() const { return !m_isLocked; }

private:
    int m_template = -1;
    bool m_isLocked = false; ///< by another process
};

}

bool copyTemplate(const QString &folder)
{
    const QString path = pathOf(folder, imagesFile);
    const QString source = pathOf(folder, imagesTemplateFile);
    if (!FileExists(source))
        return false;
    const OnlyOne one(folder);
    if (FileExists(path))
        return true;
    if (!one.isAlone())
        return false;
    removeLeftOvers(path);
    const FileOutcome copied = copyFile(source, path, false);
    if (!copied && !FileExists(path)) {
        qCWarning(logFile, "%s", qPrintable(copied.reason));
        return false;
    }
    makeWritable(path);
    return true;
}

bool setAside(const QString &folder, const std::optional<FileStamp> &damaged)
{
    const QString path = pathOf(folder, imagesFile);
    const OnlyOne one(folder);
    if (!damaged || fileStamp(path) != damaged)
        return true;
    if (!one.isAlone())
        return false;
    const FileOutcome renamed = renameFile(path, path + QStringLiteral(".damaged"));
    const FileOutcome gone = renamed ? renamed : removeFile(path);
    removeLeftOvers(path);
    if (!gone)
        qCWarning(logFile, "%s", qPrintable(gone.reason));
    return bool(gone);
}

void removeLeftOvers(const QString &path)
{
    for (const char *ending : {"-wal", "-shm", "-journal"}) {
        const QString leftOver = path + QLatin1String(ending);
        if (FileExists(leftOver))
            ignore(removeFile(leftOver));
    }
}
