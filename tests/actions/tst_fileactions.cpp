#include "actions/fileactions.h"
#include "actions/frmConvertFileName.h"
#include "actions/frmSelectBatchDir.h"
#include "app/globals.h"
#include "app/settings.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "shell/frmPreferences.h"
#include "support/otherdisk.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QDir>
#include <QtTest>

using Answer = MessageBox::Answer;
using Icon = MessageBox::Icon;

namespace {

/// A player that only knows its file.
class QuietPlayer final : public Player
{
public:
    QString file;
    void setUrl(const QString &path) override { file = path; }
    QString url() const override { return file; }
    void play() override { }
    void pause() override { }
    void stop() override { }
    PlayState playState() const override { return Stopped; }
    int volume() const override { return 100; }
    void setVolume(int) override { }
    bool isMuted() const override { return false; }
    void setMuted(bool) override { }
    double duration() const override { return 0; }
    double currentPosition() const override { return 0; }
    void setCurrentPosition(double) override { }
    QImage frame(QSize) override { return {}; }
    void setVisible(bool) override { }
};

QByteArray contents(const QString &path)
{
    const Result<QByteArray> bytes = readFile(path, 1 << 20);
    return bytes ? *bytes : QByteArray("unreadable");
}

QString namesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name).join(u' ');
}

void verifyBox(const MessageBox &box, const char *title, const QString &text, Icon icon)
{
    QCOMPARE(box.title, QLatin1String(title));
    QCOMPARE(box.text, text);
    QCOMPARE(box.icon, icon);
    const bool report = icon == Icon::Information;
    QCOMPARE(box.buttons, report ? MessageBox::Buttons::Ok : MessageBox::Buttons::YesNo);
    QCOMPARE(box.defaultAnswer, report ? Answer::Ok : Answer::No);
}

} // namespace

/// Copy, move and delete with real windows and files: what is asked, what is told, what happens to list and files.
class tst_fileactions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void casingOfNames_data();
    void casingOfNames();
    void thePercentIsCutToWholeNumbers();
    void thePickerOpensWhereThePreferenceSays_data();
    void thePickerOpensWhereThePreferenceSays();
    void thePickerGivesAFolderOrNothing();
    void thePickerMakesFolders();
    void withoutAnAnswerNothingBegins_data();
    void withoutAnAnswerNothingBegins();
    void copyingTakesTheSelectedAndLeavesTheList();
    void aDeclinedCopyCounts();
    void aListOfOneEntryIsNotCopied();
    void movingAsksWithTheWordsOfCopyingAndReplaces();
    void movingAllLeavesTheCounterAtNothing();
    void deletingSomeShowsTheFirst();
    void deletingAllEmptiesTheViewer();
    void deletingKeepsWhatTheCounterForgot();
    void anAccessErrorIsAskedAboutAgain_data();
    void anAccessErrorIsAskedAboutAgain();
    void anyOtherFailureEndsSilently_data();
    void anyOtherFailureEndsSilently();
    void cancelStaysSetAndStopsNothing();
    void theProgressWindowKeepsTheOthersBack();
    void aPlayingFileIsReleased_data();
    void aPlayingFileIsReleased();
    void nothingWrongComesOfAYield_data();
    void nothingWrongComesOfAYield();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    ListBox &list() { return *window().lstDisplay; }
    frmConvertFileName &progress() { return form<frmConvertFileName>(); }
    QString folder(const char *name) const { return m_home->path() + QLatin1String(name) + QLatin1Char('/'); }
    QString target() const { return m_target; }
    /// Files a.png, b.png ... as the list; only those of `selected` are selected.
    void fill(int count, const QList<int> &selected);
    QString file(int index) const { return folder("from") + QLatin1Char(char('a' + index)) + QLatin1String(".png"); }
    /// The picker that comes up is answered by the button, once it stands at the target folder.
    void answerPicker(bool ok = true);
    void start(const QString &command);
    /// Gives a command with these answers, and looks at the progress window at its first yield.
    void run(const QString &command, const QVector<Answer> &answers);
    void verifyAtRest();

    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
    QString m_target; ///< the folder that the picker is to stand at
    QString m_pickerTitle;
    QString m_progressTitle; ///< while the run was at its first yield
    QSize m_progressSize;
};

