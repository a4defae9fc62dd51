#include "thumbnails/frmDataBase.h"

#include "app/globals.h"
#include "app/settings.h"
#include "builtpaths.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmDatabaseStats.h"
#include "thumbnails/imagesschema.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmMessage.h"

#include <QtTest>

/// The window that owns the thumbnail cache: its states, its position, and the statistics.
class tst_frmDataBase : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void theFirstOpeningMakesAnEmptyCache();
    void withoutBothFilesItStaysClosed();
    void aTextThatIsNoSizeMeansTheCurrentOne_data();
    void aTextThatIsNoSizeMeansTheCurrentOne();
    void aStoredPictureIsFoundAgain_data();
    void aStoredPictureIsFoundAgain();
    void anotherLevelStoresNoPicture();
    void whatCannotBeDecodedIsNotFound();
    void storingGoesToTheEndAndMovingTellsThePosition();
    void deletingCountsDown();
    void deletingAllOfASizeLeavesTheOthers();
    void theClosedCacheFindsNothingAndKeepsItsFlag();
    void eventsDuringAStoreChangeNothingOfIt_data();
    void eventsDuringAStoreChangeNothingOfIt();
    void compactionReportsAndReopens();
    void compactionHoldsTheWindow();
    void statisticsCountEverySize();
    void theStatisticsWindowShowsAndCompacts();
    void damageBeginsANewCache();
    void aFileThatVanishesBeginsAnew();

private:
    frmDataBase &cache() { return form<frmDataBase>(); }
    QString path() const { return m_home->path() + QStringLiteral("app/images.mdb"); }
    static Picture square(int edge, QRgb color);
    void store(const QString &name, int size, QRgb color = 0xff336699);
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

const QString templateFile = QStringLiteral(LUMORA_BIN "/lumora-data/images.dat");

/// The picture that was found is of this colour, as far as a lossy format keeps it.
bool shows(const PolyImage &box, QRgb color)
{
    const QImage pixels = box.PolyPicture().pixels;
    const QRgb found = pixels.isNull() ? 0 : pixels.pixel(pixels.width() / 2, pixels.height() / 2);
    return qAbs(qRed(found) - qRed(color)) < 6 && qAbs(qGreen(found) - qGreen(color)) < 6
        && qAbs(qBlue(found) - qBlue(color)) < 6;
}

}

void tst_frmDataBase::initTestCase()
{
    useBuiltModules();
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_frmDataBase::init()
{
    m_home = std::make_unique<TemporaryHome>();
    saveOption("UserThumbnailSize", QStringLiteral("80"));
    saveOption("ThumbnailCompressionLevel", QStringLiteral("1"));
    QVERIFY(QFile::copy(templateFile, m_home->path() + QStringLiteral("app/images.dat")));
}

void tst_frmDataBase::cleanup()
{
    unload<frmDatabaseStats>();
    unload<frmDataBase>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

Picture tst_frmDataBase::square(int edge, QRgb color)
{
    QImage image(edge, edge, QImage::Format_RGB32);
    image.fill(color);
    return Picture::fromImage(image);
}

void tst_frmDataBase::store(const QString &name, int size, QRgb color)
{
    cache().ImageBox1.setPolyPicture(LoadedPicture::fromPicture(square(size, color)));
    cache().Store_Click(true, name, 480, 640, QDate(2004, 5, 6));
}

void tst_frmDataBase::theFirstOpeningMakesAnEmptyCache()
{
    QCOMPARE(cache().windowTitle(), QStringLiteral("DB Demo"));
    QVERIFY(!cache().isVisible());
    QVERIFY(QFile::exists(path()));
    QVERIFY(cache().DatabaseOpen);
    QCOMPARE(cache().RecordTotal, 0);
    QCOMPARE(cache().CurrentRecord, 0);
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("0/0"));
    QVERIFY(!cache().Cmd_Move[0]->isEnabled() && !cache().Cmd_Move[1]->isEnabled() && !cache().Cmd_Delete->isEnabled());
    QVERIFY(!cache().Find_Click(QStringLiteral("/a"), 80));
}

void tst_frmDataBase::withoutBothFilesItStaysClosed()
{
    QVERIFY(QFile::remove(m_home->path() + QStringLiteral("app/images.dat")));
    QVERIFY(!cache().DatabaseOpen);
    QVERIFY(!cache().Find_Click(QStringLiteral("/a"), 80));
    store(QStringLiteral("/a"), 80);
    QVERIFY(!cache().CompactDatabase());
    QVERIFY(!cache().DeleteAllClick());
    QVERIFY(!cache().DatabaseOpen);
    QVERIFY(!QFile::exists(path()));
}

void tst_frmDataBase::aTextThatIsNoSizeMeansTheCurrentOne_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<int>("total");
    QTest::newRow("a size") << "60"
                            << "80" << 1;
    QTest::newRow("all") << "All"
                         << "80" << 4;
    QTest::newRow("nothing") << ""
                             << "80" << 2;
    QTest::newRow("a number between") << "65"
                                      << "80" << 2;
    QTest::newRow("beyond the largest") << "210"
                                        << "80" << 2;
    QTest::newRow("a size with a blank") << " 60"
                                         << "80" << 2;
    QTest::newRow("all, in other letters") << "ALL"
                                           << "80" << 2;
    QTest::newRow("another current size") << ""
                                          << "100" << 1;
    QTest::newRow("a stored size that is none") << ""
                                                << "85" << 2;
}

