#include "app/commandline.h"

#include "platform/filepath.h"

#include <QtTest>

/// Reads command lines as a start from the folder "/srv/me" gives them.
class tst_commandline : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void argumentsBecomeCommands_data();
    void argumentsBecomeCommands();
    void wrongOptionsAreOneLineOfError_data();
    void wrongOptionsAreOneLineOfError();
    void optionsThatEndAtOnce();
    void screenshotFileIsMadeAbsolute_data();
    void screenshotFileIsMadeAbsolute();
    void commandsGiveTheirPaths_data();
    void commandsGiveTheirPaths();
    void everyPathSurvivesTheWayThroughACommand_data();
    void everyPathSurvivesTheWayThroughACommand();
    void helpNamesEveryOption();
};

static CommandLine parsed(const QStringList &arguments)
{
    return parseCommandLine(arguments, QStringLiteral("/srv/me"));
}

void tst_commandline::argumentsBecomeCommands_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("commands");
    const auto row = [](const char *name, const QStringList &arguments, const QStringList &commands) {
        QTest::newRow(name) << arguments << commands;
    };
    const QString editor = QStringLiteral("/editor");
    const QString folder = QStringLiteral("/folder");
    row("no argument is one empty command", {}, {QString()});
    row("an empty argument is none", {QString()}, {QString()});
    row("a path is quoted", {QStringLiteral("/pics/a.jpg")}, {QStringLiteral("\"/pics/a.jpg\"")});
    row("a relative path starts in the current folder", {QStringLiteral("a b.jpg")},
        {QStringLiteral("\"/srv/me/a b.jpg\"")});
    row("dots on the way go", {QStringLiteral("../you/./a.jpg")}, {QStringLiteral("\"/srv/you/a.jpg\"")});
    row("several files are one command", {QStringLiteral("a.jpg"), QStringLiteral("/b.mp3")},
        {QStringLiteral("\"/srv/me/a.jpg\" \"/b.mp3\"")});
    row("a file URI is a path", {QStringLiteral("file:///pics/a%20b.jpg")}, {QStringLiteral("\"/pics/a b.jpg\"")});
    row("a quote in a name makes it a URI", {QStringLiteral("/a\"b.jpg")}, {QStringLiteral("\"file:///a%22b.jpg\"")});
    row("a line break in a name makes it a URI", {QStringLiteral("/a\nb.jpg")},
        {QStringLiteral("\"file:///a%0Ab.jpg\"")});
    row("a foreign byte in a name makes it a URI", {pathFromBytes("/a\xe4.jpg")},
        {QStringLiteral("\"file:///a%E4.jpg\"")});
    row("the editor switch", {editor}, {editor});
    row("the folder switch", {folder}, {folder});
    row("the long form of the editor switch", {QStringLiteral("--editor")}, {editor});
    row("the long form of the folder switch", {QStringLiteral("--folder")}, {folder});
    row("a switch twice acts once", {editor, QStringLiteral("--editor")}, {editor});
    row("only the exact word is the switch", {QStringLiteral("/editor/")}, {QStringLiteral("\"/editor/\"")});
    row("another case is a path", {QStringLiteral("/Editor")}, {QStringLiteral("\"/Editor\"")});
    row("switches come before files", {QStringLiteral("a.jpg"), editor}, {editor, QStringLiteral("\"/srv/me/a.jpg\"")});
    row("two hyphens end the options", {QStringLiteral("--"), QStringLiteral("--help"), editor},
        {QStringLiteral("\"/srv/me/--help\" \"/editor\"")});
    row("one hyphen is a file name", {QStringLiteral("-")}, {QStringLiteral("\"/srv/me/-\"")});
    row("the name of a session is passed over",
        {QStringLiteral("-session"), QStringLiteral("12_34"), QStringLiteral("/a.jpg")},
        {QStringLiteral("\"/a.jpg\"")});
}

void tst_commandline::argumentsBecomeCommands()
{
    QFETCH(QStringList, arguments);
    const CommandLine line = parsed(arguments);
    QTEST(line.commands, "commands");
    QCOMPARE(line.error, QString());
    QVERIFY(!line.help && !line.version && line.screenshot.isEmpty());
}

void tst_commandline::wrongOptionsAreOneLineOfError_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    QTest::newRow("an unknown option") << QStringList{QStringLiteral("--nonsense")} << QStringLiteral("'--nonsense'");
    QTest::newRow("a known option with a tail")
        << QStringList{QStringLiteral("--editors")} << QStringLiteral("'--editors'");
    QTest::newRow("an unknown letter") << QStringList{QStringLiteral("-x")} << QStringLiteral("'-x'");
    QTest::newRow("after a file") << QStringList{QStringLiteral("a.jpg"), QStringLiteral("-x")}
                                  << QStringLiteral("'-x'");
    QTest::newRow("screenshot without a file")
        << QStringList{QStringLiteral("--screenshot")} << QStringLiteral("'--screenshot'");
    QTest::newRow("screenshot with an empty file")
        << QStringList{QStringLiteral("--screenshot=")} << QStringLiteral("'--screenshot'");
}

