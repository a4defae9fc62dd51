#include "engine/codec.h"
#include "engine/decode.h"
#include "engine/encode.h"
#include "engine/testpictures.h"
#include "support/support.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <algorithm>
#include <cmath>

namespace {

/// What a format can hold. A picture comes back at the smallest of `depths` that is no smaller than its own, or at the
/// largest; where there is none, the format has its own rules.
struct Format
{
    TypeCode code;
    const char *name;
    const char *extension;
    enum Colors { TwoColors, Greys, All } colors = All;
    bool alpha = false;
    bool deep = false;
    double leastPsnr = 0; ///< 0: without loss
    QList<int> depths = {};
};

const QList<Format> &formats()
{
    static const QList<Format> list{
        {TypeCode::Bmp, "BMP", "bmp", Format::All, true, false, 0, {1, 4, 8, 24, 32}},
        {TypeCode::Dcx, "DCX", "dcx", Format::All, false, false, 0, {1, 4, 8, 24}},
        {TypeCode::Iff, "IFF", "iff"},
        {TypeCode::Jpeg2000, "JP2", "jp2", Format::All, true, true},
        {TypeCode::Jpeg, "JPEG", "jpg", Format::All, false, false, 30},
        {TypeCode::MbmCompressed, "MBM packed", "mbm"},
        {TypeCode::Mbm, "MBM", "mbm"},
        {TypeCode::Pbm, "PBM", "pbm", Format::TwoColors, false, false, 0, {1}},
        {TypeCode::Pcx, "PCX", "pcx", Format::All, false, false, 0, {1, 4, 8, 24}},
        {TypeCode::Pgm, "PGM", "pgm", Format::Greys, false, false, 0, {8}},
        {TypeCode::Png, "PNG", "png", Format::All, true, true, 0, {1, 2, 4, 8, 16, 24, 32, 48, 64}},
        {TypeCode::PngInterlaced, "PNG interlaced", "png", Format::All, true, true, 0,
            {1, 2, 4, 8, 16, 24, 32, 48, 64}},
        {TypeCode::Ppm, "PPM", "ppm", Format::All, false, false, 0, {24}},
        {TypeCode::Psd, "PSD", "psd", Format::All, true, true},
        {TypeCode::Sgi, "SGI", "rgb", Format::All, true, true},
        {TypeCode::Tga, "TGA", "tga", Format::All, true},
        {TypeCode::TgaCompressed, "TGA packed", "tga", Format::All, true},
        {TypeCode::Tiff, "TIFF", "tif", Format::All, true, true, 0, {1, 4, 8, 16, 24, 32, 48, 64}},
        {TypeCode::TiffJpeg, "TIFF JPEG", "tif", Format::All, false, false, 30},
        {TypeCode::Wbmp, "WBMP", "wbmp", Format::TwoColors, false, false, 0, {1}},
        {TypeCode::Xbm, "XBM", "xbm", Format::TwoColors, false, false, 0, {1}},
        {TypeCode::Xpm, "XPM", "xpm"},
        {TypeCode::Xwd, "XWD", "xwd", Format::All, false, false, 0, {1, 8, 24}},
    };
    return list;
}

const Format &formatOf(TypeCode code)
{
    return *std::find_if(formats().begin(), formats().end(), [&](const Format &f) { return f.code == code; });
}

QImage overWhite(const QImage &image)
{
    QImage rgb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < rgb.height(); ++y) {
        for (int x = 0; x < rgb.width(); ++x) {
            const QRgb pixel = rgb.pixel(x, y);
            const auto blend = [&](int c) { return (c * qAlpha(pixel) + 255 * (255 - qAlpha(pixel)) + 127) / 255; };
            rgb.setPixel(x, y, qRgb(blend(qRed(pixel)), blend(qGreen(pixel)), blend(qBlue(pixel))));
        }
    }
    return rgb.convertToFormat(QImage::Format_RGB32);
}

