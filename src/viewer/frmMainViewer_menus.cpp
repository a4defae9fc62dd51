#include "viewer/frmMainViewer.h"

#include "app/globals.h"
#include "app/settings.h"
#include "app/startup.h"
#include "platform/wallpaper.h"
#include "ui/icons.h"
#include "ui/menurows.h"
#include "ui/toolbarcaptions.h"
#include "viewer/fit.h"

#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

#include <array>

namespace {

using V = frmMainViewer;
constexpr int submenu = MenuRow::Submenu;
constexpr int check = MenuRow::Check;
constexpr int always = MenuRow::Shown;

#define ITEM(name) &V::name, #name
// clang-format off
const MenuRow rows[] = {
    {ITEM(mnuFile), "", "&File", "", "", nullptr, submenu},
    {ITEM(mnuFileDirectory), "mnuFile", "Select (Browse for) Media &Folder", "Ctrl+O", "folder-open", &V::mnuFileDirectory_Click},
    {ITEM(mnuFileLoad), "mnuFile", "-Open Standard Media &List", "Ctrl+L", "document-open", &V::mnuFileLoad_Click},
    {ITEM(mnuFileLoadAs), "mnuFile", "&Open User Media List", "Ctrl+Shift+O", "document-open", &V::mnuFileLoadAs_Click},
    {ITEM(mnuFileSave), "mnuFile", "&Save Standard Media List", "Ctrl+S", "document-save", &V::mnuFileSave_Click},
    {ITEM(mnuFileSaveAs), "mnuFile", "Save &User Media List As", "Ctrl+Shift+S", "document-save-as", &V::mnuFileSaveAs_Click},
    {ITEM(mnuFileClear), "mnuFile", "&Zap Display Media List", "Ctrl+Shift+Z", "edit-clear-list", &V::ClearDisplayList},
    {ITEM(mnuFileSaveImageAs), "mnuFile", "-Save &Image As", "Ctrl+Alt+S", "document-save-as", &V::mnuFileSaveImageAs_Click},
    {ITEM(mnuFileSaveThumbnail), "mnuFile", "Save &Thumbnail of Current Image", "Ctrl+Alt+T", "", &V::mnuFileSaveThumbnail_Click},
    {ITEM(mnuFileBatchConvertImages), "mnuFile", "&Batch Convert Images", "Ctrl+Alt+B", "", &V::mnuFileBatchConvertImages_Click},
    {ITEM(mnuFileSendToEmailAttachment), "mnuFile", "&E-mail Image as attachment", "Ctrl+Alt+E", "mail-send", &V::mnuFileSendToEmailAttachment_Click},
    {ITEM(mnuFilePrintImage), "mnuFile", "-&Print Image", "Ctrl+P", "document-print"},
    {ITEM(mnuFilePrinterSetup), "mnuFile", "P&rinter Setup", "Ctrl+Shift+P", ""},
    {ITEM(mnuFileProperties), "mnuFile", "-File Propert&ies", "Alt+Return", "document-properties"},
    {ITEM(mnuFileSelectViewer), "mnuFile", "-S&elect Viewer", "F9", "view-choose", &V::mnuFileSelectViewer_Click},
    {ITEM(mnuFileExit), "mnuFile", "-E&xit", "Ctrl+Q", "application-exit", &V::mnuFileExit_Click},

    {ITEM(mnuEdit), "", "&Edit", "", "", nullptr, submenu},
    {ITEM(mnuPictureCopy), "mnuEdit", "&Copy Image to ClipBoard", "Ctrl+C", "edit-copy", &V::mnuPictureCopy_Click},
    {ITEM(mnuEditCopyPictureLink), "mnuEdit", "C&opy Media Name Link to ClipBoard", "Ctrl+Shift+C", "edit-copy", &V::mnuEditCopyPictureLink_Click},
    {ITEM(mnuEditCopyFilesTo), "mnuEdit", "-Copy &Files To", "F5", "", &V::mnuEditCopyFilesTo_Click},
    {ITEM(mnuEditMoveFilesTo), "mnuEdit", "&Move Files To", "F6", "", &V::mnuEditMoveFilesTo_Click},
    {ITEM(mnuEditDeleteFiles), "mnuEdit", "&Delete Files", "Shift+Del", "edit-delete", &V::mnuEditDeleteFiles_Click},
    {ITEM(mnuEditMoveToTrash), "mnuEdit", "Move Selected Files to &Trash", "Ctrl+Shift+Del", "user-trash", &V::mnuEditMoveToTrash_Click},
    {ITEM(mnuEditUndoTrash), "mnuEdit", "&Undo Move to Trash", "Ctrl+Alt+Z", "edit-undo", &V::mnuEditUndoTrash_Click},
    {ITEM(mnuEditRenameFile), "mnuEdit", "&Rename File", "F2", "edit-rename", &V::mnuEditRenameFile_Click},
    {ITEM(mnuEditZoom), "mnuEdit", "-&Zoom", "", "zoom", nullptr, submenu},
    {ITEM(mnuEditZoomIn), "mnuEdit", "Zoom &In", "Ctrl++", "zoom-in", &V::zoominc_Click},
    {ITEM(mnuEditZoomOut), "mnuEdit", "Zoom Ou&t", "Ctrl+-", "zoom-out", &V::zoomdec_Click},

    {ITEM(mnuPicture), "", "&Picture", "", "", nullptr, submenu},
    {ITEM(mnuPictureNext), "mnuPicture", "View &Next Media File", "Alt+Right", "go-next", &V::mnuPictureNext_Click},
    {ITEM(mnuPicturePrevious), "mnuPicture", "View Pre&vious Media File", "Alt+Left", "go-previous", &V::mnuPicturePrevious_Click},
    {ITEM(mnuPictureAddOne), "mnuPicture", "-Add &Selected", "Ctrl+Right", "list-add", &V::AddSelectedToDisplayList},
    {ITEM(mnuPictureAddAll), "mnuPicture", "&Add All", "Ctrl+Shift+Right", "list-add", &V::cmdRightAll_Click},
    {ITEM(mnuPictureRemoveOne), "mnuPicture", "Remove Se&lected", "Del", "list-remove", &V::RemoveSelectedFromDisplayList},
    {ITEM(mnuPictureRemoveAll), "mnuPicture", "&Remove All", "Ctrl+Del", "edit-clear-list", &V::ClearDisplayList},
    {ITEM(mnuPictureAdvListManagement), "mnuPicture", "Advanced List &Management", "Ctrl+M", "", &V::mnuPictureAdvListManagement_Click},
    {ITEM(mnuPictureViewer), "mnuPicture", "-Display &Pixelon / Zoom Viewer", "Ctrl+E", "document-edit", &V::mnuPictureViewer_Click},
    {ITEM(mnuBrowseFolderView), "mnuPicture", "Display Folder &Browser Viewer", "Ctrl+B", "folder", &V::mnuBrowseFolderView_Click},
    {ITEM(mnuPictureThumbNailViewer), "mnuPicture", "Display &Thumbnail Viewer", "Ctrl+T", "view-list-icons", &V::mnuPictureThumbNailViewer_Click},
    {ITEM(mnuPictureImageSummary), "mnuPicture", "&Information Summary", "Ctrl+I", ""},
    {ITEM(mnuPictureDesktopWallpaper), "mnuPicture", "-Set Image as &Desktop Wallpaper", "", "", nullptr, submenu},
    {ITEM(mnuPictureWallPaperCentered), "mnuPictureDesktopWallpaper", "&Centered", "Ctrl+Alt+1", "wallpaper-centered", &V::mnuPictureWallPaperCentered_Click},
    {ITEM(mnuPictureWallPaperStretched), "mnuPictureDesktopWallpaper", "&Stretched", "Ctrl+Alt+2", "wallpaper-stretched", &V::mnuPictureWallPaperStretched_Click},
    {ITEM(mnuPictureWallPaperTiled), "mnuPictureDesktopWallpaper", "&Tiled", "Ctrl+Alt+3", "wallpaper-tiled", &V::mnuPictureWallPaperTiled_Click},
    {ITEM(mnuPictureWallPaperClear), "mnuPictureDesktopWallpaper", "&Remove Wallpaper", "Ctrl+Alt+4", "wallpaper-removed", &V::mnuPictureWallPaperClear_Click},
    {ITEM(mnuPictureWallPaperRestore), "mnuPictureDesktopWallpaper", "-R&estore Wallpaper of Before", "Ctrl+Alt+5", "edit-undo", &V::mnuPictureWallPaperRestore_Click},

    {ITEM(mnuView), "", "&View", "", "", nullptr, submenu},
    {ITEM(mnuViewFullPlayerImage), "mnuView", "Full Width Media &Player / Image", "F7", "view-wide", &V::mnuViewFullPlayerImage_Click, check},
    {ITEM(mnuViewFullWidthList), "mnuView", "Full Width Media Name &List", "F8", "list-wide", &V::mnuViewFullWidthList_Click, check},
    {ITEM(mnuViewFullScreen), "mnuView", "-Display In &Full Screen Viewer", "F11", "view-fullscreen", &V::mnuViewFullScreen_Click},
    {ITEM(mnuViewToolbars), "mnuView", "-&Toolbars", "", "", nullptr, submenu},
    {ITEM(mnuViewToolbarsMainToolbar), "mnuViewToolbars", "&Main Toolbar", "Ctrl+Shift+T", "", &V::mnuViewToolbarsMainToolbar_Click, check},
    {ITEM(mnuViewToolbarsShowCaptions), "mnuViewToolbars", "&Show Captions", "Ctrl+Shift+K", "", &V::mnuViewToolbarsShowCaptions_Click, check},
    {ITEM(mnuViewToolbarsCaptionsBottom), "mnuViewToolbars", "Captions at &Bottom", "Ctrl+Shift+B", "", &V::mnuViewToolbarsCaptionsBottom_Click, check},
    {ITEM(mnuViewToolbarsCaptionsRight), "mnuViewToolbars", "Captions at &Right", "Ctrl+Shift+R", "", &V::mnuViewToolbarsCaptionsRight_Click, check},

    {ITEM(mnuSlideShow), "", "&Media Show", "", "", nullptr, submenu},
    {ITEM(mnuSlideShowFullScreen), "mnuSlideShow", "&Start Full Screen Media Show", "Shift+F12", "", nullptr, check | always},
    {ITEM(mnuSlideShowFullViewer), "mnuSlideShow", "Display Full Screen Media Viewer", "", "", &V::mnuSlideShowFullViewer_Click},
    {ITEM(mnuSlideShowRunSlideShow), "mnuSlideShow", "S&tart/Stop Media Show", "F12", "", nullptr, check | always},
    {ITEM(mnuSlideShowViewerOnly), "mnuSlideShow", "-&Main Viewer Only", "Ctrl+Shift+1", "", nullptr, check | always},
    {ITEM(mnuSlideshowDesktopCentered), "mnuSlideShow", "     + Desktop &Centered", "Ctrl+Shift+2", "", nullptr, check | always},
    {ITEM(mnuSlideshowDesktopStretched), "mnuSlideShow", "     + Desktop &Stretched", "Ctrl+Shift+3", "", nullptr, check | always},
    {ITEM(mnuSlideShowForwardOrder), "mnuSlideShow", "-&Forward Order", "Ctrl+Shift+F", "", nullptr, check | always},
    {ITEM(mnuSlideShowReverseOrder), "mnuSlideShow", "&Reverse Order", "Ctrl+Shift+V", "", nullptr, check | always},
    {ITEM(mnuSlideShowShuffleOrder), "mnuSlideShow", "Sh&uffle Mode", "Ctrl+Shift+U", "", nullptr, check | always},
    {ITEM(mnuSlideShowLoopAround), "mnuSlideShow", "-&Loop Around Mode", "Ctrl+Shift+L", "", nullptr, check | always},
    {ITEM(mnuSlideShowShuffleMediaFile), "mnuSlideShow", "Next Shuffle Media File", "Ctrl+Shift+N", "", &V::mnuSlideShowShuffleMediaFile_Click},
    {ITEM(mnuSlideShowResetShuffleHistory), "mnuSlideShow", "Reset Shuffle Media History List", "Ctrl+Shift+H", "", &V::mnuSlideShowResetShuffleHistory_Click},
    {ITEM(mnuSlideShowToolbar), "mnuSlideShow", "-Toolbar &Button Starts", "", "", nullptr, submenu | always},
    {ITEM(mnuSlideShowInterval), "mnuSlideShow", "Media Change Time &Interval", "Ctrl+Shift+I", "", &V::mnuSlideShowInterval_Click},

    {ITEM(mnuOptions), "", "&Options", "", "", nullptr, submenu},
    {ITEM(mnuOptionsPreferences), "mnuOptions", "&Preferences", "Ctrl+,", "configure", &V::mnuOptionsPreferences_Click},
    {ITEM(mnuOptionsMinimizeSystemTray), "mnuOptions", "&Minimize to System Tray", "", "", nullptr, check | always},
    {ITEM(mnuOptionsDisplayOptions), "mnuOptions", "&Display Options", "", "", &V::mnuOptionsDisplayOptions_Click},

    {ITEM(mnuTools), "", "&Tools", "", "", nullptr, submenu},
    {ITEM(mnuToolsVolumeControls), "mnuTools", "&Volume Controls", "Ctrl+Alt+V", "audio-volume-high", &V::mnuToolsVolumeControls_Click},

    {ITEM(mnuHelp), "", "&Help", "", "", nullptr, submenu},
    {ITEM(mnuHelpHelp), "mnuHelp", "&Help", "F1", "help-contents", &V::mnuHelpHelp_Click},
    {ITEM(mnuHelpNewVersion), "mnuHelp", "Check for &New Version", "", "", &V::mnuHelpNewVersion_Click},
    {ITEM(mnuHelpAbout), "mnuHelp", "&About", "", ""},
};

const ToolbarRow toolbarRows[] = {
    // key, caption, tip, icon, click, needsItem, needsPicture, hidden, group
    {"Directory", "Folder", "Select (Browse For) Media Folder", "folder-open", &V::mnuFileDirectory_Click, false, false, false, false},
    {"Load", "Load", "Load Media File List", "document-open", &V::mnuFileLoad_Click, false, false, false, false},
    {"Save", "Save", "Save Media File List", "document-save", &V::mnuFileSave_Click, true, false, false, false},
    {"Exit", "Exit", "Exit Lumora", "application-exit", &V::mnuFileExit_Click, false, false, false, false},
    {"Copy", "Copy", "Copy Current Image To The Clipboard", "edit-copy", &V::mnuPictureCopy_Click, true, true, false, true},
    {"wpaperc", "", "Set Current Image as Centered Wallpaper", "wallpaper-centered", &V::mnuPictureWallPaperCentered_Click, true, true, false, true},
    {"wpapers", "", "Set Current Image as StretchedWallpaper", "wallpaper-stretched", &V::mnuPictureWallPaperStretched_Click, true, true, false, false},
    {"wpapert", "", "Set Current Image as Tiled Wallpaper", "wallpaper-tiled", &V::mnuPictureWallPaperTiled_Click, true, true, false, false},
    {"wpaperr", "", "Removes Current Wallpaper", "wallpaper-removed", &V::mnuPictureWallPaperClear_Click, true, true, false, false},
    {"Previous", "Previous", "Move To Previous Media File", "go-previous", &V::mnuPicturePrevious_Click, true, false, false, true},
    {"Next", "Next", "Move To Next Media File", "go-next", &V::toolbarNext_Click, true, false, false, false},
    {"color", "Color", "Display Color Balance Options", "color-balance", nullptr, true, true, false, true},
    {"bright", "", "Display Contrast/Brightness Options", "brightness-contrast", nullptr, true, true, false, false},
    {"rotate", "", "Rotate Image Right 90 degrees", "object-rotate-right", nullptr, true, true, false, false},
    {"zoomdec", "Zoom -", "Decrease Zoom Level", "zoom-out", &V::zoomdec_Click, true, true, false, true},
    {"zoominc", "Zoom +", "Increase Zoom Level", "zoom-in", &V::zoominc_Click, true, true, false, false},
    {"filetype", "Settings", "Display Program Properties ", "configure", &V::mnuOptionsPreferences_Click, false, false, false, true},
    {"zoom", "Editor", "Display Image in Full Screen Viewer /  Pixelon", "document-edit", &V::mnuPictureViewer_Click, true, true, false, true},
    {"thumb", "Thumbs", "Display Thumbnail Viewer", "view-list-icons", &V::mnuPictureThumbNailViewer_Click, true, false, false, false},
    {"print", "", "", "document-print", nullptr, true, true, true, false},
    {"slide", "Show", "Display Media Show in Full Screen Viewer", "media-show", &V::toolbarSlide_Click, true, false, false, false},
    {"About", "Help", "Display Lumora About Information", "help-contents", &V::mnuHelpHelp_Click, false, false, false, true},
};
// clang-format on
#undef ITEM

/// What does without its caption where there is no room for all of them, the clearest icon first.
constexpr const char *toolbarKeysByIcon[][2] = {{"zoomdec", "zoominc"}, {"Previous", "Next"}, {"Copy", "color"},
    {"Load", "Save"}, {"Exit", "Directory"}, {"filetype", "About"}, {"thumb", "zoom"}};

constexpr const char *zoomShortcuts[] = {
    "Ctrl+1", "Ctrl+2", "Ctrl+3", "Ctrl+4", "Ctrl+5", "Ctrl+6", "Ctrl+7", "Ctrl+8", "Ctrl+9", "Ctrl+0", "Ctrl+Shift+0"};
}

