#include "actions/saveformats.h"
#include "actions/savenames.h"
#include "engine/ops/depth.h"
#include "engine/polyimage.h"
#include "support/support.h"

#include <QSet>
#include <QtTest>

using namespace savestep;

/// The table of output formats and what each of the three writers does before it writes.
class tst_saveformats : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theTableIsWhole();
    void plansAreThoseOfTheirWriter_data();
    void plansAreThoseOfTheirWriter();
    void noIndexNoPlan();
    void theDepthRuleLooksAtTheDepth_data();
    void theDepthRuleLooksAtTheDepth();
    void sixteenColoursAreShownBeforeTheRule();
    void nothingIsWrittenAfterAFailure();
    void namesAreCutAsProposed();
};

namespace {

constexpr int formatCount = 23;

/// Options that differ from each other, so that a mixed-up box shows.
SaveOptions someOptions()
{
    SaveOptions options;
    options.jpegFastSaves = true;
    options.jpegQuality = 73;
    options.jpeg2000Quality = 42;
    options.diffusePBM = true;
    options.diffuseXBM = true;
    return options;
}

QString words(const SavePlan &plan)
{
    const auto truth = [](bool on) { return QLatin1String(on ? "yes" : "no"); };
    QStringList text;
    for (const SaveStep &step : plan.steps) {
        if (const auto *raise = std::get_if<RaiseBits>(&step))
            text << QStringLiteral("raise %1").arg(raise->bits);
        else if (const auto *set = std::get_if<SetBits>(&step))
            text << QStringLiteral("bits %1").arg(set->bits);
        else if (const auto *rule = std::get_if<DepthRule>(&step))
            text << QStringLiteral("rule %1 %2").arg(rule->bits).arg(rule->colors);
        else if (const auto *reduce = std::get_if<ReduceColors>(&step))
            text << QStringLiteral("colors %1 %2 %3").arg(reduce->colors).arg(reduce->bits).arg(truth(reduce->diffuse));
        else if (const auto *to = std::get_if<ReduceToBits>(&step))
            text << QStringLiteral("quantise %1 %2").arg(to->bits).arg(truth(to->diffuse));
        else if (std::holds_alternative<RefreshScreen>(step))
            text << QStringLiteral("refresh");
        else if (const auto *jpeg = std::get_if<JpegOptions>(&step))
            text << QStringLiteral("jpeg %1 %2").arg(truth(jpeg->fastSave)).arg(jpeg->quality);
        else if (const auto *jp2 = std::get_if<Jpeg2000Option>(&step))
            text << QStringLiteral("jp2 %1").arg(jp2->quality);
    }
    text << QStringLiteral("save %1 %2").arg(int(plan.typeCode)).arg(truth(plan.diffuse));
    return text.join(QLatin1String(", "));
}

}

void tst_saveformats::theTableIsWhole()
{
    QCOMPARE(saveFormats().size(), size_t(formatCount));
    // Each filter stands for one format, and writes files of its pattern.
    const QStringList filter = saveDialogFilter().split(u'|');
    QCOMPARE(filter.size(), 2 * saveDialogFilterCount + 1);
    QSet<int> dialogIndices;
    QSet<int> typeCodes;
    QSet<QString> folders;
    for (const SaveFormat &format : saveFormats()) {
        const QLatin1String extension(format.extension);
        QVERIFY(QLatin1String(format.batchLabel).startsWith(QLatin1String("(%1)").arg(extension), Qt::CaseInsensitive)
            || QString::fromLatin1(format.batchLabel).startsWith(u'(' + QString(extension).toUpper() + u')'));
        typeCodes.insert(int(format.typeCode));
        folders.insert(QLatin1String(format.batchFolder));
        for (const int index : format.dialogIndices) {
            if (index == 0)
                continue;
            QVERIFY(!dialogIndices.contains(index));
            dialogIndices.insert(index);
            QCOMPARE(filter.value(2 * index - 1), u'*' + QString(extension).toUpper());
        }
    }
    QCOMPARE(dialogIndices.size(), saveDialogFilterCount);
    QCOMPARE(typeCodes.size(), formatCount);
    QCOMPARE(folders.size(), formatCount);
    // Blanks and misspellings that files and scripts of users know.
    QCOMPARE(QLatin1String(saveFormats()[0].batchLabel), QLatin1String("(.BMP) Microsoft WIndows Bitmap"));
    QCOMPARE(QLatin1String(saveFormats()[5].batchLabel), QLatin1String("(.MBM) Psion MultiBitMap Compressed Format "));
    QCOMPARE(QLatin1String(saveFormats()[11].batchLabel), QLatin1String("(.PNG) PNG Format  - Interlaced"));
    QCOMPARE(QLatin1String(saveFormats()[18].batchFolder), QLatin1String("TIF_JPEG/"));
    QCOMPARE(filter.value(40), QStringLiteral("XPM Format (*.XMP)"));
}

