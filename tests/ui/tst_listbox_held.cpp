#include "ui/listbox.h"

#include <QElapsedTimer>
#include <QScrollBar>
#include <QtTest>

/// A list whose entries go one by one: followed now and then, and caught up with at the end.
class tst_listbox_held : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void rowsThatGoArePaintedNowAndThen();
    void whatComesMeanwhileIsShownToo();

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_paints += event->type() == QEvent::Paint;
        return false;
    }

private:
    int rows() const { return m_list->verticalScrollBar()->maximum() + m_list->verticalScrollBar()->pageStep(); }

    std::unique_ptr<ListBox> m_list;
    int m_paints = 0;
};

void tst_listbox_held::init()
{
    m_list = std::make_unique<ListBox>();
    for (int i = 0; i < 2000; ++i)
        QVERIFY(m_list->addItem(QStringLiteral("/p/%1.png").arg(i)));
    m_list->resize(300, 200);
    m_list->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_list.get()));
    m_list->selectAll();
    QCoreApplication::processEvents();
    m_list->viewport()->installEventFilter(this);
    m_paints = 0;
}

void tst_listbox_held::rowsThatGoArePaintedNowAndThen()
{
    QElapsedTimer time;
    time.start();
    m_list->holdRows(true);
    for (int i = 1999; i >= 100; --i) {
        m_list->removeItem(i);
        QCoreApplication::processEvents();
    }
    QVERIFY2(m_paints <= time.elapsed() / 100 + 1, qPrintable(QString::number(m_paints)));
    m_list->holdRows(false);
    QTRY_VERIFY(m_paints > 0);
    QCOMPARE(rows(), 100);
    QCOMPARE(m_list->selectedIndices().size(), qsizetype(100));
    QCOMPARE(m_list->selectionModel()->selectedRows().size(), qsizetype(100));
    m_paints = 0;
    m_list->removeItem(5);
    QTRY_VERIFY(m_paints > 0);
    QCOMPARE(rows(), 99);
}

/// Another list comes in at a yield, and the user clicks into it.
void tst_listbox_held::whatComesMeanwhileIsShownToo()
{
    m_list->holdRows(true);
    m_list->removeItem(1999);
    m_list->clear();
    QCoreApplication::processEvents();
    QTest::mouseClick(m_list->viewport(), Qt::LeftButton, {}, QPoint(20, 20));
    for (int i = 0; i < 3000; ++i)
        QVERIFY(m_list->addItem(QStringLiteral("/q/%1.png").arg(i)));
    m_list->selectOnly(2990);
    QCoreApplication::processEvents();
    m_list->holdRows(false);
    QCoreApplication::processEvents();
    QCOMPARE(rows(), 3000);
    QVERIFY(m_list->viewport()->rect().contains(m_list->visualRect(m_list->model()->index(2990, 0))));
}

QTEST_MAIN(tst_listbox_held)
#include "tst_listbox_held.moc"
