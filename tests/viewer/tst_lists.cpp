#include "app/globals.h"
#include "platform/filepath.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// Moving between the two lists, their counters, and what is usable, in the real window.
class tst_lists : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void addSelectedMovesWhatIsSelected_data();
    void addSelectedMovesWhatIsSelected();
    void addAllEmptiesTheSelectionListAndShowsTheFirst();
    void duplicatesCountTwice();
    void aFullDisplayListLosesNothing();
    void removalChoosesTheNextEntry_data();
    void removalChoosesTheNextEntry();
    void removingTheOnlyEntryEmptiesAndStops();
    void removingAllOfSeveralLeavesNothingBehind();
    void clearingBlanksPictureAndPosition();
    void onlyTheMarkedEntryMovesUpAndDown();
    void movingWorksInAFullList();
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
    void nothingIsLostWhateverComesInsideAYield_data();
    void nothingIsLostWhateverComesInsideAYield();
    void fullListsMoveQuickly();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    ListBox &display() { return *window().lstDisplay; }
    ListBox &selection() { return *window().lstSelect; }
    QStringList pictures(int count);
    void fill(const QStringList &toSelect, const QStringList &toDisplay);
    void verifyInStep();
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

QStringList names(const QString &letters)
{
    QStringList result;
    for (const QChar letter : letters)
        result.append(QStringLiteral("/nowhere/%1.jpg").arg(letter));
    return result;
}

/// The first letters of the file names, in order.
QString letters(const ListBox &list)
{
    QString result;
    for (const QString &path : list.items())
        result += FileNameOfPath(path).left(1);
    return result;
}

void select(ListBox &list, const QList<int> &indices)
{
    const ScopedFlag busy(globals.ItemSelectionBusy);
    list.clearSelections();
    for (const int index : indices)
        list.setSelected(index, true);
}

}

void tst_lists::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_lists::init()
{
    ScriptedDialogs::install();
    window().ClearDisplayList();
    window().cmdClearSelectionList_Click();
    window().mnuSlideShowLoopAround->setChecked(false);
    window().mnuSlideShowRunSlideShow->setChecked(false);
    window().tabFileList->setCurrentIndex(0);
    globals.ShowStopRequested = false;
    globals.AutoPlayMotion = false;
    globals.AutoPlayOnce = false;
}

void tst_lists::cleanup()
{
    verifyInStep();
    setDialogs(nullptr);
}

QStringList tst_lists::pictures(int count)
{
    QStringList paths;
    for (int i = 0; i < count; ++i)
        paths.append(m_home->writePicture(QStringLiteral("%1.png").arg(QChar(u'a' + i)), {40 + i, 30}));
    return paths;
}

void tst_lists::fill(const QStringList &toSelect, const QStringList &toDisplay)
{
    selection().addItems(toSelect);
    display().addItems(toDisplay);
    window().lblCount->setText(QString::number(display().count()));
    window().UpdateMenuAndToolbarState();
}

void tst_lists::verifyInStep()
{
    QCOMPARE(window().lblCount->text(), QString::number(display().count()));
    QVERIFY(!globals.ItemSelectionBusy);
    if (display().isEmpty())
        QVERIFY(window().CurrentPicture->text().toInt() <= 0);
}

void tst_lists::addSelectedMovesWhatIsSelected_data()
{
    QTest::addColumn<QList<int>>("selected");
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("display");
    QTest::addColumn<int>("nextSelected");
    QTest::newRow("one in the middle") << QList<int>{2} << "abde"
                                       << "xc" << 2;
    QTest::newRow("several, in list order") << QList<int>{0, 1, 3} << "ce"
                                            << "xabd" << 0;
    QTest::newRow("the last: the new last is next") << QList<int>{4} << "abcd"
                                                    << "xe" << 3;
    QTest::newRow("all") << QList<int>{0, 1, 2, 3, 4} << ""
                         << "xabcde" << -1;
}

