#include "viewer/frmMainViewer.h"

#include "actions/fileactions.h"
#include "actions/filework.h"
#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/operationslog.h"
#include "platform/trash.h"
#include "ui/guards.h"
#include "ui/yield.h"

#include <algorithm>

// The trash of the desktop, and the way back from it. Nothing is asked before: what went there comes back by the next
// command, or by any file manager.

namespace {

struct TrashedEntry
{
    int index; ///< place in the list before anything of the run went
    TrashedFile file;
};

/// What the last move to the trash took, ascending by place.
QVector<TrashedEntry> &lastTrashed()
{
    static QVector<TrashedEntry> entries;
    return entries;
}

void tell(QWidget *owner, const QString &title, const QStringList &sentences)
{
    if (sentences.isEmpty() || globals.ProgramExiting)
        return;
    constexpr int mostShown = 10;
    QStringList shown = sentences.mid(0, mostShown);
    if (sentences.size() > mostShown)
        shown.append(frmMainViewer::tr("... and %1 more.").arg(sentences.size() - mostShown));
    MessageBox box;
    box.title = title;
    box.text = shown.join(QLatin1Char('\n'));
    box.icon = MessageBox::Icon::Exclamation;
    dialogs().show(owner, box);
}

/// Takes the entries of files that are in the trash out of the list; ascending.
void takeOut(frmMainViewer &viewer, const QVector<TrashedEntry> &gone)
{
    QList<int> indices;
    for (const TrashedEntry &entry : gone) {
        if (viewer.lstDisplay->itemText(entry.index) == entry.file.path)
            indices.append(entry.index);
    }
    viewer.lstDisplay->removeItems(indices);
    raiseCounter(viewer.lblCount, -int(indices.size()));
}

void refreshLists(frmMainViewer &viewer)
{
    viewer.mnuEditUndoTrash->setEnabled(!lastTrashed().isEmpty());
    viewer.UpdateMenuAndToolbarState();
    viewer.UpdateListScrollWidth(viewer.lstDisplay);
}

} // namespace

void frmMainViewer::mnuEditMoveToTrash_Click()
{
    if (globals.ItemSelectionBusy || fileActionUnderWay() || lstDisplay->isEmpty())
        return;
    const ScopedFlag underWay(fileActionUnderWay());
    const QVector<ListEntry> entries = selectedEntries(*lstDisplay);
    QVector<TrashedEntry> gone;
    QStringList problems;
    {
        const Hourglass hourglass;
        const ScopedFlag busy(globals.ItemSelectionBusy);
        Patience patience;
        const StillWanted wanted = patience.asked();
        for (const auto &[index, path] : entries) {
            releaseFromPlayer(*this, path);
            const Result<TrashedFile> trashed = trashFile(path);
            logOperation(trashed ? Operation::Trashed : Operation::Failed, path, trashed.reason());
            if (trashed)
                gone.append({index, *trashed});
            else
                problems.append(trashed.reason());
            if (!wanted())
                break;
        }
        takeOut(*this, gone);
        if (!gone.isEmpty())
            lastTrashed() = gone;
    }
    if (globals.ProgramExiting)
        return;
    if (lstDisplay->isEmpty())
        clearViewer(*this);
    else if (!gone.isEmpty())
        selectAndShow(*this, qMin(gone.first().index, lstDisplay->count() - 1));
    refreshLists(*this);
    tell(this, tr("Move to Trash"), problems);
}

void frmMainViewer::mnuEditUndoTrash_Click()
{
    if (globals.ItemSelectionBusy || fileActionUnderWay())
        return;
    const ScopedFlag underWay(fileActionUnderWay());
    const QVector<TrashedEntry> entries = std::exchange(lastTrashed(), {});
    QStringList problems;
    int first = -1;
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        for (const TrashedEntry &entry : entries) {
            if (const Result<void> restored = restoreTrashedFile(entry.file); !restored) {
                problems.append(restored.reason());
                lastTrashed().append(entry);
                continue;
            }
            logOperation(Operation::Restored, entry.file.path);
            const int index = qMin(entry.index, lstDisplay->count());
            if (lstDisplay->insertItem(index, entry.file.path)) {
                raiseCounter(lblCount, 1);
                first = first < 0 ? index : first;
            }
        }
    }
    if (first >= 0) {
        tabFileList->setCurrentIndex(1);
        lstDisplay->clearSelections();
        lstDisplay->setSelected(first, true);
    }
    refreshLists(*this);
    tell(this, tr("Undo Move to Trash"), problems);
}

void frmMainViewer::mnuEditRenameFile_Click()
{
    const int index = lstDisplay->listIndex();
    const QString path = lstDisplay->text();
    if (globals.ItemSelectionBusy || fileActionUnderWay() || path.isEmpty())
        return;
    const ScopedFlag underWay(fileActionUnderWay());
    const PathParts parts = SplitFilePath(path);
    const QString title = tr("Rename File");
    const auto name = dialogs().inputText(this, title, tr("New name of the file:"), parts.file);
    if (!name || *name == parts.file || globals.ProgramExiting)
        return;
    if (const auto objection = objectionToName(*name)) {
        tell(this, title, {*objection});
        return;
    }
    const QString newPath = parts.folder + *name;
    releaseFromPlayer(*this, path);
    if (const FileOutcome renamed = renameFile(path, newPath); !renamed) {
        logFailure(path, renamed);
        tell(this, title, {renameProblem(renamed.error, *name)});
        ShowSelectedDisplayItem();
        return;
    }
    logOperation(Operation::Renamed, newPath, path);
    // Wherever else the file stands in the lists, it has its new name too.
    for (ListBox *list : {lstDisplay, lstSelect}) {
        for (int i = 0; i < list->count(); ++i) {
            if (list->itemText(i) == path)
                list->setItemText(i, newPath);
        }
    }
    if (globals.CurrentMediaFile == path)
        globals.CurrentMediaFile = newPath;
    if (lstDisplay->listIndex() == index && lstDisplay->isSelected(index))
        ShowSelectedDisplayItem();
    refreshLists(*this);
}
