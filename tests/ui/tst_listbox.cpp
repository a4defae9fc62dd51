#include "support/support.h"
#include "ui/listbox.h"

#include "platform/filepath.h"

#include <QAccessible>
#include <QMimeData>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QSignalSpy>
#include <QtTest>

/// The list box as the program and the user see it.
class TestListBox : public QObject
{
    Q_OBJECT
private:
    static QStringList texts(int count)
    {
        QStringList result;
        result.reserve(count);
        for (int i = 0; i < count; ++i)
            result.append(QStringLiteral("/srv/someone/Pictures/holiday %1/IMG_%2.jpg").arg(i % 97).arg(i));
        return result;
    }
    static QPoint middleOf(const ListBox &list, int row)
    {
        const QRect rect = list.visualRect(list.model()->index(row, 0));
        return {qMin(rect.center().x(), 40), rect.center().y()};
    }
    static void click(ListBox &list, int row, Qt::KeyboardModifiers keys = {})
    {
        QTest::mouseClick(list.viewport(), Qt::LeftButton, keys, middleOf(list, row));
    }
    static void show(ListBox &list)
    {
        list.resize(300, 400);
        list.show();
        QVERIFY(QTest::qWaitForWindowExposed(&list));
    }
    static QList<int> rowsOfTheView(const ListBox &list)
    {
        QList<int> rows;
        for (const QModelIndex &index : list.selectionModel()->selectedRows())
            rows.append(index.row());
        std::sort(rows.begin(), rows.end());
        return rows;
    }

private Q_SLOTS:
    void programChangesRaiseOneClickEach();
    void removalKeepsTheMarkOnItsEntry_data();
    void removalKeepsTheMarkOnItsEntry();
    void anythingDoneInAnyOrderAgreesWithAPlainModel();
    void theViewFollowsSelectionAndMark();
    void aFullListTakesWhatFits();
    void clicksSelectAsOnThisDesktop();
    void keysMoveSelectAndReportEnter();
    void focusAloneSelectsNothing();
    void typedLettersFindAFileName();
    void widestEntryIsTheWidestInEveryScript();
    void theExtentMakesRoomToScrollSideways();
    void textStaysReadableOnTheListColours_data();
    void textStaysReadableOnTheListColours();
    void dropsTellFilesApartFromTheOwnFormat();
    void uriListsKeepForeignBytes();
    void rowsAreReadableForScreenReaders();
};

void TestListBox::programChangesRaiseOneClickEach()
{
    ListBox list;
    list.addItems(texts(5));
    QSignalSpy clicks(&list, &ListBox::Click);
    const auto clicksOf = [&](auto &&change) {
        clicks.clear();
        change();
        return clicks.size();
    };
    QCOMPARE(list.listIndex(), -1);
    QCOMPARE(clicksOf([&] { list.setListIndex(2); }), 1);
    QVERIFY2(!list.isSelected(2), "the mark alone selects nothing");
    QCOMPARE(clicksOf([&] { list.setListIndex(2); }), 0);
    QCOMPARE(clicksOf([&] { list.setSelected(2, true); }), 1);
    QCOMPARE(clicksOf([&] { list.setSelected(2, true); }), 0);
    QCOMPARE(clicksOf([&] { list.setSelected(4, true); }), 1);
    QCOMPARE(list.listIndex(), 4);
    QCOMPARE(clicksOf([&] { list.setSelected(4, false); }), 0);
    QCOMPARE(list.selectedIndices(), QList<int>({2}));
    QCOMPARE(clicksOf([&] { list.selectOnly(0); }), 1);
    QCOMPARE(clicksOf([&] { list.selectOnly(0); }), 0);
    QCOMPARE(list.text(), list.itemText(0));
    QCOMPARE(clicksOf([&] { list.clearSelections(); }), 0);
    QCOMPARE(clicksOf([&] { list.setListIndex(-1); }), 0);
    QCOMPARE(list.text(), QString());
    QCOMPARE(clicksOf([&] {
        for (const int wrong : {-2, 5, 40000}) {
            list.setListIndex(wrong);
            list.selectOnly(wrong);
            list.setSelected(wrong, true);
            list.removeItem(wrong);
        }
    }),
        0);
    QCOMPARE(list.count(), 5);
    // Nothing of it comes a second time when the view follows.
    QCOMPARE(clicksOf([&] {
        list.selectOnly(3);
        show(list);
        QCoreApplication::processEvents();
    }),
        1);
}

