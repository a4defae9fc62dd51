#include "engine/codec.h"
#include "engine/codecs/exif.h"
#include "engine/decode.h"
#include "engine/encode.h"
#include "engine/enginefiles.h"
#include "engine/metadata.h"
#include "support/support.h"

#include <QColorSpace>
#include <QTest>
#include <QtEndian>

namespace {

QByteArray be(quint32 value, int bytes)
{
    QByteArray number(4, '\0');
    qToBigEndian(value, number.data());
    return number.right(bytes);
}

/// Directories of a TIFF structure, highest byte first.
class Directory
{
public:
    explicit Directory(int start)
        : m_start(start)
    {
    }
    void add(int tag, int type, int count, const QByteArray &value)
    {
        m_entries += be(quint32(tag), 2) + be(quint32(type), 2) + be(quint32(count), 4);
        ++m_count;
        m_values.append(value);
    }
    void addText(int tag, const QByteArray &text) { add(tag, 2, int(text.size()) + 1, text + '\0'); }
    /// `next` is the place of the directory behind this one.
    QByteArray bytes(int next = 0) const
    {
        QByteArray entries;
        QByteArray data;
        const int dataStart = m_start + 2 + 12 * m_count + 4;
        for (int i = 0; i < m_count; ++i) {
            const QByteArray &value = m_values[i];
            entries += m_entries.mid(8 * i, 8);
            entries += value.size() <= 4 ? value.leftJustified(4, '\0') : be(quint32(dataStart + data.size()), 4);
            if (value.size() > 4)
                data += value + QByteArray(value.size() % 2, '\0');
        }
        return be(quint32(m_count), 2) + entries + be(quint32(next), 4) + data;
    }

private:
    const int m_start;
    int m_count = 0;
    QByteArray m_entries;
    QByteArrayList m_values;
};

const QByteArray thumbnail("\xff\xd8 the thumbnail of before \xff\xd9");

/// Description, turned by a quarter, 300 dots an inch; the camera's own size; a thumbnail.
QByteArray exifBlock(int makerNoteBytes = 0)
{
    constexpr int start = 8;
    const auto first = [](int camera) {
        Directory directory(start);
        directory.addText(270, "A boat");
        directory.addText(271, "Shipyard");
        directory.add(274, 3, 1, be(6, 2));
        directory.add(282, 5, 1, be(300, 4) + be(1, 4));
        directory.add(283, 5, 1, be(300, 4) + be(1, 4));
        directory.add(296, 3, 1, be(2, 2));
        directory.addText(306, "2020:07:15 08:35:14");
        directory.add(34665, 4, 1, be(quint32(camera), 4));
        return directory;
    };
    const int cameraStart = start + int(first(0).bytes().size());
    Directory camera(cameraStart);
    camera.add(33434, 5, 1, be(1, 4) + be(125, 4));
    if (makerNoteBytes > 0)
        camera.add(37500, 7, makerNoteBytes, QByteArray(makerNoteBytes, 'm'));
    camera.add(40962, 4, 1, be(999, 4));
    camera.add(40963, 4, 1, be(666, 4));
    const int smallStart = cameraStart + int(camera.bytes().size());
    const auto small = [&](int place) {
        Directory directory(smallStart);
        directory.add(259, 3, 1, be(6, 2));
        directory.add(513, 4, 1, be(quint32(place), 4));
        directory.add(514, 4, 1, be(quint32(thumbnail.size()), 4));
        return directory.bytes();
    };
    const int place = smallStart + int(small(0).size());
    return "MM" + be(42, 2) + be(start, 4) + first(cameraStart).bytes(smallStart) + camera.bytes() + small(place)
        + thumbnail;
}

QByteArray dataset(int number, const QByteArray &value)
{
    return "\x1c\x02" + be(quint32(number), 1) + be(quint32(value.size()), 2) + value;
}

const QByteArray iptcBlock = dataset(25, "sea") + dataset(25, "sail") + dataset(120, "The caption");
const QByteArray xmpBlock =
    "<?xpacket begin='\xef\xbb\xbf' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
    "xmlns:tiff='http://ns.adobe.com/tiff/1.0/' xmlns:photoshop='http://ns.adobe.com/photoshop/1.0/' "
    "tiff:Orientation='6' photoshop:City='Harwich'/></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";

QByteArray marker(int code, const QByteArray &payload)
{
    return "\xff" + be(quint32(code), 1) + be(quint32(payload.size()) + 2, 2) + payload;
}

QByteArray rgbProfile()
{
    return QColorSpace(QColorSpace::SRgb).iccProfile();
}

/// A photograph of 24 x 16 pixels that stands upright as 16 x 24, with everything a camera and an archivist add.
QByteArray photograph()
{
    const QByteArray jpeg = written(rampImage({24, 16}), "jpg", 95);
    return jpeg.left(2) + marker(0xe1, QByteArray("Exif\0\0", 6) + exifBlock())
        + marker(0xe1, QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + xmpBlock)
        + marker(0xed,
            QByteArray("Photoshop 3.0\0"
                       "8BIM\x04\x04\0\0",
                22)
                + be(quint32(iptcBlock.size()), 4) + iptcBlock + QByteArray(iptcBlock.size() % 2, '\0'))
        + marker(0xe2, QByteArray("ICC_PROFILE\0\1\1", 14) + rgbProfile()) + marker(0xfe, "drawn by hand")
        + jpeg.mid(2);
}

QByteArray chunk(const char *kind, const QByteArray &body)
{
    return be(quint32(body.size()), 4) + kind + body + QByteArray(4, '\0');
}

/// A PNG with one more chunk behind its header.
QByteArray pngWith(const char *kind, const QByteArray &body)
{
    const QByteArray png = written(rampImage({5, 4}), "png");
    constexpr qsizetype behindHeader = 33;
    return png.left(behindHeader) + chunk(kind, body) + png.mid(behindHeader);
}

QByteArray packed(const QByteArray &text)
{
    return qCompress(text).mid(4);
}

bool isKnown(TypeCode code)
{
    const auto encoders = codecModule()->encoders;
    return std::any_of(encoders.begin(), encoders.end(), [&](const Encoder &e) { return e.typeCode == code; });
}

}

