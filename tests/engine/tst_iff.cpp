#include "engine/encode.h"
#include "engine/rasterfiles.h"
#include "support/support.h"

#include <QColorSpace>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace {

Result<Picture> decodeIff(const QByteArray &bytes)
{
    return decode({bytes, QStringLiteral("iff")});
}

/// Pixel values that use all bits, rows of an odd width.
QList<QByteArray> valueRows(int bits, QSize size = {37, 5})
{
    QList<QByteArray> rows;
    for (int y = 0; y < size.height(); ++y) {
        QByteArray row;
        for (int x = 0; x < size.width(); ++x)
            row.append(char((x * x + 3 * y + (x > 20 ? 0 : x / 3)) & ((1 << bits) - 1)));
        rows.append(row);
    }
    return rows;
}

/// Everything as one stream: runs go on over the ends of rows.
QByteArray packedAsOne(const QByteArray &bytes)
{
    QByteArray packed;
    for (qsizetype at = 0; at < bytes.size();) {
        qsizetype run = 1;
        while (at + run < bytes.size() && run < 128 && bytes[at + run] == bytes[at])
            ++run;
        packed += run > 1 ? QByteArray(1, char(257 - run)) + bytes[at] : QByteArray("\x80\0", 2) + bytes[at];
        at += run;
    }
    return packed;
}

/// Planes one after another out of rows of planes.
QByteArray wholePlanes(const QByteArray &rows, int planes, int height)
{
    const qsizetype rowBytes = rows.size() / planes / height;
    QByteArray out;
    for (int plane = 0; plane < planes; ++plane) {
        for (int y = 0; y < height; ++y)
            out += rows.mid((y * planes + plane) * rowBytes, rowBytes);
    }
    return out;
}

/// VDAT chunks: each column of words as a copy with a count in the data, one with a count in the command, or a run.
QByteArray columns(const QByteArray &planes, int count, int height)
{
    const qsizetype planeBytes = planes.size() / count;
    const qsizetype words = planeBytes / height / 2;
    QByteArray out;
    for (int plane = 0; plane < count; ++plane) {
        QByteArray commands, data;
        for (qsizetype column = 0; column < words; ++column) {
            QByteArray down;
            for (int y = 0; y < height; ++y)
                down += planes.mid(plane * planeBytes + (y * words + column) * 2, 2);
            const bool equal = down.count(down.left(2)) == height && down == down.left(2).repeated(height);
            commands += equal ? column % 2 ? char(height) : '\1' : column % 2 ? char(-height) : '\0';
            data += (column % 2 ? QByteArray() : be16(height)) + (equal ? down.left(2) : down);
        }
        const QByteArray chunk = be16(int(commands.size()) + 2) + commands + data;
        out += "VDAT" + be32(chunk.size()) + chunk + QByteArray(chunk.size() % 2, '\0');
    }
    return out;
}

QByteArray valuesOf(const QImage &image, int y)
{
    QByteArray values;
    for (int x = 0; x < image.width(); ++x)
        values.append(char(image.pixelIndex(x, y)));
    return values;
}

QRgb twelveBits(int word)
{
    return qRgb((word >> 8 & 15) * 17, (word >> 4 & 15) * 17, (word & 15) * 17);
}

/// A picture of four rows, all of colour 1 and (if there are so many) 17, with this chunk that changes colours.
Result<Picture> fourRows(int planes, const Chunk &changes)
{
    const QList<QByteArray> rows(4, QByteArray("\x01\x11\x00", 3));
    return decodeIff(
        iffOf("ILBM", {iffHeader({3, 4}, planes), iffColors(planes), changes, {"BODY", planarRows(rows, planes)}}));
}

}

