#include "viewer/frmMainViewer.h"

#include "app/allsettings.h"
#include "app/commandline.h"
#include "app/frmIntroSelect.h"
#include "app/frmPreviousInstance.h"
#include "app/frmTip.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/menubackground.h"
#include "app/settings.h"
#include "app/startup.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "shell/frmSystemTray.h"
#include "ui/guards.h"
#include "ui/menubarbackground.h"
#include "ui/yield.h"
#include "viewer/listfile.h"
#include "viewer/searchfolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMenuBar>

namespace {
Q_LOGGING_CATEGORY(logViewer, "lumora.viewer", QtWarningMsg)

constexpr int queueTick = 100; ///< milliseconds between two looks into the command queue
constexpr qint64 longestList = 256 << 20; ///< bytes of a list file among several named files
constexpr int switchStartWait = 2000; ///< milliseconds after which a start by a switch hides the Main Viewer

/// The rule looks at the whole path, so that a folder of such a name makes a list file of what is in it.
bool isListFile(const QString &path)
{
    return path.contains(QLatin1String(".LSL"), Qt::CaseInsensitive)
        || path.contains(QLatin1String(".LST"), Qt::CaseInsensitive);
}

bool startedBySwitch()
{
    return globals.StartInEditor || globals.StartInFolderBrowser;
}

bool toolbarSetting(const char *key)
{
    return truth(GetSetting({}, QStringLiteral("Toolbars"), QString::fromLatin1(key), QStringLiteral("-1")), true);
}

/// List files among several named paths give their entries: one start makes one list.
QStringList withListsOpened(const QStringList &paths)
{
    QStringList opened;
    for (const QString &path : paths) {
        const auto bytes = isListFile(path) ? readFile(path, longestList) : Result<QByteArray>(Failure{});
        const ListFileContent list = bytes ? readListFile(*bytes, 0) : ListFileContent{};
        if (list.isListFile)
            opened.append(list.entries);
        else
            opened.append(path);
    }
    return opened;
}

}

void frmMainViewer::Form_Load()
{
    QElapsedTimer loading;
    loading.start();
    globals.DataVersion = QStringLiteral("3.0");
    txtPrgTitle->setText(tr("Tessaly Lumora V3.1"));
    if (truth(option("Show Tips at Startup", "1"), true))
        form<frmTip>();
    LoadAllSettings();
    setMenuBarBackground(menuBar(), menuBackground());
    if (globals.MediaPlayerVersion == 9.0f)
        wmp9->setUrl(QString());
    ProcessIfFromCommandLine(QStringLiteral("FormLoad"));
    if (startedBySwitch()) {
        Yield();
        return;
    }
    // The icon itself comes when everything stands: nobody shall wait for what the desktop has to say to that.
    form<frmSystemTray>();
    Yield();
    if (globals.ProgramExiting)
        return;
    restoreToolbar();
    qCDebug(logViewer, "loaded in %lld ms", loading.elapsed());
    show();
    Yield();
    Yield();
}

void frmMainViewer::restoreToolbar()
{
    m_toolbarRestored = true;
    if (toolbarSetting("MainToolbar") != mnuViewToolbarsMainToolbar->isChecked())
        mnuViewToolbarsMainToolbar_Click();
    if (toolbarSetting("MainCaptionsBottom"))
        mnuViewToolbarsCaptionsBottom_Click();
    if (toolbarSetting("MainCaptionsRight"))
        mnuViewToolbarsCaptionsRight_Click();
    const bool captions = toolbarSetting("MainShowCaptions");
    if (captions == mnuViewToolbarsShowCaptions->isChecked())
        return;
    if (captions) {
        for (const ToolbarRow &row : mainToolbarRows())
            toolbarButton(QString::fromLatin1(row.key))->setIconText(QString());
    }
    mnuViewToolbarsShowCaptions_Click();
    SaveSetting({}, QStringLiteral("Toolbars"), QStringLiteral("MainShowCaptions"),
        truthText(mnuViewToolbarsShowCaptions->isChecked()));
}

