#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"

#include <QDir>
#include <QtTest>

#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

constexpr qint64 plenty = 64 * 1024 * 1024;

QByteArray contents(const QString &path)
{
    const Result<QByteArray> bytes = readFile(path, plenty);
    return bytes ? *bytes : QByteArray("unreadable: ") + bytes.reason().toUtf8();
}

QStringList allNames(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

mode_t modeOf(const QString &path)
{
    struct stat state = {};
    return ::stat(pathToBytes(path).constData(), &state) == 0 ? state.st_mode & 07777 : 0;
}

} // namespace

class tst_files : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void existsMeansARegularFile();
    void foreignByteNamesAreFilesLikeAnyOther();
    void aPipeIsRefusedAtOnceAndNotTouched();
    void aFileIsReadWholeOrNotAtAll();
    void aStampTellsChangesAndNothingElse();
    void writingReplacesAndKeepsModeAndAttributes();
    void newFilesFollowTheUsersMask();
    void aLinkStaysALinkAndItsTargetIsWritten();
    void aFailedWriteLeavesWhatWasThere_data();
    void aFailedWriteLeavesWhatWasThere();
    void aFullDiskLeavesWhatWasThere();
    void manyWritersNeverShowATornFile();
    void oldLeftoversGoAndYoungOnesStay();
    void aListingTellsKindsAndOrder();
    void namesHaveOneTotalOrder();
    void foldersFollowTheEnvironment();
    void bookmarksOfBothDesktopsAreFound();
    void volumesBeginWithTheRootAndHoldNoPlumbing();

private:
    QString path(const char *name) const { return m_folder->path() + QLatin1Char('/') + QString::fromUtf8(name); }
    QString write(const char *name, const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path(name)).path());
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", name);
        return path(name);
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_files::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_files::existsMeansARegularFile()
{
    const QString file = write("a/b.jpg", "x");
    QVERIFY(FileExists(file));
    QVERIFY(!FileExists(QString()));
    QVERIFY(!FileExists(path("a")));
    QVERIFY(!FileExists(path("a/none.jpg")));
    QVERIFY(!FileExists(file + QChar(0) + QStringLiteral("tail")));
    QVERIFY(FileExists(path("a/")));
    QVERIFY(QDir().mkpath(path("empty/sub")));
    QVERIFY2(!FileExists(path("empty/")), "a folder with nothing but folders holds no file");
    QVERIFY(!FileExists(file + QLatin1Char('/')));
    QVERIFY(QFile::link(file, path("link.jpg")) && QFile::link(path("gone"), path("dead.jpg")));
    QVERIFY(FileExists(path("link.jpg")));
    QVERIFY(!FileExists(path("dead.jpg")));
    QVERIFY(folderExists(path("a")) && folderExists(path("a/")) && !folderExists(file) && !folderExists(QString()));
}

void tst_files::foreignByteNamesAreFilesLikeAnyOther()
{
    const QString name = m_folder->path() + QLatin1Char('/') + pathFromBytes("caf\xE9\xFF.jpg");
    QVERIFY(writeFileAtomically(name, "bytes"));
    QVERIFY(FileExists(name));
    QCOMPARE(contents(name), QByteArray("bytes"));
    const Result<FolderListing> listing = listFolder(m_folder->path());
    QVERIFY(listing);
    QCOMPARE(listing->files, QStringList(FileNameOfPath(name)));
    QCOMPARE(::unlink(pathToBytes(name).constData()), 0); // the temporary folder cannot remove such a name itself
}

void tst_files::aPipeIsRefusedAtOnceAndNotTouched()
{
    const QString pipe = path("pipe.jpg");
    QCOMPARE(::mkfifo(pathToBytes(pipe).constData(), 0600), 0);
    QVERIFY(!FileExists(pipe));
    QVERIFY(!openRegularFile(pipe));
    QVERIFY(!readFile(pipe, plenty));
    QVERIFY(!fileStamp(pipe));
    QVERIFY(!writeFileAtomically(pipe, "x"));
    QVERIFY(!FileExists(m_folder->path() + QLatin1Char('/')));
    QCOMPARE(::unlink(pathToBytes(pipe).constData()), 0);
    for (const char *device : {"/dev/null", "/dev/zero", "/dev/full"})
        QVERIFY2(!openRegularFile(QString::fromLatin1(device)), device);
}

