#include "platform/fileassociations.h"

#include "support/support.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QtTest>

#include <unistd.h>

namespace {
const QByteArray own(desktopEntryName);
const QByteArray entryText = "[Desktop Entry]\nType=Application\nName=Lumora\nExec=lumora %F\nTryExec=lumora\n"
                             "MimeType=image/jpeg;image/x-cut;image/vnd.zbrush.pcx;\nActions=editor;\n\n"
                             "[Desktop Action editor]\nName=Editor\nExec=lumora --editor\n";
const QByteArray mimeText =
    "<?xml version=\"1.0\"?>\n<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
    "<mime-type type=\"image/x-cut\"><glob pattern=\"*.cut\"/></mime-type></mime-info>\n";

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
}

/// Runs a tool of the desktop and gives what it prints.
QString output(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    return process.waitForFinished(30'000) ? QString::fromUtf8(process.readAll()).trimmed() : QStringLiteral("hangs");
}

bool isHere(const char *tool)
{
    return !QStandardPaths::findExecutable(QLatin1String(tool)).isEmpty();
}
}

class tst_fileassociations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void givingBackRestoresEveryByte_data();
    void givingBackRestoresEveryByte();
    void onlyLinesOfTheTypesChange();
    void whatTheUserGaveElsewhereStays();
    void anotherProgramsChoiceMeanwhileStays();
    void aListThatAnotherToolWroteAnewIsGivenBackByMeaning();
    void theEarlierOwnerOfASecondClaimCounts();
    void aLinkIsWrittenThrough();
    void aListThatCannotBeWrittenStays_data();
    void aListThatCannotBeWrittenStays();
    void aMemoryOfRubbishIsNone();
    void aLargeListOfRubbishStays();
    void aPortableCopyBringsItsFilesAlong();
    void anInstalledProgramBringsNothingAlong();
    void othersFilesOfTheNamesStay();
    void anEntryNamesAnyPath();
    void theDesktopsToolsAgree();

private:
    Result<QList<ToolCommand>> set(
        const QList<QByteArray> &wanted, const QString &program = QStringLiteral("/opt/lumora"));
    QString config(const char *name) const { return m_home->path() + QStringLiteral(".config/") + QLatin1String(name); }
    QString data(const char *name) const
    {
        return m_home->path() + QStringLiteral(".local/share/") + QLatin1String(name);
    }
    QByteArray list() const { return bytesOf(config("mimeapps.list")); }
    void writeList(const QByteArray &text) { m_home->write(QStringLiteral(".config/mimeapps.list"), text); }
    void install() { m_home->write(QStringLiteral("system/applications/org.lumora.Lumora.desktop"), entryText); }

    std::unique_ptr<TemporaryHome> m_home;
};

void tst_fileassociations::init()
{
    m_home = std::make_unique<TemporaryHome>();
    qputenv("XDG_DATA_DIRS", (m_home->path() + QStringLiteral("system:/usr/share")).toUtf8());
    qunsetenv("XDG_CURRENT_DESKTOP");
}

Result<QList<ToolCommand>> tst_fileassociations::set(const QList<QByteArray> &wanted, const QString &program)
{
    QVector<DesktopType> types;
    for (const char *type : {"image/jpeg", "image/png", "image/x-cut", "image/vnd.zbrush.pcx"})
        types.append({type, wanted.contains(type)});
    return setDesktopTypes(types, {entryText, mimeText, "<svg/>", program});
}

void tst_fileassociations::givingBackRestoresEveryByte_data()
{
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *sentence, const QByteArray &text) { QTest::newRow(sentence) << text; };
    row("no list", "none");
    row("an empty list", "");
    row("no group", "[Added Associations]\nimage/jpeg=gimp.desktop;\n");
    row("no group and an open last line", "[Added Associations]\nimage/jpeg=gimp.desktop;");
    row("an owner", "[Default Applications]\nimage/jpeg=gimp.desktop\nimage/gif=eog.desktop;\n");
    row("several owners", "[Default Applications]\nimage/jpeg=gimp.desktop;eog.desktop;\n");
    row("blanks", "[Default Applications]\n  image/jpeg =  gimp.desktop ; eog.desktop\t\n");
    row("an owner of nothing", "[Default Applications]\nimage/jpeg=\n");
    row("ours, but not in front", "[Default Applications]\nimage/jpeg=gimp.desktop;" + own + ";eog.desktop;\n");
    row("other groups behind",
        "[Default Applications]\nimage/gif=a.desktop\n\n# note\n\n[Removed Associations]\nimage/jpeg=x;\n");
    row("line ends of another system", "[Default Applications]\r\nimage/jpeg=gimp.desktop\r\n\r\n[X]\r\na=b\r\n");
    row("mixed line ends", "# a\n[Default Applications]\r\nimage/png=gimp.desktop\n");
    row("an open last line", "[Default Applications]\nimage/gif=a.desktop\nimage/png=gimp.desktop");
    row("an open line of another system", "[Default Applications]\r\nimage/gif=a.desktop");
    row("the group alone, open", "[Default Applications]");
    row("groups and types twice",
        "[Default Applications]\nimage/jpeg=a.desktop\nimage/jpeg=b.desktop;\n[X]\nimage/jpeg=c\n"
        "[Default Applications]\nimage/jpeg=d.desktop\nimage/png=e.desktop\n");
    row("bytes of any kind",
        QByteArray("\xff\xfe[Default\n\x00=\n[Default Applications]\nimage/jpeg=\xe4\xf6.desktop;\x01\n=\n[\n", 64));
    row("blank lines at the end", "[Default Applications]\n\n\n\n");
}

