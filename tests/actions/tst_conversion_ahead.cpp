#include "actions/conversiontest.h"
#include "engine/isolation.h"
#include "platform/filepath.h"
#include "support/otherdisk.h"

#include <QtTest>

#include <cstdio>
#include <filesystem>

#include <sys/resource.h>
#include <sys/stat.h>

using Answer = MessageBox::Answer;

/// A run that works ahead and writes behind is told from one that does not by nothing: the same files, the same
/// questions, the same moment of a cancel.
class tst_conversion_ahead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        useBuiltModules();
        startDecoderProcesses();
        // Hundreds of small files are synced: that is quick in memory.
        if (QFileInfo(QStringLiteral("/dev/shm")).isWritable())
            qputenv("TMPDIR", "/dev/shm");
    }
    void cleanupTestCase() { stopDecoderProcesses(); }
    void theSameComesOut_data();
    void theSameComesOut();
    void theSameComesOutOfACancelAtEachYield();
    void optionsThatChangeOnTheWayCount();
    void aFileThatChangesOnTheWayIsReadAtItsTurn();
    void aDiskThatFillsUpTakesTheSameFiles();
    void aLimitOfFileSizesIsAFailureLikeOthers();
    void aTargetThatGoesEndsNothing();
    void whatIsLoadedLastStays();
    void manyBadFilesInARow();

private:
    struct Outcome
    {
        QMap<QString, QByteArray> tree;
        QStringList log;
        QStringList told;
        QSize image;
        int bits = 0;
        QSize gvbox;
        bool cancelFlag = false;
    };
    using SetUp = std::function<void(TestClient &)>;
    static QStringList fill(const TemporaryHome &home, QSize large);
    static Outcome run(LookAhead lookAhead, const SetUp &setUp, QSize large = {500, 400});
    static void compare(const Outcome &ahead, const Outcome &plain);
};

namespace {

constexpr int bmp = 0;
constexpr int jp2 = 3;
constexpr int jpg = 4;
constexpr int pbm = 7;
constexpr int pgm = 9;
constexpr int png = 10;
constexpr int pngInterlaced = 11;
constexpr int xwd = 22;

/// The toolkit leaves names of any bytes where they are.
void clear(const TemporaryHome &home)
{
    std::filesystem::remove_all(QFile::encodeName(home.path()).toStdString());
}

QStringList namesIn(const QMap<QString, QByteArray> &tree)
{
    return tree.keys();
}

}

/// Files of every kind that makes a run differ: large and small ones in turns, names that meet in one target, targets
/// that are sources of later entries under their own and under other names, what cannot be read, what is passed over.
QStringList tst_conversion_ahead::fill(const TemporaryHome &home, QSize large)
{
    const auto save = [&](const char *name, QSize size, int turn = 0) {
        const QString path = home.path() + QLatin1String(name);
        QDir().mkpath(QFileInfo(path).path());
        QImage image = rampImage(size);
        image = turn ? image.mirrored(turn & 1, turn & 2) : image;
        if (!image.save(path))
            qFatal("cannot write %s", name);
        return path;
    };
    QStringList entries{home.write(QStringLiteral("first.jpg"), "no picture"), save("large.jpg", large),
        save("a.b.png", {60, 40}), save("a.c.bmp", {50, 30}, 1), save("a.bmp", {70, 20}, 2),
        home.write(QStringLiteral("song.mp3"), "x"), save("p.jpg", {33, 44}),
        home.write(QStringLiteral("torn.gif"), "GIF89a"), save("sub/large.png", large, 3), save("sub/a.bmp", {20, 20}),
        home.path() + QStringLiteral("gone.png"), home.write(QStringLiteral("torn.tif"), "II*"),
        save("x.pcd/y.bmp", {25, 35}), save("p.bmp", {31, 42}, 1), save("nodot.png", {12, 13})};
    QFile::copy(entries.last(), home.path() + QStringLiteral("nodot"));
    entries.last() = home.path() + QStringLiteral("nodot");
    // Another way to a folder, to a file, and a file of the run that is named twice.
    QFile::link(home.path() + QStringLiteral("sub"), home.path() + QStringLiteral("way"));
    QFile::link(home.path() + QStringLiteral("p.bmp"), home.path() + QStringLiteral("link.bmp"));
    entries << home.path() + QStringLiteral("way/a.bmp") << home.path() + QStringLiteral("link.bmp") << entries[1]
            << save("last.png", large / 3, 2) << entries[3];
    // Names: as long as a name can be, and one that is no text.
    entries << save(qPrintable(QString(251, u'n') + QStringLiteral(".png")), {9, 8});
    const QByteArray foreign = home.path().toUtf8() + "f\xe9.png";
    if (std::rename(QFile::encodeName(save("foreign.png", {14, 15})), foreign) != 0)
        qFatal("cannot rename");
    entries << pathFromBytes(foreign);
    // Targets: one that is there, one that cannot be replaced, one that is no file.
    home.write(QStringLiteral("large.png"), "an old one");
    home.write(QStringLiteral("last.bmp"), "an old one");
    chmod(QFile::encodeName(home.path() + QStringLiteral("last.bmp")), 0444);
    QDir(home.path()).mkdir(QStringLiteral("nodot.bmp"));
    return entries;
}

