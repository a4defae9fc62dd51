#include "platform/filepath.h"
#include "platform/files.h"
#include "viewer/foldersearch.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const FilePatterns everyType = {
    QStringLiteral("*.JPG;*.JPE;*.JPEG;*.TIF;*.TIFF"), QStringLiteral("*.MID;*.MPG"), QStringLiteral("*.PCD;*.WBMP")};

/// Root may read everything: while one of these lives, the test is an ordinary user.
class OrdinaryUser
{
public:
    OrdinaryUser() { m_became = ::geteuid() == 0 && ::seteuid(65534) == 0; }
    ~OrdinaryUser()
    {
        if (m_became && ::seteuid(0) != 0)
            qFatal("cannot become root again");
    }

private:
    bool m_became = false;
};

/// The order said as plainly as can be: the reference for the walk that runs ahead.
void plainWalk(const QString &folder, const FilePatterns &patterns, QStringList &found)
{
    const Result<FolderListing> listing = listFolder(folder);
    if (!listing)
        return;
    for (auto name = listing->folders.rbegin(); name != listing->folders.rend(); ++name)
        plainWalk(folder + *name + QLatin1Char('/'), patterns, found);
    const QStringList names = collectFiles(folder, patterns);
    for (const QString &name : names)
        found.append(folder + name);
}

struct Walked
{
    WalkEnd end = WalkEnd::Finished;
    int entered = 0;
    QStringList found;
};

Walked walked(const QString &folder, const FilePatterns &patterns = everyType, int stopAtFolder = -1, int room = -1)
{
    Walked result;
    FolderWalk walk;
    walk.entered = [&] { return ++result.entered != stopAtFolder; };
    walk.found = [&](const QStringList &paths) {
        result.found += room < 0 ? paths : paths.mid(0, room - result.found.size());
        return room < 0 || result.found.size() < room;
    };
    result.end = walkFolders(folder, patterns, walk);
    return result;
}

} // namespace

class tst_foldersearch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aFolderIsCollectedGroupByGroup();
    void onlyTheWholeExtensionCounts();
    void childrenComeFirstAndTheLastFolderBeforeTheOthers();
    void aLargeTreeComesInExactlyThePlainOrder();
    void stoppingAtAnyFolderStopsThere();
    void anOwnerWhoWantsNoMoreIsAskedBetweenFolders();
    void aFullListEndsTheWalkAndKeepsWhatItHad();
    void linksNeverLeadAround();
    void foldersThatCannotBeEnteredArePassedOver();
    void namesInForeignBytesAreFound();
    void aFolderThatVanishesMeanwhileDoesNoHarm();
    void aHugeFolderIsOneDelivery();
    void rootsGetNoSecondSeparator();
    void boxesAndProgressAreWordForWord();
    void sizesAndColoursReadAsNumbersForPeople();

private:
    QString base() const { return m_folder->path() + QLatin1Char('/'); }
    void write(const QString &name) const
    {
        QDir().mkpath(QFileInfo(base() + name).path());
        QFile file(base() + name);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(name));
    }
    void write(const char *name) const { write(QString::fromUtf8(name)); }
    /// The paths below the test folder, joined by blanks.
    QString below(const QStringList &paths) const
    {
        QStringList names;
        for (const QString &path : paths)
            names.append(path.startsWith(base()) ? path.mid(base().size()) : QStringLiteral("!") + path);
        return names.join(QLatin1Char(' '));
    }
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_foldersearch::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_foldersearch::aFolderIsCollectedGroupByGroup()
{
    for (const char *name : {"b.mid", "z.jpg", "a.PCD", "a10.Jpg", "a9.TIFF", "sub/x.jpg", ".hidden.jpg", "note.txt"})
        write(name);
    QCOMPARE(
        collectFiles(base(), everyType).join(QLatin1Char(' ')), QStringLiteral("a9.TIFF a10.Jpg z.jpg b.mid a.PCD"));
    QCOMPARE(
        collectFiles(m_folder->path(), {QString(), everyType.motion, QString()}), QStringList(QStringLiteral("b.mid")));
    QVERIFY(collectFiles(base(), {}).isEmpty());
    QVERIFY(collectFiles(base() + QStringLiteral("none/"), everyType).isEmpty());
}

void tst_foldersearch::onlyTheWholeExtensionCounts()
{
    for (const char *name : {"a.jp", "a.jpgx", "ajpg", "jpg", "a.jpg.txt", "a.", "a.extension_that_never_ends",
             "a.jpg ", "fine.x.jpg", "fine.jpeg", "fine.wbmp"})
        write(name);
    QVERIFY(QDir().mkpath(base() + QStringLiteral("folder.jpg")));
    QCOMPARE(collectFiles(base(), everyType).join(QLatin1Char(' ')), QStringLiteral("fine.jpeg fine.x.jpg fine.wbmp"));
}

