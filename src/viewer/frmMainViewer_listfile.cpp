#include "viewer/frmMainViewer.h"

#include "app/allsettings.h"
#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMessage.h"
#include "viewer/listfile.h"

#include <QCoreApplication>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lists, "lumora.lists", QtWarningMsg)

namespace {

constexpr qint64 maximumListBytes = 64 << 20;
constexpr int entriesPerYield = 100;

QString standardListFile()
{
    return AppFolder() + QLatin1String(standardListName);
}

FileQuestion listQuestion()
{
    FileQuestion question;
    question.folder = AppFolder();
    question.filter = QCoreApplication::translate("ListFile", listFileFilter);
    question.defaultExtension = QStringLiteral(".Lsl");
    return question;
}

/// A name confirmed under one of the two kinds of list.
bool isChosen(const std::optional<FileAnswer> &answer)
{
    return answer && !answer->path.isEmpty() && (answer->filterIndex == 1 || answer->filterIndex == 2);
}

void writeList(const QString &path, const QStringList &entries, const QString &currentIndex)
{
    // The file that was there stays when this one cannot be written whole.
    if (const auto written = writeFileAtomically(path, writeListFile(entries, currentIndex)); !written)
        qCWarning(lists, "list \"%s\" not written: %s", qPrintable(displayPath(path)), qPrintable(written.reason()));
}

}

// --- reading

/// Yields deliver clicks, commands and the end of the program. Clicks display nothing until the list is there; a
/// command that empties or replaces the list ends this reading; what is half read is never saved.
void frmMainViewer::readListInto(const QString &path, bool standard)
{
    const int emptied = m_listTicket + 1;
    ClearDisplayList();
    m_listTakenOver = m_listTicket != emptied || !lstDisplay->isEmpty();
    if (m_listTakenOver || globals.ProgramExiting)
        return;
    const auto bytes = readFile(path, maximumListBytes);
    if (!bytes) {
        qCWarning(lists, "list \"%s\" not read: %s", qPrintable(displayPath(path)), qPrintable(bytes.reason()));
        return;
    }
    const ListFileContent content = readListFile(*bytes, globals.ListFileCount);
    if (!content.isListFile)
        return;
    globals.ListFileCount = content.count.value_or(globals.ListFileCount);
    globals.CurrentListIndex = content.currentIndex.value_or(globals.CurrentListIndex);
    CurrentPicture->setText(QString::number(globals.CurrentListIndex));
    if (!content.endReached && globals.ListFileCount >= 1 && !addListEntries(content.entries, standard)) {
        // What came in between could not show its item under the busy flag.
        m_listTakenOver = true;
        if (!globals.ProgramExiting)
            ShowSelectedDisplayItem();
        return;
    }
    if (globals.ListFileCount > 0 && globals.CurrentListIndex == 0)
        globals.CurrentListIndex = 1;
    Yield();
}

/// False when something else has taken the list over.
bool frmMainViewer::addListEntries(const QStringList &entries, bool standard)
{
    const ScopedFlag busy(globals.ItemSelectionBusy);
    const ScopedFlag reading(m_readingList);
    const int ticket = ++m_listTicket;
    const bool tells = standard && globals.ListFileCount >= entriesPerYield;
    if (tells)
        form<frmMessage>().showOver(this, tr("Loading Media File List\nthis may take a few seconds"));
    lstDisplay->holdLayout(true);
    bool mine = true;
    for (qsizetype at = 0; at < entries.size() && mine; at += entriesPerYield) {
        const QStringList some = entries.mid(at, entriesPerYield);
        lstDisplay->addItems(some);
        lblCount->setText(QString::number(lblCount->text().toInt() + some.size()));
        if (some.size() < entriesPerYield)
            break;
        if (tells && isLoaded<frmMessage>())
            form<frmMessage>().stillWorking();
        Yield();
        mine = ticket == m_listTicket && lstDisplay->count() == at + some.size() && !globals.ProgramExiting;
    }
    lstDisplay->holdLayout(false);
    if (tells)
        unload<frmMessage>();
    return mine;
}

void frmMainViewer::LoadStandardList()
{
    const Hourglass hourglass;
    if (FileExists(standardListFile()))
        readListInto(standardListFile(), true);
}

void frmMainViewer::LoadUserList(const QString &path)
{
    readListInto(path, false);
}

void frmMainViewer::Lumora_PlayListLoad(const QString &path)
{
    LoadUserList(path);
    afterListLoad();
}

/// A list opened by the user is the list: from here on it is saved as the standard list too.
void frmMainViewer::afterListLoad()
{
    if (std::exchange(m_listTakenOver, false) || globals.ProgramExiting)
        return;
    globals.StandardListLocked = false;
    if (globals.ListFileCount <= 0)
        return;
    globals.CurrentListIndex = qMax(1, globals.CurrentListIndex);
    const int position = globals.CurrentListIndex;
    lstDisplay->setHorizontalExtent(lstDisplay->widestEntry());
    tabFileList->setCurrentIndex(1);
    lstDisplay->setSelected(position - 1, true);
    // A click inside the display's yields may have gone on to another item.
    CurrentPicture->setText(QString::number(globals.CurrentListIndex));
    Yield();
    UpdateMenuAndToolbarState();
}

void frmMainViewer::mnuFileLoad_Click()
{
    ClearDisplayList();
    LoadStandardList();
    afterListLoad();
}

void frmMainViewer::mnuFileLoadAs_Click()
{
    FileQuestion question = listQuestion();
    question.title = tr("Load Lumora Image List");
    const auto answer = dialogs().openFile(this, question);
    if (!isChosen(answer))
        return;
    LoadUserList(answer->path);
    afterListLoad();
}

// --- writing

void frmMainViewer::saveStandardList()
{
    if (globals.StandardListLocked || lstDisplay->isEmpty() || m_readingList)
        return;
    form<frmMessage>().showOver(this, tr("Saving Media File List"));
    globals.CurrentListIndex = qMax(1, globals.CurrentListIndex);
    // The standard list keeps the position that is shown; a user's list (below) keeps the one that is counted, 0 when
    // nothing was displayed. Readers of both take either.
    writeList(standardListFile(), lstDisplay->items(), CurrentPicture->text());
    unload<frmMessage>();
}

void frmMainViewer::mnuFileSave_Click()
{
    SaveAllSettings();
}

void frmMainViewer::mnuFileSaveAs_Click()
{
    FileQuestion question = listQuestion();
    question.title = tr("Save Lumora Image List As");
    question.fileName = QString::fromLatin1(standardListName);
    question.promptOverwrite = true;
    const auto answer = dialogs().saveFile(this, question);
    if (isChosen(answer) && !lstDisplay->isEmpty())
        writeList(answer->path, lstDisplay->items(), QString::number(globals.CurrentListIndex));
}