void tst_fileactions::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_fileactions::init()
{
    m_dialogs = &ScriptedDialogs::install();
    m_target = folder("target");
    for (const char *name : {"from", "target"}) {
        QDir(folder(name)).removeRecursively();
        QDir().mkpath(folder(name));
    }
    saveOption("DefaultOpenFolder", QStringLiteral("1"));
    saveOption("LastVisitedFolder", target());
    globals.cancelFlag = false;
    globals.ProgramExiting = false;
    m_pickerTitle.clear();
    m_progressTitle.clear();
}

void tst_fileactions::cleanup()
{
    setYieldHook({});
    setDialogs(nullptr);
    window().ClearDisplayList();
}

void tst_fileactions::fill(int count, const QList<int> &selected)
{
    window().ClearDisplayList();
    for (int index = 0; index < count; ++index) {
        const QString name = file(index).mid(m_home->path().size());
        m_home->writePicture(name, QSize(40 + index, 30), QRgb(0xff000000U + index * 77));
        QVERIFY(list().addItem(file(index)));
    }
    window().lblCount->setText(QString::number(count));
    window().UpdateMenuAndToolbarState();
    const ScopedFlag busy(globals.ItemSelectionBusy);
    for (const int index : selected)
        list().setSelected(index, true);
}

void tst_fileactions::answerPicker(bool ok)
{
    auto *poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, [this, poll, ok] {
        auto &picker = form<frmSelectBatchDir>();
        if (!picker.isVisible() || picker.Dir1->path() + QLatin1Char('/') != target())
            return;
        poll->deleteLater();
        m_pickerTitle = picker.windowTitle();
        (ok ? picker.cmdOK : picker.cmdCancel)->click();
    });
    poll->start(0);
}

void tst_fileactions::start(const QString &command)
{
    if (command == QLatin1String("copy"))
        window().mnuEditCopyFilesTo_Click();
    else if (command == QLatin1String("move"))
        window().mnuEditMoveFilesTo_Click();
    else
        window().mnuEditDeleteFiles_Click();
}

void tst_fileactions::run(const QString &command, const QVector<Answer> &answers)
{
    for (const Answer answer : answers)
        m_dialogs->answer(answer);
    setYieldHook([this](int) {
        if (m_progressTitle.isEmpty() && progress().isVisible()) {
            m_progressTitle = progress().windowTitle();
            m_progressSize = progress().size();
        }
    });
    if (command != QLatin1String("delete"))
        answerPicker();
    start(command);
    setYieldHook({});
}

/// Every road out of a run leaves the shared windows as they are found by the next one.
void tst_fileactions::verifyAtRest()
{
    QVERIFY(progress().isHidden() && form<frmSelectBatchDir>().isHidden());
    QVERIFY(!globals.ItemSelectionBusy);
    QVERIFY(QGuiApplication::overrideCursor() == nullptr);
    QVERIFY(progress().lblConvertFileName->isVisibleTo(&progress()) && progress().lblTo->isVisibleTo(&progress()));
    QCOMPARE(form<frmSelectBatchDir>().windowTitle(), QStringLiteral("Tessaly Lumora - Select Batch Directory"));
}

void tst_fileactions::casingOfNames_data()
{
    QTest::addColumn<QString>("casing");
    const auto row = [](const char *path, const char *casing) { QTest::newRow(path) << QString::fromUtf8(casing); };
    row("/home/ME/My PICTURE.old.JPG", "/home/me/my Picture.Old.Jpg");
    row("name of a file.png", "Name Of A File.Png");
    row("\xC3\x84RGER. \xC3\xA4 .\xC3\xBC", "\xC3\x84rger. \xC3\x84 .\xC3\x9C");
    row("", "");
}

void tst_fileactions::casingOfNames()
{
    QFETCH(QString, casing);
    QCOMPARE(fileActionCasing(QString::fromUtf8(QTest::currentDataTag())), casing);
}

