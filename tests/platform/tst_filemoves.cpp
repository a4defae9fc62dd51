#include "platform/filetransfertest.h"
#include "support/otherdisk.h"

/// Files are moved whole or not at all, within a disk and to another one.
class tst_filemoves : public FileTransferTest
{
    Q_OBJECT
private Q_SLOTS:
    void init() { makeFolder(); }
    void cleanup() { m_folder.reset(); }
    void aMoveKeepsEverything_data();
    void aMoveKeepsEverything();
    void aMovedLinkLeadsToTheSameFile();
    void aProtectedSourceIsCopiedOnceAndRemovedWhenItMayBe();
    void severalMovesActAsOneAfterTheOther();
};

void tst_filemoves::aMoveKeepsEverything_data()
{
    QTest::addColumn<bool>("acrossDisks");
    QTest::addColumn<bool>("taken");
    QTest::newRow("within a disk, to a new name") << false << false;
    QTest::newRow("within a disk, over a file") << false << true;
    QTest::newRow("to another disk, to a new name") << true << false;
    QTest::newRow("to another disk, over a file") << true << true;
}

void tst_filemoves::aMoveKeepsEverything()
{
    QFETCH(bool, acrossDisks);
    QFETCH(bool, taken);
    const OtherDisk disk;
    if (acrossDisks && !disk.isThere())
        QSKIP("needs a second file system");
    const QByteArray data = noise(5 << 20);
    const QString source = writeRich(data);
    const ino_t inode = stateOf(source).st_ino;
    const QString target = (acrossDisks ? disk.path() : path("")) + QStringLiteral("target");
    if (taken)
        QVERIFY(writeFileAtomically(target, "old"));
    QCOMPARE(moved({{source, target}}), QStringList(QStringLiteral("0 done")));
    verifyRich(target, data);
    QVERIFY(!FileExists(source));
    QCOMPARE(stateOf(target).st_ino == inode, !acrossDisks);
    QCOMPARE(allNames(SplitFilePath(target).folder), QStringList(QStringLiteral("target")));
}

void tst_filemoves::aMovedLinkLeadsToTheSameFile()
{
    write("a/real", "seen");
    write("b/other", "x");
    const OtherDisk disk;
    for (const QString &folder : {path("b/"), disk.path()}) {
        if (folder.isEmpty())
            continue;
        QVERIFY(QFile::link(QStringLiteral("real"), path("a/link")));
        QVERIFY(QFile::link(path("a/real"), path("a/whole")));
        QCOMPARE(moved({{path("a/link"), folder + QStringLiteral("link")},
                     {path("a/whole"), folder + QStringLiteral("whole")}}),
            QStringList({QStringLiteral("0 done"), QStringLiteral("1 done")}));
        for (const char *name : {"link", "whole"}) {
            QVERIFY(S_ISLNK(stateOf(folder + QLatin1String(name)).st_mode));
            QCOMPARE(contents(folder + QLatin1String(name)), QByteArray("seen"));
        }
        QCOMPARE(allNames(path("a")), QStringList(QStringLiteral("real")));
    }
}

void tst_filemoves::aProtectedSourceIsCopiedOnceAndRemovedWhenItMayBe()
{
    const QString first = write("first", "1", 0666);
    const QString source = write("protected", "2", 0444);
    const QString last = write("last", "3", 0666);
    QDir().mkpath(path("to"));
    ::chmod(pathToBytes(path("to")).constData(), 0777);
    const QVector<MoveOrder> orders = {
        {first, path("to/first")}, {source, path("to/protected")}, {last, path("to/last")}};
    if (::geteuid() == 0) {
        for (const QString &file : {first, source, last})
            QCOMPARE(::chown(pathToBytes(file).constData(), 65534, 65534), 0);
    }
    const OrdinaryUser user;
    QCOMPARE(moved(orders), QStringList({QStringLiteral("0 done"), QStringLiteral("1 access")}));
    QCOMPARE(allNames(path("to")).join(QLatin1Char(' ')), QStringLiteral("first protected"));
    QVERIFY(FileExists(source) && FileExists(last));

    // Asked twice; before the second answer the protection goes.
    QCOMPARE(::chmod(pathToBytes(path("to/protected")).constData(), 0644), 0);
    int asked = 0;
    ino_t copied = 0;
    const QStringList told = moved({orders[1], orders[2]}, [&](int) {
        const ino_t now = stateOf(path("to/protected")).st_ino;
        const bool sameCopy = asked == 0 || now == copied;
        copied = now;
        if (++asked == 2)
            ::chmod(pathToBytes(source).constData(), 0644);
        return sameCopy;
    });
    QCOMPARE(told.join(QLatin1Char(' ')), QStringLiteral("0 access 0 access 0 done 1 done"));
    QVERIFY(!FileExists(source));
    QCOMPARE(contents(path("to/protected")), QByteArray("2"));
}

void tst_filemoves::severalMovesActAsOneAfterTheOther()
{
    const OtherDisk disk;
    if (!disk.isThere())
        QSKIP("needs a second file system");
    write("a/x", "first");
    write("b/x", "second");
    write("b/y", "y");
    const QString to = disk.path();
    // Two files of one name: the second takes the place of the first. One file twice: the second time it is gone.
    QCOMPARE(moved({{path("a/x"), to + QStringLiteral("x")}, {path("b/x"), to + QStringLiteral("x")},
                       {path("b/y"), to + QStringLiteral("y")}, {path("b/y"), to + QStringLiteral("y")},
                       {path("b/never"), to + QStringLiteral("never")}})
                 .join(QLatin1Char(' ')),
        QStringLiteral("0 done 1 done 2 done 3 failed"));
    QCOMPARE(contents(to + QStringLiteral("x")), QByteArray("second"));
    QCOMPARE(contents(to + QStringLiteral("y")), QByteArray("y"));
    QVERIFY(allNames(path("a")).isEmpty() && allNames(path("b")).isEmpty());

    // More than wait at a time, one of them missing: those in front of it are moved, those behind it are not.
    QVector<MoveOrder> orders;
    for (int i = 0; i < 250; ++i) {
        const QString name = QStringLiteral("n%1").arg(i);
        write(qPrintable(QStringLiteral("many/") + name), name.toLatin1());
        orders.append({path("many/") + name, to + name});
    }
    QVERIFY(QFile::remove(path("many/n230")));
    const QStringList told = moved(orders);
    QCOMPARE(told.size(), qsizetype(231));
    QCOMPARE(told.last(), QStringLiteral("230 failed"));
    QCOMPARE(allNames(path("many")).size(), qsizetype(19));
    for (int i = 0; i < 230; ++i)
        QCOMPARE(contents(orders[i].target), QByteArray("n") + QByteArray::number(i));
}

QTEST_GUILESS_MAIN(tst_filemoves)
#include "tst_filemoves.moc"