void tst_lists::addSelectedMovesWhatIsSelected()
{
    QFETCH(QList<int>, selected);
    QFETCH(int, nextSelected);
    fill(names(QStringLiteral("abcde")), names(QStringLiteral("x")));
    select(selection(), selected);
    window().AddSelectedToDisplayList();
    QTEST(letters(selection()), "left");
    QTEST(letters(display()), "display");
    QCOMPARE(selection().selectedIndices(), nextSelected < 0 ? QList<int>() : QList<int>{nextSelected});
    QCOMPARE(display().selectedIndices(), QList<int>{0});
    QVERIFY2(window().StatusBar1->panelText(2).contains(QLatin1String("X.Jpg - Not Available"), Qt::CaseInsensitive),
        "the first entry of the DisplayList is shown");
    QCOMPARE(globals.CurrentListIndex, 1);
}

void tst_lists::addAllEmptiesTheSelectionListAndShowsTheFirst()
{
    const QStringList paths = pictures(3);
    fill(paths, {});
    window().cmdRightAll_Click();
    QCOMPARE(display().items(), paths);
    QVERIFY(selection().isEmpty());
    QCOMPARE(window().tabFileList->currentIndex(), 1);
    QCOMPARE(display().selectedIndices(), QList<int>{0});
    QCOMPARE(globals.CurrentMediaFile, paths[0]);
    QVERIFY(!window().Image1->isEmpty());
    // Nothing to add: the command leaves everything as it is.
    window().AddAllToDisplayList();
    QCOMPARE(display().items(), paths);
}

void tst_lists::duplicatesCountTwice()
{
    fill(names(QStringLiteral("aa")), {});
    window().AddAllToDisplayList();
    fill(names(QStringLiteral("a")), {});
    window().AddAllToDisplayList();
    QCOMPARE(letters(display()), QStringLiteral("aaa"));
    QCOMPARE(window().lblCount->text(), QStringLiteral("3"));
}

void tst_lists::aFullDisplayListLosesNothing()
{
    fill(names(QStringLiteral("abcd")), QStringList(ListBox::maximumCount - 2, QStringLiteral("/x.jpg")));
    select(selection(), {0, 2, 3});
    window().AddSelectedToDisplayList();
    QCOMPARE(display().count(), ListBox::maximumCount);
    QCOMPARE(letters(selection()), QStringLiteral("bd"));
    window().AddAllToDisplayList();
    QCOMPARE(letters(selection()), QStringLiteral("bd"));
    QCOMPARE(FileNameOfPath(display().itemText(ListBox::maximumCount - 1)), QStringLiteral("c.jpg"));
}

void tst_lists::removalChoosesTheNextEntry_data()
{
    QTest::addColumn<QList<int>>("selected");
    QTest::addColumn<QString>("left");
    QTest::addColumn<int>("next");
    QTest::newRow("the first") << QList<int>{0} << "bcde" << 0;
    QTest::newRow("in the middle") << QList<int>{2} << "abde" << 2;
    QTest::newRow("the last") << QList<int>{4} << "abcd" << 3;
    QTest::newRow("scattered: where the lowest was") << QList<int>{1, 3, 4} << "ac" << 1;
    QTest::newRow("the end: the new last one") << QList<int>{2, 3, 4} << "ab" << 1;
    QTest::newRow("marked only: nothing goes, the first is chosen") << QList<int>{} << "abcde" << 0;
}

void tst_lists::removalChoosesTheNextEntry()
{
    QFETCH(QList<int>, selected);
    QFETCH(int, next);
    fill({}, names(QStringLiteral("abcde")));
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        display().setListIndex(4);
    }
    select(display(), selected);
    window().RemoveSelectedFromDisplayList();
    QTEST(letters(display()), "left");
    QCOMPARE(display().selectedIndices(), QList<int>{next});
    QCOMPARE(display().listIndex(), next);
    QCOMPARE(globals.CurrentListIndex, next + 1);
    QCOMPARE(window().CurrentPicture->text(), QString::number(next + 1));
}

void tst_lists::removingTheOnlyEntryEmptiesAndStops()
{
    fill({}, pictures(1));
    display().selectOnly(0);
    QVERIFY(!window().Image1->isEmpty());
    window().mnuSlideShowRunSlideShow->setChecked(true);
    display().clearSelections();
    window().RemoveSelectedFromDisplayList();
    QVERIFY(display().isEmpty());
    QVERIFY(window().Image1->isEmpty());
    QVERIFY(!window().mnuSlideShowRunSlideShow->isChecked());
    QCOMPARE(globals.CurrentListIndex, 0);
}