void tst_files::aFileIsReadWholeOrNotAtAll()
{
    const QByteArray bytes(10'000, 'q');
    const QString file = write("q", bytes);
    QCOMPARE(contents(file), bytes);
    QVERIFY(readFile(file, bytes.size()));
    QVERIFY(!readFile(file, bytes.size() - 1));
    QCOMPARE(contents(write("empty", QByteArray())), QByteArray());
    const Result<QByteArray> unsized = readFile(QStringLiteral("/proc/self/status"), plenty);
    QVERIFY2(unsized && unsized->startsWith("Name:"), "a file that reports no size is read to its end all the same");
    QVERIFY(!readFile(QStringLiteral("/proc/self/status"), 10));
    const Result<QByteArray> missing = readFile(path("none"), plenty);
    QVERIFY(missing.reason().contains(QLatin1String("none")));
}

void tst_files::aStampTellsChangesAndNothingElse()
{
    const QString file = write("a", "one");
    const std::optional<FileStamp> before = fileStamp(file);
    QVERIFY(before && before->size == 3);
    QCOMPARE(fileStamp(file), before);
    QVERIFY(writeFileAtomically(file, "two"));
    QVERIFY2(fileStamp(file) != before, "same size and name, other contents");
    QVERIFY(!fileStamp(m_folder->path()));
}

void tst_files::writingReplacesAndKeepsModeAndAttributes()
{
    const QString file = write("a.lst", "old");
    QCOMPARE(::chmod(pathToBytes(file).constData(), 0640), 0);
    const bool attributes = ::setxattr(pathToBytes(file).constData(), "user.comment", "kept", 4, 0) == 0;
    const Result<void> written = writeFileAtomically(file, "new");
    QVERIFY2(written, qPrintable(written.reason()));
    QCOMPARE(contents(file), QByteArray("new"));
    QCOMPARE(modeOf(file), mode_t(0640));
    if (attributes) {
        char value[8] = {};
        QCOMPARE(::getxattr(pathToBytes(file).constData(), "user.comment", value, sizeof value), ssize_t(4));
        QCOMPARE(QByteArray(value, 4), QByteArray("kept"));
    }
    QCOMPARE(allNames(m_folder->path()), QStringList(QStringLiteral("a.lst")));
}

void tst_files::newFilesFollowTheUsersMask()
{
    const mode_t before = ::umask(027);
    QVERIFY(writeFileAtomically(path("new"), QByteArray()));
    ::umask(before);
    QCOMPARE(modeOf(path("new")), mode_t(0640));
    QCOMPARE(contents(path("new")), QByteArray());
}

void tst_files::aLinkStaysALinkAndItsTargetIsWritten()
{
    write("real/a", "old");
    QVERIFY(QFile::link(QStringLiteral("real/a"), path("second")) && QFile::link(path("second"), path("first")));
    QVERIFY(writeFileAtomically(path("first"), "new"));
    QVERIFY(QFileInfo(path("first")).isSymLink() && QFileInfo(path("second")).isSymLink());
    QCOMPARE(contents(path("real/a")), QByteArray("new"));
    QVERIFY(QFile::link(path("real/fresh"), path("dangling")));
    QVERIFY(writeFileAtomically(path("dangling"), "made"));
    QCOMPARE(contents(path("real/fresh")), QByteArray("made"));
    QVERIFY(QFile::link(path("loop"), path("loop")));
    QVERIFY(!writeFileAtomically(path("loop"), "x"));
}

void tst_files::aFailedWriteLeavesWhatWasThere_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("into a folder that is missing") << QStringLiteral("none/a");
    QTest::newRow("over a folder") << QStringLiteral("folder");
    QTest::newRow("a path that ends in a separator") << QStringLiteral("folder/");
    QTest::newRow("through a file as if it were a folder") << QStringLiteral("file/a");
    QTest::newRow("a name too long for the disk") << QString(300, QLatin1Char('x'));
    QTest::newRow("a name with a null") << QStringLiteral("file") + QChar(0);
}

