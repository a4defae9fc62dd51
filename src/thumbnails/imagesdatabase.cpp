#include "thumbnails/imagesdatabase.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "thumbnails/imagesfile.h"
#include "thumbnails/imagesschema.h"

#include <QLoggingCategory>

#include <sqlite3.h>

#include <chrono>
#include <limits>

namespace {
Q_LOGGING_CATEGORY(logCache, "lumora.cache", QtWarningMsg)

constexpr int patience = 100; ///< milliseconds for another process, which stores one thumbnail in less than one
constexpr int removedAtOnce = 1000;
constexpr int removalAttempts = 50; ///< of a hundred milliseconds each: another process may be writing, too
constexpr std::chrono::milliseconds forTheWriter(300); ///< it needs less, unless disk or process stalls

/// A connection that never takes the log into the file, which would wait for the disk: the writer does.
bool openLive(SqliteConnection &connection, const QString &path, int waiting)
{
    return connection.open(path, SqliteConnection::Open::Existing, waiting) && prepareImagesConnection(connection)
        && sqlite3_db_config(connection.handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr) == SQLITE_OK
        && connection.run("PRAGMA wal_autocheckpoint=0");
}

}

void takeInLog(const QString &folder)
{
    SqliteConnection connection;
    const QString path = folder + QLatin1String(imagesFile);
    if (FileExists(path) && openLive(connection, path, patience))
        ignore(connection.run("PRAGMA wal_checkpoint(TRUNCATE)"));
}

bool ImagesDatabase::connect(const QString &path)
{
    const bool opened = openLive(m_connection, path, patience);
    // Looked at before anything is written: it may be the file of another program.
    const bool isCache = opened && hasImagesTable(m_connection);
    m_damaged = m_connection.isDamaged() || (opened && !isCache && m_connection.isReadable());
    // And a file that was replaced meanwhile shall not get a log, which would lie beside the new one.
    if (!isCache || m_connection.isMoved() || m_connection.value("PRAGMA journal_mode=WAL") != "wal") {
        const QString reason =
            isCache || !m_connection.isReadable() ? m_connection.reason() : QStringLiteral("no cache");
        qCWarning(logCache, "%s: %s", qPrintable(displayPath(path)), qPrintable(reason));
        m_connection.close();
        return false;
    }
    m_counts = bool(m_connection.prepare("SELECT ThumbnailSize, Records FROM tblImageCounts"));
    return true;
}

bool ImagesDatabase::open(const QString &folder)
{
    const bool opened = openOrMake(folder);
    m_damaged = false;
    return opened;
}

bool ImagesDatabase::openOrMake(const QString &folder)
{
    const QString path = folder + QLatin1String(imagesFile);
    const bool wasDamaged = isDamaged() && !isMoved();
    close();
    m_path = path;
    if (wasDamaged || !FileExists(path)) // whoever still writes writes into a file without a name
        settle();
    if (wasDamaged && !setAside(folder, fileStamp(path)))
        return false;
    // Again after a file that is none was set aside, or after another process has put another one in its place.
    for (int attempt = 0; attempt < 3; ++attempt) {
        if (!FileExists(path) && !copyTemplate(folder))
            return false;
        const auto found = fileStamp(path);
        if (connect(path))
            return true;
        settle();
        if (fileStamp(path) == found && (!m_damaged || !setAside(folder, found)))
            return false;
    }
    return false;
}

void ImagesDatabase::close()
{
    m_connection.close();
    m_damaged = false;
}

void ImagesDatabase::noteFailure()
{
    m_damaged = m_damaged || (m_connection.isDamaged() && !m_connection.isMoved());
    qCInfo(logCache, "%s", qPrintable(m_connection.reason()));
}

bool ImagesDatabase::succeeded(bool done)
{
    if (!done)
        noteFailure();
    return done;
}

std::optional<ImageRecord> ImagesDatabase::oneRecord(SqliteStatement *statement)
{
    std::optional<ImageRecord> record;
    if (statement && statement->step())
        record = recordOf(*statement);
    else if (!statement || statement->failed())
        noteFailure();
    // A statement that has not come to its end would hold the log.
    if (statement)
        statement->reset();
    return record;
}