void tst_frmDataBase::aTextThatIsNoSizeMeansTheCurrentOne()
{
    QFETCH(QString, text);
    QFETCH(QString, stored);
    QFETCH(int, total);
    store(QStringLiteral("/a"), 60);
    store(QStringLiteral("/a"), 80);
    store(QStringLiteral("/b"), 80);
    store(QStringLiteral("/c"), 100);
    saveOption("UserThumbnailSize", stored);
    cache().CloseDatabase();
    cache().OpenImagesDatabase(text);
    QCOMPARE(cache().RecordTotal, total);
    QCOMPARE(cache().CurrentRecord, 1);
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("1/%1").arg(total));
}

void tst_frmDataBase::aStoredPictureIsFoundAgain_data()
{
    QTest::addColumn<QString>("level");
    QTest::addColumn<QByteArray>("magic");
    QTest::newRow("uncompressed") << "0" << QByteArray("BM");
    QTest::newRow("standard") << "1" << QByteArray("\xff\xd8\xff");
    QTest::newRow("high") << "2" << QByteArray("\0\0\0\x0cjP  ", 8);
}

void tst_frmDataBase::aStoredPictureIsFoundAgain()
{
    QFETCH(QString, level);
    QFETCH(QByteArray, magic);
    saveOption("ThumbnailCompressionLevel", level);
    const QString name = QStringLiteral("/a \"quoted\" \u00e4.jpg");
    store(name, 80, 0xffcc3322);
    store(QStringLiteral("/other.jpg"), 80, 0xff0000ff);
    QVERIFY(shows(cache().ImageBox1, 0xff0000ff));
    QVERIFY(cache().Find_Click(name, 80));
    QVERIFY(shows(cache().ImageBox1, 0xffcc3322));
    QCOMPARE(cache().ImageBox1.PictureWidth(), 80);
    QCOMPARE(cache().txtImageName->text(), name);
    QCOMPARE(cache().txtImageHeight->text(), QStringLiteral("480"));
    QCOMPARE(cache().txtImageWidth->text(), QStringLiteral("640"));
    QCOMPARE(cache().txtImageDate->text(), QStringLiteral("05/06/2004"));
    QCOMPARE(cache().txtCompressionMode->text(), level);
    QCOMPARE(cache().txtThumbnailDate->text(), QDate::currentDate().toString(QStringLiteral("MM/dd/yyyy")));
    QCOMPARE(cache().txtThumbnailSize->text(), QStringLiteral("80"));
    // Replaced by what is stored into the record that was found.
    cache().ImageBox1.setPolyPicture(LoadedPicture::fromPicture(square(80, 0xff00aa00)));
    cache().Store_Click(false, name, 40'000, -40'000, QDate(2005, 1, 1));
    QCOMPARE(cache().RecordTotal, 2);
    QVERIFY(cache().Find_Click(name, 80));
    QVERIFY(shows(cache().ImageBox1, 0xff00aa00));
    QCOMPARE(cache().txtImageHeight->text(), QStringLiteral("32767"));
    QCOMPARE(cache().txtImageWidth->text(), QStringLiteral("-32768"));

    unload<frmDataBase>();
    ImagesDatabase database;
    QVERIFY(database.open(m_home->path() + QStringLiteral("app/")));
    QVERIFY(database.find(name, 80)->picture.mid(8).startsWith(magic));
}

