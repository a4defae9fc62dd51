#include "platform/filetransfertest.h"
#include "support/otherdisk.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>

/// Nothing is lost when a disk is full, a file changes, the work is no longer wanted or the program is killed.
class tst_filetransfer_faults : public FileTransferTest
{
    Q_OBJECT
private Q_SLOTS:
    void init() { makeFolder(); }
    void cleanup() { m_folder.reset(); }
    void aFullDiskLosesNothing_data();
    void aFullDiskLosesNothing();
    void aSourceThatChangesMeanwhileIsNotTaken();
    void whatIsNoLongerWantedLeavesNothing();
    void aKillLeavesTheOldFileOrTheNew_data();
    void aKillLeavesTheOldFileOrTheNew();
};

void tst_filetransfer_faults::aFullDiskLosesNothing_data()
{
    QTest::addColumn<bool>("moves");
    QTest::addColumn<bool>("byLimit");
    QTest::newRow("a copy to a full disk") << false << false;
    QTest::newRow("moves to a full disk") << true << false;
    QTest::newRow("a copy beyond the limit of file sizes") << false << true;
    QTest::newRow("moves beyond the limit of file sizes") << true << true;
}

void tst_filetransfer_faults::aFullDiskLosesNothing()
{
    QFETCH(bool, moves);
    QFETCH(bool, byLimit);
    const OtherDisk disk("1m");
    if (byLimit ? !disk.isThere() : !disk.hasSize())
        QSKIP("needs a file system of its own");
    const QByteArray data = noise(300'000);
    QVector<MoveOrder> orders;
    for (const char *name : {"a", "b", "c", "d", "e"})
        orders.append({write(name, data), disk.path() + QLatin1String(name)});
    QVERIFY(writeFileAtomically(orders.last().target, "old"));
    rlimit before = {};
    ::getrlimit(RLIMIT_FSIZE, &before);
    rlimit small = before;
    small.rlim_cur = 200'000;
    if (byLimit)
        ::setrlimit(RLIMIT_FSIZE, &small);
    QStringList told;
    if (moves) {
        told = moved(orders);
    } else {
        for (const MoveOrder &order : orders)
            told.append(copyFile(order.source, order.target, true) ? QStringLiteral("done") : QStringLiteral("failed"));
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY2(told.last().endsWith(QLatin1String("failed")), qPrintable(told.join(QLatin1Char(' '))));
    QCOMPARE(contents(orders.last().target), QByteArray("old"));
    int inPlace = 0;
    for (const MoveOrder &order : orders) {
        const bool atTarget = contents(order.target) == data;
        inPlace += atTarget;
        QVERIFY2(atTarget || order.target == orders.last().target || !FileExists(order.target), "half a file");
        QCOMPARE(FileExists(order.source), !moves || !atTarget);
        QVERIFY(!FileExists(order.source) || contents(order.source) == data);
    }
    QCOMPARE(inPlace, byLimit ? 0 : 3);
    QCOMPARE(allNames(disk.path()).size(), qsizetype(inPlace) + 1);
}

void tst_filetransfer_faults::aSourceThatChangesMeanwhileIsNotTaken()
{
    const QString source = write("source", noise(10 << 20));
    const auto disturb = [&] {
        QFile file(source);
        return file.open(QIODevice::Append) && file.write("more") == 4;
    };
    QCOMPARE(copyFile(source, path("copy"), true, disturb).kind, Kind::Failed);
    QCOMPARE(allNames(m_folder->path()), QStringList(QStringLiteral("source")));
}

void tst_filetransfer_faults::whatIsNoLongerWantedLeavesNothing()
{
    const OtherDisk disk;
    const QString source = write("source", noise(10 << 20));
    int asked = 0;
    const StillWanted wanted = [&] { return ++asked < 2; };
    QCOMPARE(copyFile(source, path("copy"), true, wanted).kind, Kind::Failed);
    QCOMPARE(asked, 2);
    QCOMPARE(allNames(m_folder->path()), QStringList(QStringLiteral("source")));
    if (disk.isThere()) {
        asked = 0;
        Kind kind = Kind::Done;
        moveFiles(
            {{source, disk.path() + QStringLiteral("moved")}},
            [&](int, const FileOutcome &outcome) {
                kind = outcome.kind;
                return false;
            },
            wanted);
        QCOMPARE(kind, Kind::Failed);
        QVERIFY(allNames(disk.path()).isEmpty());
    }
    QVERIFY(FileExists(source));
    // A drive that is pulled: its folder goes in the midst.
    write("to/other", "");
    const StillWanted pull = [&] { return QDir(path("to")).removeRecursively(); };
    QCOMPARE(copyFile(source, path("to/copy"), true, pull).kind, Kind::Failed);
    QCOMPARE(allNames(m_folder->path()), QStringList(QStringLiteral("source")));
}

void tst_filetransfer_faults::aKillLeavesTheOldFileOrTheNew_data()
{
    QTest::addColumn<bool>("move");
    QTest::newRow("copies over a file") << false;
    QTest::newRow("moves to another disk, over a file") << true;
}

/// A process of its own works until it is killed at a moment of chance.
void tst_filetransfer_faults::aKillLeavesTheOldFileOrTheNew()
{
    QFETCH(bool, move);
    const OtherDisk disk;
    if (move && !disk.isThere())
        QSKIP("needs a second file system");
    const QByteArray fresh = noise(3 << 20);
    const QByteArray old = noise(1 << 20);
    const QString target = (move ? disk.path() : path("to/")) + QStringLiteral("file");
    int killed = 0;
    for (int round = 0; round < 40; ++round) {
        const QString source = write("source", fresh);
        write("to/other", "");
        QVERIFY(writeFileAtomically(target, old));
        const itimerval chance = {{}, {0, QRandomGenerator::global()->bounded(1, 8000)}};
        const pid_t child = ::fork();
        if (child == 0) {
            // Nothing catches the alarm: it ends the process as a kill does.
            ::setitimer(ITIMER_REAL, &chance, nullptr);
            if (move)
                moveFiles({{source, target}}, [](int, const FileOutcome &) { return false; });
            else
                ignore(copyFile(source, target, true));
            ::_exit(0);
        }
        QVERIFY(child > 0);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        killed += WIFSIGNALED(status);
        const QByteArray there = contents(target);
        QVERIFY2(there == old || there == fresh, "a torn file stands under the target's name");
        if (!FileExists(source))
            QVERIFY2(move && there == fresh, "the source is gone before the target is whole");
        else
            QVERIFY(contents(source) == fresh);
    }
    QVERIFY2(killed > 5, "hardly any run was killed in its midst");
    // A kill just before the new file takes its name can leave it under a hidden one.
    QStringList names = allNames(SplitFilePath(target).folder);
    names.removeIf([](const QString &name) { return name.startsWith(u".lumora-") && name.endsWith(u".tmp"); });
    QCOMPARE(names.size(), qsizetype(move ? 1 : 2));
}

QTEST_GUILESS_MAIN(tst_filetransfer_faults)
#include "tst_filetransfer_faults.moc"
