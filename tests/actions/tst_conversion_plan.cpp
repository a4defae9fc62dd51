#include "actions/conversiontest.h"
#include "engine/ops/depth.h"
#include "engine/ops/emboss.h"

#include <QtTest>

using Answer = MessageBox::Answer;

/// The rules of batch conversion and the order of a run, one entry after the other.
class tst_conversion_plan : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { useBuiltModules(); }
    void entriesAreLoadedByTheirKind_data();
    void entriesAreLoadedByTheirKind();
    void operationsKeepTheirOrder();
    void targetsFollowTheFolderRules_data();
    void targetsFollowTheFolderRules();
    void percentsAreRoundedToEven_data();
    void percentsAreRoundedToEven();
    void onlyAnExistingFileIsAskedFor_data();
    void onlyAnExistingFileIsAskedFor();
    void aRunKeepsItsOrder();
    void theFirstReductionNeverDiffuses();
    void anUnreadableEntryGetsThePictureBefore_data();
    void anUnreadableEntryGetsThePictureBefore();
    void preparationsStayInTheControl();
    void aPhotoCdWithoutAChosenSizeIsNotLoaded();
    void aCancelTakesEffectAtTheNextEntry();
    void aCancelOfBeforeEndsTheRunAtItsFirstEntry();
    void nothingToDoIsSoonDone();
    void anEmptyConvertFolderHarmsNothing();
    void theEndOfTheProgramEndsTheRun();

private:
    static Picture read(const QString &path)
    {
        const auto picture = decodeFile(path);
        return picture ? *picture : Picture();
    }
};

namespace {
constexpr int bmp = 0;
constexpr int pbm = 7;
constexpr int png = 10;
constexpr int pngInterlaced = 11;

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(u'|');
}

/// What is called .gif is a PNG: the control goes by the name, the decoder by the content.
QString save(const TemporaryHome &home, const char *name, const QImage &image)
{
    const QString path = home.path() + QLatin1String(name);
    return image.save(path, path.endsWith(u".gif") ? "PNG" : nullptr) ? path : QString();
}
}

void tst_conversion_plan::entriesAreLoadedByTheirKind_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<ConversionLoad>("load");
    QTest::addColumn<int>("size");
    QTest::newRow("photograph") << QStringLiteral("/p/a.JPEG") << ConversionLoad::Poly << 0;
    QTest::newRow("of the other control") << QStringLiteral("/p/a.gif") << ConversionLoad::Picture << -1;
    QTest::newRow("of no known type") << QStringLiteral("/p/a.xyz") << ConversionLoad::Picture << -1;
    QTest::newRow("sound") << QStringLiteral("/p/a.mp3") << ConversionLoad::None << -1;
    QTest::newRow("Photo CD") << QStringLiteral("/p/a.pcd") << ConversionLoad::PhotoCD << 3;
    QTest::newRow("in a folder of that name") << QStringLiteral("/p.Pcd/a.bmp") << ConversionLoad::PhotoCD << 3;
    QTest::newRow("there, of the other control") << QStringLiteral("/p.pcd/a.gif") << ConversionLoad::Picture << -1;
}

void tst_conversion_plan::entriesAreLoadedByTheirKind()
{
    QFETCH(QString, path);
    ConversionOptions options;
    options.photoCDSize = 3;
    QTEST(conversionLoad(path), "load");
    QTEST(conversionSizeIndex(conversionLoad(path), options), "size");
}

void tst_conversion_plan::operationsKeepTheirOrder()
{
    ConversionOptions options;
    QVERIFY(conversionSteps(options, true).isEmpty());
    options.emboss = options.grayScale256 = options.grayScale = options.autoLevel = options.autoContrast = true;
    QString titles;
    for (const ConversionStep &step : conversionSteps(options, true)) {
        titles += operationTitle(step.operation);
        QCOMPARE(step.diffuse, step.operation == ConversionOperation::Colors256);
    }
    QCOMPARE(titles,
        QStringLiteral(" - Apply Auto Contrast - Apply Auto Level - Apply Gray Scale - Apply Change to 256 Colors"
                       " - Apply Emboss"));
    QVERIFY(!conversionSteps(options, false).at(3).diffuse);
}