void tst_files::aFailedWriteLeavesWhatWasThere()
{
    QFETCH(QString, name);
    write("file", "kept");
    write("folder/inside", "kept");
    const Result<void> written = writeFileAtomically(m_folder->path() + QLatin1Char('/') + name, "x");
    QVERIFY(!written);
    QVERIFY(!written.reason().isEmpty());
    QCOMPARE(contents(path("file")), QByteArray("kept"));
    QCOMPARE(allNames(m_folder->path()), QStringList({QStringLiteral("file"), QStringLiteral("folder")}));
    QCOMPARE(allNames(path("folder")), QStringList(QStringLiteral("inside")));
}

void tst_files::aFullDiskLeavesWhatWasThere()
{
    const QString file = write("a", "kept");
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit small = before;
    small.rlim_cur = 4096;
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const Result<void> written = writeFileAtomically(file, QByteArray(8192, 'x'));
    const Result<void> fresh = writeFileAtomically(path("b"), QByteArray(8192, 'x'));
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);
    QVERIFY(!written && !fresh);
    QCOMPARE(contents(file), QByteArray("kept"));
    QCOMPARE(allNames(m_folder->path()), QStringList(QStringLiteral("a")));
}

void tst_files::manyWritersNeverShowATornFile()
{
    const QString file = write("a", QByteArray(5000, '0'));
    const auto writer = [&](char letter) {
        for (int round = 0; round < 20; ++round) {
            if (!writeFileAtomically(file, QByteArray(5000 + letter, letter)))
                qFatal("a write failed");
        }
    };
    std::thread first(writer, 'a');
    std::thread second(writer, 'b');
    bool whole = true;
    for (int round = 0; round < 200; ++round) {
        const QByteArray seen = contents(file);
        whole = whole && seen.count(seen.at(0)) == seen.size() && seen.size() >= 5000;
    }
    first.join();
    second.join();
    QVERIFY(whole);
    QCOMPARE(allNames(m_folder->path()).size(), 1);
}

void tst_files::oldLeftoversGoAndYoungOnesStay()
{
    const QString old = write(".lumora-12ab.tmp", "x");
    write(".lumora-34cd.tmp", "x");
    const QString other = write(".other.tmp", "x");
    const timespec longAgo[2] = {{1'000'000, 0}, {1'000'000, 0}};
    for (const QString &file : {old, other})
        QCOMPARE(::utimensat(AT_FDCWD, pathToBytes(file).constData(), longAgo, 0), 0);
    removeOldTemporaries(m_folder->path());
    QCOMPARE(
        allNames(m_folder->path()), QStringList({QStringLiteral(".lumora-34cd.tmp"), QStringLiteral(".other.tmp")}));
}

void tst_files::aListingTellsKindsAndOrder()
{
    for (const char *name : {"b10.jpg", "B2.jpg", "a.txt", ".hidden.jpg"})
        write(name, "x");
    for (const char *name : {"Zoo", "sub9", "sub10", ".git"})
        QVERIFY(QDir().mkpath(path(name)));
    QVERIFY(QFile::link(path("Zoo"), path("away")) && QFile::link(path("a.txt"), path("c.txt")));
    QVERIFY(QFile::link(path("none"), path("dead.jpg")));
    QCOMPARE(::mkfifo(pathToBytes(path("pipe")).constData(), 0600), 0);
    const Result<FolderListing> listing = listFolder(m_folder->path());
    QVERIFY(listing);
    QCOMPARE(listing->files.join(QLatin1Char(' ')), QStringLiteral("a.txt B2.jpg b10.jpg c.txt"));
    QCOMPARE(listing->folders.join(QLatin1Char(' ')), QStringLiteral("sub9 sub10 Zoo"));
    QCOMPARE(listing->folderLinks, QStringList(QStringLiteral("away")));
    QVERIFY(!listFolder(path("none")));
    QVERIFY(!listFolder(path("a.txt")));
    QCOMPARE(::unlink(pathToBytes(path("pipe")).constData()), 0);
}

void tst_files::namesHaveOneTotalOrder()
{
    const QStringList inOrder = {QStringLiteral(""), QStringLiteral("1"), QStringLiteral("01a"), QStringLiteral("2"),
        QStringLiteral("10"), QStringLiteral("99999999999999999999998"), QStringLiteral("99999999999999999999999"),
        QStringLiteral("A"), QStringLiteral("a"), QStringLiteral("a01"), QStringLiteral("a1"), QStringLiteral("a1b"),
        QStringLiteral("A2"), QStringLiteral("b"), QStringLiteral(u"Ärger"), QStringLiteral(u"ärger"),
        QStringLiteral(u"\uFFEE"), QStringLiteral(u"😀")};
    for (int a = 0; a < inOrder.size(); ++a) {
        for (int b = 0; b < inOrder.size(); ++b) {
            if (nameLess(inOrder[a], inOrder[b]) != (a < b))
                QFAIL(qPrintable(inOrder[a] + QStringLiteral(" against ") + inOrder[b]));
        }
    }
}

