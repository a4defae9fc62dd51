#include "thumbnails/frmThumbNail.h"

#include "app/settings.h"
#include "thumbnails/thumbnailsize.h"
#include "ui/menurows.h"

#include <QMenu>
#include <QMenuBar>
#include <QToolButton>

namespace {

using T = frmThumbNail;
constexpr int submenu = ThumbnailMenuRow::Submenu;
constexpr int check = ThumbnailMenuRow::Check;
constexpr int selection = ThumbnailMenuRow::NeedsSelection;

#define ITEM(name) &T::name, #name
// clang-format off
const ThumbnailMenuRow rows[] = {
    {ITEM(mnuFile), "", QT_TRANSLATE_NOOP("frmThumbNail", "&File"), "", "", nullptr, submenu},
    {ITEM(mnuFileProperties), "mnuFile", QT_TRANSLATE_NOOP("frmThumbNail", "&Properties"), "Alt+Return", "document-properties", nullptr, selection},
    {ITEM(mnuViewerCloseViewer), "mnuFile", QT_TRANSLATE_NOOP("frmThumbNail", "-&Close Viewer"), "Ctrl+W", "window-close", &T::mnuViewerCloseViewer_Click},

    {ITEM(mnuEdit), "", QT_TRANSLATE_NOOP("frmThumbNail", "&Edit"), "", "", nullptr, submenu},
    {ITEM(mnuEditCopyFileName), "mnuEdit", QT_TRANSLATE_NOOP("frmThumbNail", "C&opy Image Filename to Clipboard"), "Ctrl+Shift+C", "insert-link", &T::mnuEditCopyFileName_Click, selection},
    {ITEM(mnuEditCopyImage), "mnuEdit", QT_TRANSLATE_NOOP("frmThumbNail", "&Copy Image to Clipboard"), "Ctrl+C", "edit-copy", &T::mnuEditCopyImage_Click},

    {ITEM(mnuView), "", QT_TRANSLATE_NOOP("frmThumbNail", "&View"), "", "", nullptr, submenu},
    {ITEM(mnuViewToolbars), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "&Toolbars"), "", "", nullptr, submenu},
    {ITEM(mnuMainToolbar), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmThumbNail", "&Main Toolbar"), "Ctrl+Shift+T", "", &T::mnuMainToolbar_Click, check},
    {ITEM(mnuViewToolbarsShowCaptions), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmThumbNail", "Show Captions"), "Ctrl+Shift+K", "", &T::mnuViewToolbarsShowCaptions_Click, check},
    {ITEM(mnuViewToolbarCaptionsBottom), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmThumbNail", "Captions at Bottom"), "Ctrl+Shift+B", "", &T::mnuViewToolbarCaptionsBottom_Click, check},
    {ITEM(mnuViewToolbarCaptionsRight), "mnuViewToolbars", QT_TRANSLATE_NOOP("frmThumbNail", "Captions at Right"), "Ctrl+Shift+R", "", &T::mnuViewToolbarCaptionsRight_Click, check},
    {ITEM(mnuViewerShowImageNames), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "-&Show Image Names"), "Ctrl+Shift+N", "", &T::mnuViewerShowImageNames_Click, check},
    {ITEM(mnuViewerThumbNailSizes), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "Thumb&Nail Size"), "", "", nullptr, submenu},
    {ITEM(mnuThumbnailStyle), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "T&humbnail Style"), "", "", &T::mnuThumbnailStyle_Click, check},
    {ITEM(mnuViewerThumbnailBackgroundColor), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "Th&umbnail Background Color"), "", "lumora-color", &T::mnuViewerThumbnailBackgroundColor_Click},
    {ITEM(mnuViewerMainViewer), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "-&Display Image in Main Viewer"), "Return", "image-x-generic", &T::mnuViewerMainViewer_Click, selection},
    {ITEM(mnuViewerZoomViewer), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "Display in &Zoom Viewer / Pixelon"), "Ctrl+E", "document-edit", &T::mnuViewerZoomViewer_Click, selection},
    {ITEM(mnuViewerRefresh), "mnuView", QT_TRANSLATE_NOOP("frmThumbNail", "-&Refresh"), "F5", "view-refresh", &T::mnuViewerRefresh_Click},

    {ITEM(mnuThumbnailS), "", QT_TRANSLATE_NOOP("frmThumbNail", "&Thumbnails"), "", "", nullptr, submenu},
    {ITEM(mnuThumbnailsGenerateAll), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "&Generate All Thumbnails"), "Ctrl+G", "", &T::mnuThumbnailsGenerateAll_Click},
    {ITEM(mnuThumbnailsGenerateAllSizes), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "G&enerate All Sizes of Thumbnails"), "Ctrl+Shift+G", "", &T::mnuThumbnailsGenerateAllSizes_Click},
    {ITEM(mnuThumbnailsCompact), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "-Co&mpact Thumbnail Database"), "", "", &T::mnuThumbnailsCompact_Click},
    {ITEM(mnuThumbnailsClearAllCache), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "C&lear Thumbnail Cache All Sizes"), "", "", &T::mnuThumbnailsClearAllCache_Click},
    {ITEM(mnuThumbnailsClearCache), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "&Clear Thumbnail Cache For Current Size"), "", "", &T::mnuThumbnailsClearCache_Click},
    {ITEM(mnuThumbnailsOverwrite), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "-&Overwrite existing thumbnails"), "", "", &T::mnuThumbnailsOverwrite_Click, check},
    {ITEM(mnuThumbnailsCacheThumbnails), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "Use &Thumbnails Caching"), "", "", &T::mnuThumbnailsCacheThumbnails_Click, check},
    {ITEM(mnuThumbnailStats), "mnuThumbnailS", QT_TRANSLATE_NOOP("frmThumbNail", "-Thumbnail Database &Stats"), "", "view-statistics", &T::mnuThumbnailStats_Click},

    {ITEM(mnuOptions), "", QT_TRANSLATE_NOOP("frmThumbNail", "&Options"), "", "", nullptr, submenu},

    {ITEM(mnuHelp), "", QT_TRANSLATE_NOOP("frmThumbNail", "&Help"), "", "", nullptr, submenu},
    {ITEM(mnuHelpHelp), "mnuHelp", QT_TRANSLATE_NOOP("frmThumbNail", "&Help"), "F1", "help-contents", &T::mnuHelpHelp_Click},
    {ITEM(mnuHelpNewVersion), "mnuHelp", QT_TRANSLATE_NOOP("frmThumbNail", "Check for &New Version"), "", "", &T::mnuHelpNewVersion_Click},
    {ITEM(mnuHelpAbout), "mnuHelp", QT_TRANSLATE_NOOP("frmThumbNail", "&About"), "", ""},
};

