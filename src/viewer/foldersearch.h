#pragma once

#include "app/mediatypes.h"
#include "platform/messagebox.h"

#include <QString>
#include <QStringList>

#include <functional>

/// Names of one folder in the order of collection: all that match the picture patterns, then motion, then the others;
/// each group in the program's order of names. A pattern that is empty collects nothing. Patterns are "*" and an
/// extension.
QStringList collectFiles(const QString &folder, const FilePatterns &patterns);

/// A walk below a folder, as told step by step to its owner.
struct FolderWalk
{
    /// A folder is entered; the owner shows progress and lets events in. False stops the walk.
    std::function<bool()> entered;
    /// Files of one folder, full paths in order. False when the list is full: the walk ends.
    std::function<bool(const QStringList &paths)> found;
    /// Called behind each folder and again and again while a slow listing is awaited. False stops the walk. May be
    /// empty.
    std::function<bool()> goOn = {};
};
enum class WalkEnd { Finished, Cancelled, ListFull };

/// Depth first, children before the folder's own files, the last sub-folder of each level first. Links to folders are
/// not followed, the kernel's own trees below the root are not entered. A folder that cannot be entered is passed over.
/// Listing runs ahead on worker threads; the calls come on the caller's thread, in order.
WalkEnd walkFolders(const QString &folder, const FilePatterns &patterns, const FolderWalk &walk);

/// The folder with a separator behind it; a root and the empty text stay as they are.
QString folderWithSeparator(const QString &folder);

MessageBox noFileTypesBox();
MessageBox listFullBox();
MessageBox tooManyItemsBox();
/// The count of the list as the 16-bit number that the search compares with its limit: no such number is ever larger,
/// so that this test never stops a search. The list's own limit does.
bool isTooManyItems(qint16 count);
QString searchProgressText(int foldersSearched, int filesFound);

/// "1,234,567 bytes"; "16.7 Million (24-bit)", "65,536 (16-bit)", "Unknown".
QString bytesText(qint64 bytes);
QString colorsText(int bitsPerPixel);