void TestListBox::removalKeepsTheMarkOnItsEntry_data()
{
    QTest::addColumn<QList<int>>("removed");
    QTest::addColumn<int>("mark");
    QTest::newRow("behind the mark") << QList<int>{7, 8} << 5;
    QTest::newRow("in front of the mark") << QList<int>{0, 3} << 3;
    QTest::newRow("the marked entry itself") << QList<int>{5} << 5;
    QTest::newRow("the marked entry and one before") << QList<int>{1, 5} << 4;
    QTest::newRow("everything from the mark on") << QList<int>{5, 6, 7, 8, 9} << 4;
    QTest::newRow("all") << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9} << -1;
}

void TestListBox::removalKeepsTheMarkOnItsEntry()
{
    QFETCH(QList<int>, removed);
    ListBox list;
    list.addItems(texts(10));
    list.setListIndex(5);
    QSignalSpy clicks(&list, &ListBox::Click);
    list.removeItems(removed);
    QTEST(list.listIndex(), "mark");
    QCOMPARE(list.count(), 10 - removed.size());
    QCOMPARE(clicks.size(), 0);
}

void TestListBox::anythingDoneInAnyOrderAgreesWithAPlainModel()
{
    struct Entry
    {
        QString text;
        bool selected;
    };
    QVector<Entry> plain;
    ListBox list;
    show(list);
    QRandomGenerator random(20240817);
    for (int step = 0; step < 3000; ++step) {
        const int at = plain.isEmpty() ? 0 : random.bounded(int(plain.size()));
        switch (random.bounded(8)) {
        case 0:
        case 1:
            plain.insert(at, {QString::number(step), false});
            QVERIFY(list.insertItem(at, QString::number(step)));
            break;
        case 2: {
            QStringList many;
            for (int i = 0; i < 20; ++i) {
                many.append(QStringLiteral("%1.%2").arg(step).arg(i));
                plain.append({many.last(), false});
            }
            QVERIFY(list.addItems(many));
            break;
        }
        case 3: {
            QList<int> gone;
            for (int i = int(plain.size()) - 1; i >= 0; --i) {
                if (random.bounded(6) == 0) {
                    gone.prepend(i);
                    plain.remove(i);
                }
            }
            list.removeItems(gone);
            break;
        }
        case 4:
        case 5:
            if (!plain.isEmpty()) {
                plain[at].selected = random.bounded(2);
                list.setSelected(at, plain[at].selected);
            }
            break;
        case 6:
            QCoreApplication::processEvents();
            break;
        case 7:
            if (!plain.isEmpty() && random.bounded(4) == 0) {
                for (Entry &entry : plain)
                    entry.selected = true;
                list.selectAll();
            }
            break;
        }
        QCOMPARE(list.count(), plain.size());
        for (int i = 0; i < plain.size(); ++i) {
            QCOMPARE(list.itemText(i), plain[i].text);
            QCOMPARE(list.isSelected(i), plain[i].selected);
        }
        QVERIFY(list.listIndex() < list.count());
    }
    QCoreApplication::processEvents();
    QCOMPARE(rowsOfTheView(list), list.selectedIndices());
    QCOMPARE(list.currentIndex().row(), list.listIndex());
}

