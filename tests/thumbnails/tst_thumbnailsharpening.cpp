#include "engine/polyimage.h"
#include "support/support.h"
#include "thumbnails/thumbnailblob.h"
#include "thumbnails/thumbnailcrew.h"
#include "thumbnails/thumbnailsharpening.h"

#include <QPainter>
#include <QtTest>

/// When a thumbnail of more pixels takes the place of one from the cache.
class tst_thumbnailsharpening : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void whatTheCacheStoresLooksAlike_data();
    void whatTheCacheStoresLooksAlike();
    void aChangeDoesNot_data();
    void aChangeDoesNot();
    void sharperIsTakenForTheSamePictureOnly();
};

namespace {

constexpr QSize edge(80, 80);

/// Soft and with edges, as photographs are.
QImage photograph(QSize size, int hue = 30)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient sky(0, 0, 0, size.height());
    sky.setColorAt(0, QColor::fromHsv(hue, 60, 250));
    sky.setColorAt(1, QColor::fromHsv(hue + 60, 200, 60));
    painter.fillRect(image.rect(), sky);
    for (int stone = 0; stone < 60; ++stone) {
        const QSize part = size / (8 + stone % 7);
        painter.fillRect(QRect(QPoint(stone * 37 % size.width(), stone * 61 % size.height()), part),
            QColor::fromHsv(stone * 41 % 360, 120, 40 + stone * 3));
    }
    return image;
}

ThumbnailJob doneJob(const QImage &file, QSize size)
{
    ThumbnailJob job;
    job.work.look.size = size;
    const auto source = LoadedPicture::fromPicture(Picture::fromImage(file));
    job.sourceSize = file.size();
    job.thumbnail = LoadedPicture::fromPicture(thumbnailOf(source.get(), job.work.look));
    return job;
}

}

void tst_thumbnailsharpening::whatTheCacheStoresLooksAlike_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("size");
    for (int level = 0; level <= 2; ++level) {
        for (const int size : {60, 80, 200})
            QTest::addRow("level %d, %d pixels", level, size) << level << size;
    }
}

void tst_thumbnailsharpening::whatTheCacheStoresLooksAlike()
{
    QFETCH(int, level);
    QFETCH(int, size);
    const ThumbnailJob plain = doneJob(photograph({900, 700}), QSize(size, size));
    PolyImage box;
    QVERIFY(box.ImageBlobLoad(unsealedBlob(encodedThumbnail(plain.thumbnail, level))));
    QVERIFY(looksAlike(plain.thumbnail->current().pixels, box.PolyPicture().pixels));
}

void tst_thumbnailsharpening::aChangeDoesNot_data()
{
    QTest::addColumn<QImage>("other");
    const QImage shown = doneJob(photograph({900, 700}), edge).thumbnail->current().pixels;
    QTest::newRow("nothing") << QImage();
    QTest::newRow("another size") << shown.scaled(90, 90);
    QTest::newRow("another light") << doneJob(photograph({900, 700}, 200), edge).thumbnail->current().pixels;
    QTest::newRow("turned around") << shown.mirrored(true, false);
    QImage marked = shown;
    QPainter(&marked).fillRect(40, 40, 12, 12, Qt::green);
    QTest::newRow("a mark in it") << marked;
}

void tst_thumbnailsharpening::aChangeDoesNot()
{
    QFETCH(QImage, other);
    const QImage shown = doneJob(photograph({900, 700}), edge).thumbnail->current().pixels;
    QVERIFY(!looksAlike(shown, other));
    QVERIFY(!looksAlike(other, shown));
}

void tst_thumbnailsharpening::sharperIsTakenForTheSamePictureOnly()
{
    const ThumbnailJob plain = doneJob(photograph({900, 700}), edge);
    const ThumbnailJob sharp = doneJob(photograph({900, 700}), edge * 2);
    const QImage shown = plain.thumbnail->current().pixels;
    QCOMPARE(sharperThumbnail(plain, sharp, shown), sharp.thumbnail->current().pixels);
    QVERIFY2(sharperThumbnail(plain, sharp, shown.mirrored(true, false)).isNull(), "the file has changed since");
    QVERIFY2(sharperThumbnail({}, sharp, shown).isNull(), "the file cannot be read");
    QVERIFY2(sharperThumbnail(plain, {}, shown).isNull(), "nor a second time");
    const QImage small = photograph({159, 100});
    const ThumbnailJob smallPlain = doneJob(small, edge);
    QVERIFY2(sharperThumbnail(smallPlain, doneJob(small, edge * 2), smallPlain.thumbnail->current().pixels).isNull(),
        "a picture that is not reduced any more would stand smaller on its ground");
}

QTEST_GUILESS_MAIN(tst_thumbnailsharpening)
#include "tst_thumbnailsharpening.moc"
