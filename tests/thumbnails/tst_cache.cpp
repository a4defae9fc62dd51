#include "builtpaths.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "support/support.h"
#include "thumbnails/cachetexts.h"
#include "thumbnails/imagescompaction.h"
#include "thumbnails/imagesdatabase.h"
#include "thumbnails/imagesschema.h"
#include "thumbnails/thumbnailblob.h"

#include <QFile>
#include <QtTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

/// The file of the thumbnail cache: its records, and what becomes of it under damage.
class tst_cache : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void aFreshFileIsTheTemplate();
    void withoutFileAndTemplateNothingOpens();
    void namesComeBackByteForByte_data();
    void namesComeBackByteForByte();
    void aKeyHasOneRecord();
    void aNameInOtherLettersIsTheSameFileOnly();
    void recordsAreWalkedInTheOrderOfNames();
    void duplicatesFromElsewhereGiveTheFirst();
    void aHugePictureIsNotRead();
    void countsFollowWhateverIsDone();
    void whatIsNoCacheIsSetAside_data();
    void whatIsNoCacheIsSetAside();
    void damageFoundLaterIsSetAsideAtTheNextOpening();
    void aFullDiskCostsTheRecordOnly();
    void aReadOnlyFolderHasNoCache();
    void compactionGivesRoomBackAndKeepsTheRecords();
    void compactionLeavesAFileInUseAlone();
    void blobsKnowTheirDamage();
    void numbersAreGrouped();

private:
    QString path() const { return m_home->path() + QStringLiteral("app/images.mdb"); }
    QString folder() const { return m_home->path() + QStringLiteral("app/"); }
    static ImageRecord record(const QString &name, int size = 100, const QByteArray &picture = "picture");
    QStringList names(ImagesDatabase &database);
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

const QString templateFile = QStringLiteral(LUMORA_BIN "/lumora-data/images.dat");

}

void tst_cache::init()
{
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(QFile::copy(templateFile, folder() + QLatin1String(imagesTemplateFile)));
}

ImageRecord tst_cache::record(const QString &name, int size, const QByteArray &picture)
{
    ImageRecord made;
    made.name = name;
    made.height = 30;
    made.width = -40;
    made.date = QDate(2004, 2, 29);
    made.picture = picture;
    made.compressionMode = 1;
    made.thumbnailDate = QDate(2026, 11, 23);
    made.thumbnailSize = size;
    return made;
}

QStringList tst_cache::names(ImagesDatabase &database)
{
    database.settle();
    QStringList all;
    for (auto at = database.first(); at; at = database.next(*at))
        all.append(at->name);
    return all;
}

void tst_cache::aFreshFileIsTheTemplate()
{
    // The template of a system's own folder may be write-protected.
    QCOMPARE(::chmod(QFile::encodeName(folder() + QLatin1String(imagesTemplateFile)).constData(), 0444), 0);
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QCOMPARE(database.count(), std::optional<int>(0));
    QVERIFY(!database.first());
    struct stat state = {};
    QCOMPARE(::stat(QFile::encodeName(path()).constData(), &state), 0);
    QVERIFY(state.st_mode & S_IWUSR);
    QVERIFY(database.add(record(QStringLiteral("/a"))));
}

void tst_cache::withoutFileAndTemplateNothingOpens()
{
    QVERIFY(QFile::remove(folder() + QLatin1String(imagesTemplateFile)));
    ImagesDatabase database;
    QVERIFY(!database.open(folder()));
    QVERIFY(!QFile::exists(path()));
    QVERIFY(!database.count());
    QVERIFY(!database.find(QStringLiteral("/a"), 100));
    QVERIFY(!database.add(record(QStringLiteral("/a"))));
}

void tst_cache::namesComeBackByteForByte_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("plain") << QByteArray("/a/b.jpg");
    QTest::newRow("quotes of both kinds") << QByteArray("/a/\"it's\".jpg");
    QTest::newRow("letters of all kinds") << QByteArray("/\xc3\x84\xc3\xb6\xf0\x9f\x98\x80/\xd0\x96.jpg");
    QTest::newRow("bytes that are no text") << QByteArray("/a\xff\xfe\xc3/\x80.jpg");
    QTest::newRow("line breaks, percent, brackets") << QByteArray("/a\n%_[x]*?/;--.jpg");
    QTest::newRow("very long") << QByteArray(4000, 'x');
}

