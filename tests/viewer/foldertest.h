#pragma once

#include "app/globals.h"
#include "app/settings.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/foldersearch.h"
#include "viewer/frmFileListForm.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmSelectPictureDirectoryForm.h"
#include "viewer/frmlocatefiles.h"
#include "viewer/searchfolder.h"

#include <QtTest>

/// What the tests of the folder dialog and of its search share: a Main Viewer, a folder to fill, the dialog opened.
class FolderTest : public QObject
{
protected:
    using Dialog = frmSelectPictureDirectoryForm;
    frmMainViewer &viewer() { return form<frmMainViewer>(); }
    QString base() const { return m_home->path() + QStringLiteral("media/"); }
    QString write(const char *name) const
    {
        return m_home->write(QStringLiteral("media/") + QString::fromUtf8(name), "x");
    }
    QString foundBelow() { return viewer().lstSelect->items().join(QLatin1Char(' ')).remove(base()); }
    /// The dialog on its own, open at a folder.
    Dialog &openAt(const QString &folder)
    {
        saveOption("LastVisitedFolder", folder);
        Dialog &dialog = form<Dialog>();
        dialog.show();
        if (!QTest::qWaitFor([&] { return !dialog.Dir1->path().isEmpty() && !dialog.Dir1->path().isNull(); }))
            qFatal("the dialog has not opened a folder");
        return dialog;
    }
    void release()
    {
        if (isLoaded<Dialog>())
            form<Dialog>().hide();
        QVERIFY(unload<Dialog>());
    }
    /// Runs the whole command; `act` gets the dialog once it stands open at its start folder.
    void selectFolder(const QString &start, const std::function<void(Dialog &)> &act)
    {
        saveOption("LastVisitedFolder", start);
        QTimer waiting;
        connect(&waiting, &QTimer::timeout, this, [&] {
            if (!isLoaded<Dialog>() || !form<Dialog>().isVisible() || form<Dialog>().Dir1->path().isEmpty())
                return;
            waiting.stop();
            act(form<Dialog>());
        });
        waiting.start(1);
        viewer().SelectMediaFolder();
        QVERIFY(!waiting.isActive());
        QVERIFY(!isLoaded<frmlocatefiles>());
        QVERIFY(!globals.SearchActive);
    }

    void start()
    {
        m_home = std::make_unique<TemporaryHome>();
        saveOption("Show Intro Select at Startup", QStringLiteral("0"));
        saveOption("Show Tips at Startup", QStringLiteral("0"));
        globals.MediaPlayerVersion = 0;
        viewer().show();
        QVERIFY(QTest::qWaitForWindowExposed(&viewer()));
        QTRY_VERIFY(globals.MainViewerActivated);
    }
    void fresh()
    {
        ScriptedDialogs::install();
        QDir(base()).removeRecursively();
        QVERIFY(QDir().mkpath(base()));
        saveOption("DefaultOpenFolder", QStringLiteral("1"));
        form<frmPreferences>().cmdSelectAllTypes->click();
        form<frmPreferences>().cmdSelectAllAudioTypes->click();
        viewer().cmdClearSelectionList_Click();
    }
    void finish()
    {
        release();
        setDialogs(nullptr);
    }

    std::unique_ptr<TemporaryHome> m_home;
};
