#include "actions/fileactionstest.h"
#include "shell/frmPreferences.h"

/// The folder picker of conversion, copy and move.
class tst_frmSelectBatchDir : public FileActionsTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { showWindows(); }
    void init() { prepare(); }
    void cleanup() { clearUp(); }
    void thePickerOpensWhereThePreferenceSays_data();
    void thePickerOpensWhereThePreferenceSays();
    void thePickerGivesAFolderOrNothing();
    void thePickerMakesFolders();
};

void tst_frmSelectBatchDir::thePickerOpensWhereThePreferenceSays_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<bool>("applies");
    QTest::addColumn<QString>("opened");
    QTest::newRow("the last folder") << "1" << true << "from";
    QTest::newRow("the user's choice") << "2" << true << "target";
    QTest::newRow("anything else is the pictures folder") << "3" << true << "Pictures";
    QTest::newRow("without a default the current folder stays") << "1" << false << ".";
}

void tst_frmSelectBatchDir::thePickerOpensWhereThePreferenceSays()
{
    QFETCH(QString, option);
    QFETCH(bool, applies);
    QFETCH(QString, opened);
    QDir().mkpath(folder("Pictures"));
    saveOption("DefaultOpenFolder", option);
    saveOption("LastVisitedFolder", folder("from"));
    saveOption("UserChoiceOpenFolder", target());
    auto &choice = form<frmPreferences>().optDefaultOpenFolder;
    for (QRadioButton *button : choice) {
        button->setAutoExclusive(false);
        button->setChecked(applies && button == choice[1]);
    }
    auto &picker = form<frmSelectBatchDir>();
    picker.show();
    const QString wanted = opened == QLatin1String(".") ? QDir::currentPath() : m_home->path() + opened;
    QTRY_COMPARE(picker.Dir1->path(), wanted);
    QCOMPARE(picker.lblDirectoryName->text(), wanted);
    picker.reject();
    choice[1]->setChecked(true);
    for (QRadioButton *button : choice)
        button->setAutoExclusive(true);
    QVERIFY(unload<frmSelectBatchDir>());
}

void tst_frmSelectBatchDir::thePickerGivesAFolderOrNothing()
{
    QDir().mkpath(folder("target/below"));
    auto &picker = form<frmSelectBatchDir>();
    picker.show();
    QTRY_COMPARE(picker.Dir1->path() + QLatin1Char('/'), target());
    // A highlight alone is no choice; the space key makes it one.
    picker.Dir1->setFocus();
    picker.Dir1->expand(picker.Dir1->currentIndex());
    QTest::keyClick(picker.Dir1, Qt::Key_Down);
    QCOMPARE(picker.Dir1->path() + QLatin1Char('/'), target());
    QTest::keyClick(picker.Dir1, Qt::Key_Space);
    QCOMPARE(picker.lblDirectoryName->text() + QLatin1Char('/'), folder("target/below"));
    QTest::keyClick(picker.Dir1, Qt::Key_Up);
    QFocusEvent away(QEvent::FocusOut);
    QCoreApplication::sendEvent(picker.Dir1, &away);
    QCOMPARE(picker.Dir1->path() + QLatin1Char('/'), target());
    // A drive that is not there leaves all as it is.
    picker.Drive1->addItem(QStringLiteral("gone"), folder("gone"));
    picker.Drive1->setCurrentIndex(picker.Drive1->count() - 1);
    QCOMPARE(picker.Dir1->path() + QLatin1Char('/'), target());
    QVERIFY(picker.Drive1->folder() != folder("gone"));
    picker.cmdOK->click();
    QVERIFY(picker.isHidden());
    QCOMPARE(picker.lblDirectoryName->text(), target());
    picker.show();
    QTest::keyClick(&picker, Qt::Key_Escape);
    QCOMPARE(picker.lblDirectoryName->text(), QString());
    picker.show();
    picker.close();
    QVERIFY(isLoaded<frmSelectBatchDir>() && picker.isHidden());
    QCOMPARE(picker.lblDirectoryName->text(), QString());
    QVERIFY(unload<frmSelectBatchDir>());
}

void tst_frmSelectBatchDir::thePickerMakesFolders()
{
    auto &picker = form<frmSelectBatchDir>();
    picker.show();
    QTRY_COMPARE(picker.Dir1->path() + QLatin1Char('/'), target());
    m_dialogs->answerText(QString());
    m_dialogs->answerText(std::nullopt);
    picker.cmdCreateDirectory->click();
    picker.cmdCreateDirectory->click();
    QVERIFY(m_dialogs->boxes.isEmpty());
    m_dialogs->answerText(QStringLiteral("new one"));
    m_dialogs->answer(Answer::Ok);
    picker.cmdCreateDirectory->click();
    verifyBox(m_dialogs->boxes.last(), "Directory Created", QStringLiteral("Directory new one created successfully."),
        Icon::Information);
    QVERIFY(folderExists(folder("target/new one")));
    QCOMPARE(m_dialogs->textPrompts.last(), QStringLiteral("Enter Name Of Directory To Create"));
    for (const char *name : {"new one", "none/deeper", ".."}) {
        m_dialogs->answerText(QLatin1String(name));
        m_dialogs->answer(Answer::Ok);
        picker.cmdCreateDirectory->click();
        QCOMPARE(m_dialogs->boxes.last().title, QStringLiteral("Directory Creation error"));
        QCOMPARE(m_dialogs->boxes.last().text, QStringLiteral("Directory could not be created."));
        QCOMPARE(m_dialogs->boxes.last().icon, Icon::Exclamation);
    }
    picker.reject();
    QVERIFY(unload<frmSelectBatchDir>());
}

QTEST_MAIN(tst_frmSelectBatchDir)
#include "tst_frmSelectBatchDir.moc"
