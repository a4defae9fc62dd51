#include "actions/frmListManagement.h"

#include "app/globals.h"
#include "platform/filepath.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// The list management in its real window, beside the Main Viewer whose lists it works on.
class tst_frmListManagement : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aListIsChosenBeforeAnythingCanBeDone();
    void anEmptyListLeavesTheChoiceToTheOther_data();
    void anEmptyListLeavesTheChoiceToTheOther();
    void theBoxesShowTheirMarkInTheirLook();
    void arrowKeysWalkTheGrid();
    void selectingClearingAndReversingFollowTheTypes();
    void reversingCountsTheTypesOfAnEntry();
    void findStartsAfresh();
    void nothingIsShownWhileTheSelectionChanges();
    void removalChoosesTheNextEntry_data();
    void removalChoosesTheNextEntry();
    void removalWithoutACurrentEntryDoesNothing();
    void theOnlyDisplayEntryGoesWhetherSelectedOrNot();
    void removingAllLeavesACountOfNothing();
    void theMainViewerShowsTheNewEntryWhenItIsBack();
    void whateverComesInsideAYield_data();
    void whateverComesInsideAYield();
    void escapeCloses();

private:
    frmMainViewer &viewer() { return form<frmMainViewer>(); }
    frmListManagement &window() { return form<frmListManagement>(); }
    ListBox &list(int which) { return which == 0 ? *viewer().lstSelect : *viewer().lstDisplay; }
    QCheckBox &box(const char *caption);
    void fill(const QStringList &toSelect, const QStringList &toDisplay);
    void choose(int which, const QList<int> &selected, int mark);
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

QStringList names(QByteArrayView letters, const char *extension = "jpg")
{
    QStringList result;
    for (const QChar letter : QString::fromLatin1(letters))
        result.append(QStringLiteral("/nowhere/%1.%2").arg(letter).arg(QLatin1String(extension)));
    return result;
}

QString letters(const ListBox &list)
{
    QString result;
    for (const QString &path : list.items())
        result += FileNameOfPath(path).left(1);
    return result;
}

}

void tst_frmListManagement::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_frmListManagement::init()
{
    ScriptedDialogs::install();
}

void tst_frmListManagement::cleanup()
{
    QVERIFY(!globals.ItemSelectionBusy);
    QCOMPARE(viewer().lblCount->text(), QString::number(viewer().lstDisplay->count()));
    unload<frmListManagement>();
    viewer().ReshowOnActivate = false;
    fill({}, {});
    setDialogs(nullptr);
}

QCheckBox &tst_frmListManagement::box(const char *caption)
{
    for (const TypeBox &row : typeBoxes()) {
        if (qstrcmp(row.caption, caption) == 0)
            return *window().chkFileType[row.index];
    }
    qFatal("no box %s", caption);
}

void tst_frmListManagement::fill(const QStringList &toSelect, const QStringList &toDisplay)
{
    viewer().ClearDisplayList();
    viewer().cmdClearSelectionList_Click();
    viewer().lstSelect->addItems(toSelect);
    viewer().lstDisplay->addItems(toDisplay);
    viewer().lblCount->setText(QString::number(toDisplay.size()));
    viewer().UpdateMenuAndToolbarState();
}

void tst_frmListManagement::choose(int which, const QList<int> &selected, int mark)
{
    const ScopedFlag busy(globals.ItemSelectionBusy);
    list(which).clearSelections();
    for (const int index : selected)
        list(which).setSelected(index, true);
    list(which).setListIndex(mark);
    window().optChangesApplyTo[which]->setChecked(true);
}

void tst_frmListManagement::aListIsChosenBeforeAnythingCanBeDone()
{
    fill(names("ab"), names("cd"));
    viewer().mnuPictureAdvListManagement->trigger();
    QVERIFY(window().isVisible());
    QVERIFY(!window().isModal());
    QCOMPARE(window().windowTitle(), QStringLiteral("Tessaly Lumora - Advanced List Management"));
    window().Form_Activate();
    QVERIFY(window().optChangesApplyTo[0]->isEnabled() && window().optChangesApplyTo[1]->isEnabled());
    for (const QPushButton *button : window().cmdAction)
        QVERIFY(!button->isEnabled());
    window().optChangesApplyTo[1]->click();
    for (const QPushButton *button : window().cmdAction)
        QVERIFY(button->isEnabled());
}

