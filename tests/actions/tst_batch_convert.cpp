#include "actions/frmConvertFileName.h"
#include "actions/frmConvertFileType.h"
#include "actions/frmSelectBatchDir.h"
#include "actions/savetest.h"
#include "app/checkjpg.h"
#include "platform/folders.h"
#include "support/contents.h"
#include "ui/yield.h"

#include <QLoggingCategory>

/// Batch conversion from the menu to the files: the dialog, the progress window and the run of the Main Viewer.
class tst_batch_convert : public SaveTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("lumora.conversion=false"));
        QVERIFY(start());
    }
    void init();
    void cleanup();
    void theDialogBeginsAsItShould();
    void typesAreSetClearedAndTurned();
    void aLabelTogglesItsBoxEvenWhenThatIsOff();
    void clearingABoxClearsItsDependant();
    void theFolderIsChosenNotTyped();
    void browsingTakesOverAlsoNothing();
    void cancelClearsTheTypes_data();
    void cancelClearsTheTypes();
    void choicesOutliveTheRun();
    void aRunConvertsTheList();
    void onlySelectedEntriesAreConverted();
    void thePreferencesDecideOnQuality();
    void questionsAreAskedOverTheProgressWindow();
    void aStaleCancelEndsTheNextRun();
    void anEmptyRunAppearsAndVanishes();
    void aRunOutlivesWhatHappensInItsYields_data();
    void aRunOutlivesWhatHappensInItsYields();
    void oneRunAtATime();
    void theLogTellsOfEachFile();

private:
    using Types = frmConvertFileType;
    using Progress = frmConvertFileName;
    Types &types() { return form<Types>(); }
    void fill(const QStringList &paths)
    {
        window().ClearDisplayList();
        window().lstDisplay->addItems(paths);
        window().lblCount->setText(QString::number(paths.size()));
        window().UpdateMenuAndToolbarState();
    }
    QString picture(const QString &name) const { return writePng(name, rampImage({20, 10})); }
    /// The whole command; `act` gets the dialog when it stands.
    void convert(const std::function<void(Types &)> &act)
    {
        QTimer waiting;
        connect(&waiting, &QTimer::timeout, this, [&] {
            if (!isLoaded<Types>() || !types().isVisible())
                return;
            waiting.stop();
            act(types());
        });
        waiting.start(1);
        window().mnuFileBatchConvertImages->trigger();
        QVERIFY(!waiting.isActive());
        if (globals.ProgramExiting)
            return;
        QVERIFY(!isLoaded<Progress>() || !form<Progress>().isVisible());
        QVERIFY(window().cursor().shape() == Qt::ArrowCursor);
    }
    void convertTo(std::initializer_list<int> indices)
    {
        convert([&](Types &dialog) {
            for (const int index : indices)
                dialog.optFileType[index]->setChecked(true);
            dialog.cmdConvert->click();
        });
    }
    bool exists(const char *name) const { return QFile::exists(home() + QLatin1String(name)); }
    static void clickLabel(QLabel *label) { QTest::mouseClick(label, Qt::LeftButton, {}, QPoint(3, 3)); }
    ScriptedDialogs *m_dialogs = nullptr;
};

namespace {
constexpr int bmp = 0;
constexpr int jpg = 4;
constexpr int png = 10;
constexpr int ppm = 12;
}

void tst_batch_convert::init()
{
    globals.cancelFlag = false;
    globals.ProgramExiting = false;
    m_dialogs = &fresh();
}

void tst_batch_convert::cleanup()
{
    for (const auto *pattern : {"*.bmp", "*.jpg", "*.ppm", "*.png"}) {
        const QStringList old = QDir(home()).entryList({QLatin1String(pattern)}, QDir::Files);
        for (const QString &name : old)
            QFile::remove(home() + name);
    }
    if (isLoaded<Types>())
        types().hide();
    unload<Types>();
    setDialogs(nullptr);
}