/// What a picture file tells besides its pixels: read, shown, and carried over into other formats.
class tst_Metadata : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void aSaveCarriesEverythingOver_data();
    void aSaveCarriesEverythingOver();
    void damagedBlocksNeverKeepAPictureFromBeingSaved_data();
    void damagedBlocksNeverKeepAPictureFromBeingSaved();
    void blocksTooLargeForASegmentAreReduced();
    void profilesOfOtherColoursStayOut();
    void textsOfSmallFiles_data();
    void textsOfSmallFiles();
    void entriesOfSeveralLinesStayOneEntry();
    void textsOfSamples_data();
    void textsOfSamples();
    void resolutionIsKept_data();
    void resolutionIsKept();

private:
    Picture m_photograph;
};

void tst_Metadata::initTestCase()
{
    useBuiltModules();
    QVERIFY2(codecModule(), qPrintable(codecModuleFailure()));
    const Result<Picture> picture = decode({photograph(), QStringLiteral("jpg")});
    QVERIFY(picture);
    QCOMPARE(picture->pixels.size(), QSize(16, 24));
    QCOMPARE(picture->metadata.exif, exifBlock());
    QCOMPARE(picture->metadata.iptc, iptcBlock);
    QCOMPARE(picture->metadata.xmp, xmpBlock);
    QCOMPARE(picture->metadata.comment, QByteArray("drawn by hand"));
    QCOMPARE(picture->iccProfile, rgbProfile());
    QCOMPARE(picture->pixels.dotsPerMeterX(), 11811);
    m_photograph = *picture;
}

void tst_Metadata::aSaveCarriesEverythingOver_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<bool>("hasComment");
    const auto add = [](TypeCode code, const char *extension, bool hasComment) {
        if (isKnown(code))
            QTest::addRow("%d %s", int(code), extension) << int(code) << QString::fromLatin1(extension) << hasComment;
    };
    add(TypeCode::Jpeg, "jpg", true);
    add(TypeCode::Png, "png", true);
    add(TypeCode::PngInterlaced, "png", true);
    add(TypeCode::Tiff, "tif", false);
    add(TypeCode::TiffJpeg, "tif", false);
    add(TypeCode::Jpeg2000, "jp2", false);
    add(TypeCode::Psd, "psd", false);
}

