#include "engine/decode.h"
#include "support/support.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <map>

namespace {

/// How somebody else's program turns a file of these extensions into a PPM on its standard output.
struct Other
{
    const char *extensions;
    const char *command; ///< blank-separated; FILE stands for the path
    int tolerance; ///< largest difference of a channel
    double mean; ///< largest mean difference
};

// The system's own Python, which has the library of its package. It takes the first frame, and of an icon the largest.
constexpr const char *pillow = "/usr/bin/python3 -c SCRIPT FILE";
constexpr const char *pillowScript = R"(
import sys
from PIL import Image, ImageOps
Image.MAX_IMAGE_PIXELS = None
image = ImageOps.exif_transpose(Image.open(sys.argv[1]))
if image.mode.startswith('I'):
    image = image.convert('I').point(lambda value: value / 257).convert('L')
image = image.convert('RGBA')
ground = Image.new('RGBA', image.size, 'white')
Image.alpha_composite(ground, image).convert('RGB').save(sys.stdout.buffer, 'PPM')
)";
constexpr const char *magick = "convert FILE[0] -background white -flatten -depth 8 ppm:-";

// Formats that lose nothing are the same to the last bit, but for the rounding of alpha and of sixteen bits. Decoders
// of JPEG and JPEG 2000 may round otherwise.
const Other others[] = {
    {"jpg jpeg jpe thm", pillow, 3, 0.5},
    {"pcx tif tiff rgb ico", pillow, 1, 0.5},
    {"png", "pngtopnm -mix -background=white FILE", 1, 1},
    {"tga", "tgatoppm FILE", 0, 0},
    {"bmp dib gif cur xpm xwd hrz art dcx", magick, 1, 0.5},
    {"pbm pgm ppm pnm", magick, 1, 0.5},
    {"jp2", magick, 2, 0.6},
    {"wbmp", "wbmptopbm FILE", 0, 0},
    {"xbm", "xbmtopbm FILE", 0, 0},
    {"mac", "macptopbm FILE", 0, 0},
};

/// Files that the other program shows in another way, and why that one is not followed.
const std::map<QString, const char *> &differing()
{
    static const std::map<QString, const char *> reasons{
        {QStringLiteral("bmp/16bit-565.bmp"), "the other one spreads 31 to 248, so that white is grey"},
        {QStringLiteral("xpm/named.xpm"), "the other one does not know a colour of X11 that is written with blanks"},
        {QStringLiteral("pcx/4bpp-chunky.pcx"), "the other one reads no pixels of four bits side by side"},
        {QStringLiteral("tif/orientation.tif"), "the other one does not turn it"},
        {QStringLiteral("tif/lab.tif"), "the other one takes Lab for the white of print"},
    };
    return reasons;
}

const Other *otherFor(const QString &extension)
{
    for (const Other &other : others) {
        if (QByteArray(other.extensions).split(' ').contains(extension.toLatin1()))
            return &other;
    }
    return nullptr;
}

/// What the program writes, read from the plain headers P4 to P6 alone. Null when it cannot read the file.
QImage shownBy(const Other &other, const QString &path)
{
    QStringList words = QString::fromLatin1(other.command).split(QLatin1Char(' '));
    words.replaceInStrings(QStringLiteral("FILE"), path);
    words.replaceInStrings(QStringLiteral("SCRIPT"), QString::fromLatin1(pillowScript));
    QProcess process;
    process.setProcessEnvironment([] {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("MAGICK_THREAD_LIMIT"), QStringLiteral("1"));
        return environment;
    }());
    process.start(words.takeFirst(), words);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    QImage image;
    image.loadFromData(process.readAllStandardOutput(), "ppm");
    return image.convertToFormat(QImage::Format_RGB32);
}

/// Laid over white.
QImage shownHere(const QImage &pixels)
{
    if (pixels.format() == QImage::Format_RGB32)
        return pixels;
    QImage image = pixels.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        QRgb *const row = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int alpha = qAlpha(row[x]);
            const auto over = [alpha](int color) { return (color * alpha + 255 * (255 - alpha) + 127) / 255; };
            row[x] = qRgb(over(qRed(row[x])), over(qGreen(row[x])), over(qBlue(row[x])));
        }
    }
    image.reinterpretAsFormat(QImage::Format_RGB32);
    return image;
}

struct Difference
{
    int largest = 0;
    double mean = 0;
};

Difference differenceOf(const QImage &a, const QImage &b)
{
    Difference difference;
    qint64 sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        const uchar *const first = a.constScanLine(y);
        const uchar *const second = b.constScanLine(y);
        for (int i = 0; i < a.width() * 4; ++i) {
            const int value = i % 4 == 3 ? 0 : std::abs(first[i] - second[i]);
            difference.largest = std::max(difference.largest, value);
            sum += value;
        }
    }
    difference.mean = double(sum) / (3.0 * a.width() * a.height());
    return difference;
}

}

/// Every pixel of the samples beside what an independent program makes of the same file.
class tst_Pixels : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void pixelsAreThoseOfAnotherDecoder_data();
    void pixelsAreThoseOfAnotherDecoder();
    void cleanupTestCase();

private:
    int m_compared = 0;
};

void tst_Pixels::pixelsAreThoseOfAnotherDecoder_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<QString>("name");
    const QDir samples(samplesFolder());
    for (const QString &folder : samples.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QString &file : QDir(samples.filePath(folder)).entryList(QDir::Files)) {
            if (otherFor(file.mid(file.lastIndexOf(QLatin1Char('.')) + 1).toLower()))
                QTest::newRow(qPrintable(folder + QLatin1Char('/') + file)) << folder + QLatin1Char('/') + file;
        }
    }
}

void tst_Pixels::pixelsAreThoseOfAnotherDecoder()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QString, name);
    const Other &other = *otherFor(name.mid(name.lastIndexOf(QLatin1Char('.')) + 1).toLower());
    const QString program = QString::fromLatin1(QByteArray(other.command).split(' ').constFirst());
    if (QStandardPaths::findExecutable(program).isEmpty())
        QSKIP(qPrintable(QStringLiteral("PROGRAM MISSING: %1 is needed to compare with").arg(program)));
    if (const auto known = differing().find(name); known != differing().end())
        QSKIP(known->second);
    constexpr qint64 manyPixels = 20'000'000;
    const Result<ImageInfo> info = probeFile(samplesFolder() + name);
    QVERIFY2(info, qPrintable(info.reason()));
    if (qint64(info->size.width()) * info->size.height() > manyPixels)
        QSKIP("too large to be compared in passing");
    const Result<Picture> picture = decodeFile(samplesFolder() + name);
    QVERIFY2(picture, qPrintable(picture.reason()));
    const QImage theirs = shownBy(other, samplesFolder() + name);
    QVERIFY2(!theirs.isNull(), "the other program reads it");
    const QImage ours = shownHere(picture->pixels);
    QCOMPARE(ours.size(), theirs.size());
    const Difference difference = differenceOf(ours, theirs);
    QVERIFY2(difference.largest <= other.tolerance && difference.mean <= other.mean,
        qPrintable(QStringLiteral("largest %1, mean %2").arg(difference.largest).arg(difference.mean)));
    ++m_compared;
}

void tst_Pixels::cleanupTestCase()
{
    if (!samplesFolder().isEmpty())
        qInfo("%d files compared", m_compared);
}

QTEST_GUILESS_MAIN(tst_Pixels)
#include "tst_pixels.moc"
