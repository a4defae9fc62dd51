#include "viewer/liststest.h"

/// Stepping through the Display list, and what is usable with which lists.
class tst_lists_use : public ListsTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(start()); }
    void init() { fresh(); }
    void cleanup() { finish(); }
    void nextAndPreviousFollowTheLoopItem_data();
    void nextAndPreviousFollowTheLoopItem();
    void nextTakesTheSelectionWithIt();
    void theTabsDecideAboutTheirButtons();
    void whatIsUsableFollowsTheListsAndTheKind_data();
    void whatIsUsableFollowsTheListsAndTheKind();
    void theToolTipNamesTheSelectedEntry();
    void doubleClickAndEnterOpen();
    void droppedFilesAndFoldersAreAdded();
    void clicksDuringBulkWorkDisplayNothing();
};

void tst_lists_use::nextAndPreviousFollowTheLoopItem_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<bool>("next");
    QTest::addColumn<bool>("loop");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("selected");
    QTest::addColumn<bool>("stops");
    QTest::newRow("next in the middle") << 1 << true << false << 2 << 1 << false;
    QTest::newRow("previous in the middle") << 2 << false << false << 1 << 0 << false;
    QTest::newRow("next at the end stops, past the end") << 3 << true << false << 4 << 2 << true;
    QTest::newRow("previous at the start stops") << 1 << false << false << 0 << 0 << true;
    QTest::newRow("next at the end goes round") << 3 << true << true << 1 << 0 << false;
    QTest::newRow("previous at the start goes round") << 1 << false << true << 3 << 2 << false;
}

void tst_lists_use::nextAndPreviousFollowTheLoopItem()
{
    QFETCH(int, start);
    QFETCH(bool, next);
    QFETCH(bool, loop);
    QFETCH(int, selected);
    QFETCH(bool, stops);
    fill({}, names(QStringLiteral("abc")));
    display().selectOnly(start - 1);
    QCOMPARE(globals.CurrentListIndex, start);
    window().mnuSlideShowLoopAround->setChecked(loop);
    window().mnuSlideShowRunSlideShow->setChecked(true);
    if (next)
        window().NextListItem();
    else
        window().PreviousListItem();
    QTEST(globals.CurrentListIndex, "position");
    QCOMPARE(display().selectedIndices(), QList<int>{selected});
    QCOMPARE(window().mnuSlideShowRunSlideShow->isChecked(), !stops);
    QCOMPARE(globals.ShowStopRequested, stops);
}

void tst_lists_use::nextTakesTheSelectionWithIt()
{
    const QStringList paths = pictures(3);
    fill({}, paths);
    display().selectOnly(0);
    window().mnuPictureNext_Click();
    QCOMPARE(globals.CurrentMediaFile, paths[1]);
    QCOMPARE(window().CurrentPicture->text(), QStringLiteral("2"));
    window().mnuPictureNext_Click();
    window().mnuPicturePrevious_Click();
    QCOMPARE(globals.CurrentMediaFile, paths[1]);
    QCOMPARE(display().selectedIndices(), QList<int>{1});
    // A single entry with loop around is shown again.
    window().ClearDisplayList();
    fill({}, {paths[2]});
    display().selectOnly(0);
    globals.CurrentMediaFile.clear();
    window().mnuSlideShowLoopAround->setChecked(true);
    window().NextListItem();
    QCOMPARE(globals.CurrentMediaFile, paths[2]);
    QCOMPARE(globals.CurrentListIndex, 1);
}

void tst_lists_use::theTabsDecideAboutTheirButtons()
{
    auto &w = window();
    fill(names(QStringLiteral("a")), names(QStringLiteral("b")));
    const auto usable = [&] {
        return QList<bool>{w.cmdClearSelectionList->isEnabled(), w.cmdUp->isEnabled(), w.cmdDown->isEnabled(),
            w.cmdLeftOne->isEnabled(), w.cmdLeftAll->isEnabled()};
    };
    w.tabFileList->setCurrentIndex(1);
    QCOMPARE(usable(), QList<bool>({false, true, true, true, true}));
    w.tabFileList->setCurrentIndex(0);
    QCOMPARE(usable(), QList<bool>({true, false, false, false, false}));
    display().clear();
    selection().clear();
    w.lblCount->setText(QStringLiteral("0"));
    for (const int tab : {1, 0}) {
        w.tabFileList->setCurrentIndex(tab);
        QCOMPARE(usable(), QList<bool>({false, false, false, false, false}));
    }
}

void tst_lists_use::whatIsUsableFollowsTheListsAndTheKind_data()
{
    QTest::addColumn<QString>("select");
    QTest::addColumn<QString>("display");
    // Each letter stands for one thing that must be usable; see the test.
    QTest::addColumn<QString>("usable");
    QTest::newRow("both lists empty") << ""
                                      << ""
                                      << "VLFEHS";
    QTest::newRow("only a selection") << "/a.jpg"
                                      << ""
                                      << "VLFEHSamn";
    QTest::newRow("a picture") << ""
                               << "/a.jpg"
                               << "VLFEHSmepocrsxzTP";
    QTest::newRow("a poly picture") << ""
                                    << "/a.psd"
                                    << "VLFEHSmepocrsxzTP";
    QTest::newRow("music") << "/a.jpg"
                           << "/a.mp3"
                           << "LFEHSamnerxsP";
    QTest::newRow("unknown kinds are pictures") << ""
                                                << "/a.xyz"
                                                << "VLFEHSmepocrsxzTP";
}