/// A button of tblThumbnails, dispatched by its key.
struct ButtonRow
{
    const char *key;
    const char *caption;
    const char *toolTip;
    const char *icon;
    void (T::*click)(); ///< null: its command has not been given to this build
    bool needsSelection;
    bool group; ///< starts a new group
};
const ButtonRow buttonRows[] = {
    {"Close", QT_TRANSLATE_NOOP("frmThumbNail", "Close"), QT_TRANSLATE_NOOP("frmThumbNail", "Close Thumbnail Viewer"), "window-close", &T::mnuViewerCloseViewer_Click, false, false},
    {"Copy", QT_TRANSLATE_NOOP("frmThumbNail", "Copy"), QT_TRANSLATE_NOOP("frmThumbNail", "Copy Selected Image Filename to Clipboard"), "edit-copy", &T::mnuEditCopyFileName_Click, true, true},
    {"Labels", QT_TRANSLATE_NOOP("frmThumbNail", "Labels"), QT_TRANSLATE_NOOP("frmThumbNail", "Show Image Name Labels"), "lumora-labels", &T::toolbarLabels_Click, false, false},
    {"Display", QT_TRANSLATE_NOOP("frmThumbNail", "Display"), QT_TRANSLATE_NOOP("frmThumbNail", "Display Selected Image In Main Viewer"), "image-x-generic", &T::mnuViewerMainViewer_Click, true, true},
    {"Editor", QT_TRANSLATE_NOOP("frmThumbNail", "Editor"), QT_TRANSLATE_NOOP("frmThumbNail", "Display Image in Pixelon Editor"), "document-edit", &T::mnuViewerZoomViewer_Click, true, false},
    {"Properties", QT_TRANSLATE_NOOP("frmThumbNail", "Properties"), QT_TRANSLATE_NOOP("frmThumbNail", "Display Selected Image Properties"), "document-properties", nullptr, true, false},
    {"Size", QT_TRANSLATE_NOOP("frmThumbNail", "Size"), QT_TRANSLATE_NOOP("frmThumbNail", "Select the thumbnail size"), "lumora-thumbnails", &T::toolbarSize_Click, false, true},
    {"Help", QT_TRANSLATE_NOOP("frmThumbNail", "Help"), QT_TRANSLATE_NOOP("frmThumbNail", "Display Help - About"), "help-contents", &T::mnuHelpHelp_Click, false, true},
};

