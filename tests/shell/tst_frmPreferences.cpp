#include "shell/frmPreferences.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/settings.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/background.h"

#include <QtTest>
#include <QtWidgets>

namespace {
template <class T> T *control(const char *name)
{
    T *found = form<frmPreferences>().findChild<T *>(QString::fromLatin1(name));
    if (!found)
        qFatal("no control %s", name);
    return found;
}

QString stored(const char *key)
{
    return option(key, "none");
}

QStringList checkedTypes()
{
    QStringList types;
    for (QCheckBox *box : form<frmPreferences>().findChildren<QCheckBox *>()) {
        const QString array = box->objectName().section(QLatin1Char('('), 0, 0);
        if (box->isChecked() && (array == QLatin1String("chkFileType") || array == QLatin1String("chkPolyFileType")))
            types.append(box->text().mid(1));
    }
    types.sort();
    return types;
}

void leave(const char *name)
{
    QFocusEvent out(QEvent::FocusOut);
    QCoreApplication::sendEvent(control<QLineEdit>(name), &out);
}

void click(const char *name)
{
    control<QAbstractButton>(name)->click();
}
}

class tst_frmPreferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aFirstStartShowsTheDefaultsAndStoresNothing();
    void boxesWriteTheirKeysAtOnce_data();
    void boxesWriteTheirKeysAtOnce();
    void loadingWritesNothing();
    void buttonsOfAGroupWriteTheirIndex();
    void theSizeSliderStandsOnTensAndWritesOnceForADrag();
    void qualityFieldsCorrectThemselvesOnLeaving_data();
    void qualityFieldsCorrectThemselvesOnLeaving();
    void anEmptyQualityBecomesFullAtActivation();
    void theSpinControlWritesTheText();
    void presetsClearFirst_data();
    void presetsClearFirst();
    void bulkButtonsKeepToTheirTypes();
    void activationShowsTheLastFolder();
    void browsingStoresAFolderAndCancelNone();
    void theBackColourIsStoredWithRedInTheLowByte();
    void theSampleShowsThePictureOnItsGround();
    void closingHidesUnlessTheProgramEnds_data();
    void closingHidesUnlessTheProgramEnds();
    void mnemonicsOfAPageDiffer();
    void everyControlHasANameToBeRead();
    void textsOnTheGradientCanBeRead_data();
    void textsOnTheGradientCanBeRead();

private:
    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_frmPreferences::init()
{
    m_home = std::make_unique<TemporaryHome>();
    globals = {};
    m_dialogs = &ScriptedDialogs::install();
    form<frmPreferences>();
}

void tst_frmPreferences::cleanup()
{
    setDialogs(nullptr);
    globals.ProgramExiting = true;
    unload<frmPreferences>();
    unload<checkjpg>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::setPalette(QPalette());
}

void tst_frmPreferences::aFirstStartShowsTheDefaultsAndStoresNothing()
{
    QVERIFY(control<QCheckBox>("chkFileType(29)")->isChecked() && control<QCheckBox>("chkAVFileType(0)")->isChecked());
    QVERIFY(control<QCheckBox>("chkCacheThumbnails")->isChecked());
    QVERIFY(!control<QCheckBox>("chkOverWriteThumbnails")->isChecked());
    QVERIFY(control<QRadioButton>("optThumbnailCompression(1)")->isChecked());
    QVERIFY(control<QRadioButton>("optPhotoCDSize(2)")->isChecked());
    QVERIFY(control<QRadioButton>("optDefaultOpenFolder(1)")->isChecked());
    QCOMPARE(control<QSlider>("sldThumbNailSize")->value(), 100);
    QVERIFY(!control<QLineEdit>("txtImageFolder")->isEnabled() && !control<QPushButton>("cmdBrowse")->isEnabled());
    QVERIFY(regSettings().GetAllUserSettings(QStringLiteral("Options")).isEmpty());
}

