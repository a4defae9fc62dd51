#include "engine/codecs/bytes.h"
#include "engine/damage.h"
#include "engine/decodehere.h"
#include "engine/enginefiles.h"
#include "support/support.h"

#include <QTest>

#include <functional>
#include <memory>

#undef signals
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-memory.h>

namespace {

constexpr int tileSide = 64;

struct Tile
{
    enum Compression { Raw = 0, OneColor = 1, Jpeg = 2, Missing = 3 };
    int compression = Raw;
    QByteArray bytes;
    quint32 subtype = 0;
};

struct Resolution
{
    int number = 0;
    QSize size;
    int channels = 3;
    QList<Tile> tiles;
};

/// Property sets: numbers, texts and blobs by their ids.
struct Property
{
    quint32 id;
    int type; ///< 4 real, 19 number, 30 bytes, 31 UTF-16, 64 time, 65 blob
    QByteArray value;
};

QByteArray le32(quint32 value)
{
    ByteWriter writer;
    writer.u32le(value);
    return writer.bytes;
}

QByteArray propertySet(const QList<Property> &properties)
{
    ByteWriter set;
    set.u16le(0xfffe), set.fill(22), set.u32le(1), set.fill(16), set.u32le(48);
    QByteArray values;
    ByteWriter section;
    const quint32 first = 8 + 8 * quint32(properties.size());
    for (const Property &property : properties) {
        section.u32le(property.id), section.u32le(first + quint32(values.size()));
        values += le32(quint32(property.type)) + property.value;
        values.append(-values.size() & 3, '\0');
    }
    return set.bytes + le32(first + quint32(values.size())) + le32(quint32(properties.size())) + section.bytes + values;
}

QByteArray counted(const QByteArray &bytes, int unit = 1)
{
    return le32(quint32(bytes.size() / unit)) + bytes;
}

QByteArray wide(const QString &text)
{
    return QByteArray(reinterpret_cast<const char *>(text.utf16()), (text.size() + 1) * 2);
}

/// The channels' meaning: one number for each.
Property colorProperty(int resolution, const QList<quint32> &channels)
{
    QByteArray blob = le32(1) + le32(quint32(channels.size()));
    for (const quint32 channel : channels)
        blob += le32(channel);
    return {0x02000002U | quint32(resolution) << 16, 65, counted(blob)};
}

void addStream(GsfOutfile *folder, const char *name, const QByteArray &bytes)
{
    GsfOutput *const stream = gsf_outfile_new_child(folder, name, FALSE);
    gsf_output_write(stream, size_t(bytes.size()), reinterpret_cast<const guint8 *>(bytes.constData()));
    gsf_output_close(stream);
    g_object_unref(stream);
}

template <class Fill> void addFolder(GsfOutfile *parent, const char *name, Fill fill)
{
    GsfOutput *const folder = gsf_outfile_new_child(parent, name, TRUE);
    fill(GSF_OUTFILE(folder));
    gsf_output_close(folder);
    g_object_unref(folder);
}

void addResolution(GsfOutfile *store, const Resolution &resolution)
{
    QByteArray table, data(28, '\0');
    for (const Tile &tile : resolution.tiles) {
        const bool isMissing = tile.compression == Tile::Missing;
        table += le32(isMissing ? 0xffffffff : quint32(data.size() - 28)) + le32(quint32(tile.bytes.size()))
            + le32(quint32(tile.compression)) + le32(tile.subtype);
        data += tile.bytes;
    }
    QByteArray header(28, '\0');
    for (const int field : {36, resolution.size.width(), resolution.size.height(), int(resolution.tiles.size()),
             tileSide, tileSide, resolution.channels, 36, 16})
        header += le32(quint32(field));
    const QByteArray name = QByteArray("Resolution ") + QByteArray::number(resolution.number).rightJustified(4, '0');
    addFolder(store, name.constData(), [&](GsfOutfile *folder) {
        addStream(folder, "Subimage 0000 Header", header + table);
        addStream(folder, "Subimage 0000 Data", data);
    });
}

EncodedFile fpxOf(const QList<Resolution> &resolutions, const QList<Property> &contents,
    const std::function<void(GsfOutfile *)> &more = {})
{
    GsfOutput *const memory = gsf_output_memory_new();
    GsfOutfile *const root = gsf_outfile_msole_new(memory);
    if (more)
        more(root);
    addFolder(root, "Data Object Store 000001", [&](GsfOutfile *store) {
        if (more)
            addStream(store, "\005Image Info",
                propertySet({{0x24000000, 31, counted(wide(QStringLiteral("Maker")), 2)},
                    {0x24000001, 31, counted(wide(QStringLiteral("Model 2")), 2)}, {0x25000001, 4, le32(0x3c23d70a)},
                    {0x25000000, 64, QByteArray::fromHex("00803e d5deb19d01")}}));
        addStream(store, "\005Image Contents", propertySet(contents));
        for (const Resolution &resolution : resolutions)
            addResolution(store, resolution);
    });
    gsf_output_close(GSF_OUTPUT(root));
    const QByteArray bytes(reinterpret_cast<const char *>(gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory))),
        qsizetype(gsf_output_size(memory)));
    g_object_unref(root);
    g_object_unref(memory);
    return {bytes, QStringLiteral("fpx")};
}

