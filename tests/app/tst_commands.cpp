#include "app/commandline.h"
#include "app/frmIntroSelect.h"
#include "app/frmPreviousInstance.h"
#include "app/frmTip.h"
#include "app/globals.h"
#include "app/settings.h"
#include "app/startup.h"
#include "editor/frmZoomView.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmBrowseFolder.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"
#include "viewer/listfile.h"
#include "viewer/searchfolder.h"

#include <QtTest>

/// The queue of commands and what the Main Viewer makes of it, and the windows that come up at the start.
class tst_commands : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void mailboxQueuesAndIsFreeAgain();
    void emptyCommandStaysWithoutHarm();
    void emptyCommandsDoNotStandInTheWay();
    void oneFileIsTheWholeList();
    void ofSeveralFilesTheFirstIsSelected();
    void ofSeveralCommandsTheLastStays();
    void listFileReplacesTheListAndUnlocksIt();
    void listFilesAmongSeveralGiveTheirEntries();
    void folderFillsTheSelectionList();
    void folderAndFileFillBothLists();
    void commandsWaitWhileAModalWindowIsOpen();
    void folderThatComesDuringASearchIsNotLost();
    void switchBringsItsWindowUpInPlaceOfTheMainViewer_data();
    void switchBringsItsWindowUpInPlaceOfTheMainViewer();
    void endDuringASwitchStartEndsItsWait();
    void fileAfterASwitchStartBringsTheMainViewerUp();
    void introRunsItsChoice();
    void introIsWantedByItsKey();
    void tipsAreTheLinesOfTheFile();

private:
    frmMainViewer &shownViewer();
    QString picture(const char *name) { return m_home->writePicture(QString::fromLatin1(name), QSize(20, 10)); }
    void give(const QStringList &paths) { form<frmPreviousInstance>().takeIn(fileCommand(paths)); }
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_commands::init()
{
    m_home = std::make_unique<TemporaryHome>();
    globals = {};
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    form<frmPreviousInstance>();
}

void tst_commands::cleanup()
{
    ShutDownProgram();
    finishShutDown();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    globals = {};
}

/// A Main Viewer after its first activation.
frmMainViewer &tst_commands::shownViewer()
{
    auto &viewer = form<frmMainViewer>();
    viewer.show();
    if (!QTest::qWaitFor([&] { return viewer.Timer1.isActive(); }))
        qFatal("the Main Viewer was never activated");
    return viewer;
}

void tst_commands::mailboxQueuesAndIsFreeAgain()
{
    auto &mailbox = form<frmPreviousInstance>();
    QCOMPARE(mailbox.windowTitle(), QStringLiteral("PreviousInstance"));
    mailbox.takeIn(QStringLiteral("\"/a & b.jpg\""));
    mailbox.takeIn(QString());
    QCOMPARE(mailbox.List1->items(), (QStringList{QStringLiteral("\"/a & b.jpg\""), QString()}));
    QCOMPARE(mailbox.cmdDummy->text(), QStringLiteral("Ready for command"));
    QVERIFY(!mailbox.isVisible());
}

void tst_commands::emptyCommandStaysWithoutHarm()
{
    form<frmPreviousInstance>().takeIn(QString());
    auto &viewer = shownViewer();
    viewer.Timer1_Timer();
    QCOMPARE(form<frmPreviousInstance>().List1->count(), 1);
    QCOMPARE(viewer.lstDisplay->count(), 0);
    QVERIFY(!globals.StandardListLocked);
}

void tst_commands::emptyCommandsDoNotStandInTheWay()
{
    form<frmPreviousInstance>().takeIn(QString());
    auto &viewer = shownViewer();
    const QString path = picture("a.png");
    form<frmPreviousInstance>().takeIn(QString());
    give({path});
    viewer.Timer1_Timer();
    QCOMPARE(viewer.lstDisplay->items(), QStringList{path});
    QVERIFY(form<frmPreviousInstance>().List1->isEmpty());
}

void tst_commands::oneFileIsTheWholeList()
{
    auto &viewer = shownViewer();
    QVERIFY(viewer.lstDisplay->addItems({QStringLiteral("/x.jpg"), QStringLiteral("/y.jpg")}));
    const QString path = picture("a.png");
    give({path});
    viewer.ProcessIfFromCommandLine(QString());
    QCOMPARE(viewer.lstDisplay->items(), QStringList{path});
    QCOMPARE(viewer.lstDisplay->selectedIndices(), QList<int>{0});
    QCOMPARE(globals.CurrentListIndex, 1);
    QCOMPARE(viewer.lblCount->text(), QStringLiteral("1"));
    QCOMPARE(viewer.CurrentPicture->text(), QStringLiteral("1"));
    QCOMPARE(viewer.tabFileList->currentIndex(), 1);
    QVERIFY(globals.StandardListLocked);
}