void tst_lists::removingAllOfSeveralLeavesNothingBehind()
{
    fill(names(QStringLiteral("z")), pictures(3));
    display().selectOnly(0);
    QVERIFY(!window().Image1->isEmpty());
    select(display(), {0, 1, 2});
    window().mnuSlideShowRunSlideShow->setChecked(true);
    window().RemoveSelectedFromDisplayList();
    QVERIFY2(window().Image1->isEmpty(), "the picture of an entry that has gone is not shown");
    QCOMPARE(window().StatusBar1->panelText(2), QString());
    QVERIFY(display().isEmpty());
    QCOMPARE(display().listIndex(), -1);
    QCOMPARE(globals.CurrentListIndex, 0);
    QVERIFY2(!window().mnuSlideShowRunSlideShow->isChecked(), "a show without entries ends");
    QVERIFY(!window().mnuEdit->isEnabled());
}

void tst_lists::clearingBlanksPictureAndPosition()
{
    fill(names(QStringLiteral("z")), pictures(2));
    display().selectOnly(1);
    QCOMPARE(window().CurrentPicture->text(), QStringLiteral("2"));
    window().ClearDisplayList();
    QVERIFY(display().isEmpty());
    QVERIFY(window().Image1->isEmpty());
    QVERIFY(window().Image1->isVisible());
    QCOMPARE(window().Image1->size(), window().Picture1->contentsRect().size());
    QCOMPARE(window().StatusBar1->panelText(2), QString());
    QCOMPARE(letters(selection()), QStringLiteral("z"));
    // With the other list empty too, no position is told any more.
    window().cmdClearSelectionList_Click();
    QCOMPARE(window().CurrentPicture->text(), QString());
}

void tst_lists::onlyTheMarkedEntryMovesUpAndDown()
{
    fill({}, names(QStringLiteral("abcd")));
    select(display(), {0, 1});
    window().MoveDisplayItemDown();
    QCOMPARE(letters(display()), QStringLiteral("acbd"));
    QCOMPARE(display().selectedIndices(), QList<int>({0, 2}));
    QCOMPARE(display().listIndex(), 2);
    QCOMPARE(globals.CurrentListIndex, 3);
    window().MoveDisplayItemDown();
    window().MoveDisplayItemDown();
    QVERIFY2(letters(display()) == QLatin1String("acdb"), "the last entry stays the last");
    for (int i = 0; i < 5; ++i)
        window().MoveDisplayItemUp();
    QCOMPARE(letters(display()), QStringLiteral("bacd"));
    QCOMPARE(display().listIndex(), 0);
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        display().setListIndex(-1);
    }
    window().MoveDisplayItemUp();
    window().MoveDisplayItemDown();
    QCOMPARE(letters(display()), QStringLiteral("bacd"));
}

void tst_lists::movingWorksInAFullList()
{
    fill({}, names(QStringLiteral("ab")) + QStringList(ListBox::maximumCount - 2, QStringLiteral("/x.jpg")));
    select(display(), {0});
    window().MoveDisplayItemDown();
    QCOMPARE(letters(display()).left(3), QStringLiteral("bax"));
    window().MoveDisplayItemUp();
    QCOMPARE(letters(display()).left(3), QStringLiteral("abx"));
    QCOMPARE(display().count(), ListBox::maximumCount);
}

void tst_lists::nextAndPreviousFollowTheLoopItem_data()
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

void tst_lists::nextAndPreviousFollowTheLoopItem()
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

void tst_lists::nextTakesTheSelectionWithIt()
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

void tst_lists::theTabsDecideAboutTheirButtons()
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

void tst_lists::whatIsUsableFollowsTheListsAndTheKind_data()
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

void tst_lists::whatIsUsableFollowsTheListsAndTheKind()
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

void tst_lists::theToolTipNamesTheSelectedEntry()
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

