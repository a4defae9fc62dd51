#include "thumbnails/frmThumbNail.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/settings.h"
#include "engine/loadedpicture.h"
#include "platform/files.h"
#include "shell/checkfornewversion.h"
#include "shell/frmPreferences.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/thumbnailsize.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <atomic>
#include <thread>

namespace {

constexpr qint64 largestMetafile = 64 << 20; ///< bytes

/// The page of the preferences for an item of the menu; -1 for the player's options, which have none.
constexpr int preferencesPages[] = {frmPreferences::AssociateFileTypes, frmPreferences::DefaultFolder,
    frmPreferences::InformationSummary, -1, frmPreferences::QualityOptions, frmPreferences::FileTypes,
    frmPreferences::ThumbnailOptions};

/// A file's picture with all its pixels, decoded on a thread of its own while events come in; null when it has none.
std::shared_ptr<const LoadedPicture> loadedBeside(const QString &file)
{
    std::shared_ptr<const LoadedPicture> picture;
    std::atomic<bool> ended = false;
    std::jthread worker([&] {
        if (const auto loaded = LoadedPicture::load(file, -1, {}))
            picture = *loaded;
        ended = true;
        wakeYield();
    });
    YieldUntil([&] { return ended.load(); });
    worker.join();
    return picture;
}

}

QString frmThumbNail::selectedFile() const
{
    return SelectedIndex > 0 ? itemAt(SelectedIndex - 1) : QString();
}

// --- file and edit

void frmThumbNail::mnuViewerCloseViewer_Click()
{
    unload<frmThumbNail>();
}

void frmThumbNail::mnuEditCopyFileName_Click()
{
    const QString file = selectedFile();
    if (file.isEmpty())
        return;
    QGuiApplication::clipboard()->clear();
    QGuiApplication::clipboard()->setText(file);
}

void frmThumbNail::mnuEditCopyImage_Click()
{
    mnupopup_Click(2);
}

void frmThumbNail::copyImage()
{
    const QString file = selectedFile();
    if (file.isEmpty())
        return;
    const Hourglass hourglass;
    QGuiApplication::clipboard()->clear();
    const auto picture = loadedBeside(file);
    if (!picture || globals.ProgramExiting)
        return;
    auto &box = form<checkjpg>().Gvbox2;
    box.setPicture(picture);
    auto *content = new QMimeData;
    content->setImageData(box.picture()->current().pixels);
    // A metafile goes as it is too, for programs that take the drawing.
    if (file.contains(QLatin1String(".WMF"), Qt::CaseInsensitive)) {
        if (const auto bytes = readFile(file, largestMetafile))
            content->setData(QStringLiteral("image/x-wmf"), *bytes);
    }
    QGuiApplication::clipboard()->setMimeData(content);
    box.setPicture(nullptr);
}

void frmThumbNail::mnupopup_Click(int index)
{
    switch (index) {
    case 2:
        return copyImage();
    case 3:
        return mnuEditCopyFileName_Click();
    case 4:
        return mnuViewerMainViewer_Click();
    case 5:
        return mnuViewerZoomViewer_Click();
    default:
        break;
    }
}

// --- view

void frmThumbNail::mnuViewerShowImageNames_Click()
{
    ShowNames = mnuViewerShowImageNames->isChecked();
    ClearThumbnailGrid(PageCapacity, false);
    SetItUp();
}

void frmThumbNail::toolbarLabels_Click()
{
    mnuViewerShowImageNames->setChecked(!mnuViewerShowImageNames->isChecked());
    mnuViewerShowImageNames_Click();
}

void frmThumbNail::mnuViewerMainViewer_Click()
{
    imgThumbNail_DblClick(SelectedIndex - TopIndex);
}

void frmThumbNail::mnuViewerZoomViewer_Click()
{
    if (selectedFile().isEmpty())
        return;
    auto &viewer = form<frmMainViewer>();
    const int before = viewer.lstDisplay->listIndex();
    const int index = SelectedIndex - 1; // showing it lets events in
    viewer.lstDisplay->setListIndex(index);
    viewer.lstDisplay->setSelected(index, true);
    viewer.mnuPictureViewer_Click();
    if (!globals.ProgramExiting)
        viewer.lstDisplay->setListIndex(before);
}

void frmThumbNail::mnuThumbnailStyle_Click()
{
    form<frmPreferences>().chkThumbNailStyle->setChecked(mnuThumbnailStyle->isChecked());
}

void frmThumbNail::mnuViewerThumbnailBackgroundColor_Click()
{
    const QPointer<frmThumbNail> here(this);
    form<frmPreferences>().lblThumbnailBackgroundColor_Click();
    if (here)
        readBackColor();
}

void frmThumbNail::readBackColor()
{
    ThumbnailBackColor = colorFromNumber(number(option("ThumbnailBackGroundColor", "0")).value_or(0));
}

void frmThumbNail::mnuViewerThumbNailSize_Click(int size)
{
    for (QAction *item : m_sizeItems)
        item->setChecked(false);
    saveOption("UserThumbNailSize", QString::number(size));
    mnuViewerThumbNailSize(size)->setChecked(true);
    ThumbnailSize = size;
    auto &cache = form<frmDataBase>();
    cache.CloseDatabase();
    cache.Form_Load();
    ClearThumbnailGrid(PageCapacity, false);
    SetItUp();
}

void frmThumbNail::toolbarSize_Click()
{
    const bool last = ThumbnailSize >= largestThumbnailSize;
    mnuViewerThumbNailSize_Click(last ? smallestThumbnailSize : ThumbnailSize + thumbnailSizeStep);
}

void frmThumbNail::mnuViewerRefresh_Click()
{
    ClearThumbnailGrid(PageCapacity * 2, false);
    SetItUp();
}

// --- thumbnails, options, help

void frmThumbNail::mnuThumbnailsOverwrite_Click()
{
    form<frmPreferences>().chkOverWriteThumbnails->setChecked(mnuThumbnailsOverwrite->isChecked());
}

void frmThumbNail::mnuThumbnailsCacheThumbnails_Click()
{
    form<frmPreferences>().chkCacheThumbnails->setChecked(mnuThumbnailsCacheThumbnails->isChecked());
}

bool frmThumbNail::hasPreferencesPage(int index)
{
    const int page = preferencesPages[index];
    return page >= 0 && form<frmPreferences>().SSTab1->isTabEnabled(page);
}

void frmThumbNail::mnuOptionsPreferences_Click(int index)
{
    if (!hasPreferencesPage(index))
        return;
    const QPointer<frmThumbNail> here(this);
    auto &preferences = form<frmPreferences>();
    preferences.SSTab1->setCurrentIndex(preferencesPages[index]);
    preferences.setWindowModality(Qt::ApplicationModal);
    preferences.exec();
    if (here && !isUnloaded())
        readBackColor();
}

void frmThumbNail::mnuHelpNewVersion_Click()
{
    CheckForNewVersion(this);
}

void frmThumbNail::mnuHelpHelp_Click()
{
    form<frmMainViewer>().mnuHelpHelp_Click();
}