void tst_fileassociations::givingBackRestoresEveryByte()
{
    QFETCH(QByteArray, text);
    install();
    if (text != "none")
        writeList(text);
    QVERIFY(set({"image/jpeg", "image/png"}));
    const QByteArray claimed = list();
    QVERIFY(claimed.contains("image/png=" + own) && claimed.contains(own));
    QVERIFY(set({"image/jpeg", "image/png"}));
    QCOMPARE(list(), claimed);
    QVERIFY(set({"image/png", "image/x-cut"})); // one goes back, another comes
    QVERIFY(set({"image/x-cut"}));
    QVERIFY(set({}));
    QCOMPARE(list(), text);
    QVERIFY(!QFile::exists(config("lumora/associations.json")));
}

void tst_fileassociations::onlyLinesOfTheTypesChange()
{
    install();
    writeList(
        "# mine\n[Default Applications]\nimage/jpeg=gimp.desktop\nimage/jpeg-x=a.desktop\n\n[Added Associations]\n"
        "image/jpeg=eog.desktop;\n");
    QVERIFY(set({"image/jpeg", "image/x-cut"}));
    QCOMPARE(list(),
        "# mine\n[Default Applications]\nimage/jpeg=" + own + ";gimp.desktop\nimage/jpeg-x=a.desktop\nimage/x-cut="
            + own + "\n\n[Added Associations]\nimage/jpeg=eog.desktop;\n");
}

void tst_fileassociations::whatTheUserGaveElsewhereStays()
{
    install();
    const QByteArray text = "[Default Applications]\nimage/jpeg=" + own + ";\nimage/png=gimp.desktop\n";
    writeList(text);
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(set({}));
    QCOMPARE(list(), text);
}

void tst_fileassociations::anotherProgramsChoiceMeanwhileStays()
{
    install();
    QVERIFY(set({"image/jpeg", "image/png"}));
    writeList("[Default Applications]\nimage/jpeg=eog.desktop;" + own + "\n");
    QVERIFY(set({}));
    QCOMPARE(list(), "[Default Applications]\nimage/jpeg=eog.desktop;" + own + "\n");
}

void tst_fileassociations::aListThatAnotherToolWroteAnewIsGivenBackByMeaning()
{
    install();
    writeList("[Default Applications]\nimage/jpeg=gimp.desktop\nimage/png=eog.desktop\n");
    QVERIFY(set({"image/jpeg", "image/png", "image/x-cut"}));
    writeList("[Default Applications]\nimage/x-cut=" + own + ";\nimage/gif=new.desktop\nimage/jpeg=" + own
        + ";gimp.desktop;\nimage/png=" + own + "\n");
    QVERIFY(set({}));
    QCOMPARE(
        list(), "[Default Applications]\nimage/gif=new.desktop\nimage/jpeg=gimp.desktop;\nimage/png=eog.desktop\n");
}

void tst_fileassociations::theEarlierOwnerOfASecondClaimCounts()
{
    install();
    writeList("[Default Applications]\nimage/jpeg=gimp.desktop\n");
    QVERIFY(set({"image/jpeg"}));
    writeList("[Default Applications]\nimage/jpeg=eog.desktop\n"); // the user's choice since
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(set({}));
    QCOMPARE(list(), "[Default Applications]\nimage/jpeg=eog.desktop\n");
}

