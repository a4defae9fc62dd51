#pragma once

#include "engine/picture.h"
#include "thumbnails/thumbnailgrid.h"
#include "ui/controls.h"
#include "ui/form.h"
#include "ui/guards.h"
#include "ui/statuspanels.h"

#include <QAction>
#include <QColor>
#include <QElapsedTimer>
#include <QHash>
#include <QLabel>
#include <QScrollBar>
#include <QTimer>
#include <QToolBar>

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <vector>

class QToolButton;
class ThumbnailCell;
class frmDataBase;
class frmThumbNail;

/// A row of the Thumbnail Viewer's menus. A command without a `click` has not been given to this build: it exists and
/// is not shown.
struct ThumbnailMenuRow
{
    QAction *frmThumbNail::*item;
    const char *name;
    const char *menu; ///< name of the menu it stands in; "" for the menu bar
    const char *caption; ///< "-" in front starts a new group
    const char *shortcut;
    const char *icon;
    void (frmThumbNail::*click)() = nullptr;
    enum Flag { Plain = 0, Submenu = 1, Check = 2, NeedsSelection = 4 };
    int flags = Plain;
};
std::span<const ThumbnailMenuRow> thumbnailMenuRows();

/// The Thumbnail Viewer: the DisplayList of the Main Viewer as pages of thumbnails. It holds no list of its own.
class frmThumbNail : public FormMainWindow
{
    Q_OBJECT
public:
    explicit frmThumbNail(QWidget *parent = nullptr);
    ~frmThumbNail() override;

    // --- controls: frmThumbNail.cpp
    CONTROL(picGrid, QWidget); ///< the client area between tool bar and status bar
    CONTROL(VScroll1, QScrollBar); ///< its value counts list items, not rows
    CONTROL(tblThumbnails, QToolBar);
    StatusPanels *StatusBar1;
    QTimer Timer4; ///< 250 ms; lays out anew after a resize
    /// Number 0 is the invisible template; 1 onward are the cells of the page, made when first needed, then reused.
    std::vector<ThumbnailCell *> imgThumbnail;
    std::vector<QLabel *> lblThumbNail;

    // --- menus: frmThumbNail_menus.cpp
    QAction *mnuFile{}, *mnuFileProperties{}, *mnuViewerCloseViewer{};
    QAction *mnuEdit{}, *mnuEditCopyFileName{}, *mnuEditCopyImage{};
    QAction *mnuView{}, *mnuViewToolbars{}, *mnuMainToolbar{}, *mnuViewToolbarsShowCaptions{},
        *mnuViewToolbarCaptionsBottom{}, *mnuViewToolbarCaptionsRight{}, *mnuViewerShowImageNames{},
        *mnuViewerMainViewer{}, *mnuViewerZoomViewer{}, *mnuThumbnailStyle{}, *mnuViewerThumbnailBackgroundColor{},
        *mnuViewerThumbNailSizes{}, *mnuViewerRefresh{};
    QAction *mnuThumbnailS{}, *mnuThumbnailsGenerateAll{}, *mnuThumbnailsGenerateAllSizes{}, *mnuThumbnailsCompact{},
        *mnuThumbnailsClearAllCache{}, *mnuThumbnailsClearCache{}, *mnuThumbnailsOverwrite{},
        *mnuThumbnailsCacheThumbnails{}, *mnuThumbnailStats{};
    QAction *mnuOptions{}, *mnuHelp{}, *mnuHelpHelp{}, *mnuHelpNewVersion{}, *mnuHelpAbout{};
    std::array<QAction *, 7> mnuOptionsPreferences{};
    QAction *mnupopupmain{};
    std::array<QAction *, 8> mnupopup{};
    /// The item of a size, 60 to 200 in steps of 10.
    QAction *mnuViewerThumbNailSize(int size) const;
    /// A button of the tool bar by its key: "Close", "Copy", "Labels", "Display", "Editor", "Properties", "Size",
    /// "Help".
    QAction *toolbarButton(const QString &key) const;
    void tblThumbnails_ButtonClick(const QString &key);
    void mnuMainToolbar_Click();
    void mnuViewToolbarsShowCaptions_Click();
    void mnuViewToolbarCaptionsBottom_Click();
    void mnuViewToolbarCaptionsRight_Click();

    /// The tool bar's "Labels" and "Size": names on and off; the next size, from the largest back to the smallest.
    void toolbarLabels_Click();
    void toolbarSize_Click();

    // --- commands: frmThumbNail_commands.cpp
    void mnuViewerCloseViewer_Click();
    void mnuEditCopyFileName_Click();
    void mnuEditCopyImage_Click();
    void mnuViewerShowImageNames_Click();
    void mnuViewerMainViewer_Click();
    void mnuViewerZoomViewer_Click();
    void mnuThumbnailStyle_Click();
    void mnuViewerThumbnailBackgroundColor_Click();
    void mnuViewerThumbNailSize_Click(int size);
    void mnuViewerRefresh_Click();
    void mnuThumbnailsOverwrite_Click();
    void mnuThumbnailsCacheThumbnails_Click();
    void mnuOptionsPreferences_Click(int index);
    void mnuHelpHelp_Click();
    void mnuHelpNewVersion_Click();
    void mnupopup_Click(int index);

    // --- the cache: frmThumbNail_cache.cpp
    void mnuThumbnailsCompact_Click();
    void mnuThumbnailsClearAllCache_Click();
    void mnuThumbnailsClearCache_Click();
    void mnuThumbnailStats_Click();

