#pragma once

#include "engine/result.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

/// File system access by the program's own path text (see filepath.h). Nothing here blocks on a FIFO or a device.

/// True for an existing regular file (a link to one counts); for a path that ends in a separator: when the folder holds
/// at least one file. False for the empty path, a folder without trailing separator, a FIFO, a device, a dead link.
bool FileExists(const QString &path);
bool folderExists(const QString &path);
/// Makes one folder; the one it stands in must be there. A failure when anything has that name.
Result<void> makeFolder(const QString &path);
/// What an ordinary user may still write to the folder's volume, in bytes. None when the folder is not there.
std::optional<qint64> freeSpace(const QString &folder);

/// What makes a file the same file in the same state.
struct FileStamp
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 changed = 0; ///< nanoseconds, the later of modification and status change
    bool operator==(const FileStamp &) const = default;
};
/// None for anything but a regular file.
std::optional<FileStamp> fileStamp(const QString &path);

/// When a file's data was last changed, in local time; invalid when there is no such file.
QDateTime fileDateTime(const QString &path);

/// A descriptor of a regular file, read only and close-on-exec; -1 with a reason otherwise.
Result<int> openRegularFile(const QString &path);
/// The whole of a regular file; a failure when it is larger than `maximumBytes`.
Result<QByteArray> readFile(const QString &path, qint64 maximumBytes);

/// Replaces a file as a whole: temporary beside the target, checked write, mode and owner kept, sync, rename, sync of
/// the folder. A link is followed to its target; a write-protected file is left alone. On failure the file that was
/// there is untouched (except that a folder which cannot be synced is found out only after the rename) and nothing is
/// left behind.
Result<void> writeFileAtomically(const QString &path, const QByteArray &bytes);

/// Removes temporaries of the program in this folder that a crash left there more than a day ago.
void removeOldTemporaries(const QString &folder);

/// A file may be a link to one; a folder is a real one. Other: devices, FIFOs, sockets, dead links.
enum class EntryKind { File, Folder, FolderLink, Other };
enum class HiddenEntries { LeftOut, Told };
/// One folder's entries in the file system's order, names as bytes. A failure when the folder cannot be read (to its
/// end).
Result<void> forEachEntry(const QString &folder, const std::function<void(const char *name, EntryKind kind)> &tell,
    HiddenEntries hidden = HiddenEntries::LeftOut);

/// Names in the program's order; hidden ones (leading dot) are left out everywhere.
struct FolderListing
{
    QStringList files; ///< regular files and links to them
    QStringList folders; ///< sub-folders, without links to folders
    QStringList folderLinks; ///< links to folders
};
/// One folder's entries.
Result<FolderListing> listFolder(const QString &folder);

/// The program's order of names: case-insensitive, digit runs by value, ties by code point.
bool nameLess(const QString &a, const QString &b);