void tst_commands::ofSeveralFilesTheFirstIsSelected()
{
    auto &viewer = shownViewer();
    const QStringList paths{picture("a.png"), picture("b.png"), picture("c.png")};
    give(paths);
    viewer.ProcessIfFromCommandLine(QString());
    QCOMPARE(viewer.lstDisplay->items(), paths);
    QCOMPARE(viewer.lstDisplay->selectedIndices(), QList<int>{0});
    QCOMPARE(viewer.CurrentPicture->text(), QStringLiteral("1"));
    QCOMPARE(viewer.lblCount->text(), QStringLiteral("3"));
}

void tst_commands::ofSeveralCommandsTheLastStays()
{
    auto &viewer = shownViewer();
    const QString last = picture("b.png");
    give({picture("a.png")});
    give({last});
    viewer.ProcessIfFromCommandLine(QString());
    QCOMPARE(viewer.lstDisplay->items(), QStringList{last});
}

void tst_commands::listFileReplacesTheListAndUnlocksIt()
{
    auto &viewer = shownViewer();
    const QStringList paths{picture("a.png"), picture("b.png")};
    give({m_home->write(QStringLiteral("my.lsl"), writeListFile(paths, QStringLiteral("2")))});
    viewer.ProcessIfFromCommandLine(QString());
    QCOMPARE(viewer.lstDisplay->items(), paths);
    QCOMPARE(viewer.CurrentPicture->text(), QStringLiteral("2"));
    QVERIFY(!globals.StandardListLocked);
    QVERIFY(form<frmPreviousInstance>().List1->isEmpty());
}

void tst_commands::listFilesAmongSeveralGiveTheirEntries()
{
    auto &viewer = shownViewer();
    const QStringList paths{picture("a.png"), picture("b.png")};
    const QString other = picture("c.png");
    give({other, m_home->write(QStringLiteral("my.lst"), writeListFile(paths, QStringLiteral("2")))});
    viewer.ProcessIfFromCommandLine(QString());
    QCOMPARE(viewer.lstDisplay->items(), QStringList{other} + paths);
    QVERIFY(globals.StandardListLocked);
}

void tst_commands::folderFillsTheSelectionList()
{
    auto &viewer = shownViewer();
    QVERIFY(viewer.lstDisplay->addItem(QStringLiteral("/x.jpg")));
    const QStringList paths{picture("f/a.jpg"), picture("f/b.jpg")};
    picture("f/below/c.jpg");
    give({m_home->path() + QStringLiteral("f")});
    viewer.ProcessIfFromCommandLine(QString());
    QCOMPARE(viewer.lstSelect->items(), paths);
    QCOMPARE(viewer.lstSelect->selectedIndices(), QList<int>{0});
    QCOMPARE(viewer.tabFileList->currentIndex(), 0);
    QCOMPARE(viewer.lstDisplay->items(), QStringList{QStringLiteral("/x.jpg")});
}

void tst_commands::folderAndFileFillBothLists()
{
    auto &viewer = shownViewer();
    const QStringList found{picture("f/a.jpg")};
    const QString file = picture("b.jpg");
    give({m_home->path() + QStringLiteral("f/"), file});
    viewer.ProcessIfFromCommandLine(QString());
    QCOMPARE(viewer.lstSelect->items(), found);
    QCOMPARE(viewer.lstDisplay->items(), QStringList{file});
}

void tst_commands::folderThatComesDuringASearchIsNotLost()
{
    auto &viewer = shownViewer();
    picture("f/a.jpg");
    const QStringList later{picture("g/b.jpg")};
    bool given = false;
    setYieldHook([&](int) {
        if (given || !isFolderSearchUnderWay())
            return;
        given = true;
        give({m_home->path() + QStringLiteral("g")});
        viewer.Timer1_Timer();
    });
    searchFoldersInto({m_home->path() + QStringLiteral("f")}, true);
    setYieldHook({});
    QTRY_COMPARE(viewer.lstSelect->items(), later);
}

void tst_commands::commandsWaitWhileAModalWindowIsOpen()
{
    auto &viewer = shownViewer();
    give({picture("a.png")});
    int before = -1;
    // Inside exec(), as in the program: a modal window of its own would not run after the end of the test before.
    QTimer::singleShot(0, &viewer, [&] {
        QDialog box;
        QTimer::singleShot(0, &box, [&] {
            viewer.Timer1_Timer();
            before = viewer.lstDisplay->count();
            box.reject();
        });
        box.exec();
        QCoreApplication::exit();
    });
    QCoreApplication::exec();
    QCOMPARE(before, 0);
    QTRY_COMPARE(viewer.lstDisplay->count(), 1);
}