QByteArray repeated(const QByteArray &pixel)
{
    return pixel.repeated(tileSide * tileSide);
}

/// A JPEG parted as the format holds it: the tables on their own, and a stream without them.
struct PartedJpeg
{
    QByteArray tables = QByteArray("\xff\xd8");
    QByteArray stream = QByteArray("\xff\xd8");
};

PartedJpeg parted(const QByteArray &jpeg)
{
    PartedJpeg parts;
    qsizetype at = 2;
    while (uchar(jpeg[at + 1]) != 0xda) {
        const int marker = uchar(jpeg[at + 1]);
        const QByteArray segment = jpeg.mid(at, 2 + ByteReader(jpeg).u16be(size_t(at) + 2));
        at += segment.size();
        if (marker == 0xdb || marker == 0xc4)
            parts.tables += segment;
        else if (marker != 0xe0)
            parts.stream += segment;
    }
    parts.tables += "\xff\xd9";
    parts.stream += jpeg.mid(at);
    return parts;
}

EncodedFile opacityFile()
{
    const QByteArray pixel = QByteArray::fromHex("40201080");
    return fpxOf({{0, {5, 4}, 4, {{Tile::Raw, repeated(pixel)}}}},
        {colorProperty(0, {0x00038000, 0x00038001, 0x00038002, 0x00037ffe})});
}

}

/// FlashPix files made stream by stream.
class tst_Fpx : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void tilesOfEveryKindMeetAtTheirEdges();
    void sharedTablesServeEveryTile();
    void channelsMeanWhatTheFileSays_data();
    void channelsMeanWhatTheFileSays();
    void aSmallWishGetsASmallResolution();
    void textsOfTheCameraAreFound();
    void damageIsAnswered();
    void absurdClaimsAreRefused();
};

void tst_Fpx::tilesOfEveryKindMeetAtTheirEdges()
{
    const QList<Tile> tiles{{Tile::Raw, repeated("\x10\x20\x30")}, {Tile::OneColor, {}, 0x00605040},
        {Tile::Missing, {}}, {Tile::Raw, repeated("\x70\x80\x90").left(64 * 10 * 3)}};
    const EncodedFile file = fpxOf({{5, {70, 100}, 3, tiles}}, {});
    const Result<Picture> picture = decodeHere(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.size, QSize(70, 100));
    QCOMPARE(picture->info.bitsPerPixel, 24);
    QCOMPARE(picture->info.codec, QByteArray("FlashPix"));
    QCOMPARE(picture->pixels.pixel(63, 63), qRgb(0x10, 0x20, 0x30));
    QCOMPARE(picture->pixels.pixel(64, 63), qRgb(0x40, 0x50, 0x60));
    QCOMPARE(picture->pixels.pixel(63, 64), qRgb(255, 255, 255));
    QCOMPARE(picture->pixels.pixel(69, 73), qRgb(0x70, 0x80, 0x90));
    QVERIFY2(picture->partial, "the last tile ends after ten rows");
}

