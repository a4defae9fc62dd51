#include "shell/associations.h"
#include "shell/frmPreferences.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/yield.h"

#include <QtTest>
#include <QtWidgets>

namespace {
const QByteArray own(desktopEntryName);

frmPreferences &window()
{
    return form<frmPreferences>();
}

int checkedBoxes()
{
    int count = 0;
    for (int box = 1; box <= associationBoxCount; ++box)
        count += box != missingAssociationBox && window().chkAssocFileType[box]->isChecked();
    return count;
}

QString owner(const char *extension)
{
    return ReadDefault(QLatin1String(extension), QString());
}
}

class tst_frmPreferences_associations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void bulkButtonsTouchNothingButTheBoxes();
    void theStoreIsShownWhenTheTabIsShown();
    void aChoiceNotYetSetSurvivesAnActivation();
    void settingWritesStoreAndDesktopAndSaysSo();
    void theDesktopHearsOfTheUsersOwnChecksOnly();
    void aDesktopThatCannotBeToldIsNoObstacle();
    void leavingAsks_data();
    void leavingAsks();
    void eventsBetweenTheStepsChangeNothing();

private:
    QByteArray list() const;

    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
    int m_beeps = 0;
};

void tst_frmPreferences_associations::init()
{
    m_home = std::make_unique<TemporaryHome>();
    qputenv("XDG_DATA_DIRS", (m_home->path() + QStringLiteral("system")).toUtf8());
    m_home->write(QStringLiteral("system/applications/org.lumora.Lumora.desktop"), "[Desktop Entry]\n");
    m_home->write(QStringLiteral("system/mime/packages/org.lumora.Lumora.xml"), "");
    globals = {};
    m_dialogs = &ScriptedDialogs::install();
    m_beeps = 0;
    window().beep = [this] { ++m_beeps; };
    window().SSTab1->setCurrentIndex(frmPreferences::AssociateFileTypes);
}

