#include "app/mediatypes.h"
#include "engine/ops/areaaverage.h"
#include "engine/polyimage.h"
#include "support/support.h"
#include "thumbnails/thumbnailahead.h"
#include "thumbnails/thumbnailblob.h"
#include "thumbnails/thumbnailrun.h"

#include <QtTest>

#include <atomic>

/// What a thumbnail is made of, the threads that make it ahead, and the figures that a run tells.
class tst_thumbnail_making : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void init() { m_home = std::make_unique<TemporaryHome>(); }
    void sourcesAreSmallAndKnowTheirFile_data();
    void sourcesAreSmallAndKnowTheirFile();
    void aReducedSourceGivesTheSameThumbnail();
    void theMaskAnswersToBothSetsOfNames();
    void aGuessIsTakenOnce();
    void aGuessOfAChangedFileDoesNotHold();
    void whatCannotBeReadFailsAndTheNextIsMade_data();
    void whatCannotBeReadFailsAndTheNextIsMade();
    void aPictureStandsInForAFile();
    void keptSourcesServeTheSameFileOnly();
    void whatIsDroppedIsNotMade();
    void blobsAreWhatTheCacheReads();
    void countsAndBar_data();
    void countsAndBar();
    void theRateBeginsWithTheFirstThumbnail();
    void theEstimateFollowsItsDivision_data();
    void theEstimateFollowsItsDivision();
    void theQuestionDefaultsToNo();

private:
    static ThumbnailWork work(const QString &path, int size = 80, int level = ThumbnailWork::noBlob)
    {
        return {path, {QSize(size, size), QColor(Qt::green), false}, level};
    }
    static bool wait(const ThumbnailAhead &ahead, const ThumbnailAhead::Job &job)
    {
        return QTest::qWaitFor([&] { return ahead.isDone(job); }, 20000);
    }
    static QRgb centreOf(const ThumbnailAhead::Job &job)
    {
        const QImage pixels = job->thumbnail ? job->thumbnail->current().pixels : QImage();
        return pixels.isNull() ? 0 : pixels.pixel(pixels.rect().center());
    }
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {
constexpr QRgb red = 0xffcc2211;
constexpr QRgb blue = 0xff1122cc;

/// Of a photograph's kind: soft, with edges.
QImage scene(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(x * 255 / size.width(), y * 255 / size.height(), (x / 37 + y / 23) % 2 * 180));
    }
    return image;
}
}

void tst_thumbnail_making::sourcesAreSmallAndKnowTheirFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("least");
    QTest::addColumn<QSize>("most");
    QTest::newRow("a JPEG by its decoder") << "a.jpg" << QSize(4000, 3000) << QSize(400, 300) << QSize(799, 599);
    QTest::newRow("a PNG by a whole factor") << "a.png" << QSize(2000, 1500) << QSize(400, 300) << QSize(400, 300);
    QTest::newRow("an upright one") << "a.bmp" << QSize(500, 2500) << QSize(80, 400) << QSize(100, 500);
    QTest::newRow("a strip of one pixel") << "a.png" << QSize(3000, 1) << QSize(400, 1) << QSize(3000, 1);
    QTest::newRow("a small one as it is") << "a.png" << QSize(90, 60) << QSize(90, 60) << QSize(90, 60);
}

void tst_thumbnail_making::sourcesAreSmallAndKnowTheirFile()
{
    QFETCH(QString, name);
    QFETCH(QSize, size);
    QFETCH(QSize, least);
    QFETCH(QSize, most);
    const auto source = loadThumbnailSource(m_home->writePicture(name, size));
    QVERIFY2(source, qPrintable(source.reason()));
    QCOMPARE((*source)->info().size, size);
    const QSize pixels = (*source)->current().pixels.size();
    QVERIFY(pixels.width() >= least.width() && pixels.height() >= least.height());
    QVERIFY(pixels.width() <= most.width() && pixels.height() <= most.height());
    QCOMPARE((*source)->full().pixels.size(), pixels);
}

