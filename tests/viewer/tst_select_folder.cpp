#include "viewer/foldertest.h"

#include <sys/stat.h>
#include <unistd.h>

/// The folder dialog: where it opens, what it shows, keys and previews.
class tst_select_folder : public FolderTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { start(); }
    void init() { fresh(); }
    void cleanup() { finish(); }
    void theStartFolderFollowsThePreference_data();
    void theStartFolderFollowsThePreference();
    void aFolderShowsItsFilesInTheOrderOfCollection();
    void aFolderWithoutFilesShowsNone();
    void keysHighlightAndEnterTakes();
    void aDriveThatIsNotReadyFallsBack();
    void jumpButtonsAndTheirLabelsLeadToTheShellFolders();
    void theSearchLabelTogglesTheBox();
    void thePreviewTellsWhatTheFileIs_data();
    void thePreviewTellsWhatTheFileIs();
    void quickClicksEndWithTheLastFile();
    void aFolderThatVanishesUnderTheDialogDoesNoHarm();
    void aFolderThatOpensLaterCanBeEntered();
    void namesOfEveryKindAreFoundAndPreviewed();
};

void tst_select_folder::theStartFolderFollowsThePreference_data()
{
    QTest::addColumn<QString>("choice");
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QString>("start");
    QTest::newRow("the last one") << "1"
                                  << "last"
                                  << "own"
                                  << "last";
    QTest::newRow("no last one: the desktop") << "1"
                                              << ""
                                              << "own"
                                              << "Desktop";
    QTest::newRow("the last one is gone: the desktop") << "1"
                                                       << "gone"
                                                       << "own"
                                                       << "Desktop";
    QTest::newRow("the user's own") << "2"
                                    << "last"
                                    << "own"
                                    << "own";
    QTest::newRow("no own: the desktop") << "2"
                                         << "last"
                                         << ""
                                         << "Desktop";
    QTest::newRow("anything else: pictures") << "7"
                                             << "last"
                                             << "own"
                                             << "Pictures";
}

void tst_select_folder::theStartFolderFollowsThePreference()
{
    QFETCH(QString, choice);
    QFETCH(QString, last);
    QFETCH(QString, chosen);
    QFETCH(QString, start);
    for (const char *name : {"last", "own", "Desktop", "Pictures"})
        QVERIFY(QDir().mkpath(m_home->path() + QLatin1String(name)));
    const auto inHome = [&](const QString &name) { return name.isEmpty() ? name : m_home->path() + name; };
    saveOption("DefaultOpenFolder", choice);
    saveOption("UserChoiceOpenFolder", inHome(chosen));
    Dialog &dialog = openAt(inHome(last));
    QCOMPARE(dialog.Dir1->path(), inHome(start));
}

void tst_select_folder::aFolderShowsItsFilesInTheOrderOfCollection()
{
    for (const char *name : {"song.mid", "b10.jpg", "B9.JPG", "photo.pcd", "note.txt"})
        write(name);
    Dialog &dialog = openAt(base());
    QTRY_COMPARE(dialog.File1->items().join(QLatin1Char(' ')), QStringLiteral("B9.JPG b10.jpg song.mid photo.pcd"));
    form<frmPreferences>().cmdClearAllTypes->click();
    BuildFilePatterns();
    QCOMPARE(dialog.File1->items(), QStringList(QStringLiteral("song.mid")));
}

void tst_select_folder::aFolderWithoutFilesShowsNone()
{
    write("full/a.jpg");
    write("empty/a.txt");
    Dialog &dialog = openAt(base() + QStringLiteral("full"));
    QTRY_COMPARE(dialog.File1->count(), 1);
    QVERIFY(dialog.Dir1->setPath(base() + QStringLiteral("empty/")));
    QCOMPARE(dialog.File1->count(), 0);
    QVERIFY2(!dialog.Dir1->setPath(base() + QStringLiteral("gone")), "what is not there changes nothing");
    QCOMPARE(dialog.Dir1->path(), base() + QStringLiteral("empty"));
}

