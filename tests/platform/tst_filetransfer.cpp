#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/filetransfer.h"
#include "support/otherdisk.h"

#include <QDir>
#include <QRandomGenerator>
#include <QtTest>

#include <csignal>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <sys/xattr.h>

using Kind = FileOutcome::Kind;

namespace {

QByteArray contents(const QString &path)
{
    const Result<QByteArray> bytes = readFile(path, 256 << 20);
    return bytes ? *bytes : QByteArray("unreadable");
}

QStringList allNames(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

struct stat stateOf(const QString &path)
{
    struct stat state = {};
    if (::lstat(pathToBytes(path).constData(), &state) != 0)
        state.st_mode = 0;
    return state;
}

QByteArray noise(int bytes)
{
    QByteArray all(bytes, '\0');
    for (char &byte : all)
        byte = static_cast<char>(QRandomGenerator::global()->bounded(256));
    return all;
}

/// Moves and collects what was told, as "0 done".
QStringList moved(const QVector<MoveOrder> &orders, const std::function<bool(int)> &again = {})
{
    QStringList told;
    moveFiles(orders, [&](int order, const FileOutcome &outcome) {
        static const char *const words[] = {"done", "access", "failed"};
        told.append(QStringLiteral("%1 %2").arg(order).arg(QLatin1String(words[int(outcome.kind)])));
        return !outcome && again && again(order);
    });
    return told;
}

} // namespace

/// Files are copied, moved and removed whole or not at all.
class tst_filetransfer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aCopyIsTheFileAgain_data();
    void aCopyIsTheFileAgain();
    void aTakenNameIsReplacedOnlyWhenAskedFor();
    void aLinkedTargetStaysALink();
    void oneFileUnderTwoNamesIsNotTouched_data();
    void oneFileUnderTwoNamesIsNotTouched();
    void onlyFilesAreTaken_data();
    void onlyFilesAreTaken();
    void accessErrorsAreToldFromOthers();
    void aMoveKeepsEverything_data();
    void aMoveKeepsEverything();
    void aMovedLinkLeadsToTheSameFile();
    void aProtectedSourceIsCopiedOnceAndRemovedWhenItMayBe();
    void severalMovesActAsOneAfterTheOther();
    void aFullDiskLosesNothing_data();
    void aFullDiskLosesNothing();
    void aSourceThatChangesMeanwhileIsNotTaken();
    void whatIsNoLongerWantedLeavesNothing();
    void aKillLeavesTheOldFileOrTheNew_data();
    void aKillLeavesTheOldFileOrTheNew();
    void aNewNameTakesNobodysPlace();

private:
    QString path(const char *name) const { return m_folder->path() + QLatin1Char('/') + QString::fromUtf8(name); }
    QString write(const char *name, const QByteArray &bytes, mode_t mode = 0644) const
    {
        const QString file = path(name);
        QDir().mkpath(SplitFilePath(file).folder);
        ignore(writeFileAtomically(file, bytes));
        ::chmod(pathToBytes(file).constData(), mode);
        return file;
    }
    /// A file with everything that is to be kept.
    QString writeRich(const QByteArray &bytes) const
    {
        const QString file = write("rich", bytes, 0640);
        const QByteArray native = pathToBytes(file);
        ::setxattr(native.constData(), "user.note", "kept", 4, 0);
        const timespec times[] = {{1'000'000'000, 5}, {1'100'000'000, 123'456'789}};
        ::utimensat(AT_FDCWD, native.constData(), times, 0);
        return file;
    }
    void verifyRich(const QString &file, const QByteArray &bytes) const;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_filetransfer::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    ::chmod(qPrintable(m_folder->path()), 0777);
}

void tst_filetransfer::cleanup()
{
    m_folder.reset();
}

void tst_filetransfer::verifyRich(const QString &file, const QByteArray &bytes) const
{
    const struct stat state = stateOf(file);
    QCOMPARE(contents(file), bytes);
    QCOMPARE(state.st_mode & 07777, mode_t(0640));
    QCOMPARE(qint64(state.st_mtim.tv_sec), qint64(1'100'000'000));
    QCOMPARE(qint64(state.st_mtim.tv_nsec), qint64(123'456'789));
    char note[8] = {};
    const ssize_t length = ::getxattr(pathToBytes(file).constData(), "user.note", note, sizeof note);
    if (length >= 0 || errno != EOPNOTSUPP)
        QCOMPARE(QByteArray(note, qMax<qsizetype>(length, 0)), QByteArray("kept"));
}

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

void tst_filetransfer::aMoveKeepsEverything_data()
{
    QTest::addColumn<bool>("acrossDisks");
    QTest::addColumn<bool>("taken");
    QTest::newRow("within a disk, to a new name") << false << false;
    QTest::newRow("within a disk, over a file") << false << true;
    QTest::newRow("to another disk, to a new name") << true << false;
    QTest::newRow("to another disk, over a file") << true << true;
}

void tst_filetransfer::aMoveKeepsEverything()
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

void tst_filetransfer::aMovedLinkLeadsToTheSameFile()
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

void tst_filetransfer::aProtectedSourceIsCopiedOnceAndRemovedWhenItMayBe()
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

void tst_filetransfer::severalMovesActAsOneAfterTheOther()
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

void tst_filetransfer::aFullDiskLosesNothing_data()
{
    QTest::addColumn<bool>("moves");
    QTest::addColumn<bool>("byLimit");
    QTest::newRow("a copy to a full disk") << false << false;
    QTest::newRow("moves to a full disk") << true << false;
    QTest::newRow("a copy beyond the limit of file sizes") << false << true;
    QTest::newRow("moves beyond the limit of file sizes") << true << true;
}

void tst_filetransfer::aFullDiskLosesNothing()
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

void tst_filetransfer::aSourceThatChangesMeanwhileIsNotTaken()
{
    const QString source = write("source", noise(10 << 20));
    const auto disturb = [&] {
        QFile file(source);
        return file.open(QIODevice::Append) && file.write("more") == 4;
    };
    QCOMPARE(copyFile(source, path("copy"), true, disturb).kind, Kind::Failed);
    QCOMPARE(allNames(m_folder->path()), QStringList(QStringLiteral("source")));
}

void tst_filetransfer::whatIsNoLongerWantedLeavesNothing()
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

void tst_filetransfer::aKillLeavesTheOldFileOrTheNew_data()
{
    QTest::addColumn<bool>("move");
    QTest::newRow("copies over a file") << false;
    QTest::newRow("moves to another disk, over a file") << true;
}

/// A process of its own works until it is killed at a moment of chance.
void tst_filetransfer::aKillLeavesTheOldFileOrTheNew()
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