/// IFF pictures in all their layouts, and what is written of them.
class tst_Iff : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyLayoutGivesThePixelValues_data();
    void everyLayoutGivesThePixelValues();
    void trueColoursAndTheirTransparency();
    void masksAndTransparentColoursShowTheGround();
    void heldAndModifiedColours_data();
    void heldAndModifiedColours();
    void halfBrightColoursAreKnownWithoutViewMode();
    void fourBitColourMapsAreStretched();
    void palettesChangeDownTheRows_data();
    void palettesChangeDownTheRows();
    void whatIsNoPictureIsRefusedWithAReason_data();
    void whatIsNoPictureIsRefusedWithAReason();
    void theFirstPictureOfAnAnimationIsShown();
    void everyDepthIsWrittenAndReadBack_data();
    void everyDepthIsWrittenAndReadBack();
    void metadataGoesAlong();
};

void tst_Iff::everyLayoutGivesThePixelValues_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("planes");
    for (const int planes : {1, 2, 3, 4, 5, 6, 7, 8}) {
        const QList<QByteArray> rows = valueRows(planes);
        const QSize size(int(rows[0].size()), int(rows.size()));
        const QByteArray body = planarRows(rows, planes);
        const QByteArray whole = wholePlanes(body, planes, size.height());
        const auto add = [&](const char *name, const char *kind, int compression, const Chunk &pixels) {
            // The view mode keeps six planes from being taken for something else.
            const QList<Chunk> chunks{
                iffHeader(size, planes, compression), iffColors(planes), {"CAMG", be32(0)}, pixels};
            QTest::addRow("%s, %d planes", name, planes) << iffOf(kind, chunks) << planes;
        };
        add("plain", "ILBM", 0, {"BODY", body});
        add("run lengths", "ILBM", 1, {"BODY", packedAsOne(body)});
        add("columns", "ILBM", 2, {"BODY", columns(whole, planes, size.height())});
        add("whole planes", "ACBM", 0, {"ABIT", whole});
        QByteArray bytes;
        for (const QByteArray &row : rows)
            bytes += row + QByteArray(row.size() % 2, '\x7f');
        add("bytes", "PBM ", 0, {"BODY", bytes});
        add("packed bytes", "PBM ", 1, {"BODY", packedAsOne(bytes)});
    }
}

void tst_Iff::everyLayoutGivesThePixelValues()
{
    QFETCH(QByteArray, file);
    QFETCH(int, planes);
    const Result<Picture> picture = decodeIff(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.bitsPerPixel, planes);
    const QList<QByteArray> rows = valueRows(planes);
    for (int y = 0; y < rows.size(); ++y)
        QCOMPARE(valuesOf(picture->pixels, y), rows[y]);
    QCOMPARE(picture->pixels.color(1), qRgb(1, 254, 7));
    const Result<Picture> cut = decodeIff(file.left(file.size() - 3));
    QVERIFY(cut && cut->partial);
}

void tst_Iff::trueColoursAndTheirTransparency()
{
    // Red, green, blue and alpha are eight planes each, one set behind the other in every row.
    const QList<QByteArray> channels{"\x10\xff\x01", QByteArray("\x80\0\x02", 3), QByteArray("\0\x7f\x03", 3)};
    const QList<QRgb> opaque{qRgb(0x10, 0x80, 0), qRgb(0xff, 0, 0x7f), qRgb(1, 2, 3)};
    const auto file = [&](int planes, const QByteArray &alpha) {
        QByteArray body;
        for (int i = 0; i < planes / 8; ++i)
            body += planarRows({i == 3 ? alpha : channels[i]}, 8);
        return iffOf("ILBM", {iffHeader({3, 1}, planes), {"BODY", body}});
    };
    const Result<Picture> plain = decodeIff(file(24, {}));
    const Result<Picture> clear = decodeIff(file(32, QByteArray("\xff\x00\x40", 3)));
    const Result<Picture> unused = decodeIff(file(32, QByteArray(3, '\0')));
    QVERIFY(plain && clear && unused);
    QCOMPARE(clear->info.bitsPerPixel, 32);
    for (int x = 0; x < 3; ++x) {
        QCOMPARE(plain->pixels.pixel(x, 0), opaque[x]);
        QCOMPARE(unused->pixels.pixel(x, 0), opaque[x]);
    }
    QCOMPARE(clear->pixels.pixel(0, 0), opaque[0]);
    QCOMPARE(clear->pixels.pixel(2, 0), qRgba(1, 2, 3, 0x40));
    QVERIFY(!hasTransparency(*unused) && hasTransparency(*clear));
}

