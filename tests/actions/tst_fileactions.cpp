#include "actions/fileactions.h"
#include "actions/fileactionstest.h"

/// Copy, move and delete with real windows and files: what is asked, what is told, what happens to list and files.
class tst_fileactions : public FileActionsTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { showWindows(); }
    void init() { prepare(); }
    void cleanup() { clearUp(); }
    void casingOfNames_data();
    void casingOfNames();
    void thePercentIsCutToWholeNumbers();
    void withoutAnAnswerNothingBegins_data() { rowsOfCommands(); }
    void withoutAnAnswerNothingBegins();
    void copyingTakesTheSelectedAndLeavesTheList();
    void aDeclinedCopyCounts();
    void aListOfOneEntryIsNotCopied();
    void movingAsksWithTheWordsOfCopyingAndReplaces();
    void movingAllLeavesTheCounterAtNothing();
    void deletingSomeShowsTheFirst();
    void deletingAllEmptiesTheViewer();
    void deletingKeepsWhatTheCounterForgot();
};

void tst_fileactions::casingOfNames_data()
{
    QTest::addColumn<QString>("casing");
    const auto row = [](const char *path, const char *casing) { QTest::newRow(path) << QString::fromUtf8(casing); };
    row("/disk/ME/My PICTURE.old.JPG", "/disk/me/my Picture.Old.Jpg");
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
    QStringList told;
    for (const auto &[word, index] : {std::pair("left alone", 0), {"copied", 1}, {"copied", 2}})
        told << QStringLiteral("%1 %2%3.png %4").arg(QLatin1String(word), target(), QChar('a' + index), file(index));
    QCOMPARE(logged().last(3), told);
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

QTEST_MAIN(tst_fileactions)
#include "tst_fileactions.moc"