void frmMainViewer::Form_Activate()
{
    globals.ViewMode = 1;
    if (!m_firstActivationDone)
        activateFirst();
    Yield();
    if (globals.ProgramExiting)
        return;
    UpdateMenuAndToolbarState();
    if (ReshowOnActivate && !lstDisplay->text().isEmpty()) {
        ShowSelectedDisplayItem();
        ReshowOnActivate = false;
    }
    Yield();
}

void frmMainViewer::activateFirst()
{
    // After a start by a switch the load ended early; the window comes up later than that, but with its own bar.
    if (!m_toolbarRestored)
        restoreToolbar();
    Form_Resize();
    // Before the first yield: an activation that comes by it is not the first any more.
    m_firstActivationDone = true;
    Yield();
    if (globals.ProgramExiting)
        return;
    repaint();
    Yield();
    if (globals.ProgramExiting)
        return;
    globals.MainViewerActivated = true;
    ProcessIfFromCommandLine(QString());
    if (globals.ProgramExiting)
        return;
    if (!startedBySwitch())
        Timer1.start(queueTick);
    qCDebug(logViewer, "activated");
    Q_EMIT activated();
    Yield();
}

void frmMainViewer::Form_QueryUnload(bool &cancel)
{
    Q_UNUSED(cancel);
    if (globals.StandardListLocked)
        ClearDisplayList();
    Yield();
    if (!globals.ProgramExiting)
        ShutDownProgram();
}

void frmMainViewer::Form_Unload()
{
    rememberPlace();
    Yield();
}

void frmMainViewer::mnuFileSelectViewer_Click()
{
    saveOption("Show Intro Select at Startup", QStringLiteral("1"));
    auto &choice = form<frmIntroSelect>();
    choice.setParent(this, choice.windowFlags() | Qt::Dialog);
    choice.show();
    choice.raise();
    choice.activateWindow();
}

void frmMainViewer::Timer1_Timer()
{
    if (globals.ProgramExiting)
        return;
    // A modal window waits for its answer on what is there now, and a search fills the list that a folder would:
    // commands stay in the queue until it has gone.
    const bool mustWait = QApplication::activeModalWidget() || isFolderSearchUnderWay();
    if (!mustWait && !form<frmPreviousInstance>().List1->isEmpty())
        ProcessIfFromCommandLine(QString());
    if (picFileListBox->y() == 0)
        Form_Resize();
}

void frmMainViewer::resizeEvent(QResizeEvent *event)
{
    FormMainWindow::resizeEvent(event);
    if (!globals.ProgramExiting)
        Form_Resize();
}

void frmMainViewer::changeEvent(QEvent *event)
{
    FormMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || globals.ProgramExiting)
        return;
    Form_Resize();
    // Later, because a window cannot well be hidden while it changes its state.
    const auto minimiseToTray = [] {
        if (isLoaded<frmSystemTray>())
            form<frmSystemTray>().takeMainViewer();
    };
    if (isMinimized())
        QMetaObject::invokeMethod(this, minimiseToTray, Qt::QueuedConnection);
}

void frmMainViewer::ProcessIfFromCommandLine(const QString &caller)
{
    if (TakingCommands)
        return;
    const ScopedFlag taking(TakingCommands);
    ListBox *queue = form<frmPreviousInstance>().List1;
    // A start without arguments leaves an empty entry, which stays until another command stands behind it.
    while (queue->count() > 1 && queue->itemText(0).isEmpty())
        queue->removeItem(0);
    bool filesTaken = false;
    while (!queue->isEmpty() && !queue->itemText(0).isEmpty()) {
        tabFileList->setCurrentIndex(1);
        queue->selectOnly(0);
        const QString command = queue->itemText(0);
        if (command == QLatin1String("/editor") || command == QLatin1String("/folder")) {
            startBySwitch(command == QLatin1String("/editor"));
            return;
        }
        if (caller == QLatin1String("FormLoad"))
            return;
        const TakenCommand what = takeFirstCommand();
        qCDebug(logViewer, "command taken: %s", qPrintable(displayPath(command)));
        if (what == TakenCommand::List)
            return;
        filesTaken = filesTaken || what == TakenCommand::Files;
        Yield();
        if (globals.ProgramExiting)
            return;
        while (queue->count() > 1 && queue->itemText(0).isEmpty())
            queue->removeItem(0);
    }
    if (filesTaken)
        playSelectedMotion();
}

