#include "app/allsettings.h"
#include "app/globals.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmMessage.h"
#include "viewer/listfile.h"

#include <QtTest>

#include <csignal>
#include <sys/resource.h>

/// List files through the menus of the real window.
class tst_listload : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aListComesBackWithItsPosition();
    void theTwoWritersDifferInThePosition();
    void theStandardListIsLeftAloneWhenLockedOrEmpty();
    void theDialogsAskAsTold();
    void otherKindsOfFileNamesDoNothing();
    void oddFilesLeaveWhatTheRulesSay_data();
    void oddFilesLeaveWhatTheRulesSay();
    void openingAListUnlocksTheStandardList();
    void aListThatCannotBeWrittenLeavesTheOldFile();
    void longStandardListsTellTheirProgress();
    void theNewerListWinsInsideAYield();
    void aHalfReadListIsNeverSaved();
    void aFullListLoadsAndSavesQuickly();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    QString standardFile() { return AppFolder() + QLatin1String(standardListName); }
    QString writeList(const QString &name, const QStringList &paths, int position);
    QStringList names(int count);
    void fill(const QStringList &paths);
    QByteArray bytesOf(const QString &path)
    {
        return readFile(path, 64 << 20) ? *readFile(path, 64 << 20) : QByteArray();
    }
    void loadAs(const QString &path, int filterIndex = 1);
    void saveAs(const QString &path, int filterIndex = 1);
    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_listload::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_listload::init()
{
    m_dialogs = &ScriptedDialogs::install();
    window().ClearDisplayList();
    window().tabFileList->setCurrentIndex(0);
    globals.ListFileCount = 0;
    globals.StandardListLocked = false;
    QFile::remove(standardFile());
}

void tst_listload::cleanup()
{
    QVERIFY(!globals.ItemSelectionBusy);
    QVERIFY(!isLoaded<frmMessage>());
    setDialogs(nullptr);
}

QStringList tst_listload::names(int count)
{
    QStringList paths;
    for (int i = 0; i < count; ++i)
        paths.append(QStringLiteral("/nowhere/holiday, %1/IMG_%2.jpg").arg(i % 50).arg(i));
    return paths;
}

QString tst_listload::writeList(const QString &name, const QStringList &paths, int position)
{
    return m_home->write(name, writeListFile(paths, QString::number(position)));
}

void tst_listload::fill(const QStringList &paths)
{
    window().lstDisplay->addItems(paths);
    window().lblCount->setText(QString::number(paths.size()));
    window().UpdateMenuAndToolbarState();
}

void tst_listload::loadAs(const QString &path, int filterIndex)
{
    m_dialogs->answerFile(FileAnswer{path, filterIndex});
    window().mnuFileLoadAs_Click();
}

void tst_listload::saveAs(const QString &path, int filterIndex)
{
    m_dialogs->answerFile(FileAnswer{path, filterIndex});
    window().mnuFileSaveAs_Click();
}

void tst_listload::aListComesBackWithItsPosition()
{
    const QStringList paths = {m_home->writePicture(QStringLiteral("a, b.png"), {30, 20}),
        QStringLiteral("/gone \"x\".jpg"), m_home->writePicture(QStringLiteral("c.png"), {20, 20})};
    fill(paths);
    window().lstDisplay->selectOnly(2);
    const QString file = m_home->path() + QStringLiteral("mine.Lsl");
    saveAs(file);
    window().mnuFileSave_Click();
    QCOMPARE(bytesOf(standardFile()), bytesOf(file));
    for (const bool standard : {false, true}) {
        window().ClearDisplayList();
        window().tabFileList->setCurrentIndex(0);
        globals.CurrentMediaFile.clear();
        if (standard)
            window().mnuFileLoad_Click();
        else
            loadAs(file);
        QCOMPARE(window().lstDisplay->items(), paths);
        QCOMPARE(window().lstDisplay->selectedIndices(), QList<int>{2});
        QCOMPARE(globals.CurrentMediaFile, paths[2]);
        QCOMPARE(globals.CurrentListIndex, 3);
        QCOMPARE(window().CurrentPicture->text(), QStringLiteral("3"));
        QCOMPARE(window().lblCount->text(), QStringLiteral("3"));
        QCOMPARE(window().tabFileList->currentIndex(), 1);
    }
}