void tst_frmListManagement::anEmptyListLeavesTheChoiceToTheOther_data()
{
    QTest::addColumn<QString>("inSelect");
    QTest::addColumn<QString>("inDisplay");
    QTest::addColumn<int>("chosen");
    QTest::newRow("nothing to select from") << ""
                                            << "ab" << 1;
    QTest::newRow("nothing to display") << "ab"
                                        << "" << 0;
    QTest::newRow("nothing at all") << ""
                                    << "" << 0;
}

void tst_frmListManagement::anEmptyListLeavesTheChoiceToTheOther()
{
    QFETCH(QString, inSelect);
    QFETCH(QString, inDisplay);
    QFETCH(int, chosen);
    fill(names(inSelect.toLatin1()), names(inDisplay.toLatin1()));
    window().Form_Activate();
    QVERIFY(window().optChangesApplyTo[chosen]->isChecked());
    QCOMPARE(window().optChangesApplyTo[0]->isEnabled(), !inSelect.isEmpty());
    QCOMPARE(window().optChangesApplyTo[1]->isEnabled(), !inDisplay.isEmpty());
    for (const QPushButton *button : window().cmdAction)
        QVERIFY(button->isEnabled());
    // The lists may have been filled before the window is looked at again.
    fill(names("a"), names("b"));
    window().Form_Activate();
    QVERIFY(window().optChangesApplyTo[0]->isEnabled() && window().optChangesApplyTo[1]->isEnabled());
    QVERIFY(window().optChangesApplyTo[chosen]->isChecked());
}

void tst_frmListManagement::theBoxesShowTheirMarkInTheirLook()
{
    const auto looksChecked = [](const QCheckBox &shown) {
        return shown.font().bold() && qFuzzyCompare(shown.font().pointSizeF(), 8.0);
    };
    const auto looksPlain = [](const QCheckBox &shown) {
        return !shown.font().bold() && qFuzzyCompare(shown.font().pointSizeF(), 9.0);
    };
    QVERIFY(!window().chkFileType[50]);
    QVERIFY(looksPlain(box("(.THM)")));
    const int width = box("(.THM)").minimumWidth();
    window().cmdSelectAllTypes[0]->click();
    QCOMPARE(window().chkFileType.checkedCaptions().size(), 60);
    QVERIFY(looksChecked(box("(.THM)")));
    QVERIFY(box("(.THM)").sizeHint().width() <= width);
    box("(.JPG)").click();
    window().cmdSelectAllTypes[2]->click();
    QCOMPARE(window().chkFileType.checkedCaptions(), QStringList{QStringLiteral("(.JPG)")});
    QVERIFY(looksChecked(box("(.JPG)")) && looksPlain(box("(.THM)")));
    window().cmdSelectAllTypes[1]->click();
    QVERIFY(window().chkFileType.checkedCaptions().isEmpty());
    QVERIFY(looksPlain(box("(.JPG)")));
}

void tst_frmListManagement::arrowKeysWalkTheGrid()
{
    viewer().mnuPictureAdvListManagement_Click();
    QApplication::setActiveWindow(&window());
    box("(.ART)").setFocus();
    QTest::keyClick(window().focusWidget(), Qt::Key_Down);
    QTest::keyClick(window().focusWidget(), Qt::Key_Right);
    QTest::keyClick(window().focusWidget(), Qt::Key_Space);
    const QStringList checked = window().chkFileType.checkedCaptions();
    QCOMPARE(checked.size(), 1);
    const QPoint place = box(checked.first().toLatin1()).pos();
    QVERIFY(place.x() > box("(.ART)").x() && place.y() > box("(.ART)").y());
}

void tst_frmListManagement::selectingClearingAndReversingFollowTheTypes()
{
    for (const int which : {0, 1}) {
        const QStringList entries = names("abc") + names("de", "png") + names("f", "mp3");
        fill(which == 0 ? entries : QStringList(), which == 1 ? entries : QStringList());
        choose(which, {5}, 5);
        box("(.JPG)").setChecked(true);
        window().cmdAction[0]->click();
        QCOMPARE(list(which).selectedIndices(), (QList<int>{0, 1, 2, 5}));
        QCOMPARE(list(which).listIndex(), 2);
        box("(.JPG)").setChecked(false);
        box("(.MP3)").setChecked(true);
        box("(.PNG)").setChecked(true);
        window().cmdAction[2]->click();
        QCOMPARE(list(which).selectedIndices(), (QList<int>{0, 1, 2, 3, 4}));
        window().cmdAction[1]->click();
        QCOMPARE(list(which).selectedIndices(), (QList<int>{0, 1, 2}));
        window().cmdSelectAllTypes[1]->click();
    }
}