/// The picture as a reader of that format should see it.
QImage expected(const Picture &picture, const Format &format)
{
    const bool deepSource = picture.pixels.format() == QImage::Format_RGBA64;
    if (format.alpha)
        return picture.pixels.convertToFormat(
            deepSource && format.deep ? QImage::Format_RGBA64 : QImage::Format_ARGB32);
    QImage image = overWhite(picture.pixels);
    // Of two colours the darker one is black, however light.
    int white = 128;
    if (picture.pixels.format() == QImage::Format_Mono)
        white = qMax(qGray(picture.pixels.color(0)), qGray(picture.pixels.color(1)));
    for (int y = 0; y < image.height() && format.colors != Format::All; ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const int grey = qGray(image.pixel(x, y));
            const int value = format.colors == Format::Greys ? grey : grey < white ? 0 : 255;
            image.setPixel(x, y, qRgb(value, value, value));
        }
    }
    return image;
}

int expectedDepth(const Picture &picture, const Format &format)
{
    int depth = picture.info.bitsPerPixel;
    const bool clear = hasTransparency(picture);
    if (picture.pixels.format() == QImage::Format_RGBA64 && !format.deep)
        depth = clear && format.alpha ? 32 : 24;
    else if (clear && format.code == TypeCode::Tiff) // whose palettes are opaque
        depth = qMax(depth, 32);
    else if (depth == 1 && !qIsGray(picture.pixels.color(0)) && format.depths == formatOf(TypeCode::Pcx).depths)
        depth = 4; // two colours are black and white there
    const auto found =
        std::find_if(format.depths.begin(), format.depths.end() - 1, [&](int known) { return known >= depth; });
    return *found;
}

double psnr(const QImage &a, const QImage &b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y), q = b.pixel(x, y);
            for (const int d : {qRed(p) - qRed(q), qGreen(p) - qGreen(q), qBlue(p) - qBlue(q)})
                sum += d * d;
        }
    }
    return sum == 0 ? 99 : 10 * std::log10(255.0 * 255 * 3 * a.width() * a.height() / sum);
}

int differing(const QImage &a, const QImage &b)
{
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const bool bothClear = a.pixelColor(x, y).alpha() == 0 && b.pixelColor(x, y).alpha() == 0;
            count += !bothClear && a.pixelColor(x, y).rgba64() != b.pixelColor(x, y).rgba64();
        }
    }
    return count;
}

/// Another program that reads files of some formats and puts a portable map on its output.
struct Reader
{
    const char *program;
    QStringList arguments; ///< "%f" stands for the file
    QList<TypeCode> codes;
};

QList<Reader> readers()
{
    using enum TypeCode;
    const auto plain = [](const char *program, TypeCode code, QStringList before = {}) {
        return Reader{program, before << QStringLiteral("%f"), {code}};
    };
    const QString script = QStringLiteral("import sys; from PIL import Image; i = Image.open(sys.argv[1]); "
                                          "i.convert('RGB').save(sys.stdout.buffer, 'PPM')");
    return {
        {"gm", {QStringLiteral("convert"), QStringLiteral("%f"), QStringLiteral("ppm:-")},
            {Bmp, Dcx, Jpeg, Pbm, Pcx, Pgm, Png, PngInterlaced, Ppm, Tga, TgaCompressed, Tiff, TiffJpeg, Wbmp, Xbm, Xpm,
                Xwd}},
        {"/usr/bin/python3", {QStringLiteral("-c"), script, QStringLiteral("%f")},
            {Bmp, Jpeg, Jpeg2000, Pbm, Pcx, Pgm, Png, PngInterlaced, Ppm, Psd, Sgi, Tga, TgaCompressed, Tiff,
                TiffJpeg}},
        {"convert-im6.q16", {QStringLiteral("%f[0]"), QStringLiteral("ppm:-")}, {Psd}},
        plain("bmptopnm", Bmp),
        plain("pcxtoppm", Pcx),
        plain("pngtopam", Png),
        plain("pngtopam", PngInterlaced),
        plain("sgitopnm", Sgi),
        plain("tifftopnm", Tiff),
        plain("wbmptopbm", Wbmp),
        plain("xbmtopbm", Xbm),
        plain("xpmtoppm", Xpm),
        plain("xwdtopnm", Xwd),
        plain("ilbmtoppm", Iff),
        plain("tgatoppm", Tga),
        plain("tgatoppm", TgaCompressed),
        plain("jpegtopnm", Jpeg),
        {"opj_decompress", {QStringLiteral("-i"), QStringLiteral("%f"), QStringLiteral("-o"), QStringLiteral("%f.ppm")},
            {Jpeg2000}},
    };
}

}

