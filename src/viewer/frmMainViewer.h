#pragma once

#include "platform/internettransfer.h"
#include "platform/screenawake.h"
#include "ui/controls.h"
#include "ui/form.h"
#include "ui/imagepane.h"
#include "ui/listbox.h"
#include "ui/statuspanels.h"
#include "viewer/wmp9.h"

#include <QAction>
#include <QFrame>
#include <QHash>
#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <QToolBar>
#include <QTreeWidget>

#include <functional>
#include <span>

class frmMainViewer;

/// A row of the Main Viewer's menus. A command without a `click` has not been given to this build: it exists, carries
/// its state, and is not shown.
struct MenuRow
{
    QAction *frmMainViewer::*item;
    const char *name;
    const char *menu; ///< name of the menu it stands in; "" for the menu bar
    const char *caption; ///< "-" in front starts a new group
    const char *shortcut;
    const char *icon;
    void (frmMainViewer::*click)() = nullptr;
    enum Flag { Plain = 0, Submenu = 1, Check = 2, Shown = 4 };
    int flags = Plain;
};
std::span<const MenuRow> mainMenuRows();

/// A button of Toolbar1, dispatched by its key.
struct ToolbarRow
{
    const char *key;
    const char *caption;
    const char *toolTip;
    const char *icon;
    void (frmMainViewer::*click)(); ///< null: passed over without an action
    bool needsItem; ///< off while the DisplayList is empty
    bool needsPicture; ///< off for "Motion" items
    bool hidden; ///< its command has not been given to this build
    bool group; ///< starts a new group
};
std::span<const ToolbarRow> mainToolbarRows();

/// The Main Viewer: the two lists, the pane that shows the current item, and every command on them.
class frmMainViewer : public FormMainWindow
{
    Q_OBJECT
public:
    explicit frmMainViewer(QWidget *parent = nullptr);
    ~frmMainViewer() override;

    // --- controls: frmMainViewer.cpp
    CONTROL(picFileListBox, QFrame);
    CONTROL(tabFileList, QTabWidget); ///< 0 "Selection", 1 "Display"
    CONTROL(lstSelect, ListBox);
    CONTROL(lstDisplay, ListBox);
    CONTROL(lsvDisplay, QTreeWidget); ///< nothing fills it; out of sight
    CONTROL(Command1, QPushButton);
    CONTROL(cmdUp, QPushButton);
    CONTROL(cmdDown, QPushButton);
    CONTROL(cmdRightOne, QPushButton);
    CONTROL(cmdRightAll, QPushButton);
    CONTROL(cmdLeftOne, QPushButton);
    CONTROL(cmdLeftAll, QPushButton);
    CONTROL(cmdClearSelectionList, QPushButton);
    CONTROL(cmdWideList, QPushButton);
    CONTROL(cmdWideMediaPlayer, QPushButton);
    CONTROL(lblCountLabel, QLabel);
    CONTROL(lblCount, QLabel);
    CONTROL(lblItemUseLabel, QLabel);
    CONTROL(CurrentPicture, QLabel);
    CONTROL(lblTextSize, QLabel);
    CONTROL(txtPrgTitle, QLabel);
    CONTROL(Picture1, QFrame); ///< the viewer pane
    ImagePane *Image1; ///< lives in Picture1
    CONTROL(wmp9, MediaPlayerControl); ///< on the same rectangle as Picture1
    CONTROL(Toolbar1, QToolBar);
    StatusPanels *StatusBar1;
    CONTROL(Inet1, InternetTransfer); ///< fetches for the check for a new version
    QTimer Timer1;
    QTimer tmrSlideShow;
    QTimer tmrShowPlayTime;