void tst_frmListManagement::reversingCountsTheTypesOfAnEntry()
{
    fill({},
        {QStringLiteral("/old.png/a.jpg"), QStringLiteral("/b.JPG"), QStringLiteral("/old.png/c.jpg"),
            QStringLiteral("/d.jpeg")});
    choose(1, {2}, 2);
    box("(.JPG)").setChecked(true);
    box("(.JPE)").setChecked(true);
    box("(.PNG)").setChecked(true);
    window().cmdAction[2]->click();
    QCOMPARE(list(1).selectedIndices(), (QList<int>{1, 2, 3}));
}

void tst_frmListManagement::findStartsAfresh()
{
    fill(names("abc"), names("x"));
    choose(0, {0, 1}, 0);
    window().show();
    window().txtFindWhat->setText(QStringLiteral("/C."));
    QTest::keyClick(window().txtFindWhat, Qt::Key_Return);
    QVERIFY2(list(0).selectedIndices().isEmpty(), "without a type nothing is found");
    box("(.WAV)").setChecked(true);
    QTest::keyClick(window().txtFindWhat, Qt::Key_Return);
    QCOMPARE(list(0).selectedIndices(), QList<int>{2});
    window().txtFindWhat->clear();
    window().cmdFind->click();
    QCOMPARE(list(0).selectedIndices().size(), 3);
    QVERIFY(list(1).selectedIndices().isEmpty());
}

void tst_frmListManagement::nothingIsShownWhileTheSelectionChanges()
{
    fill({},
        {m_home->writePicture(QStringLiteral("a.png"), {40, 30}),
            m_home->writePicture(QStringLiteral("b.png"), {40, 30})});
    list(1).selectOnly(0);
    const QString shown = globals.CurrentMediaFile;
    QCOMPARE(shown, list(1).itemText(0));
    choose(1, {0}, 0);
    box("(.PNG)").setChecked(true);
    bool allWereBusy = true;
    int clicks = 0;
    const auto connection = connect(&list(1), &ListBox::Click, this, [&] {
        ++clicks;
        allWereBusy = allWereBusy && globals.ItemSelectionBusy;
    });
    window().cmdAction[0]->click();
    disconnect(connection);
    QVERIFY(clicks > 0 && allWereBusy);
    QCOMPARE(globals.CurrentMediaFile, shown);
}

void tst_frmListManagement::removalChoosesTheNextEntry_data()
{
    QTest::addColumn<QList<int>>("selected");
    QTest::addColumn<QString>("left");
    QTest::addColumn<int>("next");
    QTest::newRow("in the middle") << QList<int>{1, 3} << "ace" << 1;
    QTest::newRow("the first") << QList<int>{0} << "bcde" << 0;
    QTest::newRow("the last ones") << QList<int>{3, 4} << "abc" << 2;
    QTest::newRow("none: the first is next") << QList<int>{} << "abcde" << 0;
    QTest::newRow("all") << QList<int>{0, 1, 2, 3, 4} << "" << -1;
}

void tst_frmListManagement::removalChoosesTheNextEntry()
{
    QFETCH(QList<int>, selected);
    QFETCH(QString, left);
    QFETCH(int, next);
    for (const int which : {0, 1}) {
        fill(names(which == 0 ? "abcde" : "x"), names(which == 1 ? "abcde" : "x"));
        choose(which, selected, 4);
        window().cmdAction[3]->click();
        QCOMPARE(letters(list(which)), left);
        QCOMPARE(list(which).listIndex(), next);
        QCOMPARE(list(which).selectedIndices(), next < 0 ? QList<int>() : QList<int>{next});
        QCOMPARE(letters(list(1 - which)), QStringLiteral("x"));
        QCOMPARE(viewer().lblCount->text().toInt(), list(1).count());
        QCOMPARE(viewer().cmdRightAll->isEnabled(), !list(0).isEmpty());
        QCOMPARE(viewer().mnuEdit->isEnabled(), !list(1).isEmpty());
    }
}

