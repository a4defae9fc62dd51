#include "viewer/frmMainViewer.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "ui/yield.h"
#include "viewer/frmBackground.h"
#include "viewer/frmSlideShowFullScreen.h"
#include "viewer/statustext.h"

// What the full screen window shows: the current item of the Display list, for its show and without one.

void frmMainViewer::mnuViewFullScreen_Click()
{
    // The pane may stand on a picture of the Selection list; the window shows the current item of the Display list.
    const QString path = lstDisplay->text();
    if (globals.CurrentMediaFile != path && GetMediaKind(path) != kindMotion)
        ShowSelectedDisplayItem();
    if (!globals.ProgramExiting)
        ShowInFullScreen();
}

void frmMainViewer::mnuSlideShowFullViewer_Click()
{
    auto &window = form<frmSlideShowFullScreen>();
    // It comes up with what is on the pane, never empty.
    if (!window.isVisible()) {
        const auto onPane = Image1->picture();
        const auto picture = onPane ? onPane : form<frmBackground>().Picture;
        window.showPicture(picture, picture->info().size, QString());
    }
    window.showOver(*this);
}

void frmMainViewer::ShowInFullScreen()
{
    const QString path = lstDisplay->text();
    if (path.isEmpty())
        return;
    const int ticket = ++m_fullScreenTicket;
    if (!frmSlideShowFullScreen::isUp())
        mnuSlideShowFullViewer_Click();
    globals.CurrentMediaFile = path;
    ReadImageInfo(path, globals.ImageWidth, globals.ImageHeight, globals.ImageColorDepth);
    auto &support = form<checkjpg>();
    const QLatin1String kind = GetMediaKind(path);
    if (kind == kindPoly && support.polImageBox1.PolyLastError().isEmpty())
        support.Gvbox2.setPicture(support.polImageBox1.held());
    auto picture = support.Gvbox2.picture();
    QString name = displayPath(FileNameOfPath(path));
    if (kind == kindMotion) {
        // The player stays in the Main Viewer.
        picture = form<frmBackground>().Picture;
        name.clear();
    } else if (!FileExists(path)) {
        name += notAvailable();
    }
    Yield();
    if (m_fullScreenTicket != ticket || globals.ProgramExiting || !isLoaded<frmSlideShowFullScreen>())
        return;
    auto &window = form<frmSlideShowFullScreen>();
    // What cannot be read leaves the picture before on show, in its own size and not in the one that the pane gave it.
    window.showPicture(picture, picture ? picture->info().size : QSize(), name);
    if (kind != kindMotion)
        window.showPlayTime(QString());
    Yield();
}