void tst_frmPreferences_associations::cleanup()
{
    setYieldHook({});
    setDialogs(nullptr);
    globals.ProgramExiting = true;
    unload<frmPreferences>();
    unload<checkjpg>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QByteArray tst_frmPreferences_associations::list() const
{
    QFile file(m_home->path() + QStringLiteral(".config/mimeapps.list"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
}

void tst_frmPreferences_associations::bulkButtonsTouchNothingButTheBoxes()
{
    window().cmdAssocSelectAll->click();
    QCOMPARE(checkedBoxes(), 60);
    QVERIFY(!window().chkAssocFileType[missingAssociationBox]);
    window().chkAssocFileType[7]->click();
    window().cmdAssocInvertAll->click();
    QCOMPARE(checkedBoxes(), 1);
    QVERIFY(window().chkAssocFileType[7]->isChecked() && window().AssociationsChanged);
    window().cmdAssocClearAll->click();
    QCOMPARE(checkedBoxes(), 0);
    QVERIFY(registryStore().subKeys(RegistryStore::Root::ClassesRoot, QString()).isEmpty());
    QCOMPARE(list(), "none");
}

void tst_frmPreferences_associations::theStoreIsShownWhenTheTabIsShown()
{
    const auto give = [](const char *extension, const char *to) {
        CreateKey(RegistryStore::Root::ClassesRoot, QLatin1String(extension));
        SetClassesValue(QLatin1String(extension), QString(), QLatin1String(to));
    };
    give(".jpg", "Lumora.jpg.3");
    give(".png", "gimp.png");
    window().Form_Activate();
    QVERIFY(window().chkAssocFileType[13]->isChecked());
    QCOMPARE(checkedBoxes(), 1);
    QVERIFY(!window().AssociationsChanged);
    window().SSTab1->setCurrentIndex(0);
    give(".jpg", "");
    window().SSTab1->setCurrentIndex(frmPreferences::AssociateFileTypes);
    QCOMPARE(checkedBoxes(), 0);
}

void tst_frmPreferences_associations::aChoiceNotYetSetSurvivesAnActivation()
{
    window().chkAssocFileType[13]->click();
    window().Form_Activate();
    QVERIFY(window().chkAssocFileType[13]->isChecked() && window().AssociationsChanged);
}

void tst_frmPreferences_associations::settingWritesStoreAndDesktopAndSaysSo()
{
    m_home->write(QStringLiteral(".config/mimeapps.list"), "[Default Applications]\nimage/jpeg=gimp.desktop\n");
    const QByteArray before = list();
    window().chkAssocFileType[13]->click();
    m_dialogs->answer(MessageBox::Answer::Ok);
    window().cmdMakeAssoc->click();
    QCOMPARE(m_dialogs->boxes.size(), 1);
    QCOMPARE(m_dialogs->boxes[0].title, QStringLiteral("File Association Changes"));
    QCOMPARE(m_dialogs->boxes[0].text, QStringLiteral("File Association Changes have been made successfully"));
    QCOMPARE(m_dialogs->boxes[0].icon, MessageBox::Icon::Information);
    QVERIFY(!window().AssociationsChanged);
    QCOMPARE(m_beeps, 63); // of 65 types, without JPG and XWD
    QCOMPARE(owner(".jpg"), QStringLiteral("Lumora.jpg.3"));
    QVERIFY(owner("Lumora.jpg.3\\Shell\\Open\\Command").startsWith(QLatin1Char('"') + m_home->path()));
    QCOMPARE(list(), "[Default Applications]\nimage/jpeg=" + own + ";gimp.desktop\n");
    QVERIFY(window().chkAssocFileType[13]->font().bold() && !window().chkAssocFileType[21]->font().bold());

    window().cmdAssocClearAll->click();
    m_dialogs->answer(MessageBox::Answer::Ok);
    window().cmdMakeAssoc->click();
    QCOMPARE(owner(".jpg"), QString());
    QCOMPARE(list(), before);
    QVERIFY(!window().chkAssocFileType[13]->font().bold());
}

void tst_frmPreferences_associations::theDesktopHearsOfTheUsersOwnChecksOnly()
{
    const auto set = [&] {
        m_dialogs->answer(MessageBox::Answer::Ok);
        window().cmdMakeAssoc->click();
        window().Form_Activate();
    };
    window().chkAssocFileType[21]->click(); // .PNG
    set();
    QVERIFY(window().chkAssocFileType[49]->isChecked()); // .XPM, by its place in the store
    window().chkAssocFileType[21]->setChecked(true);
    window().chkAssocFileType[8]->click();
    set();
    QCOMPARE(list(), "[Default Applications]\nimage/png=" + own + "\nimage/gif=" + own + "\n");
    window().cmdAssocClearAll->click();
    QVERIFY(window().AssociationsChanged);
    set();
    QCOMPARE(list(), "none");
}

void tst_frmPreferences_associations::aDesktopThatCannotBeToldIsNoObstacle()
{
    QVERIFY(QDir().mkdir(m_home->path() + QStringLiteral(".config/mimeapps.list")));
    window().chkAssocFileType[13]->click();
    m_dialogs->answer(MessageBox::Answer::Ok);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("the desktop was not told: .*mimeapps")));
    window().cmdMakeAssoc->click();
    QCOMPARE(owner(".jpg"), QStringLiteral("Lumora.jpg.3"));
}

void tst_frmPreferences_associations::leavingAsks_data()
{
    QTest::addColumn<bool>("byOK");
    QTest::addColumn<bool>("yes");
    QTest::newRow("Yes on another tab") << false << true;
    QTest::newRow("No on another tab keeps the choice for later") << false << false;
    QTest::newRow("Yes on OK") << true << true;
    QTest::newRow("No on OK drops the choice") << true << false;
}

void tst_frmPreferences_associations::leavingAsks()
{
    QFETCH(bool, byOK);
    QFETCH(bool, yes);
    window().SSTab1->setCurrentIndex(0); // nothing was changed, nothing is asked
    window().SSTab1->setCurrentIndex(frmPreferences::AssociateFileTypes);
    window().show();
    window().chkAssocFileType[13]->click();
    m_dialogs->answer(yes ? MessageBox::Answer::Yes : MessageBox::Answer::No);
    if (yes)
        m_dialogs->answer(MessageBox::Answer::Ok);
    if (byOK)
        window().cmdOK->click();
    else
        window().SSTab1->setCurrentIndex(0);
    const MessageBox &question = m_dialogs->boxes[0];
    QCOMPARE(question.title, QStringLiteral("Apply Associations?"));
    QCOMPARE(question.text, QStringLiteral("Do you want to apply file association changes?"));
    QCOMPARE(question.buttons, MessageBox::Buttons::YesNo);
    QCOMPARE(owner(".jpg"), yes ? QStringLiteral("Lumora.jpg.3") : QString());
    QCOMPARE(window().AssociationsChanged, !byOK && !yes);
    QCOMPARE(window().isVisible(), !byOK);
    window().Form_Activate();
    QCOMPARE(window().chkAssocFileType[13]->isChecked(), yes || !byOK);
}

void tst_frmPreferences_associations::eventsBetweenTheStepsChangeNothing()
{
    bool exiting = false;
    forEachYield(
        [&] {
            globals.ProgramExiting = false;
            window().beep = [] {};
            window().chkAssocFileType[13]->setChecked(true);
            window().chkAssocFileType[21]->setChecked(false);
            m_dialogs->answer(MessageBox::Answer::Ok);
        },
        [] { window().cmdMakeAssoc_Click(); },
        [&] {
            window().chkAssocFileType[21]->setChecked(true); // too late for this run
            window().cmdMakeAssoc_Click();
            window().close();
            window().Form_Activate();
            if (std::exchange(exiting, true)) {
                globals.ProgramExiting = true;
                unload<frmPreferences>();
                QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
                m_dialogs->forgetAnswers();
            }
        },
        [](int) {
            QCOMPARE(owner(".jpg"), QStringLiteral("Lumora.jpg.3"));
            QCOMPARE(owner(".pic"), QString()); // that box 21 decides
            QCOMPARE(owner(".gif"), QString());
        });
}

QTEST_MAIN(tst_frmPreferences_associations)
#include "tst_frmPreferences_associations.moc"
