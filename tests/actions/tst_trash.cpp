#include "app/globals.h"
#include "platform/filepath.h"
#include "platform/filetransfer.h"
#include "platform/trash.h"
#include "support/contents.h"
#include "support/otherdisk.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

#include <filesystem>

/// The trash as the desktops know it, the way back, and the new name of a file.
class tst_trash : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aFileGoesIntoTheUsersTrash();
    void namesInTheTrashAreFreeAndFit();
    void anotherDiskHasItsOwnTrash();
    void aSharedTrashIsTrustedOnlyWhenItIsSafe();
    void withoutATrashTheFileStays();
    void theWayBackTakesNobodysPlace();
    void theCommandTakesEntriesOutAndBringsThemBack();
    void whatCannotGoIsNamed();
    void theLastEntryEmptiesTheViewerAndComesBack();
    void aNewNameIsEverywhere();
    void badNamesAreTold_data();
    void badNamesAreTold();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    ListBox &list() { return *window().lstDisplay; }
    QString trash() const { return m_home->path() + QStringLiteral(".local/share/Trash/"); }
    QString file(const char *name) const
    {
        return m_home->path() + QStringLiteral("pictures/") + QString::fromUtf8(name);
    }
    /// The pictures a, b, c ... as the list.
    void fill(int count);
    void select(const QList<int> &indices);
    QString letters();

    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_trash::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    qputenv("XDG_DATA_HOME", pathToBytes(m_home->path()) + ".local/share");
    QVERIFY(showMainViewer());
}

void tst_trash::init()
{
    m_dialogs = &ScriptedDialogs::install();
    // The toolkit's own way leaves names of any bytes where they are.
    for (const QString &folder : {m_home->path() + QStringLiteral(".local"), file("")})
        std::filesystem::remove_all(pathToBytes(folder).toStdString());
    QDir().mkpath(file(""));
}

void tst_trash::cleanup()
{
    setDialogs(nullptr);
    window().ClearDisplayList();
}

void tst_trash::fill(int count)
{
    window().ClearDisplayList();
    for (int i = 0; i < count; ++i)
        QVERIFY(
            list().addItem(m_home->writePicture(QStringLiteral("pictures/%1.png").arg(QChar('a' + i)), {30 + i, 20})));
    window().lblCount->setText(QString::number(count));
}

void tst_trash::select(const QList<int> &indices)
{
    list().selectOnly(indices.last());
    const ScopedFlag busy(globals.ItemSelectionBusy);
    for (const int index : indices)
        list().setSelected(index, true);
}

QString tst_trash::letters()
{
    QString result;
    for (const QString &path : list().items())
        result += FileNameOfPath(path).left(1);
    return result;
}

void tst_trash::aFileGoesIntoTheUsersTrash()
{
    const QString path = m_home->write(QStringLiteral("pictures/h\xC3\xB6he 100%.png"), "bytes");
    const auto trashed = trashFile(path, QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)));
    QVERIFY2(trashed, qPrintable(trashed.reason()));
    QVERIFY(!FileExists(path));
    QCOMPARE(trashed->stored, trash() + QStringLiteral("files/") + FileNameOfPath(path));
    QCOMPARE(contents(trashed->stored), QByteArray("bytes"));
    QCOMPARE(contents(trashed->info),
        QByteArray("[Trash Info]\nPath=") + QUrl::toPercentEncoding(path, "/")
            + "\nDeletionDate=2026-01-02T03:04:05\n");
    QCOMPARE(QFileInfo(trash()).permissions() & 0x77, QFile::Permissions());
    QVERIFY(restoreTrashedFile(*trashed));
    QCOMPARE(contents(path), QByteArray("bytes"));
    QCOMPARE(namesIn(trash() + QStringLiteral("files")) + namesIn(trash() + QStringLiteral("info")), QString());
}

void tst_trash::namesInTheTrashAreFreeAndFit()
{
    const QString longName = QString(240, QLatin1Char('x')) + QStringLiteral(".png");
    const QString foreign = pathFromBytes("pictures/b\xff.png");
    QStringList left;
    for (const QString &name : {QStringLiteral("pictures/a.png"), QStringLiteral("pictures/") + longName, foreign}) {
        QSet<QString> stored;
        for (int i = 0; i < 3; ++i) {
            QVERIFY(writeFileAtomically(m_home->path() + name, QByteArray::number(i)));
            const auto trashed = trashFile(m_home->path() + name);
            QVERIFY2(trashed, qPrintable(trashed.reason()));
            QCOMPARE(contents(trashed->stored), QByteArray::number(i));
            stored.insert(trashed->stored);
            // The test's own clearing up could not name these.
            if (name == foreign)
                left.append({trashed->stored, trashed->info});
        }
        QCOMPARE(stored.size(), 3);
    }
    for (const QString &path : left)
        QVERIFY(removeFile(path));
    QVERIFY(FileExists(trash() + QStringLiteral("files/a.2.png")));
    // A file that somebody left there without information is not replaced.
    m_home->write(QStringLiteral(".local/share/Trash/files/orphan.png"), "orphan");
    const auto trashed = trashFile(m_home->write(QStringLiteral("pictures/orphan.png"), "new"));
    QVERIFY(trashed);
    QCOMPARE(contents(trash() + QStringLiteral("files/orphan.png")), QByteArray("orphan"));
    QVERIFY(!FileExists(trash() + QStringLiteral("info/orphan.png.trashinfo")));
}

