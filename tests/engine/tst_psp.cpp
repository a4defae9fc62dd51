#include "engine/codecs/bytes.h"
#include "engine/damage.h"
#include "engine/decodehere.h"
#include "engine/enginefiles.h"
#include "support/support.h"

#include <QTest>

#include <cstring>

namespace {

enum Compression { Raw = 0, Runs = 1, Lz77 = 2 };

struct Channel
{
    int kind = 0; ///< 0 colour, 1 transparency, 2 user mask; 8 and 9 of composites
    int number = 0;
    QByteArray bytes;
};

struct Layer
{
    QRect place;
    QList<Channel> channels;
    int opacity = 255;
    int blendMode = 0;
    bool isVisible = true;
    int type = 1;
    QRect maskPlace = {};
};

struct Format
{
    int version = 5;
    int depth = 24;
    int compression = Raw;
};

QByteArray runs(const QByteArray &bytes)
{
    QByteArray packed;
    for (qsizetype at = 0; at < bytes.size();) {
        qsizetype count = 1;
        while (at + count < bytes.size() && count < 127 && bytes[at + count] == bytes[at])
            ++count;
        packed += count > 1 ? QByteArray(1, char(128 + count)) + bytes[at] : QByteArray("\1") + bytes[at];
        at += count;
    }
    return packed;
}

QByteArray packed(const QByteArray &bytes, int compression)
{
    return compression == Runs ? runs(bytes) : compression == Lz77 ? qCompress(bytes).mid(4) : bytes;
}

/// The whole file: blocks with the shapes that versions before and from 4 on give them.
class Psp
{
public:
    Psp(Format format, QSize size)
        : m_format(format)
    {
        m_file.text("Paint Shop Pro Image File\n\x1a");
        m_file.fill(5);
        m_file.u16le(quint32(format.version)), m_file.u16le(0);
        ByteWriter image;
        image.u32le(quint32(size.width())), image.u32le(quint32(size.height()));
        const double resolution = 72;
        image.bytes.append(reinterpret_cast<const char *>(&resolution), sizeof resolution);
        image.u8(1), image.u16le(quint32(format.compression)), image.u16le(quint32(format.depth)), image.u16le(1);
        image.u32le(1U << qMin(format.depth, 24)), image.u8(0), image.u32le(0), image.u32le(0), image.u16le(1);
        add(block(0, chunk(image.bytes)));
    }
    void add(const QByteArray &bytes) { m_file.bytes += bytes; }
    void addLayers(const QList<Layer> &layers)
    {
        QByteArray all;
        for (const Layer &layer : layers)
            all += layerBlock(layer);
        add(block(3, all));
    }
    EncodedFile file() const { return {m_file.bytes, QStringLiteral("psp")}; }