void tst_fileactions::thePercentIsCutToWholeNumbers()
{
    QVERIFY(!copyPercent(0, 1));
    QCOMPARE(copyPercent(0, 2), 0);
    QCOMPARE(copyPercent(1, 2), 100);
    QCOMPARE(copyPercent(2, 4), 66);
    QCOMPARE(copyPercent(1, 1000), 0);
    QCOMPARE(copyPercent(32766, 32767), 100);
}

void tst_fileactions::thePickerOpensWhereThePreferenceSays_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<bool>("applies");
    QTest::addColumn<QString>("opened");
    QTest::newRow("the last folder") << "1" << true << "from";
    QTest::newRow("the user's choice") << "2" << true << "target";
    QTest::newRow("anything else is the pictures folder") << "3" << true << "Pictures";
    QTest::newRow("without a default the current folder stays") << "1" << false << ".";
}

void tst_fileactions::thePickerOpensWhereThePreferenceSays()
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

void tst_fileactions::thePickerGivesAFolderOrNothing()
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

void tst_fileactions::thePickerMakesFolders()
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

void tst_fileactions::withoutAnAnswerNothingBegins_data()
{
    QTest::addColumn<QString>("command");
    for (const char *command : {"copy", "move", "delete"})
        QTest::newRow(command) << QString::fromLatin1(command);
}

void tst_fileactions::withoutAnAnswerNothingBegins()
{
    QFETCH(QString, command);
    // Nothing to act on: nothing is asked.
    window().ClearDisplayList();
    start(command);
    fill(3, {0, 2});
    if (command != QLatin1String("delete")) {
        answerPicker(false);
        start(command);
        QVERIFY(m_dialogs->boxes.isEmpty());
    }
    run(command, {Answer::No});
    QCOMPARE(m_dialogs->boxes.size(), qsizetype(1));
    QCOMPARE(namesIn(folder("from")), QStringLiteral("a.png b.png c.png"));
    QCOMPARE(namesIn(target()), QString());
    QCOMPARE(list().count(), 3);
    QVERIFY2(m_progressTitle.isEmpty(), "a window came up");
    verifyAtRest();
}

void tst_fileactions::copyingTakesTheSelectedAndLeavesTheList()
{
    fill(5, {1, 3, 4});
    const QStringList before = list().items();
    progress().lblPercent->setText(QStringLiteral("as it was"));
    run(QStringLiteral("copy"), {Answer::Yes, Answer::Ok});
    QCOMPARE(m_pickerTitle, QStringLiteral("Tessaly Lumora - Select Copy To...Directory"));
    QCOMPARE(m_progressTitle, QStringLiteral("Coping File(s):"));
    QCOMPARE(m_dialogs->boxes.size(), qsizetype(2));
    verifyBox(m_dialogs->boxes[0], "Copy files?",
        QStringLiteral("Are you sure you want to copy the select file(s) in the display list to: '") + target()
            + QStringLiteral("'?"),
        Icon::Question);
    verifyBox(m_dialogs->boxes[1], "Files Copied",
        QStringLiteral("3 Files have been successfully copied on your system!"), Icon::Information);
    QCOMPARE(namesIn(target()), QStringLiteral("b.png d.png e.png"));
    QCOMPARE(contents(target() + QStringLiteral("d.png")), contents(file(3)));
    QCOMPARE(list().items(), before);
    QVERIFY(list().isSelected(0));
    QCOMPARE(globals.CurrentMediaFile, file(0));
    QCOMPARE(progress().lblFileName->text(), fileActionCasing(file(4)));
    QCOMPARE(progress().lblConvertFileName->text(), fileActionCasing(target() + QStringLiteral("e.png")));
    QCOMPARE(progress().ProgressBar1->value(), 100);
    QCOMPARE(progress().lblPercent->text(), QStringLiteral("as it was"));
    QCOMPARE(progress().windowTitle(), QStringLiteral("Converting File:"));
    QVERIFY(!progress().Animation1->isVisibleTo(&progress()) && progress().ProgressBar1->isHidden());
    verifyAtRest();
}