void tst_thumbnail_making::aReducedSourceGivesTheSameThumbnail()
{
    const QImage large = scene({2400, 1800});
    const QString path = m_home->path() + QStringLiteral("large.png");
    QVERIFY(large.save(path));
    const auto source = loadThumbnailSource(path);
    QVERIFY(source);
    const ThumbnailLook look{{100, 100}, Qt::black, false};
    const QImage small = thumbnailOf(source->get(), look).pixels.copy(0, 12, 100, 75);
    const QImage exact = areaAverage(large, {100, 75});
    int worst = 0;
    for (int y = 0; y < 75; ++y) {
        for (int x = 0; x < 100; ++x) {
            worst = qMax(worst, qAbs(qRed(small.pixel(x, y)) - qRed(exact.pixel(x, y))));
            worst = qMax(worst, qAbs(qBlue(small.pixel(x, y)) - qBlue(exact.pixel(x, y))));
        }
    }
    QVERIFY2(worst <= 3, qPrintable(QString::number(worst)));
}

void tst_thumbnail_making::theMaskAnswersToBothSetsOfNames()
{
    ImageMaskControl mask;
    QCOMPARE(mask.MaskImageWidth(), 0);
    mask.setMaskSourcePicture(LoadedPicture::fromPicture(Picture::fromImage(scene({300, 120}))));
    mask.setMaskBackColor(Qt::green);
    mask.setMaskStyle(1);
    QVERIFY(mask.MaskThumbnailStyle());
    mask.MakeThumbnail(60, 60);
    QCOMPARE(mask.MaskImageWidth(), 300);
    QCOMPARE(mask.MaskImageHeight(), 120);
    const QImage framed = mask.MaskResultPicture().pixels;
    QCOMPARE(framed.size(), QSize(60, 60));
    QCOMPARE(framed.pixelColor(30, 5), QColor(Qt::green));
    mask.MaskMakeThumbnail(60, 60);
    QCOMPARE(mask.MaskThumbnailPicture().pixels, framed);
    mask.setMaskStyle(0);
    mask.MakeThumbnail(60, 60);
    QVERIFY(mask.MaskResultPicture().pixels != framed);
}

void tst_thumbnail_making::aGuessIsTakenOnce()
{
    ThumbnailAhead ahead([] {});
    const QString path = m_home->writePicture(QStringLiteral("red.png"), {120, 120}, red);
    ahead.expect(1, work(path), true);
    ahead.expect(2, work(path, 100), true);
    QVERIFY(!ahead.take(work(path, 90)));
    const auto job = ahead.take(work(path, 100));
    QVERIFY(job);
    QVERIFY(!ahead.take(work(path, 100)));
    QVERIFY(ahead.isReady(2));
    QVERIFY(wait(ahead, job));
    QCOMPARE(centreOf(job), red);
    QCOMPARE(job->sourceSize, QSize(120, 120));
    QCOMPARE(job->thumbnail->info().size, QSize(100, 100));
    QVERIFY(QTest::qWaitFor([&] { return ahead.isReady(1); }));
}

void tst_thumbnail_making::aGuessOfAChangedFileDoesNotHold()
{
    ThumbnailAhead ahead([] {});
    const QString path = m_home->writePicture(QStringLiteral("a.png"), {120, 120}, red);
    const auto first = ahead.start(work(path), true);
    QVERIFY(wait(ahead, first));
    ThumbnailJob settled = *first;
    settled.restless = false;
    QVERIFY(ThumbnailAhead::isStillTrue(settled));
    // Changed so shortly before it was read that the next change might have the same time.
    settled.restless = true;
    QVERIFY(!ThumbnailAhead::isStillTrue(settled));
    settled.restless = false;
    QFile::remove(path);
    QVERIFY(!ThumbnailAhead::isStillTrue(settled));
    m_home->writePicture(QStringLiteral("a.png"), {130, 120}, blue);
    QVERIFY(!ThumbnailAhead::isStillTrue(settled));
    const auto second = ahead.start(work(path), true);
    QVERIFY(wait(ahead, second));
    QCOMPARE(centreOf(second), blue);
}

void tst_thumbnail_making::whatCannotBeReadFailsAndTheNextIsMade_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("exists");
    QTest::newRow("not there") << QByteArray() << false;
    QTest::newRow("empty") << QByteArray() << true;
    QTest::newRow("no picture") << QByteArray("words") << true;
    QTest::newRow("a size beyond all limits")
        << QByteArray("BM\x36\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\xff\xff\xff\x7f\xff\xff\xff\x7f\1\0\x18\0", 30) << true;
}

