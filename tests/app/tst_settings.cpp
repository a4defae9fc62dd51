#include "app/settings.h"

#include "platform/registrystore.h"
#include "support/support.h"

#include <QtTest>

using Root = RegistryStore::Root;

namespace {
const QString program = QStringLiteral("Lumora V3");
const QString section = QStringLiteral("Options");
const QString path = QStringLiteral("Software\\Tessaly\\Lumora V3\\Options");
const QString key = QStringLiteral("MMVolume");
const QString value = QStringLiteral("70");
const QString fallback = QStringLiteral("100");
}

class tst_settings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void anEmptyStoreGivesTheDefaultsAndStaysEmpty();
    void anEmptyValueGivesTheDefault();
    void settingsStandUnderCompanyProgramAndSection();
    void keysAndSectionsIgnoreCase();
    void theStarIsTheUnnamedValue();
    void emptyNamesSelectTheStandardOnes();
    void theHelpersAlwaysSpeakOfThisProgram();
    void deletingTakesOneValueOrTheSection();
    void machineSettingsAreApart();
    void aStoreThatCannotBeWrittenGivesFalseAndDefaults();
    void storedTruthsAreReadInEveryForm_data();
    void storedTruthsAreReadInEveryForm();
    void storedNumbersAreReadOrRefused_data();
    void storedNumbersAreReadOrRefused();
};

void tst_settings::cleanup()
{
    regSettings() = CRegSettings();
}

void tst_settings::anEmptyStoreGivesTheDefaultsAndStaysEmpty()
{
    const TemporaryHome home;
    QCOMPARE(GetSetting(program, section, key, fallback), fallback);
    QCOMPARE(option("MMVolume", "100"), fallback);
    QVERIFY(regSettings().GetAllUserSettings(section).isEmpty());
    QVERIFY(registryStore().subKeys(Root::CurrentUser, {}).isEmpty());
}

void tst_settings::anEmptyValueGivesTheDefault()
{
    const TemporaryHome home;
    SaveSetting(program, section, key, QString());
    QCOMPARE(regSettings().GetAllUserSettings(section).size(), 1);
    QCOMPARE(GetSetting(program, section, key, fallback), fallback);
    SaveSetting(program, section, key, QStringLiteral(" "));
    QCOMPARE(GetSetting(program, section, key, fallback), QStringLiteral(" "));
}

void tst_settings::settingsStandUnderCompanyProgramAndSection()
{
    const TemporaryHome home;
    saveOption("MMVolume", value);
    QCOMPARE(registryStore().value(Root::CurrentUser, path, key), std::optional(value));
    CRegSettings other;
    other.setCompany(QStringLiteral("Someone"));
    QCOMPARE(other.GetUserSetting(section, key, fallback), fallback);
    QVERIFY(other.SaveUserSetting(QStringLiteral("Pixelon\\MRU"), key, QStringLiteral("5")));
    QVERIFY(registryStore().keyExists(Root::CurrentUser, QStringLiteral("Software\\Someone\\Lumora V3\\Pixelon\\MRU")));
    QCOMPARE(option("MMVolume", "100"), value);
}

void tst_settings::keysAndSectionsIgnoreCase()
{
    const TemporaryHome home;
    SaveSetting(program, section, QStringLiteral("UserThumbNailSize"), QStringLiteral("120"));
    QCOMPARE(GetSetting(program, QStringLiteral("OPTIONS"), QStringLiteral("UserThumbnailSize"), QStringLiteral("80")),
        QStringLiteral("120"));
    SaveSetting(program, section, QStringLiteral("userthumbnailsize"), QStringLiteral("60"));
    QCOMPARE(regSettings().GetAllUserSettings(section).size(), 1);
    // "Toolbar" is not "Toolbars": a name must be whole.
    SaveSetting(
        program, QStringLiteral("Toolbars"), QStringLiteral("FolderBrowserShowCaptions"), QStringLiteral("False"));
    QCOMPARE(GetSetting(
                 program, QStringLiteral("Toolbar"), QStringLiteral("FolderBrowserShowCaptions"), QStringLiteral("-1")),
        QStringLiteral("-1"));
}

void tst_settings::theStarIsTheUnnamedValue()
{
    const TemporaryHome home;
    QVERIFY(regSettings().SaveUserSetting(section, QStringLiteral("*"), value));
    QCOMPARE(registryStore().value(Root::CurrentUser, path, QString()), std::optional(value));
    QCOMPARE(regSettings().GetUserSetting(section, QStringLiteral("*"), fallback), value);
    QVERIFY(regSettings().DeleteUserSetting(section, QStringLiteral("*")));
    QCOMPARE(regSettings().GetUserSetting(section, QStringLiteral("*"), fallback), fallback);
}

void tst_settings::emptyNamesSelectTheStandardOnes()
{
    CRegSettings settings;
    settings.setCompany(QStringLiteral("Someone"));
    settings.setCompany(QString());
    QCOMPARE(settings.Company(), CRegSettings().Company());
    settings.setAppName(QStringLiteral("  Other \n"));
    QCOMPARE(settings.AppName(), QStringLiteral("Other"));
    settings.setAppName(QStringLiteral("  "));
    QCOMPARE(settings.AppName(), program);
}