struct PopupRow
{
    const char *caption; ///< "-" alone is a line
    const char *icon;
    bool shown;
};
constexpr PopupRow popupRows[] = {
    {QT_TRANSLATE_NOOP("frmThumbNail", "&Make ThumbNail"), "", true},
    {QT_TRANSLATE_NOOP("frmThumbNail", "&Properties"), "document-properties", false},
    {QT_TRANSLATE_NOOP("frmThumbNail", "&Copy Image to Clipboard"), "edit-copy", true},
    {QT_TRANSLATE_NOOP("frmThumbNail", "C&opy Media Filename to Clipboard"), "insert-link", true},
    {QT_TRANSLATE_NOOP("frmThumbNail", "&Display Media File"), "image-x-generic", true},
    {QT_TRANSLATE_NOOP("frmThumbNail", "Display in &Zoom Viewer / Pixelon"), "document-edit", true},
    {"-", "", false},
    {QT_TRANSLATE_NOOP("frmThumbNail", "&About Tessaly Graphics Viewer"), "", false},
};

constexpr const char *preferencesCaptions[] = {
    QT_TRANSLATE_NOOP("frmThumbNail", "&Associate File Types"),
    QT_TRANSLATE_NOOP("frmThumbNail", "&Default Folder Options"),
    QT_TRANSLATE_NOOP("frmThumbNail", "&Information Summary"),
    QT_TRANSLATE_NOOP("frmThumbNail", "M&edia Player Options"),
    QT_TRANSLATE_NOOP("frmThumbNail", "&Quality / Size Options"),
    QT_TRANSLATE_NOOP("frmThumbNail", "Select &File Types"),
    QT_TRANSLATE_NOOP("frmThumbNail", "&Thumbnail Options"),
};
// clang-format on
#undef ITEM

QAction *madeAction(QMenu *menu, const QString &caption, const char *name, int index)
{
    QAction *action = menu->addAction(caption);
    action->setObjectName(QStringLiteral("%1(%2)").arg(QLatin1String(name)).arg(index));
    return action;
}

}

std::span<const ThumbnailMenuRow> thumbnailMenuRows()
{
    return rows;
}

void frmThumbNail::makeMenus()
{
    makeMenuRows(*this, std::span<const ThumbnailMenuRow>(rows));
    mnuViewerMainViewer->setShortcuts({QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)});
    mnuMainToolbar->setChecked(true);
    mnuViewToolbarsShowCaptions->setChecked(true);
    makeSizeItems();
    makePopup();
    for (int index = 0; index < int(mnuOptionsPreferences.size()); ++index) {
        QAction *item = madeAction(mnuOptions->menu(), tr(preferencesCaptions[index]), "mnuOptionsPreferences", index);
        item->setVisible(hasPreferencesPage(index));
        connect(item, &QAction::triggered, this, [this, index] { mnuOptionsPreferences_Click(index); });
        mnuOptionsPreferences[std::size_t(index)] = item;
    }
}

void frmThumbNail::makeSizeItems()
{
    for (int size = smallestThumbnailSize; size <= largestThumbnailSize; size += thumbnailSizeStep) {
        QAction *item =
            madeAction(mnuViewerThumbNailSizes->menu(), QString::number(size), "mnuViewerThumbNailSize", size);
        item->setCheckable(true);
        connect(item, &QAction::triggered, this, [this, size] { mnuViewerThumbNailSize_Click(size); });
        m_sizeItems.push_back(item);
    }
}

QAction *frmThumbNail::mnuViewerThumbNailSize(int size) const
{
    return m_sizeItems[std::size_t((size - smallestThumbnailSize) / thumbnailSizeStep)];
}

void frmThumbNail::makePopup()
{
    auto *menu = new QMenu(tr("&Thumbnails"), this);
    mnupopupmain = menu->menuAction();
    mnupopupmain->setObjectName(QStringLiteral("mnupopupmain"));
    for (int index = 0; index < int(mnupopup.size()); ++index) {
        const PopupRow &row = popupRows[index];
        QAction *item = madeAction(menu, *row.caption == '-' ? QString() : tr(row.caption), "mnupopup", index);
        item->setSeparator(*row.caption == '-');
        item->setVisible(row.shown);
        if (*row.icon && row.shown)
            item->setIcon(themedIcon(QString::fromLatin1(row.icon)));
        connect(item, &QAction::triggered, this, [this, index] { mnupopup_Click(index); });
        mnupopup[std::size_t(index)] = item;
    }
}

void frmThumbNail::makeToolbar()
{
    addFixedToolBar(*this, *tblThumbnails);
    tblThumbnails->setContextMenuPolicy(Qt::PreventContextMenu);
    for (const ButtonRow &row : buttonRows) {
        if (row.group)
            tblThumbnails->addSeparator();
        const QString key = QString::fromLatin1(row.key);
        QAction *action =
            tblThumbnails->addAction(row.click ? themedIcon(QString::fromLatin1(row.icon)) : QIcon(), tr(row.caption));
        action->setObjectName(QStringLiteral("tblThumbnails.") + key);
        action->setToolTip(tr(row.toolTip));
        action->setVisible(row.click);
        connect(action, &QAction::triggered, this, [this, key] { tblThumbnails_ButtonClick(key); });
        auto *button = qobject_cast<QToolButton *>(tblThumbnails->widgetForAction(action));
        button->setObjectName(action->objectName());
        button->setAccessibleName(tr(row.caption));
        button->setFocusPolicy(Qt::TabFocus);
        if (key == QLatin1String("Size"))
            makeSizeDropDown(button);
        m_toolbarButtons.insert(key, action);
    }
    toolbarButton(QStringLiteral("Labels"))->setCheckable(true);
    connect(mnuViewerShowImageNames, &QAction::toggled, toolbarButton(QStringLiteral("Labels")), &QAction::setChecked);
}