std::span<const MenuRow> mainMenuRows()
{
    return rows;
}

std::span<const ToolbarRow> mainToolbarRows()
{
    return toolbarRows;
}

void frmMainViewer::makeMenus()
{
    const QHash<QString, QMenu *> menus = makeMenuRows(*this, std::span<const MenuRow>(rows));
    for (int i = zoomItemFirst; i <= zoomItemLast; ++i) {
        QAction *action = mnuEditZoom->menu()->addAction(QString::fromLatin1(zoomCaptions[i - 1]));
        action->setObjectName(QStringLiteral("mnuEditZoomLevel(%1)").arg(i));
        action->setShortcut(QKeySequence(QString::fromLatin1(zoomShortcuts[i - 1])));
        action->setCheckable(true);
        action->setChecked(i == zoomItemAtStart);
        connect(action, &QAction::triggered, this, [this, i] { mnuEditZoomLevel_Click(i); });
        mnuEditZoomLevel[size_t(i)] = action;
    }
    makeSlideShowItems();
    mnuViewToolbarsMainToolbar->setChecked(true);
    mnuViewToolbarsShowCaptions->setChecked(true);
    // These need no item: their keys work while the menu they stand in is off.
    addActions({mnuPictureViewer, mnuBrowseFolderView, mnuPictureWallPaperRestore, mnuEditUndoTrash});
    connect(&desktopWallpaper(), &DesktopWallpaper::done, mnuPictureWallPaperRestore,
        [this] { mnuPictureWallPaperRestore->setEnabled(desktopWallpaper().canRestore()); });
    mnuEditUndoTrash->setEnabled(false);
    // Menus hold no command that this build has not been given.
    for (QMenu *menu : menus) {
        bool anything = false;
        for (const QAction *action : menu->actions())
            anything = anything || (action->isVisible() && !action->isSeparator());
        menu->menuAction()->setVisible(anything);
    }
}

