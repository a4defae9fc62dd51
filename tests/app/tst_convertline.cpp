#include "app/commandline.h"
#include "app/convertline.h"

#include <QtTest>

/// Reads the command lines of conversions as a start from the folder "/srv/me" gives them.
class tst_convertline : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void everyFormatHasAWordOfItsOwn();
    void optionsSetTheirBoxes();
    void onlyTheOptionAsksForAConversion();
    void wrongLinesAreOneLineOfError_data();
    void wrongLinesAreOneLineOfError();
    void helpNamesEveryOptionAndFormat();
    void theManualTellsWhatTheHelpTells();
};

namespace {

QStringList words(const char *line)
{
    return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

ConvertLine parsed(const char *line)
{
    return parseConvertLine(words(line), QStringLiteral("/srv/me"));
}

}

void tst_convertline::everyFormatHasAWordOfItsOwn()
{
    QSet<QString> all;
    for (int i = 0; i < conversionTypeCount; ++i) {
        const QString word = conversionTypeWord(i);
        all.insert(word);
        QCOMPARE(conversionTypeOfWord(word.toUpper()), i);
        QCOMPARE(conversionTypeOfWord(QLatin1Char('.') + word), i);
        // The plain word of an extension is the format without a variant.
        const QString extension = QLatin1String(saveFormats()[size_t(i)].extension);
        const auto plain = conversionTypeOfWord(extension);
        QVERIFY2(plain && QLatin1String(saveFormats()[size_t(*plain)].extension) == extension, qPrintable(word));
    }
    QCOMPARE(all.size(), conversionTypeCount);
    QCOMPARE(saveFormats()[size_t(*conversionTypeOfWord(QStringLiteral("jpeg")))].typeCode, TypeCode::Jpeg);
    QCOMPARE(saveFormats()[size_t(*conversionTypeOfWord(QStringLiteral("TIFF")))].typeCode, TypeCode::Tiff);
    QCOMPARE(saveFormats()[size_t(*conversionTypeOfWord(QStringLiteral("mbm")))].typeCode, TypeCode::Mbm);
    QCOMPARE(saveFormats()[size_t(*conversionTypeOfWord(QStringLiteral("tif_jpeg")))].typeCode, TypeCode::TiffJpeg);
    QVERIFY(!conversionTypeOfWord(QStringLiteral("gif")) && !conversionTypeOfWord({}));
}

void tst_convertline::optionsSetTheirBoxes()
{
    const ConvertLine plain = parsed("--convert png a.jpg");
    QCOMPARE(plain.error, QString());
    const ConversionOptions &options = plain.command.options;
    QCOMPARE(options.types.to_ulong(), 1UL << *conversionTypeOfWord(QStringLiteral("png")));
    QVERIFY(options.useImageFolder && !options.overwriteFiles && !options.selectedOnly);
    QVERIFY(!options.addConvertFolder && !options.folderForEachType && !options.diffuseTwoColor);
    QVERIFY(!options.autoContrast && !options.autoLevel && !options.grayScale && !options.grayScale256);
    QVERIFY(!options.emboss && !plain.command.recursive && !plain.command.progress);
    QCOMPARE(options.save.jpegQuality, 100);
    QCOMPARE(options.photoCDSize, 2);
    QCOMPARE(plain.command.sources, QStringList{QStringLiteral("/srv/me/a.jpg")});

    const ConvertLine full = parsed("b.png --convert=png,JPG --convert tga --to out --operations Emboss,autolevel "
                                    "--operations=colors256 --diffuse --overwrite --convert-folder --folder-per-type "
                                    "--recursive --progress --jpeg-quality 83 --jpeg2000-quality=40 --photo-cd-size 4 "
                                    "file:///x/c%20d.bmp -- --to");
    QCOMPARE(full.error, QString());
    QCOMPARE(full.command.options.types.count(), size_t(3));
    QVERIFY(!full.command.options.useImageFolder);
    QCOMPARE(full.command.options.imageFolder, QStringLiteral("/srv/me/out/"));
    QVERIFY(full.command.options.emboss && full.command.options.autoLevel && full.command.options.grayScale256);
    QVERIFY(!full.command.options.autoContrast && !full.command.options.grayScale);
    QVERIFY(full.command.options.diffuseTwoColor && full.command.options.overwriteFiles);
    QVERIFY(full.command.options.addConvertFolder && full.command.options.folderForEachType);
    QVERIFY(full.command.recursive && full.command.progress);
    QCOMPARE(full.command.options.save.jpegQuality, 83);
    QCOMPARE(full.command.options.save.jpeg2000Quality, 40.0);
    QCOMPARE(full.command.options.photoCDSize, 4);
    QCOMPARE(full.command.sources,
        QStringList({QStringLiteral("/srv/me/b.png"), QStringLiteral("/x/c d.bmp"), QStringLiteral("/srv/me/--to")}));
    QVERIFY(parsed("--convert png --help").help && parsed("--convert=png -v").version);
}

void tst_convertline::onlyTheOptionAsksForAConversion()
{
    QVERIFY(asksForConversion(words("a.png --convert png")) && asksForConversion(words("--convert=png")));
    QVERIFY(!asksForConversion(words("a.png -- --convert png")) && !asksForConversion(words("--converted --editor")));
}

void tst_convertline::wrongLinesAreOneLineOfError_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("named");
    const auto row = [](const char *name, const char *line, const QStringList &named) {
        QTest::newRow(name) << QString::fromLatin1(line) << named;
    };
    row("an unknown format is told with the known ones", "--convert png,gif a.jpg", words("'gif' bmp tif_jpeg xwd"));
    row("no format at all", "--convert= a.jpg", words("'--convert'"));
    row("a comma too much", "--convert png, a.jpg", words("'' bmp"));
    row("formats are the last word", "a.jpg --convert", words("'--convert'"));
    row("an unknown operation", "--convert png --operations blur a.jpg", words("'blur' autocontrast colors256"));
    row("an unknown option", "--convert png --fast a.jpg", words("'--fast'"));
    row("an option of the window", "--convert png --editor a.jpg", words("'--editor'"));
    row("a flag with a value", "--convert png --overwrite=no a.jpg", words("'--overwrite=no'"));
    row("nothing to convert", "--convert png", words("convert"));
    row("a quality beyond its range", "--convert jpg --jpeg-quality 101 a.png", words("'--jpeg-quality' 100"));
    row("a quality that is no number", "--convert jpg --jpeg-quality best a.png", words("'--jpeg-quality'"));
    row("a size that there is not", "--convert jpg --photo-cd-size 5 a.pcd", words("'--photo-cd-size'"));
    row("a folder without a name", "--convert jpg --to= a.pcd", words("'--to'"));
    row("two formats of one name", "--convert tga,tga_comp a.png", words("'tga' 'tga_comp' --folder-per-type"));
}

