#include "thumbnails/imagerecord.h"

#include "platform/filepath.h"
#include "platform/files.h"
#include "thumbnails/sqlite.h"

namespace {

QByteArray dateText(QDate date)
{
    return date.toString(Qt::ISODate).toLatin1();
}

QDate dateOf(const QByteArray &text)
{
    return QDate::fromString(QString::fromLatin1(text), Qt::ISODate);
}

}

ImageRecord recordOf(const SqliteStatement &row)
{
    ImageRecord record;
    record.id = row.number(0);
    record.name = pathFromBytes(row.text(1));
    record.height = int(row.number(2));
    record.width = int(row.number(3));
    record.date = dateOf(row.text(4));
    record.picture = row.bytes(5);
    record.compressionMode = int(row.number(6));
    record.thumbnailDate = dateOf(row.text(7));
    record.thumbnailSize = int(row.number(8));
    return record;
}

void bindRecord(SqliteStatement &statement, const ImageRecord &record)
{
    statement.bindText(1, pathToBytes(record.name));
    statement.bind(2, record.height);
    statement.bind(3, record.width);
    statement.bindText(4, dateText(record.date));
    statement.bind(5, record.compressionMode);
    statement.bindText(6, dateText(record.thumbnailDate));
    statement.bind(7, record.thumbnailSize);
    if (record.picture.isEmpty())
        statement.bindNull(8);
    else
        statement.bindBlob(8, record.picture);
}

bool finishStatement(SqliteStatement *statement)
{
    if (!statement)
        return false;
    while (statement->step()) { }
    const bool finished = !statement->failed();
    statement->reset();
    return finished;
}

bool putRecord(SqliteConnection &connection, const ImageRecord &record)
{
    // Not by a clause on the key: a file from elsewhere may have none, and several records under it.
    SqliteStatement *replace = connection.statement(
        "UPDATE tblImages SET ImageName=?1, ImageHeight=?2, ImageWidth=?3, ImageDate=?4, ThumbnailCompressionMode=?5,"
        " ThumbnailDate=?6, ThumbnailSize=?7, ThumbnailImage=?8 WHERE ThumbnailSize=?7 AND ImageName=?1");
    if (replace)
        bindRecord(*replace, record);
    if (!finishStatement(replace))
        return false;
    if (connection.changes() > 0)
        return true;
    SqliteStatement *insert = connection.statement(
        "INSERT INTO tblImages (ImageName, ImageHeight, ImageWidth, ImageDate, ThumbnailCompressionMode,"
        " ThumbnailDate, ThumbnailSize, ThumbnailImage) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)");
    if (insert)
        bindRecord(*insert, record);
    return finishStatement(insert);
}

bool isSameImage(const QString &stored, const QString &wanted)
{
    if (stored == wanted)
        return true;
    const auto storedFile = fileStamp(stored);
    const auto wantedFile = fileStamp(wanted);
    return !storedFile || !wantedFile
        || (storedFile->device == wantedFile->device && storedFile->inode == wantedFile->inode);
}