void tst_lists::doubleClickAndEnterOpen()
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

void tst_lists::droppedFilesAndFoldersAreAdded()
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

void tst_lists::clicksDuringBulkWorkDisplayNothing()
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

void tst_lists::nothingIsLostWhateverComesInsideAYield_data()
{
    QTest::addColumn<QString>("work");
    QTest::addColumn<QString>("disturbance");
    for (const char *work : {"add selected", "add all", "remove selected", "down", "next"}) {
        for (const char *disturbance : {"clicks", "add selected", "add all", "remove selected", "clear", "up"})
            QTest::addRow("%s, inside it %s", work, disturbance)
                << QString::fromLatin1(work) << QString::fromLatin1(disturbance);
    }
}

void tst_lists::nothingIsLostWhateverComesInsideAYield()
{
    QFETCH(QString, work);
    QFETCH(QString, disturbance);
    auto &w = window();
    const QString all = QStringLiteral("abcdefgh");
    const auto run = [&w, this](const QString &what) {
        if (what == QLatin1String("add selected"))
            w.AddSelectedToDisplayList();
        else if (what == QLatin1String("add all"))
            w.AddAllToDisplayList();
        else if (what == QLatin1String("remove selected"))
            w.RemoveSelectedFromDisplayList();
        else if (what == QLatin1String("down"))
            w.MoveDisplayItemDown();
        else if (what == QLatin1String("up"))
            w.MoveDisplayItemUp();
        else if (what == QLatin1String("next"))
            w.NextListItem();
        else if (what == QLatin1String("clear"))
            w.ClearDisplayList();
        else if (!selection().isEmpty())
            selection().setSelected(selection().count() - 1, true);
    };
    const bool takesAway = work == QLatin1String("remove selected") || disturbance == QLatin1String("remove selected")
        || disturbance == QLatin1String("clear");
    forEachYield(
        [&] {
            w.ClearDisplayList();
            w.cmdClearSelectionList_Click();
            fill(names(all.left(4)), names(all.mid(4)));
            select(selection(), {0, 2});
            select(display(), {1});
            globals.CurrentListIndex = 2;
        },
        [&] { run(work); }, [&] { run(disturbance); },
        [&](int yield) {
            QString there = letters(selection()) + letters(display());
            std::sort(there.begin(), there.end());
            const auto message =
                QStringLiteral("yield %1: %2 | %3").arg(yield).arg(letters(selection()), letters(display()));
            QVERIFY2(std::adjacent_find(there.begin(), there.end()) == there.end(), qPrintable(message));
            QVERIFY2(takesAway || there == all, qPrintable(message));
            QVERIFY2(w.lblCount->text().toInt() == display().count(),
                qPrintable(message + QLatin1Char(' ') + w.lblCount->text()));
            QVERIFY(!globals.ItemSelectionBusy);
        });
}

void tst_lists::fullListsMoveQuickly()
{
    QStringList paths;
    for (int i = 0; i < ListBox::maximumCount; ++i)
        paths.append(QStringLiteral("/nowhere/holiday %1/IMG_%2.jpg").arg(i % 50).arg(i));
    const auto timed = [](const char *what, auto &&work) {
        QElapsedTimer timer;
        timer.start();
        work();
        qInfo("%-24s %lld ms", what, timer.elapsed());
        QVERIFY2(timer.elapsed() < 2000, what);
    };
    QList<int> odd;
    for (int i = 1; i < paths.size(); i += 2)
        odd.append(i);
    fill(paths, {});
    select(selection(), odd);
    timed("add every second", [&] { window().AddSelectedToDisplayList(); });
    QCOMPARE(display().count(), odd.size());
    timed("add the rest", [&] { window().AddAllToDisplayList(); });
    QCOMPARE(display().count(), paths.size());
    select(display(), odd);
    timed("remove every second", [&] { window().RemoveSelectedFromDisplayList(); });
    QCOMPARE(display().count(), paths.size() - odd.size());
    timed("next", [&] { window().NextListItem(); });
    timed("clear", [&] { window().ClearDisplayList(); });
}

QTEST_MAIN(tst_lists)
#include "tst_lists.moc"