/// What encode() writes comes back from decode(), and from programs that have nothing to do with this one.
class tst_Encode : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyFormatGivesThePictureBack_data();
    void everyFormatGivesThePictureBack();
    void otherProgramsReadTheSame_data();
    void otherProgramsReadTheSame();
    void diffusionKeepsTheBrightness_data();
    void diffusionKeepsTheBrightness();
    void oneLightColourStaysLight();
    void qualityAndFastSavesReachTheFile();
    void moreColoursThanXpmHoldsAreReduced();
    void whatCannotBeWrittenIsRefused();

private:
    TemporaryHome m_home;
};

void tst_Encode::everyFormatGivesThePictureBack_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<Picture>("picture");
    QVERIFY2(codecModule(), qPrintable(codecModuleFailure()));
    for (const Encoder &encoder : codecModule()->encoders) {
        for (const TestPicture &named : testPictures())
            QTest::addRow("%s, %s", formatOf(encoder.typeCode).name, named.name)
                << int(encoder.typeCode) << named.picture;
    }
}

void tst_Encode::everyFormatGivesThePictureBack()
{
    QFETCH(int, code);
    QFETCH(Picture, picture);
    const Format &format = formatOf(TypeCode(code));
    EncodeOptions options;
    options.jpegQuality = 95;
    const Result<QByteArray> bytes = encode(picture, format.code, options);
    QVERIFY2(bytes, qPrintable(bytes.reason()));
    const Result<Picture> back = decode({*bytes, QLatin1String(format.extension)});
    QVERIFY2(back, qPrintable(back.reason()));
    QVERIFY(!back->partial);
    const auto writer = std::find_if(codecModule()->encoders.begin(), codecModule()->encoders.end(),
        [&](const Encoder &encoder) { return encoder.typeCode == format.code; });
    QCOMPARE(back->info.codec, QByteArray(writer->codec));
    QCOMPARE(back->pixels.size(), picture.pixels.size());
    if (!format.depths.isEmpty())
        QCOMPARE(back->info.bitsPerPixel, expectedDepth(picture, format));
    const QImage whole = expected(picture, format);
    if (format.leastPsnr > 0) {
        const double reached = psnr(back->pixels, whole);
        // Noise of single pixels is not what these formats are for.
        const double least = whole.width() < 12 || picture.pixels.depth() != 32 ? 8 : format.leastPsnr;
        QVERIFY2(reached >= least, qPrintable(QString::number(reached)));
    } else {
        // What is neither clear nor opaque ends over white where a format knows only those; a bitmap
        // knows transparency only beside true colours.
        const bool clearOnly = hasTransparency(picture)
            && (format.code == TypeCode::Xpm || (format.code == TypeCode::Bmp && picture.pixels.depth() <= 8));
        const QImage seen = format.alpha && !clearOnly ? back->pixels : overWhite(back->pixels);
        QCOMPARE(differing(seen, clearOnly ? overWhite(picture.pixels) : whole), 0);
    }
}

void tst_Encode::otherProgramsReadTheSame_data()
{
    QTest::addColumn<int>("reader");
    QTest::addColumn<int>("code");
    QVERIFY(codecModule());
    const QList<Reader> all = readers();
    for (int i = 0; i < all.size(); ++i) {
        for (const TypeCode code : all[i].codes)
            QTest::addRow("%s, %s", all[i].program, formatOf(code).name) << i << int(code);
    }
}

