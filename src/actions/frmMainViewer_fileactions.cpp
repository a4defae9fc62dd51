#include "viewer/frmMainViewer.h"

#include "actions/fileactions.h"
#include "actions/filework.h"
#include "actions/frmConvertFileName.h"
#include "actions/frmSelectBatchDir.h"
#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/operationslog.h"
#include "ui/guards.h"
#include "ui/yield.h"

#include <algorithm>

// Copy, move and delete, three commands that differ on purpose: only copying asks before it replaces, and counts what
// was declined; moving asks with the words of copying, shows no window and lowers the counter though the entries stay.
//
// What a run does is settled when it begins: the selected entries and their files. Where a yield has changed the list
// since, an entry is changed only when it still stands where it stood.

namespace {

QString askForFolder(frmMainViewer &viewer, const QString &title)
{
    auto &picker = form<frmSelectBatchDir>();
    picker.setParent(&viewer, picker.windowFlags());
    picker.setWindowTitle(title);
    picker.exec();
    if (globals.ProgramExiting)
        return {};
    picker.setWindowTitle(frmSelectBatchDir::tr("Tessaly Lumora - Select Batch Directory"));
    QString folder = picker.lblDirectoryName->text();
    if (!folder.isEmpty() && !folder.endsWith(QLatin1Char('/')))
        folder += QLatin1Char('/');
    return folder;
}

/// The picker and the question of the two commands with a target; empty when the user does not want it.
QString targetFolder(frmMainViewer &viewer, const QString &title)
{
    const QString folder = askForFolder(viewer, title);
    if (folder.isEmpty() || !agreed(&viewer, copyQuestion(folder)) || globals.ProgramExiting)
        return {};
    // What a crash once left there is a day old.
    removeOldTemporaries(folder);
    return folder;
}

/// The progress window for the length of a run.
class ProgressScope
{
public:
    Q_DISABLE_COPY_MOVE(ProgressScope)

protected:
    ProgressScope() = default;
    ~ProgressScope()
    {
        m_window.hide();
        m_window.setWindowTitle(frmConvertFileName::tr("Converting File:"));
        m_window.Animation1->hide();
    }
    void showOver(frmMainViewer &viewer, const QString &title)
    {
        m_window.setWindowTitle(title);
        m_window.showOver(&viewer);
    }