void tst_trash::anotherDiskHasItsOwnTrash()
{
    const OtherDisk disk;
    if (!disk.hasSize())
        QSKIP("needs a file system of its own");
    QDir().mkpath(disk.path() + QStringLiteral("deep/er"));
    const QString path = disk.path() + QStringLiteral("deep/er/a b.png");
    QVERIFY(writeFileAtomically(path, "x"));
    // Whichever way leads there, the trash is at the top of the disk.
    QVERIFY(QFile::link(disk.path() + QStringLiteral("deep"), file("alias")));
    const auto trashed = trashFile(file("alias/er/a b.png"));
    QVERIFY2(trashed, qPrintable(trashed.reason()));
    const QString own = disk.path() + QStringLiteral(".Trash-%1/").arg(::geteuid());
    QCOMPARE(trashed->stored, own + QStringLiteral("files/a b.png"));
    QVERIFY(contents(trashed->info).contains("\nPath=deep/er/a%20b.png\n"));
    QVERIFY(!QFileInfo::exists(trash() + QStringLiteral("files/a b.png")));
    QVERIFY(restoreTrashedFile(*trashed));
    QCOMPARE(contents(path), QByteArray("x"));
}

void tst_trash::aSharedTrashIsTrustedOnlyWhenItIsSafe()
{
    const OtherDisk disk;
    if (!disk.hasSize())
        QSKIP("needs a file system of its own");
    const QString shared = disk.path() + QStringLiteral(".Trash");
    const QString user = QString::number(::geteuid());
    const auto put = [&] {
        const QString path = disk.path() + QStringLiteral("p.png");
        ignore(writeFileAtomically(path, "x"));
        const auto trashed = trashFile(path);
        return trashed ? trashed->stored.mid(disk.path().size()) : trashed.reason();
    };
    QVERIFY(QDir().mkpath(shared));
    QCOMPARE(::chmod(qPrintable(shared), 0777), 0);
    QCOMPARE(put(), QStringLiteral(".Trash-") + user + QStringLiteral("/files/p.png"));
    QCOMPARE(::chmod(qPrintable(shared), 01777), 0);
    QCOMPARE(put(), QStringLiteral(".Trash/") + user + QStringLiteral("/files/p.png"));
    QDir(shared).removeRecursively();
    QVERIFY(QFile::link(file(""), shared));
    QCOMPARE(put(), QStringLiteral(".Trash-") + user + QStringLiteral("/files/p.2.png"));
}

void tst_trash::withoutATrashTheFileStays()
{
    m_home->write(QStringLiteral(".local/share/Trash"), "in the way");
    const QString path = m_home->write(QStringLiteral("pictures/a.png"), "x");
    const auto trashed = trashFile(path);
    QVERIFY(!trashed && trashed.reason().contains(QLatin1String("\"a.png\"")));
    QCOMPARE(contents(path), QByteArray("x"));
    QDir().mkpath(file("folder"));
    for (const char *odd : {"none.png", "folder", "folder/"})
        QVERIFY2(!trashFile(file(odd)), odd);
    QVERIFY(folderExists(file("folder")));
}

void tst_trash::theWayBackTakesNobodysPlace()
{
    const QString path = m_home->write(QStringLiteral("pictures/a.png"), "old");
    const auto trashed = trashFile(path);
    QVERIFY(trashed);
    m_home->write(QStringLiteral("pictures/a.png"), "new");
    QVERIFY(!restoreTrashedFile(*trashed));
    QCOMPARE(contents(path), QByteArray("new"));
    QCOMPARE(contents(trashed->stored), QByteArray("old"));
    QVERIFY(QFile::remove(path));
    QVERIFY(restoreTrashedFile(*trashed));
    QCOMPARE(contents(path), QByteArray("old"));
}

