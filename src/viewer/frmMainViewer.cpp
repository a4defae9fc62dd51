#include "viewer/frmMainViewer.h"

#include "app/globals.h"
#include "app/settings.h"
#include "app/startup.h"
#include "app/translations.h"
#include "editor/frmZoomView.h"
#include "engine/polyimage.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "shell/checkfornewversion.h"
#include "shell/frmPreferences.h"
#include "thumbnails/frmBrowseFolder.h"
#include "thumbnails/frmThumbNail.h"
#include "ui/icons.h"
#include "ui/yield.h"

#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QHeaderView>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QTabBar>
#include <QUrl>
#include <QVBoxLayout>

frmMainViewer::frmMainViewer(QWidget *parent)
    : FormMainWindow(parent)
    , Image1(new ImagePane(Picture1))
    , StatusBar1(new StatusPanels({0, 1, 1, 0, 0, 0}, this))
{
    setWindowTitle(tr("Tessaly Lumora V3"));
    setWindowIcon(themedIcon(QStringLiteral("lumora")));
    setAcceptDrops(true);
    Image1->setObjectName(QStringLiteral("Image1"));
    StatusBar1->setObjectName(QStringLiteral("StatusBar1"));
    setStatusBar(StatusBar1);
    StatusBar1->setPanelText(1, tr("Current Image:"));

    auto *client = new QWidget(this);
    setCentralWidget(client);
    for (QWidget *pane :
        {static_cast<QWidget *>(picFileListBox), static_cast<QWidget *>(Picture1), static_cast<QWidget *>(wmp9)})
        pane->setParent(client);
    Picture1->setAccessibleName(tr("Viewer pane"));
    Picture1->setAutoFillBackground(true);
    Picture1->setBackgroundRole(QPalette::Dark);
    Image1->setAccessibleName(tr("Current image"));
    wmp9->setAccessibleName(tr("Media player"));
    wmp9->hide();
    Picture1->installEventFilter(this);

    makeMenus();
    makeToolbar();
    makeListPane();

    connect(Image1, &ImagePane::wheelTurned, this, &frmMainViewer::wheelZoom);
    connect(Image1, &ImagePane::dragged, this, &frmMainViewer::panBy);
    connect(Image1, &ImagePane::painted, this, [this] {
        Q_EMIT itemPainted();
        prefetchNeighbours();
    });
    connect(wmp9, &MediaPlayerControl::PlayStateChange, this, &frmMainViewer::wmp9_PlayStateChange);
    tmrSlideShow.setTimerType(Qt::PreciseTimer);
    connect(&tmrSlideShow, &QTimer::timeout, this, &frmMainViewer::tmrSlideShow_Timer);
    // No tick stores the volume while nothing plays, and the next item would play with the one before.
    connect(wmp9, &MediaPlayerControl::VolumeChosen, this,
        [](int volume) { saveOption("MMVolume", QString::number(volume)); });
    connect(&tmrShowPlayTime, &QTimer::timeout, this, &frmMainViewer::tmrShowPlayTime_Timer);
    tmrShowPlayTime.setInterval(500);
    connect(&Timer1, &QTimer::timeout, this, &frmMainViewer::Timer1_Timer);
    // The clock of the status bar; a second's look keeps the minute right.
    connect(&m_clock, &QTimer::timeout, this, &frmMainViewer::showDateAndTime);
    m_clock.start(1000);
    showDateAndTime();
    restorePlace();
}

frmMainViewer::~frmMainViewer() = default;

void frmMainViewer::showDateAndTime()
{
    const QDateTime now = QDateTime::currentDateTime();
    StatusBar1->setPanelText(5, locale().toString(now.date(), QLocale::ShortFormat));
    StatusBar1->setPanelText(6, locale().toString(now.time(), QLocale::ShortFormat));
}

