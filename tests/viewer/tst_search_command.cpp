#include "viewer/foldertest.h"

#include <unistd.h>

/// The whole command: dialog, search and the selection list, with scripted boxes.
class tst_search_command : public FolderTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { start(); }
    void init() { fresh(); }
    void cleanup() { finish(); }
    void cancelInEachFormGivesNoFolderAndAnEmptyList_data();
    void cancelInEachFormGivesNoFolderAndAnEmptyList();
    void okSearchesTheFolderAlone();
    void okWithSubFoldersSearchesTheTreeInItsOrder();
    void theHighlightedFolderIsTheOneSearched();
    void withoutFileTypesOnlyTheTreeSearchSaysSo();
    void aFolderIsSearchedWithoutTheDialog();
    void cancelAtEachYieldKeepsAStartOfTheList();
    void aFullListEndsTheSearchWithItsBox();
};

void tst_search_command::cancelInEachFormGivesNoFolderAndAnEmptyList_data()
{
    QTest::addColumn<int>("form");
    QTest::newRow("the button") << 0;
    QTest::newRow("Escape") << 1;
    QTest::newRow("closing the window") << 2;
}

void tst_search_command::cancelInEachFormGivesNoFolderAndAnEmptyList()
{
    QFETCH(int, form);
    write("a.jpg");
    viewer().lstSelect->addItem(QStringLiteral("/old.jpg"));
    saveOption("LastVisitedFolder", base());
    selectFolder(base(), [&](Dialog &dialog) {
        if (form == 0)
            dialog.cmdCancel->click();
        else if (form == 1)
            QTest::keyClick(&dialog, Qt::Key_Escape);
        else
            dialog.close();
    });
    QCOMPARE(globals.ChosenFolder, QString());
    QVERIFY(viewer().lstSelect->isEmpty());
    QCOMPARE(viewer().StatusBar1->panelText(1), QStringLiteral("Current Image:"));
}

void tst_search_command::okSearchesTheFolderAlone()
{
    for (const char *name : {"b.jpg", "a.jpg", "song.mid", "sub/c.jpg", "note.txt"})
        write(name);
    globals.StandardListLocked = true;
    viewer().tabFileList->setCurrentIndex(1);
    selectFolder(base().chopped(1), [](Dialog &dialog) { dialog.cmdOK->click(); });
    QCOMPARE(foundBelow(), QStringLiteral("a.jpg b.jpg song.mid"));
    QCOMPARE(globals.ChosenFolder, base());
    QCOMPARE(option("LastVisitedFolder", ""), base());
    QCOMPARE(viewer().tabFileList->currentIndex(), 0);
    QVERIFY(viewer().lstSelect->isSelected(0));
    QVERIFY(!globals.StandardListLocked);
}

void tst_search_command::okWithSubFoldersSearchesTheTreeInItsOrder()
{
    for (const char *name : {"own.jpg", "a/1.jpg", "a/deep/2.jpg", "b/3.jpg"})
        write(name);
    const QString foreign = base() + pathFromBytes("b/\xE9.jpg");
    QVERIFY(QFile::copy(base() + QStringLiteral("own.jpg"), base() + QStringLiteral("b/4.jpg")));
    QCOMPARE(
        ::rename(pathToBytes(base() + QStringLiteral("b/4.jpg")).constData(), pathToBytes(foreign).constData()), 0);
    selectFolder(base(), [](Dialog &dialog) {
        dialog.chkSearchSubs->setChecked(true);
        dialog.cmdOK->click();
    });
    QCOMPARE(foundBelow(),
        QStringLiteral("b/3.jpg ") + pathFromBytes("b/\xE9.jpg") + QStringLiteral(" a/deep/2.jpg a/1.jpg own.jpg"));
    QCOMPARE(globals.FoldersSearched, 4);
    QCOMPARE(::unlink(pathToBytes(foreign).constData()), 0);
}

