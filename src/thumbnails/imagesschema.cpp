#include "thumbnails/imagesschema.h"

#include "platform/filepath.h"
#include "thumbnails/sqlite.h"

#include <sqlite3.h>

#include <algorithm>

// The field with the picture stands last: it is the only long one, and reading another walks over all before it.
const char imagesSchema[] = R"(
CREATE TABLE tblImages (
    ImageName TEXT COLLATE ImageNames,
    ImageHeight INTEGER,
    ImageWidth INTEGER,
    ImageDate TEXT,
    ThumbnailCompressionMode INTEGER,
    ThumbnailDate TEXT,
    ThumbnailSize INTEGER,
    ThumbnailImage BLOB
);
CREATE UNIQUE INDEX CacheKey ON tblImages (ThumbnailSize, ImageName);
CREATE TABLE tblImageCounts (ThumbnailSize INTEGER PRIMARY KEY, Records INTEGER NOT NULL);
CREATE TRIGGER CountAdded AFTER INSERT ON tblImages BEGIN
    INSERT INTO tblImageCounts VALUES (new.ThumbnailSize, 1)
        ON CONFLICT (ThumbnailSize) DO UPDATE SET Records = Records + 1;
END;
CREATE TRIGGER CountRemoved AFTER DELETE ON tblImages BEGIN
    UPDATE tblImageCounts SET Records = Records - 1 WHERE ThumbnailSize = old.ThumbnailSize;
END;
CREATE TRIGGER CountResized AFTER UPDATE OF ThumbnailSize ON tblImages
    WHEN new.ThumbnailSize IS NOT old.ThumbnailSize BEGIN
    UPDATE tblImageCounts SET Records = Records - 1 WHERE ThumbnailSize = old.ThumbnailSize;
    INSERT INTO tblImageCounts VALUES (new.ThumbnailSize, 1)
        ON CONFLICT (ThumbnailSize) DO UPDATE SET Records = Records + 1;
END;
)";

namespace {

constexpr int longestField = 4 * 1024 * 1024; ///< bytes; a thumbnail without compression has 120 KB

uchar lowered(uchar byte)
{
    return byte >= 'A' && byte <= 'Z' ? uchar(byte - 'A' + 'a') : byte;
}

int compareForSqlite(void *, int lengthA, const void *a, int lengthB, const void *b)
{
    return compareImageNames(
        QByteArrayView(static_cast<const char *>(a), lengthA), QByteArrayView(static_cast<const char *>(b), lengthB));
}

}

int compareImageNames(QByteArrayView a, QByteArrayView b)
{
    const qsizetype both = std::min(a.size(), b.size());
    for (qsizetype at = 0; at < both; ++at) {
        const uchar one = uchar(a[at]);
        const uchar other = uchar(b[at]);
        if ((one | other) >= 0x80) {
            // What stands before is ASCII and equal: the rest decides, letter by letter.
            const QString restA = pathFromBytes(a.sliced(at).toByteArray()).toCaseFolded();
            const QString restB = pathFromBytes(b.sliced(at).toByteArray()).toCaseFolded();
            return QString::compare(restA, restB, Qt::CaseSensitive);
        }
        if (lowered(one) != lowered(other))
            return int(lowered(one)) - int(lowered(other));
    }
    return a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

bool prepareImagesConnection(SqliteConnection &connection)
{
    sqlite3 *handle = connection.handle();
    sqlite3_limit(handle, SQLITE_LIMIT_LENGTH, longestField);
    sqlite3_limit(handle, SQLITE_LIMIT_ATTACHED, 1); // compaction attaches its target
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    return sqlite3_create_collation(handle, "ImageNames", SQLITE_UTF8, nullptr, &compareForSqlite) == SQLITE_OK
        && connection.run("PRAGMA trusted_schema=OFF; PRAGMA cell_size_check=ON; PRAGMA mmap_size=0;"
                          "PRAGMA synchronous=NORMAL; PRAGMA temp_store=MEMORY; PRAGMA cache_size=-8192;"
                          "PRAGMA journal_size_limit=16777216");
}

bool hasImagesTable(SqliteConnection &connection)
{
    return connection.value("SELECT COUNT(*) FROM sqlite_schema WHERE type='table' AND rootpage>0 AND"
                            " name='tblImages' COLLATE NOCASE")
        == "1"
        && bool(connection.prepare("SELECT rowid, ImageName, ImageHeight, ImageWidth, ImageDate, ThumbnailImage,"
                                   " ThumbnailCompressionMode, ThumbnailDate, ThumbnailSize FROM tblImages"));
}