void TestListBox::theViewFollowsSelectionAndMark()
{
    ListBox list;
    list.addItems(texts(200));
    show(list);
    list.setSelected(3, true);
    list.setSelected(4, true);
    list.setSelected(150, true);
    QCoreApplication::processEvents();
    QCOMPARE(rowsOfTheView(list), QList<int>({3, 4, 150}));
    QCOMPARE(list.currentIndex().row(), 150);
    QVERIFY2(
        list.viewport()->rect().intersects(list.visualRect(list.model()->index(150, 0))), "the mark is scrolled to");
    list.clearSelections();
    list.setListIndex(-1);
    QCoreApplication::processEvents();
    QVERIFY(rowsOfTheView(list).isEmpty());
    QVERIFY(!list.currentIndex().isValid());
    // Entries taken out in many places leave the list where the user was looking.
    QList<int> odd;
    for (int i = 1; i < 200; i += 2)
        odd.append(i);
    list.scrollTo(list.model()->index(100, 0), QAbstractItemView::PositionAtTop);
    const int place = list.verticalScrollBar()->value();
    QVERIFY(place > 0);
    list.removeItems(odd);
    QCoreApplication::processEvents();
    QCOMPARE(list.verticalScrollBar()->value(), qMin(place, list.verticalScrollBar()->maximum()));
}

void TestListBox::aFullListTakesWhatFits()
{
    ListBox list;
    QVERIFY(list.addItems(texts(32766)));
    QVERIFY(!list.addItems({QStringLiteral("fits"), QStringLiteral("does not")}));
    QCOMPARE(list.count(), 32767);
    QCOMPARE(list.itemText(32766), QStringLiteral("fits"));
    QVERIFY(!list.addItem(QStringLiteral("no")));
    QVERIFY(!list.insertItem(0, QStringLiteral("no")));
    list.removeItem(0);
    QVERIFY(list.insertItem(0, QStringLiteral("again")));
    QCOMPARE(list.count(), 32767);
}

void TestListBox::clicksSelectAsOnThisDesktop()
{
    ListBox list;
    list.addItems(texts(12));
    show(list);
    QSignalSpy clicks(&list, &ListBox::Click);
    QSignalSpy doubleClicks(&list, &ListBox::DblClick);
    click(list, 2);
    QCOMPARE(list.selectedIndices(), QList<int>({2}));
    QCOMPARE(list.listIndex(), 2);
    QCOMPARE(clicks.size(), 1);
    click(list, 2);
    QVERIFY2(clicks.size() == 2, "a click on the selected entry is a click too");
    click(list, 5, Qt::ControlModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({2, 5}));
    click(list, 8, Qt::ShiftModifier | Qt::ControlModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({2, 5, 6, 7, 8}));
    click(list, 7, Qt::ShiftModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({2, 5, 6, 7}));
    click(list, 2, Qt::ControlModifier);
    click(list, 8, Qt::ShiftModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({2, 3, 4, 5, 6, 7, 8}));
    QCOMPARE(list.listIndex(), 8);
    QVERIFY2(clicks.size() == 7, "one click each");
    // The program's selection is where Ctrl and Shift go on from.
    list.selectOnly(1);
    click(list, 3, Qt::ShiftModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({1, 2, 3}));
    click(list, 4, Qt::ShiftModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({1, 2, 3, 4}));
    list.selectOnly(9);
    QTest::keyClick(&list, Qt::Key_Up, Qt::ShiftModifier);
    QTest::keyClick(&list, Qt::Key_Up, Qt::ShiftModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({7, 8, 9}));
    clicks.clear();
    list.selectOnly(1);
    click(list, 3, Qt::ShiftModifier);
    QCOMPARE(clicks.size(), 2);
    click(list, 2, Qt::ControlModifier);
    QCOMPARE(list.selectedIndices(), QList<int>({1, 3}));
    QCOMPARE(list.listIndex(), 2);
    QCOMPARE(doubleClicks.size(), 0);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, middleOf(list, 4));
    QCOMPARE(doubleClicks.size(), 1);
    const auto before = clicks.size();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.viewport()->rect().bottomLeft() - QPoint(-9, 9));
    QCOMPARE(clicks.size(), before);
}

