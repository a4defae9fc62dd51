#include "app/checkjpg.h"
#include "thumbnails/cachetexts.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/viewertest.h"
#include "viewer/frmBackground.h"

#include <QAccessible>

/// The Thumbnail Viewer's window: its page, its selection, its keys, and what may come in between.
class tst_frmThumbNail : public QObject, ViewerOverList
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { makeFiles(); }
    void init() { startOver(); }
    void cleanup() { endAll(); }
    void thePageShowsTheListFromTheCurrentItem();
    void namesTakeRoomAndTellTheFile();
    void eachFileHasItsPicture();
    void theBarTurnsPagesAndTheKeysFollow();
    void aLargerSizeCutsTheFirstItemBack();
    void aClickSelects();
    void aDoubleClickGoesToTheMainViewer();
    void whileAPageIsMadeADoubleClickOnlySkipsTheNextClick();
    void arrowsAndTabMoveTheSelection();
    void aSelectionOffThePageIsKeptAndNotTold();
    void aResizeLaysOutOnce();
    void aResizeInsideALayoutIsNotLost();
    void anEmptyListShowsNothing();
    void disturbedPagesEndWhole_data();
    void disturbedPagesEndWhole();
    void everyCellTellsItsFile();
};

void tst_frmThumbNail::thePageShowsTheListFromTheCurrentItem()
{
    open(2);
    QCOMPARE(viewer().windowTitle(), QStringLiteral("Tessaly Lumora - Thumbnail Viewer"));
    QCOMPARE(viewer().TopIndex, 2);
    QCOMPARE(viewer().PageCapacity, 35);
    QCOMPARE(shownCells(), upTo(35));
    QVERIFY2(!viewer().imgThumbnail[0]->isVisible(), "the template is never seen");
    QCOMPARE(viewer().VScroll1->value(), 2);
    QCOMPARE(viewer().VScroll1->maximum(), 35);
    QCOMPARE(viewer().VScroll1->singleStep(), 7);
    QCOMPARE(viewer().VScroll1->pageStep(), 35);
    // (780 - 40 - 700) / 2 on the left; the margin above the first row and the pixel over it, half to even.
    QCOMPARE(cell(1)->geometry(), QRect(20, 31, 100, 100));
    QCOMPARE(cell(9)->geometry(), QRect(122, 131, 100, 100));
    // The first item of the page is told of, though nothing is selected.
    QCOMPARE(panel(1), QStringLiteral("Current Image:"));
    QCOMPARE(panel(2), QStringLiteral("picture 002.png"));
    QCOMPARE(panel(3), QStringLiteral("42 X 30 X 24"));
    QCOMPARE(panel(4), groupedNumber(QFileInfo(m_files[2]).size()));
    QCOMPARE(panel(5), QStringLiteral("3 of 70"));
    for (const QString &key : selectionButtons)
        QVERIFY(!viewer().toolbarButton(key)->isEnabled());
    QVERIFY(!viewer().mnupopupmain->isEnabled());
    QVERIFY(!viewer().PageBusy && viewer().mnuViewerCloseViewer->isEnabled());
}

void tst_frmThumbNail::namesTakeRoomAndTellTheFile()
{
    open();
    viewer().toolbarButton(QStringLiteral("Labels"))->trigger();
    QVERIFY(viewer().ShowNames && viewer().mnuViewerShowImageNames->isChecked());
    QLabel *name = viewer().lblThumbNail[8];
    QVERIFY(name->isVisible());
    QCOMPARE(name->toolTip(), QStringLiteral("picture 007.png"));
    QCOMPARE(name->geometry(),
        QRect(cell(8)->x(), cell(8)->y() + 100, 100, viewer().lblThumbNail[0]->fontMetrics().height() + 4));
    QCOMPARE(cell(8)->y() - cell(1)->y(), 100 + name->height());
    QTest::mouseClick(name, Qt::LeftButton);
    QCOMPARE(viewer().SelectedIndex, 8);
    viewer().mnuViewerShowImageNames->trigger();
    QVERIFY(!name->isVisible());
}

