#include "app/globals.h"
#include "platform/dialogs.h"
#include "shell/frmPreferences.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/foldersearch.h"
#include "viewer/frmFileListForm.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmSelectPictureDirectoryForm.h"
#include "viewer/frmlocatefiles.h"
#include "viewer/searchfolder.h"

#include <QElapsedTimer>
#include <QLoggingCategory>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(searchLog, "lumora.search", QtWarningMsg)

constexpr qint64 workBetweenYields = 15; ///< milliseconds; progress must not slow the search down
constexpr qint64 workBetweenRows = 100; ///< milliseconds between two layouts of the growing list

bool selecting = false; ///< a selection of a folder is under way, from the dialog to the last entry

FilePatterns currentPatterns()
{
    return {globals.PictureFilePattern, globals.MotionFilePattern, globals.PolyFilePattern};
}

template <class Boxes> auto checkedBoxes(const Boxes &boxes)
{
    std::bitset<Boxes::last - Boxes::first + 1> checked;
    for (int index = boxes.first; index <= boxes.last; ++index)
        checked.set(static_cast<std::size_t>(index - boxes.first), boxes[index]->isChecked());
    return checked;
}

/// One tree search into lstSelect. Counts are exact at every moment; rows, progress and events come in portions.
class TreeSearch
{
public:
    explicit TreeSearch(frmMainViewer &viewer)
        : m_viewer(&viewer)
    {
        m_sinceYield.start();
        m_sinceRows.start();
    }

    WalkEnd run(const QString &folder)
    {
        FolderWalk walk;
        walk.entered = [this] { return entered(); };
        walk.found = [this](const QStringList &paths) { return found(paths); };
        walk.goOn = [this] { return breathe(); };
        const WalkEnd end = walkFolders(folder, currentPatterns(), walk);
        addRows();
        showProgress();
        return end;
    }

private:
    bool goesOn() const { return m_viewer && globals.SearchActive && !globals.ProgramExiting; }
    qsizetype count() const { return m_viewer ? m_viewer->lstSelect->count() + m_pending.size() : 0; }

    bool entered()
    {
        ++globals.FoldersSearched;
        if (isTooManyItems(static_cast<qint16>(count()))) {
            dialogs().show(m_viewer, tooManyItemsBox());
            globals.SearchActive = false;
        }
        return breathe();
    }

    bool found(const QStringList &paths)
    {
        const qsizetype room = ListBox::maximumCount - count();
        m_pending += paths.mid(0, room);
        return paths.size() <= room;
    }

    bool breathe()
    {
        if (m_sinceYield.elapsed() >= workBetweenYields) {
            if (m_sinceRows.elapsed() >= workBetweenRows)
                addRows();
            showProgress();
            Yield();
            m_sinceYield.restart();
        }
        return goesOn();
    }

    void addRows()
    {
        if (m_viewer && !m_pending.isEmpty())
            m_viewer->lstSelect->addItems(std::exchange(m_pending, {}));
        m_sinceRows.restart();
    }

    void showProgress()
    {
        if (m_viewer) {
            const int found = static_cast<int>(count());
            m_viewer->StatusBar1->setPanelText(2, searchProgressText(globals.FoldersSearched, found));
        }
    }

    const QPointer<frmMainViewer> m_viewer;
    QStringList m_pending; ///< found and not yet rows of the list
    QElapsedTimer m_sinceYield;
    QElapsedTimer m_sinceRows;
};

void searchOnly(frmMainViewer &viewer, const QString &folder)
{
    globals.SearchActive = true;
    QStringList paths = collectFiles(folder, currentPatterns());
    const QString prefix = folderWithSeparator(folder);
    for (QString &path : paths)
        path.prepend(prefix);
    if (!viewer.lstSelect->addItems(paths))
        qCInfo(searchLog) << "the folder holds more files than the list takes:" << paths.size();
}

void searchTree(frmMainViewer &viewer, const QString &folder)
{
    globals.FoldersSearched = 0;
    const QPointer<frmMainViewer> owner(&viewer);
    const FilePatterns patterns = currentPatterns();
    if (patterns.picture.isEmpty() && patterns.motion.isEmpty() && patterns.poly.isEmpty()) {
        dialogs().show(owner, noFileTypesBox());
        return;
    }
    const WalkEnd end = TreeSearch(viewer).run(folder);
    if (end == WalkEnd::ListFull)
        dialogs().show(owner, listFullBox());
}

/// Runs a search with the progress window in front of the Main Viewer. False when the viewer has gone meanwhile.
bool withProgress(frmMainViewer &viewer, const std::function<void()> &search)
{
    const QPointer<frmMainViewer> self(&viewer);
    frmlocatefiles &progress = form<frmlocatefiles>();
    progress.setParent(&viewer, progress.windowFlags());
    progress.show();
    globals.SearchActive = true;
    search();
    globals.SearchActive = false;
    Yield();
    unload<frmlocatefiles>();
    return self;
}

