#include "engine/codec.h"
#include "engine/codecs/exif.h"
#include "engine/enginefiles.h"
#include "engine/limits.h"
#include "engine/loadedpicture.h"
#include "engine/polyimage.h"
#include "platform/filepath.h"
#include "support/support.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

/// What the one way from bytes to a picture promises.
class tst_Decode : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everydayPicturesDoNotLoadTheModule();
    void everySmallFileDecodesAsItsHeaderSays_data();
    void everySmallFileDecodesAsItsHeaderSays();
    void contentIsStrongerThanTheName();
    void unknownBytesHaveNoDecoder();
    void orientationIsAppliedOnce_data();
    void orientationIsAppliedOnce();
    void turningEveryFormatMovesTheSamePixels();
    void reducedPicturesAreLargeEnoughAndKeepTheirShape_data();
    void reducedPicturesAreLargeEnoughAndKeepTheirShape();
    void depthsOfPngAreKept();
    void transparencyIsKnownOnlyWhereAPixelShowsIt();
    void cutFilesGiveWhatIsThereAndSaySo();
    void runLengthsLeaveTheFirstColourWhereTheySkip();
    void framesAreCountedAndReachedByPage();
    void theLargestIconIsShownFirst();
    void absurdSizesAreRefusedAtOnce_data();
    void absurdSizesAreRefusedAtOnce();
    void onlyRegularFilesAreRead();
    void fullPixelsOutliveTheFile();
    void aFailedLoadKeepsThePictureAndSaysWhy();

private:
    TemporaryHome m_home;
};

void tst_Decode::everydayPicturesDoNotLoadTheModule()
{
    const size_t own = codecTable().size();
    for (const char *format : {"jpg", "png", "bmp"}) {
        QVERIFY(decode({written(rampImage({20, 10}), format), {}}));
        QVERIFY(probe({written(rampImage({20, 10}), format), {}}));
    }
    QCOMPARE(codecTable().size(), own);
    QVERIFY2(fullCodecTable().size() > own, qPrintable(codecModuleFailure()));
}

void tst_Decode::everySmallFileDecodesAsItsHeaderSays_data()
{
    QTest::addColumn<EncodedFile>("file");
    for (const SmallFile &small : smallFiles())
        QTest::newRow(small.name) << small.encoded();
}

void tst_Decode::everySmallFileDecodesAsItsHeaderSays()
{
    QFETCH(EncodedFile, file);
    const Result<Picture> picture = decode(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->pixels.size(), picture->info.size);
    const Result<ImageInfo> info = probe(file);
    QVERIFY2(info, qPrintable(info.reason()));
    QCOMPARE(info->size, picture->info.size);
    QCOMPARE(info->bitsPerPixel, picture->info.bitsPerPixel);
    QCOMPARE(info->pageCount, picture->info.pageCount);

    const QString path = m_home.write(QStringLiteral("probed.") + file.extension, file.bytes);
    const Result<ImageInfo> probed = probeFile(path);
    QVERIFY2(probed, qPrintable(probed.reason()));
    QCOMPARE(probed->size, info->size);
}

void tst_Decode::contentIsStrongerThanTheName()
{
    const QByteArray jpeg = written(rampImage({20, 10}), "jpg");
    for (const char *wrong : {"png", "nef", "gif", "tif", "pcx", "", "xyz"}) {
        const Result<Picture> picture = decode({jpeg, QLatin1String(wrong)});
        QVERIFY2(picture, wrong);
        QCOMPARE(picture->info.codec, QByteArray("JPEG"));
    }
    // A TIFF by its first bytes, a raw file by its name: what no raw reader takes is still a TIFF.
    const Result<Picture> picture = decode({tiffOf(rampImage({20, 10})), QStringLiteral("nef")});
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.size, QSize(20, 10));
}

void tst_Decode::unknownBytesHaveNoDecoder()
{
    QVERIFY(decode({QByteArray("neither fish nor fowl"), QStringLiteral("xyz")})
                .reason()
                .startsWith(QStringLiteral("no decoder for this file")));
    QVERIFY(!decode({}));
    QVERIFY(!decode({QByteArray("<html>"), QStringLiteral("gif")}));
    QVERIFY(!probe({QByteArray(), QStringLiteral("jpg")}));
}