void tst_batch_convert::theDialogBeginsAsItShould()
{
    types().show();
    QCOMPARE(types().windowTitle(), QStringLiteral("Tessaly Lumora V3 - Convert Files"));
    const ConversionOptions options = types().options();
    QVERIFY(options.types.none() && !options.selectedOnly && options.useImageFolder);
    const QList<QCheckBox *> boxes = types().findChildren<QCheckBox *>();
    QCOMPARE(boxes.size(), 23 + 11);
    QCOMPARE(std::count_if(boxes.begin(), boxes.end(), [](QCheckBox *box) { return box->isChecked(); }), 1);
    for (const QCheckBox *off : {types().chkGrayScale256, types().chkCovertFolderForEachType})
        QVERIFY(!off->isEnabled());
    QVERIFY(!types().txtImageFolder->isEnabled() && !types().cmdBrowse->isEnabled());
    QCOMPARE(types().lblFileType[1]->text(), QStringLiteral("(.DCX) DCX Format "));
    QStringList groups;
    for (const QGroupBox *group : types().findChildren<QGroupBox *>())
        groups << group->title();
    groups.sort();
    QCOMPARE(groups.join(u'|'),
        QStringLiteral("&Image Folders:|&Options:|&Please select a file type(s) to convert images to:|"
                       "Con&vert Folders:"));
    // All of it on the smallest usual screen.
    QVERIFY(types().width() <= 1000 && types().height() <= 680);
}

void tst_batch_convert::typesAreSetClearedAndTurned()
{
    types().optFileType[jpg]->setChecked(true);
    types().cmdInvertSelections->click();
    QVERIFY(!types().options().types.test(jpg) && types().options().types.count() == 22);
    types().cmdSelectAllTypes->click();
    QVERIFY(types().options().types.all());
    types().cmdClearAlTypesCommand->click();
    QVERIFY(types().options().types.none());
}

void tst_batch_convert::aLabelTogglesItsBoxEvenWhenThatIsOff()
{
    types().show();
    clickLabel(types().lblFileType[png]);
    QVERIFY(types().optFileType[png]->isChecked());
    clickLabel(types().lblFileType[png]);
    QVERIFY(!types().optFileType[png]->isChecked());
    QVERIFY(!types().chkGrayScale256->isEnabled());
    clickLabel(types().lblGrayScale256);
    QVERIFY(types().chkGrayScale256->isChecked());
    clickLabel(types().lblCovertFolderForEachType);
    const ConversionOptions options = types().options();
    QVERIFY(options.grayScale256 && !options.grayScale && options.folderForEachType && !options.addConvertFolder);
    // Through its label a box does what it does through itself.
    clickLabel(types().lblUseImageFolder);
    QVERIFY(types().cmdBrowse->isEnabled());
}

void tst_batch_convert::clearingABoxClearsItsDependant()
{
    types().show();
    const auto check = [&](QCheckBox *box, QCheckBox *dependant) {
        box->click();
        QVERIFY(dependant->isEnabled() && !dependant->isChecked());
        dependant->click();
        box->click();
        QVERIFY(!dependant->isEnabled() && !dependant->isChecked());
    };
    check(types().chkGrayScale, types().chkGrayScale256);
    check(types().chkAddConvertFolder, types().chkCovertFolderForEachType);
}

void tst_batch_convert::theFolderIsChosenNotTyped()
{
    types().show();
    types().chkUseImageFolder->click();
    const QString folder = types().txtImageFolder->text();
    QCOMPARE(folder + u'/', AppFolder());
    QVERIFY(types().txtImageFolder->isEnabled());
    for (const int key : {Qt::Key_A, Qt::Key_Delete, Qt::Key_Backspace, Qt::Key_Space, Qt::Key_Home})
        QTest::keyClick(types().txtImageFolder, Qt::Key(key));
    QCOMPARE(types().txtImageFolder->text(), folder);
    const int at = types().txtImageFolder->cursorPosition();
    QTest::keyClick(types().txtImageFolder, Qt::Key_Left);
    QCOMPARE(types().txtImageFolder->cursorPosition(), at - 1);
    // The name of the folder stands before those of the files.
    types().optFileType[ppm]->setChecked(true);
    types().hide();
    fill({picture(QStringLiteral("a.png"))});
    convert([](Types &dialog) { dialog.cmdConvert->click(); });
    QVERIFY(QFile::remove(folder + QStringLiteral("a.ppm")));
    types().chkUseImageFolder->click();
    QVERIFY(!types().cmdBrowse->isEnabled());
}

