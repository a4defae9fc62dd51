#include "viewer/liststest.h"

/// Moving between the two lists, in the real window.
class tst_lists : public ListsTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(start()); }
    void init() { fresh(); }
    void cleanup() { finish(); }
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
    void nothingIsLostWhateverComesInsideAYield_data();
    void nothingIsLostWhateverComesInsideAYield();
    void fullListsMoveAsAWhole();
};

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

void tst_lists::fullListsMoveAsAWhole()
{
    QStringList paths;
    for (int i = 0; i < ListBox::maximumCount; ++i)
        paths.append(QStringLiteral("/nowhere/holiday %1/IMG_%2.jpg").arg(i % 50).arg(i));
    QList<int> odd;
    QStringList oddPaths;
    QStringList evenPaths;
    for (int i = 0; i < paths.size(); ++i) {
        (i % 2 ? oddPaths : evenPaths).append(paths[i]);
        if (i % 2)
            odd.append(i);
    }
    fill(paths, {});
    select(selection(), odd);
    window().AddSelectedToDisplayList();
    QCOMPARE(display().items(), oddPaths);
    window().AddAllToDisplayList();
    QCOMPARE(display().items(), oddPaths + evenPaths);
    QVERIFY(selection().isEmpty());
    QList<int> first;
    for (int i = 0; i < oddPaths.size(); ++i)
        first.append(i);
    select(display(), first);
    window().RemoveSelectedFromDisplayList();
    QCOMPARE(display().items(), evenPaths);
    window().NextListItem();
    window().ClearDisplayList();
    QVERIFY(display().isEmpty());
}

QTEST_MAIN(tst_lists)
#include "tst_lists.moc"
