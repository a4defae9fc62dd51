#include "engine/codecs/exif.h"
#include "engine/decode.h"
#include "engine/enginefiles.h"
#include "engine/modernfiles.h"
#include "support/support.h"

#include <QColorSpace>
#include <QPainter>
#include <QTest>

namespace {

int largestDifference(const QImage &a, const QImage &b)
{
    const QImage first = a.convertToFormat(QImage::Format_ARGB32);
    const QImage second = b.convertToFormat(QImage::Format_ARGB32);
    if (first.size() != second.size())
        return 256;
    int largest = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int x = 0; x < first.width(); ++x) {
            const QRgb p = first.pixel(x, y), q = second.pixel(x, y);
            for (const int shift : {0, 8, 16, 24})
                largest = std::max(largest, std::abs(int(p >> shift & 255) - int(q >> shift & 255)));
        }
    }
    return largest;
}

QByteArray svg(const char *content, const char *root = "width=\"60\" height=\"40\"")
{
    return QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\" xmlns:xlink=\"http://www.w3.org/1999/xlink\" ") + root
        + ">" + content + "</svg>";
}

/// A drawing whose parts repeat one another: `levels` times ten.
QByteArray repeatingSvg(int levels)
{
    QByteArray content = "<g id=\"l0\"><rect width=\"1\" height=\"1\"/></g>";
    for (int i = 1; i <= levels; ++i) {
        content += "<g id=\"l" + QByteArray::number(i) + "\">";
        for (int use = 0; use < 10; ++use)
            content += "<use xlink:href=\"#l" + QByteArray::number(i - 1) + "\"/>";
        content += "</g>";
    }
    return svg(content.constData());
}

bool isBlank(const Result<Picture> &picture)
{
    if (!picture)
        return false;
    QImage blank(picture->pixels.size(), QImage::Format_ARGB32);
    blank.fill(0);
    return picture->pixels == blank;
}

}

/// The formats of today: what their own encoders write is read as it was meant, and what is damaged is answered.
class tst_ModernFormats : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyFileShowsWhatWasWritten_data();
    void everyFileShowsWhatWasWritten();
    void pagesAreTheFramesAndPictures_data();
    void pagesAreTheFramesAndPictures();
    void orientationIsAppliedOnce_data();
    void orientationIsAppliedOnce();
    void profilesAreKept();
    void smallWishesGetSmallPictures();
    void drawingsHaveTheirNaturalSize_data();
    void drawingsHaveTheirNaturalSize();
    void drawingsShowTextAndStoredPictures();
    void drawingsOpenNothingElse_data();
    void drawingsOpenNothingElse();
    void drawingsThatGrowAreRefused_data();
    void drawingsThatGrowAreRefused();
    void cutFilesGiveWhatIsThere();
    void damageIsAnswered_data() { everyFileShowsWhatWasWritten_data(); }
    void damageIsAnswered();
    void absurdSizesAreRefusedAtOnce();
    void rawNamesGoToTheRawReaderFirst();
};