void tst_batch_convert::browsingTakesOverAlsoNothing()
{
    const QString folder = home() + QStringLiteral("out/");
    QDir().mkpath(folder);
    types().chkUseImageFolder->setChecked(false);
    const auto browse = [&](bool ok) {
        QTimer waiting;
        connect(&waiting, &QTimer::timeout, this, [&] {
            if (!isLoaded<frmSelectBatchDir>() || !form<frmSelectBatchDir>().isVisible())
                return;
            waiting.stop();
            auto &picker = form<frmSelectBatchDir>();
            picker.Dir1->setPath(folder);
            (ok ? picker.cmdOK : picker.cmdCancel)->click();
        });
        waiting.start(1);
        types().cmdBrowse_Click();
    };
    browse(true);
    QCOMPARE(types().txtImageFolder->text(), folder);
    browse(false);
    QCOMPARE(types().txtImageFolder->text(), QString());
}

void tst_batch_convert::cancelClearsTheTypes_data()
{
    QTest::addColumn<int>("how");
    QTest::newRow("the button") << 0;
    QTest::newRow("the Escape key") << 1;
    QTest::newRow("closing it") << 2;
}

void tst_batch_convert::cancelClearsTheTypes()
{
    QFETCH(int, how);
    fill({picture(QStringLiteral("a.png"))});
    convert([&](Types &dialog) {
        dialog.cmdSelectAllTypes->click();
        dialog.chkEmoboss->setChecked(true);
        if (how == 0)
            dialog.cmdCancel->click();
        else if (how == 1)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            dialog.close();
        QVERIFY(dialog.Cancelled);
    });
    QVERIFY(!types().Cancelled);
    QVERIFY(types().options().types.none() && types().options().emboss);
    QVERIFY(!exists("a.bmp"));
}

void tst_batch_convert::choicesOutliveTheRun()
{
    fill({picture(QStringLiteral("a.png"))});
    convertTo({bmp});
    QVERIFY(exists("a.bmp"));
    types().chkOverWriteFiles->setChecked(true);
    convert([](Types &dialog) {
        QVERIFY(dialog.optFileType[bmp]->isChecked() && dialog.chkOverWriteFiles->isChecked());
        dialog.cmdConvert->click();
    });
    QVERIFY(m_dialogs->boxes.isEmpty());
}

void tst_batch_convert::aRunConvertsTheList()
{
    const QStringList list{picture(QStringLiteral("a.png")), homeFolder().write(QStringLiteral("b.mp3"), "x"),
        picture(QStringLiteral("c.png"))};
    fill(list);
    window().lstDisplay->selectOnly(0);
    QStringList titles;
    bool busy = false;
    setYieldHook([&](int) {
        if (!isLoaded<Progress>() || !form<Progress>().isVisible())
            return;
        busy = busy
            || (window().cursor().shape() == Qt::WaitCursor && form<Progress>().cursor().shape() == Qt::WaitCursor);
        titles << form<Progress>().windowTitle();
    });
    types().chkGrayScale->setChecked(true);
    convertTo({bmp, ppm});
    setYieldHook({});
    QVERIFY(busy);
    for (const char *name : {"a.bmp", "a.ppm", "c.bmp", "c.ppm"})
        QVERIFY2(exists(name), name);
    QVERIFY(!exists("b.bmp"));
    QCOMPARE(read(home() + QStringLiteral("c.bmp")).info.bitsPerPixel, 8);
    QCOMPARE(form<Progress>().ProgressBar1->value(), 100);
    QCOMPARE(form<Progress>().lblPercent->text(), QStringLiteral("100%"));
    QCOMPARE(form<Progress>().lblFileName->text(), list.last());
    QCOMPARE(form<Progress>().lblConvertFileName->text(), home() + QStringLiteral("c.ppm"));
    QCOMPARE(form<Progress>().windowTitle(), QStringLiteral("Converting File(s):"));
    // The list, the current item and the screen are what they were; the controls hold what came last.
    QCOMPARE(window().lstDisplay->items(), list);
    QCOMPARE(globals.CurrentMediaFile, list.first());
    QVERIFY(m_dialogs->boxes.isEmpty());
    QCOMPARE(form<checkjpg>().polImageBox1.PolyBitsPerPixel(), 8);
    QCOMPARE(form<checkjpg>().Gvbox2.bitsPerPixel(), 24);
}

