#include "app/allsettings.h"

#include "app/globals.h"
#include "app/settings.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/registrystore.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

namespace {
/// Every key of the options with its value.
QMap<QString, QString> stored()
{
    QMap<QString, QString> all;
    for (const auto &[name, value] : regSettings().GetAllUserSettings(QStringLiteral("Options")))
        all.insert(name, value);
    return all;
}

QStringList storedOrder()
{
    QStringList names;
    for (const auto &[name, value] : regSettings().GetAllUserSettings(QStringLiteral("Options")))
        names.append(name);
    return names;
}

frmPreferences &preferences()
{
    return form<frmPreferences>();
}

frmMainViewer &viewer()
{
    return form<frmMainViewer>();
}
}

class tst_allsettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void anEmptyStoreLoadsTheDefaultsAndStaysEmpty();
    void whatWasSavedIsLoadedAgain();
    void truthsAreReadInEveryForm_data();
    void truthsAreReadInEveryForm();
    void whatCannotBeReadLeavesTheControl();
    void handlersOfTheThumbnailPageKeepTheirKeys();
    void valuesHaveTheirForms();
    void savingFollowsItsOrder();
    void aSaveIsOneReplacementAndRaisesTheFlag();
    void nothingIsSavedBeforeTheWindowsAreThere();
    void firstStartKeysAreWrittenOnce();

private:
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_allsettings::init()
{
    m_home = std::make_unique<TemporaryHome>();
    globals = {};
    ScriptedDialogs::install();
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    viewer();
    regSettings().DeleteUserSetting(QStringLiteral("Options"), QString());
}