void tst_listload::theTwoWritersDifferInThePosition()
{
    // Nothing has been displayed: the user's list says 0, the standard list what the label shows.
    fill(names(2));
    window().CurrentPicture->setText(QStringLiteral(" 2 "));
    const QString file = m_home->path() + QStringLiteral("differs.Lsl");
    saveAs(file);
    QVERIFY(bytesOf(file).contains("\r\nCurrent Index=0\r\n"));
    QCOMPARE(globals.CurrentListIndex, 0);
    window().saveStandardList();
    QVERIFY(bytesOf(standardFile()).contains("\r\nCurrent Index=2\r\n"));
    QCOMPARE(globals.CurrentListIndex, 1);
    // The position 0 is mended when the list is opened.
    loadAs(file);
    QCOMPARE(globals.CurrentListIndex, 1);
    QCOMPARE(window().lstDisplay->selectedIndices(), QList<int>{0});
}

void tst_listload::theStandardListIsLeftAloneWhenLockedOrEmpty()
{
    fill(names(2));
    globals.StandardListLocked = true;
    window().saveStandardList();
    QVERIFY(!FileExists(standardFile()));
    globals.StandardListLocked = false;
    window().saveStandardList();
    const QByteArray saved = bytesOf(standardFile());
    QVERIFY(!saved.isEmpty());
    window().ClearDisplayList();
    window().saveStandardList();
    QCOMPARE(bytesOf(standardFile()), saved);
    const QString file = m_home->path() + QStringLiteral("none.Lsl");
    saveAs(file);
    QVERIFY(!FileExists(file));
}

void tst_listload::theDialogsAskAsTold()
{
    m_dialogs->answerFile(std::nullopt);
    m_dialogs->answerFile(std::nullopt);
    fill(names(1));
    window().mnuFileLoadAs_Click();
    window().mnuFileSaveAs_Click();
    QCOMPARE(window().lstDisplay->count(), 1);
    const FileQuestion load = m_dialogs->fileQuestions[0];
    const FileQuestion save = m_dialogs->fileQuestions[1];
    QCOMPARE(load.title, QStringLiteral("Load Lumora Image List"));
    QCOMPARE(save.title, QStringLiteral("Save Lumora Image List As"));
    QVERIFY(load.fileName.isEmpty() && !load.promptOverwrite);
    QCOMPARE(save.fileName, QStringLiteral("Lumora-Viewer.Lsl"));
    QVERIFY(save.promptOverwrite);
    for (const FileQuestion &question : {load, save}) {
        QCOMPARE(question.folder, AppFolder());
        QCOMPARE(question.filter.count(u'|'), 4);
        QCOMPARE(question.defaultExtension, QStringLiteral(".Lsl"));
    }
}

void tst_listload::otherKindsOfFileNamesDoNothing()
{
    const QString file = writeList(QStringLiteral("kind.Lst"), names(3), 1);
    fill(names(1));
    for (const int filterIndex : {0, 3}) {
        loadAs(file, filterIndex);
        QCOMPARE(window().lstDisplay->count(), 1);
        const QByteArray before = bytesOf(file);
        saveAs(file, filterIndex);
        QCOMPARE(bytesOf(file), before);
    }
    loadAs(file, 2);
    QCOMPARE(window().lstDisplay->count(), 3);
}

