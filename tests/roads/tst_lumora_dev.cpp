#include "builtpaths.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/registrystore.h"
#include "support/support.h"
#include "viewer/listfile.h"

#include <QBuffer>
#include <QImage>
#include <QProcess>
#include <QtTest>

namespace {

struct Outcome
{
    int status = -1;
    QByteArray errors;
    QList<QByteArrayList> rows; ///< the cells of each line
};

Outcome run(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(LUMORA_BIN "/lumora-dev"), arguments);
    Outcome outcome;
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return outcome;
    outcome.status = process.exitCode();
    outcome.errors = process.readAllStandardError();
    for (const QByteArray &line : process.readAllStandardOutput().split('\n')) {
        if (!line.isEmpty())
            outcome.rows << line.split('\t');
    }
    return outcome;
}

}

class tst_lumora_dev : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void aWrongCallGivesTwoAndOneLine_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("no command") << QStringList();
        QTest::newRow("a command that is not there") << QStringList{QStringLiteral("paint")};
        QTest::newRow("decode without a file") << QStringList{QStringLiteral("decode")};
        QTest::newRow("an option that is not there")
            << QStringList{QStringLiteral("probe"), QStringLiteral("--deep"), QStringLiteral("a")};
        QTest::newRow("a target that is no size")
            << QStringList{QStringLiteral("decode"), QStringLiteral("--target=8"), QStringLiteral("a")};
        QTest::newRow("encode to a format that is not there")
            << QStringList{QStringLiteral("encode"), QStringLiteral("a"), QStringLiteral("23"), QStringLiteral("b")};
        QTest::newRow("encode at a quality that is none") << QStringList{QStringLiteral("encode"), QStringLiteral("a"),
            QStringLiteral("4"), QStringLiteral("b"), QStringLiteral("--quality=101")};
        QTest::newRow("two list files") << QStringList{
            QStringLiteral("list"), QStringLiteral("a"), QStringLiteral("b")};
        QTest::newRow("a window that is not there")
            << QStringList{QStringLiteral("controls"), QStringLiteral("frmNothing")};
        QTest::newRow("shot without a file to write")
            << QStringList{QStringLiteral("shot"), QStringLiteral("frmMainViewer")};
    }

    void aWrongCallGivesTwoAndOneLine()
    {
        QFETCH(QStringList, arguments);
        const Outcome outcome = run(arguments);
        QCOMPARE(outcome.status, 2);
        QVERIFY(outcome.rows.isEmpty());
        QVERIFY(outcome.errors.startsWith("lumora-dev: "));
        QCOMPARE(outcome.errors.count('\n'), 1);
    }

    void decodeAndProbeTellTheSameSize()
    {
        const QString picture = m_home.writePicture(QStringLiteral("a b.png"), QSize(37, 21));
        const Outcome decoded = run({QStringLiteral("decode"), picture});
        QCOMPARE(decoded.status, 0);
        QCOMPARE(decoded.rows.size(), 1);
        QCOMPARE(decoded.rows[0].size(), 8);
        QCOMPARE(decoded.rows[0].mid(0, 5), QByteArrayList({"PNG", "37", "21", "24", "1"}));
        QCOMPARE(decoded.rows[0].mid(6), QByteArrayList({"whole", picture.toUtf8()}));
        const Outcome probed = run({QStringLiteral("probe"), picture});
        QCOMPARE(probed.rows.value(0).mid(0, 5), decoded.rows[0].mid(0, 5));
    }

    void playTellsWhatAFileHoldsAndHowLongItIs()
    {
        SKIP_WITHOUT_SAMPLES();
        useBuiltModules();
        const QString film = samplesFolder() + QStringLiteral("media/count.mpg");
        const QString broken = samplesFolder() + QStringLiteral("media/damaged/text.mp3");
        const Outcome outcome = run({QStringLiteral("play"), QStringLiteral("--silent"), broken, film});
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.rows.size(), 2);
        QCOMPARE(outcome.rows[0], QByteArrayList({"none", "0.00", "0.00", "9 1", broken.toUtf8()}));
        QCOMPARE(outcome.rows[1].value(0), QByteArray("video"));
        QCOMPARE(outcome.rows[1].value(3), QByteArray("3 1"));
        QVERIFY(outcome.rows[1].value(1).toDouble() > 2.8 && outcome.rows[1].value(2).toDouble() > 2);
        QVERIFY2(outcome.errors.isEmpty(), "libraries below have nothing to say on a terminal");
    }

    void aFileThatCannotBeReadDoesNotStopTheOthers()
    {
        const QString broken = m_home.write(QStringLiteral("broken.png"), "no picture");
        const QString picture = m_home.writePicture(QStringLiteral("whole.png"), QSize(3, 4));
        const Outcome outcome = run({QStringLiteral("decode"), broken, picture});
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.rows.size(), 1);
        QVERIFY(outcome.errors.contains("broken.png: "));
    }

    void aDamagedFileIsToldInOneLine_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("bytes");
        QByteArray jpeg = QByteArray::fromHex("ffd8ffdb004300") + QByteArray(64, 1)
            + QByteArray::fromHex("ffc0000b08ffffffff01011100");
        QTest::newRow("a JPEG beyond the limit of pixels") << QStringLiteral("a.jpg") << jpeg;
        QTest::newRow("a JPEG of its first bytes") << QStringLiteral("b.jpg") << jpeg.left(20);
        QTest::newRow("an XPM without its pixels") << QStringLiteral(
            "a.xpm") << QByteArray("/* XPM */\nstatic char *a[] = {\n\"9 9 2 1\",\n\"a s none\",\n\"b s x\",\n");
        QTest::newRow("a TIFF without a directory")
            << QStringLiteral("a.tif") << QByteArray("II*\0\xff\xff\xff\x7f", 8);
        QTest::newRow("a camera's picture that is cut")
            << QStringLiteral("a.crw") << QByteArray("II\x1a\0\0\0HEAPCCDR", 14);
        QByteArray bitmap;
        QBuffer buffer(&bitmap);
        buffer.open(QIODevice::WriteOnly);
        rampImage(QSize(40, 30), QImage::Format_Mono).save(&buffer, "BMP");
        bitmap[46] = char(200);
        QTest::newRow("a bitmap of one bit and 200 colours") << QStringLiteral("a.bmp") << bitmap;
        QTest::newRow("a GIF of its first bytes")
            << QStringLiteral("a.gif") << QByteArray("GIF89a\xff\xff\xff\xff", 10);
        QTest::newRow("a JPEG 2000 of its first bytes")
            << QStringLiteral("a.jp2") << QByteArray::fromHex("0000000c6a5020200d0a870a00000000");
    }

    void aDamagedFileIsToldInOneLine()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, bytes);
        const QString file = m_home.write(QStringLiteral("damaged/") + name, bytes);
        for (const char *command : {"decode", "probe"}) {
            const Outcome outcome = run({QString::fromLatin1(command), file});
            // A header can be whole where the picture is not, and some damage leaves a picture; then nothing is said.
            if (outcome.status == 0) {
                QCOMPARE(outcome.errors, QByteArray());
                continue;
            }
            QCOMPARE(outcome.status, 1);
            QVERIFY2(outcome.errors.startsWith("lumora-dev: ") && outcome.errors.contains(name.toUtf8()),
                outcome.errors.constData());
            QVERIFY2(outcome.errors.count('\n') == 1, outcome.errors.constData());
        }
    }

    void decodedPixelsCanBeWritten()
    {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        const QImage ramp = rampImage(QSize(40, 30));
        QVERIFY(ramp.save(&buffer, "PNG"));
        const QString source = m_home.write(QStringLiteral("ramp.png"), bytes);
        const QString target = m_home.path() + QStringLiteral("out.png");
        QCOMPARE(run({QStringLiteral("decode"), source, QStringLiteral("--png"), target}).status, 0);
        QCOMPARE(QImage(target).convertToFormat(QImage::Format_RGB32), ramp);
    }

    void aPictureIsWrittenAsInABatch()
    {
        const QString source = m_home.path() + QStringLiteral("batch.png");
        QVERIFY(rampImage(QSize(300, 200)).save(source));
        const auto encode = [&](const char *index, const char *name, const QStringList &options) {
            const QString target = m_home.path() + QLatin1String(name);
            run(QStringList{QStringLiteral("encode"), source, QLatin1String(index), target} + options);
            return target;
        };
        const QString gray = encode("9", "batch.pgm", {});
        QCOMPARE(
            run({QStringLiteral("probe"), gray}).rows.value(0).mid(0, 4), QByteArrayList({"PNM", "300", "200", "8"}));
        const QFileInfo poor(encode("4", "poor.jpg", {QStringLiteral("--quality=10")}));
        const QFileInfo good(encode("4", "good.jpg", {}));
        QVERIFY(poor.size() > 0 && poor.size() * 2 < good.size());
        QFile plain(encode("20", "plain.xbm", {}));
        QFile diffused(encode("20", "diffused.xbm", {QStringLiteral("--diffuse")}));
        QVERIFY(plain.open(QIODevice::ReadOnly) && diffused.open(QIODevice::ReadOnly));
        QVERIFY(plain.readAll() != diffused.readAll());
        QCOMPARE(run({QStringLiteral("encode"), m_home.path() + QStringLiteral("gone.png"), QStringLiteral("0"), gray})
                     .status,
            1);
    }

    void cellsKeepTabsAndLineBreaksApart()
    {
        const QString picture = m_home.writePicture(QStringLiteral("tab\there\nand there.png"), QSize(2, 2));
        const Outcome outcome = run({QStringLiteral("probe"), picture});
        QCOMPARE(outcome.rows.size(), 1);
        QVERIFY(outcome.rows[0].last().endsWith("tab\\there\\nand there.png"));
    }

    void listShowsHeaderAndEntries()
    {
        const QStringList paths{QStringLiteral("/pictures/a.jpg"), QStringLiteral("/music/b.mp3")};
        const QString file = m_home.write(QStringLiteral("two.Lsl"), writeListFile(paths, QStringLiteral("2")));
        const Outcome outcome = run({QStringLiteral("list"), file});
        QCOMPARE(outcome.status, 0);
        QCOMPARE(outcome.rows.value(0), QByteArrayList({"count", "2"}));
        QVERIFY(outcome.rows.contains(QByteArrayList({"entry", "0", "/pictures/a.jpg"})));
        QVERIFY(outcome.rows.contains(QByteArrayList({"entry", "1", "/music/b.mp3"})));
        QCOMPARE(run({QStringLiteral("list"), m_home.write(QStringLiteral("no.Lsl"), "x")}).status, 1);
    }

    void settingsShowsWhatIsStored()
    {
        const QString key = QStringLiteral("Software\\Test\\Options");
        QVERIFY(registryStore().setValue(
            RegistryStore::Root::CurrentUser, key, QStringLiteral("Size"), QStringLiteral("80")));
        const Outcome outcome = run({QStringLiteral("settings")});
        QCOMPARE(outcome.status, 0);
        QVERIFY(outcome.rows.contains(QByteArrayList({"user", "Software\\\\Test\\\\Options", "Size", "80"})));
    }

    void formatsNameTheCodecs()
    {
        const Outcome outcome = run({QStringLiteral("formats")});
        QCOMPARE(outcome.status, 0);
        QByteArrayList names;
        QByteArrayList rows;
        for (const QByteArrayList &row : outcome.rows) {
            QCOMPARE(row.size(), 3);
            // One name may stand twice: the second decoder takes what the first does not know by its content.
            QVERIFY2(!rows.contains(row.join(' ')), row[0].constData());
            rows << row.join(' ');
            names << row[0];
        }
        for (const char *name : {"JPEG", "PNG", "TIFF", "JPEG 2000", "Photo CD", "TGA"})
            QVERIFY2(names.contains(name), name);
    }

    void aWindowCanBeListedAndDrawn()
    {
        const Outcome controls = run({QStringLiteral("controls"), QStringLiteral("frmMainViewer")});
        QCOMPARE(controls.status, 0);
        QByteArrayList names;
        for (const QByteArrayList &row : controls.rows)
            names << row.value(0);
        for (const char *name : {"lstDisplay", "lstSelect", "Toolbar1", "mnuFileExit"})
            QVERIFY2(names.contains(name), name);
        const QString picture = m_home.writePicture(QStringLiteral("red.png"), QSize(400, 300), qRgb(250, 20, 30));
        const QString target = m_home.path() + QStringLiteral("window.png");
        const Outcome shot = run({QStringLiteral("shot"), QStringLiteral("frmMainViewer"), target,
            QStringLiteral("--size"), QStringLiteral("1000x700"), picture});
        QVERIFY2(shot.status == 0, shot.errors.constData());
        const QImage image(target);
        QCOMPARE(image.size(), QSize(1000, 700));
        int red = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                red += image.pixel(x, y) == qRgb(250, 20, 30);
        QVERIFY2(red > 50000, "the picture must stand on the window that was drawn");
    }

private:
    TemporaryHome m_home;
};

QTEST_GUILESS_MAIN(tst_lumora_dev)
#include "tst_lumora_dev.moc"