void tst_thumbnail_making::whatCannotBeReadFailsAndTheNextIsMade()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, exists);
    const QString path =
        exists ? m_home->write(QStringLiteral("bad.bmp"), bytes) : m_home->path() + QStringLiteral("bad.bmp");
    ThumbnailAhead ahead([] {});
    const auto bad = ahead.start(work(path), true);
    const auto good = ahead.start(work(m_home->writePicture(QStringLiteral("good.png"), {90, 90}, blue)), true);
    QVERIFY(wait(ahead, bad) && wait(ahead, good));
    QVERIFY(!bad->thumbnail && !bad->source && !bad->failure.isEmpty());
    QCOMPARE(centreOf(good), blue);
}

void tst_thumbnail_making::aPictureStandsInForAFile()
{
    ThumbnailAhead ahead([] {});
    const QString path = m_home->write(QStringLiteral("bad.jpg"), "words");
    QImage image(900, 300, QImage::Format_RGB32);
    image.fill(red);
    const auto stand = ahead.startFrom(LoadedPicture::fromPicture(Picture::fromImage(image)), work(path));
    const auto ground = ahead.startFrom(nullptr, work(path));
    QVERIFY(wait(ahead, stand) && wait(ahead, ground));
    QCOMPARE(centreOf(stand), red);
    QCOMPARE(stand->sourceSize, QSize(900, 300));
    QVERIFY(stand->source->current().pixels.width() < 900);
    QCOMPARE(centreOf(ground), qRgb(0, 255, 0));
    QVERIFY(!ground->source);
}

void tst_thumbnail_making::keptSourcesServeTheSameFileOnly()
{
    ThumbnailAhead ahead([] {}, 1024 * 1024);
    const QString path = m_home->writePicture(QStringLiteral("a.png"), {120, 120}, red);
    // A file just written is not kept.
    QVERIFY(QTest::qWaitFor([&] {
        const auto job = ahead.start(work(path), true);
        return wait(ahead, job) && !job->restless;
    }));
    const auto first = ahead.start(work(path, 60), true);
    const auto second = ahead.start(work(path, 200), true);
    QVERIFY(wait(ahead, first) && wait(ahead, second));
    QCOMPARE(first->source, second->source);
    QCOMPARE(centreOf(second), red);
    m_home->writePicture(QStringLiteral("a.png"), {120, 130}, blue);
    const auto changed = ahead.start(work(path), true);
    QVERIFY(wait(ahead, changed));
    QCOMPARE(centreOf(changed), blue);
}

void tst_thumbnail_making::whatIsDroppedIsNotMade()
{
    auto woken = std::make_shared<std::atomic<int>>(0);
    ThumbnailAhead::Job last;
    {
        ThumbnailAhead ahead([woken] { ++*woken; });
        const QString path = m_home->path() + QStringLiteral("large.png");
        QVERIFY(scene({2000, 1500}).save(path));
        for (int i = 0; i < 40; ++i)
            ahead.expect(i, work(path, 60 + i), false);
        ahead.dropBefore(39);
        QCOMPARE(ahead.size(), 1);
        last = ahead.take(work(path, 99));
        QVERIFY(wait(ahead, last));
        QVERIFY(!last->source);
        ahead.expect(40, work(path, 200), false);
        ahead.clear();
        QVERIFY(ahead.isReady(40));
    }
    QVERIFY2(*woken >= 1 && *woken < 20, qPrintable(QString::number(*woken)));
}

void tst_thumbnail_making::blobsAreWhatTheCacheReads()
{
    ThumbnailAhead ahead([] {});
    const QString path = m_home->writePicture(QStringLiteral("red.png"), {120, 120}, red);
    for (const int level : {0, 1, 2}) {
        const auto job = ahead.start(work(path, 80, level), false);
        QVERIFY(wait(ahead, job));
        QCOMPARE(job->blob, encodedThumbnail(job->thumbnail, level));
        PolyImage box;
        QVERIFY(box.ImageBlobLoad(unsealedBlob(job->blob)));
        QCOMPARE(box.PictureWidth(), 80);
    }
    const auto job = ahead.start(work(path, 80), false);
    QVERIFY(wait(ahead, job));
    QVERIFY(job->blob.isEmpty());
    QVERIFY(encodedThumbnail(job->thumbnail, 3).isEmpty());
    QVERIFY(encodedThumbnail(nullptr, 1).isEmpty());
}