void tst_foldersearch::childrenComeFirstAndTheLastFolderBeforeTheOthers()
{
    for (const char *name : {"own1.jpg", "own2.jpg", "a/1.jpg", "a/deep/2.jpg", "B/3.jpg", "c10/4.jpg", "c9/5.jpg",
             ".git/6.jpg", "empty/none.txt"})
        write(name);
    const Walked result = walked(m_folder->path());
    QCOMPARE(below(result.found), QStringLiteral("c10/4.jpg c9/5.jpg B/3.jpg a/deep/2.jpg a/1.jpg own1.jpg own2.jpg"));
    QCOMPARE(result.entered, 7);
    QCOMPARE(result.end, WalkEnd::Finished);
    QVERIFY(walked(QString()).found.isEmpty());
}

void tst_foldersearch::aLargeTreeComesInExactlyThePlainOrder()
{
    quint32 random = 12345;
    const auto next = [&](quint32 below) {
        random = random * 1664525 + 1013904223;
        return (random >> 8) % below;
    };
    QStringList folders = {QString()};
    for (int count = 0; count < 400; ++count)
        folders.append(folders[next(static_cast<quint32>(folders.size()))] + QStringLiteral("f%1/").arg(next(60)));
    for (int count = 0; count < 2000; ++count) {
        const char *extension = count % 3 ? "jpg" : count % 2 ? "mid" : "txt";
        write(folders[next(static_cast<quint32>(folders.size()))]
            + QStringLiteral("p%1.%2").arg(next(900)).arg(QLatin1String(extension)));
    }
    QStringList expected;
    plainWalk(base(), everyType, expected);
    QVERIFY(expected.size() > 1000);
    for (int round = 0; round < 20; ++round) {
        const Walked result = walked(base());
        QCOMPARE(result.found, expected);
    }
}

void tst_foldersearch::stoppingAtAnyFolderStopsThere()
{
    for (int folder = 0; folder < 30; ++folder)
        write(QStringLiteral("f%1/g/p.jpg").arg(folder));
    const Walked whole = walked(base());
    QCOMPARE(whole.entered, 61);
    for (int stop = 1; stop <= whole.entered; ++stop) {
        const Walked result = walked(base(), everyType, stop);
        QCOMPARE(result.end, WalkEnd::Cancelled);
        QCOMPARE(result.entered, stop);
        QCOMPARE(result.found, whole.found.mid(0, result.found.size()));
        QCOMPARE(result.found.size(), qMax(0, (stop - 2) / 2));
    }
}

void tst_foldersearch::anOwnerWhoWantsNoMoreIsAskedBetweenFolders()
{
    for (const char *name : {"own.jpg", "a/1.jpg", "b/2.jpg"})
        write(name);
    QStringList found;
    FolderWalk walk;
    walk.found = [&](const QStringList &paths) {
        found += paths;
        return true;
    };
    walk.goOn = [&] { return found.size() < 2; };
    QCOMPARE(walkFolders(base(), everyType, walk), WalkEnd::Cancelled);
    QCOMPARE(below(found), QStringLiteral("b/2.jpg a/1.jpg"));
}

void tst_foldersearch::aFullListEndsTheWalkAndKeepsWhatItHad()
{
    for (int folder = 0; folder < 20; ++folder) {
        write(QStringLiteral("f%1/a.jpg").arg(folder));
        write(QStringLiteral("f%1/b.jpg").arg(folder));
    }
    const Walked whole = walked(base());
    const Walked result = walked(base(), everyType, -1, 7);
    QCOMPARE(result.end, WalkEnd::ListFull);
    QCOMPARE(result.found, whole.found.mid(0, 7));
}

void tst_foldersearch::linksNeverLeadAround()
{
    for (const char *name : {"a/1.jpg", "b/2.jpg"})
        write(name);
    QVERIFY(QFile::link(m_folder->path(), base() + QStringLiteral("a/up")));
    QVERIFY(QFile::link(base() + QStringLiteral("a"), base() + QStringLiteral("again")));
    QVERIFY(QFile::link(base() + QStringLiteral("loop"), base() + QStringLiteral("loop")));
    QVERIFY(QFile::link(base() + QStringLiteral("a/1.jpg"), base() + QStringLiteral("link.jpg")));
    QVERIFY(QFile::link(base() + QStringLiteral("gone"), base() + QStringLiteral("dead.jpg")));
    QCOMPARE(below(walked(base()).found), QStringLiteral("b/2.jpg a/1.jpg link.jpg"));
    QCOMPARE(walked(base() + QStringLiteral("again")).found.size(), 1);
}

