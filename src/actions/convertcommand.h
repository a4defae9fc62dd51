#pragma once

#include "actions/conversion.h"

#include <QStringList>

/// A batch conversion that a command line asked for, without a display: the run of the window with another client.
///
/// It differs in what a script must be able to rely on. A picture that cannot be loaded, or that a step fails for, is
/// told of and not written: under its name there is never another one. Nothing is asked. What this run has written, and
/// what it is still to read, is not replaced by another entry of the same name, whatever the options say.
struct ConvertCommand
{
    ConversionOptions options;
    QStringList sources; ///< full paths of pictures, folders and list files
    bool recursive = false; ///< folders with all that is below them
    bool progress = false; ///< tells the progress also where standard error is no terminal
};

/// The entries that sources stand for: a picture itself, a folder the known picture files in it, a list file its
/// pictures; each once. What cannot be read, what gives nothing, and sounds and videos that are named as such go to
/// `failed`, one sentence each.
QStringList conversionEntries(
    const QStringList &sources, bool recursive, const std::function<void(const QString &sentence)> &failed);

/// Runs it. Exit status: 0 every entry was written in every format, 1 some were not, 128 and the number of the signal
/// that ended the run. Failures are lines on standard error.
int runConvertCommand(const ConvertCommand &command);

/// Ends the process as by that signal when `status` tells one: a shell that waits for it ends its script then too.
void endAsBySignal(int status);