    // --- menus: frmMainViewer_menus.cpp
    QAction *mnuFile{}, *mnuFileDirectory{}, *mnuFileLoad{}, *mnuFileLoadAs{}, *mnuFileSave{}, *mnuFileSaveAs{},
        *mnuFileClear{}, *mnuFileBatchConvertImages{}, *mnuFileSaveImageAs{}, *mnuFileSaveThumbnail{},
        *mnuFileSendToEmailAttachment{}, *mnuFilePrintImage{}, *mnuFilePrinterSetup{}, *mnuFileProperties{},
        *mnuFileSelectViewer{}, *mnuFileExit{};
    QAction *mnuEdit{}, *mnuPictureCopy{}, *mnuEditCopyPictureLink{}, *mnuEditCopyFilesTo{}, *mnuEditMoveFilesTo{},
        *mnuEditDeleteFiles{}, *mnuEditMoveToTrash{}, *mnuEditUndoTrash{}, *mnuEditRenameFile{}, *mnuEditZoom{},
        *mnuEditZoomIn{}, *mnuEditZoomOut{};
    std::array<QAction *, 12> mnuEditZoomLevel{}; ///< 1 to 11
    QAction *mnuPicture{}, *mnuPictureAddOne{}, *mnuPictureAddAll{}, *mnuPictureRemoveOne{}, *mnuPictureRemoveAll{},
        *mnuPictureNext{}, *mnuPicturePrevious{}, *mnuPictureViewer{}, *mnuPictureThumbNailViewer{},
        *mnuBrowseFolderView{}, *mnuPictureImageSummary{}, *mnuPictureAdvListManagement{},
        *mnuPictureDesktopWallpaper{}, *mnuPictureWallPaperCentered{}, *mnuPictureWallPaperStretched{},
        *mnuPictureWallPaperTiled{}, *mnuPictureWallPaperClear{}, *mnuPictureWallPaperRestore{};
    QAction *mnuView{}, *mnuViewFullScreen{}, *mnuViewFullPlayerImage{}, *mnuViewFullWidthList{}, *mnuViewToolbars{},
        *mnuViewToolbarsMainToolbar{}, *mnuViewToolbarsShowCaptions{}, *mnuViewToolbarsCaptionsBottom{},
        *mnuViewToolbarsCaptionsRight{};
    QAction *mnuSlideShow{}, *mnuSlideShowFullScreen{}, *mnuSlideShowFullViewer{}, *mnuSlideShowRunSlideShow{},
        *mnuSlideShowViewerOnly{}, *mnuSlideshowDesktopCentered{}, *mnuSlideshowDesktopStretched{},
        *mnuSlideShowForwardOrder{}, *mnuSlideShowReverseOrder{}, *mnuSlideShowShuffleOrder{},
        *mnuSlideShowLoopAround{}, *mnuSlideShowShuffleMediaFile{}, *mnuSlideShowResetShuffleHistory{},
        *mnuSlideShowToolbar{}, *mnuSlideShowInterval{};
    std::array<QAction *, 2> mnuSlideShowToolbarButton{};
    QAction *mnuOptions{}, *mnuOptionsPreferences{}, *mnuOptionsMinimizeSystemTray{}, *mnuOptionsDisplayOptions{};
    QAction *mnuTools{}, *mnuToolsVolumeControls{};
    QAction *mnuHelp{}, *mnuHelpHelp{}, *mnuHelpNewVersion{}, *mnuHelpAbout{};

    void mnuFileDirectory_Click();
    void mnuFileLoad_Click();
    void mnuFileLoadAs_Click();
    void mnuFileSave_Click();
    void mnuFileSaveAs_Click();
    void mnuFileSaveImageAs_Click();
    void mnuFileSaveThumbnail_Click();
    void mnuFileSelectViewer_Click();
    void mnuFileBatchConvertImages_Click();
    void mnuFileSendToEmailAttachment_Click();
    void mnuFileExit_Click();
    void mnuPictureCopy_Click();
    void mnuEditCopyPictureLink_Click();
    void mnuEditCopyFilesTo_Click();
    void mnuEditMoveFilesTo_Click();
    void mnuEditDeleteFiles_Click();
    void mnuEditMoveToTrash_Click();
    void mnuEditUndoTrash_Click();
    void mnuEditRenameFile_Click();
    void mnuEditZoomLevel_Click(int item);
    void zoominc_Click();
    void zoomdec_Click();
    void mnuPictureNext_Click();
    void mnuPicturePrevious_Click();
    void mnuPictureViewer_Click();
    void mnuBrowseFolderView_Click();
    void mnuPictureThumbNailViewer_Click();
    void mnuPictureAdvListManagement_Click();
    void mnuPictureWallPaperCentered_Click();
    void mnuPictureWallPaperStretched_Click();
    void mnuPictureWallPaperTiled_Click();
    void mnuPictureWallPaperClear_Click();
    void mnuPictureWallPaperRestore_Click();
    void mnuViewFullScreen_Click();
    void mnuViewFullPlayerImage_Click();
    void mnuViewFullWidthList_Click();
    void mnuViewToolbarsMainToolbar_Click();
    void mnuViewToolbarsShowCaptions_Click();
    void mnuViewToolbarsCaptionsBottom_Click();
    void mnuViewToolbarsCaptionsRight_Click();
    void mnuOptionsPreferences_Click();
    void mnuOptionsDisplayOptions_Click();
    void mnuToolsVolumeControls_Click();
    void mnuHelpHelp_Click();
    void mnuHelpNewVersion_Click();
    /// The toolbar's "Next": one step in the order of the shuffle mode when that is on.
    void toolbarNext_Click();
    /// The toolbar's "slide": stops the show that runs, or starts the one chosen for the button.
    void toolbarSlide_Click();
    /// The toolbar button with a key, as a text compared.
    QAction *toolbarButton(const QString &key) const;
    void Toolbar1_ButtonClick(const QString &key);