    /// From version 4 on blocks tell the length of what stands in front, before that their header does.
    QByteArray chunk(const QByteArray &fields) const
    {
        if (m_format.version < 4)
            return fields;
        ByteWriter writer;
        writer.u32le(quint32(fields.size()) + 4);
        return writer.bytes + fields;
    }
    QByteArray block(int id, const QByteArray &data, qsizetype front = 0) const
    {
        ByteWriter writer;
        writer.text("~BK\0"), writer.u16le(quint32(id));
        if (m_format.version < 4)
            writer.u32le(quint32(front));
        writer.u32le(quint32(data.size()));
        return writer.bytes + data;
    }
    QByteArray channelBlock(const Channel &channel, int compression) const
    {
        const QByteArray bytes = packed(channel.bytes, compression);
        ByteWriter fields;
        fields.u32le(quint32(bytes.size())), fields.u32le(quint32(channel.bytes.size()));
        fields.u16le(quint32(channel.kind)), fields.u16le(quint32(channel.number));
        return block(5, chunk(fields.bytes) + bytes, fields.bytes.size());
    }
    QByteArray paletteBlock(const QList<QRgb> &colors) const
    {
        ByteWriter fields, entries;
        fields.u32le(quint32(colors.size()));
        for (const QRgb color : colors)
            entries.u32le(color & RGB_MASK);
        return block(2, chunk(fields.bytes) + entries.bytes, 4);
    }

private:
    static void rectangle(ByteWriter &writer, QRect rect)
    {
        for (const int side : {rect.left(), rect.top(), rect.left() + rect.width(), rect.top() + rect.height()})
            writer.u32le(quint32(side));
    }
    QByteArray layerBlock(const Layer &layer) const
    {
        ByteWriter fields;
        if (m_format.version < 4)
            fields.fill(256);
        else
            fields.u16le(3), fields.text("abc");
        fields.u8(quint32(layer.type - (m_format.version < 4 ? 1 : 0)));
        // The saved part stands inside the layer's own rectangle.
        rectangle(fields, QRect(layer.place.topLeft() - QPoint(1, 2), layer.place.size()));
        rectangle(fields, QRect(QPoint(1, 2), layer.place.size()));
        fields.u8(quint32(layer.opacity)), fields.u8(quint32(layer.blendMode)), fields.u8(layer.isVisible),
            fields.u16le(0);
        rectangle(fields, layer.maskPlace);
        rectangle(fields, QRect(QPoint(), layer.maskPlace.size()));
        fields.fill(5);
        for (int i = 0; i < 10; ++i)
            fields.u32le(0xffff0000);
        ByteWriter counts;
        counts.u16le(1), counts.u16le(quint32(layer.channels.size()));
        QByteArray data = chunk(fields.bytes);
        if (m_format.version >= 10)
            data += block(33, QByteArray(20, '\0'));
        data += m_format.version < 4 ? counts.bytes : chunk(counts.bytes);
        const qsizetype front = data.size();
        for (const Channel &channel : layer.channels)
            data += channelBlock(channel, m_format.compression);
        return block(4, data, front);
    }

    Format m_format;
    ByteWriter m_file;
};

QByteArray plane(QSize size, int value)
{
    return QByteArray(size.width() * size.height(), char(value));
}

/// A layer of one colour.
Layer evenLayer(QRect place, QColor color)
{
    return {place,
        {{0, 1, plane(place.size(), color.red())}, {0, 2, plane(place.size(), color.green())},
            {0, 3, plane(place.size(), color.blue())}}};
}

QByteArray layerInfoWithPixelBlocks(const Psp &psp, QSize size, int color, int compression)
{
    QByteArray channels;
    for (int number = 1; number <= 3; ++number)
        channels += psp.channelBlock({8, number, plane(size, color)}, compression);
    return channels;
}

/// The bank of stored pictures of the whole: a thumbnail first, then the full one.
QByteArray compositeBank(const Psp &psp, QSize full, bool asJpeg)
{
    const auto attributes = [&](QSize size, int compression, int type) {
        ByteWriter fields;
        fields.u32le(quint32(size.width())), fields.u32le(quint32(size.height())), fields.u16le(24);
        fields.u16le(quint32(compression)), fields.u16le(1), fields.u32le(1U << 24), fields.u16le(quint32(type));
        return psp.block(17, psp.chunk(fields.bytes));
    };
    ByteWriter count, bitmaps;
    count.u32le(2);
    bitmaps.u16le(1), bitmaps.u16le(3);
    const auto pixels = [&](QSize size, int color) {
        return psp.block(9, psp.chunk(bitmaps.bytes) + layerInfoWithPixelBlocks(psp, size, color, Lz77));
    };
    const QSize thumbnail(2, 2);
    QByteArray bank = psp.chunk(count.bytes) + attributes(thumbnail, Lz77, 1) + attributes(full, asJpeg ? 3 : 2, 0)
        + pixels(thumbnail, 10);
    if (asJpeg) {
        QImage image(full, QImage::Format_RGB32);
        image.fill(qRgb(200, 200, 200));
        const QByteArray jpeg = written(image, "jpg", 95);
        ByteWriter fields;
        fields.u32le(quint32(jpeg.size())), fields.u32le(0), fields.u16le(8);
        bank += psp.block(18, psp.chunk(fields.bytes) + jpeg);
    } else {
        bank += pixels(full, 200);
    }
    return psp.block(16, bank);
}

QByteArray field(int keyword, const QByteArray &text)
{
    ByteWriter writer;
    writer.text("~FL\0"), writer.u16le(quint32(keyword)), writer.u32le(quint32(text.size()));
    return writer.bytes + text;
}

EncodedFile layeredFile()
{
    Psp psp({7, 24, Lz77}, {8, 6});
    Layer upper = evenLayer({2, 1, 5, 4}, Qt::green);
    upper.channels += {Channel{1, 0, plane({5, 4}, 128)}, Channel{2, 0, plane({3, 3}, 200)}};
    upper.maskPlace = {2, 1, 3, 3};
    psp.addLayers({evenLayer({0, 0, 8, 6}, Qt::red), upper});
    return psp.file();
}

}

