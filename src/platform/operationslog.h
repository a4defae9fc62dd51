#pragma once

#include <QString>

/// What the program did to the user's files, for whoever has to find out afterwards: "operations.log" in the state
/// folder, and "operations.log.1" with what was before. Nobody is shown it.
///
/// A line for each file, its fields between tabs: the local time after ISO 8601, a word, the file, and what it was made
/// from or why it failed. Paths stand there as they are displayed, so that no name breaks a line.

enum class Operation { Written, CarriedOver, LeftAlone, Copied, Moved, Deleted, Trashed, Restored, Renamed, Failed };

inline constexpr qint64 mostLogBytes = 1 << 20; ///< then a new log begins

/// May be called from any thread. Where no log can be written there is none.
void logOperation(Operation operation, const QString &path, const QString &remark = {});