void frmMainViewer::makeToolbar()
{
    addFixedToolBar(*this, *Toolbar1);
    for (const ToolbarRow &row : toolbarRows) {
        if (row.group)
            Toolbar1->addSeparator();
        const QString key = QString::fromLatin1(row.key);
        const QIcon icon = row.hidden ? QIcon() : themedIcon(QString::fromLatin1(row.icon));
        QAction *action = Toolbar1->addAction(icon, tr(row.caption));
        const QString tip = tr(row.toolTip);
        action->setObjectName(QStringLiteral("Toolbar1.") + key);
        action->setToolTip(tip);
        action->setVisible(!row.hidden);
        action->setCheckable(row.click == &V::toolbarSlide_Click);
        connect(action, &QAction::triggered, this, [this, key] { Toolbar1_ButtonClick(key); });
        if (QWidget *button = Toolbar1->widgetForAction(action)) {
            button->setObjectName(action->objectName());
            button->setAccessibleName(*row.caption ? tr(row.caption) : tip.trimmed());
            button->setFocusPolicy(Qt::TabFocus);
        }
        m_toolbarButtons.insert(key, action);
    }
    QVector<QVector<QAction *>> leftOutFirst;
    for (const auto &[one, other] : toolbarKeysByIcon)
        leftOutFirst.append(
            QVector<QAction *>{toolbarButton(QString::fromLatin1(one)), toolbarButton(QString::fromLatin1(other))});
    new ToolbarCaptions(Toolbar1, leftOutFirst);
    mnuPictureNext->setToolTip(m_toolbarButtons[QStringLiteral("Next")]->toolTip());
    mnuPicturePrevious->setToolTip(m_toolbarButtons[QStringLiteral("Previous")]->toolTip());
    applyToolbarStyle();
}