    frmConvertFileName &m_window = form<frmConvertFileName>();
};

class CopyWindow : ProgressScope
{
public:
    explicit CopyWindow(frmMainViewer &viewer) { showOver(viewer, frmConvertFileName::tr("Coping File(s):")); }
    ~CopyWindow() { m_window.ProgressBar1->hide(); }
    Q_DISABLE_COPY_MOVE(CopyWindow)
};

/// A smaller one, without a target.
class DeleteWindow : ProgressScope
{
public:
    explicit DeleteWindow(frmMainViewer &viewer)
    {
        dress(false, QStringLiteral("filedel.avi"), frmConvertFileName::deleteHeight);
        m_window.Animation1->show();
        showOver(viewer, frmConvertFileName::tr("Deleting File(s):"));
    }
    ~DeleteWindow()
    {
        m_window.hide();
        dress(true, QString(), frmConvertFileName::usualHeight);
    }
    Q_DISABLE_COPY_MOVE(DeleteWindow)

private:
    void dress(bool hasTarget, const QString &film, int height)
    {
        m_window.lblConvertFileName->setVisible(hasTarget);
        m_window.lblTo->setVisible(hasTarget);
        m_window.Animation1->Open(film.isEmpty() ? QString() : AppFolder() + film);
        m_window.setHeight(height);
    }
};

/// Whether a failed step is to be taken once more: after a file access error when the user says so.
bool again(QWidget *owner, FileAction action, const QString &path, const FileOutcome &outcome)
{
    logFailure(path, outcome);
    return outcome.kind == FileOutcome::Kind::AccessError && !globals.ProgramExiting
        && agreed(owner, readOnlyQuestion(action, path)) && !globals.ProgramExiting;
}

bool copyEntry(const QString &path, const QString &target)
{
    auto &progress = form<frmConvertFileName>();
    const bool taken = FileExists(target);
    if (taken) {
        const QDateTime inSource = fileDateTime(path);
        if (!inSource.isValid())
            return false;
        if (!agreed(&progress, overwriteQuestion(FileNameOfPath(path), fileDateTime(target), inSource))) {
            logOperation(Operation::LeftAlone, target, path);
            return !globals.ProgramExiting;
        }
    }
    Patience patience;
    while (true) {
        const FileOutcome outcome = copyFile(path, target, taken, patience.asked());
        if (outcome) {
            logOperation(Operation::Copied, target, path);
            return true;
        }
        if (!again(&progress, FileAction::Copy, path, outcome))
            return false;
    }
}

/// How many entries there were to copy; none when the run has ended early.
std::optional<int> copySelected(frmMainViewer &viewer, const QString &folder)
{
    auto &progress = form<frmConvertFileName>();
    const int all = viewer.lstDisplay->count();
    const QVector<ListEntry> entries = selectedEntries(*viewer.lstDisplay);
    for (const auto &[index, path] : entries) {
        const QString target = folder + FileNameOfPath(path);
        progress.lblFileName->setText(fileActionCasing(path));
        progress.lblConvertFileName->setText(fileActionCasing(target));
        const std::optional<int> percent = copyPercent(index, all);
        if (!percent)
            return std::nullopt;
        if (*percent >= 1)
            progress.ProgressBar1->setValue(*percent);
        Yield();
        if (globals.ProgramExiting || !copyEntry(path, target))
            return std::nullopt;
    }
    return int(entries.size());
}

std::optional<int> moveSelected(frmMainViewer &viewer, const QString &folder)
{
    QVector<ListEntry> entries = selectedEntries(*viewer.lstDisplay);
    std::reverse(entries.begin(), entries.end());
    QVector<MoveOrder> orders;
    for (const auto &[index, path] : entries) {
        orders.append({path, folder + FileNameOfPath(path)});
        releaseFromPlayer(viewer, path);
    }
    int count = 0;
    const auto ended = [&](int order, const FileOutcome &outcome) {
        const auto &[source, target] = orders[order];
        if (!outcome)
            return again(&viewer, FileAction::Move, source, outcome);
        ++count;
        logOperation(Operation::Moved, target, source);
        const int index = entries[order].index;
        if (viewer.lstDisplay->itemText(index) == source) {
            viewer.lstDisplay->setItemText(index, target);
            raiseCounter(viewer.lblCount, -1);
        }
        if (globals.CurrentMediaFile == source)
            globals.CurrentMediaFile = target;
        return true;
    };
    Patience patience;
    moveFiles(orders, ended, patience.asked());
    return count == orders.size() ? std::optional(count) : std::nullopt;
}

/// A list that runs empty is not painted for each entry.
class HeldRows
{
public:
    explicit HeldRows(ListBox &list)
        : m_list(list)
    {
        hold();
    }
    ~HeldRows() { release(); }
    Q_DISABLE_COPY_MOVE(HeldRows)
    void hold() { m_list.holdRows(true); }
    void release() { m_list.holdRows(false); }

private:
    ListBox &m_list;
};

std::optional<int> deleteSelected(frmMainViewer &viewer)
{
    auto &progress = form<frmConvertFileName>();
    QVector<ListEntry> entries = selectedEntries(*viewer.lstDisplay);
    std::reverse(entries.begin(), entries.end());
    HeldRows rows(*viewer.lstDisplay);
    int count = 0;
    for (const auto &[index, path] : entries) {
        if (viewer.lstDisplay->itemText(index) != path)
            continue;
        releaseFromPlayer(viewer, path);
        for (FileOutcome outcome = removeFile(path); !outcome; outcome = removeFile(path)) {
            rows.release();
            if (!again(&progress, FileAction::Delete, path, outcome))
                return std::nullopt;
            rows.hold();
        }
        ++count;
        logOperation(Operation::Deleted, path);
        progress.lblFileName->setText(path);
        if (viewer.lstDisplay->itemText(index) == path)
            viewer.lstDisplay->removeItem(index);
        raiseCounter(viewer.lblCount, -1);
        Yield();
        if (globals.ProgramExiting)
            return std::nullopt;
    }
    return count;
}

bool countsEntries(const frmMainViewer &viewer)
{
    return viewer.lblCount->text().toInt() > 0;
}

/// Whether nothing else is at work and there is something to work on.
bool mayBegin(frmMainViewer &viewer)
{
    if (globals.ItemSelectionBusy || fileActionUnderWay())
        return false;
    if (viewer.lstDisplay->isEmpty())
        viewer.UpdateListScrollWidth(viewer.lstDisplay);
    return !viewer.lstDisplay->isEmpty();
}

/// A run while clicks on the lists show nothing. None when it has ended early: then the menus are all that follows it.
template <class Run> std::optional<int> carryOut(frmMainViewer &viewer, Run run)
{
    std::optional<int> count;
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        count = run();
    }
    if (globals.ProgramExiting)
        return std::nullopt;
    if (!count)
        viewer.UpdateMenuAndToolbarState();
    return count;
}