void tst_frmThumbNail::eachFileHasItsPicture()
{
    const QString broken = m_home.write(QStringLiteral("files/broken.jpg"), "no picture");
    const QString sound = m_home.write(QStringLiteral("files/sound.mp3"), "no sound");
    setList({m_files[0], QStringLiteral("/nowhere/gone.png"), sound, broken});
    open();
    QCOMPARE(shownCells(), upTo(4));
    const auto sign = [](const QIcon &icon) { return icon.cacheKey(); };
    QCOMPARE(sign(cell(2)->sign()), sign(form<frmBackground>().imgNotAvailable));
    QCOMPARE(sign(cell(3)->sign()), sign(form<frmBackground>().imgMedia));
    QCOMPARE(sign(cell(4)->sign()), sign(form<checkjpg>().imgEmpty));
    viewer().imgThumbnail_Click(3);
    QCOMPARE(panel(3), QString());
    QCOMPARE(panel(5), QStringLiteral("3 of 4"));
    QVERIFY2(!viewer().mnupopup[5]->isVisible(), "no editor for a sound");
    viewer().imgThumbnail_Click(2);
    QCOMPARE(panel(5), QStringLiteral("3 of 4")); // a file that is gone leaves the panels
    QVERIFY(viewer().mnupopup[5]->isVisible());
}

void tst_frmThumbNail::theBarTurnsPagesAndTheKeysFollow()
{
    open();
    QTest::keyClick(&viewer(), Qt::Key_PageDown);
    QCOMPARE(viewer().TopIndex, 35);
    QCOMPARE(cell(1)->accessibleName(), QStringLiteral("picture 035.png"));
    QVERIFY(viewer().VScroll1->isEnabled());
    viewer().VScroll1->triggerAction(QScrollBar::SliderSingleStepSub);
    QCOMPARE(viewer().TopIndex, 28);
    QTest::keyClick(&viewer(), Qt::Key_Home);
    QCOMPARE(viewer().TopIndex, 0);
    QTest::keyClick(&viewer(), Qt::Key_End);
    QCOMPARE(viewer().TopIndex, 35);
    QWheelEvent notch(QPointF(300, 300), viewer().mapToGlobal(QPointF(300, 300)), QPoint(), QPoint(0, 120),
        Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&viewer(), &notch);
    QCOMPARE(viewer().TopIndex, 35 - 2 * 7);
    // What is scrolled while a page is on its way is where the next one begins; the page in between is left.
    int filled = 0;
    connect(&viewer(), &frmThumbNail::pageShown, this, [&] { ++filled; });
    setYieldHook([&](int number) {
        if (number == 2) {
            QTest::keyClick(&viewer(), Qt::Key_PageUp);
            QTest::keyClick(&viewer(), Qt::Key_PageDown);
            QTest::keyClick(&viewer(), Qt::Key_PageDown);
        }
    });
    viewer().VScroll1->setValue(1);
    setYieldHook({});
    QCOMPARE(viewer().TopIndex, 35);
    QCOMPARE(filled, 1);
    QCOMPARE(shownCells(), upTo(35));
}