void tst_Metadata::aSaveCarriesEverythingOver()
{
    QFETCH(int, code);
    QFETCH(QString, extension);
    QFETCH(bool, hasComment);
    const Result<QByteArray> bytes = encode(m_photograph, TypeCode(code));
    QVERIFY2(bytes, qPrintable(bytes.reason()));
    QVERIFY(!bytes->contains(thumbnail));
    QVERIFY(bytes->count("eXIf") <= 1); // a PNG has it once
    const EncodedFile file{*bytes, extension};
    const Result<Picture> back = decode(file);
    QVERIFY2(back, qPrintable(back.reason()));
    QVERIFY(!back->partial);
    QCOMPARE(back->pixels.size(), QSize(16, 24)); // and not turned once more
    QCOMPARE(exifOrientation(bytesOf(back->metadata.exif)), 1);
    QVERIFY(!back->metadata.exif.isEmpty());
    QCOMPARE(back->metadata.iptc.left(iptcBlock.size()), iptcBlock);
    QVERIFY(back->metadata.xmp.contains("Harwich"));
    QVERIFY(!back->metadata.xmp.contains("Orientation=\"6\"") && !back->metadata.xmp.contains("Orientation='6'"));
    QCOMPARE(back->iccProfile, rgbProfile());
    QVERIFY(std::abs(back->pixels.dotsPerMeterX() - 11811) < 40);
    QVERIFY(std::abs(back->pixels.dotsPerMeterY() - 11811) < 40);

    const Result<PictureTexts> texts = readTexts(file);
    QVERIFY2(texts, qPrintable(texts.reason()));
    QCOMPARE(texts->description, QStringLiteral("A boat"));
    QCOMPARE(texts->comment, hasComment ? QStringLiteral("drawn by hand") : QString());
    QCOMPARE(texts->cameraInfo, QStringLiteral("Make: Shipyard\nExposure Time: 1/125 s"));
    QCOMPARE(texts->cameraDate, QStringLiteral("2020:07:15 08:35:14"));
    QCOMPARE(iptcText(*texts), QStringLiteral("Keywords=sea: \nKeywords=sail: \nCaption=The caption"));
    // The size that the camera noted is the one before the turn.
    const QByteArray wide = be(16, 4), high = be(24, 4);
    QVERIFY(back->metadata.exif.contains(QByteArray::fromHex("a002000400000001") + wide)
        || back->metadata.exif.contains(QByteArray::fromHex("02a0040001000000") + QByteArray::fromHex("10000000")));
}