/// Paint Shop Pro files made block by block.
class tst_Psp : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void everyDepthIsReadFromEveryPacking_data();
    void everyDepthIsReadFromEveryPacking();
    void layersLieUponEachOtherWithTheirMasks();
    void blendModesMixAsTheyAreNamed_data();
    void blendModesMixAsTheyAreNamed();
    void theStoredPictureStandsForWhatCannotBeDrawn();
    void textsOfTheCreatorAreFound();
    void damageIsAnswered();
    void absurdClaimsTakeNoMemory();
};

void tst_Psp::everyDepthIsReadFromEveryPacking_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("compression");
    for (const int depth : {1, 4, 8, 16, 24, 48}) {
        for (const int compression : {Raw, Runs, Lz77}) {
            const int version = depth > 8 && depth != 24 ? 13 : compression == Runs ? 3 : 6;
            QTest::addRow("%d bits packed %d in version %d", depth, compression, version)
                << version << depth << compression;
        }
    }
}

void tst_Psp::everyDepthIsReadFromEveryPacking()
{
    QFETCH(int, version);
    QFETCH(int, depth);
    QFETCH(int, compression);
    // Two rows of nine pixels with values of their own; the odd width shows the padding of the small depths.
    const QSize size(9, 2);
    const int bits = depth % 3 == 0 ? depth / 3 : depth;
    const auto value = [&](int x, int y, int channel) {
        return (x * 37 + y * 11 + channel * 90 + 1) % (1 << qMin(bits, 8));
    };
    QList<Channel> channels;
    for (int number = 0; number < (depth % 3 == 0 ? 3 : 1); ++number) {
        QByteArray bytes(bits < 8 ? 2 * ((9 * bits + 31) / 32 * 4) : 0, '\0');
        for (int i = 0; i < 18; ++i) {
            const int x = i % 9, y = i / 9;
            if (bits >= 8) // of two bytes the upper one counts on the screen
                bytes += QByteArray(bits / 8 - 1, '\x80') + char(value(x, y, number));
            else
                bytes[y * bytes.size() / 2 + x * bits / 8] |= char(value(x, y, number) << (8 - bits - x * bits % 8));
        }
        channels += Channel{0, depth % 3 == 0 ? number + 1 : 0, bytes};
    }
    Psp psp({version, depth, compression}, size);
    QList<QRgb> palette;
    for (int i = 0; i < 1 << qMin(depth, 8); ++i)
        palette += qRgb(i, 255 - i, 7 * i % 256);
    if (depth <= 8)
        psp.add(psp.paletteBlock(palette));
    psp.addLayers({{QRect(QPoint(), size), channels}});

    const Result<Picture> picture = decodeHere(psp.file());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(!picture->partial);
    QCOMPARE(picture->info.bitsPerPixel, depth);
    QCOMPARE(probeHere(psp.file())->bitsPerPixel, depth);
    QCOMPARE(picture->pixels.dotsPerMeterX(), 2835);
    for (int i = 0; i < 18; ++i) {
        const int x = i % 9, y = i / 9;
        const QColor color = picture->pixels.pixelColor(x, y);
        const QRgb expected = depth <= 8 ? palette[value(x, y, 0)]
            : depth == 16                ? qRgb(value(x, y, 0), value(x, y, 0), value(x, y, 0))
                                         : qRgb(value(x, y, 0), value(x, y, 1), value(x, y, 2));
        QCOMPARE(color.rgb(), expected);
    }
}