void tst_Encode::otherProgramsReadTheSame()
{
    QFETCH(int, reader);
    QFETCH(int, code);
    const Reader program = readers().at(reader);
    const Format &format = formatOf(TypeCode(code));
    if (QStandardPaths::findExecutable(QLatin1String(program.program)).isEmpty())
        QSKIP("PROGRAM MISSING: files are not checked by this independent reader");
    const auto known = codecModule()->encoders;
    if (std::none_of(known.begin(), known.end(), [&](const Encoder &e) { return e.typeCode == format.code; }))
        QSKIP("no writer of this format in this build");
    for (const TestPicture &named : testPictures()) {
        if (!named.forOthers)
            continue;
        const bool deepSource = named.picture.pixels.format() == QImage::Format_RGBA64;
        if (hasTransparency(named.picture) || (deepSource && format.deep))
            continue; // readers differ in what they make of these for a portable map
        if (format.code == TypeCode::Psd && named.picture.info.bitsPerPixel == 1 && program.program[0] == '/')
            continue; // it shows every bitmap of this format inverted
        if (format.code == TypeCode::Psd && named.picture.pixels.colorCount() > 0 && program.program[0] == 'c')
            continue; // it refuses palettes of this format
        const Result<QByteArray> bytes = encode(named.picture, format.code, {false, 95, 1.0, false});
        QVERIFY(bytes);
        const QString path = m_home.write(QStringLiteral("written.") + QLatin1String(format.extension), *bytes);
        QStringList arguments = program.arguments;
        arguments.replaceInStrings(QStringLiteral("%f"), path);
        if (format.code == TypeCode::Sgi && qstrcmp(program.program, "gm") == 0)
            arguments.replaceInStrings(path, QStringLiteral("sgi:") + path);
        QProcess process;
        process.start(QLatin1String(program.program), arguments);
        QVERIFY(process.waitForFinished());
        QFile written(path + QStringLiteral(".ppm"));
        const QByteArray map = written.open(QIODevice::ReadOnly) ? written.readAll() : process.readAllStandardOutput();
        written.remove();
        const QByteArray said = QByteArray(named.name) + ": " + process.readAllStandardError();
        const QImage seen = QImage::fromData(map, "ppm").convertToFormat(QImage::Format_RGB32);
        QVERIFY2(!seen.isNull(), said.constData());
        const QImage whole = overWhite(expected(named.picture, format));
        QVERIFY2(seen.size() == whole.size(), said.constData());
        if (format.leastPsnr == 0)
            QVERIFY2(differing(seen, whole) == 0, said.constData());
        else
            QVERIFY2(psnr(seen, whole) > 8, said.constData());
    }
}

void tst_Encode::diffusionKeepsTheBrightness_data()
{
    QTest::addColumn<int>("code");
    for (const TypeCode code : {TypeCode::Pbm, TypeCode::Wbmp, TypeCode::Xbm})
        QTest::addRow("%s", formatOf(code).name) << int(code);
}

void tst_Encode::diffusionKeepsTheBrightness()
{
    QFETCH(int, code);
    const Format &format = formatOf(TypeCode(code));
    QImage grey({64, 64}, QImage::Format_RGB32);
    grey.fill(qRgb(64, 64, 64));
    const auto whitePixels = [&](bool diffuse) {
        const Result<QByteArray> bytes = encode(Picture::fromImage(grey), format.code, {false, 80, 1.0, diffuse});
        const Result<Picture> back = decode({*bytes, QLatin1String(format.extension)});
        int count = 0;
        for (int y = 0; y < 64; ++y) {
            for (int x = 0; x < 64; ++x)
                count += qGray(back->pixels.pixel(x, y)) > 127;
        }
        return count;
    };
    QCOMPARE(whitePixels(false), 0);
    QVERIFY(std::abs(whitePixels(true) - 64 * 64 / 4) < 64 * 64 / 20);
}

void tst_Encode::oneLightColourStaysLight()
{
    // The other entry of the table, lighter or darker, is not in the picture.
    for (const QRgb other : {qRgb(255, 255, 255), qRgb(0, 0, 0)}) {
        QImage yellow({11, 3}, QImage::Format_Mono);
        yellow.setColorTable({other, qRgb(250, 250, 120)});
        yellow.fill(1);
        for (const TypeCode code : {TypeCode::Pbm, TypeCode::Wbmp, TypeCode::Xbm}) {
            const Result<QByteArray> bytes = encode(Picture::fromImage(yellow), code);
            const QImage back = decode({*bytes, QLatin1String(formatOf(code).extension)})->pixels;
            QCOMPARE(back.pixel(0, 0), qRgb(255, 255, 255));
            QCOMPARE(back.pixel(10, 2), qRgb(255, 255, 255));
        }
    }
}

