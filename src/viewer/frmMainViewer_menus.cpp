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
    {ITEM(mnuFile), "", QT_TRANSLATE_NOOP("frmMainViewer", "&File"), "", "", nullptr, submenu},
    {ITEM(mnuFileDirectory), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "Select (Browse for) Media &Folder"), "Ctrl+O", "folder-open", &V::mnuFileDirectory_Click},
    {ITEM(mnuFileLoad), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "-Open Standard Media &List"), "Ctrl+L", "document-open", &V::mnuFileLoad_Click},
    {ITEM(mnuFileLoadAs), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "&Open User Media List"), "Ctrl+Shift+O", "document-open", &V::mnuFileLoadAs_Click},
    {ITEM(mnuFileSave), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "&Save Standard Media List"), "Ctrl+S", "document-save", &V::mnuFileSave_Click},
    {ITEM(mnuFileSaveAs), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "Save &User Media List As"), "Ctrl+Shift+S", "document-save-as", &V::mnuFileSaveAs_Click},
    {ITEM(mnuFileClear), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "&Zap Display Media List"), "Ctrl+Shift+Z", "edit-clear-list", &V::ClearDisplayList},
    {ITEM(mnuFileSaveImageAs), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "-Save &Image As"), "Ctrl+Alt+S", "document-save-as", &V::mnuFileSaveImageAs_Click},
    {ITEM(mnuFileSaveThumbnail), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "Save &Thumbnail of Current Image"), "Ctrl+Alt+T", "", &V::mnuFileSaveThumbnail_Click},
    {ITEM(mnuFileBatchConvertImages), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "&Batch Convert Images"), "Ctrl+Alt+B", "", &V::mnuFileBatchConvertImages_Click},
    {ITEM(mnuFileSendToEmailAttachment), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "&E-mail Image as attachment"), "Ctrl+Alt+E", "mail-send", &V::mnuFileSendToEmailAttachment_Click},
    {ITEM(mnuFilePrintImage), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "-&Print Image"), "Ctrl+P", "document-print"},
    {ITEM(mnuFilePrinterSetup), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "P&rinter Setup"), "Ctrl+Shift+P", ""},
    {ITEM(mnuFileProperties), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "-File Propert&ies"), "Alt+Return", "document-properties"},
    {ITEM(mnuFileSelectViewer), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "-S&elect Viewer"), "F9", "view-choose", &V::mnuFileSelectViewer_Click},
    {ITEM(mnuFileExit), "mnuFile", QT_TRANSLATE_NOOP("frmMainViewer", "-E&xit"), "Ctrl+Q", "application-exit", &V::mnuFileExit_Click},

    {ITEM(mnuEdit), "", QT_TRANSLATE_NOOP("frmMainViewer", "&Edit"), "", "", nullptr, submenu},
    {ITEM(mnuPictureCopy), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "&Copy Image to ClipBoard"), "Ctrl+C", "edit-copy", &V::mnuPictureCopy_Click},
    {ITEM(mnuEditCopyPictureLink), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "C&opy Media Name Link to ClipBoard"), "Ctrl+Shift+C", "edit-copy", &V::mnuEditCopyPictureLink_Click},
    {ITEM(mnuEditCopyFilesTo), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "-Copy &Files To"), "F5", "", &V::mnuEditCopyFilesTo_Click},
    {ITEM(mnuEditMoveFilesTo), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "&Move Files To"), "F6", "", &V::mnuEditMoveFilesTo_Click},
    {ITEM(mnuEditDeleteFiles), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "&Delete Files"), "Shift+Del", "edit-delete", &V::mnuEditDeleteFiles_Click},
    {ITEM(mnuEditMoveToTrash), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "Move Selected Files to &Trash"), "Ctrl+Shift+Del", "user-trash", &V::mnuEditMoveToTrash_Click},
    {ITEM(mnuEditUndoTrash), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "&Undo Move to Trash"), "Ctrl+Alt+Z", "edit-undo", &V::mnuEditUndoTrash_Click},
    {ITEM(mnuEditRenameFile), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "&Rename File"), "F2", "edit-rename", &V::mnuEditRenameFile_Click},
    {ITEM(mnuEditZoom), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "-&Zoom"), "", "zoom", nullptr, submenu},
    {ITEM(mnuEditZoomIn), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "Zoom &In"), "Ctrl++", "zoom-in", &V::zoominc_Click},
    {ITEM(mnuEditZoomOut), "mnuEdit", QT_TRANSLATE_NOOP("frmMainViewer", "Zoom Ou&t"), "Ctrl+-", "zoom-out", &V::zoomdec_Click},

    {ITEM(mnuPicture), "", QT_TRANSLATE_NOOP("frmMainViewer", "&Picture"), "", "", nullptr, submenu},
    {ITEM(mnuPictureNext), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "View &Next Media File"), "Alt+Right", "go-next", &V::mnuPictureNext_Click},
    {ITEM(mnuPicturePrevious), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "View Pre&vious Media File"), "Alt+Left", "go-previous", &V::mnuPicturePrevious_Click},
    {ITEM(mnuPictureAddOne), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "-Add &Selected"), "Ctrl+Right", "list-add", &V::AddSelectedToDisplayList},
    {ITEM(mnuPictureAddAll), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "&Add All"), "Ctrl+Shift+Right", "list-add", &V::cmdRightAll_Click},
    {ITEM(mnuPictureRemoveOne), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "Remove Se&lected"), "Del", "list-remove", &V::RemoveSelectedFromDisplayList},
    {ITEM(mnuPictureRemoveAll), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "&Remove All"), "Ctrl+Del", "edit-clear-list", &V::ClearDisplayList},
    {ITEM(mnuPictureAdvListManagement), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "Advanced List &Management"), "Ctrl+M", "", &V::mnuPictureAdvListManagement_Click},
    {ITEM(mnuPictureViewer), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "-Display &Pixelon / Zoom Viewer"), "Ctrl+E", "document-edit", &V::mnuPictureViewer_Click},
    {ITEM(mnuBrowseFolderView), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "Display Folder &Browser Viewer"), "Ctrl+B", "folder", &V::mnuBrowseFolderView_Click},
    {ITEM(mnuPictureThumbNailViewer), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "Display &Thumbnail Viewer"), "Ctrl+T", "view-list-icons", &V::mnuPictureThumbNailViewer_Click},
    {ITEM(mnuPictureImageSummary), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "&Information Summary"), "Ctrl+I", ""},
    {ITEM(mnuPictureDesktopWallpaper), "mnuPicture", QT_TRANSLATE_NOOP("frmMainViewer", "-Set Image as &Desktop Wallpaper"), "", "", nullptr, submenu},
    {ITEM(mnuPictureWallPaperCentered), "mnuPictureDesktopWallpaper", QT_TRANSLATE_NOOP("frmMainViewer", "&Centered"), "Ctrl+Alt+1", "wallpaper-centered", &V::mnuPictureWallPaperCentered_Click},
    {ITEM(mnuPictureWallPaperStretched), "mnuPictureDesktopWallpaper", QT_TRANSLATE_NOOP("frmMainViewer", "&Stretched"), "Ctrl+Alt+2", "wallpaper-stretched", &V::mnuPictureWallPaperStretched_Click},
    {ITEM(mnuPictureWallPaperTiled), "mnuPictureDesktopWallpaper", QT_TRANSLATE_NOOP("frmMainViewer", "&Tiled"), "Ctrl+Alt+3", "wallpaper-tiled", &V::mnuPictureWallPaperTiled_Click},
    {ITEM(mnuPictureWallPaperClear), "mnuPictureDesktopWallpaper", QT_TRANSLATE_NOOP("frmMainViewer", "&Remove Wallpaper"), "Ctrl+Alt+4", "wallpaper-removed", &V::mnuPictureWallPaperClear_Click},
    {ITEM(mnuPictureWallPaperRestore), "mnuPictureDesktopWallpaper", QT_TRANSLATE_NOOP("frmMainViewer", "-R&estore Wallpaper of Before"), "Ctrl+Alt+5", "edit-undo", &V::mnuPictureWallPaperRestore_Click},

    {ITEM(mnuView), "", QT_TRANSLATE_NOOP("frmMainViewer", "&View"), "", "", nullptr, submenu},
    {ITEM(mnuViewFullPlayerImage), "mnuView", QT_TRANSLATE_NOOP("frmMainViewer", "Full Width Media &Player / Image"), "F7", "view-wide", &V::mnuViewFullPlayerImage_Click, check},
    {ITEM(mnuViewFullWidthList), "mnuView", QT_TRANSLATE_NOOP("frmMainViewer", "Full Width Media Name &List"), "F8", "list-wide", &V::mnuViewFullWidthList_Click, check},
    {ITEM(mnuViewFullScreen), "mnuView", QT_TRANSLATE_NOOP("frmMainViewer", "-Display In &Full Screen Viewer"), "F11", "view-fullscreen", &V::mnuViewFullScreen_Click},
    {ITEM(mnuViewToolbars), "mnuView", QT_TRANSLATE_NOOP("frmMainViewer", "-&Toolbars"), "", "", nullptr, submenu},
    {ITEM(mnuViewToolbarsMainToolbar), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmMainViewer", "&Main Toolbar"), "Ctrl+Shift+T", "", &V::mnuViewToolbarsMainToolbar_Click, check},
    {ITEM(mnuViewToolbarsShowCaptions), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmMainViewer", "&Show Captions"), "Ctrl+Shift+K", "", &V::mnuViewToolbarsShowCaptions_Click, check},
    {ITEM(mnuViewToolbarsCaptionsBottom), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmMainViewer", "Captions at &Bottom"), "Ctrl+Shift+B", "", &V::mnuViewToolbarsCaptionsBottom_Click, check},
    {ITEM(mnuViewToolbarsCaptionsRight), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmMainViewer", "Captions at &Right"), "Ctrl+Shift+R", "", &V::mnuViewToolbarsCaptionsRight_Click, check},

    {ITEM(mnuSlideShow), "", QT_TRANSLATE_NOOP("frmMainViewer", "&Media Show"), "", "", nullptr, submenu},
    {ITEM(mnuSlideShowFullScreen), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "&Start Full Screen Media Show"), "Shift+F12", "", nullptr, check | always},
    {ITEM(mnuSlideShowFullViewer), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "Display Full Screen Media Viewer"), "", "", &V::mnuSlideShowFullViewer_Click},
    {ITEM(mnuSlideShowRunSlideShow), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "S&tart/Stop Media Show"), "F12", "", nullptr, check | always},
    {ITEM(mnuSlideShowViewerOnly), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "-&Main Viewer Only"), "Ctrl+Shift+1", "", nullptr, check | always},
    {ITEM(mnuSlideshowDesktopCentered), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "     + Desktop &Centered"), "Ctrl+Shift+2", "", nullptr, check | always},
    {ITEM(mnuSlideshowDesktopStretched), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "     + Desktop &Stretched"), "Ctrl+Shift+3", "", nullptr, check | always},
    {ITEM(mnuSlideShowForwardOrder), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "-&Forward Order"), "Ctrl+Shift+F", "", nullptr, check | always},
    {ITEM(mnuSlideShowReverseOrder), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "&Reverse Order"), "Ctrl+Shift+V", "", nullptr, check | always},
    {ITEM(mnuSlideShowShuffleOrder), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "Sh&uffle Mode"), "Ctrl+Shift+U", "", nullptr, check | always},
    {ITEM(mnuSlideShowLoopAround), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "-&Loop Around Mode"), "Ctrl+Shift+L", "", nullptr, check | always},
    {ITEM(mnuSlideShowShuffleMediaFile), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "Next Shuffle Media File"), "Ctrl+Shift+N", "", &V::mnuSlideShowShuffleMediaFile_Click},
    {ITEM(mnuSlideShowResetShuffleHistory), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "Reset Shuffle Media History List"), "Ctrl+Shift+H", "", &V::mnuSlideShowResetShuffleHistory_Click},
    {ITEM(mnuSlideShowToolbar), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "-Toolbar &Button Starts"), "", "", nullptr, submenu | always},
    {ITEM(mnuSlideShowInterval), "mnuSlideShow", QT_TRANSLATE_NOOP("frmMainViewer", "Media Change Time &Interval"), "Ctrl+Shift+I", "", &V::mnuSlideShowInterval_Click},

    {ITEM(mnuOptions), "", QT_TRANSLATE_NOOP("frmMainViewer", "&Options"), "", "", nullptr, submenu},
    {ITEM(mnuOptionsPreferences), "mnuOptions", QT_TRANSLATE_NOOP("frmMainViewer", "&Preferences"), "Ctrl+,", "configure", &V::mnuOptionsPreferences_Click},
    {ITEM(mnuOptionsMinimizeSystemTray), "mnuOptions", QT_TRANSLATE_NOOP("frmMainViewer", "&Minimize to System Tray"), "", "", nullptr, check | always},
    {ITEM(mnuOptionsDisplayOptions), "mnuOptions", QT_TRANSLATE_NOOP("frmMainViewer", "&Display Options"), "", "", &V::mnuOptionsDisplayOptions_Click},

    {ITEM(mnuTools), "", QT_TRANSLATE_NOOP("frmMainViewer", "&Tools"), "", "", nullptr, submenu},
    {ITEM(mnuToolsVolumeControls), "mnuTools", QT_TRANSLATE_NOOP("frmMainViewer", "&Volume Controls"), "Ctrl+Alt+V", "audio-volume-high", &V::mnuToolsVolumeControls_Click},

    {ITEM(mnuHelp), "", QT_TRANSLATE_NOOP("frmMainViewer", "&Help"), "", "", nullptr, submenu},
    {ITEM(mnuHelpHelp), "mnuHelp", QT_TRANSLATE_NOOP("frmMainViewer", "&Help"), "F1", "help-contents", &V::mnuHelpHelp_Click},
    {ITEM(mnuHelpNewVersion), "mnuHelp", QT_TRANSLATE_NOOP("frmMainViewer", "Check for &New Version"), "", "", &V::mnuHelpNewVersion_Click},
    {ITEM(mnuHelpAbout), "mnuHelp", QT_TRANSLATE_NOOP("frmMainViewer", "&About"), "", ""},
};