void tst_frmListManagement::removalWithoutACurrentEntryDoesNothing()
{
    fill(names("ab"), names("ab"));
    for (const int which : {0, 1}) {
        choose(which, {0, 1}, -1);
        QCOMPARE(list(which).listIndex(), -1);
        window().cmdAction[3]->click();
        QCOMPARE(letters(list(which)), QStringLiteral("ab"));
    }
}

void tst_frmListManagement::theOnlyDisplayEntryGoesWhetherSelectedOrNot()
{
    const QString picture = m_home->writePicture(QStringLiteral("a.png"), {40, 30});
    for (const bool selected : {true, false}) {
        fill(names("x"), {picture});
        list(1).selectOnly(0);
        QVERIFY(!viewer().Image1->isEmpty());
        choose(1, selected ? QList<int>{0} : QList<int>{}, 0);
        window().cmdAction[3]->click();
        QVERIFY(list(1).isEmpty());
        QVERIFY(viewer().Image1->isEmpty());
        QCOMPARE(viewer().CurrentPicture->text().toInt(), 0);
    }
}

void tst_frmListManagement::removingAllLeavesACountOfNothing()
{
    fill({},
        {m_home->writePicture(QStringLiteral("a.png"), {40, 30}),
            m_home->writePicture(QStringLiteral("b.png"), {40, 30})});
    list(1).selectOnly(0);
    choose(1, {0, 1}, 1);
    window().cmdAction[3]->click();
    QCOMPARE(viewer().lblCount->text(), QStringLiteral("0"));
    QVERIFY(viewer().Image1->isEmpty());
    QCOMPARE(globals.CurrentListIndex, 0);
}

void tst_frmListManagement::theMainViewerShowsTheNewEntryWhenItIsBack()
{
    const QStringList pictures{m_home->writePicture(QStringLiteral("a.png"), {40, 30}),
        m_home->writePicture(QStringLiteral("b.png"), {40, 30}),
        m_home->writePicture(QStringLiteral("c.png"), {40, 30})};
    fill({}, pictures);
    list(1).selectOnly(0);
    choose(1, {0}, 0);
    window().cmdAction[3]->click();
    viewer().Form_Activate();
    QCOMPARE(globals.CurrentMediaFile, pictures[1]);
    QCOMPARE(globals.CurrentListIndex, 1);
}

void tst_frmListManagement::whateverComesInsideAYield_data()
{
    QTest::addColumn<int>("which");
    QTest::addColumn<int>("disturbance");
    for (const int which : {0, 1}) {
        QTest::addRow("list %d: the Display list is emptied", which) << which << 0;
        QTest::addRow("list %d: the window closes", which) << which << 1;
        QTest::addRow("list %d: another action", which) << which << 2;
        QTest::addRow("list %d: a step on", which) << which << 3;
    }
}

void tst_frmListManagement::whateverComesInsideAYield()
{
    QFETCH(int, which);
    QFETCH(int, disturbance);
    forEachYield(
        [&] {
            fill(names("abcd"), names("efgh"));
            box("(.JPG)").setChecked(true);
            choose(which, {1, 2}, 1);
        },
        [&] { window().cmdAction_Click(3); },
        [&] {
            if (disturbance == 0)
                viewer().ClearDisplayList();
            else if (disturbance == 1)
                unload<frmListManagement>();
            else if (disturbance == 2)
                window().cmdAction_Click(3);
            else
                viewer().NextListItem();
        },
        [&](int) {
            QCOMPARE(viewer().lblCount->text().toInt(), list(1).count());
            QVERIFY(!globals.ItemSelectionBusy);
            QCOMPARE(letters(list(0)), which == 0 ? QStringLiteral("ad") : QStringLiteral("abcd"));
        });
}

void tst_frmListManagement::escapeCloses()
{
    viewer().mnuPictureAdvListManagement_Click();
    QTest::keyClick(&window(), Qt::Key_Escape);
    QVERIFY(!isLoaded<frmListManagement>());
}

QTEST_MAIN(tst_frmListManagement)
#include "tst_frmListManagement.moc"
