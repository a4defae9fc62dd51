#include "shell/preferencestest.h"

namespace {
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
}

class tst_frmPreferences : public PreferencesTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup() { end(); }
    void aFirstStartShowsTheDefaultsAndStoresNothing();
    void qualityFieldsCorrectThemselvesOnLeaving_data();
    void qualityFieldsCorrectThemselvesOnLeaving();
    void anEmptyQualityBecomesFullAtActivation();
    void theSpinControlWritesTheText();
    void presetsClearFirst_data();
    void presetsClearFirst();
    void bulkButtonsKeepToTheirTypes();
    void activationShowsTheLastFolder();
    void closingHidesUnlessTheProgramEnds_data();
    void closingHidesUnlessTheProgramEnds();
    void mnemonicsOfAPageDiffer();
    void everyControlHasANameToBeRead();
    void tabGoesThroughAPageGroupByGroup();
    void pagesScrollInSmallWindowsAndCutNothing_data();
    void pagesScrollInSmallWindowsAndCutNothing();
};

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
    QCOMPARE(stored("IncludeFileType1"), QStringLiteral("0"));
    QCOMPARE(stored("IncludeFileType8"), QString::number(int(types.contains(QLatin1String("GIF")))));
    QCOMPARE(stored("IncludeAVFileType3"), QStringLiteral("none"));
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

/// The groups of a page, in the order in which Tab comes to the first control of each.
void tst_frmPreferences::tabGoesThroughAPageGroupByGroup()
{
    const QTabWidget *tabs = control<QTabWidget>("SSTab1");
    form<frmPreferences>().show();
    for (int page = 0; page < tabs->count(); ++page) {
        QVector<QGroupBox *> groups;
        const QWidget *first = tabs->widget(page);
        for (QWidget *at = first->nextInFocusChain(); at != first; at = at->nextInFocusChain()) {
            if (!first->isAncestorOf(at) || !(at->focusPolicy() & Qt::TabFocus))
                continue;
            QWidget *owner = at->parentWidget();
            while (!qobject_cast<QGroupBox *>(owner) && owner != first)
                owner = owner->parentWidget();
            auto *group = qobject_cast<QGroupBox *>(owner);
            if (group && (groups.isEmpty() || groups.last() != group)) {
                QVERIFY2(!groups.contains(group), qPrintable(tabs->tabText(page) + at->objectName()));
                groups.append(group);
            }
        }
        QVERIFY(!groups.isEmpty() || !tabs->isTabVisible(page));
    }
}

void tst_frmPreferences::pagesScrollInSmallWindowsAndCutNothing_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("fontPoints");
    QTest::addColumn<bool>("longer");
    QTest::newRow("a small window") << QSize(420, 260) << 0 << false;
    QTest::newRow("a large font") << QSize(760, 500) << 18 << false;
    QTest::newRow("texts a third longer") << QSize(760, 500) << 0 << true;
}

void tst_frmPreferences::pagesScrollInSmallWindowsAndCutNothing()
{
    QFETCH(QSize, size);
    QFETCH(int, fontPoints);
    QFETCH(bool, longer);
    frmPreferences &window = form<frmPreferences>();
    QFont font = window.font();
    if (fontPoints > 0)
        font.setPointSize(fontPoints);
    window.setFont(font);
    auto *tabs = control<QTabWidget>("SSTab1");
    for (QAbstractButton *button : tabs->findChildren<QAbstractButton *>()) {
        if (longer && !button->text().isEmpty())
            button->setText(button->text() + button->text().left(button->text().size() / 3));
    }
    window.show();
    window.resize(size);
    for (int page = 0; page < tabs->count(); ++page) {
        if (!tabs->isTabVisible(page))
            continue;
        tabs->setCurrentIndex(page);
        QTRY_VERIFY(tabs->widget(page)->isVisible());
        QCoreApplication::processEvents();
        QCOMPARE(window.size(), size);
        for (QWidget *widget : tabs->widget(page)->findChildren<QWidget *>()) {
            const auto *button = qobject_cast<QAbstractButton *>(widget);
            if (button && button->isVisible() && !button->text().isEmpty())
                QTRY_VERIFY2(button->width() + 1 >= button->minimumSizeHint().width(), qPrintable(button->text()));
            const auto *label = qobject_cast<QLabel *>(widget);
            if (label && label->isVisible() && !label->text().isEmpty())
                QTRY_VERIFY2(label->height() >= label->heightForWidth(label->width()), qPrintable(label->text()));
        }
    }
}

QTEST_MAIN(tst_frmPreferences)
#include "tst_frmPreferences.moc"