void tst_frmThumbNail::aLargerSizeCutsTheFirstItemBack()
{
    open();
    viewer().VScroll1->setValue(35);
    viewer().imgThumbnail_Click(35);
    viewer().mnuViewerThumbNailSize_Click(60);
    QCOMPARE(viewer().ThumbnailSize, 60);
    QCOMPARE(option("UserThumbnailSize", ""), QStringLiteral("60"));
    QVERIFY(viewer().mnuViewerThumbNailSize(60)->isChecked() && !viewer().mnuViewerThumbNailSize(100)->isChecked());
    QCOMPARE(QSize(viewer().GridColumns, viewer().GridRows), QSize(12, 9));
    QCOMPARE(viewer().TopIndex, 35); // less than a page is left, and the bar ends there
    QCOMPARE(viewer().VScroll1->maximum(), 35);
    QCOMPARE(shownCells(), upTo(35));
    viewer().mnuViewerThumbNailSize_Click(200);
    QCOMPARE(viewer().PageCapacity, 3 * 2);
    QCOMPARE(shownCells(), upTo(6));
    viewer().VScroll1->setValue(64);
    viewer().toolbarButton(QStringLiteral("Size"))->trigger(); // round to the smallest
    QCOMPARE(viewer().ThumbnailSize, 60);
    QCOMPARE(viewer().TopIndex, 64);
    viewer().mnuViewerThumbNailSize_Click(100);
    QCOMPARE(viewer().TopIndex, 35);
    QVERIFY(viewer().findChild<QAction *>(QStringLiteral("size100"))->isChecked());
}

void tst_frmThumbNail::aClickSelects()
{
    open();
    viewer().VScroll1->setValue(7);
    QTest::mouseClick(cell(3), Qt::LeftButton);
    QCOMPARE(viewer().SelectedIndex, 10);
    QCOMPARE(cell(3)->borderStyle(), 1);
    QCOMPARE(viewer().focusWidget(), cell(3));
    QCOMPARE(panel(2), QStringLiteral("picture 009.png"));
    for (const QString &key : selectionButtons)
        QVERIFY(viewer().toolbarButton(key)->isEnabled());
    QVERIFY(viewer().mnuEditCopyFileName->isEnabled() && viewer().mnupopupmain->isEnabled());
    QTest::mouseClick(cell(4), Qt::LeftButton);
    QCOMPARE(cell(3)->borderStyle(), 0);
    QCOMPARE(cell(4)->borderStyle(), 1);
    // A new page takes the commands away until the next click, the frame stays with its file.
    viewer().VScroll1->setValue(8);
    QCOMPARE(cell(3)->borderStyle(), 1);
    QVERIFY(!viewer().mnuEditCopyFileName->isEnabled());
    QCOMPARE(viewer().focusWidget(), cell(3));
}

void tst_frmThumbNail::aDoubleClickGoesToTheMainViewer()
{
    open();
    list().setSelected(1, true);
    viewer().VScroll1->setValue(7);
    QTest::mouseClick(cell(5), Qt::LeftButton);
    QTest::mouseDClick(cell(5), Qt::LeftButton);
    QVERIFY(!isLoaded<frmThumbNail>());
    QVERIFY2(!isLoaded<frmDataBase>(), "the cache goes with it");
    QCOMPARE(list().selectedIndices(), QList<int>{11});
    QCOMPARE(list().listIndex(), 11);
    QCOMPARE(globals.CurrentMediaFile, m_files[11]);
}

void tst_frmThumbNail::whileAPageIsMadeADoubleClickOnlySkipsTheNextClick()
{
    open();
    setYieldHook([&](int number) {
        if (number == 3)
            viewer().imgThumbNail_DblClick(1);
    });
    viewer().mnuViewerRefresh_Click();
    setYieldHook({});
    QVERIFY(isLoaded<frmThumbNail>());
    QVERIFY(viewer().SkipNextClick && !viewer().LeavingViewer);
    viewer().imgThumbnail_Click(2);
    QCOMPARE(viewer().SelectedIndex, 2);
    QCOMPARE(cell(2)->borderStyle(), 0);
    viewer().imgThumbnail_Click(2);
    QCOMPARE(cell(2)->borderStyle(), 1);
}