void tst_frmPreferences::boxesWriteTheirKeysAtOnce_data()
{
    QTest::addColumn<QString>("key");
    const auto row = [](const char *box, const char *key) { QTest::newRow(box) << QString::fromLatin1(key); };
    row("chkThumbNailStyle", "ThumbnailStyle");
    row("chkCacheThumbnails", "CacheThumbnails");
    row("chkOverWriteThumbnails", "OverWriteCacheThumbnails");
    row("chkJPGFastSaves", "JPEGFastSave");
    row("chkDiffusePBM", "DiffusePBM");
    row("chkDiffuseXPM", "DiffuseXPM");
}

void tst_frmPreferences::boxesWriteTheirKeysAtOnce()
{
    QFETCH(QString, key);
    auto *box = control<QCheckBox>(QTest::currentDataTag());
    const bool before = box->isChecked();
    box->click();
    QCOMPARE(stored(qPrintable(key)), QString::number(!before));
    box->setChecked(before); // as a menu of another window does
    QCOMPARE(stored(qPrintable(key)), QString::number(before));
    QCOMPARE(regSettings().GetAllUserSettings(QStringLiteral("Options")).size(), 1);
}

void tst_frmPreferences::loadingWritesNothing()
{
    form<frmPreferences>().LoadingSettings = true;
    click("chkCacheThumbnails");
    click("optThumbnailCompression(2)");
    click("optDefaultOpenFolder(2)");
    control<QSlider>("sldThumbNailSize")->setValue(140);
    QVERIFY(regSettings().GetAllUserSettings(QStringLiteral("Options")).isEmpty());
    QVERIFY(control<QLineEdit>("txtImageFolder")->isEnabled());
    QCOMPARE(control<QLabel>("lblThumbNailSizeValue")->text(), QStringLiteral("Size = 140"));
}

void tst_frmPreferences::buttonsOfAGroupWriteTheirIndex()
{
    click("optThumbnailCompression(2)");
    QCOMPARE(stored("ThumbnailCompressionLevel"), QStringLiteral("2"));
    click("optThumbnailCompression(0)");
    QCOMPARE(stored("ThumbnailCompressionLevel"), QStringLiteral("0"));
    click("optDefaultOpenFolder(2)");
    QCOMPARE(stored("DefaultOpenFolder"), QStringLiteral("2"));
    click("optDefaultOpenFolder(1)");
    QCOMPARE(stored("DefaultOpenFolder"), QStringLiteral("1"));
    click("optPhotoCDSize(4)");
    QCOMPARE(stored("PCDSize"), QStringLiteral("none"));
}

void tst_frmPreferences::theSizeSliderStandsOnTensAndWritesOnceForADrag()
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

void tst_frmPreferences::qualityFieldsCorrectThemselvesOnLeaving_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("spin");
    QTest::addColumn<QString>("left");
    const auto row = [](const char *sentence, const char *typed, int spin, const char *left) {
        QTest::newRow(sentence) << QString::fromLatin1(typed) << spin << QString::fromLatin1(left);
    };
    row("a number of the range", "73", 73, "73");
    row("zero leaves the spin control alone", "0", 40, "1");
    row("150 leaves it alone too", "150", 40, "100");
    row("a fraction gives its whole part", "55.9", 55, "55.9");
    row("just above the range", "100.5", 40, "100");
    row("just below it", "0.99", 40, "1");
    row("a word is no number", "best", 40, "1");
    row("a number before a word", "60x", 60, "60x");
    row("below zero", "-5", 40, "1");
    row("nothing", "", 40, "1");
}

void tst_frmPreferences::qualityFieldsCorrectThemselvesOnLeaving()
{
    QFETCH(QString, typed);
    const std::pair<const char *, const char *> fields[] = {
        {"txtJPGQuality", "udJPGQuality"}, {"txtJPG2000Quality", "udJPG2000Quality"}};
    for (const auto &[text, spin] : fields) {
        control<QLineEdit>(text)->setText(QStringLiteral("40"));
        control<QLineEdit>(text)->setText(typed);
        QTEST(control<QSpinBox>(spin)->value(), "spin");
        QCOMPARE(control<QLineEdit>(text)->text(), typed);
        leave(text);
        QTEST(control<QLineEdit>(text)->text(), "left");
    }
    control<QLineEdit>("txtJPGQuality")->setText(typed);
    click("cmdOK"); // Enter presses it while the focus stays in the field
    QTEST(control<QLineEdit>("txtJPGQuality")->text(), "left");
}