const ToolbarRow toolbarRows[] = {
    // key, caption, tip, icon, click, needsItem, needsPicture, hidden, group
    {"Directory", QT_TRANSLATE_NOOP("frmMainViewer", "Folder"), QT_TRANSLATE_NOOP("frmMainViewer", "Select (Browse For) Media Folder"), "folder-open", &V::mnuFileDirectory_Click, false, false, false, false},
    {"Load", QT_TRANSLATE_NOOP("frmMainViewer", "Load"), QT_TRANSLATE_NOOP("frmMainViewer", "Load Media File List"), "document-open", &V::mnuFileLoad_Click, false, false, false, false},
    {"Save", QT_TRANSLATE_NOOP("frmMainViewer", "Save"), QT_TRANSLATE_NOOP("frmMainViewer", "Save Media File List"), "document-save", &V::mnuFileSave_Click, true, false, false, false},
    {"Exit", QT_TRANSLATE_NOOP("frmMainViewer", "Exit"), QT_TRANSLATE_NOOP("frmMainViewer", "Exit Lumora"), "application-exit", &V::mnuFileExit_Click, false, false, false, false},
    {"Copy", QT_TRANSLATE_NOOP("frmMainViewer", "Copy"), QT_TRANSLATE_NOOP("frmMainViewer", "Copy Current Image To The Clipboard"), "edit-copy", &V::mnuPictureCopy_Click, true, true, false, true},
    {"wpaperc", "", QT_TRANSLATE_NOOP("frmMainViewer", "Set Current Image as Centered Wallpaper"), "wallpaper-centered", &V::mnuPictureWallPaperCentered_Click, true, true, false, true},
    {"wpapers", "", QT_TRANSLATE_NOOP("frmMainViewer", "Set Current Image as StretchedWallpaper"), "wallpaper-stretched", &V::mnuPictureWallPaperStretched_Click, true, true, false, false},
    {"wpapert", "", QT_TRANSLATE_NOOP("frmMainViewer", "Set Current Image as Tiled Wallpaper"), "wallpaper-tiled", &V::mnuPictureWallPaperTiled_Click, true, true, false, false},
    {"wpaperr", "", QT_TRANSLATE_NOOP("frmMainViewer", "Removes Current Wallpaper"), "wallpaper-removed", &V::mnuPictureWallPaperClear_Click, true, true, false, false},
    {"Previous", QT_TRANSLATE_NOOP("frmMainViewer", "Previous"), QT_TRANSLATE_NOOP("frmMainViewer", "Move To Previous Media File"), "go-previous", &V::mnuPicturePrevious_Click, true, false, false, true},
    {"Next", QT_TRANSLATE_NOOP("frmMainViewer", "Next"), QT_TRANSLATE_NOOP("frmMainViewer", "Move To Next Media File"), "go-next", &V::toolbarNext_Click, true, false, false, false},
    {"color", QT_TRANSLATE_NOOP("frmMainViewer", "Color"), QT_TRANSLATE_NOOP("frmMainViewer", "Display Color Balance Options"), "color-balance", nullptr, true, true, false, true},
    {"bright", "", QT_TRANSLATE_NOOP("frmMainViewer", "Display Contrast/Brightness Options"), "brightness-contrast", nullptr, true, true, false, false},
    {"rotate", "", QT_TRANSLATE_NOOP("frmMainViewer", "Rotate Image Right 90 degrees"), "object-rotate-right", nullptr, true, true, false, false},
    {"zoomdec", QT_TRANSLATE_NOOP("frmMainViewer", "Zoom -"), QT_TRANSLATE_NOOP("frmMainViewer", "Decrease Zoom Level"), "zoom-out", &V::zoomdec_Click, true, true, false, true},
    {"zoominc", QT_TRANSLATE_NOOP("frmMainViewer", "Zoom +"), QT_TRANSLATE_NOOP("frmMainViewer", "Increase Zoom Level"), "zoom-in", &V::zoominc_Click, true, true, false, false},
    {"filetype", QT_TRANSLATE_NOOP("frmMainViewer", "Settings"), QT_TRANSLATE_NOOP("frmMainViewer", "Display Program Properties "), "configure", &V::mnuOptionsPreferences_Click, false, false, false, true},
    {"zoom", QT_TRANSLATE_NOOP("frmMainViewer", "Editor"), QT_TRANSLATE_NOOP("frmMainViewer", "Display Image in Full Screen Viewer /  Pixelon"), "document-edit", &V::mnuPictureViewer_Click, true, true, false, true},
    {"thumb", QT_TRANSLATE_NOOP("frmMainViewer", "Thumbs"), QT_TRANSLATE_NOOP("frmMainViewer", "Display Thumbnail Viewer"), "view-list-icons", &V::mnuPictureThumbNailViewer_Click, true, false, false, false},
    {"print", "", "", "document-print", nullptr, true, true, true, false},
    {"slide", QT_TRANSLATE_NOOP("frmMainViewer", "Show"), QT_TRANSLATE_NOOP("frmMainViewer", "Display Media Show in Full Screen Viewer"), "media-show", &V::toolbarSlide_Click, true, false, false, false},
    {"About", QT_TRANSLATE_NOOP("frmMainViewer", "Help"), QT_TRANSLATE_NOOP("frmMainViewer", "Display Lumora About Information"), "help-contents", &V::mnuHelpHelp_Click, false, false, false, true},
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