void tst_fileactions::aDeclinedCopyCounts()
{
    fill(4, {0, 1, 2});
    for (const char *name : {"target/a.png", "target/b.png"})
        m_home->write(QLatin1String(name), "old");
    const QDateTime old = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    QFile source(file(1));
    QVERIFY(source.open(QIODevice::ReadWrite) && source.setFileTime(old, QFileDevice::FileModificationTime));
    source.close();
    run(QStringLiteral("copy"), {Answer::Yes, Answer::No, Answer::Yes, Answer::Ok});
    const QString name = QStringLiteral("b.png : ");
    const auto dated = [&](const QDateTime &time) { return name + QLocale().toString(time, QLocale::ShortFormat); };
    // Its answer was Yes, so the time of the file there is the source's by now.
    const QString before = m_dialogs->boxes[2].text.section(QLatin1Char('\n'), 2, 2);
    QVERIFY(before.startsWith(name) && before != dated(old));
    verifyBox(m_dialogs->boxes[2], "Overwrite file?",
        QStringLiteral("File \n\n") + before
            + QStringLiteral(
                "\nalready exists in the destination folder. \n\nDo you want to overwrite the current file \n\n")
            + dated(old) + QStringLiteral("\n\nwith this one?"),
        Icon::Question);
    QCOMPARE(m_dialogs->boxes.last().text, QStringLiteral("3 Files have been successfully copied on your system!"));
    QCOMPARE(contents(target() + QStringLiteral("a.png")), QByteArray("old"));
    QCOMPARE(contents(target() + QStringLiteral("b.png")), contents(file(1)));
    QCOMPARE(namesIn(target()), QStringLiteral("a.png b.png c.png"));
}

void tst_fileactions::aListOfOneEntryIsNotCopied()
{
    fill(1, {0});
    run(QStringLiteral("copy"), {Answer::Yes});
    QCOMPARE(m_dialogs->boxes.size(), qsizetype(1));
    QCOMPARE(namesIn(target()), QString());
    QCOMPARE(progress().windowTitle(), QStringLiteral("Converting File:"));
    verifyAtRest();
    // Not selected it is no way to be on: nothing is copied, and that is told.
    fill(1, {});
    run(QStringLiteral("copy"), {Answer::Yes, Answer::Ok});
    QCOMPARE(m_dialogs->boxes.last().text, QStringLiteral("0 Files have been successfully copied on your system!"));
}

void tst_fileactions::movingAsksWithTheWordsOfCopyingAndReplaces()
{
    fill(4, {0, 2});
    list().selectOnly(0);
    list().setSelected(2, true);
    m_home->write(QStringLiteral("target/c.png"), "old");
    const QByteArray moved = contents(file(2));
    run(QStringLiteral("move"), {Answer::Yes, Answer::Ok});
    QCOMPARE(m_pickerTitle, QStringLiteral("Tessaly Lumora - Select Move To...Directory"));
    QVERIFY2(m_progressTitle.isEmpty(), "the move showed a window");
    verifyBox(m_dialogs->boxes[0], "Copy files?",
        QStringLiteral("Are you sure you want to copy the select file(s) in the display list to: '") + target()
            + QStringLiteral("'?"),
        Icon::Question);
    verifyBox(m_dialogs->boxes[1], "Files Moved",
        QStringLiteral("2 Files have been successfully moved on your system!"), Icon::Information);
    QCOMPARE(namesIn(folder("from")), QStringLiteral("b.png d.png"));
    QCOMPARE(contents(target() + QStringLiteral("c.png")), moved);
    const QStringList entries = {
        target() + QStringLiteral("a.png"), file(1), target() + QStringLiteral("c.png"), file(3)};
    QCOMPARE(list().items(), entries);
    QCOMPARE(list().selectedIndices(), QList<int>({0, 2}));
    QCOMPARE(window().lblCount->text(), QStringLiteral("2"));
    // The item on show is known by its new name.
    QCOMPARE(list().listIndex(), 0);
    QCOMPARE(globals.CurrentMediaFile, entries[0]);
    QCOMPARE(globals.OriginalImageWidth, 40);
    verifyAtRest();
}

