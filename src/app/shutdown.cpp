#include "actions/frmConvertFileName.h"
#include "actions/frmConvertFileType.h"
#include "actions/frmListManagement.h"
#include "actions/frmSelectBatchDir.h"
#include "app/allsettings.h"
#include "app/checkjpg.h"
#include "app/frmIntroSelect.h"
#include "app/frmPreviousInstance.h"
#include "app/frmTip.h"
#include "app/globals.h"
#include "app/startup.h"
#include "editor/frmZoomView.h"
#include "engine/picturecache.h"
#include "platform/wallpaper.h"
#include "shell/frmGradient.h"
#include "shell/frmPreferences.h"
#include "shell/frmSystemTray.h"
#include "thumbnails/frmBrowseFolder.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmThumbNail.h"
#include "ui/yield.h"
#include "viewer/frmBackground.h"
#include "viewer/frmFileListForm.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmMessage.h"
#include "viewer/frmSelectPictureDirectoryForm.h"
#include "viewer/frmSlideShowFullScreen.h"
#include "viewer/frmlocatefiles.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QThread>

#include <array>
#include <vector>

namespace {
Q_LOGGING_CATEGORY(logShutDown, "lumora.shutdown", QtWarningMsg)

std::vector<std::function<void()>> firstSteps;
bool windowsAreWaiting = false;

template <class T> QWidget *shown()
{
    T &window = form<T>();
    window.show();
    return &window;
}

template <class T> constexpr FormRow window(const char *name)
{
    return {name, &isLoaded<T>, &unload<T>, &shown<T>};
}

template <class T> constexpr FormRow hiddenWindow(const char *name)
{
    return {name, &isLoaded<T>, &unload<T>, nullptr};
}

constexpr FormRow notInThisBuild(const char *name)
{
    return {name, nullptr, nullptr, nullptr};
}

constexpr std::array formRows{
    hiddenWindow<checkjpg>("checkjpg"),
    notInThisBuild("frmAdjustColorBalance"),
    hiddenWindow<frmBackground>("frmBackground"),
    window<frmBrowseFolder>("frmBrowseFolder"),
    notInThisBuild("frmBrowser"),
    notInThisBuild("frmChangeColorDepth"),
    window<frmConvertFileName>("frmConvertFileName"),
    window<frmConvertFileType>("frmConvertFileType"),
    hiddenWindow<frmFileListForm>("frmFileListForm"),
    notInThisBuild("frmFileProperties"),
    window<frmGradient>("frmGradient"),
    notInThisBuild("frmHistogram"),
    notInThisBuild("frmPixelonText"),
    window<frmIntroSelect>("frmIntroSelect"),
    window<frmListManagement>("frmListManagement"),
    window<frmlocatefiles>("frmlocatefiles"),
    window<frmMessage>("frmMessage"),
    notInThisBuild("frmNew"),
    window<frmPreferences>("frmPreferences"),
    notInThisBuild("frmPreview"),
    hiddenWindow<frmPreviousInstance>("frmPreviousInstance"),
    notInThisBuild("frmReport"),
    notInThisBuild("frmResize"),
    notInThisBuild("frmResizePictures"),
    notInThisBuild("frmScrollingAbout"),
    window<frmSelectBatchDir>("frmSelectBatchDir"),
    window<frmSlideShowFullScreen>("frmSlideShowFullScreen"),
    notInThisBuild("frmstats"),
    hiddenWindow<frmSystemTray>("frmSystemTray"),
    window<frmThumbNail>("frmThumbNail"),
    hiddenWindow<frmDataBase>("frmDataBase"),
    window<frmTip>("frmTip"),
    notInThisBuild("frmUndo"),
    notInThisBuild("frmZoomLevel"),
    window<frmZoomView>("frmZoomView"),
    notInThisBuild("frmZoomViewSupport"),
    notInThisBuild("GetNumberDialog"),
    window<frmSelectPictureDirectoryForm>("frmSelectPictureDirectoryForm"),
    window<frmMainViewer>("frmMainViewer"),
};

void unloadRow(const FormRow &row)
{
    if (row.unload && row.isLoaded() && !row.unload())
        qCWarning(logShutDown, "%s did not want to go", row.name);
}

void stopMainViewer()
{
    if (!isLoaded<frmMainViewer>())
        return;
    auto &viewer = form<frmMainViewer>();
    if (globals.MediaPlayerVersion == 9.0f) {
        viewer.wmp9->stop();
        viewer.wmp9->shutDown();
    }
    viewer.Timer1.stop();
    viewer.tmrSlideShow.stop();
    viewer.tmrShowPlayTime.stop();
}

/// Whether a routine further down waits for its yield, or for a modal window, to come back.
bool somethingIsWaiting()
{
    return yieldDepth() > 0 || QThread::currentThread()->loopLevel() > 1;
}

}

std::span<const FormRow> formTable()
{
    return formRows;
}

void atShutDown(std::function<void()> step)
{
    firstSteps.push_back(std::move(step));
}

void ShutDownProgram()
{
    if (globals.ProgramExiting)
        return;
    globals.ProgramExiting = true;
    globals.SearchActive = false;
    for (const auto &step : std::exchange(firstSteps, {}))
        step();
    // A program that ends before its settings were read has none to save.
    if (isLoaded<frmMainViewer>())
        SaveAllSettings();
    windowsAreWaiting = true;
    // Under a routine that still waits the windows would go from beneath its feet; it is told to end and they go then.
    if (!somethingIsWaiting())
        finishShutDown();
    QCoreApplication::exit();
}

void finishShutDown()
{
    if (!std::exchange(windowsAreWaiting, false))
        return;
    const auto rows = formTable();
    for (const FormRow &row : rows.first(rows.size() - 1))
        unloadRow(row);
    stopMainViewer();
    unloadRow(rows.back());
    Yield();
    // A window on its way out may have asked another one something, which has come back for that.
    for (const FormRow &row : rows)
        unloadRow(row);
    // A change of the wallpaper on its way decodes, too.
    constexpr std::chrono::seconds patience(3);
    if (!desktopWallpaper().waitForDone(patience))
        qCWarning(logShutDown, "the desktop does not take the wallpaper");
    PictureCache::instance().shutDown();
}