void tst_cache::namesComeBackByteForByte()
{
    QFETCH(QByteArray, name);
    const QString text = pathFromBytes(name);
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QVERIFY(database.add(record(text, 60, QByteArray("\0\1\2", 3))));
    QVERIFY(!database.find(text + QLatin1Char('x'), 60) && !database.find(text, 70));
    const auto found = database.find(text, 60);
    QVERIFY(found.has_value());
    QCOMPARE(pathToBytes(found->name), name);
    QCOMPARE(found->picture, QByteArray("\0\1\2", 3));
    QCOMPARE(found->width, -40);
    QCOMPARE(found->date, QDate(2004, 2, 29));
    QCOMPARE(found->thumbnailDate, QDate(2026, 11, 23));
}

void tst_cache::aKeyHasOneRecord()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    const QString name = QStringLiteral("/a.jpg");
    QVERIFY(database.add(record(name, 60)));
    QVERIFY(database.add(record(name, 70)));
    QVERIFY(database.add(record(name, 60, "newer")));
    QCOMPARE(database.count(), std::optional<int>(2));
    QVERIFY2(database.find(name, 60)->picture == "newer", "found before it is written");
    database.settle();
    const auto found = database.find(name, 60);
    QCOMPARE(found->picture, QByteArray("newer"));
    // A change that makes it the record of another key takes that one's place.
    QVERIFY(database.change(found->id, record(name, 70, "moved"), false));
    QCOMPARE(database.count(), std::optional<int>(1));
    QCOMPARE(database.find(name, 70)->picture, QByteArray("moved"));
    QVERIFY(database.change(found->id, record(name, 70, "other"), true));
    QCOMPARE(database.find(name, 70)->picture, QByteArray("moved"));
    QVERIFY(!database.change(found->id + 100, record(name, 80), false));
}

void tst_cache::aNameInOtherLettersIsTheSameFileOnly()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    const QString lower = m_home->write(QStringLiteral("pictures/\u00e4.jpg"), "one");
    const QString upper = m_home->path() + QStringLiteral("pictures/\u00c4.JPG");
    database.add(record(lower));
    QVERIFY(database.find(upper, 100));
    m_home->write(QStringLiteral("pictures/\u00c4.JPG"), "another");
    QVERIFY2(!database.find(upper, 100), "two files beside each other are two");
    QVERIFY(database.find(lower, 100));
    QVERIFY(QFile::remove(lower));
    QVERIFY2(database.find(upper, 100), "a file that was renamed is the old one");
}

void tst_cache::recordsAreWalkedInTheOrderOfNames()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    for (const char16_t *name : {u"/b", u"/C", u"/a", u"/\u00c9", u"/\u00e9a", u"/B1"})
        database.add(record(QString::fromUtf16(name), 80));
    database.add(record(QStringLiteral("/other"), 90));
    database.select(80);
    QCOMPARE(names(database),
        (QStringList{QStringLiteral("/a"), QStringLiteral("/b"), QStringLiteral("/B1"), QStringLiteral("/C"),
            QStringLiteral("/\u00c9"), QStringLiteral("/\u00e9a")}));
    QCOMPARE(database.last()->name, QStringLiteral("/\u00e9a"));
    QCOMPARE(database.previous(*database.last())->name, QStringLiteral("/\u00c9"));
    QVERIFY(!database.previous(*database.first()));
    QVERIFY2(!database.find(QStringLiteral("/other"), 90), "another size is not among those that are selected");
    database.select({});
    QCOMPARE(names(database).size(), 7);
    QCOMPARE(names(database).first(), QStringLiteral("/b"));
}

void tst_cache::duplicatesFromElsewhereGiveTheFirst()
{
    {
        SqliteConnection connection;
        QVERIFY(connection.open(path(), SqliteConnection::Open::Create, 0) && prepareImagesConnection(connection));
        // Made by hand: no key, no counts, fields in another order.
        QVERIFY(connection.run("CREATE TABLE tblImages (ThumbnailImage BLOB, ImageName TEXT, ImageHeight, ImageWidth,"
                               " ImageDate, ThumbnailCompressionMode, ThumbnailDate, ThumbnailSize INTEGER);"
                               "INSERT INTO tblImages VALUES ('one', '/a', 1, 1, 'no date', 9, NULL, 100);"
                               "INSERT INTO tblImages VALUES ('two', '/a', 1, 1, '2004-01-01', 9, NULL, 100)"));
    }
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QCOMPARE(database.count(), std::optional<int>(2));
    QCOMPARE(database.find(QStringLiteral("/a"), 100)->picture, QByteArray("one"));
    QVERIFY(!database.find(QStringLiteral("/a"), 100)->date.isValid());
    QVERIFY(database.add(record(QStringLiteral("/a"))));
    QVERIFY(database.add(record(QStringLiteral("/b"))));
    database.select(100);
    QCOMPARE(database.count(), std::optional<int>(3));
}