void tst_listload::oddFilesLeaveWhatTheRulesSay_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("selected"); // -1: none
    const QByteArray two = "\"0 =| /nowhere/a.jpg\"\r\n\"1 =| /nowhere/b.jpg\"\r\n*** End of List ***\r\n";
    const auto list = [&](const char *head) { return "[File List]\r\n" + QByteArray(head) + two; };
    QTest::newRow("no list: the count of the list before still leads on")
        << QByteArray("#EXTM3U\r\n") << 0 << 1 << 7 << -1;
    QTest::newRow("empty file") << QByteArray() << 0 << 1 << 7 << -1;
    QTest::newRow("negative position") << list("No. Of Pictures=2\r\nCurrent Index=-4\r\n") << 2 << 1 << 2 << 0;
    QTest::newRow("position beyond the count") << list("No. Of Pictures=2\r\nCurrent Index=9\r\n") << 2 << 9 << 2 << -1;
    QTest::newRow("count too small") << list("No. Of Pictures=1\r\nCurrent Index=1\r\n") << 1 << 1 << 1 << 0;
    QTest::newRow("count too large") << list("No. Of Pictures=5\r\nCurrent Index=2\r\n") << 3 << 2 << 5 << 1;
    QTest::newRow("count 0: the position of the file stays")
        << list("No. Of Pictures=0\r\nCurrent Index=2\r\n") << 0 << 2 << 0 << -1;
    QTest::newRow("no count: that of the list before") << list("?\r\nCurrent Index=2\r\n") << 3 << 2 << 7 << 1;
    QTest::newRow("no position") << list("No. Of Pictures=2\r\n?\r\n") << 2 << 1 << 2 << 0;
    QTest::newRow("header only") << QByteArray("[File List]\r\nNo. Of Pictures=3\r\nCurrent Index=2\r\n") << 0 << 2 << 3
                                 << -1;
}

void tst_listload::oddFilesLeaveWhatTheRulesSay()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, entries);
    QFETCH(int, selected);
    fill(names(4));
    globals.ListFileCount = 7;
    loadAs(m_home->write(QStringLiteral("odd.Lsl"), bytes));
    QCOMPARE(window().lstDisplay->count(), entries);
    QCOMPARE(window().lblCount->text(), QString::number(entries));
    QTEST(globals.CurrentListIndex, "position");
    QTEST(globals.ListFileCount, "count");
    QCOMPARE(window().lstDisplay->selectedIndices(), selected < 0 ? QList<int>() : QList<int>{selected});
}

void tst_listload::openingAListUnlocksTheStandardList()
{
    const QString file = writeList(QStringLiteral("unlock.Lsl"), names(2), 1);
    globals.StandardListLocked = true;
    window().Lumora_PlayListLoad(file);
    QVERIFY(!globals.StandardListLocked);
    QCOMPARE(window().lstDisplay->count(), 2);
    // The standard list that is not there empties the DisplayList without a word.
    globals.StandardListLocked = true;
    window().mnuFileLoad_Click();
    QVERIFY(!globals.StandardListLocked);
    QVERIFY(window().lstDisplay->isEmpty());
}

void tst_listload::aListThatCannotBeWrittenLeavesTheOldFile()
{
    const QString file = writeList(QStringLiteral("full/old.Lsl"), names(3), 1);
    const QByteArray old = bytesOf(file);
    fill(names(500));
    // A full disk, as the process sees it: no file may grow beyond a few bytes.
    rlimit before{};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{64, before.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &full), 0);
    m_dialogs->answerFile(FileAnswer{file, 1});
    window().mnuFileSaveAs_Click();
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    QCOMPARE(bytesOf(file), old);
    QCOMPARE(listFolder(m_home->path() + QStringLiteral("full/"))->files, QStringList{QStringLiteral("old.Lsl")});
    saveAs(file);
    QCOMPARE(readListFile(bytesOf(file), 0).entries, names(500));
}

