#pragma once

#include "platform/fileassociations.h"

#include <QStringList>

/// The desktop entry, the MIME package and the icon below the user's data folder, for a program that no package has
/// installed.

/// The entry as it is installed, made to start `program` by its path and kept out of the menus. A failure for a path
/// that no entry can name: entries are UTF-8, and of one line.
Result<QByteArray> ownDesktopEntry(const QByteArray &entry, const QString &program);

struct MadeFiles
{
    QStringList files; ///< relative to the data folder
    QList<ToolCommand> commands; ///< that tell the desktop
    Result<void> result; ///< of a failure, the files that were made all the same are told
};
/// Brings the files up to date; `made` are those of an earlier run. Files of others are left alone, what is installed
/// is not made, and one that cannot be written is a failure.
MadeFiles makeDesktopFiles(const DesktopFiles &files, const QStringList &made);
/// Takes the files of an earlier run away.
MadeFiles removeDesktopFiles(const QStringList &made);