void tst_search_command::theHighlightedFolderIsTheOneSearched()
{
    write("a/1.jpg");
    write("own.jpg");
    selectFolder(base(), [](Dialog &dialog) {
        QTest::keyClick(dialog.Dir1, Qt::Key_Down);
        dialog.cmdOK->click();
    });
    QCOMPARE(foundBelow(), QStringLiteral("a/1.jpg"));
    QCOMPARE(globals.ChosenFolder, base() + QStringLiteral("a/"));
}

void tst_search_command::withoutFileTypesOnlyTheTreeSearchSaysSo()
{
    write("a.jpg");
    ScriptedDialogs &boxes = ScriptedDialogs::install();
    form<frmPreferences>().cmdClearAllTypes->click();
    form<frmPreferences>().cmdClearAllAudioTypesCommand3->click();
    selectFolder(base(), [](Dialog &dialog) { dialog.cmdOK->click(); });
    QVERIFY(viewer().lstSelect->isEmpty());
    QVERIFY(boxes.boxes.isEmpty());
    boxes.answer(MessageBox::Answer::Ok);
    selectFolder(base(), [](Dialog &dialog) {
        dialog.chkSearchSubs->setChecked(true);
        dialog.cmdOK->click();
    });
    QVERIFY(viewer().lstSelect->isEmpty());
    QCOMPARE(boxes.boxes, QVector<MessageBox>{noFileTypesBox()});
    QCOMPARE(globals.FoldersSearched, 0);
}

void tst_search_command::aFolderIsSearchedWithoutTheDialog()
{
    for (const char *name : {"own.jpg", "a/1.jpg"})
        write(name);
    searchFoldersInto({base()}, false);
    QCOMPARE(foundBelow(), QStringLiteral("own.jpg"));
    searchFoldersInto({base().chopped(1)}, true);
    QCOMPARE(foundBelow(), QStringLiteral("a/1.jpg own.jpg"));
    QVERIFY(viewer().lstSelect->isSelected(0));
    searchFoldersInto({base() + QStringLiteral("gone")}, true);
    QVERIFY(viewer().lstSelect->isEmpty());
    QVERIFY(!isLoaded<Dialog>());
}

void tst_search_command::cancelAtEachYieldKeepsAStartOfTheList()
{
    for (int folder = 0; folder < 30; ++folder)
        write(qPrintable(QStringLiteral("f%1/p.jpg").arg(folder)));
    QStringList whole;
    forEachYield([] {}, [&] { searchFoldersInto({base()}, true); },
        [] {
            if (isLoaded<frmlocatefiles>())
                form<frmlocatefiles>().cmdCancel->click();
        },
        [&](int yield) {
            const QStringList found = viewer().lstSelect->items();
            if (yield == 0)
                whole = found;
            QCOMPARE(found, whole.mid(0, found.size()));
            QVERIFY(!isLoaded<frmlocatefiles>());
            QVERIFY(!globals.SearchActive);
        });
    QCOMPARE(whole.size(), 30);
}

void tst_search_command::aFullListEndsTheSearchWithItsBox()
{
    for (int folder = 0; folder < 4; ++folder) {
        QVERIFY(QDir().mkpath(base() + QStringLiteral("f%1").arg(folder)));
        for (int file = 0; file < 8300; ++file) {
            QFile made(base() + QStringLiteral("f%1/p%2.jpg").arg(folder).arg(file));
            QVERIFY(made.open(QIODevice::WriteOnly));
        }
    }
    ScriptedDialogs &boxes = ScriptedDialogs::install();
    boxes.answer(MessageBox::Answer::Ok);
    searchFoldersInto({base()}, true);
    QCOMPARE(boxes.boxes, QVector<MessageBox>{listFullBox()});
    QCOMPARE(viewer().lstSelect->count(), ListBox::maximumCount);
    QCOMPARE(viewer().lstSelect->itemText(0), base() + QStringLiteral("f3/p0.jpg"));
    viewer().cmdClearSelectionList_Click();
}

QTEST_MAIN(tst_search_command)
#include "tst_search_command.moc"