tst_conversion_ahead::Outcome tst_conversion_ahead::run(LookAhead lookAhead, const SetUp &setUp, QSize large)
{
    const TemporaryHome home;
    TestClient client;
    client.entries = fill(home, large);
    client.root = home.path();
    client.settings.photoCDSize = 1;
    setUp(client);
    if (!client.settings.useImageFolder)
        client.settings.imageFolder.prepend(home.path());
    PolyImage image;
    Gvbox gvbox;
    client.run(lookAhead, image, gvbox);
    Outcome outcome;
    outcome.tree = treeOf(home.path());
    clear(home);
    outcome.log = client.log;
    // While the run waits it also shows what it waits for.
    outcome.log.removeIf([](const QString &line) { return line.startsWith(u"- Apply"); });
    for (const ConversionOutcome &one : std::as_const(client.outcomes))
        outcome.told << client.local(
            QStringLiteral("%1 > %2: %3 %4").arg(one.entry, one.target).arg(int(one.what)).arg(int(one.loaded)));
    outcome.image = {image.PolyWidth(), image.PolyHeight()};
    outcome.bits = image.PolyBitsPerPixel();
    outcome.gvbox = {gvbox.width(), gvbox.height()};
    outcome.cancelFlag = client.cancelFlag;
    return outcome;
}

void tst_conversion_ahead::compare(const Outcome &ahead, const Outcome &plain)
{
    QCOMPARE(ahead.log, plain.log);
    QCOMPARE(namesIn(ahead.tree), namesIn(plain.tree));
    for (auto it = plain.tree.begin(); it != plain.tree.end(); ++it)
        QVERIFY2(ahead.tree.value(it.key()) == it.value(), qPrintable(it.key() + QStringLiteral(" differs")));
    QCOMPARE(ahead.told, plain.told);
    QCOMPARE(ahead.image, plain.image);
    QCOMPARE(ahead.bits, plain.bits);
    QCOMPARE(ahead.gvbox, plain.gvbox);
    QCOMPARE(ahead.cancelFlag, plain.cancelFlag);
}

void tst_conversion_ahead::theSameComesOut_data()
{
    QTest::addColumn<QVector<int>>("types");
    QTest::addColumn<SetUp>("setUp");
    const auto row = [](const char *name, const QVector<int> &types, const SetUp &setUp) {
        QTest::newRow(name) << types << setUp;
    };
    row("nothing is overwritten", {bmp, png, pngInterlaced}, [](TestClient &) {});
    row("all is overwritten, sources too", {bmp, jpg, png}, [](TestClient &c) { c.settings.overwriteFiles = true; });
    row("asked, yes and no in turns", {bmp, png, pngInterlaced}, [](TestClient &c) {
        c.settings.overwriteFiles = c.settings.promptFirst = true;
        c.answers = {Answer::Yes, Answer::No, Answer::No};
    });
    row("asked, always yes", {bmp, png}, [](TestClient &c) {
        c.settings.overwriteFiles = c.settings.promptFirst = true;
        c.answers = {Answer::Yes};
    });
    row("all operations, diffused", {bmp, pbm}, [](TestClient &c) {
        c.entries = c.entries.mid(0, 9);
        c.settings.overwriteFiles = c.settings.diffuseTwoColor = true;
        c.settings.autoContrast = c.settings.autoLevel = c.settings.grayScale = true;
        c.settings.grayScale256 = c.settings.emboss = true;
    });
    row("reductions", {pgm, png}, [](TestClient &c) {
        c.entries = c.entries.mid(4, 5);
        c.settings.overwriteFiles = c.settings.grayScale256 = c.settings.diffuseTwoColor = true;
    });
    row("convert folders", {bmp, png, pngInterlaced},
        [](TestClient &c) { c.settings.addConvertFolder = c.settings.folderForEachType = true; });
    row("a prefix for a folder", {png, xwd}, [](TestClient &c) {
        c.settings.useImageFolder = false;
        c.settings.imageFolder = QStringLiteral("sub/pre");
        c.settings.overwriteFiles = true;
    });
    row("selected ones", {jp2, png}, [](TestClient &c) {
        c.settings.selectedOnly = true;
        c.selected = {0, 2, 5, 7, 9, 10, 13};
    });
    row("no size of a Photo CD", {bmp, png}, [](TestClient &c) { c.settings.photoCDSize = -1; });
}

