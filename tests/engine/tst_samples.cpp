#include "engine/codec.h"
#include "engine/codecs/exif.h"
#include "support/support.h"

#include <QFile>
#include <QTest>

#include <array>
#include <map>

namespace {

struct Row
{
    QString file;
    QSize size; ///< as stored: the table knows nothing of orientation
    int bits = 0; ///< 0: not told
    bool isTrial = false; ///< a trial written after the format's description gave the colours
    int agreeing = 0; ///< independent decoders that give the same colours
    QByteArray colors; ///< 8 x 8 x RGB, averaged over boxes, over white

    bool isTrusted() const { return isTrial || agreeing >= 2; }
};

QList<Row> expectedRows()
{
    QList<Row> rows;
    QFile table(samplesFolder() + QStringLiteral("EXPECTED.tsv"));
    if (!table.open(QIODevice::ReadOnly))
        return rows;
    const QList<QByteArray> lines = table.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.size() < 7 || line.startsWith('#') || fields[1].isEmpty())
            continue;
        rows.append({QString::fromUtf8(fields[0]), QSize(fields[1].toInt(), fields[2].toInt()), fields[3].toInt(),
            fields[4] == "prototype", fields[5].toInt(), QByteArray::fromHex(fields[6])});
    }
    return rows;
}

/// The orientation that each turned sample's file tells; the table holds their pixels as stored.
int orientationOf(const QString &file)
{
    static const std::map<QString, int> turned{{QStringLiteral("jpg/orient-l3.jpg"), 3},
        {QStringLiteral("jpg/orient-l6.jpg"), 6}, {QStringLiteral("jpg/orient-p5.jpg"), 5},
        {QStringLiteral("jpg/orient-p8.jpg"), 8}, {QStringLiteral("jpg/photo-10mp-rot6.jpg"), 6},
        {QStringLiteral("jpg/photo-14mp-rot8.jpg"), 8}, {QStringLiteral("tif/orientation.tif"), 6}};
    const auto found = turned.find(file);
    return found == turned.end() ? 1 : found->second;
}

/// An icon file shows its largest, then deepest picture; the table's reference took the first one.
const std::map<QString, std::pair<QSize, int>> &largerIcons()
{
    static const std::map<QString, std::pair<QSize, int>> icons{
        {QStringLiteral("ico/multi-b.ico"), {QSize(48, 48), 32}},
        {QStringLiteral("ico/multi-size.ico"), {QSize(48, 48), 32}}};
    return icons;
}

bool isCovered(const QString &file)
{
    const QByteArray extension = file.mid(file.lastIndexOf(QLatin1Char('.')) + 1).toLower().toLatin1();
    for (const Codec *codec : fullCodecTable()) {
        if (QByteArray(codec->extensions).split(' ').contains(extension))
            return true;
    }
    return false;
}

/// Box `index` of eight over `length` pixels: those whose middle lies in it.
struct Box
{
    int first;
    int last;
};

Box boxOf(int index, int length)
{
    const double side = std::max(length / 8.0, 1.0);
    const double middle = (index + 0.5) * length / 8.0;
    const int first = std::clamp(int(middle - side / 2 + 0.5), 0, length - 1);
    return {first, std::clamp(int(middle + side / 2 + 0.5), first + 1, length)};
}

QByteArray averagedColors(const QImage &image)
{
    QByteArray colors;
    for (int cell = 0; cell < 64; ++cell) {
        const Box across = boxOf(cell % 8, image.width());
        const Box down = boxOf(cell / 8, image.height());
        std::array<double, 3> sums{};
        for (int y = down.first; y < down.last; ++y) {
            const QRgb *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            for (int x = across.first; x < across.last; ++x) {
                const double alpha = qAlpha(row[x]) / 255.0;
                sums[0] += qRed(row[x]) * alpha + 255 * (1 - alpha);
                sums[1] += qGreen(row[x]) * alpha + 255 * (1 - alpha);
                sums[2] += qBlue(row[x]) * alpha + 255 * (1 - alpha);
            }
        }
        for (const double sum : sums)
            colors.append(char(uchar(sum / ((down.last - down.first) * (across.last - across.first)))));
    }
    return colors;
}

double meanDifference(const QByteArray &a, const QByteArray &b)
{
    double sum = 0;
    for (qsizetype i = 0; i < a.size(); ++i)
        sum += std::abs(int(uchar(a[i])) - int(uchar(b[i])));
    return sum / double(a.size());
}

}

/// Every sample file against what other decoders found in it.
class tst_Samples : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void sizeDepthAndColorsAreTheExpectedOnes_data();
    void sizeDepthAndColorsAreTheExpectedOnes();
    void aPhotoCdHasFiveSizes();
    void rawPreviewsServeSmallWishesOnly();
    void jpeg2000IsReducedByHalves();
};