void tst_saveformats::plansAreThoseOfTheirWriter_data()
{
    using Maker = std::optional<SavePlan> (*)(int, const SaveOptions &);
    QTest::addColumn<QString>("plan");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, Maker maker, int index, const char *expected) {
        const auto plan = maker(index, someOptions());
        QTest::newRow(name) << (plan ? words(*plan) : QStringLiteral("none")) << QString::fromLatin1(expected);
    };
    constexpr Maker viewer = mainViewerSavePlan;
    constexpr Maker batch = batchSavePlan;
    constexpr Maker editor = editorSavePlan;
    row("viewer BMP", viewer, 1, "raise 24, save 2 no");
    row("viewer BMP 256", viewer, 2, "rule 8 256, save 2 no");
    row("viewer BMP 16", viewer, 3, "quantise 4 yes, rule 4 16, save 2 no");
    row("viewer JPEG", viewer, 4, "jpeg yes 73, save 4 no");
    row("viewer JPEG 2000", viewer, 5, "jp2 0.42, save 56 no");
    row("viewer DCX", viewer, 6, "save 3 no");
    row("viewer MBM compressed", viewer, 8, "save 51 no");
    row("viewer MBM", viewer, 9, "save 50 no");
    row("viewer PBM", viewer, 10, "save 7 yes");
    row("viewer PGM", viewer, 12, "save 9 no");
    row("viewer PNG", viewer, 13, "save 11 no");
    row("viewer TIFF", viewer, 18, "save 18 no");
    row("viewer WBMP", viewer, 19, "save 41 no");
    row("viewer XBM, whose box has no effect", viewer, 20, "save 43 no");
    row("viewer XPM", viewer, 21, "save 44 no");
    row("viewer XWD", viewer, 22, "save 45 no");
    row("batch BMP", batch, 0, "save 2 no");
    row("batch JPEG 2000", batch, 3, "jp2 0.42, save 56 no");
    row("batch JPEG", batch, 4, "jpeg yes 73, save 4 no");
    row("batch PBM, whose own box does not count", batch, 7, "colors 2 1 no, bits 1, save 7 no");
    row("batch PGM", batch, 9, "colors 256 8 no, bits 8, save 9 no");
    row("batch PNG interlaced", batch, 11, "save 12 no");
    row("batch TGA compressed", batch, 16, "save 17 no");
    row("batch TIFF JPEG", batch, 18, "save 23 no");
    row("batch XBM", batch, 20, "colors 2 1 no, bits 1, save 43 no");
    row("batch XWD", batch, 22, "save 45 no");
    row("editor BMP", editor, 1, "raise 24, save 2 no");
    row("editor BMP 256", editor, 2, "rule 8 256, save 2 no");
    row("editor BMP 16", editor, 3, "quantise 4 yes, refresh, rule 4 16, save 2 no");
    row("editor JPEG", editor, 4, "jpeg yes 73, save 4 no");
    row("editor PBM", editor, 10, "colors 2 1 yes, bits 1, save 7 no");
    row("editor PGM", editor, 12, "colors 2 1 no, bits 1, save 9 no");
    row("editor WBMP", editor, 19, "colors 2 1 no, bits 1, save 41 no");
    row("editor XBM", editor, 20, "colors 2 1 yes, bits 1, save 43 no");
    row("editor XPM", editor, 21, "colors 2 1 no, bits 1, save 44 no");
    row("editor PSD", editor, 15, "save 31 no");
    SaveOptions other;
    other.diffusePGM = other.diffuseTwoColor = other.diffuseXPM = true;
    QTest::newRow("viewer PGM diffused") << words(*viewer(12, other)) << QStringLiteral("save 9 yes");
    QTest::newRow("batch XPM diffused") << words(*batch(21, other))
                                        << QStringLiteral("colors 2 1 yes, bits 1, save 44 no");
    QTest::newRow("batch PGM diffused") << words(*batch(9, other))
                                        << QStringLiteral("colors 256 8 yes, bits 8, save 9 no");
    QTest::newRow("editor PGM diffused") << words(*editor(12, other))
                                         << QStringLiteral("colors 2 1 yes, bits 1, save 9 no");
    QTest::newRow("editor XPM diffused") << words(*editor(21, other))
                                         << QStringLiteral("colors 2 1 yes, bits 1, save 44 no");
}