void tst_Fpx::sharedTablesServeEveryTile()
{
    QImage image = rampImage({tileSide, tileSide});
    const QByteArray jpeg = written(image, "jpg", 95);
    const PartedJpeg parts = parted(jpeg);
    const quint32 group = 0xb6;
    const EncodedFile file = fpxOf(
        {{1, {128, 64}, 3, {{Tile::Jpeg, parts.stream, group << 24 | 0x00012200}, {Tile::Jpeg, jpeg, 0x00012200}}}},
        {{0x03000001 | group << 16, 65, counted(parts.tables)}});
    const Result<Picture> picture = decodeHere(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    const QImage expected = decodeHere({jpeg, QStringLiteral("jpg")})->pixels;
    QCOMPARE(picture->pixels.copy(0, 0, 64, 64), expected);
    QCOMPARE(picture->pixels.copy(64, 0, 64, 64), expected);
    // Left as they are, the same samples are the light and its two differences.
    const EncodedFile bare = fpxOf({{0, {8, 8}, 3, {{Tile::Jpeg, jpeg, 0}}}}, {});
    const QRgb sample = decodeHere(bare)->pixels.pixel(3, 3);
    const QRgb color = expected.pixel(3, 3);
    QVERIFY(std::abs(qRed(sample) - (299 * qRed(color) + 587 * qGreen(color) + 114 * qBlue(color)) / 1000) <= 2);
}

void tst_Fpx::channelsMeanWhatTheFileSays_data()
{
    QTest::addColumn<QList<quint32>>("channels");
    QTest::addColumn<QByteArray>("pixel");
    QTest::addColumn<QColor>("color");
    const auto row = [](const char *name, const QList<quint32> &channels, const char *pixel, QColor color) {
        QTest::newRow(name) << channels << QByteArray::fromHex(pixel) << color;
    };
    row("mono", {0x00010000}, "77", QColor(0x77, 0x77, 0x77));
    row("mono and opacity", {0x00010000, 0x00017ffe}, "7740", QColor(0x77, 0x77, 0x77, 0x40));
    row("colours without a calibration", {0x80030000, 0x80030001, 0x80030002}, "102030", QColor(0x10, 0x20, 0x30));
    row("opacity beside the colours", {0x00030000, 0x00030001, 0x00030002, 0x00037ffe}, "10203080",
        QColor(0x10, 0x20, 0x30, 0x80));
    row("opacity within the colours", {0x00038000, 0x00038001, 0x00038002, 0x00037ffe}, "40201080",
        QColor(0x80, 0x40, 0x20, 0x80));
    row("PhotoYCC grey", {0x00020000, 0x00020001, 0x00020002}, "649c89", QColor(136, 136, 136));
    row("PhotoYCC brighter than white", {0x00020000, 0x00020001, 0x00020002}, "ff9c89", QColor(255, 255, 255));
    row("PhotoYCC red", {0x00020000, 0x00020001, 0x00020002}, "3c81c8", QColor(196, 35, 22));
}

void tst_Fpx::channelsMeanWhatTheFileSays()
{
    QFETCH(QList<quint32>, channels);
    QFETCH(QByteArray, pixel);
    QFETCH(QColor, color);
    const EncodedFile file =
        fpxOf({{0, {5, 4}, int(channels.size()), {{Tile::Raw, repeated(pixel)}}}}, {colorProperty(0, channels)});
    const Result<Picture> picture = decodeHere(file);
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->info.bitsPerPixel, std::max(3, int(channels.size())) * 8);
    QCOMPARE(picture->pixels.pixelColor(4, 3), color);
}