void tst_Iff::masksAndTransparentColoursShowTheGround()
{
    // The mask is one more plane of each row.
    const QByteArray values("\x13\x02\x11", 3);
    const Result<Picture> masked =
        decodeIff(iffOf("ILBM", {iffHeader({3, 1}, 4, 0, 1), iffColors(4), {"BODY", planarRows({values}, 5)}}));
    QVERIFY2(masked, qPrintable(masked.reason()));
    QCOMPARE(masked->pixels.pixel(0, 0), qRgb(3, 252, 21));
    QCOMPARE(qAlpha(masked->pixels.pixel(1, 0)), 0);
    QCOMPARE(masked->pixels.pixel(2, 0), qRgb(1, 254, 7));

    const Result<Picture> colour =
        decodeIff(iffOf("ILBM", {iffHeader({3, 1}, 4, 0, 2, 2), iffColors(4), {"BODY", planarRows({values}, 4)}}));
    QVERIFY2(colour, qPrintable(colour.reason()));
    QCOMPARE(colour->pixels.format(), QImage::Format_Indexed8);
    QCOMPARE(qAlpha(colour->pixels.pixel(1, 0)), 0);
    QCOMPARE(colour->pixels.pixel(0, 0), qRgb(3, 252, 21));
}

void tst_Iff::heldAndModifiedColours_data()
{
    QTest::addColumn<int>("planes");
    QTest::addColumn<QByteArray>("values");
    QTest::addColumn<QList<QRgb>>("colours");
    // Begin with colour 0 (0, 255, 0), change blue, red and green, then take a colour of the map.
    QTest::newRow("5 planes") << 5 << QByteArray("\x1f\x02\x11")
                              << QList<QRgb>{qRgb(0, 255, 255), qRgb(2, 253, 14), qRgb(2, 253, 17)};
    QTest::newRow("6 planes") << 6 << QByteArray("\x1f\x21\x30\x02\x3a")
                              << QList<QRgb>{qRgb(0, 255, 255), qRgb(17, 255, 255), qRgb(17, 0, 255), qRgb(2, 253, 14),
                                     qRgb(2, 170, 14)};
    QTest::newRow("7 planes") << 7 << QByteArray("\x7f\x02\x60")
                              << QList<QRgb>{qRgb(0, 255, 255), qRgb(2, 253, 14), qRgb(2, 253, 130)};
    QTest::newRow("8 planes") << 8 << QByteArray("\x7f\x81\xc0\x02\xe0")
                              << QList<QRgb>{qRgb(0, 255, 255), qRgb(4, 255, 255), qRgb(4, 0, 255), qRgb(2, 253, 14),
                                     qRgb(2, 130, 14)};
}

void tst_Iff::heldAndModifiedColours()
{
    QFETCH(int, planes);
    QFETCH(QByteArray, values);
    QFETCH(QList<QRgb>, colours);
    // The second row is the first again: nothing is held over the end of a row.
    const QList<QByteArray> rows{values, values};
    const Result<Picture> picture = decodeIff(iffOf("ILBM",
        {iffHeader({int(values.size()), 2}, planes), {"CAMG", be32(0x800)}, iffColors(planes > 6 ? 6 : 4),
            {"BODY", planarRows(rows, planes)}}));
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.bitsPerPixel, planes);
    for (int i = 0; i < 2 * colours.size(); ++i) {
        const int x = int(i % colours.size());
        QCOMPARE(QColor(picture->pixels.pixel(x, int(i / colours.size()))).name(), QColor(colours[x]).name());
    }
}