void TestListBox::keysMoveSelectAndReportEnter()
{
    ListBox list;
    list.addItems(texts(4));
    show(list);
    QSignalSpy clicks(&list, &ListBox::Click);
    QSignalSpy keys(&list, &ListBox::KeyPress);
    list.selectOnly(1);
    clicks.clear();
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(list.selectedIndices(), QList<int>({2}));
    QVERIFY2(clicks.size() == 1, "selection and mark move in one gesture");
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    QCOMPARE(list.selectedIndices().size(), 4);
    QCOMPARE(list.listIndex(), 2);
    keys.clear();
    QTest::keyClick(&list, Qt::Key_Return);
    QTest::keyClick(&list, Qt::Key_Enter);
    QCOMPARE(keys.size(), 2);
    QCOMPARE(keys[0][0].toInt(), 13);
    QCOMPARE(keys[1][0].toInt(), 13);
    QTest::keyClick(&list, Qt::Key_Escape);
    QCOMPARE(keys.last()[0].toInt(), 27);
}

void TestListBox::focusAloneSelectsNothing()
{
    QWidget window;
    ListBox list(&window);
    list.addItems(texts(4));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicks(&list, &ListBox::Click);
    QFocusEvent focus(QEvent::FocusIn, Qt::TabFocusReason);
    QCoreApplication::sendEvent(&list, &focus);
    QCOMPARE(list.listIndex(), -1);
    QVERIFY(!list.currentIndex().isValid());
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(list.listIndex(), 0);
    QCOMPARE(clicks.size(), 1);
}

void TestListBox::typedLettersFindAFileName()
{
    ListBox list;
    list.addItems({QStringLiteral("/b/zebra.jpg"), QStringLiteral("/z/apple.jpg"), QStringLiteral("/a/Zoo.jpg")});
    show(list);
    QTest::keyClick(&list, 'z');
    QCOMPARE(list.listIndex(), 0);
    QTest::keyClick(&list, 'o');
    QCOMPARE(list.selectedIndices(), QList<int>({2}));
}

void TestListBox::widestEntryIsTheWidestInEveryScript()
{
    QStringList mixed = texts(500);
    QRandomGenerator random(7);
    const QVector<QString> pieces = {QStringLiteral("WAVE"), QStringLiteral("iiiii"), QStringLiteral("ÄÖ"),
        QStringLiteral("日本語"), QStringLiteral("ру"), QStringLiteral("e\u0301"), QStringLiteral("😀"),
        QStringLiteral("/")};
    for (QString &text : mixed) {
        for (int i = random.bounded(20); i > 0; --i)
            text += pieces[random.bounded(int(pieces.size()))];
    }
    ListBox list;
    QCOMPARE(list.widestEntry(), 0);
    list.addItems(mixed);
    const auto widest = [&] {
        double width = 0;
        for (const QString &text : list.items())
            width = qMax(width, QFontMetricsF(list.font()).horizontalAdvance(text));
        return int(std::ceil(width));
    };
    QCOMPARE(list.widestEntry(), widest());
    list.addItem(QString(400, u'W'));
    QCOMPARE(list.widestEntry(), widest());
    list.removeItem(500);
    QCOMPARE(list.widestEntry(), widest());
    QFont larger = list.font();
    larger.setPointSizeF(larger.pointSizeF() * 2);
    list.setFont(larger);
    QCOMPARE(list.widestEntry(), widest());
}

void TestListBox::theExtentMakesRoomToScrollSideways()
{
    ListBox list;
    list.addItems(texts(30));
    show(list);
    QCOMPARE(list.horizontalScrollBar()->maximum(), 0);
    list.setHorizontalExtent(1000);
    QCoreApplication::processEvents();
    const int reach = list.horizontalScrollBar()->maximum() + list.viewport()->width();
    QVERIFY2(reach >= 1000 && reach < 1040, qPrintable(QString::number(reach)));
    // Going to another entry does not throw the reader back to the left.
    list.horizontalScrollBar()->setValue(120);
    list.selectOnly(29);
    QCoreApplication::processEvents();
    QCOMPARE(list.horizontalScrollBar()->value(), 120);
    list.setHorizontalExtent(0);
    QCoreApplication::processEvents();
    QCOMPARE(list.horizontalScrollBar()->maximum(), 0);
}

