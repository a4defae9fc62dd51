#include "app/checkjpg.h"
#include "app/frmIntroSelect.h"
#include "app/frmPreviousInstance.h"
#include "app/frmTip.h"
#include "app/globals.h"
#include "app/settings.h"
#include "app/startup.h"
#include "editor/frmZoomView.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmBrowseFolder.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"
#include "viewer/listfile.h"

#include <QSet>
#include <QtTest>

namespace {

bool anythingIsLoaded()
{
    for (const FormRow &row : formTable()) {
        if (row.isLoaded && row.isLoaded())
            return true;
    }
    return false;
}

/// Runs `body` as the program's event loop would: inside exec(), which ends with the program or with the body.
void inEventLoop(const std::function<void()> &body)
{
    QTimer::singleShot(0, [&] {
        body();
        QCoreApplication::exit();
    });
    QCoreApplication::exec();
}

QString standardList()
{
    return AppFolder() + QString::fromLatin1(standardListName);
}

}

/// The end of the program: what is saved, what goes and in which order, from wherever it is asked for.
class tst_unload_order : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void theTableIsWhole();
    void windowsGoInTheOrderOfTheTable();
    void noWindowIsMadeInOrderToUnloadIt();
    void theListIsSavedUnlessItIsLocked_data();
    void theListIsSavedUnlessItIsLocked();
    void aSecondCallChangesNothing();
    void underAModalWindowTheWindowsStayUntilItHasReturned();
    void underAYieldTheWindowsStayUntilItHasReturned();
    void closingAWindowEndsTheProgram_data();
    void closingAWindowEndsTheProgram();
    void closingTheEditorBringsTheMainViewerBack();
    void stepsAtShutDownRunOnce();

private:
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_unload_order::init()
{
    m_home = std::make_unique<TemporaryHome>();
    globals = {};
    saveOption("Show Tips at Startup", QStringLiteral("0"));
}

void tst_unload_order::cleanup()
{
    if (!globals.ProgramExiting)
        ShutDownProgram();
    finishShutDown();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!anythingIsLoaded());
    globals = {};
}

void tst_unload_order::theTableIsWhole()
{
    QSet<QByteArray> names;
    for (const FormRow &row : formTable()) {
        names.insert(row.name);
        QVERIFY2(bool(row.isLoaded) == bool(row.unload), row.name);
        QVERIFY2(!row.make || row.unload, row.name);
    }
    QCOMPARE(names.size(), qsizetype(39));
    QCOMPARE(formTable().size(), std::size_t(39));
    QCOMPARE(formTable().front().name, "checkjpg");
    QCOMPARE(formTable().back().name, "frmMainViewer");
}

void tst_unload_order::windowsGoInTheOrderOfTheTable()
{
    // Made against the order, so that neither age nor chance gives it.
    form<frmMainViewer>();
    form<frmZoomView>();
    form<frmTip>();
    form<frmPreviousInstance>();
    form<frmIntroSelect>();
    form<frmBrowseFolder>();
    form<checkjpg>();
    QStringList loaded;
    for (const FormRow &row : formTable()) {
        if (row.isLoaded && row.isLoaded())
            loaded.append(QString::fromLatin1(row.name));
    }
    QStringList gone;
    const auto windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        const QString name = QString::fromLatin1(window->metaObject()->className());
        if (loaded.contains(name))
            connect(window, &QObject::destroyed, this, [&gone, name] { gone.append(name); });
    }
    ShutDownProgram();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(gone, loaded);
}

void tst_unload_order::noWindowIsMadeInOrderToUnloadIt()
{
    globals.ProgramExiting = false;
    ShutDownProgram();
    QVERIFY(!anythingIsLoaded());
}

void tst_unload_order::theListIsSavedUnlessItIsLocked_data()
{
    QTest::addColumn<bool>("locked");
    QTest::addColumn<bool>("saved");
    QTest::newRow("a list of the user's own making is saved") << false << true;
    QTest::newRow("a list from the command line is not") << true << false;
}