void tst_Iff::halfBrightColoursAreKnownWithoutViewMode()
{
    const QList<QByteArray> rows{QByteArray("\x05\x25", 2)};
    for (const bool told : {false, true}) {
        QList<Chunk> chunks{iffHeader({2, 1}, 6), iffColors(told ? 6 : 5)};
        if (told)
            chunks.append({"CAMG", be32(0x80)});
        chunks.append({"BODY", planarRows(rows, 6)});
        const Result<Picture> picture = decodeIff(iffOf("ILBM", chunks));
        QVERIFY2(picture, qPrintable(picture.reason()));
        QCOMPARE(picture->pixels.pixel(0, 0), qRgb(5, 250, 35));
        QCOMPARE(picture->pixels.pixel(1, 0), qRgb(2, 125, 17));
    }
}

void tst_Iff::fourBitColourMapsAreStretched()
{
    const Chunk body{"BODY", planarRows({QByteArray("\x01\x00", 2)}, 1)};
    const auto first = [&](const QByteArray &map) {
        return decodeIff(iffOf("ILBM", {iffHeader({2, 1}, 1), {"CMAP", map}, body}))->pixels.pixel(0, 0);
    };
    QCOMPARE(first(QByteArray("\x00\x00\x00\xf0\x80\x10", 6)), qRgb(255, 0x88, 0x11));
    QCOMPARE(first(QByteArray("\x00\x00\x01\xf0\x80\x10", 6)), qRgb(0xf0, 0x80, 0x10));
}

void tst_Iff::palettesChangeDownTheRows_data()
{
    QTest::addColumn<int>("planes");
    QTest::addColumn<Chunk>("changes");
    QTest::addColumn<QList<QRgb>>("ones"); // colour 1 of each row
    const QRgb plain = qRgb(1, 254, 7);
    QByteArray palettes;
    for (const int word : {0x0123, 0x0fed}) {
        palettes += be16(0x0777) + be16(word) + be16(0).repeated(14);
    }
    const QList<QRgb> halves{twelveBits(0x123), twelveBits(0x123), twelveBits(0xfed), twelveBits(0xfed)};
    QTest::newRow("SHAM") << 4 << Chunk{"SHAM", be16(0) + palettes} << halves;
    QTest::newRow("CTBL") << 4 << Chunk{"CTBL", palettes} << halves;

    const auto header = [](int flags, int firstRow, int rows) {
        return be16(0) + be16(flags) + be16(firstRow) + be16(rows) + QByteArray(12, '\0');
    };
    // Rows 1 and 3: colour 1; in row 3 also 17, which the mark of the upper sixteen reaches.
    const QByteArray small =
        QByteArray("\x50\0\0\0", 4) + QByteArray("\x01\x00\x11\x23", 4) + QByteArray("\x01\x01\x1f\xed\x13\x33", 6);
    const QList<QRgb> smallOnes{plain, twelveBits(0x123), twelveBits(0x123), twelveBits(0xfed)};
    QTest::newRow("PCHG") << 5 << Chunk{"PCHG", header(1, 0, 4) + small} << smallOnes;
    QTest::newRow("PCHG packed") << 5 << Chunk{"PCHG", huffmanChanges(header(1, 0, 4), small)} << smallOnes;
    // Alpha, red, blue, green.
    const QByteArray big = QByteArray("\x40\0\0\0", 4) + be16(1) + be16(1) + QByteArray("\0\x10\x30\x20", 4);
    QTest::newRow("PCHG of 32 bits") << 5 << Chunk{"PCHG", header(2, 1, 3) + big}
                                     << QList<QRgb>{plain, plain, qRgb(0x10, 0x20, 0x30), qRgb(0x10, 0x20, 0x30)};
    QTest::newRow("PCHG that begins above the picture")
        << 5 << Chunk{"PCHG", header(2, -1, 4) + big} << QList<QRgb>(4, qRgb(0x10, 0x20, 0x30));
}

