// lumora-dev: the developers' command line. What each command prints is described in tools/README.md and stays as it
// is, because tests and scripts read it.

#include "devcommands.h"

#include "app/translations.h"
#include "engine/isolation.h"
#include "platform/filepath.h"
#include "ui/icons.h"

#include <QApplication>
#include <QSize>
#include <QTemporaryDir>

#include <cstdio>

namespace dev {

std::span<const Command> commands()
{
    // clang-format off
    static constexpr Command rows[] = {
        {"shot", "WINDOW OUT.png [--dark] [--size WxH] [FILE...]", "shows a window and takes its picture", Command::Windows, shot},
        {"controls", "WINDOW [FILE...]", "lists the controls of a window", Command::Windows, controls},
        {"decode", "FILE... [--target WxH] [--page N] [--png OUT.png] [--in-process]", "decodes pictures and says how long it took", Command::Pictures, decodeFiles},
        {"probe", "FILE...", "reads the headers of pictures", Command::Pictures, probeFiles},
        {"encode", "IN BATCHINDEX OUT [--quality N] [--diffuse]", "writes a picture as batch conversion would", Command::Pictures, encodeFile},
        {"formats", "", "lists the codecs", Command::Pictures, formats},
        {"meta", "FILE...", "shows the texts and the raw blocks that picture files carry", Command::Pictures, meta},
        {"play", "FILE... [--silent]", "plays files to their end and says when that came", Command::Pictures, playFiles},
        {"list", "FILE.Lsl", "shows what a list file holds", Command::Pictures, list},
        {"settings", "", "lists the stored settings", Command::Pictures, settings},
    };
    // clang-format on
    return rows;
}

void printRow(const QStringList &cells)
{
    QByteArray line;
    for (const QString &cell : cells) {
        QByteArray bytes = pathToBytes(cell);
        bytes.replace('\\', "\\\\").replace('\t', "\\t").replace('\n', "\\n").replace('\r', "\\r");
        line += bytes + '\t';
    }
    line.back() = '\n';
    std::fwrite(line.constData(), 1, static_cast<std::size_t>(line.size()), stdout);
}

int fail(const QString &text)
{
    std::fprintf(stderr, "lumora-dev: %s\n", displayPath(text).toUtf8().constData());
    return 1;
}

int wrongCall(const QString &text)
{
    fail(text + QStringLiteral("; see lumora-dev --help"));
    return 2;
}

bool parse(QCommandLineParser &parser, const QStringList &arguments, int fewest, int most)
{
    // The parser takes the first text for the program's name.
    if (!parser.parse(QStringList(QStringLiteral("lumora-dev")) + arguments)) {
        wrongCall(parser.errorText());
        return false;
    }
    const qsizetype count = parser.positionalArguments().size();
    if (count < fewest || (most >= 0 && count > most)) {
        wrongCall(count < fewest ? QStringLiteral("something is missing") : QStringLiteral("too many arguments"));
        return false;
    }
    return true;
}

QSize sizeOf(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('x'));
    if (parts.size() != 2)
        return {};
    bool widthIsNumber = false, heightIsNumber = false;
    const QSize size(parts.at(0).toInt(&widthIsNumber), parts.at(1).toInt(&heightIsNumber));
    const bool sane = widthIsNumber && heightIsNumber && size.width() > 0 && size.height() > 0 && size.width() <= 16384
        && size.height() <= 16384;
    return sane ? size : QSize();
}

}

namespace {

void printHelp()
{
    std::printf("Usage: lumora-dev COMMAND [ARGUMENTS]\n\n");
    for (const dev::Command &command : dev::commands())
        std::printf("  %s %s\n      %s\n", command.name, command.arguments, command.meaning);
    std::printf(
        "\nWindows are shown with the settings of a new user. Exit status: 0, 1 for a failure, 2 for a wrong call.\n");
}

/// A home of its own for windows, so that nothing of the user's is read or written.
void useFreshHome(const QTemporaryDir &home)
{
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
             "XDG_RUNTIME_DIR", "LUMORA_APP_FOLDER"})
        qputenv(variable, pathToBytes(home.path()));
}

int runCommand(const dev::Command &command, const QStringList &arguments, int argc, char **argv)
{
    const bool hasDisplay = !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && (!hasDisplay || command.needs == dev::Command::Pictures))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (command.needs == dev::Command::Pictures) {
        const QGuiApplication application(argc, argv);
        return command.run(arguments);
    }
    startDecoderProcesses();
    const QTemporaryDir home;
    if (!home.isValid())
        return dev::fail(QStringLiteral("no temporary folder could be made"));
    useFreshHome(home);
    const QApplication application(argc, argv);
    installTranslations();
    installIconThemes();
    return command.run(arguments);
}

}

int main(int argc, char **argv)
{
    if (argc < 2)
        return dev::wrongCall(QStringLiteral("no command"));
    const QByteArray word(argv[1]);
    if (word == "--help" || word == "-h" || word == "help") {
        printHelp();
        return 0;
    }
    QStringList arguments;
    for (int i = 2; i < argc; ++i)
        arguments.append(pathFromBytes(argv[i]));
    // Qt's own options (-platform, -style ...) are not taken from a developer's arguments: they may be file names.
    int count = 1;
    for (const dev::Command &command : dev::commands()) {
        if (word != command.name)
            continue;
        const int status = runCommand(command, arguments, count, argv);
        stopDecoderProcesses();
        return status;
    }
    return dev::wrongCall(QStringLiteral("there is no command %1").arg(pathFromBytes(word)));
}