void tst_conversion_ahead::theSameComesOut()
{
    QFETCH(QVector<int>, types);
    QFETCH(tst_conversion_ahead::SetUp, setUp);
    const SetUp whole = [&](TestClient &client) {
        for (const int type : types)
            client.settings.types.set(std::size_t(type));
        setUp(client);
    };
    compare(run(LookAhead::AllCores, whole), run(LookAhead::None, whole));
}

void tst_conversion_ahead::theSameComesOutOfACancelAtEachYield()
{
    constexpr QSize small(120, 90);
    int yields = 0;
    const auto setUp = [&](TestClient &client, int at) {
        client.entries = client.entries.mid(1, 7);
        client.settings.types.set(bmp).set(png);
        client.settings.overwriteFiles = true;
        client.cancelAt = at;
        client.atYield = [&](int number) { yields = number; };
    };
    ignore(run(
        LookAhead::None, [&](TestClient &client) { setUp(client, 0); }, small));
    const int all = yields;
    QVERIFY(all > 30);
    for (int at = 1; at <= all; ++at) {
        const SetUp cancelled = [&](TestClient &client) { setUp(client, at); };
        Outcome ahead = run(LookAhead::AllCores, cancelled, small);
        const Outcome plain = run(LookAhead::None, cancelled, small);
        // A run that ends early may have to wait for what is behind it.
        if (ahead.log.size() == plain.log.size() + 1 && ahead.log.last() == QLatin1String("yield"))
            ahead.log.removeLast();
        compare(ahead, plain);
        if (QTest::currentTestFailed())
            return;
    }
}

/// What was done ahead for other options is not used.
void tst_conversion_ahead::optionsThatChangeOnTheWayCount()
{
    const SetUp changing = [](TestClient &client) {
        client.entries = client.entries.mid(0, 9);
        client.settings.types.set(bmp).set(jpg).set(pbm);
        client.settings.overwriteFiles = true;
        client.settings.save.jpegQuality = 90;
        client.atYield = [&client](int number) {
            client.settings.emboss = number % 3 == 0;
            client.settings.grayScale256 = number % 8 == 0;
            client.settings.diffuseTwoColor = number % 7 < 3;
            client.settings.save.jpegQuality = 60 + number % 4;
            client.settings.addConvertFolder = number % 4 == 0;
            client.settings.selectedOnly = number % 11 == 0;
        };
    };
    compare(run(LookAhead::AllCores, changing), run(LookAhead::None, changing));
}

/// Each file is written anew, with other pixels, when the entry two before it is told of.
void tst_conversion_ahead::aFileThatChangesOnTheWayIsReadAtItsTurn()
{
    for (const bool inPlace : {true, false}) {
        const SetUp changing = [inPlace](TestClient &client) {
            client.entries.clear();
            for (int i = 0; i < 12; ++i) {
                client.entries << client.root + QStringLiteral("changing%1.bmp").arg(i);
                rampImage({40, 40}).save(client.entries.last());
            }
            client.settings.types.set(png);
            client.atYield = [&client, inPlace](int number) {
                const QString path = client.entries.value(number / 3 + 2);
                if (path.isEmpty() || number % 3 != 0)
                    return;
                const QString other = client.root + QStringLiteral("other.bmp");
                QImage image(40, 40, QImage::Format_RGB32);
                image.fill(QColor(number, 2 * number, 0));
                image.save(inPlace ? path : other);
                if (!inPlace && rename(QFile::encodeName(other), QFile::encodeName(path)) != 0)
                    qFatal("cannot rename");
            };
        };
        compare(run(LookAhead::AllCores, changing), run(LookAhead::None, changing));
    }
}