void tst_batch_convert::onlySelectedEntriesAreConverted()
{
    QStringList list;
    for (int i = 0; i < 10; ++i)
        list << picture(QStringLiteral("s%1.png").arg(i));
    fill(list);
    window().lstDisplay->selectOnly(3);
    types().optWhichFiles[0]->setChecked(true);
    QStringList percents;
    setYieldHook([&](int) {
        if (isLoaded<Progress>() && !percents.contains(form<Progress>().lblPercent->text()))
            percents << form<Progress>().lblPercent->text();
    });
    convertTo({bmp});
    setYieldHook({});
    QCOMPARE(percents.size(), 10 + 1); // and none at the start
    QCOMPARE(QDir(home()).entryList({QStringLiteral("*.bmp")}).join(u' '), QStringLiteral("s3.bmp"));
}

void tst_batch_convert::thePreferencesDecideOnQuality()
{
    fill({picture(QStringLiteral("q.png"))});
    types().chkOverWriteFiles->setChecked(true);
    qint64 sizes[2];
    for (const int turn : {0, 1}) {
        form<frmPreferences>().txtJPGQuality->setText(turn ? QStringLiteral("95") : QStringLiteral("10"));
        convertTo({jpg});
        sizes[turn] = QFileInfo(home() + QStringLiteral("q.jpg")).size();
    }
    QVERIFY(sizes[1] > sizes[0]);
    QCOMPARE(form<checkjpg>().polImageBox1.PolyJpegQuality(), 95);
}

void tst_batch_convert::questionsAreAskedOverTheProgressWindow()
{
    fill({picture(QStringLiteral("a.png")), picture(QStringLiteral("b.png")), picture(QStringLiteral("c.png"))});
    homeFolder().write(QStringLiteral("a.bmp"), "old");
    homeFolder().write(QStringLiteral("c.bmp"), "old");
    types().chkOverWriteFiles->setChecked(true);
    types().chkOverwritePromptFirst->setChecked(true);
    m_dialogs->answer(MessageBox::Answer::No);
    m_dialogs->answer(MessageBox::Answer::Yes);
    convertTo({bmp});
    QCOMPARE(m_dialogs->boxes.size(), 2);
    QVERIFY(m_dialogs->boxes.first() == overwriteBox(home() + QStringLiteral("a.bmp")));
    QCOMPARE(QFileInfo(home() + QStringLiteral("a.bmp")).size(), 3);
    QVERIFY(exists("b.bmp") && QFileInfo(home() + QStringLiteral("c.bmp")).size() > 3);
}

void tst_batch_convert::aStaleCancelEndsTheNextRun()
{
    fill({picture(QStringLiteral("a.png"))});
    form<Progress>().cmdCancel_Click();
    convertTo({bmp});
    QVERIFY(!exists("a.bmp"));
    convertTo({bmp});
    QVERIFY(exists("a.bmp"));
}

void tst_batch_convert::anEmptyRunAppearsAndVanishes()
{
    fill({picture(QStringLiteral("a.png"))});
    convertTo({});
    // The command is off for an empty list, but may come another way.
    window().ClearDisplayList();
    QVERIFY(!window().mnuFileBatchConvertImages->isEnabled());
    types().optFileType[bmp]->setChecked(true);
    window().mnuFileBatchConvertImages->setEnabled(true);
    convert([](Types &dialog) { dialog.cmdConvert->click(); });
    QVERIFY(QDir(home()).entryList({QStringLiteral("*.bmp")}).isEmpty() && m_dialogs->boxes.isEmpty());
}