void tst_frmDataBase::anotherLevelStoresNoPicture()
{
    saveOption("ThumbnailCompressionLevel", QStringLiteral("7"));
    store(QStringLiteral("/a"), 80);
    QCOMPARE(cache().RecordTotal, 1);
    QVERIFY(!cache().Find_Click(QStringLiteral("/a"), 80));
    unload<frmDataBase>();
    ImagesDatabase database;
    QVERIFY(database.open(m_home->path() + QStringLiteral("app/")));
    const auto found = database.find(QStringLiteral("/a"), 80);
    QVERIFY(found && found->picture.isEmpty());
    QCOMPARE(found->compressionMode, 7);
}

void tst_frmDataBase::whatCannotBeDecodedIsNotFound()
{
    {
        ImagesDatabase database;
        QVERIFY(database.open(m_home->path() + QStringLiteral("app/")));
        ImageRecord record;
        record.name = QStringLiteral("/a");
        record.thumbnailSize = 80;
        record.picture = "no picture";
        database.add(record);
        // From elsewhere; the one would take long, the other is as good as the program's own.
        for (const int edge : {2000, 80}) {
            record.name = QStringLiteral("/%1").arg(edge);
            record.picture = *encode(square(edge, 0xffcc3322), TypeCode::Jpeg);
            database.add(record);
        }
    }
    QVERIFY2(cache().DatabaseOpen, "the first record's picture decides about nothing");
    store(QStringLiteral("/z"), 80, 0xff0000ff);
    QVERIFY(!cache().Find_Click(QStringLiteral("/a"), 80));
    QVERIFY(!cache().Find_Click(QStringLiteral("/2000"), 80));
    QVERIFY2(shows(cache().ImageBox1, 0xff0000ff), "what was there stays");
    QVERIFY(cache().Find_Click(QStringLiteral("/80"), 80));
    store(QStringLiteral("/a"), 80, 0xff00aa00);
    QVERIFY(cache().Find_Click(QStringLiteral("/a"), 80));
    QCOMPARE(cache().RecordTotal, 4);
}

void tst_frmDataBase::storingGoesToTheEndAndMovingTellsThePosition()
{
    store(QStringLiteral("/b"), 80, 0xff0000ff);
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("1/1"));
    QVERIFY2(!cache().Cmd_Move[0]->isEnabled() && !cache().Cmd_Delete->isEnabled(), "one record enables neither");
    store(QStringLiteral("/c"), 80, 0xff00aa00);
    store(QStringLiteral("/a"), 80, 0xffcc3322);
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("3/3"));
    QVERIFY(cache().Cmd_Move[0]->isEnabled() && !cache().Cmd_Move[1]->isEnabled() && cache().Cmd_Delete->isEnabled());
    QVERIFY(cache().Find_Click(QStringLiteral("/a"), 80));
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("3/3")); // a find moves no position

    cache().Form_Load();
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("1/3"));
    QVERIFY(shows(cache().ImageBox1, 0xffcc3322));
    cache().Move_Click(0);
    QCOMPARE(cache().CurrentRecord, 1);
    cache().Cmd_Move[1]->setEnabled(true);
    cache().Cmd_Move[1]->click();
    QCOMPARE(cache().txtImageName->text(), QStringLiteral("/b"));
    cache().Move_Click(1);
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("3/3"));
    QVERIFY(shows(cache().ImageBox1, 0xff00aa00));
    QVERIFY(cache().Cmd_Move[0]->isEnabled() && !cache().Cmd_Move[1]->isEnabled());
    cache().Move_Click(1);
    QCOMPARE(cache().CurrentRecord, 3);
    cache().Move_Click(0);
    QVERIFY(shows(cache().ImageBox1, 0xff0000ff));
    QVERIFY(cache().Cmd_Move[1]->isEnabled());
}

void tst_frmDataBase::deletingCountsDown()
{
    for (const char *name : {"/a", "/b", "/c"})
        store(QString::fromLatin1(name), 80);
    cache().Form_Load();
    cache().Move_Click(1);
    cache().Delete_Click();
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("1/2"));
    QVERIFY(!cache().Find_Click(QStringLiteral("/b"), 80) && cache().Find_Click(QStringLiteral("/c"), 80));
    cache().Delete_Click();
    cache().Delete_Click();
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("0/0"));
    QVERIFY(!cache().Cmd_Delete->isEnabled() && !cache().Cmd_Move[0]->isEnabled() && !cache().Cmd_Move[1]->isEnabled());
    cache().Delete_Click();
    QCOMPARE(cache().RecordTotal, 0);
}

