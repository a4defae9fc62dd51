#include "builtpaths.h"
#include "engine/codec.h"
#include "engine/decodehere.h"
#include "engine/isolation.h"
#include "engine/metadata.h"
#include "engine/obedient/obedient.h"
#include "platform/files.h"
#include "support/support.h"

#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include <signal.h>

namespace {

using namespace std::chrono_literals;

constexpr auto shortPatience = 300ms;
const char obedientModules[] = LUMORA_BIN "/tests/obedient";
const char decoderProgram[] = LUMORA_BIN "/lumora-modules/lumora-decoder";

EncodedFile order(const QByteArray &words)
{
    return {"OBEY " + words, QStringLiteral("obey")};
}

/// The decoder processes of that program, zygotes and others: each tells in its call whom it belongs to.
int decodersOf(qint64 owner)
{
    int count = 0;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &process : processes) {
        QFile file(QStringLiteral("/proc/%1/cmdline").arg(process));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArrayList words = file.readAll().split('\0');
        count += words.size() > 2 && words[0] == "lumora-decoder" && words[2] == QByteArray::number(owner);
    }
    return count;
}

/// Children that have ended and that nobody has asked about.
int zombies()
{
    int count = 0;
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &process : processes) {
        QFile file(QStringLiteral("/proc/%1/stat").arg(process));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray line = file.readAll();
        const QByteArrayList fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        count += fields.size() > 1 && fields[0] == "Z" && fields[1].toLongLong() == getpid();
    }
    return count;
}

qsizetype openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
        .size();
}

QString difference(const Picture &a, const Picture &b)
{
    if (a.pixels != b.pixels || a.pixels.format() != b.pixels.format())
        return QStringLiteral("pixels");
    if (a.pixels.colorTable() != b.pixels.colorTable())
        return QStringLiteral("colour table");
    if (a.pixels.dotsPerMeterX() != b.pixels.dotsPerMeterX() || a.pixels.dotsPerMeterY() != b.pixels.dotsPerMeterY())
        return QStringLiteral("resolution");
    if (a.info.size != b.info.size || a.info.bitsPerPixel != b.info.bitsPerPixel || a.info.pageCount != b.info.pageCount
        || a.info.codec != b.info.codec)
        return QStringLiteral("info");
    if (a.metadata.exif != b.metadata.exif || a.metadata.iptc != b.metadata.iptc || a.metadata.xmp != b.metadata.xmp
        || a.metadata.comment != b.metadata.comment || a.iccProfile != b.iccProfile)
        return QStringLiteral("metadata");
    return a.partial == b.partial ? QString() : QStringLiteral("partial");
}

std::atomic<int> warnings = 0;

void countWarnings(QtMsgType, const QMessageLogContext &context, const QString &)
{
    warnings += qstrcmp(context.category, "lumora.decoder") == 0;
}

}

/// What a file does to the process that reads it stays there, and what comes out of it is the same as ever.
class tst_Isolation : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { stopDecoderProcesses(); }
    void everythingOfAnAnswerCrosses();
    void badEndsAreAnswered_data();
    void badEndsAreAnswered();
    void nothingOutsideIsReached_data();
    void nothingOutsideIsReached();
    void indicesStayInsideTheColorTable();
    void manyThreadsAreServedAtOnce();
    void nothingIsLeftBehind();
    void stoppingEndsARequestUnderWay();
    void decodersEndWithTheProgram();
    void withoutTheProgramFilesAreDecodedHere();
    void samplesAreTheSameBothWays();

private:
    /// They stay from case to case: each also shows that the one before has left nothing that disturbs.
    void startObedient(std::chrono::milliseconds patience = 0ms)
    {
        if (m_patience != patience)
            stopDecoderProcesses();
        m_patience = patience;
        startDecoderProcesses({decoderProgram, obedientModules, patience});
    }

    std::chrono::milliseconds m_patience = 0ms;
};

void tst_Isolation::initTestCase()
{
    useBuiltModules();
    qunsetenv("LUMORA_DECODER");
}