void tst_Metadata::damagedBlocksNeverKeepAPictureFromBeingSaved_data()
{
    QTest::addColumn<Metadata>("blocks");
    const QByteArray exif = exifBlock();
    for (qsizetype length = 1; length < exif.size(); length += 13)
        QTest::addRow("EXIF cut at %d", int(length)) << Metadata{exif.left(length), iptcBlock, xmpBlock, {}};
    for (qsizetype at = 4; at < 200; at += 7) {
        QByteArray damaged = exif;
        damaged[at] = char(damaged[at] ^ 0xff);
        QTest::addRow("EXIF damaged at %d", int(at)) << Metadata{damaged, {}, {}, {}};
    }
    QByteArray loop = exif;
    loop.replace(8 + 2 + 8 * 12, 4, be(8, 4));
    const QByteArray noise = QByteArray::fromHex("d2ff1c02780000ffd8ffe00010").repeated(3000);
    QTest::newRow("EXIF whose directories form a ring") << Metadata{loop, {}, {}, {}};
    QTest::newRow("noise") << Metadata{noise, noise, noise, noise};
    QTest::newRow("zeros in texts") << Metadata{{}, {}, QByteArray(100, '\0'), QByteArray("a\0b\0", 4)};
    QTest::newRow("XMP without end") << Metadata{{}, {}, xmpBlock.left(300), {}};
    QTest::newRow("XMP of many levels") << Metadata{{}, {}, "<x:xmpmeta>" + QByteArray("<a>").repeated(20000), {}};
    QTest::newRow("long comment") << Metadata{{}, {}, {}, QByteArray(300'000, 'c')};
    QTest::newRow("long IPTC") << Metadata{{}, dataset(25, QByteArray(30'000, 'k')).repeated(5), {}, {}};
}

void tst_Metadata::damagedBlocksNeverKeepAPictureFromBeingSaved()
{
    QFETCH(Metadata, blocks);
    Picture picture = Picture::fromImage(rampImage({12, 9}));
    picture.metadata = blocks;
    for (const QByteArray &profile : {QByteArray(), QByteArray(200, 'p'), rgbProfile().left(300)}) {
        picture.iccProfile = profile;
        for (const Encoder &encoder : codecModule()->encoders) {
            const Result<QByteArray> bytes = encode(picture, encoder.typeCode);
            QVERIFY2(bytes, encoder.codec);
            const Codec *reader = nullptr;
            for (const Codec *codec : fullCodecTable())
                reader = qstrcmp(codec->name, encoder.codec) == 0 ? codec : reader;
            QVERIFY2(reader, encoder.codec);
            const Result<Picture> back = reader->decode({*bytes, {}}, {});
            QVERIFY2(back && back->pixels.size() == QSize(12, 9) && !back->partial, encoder.codec);
        }
    }
}

void tst_Metadata::blocksTooLargeForASegmentAreReduced()
{
    Picture picture = m_photograph;
    picture.metadata.exif = exifBlock(70'000);
    for (const char *format : {"jpg", "png"}) {
        const bool jpeg = qstrcmp(format, "jpg") == 0;
        const Result<QByteArray> bytes = encode(picture, jpeg ? TypeCode::Jpeg : TypeCode::Png);
        QVERIFY(bytes);
        const Result<PictureTexts> texts = readTexts({*bytes, QLatin1String(format)});
        QCOMPARE(texts->description, QStringLiteral("A boat"));
        QVERIFY(!bytes->contains(QByteArray(1000, 'm')));
    }
    // A profile goes over as many segments as it needs.
    QByteArray large = rgbProfile() + QByteArray(150'000, 'x');
    large.replace(0, 4, be(quint32(large.size()), 4));
    picture.iccProfile = large;
    QCOMPARE(decode({*encode(picture, TypeCode::Jpeg), {}})->iccProfile, large);
}

void tst_Metadata::profilesOfOtherColoursStayOut()
{
    QByteArray greyProfile = rgbProfile();
    greyProfile.replace(16, 4, "GRAY");
    Picture colors = Picture::fromImage(rampImage({6, 6}));
    colors.iccProfile = greyProfile;
    Picture grey = Picture::fromImage(rampImage({6, 6}, QImage::Format_Grayscale8));
    grey.iccProfile = rgbProfile();
    for (const TypeCode code : {TypeCode::Jpeg, TypeCode::Png, TypeCode::Tiff, TypeCode::Jpeg2000}) {
        QVERIFY(decode({*encode(colors, code), {}})->iccProfile.isEmpty());
        QVERIFY(decode({*encode(grey, code), {}})->iccProfile.isEmpty());
    }
}

void tst_Metadata::textsOfSmallFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("comment");
    const QByteArray jpeg = written(rampImage({5, 4}), "jpg");
    const auto jpegWith = [&](const QByteArray &segment) { return jpeg.left(2) + segment + jpeg.mid(2); };
    const QString umlaut = QStringLiteral("gr\u00fcn");
    QTest::newRow("JPEG without any") << jpeg << QString() << QString();
    QTest::newRow("JPEG, UTF-8") << jpegWith(marker(0xfe, umlaut.toUtf8())) << QString() << umlaut;
    QTest::newRow("JPEG, Latin-1") << jpegWith(marker(0xfe, umlaut.toLatin1())) << QString() << umlaut;
    const QByteArray comment("Comment\0", 8);
    QTest::newRow("PNG text") << pngWith("tEXt", comment + umlaut.toLatin1()) << QString() << umlaut;
    QTest::newRow("PNG packed text") << pngWith("zTXt", comment + '\0' + packed("packed")) << QString()
                                     << QStringLiteral("packed");
    QTest::newRow("PNG international text")
        << pngWith("iTXt", comment + QByteArray("\1\0de\0Kommentar\0", 15) + packed(umlaut.toUtf8())) << QString()
        << umlaut;
    const QByteArray exif = QByteArray("Exif\0\0", 6) + exifBlock();
    QTest::newRow("PNG, EXIF as text") << pngWith("zTXt",
        QByteArray("Raw profile type exif\0\0", 23)
            + packed("\nexif\n    " + QByteArray::number(exif.size()) + '\n' + exif.toHex() + '\n'))
                                       << QStringLiteral("A boat") << QString();
    QTest::newRow("PNG text that unpacks to no end")
        << pngWith("zTXt", comment + '\0' + packed(QByteArray(40'000'000, 'c'))) << QString() << QString();
    QTest::newRow("GIF") << QByteArray(gifOf(1)).insert(19, QByteArray("\x21\xfe\x05hello\x03 gi\0", 13)) << QString()
                         << QStringLiteral("hello gi");
    Directory windows(8);
    windows.add(40092, 1, 12, QByteArray("n\0o\0t\0e\0\xfc\0\0\0", 12));
    QTest::newRow("JPEG, UTF-16 of a file dialog")
        << jpegWith(marker(0xe1, QByteArray("Exif\0\0MM\0*\0\0\0\x08", 14) + windows.bytes())) << QString()
        << QStringLiteral("note\u00fc");
    QTest::newRow("a format without texts") << written(rampImage({5, 4}), "bmp") << QString() << QString();
    QTest::newRow("no picture at all") << QByteArray("hello") << QString() << QString();
}

void tst_Metadata::textsOfSmallFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, description);
    QFETCH(QString, comment);
    const Result<PictureTexts> texts = readTexts({file, {}});
    QVERIFY2(texts, qPrintable(texts.reason()));
    QCOMPARE(texts->description, description);
    QCOMPARE(texts->comment, comment);
}

void tst_Metadata::entriesOfSeveralLinesStayOneEntry()
{
    PictureTexts texts;
    QCOMPARE(iptcText(texts), QString());
    texts.iptc = {
        {QStringLiteral("Caption"), QStringLiteral("one\r\ntwo")}, {QStringLiteral("City"), QStringLiteral("a=b")}};
    QCOMPARE(iptcText(texts), QStringLiteral("Caption=one two: \nCity=a=b"));
}

void tst_Metadata::textsOfSamples_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("comment");
    QTest::addColumn<QString>("camera"); ///< appears in the camera's lines
    QTest::addColumn<int>("entries");
    const auto row = [](const char *file, const char *description, const char *comment, const char *camera,
                         int entries) {
        QTest::newRow(file) << QString::fromLatin1(file) << QString::fromLatin1(description)
                            << QString::fromLatin1(comment) << QString::fromLatin1(camera) << entries;
    };
    row("jpg/iptc-full.jpg", "A witty caption", "", "", 24);
    row("jpg/comment-exif-all.jpg", "A witty caption", "a comment", "Model: FinePix2400Zoom\nExposure Time: 1/64 s",
        22);
    row("jpg/gray-comment.jpg", "", "Created with GIMP", "", 0);
    row("jpg/photo-5mp-description.jpg", "OLYMPUS DIGITAL CAMERA", "", "Make: OLYMPUS", 0);
}

void tst_Metadata::textsOfSamples()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QString, file);
    QFETCH(QString, description);
    QFETCH(QString, comment);
    QFETCH(QString, camera);
    QFETCH(int, entries);
    const Result<PictureTexts> texts = readTextsOfFile(samplesFolder() + file);
    QVERIFY2(texts, qPrintable(texts.reason()));
    QCOMPARE(texts->description, description);
    QCOMPARE(texts->comment, comment);
    QVERIFY2(texts->cameraInfo.contains(camera), qPrintable(texts->cameraInfo));
    QCOMPARE(int(texts->iptc.size()), entries);
}

void tst_Metadata::resolutionIsKept_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("extension");
    const std::pair<TypeCode, const char *> rows[] = {{TypeCode::Bmp, "bmp"}, {TypeCode::Pcx, "pcx"},
        {TypeCode::Dcx, "dcx"}, {TypeCode::Jpeg, "jpg"}, {TypeCode::Png, "png"}, {TypeCode::Tiff, "tif"},
        {TypeCode::Jpeg2000, "jp2"}, {TypeCode::Psd, "psd"}};
    for (const auto &[code, extension] : rows) {
        if (isKnown(code))
            QTest::newRow(extension) << int(code) << QString::fromLatin1(extension);
    }
}

void tst_Metadata::resolutionIsKept()
{
    QFETCH(int, code);
    QFETCH(QString, extension);
    const QImage fresh = rampImage({9, 9});
    QImage fine = fresh;
    fine.setDotsPerMeterX(23622); // 600 and 400 dots an inch
    fine.setDotsPerMeterY(15748);
    const Result<QByteArray> bytes = encode(Picture::fromImage(fine), TypeCode(code));
    const Result<Picture> back = decode({*bytes, extension});
    QVERIFY(std::abs(back->pixels.dotsPerMeterX() - 23622) < 40);
    QVERIFY(std::abs(back->pixels.dotsPerMeterY() - 15748) < 40);
    // No 599.999 where 600 was meant.
    if (TypeCode(code) == TypeCode::Tiff)
        QVERIFY(bytes->contains(QByteArray::fromHex("5802000001000000")));
    // What nobody set is not invented.
    const Result<Picture> none = decode({*encode(Picture::fromImage(fresh), TypeCode(code)), extension});
    QCOMPARE(none->pixels.dotsPerMeterX(), fresh.dotsPerMeterX());
}

QTEST_GUILESS_MAIN(tst_Metadata)
#include "tst_metadata.moc"