/// Its own items, by keys: the list of sizes hangs under the button.
void frmThumbNail::makeSizeDropDown(QToolButton *button)
{
    auto *menu = new QMenu(button);
    for (int size = smallestThumbnailSize; size <= largestThumbnailSize; size += thumbnailSizeStep) {
        QAction *item = menu->addAction(QString::number(size));
        item->setObjectName(QStringLiteral("size%1").arg(size));
        item->setCheckable(true);
        connect(item, &QAction::triggered, this, [this, size] { mnuViewerThumbNailSize_Click(size); });
        connect(mnuViewerThumbNailSize(size), &QAction::toggled, item, &QAction::setChecked);
    }
    button->setMenu(menu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
}

QAction *frmThumbNail::toolbarButton(const QString &key) const
{
    return m_toolbarButtons.value(key);
}

void frmThumbNail::tblThumbnails_ButtonClick(const QString &key)
{
    for (const ButtonRow &row : buttonRows) {
        if (key == QLatin1String(row.key) && row.click)
            (this->*row.click)();
    }
}

void frmThumbNail::enableSelectionCommands(bool enabled)
{
    for (const ButtonRow &row : buttonRows) {
        if (row.needsSelection)
            toolbarButton(QString::fromLatin1(row.key))->setEnabled(enabled);
    }
    for (const ThumbnailMenuRow &row : rows) {
        if (row.flags & ThumbnailMenuRow::NeedsSelection)
            (this->*row.item)->setEnabled(enabled);
    }
}

// --- the tool bar's look

void frmThumbNail::applyToolbarStyle()
{
    Qt::ToolButtonStyle style = Qt::ToolButtonIconOnly;
    if (mnuViewToolbarsShowCaptions->isChecked())
        style = mnuViewToolbarCaptionsRight->isChecked() ? Qt::ToolButtonTextBesideIcon : Qt::ToolButtonTextUnderIcon;
    tblThumbnails->setToolButtonStyle(style);
    if (FormLoaded)
        SetItUp();
}

namespace {

constexpr char toolbars[] = "Toolbars";

bool toolbarSetting(const char *key)
{
    return truth(GetSetting({}, QLatin1String(toolbars), QLatin1String(key), QStringLiteral("-1")), true);
}

void saveToolbarSetting(const char *key, bool on)
{
    SaveSetting({}, QLatin1String(toolbars), QLatin1String(key), truthText(on));
}

}

/// The stored state comes by the same handlers as a click.
void frmThumbNail::restoreToolbar()
{
    mnuMainToolbar->setChecked(toolbarSetting("ThumbNailsToolbar"));
    mnuMainToolbar_Click();
    mnuViewToolbarsShowCaptions->setChecked(toolbarSetting("ThumbNailsShowCaptions"));
    const bool bottom = toolbarSetting("ThumbNailsCaptionsBottom");
    const bool right = toolbarSetting("ThumbNailsCaptionsRight");
    if (bottom)
        mnuViewToolbarCaptionsBottom_Click();
    if (right)
        mnuViewToolbarCaptionsRight_Click();
    mnuViewToolbarsShowCaptions_Click();
}

void frmThumbNail::mnuMainToolbar_Click()
{
    tblThumbnails->setVisible(mnuMainToolbar->isChecked());
    saveToolbarSetting("ThumbNailsToolbar", mnuMainToolbar->isChecked());
    if (FormLoaded)
        SetItUp();
}

void frmThumbNail::mnuViewToolbarsShowCaptions_Click()
{
    saveToolbarSetting("ThumbNailsShowCaptions", mnuViewToolbarsShowCaptions->isChecked());
    applyToolbarStyle();
}

void frmThumbNail::chooseCaptions(bool right)
{
    mnuViewToolbarCaptionsBottom->setChecked(!right);
    mnuViewToolbarCaptionsRight->setChecked(right);
    saveToolbarSetting("ThumbNailsCaptionsBottom", !right);
    saveToolbarSetting("ThumbNailsCaptionsRight", right);
    applyToolbarStyle();
}

void frmThumbNail::mnuViewToolbarCaptionsBottom_Click()
{
    chooseCaptions(false);
}

void frmThumbNail::mnuViewToolbarCaptionsRight_Click()
{
    chooseCaptions(true);
}