void tst_fileassociations::aLinkIsWrittenThrough()
{
    install();
    const QByteArray text = "[Default Applications]\nimage/jpeg=gimp.desktop\n";
    const QString target = m_home->write(QStringLiteral("dotfiles/mimeapps"), text);
    QVERIFY(QFile::link(target, config("mimeapps.list")));
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(QFileInfo(config("mimeapps.list")).isSymLink());
    QVERIFY(bytesOf(target).contains(own));
    QVERIFY(set({"image/jpeg", "image/png"}));
    QCOMPARE(bytesOf(config("lumora/mimeapps.list.before")), text); // of before the first
    QVERIFY(set({}));
    QCOMPARE(bytesOf(target), text);
    QVERIFY(QFile::remove(target)); // a link that leads nowhere holds nothing
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(bytesOf(target).contains(own));
    QVERIFY(set({}));
    QVERIFY(QFileInfo(config("mimeapps.list")).isSymLink());
}

void tst_fileassociations::aListThatCannotBeWrittenStays_data()
{
    QTest::addColumn<QString>("obstacle");
    QTest::newRow("a folder is in its place") << QStringLiteral("folder");
    QTest::newRow("it is protected") << QStringLiteral("protected");
    QTest::newRow("the memory cannot be kept") << QStringLiteral("memory");
    QTest::newRow("no copy can be made") << QStringLiteral("copy");
}

void tst_fileassociations::aListThatCannotBeWrittenStays()
{
    QFETCH(QString, obstacle);
    const QString path = config("mimeapps.list");
    const QByteArray text = "[Default Applications]\nimage/jpeg=gimp.desktop\n";
    if (obstacle == u"folder")
        QVERIFY(QDir().mkdir(path));
    else
        writeList(text);
    if (obstacle == u"protected") {
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        if (::access(qPrintable(path), W_OK) == 0)
            QSKIP("nothing is protected from this user");
    }
    if (obstacle == u"memory")
        QVERIFY(QDir().mkpath(config("lumora/associations.json")));
    if (obstacle == u"copy")
        QVERIFY(QDir().mkpath(config("lumora/mimeapps.list.before")));
    const Result<QList<ToolCommand>> result = set({"image/jpeg"});
    QVERIFY(!result && !result.reason().isEmpty());
    if (obstacle != u"folder")
        QCOMPARE(list(), text);
    QVERIFY(!QFile::exists(data("applications/org.lumora.Lumora.desktop"))
        || bytesOf(config("lumora/associations.json")).contains("org.lumora.Lumora.desktop"));
}

void tst_fileassociations::aMemoryOfRubbishIsNone()
{
    install();
    const QByteArray text = "[Default Applications]\nimage/jpeg=gimp.desktop\n";
    for (const char *rubbish : {"", "{", "[1,2]", "{\"types\":[],\"files\":{},\"madeGroup\":7}",
             "{\"types\":{\"image/png\":{\"before\":[[\"x\"],4,\"a\\n[b]\"]},\"\":3},\"files\":[\"../../../x\",5]}"}) {
        writeList(text);
        const QString victim = m_home->write(QStringLiteral("x"), "here");
        m_home->write(QStringLiteral(".config/lumora/associations.json"), rubbish);
        QVERIFY(set({"image/jpeg"}));
        QVERIFY(set({}));
        QCOMPARE(list(), text);
        QCOMPARE(bytesOf(victim), "here");
    }
}

void tst_fileassociations::aLargeListOfRubbishStays()
{
    install();
    QByteArray text = "[Default Applications]\n";
    quint32 random = 1;
    while (text.size() < 10'000'000) {
        random = random * 1664525 + 1013904223;
        text.append(char(random >> 24));
    }
    writeList(text);
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(list().contains("image/jpeg=" + own));
    QVERIFY(set({}));
    QVERIFY(list() == text);
    writeList(text + text); // too large to be a list
    QVERIFY(!set({"image/jpeg"}));
    QVERIFY(list() == text + text);
}

void tst_fileassociations::aPortableCopyBringsItsFilesAlong()
{
    const QString program = m_home->write(QStringLiteral("my tools/lumora"), "#!/bin/sh\n");
    Result<QList<ToolCommand>> result = set({"image/x-cut"}, program);
    QVERIFY(result);
    QCOMPARE(result->size(), 2);
    const QString entry = data("applications/org.lumora.Lumora.desktop");
    const QByteArray text = bytesOf(entry);
    QVERIFY(text.contains("\nExec=\"" + program.toUtf8() + "\" %F\nTryExec=" + program.toUtf8() + "\n"));
    QVERIFY(text.contains("\nExec=\"" + program.toUtf8() + "\" --editor\n"));
    QCOMPARE(bytesOf(data("mime/packages/org.lumora.Lumora.xml")), mimeText);
    if (isHere("desktop-file-validate"))
        QCOMPARE(output(QStringLiteral("desktop-file-validate"), {entry}), QString());

    result = set({"image/x-cut", "image/png"}, program);
    QVERIFY(result && result->isEmpty());
    const QString moved = m_home->write(QStringLiteral("moved/lumora"), "#!/bin/sh\n");
    QVERIFY(set({"image/x-cut"}, moved));
    QVERIFY(bytesOf(entry).contains(moved.toUtf8()));
    result = set({}, moved);
    QVERIFY(result);
    QCOMPARE(result->size(), 2);
    for (const char *file : {"applications/org.lumora.Lumora.desktop", "mime/packages/org.lumora.Lumora.xml",
             "icons/hicolor/scalable/apps/lumora.svg"})
        QVERIFY2(!QFile::exists(data(file)), file);
    QVERIFY(!QFile::exists(config("mimeapps.list")) && !QFile::exists(config("lumora/associations.json")));
}