void tst_foldersearch::foldersThatCannotBeEnteredArePassedOver()
{
    for (const char *name : {"a/1.jpg", "closed/2.jpg", "z/3.jpg"})
        write(name);
    QCOMPARE(::chmod(pathToBytes(base()).constData(), 0755), 0);
    QCOMPARE(::chmod(pathToBytes(base() + QStringLiteral("closed")).constData(), 0), 0);
    Walked result;
    Walked closed;
    {
        const OrdinaryUser user;
        result = walked(base());
        closed = walked(base() + QStringLiteral("closed"));
    }
    QCOMPARE(::chmod(pathToBytes(base() + QStringLiteral("closed")).constData(), 0700), 0);
    QCOMPARE(below(result.found), QStringLiteral("z/3.jpg a/1.jpg"));
    QCOMPARE(result.entered, 3);
    QCOMPARE(closed.entered, 0);
    QCOMPARE(closed.end, WalkEnd::Finished);
    QCOMPARE(walked(base() + QStringLiteral("none")).end, WalkEnd::Finished);
}

void tst_foldersearch::namesInForeignBytesAreFound()
{
    const QString folder = base() + pathFromBytes("m\xFCll/");
    QCOMPARE(::mkdir(pathToBytes(folder).constData(), 0700), 0);
    const QString file = folder + pathFromBytes("\xE9t\xE9.JPG");
    QVERIFY(writeFileAtomically(file, "x"));
    const Walked result = walked(base());
    QCOMPARE(result.found, QStringList(file));
    QVERIFY(FileExists(result.found.first()));
    QCOMPARE(::unlink(pathToBytes(file).constData()) + ::rmdir(pathToBytes(folder).constData()), 0);
}

void tst_foldersearch::aFolderThatVanishesMeanwhileDoesNoHarm()
{
    for (int folder = 0; folder < 200; ++folder)
        write(QStringLiteral("f%1/g/p.jpg").arg(folder));
    int entered = 0;
    FolderWalk walk;
    walk.found = [](const QStringList &) { return true; };
    walk.entered = [&] {
        if (++entered == 3)
            QDir(m_folder->path()).removeRecursively();
        return true;
    };
    QCOMPARE(walkFolders(base(), everyType, walk), WalkEnd::Finished);
    QVERIFY(entered >= 3 && entered <= 401);
}

void tst_foldersearch::aHugeFolderIsOneDelivery()
{
    for (int file = 0; file < 8'000; ++file)
        write(QStringLiteral("many/p%1.jpg").arg(file));
    int deliveries = 0;
    QStringList found;
    FolderWalk walk;
    walk.found = [&](const QStringList &paths) {
        ++deliveries;
        found += paths;
        return true;
    };
    QCOMPARE(walkFolders(base(), everyType, walk), WalkEnd::Finished);
    QCOMPARE(deliveries, 1);
    QCOMPARE(found.size(), 8'000);
    QCOMPARE(below(found.mid(9, 2)), QStringLiteral("many/p9.jpg many/p10.jpg"));
}

void tst_foldersearch::rootsGetNoSecondSeparator()
{
    QCOMPARE(folderWithSeparator(QStringLiteral("/")), QStringLiteral("/"));
    QCOMPARE(folderWithSeparator(QStringLiteral("/a")), QStringLiteral("/a/"));
    QCOMPARE(folderWithSeparator(QStringLiteral("/a/")), QStringLiteral("/a/"));
    QCOMPARE(folderWithSeparator(QString()), QString());
}

void tst_foldersearch::boxesAndProgressAreWordForWord()
{
    QCOMPARE(searchProgressText(12, 345), QStringLiteral(" Directories Searched: 12 ---  Files Found:345"));
    QCOMPARE(noFileTypesBox().text,
        QStringLiteral("No file types have been selected. Please select the desired file "
                       "types and try again."));
    QCOMPARE(listFullBox().text, QStringLiteral("You've filled the listbox. Search being abandoned..."));
    QCOMPARE(tooManyItemsBox().title, QStringLiteral("Search Returned Too Many Items...."));
    QVERIFY(tooManyItemsBox().text.contains(QLatin1String("32767 items.  Please narrow")));
    for (int count = -32768; count <= 32767; ++count)
        QVERIFY(!isTooManyItems(static_cast<qint16>(count)));
}

void tst_foldersearch::sizesAndColoursReadAsNumbersForPeople()
{
    QCOMPARE(bytesText(0), QStringLiteral("0 bytes"));
    QCOMPARE(bytesText(999), QStringLiteral("999 bytes"));
    QCOMPARE(bytesText(1234567), QStringLiteral("1,234,567 bytes"));
    QCOMPARE(bytesText(123456789012), QStringLiteral("123,456,789,012 bytes"));
    QCOMPARE(colorsText(24), QStringLiteral("16.7 Million (24-bit)"));
    QCOMPARE(colorsText(16), QStringLiteral("65,536 (16-bit)"));
    for (int unknown : {0, -1, 7, 48})
        QCOMPARE(colorsText(unknown), QStringLiteral("Unknown"));
}

QTEST_GUILESS_MAIN(tst_foldersearch)
#include "tst_foldersearch.moc"
