#include "builtpaths.h"
#include "support/support.h"
#include "ui/animation.h"
#include "ui/avifile.h"
#include "ui/aviwriter.h"

#include <QPainter>
#include <QtEndian>
#include <QtTest>

namespace {

constexpr QRgb red = 0xffff0000;
constexpr QRgb blue = 0xff0000ff;

QImage plain(QSize size, QRgb color)
{
    QImage image(size, QImage::Format_ARGB32);
    image.fill(color);
    return image;
}

/// The frame as the film holds it, drawn over the frames before it.
QImage frameOf(const AviFile &film, int index)
{
    QImage picture;
    for (int i = 0; i <= index; ++i)
        film.drawFrame(i, picture);
    return picture.convertToFormat(QImage::Format_ARGB32);
}

QByteArray number32(qint64 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(static_cast<quint32>(value), bytes.data());
    return bytes;
}

QByteArray chunk(const QByteArray &name, const QByteArray &body)
{
    return name + number32(body.size()) + body + QByteArray(body.size() & 1, '\0');
}

/// A film of one frame in a given format, put together by hand.
QByteArray film(int width, int height, int bits, int code, const QByteArray &palette, const QByteArray &frame)
{
    QByteArray format = number32(40) + number32(width) + number32(height) + QByteArray("\1\0", 2)
        + number32(bits).left(2) + number32(code) + QByteArray(20, '\0') + palette;
    const QByteArray stream = chunk("strh", "vids" + QByteArray(52, '\0')) + chunk("strf", format);
    return chunk("RIFF",
        "AVI "
            + chunk("LIST",
                "hdrl" + chunk("avih", number32(80'000) + QByteArray(52, '\0'))
                    + chunk("LIST", "strl" + chunk("strh", "auds" + QByteArray(52, '\0')))
                    + chunk("LIST", "strl" + stream))
            + chunk("LIST", "movi" + chunk("00wb", "sound") + chunk("LIST", "rec " + chunk("01db", frame))));
}

} // namespace

/// The little films of the progress window.
class tst_animation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void framesComeBackWithColoursAndOpacity();
    void aFilmOfManyColoursKeepsTheFrequentOnes();
    void uncompressedFramesAreRead_data();
    void uncompressedFramesAreRead();
    void runsKeepWhatTheyStepOver();
    void whatIsNoSuchFilmIsRefused_data();
    void whatIsNoSuchFilmIsRefused();
    void damagedFilmsDoNoHarm();
    void itPlaysWhileItIsSeen();
    void missingAndDamagedFilesShowNothing();
    void theProgramsOwnFilmsPlay();
};

void tst_animation::framesComeBackWithColoursAndOpacity()
{
    QImage drawn = plain({300, 7}, 0);
    QPainter(&drawn).fillRect(3, 2, 290, 4, QColor(10, 200, 30, 128));
    const QVector<QImage> frames = {plain({300, 7}, red), drawn, plain({300, 7}, blue)};
    const auto opened = AviFile::open(aviOf(frames, 120));
    QVERIFY2(opened, qPrintable(opened.reason()));
    QCOMPARE(opened->size(), QSize(300, 7));
    QCOMPARE(opened->frameCount(), 3);
    QCOMPARE(opened->frameTime(), 120);
    QCOMPARE(frameOf(*opened, 0), frames[0]);
    QCOMPARE(frameOf(*opened, 2), frames[2]);
    const QImage middle = frameOf(*opened, 1);
    QCOMPARE(middle.pixel(0, 0), QRgb(0));
    QCOMPARE(qAlpha(middle.pixel(5, 3)), 128);
    QVERIFY(qAbs(qGreen(middle.pixel(5, 3)) - 200) <= 1);
}

void tst_animation::aFilmOfManyColoursKeepsTheFrequentOnes()
{
    const QImage ramp = rampImage({64, 64}, QImage::Format_ARGB32);
    QImage frame = plain({200, 64}, red);
    QPainter(&frame).drawImage(0, 0, ramp);
    const auto opened = AviFile::open(aviOf({frame}, 50));
    QVERIFY(opened);
    QCOMPARE(frameOf(*opened, 0).pixel(150, 40), red);
}

void tst_animation::uncompressedFramesAreRead_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("height");
    QTest::addColumn<QByteArray>("frame");
    // Two pixels wide, two lines: red and blue, blue and red.
    const QByteArray r24("\0\0\xff", 3);
    const QByteArray b24("\xff\0\0", 3);
    QTest::newRow("8 bits") << 8 << 2 << QByteArray("\1\2\0\0\2\1\0\0", 8);
    QTest::newRow("24 bits") << 24 << 2 << b24 + r24 + QByteArray(2, '\0') + r24 + b24 + QByteArray(2, '\0');
    QTest::newRow("24 bits from the top")
        << 24 << -2 << r24 + b24 + QByteArray(2, '\0') + b24 + r24 + QByteArray(2, '\0');
    QTest::newRow("32 bits") << 32 << 2 << b24 + '\0' + r24 + '\0' + r24 + '\0' + b24 + '\0';
}