    // --- events: frmMainViewer_events.cpp
    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;
    void Form_Unload() override;
    void Form_Resize();
    void Picture1_Resize();
    void Timer1_Timer();
    /// Takes the waiting commands; `caller` is "FormLoad" or empty.
    void ProcessIfFromCommandLine(const QString &caller);
    bool ReshowOnActivate = false;
    /// Commands are being taken: whoever comes by a yield leaves the queue alone.
    bool TakingCommands = false;

    // --- the two lists: frmMainViewer_lists.cpp
    void AddSelectedToDisplayList();
    void AddAllToDisplayList();
    void cmdRightAll_Click();
    void RemoveSelectedFromDisplayList();
    void ClearDisplayList();
    void cmdClearSelectionList_Click();
    void MoveDisplayItemUp();
    void MoveDisplayItemDown();
    void UpdateListScrollWidth(ListBox *list);
    void tabFileList_Change();
    void UpdateMenuAndToolbarState();
    void NextListItem();
    void PreviousListItem();
    void lstDisplay_DblClick();
    void lstDisplay_KeyPress(int keyCode);
    void lstDisplay_MouseMove();
    /// Adds paths to the DisplayList as AddAllToDisplayList does; folders are searched with all below them.
    void addDroppedFiles(const QStringList &paths);

    // --- list files: frmMainViewer_listfile.cpp
    void LoadStandardList();
    void LoadUserList(const QString &path);
    void Lumora_PlayListLoad(const QString &path);
    /// The writer inside SaveAllSettings.
    void saveStandardList();

    // --- folder search: frmMainViewer_search.cpp
    void SelectMediaFolder();

    // --- display: frmMainViewer_display.cpp
    void ShowSelectedDisplayItem();
    void ShowSelectedSelectionItem();
    void ShowPictureItem(const QString &path);
    void PlayMotionItem(const QString &path, int setPosition);
    void ShowPictureInViewer(const QString &path, bool alreadyDecoded, double zoom);
    double GetZoomFactor() const;
    int zoomItem() const;
    void ShowStatusBarText(const QString &text, bool withDimensions);
    void ShowFileTypeIcon(const QString &extension);
    void OpenDisplayItem();

    // --- the Media Show: frmMainViewer_mediashow.cpp
    void mnuSlideShowFullScreen_Click();
    void mnuSlideShowFullViewer_Click();
    void mnuSlideShowRunSlideShow_Click();
    void mnuSlideShowShuffleMediaFile_Click();
    void mnuSlideShowResetShuffleHistory_Click();
    void mnuSlideShowInterval_Click();
    void tmrSlideShow_Timer();
    /// One step of a show.
    void ChangeSlides();
    /// One step in shuffle mode.
    void PickShuffleItem();
    /// Shows the current item in frmSlideShowFullScreen.
    void ShowInFullScreen();
    /// A show runs, in this window or full screen.
    bool isShowRunning() const;
    /// Lets the show go on ticking, at the interval of now.
    void startShowTimer();

    // --- playback: frmMainViewer_playback.cpp
    void wmp9_PlayStateChange(int newState);
    void tmrShowPlayTime_Timer();
    /// Gives the player the volume of the store.
    void ApplyStoredVolume();
    /// Writes position and duration into panel 3.
    void ShowPlayTime();