void tst_frmDataBase::deletingAllOfASizeLeavesTheOthers()
{
    store(QStringLiteral("/a"), 80);
    store(QStringLiteral("/b"), 80);
    store(QStringLiteral("/a"), 100);
    QVERIFY(cache().DeleteAllOfSizeClick());
    QCOMPARE(cache().RecordTotal, 0);
    QCOMPARE(cache().CurrentRecord, 1);
    QVERIFY(!cache().Find_Click(QStringLiteral("/a"), 80));
    cache().CloseDatabase();
    cache().OpenImagesDatabase(QStringLiteral("All"));
    QCOMPARE(cache().RecordTotal, 1);
    store(QStringLiteral("/c"), 80);
    QVERIFY(cache().DeleteAllClick());
    QCOMPARE(cache().Lbl_Cap->text(), QStringLiteral("0/0"));
    cache().OpenImagesDatabase(QStringLiteral("100"));
    QCOMPARE(cache().RecordTotal, 0);
}

void tst_frmDataBase::theClosedCacheFindsNothingAndKeepsItsFlag()
{
    store(QStringLiteral("/a"), 80);
    cache().CloseDatabase();
    QVERIFY(cache().DatabaseOpen);
    QVERIFY(!cache().Find_Click(QStringLiteral("/a"), 80));
    store(QStringLiteral("/b"), 80);
    cache().Move_Click(1);
    cache().Form_Load();
    QVERIFY(cache().Find_Click(QStringLiteral("/a"), 80));
    QCOMPARE(cache().RecordTotal, 1);
    QVERIFY2(!cache().Find_Click(QStringLiteral("/a"), 100), "another size is not open");
}

void tst_frmDataBase::eventsDuringAStoreChangeNothingOfIt_data()
{
    QTest::addColumn<int>("disturbance");
    QTest::newRow("another picture comes into the box") << 0;
    QTest::newRow("another record is stored") << 1;
    QTest::newRow("the size changes") << 2;
    QTest::newRow("the window goes") << 3;
}

void tst_frmDataBase::eventsDuringAStoreChangeNothingOfIt()
{
    QFETCH(int, disturbance);
    bool disturbing = false;
    forEachYield(
        [&] {
            unload<frmDataBase>();
            cache().DeleteAllClick();
        },
        [&] { store(QStringLiteral("/wanted"), 80, 0xffcc3322); },
        [&] {
            if (std::exchange(disturbing, true))
                return;
            if (disturbance == 0)
                cache().ImageBox1.setPolyPicture(LoadedPicture::fromPicture(square(100, 0xff0000ff)));
            else if (disturbance == 1)
                store(QStringLiteral("/other"), 80, 0xff0000ff);
            else if (disturbance == 2)
                cache().OpenImagesDatabase(QStringLiteral("100"));
            else
                unload<frmDataBase>();
            disturbing = false;
        },
        [&](int) {
            cache().OpenImagesDatabase(QStringLiteral("80"));
            const bool found = cache().Find_Click(QStringLiteral("/wanted"), 80);
            QVERIFY(found || disturbance >= 2);
            QVERIFY(!found || shows(cache().ImageBox1, 0xffcc3322));
        });
}

void tst_frmDataBase::compactionReportsAndReopens()
{
    for (int number = 0; number < 100; ++number)
        store(QString::number(number), number < 90 ? 200 : 80, 0xff000000 + QRgb(number) * 12345);
    cache().OpenImagesDatabase(QStringLiteral("200"));
    QVERIFY(cache().DeleteAllOfSizeClick());
    cache().CloseDatabase();
    takeInLog(m_home->path() + QStringLiteral("app/"));
    const qint64 before = QFileInfo(path()).size();
    QVERIFY(cache().CompactDatabase());
    QVERIFY(QFileInfo(path()).size() < before);
    QVERIFY(cache().DatabaseOpen);
    QCOMPARE(cache().RecordTotal, 10);
    QVERIFY(cache().Find_Click(QStringLiteral("95"), 80));

    ImagesDatabase other;
    QVERIFY(other.open(m_home->path() + QStringLiteral("app/")));
    QVERIFY2(!cache().CompactDatabase(), "somebody else has it open");
    QVERIFY(cache().DatabaseOpen);
    QCOMPARE(cache().RecordTotal, 10);
    other.close();

    cache().CloseDatabase();
    QVERIFY(QFile::remove(path()));
    QVERIFY(!cache().CompactDatabase());
    QVERIFY2(!QFile::exists(path()), "a missing file is left missing");
}