void tst_animation::uncompressedFramesAreRead()
{
    QFETCH(int, bits);
    QFETCH(int, height);
    QFETCH(QByteArray, frame);
    if (bits == 8)
        frame = QByteArray("\2\1\0\0\1\2\0\0", 8);
    const QByteArray palette("\0\0\0\0"
                             "\0\0\xff\0"
                             "\xff\0\0\0",
        12);
    const auto opened = AviFile::open(film(2, height, bits, 0, palette, frame));
    QVERIFY2(opened, qPrintable(opened.reason()));
    QCOMPARE(opened->frameTime(), 80);
    const QImage shown = frameOf(*opened, 0);
    QCOMPARE(QVector<QRgb>({shown.pixel(0, 0), shown.pixel(1, 0), shown.pixel(0, 1), shown.pixel(1, 1)}),
        QVector<QRgb>({red, blue, blue, red}));
    // Half a frame gives its half.
    const auto half = AviFile::open(film(2, height, bits, 0, palette, frame.left(frame.size() / 2)));
    QVERIFY(half);
    QCOMPARE(frameOf(*half, 0).pixel(0, height < 0 ? 1 : 0), QRgb(0));
}

void tst_animation::runsKeepWhatTheyStepOver()
{
    const QByteArray palette("\0\0\0\0"
                             "\0\0\xff\0"
                             "\xff\0\0\0",
        12);
    // The lower line: three as they are and one filler; then a step by 1 and 1, then a run that is too long.
    const QByteArray frame("\0\3\1\2\1\0"
                           "\0\2\1\1"
                           "\xff\2"
                           "\0\1",
        14);
    const auto opened = AviFile::open(film(6, 3, 8, 1, palette, frame));
    QVERIFY(opened);
    const QImage shown = frameOf(*opened, 0);
    QCOMPARE(shown.pixel(0, 2), red);
    QCOMPARE(shown.pixel(1, 2), blue);
    QCOMPARE(shown.pixel(3, 1), QRgb(0));
    QCOMPARE(shown.pixel(4, 1), blue);
    QCOMPARE(shown.pixel(0, 0), QRgb(0));
}

void tst_animation::whatIsNoSuchFilmIsRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray good = aviOf({plain({8, 8}, red)}, 100);
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a picture") << QByteArray("\x89PNG\r\n\x1a\n and more than that");
    QTest::newRow("headers without frames") << good.left(good.indexOf("movi") - 8);
    QTest::newRow("a wide picture") << film(100'000, 2, 8, 0, {}, {});
    QTest::newRow("a high picture") << film(2, -2147483647, 8, 0, {}, {});
    QTest::newRow("an unknown code") << film(2, 2, 24, 0x44495658, {}, {});
    QTest::newRow("an odd depth") << film(2, 2, 7, 0, {}, {});
}

void tst_animation::whatIsNoSuchFilmIsRefused()
{
    QFETCH(QByteArray, bytes);
    const auto opened = AviFile::open(bytes);
    QVERIFY(!opened && !opened.reason().isEmpty());
}

/// Every cut and many changed bytes: what opens at all is drawn without touching what is not its own.
void tst_animation::damagedFilmsDoNoHarm()
{
    const QByteArray good = aviOf({rampImage({37, 11}, QImage::Format_ARGB32), plain({37, 11}, blue)}, 100);
    int opened = 0;
    const auto play = [&](const QByteArray &bytes) {
        if (const auto film = AviFile::open(bytes)) {
            QImage picture;
            for (int frame = -1; frame <= film->frameCount(); ++frame)
                film->drawFrame(frame, picture);
            ++opened;
        }
    };
    for (qsizetype length = 0; length < good.size(); length += 7)
        play(good.left(length));
    QRandomGenerator chance(20261123);
    for (int round = 0; round < 4000; ++round) {
        QByteArray bad = good;
        for (int i = 0; i < 4; ++i)
            bad[chance.bounded(int(bad.size()))] = char(chance.bounded(256));
        play(bad);
    }
    QVERIFY(opened > 1000);
}

void tst_animation::itPlaysWhileItIsSeen()
{
    const TemporaryHome home;
    const QString file = home.write(QStringLiteral("film.avi"), aviOf({plain({4, 4}, red), plain({4, 4}, blue)}, 10));
    Animation animation;
    animation.Open(file);
    QVERIFY(!animation.isPlaying());
    QCOMPARE(animation.frame().pixel(0, 0), red);
    animation.show();
    QVERIFY(animation.isPlaying());
    QTRY_COMPARE(animation.frame().pixel(0, 0), blue);
    QTRY_COMPARE(animation.frame().pixel(0, 0), red);
    animation.hide();
    QVERIFY(!animation.isPlaying());
    animation.show();
    animation.Open(QString());
    QVERIFY(!animation.isPlaying() && animation.frame().isNull() && animation.fileName().isEmpty());
}

void tst_animation::missingAndDamagedFilesShowNothing()
{
    const TemporaryHome home;
    Animation animation;
    animation.show();
    for (const QString &file : {home.path() + QStringLiteral("none.avi"), home.path(),
             home.write(QStringLiteral("bad.avi"), "RIFF\0\0\0\0AVI no film")}) {
        animation.Open(file);
        QVERIFY(animation.frame().isNull() && !animation.isPlaying());
        QCOMPARE(animation.fileName(), file);
    }
    QVERIFY(!animation.grab().isNull());
}

void tst_animation::theProgramsOwnFilmsPlay()
{
    for (const char *name : {"filecopy.avi", "filedel.avi"}) {
        Animation animation;
        animation.Open(QStringLiteral(LUMORA_BIN "/lumora-data/") + QLatin1String(name));
        QVERIFY2(!animation.frame().isNull(), name);
        QCOMPARE(qAlpha(animation.frame().pixel(0, 0)), 0);
    }
}

QTEST_MAIN(tst_animation)
#include "tst_animation.moc"