void tst_Fpx::aSmallWishGetsASmallResolution()
{
    const auto even = [](int number, QSize size, quint32 color) {
        const int tiles = (size.width() + 63) / 64 * ((size.height() + 63) / 64);
        return Resolution{number, size, 3, QList<Tile>(tiles, {Tile::OneColor, {}, color})};
    };
    const EncodedFile file = fpxOf(
        {even(0, {50, 38}, 0x010101), even(1, {100, 75}, 0x020202), even(2, {200, 150}, 0x030303), even(9, {0, 0}, 0)},
        {});
    const auto shade = [&](QSize target) { return qRed(decodeHere(file, {target, -1, 0})->pixels.pixel(0, 0)); };
    QCOMPARE(shade({}), 3);
    QVERIFY2(decodeHere(file)->partial, "the highest one cannot be read");
    QCOMPARE(shade({50, 50}), 1);
    QCOMPARE(shade({51, 51}), 2);
    QCOMPARE(shade({101, 80}), 3);
    QCOMPARE(shade({1000, 1000}), 3);
    QCOMPARE(decodeHere(file, {{20, 20}, -1, 0})->info.size, QSize(200, 150));
    QCOMPARE(probeHere(file)->size, QSize(200, 150));
}

void tst_Fpx::textsOfTheCameraAreFound()
{
    const EncodedFile file = fpxOf({{0, {5, 4}, 3, {{Tile::OneColor, {}, 0}}}}, {}, [](GsfOutfile *root) {
        addStream(root, "\005SummaryInformation",
            propertySet({{3, 30, counted(QByteArray("Subject\0", 8))}, {6, 30, counted("A comm\xe9nt")}}));
    });
    const Result<PictureTexts> texts = readTextsHere(file);
    QVERIFY(texts);
    QCOMPARE(texts->description, QStringLiteral("Subject"));
    QCOMPARE(texts->comment, QStringLiteral("A commént"));
    QCOMPARE(texts->cameraInfo, QStringLiteral("Maker\nModel 2\n1/100 s"));
    QCOMPARE(texts->cameraDate, QStringLiteral("1970:01:01 00:00:00"));
}

void tst_Fpx::damageIsAnswered()
{
    // Every fifth byte: most of the file is the container's padding.
    const EncodedFile file = opacityFile();
    for (qsizetype at = 0; at < file.bytes.size(); at += 5) {
        EncodedFile changed = file;
        changed.bytes[at] = char(~changed.bytes.at(at));
        QVERIFY2(damage::isAnswered(changed), qPrintable(QStringLiteral("byte %1").arg(at)));
        QVERIFY2(
            damage::isAnswered({file.bytes.left(at), file.extension}), qPrintable(QStringLiteral("cut %1").arg(at)));
        ignore(readTextsHere(changed));
    }
}

void tst_Fpx::absurdClaimsAreRefused()
{
    QVERIFY(!decodeHere(fpxOf({{0, {65535, 65535}, 3, {}}}, {})));
    QVERIFY(!decodeHere(fpxOf({{0, {-1, 5}, 3, {}}}, {})));
    QVERIFY(!decodeHere(fpxOf({{0, {5, 5}, 7, {{Tile::OneColor, {}, 0}}}}, {})));
    QVERIFY2(!decodeHere(fpxOf({{0, {5, 5}, 3, {}}}, {})), "no tile at all");
    const QByteArray jpeg = written(rampImage({65, 64}), "jpg");
    QVERIFY2(!decodeHere(fpxOf({{0, {5, 5}, 3, {{Tile::Jpeg, jpeg, 0}}}}, {})), "a tile larger than a tile");
    QVERIFY(!decodeHere(fpxOf({}, {})));
}

QTEST_GUILESS_MAIN(tst_Fpx)
#include "tst_fpx.moc"