/// Carries out the command at the head of the queue and takes it out.
frmMainViewer::TakenCommand frmMainViewer::takeFirstCommand()
{
    ListBox *queue = form<frmPreviousInstance>().List1;
    QStringList folders;
    QStringList files;
    const QStringList named = pathsOfCommand(queue->itemText(0));
    for (const QString &path : named)
        (folderExists(path) ? folders : files).append(path);
    if (!folders.isEmpty())
        searchNamedFolders(folders);
    if ((!folders.isEmpty() && files.isEmpty()) || globals.ProgramExiting) {
        queue->removeItem(0);
        return TakenCommand::Folders;
    }
    lstDisplay->clear();
    globals.StandardListLocked = true;
    if (named.size() == 1 && isListFile(named.first())) {
        Lumora_PlayListLoad(named.first());
        queue->removeItem(0);
        return TakenCommand::List;
    }
    takePaths(named.size() == 1 ? files : withListsOpened(files));
    queue->removeItem(0);
    UpdateMenuAndToolbarState();
    return TakenCommand::Files;
}

void frmMainViewer::takePaths(const QStringList &paths)
{
    tabFileList->setCurrentIndex(1);
    // What does not fit into the list is not there, as in a search.
    ignore(lstDisplay->addItems(paths));
    // One path is selected as the last entry; of several the show begins with the first.
    const int selected = paths.size() == 1 ? lstDisplay->count() - 1 : 0;
    globals.CurrentListIndex = lstDisplay->isEmpty() ? 0 : selected + 1;
    lblCount->setText(QString::number(lstDisplay->count()));
    lstDisplay->clearSelections();
    if (!lstDisplay->isEmpty())
        lstDisplay->setSelected(selected, true);
    CurrentPicture->setText(QString::number(globals.CurrentListIndex));
}

/// Searches folders of a command as the folder dialog would, without the dialog: each folder alone, nothing below it.
void frmMainViewer::searchNamedFolders(const QStringList &folders)
{
    // Nobody has said that the Display list is theirs to keep: a list that files of a start have made stays unsaved.
    const bool locked = globals.StandardListLocked;
    searchFoldersInto(folders, false);
    globals.StandardListLocked = locked;
}

void frmMainViewer::playSelectedMotion()
{
    const QString path = lstDisplay->text();
    if (path.isEmpty() || GetMediaKind(path) != kindMotion || globals.MediaPlayerVersion != 9.0f)
        return;
    if (wmp9->playState() != Player::Playing) {
        wmp9->setUrl(path);
        wmp9->play();
    }
}

/// The editor or the Browse Folder Viewer comes up instead of the Main Viewer, which is out of sight two seconds later.
void frmMainViewer::startBySwitch(bool editor)
{
    ListBox *queue = form<frmPreviousInstance>().List1;
    const int waiting = queue->count();
    if (editor) {
        globals.StartInEditor = true;
        mnuPictureViewer_Click();
    } else {
        globals.StartInFolderBrowser = true;
        mnuBrowseFolderView_Click();
    }
    // The end of the program, or of the window that was asked for, ends the wait too.
    qCDebug(logViewer, "started by a switch");
    QElapsedTimer time;
    time.start();
    while (time.elapsed() < switchStartWait && !globals.ProgramExiting && startedBySwitch())
        YieldFor(qBound(1, switchStartWait - int(time.elapsed()), 50));
    if (globals.ProgramExiting)
        return;
    hide();
    Timer1.stop();
    Yield();
    // What came in by later starts meanwhile is theirs and stays.
    for (int i = 0; i < waiting && !queue->isEmpty(); ++i)
        queue->removeItem(0);
    if (!queue->isEmpty())
        QMetaObject::invokeMethod(
            this, [] { showMainViewerForCommands(); }, Qt::QueuedConnection);
}