void frmMainViewer::makeListPane()
{
    struct Button
    {
        QPushButton *control;
        const char *caption;
        const char *tip;
        const char *icon;
        void (frmMainViewer::*click)();
    };
    const Button buttons[] = {
        {cmdUp, QT_TR_NOOP("Move &Up"), QT_TR_NOOP("Move last selected image UP the list"), "go-up",
            &frmMainViewer::MoveDisplayItemUp},
        {cmdDown, QT_TR_NOOP("Move &Down"), QT_TR_NOOP("Move last selected image down the list."), "go-down",
            &frmMainViewer::MoveDisplayItemDown},
        {cmdRightOne, QT_TR_NOOP("Add &Selected"),
            QT_TR_NOOP("Add all selected file names from the Selection list to the Display List."), "list-add",
            &frmMainViewer::AddSelectedToDisplayList},
        {cmdRightAll, QT_TR_NOOP("&Add All"),
            QT_TR_NOOP("Add all file names from the Selection list to the Display list."), "list-add-all",
            &frmMainViewer::cmdRightAll_Click},
        {cmdLeftOne, QT_TR_NOOP("Remove Se&lected"),
            QT_TR_NOOP("Remove all selected file names from the Display list."), "list-remove",
            &frmMainViewer::RemoveSelectedFromDisplayList},
        {cmdLeftAll, QT_TR_NOOP("&Remove All"), QT_TR_NOOP("Remove all file names from the Display list."),
            "list-remove-all", &frmMainViewer::ClearDisplayList},
        {cmdClearSelectionList, QT_TR_NOOP("&Clear Selection List"),
            QT_TR_NOOP("Clear all files from the selection list."), "edit-clear-list",
            &frmMainViewer::cmdClearSelectionList_Click},
    };
    for (const Button &button : buttons) {
        button.control->setParent(picFileListBox);
        button.control->setText(tr(button.caption));
        button.control->setToolTip(tr(button.tip));
        button.control->setIcon(themedIcon(QString::fromLatin1(button.icon)));
        connect(button.control, &QPushButton::clicked, this, button.click);
    }
    for (const auto &[item, button] : std::initializer_list<std::pair<QAction *, QPushButton *>>{
             {mnuPictureAddOne, cmdRightOne}, {mnuPictureAddAll, cmdRightAll}, {mnuPictureRemoveOne, cmdLeftOne},
             {mnuPictureRemoveAll, cmdLeftAll}, {mnuFileClear, cmdLeftAll}})
        item->setToolTip(button->toolTip());
    const auto toggle = [this](QPushButton *button, const QString &text, const QString &tip, QAction *item) {
        button->setParent(picFileListBox);
        button->setText(text);
        button->setToolTip(tip);
        button->setAccessibleName(tip);
        connect(button, &QPushButton::clicked, item, &QAction::trigger);
    };
    toggle(cmdWideMediaPlayer, QStringLiteral("<"), tr("Toggle Viewer Width State"), mnuViewFullPlayerImage);
    toggle(cmdWideList, QStringLiteral(">"), tr("Toggle List Width State"), mnuViewFullWidthList);

    tabFileList->setParent(picFileListBox);
    tabFileList->setDocumentMode(true);
    // The two lists are never in sight together: a drag that waits over a tab brings its list to the front.
    tabFileList->tabBar()->setAcceptDrops(true);
    tabFileList->tabBar()->setChangeCurrentOnDrag(true);
    tabFileList->addTab(lstSelect, tr("Selection"));
    tabFileList->addTab(lstDisplay, tr("Display"));
    lstSelect->setAccessibleName(tr("Selection list"));
    lstDisplay->setAccessibleName(tr("Display list"));
    tabFileList->setAccessibleName(tr("Lists"));
    for (QLabel *label : {lblCountLabel, lblCount, lblItemUseLabel, CurrentPicture, txtPrgTitle})
        label->setParent(picFileListBox);
    lblCountLabel->setText(tr("Files in List:"));
    lblItemUseLabel->setText(tr("Item In Use:"));
    lblCount->setText(QStringLiteral("0"));
    lblCount->setAccessibleDescription(tr("Files in list"));
    CurrentPicture->setAccessibleDescription(tr("Item in use"));
    txtPrgTitle->setAlignment(Qt::AlignCenter);
    lblTextSize->hide();

    // Kept for the columns it once showed; nothing fills it and it stays out of sight.
    lsvDisplay->setHeaderLabels({tr("Full FileName"), tr("Drive"), tr("Path"), tr("FileName")});
    const char *const keys[] = {"FullFileName", "Drive", "Path", "FileName"};
    for (int column = 0; column < 4; ++column)
        lsvDisplay->headerItem()->setData(column, Qt::UserRole, QString::fromLatin1(keys[column]));
    lsvDisplay->setSortingEnabled(true);
    lsvDisplay->hide();
    Command1->hide();
    connect(Command1, &QPushButton::clicked, this, [this] {
        const int wide = lsvDisplay->columnWidth(0) > 0 ? 0 : 200;
        for (int column = 0; column < lsvDisplay->columnCount(); ++column)
            lsvDisplay->setColumnWidth(column, wide);
    });

    connect(lstSelect, &ListBox::Click, this, &frmMainViewer::ShowSelectedSelectionItem);
    connect(lstSelect, &ListBox::DblClick, this, &frmMainViewer::AddSelectedToDisplayList);
    connect(lstDisplay, &ListBox::Click, this, &frmMainViewer::ShowSelectedDisplayItem);
    connect(lstDisplay, &ListBox::DblClick, this, &frmMainViewer::lstDisplay_DblClick);
    connect(lstDisplay, &ListBox::KeyPress, this, &frmMainViewer::lstDisplay_KeyPress);
    connect(lstDisplay, &ListBox::DragDrop, this, &frmMainViewer::AddSelectedToDisplayList);
    connect(lstDisplay, &ListBox::filesDropped, this, &frmMainViewer::addDroppedFiles);
    connect(lstSelect, &ListBox::filesDropped, this, &frmMainViewer::addDroppedFiles);
    connect(lstDisplay, &ListBox::MouseMove, this, &frmMainViewer::lstDisplay_MouseMove);
    lstSelect->setDragEnabled(true);
    lstSelect->setAcceptDrops(true);
    lstDisplay->setAcceptDrops(true);
    connect(tabFileList, &QTabWidget::currentChanged, this, &frmMainViewer::tabFileList_Change);

    setTabOrder(tabFileList, lstSelect);
    QWidget *before = lstDisplay;
    for (QWidget *control : std::initializer_list<QWidget *>{cmdClearSelectionList, cmdRightOne, cmdLeftOne,
             cmdRightAll, cmdLeftAll, cmdUp, cmdDown, cmdWideMediaPlayer, cmdWideList}) {
        setTabOrder(before, control);
        before = control;
    }
}