void tst_ModernFormats::everyFileShowsWhatWasWritten_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QImage>("written");
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("tolerance");
    const QImage ramp = rampImage({45, 38});
    const QImage alpha = rampImage({45, 38}, QImage::Format_ARGB32);
    const QImage smooth = smoothImage({64, 48});
    const QImage clear = smoothImage({64, 48}, QImage::Format_ARGB32);
    const QImage deep = smoothImage({64, 48}, QImage::Format_RGBA64);
    const QImage grey = smoothImage({64, 48}, QImage::Format_Grayscale8);
    QTest::newRow("WebP lossless") << webPOf(ramp) << ramp << 24 << 0;
    QTest::newRow("WebP lossless, clear") << webPOf(clear) << clear << 32 << 0;
    QTest::newRow("WebP") << webPOf(smooth, {false, {}, {}}) << smooth << 24 << 8;
    QTest::newRow("HEIC") << heifOf({smooth}) << smooth << 24 << 6;
    QTest::newRow("HEIC, clear") << heifOf({clear}) << clear << 32 << 6;
    HeifWishes wishes;
    wishes.av1 = true;
    QTest::newRow("AVIF") << heifOf({smooth}, wishes) << smooth << 24 << 6;
    wishes.bits = 12;
    QTest::newRow("AVIF of 12 bits") << heifOf({smooth}, wishes) << smooth << 36 << 6;
    QTest::newRow("JPEG XL lossless") << jpegXlOf({ramp}) << ramp << 24 << 0;
    QTest::newRow("JPEG XL in its container") << jpegXlOf({ramp}, {true, 1, true}) << ramp << 24 << 0;
    QTest::newRow("JPEG XL clear") << jpegXlOf({clear}) << clear << 32 << 0;
    QTest::newRow("JPEG XL of 16 bits") << jpegXlOf({deep}) << deep << 48 << 0;
    QTest::newRow("JPEG XL grey") << jpegXlOf({grey}) << grey << 8 << 0;
    QTest::newRow("JPEG XL lossy") << jpegXlOf({smooth}, {false, 1, false}) << smooth << 24 << 12;
    QTest::newRow("QOI") << qoiOf(ramp) << ramp << 24 << 0;
    QTest::newRow("QOI clear") << qoiOf(clear) << clear << 32 << 0;
    QTest::newRow("QOI of runs") << qoiOf(smooth) << smooth << 24 << 0;
    QImage drawn({60, 40}, QImage::Format_ARGB32);
    drawn.fill(0);
    for (int y = 10; y < 30; ++y) {
        for (int x = 20; x < 50; ++x)
            drawn.setPixel(x, y, qRgb(255, 0, 0));
    }
    const QByteArray box = svg("<rect x=\"20\" y=\"10\" width=\"30\" height=\"20\" fill=\"red\"/>");
    QTest::newRow("SVG") << box << drawn << 32 << 0;
    QTest::newRow("SVG with all that may stand in front")
        << "\xef\xbb\xbf<?xml version=\"1.0\"?>\n<!-- drawn -->\n<!DOCTYPE svg [<!ENTITY c \"red\">]>\n" + box << drawn
        << 32 << 0;
    QTest::newRow("SVGZ") << packed(box) << drawn << 32 << 0;
    QByteArray pam = "P7\nWIDTH 64\nHEIGHT 48\nDEPTH 3\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\n";
    const QImage rgb = smooth.convertToFormat(QImage::Format_RGB888);
    pam.append(reinterpret_cast<const char *>(rgb.constBits()), rgb.sizeInBytes());
    QTest::newRow("PAM") << pam << smooth << 24 << 0;
}

void tst_ModernFormats::everyFileShowsWhatWasWritten()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QImage, written);
    QFETCH(int, bits);
    QFETCH(int, tolerance);
    if (bytes.isEmpty())
        QSKIP("ENCODER MISSING: the library of this format has none here");
    // The content alone tells, whatever the name says.
    for (const char *extension : {"", "png", "heic"}) {
        const EncodedFile file{bytes, QLatin1String(extension)};
        const Result<Picture> picture = decode(file);
        QVERIFY2(picture, qPrintable(picture.reason()));
        QVERIFY(!picture->partial);
        QCOMPARE(picture->pixels.size(), written.size());
        QCOMPARE(picture->info.bitsPerPixel, bits);
        QCOMPARE(picture->pixels.format() == QImage::Format_RGBA64, bits > 32);
        const int difference = largestDifference(picture->pixels, written);
        QVERIFY2(difference <= tolerance, qPrintable(QString::number(difference)));
        const Result<ImageInfo> info = probe(file);
        QVERIFY2(info, qPrintable(info.reason()));
        QCOMPARE(info->size, written.size());
        QCOMPARE(info->bitsPerPixel, bits);
        QCOMPARE(info->pageCount, 1);
        QCOMPARE(info->codec, picture->info.codec);
    }
}

void tst_ModernFormats::pagesAreTheFramesAndPictures_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QList<QImage> pages;
    for (const QRgb color : {0xffcc2200U, 0xff00cc22U, 0xff2200ccU}) {
        QImage page({64, 64}, QImage::Format_RGB32);
        page.fill(color);
        pages.append(page);
    }
    QTest::newRow("WebP") << webPOf(pages);
    QTest::newRow("HEIF") << heifOf(pages);
    QTest::newRow("JPEG XL") << jpegXlOf(pages);
}