void tst_commandline::wrongOptionsAreOneLineOfError()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const QString error = parsed(arguments).error;
    QVERIFY2(error.contains(named), qPrintable(error));
    QVERIFY(!error.contains(QLatin1Char('\n')));
}

void tst_commandline::optionsThatEndAtOnce()
{
    QVERIFY(parsed({QStringLiteral("--help")}).help);
    QVERIFY(parsed({QStringLiteral("-h")}).help);
    QVERIFY(parsed({QStringLiteral("a.jpg"), QStringLiteral("--version")}).version);
    QVERIFY(parsed({QStringLiteral("-v")}).version);
    QVERIFY(!parsed({QStringLiteral("--"), QStringLiteral("--version")}).version);
}

void tst_commandline::screenshotFileIsMadeAbsolute_data()
{
    QTest::addColumn<QStringList>("arguments");
    const QString option = QStringLiteral("--screenshot");
    QTest::newRow("as two arguments") << QStringList{option, QStringLiteral("shot.png"), QStringLiteral("a.jpg")};
    QTest::newRow("as one argument") << QStringList{QStringLiteral("--screenshot=shot.png"), QStringLiteral("a.jpg")};
    QTest::newRow("behind the file") << QStringList{QStringLiteral("a.jpg"), option, QStringLiteral("shot.png")};
}

void tst_commandline::screenshotFileIsMadeAbsolute()
{
    QFETCH(QStringList, arguments);
    const CommandLine line = parsed(arguments);
    QCOMPARE(line.screenshot, QStringLiteral("/srv/me/shot.png"));
    QCOMPARE(line.commands, QStringList{QStringLiteral("\"/srv/me/a.jpg\"")});
}

void tst_commandline::commandsGiveTheirPaths_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("paths");
    const auto row = [](const char *name, const char *command, const QStringList &paths) {
        QTest::newRow(name) << QString::fromLatin1(command) << paths;
    };
    const QStringList one{QStringLiteral("/a b.jpg")};
    row("one quoted path", "\"/a b.jpg\"", one);
    row("two quoted paths", "\"/a b.jpg\" \"/c.gif\"", one + QStringList{QStringLiteral("/c.gif")});
    row("without quotes the first and last letter go", "/pics/a.jpg", {QStringLiteral("pics/a.jp")});
    row("also when only one quote is there", "\"/a b.jpgx", one);
    row("a tail behind the quotes is no second part", "\"/a.jpg\" x", {QStringLiteral("/a.jpg\" ")});
    row("two blanks are not the form of several", "\"/a\"  \"/b\"", {QStringLiteral("/a\"  \"/b")});
    row("a URI is resolved", "\"file:///a%20b.jpg\"", one);
    row("a URI of another computer stays", "\"file://there/a.jpg\"", {QStringLiteral("file://there/a.jpg")});
    row("two letters leave nothing", "ab", {});
    row("one letter leaves nothing", "a", {});
    row("nothing gives nothing", "", {});
}

void tst_commandline::commandsGiveTheirPaths()
{
    QFETCH(QString, command);
    QTEST(pathsOfCommand(command), "paths");
}

void tst_commandline::everyPathSurvivesTheWayThroughACommand_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << QByteArray("/srv/me/a.jpg");
    QTest::newRow("blanks at both ends") << QByteArray("/ a .jpg ");
    QTest::newRow("quotes that look like two parts") << QByteArray("/a\" \"/b");
    QTest::newRow("line breaks") << QByteArray("/a\r\nb");
    QTest::newRow("per cent signs") << QByteArray("/100%25.jpg");
    QTest::newRow("what looks like a URI") << QByteArray("/file:/a%20b");
    QTest::newRow("outside the first plane") << QByteArray("/\xf0\x9f\x8c\xbb.jpg");
    QTest::newRow("bytes that are no UTF-8") << QByteArray("/caf\xe9\xff\x80.jpg");
    QTest::newRow("an encoded surrogate") << QByteArray("/\xed\xb2\x80.jpg");
}

void tst_commandline::everyPathSurvivesTheWayThroughACommand()
{
    QFETCH(QByteArray, bytes);
    const QString path = pathFromBytes(bytes);
    const QString other = QStringLiteral("/other.png");
    for (const QStringList &paths : {QStringList{path}, QStringList{path, other}, QStringList{other, path}}) {
        const CommandLine line = parsed(paths);
        QCOMPARE(line.commands.size(), 1);
        QCOMPARE(pathsOfCommand(line.commands.first()), paths);
        QCOMPARE(pathToBytes(pathsOfCommand(line.commands.first()).at(paths.indexOf(path))), bytes);
        const QStringList again = argumentsOfCommand(line.commands.first());
        QCOMPARE(QString::fromLatin1(again.join(QLatin1Char(' ')).toLatin1()), again.join(QLatin1Char(' ')));
        QCOMPARE(parsed(again).commands, line.commands);
    }
}

void tst_commandline::helpNamesEveryOption()
{
    for (const char *option : {"/editor", "--editor", "/folder", "--folder", "--screenshot", "--help", "--version"})
        QVERIFY2(helpText().contains(QLatin1String(option)), option);
    QVERIFY(versionText().startsWith(QStringLiteral("lumora 3.")));
}

QTEST_APPLESS_MAIN(tst_commandline)
#include "tst_commandline.moc"
