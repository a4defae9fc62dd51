#include "viewer/frmMainViewer.h"

#include "app/globals.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/foldersearch.h"
#include "viewer/listfile.h"

#include <utility>

// Every yield may deliver a click or a command. Bulk work holds ItemSelectionBusy: clicks display nothing then, and the
// commands that move entries do not start a second time. Emptying the DisplayList is always possible; what goes on
// after a yield therefore looks at the lists afresh.

namespace {

int counter(const QLabel *label)
{
    return label->text().toInt();
}

/// The caption is the counter: it is read, changed and written back.
void raiseCounter(QLabel *label, int by)
{
    label->setText(QString::number(counter(label) + by));
}

/// Adds what fits at the end of the DisplayList; how many that are.
int addToDisplayList(frmMainViewer &viewer, const QStringList &paths)
{
    const int before = viewer.lstDisplay->count();
    viewer.lstDisplay->addItems(paths);
    const int added = viewer.lstDisplay->count() - before;
    raiseCounter(viewer.lblCount, added);
    return added;
}

/// Takes an entry to another place. It arrives not selected; the others keep their selection.
void moveEntry(ListBox &list, int from, int to)
{
    const QString text = list.itemText(from);
    // Inserting first keeps the place of the removal known; only a full list has no room for both.
    const bool down = to > from;
    if (list.insertItem(down ? to + 1 : to, text)) {
        list.removeItem(down ? from : from + 1);
    } else {
        list.removeItem(from);
        list.insertItem(to, text);
    }
}

void showPosition(QLabel *label, int position)
{
    globals.CurrentListIndex = position;
    label->setText(QString::number(position));
}

}

void frmMainViewer::AddSelectedToDisplayList()
{
    if (globals.ItemSelectionBusy)
        return;
    if (lstSelect->listIndex() < 0) {
        UpdateListScrollWidth(lstSelect);
        return;
    }
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        QList<int> taken = lstSelect->selectedIndices();
        QStringList paths;
        for (const int index : taken)
            paths.append(lstSelect->itemText(index));
        const int added = addToDisplayList(*this, paths);
        Yield();
        // Only what has been added leaves the SelectionList, whatever is selected there by now.
        QList<int> leaving;
        for (int i = 0; i < added; ++i) {
            if (lstSelect->itemText(taken[i]) == paths[i])
                leaving.append(taken[i]);
        }
        lstSelect->removeItems(leaving);
        Yield();
        if (!lstSelect->isEmpty() && !leaving.isEmpty())
            lstSelect->setSelected(qMin(leaving.first(), lstSelect->count() - 1), true);
        lstDisplay->clearSelections();
    }
    lstDisplay->setSelected(0, true);
    UpdateMenuAndToolbarState();
    UpdateListScrollWidth(lstSelect);
    UpdateListScrollWidth(lstDisplay);
}

void frmMainViewer::AddAllToDisplayList()
{
    if (globals.ItemSelectionBusy || lstSelect->isEmpty())
        return;
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        const QStringList all = lstSelect->items();
        const int added = addToDisplayList(*this, all);
        lstDisplay->setListIndex(0);
        lstDisplay->clearSelections();
        // What a full list did not take stays where it was.
        lstSelect->clear();
        lstSelect->addItems(all.sliced(added));
    }
    lstDisplay->setHorizontalExtent(lstDisplay->widestEntry());
    lstDisplay->setSelected(0, true);
    UpdateMenuAndToolbarState();
    UpdateListScrollWidth(lstSelect);
}

void frmMainViewer::cmdRightAll_Click()
{
    AddAllToDisplayList();
    tabFileList->setCurrentIndex(1);
}

void frmMainViewer::addDroppedFiles(const QStringList &paths)
{
    if (paths.size() == 1 && isListFileName(paths.first()) && FileExists(paths.first())) {
        Lumora_PlayListLoad(paths.first());
        return;
    }
    QStringList found;
    int folders = 0;
    BuildFilePatterns();
    FolderWalk walk;
    walk.entered = [&] {
        StatusBar1->setPanelText(2, searchProgressText(++folders, int(found.size())));
        Yield();
        return !globals.ProgramExiting;
    };
    walk.found = [&](const QStringList &files) {
        found += files;
        return lstDisplay->count() + found.size() < ListBox::maximumCount;
    };
    {
        const Hourglass hourglass;
        for (const QString &path : paths) {
            if (folderExists(path))
                walkFolders(
                    path, {globals.PictureFilePattern, globals.MotionFilePattern, globals.PolyFilePattern}, walk);
            else if (FileExists(path))
                found.append(path);
        }
    }
    if (found.isEmpty() || globals.ItemSelectionBusy || globals.ProgramExiting)
        return;
    const int first = lstDisplay->count();
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        if (addToDisplayList(*this, found) == 0)
            return;
        lstDisplay->setListIndex(first);
        lstDisplay->clearSelections();
    }
    tabFileList->setCurrentIndex(1);
    lstDisplay->setSelected(first, true);
    UpdateMenuAndToolbarState();
    UpdateListScrollWidth(lstDisplay);
}