void tst_lists_use::whatIsUsableFollowsTheListsAndTheKind()
{
    QFETCH(QString, select);
    QFETCH(QString, display);
    auto &w = window();
    fill(select.isEmpty() ? QStringList() : QStringList{select},
        display.isEmpty() ? QStringList() : QStringList{display});
    if (!display.isEmpty()) {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        this->display().selectOnly(0);
    }
    // A command this build does not show carries its state all the same; it can be read when it is shown.
    for (const MenuRow &row : mainMenuRows())
        (w.*row.item)->setVisible(true);
    w.UpdateMenuAndToolbarState();
    const auto button = [&](const char *key) { return w.toolbarButton(QString::fromLatin1(key))->isEnabled(); };
    QString found;
    const auto tell = [&](bool on, char letter) {
        if (on)
            found += QLatin1Char(letter);
    };
    tell(w.mnuPictureViewer->isEnabled(), 'V');
    tell(button("Load"), 'L');
    tell(button("Directory"), 'F');
    tell(button("Exit"), 'E');
    tell(button("About"), 'H');
    tell(button("filetype"), 'S');
    tell(w.cmdRightOne->isEnabled() && w.cmdRightAll->isEnabled() && w.cmdClearSelectionList->isEnabled(), 'a');
    tell(w.mnuPicture->isEnabled(), 'm');
    tell(w.mnuPictureAddOne->isEnabled() && w.mnuPictureAddAll->isEnabled(), 'n');
    tell(w.mnuEdit->isEnabled(), 'e');
    tell(w.mnuFilePrintImage->isEnabled() && w.mnuFilePrinterSetup->isEnabled(), 'p');
    tell(w.mnuFileSaveImageAs->isEnabled() && w.mnuFileSaveThumbnail->isEnabled() && w.mnuFileProperties->isEnabled(),
        'o');
    tell(w.mnuPictureCopy->isEnabled() && w.mnuEditZoom->isEnabled() && w.mnuPictureDesktopWallpaper->isEnabled(), 'c');
    tell(w.mnuPictureRemoveOne->isEnabled() && w.mnuFileClear->isEnabled() && w.cmdLeftAll->isEnabled(), 'r');
    tell(w.mnuFileSave->isEnabled() && w.mnuFileSaveAs->isEnabled() && w.mnuSlideShow->isEnabled(), 's');
    tell(w.mnuPictureNext->isEnabled() && w.mnuViewFullScreen->isEnabled() && w.mnuPictureThumbNailViewer->isEnabled(),
        'x');
    tell(w.mnuFileSendToEmailAttachment->isEnabled(), 'z');
    tell(button("Copy") && button("zoominc"), 'T');
    tell(button("Next") && button("Previous") && button("Save"), 'P');
    const auto sorted = [](QString text) {
        std::sort(text.begin(), text.end());
        return text;
    };
    QFETCH(QString, usable);
    QCOMPARE(sorted(found), sorted(usable));
}

void tst_lists_use::theToolTipNamesTheSelectedEntry()
{
    fill({}, {QStringLiteral("/x/one & two.jpg"), QStringLiteral("/x/<img src=a>.jpg")});
    const auto tip = [&] {
        QTest::mouseMove(display().viewport(), {20, 20});
        window().lstDisplay_MouseMove();
        return display().toolTip();
    };
    QCOMPARE(tip(), QString());
    display().selectOnly(0);
    QCOMPARE(tip(), QStringLiteral("Selected File In Folder: one & two.jpg"));
    display().selectOnly(1);
    QVERIFY2(!tip().contains(QLatin1String("<img")), "a file name is no mark-up");
    display().clearSelections();
    QCOMPARE(tip(), QString());
}

void tst_lists_use::doubleClickAndEnterOpen()
{
    fill({}, {QStringLiteral("/nowhere/a.mp3"), QStringLiteral("/nowhere/b.mp3")});
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        display().selectOnly(1);
    }
    window().tabFileList->setCurrentIndex(1);
    globals.CurrentListIndex = 0;
    QTest::keyClick(&display(), Qt::Key_Return);
    QCOMPARE(globals.CurrentListIndex, 2);
    QVERIFY2(!globals.AutoPlayMotion, "Enter plays this once and raises no flags");
    globals.CurrentListIndex = 0;
    window().lstDisplay_DblClick();
    QCOMPARE(globals.CurrentListIndex, 2);
    QVERIFY(globals.AutoPlayMotion && globals.AutoPlayOnce);
}

void tst_lists_use::droppedFilesAndFoldersAreAdded()
{
    const QString one = m_home->writePicture(QStringLiteral("drop/one.png"), {10, 10});
    m_home->writePicture(QStringLiteral("drop/deep/er/two.png"), {10, 10});
    m_home->write(QStringLiteral("drop/deep/text.txt"), "no picture");
    const QString single = m_home->writePicture(QStringLiteral("single.png"), {10, 10});
    fill(names(QStringLiteral("s")), names(QStringLiteral("x")));
    window().addDroppedFiles({single, m_home->path() + QStringLiteral("drop"), QStringLiteral("/nowhere/gone.png")});
    QCOMPARE(letters(display()), QStringLiteral("xsto"));
    QCOMPARE(display().selectedIndices(), QList<int>{1});
    QCOMPARE(globals.CurrentMediaFile, single);
    QCOMPARE(letters(selection()), QStringLiteral("s"));
    QVERIFY(display().items().contains(one));
}

void tst_lists_use::clicksDuringBulkWorkDisplayNothing()
{
    const QStringList paths = pictures(3);
    fill({}, paths);
    display().selectOnly(0);
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        display().selectOnly(2);
    }
    QCOMPARE(globals.CurrentMediaFile, paths[0]);
    QCOMPARE(globals.CurrentListIndex, 1);
}

QTEST_MAIN(tst_lists_use)
#include "tst_lists_use.moc"