void tst_saveformats::plansAreThoseOfTheirWriter()
{
    QFETCH(QString, plan);
    QTEST(plan, "expected");
}

void tst_saveformats::noIndexNoPlan()
{
    for (const int index : {-1, 0, 23, 1000})
        QVERIFY(!mainViewerSavePlan(index, {}) && !editorSavePlan(index, {}));
    for (const int index : {-1, 23, 1000})
        QVERIFY(!batchSavePlan(index, {}));
    for (int index = 0; index < formatCount; ++index)
        QCOMPARE(batchSavePlan(index, {})->typeCode, saveFormats()[size_t(index)].typeCode);
}

void tst_saveformats::theDepthRuleLooksAtTheDepth_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::addColumn<bool>("sameColours");
    const auto row = [](const char *name, int index, int before, int after, bool same) {
        QTest::newRow(name) << index << before << after << same;
    };
    row("24 bits stay", 1, 24, 24, true);
    row("32 bits stay", 1, 32, 32, true);
    row("8 bits go up to 24", 1, 8, 24, true);
    row("256 colours: 8 bits stay", 2, 8, 8, true);
    row("256 colours: 4 bits are raised", 2, 4, 8, true);
    row("256 colours: 24 bits are reduced", 2, 24, 8, false);
    row("16 colours: 1 bit is raised", 3, 1, 4, true);
    row("16 colours: 4 bits stay", 3, 4, 4, true);
    row("16 colours: 8 bits are reduced", 3, 8, 4, false);
}

void tst_saveformats::theDepthRuleLooksAtTheDepth()
{
    QFETCH(int, index);
    QFETCH(int, before);
    Picture picture = Picture::fromImage(rampImage({64, 48}));
    if (before <= 8)
        picture = *withReducedBits(picture, before, false);
    picture.info.bitsPerPixel = before;
    PolyImage image;
    image.setPolyPicture(LoadedPicture::fromPicture(picture));
    QVERIFY(prepareForSave(*mainViewerSavePlan(index, {}), image));
    QTEST(image.PolyBitsPerPixel(), "after");
    const auto seen = [](const Picture &one) { return one.pixels.convertToFormat(QImage::Format_RGB32); };
    QTEST(seen(image.PolyPicture()) == seen(picture), "sameColours");
}

void tst_saveformats::sixteenColoursAreShownBeforeTheRule()
{
    PolyImage image;
    image.setPolyPicture(LoadedPicture::fromPicture(Picture::fromImage(rampImage({64, 48}))));
    int shownAt = 0;
    QVERIFY(prepareForSave(*editorSavePlan(3, {}), image, [&] { shownAt = image.PolyBitsPerPixel(); }));
    QCOMPARE(shownAt, 4);
}

void tst_saveformats::nothingIsWrittenAfterAFailure()
{
    const TemporaryHome home;
    const QString path = home.path() + QStringLiteral("out.bmp");
    PolyImage empty;
    QVERIFY(!saveByPlan(*mainViewerSavePlan(3, {}), empty, path));
    QVERIFY(!empty.PolyLastError().isEmpty());
    QVERIFY(!QFile::exists(path));
}

void tst_saveformats::namesAreCutAsProposed()
{
    QCOMPARE(nameBeforeFirstDot(QStringLiteral("a.b.jpg")), std::optional(QStringLiteral("a")));
    QCOMPARE(nameBeforeFirstDot(QStringLiteral(" sea at night .jpg")), std::optional(QStringLiteral("sea at night")));
    QCOMPARE(nameBeforeFirstDot(QStringLiteral(".hidden")), std::optional(QString()));
    QVERIFY(!nameBeforeFirstDot(QStringLiteral("sea")));
    QVERIFY(!nameBeforeFirstDot(QString()));
    QCOMPARE(thumbnailName(QStringLiteral("sea.jpg")), QStringLiteral("tbn_sea.BMP"));
    QCOMPARE(thumbnailName(QStringLiteral("sea.jpeg")), QStringLiteral("tbn_sea.jBMP"));
    QCOMPARE(thumbnailName(QStringLiteral(" sea.jpg ")), QStringLiteral("tbn_sea.BMP"));
    QCOMPARE(thumbnailName(QStringLiteral("ab")), QStringLiteral("tbn_BMP"));
}

QTEST_GUILESS_MAIN(tst_saveformats)
#include "tst_saveformats.moc"