void tst_Isolation::everythingOfAnAnswerCrosses()
{
    startObedient();
    const Result<Picture> small = decode(order("picture"));
    QVERIFY2(small, qPrintable(small.reason()));
    QCOMPARE(difference(*small, obedientPicture()), QString());
    const Result<Picture> large = decode(order("large"));
    QVERIFY2(large, qPrintable(large.reason()));
    QVERIFY(large->pixels == largeObedientImage());

    // Input that does not fit into one message, and the hint.
    EncodedFile padded = order("echo");
    padded.bytes.append(QByteArray(3'000'000, '\0'));
    QCOMPARE(decode(padded, {QSize(12, 34), 3, 5}).reason(), QStringLiteral("obey 3000009 12 34 3 5"));
    QCOMPARE(probe(order("picture"))->pageCount, 12);
    const Result<PictureTexts> texts = readTexts(order("picture"));
    QVERIFY2(texts, qPrintable(texts.reason()));
    QCOMPARE(texts->description, QStringLiteral("d\u00e9 \U0001f600"));
    QCOMPARE(texts->iptc.size(), 2);
    QVERIFY(texts->comment.isEmpty() && texts->cameraDate.startsWith(QStringLiteral("2020")));
}

void tst_Isolation::badEndsAreAnswered_data()
{
    QTest::addColumn<QString>("reason");
    for (const char *crash : {"do crash", "do abort", "do exit", "do recursion", "do closed connection"})
        QTest::newRow(crash) << QStringLiteral("decoder process");
#if !defined(__SANITIZE_ADDRESS__)
    QTest::newRow("do memory") << QStringLiteral("Obedient decoder");
#endif
    for (const char *endless : {"do loop", "do wait", "lie fields that never come"})
        QTest::newRow(endless) << QStringLiteral("longer than 0.3 seconds");
    for (const char *nonsense : {"do garbage", "do flood", "lie pixels that are not there", "lie too few pixels",
             "lie another size than announced", "lie endless fields", "lie negative size", "lie unknown format",
             "lie no pages"})
        QTest::newRow(nonsense) << QStringLiteral("makes no sense");
    QTest::newRow("lie too large") << QStringLiteral("refused");
}

void tst_Isolation::badEndsAreAnswered()
{
    QFETCH(QString, reason);
    startObedient(reason.startsWith(QStringLiteral("longer")) ? shortPatience : 0ms);
    const Result<Picture> picture = decode(order(QTest::currentDataTag()));
    QVERIFY(!picture);
    QVERIFY2(picture.reason().contains(reason), qPrintable(picture.reason()));
    QVERIFY(decode(order("picture")));
}

void tst_Isolation::nothingOutsideIsReached_data()
{
    QTest::addColumn<int>("none");
    for (const char *call : {"try open", "try create", "try socket", "try exec", "try fork", "try kill parent",
             "try trace", "try shared memory", "try code"})
        QTest::newRow(call) << 0;
}

void tst_Isolation::nothingOutsideIsReached()
{
    startObedient();
    QVERIFY(decode(order("talk")));
    if (decoderProtection().contains(QStringLiteral("does not offer")))
        QSKIP("NOT ALL LAYERS OF PROTECTION ON THIS SYSTEM");
    const Result<Picture> picture = decode(order(QTest::currentDataTag()));
    QVERIFY(!picture);
    QVERIFY2(picture.reason().startsWith(QStringLiteral("refused: ")), qPrintable(picture.reason()));
}

void tst_Isolation::indicesStayInsideTheColorTable()
{
    startObedient();
    const Result<Picture> picture = decode(order("do wrong index"));
    QVERIFY2(picture, qPrintable(picture.reason()));
    QCOMPARE(picture->pixels.pixelIndex(3, 3), 0xc8);
    QVERIFY(picture->pixels.colorCount() > 0xc8);
}