std::optional<int> ImagesDatabase::count()
{
    // Those that still wait are counted as if they were written, by the state of the file in which they are not.
    std::vector<ImagesWriter::Key> waiting;
    if (!m_writer.finish(forTheWriter))
        waiting = m_writer.waiting(m_size);
    if (!succeeded(m_connection.run("BEGIN")))
        return {};
    std::optional<int> records = countInFile();
    for (const ImagesWriter::Key &key : waiting)
        records = records ? std::optional(*records + (isInFile(key.name, key.size) ? 0 : 1)) : std::nullopt;
    ignore(m_connection.run("COMMIT"));
    return records;
}

std::optional<int> ImagesDatabase::countInFile()
{
    SqliteStatement *counted = nullptr;
    if (m_counts)
        counted = m_connection.statement(m_size ? "SELECT TOTAL(Records) FROM tblImageCounts WHERE ThumbnailSize=?1"
                                                : "SELECT TOTAL(Records) FROM tblImageCounts");
    else
        counted = m_connection.statement(
            m_size ? "SELECT COUNT(*) FROM tblImages WHERE ThumbnailSize=?1" : "SELECT COUNT(*) FROM tblImages");
    if (counted && m_size)
        counted->bind(1, *m_size);
    if (!counted || !counted->step()) {
        noteFailure();
        return {};
    }
    const auto records = int(qBound(qint64(0), counted->number(0), qint64(std::numeric_limits<int>::max())));
    counted->reset();
    return records;
}

std::optional<ImageRecord> ImagesDatabase::atEnd(const char *ofSize, const char *ofAll)
{
    m_writer.finish(forTheWriter);
    SqliteStatement *statement = m_connection.statement(m_size ? ofSize : ofAll);
    if (statement && m_size)
        statement->bind(1, *m_size);
    return oneRecord(statement);
}

std::optional<ImageRecord> ImagesDatabase::first()
{
    return atEnd("SELECT " IMAGE_FIELDS "WHERE ThumbnailSize=?1 ORDER BY ImageName, rowid LIMIT 1",
        "SELECT " IMAGE_FIELDS "ORDER BY rowid LIMIT 1");
}

std::optional<ImageRecord> ImagesDatabase::last()
{
    return atEnd("SELECT " IMAGE_FIELDS "WHERE ThumbnailSize=?1 ORDER BY ImageName DESC, rowid DESC LIMIT 1",
        "SELECT " IMAGE_FIELDS "ORDER BY rowid DESC LIMIT 1");
}

std::optional<ImageRecord> ImagesDatabase::beside(const ImageRecord &from, const char *ofSize, const char *ofAll)
{
    m_writer.finish(forTheWriter);
    SqliteStatement *statement = m_connection.statement(m_size ? ofSize : ofAll);
    if (statement)
        statement->bind(1, from.id);
    if (statement && m_size) {
        statement->bind(2, *m_size);
        statement->bindText(3, pathToBytes(from.name));
    }
    return oneRecord(statement);
}

std::optional<ImageRecord> ImagesDatabase::next(const ImageRecord &from)
{
    return beside(from,
        "SELECT " IMAGE_FIELDS
        "WHERE ThumbnailSize=?2 AND (ImageName, rowid) > (?3, ?1) ORDER BY ImageName, rowid LIMIT 1",
        "SELECT " IMAGE_FIELDS "WHERE rowid > ?1 ORDER BY rowid LIMIT 1");
}

std::optional<ImageRecord> ImagesDatabase::previous(const ImageRecord &from)
{
    return beside(from,
        "SELECT " IMAGE_FIELDS
        "WHERE ThumbnailSize=?2 AND (ImageName, rowid) < (?3, ?1) ORDER BY ImageName DESC, rowid DESC LIMIT 1",
        "SELECT " IMAGE_FIELDS "WHERE rowid < ?1 ORDER BY rowid DESC LIMIT 1");
}