void tst_Decode::orientationIsAppliedOnce_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("orientation");
    const QImage stored = rampImage({24, 16});
    const QByteArray png = written(stored, "png");
    for (int orientation = 1; orientation <= 8; ++orientation) {
        QTest::addRow("PNG %d", orientation) << pngWithOrientation(png, orientation) << orientation;
        QTest::addRow("TIFF %d", orientation) << tiffOf(stored, orientation) << orientation;
    }
    QTest::newRow("PNG with an orientation that does not exist") << pngWithOrientation(png, 9) << 1;
    QTest::newRow("TIFF with an orientation that does not exist") << tiffOf(stored, 0) << 1;
}

// Stated by where the stored corners go, not by the code's own transformation.
static QPoint storedPointShownAt(QPoint shown, QSize stored, int orientation)
{
    const int right = stored.width() - 1, bottom = stored.height() - 1;
    switch (orientation) {
    case 2:
        return {right - shown.x(), shown.y()};
    case 3:
        return {right - shown.x(), bottom - shown.y()};
    case 4:
        return {shown.x(), bottom - shown.y()};
    case 5:
        return {shown.y(), shown.x()};
    case 6:
        return {shown.y(), bottom - shown.x()};
    case 7:
        return {right - shown.y(), bottom - shown.x()};
    case 8:
        return {right - shown.y(), shown.x()};
    default:
        return shown;
    }
}

void tst_Decode::orientationIsAppliedOnce()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, orientation);
    const QImage stored = rampImage({24, 16});
    const Result<Picture> picture = decode({bytes, {}});
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.size, orientation >= 5 ? QSize(16, 24) : QSize(24, 16));
    for (int y = 0; y < picture->pixels.height(); ++y) {
        for (int x = 0; x < picture->pixels.width(); ++x)
            QCOMPARE(picture->pixels.pixel(x, y), stored.pixel(storedPointShownAt({x, y}, stored.size(), orientation)));
    }
    // JPEG changes colours a little, so there the same turn is compared with the turned plain decode.
    const QByteArray jpeg = written(stored, "jpg", 95);
    for (const bool bigEndian : {false, true}) {
        const Result<Picture> turned = decode({withOrientation(jpeg, orientation, bigEndian), {}});
        QVERIFY(turned);
        QCOMPARE(turned->pixels, uprighted(decode({jpeg, {}})->pixels, orientation));
    }
}

void tst_Decode::turningEveryFormatMovesTheSamePixels()
{
    const QImage stored = rampImage({45, 38});
    for (const QImage::Format format : {QImage::Format_Mono, QImage::Format_Indexed8, QImage::Format_Grayscale8,
             QImage::Format_RGB32, QImage::Format_ARGB32, QImage::Format_RGBA64}) {
        const QImage image = stored.convertToFormat(format);
        for (int orientation = 1; orientation <= 8; ++orientation) {
            const QImage turned = uprighted(image, orientation);
            QCOMPARE(turned.format(), format);
            for (int y = 0; y < turned.height(); y += 3) {
                for (int x = 0; x < turned.width(); x += 3)
                    QCOMPARE(turned.pixel(x, y), image.pixel(storedPointShownAt({x, y}, image.size(), orientation)));
            }
        }
    }
}

void tst_Decode::reducedPicturesAreLargeEnoughAndKeepTheirShape_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSize>("target");
    QTest::addColumn<int>("divisor");
    QTest::newRow("a quarter is the smallest that serves") << QSize(6000, 4000) << QSize(1000, 700) << 4;
    QTest::newRow("an icon comes from an eighth") << QSize(6000, 4000) << QSize(100, 100) << 8;
    QTest::newRow("exactly half") << QSize(2000, 1000) << QSize(1000, 500) << 2;
    QTest::newRow("one pixel more than half") << QSize(2000, 1000) << QSize(1001, 501) << 1;
    QTest::newRow("a panorama fits by its width") << QSize(8000, 500) << QSize(1000, 700) << 8;
    QTest::newRow("odd sides round up") << QSize(1001, 1003) << QSize(250, 250) << 4;
    QTest::newRow("nothing is enlarged") << QSize(300, 200) << QSize(1000, 700) << 1;
    QTest::newRow("no target means everything") << QSize(300, 200) << QSize() << 1;
}

