#pragma once

#include <QString>
#include <QVector>

#include <functional>

/// Copying, moving and removing single files. Nothing here ever leaves half a file under a name, follows a pattern,
/// touches a folder, or writes over the file that it reads.

/// How an action on files ended.
struct FileOutcome
{
    enum class Kind {
        Done,
        AccessError, ///< the run time's file access error, number 75: no right to, write-protected, read-only, in use
        Failed ///< anything else
    };
    Kind kind = Kind::Done;
    int error = 0; ///< the system's number, 0 when it is not the system that refuses
    QString reason; ///< a sentence for the log

    explicit operator bool() const { return kind == Kind::Done; }
};

/// Asked several times while a large file is on its way, by the same thread. False ends the work, which leaves what was
/// there.
using StillWanted = std::function<bool()>;

/// Copies a regular file, or what a link leads to: data with its holes, mode, times, extended attributes, and the owner
/// where the user may set that. Where the disk can share the blocks it does. A file that is there under the target's
/// name is replaced as a whole when `replace` says so (through a link its target is), a write-protected one never.
/// A target that is the source itself, also by a link or a second name, is a failure.
///
/// A power cut soon afterwards may cost the copy, as with any copying program, but never the file that it replaced.
FileOutcome copyFile(const QString &source, const QString &target, bool replace, const StillWanted &wanted = {});

/// A move of one file, or of a link itself, to a name that may be taken by another file, which is replaced.
struct MoveOrder
{
    QString source;
    QString target;
};

/// Moves files one after the other. Within a file system a move is a rename. Else the file is copied, written to the
/// disk, compared with its source and put in its place before the source goes; several at a time, because a disk is
/// asked to write once for many files. At any moment each file is whole in one of its two places. A link that is
/// relative to its folder leads to the same file afterwards.
///
/// `ended` hears of each move in the order of the orders, and of nothing behind one that failed. For a failure it says
/// whether to go on with the step that failed - a source that could only be copied is not copied again, only removed -
/// or, by false, to end here.
void moveFiles(const QVector<MoveOrder> &orders,
    const std::function<bool(int order, const FileOutcome &outcome)> &ended, const StillWanted &wanted = {});

/// Removes a regular file, or a link itself, for good. A write-protected file is an access error.
FileOutcome removeFile(const QString &path);

/// Gives a file, or a link itself, another name within its file system; a failure when the name is taken, but for the
/// file's own in other letters.
FileOutcome renameFile(const QString &path, const QString &newPath);
