#pragma once

#include <QByteArray>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <span>

/// The commands of lumora-dev. Each gets its arguments without the command's own word and returns the exit status: 0, 1
/// for something that failed, 2 for a wrong call.
namespace dev {

struct Command
{
    const char *name;
    const char *arguments; ///< as --help shows them
    const char *meaning;
    /// What it needs of Qt before it runs.
    enum Needs { Pictures, Windows } needs;
    int (*run)(const QStringList &arguments);
};
std::span<const Command> commands();

int shot(const QStringList &arguments);
int controls(const QStringList &arguments);
int decodeFiles(const QStringList &arguments);
int probeFiles(const QStringList &arguments);
int encodeFile(const QStringList &arguments);
int formats(const QStringList &arguments);
int playFiles(const QStringList &arguments);
int meta(const QStringList &arguments);
int list(const QStringList &arguments);
int settings(const QStringList &arguments);

/// One line of output: the cells separated by tabs; tabs, line breaks and backslashes inside a cell become \t, \n, \\.
void printRow(const QStringList &cells);
/// One line on stderr, with the program's name in front. Gives 1.
int fail(const QString &text);
/// The same with a hint at --help. Gives 2.
int wrongCall(const QString &text);
/// Reads options and the rest; says what was wrong and gives false otherwise.
bool parse(QCommandLineParser &parser, const QStringList &arguments, int fewest, int most);
/// "640x480"; an invalid size for anything else.
QSize sizeOf(const QString &text);

}