void tst_select_folder::keysHighlightAndEnterTakes()
{
    write("one/1.jpg");
    write("two/2.jpg");
    Dialog &dialog = openAt(base());
    QSignalSpy changes(dialog.Dir1, &FolderTree::Change);
    QTest::keyClick(dialog.Dir1, Qt::Key_Down);
    QTest::keyClick(dialog.Dir1, Qt::Key_Down);
    QCOMPARE(dialog.Dir1->listPath(), base() + QStringLiteral("two"));
    QCOMPARE(changes.count(), 0);
    QTest::keyClick(dialog.Dir1, Qt::Key_Return);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(dialog.Dir1->path(), base() + QStringLiteral("two"));
    QVERIFY2(dialog.isVisible(), "Enter in the tree is not OK");
    QCOMPARE(dialog.File1->items(), QStringList(QStringLiteral("2.jpg")));
    QTest::keyClick(dialog.Dir1, Qt::Key_Up);
    QVERIFY2(changes.wait(), "resting on an entry takes it too");
    QCOMPARE(dialog.Dir1->path(), base() + QStringLiteral("one"));
}

void tst_select_folder::aDriveThatIsNotReadyFallsBack()
{
    Dialog &dialog = openAt(base());
    const int before = dialog.Drive1->currentIndex();
    dialog.Drive1->addItem(QStringLiteral("ejected"), base() + QStringLiteral("ejected/"));
    dialog.Drive1->setCurrentIndex(dialog.Drive1->count() - 1);
    QCOMPARE(dialog.Drive1->currentIndex(), before);
    QCOMPARE(dialog.Dir1->path(), base().chopped(1));
    dialog.Drive1->setItemData(dialog.Drive1->count() - 1, m_home->path());
    dialog.Drive1->setCurrentIndex(dialog.Drive1->count() - 1);
    QCOMPARE(dialog.Dir1->path(), m_home->path().chopped(1));
}

void tst_select_folder::jumpButtonsAndTheirLabelsLeadToTheShellFolders()
{
    for (const char *name : {"Desktop", "Documents", "Pictures"})
        QVERIFY(QDir().mkpath(m_home->path() + QLatin1String(name)));
    Dialog &dialog = openAt(base());
    dialog.cmdFolder[1]->click();
    QCOMPARE(folderWithSeparator(dialog.Dir1->path()), WindowsSystemFolders().documents());
    QTest::mouseClick(dialog.lblButtons[3], Qt::LeftButton);
    QCOMPARE(folderWithSeparator(dialog.Dir1->path()), WindowsSystemFolders().pictures());
}

void tst_select_folder::theSearchLabelTogglesTheBox()
{
    Dialog &dialog = openAt(base());
    QVERIFY(!dialog.chkSearchSubs->isChecked());
    QTest::mouseClick(dialog.lblSearchSubFolders, Qt::LeftButton);
    QVERIFY(dialog.chkSearchSubs->isChecked());
    QTest::mouseClick(dialog.lblSearchSubFolders, Qt::RightButton);
    QVERIFY(dialog.chkSearchSubs->isChecked());
}

void tst_select_folder::thePreviewTellsWhatTheFileIs_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("width");
    QTest::addColumn<QString>("colors");
    QTest::addColumn<bool>("pictured");
    QTest::newRow("a picture") << "wide.bmp"
                               << "640 Pixels"
                               << "16.7 Million (24-bit)" << true;
    QTest::newRow("no picture inside") << "broken.jpg"
                                       << ""
                                       << "Unknown" << false;
    QTest::newRow("music") << "song.mid"
                           << ""
                           << "" << false;
}

void tst_select_folder::thePreviewTellsWhatTheFileIs()
{
    QFETCH(QString, name);
    QFETCH(QString, width);
    QFETCH(QString, colors);
    QFETCH(bool, pictured);
    m_home->writePicture(QStringLiteral("media/wide.bmp"), QSize(640, 200));
    m_home->write(QStringLiteral("media/broken.jpg"), QByteArray(1234, 'x'));
    m_home->write(QStringLiteral("media/song.mid"), "MThd");
    Dialog &dialog = openAt(base());
    QTRY_COMPARE(dialog.File1->count(), 3);
    dialog.File1->selectOnly(static_cast<int>(dialog.File1->items().indexOf(name)));
    QCOMPARE(dialog.lblFileName->text(), name);
    QTRY_VERIFY(dialog.lblFileSize->text().endsWith(QLatin1String(" bytes")));
    QCOMPARE(dialog.lblWidth->text(), width);
    QCOMPARE(dialog.lblColors->text(), colors);
    QCOMPARE(!dialog.imgThumbnail->pixmap().isNull(), pictured);
    QCOMPARE(dialog.imgThumbnail->text(),
        name == QLatin1String("song.mid") ? QStringLiteral("(.MID) - MIDI Music Format") : QString());
    QVERIFY(dialog.Dir1->setPath(m_home->path()));
    QVERIFY(dialog.lblFileName->text().isEmpty() && dialog.lblFileSize->text().isEmpty());
    QVERIFY(dialog.imgThumbnail->pixmap().isNull());
}

