#pragma once

#include "thumbnails/imagerecord.h"
#include "thumbnails/imageswriter.h"
#include "thumbnails/sqlite.h"

#include <functional>
#include <optional>

/// The file images.mdb and the records in it, one size or all sizes at a time. Nothing here waits longer than a moment
/// for another process, and find() and add() do not even wait for the disk. A file that turns out to be damaged is set
/// aside and begun anew by open(); until then every operation on it fails.
class ImagesDatabase
{
public:
    /// Opens the images.mdb of that folder, which is copied from images.dat when it is missing. A file that holds no
    /// cache, or is damaged, is set aside as "images.mdb.damaged" and copied anew. False when there is neither file or
    /// it cannot be used; the reason goes into the log category "lumora.cache".
    bool open(const QString &folder);
    void close();
    bool isOpen() const { return m_connection.isOpen(); }
    /// An operation has met damage.
    bool isDamaged() const { return m_damaged || m_writer.isDamaged(); }
    /// The file that is open was removed or replaced; open() looks for the one that there is now.
    bool isMoved() const { return m_connection.isMoved(); }

    /// Which records the others are about: those of one size in the order of their names, or all in the order of their
    /// storing.
    void select(std::optional<int> size) { m_size = size; }
    std::optional<int> selection() const { return m_size; }

    /// How many there are, with those that wait to be written; none after a failure.
    std::optional<int> count();
    /// None at the ends, and after a failure.
    std::optional<ImageRecord> first();
    std::optional<ImageRecord> last();
    std::optional<ImageRecord> next(const ImageRecord &from);
    std::optional<ImageRecord> previous(const ImageRecord &from);
    /// The record of a name and a size among those selected. Names are compared without regard to case, but for files
    /// that exist beside each other under names that differ in nothing else: those are two.
    std::optional<ImageRecord> find(const QString &name, int size);

    /// Whether there is a record of that name and size, selected or not.
    bool contains(const QString &name, int size);

    /// Stores a record beside the windows; it is found from now on. One of the same name and size gives way. False when
    /// it cannot even be kept until the disk is ready.
    bool add(const ImageRecord &record);
    /// Writes into the record of that id. Its picture stays when `keepPicture` says so. False when it is gone.
    bool change(qint64 id, const ImageRecord &record, bool keepPicture);
    bool remove(qint64 id);
    /// Removes all that are selected, some at a time, for as long as `wanted` says so. False when any is left.
    bool removeAll(const std::function<bool()> &wanted);

    /// Some still waits to be written, or to be given up.
    bool isWriting() { return !m_writer.finish({}); }
    /// Waits until all is written and nothing is under way on the file any more, also after close(). Drops what another
    /// process does not let in.
    void settle() { m_writer.stop(); }

private:
    bool openOrMake(const QString &folder);
    bool connect(const QString &path);
    std::optional<int> countInFile();
    bool isInFile(const QString &name, int size);
    std::optional<ImageRecord> oneRecord(SqliteStatement *statement);
    std::optional<ImageRecord> atEnd(const char *ofSize, const char *ofAll);
    std::optional<ImageRecord> beside(const ImageRecord &from, const char *ofSize, const char *ofAll);
    bool succeeded(bool done);
    void noteFailure();
    QString m_path;
    SqliteConnection m_connection;
    std::optional<int> m_size;
    bool m_damaged = false;
    bool m_counts = false; ///< the file counts its records itself
    ImagesWriter m_writer;
};

/// Takes the log of a folder's images.mdb into the file, so that its length tells what it holds. Waits for the disk.
void takeInLog(const QString &folder);