void tst_commands::switchBringsItsWindowUpInPlaceOfTheMainViewer_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<bool>("atStart");
    QTest::newRow("the editor at the start") << QStringLiteral("/editor") << true;
    QTest::newRow("the folder browser at the start") << QStringLiteral("/folder") << true;
    QTest::newRow("the editor later") << QStringLiteral("/editor") << false;
    QTest::newRow("the folder browser later") << QStringLiteral("/folder") << false;
}

void tst_commands::switchBringsItsWindowUpInPlaceOfTheMainViewer()
{
    QFETCH(QString, command);
    QFETCH(bool, atStart);
    if (!atStart)
        shownViewer();
    form<frmPreviousInstance>().takeIn(command);
    auto &viewer = form<frmMainViewer>();
    if (!atStart)
        viewer.Timer1_Timer();
    const bool editor = command == QStringLiteral("/editor");
    QCOMPARE(globals.StartInEditor, editor);
    QCOMPARE(globals.StartInFolderBrowser, !editor);
    QVERIFY(editor ? form<frmZoomView>().isVisible() : form<frmBrowseFolder>().isVisible());
    QVERIFY(!viewer.isVisible());
    QVERIFY(!viewer.Timer1.isActive());
    QVERIFY(form<frmPreviousInstance>().List1->isEmpty());
    QCOMPARE(globals.MainViewerActivated, !atStart);
}

void tst_commands::endDuringASwitchStartEndsItsWait()
{
    form<frmPreviousInstance>().takeIn(QStringLiteral("/editor"));
    QTimer::singleShot(100, [] { ShutDownProgram(); });
    QElapsedTimer time;
    time.start();
    form<frmMainViewer>();
    QVERIFY2(time.elapsed() < 1500, "the two seconds went on after the end");
    QVERIFY(globals.ProgramExiting);
}

void tst_commands::fileAfterASwitchStartBringsTheMainViewerUp()
{
    form<frmPreviousInstance>().takeIn(QStringLiteral("/editor"));
    auto &viewer = form<frmMainViewer>();
    const QString path = picture("a.png");
    commandArrived(fileCommand({path}), QString());
    QTRY_COMPARE(viewer.lstDisplay->items(), QStringList{path});
    QVERIFY(viewer.isVisible());
    QVERIFY(viewer.mnuViewToolbarsCaptionsRight->isChecked());
    QCOMPARE(viewer.Toolbar1->toolButtonStyle(), Qt::ToolButtonTextBesideIcon);
    QVERIFY(form<frmZoomView>().close());
    QVERIFY2(!globals.ProgramExiting, "the program has become that of the Main Viewer");
}

void tst_commands::introRunsItsChoice()
{
    shownViewer();
    auto &intro = form<frmIntroSelect>();
    intro.show();
    QVERIFY(intro.optSelect[0]->isChecked());
    QTest::mouseClick(intro.lblSelect[4], Qt::LeftButton);
    QVERIFY(intro.optSelect[4]->isChecked());
    intro.cmdOK->click();
    QVERIFY(isLoaded<frmBrowseFolder>());
    QVERIFY(!isLoaded<frmIntroSelect>());
}

void tst_commands::introIsWantedByItsKey()
{
    shownViewer();
    QVERIFY(frmIntroSelect::isWanted());
    QTest::mouseClick(form<frmIntroSelect>().lblShowAtStartUp, Qt::LeftButton);
    QVERIFY(!form<frmIntroSelect>().chkShowAtStartUp->isChecked());
    QVERIFY(!frmIntroSelect::isWanted());
    form<frmIntroSelect>().cmdCancel->click();
    form<frmIntroSelect>();
    QTRY_VERIFY(!isLoaded<frmIntroSelect>());
    form<frmMainViewer>().mnuFileSelectViewer_Click();
    QVERIFY(form<frmIntroSelect>().isVisible());
    QVERIFY(form<frmIntroSelect>().chkShowAtStartUp->isChecked());
}

void tst_commands::tipsAreTheLinesOfTheFile()
{
    QVERIFY(!form<frmTip>().lblTipText->text().isEmpty());
    unload<frmTip>();
    m_home->write(QStringLiteral("app/TIPOFDAY.TXT"), "First tip.\r\n\r\n  Second tip.  \n");
    QSet<QString> seen;
    for (int i = 0; i < 2; ++i) {
        seen.insert(form<frmTip>().lblTipText->text());
        form<frmTip>().cmdNextTip->click();
    }
    QCOMPARE(seen, (QSet<QString>{QStringLiteral("First tip."), QStringLiteral("Second tip.")}));
    form<frmTip>().chkLoadTipsAtStartup->click();
    QCOMPARE(option("Show Tips at Startup", ""), QStringLiteral("1"));
}

QTEST_MAIN(tst_commands)
#include "tst_commands.moc"
