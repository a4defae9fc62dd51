#pragma once

#include "platform/messagebox.h"

#include <QDateTime>
#include <QString>

#include <optional>

/// The texts and numbers of copying, moving and deleting the files of the list. The three commands look alike and are
/// not: which one asks what, and when, stands in frmMainViewer_fileactions.cpp.

/// How the two names of the copy are shown: in lower case, then a capital at the beginning and behind each blank and
/// each dot.
QString fileActionCasing(const QString &path);

/// How far the copy of the list is at an entry, in percent without the fraction; 0 is not shown. A list of one entry
/// has no way to be on: none, which is a failure of the run.
std::optional<int> copyPercent(int index, int entries);

enum class FileAction { Copy, Move, Delete };

/// The question before a run to a folder; moving asks with the words of copying.
MessageBox copyQuestion(const QString &folder);
MessageBox deleteQuestion();
/// Whether a copy may take the place of a file of its name.
MessageBox overwriteQuestion(const QString &fileName, const QDateTime &inTarget, const QDateTime &inSource);
/// After a file access error, whatever its cause.
MessageBox readOnlyQuestion(FileAction action, const QString &path);
/// The report at the end of a run.
MessageBox fileActionReport(FileAction action, int count);

/// What speaks against a new name for a file, as a sentence for the user; none when it may be tried.
std::optional<QString> objectionToName(const QString &name);
/// The same for a name that was tried; `error` is the system's number.
QString renameProblem(int error, const QString &name);