void tst_fileactions::movingAllLeavesTheCounterAtNothing()
{
    fill(2, {0, 1});
    list().selectOnly(1);
    list().setSelected(0, true);
    run(QStringLiteral("move"), {Answer::Yes, Answer::Ok});
    QCOMPARE(list().count(), 2);
    QCOMPARE(window().lblCount->text(), QStringLiteral("0"));
    QCOMPARE(globals.CurrentMediaFile, target() + QStringLiteral("a.png"));
    QVERIFY(FileExists(globals.CurrentMediaFile));
}

void tst_fileactions::deletingSomeShowsTheFirst()
{
    fill(4, {0, 3});
    list().selectOnly(3);
    list().setSelected(0, true);
    run(QStringLiteral("delete"), {Answer::Yes, Answer::Ok});
    verifyBox(m_dialogs->boxes[0], "Delete files?",
        QStringLiteral("Are you sure you want to delete the selected file(s) in the display list from your computer?"),
        Icon::Question);
    verifyBox(m_dialogs->boxes[1], "Files Deleted",
        QStringLiteral("2 Files have been successfully deleted from your system!"), Icon::Information);
    QCOMPARE(m_progressTitle, QStringLiteral("Deleting File(s):"));
    QCOMPARE(namesIn(folder("from")), QStringLiteral("b.png c.png"));
    QCOMPARE(list().items(), QStringList({file(1), file(2)}));
    QCOMPARE(window().lblCount->text(), QStringLiteral("2"));
    QVERIFY(list().isSelected(0));
    QCOMPARE(globals.CurrentMediaFile, file(1));
    QCOMPARE(globals.OriginalImageWidth, 41);
    QCOMPARE(progress().lblFileName->text(), file(0));
    QCOMPARE(progress().windowTitle(), QStringLiteral("Converting File:"));
    QVERIFY(progress().Animation1->fileName().isEmpty() && !progress().Animation1->isVisibleTo(&progress()));
    QVERIFY2(m_progressSize.height() < progress().height(), "the delete window is a smaller one");
    verifyAtRest();
}

void tst_fileactions::deletingAllEmptiesTheViewer()
{
    fill(3, {0, 1, 2});
    list().selectOnly(1);
    list().selectAll();
    run(QStringLiteral("delete"), {Answer::Yes, Answer::Ok});
    QCOMPARE(namesIn(folder("from")), QString());
    QVERIFY(list().isEmpty() && window().Image1->isEmpty());
    QCOMPARE(window().lblCount->text(), QStringLiteral("0"));
    QCOMPARE(globals.CurrentListIndex, 0);
    QVERIFY(!window().mnuEdit->isEnabled());
}

void tst_fileactions::deletingKeepsWhatTheCounterForgot()
{
    // Two were moved, which has lowered the counter; now it comes to nothing while two entries are left.
    fill(4, {2, 3});
    window().lblCount->setText(QStringLiteral("2"));
    run(QStringLiteral("delete"), {Answer::Yes, Answer::Ok});
    QCOMPARE(list().items(), QStringList({file(0), file(1)}));
    QVERIFY(window().Image1->isEmpty());
}

void tst_fileactions::anAccessErrorIsAskedAboutAgain_data()
{
    withoutAnAnswerNothingBegins_data();
}

