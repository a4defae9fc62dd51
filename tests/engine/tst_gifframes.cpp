#include "engine/decode.h"
#include "support/support.h"

#include <QTest>

namespace {

constexpr QRgb red = 0xffff0000;
constexpr QRgb green = 0xff00ff00;
constexpr QRgb blue = 0xff0000ff;

QByteArray le16(int value)
{
    return QByteArray(1, char(value)).append(char(value >> 8));
}

/// Codes of three bits, each pixel (0 to 3) behind a clear code.
QByteArray codesOf(const QByteArray &pixels)
{
    QByteArray codes;
    int bits = 0;
    const auto put = [&](int code) {
        for (int i = 0; i < 3; ++i, ++bits) {
            if (bits % 8 == 0)
                codes.append('\0');
            codes.back() = char(codes.back() | (code >> i & 1) << bits % 8);
        }
    };
    for (const char pixel : pixels) {
        put(4);
        put(pixel - '0');
    }
    put(5);
    return "\x02" + QByteArray(1, char(codes.size())) + codes + '\0';
}

struct TestFrame
{
    QRect place;
    QByteArray pixels; ///< digits, 0 red, 1 green, 2 blue, 3 the one that may be clear
    int disposal = 0;
    bool clear = false; ///< 3 shows what is below
    bool interlaced = false;
};

QByteArray gif(QSize canvas, const QList<TestFrame> &frames)
{
    QByteArray bytes = "GIF89a" + le16(canvas.width()) + le16(canvas.height()) + QByteArray("\x81\0\0", 3)
        + QByteArray("\xff\0\0\0\xff\0\0\0\xff\x10\x20\x30", 12);
    for (const TestFrame &frame : frames) {
        bytes +=
            QByteArray("\x21\xf9\x04", 3) + char(frame.disposal << 2 | (frame.clear ? 1 : 0)) + le16(0) + '\x03' + '\0';
        bytes += ',' + le16(frame.place.x()) + le16(frame.place.y()) + le16(frame.place.width())
            + le16(frame.place.height()) + char(frame.interlaced ? 0x40 : 0) + codesOf(frame.pixels);
    }
    return bytes + ';';
}

/// One letter a pixel, rows behind one another.
QByteArray seen(const QImage &image)
{
    QByteArray letters;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb color = image.pixel(x, y);
            letters += qAlpha(color) == 0 ? '.' : color == red ? 'r' : color == green ? 'g' : color == blue ? 'b' : '?';
        }
    }
    return letters;
}

QByteArray shown(const QByteArray &bytes, int page)
{
    const Result<Picture> picture = decode({bytes, QStringLiteral("gif")}, {QSize(), -1, page});
    return picture ? seen(picture->pixels) : picture.reason().toLatin1();
}

}

/// How the frames of a GIF come together on its canvas.
class tst_GifFrames : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aStillPictureKeepsItsPalette();
    void rowsOfAnInterlacedFrameFindTheirPlace();
    void framesStayAreClearedOrTakenBack();
    void framesMayLieBesideTheCanvas();
    void cutCodesGiveTheRowsThatAreThere();
    void codesThatCannotBeAreTheEnd();
};

void tst_GifFrames::aStillPictureKeepsItsPalette()
{
    const Picture picture = *decode({gif({3, 2}, {{{0, 0, 3, 2}, "012210", 0, false}}), {}});
    QCOMPARE(picture.pixels.format(), QImage::Format_Indexed8);
    QCOMPARE(picture.pixels.colorCount(), 4);
    QCOMPARE(seen(picture.pixels), QByteArray("rgbbgr"));
    QVERIFY(!hasTransparency(picture));
    const Picture clear = *decode({gif({3, 2}, {{{0, 0, 3, 2}, "013310", 0, true}}), {}});
    QCOMPARE(clear.pixels.format(), QImage::Format_Indexed8);
    QCOMPARE(seen(clear.pixels), QByteArray("rg..gr"));
}

void tst_GifFrames::rowsOfAnInterlacedFrameFindTheirPlace()
{
    // Nine rows of one pixel, stored in the order 0 8, 4, 2 6, 1 3 5 7.
    const QByteArray rows = "rbrrbggbg";
    QCOMPARE(shown(gif({1, 9}, {{{0, 0, 1, 9}, "012012012", 0, false, true}}), 0), rows);
    // The same as a part of a larger canvas, which takes the other way to the screen.
    QByteArray column;
    for (const char row : rows)
        column += QByteArray(".") + row;
    QCOMPARE(shown(gif({2, 9}, {{{1, 0, 1, 9}, "012012012", 0, false, true}}), 0), column);
}

void tst_GifFrames::framesStayAreClearedOrTakenBack()
{
    const auto third = [](int disposal) {
        return shown(gif({3, 1},
                         {{{0, 0, 3, 1}, "000", 1, false}, {{0, 0, 2, 1}, "11", disposal, false},
                             {{2, 0, 1, 1}, "2", 0, false}}),
            2);
    };
    QCOMPARE(third(0), QByteArray("ggb"));
    QCOMPARE(third(1), QByteArray("ggb"));
    QCOMPARE(third(2), QByteArray("..b"));
    QCOMPARE(third(3), QByteArray("rrb"));
    const QByteArray bytes = gif({3, 1}, {{{0, 0, 3, 1}, "012", 0, false}, {{0, 0, 3, 1}, "313", 0, true}});
    QCOMPARE(shown(bytes, 0), QByteArray("rgb"));
    QCOMPARE(shown(bytes, 1), QByteArray("rgb"));
    QCOMPARE(decode({bytes, {}}, {QSize(), -1, 1})->pixels.format(), QImage::Format_RGB32);
}

void tst_GifFrames::framesMayLieBesideTheCanvas()
{
    QCOMPARE(shown(gif({2, 2}, {{{1, 1, 3, 3}, "012012012", 0, false}}), 0), QByteArray("...r"));
    QCOMPARE(shown(gif({2, 1},
                       {{{0, 0, 2, 1}, "00", 0, false}, {{5, 5, 2, 1}, "11", 2, false}, {{1, 0, 1, 1}, "2", 0, false}}),
                 2),
        QByteArray("rb"));
    QVERIFY(!decode({gif({2, 2}, {{{0, 0, 0, 2}, "", 0, false}}), {}}));
}

void tst_GifFrames::cutCodesGiveTheRowsThatAreThere()
{
    const QByteArray whole = gif({3, 3}, {{{0, 0, 3, 3}, "012012012", 0, false}});
    const Picture cut = *decode({whole.left(whole.size() - 5), {}});
    QVERIFY(cut.partial);
    QCOMPARE(seen(cut.pixels).left(5), QByteArray("rgbrg"));
    const Picture few = *decode({gif({3, 3}, {{{0, 0, 3, 3}, "2222", 0, false}}), {}});
    QVERIFY(few.partial);
    QCOMPARE(seen(few.pixels), QByteArray("bbbbrrrrr"));
}

void tst_GifFrames::codesThatCannotBeAreTheEnd()
{
    QByteArray bytes = gif({3, 3}, {{{0, 0, 3, 3}, "222222222", 0, false}});
    for (const int minimum : {0, 9, 12, 255}) {
        bytes[bytes.indexOf(',') + 10] = char(minimum);
        QVERIFY(!decode({bytes, {}}));
    }
    // A code for a string that nobody has made yet.
    bytes[bytes.indexOf(',') + 10] = 2;
    bytes[bytes.indexOf(',') + 12] = char(0x3c);
    QVERIFY(!decode({bytes, {}}));
}

QTEST_GUILESS_MAIN(tst_GifFrames)
#include "tst_gifframes.moc"
