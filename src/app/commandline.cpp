#include "app/commandline.h"

#include "app/convertline.h"
#include "platform/filepath.h"

#include <QCoreApplication>

namespace {

struct Texts
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)
};

bool isFileUri(const QString &text)
{
    return text.startsWith(QLatin1String("file://"), Qt::CaseInsensitive);
}

/// Quotes delimit the paths of a command and a command is one line, so that such paths need another form.
bool needsUri(const QString &path)
{
    return path.contains(QLatin1Char('"')) || path.contains(QLatin1Char('\n')) || path.contains(QLatin1Char('\r'))
        || hasForeignBytes(path);
}

QString quoted(const QString &path)
{
    return QLatin1Char('"') + (needsUri(path) ? fileUri(path) : path) + QLatin1Char('"');
}

QString resolved(const QString &text)
{
    if (!isFileUri(text))
        return text;
    const QString path = pathFromFileUri(text);
    return path.isEmpty() ? text : path;
}

/// The parts of a text that is nothing but quoted parts with one blank between them; none for any other text.
QStringList quotedParts(const QString &text)
{
    QStringList parts;
    qsizetype at = 0;
    while (at < text.size()) {
        if (text.at(at) != QLatin1Char('"'))
            return {};
        const qsizetype end = text.indexOf(QLatin1Char('"'), at + 1);
        if (end < 0)
            return {};
        parts.append(text.mid(at + 1, end - at - 1));
        at = end + 1;
        if (at == text.size())
            break;
        if (text.at(at) != QLatin1Char(' ') || ++at == text.size())
            return {};
    }
    return parts;
}

/// Reads arguments from left to right into a CommandLine.
class ArgumentReader
{
public:
    ArgumentReader(const QStringList &arguments, const QString &currentFolder)
        : m_arguments(arguments)
        , m_currentFolder(currentFolder)
    {
    }

    CommandLine read()
    {
        while (m_next < m_arguments.size() && m_result.error.isEmpty())
            take(m_arguments.at(m_next++));
        if (!m_paths.isEmpty())
            m_result.commands.append(fileCommand(m_paths));
        if (m_result.commands.isEmpty())
            m_result.commands.append(QString());
        return m_result;
    }

private:
    void take(const QString &argument)
    {
        if (argument.isEmpty())
            return;
        if (m_optionsEnded)
            takePath(argument);
        else if (argument == QLatin1String("/editor") || argument == QLatin1String("--editor"))
            takeSwitch(QStringLiteral("/editor"));
        else if (argument == QLatin1String("/folder") || argument == QLatin1String("--folder"))
            takeSwitch(QStringLiteral("/folder"));
        else if (argument.startsWith(QLatin1Char('-')) && argument.size() > 1)
            takeOption(argument);
        else
            takePath(argument);
    }

    void takePath(const QString &argument) { m_paths.append(pathOfArgument(argument, m_currentFolder)); }

    void takeSwitch(const QString &command)
    {
        if (!m_result.commands.contains(command))
            m_result.commands.append(command);
    }

    void takeOption(const QString &argument)
    {
        const QString screenshot = QStringLiteral("--screenshot");
        if (argument == QLatin1String("--")) {
            m_optionsEnded = true;
        } else if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            m_result.help = true;
        } else if (argument == QLatin1String("--version") || argument == QLatin1String("-v")) {
            m_result.version = true;
        } else if (argument == screenshot) {
            takeScreenshot(m_next < m_arguments.size() ? m_arguments.at(m_next++) : QString());
        } else if (argument.startsWith(screenshot + QLatin1Char('='))) {
            takeScreenshot(argument.mid(screenshot.size() + 1));
        } else if (argument == QLatin1String("-session")) {
            // A session manager that starts the program again names the session it belonged to; there is nothing to
            // restore.
            ++m_next;
        } else {
            m_result.error = Texts::tr("lumora: unknown option '%1', see lumora --help").arg(displayPath(argument));
        }
    }

    void takeScreenshot(const QString &file)
    {
        if (file.isEmpty())
            m_result.error = Texts::tr("lumora: option '--screenshot' needs the name of a file, see lumora --help");
        else
            m_result.screenshot = pathOfArgument(file, m_currentFolder);
    }

    const QStringList &m_arguments;
    const QString &m_currentFolder;
    qsizetype m_next = 0;
    bool m_optionsEnded = false;
    QStringList m_paths;
    CommandLine m_result;
};

} // namespace

QString pathOfArgument(const QString &argument, const QString &currentFolder)
{
    if (isFileUri(argument)) {
        const QString path = pathFromFileUri(argument);
        if (!path.isEmpty())
            return absolutePath(path, currentFolder);
    }
    return absolutePath(argument, currentFolder);
}

CommandLine parseCommandLine(const QStringList &arguments, const QString &currentFolder)
{
    return ArgumentReader(arguments, currentFolder).read();
}

QString fileCommand(const QStringList &paths)
{
    QStringList parts;
    parts.reserve(paths.size());
    for (const QString &path : paths)
        parts.append(quoted(path));
    return parts.join(QLatin1Char(' '));
}

QStringList pathsOfCommand(const QString &command)
{
    QStringList parts = quotedParts(command);
    // A path typed without quotes loses its first and its last letter: quotes are expected and not looked for.
    if (parts.size() < 2)
        parts = {command.mid(1, qMax<qsizetype>(0, command.size() - 2))};
    QStringList paths;
    for (const QString &part : std::as_const(parts)) {
        if (!part.isEmpty())
            paths.append(resolved(part));
    }
    return paths;
}

QStringList argumentsOfCommand(const QString &command)
{
    if (command.startsWith(QLatin1Char('/')))
        return {command};
    QStringList arguments;
    for (const QString &path : pathsOfCommand(command))
        arguments.append(fileUri(path));
    return arguments;
}

QString helpText()
{
    return Texts::tr("Usage: lumora [OPTION]... [FILE|FOLDER|LIST]...\n"
                     "\n"
                     "Shows, orders and works on pictures and media files. Files and folders open in the\n"
                     "running program when there is one; several files of one start make one list.\n"
                     "\n"
                     "  FILE                 picture, sound or film, as a path or a file:// URI\n"
                     "  FOLDER               its media files come into the selection list\n"
                     "  LIST                 list file (.Lsl, .Lst), see lumora-list(5)\n"
                     "  /editor, --editor    start in the editor\n"
                     "  /folder, --folder    start in the Browse Folder Viewer\n"
                     "  --screenshot FILE    write the window as a PNG file once its picture stands, and end\n"
                     "  -h, --help           show this text and end\n"
                     "  -v, --version        show the version and end\n"
                     "  --                   whatever follows is a file or folder\n")
        + convertHelpText();
}

QString versionText()
{
    return QStringLiteral("lumora " LUMORA_VERSION "\n");
}