void tst_thumbnail_making::countsAndBar_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("last");
    QTest::addColumn<QString>("grouped");
    QTest::addColumn<QString>("plain");
    QTest::addColumn<int>("bar");
    QTest::newRow("one of one") << 0 << 0 << "1 of 1"
                                << "1 of 1" << 100;
    QTest::newRow("thousands") << 1233 << 32766 << "1,234 of 32,767"
                               << "1234 of 32767" << 3;
    QTest::newRow("29 of 100 is a little less in binary") << 28 << 99 << "29 of 100"
                                                          << "29 of 100" << 28;
    QTest::newRow("two of three") << 1 << 2 << "2 of 3"
                                  << "2 of 3" << 66;
}

void tst_thumbnail_making::countsAndBar()
{
    QFETCH(int, index);
    QFETCH(int, last);
    QTEST(fileCountText(index, last, CountFormat::Grouped), "grouped");
    QTEST(fileCountText(index, last, CountFormat::Plain), "plain");
    QTEST(progressValue(index, last), "bar");
}

void tst_thumbnail_making::theRateBeginsWithTheFirstThumbnail()
{
    ThumbnailRate rate(0);
    QCOMPARE(rateText(rate.perMinute()), QString());
    rate.count(100);
    QCOMPARE(rate.perMinute(), 0.0F);
    rate.count(100); // no time has gone by
    QCOMPARE(rate.perMinute(), 0.0F);
    rate.count(100.7);
    QCOMPARE(rate.perMinute(), float(3 / (100.7 - 100) * 60));
    rate.count(100.1);
    QCOMPARE(rateText(rate.perMinute()), QStringLiteral("2,400"));
    rate.count(90); // a clock that goes back
    QCOMPARE(rateText(rate.perMinute()), QStringLiteral("2,400"));
    QCOMPARE(rateText(0.4F), QString());
}

void tst_thumbnail_making::theEstimateFollowsItsDivision_data()
{
    QTest::addColumn<int>("remaining");
    QTest::addColumn<float>("perMinute");
    QTest::addColumn<bool>("due");
    QTest::addColumn<QString>("text");
    QTest::newRow("below one a second always") << 7 << 59.9F << true << "Est. Time Remaining: 00:00:07";
    QTest::newRow("no rate yet") << 7 << 0.0F << true << QString();
    QTest::newRow("one a second") << 8 << 119.9F << true << "Est. Time Remaining: 00:00:04";
    QTest::newRow("an even quotient") << 9 << 200.0F << true << "Est. Time Remaining: 00:00:03";
    QTest::newRow("an uneven quotient") << 10 << 200.0F << false << "Est. Time Remaining: 00:00:03";
    QTest::newRow("the last file") << 0 << 4000.0F << true << "Est. Time Remaining: 00:00:00";
    QTest::newRow("more than the groups of a number") << 10000 << 1200.0F << true << "Est. Time Remaining: 00:08:20";
    QTest::newRow("more than a day") << 3000 << 2.0F << true << "Est. Time Remaining: 01:00:00";
}

void tst_thumbnail_making::theEstimateFollowsItsDivision()
{
    QFETCH(int, remaining);
    QFETCH(float, perMinute);
    QTEST(isEstimateDue(remaining, perMinute), "due");
    QTEST(estimateText(remaining, rateText(perMinute)).value_or(QString()), "text");
}

void tst_thumbnail_making::theQuestionDefaultsToNo()
{
    const MessageBox box = cancelRunBox();
    QCOMPARE(box.title, QStringLiteral("Delete Thumbnail cache:"));
    QCOMPARE(box.text, QStringLiteral("Are you sure you want to cancel thumbnail generating all thumbnails?"));
    QVERIFY(box.icon == MessageBox::Icon::Question && box.buttons == MessageBox::Buttons::YesNo);
    QVERIFY(box.defaultAnswer == MessageBox::Answer::No);
}

QTEST_GUILESS_MAIN(tst_thumbnail_making)
#include "tst_thumbnail_making.moc"