void tst_Encode::qualityAndFastSavesReachTheFile()
{
    const Picture picture = Picture::fromImage(rampImage({160, 120}));
    const auto jpeg = [&](bool fast, int quality, TypeCode code = TypeCode::Jpeg) {
        return *encode(picture, code, {fast, quality, 1.0, false});
    };
    QVERIFY(jpeg(false, 30).size() < jpeg(false, 80).size());
    QVERIFY(jpeg(false, 30, TypeCode::TiffJpeg).size() < jpeg(false, 95, TypeCode::TiffJpeg).size());
    // The first component's sampling factors stand eleven bytes behind the frame's marker.
    const auto sampling = [](const QByteArray &file) {
        return int(uchar(file.at(file.indexOf(QByteArray("\xff\xc0\x00\x11", 4)) + 11)));
    };
    QCOMPARE(sampling(jpeg(true, 95)), 0x22);
    QCOMPARE(sampling(jpeg(false, 80)), 0x22);
    QCOMPARE(sampling(jpeg(false, 95)), 0x11);
    // The first values of the standard table for brightness, which a table made for the picture would not have.
    const QByteArray standard = QByteArray::fromHex("00010501010101010100000000000000");
    QVERIFY(jpeg(true, 80).contains(standard));
    QVERIFY(!jpeg(false, 80).contains(standard));
    QVERIFY(jpeg(false, 80).size() < jpeg(true, 80).size());

    const auto jp2 = [&](double quality) { return *encode(picture, TypeCode::Jpeg2000, {false, 80, quality, false}); };
    QVERIFY(jp2(0.05).size() < jp2(0.2).size() && jp2(0.2).size() < jp2(1.0).size());
    QVERIFY(psnr(decode({jp2(0.2), QStringLiteral("jp2")})->pixels, picture.pixels) > 30);
}

void tst_Encode::moreColoursThanXpmHoldsAreReduced()
{
    QImage image({300, 260}, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 255 / 299, y * 255 / 259, (x * y) & 255));
    }
    const Result<QByteArray> bytes = encode(Picture::fromImage(image), TypeCode::Xpm);
    QVERIFY(bytes);
    const Result<Picture> back = decode({*bytes, QStringLiteral("xpm")});
    QVERIFY(back);
    QCOMPARE(back->info.bitsPerPixel, 8);
    QVERIFY(psnr(back->pixels, image) > 20);
    const Result<QByteArray> exact = encode(Picture::fromImage(image.copy(0, 0, 250, 260)), TypeCode::Xpm);
    QCOMPARE(differing(decode({*exact, QStringLiteral("xpm")})->pixels, image.copy(0, 0, 250, 260)), 0);
}

void tst_Encode::whatCannotBeWrittenIsRefused()
{
    Picture reduced = Picture::fromImage(rampImage({10, 10}));
    reduced.info.size = {20, 20};
    for (const Encoder &encoder : codecModule()->encoders) {
        QVERIFY(!encode(Picture(), encoder.typeCode));
        QVERIFY(!encode(reduced, encoder.typeCode));
    }
    QVERIFY(!encode(Picture::fromImage(rampImage({2, 2})), TypeCode(1)));
    QVERIFY(!encode(Picture::fromImage(QImage(65535, 1, QImage::Format_RGB32)), TypeCode::Pcx));
    const Result<QByteArray> wide = encode(Picture::fromImage(QImage(65535, 1, QImage::Format_RGB32)), TypeCode::Jpeg);
    QVERIFY(!wide && !wide.reason().isEmpty());

    const QString path = m_home.write(QStringLiteral("kept.bmp"), "before");
    QVERIFY(!encodeFile(reduced, path, TypeCode::Bmp));
    QFile kept(path);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("before"));
    QVERIFY(encodeFile(Picture::fromImage(rampImage({3, 3})), path, TypeCode::Bmp));
    QVERIFY(decodeFile(path));
}

QTEST_GUILESS_MAIN(tst_Encode)
#include "tst_encode.moc"
