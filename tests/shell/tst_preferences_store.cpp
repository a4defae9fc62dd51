#include "app/allsettings.h"
#include "shell/preferencestest.h"
#include "ui/guards.h"

namespace {

/// Every control that holds an option: its name, its key and, where a click does not say it, what is put into it.
struct Option
{
    QByteArray control;
    QByteArray key;
    const char *value;
};

QVector<Option> allOptions()
{
    QVector<Option> options{
        {"sldThumbNailSize", "ThumbnailSize", "130"},
        {"chkThumbNailStyle", "ThumbnailStyle", "0"},
        {"optThumbnailCompression(0)", "ThumbnailCompressionLevel", "0"},
        {"optThumbnailCompression(2)", "ThumbnailCompressionLevel", "2"},
        {"chkCacheThumbnails", "CacheThumbnails", "0"},
        {"chkOverWriteThumbnails", "OverWriteCacheThumbnails", "1"},
        {"chkStretch", "PrvStretch", "1"},
        {"txtJPGQuality", "JPEGQuality", "73"},
        {"txtJPG2000Quality", "JPEG2000Quality", "1"},
        {"chkJPGFastSaves", "JPEGFastSave", "1"},
        {"optPhotoCDSize(0)", "PCDSize", "0"},
        {"optPhotoCDSize(4)", "PCDSize", "4"},
        {"chkDiffusePBM", "DiffusePBM", "1"},
        {"chkDiffusePGM", "DiffusePGM", "1"},
        {"chkDiffuseWBMP", "DiffuseWBMP", "1"},
        {"chkDiffuseXBM", "DiffuseXBM", "1"},
        {"chkDiffuseXPM", "DiffuseXPM", "1"},
        {"chkCountFileTypes", "CountFileType", "0"},
        {"chkCountFileSize", "CountFileSize", "0"},
        {"chkCountFileColorDepth", "CountFileColorDepth", "0"},
        {"optDefaultOpenFolder(2)", "DefaultOpenFolder", "2"},
        {"txtImageFolder", "UserChoiceOpenFolder", "/mine/"},
    };
    const auto types = [&options](const char *array, const char *key, int first, int last) {
        for (int i = first; i <= last; ++i) {
            const QByteArray number = QByteArray::number(i);
            options.append({array + ("(" + number + ")"), key + number, "0"});
        }
    };
    types("chkFileType", "IncludeFileType", 1, 29);
    types("chkPolyFileType", "IncludePolyFileType", 1, 21);
    types("chkAVFileType", "IncludeAVFileType", 0, 9);
    return options;
}

/// As a user changes it.
void change(const char *name, const QString &value)
{
    QWidget *widget = control<QWidget>(name);
    if (auto *button = qobject_cast<QAbstractButton *>(widget)) {
        button->click();
    } else if (auto *slider = qobject_cast<QSlider *>(widget)) {
        slider->setValue(value.toInt());
    } else if (auto *text = qobject_cast<QLineEdit *>(widget)) {
        text->setText(value);
        Q_EMIT text->editingFinished();
    }
}

/// What all controls hold.
QStringList held()
{
    QStringList values;
    for (const Option &option : allOptions()) {
        QWidget *widget = control<QWidget>(option.control.constData());
        if (auto *button = qobject_cast<QAbstractButton *>(widget))
            values.append(QString::number(int(button->isChecked())));
        else if (auto *slider = qobject_cast<QSlider *>(widget))
            values.append(QString::number(slider->value()));
        else
            values.append(control<QLineEdit>(option.control.constData())->text());
    }
    values.append(form<frmPreferences>().thumbnailBackColor().name());
    return values;
}

qsizetype storedKeys()
{
    return regSettings().GetAllUserSettings(QStringLiteral("Options")).size();
}
}

class tst_preferences_store : public PreferencesTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { end(); }
    void eachChangeIsStoredAtOnceUnderItsKey_data();
    void eachChangeIsStoredAtOnceUnderItsKey();
    void aProgramThatEndsBadlyKeepsEveryChange();
    void loadingWritesNothing();
    void theSizeSliderStandsOnTensAndWritesOnceForADrag();
    void qualitiesOutOfRangeAreNotStored();
    void theBackColourIsStoredWithRedInTheLowByte();
    void rubbishInTheStoreGivesTheDefaults_data();
    void rubbishInTheStoreGivesTheDefaults();
};

void tst_preferences_store::eachChangeIsStoredAtOnceUnderItsKey_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<QString>("value");
    for (const Option &option : allOptions())
        QTest::newRow(option.control.constData()) << option.key << QString::fromLatin1(option.value);
}

void tst_preferences_store::eachChangeIsStoredAtOnceUnderItsKey()
{
    QFETCH(QByteArray, key);
    QFETCH(QString, value);
    change(QTest::currentDataTag(), value);
    QCOMPARE(stored(key.constData()), value);
    QCOMPARE(storedKeys(), 1);
    auto *box = control<QWidget>(QTest::currentDataTag());
    if (auto *check = qobject_cast<QCheckBox *>(box)) {
        check->toggle(); // as a menu of another window does
        QCOMPARE(stored(key.constData()), QString::number(int(value == QLatin1String("0"))));
    }
}