void tst_ModernFormats::pagesAreTheFramesAndPictures()
{
    QFETCH(QByteArray, bytes);
    if (bytes.isEmpty())
        QSKIP("ENCODER MISSING: the library of this format has none here");
    QCOMPARE(probe({bytes, {}})->pageCount, 3);
    const QRgb expected[] = {0xffcc2200U, 0xff00cc22U, 0xff2200ccU};
    for (int page = 0; page < 3; ++page) {
        const Result<Picture> picture = decode({bytes, {}}, {QSize(), -1, page});
        QVERIFY2(picture, qPrintable(picture.reason()));
        QCOMPARE(picture->info.pageCount, 3);
        QImage flat({64, 64}, QImage::Format_RGB32);
        flat.fill(expected[page]);
        QVERIFY(largestDifference(picture->pixels, flat) <= 4);
    }
    QVERIFY(!decode({bytes, {}}, {QSize(), -1, 3}));
    QVERIFY(!decode({bytes, {}}, {QSize(), -1, -1}));
}

void tst_ModernFormats::orientationIsAppliedOnce_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("orientation");
    const QImage stored = smoothImage({96, 64});
    for (int orientation = 1; orientation <= 8; ++orientation) {
        HeifWishes wishes;
        wishes.orientation = orientation;
        QTest::addRow("HEIC %d", orientation) << heifOf({stored}, wishes) << orientation;
        QTest::addRow("JPEG XL %d", orientation) << jpegXlOf({stored}, {true, orientation, false}) << orientation;
        QTest::addRow("WebP %d", orientation)
            << webPOf(stored, {true, orientationDirectory(orientation, true), {}}) << orientation;
    }
}

void tst_ModernFormats::orientationIsAppliedOnce()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, orientation);
    if (bytes.isEmpty())
        QSKIP("ENCODER MISSING: the library of this format has none here");
    const QImage upright = uprighted(smoothImage({96, 64}), orientation);
    const Result<Picture> picture = decode({bytes, {}});
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.size, upright.size());
    QCOMPARE(probe({bytes, {}})->size, upright.size());
    QVERIFY(largestDifference(picture->pixels, upright) <= 6);
}

void tst_ModernFormats::profilesAreKept()
{
    const QByteArray profile = QColorSpace(QColorSpace::AdobeRgb).iccProfile();
    const QImage image = smoothImage({64, 48});
    QCOMPARE(decode({webPOf(image, {true, {}, profile}), {}})->iccProfile, profile);
    HeifWishes wishes;
    wishes.profile = profile;
    if (const QByteArray heif = heifOf({image}, wishes); !heif.isEmpty())
        QCOMPARE(decode({heif, {}})->iccProfile, profile);
    const QByteArray named = decode({jpegXlOf({image}), {}})->iccProfile;
    QVERIFY2(QColorSpace::fromIccProfile(named).isValid(), "an encoding told by numbers becomes a profile");
}

