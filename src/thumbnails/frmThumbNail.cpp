#include "thumbnails/frmThumbNail.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/settings.h"
#include "shell/frmPreferences.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmMakeThumbNails.h"
#include "thumbnails/thumbnailcell.h"
#include "thumbnails/thumbnailsize.h"
#include "ui/background.h"
#include "ui/icons.h"
#include "viewer/frmMainViewer.h"

#include <utility>

namespace {
constexpr int relayoutAfter = 250; ///< milliseconds
constexpr QSize firstSize(900, 640);
constexpr QSize smallestSize(320, 300);
}

frmThumbNail::frmThumbNail(QWidget *parent)
    : FormMainWindow(parent)
    , StatusBar1(new StatusPanels({0, 4, 2, 1, 1}, this))
{
    setWindowTitle(tr("Tessaly Lumora - Thumbnail Viewer"));
    setWindowIcon(themedIcon(QStringLiteral("lumora")));
    setMinimumSize(smallestSize);
    resize(firstSize);
    setCentralWidget(picGrid);
    picGrid->setFocusPolicy(Qt::StrongFocus);
    picGrid->setAccessibleName(tr("Thumbnails"));
    picGrid->setFocus();
    VScroll1->setParent(picGrid);
    VScroll1->setOrientation(Qt::Vertical);
    // What is dragged is shown when it is let go: a page takes longer than a step of the pointer.
    VScroll1->setTracking(false);
    VScroll1->setFocusPolicy(Qt::NoFocus);
    VScroll1->setAccessibleName(tr("First thumbnail of the page"));
    VScroll1->setEnabled(false);
    StatusBar1->setObjectName(QStringLiteral("StatusBar1"));
    StatusBar1->setAutoFillBackground(true); // its texts are the palette's, the window's ground is not
    setStatusBar(StatusBar1);
    StatusBar1->setPanelText(1, tr("Current Image:"));
    cellAt(0);
    makeMenus();
    makeToolbar();
    m_heldSince.start();
    Timer4.setInterval(relayoutAfter);
    m_remake.setSingleShot(true);
    connect(&Timer4, &QTimer::timeout, this, &frmThumbNail::Timer4_Timer);
    connect(&m_remake, &QTimer::timeout, this, [this] { refreshCell(SelectedIndex - TopIndex); });
    connect(VScroll1, &QScrollBar::valueChanged, this, &frmThumbNail::VScroll1_Change);
    m_repeat.setSingleShot(true);
    connect(&m_repeat, &QTimer::timeout, this, &frmThumbNail::repeatStep);
    connect(VScroll1, &QScrollBar::actionTriggered, this, [this](int action) { m_barAction = action; });
    connect(VScroll1, &QScrollBar::sliderMoved, this, &frmThumbNail::showScrollTip);
}

frmThumbNail::~frmThumbNail() = default;

void frmThumbNail::Form_Load()
{
    restoreToolbar();
    FormLoaded = false;
    mnupopupmain->setEnabled(false);
    ThumbnailSize = currentThumbnailSize();
    mnuViewerThumbNailSize(ThumbnailSize)->setChecked(true);
    ShowNames = mnuViewerShowImageNames->isChecked();
    readBackColor();
    mnuThumbnailStyle->setChecked(form<frmPreferences>().chkThumbNailStyle->isChecked());
    enableSelectionCommands(false);
    placeOverMainViewer();
    form<frmDataBase>();
}

void frmThumbNail::Form_Activate()
{
    auto &preferences = form<frmPreferences>();
    PaintFormBackground(this, QStringLiteral("OTHER"));
    mnuThumbnailsCacheThumbnails->setChecked(preferences.chkCacheThumbnails->isChecked());
    mnuThumbnailsOverwrite->setChecked(preferences.chkOverWriteThumbnails->isChecked());
    mnuThumbnailStyle->setChecked(preferences.chkThumbNailStyle->isChecked());
    LeavingViewer = false;
    const bool open = form<frmDataBase>().DatabaseOpen;
    mnuThumbnailS->setEnabled(open); // its commands look themselves whether the cache is at work
    if (!open)
        mnuThumbnailsCacheThumbnails->setChecked(false);
    const QPointer<frmThumbNail> here(this);
    if (!std::exchange(m_activatedOnce, true)) {
        TopIndex = qMax(0, form<frmMainViewer>().lstDisplay->listIndex());
        constexpr int ticketsOfALayout = 2; // its own and that of its page
        const int undisturbed = m_pageTicket + ticketsOfALayout;
        SetItUp();
        if (!here || isUnloaded())
            return;
        FormLoaded = true;
        if (m_pageTicket != undisturbed) {
            if (VScroll1->isEnabled())
                TopIndex = VScroll1->value();
            mnuViewerRefresh_Click();
        } else if (width() != LastWidth || height() != LastHeight) {
            Form_Resize(); // it came while the first page was made
        }
    } else if (FormLoaded && pageFiles() != m_pageFiles) {
        // The list is another one than the page shows.
        mnuViewerRefresh_Click();
    }
}

/// The window comes up over the Main Viewer, where that stands.
void frmThumbNail::placeOverMainViewer()
{
    const auto &viewer = form<frmMainViewer>();
    if (!viewer.isVisible())
        return;
    if (viewer.isMaximized()) {
        setGeometry(viewer.normalGeometry());
        setWindowState(windowState() | Qt::WindowMaximized);
    } else {
        setGeometry(viewer.geometry());
    }
}

void frmThumbNail::Form_QueryUnload(bool &cancel)
{
    // Compaction and clearing have the database until they end.
    cancel = m_cacheAtWork && !globals.ProgramExiting;
    // A run asks whether it is to end.
    if (cancel && isLoaded<frmMakeThumbNails>())
        form<frmMakeThumbNails>().CancelRun();
}

void frmThumbNail::Form_Unload()
{
    ++m_pageTicket;
    Timer4.stop();
    m_remake.stop();
    m_repeat.stop();
    unload<frmDataBase>();
    if (globals.ProgramExiting)
        return;
    auto &viewer = form<frmMainViewer>();
    if (!viewer.isVisible())
        return;
    viewer.raise();
    viewer.activateWindow();
}

void frmThumbNail::setTemplatePicture(const Picture &picture)
{
    m_templatePicture = picture;
    imgThumbnail.front()->setPicture(picture.pixels);
}
