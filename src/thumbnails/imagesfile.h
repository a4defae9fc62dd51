#pragma once

#include "platform/files.h"

#include <optional>

// The file images.mdb as a whole: how it comes from its template, and how it goes. One process at a time does either,
// so that nobody takes the log that another one has begun for a left-over.

/// Copies the template of a folder to an images.mdb that its owner may write to. Another process may have been quicker,
/// which is as good. False when there is no template, or it cannot be copied.
bool copyTemplate(const QString &folder);

/// Takes away the images.mdb that was found damaged in that state, unless another process has been quicker. The first
/// one is kept as "images.mdb.damaged": it may be something that somebody wants back. Later ones are of this program's
/// own making.
bool setAside(const QString &folder, const std::optional<FileStamp> &damaged);

/// Takes away what a crash has left of a database that is not there any more: its log would be played into the next.
void removeLeftOvers(const QString &path);