void tst_conversion_plan::targetsFollowTheFolderRules_data()
{
    QTest::addColumn<QString>("entry");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("folder"); ///< "own": the image's own
    QTest::addColumn<bool>("convert");
    QTest::addColumn<bool>("each");
    QTest::addColumn<QStringList>("expected"); ///< the two folders and the target
    const auto row = [](const char *name, const char *entry, int type, const char *folder, int folders,
                         const char *expected) {
        QTest::newRow(name) << QString::fromUtf8(entry) << type << QString::fromUtf8(folder) << bool(folders & 1)
                            << bool(folders & 2) << words(expected);
    };
    row("beside the file", "/p/sea.jpg", png, "own", 0, "||/p/sea.png");
    row("cut at the first dot", "/p.q/a.b.jpg", bmp, "own", 0, "||/p.q/a.bmp");
    row("nothing before the dot", "/p/.jpg", bmp, "own", 0, "||/p/.bmp");
    row("no dot at all", "/p/sea", bmp, "own", 0, "||/p/sea.bmp");
    row("blanks of the name stay", "/p/ sea .jpg", bmp, "own", 0, "||/p/ sea .bmp");
    row("a folder with its separator", "/p/sea.jpg", png, "/out/", 0, "||/out/sea.png");
    row("without it is a beginning of the name", "/p/sea.jpg", png, "/out", 0, "||/outsea.png");
    row("no folder at all", "/p/sea.jpg", png, "", 0, "||sea.png");
    row("blanks are cut off the whole", "/p/ sea.jpg", png, "", 0, "||sea.png");
    row("convert folder", "/p/sea.jpg", png, "own", 1, "/p/convert/||/p/convert/sea.png");
    row("one for each type", "/p/sea.jpg", pngInterlaced, "own", 3,
        "/p/convert/|/p/convert/PNG_Inter/|/p/convert/PNG_Inter/sea.png");
    row("for each type without it", "/p/sea.jpg", png, "/out", 2, "|/outPNG/|/outPNG/sea.png");
    row("made as it stands, used without blanks", "/p/sea.jpg", png, "/out ", 1, "/out convert/||/outconvert/sea.png");
}

void tst_conversion_plan::targetsFollowTheFolderRules()
{
    QFETCH(QString, entry);
    QFETCH(int, type);
    QFETCH(QString, folder);
    QFETCH(QStringList, expected);
    ConversionOptions options;
    options.useImageFolder = folder == QLatin1String("own");
    options.imageFolder = folder;
    QFETCH(bool, convert);
    QFETCH(bool, each);
    options.addConvertFolder = convert;
    options.folderForEachType = each;
    const ConversionTarget target = conversionTarget(entry, type, options);
    QCOMPARE(QStringList({target.convertFolder, target.typeFolder, target.path}), expected);
}

void tst_conversion_plan::percentsAreRoundedToEven_data()
{
    QTest::addColumn<qint64>("done");
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("percent");
    QTest::newRow("down to even") << qint64(1) << 4 << 12;
    QTest::newRow("up to even") << qint64(3) << 4 << 38;
    QTest::newRow("a tie that binary fractions miss") << qint64(29) << 100 << 14;
    QTest::newRow("all") << qint64(8) << 4 << 100;
    QTest::newRow("never more") << qint64(9) << 4 << 100;
    QTest::newRow("a list that has gone") << qint64(3) << 0 << 100;
    QTest::newRow("a full list") << qint64(32767) << 32767 << 50;
}

void tst_conversion_plan::percentsAreRoundedToEven()
{
    QFETCH(qint64, done);
    QFETCH(int, entries);
    QTEST(conversionPercent(done, entries, 2), "percent");
}

void tst_conversion_plan::onlyAnExistingFileIsAskedFor_data()
{
    QTest::addColumn<bool>("overwrite");
    QTest::addColumn<bool>("prompt");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("yes");
    QTest::addColumn<int>("questions");
    QTest::addColumn<bool>("may");
    QTest::newRow("both off") << false << false << true << true << 0 << false;
    QTest::newRow("the question alone is nothing") << false << true << true << true << 0 << false;
    QTest::newRow("overwrite") << true << false << true << false << 0 << true;
    QTest::newRow("nothing there") << true << true << false << false << 0 << true;
    QTest::newRow("yes") << true << true << true << true << 1 << true;
    QTest::newRow("no") << true << true << true << false << 1 << false;
}

void tst_conversion_plan::onlyAnExistingFileIsAskedFor()
{
    const TemporaryHome home;
    QFETCH(bool, overwrite);
    QFETCH(bool, prompt);
    QFETCH(bool, exists);
    QFETCH(bool, yes);
    const QString path = exists ? home.write(QStringLiteral("a.png"), "x") : home.path() + QStringLiteral("a.png");
    ConversionOptions options;
    options.overwriteFiles = overwrite;
    options.promptFirst = prompt;
    QVector<MessageBox> boxes;
    const bool may = OverWriteInConvert(path, options, [&](const MessageBox &box) {
        boxes << box;
        return yes ? Answer::Yes : Answer::No;
    });
    QTEST(may, "may");
    QTEST(int(boxes.size()), "questions");
    if (!boxes.isEmpty()) {
        MessageBox expected;
        expected.title = QStringLiteral("Overwrite file?");
        expected.text =
            QStringLiteral("The file ") + path + QStringLiteral(" already exists. Do you want to overwrite this file?");
        expected.icon = MessageBox::Icon::Question;
        expected.buttons = MessageBox::Buttons::YesNo;
        expected.defaultAnswer = Answer::No;
        QVERIFY(boxes.first() == expected);
    }
}