void tst_preferences_store::aProgramThatEndsBadlyKeepsEveryChange()
{
    for (const Option &option : allOptions())
        change(option.control.constData(), QString::fromLatin1(option.value));
    m_dialogs->answerColor(QColor(10, 20, 30));
    click("lblThumbnailBackgroundColor");
    const QStringList before = held();
    closeWindows();
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    QVERIFY(held() != before);
    LoadAllSettings();
    QCOMPARE(held(), before);
}

void tst_preferences_store::loadingWritesNothing()
{
    const ScopedFlag loading(form<frmPreferences>().LoadingSettings);
    for (const Option &option : allOptions())
        change(option.control.constData(), QString::fromLatin1(option.value));
    QCOMPARE(storedKeys(), 0);
    QVERIFY(control<QLineEdit>("txtImageFolder")->isEnabled());
    QCOMPARE(control<QLabel>("lblThumbNailSizeValue")->text(), QStringLiteral("Size = 130"));
}

void tst_preferences_store::theSizeSliderStandsOnTensAndWritesOnceForADrag()
{
    auto *slider = control<QSlider>("sldThumbNailSize");
    slider->setValue(127);
    QCOMPARE(slider->value(), 130);
    QCOMPARE(stored("ThumbnailSize"), QStringLiteral("130"));
    slider->setSliderDown(true);
    slider->setSliderPosition(182);
    QCOMPARE(control<QLabel>("lblThumbNailSizeValue")->text(), QStringLiteral("Size = 180"));
    QCOMPARE(stored("ThumbnailSize"), QStringLiteral("130"));
    slider->setSliderDown(false);
    QCOMPARE(stored("ThumbnailSize"), QStringLiteral("180"));
    slider->setValue(5);
    QCOMPARE(slider->value(), 60);
}

void tst_preferences_store::qualitiesOutOfRangeAreNotStored()
{
    for (const char *typed : {"55", "0", "", "101", "x"})
        control<QLineEdit>("txtJPGQuality")->setText(QString::fromLatin1(typed));
    QCOMPARE(stored("JPEGQuality"), QStringLiteral("55"));
    control<QLineEdit>("txtJPGQuality")->setText(QStringLiteral("60.9"));
    closeWindows();
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    LoadAllSettings();
    QCOMPARE(control<QLineEdit>("txtJPGQuality")->text(), QStringLiteral("60"));
}

void tst_preferences_store::theBackColourIsStoredWithRedInTheLowByte()
{
    ScriptedDialogs &dialogs = *m_dialogs;
    dialogs.answerColor(QColor(1, 2, 3));
    click("lblThumbnailBackgroundColor");
    QCOMPARE(stored("ThumbnailBackGroundColor"), QString::number(1 + 2 * 256 + 3 * 65536));
    QCOMPARE(form<frmPreferences>().thumbnailBackColor(), QColor(1, 2, 3));
    QCOMPARE(colorFromNumber(1 + 2 * 256 + 3 * 65536), QColor(1, 2, 3));
    dialogs.answerColor(std::nullopt);
    click("lblThumbnailBackgroundColor");
    QCOMPARE(form<frmPreferences>().thumbnailBackColor(), QColor(1, 2, 3));
}

void tst_preferences_store::rubbishInTheStoreGivesTheDefaults_data()
{
    QTest::addColumn<QString>("rubbish");
    QTest::newRow("a word") << QStringLiteral("many");
    QTest::newRow("a number behind a word") << QStringLiteral("e1");
    QTest::newRow("hexadecimal") << QStringLiteral("&HFF");
    QTest::newRow("control characters") << QStringLiteral("\u0001\n\t\"");
    QTest::newRow("another alphabet") << QString(5000, QChar(0x0966));
}

void tst_preferences_store::rubbishInTheStoreGivesTheDefaults()
{
    QFETCH(QString, rubbish);
    const QStringList usual = held();
    closeWindows();
    for (const Option &option : allOptions())
        saveOption(option.key.constData(), rubbish);
    for (const char *key : {"ThumbnailBackGroundColor", "ColorMNU", "ViewMode", "SlideShowInterval", "SystemTrayIcon",
             "LastVisitedFolder", "MediaToolBar0", "SlideShowShuffle"})
        saveOption(key, rubbish);
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    saveOption("UserChoiceOpenFolder", QString());
    for (const char *key : {"ThumbnailSize", "PCDSize", "DefaultOpenFolder"}) // beyond their ranges
        saveOption(key, rubbish.size() % 2 ? QStringLiteral("99999999999999999999") : QStringLiteral("-1"));
    LoadAllSettings();
    QCOMPARE(held(), usual);
    form<frmPreferences>().show();
    form<frmPreferences>().Form_Activate();
    QCOMPARE(control<QLineEdit>("txtImageFolder")->isEnabled(), false);
    QVERIFY(control<QRadioButton>("optThumbnailCompression(1)")->isChecked());
}

QTEST_MAIN(tst_preferences_store)
#include "tst_preferences_store.moc"