void tst_Psp::layersLieUponEachOtherWithTheirMasks()
{
    const Picture picture = *decodeHere(layeredFile());
    QCOMPARE(picture.pixels.format(), QImage::Format_RGB32);
    QCOMPARE(picture.pixels.pixel(1, 1), qRgb(255, 0, 0));
    // 128 / 255 of the transparency and 200 / 255 of the mask leave 100 / 255.
    QCOMPARE(picture.pixels.pixel(2, 1), qRgb(155, 100, 0));
    QCOMPARE(picture.pixels.pixel(4, 3), qRgb(155, 100, 0));
    QCOMPARE(picture.pixels.pixel(5, 3), qRgb(255, 0, 0)); // outside the mask

    // Over the edge, upon nothing, under a hidden one.
    Psp psp({9, 24, Raw}, {4, 4});
    Layer half = evenLayer({-2, 2, 4, 10}, Qt::blue);
    half.opacity = 102;
    Layer hidden = evenLayer({0, 0, 4, 4}, Qt::white);
    hidden.isVisible = false;
    psp.addLayers({half, hidden});
    const Picture clear = *decodeHere(psp.file());
    QCOMPARE(clear.pixels.format(), QImage::Format_ARGB32);
    QCOMPARE(clear.pixels.pixel(0, 1), 0U);
    QCOMPARE(clear.pixels.pixel(1, 3), qRgba(0, 0, 255, 102));
    QCOMPARE(clear.pixels.pixel(2, 3), 0U);
}

void tst_Psp::blendModesMixAsTheyAreNamed_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QColor>("mixed");
    // Upon (51, 102, 204) lies (204, 102, 51).
    const auto row = [](const char *name, int mode, int red, int green, int blue) {
        QTest::newRow(name) << mode << QColor(red, green, blue);
    };
    row("normal", 0, 204, 102, 51);
    row("darken", 1, 51, 102, 51);
    row("lighten", 2, 204, 102, 204);
    row("multiply", 7, 41, 41, 41);
    row("screen", 8, 214, 163, 214);
    row("dissolve", 9, 204, 102, 51);
    row("overlay", 10, 82, 82, 173);
    row("hard light", 11, 173, 82, 82);
    row("difference", 13, 153, 0, 153);
    row("dodge", 14, 255, 170, 255);
    row("burn", 15, 0, 0, 0);
    row("exclusion", 16, 173, 122, 173);
    row("unknown", 99, 204, 102, 51);
    // The bright part of the colour is 98 below and 127 above, the span of the channels 153 in both.
    row("luminosity", 6, 80, 131, 233);
    row("colour", 5, 175, 73, 22);
    row("hue", 17, 175, 73, 22);
    row("saturation", 18, 51, 102, 204);
}

void tst_Psp::blendModesMixAsTheyAreNamed()
{
    QFETCH(int, mode);
    QFETCH(QColor, mixed);
    for (const int version : {6, 13}) {
        const int depth = version == 13 ? 48 : 24;
        Psp psp({version, depth, Raw}, {2, 1});
        const auto layer = [&](QColor color) {
            Layer result = evenLayer({0, 0, 2, 1}, color);
            for (Channel &channel : result.channels) // twice the same byte makes the same part of the whole
                channel.bytes = depth == 48 ? channel.bytes + channel.bytes : channel.bytes;
            return result;
        };
        Layer upper = layer(QColor(204, 102, 51));
        upper.blendMode = mode;
        psp.addLayers({layer(QColor(51, 102, 204)), upper});
        const QColor color = decodeHere(psp.file())->pixels.pixelColor(1, 0);
        const int error = qMax(std::abs(color.red() - mixed.red()),
            qMax(std::abs(color.green() - mixed.green()), std::abs(color.blue() - mixed.blue())));
        QVERIFY2(error <= 1, qPrintable(color.name()));
    }
}