/// Shows the first entry of a list that was filled. False when the viewer has gone meanwhile.
bool showFirstFound(frmMainViewer &viewer)
{
    const QPointer<frmMainViewer> self(&viewer);
    Yield();
    if (!self || self->lstSelect->isEmpty())
        return self;
    globals.StandardListLocked = false;
    Yield();
    if (!self)
        return false;
    self->lstSelect->selectOnly(0);
    Yield();
    if (!self)
        return false;
    self->UpdateListScrollWidth(self->lstSelect);
    Yield();
    return self;
}

void endSelection(frmMainViewer &viewer)
{
    viewer.StatusBar1->setPanelText(1, frmMainViewer::tr("Current Image:"));
    viewer.ShowStatusBarText(globals.ChosenFolder, false);
    viewer.UpdateMenuAndToolbarState();
}

/// From the empty list to the dialog's answer. Empty when there is nothing to search.
QString askForFolder(frmMainViewer &viewer)
{
    const QPointer<frmMainViewer> self(&viewer);
    frmSelectPictureDirectoryForm &dialog = form<frmSelectPictureDirectoryForm>();
    dialog.setParent(&viewer, dialog.windowFlags());
    globals.ChosenFolder.clear();
    dialog.exec();
    return self && isLoaded<frmSelectPictureDirectoryForm>() ? globals.ChosenFolder : QString();
}

} // namespace

void frmMainViewer::mnuFileDirectory_Click()
{
    SelectMediaFolder();
}

void frmMainViewer::SelectMediaFolder()
{
    if (isFolderSearchUnderWay())
        return;
    const ScopedFlag busy(selecting);
    const QPointer<frmMainViewer> self(this);
    StatusBar1->setPanelText(2, tr("Search Status:"));
    lstSelect->clear();
    Yield();
    if (!self || globals.ProgramExiting)
        return;
    if (!askForFolder(*this).isEmpty()) {
        tabFileList->setCurrentIndex(0);
        const bool tree = form<frmSelectPictureDirectoryForm>().chkSearchSubs->isChecked();
        if (!withProgress(*this, tree ? &SearchFolderTree : &SearchFolderOnly) || !showFirstFound(*self))
            return;
    }
    if (!self || globals.ProgramExiting)
        return;
    endSelection(*this);
    unload<frmSelectPictureDirectoryForm>();
}

void SearchFolderOnly()
{
    frmSelectPictureDirectoryForm &dialog = form<frmSelectPictureDirectoryForm>();
    const QString folder = dialog.Dir1->listPath();
    BuildFilePatterns();
    searchOnly(form<frmMainViewer>(), folder);
}

void SearchFolderTree()
{
    frmSelectPictureDirectoryForm &dialog = form<frmSelectPictureDirectoryForm>();
    dialog.Dir1->takeHighlighted();
    searchTree(form<frmMainViewer>(), dialog.Dir1->path());
}

bool isFolderSearchUnderWay()
{
    return selecting || globals.SearchActive;
}

void searchFoldersInto(const QStringList &folders, bool tree)
{
    if (isFolderSearchUnderWay() || folders.isEmpty())
        return;
    const ScopedFlag busy(selecting);
    frmMainViewer &viewer = form<frmMainViewer>();
    const QPointer<frmMainViewer> self(&viewer);
    viewer.lstSelect->clear();
    BuildFilePatterns();
    if (!self || globals.ProgramExiting)
        return;
    globals.ChosenFolder = folderWithSeparator(folders.last());
    viewer.tabFileList->setCurrentIndex(0);
    const auto search = [&] {
        for (const QString &folder : folders) {
            if (self && globals.SearchActive && !globals.ProgramExiting)
                tree ? searchTree(viewer, folder) : searchOnly(viewer, folder);
        }
    };
    if (withProgress(viewer, search) && showFirstFound(viewer) && !globals.ProgramExiting)
        endSelection(viewer);
}

void BuildFilePatterns()
{
    globals.PictureFilePattern.clear();
    globals.MotionFilePattern.clear();
    globals.PolyFilePattern.clear();
    Yield();
    const frmPreferences &boxes = form<frmPreferences>();
    const EnabledFileTypes enabled = {
        checkedBoxes(boxes.chkFileType), checkedBoxes(boxes.chkAVFileType), checkedBoxes(boxes.chkPolyFileType)};
    const FilePatterns patterns = filePatterns(enabled);
    globals.PictureFilePattern = patterns.picture;
    globals.MotionFilePattern = patterns.motion;
    globals.PolyFilePattern = patterns.poly;
    Yield();
    if (!isLoaded<frmSelectPictureDirectoryForm>())
        return;
    const frmSelectPictureDirectoryForm &dialog = form<frmSelectPictureDirectoryForm>();
    if (dialog.Dir1->path().isEmpty())
        return;
    // The collector leaves the list alone when it finds nothing: names of another folder must not stay in it.
    dialog.File1->clear();
    form<frmFileListForm>().CollectAllFiles(dialog.Dir1->path());
}
