#pragma once

#include "engine/result.h"

#include <QDateTime>
#include <QString>

/// The user's trash, after the Trash specification 1.0 of freedesktop.org, so that every desktop shows it and can
/// restore from it. A file goes into the trash of its own disk: the user's own in the data folder, else the disk's
/// shared
/// ".Trash" when that is a real folder with the sticky bit, else ".Trash-" and the user's number on the disk.

/// A file in the trash.
struct TrashedFile
{
    QString path; ///< where it was
    QString stored; ///< the file in the trash
    QString info; ///< its information file
};

/// Moves a regular file, or a link itself, into the trash. It is never copied and never deleted: where there is no
/// trash for its disk this is a failure, with a sentence for the user.
Result<TrashedFile> trashFile(const QString &path, const QDateTime &now = QDateTime::currentDateTime());

/// Moves it back to where it was; a failure, with a sentence for the user, when something has that name now or the
/// folder is gone.
Result<void> restoreTrashedFile(const TrashedFile &file);