QAction *frmMainViewer::toolbarButton(const QString &key) const
{
    return m_toolbarButtons.value(key);
}

void frmMainViewer::Toolbar1_ButtonClick(const QString &key)
{
    for (const ToolbarRow &row : toolbarRows) {
        if (key == QLatin1String(row.key) && row.click)
            (this->*row.click)();
    }
}

void frmMainViewer::applyToolbarStyle()
{
    Qt::ToolButtonStyle style = Qt::ToolButtonIconOnly;
    if (mnuViewToolbarsShowCaptions->isChecked())
        style = mnuViewToolbarsCaptionsRight->isChecked() ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonTextUnderIcon;
    Toolbar1->setToolButtonStyle(style);
    for (const ToolbarRow &row : toolbarRows) {
        QAction *action = m_toolbarButtons.value(QString::fromLatin1(row.key));
        action->setIconText(mnuViewToolbarsShowCaptions->isChecked() ? tr(row.caption) : QString());
    }
}

namespace {

/// The start runs these handlers to bring the bar into its stored state; only a user's click changes the store.
void saveToolbarState(const char *key, bool on)
{
    if (globals.MainViewerActivated)
        SaveSetting(QString(), QStringLiteral("Toolbars"), QString::fromLatin1(key), truthText(on));
}

}

