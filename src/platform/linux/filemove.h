#pragma once

#include "platform/linux/filesteps.h"

/// One move: of a file or of a link itself. The steps in their order; each may be taken again after it failed.
class FileMove
{
public:
    explicit FileMove(const MoveOrder &files)
        : m_files(files)
    {
    }

    /// Looks at both ends. A failure says why the move cannot be.
    FileOutcome look();
    /// A rename may do, as far as one can see.
    bool isWithinDisk() const;
    /// Its end can be foreseen: the source is protected, so it is copied and its removal is what fails.
    bool willFail() const { return m_willFail; }

    /// Renames, or makes the copy that has no name yet.
    FileOutcome begin(const StillWanted &wanted);
    bool isDone() const { return m_done; }
    qint64 size() const { return m_from.state.st_size; }
    /// Of the copy; -1 for a link.
    int descriptor() const { return m_copy.number(); }
    const Place &target() const { return m_to; }

    /// When the copy is on the disk: compares it and puts it in its place.
    FileOutcome place();
    /// After a failure of that: all of it once more.
    FileOutcome placeAgain(const StillWanted &wanted);
    /// When the copy's name is on the disk too: the source goes.
    FileOutcome removeSource();

private:
    FileOutcome makeLink();

    MoveOrder m_files;
    bool m_done = false;
    bool m_willFail = false;
    QByteArray m_linkText; ///< empty for a file
    Place m_from;
    Place m_to;
    TemporaryFile m_copy;
};