void tst_frmThumbNail::arrowsAndTabMoveTheSelection()
{
    open();
    QTest::keyClick(&viewer(), Qt::Key_Right);
    QCOMPARE(viewer().SelectedIndex, 0); // nothing to begin with
    QTest::keyClick(&viewer(), Qt::Key_Space);
    QCOMPARE(viewer().SelectedIndex, 1);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Down, Qt::Key_Left, Qt::Key_Up})
        QTest::keyClick(viewer().focusWidget(), key);
    QCOMPARE(viewer().SelectedIndex, 8);
    QTest::keyClick(viewer().focusWidget(), Qt::Key_Tab);
    QCOMPARE(viewer().SelectedIndex, 9);
    QCOMPARE(cell(8)->borderStyle(), 0);
    QCOMPARE(viewer().focusWidget(), cell(9));
    // On a later page Tab counts from the top of the list still: item 12 is followed by cell 13, item 20.
    viewer().VScroll1->setValue(7);
    viewer().imgThumbnail_Click(5);
    QTest::keyClick(viewer().focusWidget(), Qt::Key_Tab);
    QCOMPARE(viewer().SelectedIndex, 20);
    // Where there is no such cell the key goes on to the next control.
    viewer().imgThumbnail_Click(34);
    QTest::keyClick(viewer().focusWidget(), Qt::Key_Tab);
    QCOMPARE(viewer().SelectedIndex, 41);
    QVERIFY(!viewer().picGrid->isAncestorOf(viewer().focusWidget()));
    QTest::keyClick(viewer().focusWidget(), Qt::Key_Right);
    QCOMPARE(viewer().SelectedIndex, 41);
}

void tst_frmThumbNail::aSelectionOffThePageIsKeptAndNotTold()
{
    open();
    viewer().imgThumbnail_Click(2);
    viewer().VScroll1->setValue(20);
    QCOMPARE(viewer().SelectedIndex, 2);
    for (int number = 2; number <= 5; ++number)
        QCOMPARE(panel(number), QString());
    for (int key = int(Arrow::Left); key <= int(Arrow::Down); ++key)
        viewer().Form_KeyUp(key);
    QCOMPARE(viewer().SelectedIndex, 2);
    // A page counts the item before its first as its own.
    viewer().VScroll1->setValue(1);
    viewer().imgThumbnail_Click(1);
    viewer().VScroll1->setValue(2);
    QCOMPARE(panel(2), QStringLiteral("picture 001.png"));
}

void tst_frmThumbNail::aResizeLaysOutOnce()
{
    open();
    int pages = 0;
    connect(&viewer(), &frmThumbNail::pageShown, this, [&] { ++pages; });
    viewer().resize(viewer().width() + 100, viewer().height());
    QVERIFY(viewer().Timer4.isActive());
    QCOMPARE(viewer().Timer4.interval(), 250);
    QCOMPARE(pages, 0);
    viewer().Timer4_Timer();
    QCOMPARE(pages, 1);
    QCOMPARE(viewer().GridColumns, 8);
    QVERIFY(!viewer().Timer4.isActive());
    viewer().Timer4.start();
    viewer().Timer4_Timer();
    QCOMPARE(pages, 1);
    QVERIFY2(viewer().Timer4.isActive(), "without a difference it goes on looking");
    viewer().LeavingViewer = true;
    viewer().resize(viewer().width() - 100, viewer().height());
    viewer().Timer4_Timer();
    QCOMPARE(pages, 1);
}

void tst_frmThumbNail::aResizeInsideALayoutIsNotLost()
{
    open();
    const auto widen = [this] { viewer().resize(viewer().width() + 100, viewer().height()); };
    widen();
    bool again = true;
    setYieldHook([&](int) {
        if (std::exchange(again, false))
            widen();
    });
    viewer().Timer4_Timer();
    setYieldHook({});
    QVERIFY(!again && viewer().Timer4.isActive());
    viewer().Timer4_Timer();
    QCOMPARE(viewer().GridColumns, 9);
    QVERIFY(!viewer().Timer4.isActive());
}

