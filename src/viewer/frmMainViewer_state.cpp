#include "viewer/frmMainViewer.h"

#include "app/globals.h"
#include "app/mediatypes.h"
#include "platform/wallpaper.h"
#include "shell/frmSystemTray.h"

// What is usable: by the entries of the two lists, and by the kind of the current item.

namespace {

using V = frmMainViewer;

constexpr QRgb listWithEntries = qRgb(0xc0, 0xc0, 0xff);
constexpr QRgb listEmpty = qRgb(0x80, 0x80, 0x80);

/// Off while the DisplayList is empty.
constexpr QAction *V::*needsItem[] = {&V::mnuFileBatchConvertImages, &V::mnuFileSendToEmailAttachment,
    &V::mnuFilePrintImage, &V::mnuFilePrinterSetup, &V::mnuPictureRemoveOne, &V::mnuPictureRemoveAll, &V::mnuEdit,
    &V::mnuPictureNext, &V::mnuPicturePrevious, &V::mnuFileSaveImageAs, &V::mnuFileSaveThumbnail, &V::mnuSlideShow,
    &V::mnuFileSave, &V::mnuFileSaveAs, &V::mnuViewFullScreen, &V::mnuFileClear, &V::mnuPictureCopy, &V::mnuEditZoom,
    &V::mnuEditZoomIn, &V::mnuEditZoomOut, &V::mnuPictureThumbNailViewer, &V::mnuPictureImageSummary,
    &V::mnuPictureDesktopWallpaper, &V::mnuFileProperties};

/// Off for a "Motion" item as well.
constexpr QAction *V::*needsPicture[] = {&V::mnuFileSendToEmailAttachment, &V::mnuFilePrintImage,
    &V::mnuFilePrinterSetup, &V::mnuFileProperties, &V::mnuFileSaveImageAs, &V::mnuFileSaveThumbnail, &V::mnuEditZoom,
    &V::mnuEditZoomIn, &V::mnuEditZoomOut, &V::mnuPictureCopy, &V::mnuPictureViewer, &V::mnuPictureDesktopWallpaper};

constexpr QPushButton *V::*displayButtons[] = {&V::cmdUp, &V::cmdDown, &V::cmdLeftOne, &V::cmdLeftAll};
constexpr QPushButton *V::*selectionButtons[] = {&V::cmdClearSelectionList, &V::cmdRightOne, &V::cmdRightAll};
constexpr QAction *V::*selectionItems[] = {&V::mnuPictureAddOne, &V::mnuPictureAddAll};

}

void frmMainViewer::UpdateMenuAndToolbarState()
{
    const bool display = !lstDisplay->isEmpty();
    const bool selection = !lstSelect->isEmpty();
    const bool motion = display && GetMediaKind(lstDisplay->text()) == kindMotion;

    for (QAction *V::*item : needsItem)
        (this->*item)->setEnabled(display);
    // The editor can start without a picture, so an empty list leaves it on.
    mnuPictureViewer->setEnabled(true);
    mnuPictureWallPaperRestore->setEnabled(desktopWallpaper().canRestore());
    if (motion) {
        for (QAction *V::*item : needsPicture)
            (this->*item)->setEnabled(false);
    }
    for (QPushButton *V::*button : displayButtons)
        (this->*button)->setEnabled(display);
    for (const ToolbarRow &row : mainToolbarRows()) {
        if (QAction *button = toolbarButton(QString::fromLatin1(row.key)))
            button->setEnabled((display || !row.needsItem) && !(motion && row.needsPicture));
    }
    mnuPicture->setEnabled(display || selection);
    lstDisplay->setBackColor(display ? listWithEntries : listEmpty);

    for (QPushButton *V::*button : selectionButtons)
        (this->*button)->setEnabled(selection);
    for (QAction *V::*item : selectionItems)
        (this->*item)->setEnabled(selection);
    lstSelect->setBackColor(selection ? listWithEntries : listEmpty);

    // Not every desktop asks before it opens the icon's menu.
    if (isLoaded<frmSystemTray>())
        form<frmSystemTray>().updateItems();

    if (!display && !selection)
        showNothing();
}

void frmMainViewer::showNothing()
{
    if (!mnuViewFullWidthList->isChecked())
        Picture1->show();
    constexpr int stopped = 1;
    if (globals.MediaPlayerVersion == 9.0F && wmp9->playState() != stopped)
        wmp9->stop();
    wmp9->hide();
    StatusBar1->setPanelIcon(2, QIcon());
    Image1->setPicture(nullptr);
    CurrentPicture->setText(QString());
}
