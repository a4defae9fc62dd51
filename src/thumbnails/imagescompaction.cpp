#include "thumbnails/imagescompaction.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/filetransfer.h"
#include "thumbnails/imagesfile.h"
#include "thumbnails/imagesschema.h"
#include "thumbnails/sqlite.h"

#include <unistd.h>

namespace {

constexpr int patience = 1000; ///< milliseconds for another process to finish what it is at

/// Tells whoever waits which connection is at work, for the length of a scope.
class Announced
{
public:
    Announced(SqliteConnection &connection, const std::function<void(SqliteConnection *)> &begun)
        : m_begun(begun)
    {
        m_begun(&connection);
    }
    ~Announced() { m_begun(nullptr); }
    Announced(const Announced &) = delete;
    Announced &operator=(const Announced &) = delete;

private:
    const std::function<void(SqliteConnection *)> &m_begun;
};

Failure failed(const char *what, const SqliteConnection &connection)
{
    return Failure{QLatin1String(what) + QStringLiteral(": ") + connection.reason()};
}

/// On the disk before it takes the place of another file: else a power cut may leave neither.
Result<void> syncFile(const QString &path)
{
    const Result<int> opened = openRegularFile(path);
    if (!opened)
        return opened.failure();
    const bool synced = ::fsync(*opened) == 0;
    ::close(*opened);
    if (!synced)
        return Failure{QStringLiteral("the compacted file cannot be written to the disk")};
    return {};
}

Result<void> checkWhole(const QString &path, const std::function<void(SqliteConnection *)> &begun)
{
    SqliteConnection connection;
    if (!connection.open(path, SqliteConnection::Open::Existing, patience) || !prepareImagesConnection(connection)
        || !hasImagesTable(connection))
        return failed("the compacted file cannot be used", connection);
    const Announced announced(connection, begun);
    if (connection.value("PRAGMA quick_check(1)") != "ok")
        return failed("the compacted file is not whole", connection);
    return {};
}

Result<void> writeAnew(
    SqliteConnection &connection, const QString &target, const std::function<void(SqliteConnection *)> &begun)
{
    const Announced announced(connection, begun);
    const auto vacuum = connection.prepare("VACUUM INTO ?1");
    if (!vacuum)
        return failed("cannot compact", connection);
    vacuum->bindText(1, pathToBytes(target));
    while (vacuum->step()) { }
    if (vacuum->failed())
        return failed("cannot compact", connection);
    return {};
}

/// Holds the file against every other connection: a log that one of them began would lie beside the new file and spoil
/// it. Only a file without any log can be held so.
Result<void> holdAlone(SqliteConnection &connection)
{
    if (connection.value("PRAGMA journal_mode=DELETE") != "delete" || !connection.run("BEGIN EXCLUSIVE")
        || connection.value("PRAGMA journal_mode") != "delete")
        return failed("in use elsewhere", connection);
    return {};
}

}

Result<void> compactImages(const QString &folder, const std::function<void(SqliteConnection *)> &begun)
{
    const QString path = folder + QLatin1String(imagesFile);
    const QString compacted = folder + QLatin1String(imagesCompactedFile);
    SqliteConnection connection;
    if (!connection.open(path, SqliteConnection::Open::Existing, patience) || !prepareImagesConnection(connection)
        || !hasImagesTable(connection))
        return failed("cannot open", connection);
    if (FileExists(compacted))
        ignore(removeFile(compacted));
    removeLeftOvers(compacted);
    Result<void> done = writeAnew(connection, compacted, begun);
    if (done)
        done = checkWhole(compacted, begun);
    if (done)
        done = syncFile(compacted);
    if (done)
        done = holdAlone(connection);
    if (done) {
        moveFiles({{compacted, path}}, [&](int, const FileOutcome &outcome) {
            if (!outcome)
                done = Failure{outcome.reason};
            return false;
        });
    }
    if (!done && FileExists(compacted))
        ignore(removeFile(compacted));
    return done;
}
