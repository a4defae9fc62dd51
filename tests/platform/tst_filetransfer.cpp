#include "platform/filetransfertest.h"
#include "support/otherdisk.h"

/// Files are copied, removed and renamed whole or not at all.
class tst_filetransfer : public FileTransferTest
{
    Q_OBJECT
private Q_SLOTS:
    void init() { makeFolder(); }
    void cleanup() { m_folder.reset(); }
    void aCopyIsTheFileAgain_data();
    void aCopyIsTheFileAgain();
    void aTakenNameIsReplacedOnlyWhenAskedFor();
    void aLinkedTargetStaysALink();
    void oneFileUnderTwoNamesIsNotTouched_data();
    void oneFileUnderTwoNamesIsNotTouched();
    void onlyFilesAreTaken_data();
    void onlyFilesAreTaken();
    void accessErrorsAreToldFromOthers();
    void aNewNameTakesNobodysPlace();
};

void tst_filetransfer::aCopyIsTheFileAgain_data()
{
    QTest::addColumn<int>("bytes");
    QTest::newRow("an empty file") << 0;
    QTest::newRow("a small one") << 1000;
    QTest::newRow("one of several portions") << (9 << 20) + 17;
}

void tst_filetransfer::aCopyIsTheFileAgain()
{
    QFETCH(int, bytes);
    const QByteArray data = noise(bytes);
    const QString source = writeRich(data);
    QVERIFY(copyFile(source, path("copy"), false));
    verifyRich(path("copy"), data);
    const OtherDisk disk;
    if (disk.isThere()) {
        QVERIFY(copyFile(source, disk.path() + QStringLiteral("copy"), false));
        verifyRich(disk.path() + QStringLiteral("copy"), data);
    }
    // A hole takes no room in the copy either.
    QCOMPARE(::truncate(pathToBytes(source).constData(), bytes + (40 << 20)), 0);
    QVERIFY(copyFile(source, path("sparse"), false));
    QCOMPARE(contents(path("sparse")), data + QByteArray(40 << 20, '\0'));
    QVERIFY(stateOf(path("sparse")).st_blocks * 512 < bytes + (1 << 20));
}

void tst_filetransfer::aTakenNameIsReplacedOnlyWhenAskedFor()
{
    const QString source = write("new", "new");
    const QString target = write("old", "old and longer");
    const ino_t before = stateOf(target).st_ino;
    QCOMPARE(copyFile(source, target, false).kind, Kind::Failed);
    QCOMPARE(contents(target), QByteArray("old and longer"));
    QVERIFY(copyFile(source, target, true));
    QCOMPARE(contents(target), QByteArray("new"));
    QVERIFY2(stateOf(target).st_ino != before, "written into the old file, which a kill would have torn");
    QCOMPARE(allNames(m_folder->path()), QStringList({QStringLiteral("new"), QStringLiteral("old")}));
}

void tst_filetransfer::aLinkedTargetStaysALink()
{
    const QString source = write("new", "new");
    write("real", "old");
    QVERIFY(QFile::link(QStringLiteral("real"), path("link")));
    QVERIFY(QFile::link(QStringLiteral("nowhere"), path("dead")));
    QVERIFY(copyFile(source, path("link"), true));
    QVERIFY(S_ISLNK(stateOf(path("link")).st_mode));
    QCOMPARE(contents(path("real")), QByteArray("new"));
    QCOMPARE(copyFile(source, path("dead"), true).kind, Kind::Failed);
    QVERIFY(!QFileInfo::exists(path("nowhere")));
    // A move takes the name itself.
    QCOMPARE(moved({{source, path("link")}}), QStringList(QStringLiteral("0 done")));
    QVERIFY(S_ISREG(stateOf(path("link")).st_mode));
}

void tst_filetransfer::oneFileUnderTwoNamesIsNotTouched_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    const auto row = [](const char *name, const char *source, const char *target) {
        QTest::newRow(name) << QString::fromLatin1(source) << QString::fromLatin1(target);
    };
    row("the same name", "folder/a", "folder/a");
    row("the same name by another way", "folder/a", "folder/../folder//a");
    row("through a linked folder", "folder/a", "alias/a");
    row("a second name", "folder/a", "hard");
    row("a link to the source", "folder/a", "link");
    row("the target through a link", "link", "folder/a");
    row("two links to one file", "link", "alias/link2");
}