void TestListBox::textStaysReadableOnTheListColours_data()
{
    QTest::addColumn<QRgb>("back");
    QTest::addColumn<QRgb>("text");
    const QRgb backs[] = {
        qRgb(192, 192, 255), qRgb(128, 128, 128), qRgb(0, 0, 0), qRgb(255, 255, 255), qRgb(118, 118, 118)};
    const QRgb inks[] = {qRgb(0, 0, 0), qRgb(252, 252, 252), qRgb(120, 120, 120)};
    for (const QRgb back : backs) {
        for (const QRgb ink : inks)
            QTest::addRow("ink %06x on %06x", ink & 0xffffff, back & 0xffffff) << back << ink;
    }
}

void TestListBox::textStaysReadableOnTheListColours()
{
    QFETCH(QRgb, back);
    QFETCH(QRgb, text);
    QWidget window;
    ListBox list(&window);
    list.setBackColor(back);
    QPalette theme = window.palette();
    theme.setColor(QPalette::Text, QColor(text));
    theme.setColor(QPalette::WindowText, QColor(text));
    window.setPalette(theme);
    QCOMPARE(list.palette().color(QPalette::Base).rgb(), back);
    const double contrast = colorContrast(list.palette().color(QPalette::Text).rgb(), back);
    QVERIFY2(contrast >= 4.5, qPrintable(QString::number(contrast)));
    if (colorContrast(text, back) >= 4.5)
        QCOMPARE(list.palette().color(QPalette::Text).rgb(), text);
}

void TestListBox::dropsTellFilesApartFromTheOwnFormat()
{
    ListBox from;
    from.addItems(texts(3));
    ListBox list;
    list.setAcceptDrops(true);
    QSignalSpy own(&list, &ListBox::DragDrop);
    QSignalSpy files(&list, &ListBox::filesDropped);
    const auto drop = [&](const QMimeData *mime) {
        QDragEnterEvent enter({5, 5}, Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, {});
        QCoreApplication::sendEvent(list.viewport(), &enter);
        QDropEvent event({5, 5}, Qt::CopyAction | Qt::MoveAction, mime, Qt::LeftButton, {});
        event.setDropAction(Qt::MoveAction);
        event.ignore();
        QCoreApplication::sendEvent(list.viewport(), &event);
        QCoreApplication::processEvents();
        // The sender of the files must never take a move for done.
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    };
    const std::unique_ptr<QMimeData> entries(from.model()->mimeData({from.model()->index(1, 0)}));
    QVERIFY(drop(entries.get()));
    QCOMPARE(own.size(), 1);
    QMimeData uris;
    uris.setUrls({QUrl(QStringLiteral("file:///a%20b.jpg")), QUrl(QStringLiteral("https://example.org/c.jpg"))});
    QVERIFY(drop(&uris));
    QCOMPARE(files.size(), 1);
    QCOMPARE(files[0][0].toStringList(), QStringList({QStringLiteral("/a b.jpg")}));
    QMimeData text;
    text.setText(QStringLiteral("/a.jpg"));
    QVERIFY(!drop(&text));
    QCOMPARE(own.size() + files.size(), 2);
}

void TestListBox::uriListsKeepForeignBytes()
{
    const QStringList paths =
        pathsOfUriList("# comment\r\nfile:///srv/me/caf%E9.jpg\r\nfile:///x%22y\r\nhttp://h/z\r\n\r\n");
    QCOMPARE(paths.size(), 2);
    QCOMPARE(pathToBytes(paths[0]), QByteArray("/srv/me/caf\xe9.jpg"));
    QCOMPARE(paths[1], QStringLiteral("/x\"y"));
}

void TestListBox::rowsAreReadableForScreenReaders()
{
    ListBox list;
    list.addItems({QStringLiteral("/a.jpg"), QStringLiteral("/b.jpg")});
    show(list);
    list.selectOnly(1);
    QCoreApplication::processEvents();
    QAccessibleInterface *box = QAccessible::queryAccessibleInterface(&list);
    QVERIFY(box);
    QCOMPARE(box->role(), QAccessible::List);
    QCOMPARE(box->childCount(), 2);
    QCOMPARE(box->child(1)->text(QAccessible::Name), QStringLiteral("/b.jpg"));
    QVERIFY(box->child(1)->state().selected);
    QVERIFY(!box->child(0)->state().selected);
}

QTEST_MAIN(TestListBox)
#include "tst_listbox.moc"