void tst_ModernFormats::smallWishesGetSmallPictures()
{
    const QImage image = smoothImage({400, 200});
    HeifWishes wishes;
    wishes.thumbnailSide = 100;
    const QByteArray drawing = svg("<rect width=\"400\" height=\"200\" fill=\"#345\"/>", "viewBox=\"0 0 400 200\"");
    for (const QByteArray &bytes : {webPOf(image, {false, {}, {}}), heifOf({image}, wishes), drawing}) {
        if (bytes.isEmpty())
            continue;
        const Picture whole = *decode({bytes, {}});
        const Result<Picture> small = decode({bytes, {}}, {QSize(100, 100), -1, 0});
        QVERIFY2(small, qPrintable(small.reason()));
        QCOMPARE(small->info.size, QSize(400, 200));
        QCOMPARE(small->pixels.size(), QSize(100, 50));
        const QImage scaled = whole.pixels.scaled(100, 50, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        QVERIFY(largestDifference(small->pixels, scaled) <= 8);
        QCOMPARE(decode({bytes, {}}, {QSize(1000, 1000), -1, 0})->pixels.size(), QSize(400, 200));
    }
    // A stored thumbnail that is too small for the wish does not serve.
    if (const QByteArray bytes = heifOf({image}, wishes); !bytes.isEmpty())
        QCOMPARE(decode({bytes, {}}, {QSize(101, 101), -1, 0})->pixels.size(), QSize(400, 200));
}

void tst_ModernFormats::drawingsHaveTheirNaturalSize_data()
{
    QTest::addColumn<QByteArray>("root");
    QTest::addColumn<QSize>("size");
    QTest::newRow("pixels") << QByteArray("width=\"60px\" height=\"40\"") << QSize(60, 40);
    QTest::newRow("inches") << QByteArray("width=\"2in\" height=\"1in\"") << QSize(192, 96);
    QTest::newRow("millimetres") << QByteArray("width=\"25.4mm\" height=\"50.8mm\"") << QSize(96, 192);
    QTest::newRow("the box alone") << QByteArray("viewBox=\"10 10 300 200\"") << QSize(300, 200);
    QTest::newRow("percentages") << QByteArray("width=\"100%\" height=\"100%\" viewBox=\"0,0,30,20\"") << QSize(30, 20);
    QTest::newRow("one side") << QByteArray("width=\"600\" viewBox=\"0 0 30 20\"") << QSize(600, 400);
    QTest::newRow("nothing but content") << QByteArray() << QSize(50, 20);
    QTest::newRow("as wide as a country") << QByteArray("width=\"1e9\" height=\"5e8\"") << QSize(4096, 2048);
    QTest::newRow("no number") << QByteArray("width=\"nan\" height=\"-5\" viewBox=\"0 0 inf 7\"") << QSize(50, 20);
}

void tst_ModernFormats::drawingsHaveTheirNaturalSize()
{
    QFETCH(QByteArray, root);
    QFETCH(QSize, size);
    const EncodedFile file{svg("<rect width=\"50\" height=\"20\"/>", root.constData()), {}};
    const Result<Picture> picture = decode(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->pixels.size(), size);
    QCOMPARE(probe(file)->size, size);
}

void tst_ModernFormats::drawingsShowTextAndStoredPictures()
{
    QVERIFY(!isBlank(decode({svg("<text x=\"5\" y=\"30\" font-size=\"20\">Ag</text>"), {}})));
    const QByteArray inside = "<image width=\"60\" height=\"40\" xlink:href=\"data:image/png;base64,"
        + written(rampImage({8, 8}), "png").toBase64() + "\"/>";
    QVERIFY(!isBlank(decode({svg(inside.constData()), {}})));
}

void tst_ModernFormats::drawingsOpenNothingElse_data()
{
    QTest::addColumn<QByteArray>("content");
    const TemporaryHome home;
    const QByteArray path = (home.path() + QStringLiteral("secret.png")).toUtf8();
    const auto image = [](const QByteArray &reference) {
        return "<image width=\"60\" height=\"40\" xlink:href=\"" + reference + "\"/>";
    };
    QTest::newRow("a path") << image("SECRET");
    QTest::newRow("a file address") << image("file://SECRET");
    QTest::newRow("without its prefix") << image("SECRET").replace("xlink:", "");
    QTest::newRow("a device") << image("/dev/zero");
    QTest::newRow("a drawing in disguise")
        << image("data:image/png;base64," + svg(image("SECRET").constData()).toBase64());
    QTest::newRow("a part of another file") << QByteArray("<use xlink:href=\"SECRET#a\"/>");
}

void tst_ModernFormats::drawingsOpenNothingElse()
{
    QFETCH(QByteArray, content);
    const TemporaryHome home;
    const QString path = home.writePicture(QStringLiteral("secret.png"), {60, 40});
    content.replace("SECRET", path.toUtf8());
    const Result<Picture> picture = decode({svg(content.constData()), {}});
    QVERIFY2(isBlank(picture), qPrintable(picture.reason()));
    // The same picture stored in the drawing does show, so that the blank above is the doing of the reference.
    const QString style = home.write(QStringLiteral("secret.css"), "rect { fill: red }");
    const QByteArray styled = "<?xml-stylesheet type=\"text/css\" href=\"" + style.toUtf8() + "\"?>"
        + svg("<rect width=\"60\" height=\"40\"/>");
    QCOMPARE(decode({styled, {}})->pixels.pixel(30, 20), qRgb(0, 0, 0));
}

void tst_ModernFormats::drawingsThatGrowAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QByteArray laughs = "<!DOCTYPE svg [<!ENTITY a0 \"ha\">";
    for (int i = 1; i < 12; ++i) {
        const QByteArray last = "&a" + QByteArray::number(i - 1) + ";";
        laughs += "<!ENTITY a" + QByteArray::number(i) + " \"" + last.repeated(10) + "\">";
    }
    QTest::newRow("a billion laughs") << laughs + "]>" + svg("<text>&a11;</text>");
    QTest::newRow("a billion rectangles") << repeatingSvg(9);
    QTest::newRow("a part that repeats itself")
        << svg("<g id=\"a\"><use xlink:href=\"#b\"/></g><g id=\"b\"><use xlink:href=\"#a\"/></g>");
    QTest::newRow("a hundred thousand groups in one another") << svg(QByteArray("<g>").repeated(100000).constData());
    QTest::newRow("a gigabyte of blanks") << packed("<svg>" + QByteArray(100 << 20, ' ') + "</svg>");
    QTest::newRow("another root") << QByteArray("<?xml version=\"1.0\"?><html><svg/></html>");
}

