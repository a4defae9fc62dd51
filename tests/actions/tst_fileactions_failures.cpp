#include "actions/fileactionstest.h"
#include "support/otherdisk.h"

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

} // namespace

/// What goes wrong while files are copied, moved and deleted, and what comes in between.
class tst_fileactions_failures : public FileActionsTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { showWindows(); }
    void init() { prepare(); }
    void cleanup() { clearUp(); }
    void anAccessErrorIsAskedAboutAgain_data() { rowsOfCommands(); }
    void anAccessErrorIsAskedAboutAgain();
    void anyOtherFailureEndsSilently_data() { rowsOfCommands(); }
    void anyOtherFailureEndsSilently();
    void cancelStaysSetAndStopsNothing();
    void theProgressWindowKeepsTheOthersBack();
    void aPlayingFileIsReleased_data();
    void aPlayingFileIsReleased();
    void nothingWrongComesOfAYield_data();
    void nothingWrongComesOfAYield();
};

void tst_fileactions_failures::anAccessErrorIsAskedAboutAgain()
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
    const qsizetype toldBefore = logged().filter(QStringLiteral("failed ") + file(1)).size();
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
    QCOMPARE(logged().filter(QStringLiteral("failed ") + file(1)).size(), toldBefore + 3);
    verifyAtRest();
}

void tst_fileactions_failures::anyOtherFailureEndsSilently()
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

void tst_fileactions_failures::cancelStaysSetAndStopsNothing()
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

void tst_fileactions_failures::theProgressWindowKeepsTheOthersBack()
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

void tst_fileactions_failures::aPlayingFileIsReleased_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("before it is moved") << "move";
    QTest::newRow("before it is deleted") << "delete";
}

void tst_fileactions_failures::aPlayingFileIsReleased()
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

void tst_fileactions_failures::nothingWrongComesOfAYield_data()
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
void tst_fileactions_failures::nothingWrongComesOfAYield()
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

QTEST_MAIN(tst_fileactions_failures)
#include "tst_fileactions_failures.moc"