void tst_filetransfer::oneFileUnderTwoNamesIsNotTouched()
{
    QFETCH(QString, source);
    QFETCH(QString, target);
    const QString file = write("folder/a", "the only one");
    QCOMPARE(::link(pathToBytes(file).constData(), pathToBytes(path("hard")).constData()), 0);
    QVERIFY(QFile::link(file, path("link")) && QFile::link(file, path("folder/link2")));
    QVERIFY(QFile::link(path("folder"), path("alias")));
    const QString from = m_folder->path() + QLatin1Char('/') + source;
    const QString to = m_folder->path() + QLatin1Char('/') + target;
    QCOMPARE(copyFile(from, to, true).kind, Kind::Failed);
    QCOMPARE(moved({{from, to}}), QStringList(QStringLiteral("0 failed")));
    QCOMPARE(contents(file), QByteArray("the only one"));
    QCOMPARE(stateOf(file).st_nlink, nlink_t(2));
    QCOMPARE(allNames(m_folder->path()).join(QLatin1Char(' ')), QStringLiteral("alias folder hard link"));
    QCOMPARE(allNames(path("folder")).join(QLatin1Char(' ')), QStringLiteral("a link2"));
}

void tst_filetransfer::onlyFilesAreTaken_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"folder", "folder/", "pipe", "missing", "", "folder/.."})
        QTest::newRow(qPrintable(QStringLiteral("\"%1\"").arg(QLatin1String(name)))) << QString::fromLatin1(name);
}

void tst_filetransfer::onlyFilesAreTaken()
{
    QFETCH(QString, name);
    write("folder/inside", "kept");
    const QString good = write("good", "kept");
    QCOMPARE(::mkfifo(pathToBytes(path("pipe")).constData(), 0600), 0);
    const QString odd = name.isEmpty() ? QString() : m_folder->path() + QLatin1Char('/') + name;
    QVERIFY(!copyFile(odd, path("copy"), true));
    QVERIFY(!moved({{odd, path("moved")}}).contains(QStringLiteral("0 done")));
    QVERIFY(!removeFile(odd));
    QVERIFY(!renameFile(odd, path("renamed")));
    if (name != QLatin1String("missing"))
        QVERIFY(!copyFile(good, odd, true));
    QCOMPARE(allNames(m_folder->path()).join(QLatin1Char(' ')), QStringLiteral("folder good pipe"));
    QCOMPARE(contents(path("folder/inside")), QByteArray("kept"));
}

void tst_filetransfer::accessErrorsAreToldFromOthers()
{
    const QString file = write("folder/file", "x", 0666);
    const QString secret = write("folder/secret", "x", 0000);
    const QString kept = write("open/protected", "x", 0444);
    ::chmod(pathToBytes(path("open")).constData(), 0777);
    {
        const OrdinaryUser user;
        QCOMPARE(copyFile(secret, path("open/copy"), true).kind, Kind::AccessError);
        QCOMPARE(copyFile(file, path("folder/copy"), true).kind, Kind::AccessError);
        QCOMPARE(copyFile(file, kept, true).kind, Kind::AccessError);
        QCOMPARE(removeFile(kept).kind, Kind::AccessError);
        QCOMPARE(removeFile(file).kind, Kind::AccessError);
        QCOMPARE(moved({{file, kept}}), QStringList(QStringLiteral("0 access")));
    }
    QCOMPARE(copyFile(file, path("open"), true).kind, Kind::AccessError);
    QCOMPARE(copyFile(path("none"), path("copy"), true).kind, Kind::Failed);
    QCOMPARE(copyFile(file, path("none/copy"), true).kind, Kind::Failed);
    QCOMPARE(removeFile(path("none")).kind, Kind::Failed);
    QCOMPARE(allNames(path("open")), QStringList(QStringLiteral("protected")));
    QCOMPARE(allNames(path("folder")).size(), qsizetype(2));
}

void tst_filetransfer::aNewNameTakesNobodysPlace()
{
    const QString file = write("a", "mine");
    write("b", "another's");
    QVERIFY(QFile::link(QStringLiteral("nowhere"), path("dead")));
    for (const char *name : {"b", "dead", "none/c"})
        QVERIFY2(!renameFile(file, path(name)), name);
    QCOMPARE(contents(path("b")), QByteArray("another's"));
    QVERIFY(renameFile(file, path("A")));
    QVERIFY(renameFile(path("A"), path("A")));
    QCOMPARE(contents(path("A")), QByteArray("mine"));
    QVERIFY(!FileExists(file));
}

QTEST_GUILESS_MAIN(tst_filetransfer)
#include "tst_filetransfer.moc"