void tst_Psp::theStoredPictureStandsForWhatCannotBeDrawn()
{
    for (const bool asJpeg : {false, true}) {
        Psp psp({7, 24, Lz77}, {40, 30});
        Layer vector;
        vector.type = 3;
        psp.add(compositeBank(psp, {40, 30}, asJpeg));
        Psp plain = psp;
        psp.addLayers({evenLayer({0, 0, 40, 30}, Qt::red), vector});
        QCOMPARE(decodeHere(psp.file())->pixels.pixel(5, 5), qRgb(200, 200, 200));
        // Layers that can be drawn are preferred, and so they are when they came through whole.
        plain.addLayers({evenLayer({0, 0, 40, 30}, Qt::red)});
        QCOMPARE(decodeHere(plain.file())->pixels.pixel(5, 5), qRgb(255, 0, 0));
        EncodedFile cut = plain.file();
        cut.bytes.chop(10);
        const Picture rest = *decodeHere(cut);
        QVERIFY(rest.partial);
        QCOMPARE(rest.pixels.pixel(5, 29), qRgb(200, 200, 200));
    }
    // Without one the rest is shown.
    Psp psp({4, 24, Lz77}, {4, 3});
    Layer vector;
    vector.type = 3;
    psp.addLayers({evenLayer({0, 0, 4, 3}, Qt::red), vector});
    QCOMPARE(decodeHere(psp.file())->pixels.pixel(3, 2), qRgb(255, 0, 0));
}

void tst_Psp::textsOfTheCreatorAreFound()
{
    Psp psp({5, 24, Raw}, {1, 1});
    Psp titled = psp;
    psp.add(psp.block(1,
        field(0, "A title") + field(2, QByteArray(4, '\1')) + field(3, "M\xfcller") + field(4, "M\xc3\xbcller 1999")
            + field(5, QByteArray("Words\0\0", 7))));
    const Result<PictureTexts> texts = readTextsHere(psp.file());
    QVERIFY(texts);
    QCOMPARE(texts->description, QStringLiteral("Words"));
    QCOMPARE(texts->comment, QStringLiteral("Title: A title\nArtist: Müller\nCopyright: Müller 1999"));
    titled.add(psp.block(1, field(0, "A title") + field(3, {})));
    QCOMPARE(readTextsHere(titled.file())->description, QStringLiteral("A title"));
    QVERIFY(readTextsHere(titled.file())->comment.isEmpty());
}

void tst_Psp::damageIsAnswered()
{
    QCOMPARE(damage::unanswered(layeredFile()), QString());
    Psp old({3, 8, Runs}, {5, 4});
    old.add(old.paletteBlock({qRgb(1, 2, 3), qRgb(4, 5, 6)}));
    old.addLayers({{QRect(0, 0, 5, 4), {{0, 0, plane({5, 4}, 1)}}}});
    QCOMPARE(damage::unanswered(old.file()), QString());
    Psp stored({6, 24, Raw}, {4, 3});
    stored.add(compositeBank(stored, {4, 3}, false));
    QCOMPARE(damage::unanswered(stored.file(), {0xff}), QString());
}

void tst_Psp::absurdClaimsTakeNoMemory()
{
    QVERIFY(!decodeHere(Psp({5, 24, Raw}, {65535, 65535}).file()));
    QVERIFY(!probeHere(Psp({5, 24, Raw}, {70000, 1}).file()));
    // A thousand layers that each claim what a picture may have at most, in a few bytes.
    Psp psp({5, 24, Lz77}, {4, 4});
    Layer layer = evenLayer({0, 0, 4, 4}, Qt::red);
    layer.place = {-30000, -1, 60000, 1500};
    psp.addLayers(QList<Layer>(1000, layer) + QList<Layer>{evenLayer({0, 0, 4, 4}, Qt::blue)});
    const Result<Picture> picture = decodeHere(psp.file());
    QVERIFY2(picture, qPrintable(picture.reason()));
    QVERIFY(picture->partial);
    QCOMPARE(picture->pixels.pixel(2, 2), qRgb(0, 0, 255));
}

QTEST_GUILESS_MAIN(tst_Psp)
#include "tst_psp.moc"
