#include "engine/enginefiles.h"
#include "engine/limits.h"
#include "engine/picturecache.h"
#include "support/support.h"

#include <QFile>
#include <QTest>

#include <thread>

/// The cache shows what a decode at the moment of the call would show, only sooner.
class tst_PictureCache : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void init() { PictureCache::instance().shutDown(); }
    void theSameFileIsDecodedOnce();
    void aChangedFileIsDecodedAnew();
    void aSmallerDecodeIsCompletedForALargerWish();
    void prefetchedPicturesAreShared();
    void whatWasPrefetchedSmallGrowsForALargerPane();
    void scaledPixelsAreKeptForTheSizesAskedLast();
    void anEarlyStartAnswersTheLoad_data();
    void anEarlyStartAnswersTheLoad();
    void failuresAreNotRemembered();
    void theBudgetHolds();
    void manyThreadsGetTheirOwnPictures();
    void shutDownForgetsAll();

private:
    TemporaryHome m_home;
    PictureCache &m_cache = PictureCache::instance();
};

void tst_PictureCache::theSameFileIsDecodedOnce()
{
    const QString path = m_home.writePicture(QStringLiteral("a.png"), {40, 30});
    const auto first = m_cache.load(path, -1, {});
    const auto second = m_cache.load(path, 3, {});
    QVERIFY(first && second);
    QCOMPARE(first->get(), second->get());
    QCOMPARE(m_cache.bytesHeld(), (*first)->cost());
}

void tst_PictureCache::aChangedFileIsDecodedAnew()
{
    const QString path = m_home.writePicture(QStringLiteral("b.png"), {40, 30});
    QCOMPARE((*m_cache.load(path, -1, {}))->info().size, QSize(40, 30));
    m_home.writePicture(QStringLiteral("b.png"), {50, 60});
    const auto changed = m_cache.load(path, -1, {});
    QCOMPARE((*changed)->info().size, QSize(50, 60));
    QCOMPARE(m_cache.bytesHeld(), (*changed)->cost());
    QVERIFY(QFile::remove(path));
    QVERIFY(!m_cache.load(path, -1, {}));
}

void tst_PictureCache::aSmallerDecodeIsCompletedForALargerWish()
{
    const QString path = m_home.write(QStringLiteral("c.jpg"), written(rampImage({1600, 1200}), "jpg"));
    QCOMPARE((*m_cache.load(path, -1, {150, 150}))->current().pixels.size(), QSize(200, 150));
    QCOMPARE((*m_cache.load(path, -1, {700, 700}))->current().pixels.size(), QSize(800, 600));
    QCOMPARE((*m_cache.load(path, -1, {}))->current().pixels.size(), QSize(1600, 1200));
    QCOMPARE((*m_cache.load(path, -1, {150, 150}))->current().pixels.size(), QSize(1600, 1200));
}

void tst_PictureCache::prefetchedPicturesAreShared()
{
    QStringList paths;
    for (int i = 0; i < 6; ++i)
        paths += m_home.write(QStringLiteral("ahead%1.jpg").arg(i), written(rampImage({800, 600 + i}), "jpg"));
    paths += m_home.path() + QStringLiteral("missing.jpg");
    m_cache.prefetch(paths, -1, {});
    // Whether its decode is done, under way or still waiting: each load gets the right picture.
    for (int i = 5; i >= 0; --i)
        QCOMPARE((*m_cache.load(paths.at(i), -1, {}))->info().size, QSize(800, 600 + i));
    const qint64 all = 800LL * 4 * (600 * 6 + 15);
    QTRY_COMPARE(m_cache.bytesHeld(), all);

    m_cache.shutDown();
    m_cache.prefetch({paths.at(0)}, -1, {});
    QTRY_COMPARE(m_cache.bytesHeld(), 800LL * 4 * 600);
    QVERIFY(m_cache.load(paths.at(0), -1, {}));
    QCOMPARE(m_cache.bytesHeld(), 800LL * 4 * 600);
}

void tst_PictureCache::whatWasPrefetchedSmallGrowsForALargerPane()
{
    const QString path = m_home.write(QStringLiteral("pane.jpg"), written(rampImage({1600, 1200}), "jpg"));
    m_cache.prefetch({path}, -1, {150, 150});
    const auto decodedWidth = [&] { return (*m_cache.load(path, -1, {8, 8}))->current().pixels.width(); };
    QTRY_COMPARE(decodedWidth(), 200);
    std::atomic<int> prepared = 0;
    m_cache.prefetch({path, m_home.path() + QStringLiteral("missing.jpg")}, -1, {700, 700},
        [&](const LoadedPicture &picture) { prepared += picture.current().pixels.width(); });
    QTRY_COMPARE(prepared.load(), 800);
    QCOMPARE(decodedWidth(), 800);
}