void tst_unload_order::theListIsSavedUnlessItIsLocked()
{
    QFETCH(bool, locked);
    const QString path = m_home->writePicture(QStringLiteral("a.png"), QSize(20, 10));
    auto &viewer = form<frmMainViewer>();
    QVERIFY(viewer.lstDisplay->addItem(path));
    globals.StandardListLocked = locked;
    saveOption("ViewMode", QStringLiteral("7"));
    ShutDownProgram();
    QTEST(FileExists(standardList()), "saved");
    // The settings are written in both cases; the view mode of a shown Main Viewer is always 1.
    QCOMPARE(option("ViewMode", ""), QStringLiteral("1"));
}

void tst_unload_order::aSecondCallChangesNothing()
{
    form<frmMainViewer>();
    ShutDownProgram();
    saveOption("ViewMode", QStringLiteral("7"));
    ShutDownProgram();
    QCOMPARE(option("ViewMode", ""), QStringLiteral("7"));
    QVERIFY(!anythingIsLoaded());
}

void tst_unload_order::underAModalWindowTheWindowsStayUntilItHasReturned()
{
    int result = -1;
    bool stillThere = false;
    inEventLoop([&] {
        form<frmMainViewer>();
        QDialog box;
        QTimer::singleShot(0, &box, [] { ShutDownProgram(); });
        result = box.exec();
        stillThere = isLoaded<frmMainViewer>();
    });
    QCOMPARE(result, int(QDialog::Rejected));
    QVERIFY2(stillThere, "the routine that showed the box lost its windows");
    finishShutDown();
    QVERIFY(!anythingIsLoaded());
}

void tst_unload_order::underAYieldTheWindowsStayUntilItHasReturned()
{
    bool stillThere = false;
    inEventLoop([&] {
        form<frmMainViewer>();
        setYieldHook([](int) { ShutDownProgram(); });
        Yield();
        setYieldHook({});
        stillThere = isLoaded<frmMainViewer>();
    });
    QVERIFY2(stillThere, "the routine that yielded lost its windows");
    finishShutDown();
    QVERIFY(!anythingIsLoaded());
}

void tst_unload_order::closingAWindowEndsTheProgram_data()
{
    QTest::addColumn<QByteArray>("window");
    QTest::addColumn<bool>("startInEditor");
    QTest::addColumn<bool>("startInFolderBrowser");
    QTest::addColumn<bool>("ends");
    QTest::newRow("the Main Viewer") << QByteArray("frmMainViewer") << false << false << true;
    QTest::newRow("the editor after a start in it") << QByteArray("frmZoomView") << true << false << true;
    QTest::newRow("the browser after a start in it") << QByteArray("frmBrowseFolder") << false << true << true;
    QTest::newRow("the editor otherwise does not") << QByteArray("frmZoomView") << false << false << false;
    QTest::newRow("the browser otherwise does not") << QByteArray("frmBrowseFolder") << false << false << false;
}

void tst_unload_order::closingAWindowEndsTheProgram()
{
    QFETCH(QByteArray, window);
    QFETCH(bool, startInEditor);
    QFETCH(bool, startInFolderBrowser);
    QFETCH(bool, ends);
    form<frmMainViewer>();
    globals.StartInEditor = startInEditor;
    globals.StartInFolderBrowser = startInFolderBrowser;
    for (const FormRow &row : formTable()) {
        if (row.name == window)
            QVERIFY(row.make()->close());
    }
    QCOMPARE(globals.ProgramExiting, ends);
    QCOMPARE(anythingIsLoaded(), !ends);
}

void tst_unload_order::closingTheEditorBringsTheMainViewerBack()
{
    auto &viewer = form<frmMainViewer>();
    viewer.mnuPictureViewer_Click();
    viewer.hide();
    QVERIFY(form<frmZoomView>().close());
    QVERIFY(viewer.isVisible());
    QVERIFY(!isLoaded<frmZoomView>());
}

void tst_unload_order::stepsAtShutDownRunOnce()
{
    int calls = 0;
    bool before = false;
    form<frmMainViewer>();
    atShutDown([&] {
        ++calls;
        before = isLoaded<frmMainViewer>();
    });
    ShutDownProgram();
    ShutDownProgram();
    QCOMPARE(calls, 1);
    QVERIFY(before);
}

QTEST_MAIN(tst_unload_order)
#include "tst_unload_order.moc"