void tst_Decode::reducedPicturesAreLargeEnoughAndKeepTheirShape()
{
    QFETCH(QSize, size);
    QFETCH(QSize, target);
    QFETCH(int, divisor);
    QImage image(size, QImage::Format_RGB32);
    image.fill(0xff336699);
    const QByteArray plain = written(image, "jpg");
    for (const int orientation : {1, 6}) {
        const Result<Picture> picture =
            decode({withOrientation(plain, orientation, false), {}}, {uprightSize(target, orientation), -1, 0});
        QVERIFY2(picture, qPrintable(picture.reason()));
        const QSize full = uprightSize(size, orientation);
        QCOMPARE(picture->info.size, full);
        QCOMPARE(picture->pixels.size(),
            QSize((full.width() + divisor - 1) / divisor, (full.height() + divisor - 1) / divisor));
        QCOMPARE(picture->isReduced(), divisor > 1);
        const int blue = qBlue(picture->pixels.pixel(0, 0));
        QVERIFY2(std::abs(blue - 0x99) < 4, "colours survive the reduction");
    }
}

void tst_Decode::depthsOfPngAreKept()
{
    const QImage ramp = rampImage({16, 16});
    const auto decoded = [](const QImage &image) { return *decode({written(image, "png"), {}}); };
    const QImage deep = ramp.convertToFormat(QImage::Format_RGBA64);
    const Picture picture = decoded(deep);
    QCOMPARE(picture.pixels.format(), QImage::Format_RGBA64);
    QCOMPARE(picture.pixels, deep);
    QCOMPARE(decoded(ramp).pixels.format(), QImage::Format_RGB32);
    QCOMPARE(decoded(ramp).info.bitsPerPixel, 24);
    QCOMPARE(decoded(ramp).pixels, ramp);
    const QImage grey = ramp.convertToFormat(QImage::Format_Grayscale8);
    QCOMPARE(decoded(grey).pixels, grey);
    const QImage mono = ramp.convertToFormat(QImage::Format_Mono);
    QCOMPARE(decoded(mono).pixels.format(), QImage::Format_Mono);
    QCOMPARE(decoded(mono).pixels.convertToFormat(QImage::Format_RGB32), mono.convertToFormat(QImage::Format_RGB32));
    const QImage indexed = ramp.convertToFormat(QImage::Format_Indexed8);
    QCOMPARE(decoded(indexed).pixels.format(), QImage::Format_Indexed8);
    QCOMPARE(decoded(indexed).pixels.colorCount(), 256);
    QCOMPARE(
        decoded(indexed).pixels.convertToFormat(QImage::Format_RGB32), indexed.convertToFormat(QImage::Format_RGB32));
    QImage resolved = ramp;
    resolved.setDotsPerMeterX(3000);
    resolved.setDotsPerMeterY(4000);
    QCOMPARE(decoded(resolved).pixels.dotsPerMeterX(), 3000);
    QCOMPARE(decoded(resolved).pixels.dotsPerMeterY(), 4000);
}

void tst_Decode::transparencyIsKnownOnlyWhereAPixelShowsIt()
{
    QImage image = rampImage({5, 5}, QImage::Format_ARGB32);
    QVERIFY(!hasTransparency(Picture::fromImage(image)));
    image.setPixel(4, 4, qRgba(1, 2, 3, 254));
    QVERIFY(hasTransparency(Picture::fromImage(image)));
    QVERIFY(hasTransparency(Picture::fromImage(image.convertToFormat(QImage::Format_RGBA64))));
    QVERIFY(!hasTransparency(Picture::fromImage(image.convertToFormat(QImage::Format_RGB32))));
    QImage indexed(5, 5, QImage::Format_Indexed8);
    indexed.setColorTable({qRgb(0, 0, 0), qRgba(0, 0, 0, 0)});
    indexed.fill(0);
    QVERIFY(!hasTransparency(Picture::fromImage(indexed)));
    indexed.setPixel(2, 2, 1);
    QVERIFY(hasTransparency(Picture::fromImage(indexed)));
}

void tst_Decode::cutFilesGiveWhatIsThereAndSaySo()
{
    const QImage image = rampImage({200, 200});
    for (const char *format : {"jpg", "png", "bmp"}) {
        const QByteArray whole = written(image, format, 60);
        const Result<Picture> picture = decode({whole.left(whole.size() / 2), QLatin1String(format)});
        QVERIFY2(picture, format);
        QVERIFY2(picture->partial, format);
        QCOMPARE(picture->info.size, image.size());
        const bool bottomFirst = qstrcmp(format, "bmp") == 0;
        const int there = bottomFirst ? 195 : 5;
        QVERIFY2(std::abs(qRed(picture->pixels.pixel(150, there)) - qRed(image.pixel(150, there))) < 24, format);
    }
}