std::optional<ImageRecord> ImagesDatabase::find(const QString &name, int size)
{
    if (!isOpen() || (m_size && *m_size != size))
        return {};
    if (auto waiting = m_writer.waiting(name, size))
        return waiting;
    SqliteStatement *statement = m_connection.statement(
        "SELECT " IMAGE_FIELDS "WHERE ThumbnailSize=?1 AND ImageName=?2 ORDER BY ImageName, rowid");
    std::optional<ImageRecord> found;
    if (statement) {
        statement->bind(1, size);
        statement->bindText(2, pathToBytes(name));
        while (!found && statement->step()) {
            if (isSameImage(pathFromBytes(statement->text(1)), name))
                found = recordOf(*statement);
        }
    }
    if (!statement || statement->failed())
        noteFailure();
    if (statement)
        statement->reset();
    return found;
}

bool ImagesDatabase::contains(const QString &name, int size)
{
    return isInFile(name, size) || m_writer.waiting(name, size);
}

bool ImagesDatabase::isInFile(const QString &name, int size)
{
    SqliteStatement *statement =
        m_connection.statement("SELECT 1 FROM tblImages WHERE ThumbnailSize=?1 AND ImageName=?2");
    if (statement) {
        statement->bind(1, size);
        statement->bindText(2, pathToBytes(name));
    }
    const bool stored = statement && statement->step();
    if (statement)
        statement->reset();
    return stored;
}

bool ImagesDatabase::add(const ImageRecord &record)
{
    return isOpen() && m_writer.add(m_path, record);
}

bool ImagesDatabase::change(qint64 id, const ImageRecord &record, bool keepPicture)
{
    m_writer.finish(forTheWriter);
    const auto work = [&] {
        // Another record of the new name and size gives way.
        SqliteStatement *remove =
            m_connection.statement("DELETE FROM tblImages WHERE ThumbnailSize=?1 AND ImageName=?2 AND rowid<>?3");
        if (remove) {
            remove->bind(1, record.thumbnailSize);
            remove->bindText(2, pathToBytes(record.name));
            remove->bind(3, id);
        }
        SqliteStatement *update =
            m_connection.statement("UPDATE tblImages SET ImageName=?1, ImageHeight=?2, ImageWidth=?3, ImageDate=?4,"
                                   " ThumbnailCompressionMode=?5, ThumbnailDate=?6, ThumbnailSize=?7,"
                                   " ThumbnailImage=CASE WHEN ?10 THEN ThumbnailImage ELSE ?8 END WHERE rowid=?9");
        if (update) {
            bindRecord(*update, record);
            update->bind(9, id);
            update->bind(10, keepPicture);
        }
        return finishStatement(remove) && finishStatement(update) && m_connection.changes() > 0;
    };
    if (succeeded(m_connection.run("BEGIN IMMEDIATE") && work() && m_connection.run("COMMIT")))
        return true;
    ignore(m_connection.run("ROLLBACK"));
    return false;
}

bool ImagesDatabase::remove(qint64 id)
{
    m_writer.finish(forTheWriter);
    SqliteStatement *statement = m_connection.statement("DELETE FROM tblImages WHERE rowid=?1");
    if (statement)
        statement->bind(1, id);
    return succeeded(finishStatement(statement));
}

bool ImagesDatabase::removeAll(const std::function<bool()> &wanted)
{
    int attempts = 0;
    while (!m_writer.finish(forTheWriter) && wanted() && ++attempts < removalAttempts) { }
    do {
        SqliteStatement *statement = m_connection.statement(m_size
                ? "DELETE FROM tblImages WHERE rowid IN (SELECT rowid FROM tblImages WHERE ThumbnailSize=?1 LIMIT ?2)"
                : "DELETE FROM tblImages WHERE rowid IN (SELECT rowid FROM tblImages LIMIT ?2)");
        if (statement && m_size)
            statement->bind(1, *m_size);
        if (statement)
            statement->bind(2, removedAtOnce);
        const bool done = finishStatement(statement);
        if (!done && m_connection.isBusy() && ++attempts < removalAttempts)
            continue;
        if (!succeeded(done))
            return false;
        if (m_connection.changes() == 0)
            return true;
        ignore(m_connection.run("PRAGMA wal_checkpoint(PASSIVE)"));
    } while (wanted());
    return false;
}