void tst_frmDataBase::compactionHoldsTheWindow()
{
    store(QStringLiteral("/a"), 80);
    int refused = 0;
    setYieldHook([&](int number) {
        if (number != 1)
            return;
        refused += !cache().CompactDatabase();
        refused += !cache().Find_Click(QStringLiteral("/a"), 80);
        refused += !cache().DeleteAllClick();
        refused += !unload<frmDataBase>();
    });
    QVERIFY(cache().CompactDatabase());
    setYieldHook({});
    QCOMPARE(refused, 4);
    QVERIFY(cache().Find_Click(QStringLiteral("/a"), 80));
}

void tst_frmDataBase::statisticsCountEverySize()
{
    cache().DatabaseStats();
    QCOMPARE(form<frmDatabaseStats>().lblTotalThumbnails->text(), QString());
    QCOMPARE(form<frmDatabaseStats>().lblThumbnailCount(200)->text(), QStringLiteral("0"));
    for (int size = 60; size <= 200; size += 10) {
        for (int number = 0; number <= size / 50; ++number)
            store(QString::number(number), size);
    }
    cache().DatabaseStats();
    auto &stats = form<frmDatabaseStats>();
    int total = 0;
    for (int size = 60; size <= 200; size += 10) {
        QCOMPARE(stats.lblThumbnailCount(size)->text().toInt(), size / 50 + 1);
        total += size / 50 + 1;
    }
    QCOMPARE(stats.lblTotalThumbnails->text(), QString::number(total));
    QVERIFY(cache().DatabaseOpen);
    QCOMPARE(cache().RecordTotal, 2); // of the current size again
}

void tst_frmDataBase::theStatisticsWindowShowsAndCompacts()
{
    store(QStringLiteral("/a"), 80);
    auto &stats = form<frmDatabaseStats>();
    QVERIFY(stats.IsOpen);
    QCOMPARE(stats.windowTitle(), QStringLiteral("Tessaly Lumora - Database Stats"));
    stats.show();
    QTRY_COMPARE(stats.lblTotalThumbnails->text(), QStringLiteral("1"));
    QCOMPARE(stats.lblFileSize->text().remove(QLatin1Char(',')).toLongLong(), QFileInfo(path()).size());
    QString told;
    setYieldHook([&](int) {
        if (isLoaded<frmMessage>())
            told = form<frmMessage>().lblMessage->text();
    });
    stats.cmdCompactDatabase->click();
    setYieldHook({});
    QCOMPARE(told, QStringLiteral("\nCompacting Thumbnail Database\nthis may take several seconds."));
    QVERIFY(!isLoaded<frmMessage>());
    QCOMPARE(stats.lblTotalThumbnails->text(), QStringLiteral("1"));
    const QPointer<frmDatabaseStats> window(&stats);
    QTest::keyClick(&stats, Qt::Key_Escape);
    QVERIFY(!isLoaded<frmDatabaseStats>() && (!window || !window->IsOpen));
}

void tst_frmDataBase::damageBeginsANewCache()
{
    for (int number = 0; number < 60; ++number)
        store(QString::number(number), 200, 0xff000000 + QRgb(number) * 54321);
    unload<frmDataBase>();
    takeInLog(m_home->path() + QStringLiteral("app/"));
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    const QByteArray noise(file.size() - 8192, '\x33');
    QVERIFY(file.seek(8192) && file.write(noise) == noise.size());
    file.close();
    saveOption("UserThumbnailSize", QStringLiteral("200"));
    QVERIFY(cache().DatabaseOpen);
    for (int number = 0; number < 60; ++number)
        QVERIFY(!cache().Find_Click(QString::number(number), 200));
    store(QStringLiteral("/new"), 200);
    store(QStringLiteral("/newer"), 200);
    QVERIFY(cache().Find_Click(QStringLiteral("/newer"), 200));
}

void tst_frmDataBase::aFileThatVanishesBeginsAnew()
{
    store(QStringLiteral("/a"), 80);
    QVERIFY(QFile::remove(path()));
    QVERIFY(!cache().Find_Click(QStringLiteral("/b"), 80));
    QVERIFY(QFile::exists(path()));
    QCOMPARE(cache().RecordTotal, 0);
    store(QStringLiteral("/b"), 80);
    unload<frmDataBase>();
    QVERIFY(cache().Find_Click(QStringLiteral("/b"), 80));
}

QTEST_MAIN(tst_frmDataBase)
#include "tst_frmDataBase.moc"
