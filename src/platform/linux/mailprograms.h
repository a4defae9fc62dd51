#pragma once

#include "platform/mailmessage.h"

#include <QStringList>

/// The mail programs whose command lines are known; all are graphical.
enum class MailProgram {
    Unknown,
    Thunderbird, ///< and its kin, which take the same line
    KMail,
    Evolution,
    Geary,
    ClawsMail,
    Sylpheed,
    XdgEmail, ///< the script that stands before all others
};

/// Told by the name of the program file.
MailProgram mailProgramOf(const QString &program);

/// What follows the program's name so that it opens the message: each argument is one word, nothing is left to a
/// shell.
QStringList mailArguments(MailProgram program, const MailMessage &message);

/// Whether the attachment's path arrives as it is. Otherwise the program gets another name of the file.
bool carriesPath(MailProgram program, const QString &path);

/// Whether another name may be a link to the file; it must be a copy for a program that looks where links lead.
bool followsLinks(MailProgram program);

/// A name that every program carries, as near to the given one as can be; the extension stays.
QString safeAttachmentName(const QString &name);