void tst_cache::aHugePictureIsNotRead()
{
    {
        SqliteConnection connection;
        QVERIFY(connection.open(path(), SqliteConnection::Open::Create, 0));
        QVERIFY(connection.run("CREATE TABLE tblImages (ImageName TEXT, ImageHeight, ImageWidth, ImageDate,"
                               " ThumbnailCompressionMode, ThumbnailDate, ThumbnailSize INTEGER, ThumbnailImage BLOB);"
                               "INSERT INTO tblImages VALUES ('/a', 1, 1, '', 1, '', 100, zeroblob(30000000))"));
    }
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QVERIFY(database.first() && database.first()->picture.isEmpty());
    QVERIFY(database.find(QStringLiteral("/a"), 100));
    QVERIFY(database.add(record(QStringLiteral("/a"))));
    database.settle();
    QCOMPARE(database.find(QStringLiteral("/a"), 100)->picture, QByteArray("picture"));
    QCOMPARE(database.count(), std::optional<int>(1));
}

void tst_cache::countsFollowWhateverIsDone()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    const auto counted = [&](std::optional<int> size) {
        database.select(size);
        return database.count().value_or(-1);
    };
    for (int number = 0; number < 2500; ++number) {
        QVERIFY(database.add(record(QString::number(number), number % 2 ? 60 : 70, {})));
        if (number == 1250)
            database.settle();
    }
    QCOMPARE(counted(60), 1250);
    QCOMPARE(counted({}), 2500);
    database.settle();
    const auto first = database.first();
    QVERIFY(database.change(first->id, record(QStringLiteral("resized"), 80), false));
    QCOMPARE(counted(80), 1);
    QCOMPARE(counted(70), 1249);
    QVERIFY(database.remove(first->id));
    QCOMPARE(counted(80), 0);
    database.select(70);
    QVERIFY2(!database.removeAll([] { return false; }), "it was told to stop after the first thousand");
    QCOMPARE(counted(70), 249);
    QVERIFY(database.removeAll([] { return true; }));
    QCOMPARE(counted(70), 0);
    QCOMPARE(counted(60), 1250);
    database.close();
    QVERIFY(database.open(folder()));
    QCOMPARE(counted({}), 1250);
    QCOMPARE(names(database).size(), 1250);
}

void tst_cache::whatIsNoCacheIsSetAside_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QFile file(templateFile);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("garbage") << QByteArray(50'000, '\x5a');
    QTest::newRow("a database of another program")
        << QByteArray("\0\1\0\0Standard Jet DB\0", 20) + QByteArray(4096, '\0');
    QTest::newRow("cut") << whole.first(whole.size() / 2);
    QByteArray zeroed = whole;
    zeroed.replace(100, 4096, QByteArray(4096, '\0'));
    QTest::newRow("a zeroed page") << zeroed;
    const TemporaryHome home;
    const QString view = home.path() + QStringLiteral("view");
    {
        SqliteConnection connection;
        QVERIFY(connection.open(view, SqliteConnection::Open::Create, 0));
        QVERIFY(connection.run("CREATE VIEW tblImages AS SELECT 1 ImageName, 1 ImageHeight, 1 ImageWidth, 1 ImageDate,"
                               " 1 ThumbnailImage, 1 ThumbnailCompressionMode, 1 ThumbnailDate, 100 ThumbnailSize"));
    }
    QFile made(view);
    QVERIFY(made.open(QIODevice::ReadOnly));
    QTest::newRow("a view in place of the table") << made.readAll();
}

void tst_cache::whatIsNoCacheIsSetAside()
{
    QFETCH(QByteArray, bytes);
    QFile file(path());
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    file.close();
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QVERIFY(database.add(record(QStringLiteral("/a"))));
    QCOMPARE(database.count(), std::optional<int>(1));
    QFile aside(path() + QStringLiteral(".damaged"));
    QVERIFY(aside.open(QIODevice::ReadOnly));
    QVERIFY(aside.readAll() == bytes);
}

void tst_cache::damageFoundLaterIsSetAsideAtTheNextOpening()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    for (int number = 0; number < 400; ++number)
        database.add(record(QString::number(number), 100, QByteArray(2000, 'x')));
    database.close();
    database.settle();
    takeInLog(folder());
    // All but the schema is gone, which opening does not look at.
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    constexpr qint64 pages = 8192;
    const QByteArray noise(file.size() - pages, '\x33');
    QVERIFY(file.seek(pages) && file.write(noise) == noise.size());
    file.close();
    QVERIFY(database.open(folder()));
    database.select(100);
    for (int number = 0; number < 400 && !database.isDamaged(); ++number)
        database.find(QString::number(number), 100);
    QVERIFY(database.isDamaged());
    QVERIFY(database.open(folder()));
    QCOMPARE(database.count(), std::optional<int>(0));
    QVERIFY(database.add(record(QStringLiteral("/a"))));
    QVERIFY(QFile::exists(path() + QStringLiteral(".damaged")));
}