void tst_ModernFormats::drawingsThatGrowAreRefused()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!decode({bytes, QStringLiteral("svg")}));
    QVERIFY(!probe({bytes, QStringLiteral("svg")}));
    QVERIFY2(decode({repeatingSvg(3), {}}), "a few thousand repetitions are a drawing like any other");
}

void tst_ModernFormats::cutFilesGiveWhatIsThere()
{
    const QImage image = smoothImage({400, 400});
    const QList<QByteArray> files{webPOf(image, {false, {}, {}}), webPOf(rampImage({400, 400})), qoiOf(image)};
    for (const QByteArray &bytes : files) {
        const Result<Picture> picture = decode({bytes.left(bytes.size() * 2 / 3), {}});
        QVERIFY2(picture, qPrintable(picture.reason()));
        QVERIFY(picture->partial);
        QCOMPARE(picture->pixels.size(), QSize(400, 400));
        const QRgb there = decode({bytes, {}})->pixels.pixel(100, 20);
        QCOMPARE(picture->pixels.pixel(100, 20), there);
        QCOMPARE(picture->pixels.pixel(100, 399), 0xffffffffU);
    }
}

void tst_ModernFormats::damageIsAnswered()
{
    QFETCH(QByteArray, bytes);
    const auto answered = [](const QByteArray &damaged) {
        const Result<ImageInfo> info = probe({damaged, {}});
        const Result<Picture> picture = decode({damaged, {}});
        return picture ? !picture->pixels.isNull() : !picture.reason().isEmpty() && (info || !info.reason().isEmpty());
    };
    const qsizetype step = qMax<qsizetype>(1, bytes.size() / 60);
    for (qsizetype at = 0; at < bytes.size(); at += at < 60 ? 1 : step) {
        QVERIFY(answered(bytes.left(at)));
        QByteArray changed = bytes;
        changed[at] = char(changed.at(at) ^ (at % 2 ? 0xff : 0x10));
        QVERIFY(answered(changed));
    }
}

void tst_ModernFormats::absurdSizesAreRefusedAtOnce()
{
    const QByteArray huge = QByteArray::fromHex("0000ffff0000ffff");
    QVERIFY(!decode({QByteArray(qoiOf(rampImage({4, 4}))).replace(4, 8, huge), {}}));
    QVERIFY(!decode({QByteArray(qoiOf(rampImage({4, 4}))).replace(4, 8, QByteArray(8, '\xff')), {}}));
    QByteArray heif = heifOf({smoothImage({64, 64})});
    for (qsizetype at = heif.indexOf("ispe"); at >= 0; at = heif.indexOf("ispe", at + 1))
        heif.replace(at + 8, 8, huge);
    QVERIFY(!decode({heif, {}}));
    QVERIFY(!probe({heif, {}}));
    // 2^18 x 2^18, written out in the header's own bits: not small, two sides of 18 bits and no ratio.
    QVERIFY(!decode({QByteArray::fromHex("ff0afaff0700f0ff3f00") + QByteArray(40, '\x55'), {}}));
    QVERIFY(!decode({"P7\nWIDTH 65535\nHEIGHT 65535\nDEPTH 3\nMAXVAL 255\nENDHDR\n", {}}));
}

void tst_ModernFormats::rawNamesGoToTheRawReaderFirst()
{
    const QByteArray tiff = tiffOf(rampImage({20, 10}));
    for (const char *name : {"dng", "cr2", "arw", "srf", "sr2", "pef", "srw", "erf", "mef", "mos", "3fr", "kdc"}) {
        const Result<Picture> picture = decode({tiff, QLatin1String(name)});
        QVERIFY2(picture, name);
        QCOMPARE(picture->info.codec, QByteArray("TIFF"));
        const Result<Picture> cut = decode({tiff.left(6), QLatin1String(name)});
        QVERIFY2(cut.reason().startsWith(QLatin1String("camera raw")), qPrintable(cut.reason()));
    }
}

QTEST_MAIN(tst_ModernFormats)
#include "tst_modernformats.moc"