void tst_Decode::runLengthsLeaveTheFirstColourWhereTheySkip()
{
    const QList<SmallFile> files = smallFiles();
    const auto file = std::find_if(
        files.begin(), files.end(), [](const SmallFile &f) { return qstrcmp(f.name, "BMP run lengths") == 0; });
    const Result<Picture> picture = decode(file->encoded());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->pixels.format(), QImage::Format_Indexed8);
    const auto row = [&](int y) {
        QByteArray indices;
        for (int x = 0; x < 4; ++x)
            indices.append(char('0' + picture->pixels.pixelIndex(x, y)));
        return indices;
    };
    QCOMPARE(row(2), QByteArray("1111"));
    QCOMPARE(row(1), QByteArray("0002"));
    QCOMPARE(row(0), QByteArray("1210"));
}

void tst_Decode::framesAreCountedAndReachedByPage()
{
    const EncodedFile gif{gifOf(5), QStringLiteral("gif")};
    QCOMPARE(probe(gif)->pageCount, 5);
    QVERIFY(decode(gif, {QSize(), -1, 4}));
    QVERIFY(!decode(gif, {QSize(), -1, 5}));
    QVERIFY(!decode(gif, {QSize(), -1, -1}));
    QCOMPARE(probe({gifOf(limits::maximumPages + 10), {}})->pageCount, limits::maximumPages);
}

void tst_Decode::theLargestIconIsShownFirst()
{
    const EncodedFile icons{iconOf({{16, 16}, {48, 48}, {32, 32}}), QStringLiteral("ico")};
    QCOMPARE(probe(icons)->size, QSize(48, 48));
    QCOMPARE(probe(icons)->pageCount, 3);
    QCOMPARE(decode(icons)->pixels.size(), QSize(48, 48));
    QCOMPARE(decode(icons, {QSize(), -1, 2})->pixels.size(), QSize(16, 16));
}

void tst_Decode::absurdSizesAreRefusedAtOnce_data()
{
    QTest::addColumn<EncodedFile>("file");
    const auto patched = [](QByteArray bytes, int at, const char *hex) {
        const QByteArray patch = QByteArray::fromHex(hex);
        return bytes.replace(at, patch.size(), patch);
    };
    const QImage image = rampImage({8, 8});
    const QByteArray jpeg = written(image, "jpg");
    const int frame = int(jpeg.indexOf("\xff\xc0")) + 5;
    QTest::newRow("JPEG of 65500 x 65500") << EncodedFile{patched(jpeg, frame, "ffdcffdc"), QStringLiteral("jpg")};
    QTest::newRow("GIF of 65535 x 65535") << EncodedFile{patched(gifOf(1), 6, "ffffffff"), QStringLiteral("gif")};
    QTest::newRow("BMP 2^31 - 1 wide") << EncodedFile{
        patched(written(image, "bmp"), 18, "ffffff7f"), QStringLiteral("bmp")};
    QTest::newRow("BMP of the lowest height there is")
        << EncodedFile{patched(written(image, "bmp"), 22, "00000080"), QStringLiteral("bmp")};
    QTest::newRow("TIFF 2^16 - 1 in both")
        << EncodedFile{patched(tiffOf(image), int(tiffOf(image).size()) - 126 + 2 + 8, "ffff"), QStringLiteral("tif")};
    QTest::newRow("TGA of 58 bytes, 65535 x 65535") << EncodedFile{
        QByteArray::fromHex("00000a000000000000000000ffffffff1820") + QByteArray(40, '\xff'), QStringLiteral("tga")};
    QTest::newRow("PCX 65536 x 65536") << EncodedFile{
        QByteArray::fromHex("0a05010800000000ffffffff") + QByteArray(130, '\0'), QStringLiteral("pcx")};
    QTest::newRow("PPM of a million square")
        << EncodedFile{QByteArray("P6 1000000 1000000 255\n1234"), QStringLiteral("ppm")};
    QTest::newRow("XPM of 60000 x 60000") << EncodedFile{
        QByteArray("/* XPM */\nstatic char *a[] = {\n\"60000 60000 1 1\",\n\"a c #000000\",\n"), QStringLiteral("xpm")};
    QTest::newRow("WBMP of 2 million square")
        << EncodedFile{QByteArray::fromHex("0000ff8080ffff8080ff"), QStringLiteral("wbmp")};
    QTest::newRow("SGI of 65535 x 65535 x 65535")
        << EncodedFile{QByteArray::fromHex("01da00010003ffffffffffff") + QByteArray(600, '\0'), QStringLiteral("rgb")};
}