    // --- generation: frmThumbNail_generate.cpp
    /// Leaves the thumbnail of a file in the template's picture, from the cache or made anew; an empty picture when
    /// there is none. May let events in.
    void MakeOrLoadThumbnail(const QString &file, const QString &kind);
    void mnuThumbnailsGenerateAll_Click();
    void mnuThumbnailsGenerateAllSizes_Click();
    /// Begins to decode files that MakeOrLoadThumbnail will be called for next, in their order.
    void prepareThumbnails(const QStringList &files);
    /// The picture of number 0; a null one empties it.
    void setTemplatePicture(const Picture &picture);
    const Picture &templatePicture() const { return m_templatePicture; }

    /// Edge of a cell in pixels of the window: 60 to 200 in steps of 10.
    int ThumbnailSize = 80;
    QColor ThumbnailBackColor = Qt::black; ///< the ground of thumbnails

    // --- the page: frmThumbNail_page.cpp
    int PageCapacity = 0; ///< GridColumns * GridRows
    int GridColumns = 0;
    int GridRows = 0;
    int TopIndex = 0; ///< zero-based list index of the first cell
    int SelectedIndex = 0; ///< one-based list position of the selected file; 0 or less for none
    bool ShowNames = false;
    bool PageBusy = false; ///< ShowThumbnailPage runs
    bool FormLoaded = false; ///< the first layout is done
    bool LeavingViewer = false; ///< a double click is on its way to the Main Viewer
    bool SkipNextClick = false; ///< the next click belongs to a double click
    int LastWidth = 0; ///< client size at the last layout
    int LastHeight = 0;
    QString CurrentKind; ///< kind of the file in work

    void SetItUp();
    void ShowThumbnailPage();
    /// Fills panels 2 to 5 for the one-based `position`; -1 clears them.
    void ShowThumbNailInfo(int position);
    /// Runs over the cells `count` * 2 down to 1: takes their frames away, or hides them and with them what needs a
    /// selection.
    void ClearThumbnailGrid(int count, bool bordersOnly);
    void Timer4_Timer();

    // --- scrolling: frmThumbNail_scroll.cpp
    void VScroll1_Change();

    // --- events: frmThumbNail_events.cpp
    void Form_Load() override;
    void Form_Activate() override;
    void Form_QueryUnload(bool &cancel) override;
    void Form_Unload() override;
    void Form_Resize();
    void Form_KeyUp(int key);
    /// True when the key was the grid's.
    bool Form_KeyPress(int key);
    void imgThumbnail_Click(int cell);
    void imgThumbNail_DblClick(int cell);
    void imgThumbnail_MouseUp(int cell, Qt::MouseButton button, QPoint position);

Q_SIGNALS:
    /// A page stands complete.
    void pageShown();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    class CacheWork;
    void makeMenus();
    void makeSizeItems();
    void makePopup();
    void makeToolbar();
    void makeSizeDropDown(QToolButton *button);
    void applyToolbarStyle();
    void restoreToolbar();
    void chooseCaptions(bool right);
    void enableSelectionCommands(bool enabled);
    void placeOverMainViewer();
    void readBackColor();
    void copyImage();
    static bool hasPreferencesPage(int index);
    void clearCache(bool (frmDataBase::*clear)());

    GridMeasures measures() const;
    ThumbnailGrid computeGrid();
    void setUpScrollBar(const GridMeasures &measures);
    void applyScrollRange();
    int itemCount() const;
    QString itemAt(int index) const;
    QStringList pageFiles() const;
    QStringList filesToPrepare() const;
    QString selectedFile() const;
    /// The page is no more the one that a routine began: a newer one has come, or the window goes.
    bool isOver(int ticket) const;
    void holdFrame();
    void fillPage(const ThumbnailGrid &grid, int ticket);
    ThumbnailCell *cellAt(int number);
    void placeCell(int number, const ThumbnailGrid &grid);
    void fillCell(int number);
    void placeName(int number, const ThumbnailGrid &grid);
    void takeThumbnail(int number, const QString &file, const QString &kind);
    /// The cell shows an item of the page.
    bool isOnPage(int cell) const;
    void selectCell(int cell);
    void refreshCell(int cell);
    void cellClicked(int cell);
    PagePlace pagePlace() const;
    bool gridHasKeyboard() const;
    // --- on screens that are scaled up: frmThumbNail_sharp.cpp
    struct Sharpening;
    void sharpenPage();
    void dropSharpening();
    void takeSharper();
    std::shared_ptr<Sharpening> m_sharpening;

    void scrollTo(int top);
    void scrollBy(int items);
    void showScrollTip(int top);
    bool isArrowHeld() const;
    void repeatStep();
    void stepSize(int steps);

    Picture m_templatePicture;
    int m_templateUse = 0; ///< grows each time that a cell asks for a thumbnail
    QHash<QString, QAction *> m_toolbarButtons;
    std::vector<QAction *> m_sizeItems; ///< the smallest first
    QStringList m_pageFiles; ///< what the page was filled with
    int m_pageTicket = 0; ///< grows with each page; a fill that finds a newer one inside a yield ends
    std::optional<FrameHeld> m_frame; ///< the page before stays in sight until this one stands, for a moment at most
    QElapsedTimer m_heldSince;
    bool m_activatedOnce = false;
    bool m_settingUp = false;
    bool m_changingPage = false;
    int m_wantedTop = -1; ///< where the user has scrolled while a page was on its way
    bool m_refreshAfterPage = false;
    bool m_cacheAtWork = false;
    bool m_showingStats = false;
    QTimer m_remake; ///< runs out when a click was no double click
    QTimer m_repeat; ///< the bar, which is off while its page is made, forgets that an arrow is held
    int m_barAction = 0; ///< QAbstractSlider::SliderAction
    bool m_repeating = false;
    int m_wheelRest = 0; ///< of a notch
};