void tst_settings::theHelpersAlwaysSpeakOfThisProgram()
{
    const TemporaryHome home;
    regSettings().setAppName(QStringLiteral("Other"));
    SaveSetting(QStringLiteral("Third"), section, key, value);
    QCOMPARE(regSettings().AppName(), program);
    QCOMPARE(registryStore().value(Root::CurrentUser, path, key), std::optional(value));
    regSettings().setAppName(QStringLiteral("Other"));
    QCOMPARE(GetSetting(QString(), section, key, fallback), value);
}

void tst_settings::deletingTakesOneValueOrTheSection()
{
    const TemporaryHome home;
    CRegSettings &settings = regSettings();
    saveOption("MMVolume", value);
    saveOption("PCDSize", QStringLiteral("2"));
    SaveSetting(program, QStringLiteral("Toolbars"), key, value);
    QVERIFY(settings.DeleteUserSetting(section, QStringLiteral("mmvolume")));
    QVERIFY2(!settings.DeleteUserSetting(section, key), "what is not there cannot be deleted");
    QCOMPARE(settings.GetAllUserSettings(section).size(), 1);
    QVERIFY(settings.DeleteUserSetting(section, QString()));
    QVERIFY(!settings.DeleteUserSetting(section, QString()));
    QVERIFY2(!settings.DeleteUserSetting(QString(), QString()), "everything at once is refused");
    QCOMPARE(GetSetting(program, QStringLiteral("Toolbars"), key, fallback), value);
}

void tst_settings::machineSettingsAreApart()
{
    const TemporaryHome home;
    SaveMachineSetting(program, section, key, value);
    QCOMPARE(GetMachineSetting(program, section, key, fallback), value);
    QCOMPARE(GetSetting(program, section, key, fallback), fallback);
    QCOMPARE(regSettings().GetAllLocalSettings(section).size(), 1);
    SaveSetting(program, section, key, QStringLiteral("1"));
    QVERIFY(regSettings().DeleteLocalSetting(section, key));
    QCOMPARE(GetMachineSetting(program, section, key, fallback), fallback);
    QCOMPARE(GetSetting(program, section, key, fallback), QStringLiteral("1"));
}

void tst_settings::aStoreThatCannotBeWrittenGivesFalseAndDefaults()
{
    const TemporaryHome home;
    setRegistryStoreFolder(home.write(QStringLiteral("a file"), "x") + QStringLiteral("/below/"));
    QVERIFY(!regSettings().SaveUserSetting(section, key, value));
    SaveSetting(program, section, key, value);
    QCOMPARE(GetSetting(program, section, key, fallback), fallback);
}

void tst_settings::storedTruthsAreReadInEveryForm_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("whenFallbackIsTrue");
    QTest::addColumn<bool>("whenFallbackIsFalse");
    for (const char *text : {"True", "true", "TRUE", " True ", "-1", "1", "2", "0.5"})
        QTest::newRow(text) << QString::fromLatin1(text) << true << true;
    for (const char *text : {"False", "fALSE", "0", "0.0", "-0"})
        QTest::newRow(text) << QString::fromLatin1(text) << false << false;
    for (const char *text : {"", "yes", "True1", "nan", "inf", "0x1"})
        QTest::newRow(qPrintable(QStringLiteral("no truth: ") + QLatin1String(text)))
            << QString::fromLatin1(text) << true << false;
}

void tst_settings::storedTruthsAreReadInEveryForm()
{
    QFETCH(QString, text);
    QTEST(truth(text, true), "whenFallbackIsTrue");
    QTEST(truth(text, false), "whenFallbackIsFalse");
    QCOMPARE(truth(truthText(truth(text, false)), true), truth(text, false));
}

void tst_settings::storedNumbersAreReadOrRefused_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariant>("number");
    QTest::newRow("digits") << QStringLiteral("42") << QVariant(42);
    QTest::newRow("blanks around") << QStringLiteral(" -7 ") << QVariant(-7);
    QTest::newRow("half goes to the even number") << QStringLiteral("2.5") << QVariant(2);
    QTest::newRow("white as a colour") << QStringLiteral("16777215") << QVariant(16777215);
    QTest::newRow("the least") << QStringLiteral("-2147483648") << QVariant(-2147483647 - 1);
    QTest::newRow("too large") << QStringLiteral("2147483648") << QVariant();
    QTest::newRow("far too large") << QStringLiteral("1e300") << QVariant();
    QTest::newRow("a word") << QStringLiteral("large") << QVariant();
    QTest::newRow("a number and a word") << QStringLiteral("5 px") << QVariant();
    QTest::newRow("nothing") << QString() << QVariant();
    QTest::newRow("not a number") << QStringLiteral("nan") << QVariant();
}

void tst_settings::storedNumbersAreReadOrRefused()
{
    QFETCH(QString, text);
    const std::optional<int> read = number(text);
    QTEST(read ? QVariant(*read) : QVariant(), "number");
}

QTEST_GUILESS_MAIN(tst_settings)
#include "tst_settings.moc"