void tst_batch_convert::aRunOutlivesWhatHappensInItsYields_data()
{
    QTest::addColumn<std::function<void()>>("disturb");
    QTest::addColumn<bool>("ends"); ///< the rest is not converted
    const auto row = [](const char *name, bool ends, const std::function<void()> &disturb) {
        QTest::newRow(name) << disturb << ends;
    };
    row("the list is emptied", false, [] { form<frmMainViewer>().ClearDisplayList(); });
    row("cancel", true, [] {
        if (isLoaded<Progress>() && form<Progress>().isVisible())
            form<Progress>().cmdCancel->click();
    });
    row("the progress window is closed", true, [] {
        if (isLoaded<Progress>() && form<Progress>().isVisible())
            form<Progress>().close();
    });
    row("the options go", true, [] { unload<Types>(); });
    row("the program ends", true, [] { globals.ProgramExiting = true; });
    row("another item is shown", false, [] { form<frmMainViewer>().lstDisplay->selectOnly(2); });
}

void tst_batch_convert::aRunOutlivesWhatHappensInItsYields()
{
    using Disturb = std::function<void()>;
    QFETCH(Disturb, disturb);
    QFETCH(bool, ends);
    const QStringList list{picture(QStringLiteral("a.png")), homeFolder().write(QStringLiteral("b.png"), "bad"),
        picture(QStringLiteral("c.png"))};
    const QStringList written = QStringLiteral("a.bmp b.bmp c.bmp").split(u' ');
    const auto prepare = [&] {
        globals.ProgramExiting = false;
        globals.cancelFlag = false;
        for (const QString &name : written)
            QFile::remove(home() + name);
        fill(list);
        types().optFileType[bmp]->setChecked(true);
        types().chkAutoLevel->setChecked(true);
    };
    const auto work = [&] { convert([](Types &dialog) { dialog.cmdConvert->click(); }); };
    forEachYield(prepare, work, disturb, [&](int yield) {
        globals.ProgramExiting = false;
        QVERIFY(!isLoaded<Progress>() || !form<Progress>().isVisible());
        const QStringList there = QDir(home()).entryList({QStringLiteral("*.bmp")});
        if (!ends || yield == 0)
            QCOMPARE(there, written);
        else // the beginning of it
            QCOMPARE(there, written.mid(0, there.size()));
        for (const QString &name : there)
            QCOMPARE(read(home() + name).info.size, QSize(20, 10));
    });
}

void tst_batch_convert::oneRunAtATime()
{
    fill({picture(QStringLiteral("a.png"))});
    int runs = 0;
    setYieldHook([&](int) {
        if (++runs < 100)
            window().mnuFileBatchConvertImages_Click();
    });
    convertTo({bmp});
    setYieldHook({});
    QVERIFY(exists("a.bmp") && runs > 1);
}

void tst_batch_convert::theLogTellsOfEachFile()
{
    const QStringList list{picture(QStringLiteral("a.png")), homeFolder().write(QStringLiteral("b.png"), "bad"),
        picture(QStringLiteral("c.png")), picture(QStringLiteral("d.png"))};
    homeFolder().write(QStringLiteral("c.bmp"), "old");
    QDir(home()).mkdir(QStringLiteral("d.bmp"));
    fill(list);
    convertTo({bmp});
    QDir(home()).rmdir(QStringLiteral("d.bmp"));
    const QStringList told = logged().last(4);
    const auto line = [&](const char *word, int index) {
        return QStringLiteral("%1 %2%3.bmp %4").arg(QLatin1String(word), home(), QChar('a' + index), list[index]);
    };
    QCOMPARE(told.first(3), QStringList({line("written", 0), line("carried over", 1), line("left alone", 2)}));
    QVERIFY(told[3].startsWith(QStringLiteral("failed ") + home() + QStringLiteral("d.bmp ")));
}

QTEST_MAIN(tst_batch_convert)
#include "tst_batch_convert.moc"