void tst_Iff::palettesChangeDownTheRows()
{
    QFETCH(int, planes);
    QFETCH(Chunk, changes);
    QFETCH(QList<QRgb>, ones);
    const Result<Picture> picture = fourRows(planes, changes);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    for (int y = 0; y < 4; ++y)
        QCOMPARE(QColor(picture->pixels.pixel(0, y)).name(), QColor(ones[y]).name());
    if (planes == 5 && qstrcmp(changes.first, "PCHG") == 0 && ones[3] == twelveBits(0xfed)) {
        QCOMPARE(picture->pixels.pixel(1, 2), qRgb(17, 238, 119));
        QCOMPARE(picture->pixels.pixel(1, 3), twelveBits(0x333));
    }
}

void tst_Iff::whatIsNoPictureIsRefusedWithAReason_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("reason");
    const Chunk body{"BODY", QByteArray(64, '\x55')};
    QTest::newRow("FOR4") << "FOR4" + be32(40) + "CIMG" + QByteArray(40, '\0') << QStringLiteral("FOR4");
    QTest::newRow("sound") << iffOf("8SVX", {{"VHDR", QByteArray(20, '\0')}, body}) << QStringLiteral("8SVX");
    QTest::newRow("no pixels") << iffOf("ILBM", {iffHeader({8, 8}, 1)}) << QStringLiteral("without a picture");
    QTest::newRow("no header") << iffOf("ILBM", {body}) << QStringLiteral("without a picture");
    QTest::newRow("9 planes") << iffOf("ILBM", {iffHeader({8, 8}, 9), body}) << QStringLiteral("9 planes");
    QTest::newRow("packing 7") << iffOf("ILBM", {iffHeader({8, 8}, 1, 7), body}) << QStringLiteral("unknown way");
    QTest::newRow("no size") << iffOf("ILBM", {iffHeader({0, 8}, 1), body}) << QStringLiteral("0 x 8");
    QTest::newRow("absurd") << iffOf("ILBM", {iffHeader({65535, 65535}, 24), body}) << QStringLiteral("65535");
    QTest::newRow("no rows") << iffOf("ILBM", {iffHeader({8, 8}, 1, 1), {"BODY", {}}}) << QStringLiteral("single row");
}

void tst_Iff::whatIsNoPictureIsRefusedWithAReason()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, reason);
    const Result<Picture> picture = decodeIff(file);
    QVERIFY(!picture);
    QVERIFY2(picture.reason().contains(reason), qPrintable(picture.reason()));
}

void tst_Iff::theFirstPictureOfAnAnimationIsShown()
{
    const auto frame = [](QSize size) {
        return iffOf("ILBM", {iffHeader(size, 1), iffColors(1), {"BODY", QByteArray(64, '\x55')}});
    };
    const QByteArray frames = frame({20, 3}) + frame({10, 2});
    const Result<Picture> picture = decodeIff("FORM" + be32(frames.size() + 4) + "ANIM" + frames);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.size, QSize(20, 3));
}

void tst_Iff::everyDepthIsWrittenAndReadBack_data()
{
    QTest::addColumn<Picture>("picture");
    QTest::addColumn<int>("bits");
    const QImage ramp = rampImage({53, 41});
    QTest::newRow("24") << Picture::fromImage(ramp) << 24;
    QTest::newRow("grey") << Picture::fromImage(ramp.convertToFormat(QImage::Format_Grayscale8)) << 8;
    QTest::newRow("mono") << Picture::fromImage(ramp.convertToFormat(QImage::Format_Mono)) << 1;
    for (const int bits : {1, 2, 3, 4, 5, 6, 7, 8}) {
        const QList<QByteArray> rows = valueRows(bits, {53, 41});
        QImage image(53, 41, QImage::Format_Indexed8);
        QList<QRgb> table;
        // Colours whose low half-bytes are empty, which no reader may take for the short colours of old files.
        for (int i = 0; i < 1 << bits; ++i)
            table.append(qRgb((i & 15) << 4, (i >> 4) << 4, 0x80));
        image.setColorTable(table);
        for (int y = 0; y < image.height(); ++y)
            std::copy(rows[y].begin(), rows[y].end(), image.scanLine(y));
        Picture picture = Picture::fromImage(image);
        picture.info.bitsPerPixel = bits;
        QTest::addRow("palette of %d", bits) << picture << bits;
    }
}