void tst_allsettings::cleanup()
{
    setDialogs(nullptr);
    globals.ProgramExiting = true;
    unload<frmPreferences>();
    unload<frmMainViewer>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void tst_allsettings::anEmptyStoreLoadsTheDefaultsAndStaysEmpty()
{
    viewer().mnuSlideShowViewerOnly->setChecked(false);
    viewer().mnuSlideShowToolbarButton[1]->setChecked(true);
    globals.SlideShowInterval = 9;
    {
        const ScopedFlag quiet(preferences().LoadingSettings);
        preferences().cmdClearAllTypes->click();
        preferences().optThumbnailCompression[2]->setChecked(true);
    }
    LoadAllSettings();
    QVERIFY(preferences().chkFileType[29]->isChecked() && preferences().chkPolyFileType[1]->isChecked());
    QVERIFY(viewer().mnuSlideShowViewerOnly->isChecked() && viewer().mnuSlideShowForwardOrder->isChecked());
    QVERIFY(viewer().mnuSlideShowToolbarButton[0]->isChecked() && !viewer().mnuSlideShowToolbarButton[1]->isChecked());
    QVERIFY(preferences().optThumbnailCompression[1]->isChecked());
    QCOMPARE(globals.SlideShowInterval, 5);
    QCOMPARE(stored(), (QMap<QString, QString>()));
}

void tst_allsettings::whatWasSavedIsLoadedAgain()
{
    preferences().chkStretch->setChecked(true);
    preferences().chkFileType[1]->setChecked(false);
    preferences().chkAVFileType[0]->setChecked(false);
    preferences().chkPolyFileType[21]->setChecked(false);
    preferences().optPhotoCDSize[4]->setChecked(true);
    preferences().optDefaultOpenFolder[2]->setChecked(true);
    preferences().txtImageFolder->setText(QString::fromUtf8("/p/\xc3\xa4 \"b\"/"));
    preferences().txtJPGQuality->setText(QStringLiteral("33"));
    preferences().sldThumbNailSize->setValue(170);
    viewer().mnuSlideShowShuffleOrder->setChecked(true);
    viewer().mnuSlideShowToolbarButton[0]->setChecked(false);
    globals.SlideShowInterval = 17;
    globals.ColorMNU = 3;
    SaveAllSettings();
    const QMap<QString, QString> saved = stored();
    QVERIFY(regSettings().DeleteUserSetting(QStringLiteral("Options"), QString()));
    LoadAllSettings();
    SaveAllSettings();
    QVERIFY(stored() != saved);
    for (auto at = saved.begin(); at != saved.end(); ++at)
        saveOption(at.key().toUtf8().constData(), at.value());
    LoadAllSettings();
    SaveAllSettings();
    QCOMPARE(stored(), saved);
    QCOMPARE(preferences().sldThumbNailSize->value(), 170);
    QCOMPARE(globals.SlideShowInterval, 17);
}

void tst_allsettings::truthsAreReadInEveryForm_data()
{
    QTest::addColumn<bool>("on");
    for (const char *text : {"-1", "1", "True", "true", "2"})
        QTest::newRow(text) << true;
    for (const char *text : {"0", "False", "FALSE"})
        QTest::newRow(text) << false;
}

void tst_allsettings::truthsAreReadInEveryForm()
{
    QFETCH(bool, on);
    const QString text = QString::fromLatin1(QTest::currentDataTag());
    for (const char *key :
        {"PrvStretch", "IncludePolyFileType21", "MediaToolBar1", "SystemTrayIcon", "CacheThumbnails"})
        saveOption(key, text);
    LoadAllSettings();
    QCOMPARE(preferences().chkStretch->isChecked(), on);
    QCOMPARE(preferences().chkPolyFileType[21]->isChecked(), on);
    QCOMPARE(preferences().chkCacheThumbnails->isChecked(), on);
    QCOMPARE(viewer().mnuSlideShowToolbarButton[1]->isChecked(), on);
    QCOMPARE(viewer().mnuOptionsMinimizeSystemTray->isChecked(), on);
}

void tst_allsettings::whatCannotBeReadLeavesTheControl()
{
    preferences().chkStretch->setChecked(true);
    preferences().optPhotoCDSize[3]->setChecked(true);
    preferences().sldThumbNailSize->setValue(150);
    preferences().setThumbnailBackColor(Qt::red);
    preferences().txtJPGQuality->setText(QStringLiteral("44"));
    globals.SlideShowInterval = 12;
    globals.ViewMode = 6;
    for (const char *key : {"PrvStretch", "PCDSize", "ThumbnailSize", "ThumbnailBackGroundColor", "JPEGQuality",
             "SlideShowInterval", "ViewMode", "MediaToolBar0"})
        saveOption(key, QStringLiteral("many"));
    const auto check = [] {
        LoadAllSettings();
        QVERIFY(preferences().chkStretch->isChecked());
        QVERIFY(preferences().optPhotoCDSize[3]->isChecked());
        QCOMPARE(preferences().sldThumbNailSize->value(), 150);
        QCOMPARE(preferences().thumbnailBackColor(), QColor(Qt::red));
        QCOMPARE(preferences().txtJPGQuality->text(), QStringLiteral("44"));
        QCOMPARE(globals.SlideShowInterval, 12);
        QCOMPARE(globals.ViewMode, 6);
        QVERIFY(viewer().mnuSlideShowToolbarButton[0]->isChecked());
    };
    check();
    for (const auto &[key, value] : {std::pair{"PCDSize", "5"}, {"ThumbnailSize", "9000"}, {"SlideShowInterval", "-3"}})
        saveOption(key, QString::fromLatin1(value));
    check();
}

void tst_allsettings::handlersOfTheThumbnailPageKeepTheirKeys()
{
    SaveAllSettings();
    for (const char *key : {"CacheThumbnails", "OverWriteCacheThumbnails", "ThumbnailBackGroundColor",
             "ThumbnailCompressionLevel", "ThumbnailSize", "ThumbnailStyle", "LastVisitedFolder", "MMVolume"})
        QVERIFY2(!stored().contains(QLatin1String(key)), key);
}

void tst_allsettings::valuesHaveTheirForms()
{
    viewer().mnuSlideShowLoopAround->setChecked(true);
    viewer().mnuSlideShowViewerOnly->setChecked(false);
    preferences().chkDiffuseXBM->setChecked(true);
    SaveAllSettings();
    const QMap<QString, QString> all = stored();
    QCOMPARE(all.value(QStringLiteral("MediaShowLoop")), QStringLiteral("True"));
    QCOMPARE(all.value(QStringLiteral("SlideShowViewerOnly")), QStringLiteral("False"));
    QCOMPARE(all.value(QStringLiteral("DiffuseXBM")), QStringLiteral("1"));
    QCOMPARE(all.value(QStringLiteral("DiffuseXPM")), QStringLiteral("0"));
    QCOMPARE(all.value(QStringLiteral("IncludeFileType29")), QStringLiteral("1"));
    QCOMPARE(all.value(QStringLiteral("DefaultOpenFolder")), QStringLiteral("1"));
    QVERIFY(!all.contains(QStringLiteral("IncludeFileType0")) && !all.contains(QStringLiteral("IncludeAVFileType10")));
}

// The store keeps the order of creation, so a first save shows the order of writing.
void tst_allsettings::savingFollowsItsOrder()
{
    SaveAllSettings();
    const QStringList order = storedOrder();
    QCOMPARE(order.size(), 1 + 29 + 10 + 21 + 27);
    const auto at = [&order](const char *key) { return order.indexOf(QLatin1String(key)); };
    const char *const expected[] = {"PrvStretch", "IncludeFileType1", "IncludeFileType29", "IncludeAVFileType0",
        "IncludePolyFileType1", "ViewMode", "SystemTrayIcon", "SlideshowDesktopStretched", "SlideShowReverse",
        "SlideShowForward", "MediaShowLoop", "MediaToolBar0", "MediaToolBar1", "JPEGFastSave", "PCDSize",
        "UserChoiceOpenFolder", "DiffuseXPM", "DiffusePBM"};
    for (std::size_t i = 1; i < std::size(expected); ++i)
        QVERIFY2(at(expected[i]) > at(expected[i - 1]), expected[i]);
}

void tst_allsettings::aSaveIsOneReplacementAndRaisesTheFlag()
{
    const QString folder = m_home->path() + QStringLiteral(".config/lumora/");
    const QString list = AppFolder() + QStringLiteral("Lumora-Viewer.Lsl");
    SaveAllSettings();
    QVERIFY2(!FileExists(list), "an empty list is not saved");
    const auto before = fileStamp(folder + QStringLiteral("user.registry"));
    SaveAllSettings();
    QCOMPARE(fileStamp(folder + QStringLiteral("user.registry")), before);
    QVERIFY(!globals.SavingStandardList);

    // Also when the settings cannot be written, the list is.
    setRegistryStoreFolder(m_home->write(QStringLiteral("a file"), "x") + QStringLiteral("/below/"));
    viewer().lstDisplay->addItem(QStringLiteral("/p/a.jpg"));
    SaveAllSettings();
    QVERIFY(FileExists(list));
}

void tst_allsettings::nothingIsSavedBeforeTheWindowsAreThere()
{
    saveOption("PrvStretch", QStringLiteral("1"));
    globals.ProgramExiting = true;
    unload<frmPreferences>();
    SaveAllSettings();
    QVERIFY(!isLoaded<frmPreferences>());
    QCOMPARE(stored().size(), 1);
    const ScopedFlag loading(preferences().LoadingSettings);
    SaveAllSettings();
    QCOMPARE(stored().size(), 1);
}

void tst_allsettings::firstStartKeysAreWrittenOnce()
{
    writeFirstStartKeys();
    QCOMPARE(stored().size(), 6);
    QCOMPARE(option("MMAudioControls", "none"), QStringLiteral("1"));
    saveOption("MMAudioControls", QStringLiteral("0"));
    writeFirstStartKeys();
    QCOMPARE(option("MMAudioControls", "none"), QStringLiteral("0"));
}

QTEST_MAIN(tst_allsettings)
#include "tst_allsettings.moc"
