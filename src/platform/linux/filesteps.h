#pragma once

#include "platform/filetransfer.h"
#include "platform/linux/temporaryfile.h"

#include <initializer_list>

#include <sys/stat.h>

// What copying and moving have in common.

using State = struct stat;

/// The outcome of a call of the system that failed with `error`.
FileOutcome failedStep(const char *what, const QString &path, int error);
/// The outcome of something the program does not do.
FileOutcome refusedStep(const QString &path, const char *why);

/// The same file in the same state, as far as its data goes.
bool isUnchanged(const State &before, const State &now);
/// Nanoseconds.
qint64 modifiedAt(const State &state);

/// A name in a folder that is held open: nobody can put another folder in its place meanwhile.
struct Place
{
    Descriptor folder;
    QByteArray name;
    bool exists = false;
    State state = {}; ///< of the name itself, when it exists

    FileOutcome open(const QString &path);
    /// The error for a file that the user may not write, else 0. Such a file is to stay, though a rename or a removal
    /// would not ask.
    int writeProtection() const;
    /// The state of what the name leads to, when it leads anywhere.
    bool leadsTo(State &followed) const;
    /// Makes the names in the folder last.
    int sync() const;
};

/// Whether a target may be written at all. `own` are the source's states, of itself and of what it leads to.
FileOutcome lookAtTarget(const Place &target, const QString &path, std::initializer_list<const State *> own);

/// A regular file, open to be read.
struct Source
{
    QString path;
    Descriptor file;
    State state = {};

    FileOutcome open(const QString &name);
    /// The state of a file that something has written to while it was read is no state it ever had.
    bool hasChanged() const;
};

/// Makes the temporary file for a target and fills it with the source's data and state. It has no name yet.
FileOutcome fillCopy(
    TemporaryFile &copy, const Place &target, const QString &path, const Source &source, const StillWanted &wanted);
