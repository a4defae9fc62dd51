#include "thumbnails/frmBrowseFolder.h"

#include "app/globals.h"
#include "app/startup.h"
#include "ui/icons.h"
#include "viewer/frmMainViewer.h"

frmBrowseFolder::frmBrowseFolder(QWidget *parent)
    : FormMainWindow(parent)
{
    setWindowTitle(tr("Tessaly Lumora - Folder Browser "));
    setWindowIcon(themedIcon(QStringLiteral("lumora")));
    resize(1024, 720);
}

void frmBrowseFolder::Form_Unload()
{
    if (globals.ProgramExiting)
        return;
    if (globals.StartInFolderBrowser)
        ShutDownProgram();
    else
        form<frmMainViewer>().show();
}