void tst_convertline::wrongLinesAreOneLineOfError()
{
    QFETCH(QString, line);
    QFETCH(QStringList, named);
    const QString error = parsed(line.toLatin1().constData()).error;
    QVERIFY(error.startsWith(QStringLiteral("lumora: ")) && !error.contains(QLatin1Char('\n')));
    for (const QString &word : named)
        QVERIFY2(error.contains(word), qPrintable(error));
    QCOMPARE(parsed("--convert tga,tga_comp --folder-per-type a.png").error, QString());
}

void tst_convertline::helpNamesEveryOptionAndFormat()
{
    for (const char *option : {"--convert", "--to", "--operations", "--diffuse", "--jpeg-quality", "--jpeg2000-quality",
             "--photo-cd-size", "--overwrite", "--convert-folder", "--folder-per-type", "--recursive", "--progress"})
        QVERIFY2(helpText().contains(QLatin1String(option)), option);
    for (int i = 0; i < conversionTypeCount; ++i)
        QVERIFY(helpText().contains(QRegularExpression(QStringLiteral("\\b%1\\b").arg(conversionTypeWord(i)))));
    for (const QString &line : helpText().split(QLatin1Char('\n')))
        QVERIFY2(line.size() <= 100, qPrintable(line));
}

void tst_convertline::theManualTellsWhatTheHelpTells()
{
    QFile page(QStringLiteral(LUMORA_MANUALS "/lumora.1"));
    QVERIFY(page.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(page.readAll());
    static const QRegularExpression option(QStringLiteral("--([a-z0-9-]+)"));
    QSet<QString> told;
    for (auto found = option.globalMatch(helpText()); found.hasNext();)
        told.insert(found.next().captured(1));
    QVERIFY(told.size() > 15);
    for (const QString &name : std::as_const(told))
        QVERIFY2(manual.contains(QStringLiteral(".It Fl \\-%1").arg(name))
                || manual.contains(QStringLiteral(" , \\-%1").arg(name)),
            qPrintable(name));
    for (int i = 0; i < conversionTypeCount; ++i) {
        const QRegularExpression item(
            QStringLiteral("^\\.It Cm %1\\b").arg(conversionTypeWord(i)), QRegularExpression::MultilineOption);
        QVERIFY2(manual.contains(item), qPrintable(conversionTypeWord(i)));
    }
}

QTEST_APPLESS_MAIN(tst_convertline)
#include "tst_convertline.moc"