void tst_fileassociations::anInstalledProgramBringsNothingAlong()
{
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(QFile::exists(data("applications/org.lumora.Lumora.desktop")));
    install(); // the package comes later, and the copy's entry would hide its own
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(!QFile::exists(data("applications/org.lumora.Lumora.desktop")));
    QVERIFY(list().contains(own));
}

void tst_fileassociations::othersFilesOfTheNamesStay()
{
    const QString entry =
        m_home->write(QStringLiteral(".local/share/applications/org.lumora.Lumora.desktop"), "theirs");
    QVERIFY(set({"image/jpeg"}));
    QVERIFY(set({}));
    QCOMPARE(bytesOf(entry), "theirs");
}

void tst_fileassociations::anEntryNamesAnyPath()
{
    QVERIFY(set({"image/jpeg"}, QStringLiteral("/a \"b\" $c `d` \\e 100%")));
    const QByteArray text = bytesOf(data("applications/org.lumora.Lumora.desktop"));
    QVERIFY(text.contains(R"(Exec="/a \\"b\\" \\$c \\`d\\` \\\\e 100%%" %F)"));
    QVERIFY(text.contains(R"(TryExec=/a "b" $c `d` \\e 100%)"));
    // One that no entry can name is a failure, and what was there stays.
    QVERIFY(set({}));
    for (const QString &program : {QStringLiteral("/a\nb"), QStringLiteral("/") + QChar(0xdcff), QString()}) {
        QVERIFY(!set({"image/jpeg"}, program));
        QVERIFY(!QFile::exists(config("mimeapps.list")));
    }
}

void tst_fileassociations::theDesktopsToolsAgree()
{
    if (!isHere("gio") || !isHere("xdg-mime") || !isHere("update-mime-database"))
        QSKIP("gio, xdg-mime or update-mime-database is not installed");
    m_home->write(QStringLiteral("system/applications/other.desktop"),
        "[Desktop Entry]\nType=Application\nName=O\nExec=true %F\nMimeType=image/jpeg;image/vnd.zbrush.pcx;\n");
    writeList("[Default Applications]\nimage/jpeg=other.desktop\n");
    const QStringList types = {QStringLiteral("image/jpeg"), QStringLiteral("image/vnd.zbrush.pcx"),
        QStringLiteral("image/x-pcx"), QStringLiteral("image/x-cut")};
    const auto answers = [&] {
        QStringList all;
        for (const QString &type : types)
            all.append(output(QStringLiteral("gio"), {QStringLiteral("mime"), type}).section(QLatin1Char('\n'), 0, 0)
                + output(QStringLiteral("xdg-mime"), {QStringLiteral("query"), QStringLiteral("default"), type}));
        return all;
    };
    const QString cut = m_home->write(QStringLiteral("a.cut"), "cut");
    const QStringList typeOfCut = {
        QStringLiteral("info"), QStringLiteral("-a"), QStringLiteral("standard::content-type"), cut};
    const QStringList before = answers();
    const QString program = m_home->write(QStringLiteral("bin/lumora"), "#!/bin/sh\n");
    QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner));

    const auto run = [&](const QList<QByteArray> &wanted) {
        const Result<QList<ToolCommand>> result = set(wanted, program);
        QVERIFY2(result, qPrintable(result.reason()));
        for (const ToolCommand &command : *result)
            QCOMPARE(output(command.program, command.arguments), QString());
    };
    run({"image/jpeg", "image/x-cut", "image/vnd.zbrush.pcx"});
    for (const QString &answer : answers())
        QVERIFY2(answer.contains(QLatin1String(desktopEntryName)), qPrintable(answer));
    QVERIFY(output(QStringLiteral("gio"), typeOfCut).contains(QStringLiteral("image/x-cut")));
    run({});
    QCOMPARE(answers(), before);
    QVERIFY(!output(QStringLiteral("gio"), typeOfCut).contains(QStringLiteral("image/x-cut")));
}

QTEST_GUILESS_MAIN(tst_fileassociations)
#include "tst_fileassociations.moc"