void tst_frmThumbNail::anEmptyListShowsNothing()
{
    setList({});
    auto &window = viewer();
    window.show();
    QTRY_VERIFY(window.FormLoaded);
    QCOMPARE(shownCells(), QList<int>());
    QVERIFY(!window.VScroll1->isEnabled());
    for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_End, Qt::Key_Space, Qt::Key_Down, Qt::Key_Return})
        QTest::keyClick(&window, key);
    QCOMPARE(window.SelectedIndex, 0);
    QVERIFY(isLoaded<frmThumbNail>());
}

void tst_frmThumbNail::disturbedPagesEndWhole_data()
{
    QTest::addColumn<int>("disturbance");
    QTest::newRow("the list is emptied") << 0;
    QTest::newRow("the list is another one") << 1;
    QTest::newRow("a file is clicked") << 2;
    QTest::newRow("the size changes") << 3;
    QTest::newRow("the page is refreshed") << 4;
    QTest::newRow("the user scrolls") << 5;
    QTest::newRow("the window is closed") << 6;
    QTest::newRow("the program ends") << 7;
}

/// Whatever comes in at whichever yield: nothing of the old page is left over, and nothing waits for ever.
void tst_frmThumbNail::disturbedPagesEndWhole()
{
    QFETCH(int, disturbance);
    bool disturbing = false;
    forEachYield(
        [&] {
            globals.ProgramExiting = false;
            if (disturbance >= 6)
                closeViewer();
            fillList(pictures);
            if (!isLoaded<frmThumbNail>())
                open();
            viewer().mnuViewerThumbNailSize_Click(100);
            viewer().VScroll1->setValue(0);
        },
        [&] { viewer().VScroll1->setValue(20); },
        [&] {
            if (std::exchange(disturbing, true))
                return;
            if (disturbance == 0)
                setList({});
            else if (disturbance == 1)
                setList(m_files.mid(50));
            else if (disturbance == 2)
                viewer().imgThumbnail_Click(1);
            else if (disturbance == 3)
                viewer().mnuViewerThumbNailSize_Click(200);
            else if (disturbance == 4)
                viewer().mnuViewerRefresh_Click();
            else if (disturbance == 5)
                QTest::keyClick(&viewer(), Qt::Key_End);
            else if (disturbance == 6)
                closeViewer();
            else
                globals.ProgramExiting = true;
            disturbing = false;
        },
        [&](int yield) {
            if (disturbance == 6 && yield > 0)
                return;
            const bool exiting = std::exchange(globals.ProgramExiting, false);
            QVERIFY(!viewer().PageBusy && viewer().mnuViewerCloseViewer->isEnabled());
            if (exiting)
                return;
            QVERIFY(viewer().picGrid->updatesEnabled());
            if (yield > 0 && disturbance == 5)
                QCOMPARE(viewer().TopIndex, 35);
            const int listed = list().count() - viewer().TopIndex;
            if (disturbance >= 2)
                QCOMPARE(shownCells(), upTo(qBound(0, listed, viewer().PageCapacity)));
            viewer().mnuViewerRefresh_Click();
            QCOMPARE(shownCells(), upTo(qBound(0, list().count() - viewer().TopIndex, viewer().PageCapacity)));
        });
    globals.ProgramExiting = false;
}

void tst_frmThumbNail::everyCellTellsItsFile()
{
    open();
    viewer().imgThumbnail_Click(2);
    QAccessibleInterface *heard = QAccessible::queryAccessibleInterface(cell(2));
    QCOMPARE(heard->role(), QAccessible::ListItem);
    QCOMPARE(heard->text(QAccessible::Name), QStringLiteral("picture 001.png"));
    QVERIFY(heard->state().selected && heard->state().focused);
    QVERIFY(!QAccessible::queryAccessibleInterface(cell(3))->state().selected);
}

QTEST_MAIN(tst_frmThumbNail)
#include "tst_frmThumbNail.moc"
