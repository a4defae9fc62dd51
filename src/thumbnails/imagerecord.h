#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>

#include <optional>

class SqliteConnection;
class SqliteStatement;

/// A record of tblImages.
struct ImageRecord
{
    qint64 id = 0; ///< of the row; 0 for one that is not in the file yet
    QString name; ///< path text
    int height = 0; ///< 16 bits, as all numbers but the size
    int width = 0;
    QDate date; ///< of the file
    QByteArray picture; ///< the blob; empty for none
    int compressionMode = 0;
    QDate thumbnailDate; ///< of the storing
    int thumbnailSize = 0;
};

/// The fields that recordOf() takes, in its order, as the middle of a SELECT. A picture of a megabyte is no thumbnail,
/// the largest of which has 120 KB, and is not read.
#define IMAGE_FIELDS                                                                                                   \
    "rowid, ImageName, ImageHeight, ImageWidth, ImageDate,"                                                            \
    " CASE WHEN typeof(ThumbnailImage)<>'blob' OR length(ThumbnailImage)<=1000000 THEN ThumbnailImage END,"            \
    " ThumbnailCompressionMode, ThumbnailDate, ThumbnailSize FROM tblImages "
ImageRecord recordOf(const SqliteStatement &row);

/// Parameters 1 to 8: name, height, width, date, compression mode, date of the storing, size, picture.
void bindRecord(SqliteStatement &statement, const ImageRecord &record);

/// Runs a statement that gives no rows, and makes it ready for the next time. False for null.
bool finishStatement(SqliteStatement *statement);

/// Stores the record; one of the same name and size gives way. To be called inside a transaction.
bool putRecord(SqliteConnection &connection, const ImageRecord &record);

/// Whether a record stored under one name is the one of a file with another, which compares as equal.
bool isSameImage(const QString &stored, const QString &wanted);
