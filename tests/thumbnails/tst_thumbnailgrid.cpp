#include "thumbnails/thumbnailgrid.h"

#include <QtTest>

/// Where thumbnails stand, to the pixel, and where keys and the scroll bar lead. The numbers are worked out by hand.
class tst_thumbnailgrid : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theGridIsPlacedInItsWindow_data();
    void theGridIsPlacedInItsWindow();
    void cellsStandCloserBelowThanBeside_data();
    void cellsStandCloserBelowThanBeside();
    void aWindowTooSmallHoldsNothing();
    void thePageAppearsInParts();
    void theBarCountsItems_data();
    void theBarCountsItems();
    void arrowsStayOnThePage_data();
    void arrowsStayOnThePage();
    void tabFitsTheFirstPageOnly();
};

namespace {

/// 900 by 640 with all bars: ten columns of 80 and six rows.
constexpr GridMeasures usual{
    .size = 80, .width = 900, .height = 640, .scrollBar = 16, .toolbar = 50, .statusBar = 24, .label = 0};

GridMeasures with(int GridMeasures::*what, int value, GridMeasures measures = usual)
{
    measures.*what = value;
    return measures;
}

}

void tst_thumbnailgrid::theGridIsPlacedInItsWindow_data()
{
    QTest::addColumn<GridMeasures>("measures");
    QTest::addColumn<QSize>("grid");
    QTest::addColumn<QPoint>("first"); // left margin, top of the first row
    using M = GridMeasures;
    QTest::newRow("usual") << usual << QSize(10, 6) << QPoint(30, 94);
    QTest::newRow("with names") << with(&M::label, 20) << QSize(10, 5) << QPoint(30, 84);
    QTest::newRow("without a tool bar") << with(&M::toolbar, 0) << QSize(10, 7) << QPoint(30, 29);
    QTest::newRow("30.5 is 30") << with(&M::width, 901) << QSize(10, 6) << QPoint(30, 94);
    QTest::newRow("31.5 is 32") << with(&M::width, 903) << QSize(10, 6) << QPoint(32, 94);
    QTest::newRow("43.5 is 44") << with(&M::height, 641) << QSize(10, 6) << QPoint(30, 95);
    QTest::newRow("44.5 is 44") << with(&M::height, 643) << QSize(10, 6) << QPoint(30, 95);
    QTest::newRow("ten columns just fit") << with(&M::width, 836) << QSize(10, 6) << QPoint(-2, 94);
    QTest::newRow("-1.5 is -2") << with(&M::width, 837) << QSize(10, 6) << QPoint(-2, 94);
    QTest::newRow("a pixel less and they do not") << with(&M::width, 835) << QSize(9, 6) << QPoint(38, 94);
    QTest::newRow("the bar's width moves nothing") << with(&M::scrollBar, 40) << QSize(10, 6) << QPoint(30, 94);
}

void tst_thumbnailgrid::theGridIsPlacedInItsWindow()
{
    QFETCH(GridMeasures, measures);
    QFETCH(QSize, grid);
    QFETCH(QPoint, first);
    const ThumbnailGrid made = thumbnailGrid(measures);
    QCOMPARE(QSize(made.columns, made.rows), grid);
    QCOMPARE(made.capacity(), grid.width() * grid.height());
    QCOMPARE(made.place(1), first);
}

void tst_thumbnailgrid::cellsStandCloserBelowThanBeside_data()
{
    QTest::addColumn<GridMeasures>("measures");
    QTest::addColumn<int>("cell");
    QTest::addColumn<QPoint>("place");
    QTest::newRow("beside the first") << usual << 2 << QPoint(112, 94);
    QTest::newRow("end of the first row") << usual << 10 << QPoint(768, 94);
    QTest::newRow("below the first") << usual << 11 << QPoint(30, 174);
    QTest::newRow("the last") << usual << 60 << QPoint(768, 494);
    const GridMeasures named = with(&GridMeasures::label, 20);
    QTest::newRow("below the first and its name") << named << 11 << QPoint(30, 184);
    QTest::newRow("the last with names") << named << 50 << QPoint(768, 484);
    // One column of 200 in 300 by 700: three rows, the first of which stands where the second would.
    const GridMeasures narrow{
        .size = 200, .width = 300, .height = 700, .scrollBar = 16, .toolbar = 0, .statusBar = 24, .label = 0};
    QTest::newRow("a single column begins lower") << narrow << 1 << QPoint(30, 239);
    QTest::newRow("and ends below the window") << narrow << 3 << QPoint(30, 639);
}

void tst_thumbnailgrid::cellsStandCloserBelowThanBeside()
{
    QFETCH(GridMeasures, measures);
    QFETCH(int, cell);
    QFETCH(QPoint, place);
    QCOMPARE(thumbnailGrid(measures).place(cell), place);
}