void tst_PictureCache::scaledPixelsAreKeptForTheSizesAskedLast()
{
    QImage clear(60, 40, QImage::Format_ARGB32);
    clear.fill(0x80ff0000);
    const auto opaque = LoadedPicture::fromPicture(Picture::fromImage(rampImage({60, 40})));
    const auto transparent = LoadedPicture::fromPicture(Picture::fromImage(clear));
    const qint64 before = opaque->cost();
    const QImage half = opaque->scaled({30, 20});
    QCOMPARE(half.size(), QSize(30, 20));
    QCOMPARE(half.format(), QImage::Format_RGB32);
    QCOMPARE(transparent->scaled({30, 20}).format(), QImage::Format_ARGB32_Premultiplied);
    // Its own size costs nothing, the others what they hold; two stay.
    QCOMPARE(opaque->scaled({60, 40}).constBits(), opaque->current().pixels.constBits());
    QCOMPARE(opaque->scaled({30, 20}).constBits(), half.constBits());
    QCOMPARE(opaque->cost(), before + half.sizeInBytes());
    opaque->scaled({15, 10});
    opaque->scaled({6, 4});
    QCOMPARE(opaque->cost(), before + (15 * 10 + 6 * 4) * 4);
}

void tst_PictureCache::anEarlyStartAnswersTheLoad_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("works");
    QTest::newRow("a JPEG is decoded early") << written(rampImage({900, 700}), "jpg") << true;
    QTest::newRow("a PNG is decoded early") << written(rampImage({900, 700}), "png") << true;
    QTest::newRow("a BMP is left to the load") << written(rampImage({900, 700}), "bmp") << true;
    QTest::newRow("what is no picture stays none") << QByteArray("no picture at all") << false;
}

void tst_PictureCache::anEarlyStartAnswersTheLoad()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, works);
    const QString path = m_home.write(QStringLiteral("early"), bytes);
    m_cache.startEarly(path, -1, {});
    m_cache.startEarly(m_home.path() + QStringLiteral("nothing"), -1, {});
    const auto loaded = m_cache.load(path, -1, {});
    QCOMPARE(bool(loaded), works);
    if (works)
        QCOMPARE((*loaded)->full().pixels.size(), QSize(900, 700));
}

void tst_PictureCache::failuresAreNotRemembered()
{
    const QString path = m_home.write(QStringLiteral("late.png"), "not yet");
    QVERIFY(!m_cache.load(path, -1, {}));
    m_home.writePicture(QStringLiteral("late.png"), {10, 10});
    QVERIFY(m_cache.load(path, -1, {}));
}

void tst_PictureCache::theBudgetHolds()
{
    // Each of a fifth of the budget, so that the sixth must push one out.
    const int width = 4000;
    const int height = int(limits::cacheBudget() / 5 / (width * 4));
    const QString first =
        m_home.write(QStringLiteral("large.png"), written(QImage(width, height, QImage::Format_RGB32), "png", 100));
    QStringList paths{first};
    for (int i = 1; i < 8; ++i) {
        paths += m_home.path() + QStringLiteral("large%1.png").arg(i);
        QVERIFY(QFile::copy(first, paths.last()));
    }
    const qint64 newest = qint64(width) * height * 4;
    for (const QString &path : paths) {
        QVERIFY(m_cache.load(path, -1, {}));
        QVERIFY(m_cache.bytesHeld() <= limits::cacheBudget() + newest);
    }
    QVERIFY(m_cache.bytesHeld() > limits::cacheBudget() / 2);
    // The last one used is the last to go.
    const auto last = m_cache.load(paths.last(), -1, {});
    QCOMPARE(last->get(), m_cache.load(paths.last(), -1, {})->get());
}

void tst_PictureCache::manyThreadsGetTheirOwnPictures()
{
    QStringList paths;
    for (const SmallFile &small : smallFiles())
        paths += m_home.write(
            QStringLiteral("thread-") + QString::fromLatin1(small.name) + QLatin1Char('.') + small.extension,
            small.bytes);
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 6; ++t) {
            threads.emplace_back([&, t] {
                for (int i = 0; i < 4 * paths.size(); ++i) {
                    const QString &path = paths.at((i * (t + 1) + t) % paths.size());
                    const auto loaded = m_cache.load(path, -1, {});
                    wrong += !loaded || (*loaded)->full().pixels.size() != (*loaded)->info().size;
                    if (i % 10 == t)
                        m_cache.prefetch(paths, -1, {});
                    if (i % 40 == t)
                        m_cache.shutDown();
                }
            });
        }
    }
    QCOMPARE(wrong.load(), 0);
}

void tst_PictureCache::shutDownForgetsAll()
{
    const QString path = m_home.writePicture(QStringLiteral("gone.png"), {40, 30});
    const auto held = m_cache.load(path, -1, {});
    m_cache.shutDown();
    QCOMPARE(m_cache.bytesHeld(), 0);
    QCOMPARE((*held)->full().pixels.size(), QSize(40, 30));
    QVERIFY(m_cache.load(path, -1, {})->get() != held->get());
}

QTEST_GUILESS_MAIN(tst_PictureCache)
#include "tst_picturecache.moc"