void tst_frmPreferences::anEmptyQualityBecomesFullAtActivation()
{
    control<QLineEdit>("txtJPGQuality")->clear();
    control<QLineEdit>("txtJPG2000Quality")->setText(QStringLiteral("7"));
    form<frmPreferences>().Form_Activate();
    QCOMPARE(control<QLineEdit>("txtJPGQuality")->text(), QStringLiteral("100"));
    QCOMPARE(control<QLineEdit>("txtJPG2000Quality")->text(), QStringLiteral("7"));
}

void tst_frmPreferences::theSpinControlWritesTheText()
{
    control<QLineEdit>("txtJPGQuality")->setText(QStringLiteral("50"));
    control<QSpinBox>("udJPGQuality")->stepUp();
    QCOMPARE(control<QLineEdit>("txtJPGQuality")->text(), QStringLiteral("51"));
    QCOMPARE(control<QLineEdit>("txtJPG2000Quality")->text(), QStringLiteral("100"));
}

void tst_frmPreferences::presetsClearFirst_data()
{
    QTest::addColumn<QString>("types");
    const auto row = [](const char *button, const char *types) { QTest::newRow(button) << QString::fromLatin1(types); };
    row("cmdMicrosoftFormats", "BMP CUR DIB EMF GIF ICO JPG MSP RLE WMF");
    row("cmdWebFormats", "GIF JPG PNG");
    row("cmdPortableFormats", "PBM PGM PNG PNM PPM");
    row("cmdDigitalCameraFormats", "CRW DCR FPX JPG MRW NEF ORF PMP RAF THM TIF");
    row("cmdClearAllTypes", "");
}

void tst_frmPreferences::presetsClearFirst()
{
    QFETCH(QString, types);
    globals.PictureFilePattern = QStringLiteral("as it was");
    click(QTest::currentDataTag());
    QCOMPARE(checkedTypes().join(QLatin1Char(' ')), types);
    QVERIFY2(control<QCheckBox>("chkAVFileType(3)")->isChecked(), "audio and video stay as they are");
    QCOMPARE(globals.PictureFilePattern, QStringLiteral("as it was"));
    QVERIFY(regSettings().GetAllUserSettings(QStringLiteral("Options")).isEmpty());
}

void tst_frmPreferences::bulkButtonsKeepToTheirTypes()
{
    click("cmdWebFormats");
    click("cmdInvertSelections");
    QCOMPARE(checkedTypes().size(), 29 + 21 - 3);
    QVERIFY(!checkedTypes().contains(QStringLiteral("GIF")));
    click("cmdSelectAllTypes");
    QCOMPARE(checkedTypes().size(), 50);
    click("cmdClearAllAudioTypesCommand3");
    control<QCheckBox>("chkAVFileType(0)")->setChecked(true);
    click("cmdInvertSelectionsAudio");
    QVERIFY(
        !control<QCheckBox>("chkAVFileType(0)")->isChecked() && control<QCheckBox>("chkAVFileType(9)")->isChecked());
    click("cmdSelectAllAudioTypes");
    QVERIFY(control<QCheckBox>("chkAVFileType(0)")->isChecked());
    QCOMPARE(checkedTypes().size(), 50);
}