void tst_Iff::everyDepthIsWrittenAndReadBack()
{
    QFETCH(Picture, picture);
    QFETCH(int, bits);
    const Result<QByteArray> file = encode(picture, TypeCode::Iff);
    QVERIFY2(file, qPrintable(file.reason()));
    const Result<Picture> back = decodeIff(*file);
    QVERIFY2(back, qPrintable(back.reason()));
    QVERIFY(!back->partial);
    QCOMPARE(back->info.bitsPerPixel, bits);
    const QImage expected = picture.pixels.convertToFormat(QImage::Format_RGB32);
    QCOMPARE(back->pixels.convertToFormat(QImage::Format_RGB32), expected);

    // Another program's eyes, where it is installed.
    const QString other = QStandardPaths::findExecutable(QStringLiteral("ilbmtoppm"));
    if (other.isEmpty())
        return;
    QProcess process;
    process.start(other, {});
    process.write(*file);
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    const QImage seen = QImage::fromData(process.readAllStandardOutput());
    QVERIFY2(!seen.isNull(), process.readAllStandardError().constData());
    QCOMPARE(seen.convertToFormat(QImage::Format_RGB32), expected);
}

void tst_Iff::metadataGoesAlong()
{
    Picture picture = Picture::fromImage(rampImage({20, 10}, QImage::Format_ARGB32));
    picture.pixels.setDotsPerMeterX(11811);
    picture.pixels.setDotsPerMeterY(5906);
    const QByteArray packet =
        "<?xpacket begin=\"\" id=\"W5M0MpCehiHzreSzNTczkc9d\"?><x:xmpmeta xmlns:x=\"adobe:ns:meta/\">"
        "<rdf:RDF xmlns:rdf=\"http://www.w3.org/1999/02/22-rdf-syntax-ns#\"><rdf:Description "
        "xmlns:xmp=\"http://ns.adobe.com/xap/1.0/\" xmp:Label=\"a label\"/></rdf:RDF></x:xmpmeta>"
        "<?xpacket end=\"w\"?>";
    const QByteArray date = "2020:07:15 08:35:14";
    const QByteArray exif = QByteArray("MM\0*\0\0\0\x08\0\1\x01\x32\0\2\0\0\0\x14\0\0\0\x1a\0\0\0\0", 26) + date + '\0';
    picture.metadata = {exif, QByteArray("\x1c\2\x78\0\7caption", 12), packet, "a comment"};
    picture.iccProfile = QColorSpace(QColorSpace::SRgb).iccProfile();
    const Result<Picture> back = decodeIff(*encode(picture, TypeCode::Iff));
    QVERIFY2(back, qPrintable(back.reason()));
    QCOMPARE(back->pixels.dotsPerMeterX(), 11811);
    QCOMPARE(back->pixels.dotsPerMeterY(), 5906);
    QVERIFY(back->metadata.exif.startsWith("MM") && back->metadata.exif.contains(date));
    QVERIFY(back->metadata.iptc.contains("caption") && back->metadata.iptc.startsWith('\x1c'));
    QVERIFY(back->metadata.xmp.startsWith("<?xpacket") && back->metadata.xmp.contains("a label"));
    QCOMPARE(back->metadata.comment, picture.metadata.comment);
    QCOMPARE(back->iccProfile, picture.iccProfile);

    const Result<Picture> texts = decodeIff(iffOf("ILBM",
        {iffHeader({8, 1}, 1), {"NAME", "a name"}, {"AUTH", QByteArray("somebody\0", 9)}, {"BODY", "\x55\x55"},
            {"ANNO", "a note"}}));
    QCOMPARE(texts->metadata.comment, QByteArray("a name\nsomebody\na note"));
}

QTEST_GUILESS_MAIN(tst_Iff)
#include "tst_iff.moc"