bool frmMainViewer::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == Picture1 && event->type() == QEvent::Resize)
        Picture1_Resize();
    return FormMainWindow::eventFilter(watched, event);
}

void frmMainViewer::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void frmMainViewer::dropEvent(QDropEvent *event)
{
    QStringList paths;
    for (const QUrl &url : event->mimeData()->urls()) {
        const QString path = pathFromFileUri(QString::fromLatin1(url.toEncoded()));
        if (!path.isEmpty())
            paths.append(path);
    }
    event->acceptProposedAction();
    addDroppedFiles(paths);
}

void frmMainViewer::mnuPictureNext_Click()
{
    NextListItem();
}

void frmMainViewer::mnuPicturePrevious_Click()
{
    PreviousListItem();
}

void frmMainViewer::mnuFileExit_Click()
{
    ShutDownProgram();
}

void frmMainViewer::mnuPictureCopy_Click()
{
    const auto picture = Image1->picture();
    if (!picture)
        return;
    auto *content = new QMimeData;
    content->setImageData(picture->full().pixels);
    // A metafile goes as it is too, for programs that take the drawing.
    if (globals.CurrentMediaFile.contains(QLatin1String(".WMF"), Qt::CaseInsensitive)) {
        if (const auto bytes = readFile(globals.CurrentMediaFile, 64 << 20))
            content->setData(QStringLiteral("image/x-wmf"), *bytes);
    }
    QGuiApplication::clipboard()->clear();
    QGuiApplication::clipboard()->setMimeData(content);
}

void frmMainViewer::mnuEditCopyPictureLink_Click()
{
    QGuiApplication::clipboard()->setText(lstDisplay->text());
}

void frmMainViewer::mnuPictureViewer_Click()
{
    auto &editor = form<frmZoomView>();
    editor.show();
    editor.raise();
    editor.activateWindow();
}

void frmMainViewer::mnuBrowseFolderView_Click()
{
    auto &browser = form<frmBrowseFolder>();
    browser.show();
    browser.raise();
    browser.activateWindow();
}

void frmMainViewer::mnuPictureThumbNailViewer_Click()
{
    auto &thumbnails = form<frmThumbNail>();
    thumbnails.show();
    thumbnails.raise();
    thumbnails.activateWindow();
}

void frmMainViewer::mnuOptionsPreferences_Click()
{
    auto &preferences = form<frmPreferences>();
    preferences.SSTab1->setCurrentIndex(frmPreferences::FileTypes);
    preferences.setWindowModality(Qt::ApplicationModal);
    preferences.exec();
    // An option of the viewer may have changed.
    Form_Resize();
}

void frmMainViewer::mnuHelpNewVersion_Click()
{
    CheckForNewVersion(this);
}

void frmMainViewer::mnuHelpHelp_Click()
{
    // The page travels inside the program; a browser needs it as a file.
    QFile page(inTextLanguage(QStringLiteral(":/lumora/help/index.html")));
    const QString path = cacheFolder() + QStringLiteral("help.html");
    if (!page.open(QIODevice::ReadOnly) || !writeFileAtomically(path, page.readAll()))
        return;
    QDesktopServices::openUrl(QUrl(fileUri(path)));
}