void tst_cache::aFullDiskCostsTheRecordOnly()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    database.add(record(QStringLiteral("/kept")));
    database.settle();
    // A limit for files stands for the end of the disk: writing beyond it fails.
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full = {200'000, before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &full), 0);
    for (int number = 0; number < 200; ++number)
        QVERIFY(database.add(record(QString::number(number), 100, QByteArray(5000, 'x'))));
    database.settle();
    const bool stillThere = database.find(QStringLiteral("/kept"), 100).has_value();
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &before), 0);
    QVERIFY(database.count() < 201);
    QVERIFY(stillThere);
    QVERIFY(!database.isDamaged());
    QVERIFY(database.add(record(QStringLiteral("/later"))));
    database.close();
    QVERIFY(database.open(folder()));
    QVERIFY(database.find(QStringLiteral("/kept"), 100) && database.find(QStringLiteral("/later"), 100));
    QVERIFY(!QFile::exists(path() + QStringLiteral(".damaged")));
}

void tst_cache::aReadOnlyFolderHasNoCache()
{
    if (::geteuid() == 0)
        QSKIP("ROOT: nothing is write-protected for this user");
    const QByteArray native = QFile::encodeName(folder());
    QCOMPARE(::chmod(native.constData(), 0555), 0);
    ImagesDatabase database;
    const bool opened = database.open(folder());
    QCOMPARE(::chmod(native.constData(), 0755), 0);
    QVERIFY(!opened);
}

void tst_cache::compactionGivesRoomBackAndKeepsTheRecords()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    for (int number = 0; number < 500; ++number)
        database.add(record(QString::number(number), number < 400 ? 60 : 70, QByteArray(5000, 'x')));
    database.select(60);
    QVERIFY(database.removeAll([] { return true; }));
    database.close();
    database.settle();
    takeInLog(folder());
    const qint64 before = QFileInfo(path()).size();
    m_home->write(QStringLiteral("app/Cimages.mdb"), "left over");
    const auto done = compactImages(folder(), [](SqliteConnection *) {});
    QVERIFY2(bool(done), qPrintable(done.reason()));
    QVERIFY(QFileInfo(path()).size() < before / 3);
    QVERIFY(!QFile::exists(folder() + QLatin1String(imagesCompactedFile)));
    QVERIFY(!QFile::exists(path() + QStringLiteral("-wal")));
    QVERIFY(database.open(folder()));
    database.select(70);
    QCOMPARE(database.count(), std::optional<int>(100));
    QCOMPARE(names(database).size(), 100);
    QVERIFY(database.add(record(QStringLiteral("/new"), 70)));
    QCOMPARE(database.count(), std::optional<int>(101));
}

void tst_cache::compactionLeavesAFileInUseAlone()
{
    ImagesDatabase other;
    QVERIFY(other.open(folder()));
    other.add(record(QStringLiteral("/a")));
    other.settle();
    QVERIFY(!compactImages(folder(), [](SqliteConnection *) {}));
    QVERIFY(!QFile::exists(folder() + QLatin1String(imagesCompactedFile)));
    QVERIFY(other.add(record(QStringLiteral("/b"))));
    QCOMPARE(other.count(), std::optional<int>(2));
    // What is ended from outside leaves the file as it is, too.
    other.close();
    other.settle();
    QVERIFY(!compactImages(folder(), [](SqliteConnection *connection) {
        if (connection)
            ignore(connection->run("PRAGMA query_only=ON")), connection->close();
    }));
    QVERIFY(other.open(folder()));
    QCOMPARE(other.count(), std::optional<int>(2));
}

void tst_cache::blobsKnowTheirDamage()
{
    const QByteArray picture = "\xff\xd8 a picture";
    const QByteArray blob = sealedBlob(picture);
    QCOMPARE(unsealedBlob(blob), picture);
    QCOMPARE(unsealedBlob(picture), picture); // of another program
    for (qsizetype at = 4; at < blob.size(); ++at) {
        QByteArray damaged = blob;
        damaged[at] = char(damaged[at] ^ 1);
        QVERIFY(unsealedBlob(damaged).isEmpty());
    }
    QVERIFY(unsealedBlob(blob.first(6)).isEmpty());
    QVERIFY(unsealedBlob({}).isEmpty());
}

void tst_cache::numbersAreGrouped()
{
    QCOMPARE(groupedNumber(0), QString());
    QCOMPARE(groupedNumber(1234567), QStringLiteral("1,234,567"));
    QVERIFY(
        clearingFailedBox().text.startsWith(QLatin1String("Tessaly was unable to clear the thumbnail cache.  This")));
}

QTEST_GUILESS_MAIN(tst_cache)
#include "tst_cache.moc"