void tst_Isolation::manyThreadsAreServedAtOnce()
{
    startObedient();
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i)
        threads.emplace_back([&good] {
            for (int round = 0; round < 5; ++round) {
                const Result<Picture> large = decode(order("large"));
                good += large && large->pixels == largeObedientImage();
                good += !decode(order("do crash"));
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(good.load(), 80);
}

void tst_Isolation::nothingIsLeftBehind()
{
    stopDecoderProcesses();
    const qsizetype before = openDescriptors();
    startObedient();
    for (int i = 0; i < 20; ++i)
        ignore(decode(order(i % 3 == 0 ? "do crash" : i % 3 == 1 ? "large" : "lie no pages")));
    QVERIFY(decodersOf(getpid()) > 0);
    stopDecoderProcesses();
    QCOMPARE(decodersOf(getpid()), 0);
    QCOMPARE(zombies(), 0);
    QCOMPARE(openDescriptors(), before);
    QVERIFY(!decode(order("picture")));
}

void tst_Isolation::stoppingEndsARequestUnderWay()
{
    startObedient();
    QVERIFY(decode(order("picture")));
    QElapsedTimer timer;
    timer.start();
    std::atomic<bool> started = false;
    std::thread waiting([&] {
        started = true;
        ignore(decode(order("do wait")));
    });
    QTRY_VERIFY(started);
    stopDecoderProcesses();
    waiting.join();
    QVERIFY(timer.elapsed() < 8000);
}

void tst_Isolation::decodersEndWithTheProgram()
{
    QProcess client;
    client.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--client")});
    QVERIFY(client.waitForReadyRead());
    const qint64 pid = client.processId();
    QVERIFY(decodersOf(pid) > 0);
    client.kill();
    QVERIFY(client.waitForFinished());
    QTRY_COMPARE(decodersOf(pid), 0);
}

void tst_Isolation::withoutTheProgramFilesAreDecodedHere()
{
    stopDecoderProcesses();
    const QtMessageHandler before = qInstallMessageHandler(countWarnings);
    startDecoderProcesses({"/nowhere/lumora-decoder", {}, {}});
    QVERIFY(decode({QByteArrayLiteral("P5 1 1 255\n\x20"), QStringLiteral("pgm")}));
    ignore(decode({QByteArrayLiteral("\xff\xd8\xff"), QStringLiteral("jpg")}));
    qInstallMessageHandler(before);
    QCOMPARE(warnings.load(), 1);
    QVERIFY(decoderProtection().contains(QStringLiteral("inside the program")));
}

void tst_Isolation::samplesAreTheSameBothWays()
{
    SKIP_WITHOUT_SAMPLES();
    stopDecoderProcesses();
    startDecoderProcesses({decoderProgram, {}, {}});
    QDirIterator files(samplesFolder(), QDir::Files, QDirIterator::Subdirectories);
    int decoded = 0;
    while (files.hasNext()) {
        const QString path = files.next();
        if (path.endsWith(QStringLiteral(".tsv")) || path.contains(QStringLiteral("/media/")))
            continue;
        const Result<EncodedFile> file = readEncodedFile(path);
        QVERIFY2(file, qPrintable(file.reason()));
        const Result<Picture> here = decodeHere(*file);
        const Result<Picture> there = decode(*file);
        QVERIFY2(bool(here) == bool(there), qPrintable(path + QStringLiteral(": ") + here.reason() + there.reason()));
        if (!here)
            continue;
        const QString differing = difference(*here, *there);
        QVERIFY2(differing.isEmpty(), qPrintable(path + QStringLiteral(": ") + differing));
        ++decoded;
    }
    QVERIFY(decoded > 100);
}

int main(int argc, char **argv)
{
    if (argc == 2 && qstrcmp(argv[1], "--client") == 0) {
        startDecoderProcesses({decoderProgram, obedientModules, {}});
        std::thread([] { ignore(decode(order("do loop"))); }).detach();
        ignore(decode(order("picture")));
        std::puts("ready");
        std::fflush(stdout);
        pause();
        return 0;
    }
    // As the decoder processes: a picture without a resolution gets the same one in both.
    QCoreApplication::setAttribute(Qt::AA_Use96Dpi);
    const QGuiApplication application(argc, argv);
    tst_Isolation test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_isolation.moc"