void tst_fileactions::anAccessErrorIsAskedAboutAgain()
{
    QFETCH(QString, command);
    fill(3, {0, 1, 2});
    // A folder of the target's name, or a file that root may not remove either.
    std::optional<Immutable> held;
    if (command == QLatin1String("delete")) {
        held.emplace(file(1));
        if (!held->works())
            QSKIP("files cannot be made immutable here");
    } else {
        QDir().mkpath(target() + QStringLiteral("b.png"));
    }
    const bool remove = command == QLatin1String("delete");
    run(command, {Answer::Yes, Answer::Yes, Answer::Yes, Answer::No});
    QCOMPARE(m_dialogs->boxes.size(), qsizetype(4));
    const char *const title = remove       ? "Delete files?"
        : command == QLatin1String("copy") ? "Copy files?"
                                           : "Move files?";
    for (int i = 1; i < 4; ++i)
        verifyBox(m_dialogs->boxes[i], title,
            QStringLiteral("File ") + file(1)
                + QStringLiteral(" is read-only!  Do you want to continue with the rest of the files?"),
            Icon::Exclamation);
    held.reset();
    // The first of the order is done and stays so; the held one and the last are as they were.
    QCOMPARE(namesIn(folder("from")),
        command == QLatin1String("copy") ? QStringLiteral("a.png b.png c.png") : QStringLiteral("a.png b.png"));
    if (!remove)
        QCOMPARE(namesIn(target()),
            command == QLatin1String("copy") ? QStringLiteral("a.png b.png") : QStringLiteral("b.png c.png"));
    QCOMPARE(window().lblCount->text(), command == QLatin1String("copy") ? QStringLiteral("3") : QStringLiteral("2"));
    verifyAtRest();
}

void tst_fileactions::anyOtherFailureEndsSilently_data()
{
    withoutAnAnswerNothingBegins_data();
}

void tst_fileactions::anyOtherFailureEndsSilently()
{
    QFETCH(QString, command);
    fill(3, {0, 1, 2});
    QVERIFY(QFile::remove(file(1)));
    run(command, {Answer::Yes});
    QCOMPARE(m_dialogs->boxes.size(), qsizetype(1));
    QCOMPARE(namesIn(folder("from")),
        command == QLatin1String("copy") ? QStringLiteral("a.png c.png") : QStringLiteral("a.png"));
    verifyAtRest();

    // The folder that the files are in already: nothing is touched, nothing is told.
    if (command == QLatin1String("delete"))
        return;
    QDir(folder("from")).removeRecursively();
    QDir().mkpath(folder("from"));
    fill(2, {0, 1});
    const QByteArray before = contents(file(1));
    const QString names = namesIn(folder("from"));
    m_target = folder("from");
    saveOption("LastVisitedFolder", m_target);
    run(command,
        command == QLatin1String("copy") ? QVector<Answer>{Answer::Yes, Answer::Yes} : QVector<Answer>{Answer::Yes});
    QCOMPARE(contents(file(1)), before);
    QCOMPARE(namesIn(m_target), names);
    QCOMPARE(window().lblCount->text(), QStringLiteral("2"));
}

void tst_fileactions::cancelStaysSetAndStopsNothing()
{
    fill(3, {0, 1, 2});
    m_dialogs->answer(Answer::Yes);
    m_dialogs->answer(Answer::Ok);
    bool stayed = false;
    answerPicker();
    setYieldHook([&](int) {
        if (!progress().isVisible())
            return;
        progress().cmdCancel->click();
        QTest::keyClick(&progress(), Qt::Key_Escape);
        progress().close();
        stayed = progress().isVisible();
    });
    window().mnuEditCopyFilesTo_Click();
    QVERIFY(stayed);
    QCOMPARE(namesIn(target()), QStringLiteral("a.png b.png c.png"));
    QVERIFY2(globals.cancelFlag, "it ends the next conversion");
}

void tst_fileactions::theProgressWindowKeepsTheOthersBack()
{
    progress().showOver(&window());
    QVERIFY(QTest::qWaitForWindowExposed(&progress()));
    QTest::keyClick(window().windowHandle(), Qt::Key_Delete, Qt::ControlModifier);
    fill(1, {0});
    window().UpdateMenuAndToolbarState();
    window().tabFileList->setCurrentIndex(1);
    QVERIFY(window().cmdLeftAll->isEnabled());
    QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {},
        window().cmdLeftAll->mapTo(&window(), window().cmdLeftAll->rect().center()));
    QCOMPARE(list().count(), 1);
    progress().hide();
    QTest::mouseClick(window().windowHandle(), Qt::LeftButton, {},
        window().cmdLeftAll->mapTo(&window(), window().cmdLeftAll->rect().center()));
    QCOMPARE(list().count(), 0);
}