void tst_conversion_plan::aRunKeepsItsOrder()
{
    const TemporaryHome home;
    TestClient client({png, bmp});
    client.root = home.path();
    client.entries = {save(home, "a.bmp", rampImage({8, 6})), home.write(QStringLiteral("b.mp3"), "x"),
        save(home, "c.gif", rampImage({8, 6})), save(home, "d.bmp", rampImage({8, 6}))};
    client.selected = {0, 1, 2};
    client.settings.selectedOnly = true;
    client.settings.overwriteFiles = client.settings.promptFirst = true;
    client.settings.grayScale = client.settings.autoContrast = true;
    client.run(LookAhead::None);
    const QString expected = QStringLiteral("yield|12%|yield|A|G|a.bmp > a.bmp|yield|ask The file a.bmp already "
                                            "exists. Do you want to overwrite this file?|"
                                            "yield|25%|"
                                            "yield|38%|yield|yield|A|G|c.gif > c.bmp|yield|"
                                            "yield|50%|yield|"
                                            "yield|62%|yield|A|G|a.bmp > a.png|yield|"
                                            "yield|75%|"
                                            "yield|88%|yield|yield|A|G|c.gif > c.png|yield|"
                                            "yield|100%|yield");
    QString told = client.log.join(u'|');
    told.replace(QLatin1String("- Apply Auto Contrast"), QLatin1String("A"));
    QCOMPARE(told.replace(QLatin1String("- Apply Gray Scale"), QLatin1String("G")), expected);
    QVector<int> outcomes;
    for (const ConversionOutcome &outcome : std::as_const(client.outcomes))
        outcomes << outcome.what;
    using Outcome = ConversionOutcome;
    QCOMPARE(outcomes, (QVector<int>{Outcome::LeftAlone, Outcome::Written, Outcome::Written, Outcome::Written}));
}

/// The flag is set behind the reduction: the first entry still goes by what it is at the start.
void tst_conversion_plan::theFirstReductionNeverDiffuses()
{
    const TemporaryHome home;
    TestClient client({png});
    const QImage image = rampImage({64, 64});
    client.entries = {save(home, "a.bmp", image), save(home, "b.bmp", image), save(home, "c.bmp", image)};
    client.settings.grayScale256 = client.settings.diffuseTwoColor = true;
    client.run(LookAhead::None);
    const auto reduced = [&](bool diffuse) {
        return withReducedColors(Picture::fromImage(image), 256, 8, diffuse)->pixels.convertToFormat(image.format());
    };
    const auto written = [&](const char *name) {
        return read(home.path() + QLatin1String(name)).pixels.convertToFormat(image.format());
    };
    QVERIFY(reduced(false) != reduced(true));
    QCOMPARE(written("a.png"), reduced(false));
    QCOMPARE(written("b.png"), reduced(true));
    QCOMPARE(written("c.png"), reduced(true));
}

void tst_conversion_plan::anUnreadableEntryGetsThePictureBefore_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("embossed"); ///< how often the picture in its place is embossed
    // One control goes on with what it has made of the picture, the other one with what it had loaded.
    QTest::newRow("a photograph") << QStringLiteral("b.jpg") << 2;
    QTest::newRow("of the other control") << QStringLiteral("b.gif") << 1;
    QTest::newRow("that is not there") << QStringLiteral("gone.png") << 2;
}

void tst_conversion_plan::anUnreadableEntryGetsThePictureBefore()
{
    const TemporaryHome home;
    QFETCH(QString, name);
    QFETCH(int, embossed);
    TestClient client({bmp});
    const QImage image = rampImage({40, 30});
    const QString bad = name.startsWith(u"gone") ? home.path() + name : home.write(name, "no picture");
    client.entries = {save(home, "a.png", image), bad};
    client.settings.emboss = true;
    client.run(LookAhead::None);
    Picture expected = Picture::fromImage(image);
    for (int i = 0; i < embossed; ++i)
        expected = *::embossed(expected);
    QCOMPARE(read(home.path() + name.section(u'.', 0, 0) + QStringLiteral(".bmp")).pixels, expected.pixels);
    QVERIFY(!client.outcomes.last().loaded && !client.outcomes.last().reason.isEmpty());
}

