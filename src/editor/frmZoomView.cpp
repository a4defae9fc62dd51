#include "editor/frmZoomView.h"

#include "app/globals.h"
#include "app/startup.h"
#include "ui/icons.h"
#include "viewer/frmMainViewer.h"

frmZoomView::frmZoomView(QWidget *parent)
    : FormMainWindow(parent)
{
    setWindowTitle(tr("Tessaly Lumora - Pixelon / Zoom Viewer"));
    setWindowIcon(themedIcon(QStringLiteral("lumora")));
    resize(1024, 720);
}

void frmZoomView::Form_Unload()
{
    if (globals.ProgramExiting)
        return;
    if (globals.StartInEditor)
        ShutDownProgram();
    else
        form<frmMainViewer>().show();
}
