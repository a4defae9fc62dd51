#pragma once

#include "app/globals.h"
#include "platform/filepath.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// What the tests of the two lists share: a shown Main Viewer, names and pictures to fill it with.
class ListsTest : public QObject
{
protected:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    ListBox &display() { return *window().lstDisplay; }
    ListBox &selection() { return *window().lstSelect; }

    bool start()
    {
        m_home = std::make_unique<TemporaryHome>();
        return showMainViewer();
    }
    void fresh()
    {
        ScriptedDialogs::install();
        window().ClearDisplayList();
        window().cmdClearSelectionList_Click();
        window().mnuSlideShowLoopAround->setChecked(false);
        window().mnuSlideShowRunSlideShow->setChecked(false);
        window().tabFileList->setCurrentIndex(0);
        globals.ShowStopRequested = false;
        globals.AutoPlayMotion = false;
        globals.AutoPlayOnce = false;
    }
    void finish()
    {
        verifyInStep();
        setDialogs(nullptr);
    }

    QStringList pictures(int count)
    {
        QStringList paths;
        for (int i = 0; i < count; ++i)
            paths.append(m_home->writePicture(QStringLiteral("%1.png").arg(QChar(u'a' + i)), {40 + i, 30}));
        return paths;
    }
    void fill(const QStringList &toSelect, const QStringList &toDisplay)
    {
        selection().addItems(toSelect);
        display().addItems(toDisplay);
        window().lblCount->setText(QString::number(display().count()));
        window().UpdateMenuAndToolbarState();
    }
    void verifyInStep()
    {
        QCOMPARE(window().lblCount->text(), QString::number(display().count()));
        QVERIFY(!globals.ItemSelectionBusy);
        if (display().isEmpty())
            QVERIFY(window().CurrentPicture->text().toInt() <= 0);
    }

    static QStringList names(const QString &letters)
    {
        QStringList result;
        for (const QChar letter : letters)
            result.append(QStringLiteral("/nowhere/%1.jpg").arg(letter));
        return result;
    }
    /// The first letters of the file names, in order.
    static QString letters(const ListBox &list)
    {
        QString result;
        for (const QString &path : list.items())
            result += FileNameOfPath(path).left(1);
        return result;
    }
    static void select(ListBox &list, const QList<int> &indices)
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        list.clearSelections();
        for (const int index : indices)
            list.setSelected(index, true);
    }

    std::unique_ptr<TemporaryHome> m_home;
};