void tst_listload::longStandardListsTellTheirProgress()
{
    for (const int count : {99, 100}) {
        QFile::remove(standardFile());
        fill(names(count));
        window().saveStandardList();
        bool told = false;
        setYieldHook([&](int) {
            if (!isLoaded<frmMessage>())
                return;
            const auto &message = form<frmMessage>();
            QVERIFY2(message.testAttribute(Qt::WA_ShowWithoutActivating)
                    && message.windowFlags().testFlag(Qt::WindowDoesNotAcceptFocus),
                "it never takes the focus");
            told = message.isVisible() && message.parentWidget() == &window()
                && message.lblMessage->text() == QLatin1String("Loading Media File List\nthis may take a few seconds");
        });
        window().mnuFileLoad_Click();
        setYieldHook({});
        QCOMPARE(told, count >= 100);
        QVERIFY(!isLoaded<frmMessage>());
        window().ClearDisplayList();
    }
}

void tst_listload::theNewerListWinsInsideAYield()
{
    const QString longList = writeList(QStringLiteral("long.Lsl"), names(350), 5);
    const QStringList other = {QStringLiteral("/other/a.jpg"), QStringLiteral("/other/b.jpg")};
    const QString shortList = writeList(QStringLiteral("short.Lsl"), other, 2);
    const QString single = m_home->writePicture(QStringLiteral("single.png"), {10, 10});
    const auto prepare = [&] {
        window().ClearDisplayList();
        globals.StandardListLocked = false;
    };
    const auto load = [&] { window().Lumora_PlayListLoad(longList); };
    forEachYield(
        prepare, load, [&] { window().Lumora_PlayListLoad(shortList); },
        [&](int yield) {
            const QStringList items = window().lstDisplay->items();
            QVERIFY2(items == other || items == names(350), qPrintable(QString::number(yield)));
            QCOMPARE(window().lblCount->text().toInt(), items.size());
        });
    // A single file of a later start is shown alone, and the standard list stays locked for it.
    int loadingYields = 0;
    forEachYield(
        prepare, load,
        [&] {
            ++loadingYields;
            window().lstDisplay->clear();
            globals.StandardListLocked = true;
            window().lstDisplay->addItem(single);
            window().lblCount->setText(QStringLiteral("1"));
            window().lstDisplay->selectOnly(0);
        },
        [&](int yield) {
            if (yield == 0 || window().lstDisplay->count() != 1)
                return;
            QCOMPARE(window().lstDisplay->items(), QStringList{single});
            QCOMPARE(window().lblCount->text(), QStringLiteral("1"));
            QCOMPARE(globals.CurrentMediaFile, single);
        });
    QVERIFY(loadingYields > 3);
    forEachYield(
        prepare, load, [&] { window().ClearDisplayList(); },
        [&](int) { QCOMPARE(window().lblCount->text().toInt(), window().lstDisplay->count()); });
}

void tst_listload::aHalfReadListIsNeverSaved()
{
    const QStringList paths = names(450);
    fill(paths);
    window().saveStandardList();
    const QByteArray saved = bytesOf(standardFile());
    forEachYield([&] { window().ClearDisplayList(); }, [&] { window().mnuFileLoad_Click(); },
        [&] {
            window().saveStandardList();
            const ListFileContent there = readListFile(bytesOf(standardFile()), 0);
            QCOMPARE(there.entries.size(), paths.size());
        },
        [&](int) { QCOMPARE(window().lstDisplay->count(), paths.size()); });
    QCOMPARE(readListFile(bytesOf(standardFile()), 0).entries, readListFile(saved, 0).entries);
}

void tst_listload::aFullListLoadsAndSavesQuickly()
{
    const QStringList paths = names(ListBox::maximumCount);
    fill(paths);
    window().tabFileList->setCurrentIndex(1); // the list in sight follows its growing
    QElapsedTimer timer;
    timer.start();
    window().saveStandardList();
    const qint64 saving = timer.restart();
    window().mnuFileLoad_Click();
    const qint64 loading = timer.elapsed();
    qInfo("%d entries: saved in %lld ms, loaded in %lld ms", ListBox::maximumCount, saving, loading);
    QCOMPARE(window().lstDisplay->items(), paths);
    QVERIFY2(saving < 2000 && loading < 2000, "a full list is no work to wait for");
}

QTEST_MAIN(tst_listload)
#include "tst_listload.moc"