void frmMainViewer::RemoveSelectedFromDisplayList()
{
    if (globals.ItemSelectionBusy)
        return;
    if (lstDisplay->listIndex() < 0) {
        UpdateListScrollWidth(lstSelect);
        UpdateListScrollWidth(lstDisplay);
        return;
    }
    if (lstDisplay->count() == 1) {
        ClearDisplayList();
        Yield();
        UpdateMenuAndToolbarState();
        UpdateListScrollWidth(lstSelect);
        UpdateListScrollWidth(lstDisplay);
        return;
    }
    const QList<int> selected = lstDisplay->selectedIndices();
    const int lowest = selected.isEmpty() ? 0 : selected.first();
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        lstDisplay->removeItems(selected);
        lstDisplay->setSelected(qMin(lowest, qMax(0, lstDisplay->count() - 1)), true);
    }
    if (lstDisplay->isEmpty()) {
        // Nothing is left that the pane and the status bar could tell of.
        stopRunningShow();
        lstDisplay->setFocus();
        ClearDisplayList();
        return;
    }
    const int left = lstDisplay->count();
    lstDisplay->setFocus();
    ShowSelectedDisplayItem();
    raiseCounter(lblCount, -int(selected.size()));
    // The display lets events in: another command may have counted the list afresh meanwhile.
    if (lstDisplay->count() != left)
        lblCount->setText(QString::number(lstDisplay->count()));
    Yield();
    Yield();
    UpdateMenuAndToolbarState();
    UpdateListScrollWidth(lstSelect);
    UpdateListScrollWidth(lstDisplay);
}

void frmMainViewer::ClearDisplayList()
{
    ++m_displayTicket; // a picture still on its way does not come up any more, nor the rest of a list
    ++m_listTicket;
    lstDisplay->clear();
    lblCount->setText(QStringLiteral("0"));
    showPosition(CurrentPicture, 0);
    ShowStatusBarText(QString(), false);
    globals.ShowStopRequested = true;
    mnuSlideShowRunSlideShow_Click();
    Image1->hide();
    Image1->setGeometry(Picture1->contentsRect());
    Image1->setPicture(nullptr);
    Image1->show();
    Picture1->update();
    UpdateMenuAndToolbarState();
    UpdateListScrollWidth(lstSelect);
    UpdateListScrollWidth(lstDisplay);
    Yield();
}

void frmMainViewer::cmdClearSelectionList_Click()
{
    if (globals.ItemSelectionBusy)
        return;
    lstSelect->clear();
    UpdateListScrollWidth(lstSelect);
    UpdateMenuAndToolbarState();
}

void frmMainViewer::MoveDisplayItemDown()
{
    const int index = lstDisplay->listIndex();
    if (globals.ItemSelectionBusy || index < 0 || index == lstDisplay->count() - 1)
        return;
    moveEntry(*lstDisplay, index, index + 1);
    lstDisplay->setSelected(index + 1, true);
    UpdateListScrollWidth(lstDisplay);
    Yield();
}

void frmMainViewer::MoveDisplayItemUp()
{
    const int index = lstDisplay->listIndex();
    if (globals.ItemSelectionBusy || index <= 0)
        return;
    moveEntry(*lstDisplay, index, index - 1);
    lstDisplay->setSelected(index - 1, true);
    UpdateListScrollWidth(lstDisplay);
    Yield();
}

void frmMainViewer::UpdateListScrollWidth(ListBox *list)
{
    if (list == lstDisplay && counter(lblCount) == 0)
        return;
    list->setHorizontalExtent(list->widestEntry());
    Yield();
}

// --- one step on

void frmMainViewer::NextListItem()
{
    step(+1);
}

void frmMainViewer::PreviousListItem()
{
    step(-1);
}

/// A held key brings steps faster than pictures decode: one step waits at the most, and none runs inside another.
void frmMainViewer::step(int direction)
{
    m_stepWaits = direction;
    if (m_stepping)
        return;
    const ScopedFlag stepping(m_stepping);
    while (m_stepWaits != 0 && !globals.ProgramExiting)
        stepOnce(std::exchange(m_stepWaits, 0));
}

void frmMainViewer::stepOnce(int direction)
{
    if (lstDisplay->isEmpty())
        return;
    const int count = counter(lblCount);
    int previous = globals.CurrentListIndex - 1;
    globals.CurrentListIndex += direction;
    if (globals.CurrentListIndex > count || globals.CurrentListIndex < 1) {
        if (!mnuSlideShowLoopAround->isChecked()) {
            // One past the end, however often it is asked for: one step back is the last entry again.
            globals.CurrentListIndex = qBound(0, globals.CurrentListIndex, count + 1);
            stopRunningShow();
            globals.ShowStopRequested = true;
            return;
        }
        globals.CurrentListIndex = direction > 0 ? 1 : count;
        previous = direction > 0 ? lstDisplay->count() - 1 : 0;
    }
    const int wanted = globals.CurrentListIndex;
    lstDisplay->setSelected(previous, false);
    Yield();
    if (globals.CurrentListIndex != wanted)
        return;
    lstDisplay->setSelected(wanted - 1, true);
    Yield();
}

// --- events of the lists

void frmMainViewer::lstDisplay_DblClick()
{
    OpenDisplayItem();
    globals.AutoPlayMotion = true;
    globals.AutoPlayOnce = true;
}

void frmMainViewer::lstDisplay_KeyPress(int keyCode)
{
    if (keyCode != 13)
        return;
    lstDisplay->setFocus();
    OpenDisplayItem();
}

void frmMainViewer::lstDisplay_MouseMove()
{
    if (!lstDisplay->isSelected(lstDisplay->listIndex())) {
        lstDisplay->setToolTip(QString());
        return;
    }
    const QString tip = tr("Selected File In Folder: ") + displayPath(FileNameOfPath(lstDisplay->text()));
    // A file name is never mark-up.
    lstDisplay->setToolTip(Qt::mightBeRichText(tip) ? Qt::convertFromPlainText(tip) : tip);
}

void frmMainViewer::tabFileList_Change()
{
    const bool display = tabFileList->currentIndex() == 1;
    cmdClearSelectionList->setEnabled(!display && !lstSelect->isEmpty());
    for (QPushButton *button : {cmdUp, cmdDown, cmdLeftOne, cmdLeftAll})
        button->setEnabled(display && !lstDisplay->isEmpty());
}