void tst_thumbnailgrid::aWindowTooSmallHoldsNothing()
{
    QCOMPARE(thumbnailGrid(with(&GridMeasures::width, 115)).capacity(), 0);
    QCOMPARE(thumbnailGrid(with(&GridMeasures::height, 173)).capacity(), 0);
    QCOMPARE(thumbnailGrid(with(&GridMeasures::height, 174)).capacity(), 10);
    const ThumbnailGrid nothing = thumbnailGrid(with(&GridMeasures::width, 30, with(&GridMeasures::height, 40)));
    QCOMPARE(QSize(nothing.columns, nothing.rows), QSize(-1, -1)); // -6 / 80 and -54 / 80, towards minus infinity
    QCOMPARE(nothing.capacity(), 0);
}

void tst_thumbnailgrid::thePageAppearsInParts()
{
    const auto parts = [](int columns) {
        QList<int> cells;
        const ThumbnailGrid grid{.columns = columns};
        for (int cell = 1; cell <= 20; ++cell) {
            if (grid.showsPartAfter(cell))
                cells << cell;
        }
        return cells;
    };
    QCOMPARE(parts(9), (QList<int>{3, 6, 9, 12, 15, 18}));
    QCOMPARE(parts(10), (QList<int>{10, 20})); // a third of ten is no number of cells
    QCOMPARE(parts(1).size(), 20);
}

void tst_thumbnailgrid::theBarCountsItems_data()
{
    QTest::addColumn<int>("items");
    QTest::addColumn<int>("top");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<int>("maximum"); // -1: as it was
    QTest::newRow("no items") << 0 << 0 << false << -1;
    QTest::newRow("less than a page") << 19 << 0 << false << -1;
    QTest::newRow("less than a page, scrolled") << 19 << 5 << true << 5;
    QTest::newRow("one page") << 20 << 0 << true << 0;
    QTest::newRow("five pages") << 100 << 0 << true << 80;
    QTest::newRow("scrolled beyond") << 100 << 95 << true << 80;
    QTest::newRow("a full list") << 32767 << 7 << true << 32747;
}

void tst_thumbnailgrid::theBarCountsItems()
{
    QFETCH(int, items);
    QFETCH(int, top);
    const ScrollRange range = scrollRange(items, 20, top);
    QTEST(range.enabled, "enabled");
    QTEST(range.maximum.value_or(-1), "maximum");
}

void tst_thumbnailgrid::arrowsStayOnThePage_data()
{
    QTest::addColumn<int>("top");
    QTest::addColumn<int>("selected");
    QTest::addColumn<QList<int>>("cells"); // left, up, right, down; 0 for none
    // Five columns, four rows, 43 items.
    QTest::newRow("nothing selected") << 0 << 0 << QList<int>{0, 0, 0, 0};
    QTest::newRow("first cell") << 0 << 1 << QList<int>{0, 0, 2, 6};
    QTest::newRow("in the middle") << 0 << 8 << QList<int>{7, 3, 9, 13};
    QTest::newRow("up and left to the first row") << 0 << 6 << QList<int>{5, 1, 7, 11};
    QTest::newRow("last cell of the page") << 0 << 20 << QList<int>{19, 15, 0, 0};
    QTest::newRow("first cell of a later page") << 7 << 8 << QList<int>{0, 0, 2, 6};
    QTest::newRow("last item") << 23 << 43 << QList<int>{19, 15, 0, 0};
    QTest::newRow("list ends in the row below") << 30 << 39 << QList<int>{8, 4, 10, 0};
    // What they give for a file that is not on the page is no cell of it.
    QTest::newRow("selected on an earlier page") << 20 << 3 << QList<int>{0, 0, -16, -12};
    QTest::newRow("selected on a later page") << 0 << 30 << QList<int>{29, 25, 0, 0};
}

void tst_thumbnailgrid::arrowsStayOnThePage()
{
    QFETCH(int, top);
    QFETCH(int, selected);
    QFETCH(QList<int>, cells);
    const PagePlace place{.columns = 5, .capacity = 20, .top = top, .items = 43, .selected = selected};
    for (const Arrow arrow : {Arrow::Left, Arrow::Up, Arrow::Right, Arrow::Down})
        QCOMPARE(cellForArrow(arrow, place).value_or(0), cells[int(arrow) - int(Arrow::Left)]);
}

void tst_thumbnailgrid::tabFitsTheFirstPageOnly()
{
    PagePlace place{.columns = 5, .capacity = 20, .top = 0, .items = 43, .selected = 0};
    QCOMPARE(cellForTab(place), std::nullopt);
    place.selected = 18;
    QCOMPARE(cellForTab(place), 19);
    place.selected = 19; // the last cell of a page is never reached by it
    QCOMPARE(cellForTab(place), std::nullopt);
    place.top = 10;
    QCOMPARE(cellForTab(place), 20); // item 30, where the next one would be item 20 in cell 10
}

QTEST_GUILESS_MAIN(tst_thumbnailgrid)
#include "tst_thumbnailgrid.moc"