void tst_select_folder::quickClicksEndWithTheLastFile()
{
    for (int number = 0; number < 40; ++number)
        m_home->writePicture(QStringLiteral("media/p%1.png").arg(number), QSize(100 + number, 50));
    Dialog &dialog = openAt(base());
    QTRY_COMPARE(dialog.File1->count(), 40);
    for (int round = 0; round < 3; ++round) {
        for (int row = 0; row < 40; ++row) {
            dialog.File1->selectOnly(row);
            QCoreApplication::processEvents();
        }
        QTRY_COMPARE(dialog.lblWidth->text(), QStringLiteral("139 Pixels"));
    }
    dialog.File1->selectOnly(7);
    release();
}

void tst_select_folder::aFolderThatVanishesUnderTheDialogDoesNoHarm()
{
    for (const char *name : {"a/1.jpg", "a/2.jpg", "a/sub/3.jpg"})
        write(name);
    Dialog &dialog = openAt(base() + QStringLiteral("a"));
    QTRY_COMPARE(dialog.File1->count(), 2);
    QVERIFY(QDir(base() + QStringLiteral("a")).removeRecursively());
    dialog.File1->selectOnly(1);
    QTest::keyClick(dialog.Dir1, Qt::Key_Down);
    QTest::keyClick(dialog.Dir1, Qt::Key_Return);
    BuildFilePatterns();
    QCOMPARE(dialog.File1->count(), 0);
    dialog.Form_Activate();
    QVERIFY(dialog.Dir1->setPath(base()));
    QCOMPARE(dialog.File1->count(), 0);
}

void tst_select_folder::aFolderThatOpensLaterCanBeEntered()
{
    write("late/1.jpg");
    const QString late = base() + QStringLiteral("late");
    QVERIFY(QFile::setPermissions(late, {}));
    if (folderExists(late) && listFolder(late)) {
        // Whoever may read everything gets the same by a folder that goes and comes back.
        QVERIFY(QFile::setPermissions(late, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QVERIFY(QDir(late).removeRecursively());
        write("late");
    }
    Dialog &dialog = openAt(base());
    QVERIFY(!dialog.Dir1->setPath(late));
    QCOMPARE(dialog.Dir1->path(), base().chopped(1));
    ignore(QFile::remove(late));
    ignore(QFile::setPermissions(late, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    write("late/1.jpg");
    QVERIFY(dialog.Dir1->setPath(late));
    QCOMPARE(dialog.File1->items(), QStringList(QStringLiteral("1.jpg")));
}

void tst_select_folder::namesOfEveryKindAreFoundAndPreviewed()
{
    const QString picture = m_home->writePicture(QStringLiteral("plain.png"), QSize(64, 32));
    const QVector<QByteArray> names = {"#1 50%.png", "%20.png", "<b>&amp;.png", "a\"b'c.png", "line\nbreak.png",
        "semi;colon?.png", "back\\slash*.png", "foreign\xE9\xFF.png", " blank .png"};
    const QString folder = base() + pathFromBytes("#\"\xFF\n%41/");
    QCOMPARE(::mkdir(pathToBytes(folder).constData(), 0700), 0);
    for (const QByteArray &name : names)
        QCOMPARE(::link(pathToBytes(picture).constData(), pathToBytes(folder + pathFromBytes(name)).constData()), 0);
    Dialog &dialog = openAt(folder);
    QTRY_COMPARE(dialog.File1->count(), static_cast<int>(names.size()));
    for (int row = 0; row < dialog.File1->count(); ++row) {
        dialog.File1->selectOnly(row);
        QTRY_COMPARE(dialog.lblWidth->text(), QStringLiteral("64 Pixels"));
        QCOMPARE(dialog.lblFileName->text(), displayPath(dialog.File1->itemText(row)));
    }
    release();
    for (const bool tree : {false, true}) {
        searchFoldersInto({tree ? base() : folder}, tree);
        QStringList found = viewer().lstSelect->items();
        QCOMPARE(found.size(), names.size());
        for (const QByteArray &name : names)
            QVERIFY2(found.contains(folder + pathFromBytes(name)), name.constData());
    }
    viewer().cmdClearSelectionList_Click();
    for (const QByteArray &name : names)
        QCOMPARE(::unlink(pathToBytes(folder + pathFromBytes(name)).constData()), 0);
    QCOMPARE(::rmdir(pathToBytes(folder).constData()), 0);
}

QTEST_MAIN(tst_select_folder)
#include "tst_select_folder.moc"
