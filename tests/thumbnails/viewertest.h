#pragma once

#include "app/globals.h"
#include "app/settings.h"
#include "builtpaths.h"
#include "editor/frmZoomView.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmDatabaseStats.h"
#include "thumbnails/frmThumbNail.h"
#include "thumbnails/thumbnailcell.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// The Thumbnail Viewer over a list of small pictures, "picture 000.png" and so on: 40 pixels wide and one more each.
class ViewerOverList
{
protected:
    static constexpr int pictures = 70;

    void startOver()
    {
        saveOption("UserThumbnailSize", QStringLiteral("100"));
        form<frmPreferences>().chkCacheThumbnails->setChecked(true);
        form<frmPreferences>().chkOverWriteThumbnails->setChecked(false);
        ScriptedDialogs::install();
        fillList(pictures);
    }

    void makeFiles()
    {
        useBuiltModules();
        QDir().mkpath(m_home.path() + QStringLiteral("app"));
        QVERIFY(QFile::copy(
            QStringLiteral(LUMORA_BIN "/lumora-data/images.dat"), m_home.path() + QStringLiteral("app/images.dat")));
        for (int index = 0; index < pictures; ++index)
            m_files << m_home.writePicture(
                QStringLiteral("files/picture %1.png").arg(index, 3, 10, QLatin1Char('0')), QSize(40 + index, 30));
        QVERIFY(showMainViewer());
    }

    void endAll()
    {
        setYieldHook({});
        unload<frmDatabaseStats>();
        unload<frmZoomView>();
        closeViewer();
        setDialogs(nullptr);
    }

    frmThumbNail &viewer() { return form<frmThumbNail>(); }
    ListBox &list() { return *form<frmMainViewer>().lstDisplay; }
    ThumbnailCell *cell(int number) { return viewer().imgThumbnail[std::size_t(number)]; }
    QString panel(int number) { return viewer().StatusBar1->panelText(number); }

    void setList(const QStringList &files)
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        list().clear();
        list().addItems(files);
        form<frmMainViewer>().lblCount->setText(QString::number(files.size()));
    }

    void fillList(int items) { setList(m_files.mid(0, items)); }

    /// So that it is gone, not only on its way.
    void closeViewer()
    {
        unload<frmThumbNail>();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// Seven columns and five rows of 100 pixels, whatever the heights of the bars are.
    void open(int current = 0)
    {
        {
            const ScopedFlag busy(globals.ItemSelectionBusy);
            list().setListIndex(current);
        }
        auto &window = viewer();
        window.show();
        window.resize(780, window.height() - window.picGrid->height() + 560);
        QTRY_VERIFY(window.FormLoaded);
        window.Timer4_Timer();
        QCOMPARE(QSize(window.GridColumns, window.GridRows), QSize(7, 5));
    }

    QList<int> shownCells()
    {
        QList<int> shown;
        for (int number = 1; number < int(viewer().imgThumbnail.size()); ++number) {
            if (cell(number)->isVisible())
                shown << number;
        }
        return shown;
    }

    TemporaryHome m_home;
    QStringList m_files;
};

inline const QStringList selectionButtons{QStringLiteral("Copy"), QStringLiteral("Display"), QStringLiteral("Editor")};

inline QList<int> upTo(int last)
{
    QList<int> numbers;
    for (int number = 1; number <= last; ++number)
        numbers << number;
    return numbers;
}
