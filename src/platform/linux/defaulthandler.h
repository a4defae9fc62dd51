#pragma once

#include <QString>
#include <QStringList>

/// The program that the user has chosen for a type ("x-scheme-handler/mailto"), as the desktops store it: the words of
/// its command up to the program itself, without the arguments behind it. Empty when nobody handles the type.
///
/// Sources: "Association between MIME types and applications" 1.0.1, "Desktop Entry Specification" 1.5.
QStringList defaultHandlerCommand(const QString &type);

/// The words of an Exec line, quotes and escapes undone, field codes left out.
QStringList execWords(const QString &exec);

/// The words up to the program: what stands in front of it may be "env" and variables.
QStringList programWords(const QStringList &words);