void tst_files::foldersFollowTheEnvironment()
{
    qputenv("HOME", pathToBytes(m_folder->path()));
    qputenv("XDG_CONFIG_HOME", pathToBytes(path("cfg")));
    qputenv("XDG_CACHE_HOME", "relative/cache");
    qunsetenv("XDG_STATE_HOME");
    QCOMPARE(configFolder(), path("cfg/lumora/"));
    QCOMPARE(modeOf(path("cfg/lumora")), mode_t(0700));
    QCOMPARE(cacheFolder(), path(".cache/lumora/"));
    QCOMPARE(stateFolder(), path(".local/state/lumora/"));
    QVERIFY(folderExists(stateFolder()));

    qputenv("XDG_RUNTIME_DIR", pathToBytes(path("missing")));
    QVERIFY2(!runtimeFolder().startsWith(m_folder->path() + QStringLiteral("/missing")), "it belongs to the session");
    QCOMPARE(modeOf(runtimeFolder()), mode_t(0700));

    qputenv("LUMORA_APP_FOLDER", pathToBytes(path("app")));
    QCOMPARE(AppFolder(), path("app/"));
    qunsetenv("LUMORA_APP_FOLDER");
    QCOMPARE(AppFolder(), QCoreApplication::applicationDirPath() + QLatin1Char('/'));

    QCOMPARE(WindowsSystemFolders().pictures(), path(""));
    write("cfg/user-dirs.dirs", "XDG_PICTURES_DIR=\"$HOME/Bilder\"\n");
    QVERIFY(QDir().mkpath(path("Bilder")));
    QCOMPARE(WindowsSystemFolders().pictures(), path("Bilder/"));
}

void tst_files::bookmarksOfBothDesktopsAreFound()
{
    qputenv("HOME", pathToBytes(m_folder->path()));
    qputenv("XDG_CONFIG_HOME", pathToBytes(path("cfg")));
    qputenv("XDG_DATA_HOME", pathToBytes(path("data")));
    QVERIFY(bookmarks().isEmpty());
    QCOMPARE(WindowsSystemFolders().favorites(), path(""));
    for (const char *folder : {"My Pictures", "Second", "Hidden", "\xC3\xA4"})
        QVERIFY(QDir().mkpath(path(folder)));
    const QByteArray base = fileUri(m_folder->path()).toLatin1();
    write("cfg/gtk-3.0/bookmarks",
        base + "/My%20Pictures Holiday 2003\n" + base + "/gone\nsftp://host/x\n" + base + "/%C3%A4\n");
    write("data/user-places.xbel",
        "<?xml version=\"1.0\"?><xbel>"
        "<bookmark href=\""
            + base
            + "/Second\"><title>S</title></bookmark>"
              "<bookmark href=\""
            + base
            + "/Hidden\"><info><metadata><IsHidden>true</IsHidden></metadata></info></bookmark>"
              "<bookmark href=\"trash:/\"/><bookmark href=\""
            + base + "/My%20Pictures\"/></xbel>");
    QCOMPARE(bookmarks(), QStringList({path("My Pictures/"), path("\xC3\xA4/"), path("Second/")}));
    QCOMPARE(WindowsSystemFolders().favorites(), path("My Pictures/"));
}

void tst_files::volumesBeginWithTheRootAndHoldNoPlumbing()
{
    const QStringList volumes = mountedVolumes();
    QCOMPARE(volumes.first(), QStringLiteral("/"));
    for (const QString &volume : volumes) {
        QVERIFY(volume.endsWith(QLatin1Char('/')));
        QVERIFY2(!volume.startsWith(QLatin1String("/proc/")) && !volume.startsWith(QLatin1String("/sys/"))
                && !volume.startsWith(QLatin1String("/dev/")),
            qPrintable(volume));
        QCOMPARE(volumes.count(volume), 1);
    }
}

QTEST_GUILESS_MAIN(tst_files)
#include "tst_files.moc"