void tst_Samples::initTestCase()
{
    useBuiltModules();
    QVERIFY2(!fullCodecTable().empty() && codecModuleFailure().isEmpty(), qPrintable(codecModuleFailure()));
}

void tst_Samples::sizeDepthAndColorsAreTheExpectedOnes_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<Row>("row");
    for (const Row &row : expectedRows()) {
        if (isCovered(row.file))
            QTest::newRow(qPrintable(row.file)) << row;
    }
}

void tst_Samples::sizeDepthAndColorsAreTheExpectedOnes()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(Row, row);
    const QString path = samplesFolder() + row.file;
    const int sizeIndex = row.file.endsWith(QLatin1String(".pcd")) ? 0 : -1;
    const Result<Picture> picture = decodeFile(path, {QSize(), sizeIndex, 0});
    QVERIFY2(picture, qPrintable(picture.reason()));
    const auto icon = largerIcons().find(row.file);
    const bool otherIcon = icon != largerIcons().end();
    const int orientation = orientationOf(row.file);

    QCOMPARE(picture->info.size, otherIcon ? icon->second.first : uprightSize(row.size, orientation));
    QCOMPARE(picture->pixels.size(), picture->info.size);
    if (row.bits > 0)
        QCOMPARE(picture->info.bitsPerPixel, otherIcon ? icon->second.second : row.bits);
    QVERIFY(!picture->partial);

    const Result<ImageInfo> info = probeFile(path, sizeIndex);
    QVERIFY2(info, qPrintable(info.reason()));
    QCOMPARE(info->size, picture->info.size);
    QCOMPARE(info->bitsPerPixel, picture->info.bitsPerPixel);
    QCOMPARE(info->pageCount, picture->info.pageCount);
    QCOMPARE(info->codec, picture->info.codec);

    if (!row.isTrusted() || otherIcon)
        return;
    const int back = orientation == 6 ? 8 : orientation == 8 ? 6 : orientation;
    const QImage stored = uprighted(picture->pixels.convertToFormat(QImage::Format_ARGB32), back);
    const double difference = meanDifference(averagedColors(stored), row.colors);
    QVERIFY2(difference <= 4.0, qPrintable(QStringLiteral("mean colour difference %1").arg(difference)));
}

void tst_Samples::aPhotoCdHasFiveSizes()
{
    SKIP_WITHOUT_SAMPLES();
    const QString path = samplesFolder() + QStringLiteral("pcd/photo-portrait.pcd");
    for (int index = 0; index < 5; ++index) {
        const QSize size(128 << index, 192 << index);
        const Result<Picture> picture = decodeFile(path, {QSize(), index, 0});
        QVERIFY2(picture, qPrintable(picture.reason()));
        QCOMPARE(picture->pixels.size(), size);
        QCOMPARE(probeFile(path, index)->size, size);
    }
    QCOMPARE(decodeFile(path)->info.size, QSize(512, 768));
    const Picture small = *decodeFile(path, {QSize(200, 300), 4, 0});
    QCOMPARE(small.info.size, QSize(2048, 3072));
    QCOMPARE(small.pixels.size(), QSize(256, 384));
}

void tst_Samples::rawPreviewsServeSmallWishesOnly()
{
    SKIP_WITHOUT_SAMPLES();
    const QString path = samplesFolder() + QStringLiteral("crw/g2.crw");
    for (const QSize target : {QSize(100, 100), QSize(1000, 700), QSize(2000, 1500)}) {
        const Result<Picture> picture = decodeFile(path, {target, -1, 0});
        QVERIFY2(picture, qPrintable(picture.reason()));
        const QSize fitted = picture->info.size.scaled(target, Qt::KeepAspectRatio);
        QCOMPARE(picture->info.size, QSize(2312, 1720));
        QVERIFY(picture->pixels.width() >= fitted.width() && picture->pixels.height() >= fitted.height());
        const Picture whole = *decodeFile(path);
        const QByteArray small = averagedColors(picture->pixels.convertToFormat(QImage::Format_ARGB32));
        const QByteArray large = averagedColors(whole.pixels.convertToFormat(QImage::Format_ARGB32));
        QVERIFY2(meanDifference(small, large) < 60, "the same scene, however the camera develops it");
    }
}

void tst_Samples::jpeg2000IsReducedByHalves()
{
    SKIP_WITHOUT_SAMPLES();
    const QString path = samplesFolder() + QStringLiteral("jp2/srgb.jp2");
    const Picture whole = *decodeFile(path);
    const Result<Picture> picture = decodeFile(path, {QSize(150, 150), -1, 0});
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.size, QSize(768, 512));
    QCOMPARE(picture->pixels.size(), QSize(192, 128));
    QVERIFY(meanDifference(averagedColors(picture->pixels), averagedColors(whole.pixels)) < 3);
}

QTEST_MAIN(tst_Samples)
#include "tst_samples.moc"