void frmMainViewer::mnuViewToolbarsMainToolbar_Click()
{
    // A click has already turned the mark; the start calls with the mark as it stands and means the other state.
    if (!globals.MainViewerActivated)
        mnuViewToolbarsMainToolbar->setChecked(!mnuViewToolbarsMainToolbar->isChecked());
    Toolbar1->setVisible(mnuViewToolbarsMainToolbar->isChecked());
    saveToolbarState("MainToolbar", mnuViewToolbarsMainToolbar->isChecked());
    Form_Resize();
}

void frmMainViewer::mnuViewToolbarsShowCaptions_Click()
{
    if (!globals.MainViewerActivated)
        mnuViewToolbarsShowCaptions->setChecked(!mnuViewToolbarsShowCaptions->isChecked());
    applyToolbarStyle();
    saveToolbarState("MainShowCaptions", mnuViewToolbarsShowCaptions->isChecked());
    Form_Resize();
}

void frmMainViewer::mnuViewToolbarsCaptionsBottom_Click()
{
    mnuViewToolbarsCaptionsBottom->setChecked(true);
    mnuViewToolbarsCaptionsRight->setChecked(false);
    applyToolbarStyle();
    saveToolbarState("MainCaptionsBottom", true);
    saveToolbarState("MainCaptionsRight", false);
    Form_Resize();
}

void frmMainViewer::mnuViewToolbarsCaptionsRight_Click()
{
    mnuViewToolbarsCaptionsRight->setChecked(true);
    mnuViewToolbarsCaptionsBottom->setChecked(false);
    applyToolbarStyle();
    saveToolbarState("MainCaptionsRight", true);
    saveToolbarState("MainCaptionsBottom", false);
    Form_Resize();
}