/// A format of few colours leaves its black and white in the control, also when nothing is written, and the next format
/// begins with it when it cannot read its first entry.
void tst_conversion_plan::preparationsStayInTheControl()
{
    const TemporaryHome home;
    TestClient client({pbm, png});
    client.entries = {home.write(QStringLiteral("bad.jpg"), "no picture"), save(home, "a.bmp", rampImage({40, 30}))};
    home.write(QStringLiteral("a.pbm"), "stays");
    client.run(LookAhead::None);
    QCOMPARE(read(home.path() + QStringLiteral("bad.png")).info.bitsPerPixel, 1);
    QCOMPARE(read(home.path() + QStringLiteral("a.png")).info.bitsPerPixel, 24);
    // The very first entry had nothing before it.
    QVERIFY(!QFile::exists(home.path() + QStringLiteral("bad.pbm")));
    QCOMPARE(client.outcomes.first().what, ConversionOutcome::NotWritten);
}

void tst_conversion_plan::aPhotoCdWithoutAChosenSizeIsNotLoaded()
{
    const TemporaryHome home;
    QDir(home.path()).mkdir(QStringLiteral("x.pcd"));
    TestClient client({png});
    client.entries = {save(home, "a.bmp", rampImage({40, 30})), save(home, "x.pcd/b.bmp", rampImage({20, 10}))};
    client.run(LookAhead::None);
    QCOMPARE(read(home.path() + QStringLiteral("x.pcd/b.png")).info.size, QSize(40, 30));
    client.settings.photoCDSize = 2;
    client.settings.overwriteFiles = true;
    client.run(LookAhead::None);
    QCOMPARE(read(home.path() + QStringLiteral("x.pcd/b.png")).info.size, QSize(20, 10));
}

void tst_conversion_plan::aCancelTakesEffectAtTheNextEntry()
{
    const TemporaryHome home;
    TestClient client({bmp, png});
    client.entries = {save(home, "a.png", rampImage({8, 6})), save(home, "b.png", rampImage({8, 6}))};
    client.cancelAt = 3; // the last one of the first entry
    client.run(LookAhead::None);
    QVERIFY(QFile::exists(home.path() + QStringLiteral("a.bmp")));
    QVERIFY(!QFile::exists(home.path() + QStringLiteral("b.bmp")));
    QVERIFY(!client.cancelFlag);
    QCOMPARE(client.log.last(), QStringLiteral("50%"));
}

void tst_conversion_plan::aCancelOfBeforeEndsTheRunAtItsFirstEntry()
{
    const TemporaryHome home;
    TestClient client({bmp, png});
    client.entries = {save(home, "a.png", rampImage({8, 6}))};
    client.cancelFlag = true;
    client.run(LookAhead::None);
    QCOMPARE(client.log, words("yield|50%"));
    QVERIFY(!client.cancelFlag);
}

void tst_conversion_plan::nothingToDoIsSoonDone()
{
    TestClient noType({});
    noType.entries = words("/nowhere/a.png");
    noType.run(LookAhead::None);
    QVERIFY(noType.log.isEmpty());
    TestClient noEntry({bmp, png});
    noEntry.run(LookAhead::None);
    QCOMPARE(noEntry.log, words("yield|yield"));
}

/// It counts as missing, and that it cannot be made then is nobody's business.
void tst_conversion_plan::anEmptyConvertFolderHarmsNothing()
{
    const TemporaryHome home;
    QDir(home.path()).mkpath(QStringLiteral("convert/PNG"));
    TestClient client({bmp, png});
    client.entries = {save(home, "a.gif", rampImage({8, 6}))};
    client.settings.addConvertFolder = client.settings.folderForEachType = true;
    client.run(LookAhead::None);
    QVERIFY(QFile::exists(home.path() + QStringLiteral("convert/PNG/a.png")));
    QVERIFY(QFile::exists(home.path() + QStringLiteral("convert/BMP/a.bmp")));
}

void tst_conversion_plan::theEndOfTheProgramEndsTheRun()
{
    const TemporaryHome home;
    for (const LookAhead lookAhead : {LookAhead::None, LookAhead::AllCores}) {
        for (int at = 1; at <= 4; ++at) {
            TestClient client({bmp, png});
            client.entries = {save(home, "a.gif", rampImage({8, 6})), save(home, "b.gif", rampImage({8, 6}))};
            client.atYield = [&](int number) { client.ends = number == at; };
            client.run(lookAhead);
            QCOMPARE(client.yields, at);
            QCOMPARE(QFile::exists(home.path() + QStringLiteral("a.bmp")), false);
        }
    }
}

QTEST_GUILESS_MAIN(tst_conversion_plan)
#include "tst_conversion_plan.moc"
