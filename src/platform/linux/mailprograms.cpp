#include "platform/linux/mailprograms.h"

#include "platform/filepath.h"

#include <algorithm>

namespace {

constexpr qsizetype longestSafeName = 80;

struct ProgramName
{
    const char *name;
    MailProgram program;
};
// clang-format off
constexpr ProgramName names[] = {
    {"thunderbird", MailProgram::Thunderbird},
    {"thunderbird-esr", MailProgram::Thunderbird},
    {"thunderbird-bin", MailProgram::Thunderbird},
    {"icedove", MailProgram::Thunderbird},
    {"betterbird", MailProgram::Thunderbird},
    {"seamonkey", MailProgram::Thunderbird},
    {"kmail", MailProgram::KMail},
    {"evolution", MailProgram::Evolution},
    {"geary", MailProgram::Geary},
    {"claws-mail", MailProgram::ClawsMail},
    {"sylpheed", MailProgram::Sylpheed},
    {"xdg-email", MailProgram::XdgEmail},
};
// clang-format on

/// RFC 3986, section 2.3: everything but the unreserved characters and the path's own separators is encoded, so that
/// neither commas nor quotes are left that mean something on a command line.
QString attachmentUri(const QString &path)
{
    return QStringLiteral("file://") + QString::fromLatin1(pathToBytes(path).toPercentEncoding("/"));
}

QString encoded(const QString &text)
{
    return QString::fromLatin1(text.toUtf8().toPercentEncoding());
}

/// RFC 6068; `attach` is no part of it, but what several programs have in common.
QString mailtoUri(const MailMessage &message, bool withAttachment)
{
    QString uri = QStringLiteral("mailto:?subject=") + encoded(message.subject) + QStringLiteral("&body=")
        + encoded(message.note);
    if (withAttachment && !message.attachmentPath.isEmpty())
        uri += QStringLiteral("&attach=") + encoded(attachmentUri(message.attachmentPath));
    return uri;
}

/// Arguments are text of this system, whose lines end in a line feed alone.
QString plainLines(QString note)
{
    return note.replace(QLatin1String("\r\n"), QLatin1String("\n"));
}

/// Values stand in single quotes and end at a quote before a comma; the attachments are parted by commas.
QString composeArgument(const MailMessage &message)
{
    QString argument = QStringLiteral("subject='%1',body='%2'").arg(message.subject, plainLines(message.note));
    if (!message.attachmentPath.isEmpty())
        argument += QStringLiteral(",attachment='%1'").arg(attachmentUri(message.attachmentPath));
    return argument;
}

QStringList withAttachment(QStringList arguments, const char *option, const QString &attachment)
{
    return attachment.isEmpty() ? arguments : arguments << QString::fromLatin1(option) << attachment;
}

/// What no program and no shell script between it and the file gives a meaning of its own.
bool isPlain(QChar character)
{
    return character.isLetterOrNumber() || QStringView(u" ._-+@=&%()").contains(character);
}

/// Text between the words of a script is put together again with single blanks.
bool isPlainPath(const QString &path)
{
    return std::all_of(path.begin(), path.end(), [](QChar unit) { return unit == u'/' || isPlain(unit); })
        && !path.contains(QLatin1String("  ")) && !path.endsWith(QLatin1Char(' '));
}

}

MailProgram mailProgramOf(const QString &program)
{
    const QString name = FileNameOfPath(program);
    const auto row = std::find_if(std::begin(names), std::end(names),
        [&](const ProgramName &known) { return name == QLatin1String(known.name); });
    return row == std::end(names) ? MailProgram::Unknown : row->program;
}

QStringList mailArguments(MailProgram program, const MailMessage &message)
{
    const QString &path = message.attachmentPath;
    const QString uri = path.isEmpty() ? QString() : attachmentUri(path);
    switch (program) {
    case MailProgram::Thunderbird:
        return {QStringLiteral("-compose"), composeArgument(message)};
    case MailProgram::KMail:
        return withAttachment({QStringLiteral("--composer"), QStringLiteral("--subject"), message.subject,
                                  QStringLiteral("--body"), plainLines(message.note)},
            "--attach", uri);
    case MailProgram::Evolution:
    case MailProgram::Geary:
        return {mailtoUri(message, true)};
    case MailProgram::ClawsMail:
    case MailProgram::Sylpheed:
        return withAttachment({QStringLiteral("--compose"), mailtoUri(message, false)}, "--attach", path);
    case MailProgram::XdgEmail:
        return withAttachment({QStringLiteral("--utf8"), QStringLiteral("--subject"), message.subject,
                                  QStringLiteral("--body"), plainLines(message.note)},
            "--attach", path);
    case MailProgram::Unknown:
        break;
    }
    return {mailtoUri(message, true)};
}

bool carriesPath(MailProgram program, const QString &path)
{
    // Arguments and addresses are text to all of them, and text is UTF-8.
    if (hasForeignBytes(path))
        return false;
    switch (program) {
    case MailProgram::ClawsMail:
    case MailProgram::Sylpheed:
        // A running instance gets the files line by line.
        return !path.contains(QLatin1Char('\n')) && !path.contains(QLatin1Char('\r'));
    case MailProgram::XdgEmail:
        return isPlainPath(path);
    default:
        return true;
    }
}

bool followsLinks(MailProgram program)
{
    return program != MailProgram::XdgEmail;
}

QString safeAttachmentName(const QString &name)
{
    QString safe;
    for (const QChar unit : displayPath(name))
        safe += isPlain(unit) ? unit : QLatin1Char('_');
    safe = safe.simplified();
    while (safe.startsWith(QLatin1Char('.')) || safe.startsWith(QLatin1Char('-')))
        safe[0] = QLatin1Char('_');
    const qsizetype dot = safe.lastIndexOf(QLatin1Char('.'));
    const QString extension = dot < 0 || safe.size() - dot > 8 ? QString() : safe.sliced(dot);
    if (safe.size() > longestSafeName)
        safe = safe.first(longestSafeName - extension.size()) + extension;
    return safe.isEmpty() ? QStringLiteral("picture") : safe;
}