/// The last steps of a run that has come to its end.
void finish(frmMainViewer &viewer, QWidget *owner, FileAction action, int count)
{
    viewer.UpdateMenuAndToolbarState();
    viewer.UpdateListScrollWidth(viewer.lstSelect);
    viewer.UpdateListScrollWidth(viewer.lstDisplay);
    if (!globals.ProgramExiting)
        dialogs().show(owner, fileActionReport(action, count));
}

} // namespace

void frmMainViewer::mnuEditCopyFilesTo_Click()
{
    if (!mayBegin(*this))
        return;
    const ScopedFlag underWay(fileActionUnderWay());
    auto &progress = form<frmConvertFileName>();
    progress.Animation1->Open(AppFolder() + QStringLiteral("filecopy.avi"));
    progress.Animation1->show();
    progress.ProgressBar1->show();
    const QString folder = targetFolder(*this, tr("Tessaly Lumora - Select Copy To...Directory"));
    if (folder.isEmpty())
        return;
    const CopyWindow window(*this);
    const auto count = carryOut(*this, [&] { return copySelected(*this, folder); });
    if (!count)
        return;
    if (countsEntries(*this))
        lstDisplay->setSelected(0, true);
    finish(*this, &progress, FileAction::Copy, *count);
}

void frmMainViewer::mnuEditMoveFilesTo_Click()
{
    if (!mayBegin(*this))
        return;
    const ScopedFlag underWay(fileActionUnderWay());
    const QString folder = targetFolder(*this, tr("Tessaly Lumora - Select Move To...Directory"));
    if (folder.isEmpty())
        return;
    const auto count = carryOut(*this, [&] {
        const Hourglass hourglass;
        return moveSelected(*this, folder);
    });
    if (!count)
        return;
    if (countsEntries(*this))
        selectAndShow(*this, 0);
    finish(*this, this, FileAction::Move, *count);
}

void frmMainViewer::mnuEditDeleteFiles_Click()
{
    if (!mayBegin(*this))
        return;
    const ScopedFlag underWay(fileActionUnderWay());
    if (!agreed(this, deleteQuestion()) || globals.ProgramExiting)
        return;
    const DeleteWindow window(*this);
    const auto count = carryOut(*this, [&] { return deleteSelected(*this); });
    if (!count)
        return;
    if (countsEntries(*this))
        lstDisplay->setSelected(0, true);
    else
        clearViewer(*this);
    finish(*this, &form<frmConvertFileName>(), FileAction::Delete, *count);
}