void tst_Decode::absurdSizesAreRefusedAtOnce()
{
    QFETCH(EncodedFile, file);
    ignore(fullCodecTable());
    QElapsedTimer timer;
    timer.start();
    const Result<Picture> picture = decode(file);
    QVERIFY2(!picture || picture->info.size.width() < 65535, "refused, or read as something honest");
    QVERIFY(timer.elapsed() < 1000);
    QVERIFY(!limits::allows({65536, 1}));
    QVERIFY(!limits::allows({0, 1}));
    QVERIFY(!limits::allows({40000, 40000}));
}

void tst_Decode::onlyRegularFilesAreRead()
{
    const QString fifo = m_home.path() + QStringLiteral("pipe.jpg");
    QCOMPARE(mkfifo(pathToBytes(fifo).constData(), 0600), 0);
    const QString link = m_home.path() + QStringLiteral("dead.jpg");
    QCOMPARE(symlink("/nowhere/at/all", pathToBytes(link).constData()), 0);
    for (const QString &path : {fifo, link, m_home.path(), QStringLiteral("/dev/zero"), QString(),
             m_home.path() + QStringLiteral("none.png")}) {
        QVERIFY2(!readEncodedFile(path), qPrintable(path));
        QVERIFY(!decodeFile(path));
        QVERIFY(!probeFile(path));
    }
    const QString empty = m_home.write(QStringLiteral("empty.jpg"), {});
    QVERIFY(!decodeFile(empty));
    QVERIFY(!probeFile(empty));
    const QString foreign = pathFromBytes(pathToBytes(m_home.path()) + "\xff\xfe.PNG");
    QFile::copy(m_home.writePicture(QStringLiteral("plain.png"), {3, 2}), m_home.path() + QStringLiteral("copy.png"));
    QCOMPARE(
        ::rename(pathToBytes(m_home.path() + QStringLiteral("copy.png")).constData(), pathToBytes(foreign).constData()),
        0);
    QCOMPARE(probeFile(foreign)->size, QSize(3, 2));
    QCOMPARE(readEncodedFile(foreign)->extension, QStringLiteral("png"));
    QCOMPARE(::unlink(pathToBytes(foreign).constData()), 0);
}

void tst_Decode::fullPixelsOutliveTheFile()
{
    const QImage image = rampImage({1600, 1200});
    const QString path = m_home.write(QStringLiteral("large.jpg"), written(image, "jpg", 90));
    const Result<Picture> whole = decodeFile(path);
    const auto loaded = LoadedPicture::load(path, -1, {100, 100});
    QVERIFY(loaded);
    QVERIFY(QFile::remove(path));
    const LoadedPicture &picture = **loaded;
    QCOMPARE(picture.info().size, image.size());
    QCOMPARE(picture.current().pixels.size(), QSize(200, 150));
    QCOMPARE(picture.atLeast({300, 300}).pixels.size(), QSize(400, 300));
    QCOMPARE(picture.atLeast({10, 10}).pixels.size(), QSize(400, 300));
    QCOMPARE(picture.full().pixels, whole->pixels);
    QCOMPARE(picture.cost(), qint64(1600) * 1200 * 4);
    QCOMPARE(LoadedPicture::fromPicture(*whole)->full().pixels, whole->pixels);
}

void tst_Decode::aFailedLoadKeepsThePictureAndSaysWhy()
{
    PolyImage poly;
    QVERIFY(poly.PolyPicture().isNull());
    const QString good = m_home.writePicture(QStringLiteral("good.png"), {30, 20});
    const QString bad = m_home.write(QStringLiteral("bad.png"), "no picture");
    QVERIFY(poly.PolyLoad(good));
    QVERIFY(poly.PolyLastError().isEmpty());
    QVERIFY(!poly.PolyLoad(bad));
    QVERIFY(!poly.PolyLastError().isEmpty());
    QCOMPARE(poly.PolyWidth(), 30);
    QCOMPARE(poly.PolyHeight(), 20);
    QCOMPARE(poly.PolyBitsPerPixel(), 24);
    QCOMPARE(poly.PolyPicture().pixels.size(), QSize(30, 20));
    Gvbox box;
    QVERIFY(box.load(good));
    QVERIFY(!box.load(bad));
    QCOMPARE(box.width(), 30);
}

QTEST_GUILESS_MAIN(tst_Decode)
#include "tst_decode.moc"
