#pragma once

#include "engine/result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

/// File system access by the program's own path text (see filepath.h). Nothing here blocks on a FIFO or a device.

/// True for an existing regular file (a link to one counts); for a path that ends in a separator: when the folder holds at
/// least one file. False for the empty path, a folder without trailing separator, a FIFO, a device, a dead link.
bool FileExists(const QString &path);
bool folderExists(const QString &path);

/// What makes a file the same file in the same state.
struct FileStamp {
    quint64 device = 0;
    quint64 inode = 0;
    qint64 size = 0;
    qint64 changed = 0;     ///< nanoseconds, the later of modification and status change
    bool operator==(const FileStamp &) const = default;
};
/// None for anything but a regular file.
std::optional<FileStamp> fileStamp(const QString &path);

/// A descriptor of a regular file, read only and close-on-exec; -1 with a reason otherwise.
Result<int> openRegularFile(const QString &path);
/// The whole of a regular file; a failure when it is larger than `maximumBytes`.
Result<QByteArray> readFile(const QString &path, qint64 maximumBytes);

/// Replaces a file as a whole: temporary beside the target, checked write, mode and owner kept, sync, rename, sync of the
/// folder. A link is followed to its target. On failure the file that was there is untouched and nothing is left behind.
Result<void> writeFileAtomically(const QString &path, const QByteArray &bytes);

struct FolderListing {
    QStringList files;      ///< names of regular files and links to them, in the program's order
    QStringList folders;    ///< names of sub-folders in the program's order; hidden ones left out, links to folders too
};
/// One folder's entries. Order: by name without regard to case, numbers by value. Hidden files (leading dot) are left out.
Result<FolderListing> listFolder(const QString &folder);

/// The program's order of names: case-insensitive, digit runs by value, ties by code point.
bool nameLess(const QString &a, const QString &b);
