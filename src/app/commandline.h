#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What one start was asked. `commands` are the texts for the queue of the first instance, in order.
struct CommandLine
{
    QStringList commands; ///< "/editor", "/folder", or one text with all paths quoted; a single empty one when nothing
                          ///< was given
    QString screenshot; ///< --screenshot FILE
    bool help = false;
    bool version = false;
    QString error; ///< unknown option or missing argument: one line for stderr, exit status 2
};

/// Arguments to commands: file arguments become absolute against `currentFolder` and are quoted; file:// URIs are taken
/// too.
CommandLine parseCommandLine(const QStringList &arguments, const QString &currentFolder);

/// What an argument that is no option names, as a full path. A URI of another computer is no path here and stays as it
/// was typed.
QString pathOfArgument(const QString &argument, const QString &currentFolder);

/// The text of a command that carries paths: each in double quotes with a blank between; a path with a double quote, a
/// line break or foreign bytes goes as a file:// URI.
QString fileCommand(const QStringList &paths);

/// The paths of a command's text. A text of several quoted parts gives each; otherwise the first and the last character
/// are cut, whatever they are.
QStringList pathsOfCommand(const QString &command);

/// The other way: arguments of a start that gives this command, in letters that every process argument can hold.
QStringList argumentsOfCommand(const QString &command);

/// Text of --help and --version.
QString helpText();
QString versionText();