void tst_frmPreferences::activationShowsTheLastFolder()
{
    saveOption("LastVisitedFolder", QStringLiteral("/last/"));
    saveOption("UserChoiceOpenFolder", QStringLiteral("/chosen/"));
    saveOption("ThumbnailCompressionLevel", QStringLiteral("0"));
    form<frmPreferences>().Form_Activate();
    QCOMPARE(control<QLineEdit>("txtImageFolder")->text(), QStringLiteral("/last/"));
    QCOMPARE(stored("UserChoiceOpenFolder"), QStringLiteral("/last/"));
    QVERIFY(control<QRadioButton>("optThumbnailCompression(0)")->isChecked());
    QCOMPARE(stored("DefaultOpenFolder"), QStringLiteral("none"));

    click("optDefaultOpenFolder(2)");
    control<QLineEdit>("txtImageFolder")->setText(QStringLiteral("/mine/"));
    form<frmPreferences>().Form_Activate();
    QCOMPARE(control<QLineEdit>("txtImageFolder")->text(), QStringLiteral("/mine/"));
    QCOMPARE(stored("UserChoiceOpenFolder"), QStringLiteral("/mine/"));

    saveOption("ThumbnailCompressionLevel", QStringLiteral("7"));
    saveOption("DefaultOpenFolder", QStringLiteral("often"));
    form<frmPreferences>().Form_Activate();
    QVERIFY(control<QRadioButton>("optThumbnailCompression(0)")->isChecked());
    QVERIFY(control<QRadioButton>("optDefaultOpenFolder(2)")->isChecked());
}

void tst_frmPreferences::browsingStoresAFolderAndCancelNone()
{
    ScriptedDialogs &dialogs = ScriptedDialogs::install();
    click("optDefaultOpenFolder(2)");
    dialogs.answerText(QStringLiteral("/pictures"));
    click("cmdBrowse");
    QCOMPARE(control<QLineEdit>("txtImageFolder")->text(), QStringLiteral("/pictures/"));
    QCOMPARE(stored("UserChoiceOpenFolder"), QStringLiteral("/pictures/"));
    dialogs.answerText(std::nullopt);
    click("cmdBrowse");
    QCOMPARE(stored("UserChoiceOpenFolder"), QStringLiteral("/pictures/"));
}

void tst_frmPreferences::theBackColourIsStoredWithRedInTheLowByte()
{
    ScriptedDialogs &dialogs = ScriptedDialogs::install();
    dialogs.answerColor(QColor(1, 2, 3));
    click("lblThumbnailBackgroundColor");
    QCOMPARE(stored("ThumbnailBackGroundColor"), QString::number(1 + 2 * 256 + 3 * 65536));
    QCOMPARE(form<frmPreferences>().thumbnailBackColor(), QColor(1, 2, 3));
    QCOMPARE(colorFromNumber(1 + 2 * 256 + 3 * 65536), QColor(1, 2, 3));
    dialogs.answerColor(std::nullopt);
    click("lblThumbnailBackgroundColor");
    QCOMPARE(form<frmPreferences>().thumbnailBackColor(), QColor(1, 2, 3));
}

void tst_frmPreferences::theSampleShowsThePictureOnItsGround()
{
    QImage red(400, 100, QImage::Format_RGB32);
    red.fill(Qt::red);
    control<QCheckBox>("chkThumbNailStyle")->setChecked(false);
    form<checkjpg>().Gvbox2.setPicture(LoadedPicture::fromPicture(Picture::fromImage(red)));
    form<frmPreferences>().setThumbnailBackColor(Qt::green);
    form<frmPreferences>().Form_Activate();
    const auto sample = [] { return control<QLabel>("Image1")->pixmap(Qt::ReturnByValue).toImage(); };
    QCOMPARE(sample().size(), QSize(100, 100));
    QCOMPARE(sample().pixelColor(50, 50), QColor(Qt::red));
    QCOMPARE(sample().pixelColor(50, 35), QColor(Qt::green));
    QCOMPARE(sample().pixelColor(0, 0), QColor(Qt::green));
    control<QSlider>("sldThumbNailSize")->setValue(200);
    QCOMPARE(sample().size(), QSize(200, 200));
    control<QCheckBox>("chkThumbNailStyle")->setChecked(true);
    QVERIFY2(sample().pixelColor(0, 0) != QColor(Qt::green), "a frame stands around it");

    // While a song is shown the picture of before stays.
    QImage blue(10, 10, QImage::Format_RGB32);
    blue.fill(Qt::blue);
    form<checkjpg>().Gvbox2.setPicture(LoadedPicture::fromPicture(Picture::fromImage(blue)));
    globals.CurrentMediaFile = QStringLiteral("/a.mp3");
    form<frmPreferences>().Form_Activate();
    QCOMPARE(sample().pixelColor(100, 100), QColor(Qt::red));
    globals.CurrentMediaFile = QStringLiteral("/a.jpg");
    form<frmPreferences>().Form_Activate();
    QCOMPARE(sample().pixelColor(100, 100), QColor(Qt::blue));
    QCOMPARE(sample().pixelColor(100, 90), QColor(Qt::green)); // small pictures are not enlarged
}