void tst_trash::theCommandTakesEntriesOutAndBringsThemBack()
{
    fill(6);
    select({1, 2, 4});
    window().mnuEditMoveToTrash_Click();
    QCOMPARE(letters(), QStringLiteral("adf"));
    QCOMPARE(window().lblCount->text(), QStringLiteral("3"));
    QCOMPARE(globals.CurrentMediaFile, file("d.png"));
    QCOMPARE(namesIn(trash() + QStringLiteral("files")), QStringLiteral("b.png c.png e.png"));
    QVERIFY(window().mnuEditUndoTrash->isEnabled());
    QVERIFY(m_dialogs->boxes.isEmpty());
    window().mnuEditUndoTrash_Click();
    QCOMPARE(letters(), QStringLiteral("abcdef"));
    QCOMPARE(window().lblCount->text(), QStringLiteral("6"));
    QCOMPARE(globals.CurrentMediaFile, file("b.png"));
    QCOMPARE(namesIn(file("")), QStringLiteral("a.png b.png c.png d.png e.png f.png"));
    QVERIFY(!window().mnuEditUndoTrash->isEnabled());
    window().mnuEditUndoTrash_Click();
    QCOMPARE(letters(), QStringLiteral("abcdef"));
}

void tst_trash::whatCannotGoIsNamed()
{
    fill(3);
    QVERIFY(QFile::remove(file("b.png")));
    select({0, 1});
    m_dialogs->answer(MessageBox::Answer::Ok);
    window().mnuEditMoveToTrash_Click();
    QCOMPARE(letters(), QStringLiteral("bc"));
    QVERIFY(m_dialogs->boxes.last().text.contains(QLatin1String("\"b.png\"")));
    // The way back is barred for a while; it stays open.
    m_home->write(QStringLiteral("pictures/a.png"), "in the way");
    m_dialogs->answer(MessageBox::Answer::Ok);
    window().mnuEditUndoTrash_Click();
    QVERIFY(m_dialogs->boxes.last().text.contains(QLatin1String("\"a.png\"")));
    QCOMPARE(letters(), QStringLiteral("bc"));
    QVERIFY(QFile::remove(file("a.png")));
    window().mnuEditUndoTrash_Click();
    QCOMPARE(letters(), QStringLiteral("abc"));
}

void tst_trash::theLastEntryEmptiesTheViewerAndComesBack()
{
    fill(1);
    select({0});
    window().mnuEditMoveToTrash_Click();
    QVERIFY(list().isEmpty() && window().Image1->isEmpty());
    QVERIFY(!window().mnuEdit->isEnabled());
    window().activateWindow();
    QTest::keyClick(&window(), Qt::Key_Z, Qt::ControlModifier | Qt::AltModifier);
    QCOMPARE(letters(), QStringLiteral("a"));
    QCOMPARE(globals.CurrentMediaFile, file("a.png"));
}

void tst_trash::aNewNameIsEverywhere()
{
    fill(2);
    QVERIFY(list().addItem(file("a.png")) && window().lstSelect->addItem(file("a.png")));
    select({0});
    m_dialogs->answerText(QStringLiteral("new name.png"));
    window().mnuEditRenameFile_Click();
    const QString renamed = file("new name.png");
    QCOMPARE(list().items(), QStringList({renamed, file("b.png"), renamed}));
    QCOMPARE(window().lstSelect->itemText(0), renamed);
    QCOMPARE(namesIn(file("")), QStringLiteral("b.png new name.png"));
    QCOMPARE(globals.CurrentMediaFile, renamed);
    QCOMPARE(window().StatusBar1->panelText(2), QStringLiteral("New Name.Png"));
    QVERIFY(m_dialogs->boxes.isEmpty());
    window().lstSelect->clear();
}

void tst_trash::badNamesAreTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("told");
    QTest::newRow("none") << QString() << true;
    QTest::newRow("blanks") << QStringLiteral("  ") << true;
    QTest::newRow("another folder") << QStringLiteral("../a.png") << true;
    QTest::newRow("a folder's own name") << QStringLiteral("..") << true;
    QTest::newRow("too long") << QString(256, QLatin1Char('x')) << true;
    QTest::newRow("too long in bytes") << QString(130, QChar(0xe4)) << true;
    QTest::newRow("another file's") << QStringLiteral("b.png") << true;
    QTest::newRow("its own") << QStringLiteral("a.png") << false;
}

void tst_trash::badNamesAreTold()
{
    QFETCH(QString, name);
    QFETCH(bool, told);
    fill(2);
    const QByteArray other = contents(file("b.png"));
    select({0});
    m_dialogs->answerText(name);
    if (told)
        m_dialogs->answer(MessageBox::Answer::Ok);
    window().mnuEditRenameFile_Click();
    QCOMPARE(m_dialogs->boxes.size(), qsizetype(told));
    QCOMPARE(namesIn(file("")), QStringLiteral("a.png b.png"));
    QCOMPARE(contents(file("b.png")), other);
    QCOMPARE(list().itemText(0), file("a.png"));
}

QTEST_MAIN(tst_trash)
#include "tst_trash.moc"