    // --- decoding: frmMainViewer_display.cpp
    void ReadImageInfo(const QString &path, int &width, int &height, float &depth);
    void LoadImageIntoViewer(const QString &path);

Q_SIGNALS:
    /// A picture of the list stands painted on the pane. For measuring and screenshots.
    void itemPainted();
    /// The first activation is over: everything is laid out, the commands of the start are taken, Timer1 runs.
    void activated();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void activateFirst();
    void restoreToolbar();
    enum class TakenCommand { Files, Folders, List };
    TakenCommand takeFirstCommand();
    void takePaths(const QStringList &paths);
    void searchNamedFolders(const QStringList &folders);
    void playSelectedMotion();
    void startBySwitch(bool editor);
    void makeMenus();
    void makeToolbar();
    void makeListPane();
    void layOutListPane(const QRect &rect);
    QRect clientRect() const;
    void showNothing();
    void afterListLoad();
    bool addListEntries(const QStringList &entries, bool standard);
    void readListInto(const QString &path, bool standard);
    void prefetchNeighbours();
    std::function<void(const LoadedPicture &picture)> scalingForPanes() const;
    void makeSlideShowItems();
    void chooseOneOf(const QVector<std::pair<QAction *, const char *>> &group);
    void beginShow();
    void endShow();
    void leaveFullScreenShow();
    void stopRunningShow();
    void changeSlidesOnce();
    bool shuffleOn();
    void showShuffled();
    void prefetchForShow();
    void applyToolbarStyle();
    int photoCDSizeIndex() const;
    QSize displayTarget() const;
    QSize paneSize() const;
    QSize sizeOnScreen(QSize pixels) const;
    void updatePlayTimePanel();
    void placeImage(QSize size, QSize pane);
    void wheelZoom(int steps, QPoint position);
    void zoomFreely(int item, QPoint position);
    void leaveFreeZoom();
    void panBy(QPoint offset);
    void rememberPlace();
    void restorePlace();
    bool m_firstActivationDone = false;
    bool m_toolbarRestored = false;
    int m_displayTicket = 0; ///< grows with each display; a display that finds a newer one inside a yield ends
    int m_itemBeforeWheel =
        0; ///< the zoom item to go back to while the wheel has taken the picture out of the fit rules
    int m_listTicket =
        0; ///< grows with each list load and each emptying; a load that finds a newer one inside a yield ends
    bool m_listTakenOver = false; ///< the load that ran last found a newer one
    bool m_readingList = false; ///< what the DisplayList holds is only the beginning of a list
    bool m_layingOut = false;
    bool m_layOutAgain = false; ///< a resize came while the layout was at work
    /// Displays do not nest: one that is asked for inside a yield takes the place of the one at work, which ends early.
    enum class Show { Nothing, DisplayItem, SelectionItem, Picture };
    bool m_displaying = false;
    bool m_showing = false;
    Show m_showNext = Show::Nothing;
    struct
    {
        QString path;
        bool alreadyDecoded = false;
        double zoom = 1;
    } m_pictureNext;
    bool m_pictureWaits = false;
    ScreenAwake m_showAwake; ///< held while a show runs
    int m_showTicket = 0; ///< grows with each start and each end of a show
    bool m_changingSlides = false;
    bool m_changeSlidesAgain = false; ///< a step of the show was asked for while one was under way
    int m_fullScreenTicket = 0; ///< grows with each picture on its way to the full screen window
    bool m_stepping = false;
    int m_stepWaits = 0; ///< +1 or -1: a step asked for while one was under way
    void showSelected(Show what);
    void showDisplayItemNow();
    void showSelectionItemNow();
    void showByKind(const ListBox &list, const std::function<void(const QString &path)> &showPicture);
    void showPictureNow(const QString &path, bool alreadyDecoded, double zoom);
    void layOutNow();
    void step(int direction);
    void stepOnce(int direction);
    void showDateAndTime();
    QTimer m_clock;
    QHash<QString, QAction *> m_toolbarButtons;
};

/// Rebuilds the three patterns of the globals from the type boxes of frmPreferences, and refreshes an open search
/// window.
void BuildFilePatterns();