void tst_frmPreferences::closingHidesUnlessTheProgramEnds_data()
{
    QTest::addColumn<bool>("exiting");
    QTest::newRow("the close button hides") << false;
    QTest::newRow("at the end it goes") << true;
}

void tst_frmPreferences::closingHidesUnlessTheProgramEnds()
{
    QFETCH(bool, exiting);
    frmPreferences &window = form<frmPreferences>();
    window.show();
    window.AssociationsChanged = true;
    globals.ProgramExiting = exiting;
    QPointer<frmPreferences> guard(&window);
    if (!exiting)
        m_dialogs->answer(MessageBox::Answer::No); // what is not set yet need not be
    window.close();
    QVERIFY(!window.isVisible());
    QCOMPARE(window.AssociationsChanged, exiting);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(guard.isNull(), exiting);
    if (!exiting) {
        window.show();
        QTest::keyClick(&window, Qt::Key_Escape);
        QVERIFY(!window.isVisible());
    }
}

void tst_frmPreferences::mnemonicsOfAPageDiffer()
{
    const QTabWidget *tabs = control<QTabWidget>("SSTab1");
    for (int page = 0; page < tabs->count(); ++page) {
        QStringList letters{QKeySequence::mnemonic(control<QPushButton>("cmdOK")->text()).toString()};
        for (QWidget *widget : tabs->widget(page)->findChildren<QWidget *>()) {
            const QKeySequence letter = QKeySequence::mnemonic(widget->property("text").toString());
            if (letter.isEmpty())
                continue;
            QVERIFY2(!letters.contains(letter.toString()), qPrintable(tabs->tabText(page) + letter.toString()));
            letters.append(letter.toString());
        }
    }
}

void tst_frmPreferences::everyControlHasANameToBeRead()
{
    form<frmPreferences>().show();
    for (QWidget *widget : form<frmPreferences>().findChildren<QWidget *>()) {
        if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().startsWith(QLatin1String("qt_")))
            continue;
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
        QVERIFY2(interface && !interface->text(QAccessible::Name).isEmpty(), qPrintable(widget->objectName()));
    }
}

void tst_frmPreferences::textsOnTheGradientCanBeRead_data()
{
    QTest::addColumn<QColor>("ground");
    QTest::newRow("light palette") << QColor(240, 240, 240);
    QTest::newRow("dark palette") << QColor(40, 40, 40);
}

void tst_frmPreferences::textsOnTheGradientCanBeRead()
{
    QFETCH(QColor, ground);
    QApplication::setPalette(QPalette(ground));
    QWidget window;
    auto *label = new QLabel(QStringLiteral("On the gradient"), &window);
    auto *tabs = new QTabWidget(&window);
    auto *inside = new QLabel(QStringLiteral("On a page"), tabs);
    window.resize(300, 200);
    PaintFormBackground(&window, QStringLiteral("other"));
    const QImage image = window.grab().toImage();
    for (const QPoint point : {QPoint(299, 0), QPoint(299, 100), QPoint(299, 199)})
        QVERIFY(contrast(image.pixel(point), label->palette().color(QPalette::WindowText).rgb()) >= 4.5);
    QVERIFY2(image.pixel(299, 0) != image.pixel(299, 199), "a gradient, not a plain ground");
    QCOMPARE(inside->palette().color(QPalette::WindowText), QApplication::palette().color(QPalette::WindowText));
    // Light to half of the way to the darker blue, whatever the palette.
    QCOMPARE(image.pixelColor(299, 0), QColor(247, 251, 254));
    QCOMPARE(image.pixelColor(299, 199), QColor(190, 225, 253));
    ApplyColorMenu(3);
}

QTEST_MAIN(tst_frmPreferences)
#include "tst_frmPreferences.moc"