/// Room for some of the files only: which ones they are must not depend on what is on its way beside them.
void tst_conversion_ahead::aDiskThatFillsUpTakesTheSameFiles()
{
    const auto runOn = [](const OtherDisk &disk, LookAhead lookAhead) {
        const SetUp setUp = [&](TestClient &client) {
            client.settings.types.set(bmp).set(png).set(jpg);
            client.settings.useImageFolder = false;
            client.settings.addConvertFolder = client.settings.folderForEachType = true;
            client.settings.overwriteFiles = true;
            client.entries += client.entries.mid(0, 6);
            QFile::link(disk.path(), client.root + QStringLiteral("full"));
            client.settings.imageFolder = QStringLiteral("full/");
        };
        Outcome outcome = run(lookAhead, setUp, {400, 300});
        outcome.tree = treeOf(disk.path());
        return outcome;
    };
    const OtherDisk one("900k");
    const OtherDisk other("900k");
    if (!one.hasSize())
        QSKIP("a disk that can be filled needs the right to mount");
    const Outcome plain = runOn(one, LookAhead::None);
    compare(runOn(other, LookAhead::AllCores), plain);
    const auto failed = [](const QString &told) { return told.contains(u": 2 "); };
    QVERIFY(std::any_of(plain.told.begin(), plain.told.end(), failed) && plain.tree.size() > 8);
}

void tst_conversion_ahead::aLimitOfFileSizesIsAFailureLikeOthers()
{
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const SetUp limited = [&](TestClient &client) {
        client.settings.types.set(bmp);
        client.settings.overwriteFiles = true;
        const rlimit small{20'000, before.rlim_max};
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &small), 0);
    };
    Outcome outcomes[2];
    for (const LookAhead lookAhead : {LookAhead::None, LookAhead::AllCores}) {
        outcomes[lookAhead == LookAhead::AllCores] = run(lookAhead, limited, {200, 100});
        QCOMPARE(setrlimit(RLIMIT_FSIZE, &before), 0);
    }
    compare(outcomes[1], outcomes[0]);
    QVERIFY(!outcomes[1].tree.contains(QStringLiteral("large.bmp")));
    QVERIFY(outcomes[1].tree.contains(QString(251, u'n') + QStringLiteral(".bmp")));
}

void tst_conversion_ahead::aTargetThatGoesEndsNothing()
{
    for (const int at : {1, 5, 12, 30}) {
        const SetUp going = [at](TestClient &client) {
            client.settings.types.set(bmp).set(png);
            client.settings.useImageFolder = false;
            client.settings.imageFolder = QStringLiteral("out/");
            QDir(client.root).mkdir(QStringLiteral("out"));
            client.atYield = [&client, at](int number) {
                if (number == at)
                    QDir(client.root + QStringLiteral("out")).removeRecursively();
                if (number == at + 20)
                    QDir(client.root).mkdir(QStringLiteral("out"));
            };
        };
        const Outcome ahead = run(LookAhead::AllCores, going, {120, 90});
        const Outcome plain = run(LookAhead::None, going, {120, 90});
        QCOMPARE(ahead.log, plain.log);
        QCOMPARE(ahead.told.size(), plain.told.size());
        QVERIFY(ahead.tree.contains(QStringLiteral("out/last.png")));
    }
}

void tst_conversion_ahead::whatIsLoadedLastStays()
{
    const TemporaryHome home;
    TestClient client;
    client.entries = fill(home, {90, 70}).mid(1, 2);
    client.settings.types.set(pbm);
    PolyImage image;
    Gvbox gvbox;
    client.run(LookAhead::AllCores, image, gvbox);
    QCOMPARE(QSize(image.PolyWidth(), image.PolyHeight()), QSize(60, 40));
    QCOMPARE(image.PolyBitsPerPixel(), 1);
    QCOMPARE(gvbox.bitsPerPixel(), 24);
    clear(home);
}

void tst_conversion_ahead::manyBadFilesInARow()
{
    const SetUp bad = [](TestClient &client) {
        const QStringList files = client.entries;
        client.entries = {files[1]};
        for (int i = 0; i < 60; ++i)
            client.entries << client.root + QStringLiteral("bad%1.%2").arg(i).arg(QLatin1String(i % 2 ? "jpg" : "gif"));
        client.entries << files[2];
        client.settings.types.set(png).set(bmp);
        client.settings.autoLevel = true;
    };
    compare(run(LookAhead::AllCores, bad), run(LookAhead::None, bad));
}

QTEST_GUILESS_MAIN(tst_conversion_ahead)
#include "tst_conversion_ahead.moc"