void tst_fileactions::aPlayingFileIsReleased_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("before it is moved") << "move";
    QTest::newRow("before it is deleted") << "delete";
}

void tst_fileactions::aPlayingFileIsReleased()
{
    QFETCH(QString, command);
    auto player = std::make_unique<QuietPlayer>();
    QuietPlayer *quiet = player.get();
    window().wmp9->setPlayer(std::move(player));
    globals.MediaPlayerVersion = 9.0f;
    fill(2, {});
    const QString video = m_home->write(QStringLiteral("from/v.mpg"), "video");
    QVERIFY(list().addItem(video));
    window().lblCount->setText(QStringLiteral("3"));
    list().selectOnly(2);
    QCOMPARE(quiet->file, video);
    run(command, {Answer::Yes, Answer::Ok});
    QVERIFY(!FileExists(video));
    QCOMPARE(quiet->file, QString());
    QVERIFY(window().Picture1->isVisible() && !window().wmp9->isVisible());
    window().wmp9->shutDown();
    globals.MediaPlayerVersion = 0;
}

void tst_fileactions::nothingWrongComesOfAYield_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("what");
    for (const char *command : {"copy", "move", "delete"}) {
        for (const char *what : {"the list is emptied", "another list comes", "an entry moves", "the program ends",
                 "the command comes again"})
            QTest::addRow("%s: %s", command, what) << QString::fromLatin1(command) << QString::fromLatin1(what);
    }
}

/// Only files that the user has said yes to are ever touched, whatever comes at whichever yield.
void tst_fileactions::nothingWrongComesOfAYield()
{
    QFETCH(QString, command);
    QFETCH(QString, what);
    m_home->write(QStringLiteral("from/innocent1.png"), "1");
    m_home->write(QStringLiteral("from/innocent2.png"), "2");
    forEachYield(
        [&] {
            m_dialogs = &ScriptedDialogs::install();
            QDir(target()).removeRecursively();
            QDir().mkpath(target());
            globals.ProgramExiting = false;
            fill(4, {0, 1, 3});
            m_dialogs->answer(Answer::Yes);
            m_dialogs->answer(Answer::Ok);
        },
        [&] {
            if (command != QLatin1String("delete"))
                answerPicker();
            start(command);
        },
        [&] {
            if (what == QLatin1String("the list is emptied")) {
                window().ClearDisplayList();
            } else if (what == QLatin1String("another list comes")) {
                list().clear();
                ignore(list().addItems({folder("from") + QStringLiteral("innocent1.png"),
                    folder("from") + QStringLiteral("innocent2.png")}));
                window().lblCount->setText(QStringLiteral("2"));
                list().selectAll();
            } else if (what == QLatin1String("an entry moves")) {
                const QString text = list().itemText(0);
                list().removeItem(0);
                ignore(list().addItem(text));
            } else if (what == QLatin1String("the program ends")) {
                globals.ProgramExiting = true;
            } else if (command == QLatin1String("copy")) {
                window().mnuEditCopyFilesTo_Click();
            } else {
                window().mnuEditDeleteFiles_Click();
            }
        },
        [&](int) {
            const bool ended = globals.ProgramExiting;
            globals.ProgramExiting = false;
            QVERIFY(FileExists(file(2)));
            QVERIFY(FileExists(folder("from") + QStringLiteral("innocent1.png")));
            QVERIFY(FileExists(folder("from") + QStringLiteral("innocent2.png")));
            for (const int index : {0, 1, 3}) {
                const bool moved = FileExists(target() + FileNameOfPath(file(index)));
                QVERIFY(command == QLatin1String("delete") || FileExists(file(index)) != moved
                    || (moved && command == QLatin1String("copy")));
            }
            verifyAtRest();
            if (ended || m_dialogs->boxes.size() < 2)
                m_dialogs->forgetAnswers();
        });
    setDialogs(nullptr);
    m_dialogs = nullptr;
    QFile::remove(folder("from") + QStringLiteral("innocent1.png"));
}

QTEST_MAIN(tst_fileactions)
#include "tst_fileactions.moc"
