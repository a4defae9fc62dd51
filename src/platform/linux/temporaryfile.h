#pragma once

#include "platform/linux/descriptor.h"

#include <csignal>

#include <sys/types.h>

// The steps that every careful writer of files takes. Numbers that are returned are errors of the system; 0 is success.

/// A write beyond the process's file size limit sends a deadly signal; in this scope it is an ordinary failure.
class SizeSignalBlocked
{
public:
    SizeSignalBlocked();
    ~SizeSignalBlocked();
    Q_DISABLE_COPY_MOVE(SizeSignalBlocked)

private:
    sigset_t m_signal = {};
    sigset_t m_before = {};
};

inline constexpr char temporaryStart[] = ".lumora-";
inline constexpr char temporaryEnd[] = ".tmp";
/// A name of the program's own for something that shall not stay in a folder.
QByteArray temporaryName();

/// A file on its way into a folder. It has no name where the file system can do that, else a temporary one, and goes
/// with this object unless it was put in its place.
class TemporaryFile
{
public:
    TemporaryFile() = default;
    ~TemporaryFile();
    Q_DISABLE_COPY_MOVE(TemporaryFile)

    /// Makes it in the folder with that descriptor. One that it was before goes.
    [[nodiscard]] int open(int folder, mode_t mode);
    /// The descriptor, to write and to read.
    int number() const { return m_file.number(); }
    /// Gives it a name that must be free; EEXIST when it is not, and replace() may follow.
    [[nodiscard]] int placeNew(const QByteArray &name);
    /// Gives it a name, in the place of what has it.
    [[nodiscard]] int replace(const QByteArray &name);

private:
    int linkAs(const QByteArray &name) const;
    bool close();
    void discard();
    Descriptor m_folder;
    Descriptor m_file;
    QByteArray m_name; ///< set while a temporary name of ours stands in the folder
};

/// renameat2 with RENAME_NOREPLACE, also where the file system does not know it; EEXIST when the name is taken.
[[nodiscard]] int renameNew(int oldFolder, const QByteArray &oldName, int newFolder, const QByteArray &newName);
/// Extended attributes, access lists among them, as far as the user may set them.
void copyAttributes(const QByteArray &from, int to);
/// Makes names in a folder last. Some file systems cannot do that for a folder and say so, which counts as success.
[[nodiscard]] int syncFolder(int folder);
