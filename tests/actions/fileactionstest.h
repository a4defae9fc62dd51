#pragma once

#include "actions/frmConvertFileName.h"
#include "actions/frmSelectBatchDir.h"
#include "app/globals.h"
#include "app/settings.h"
#include "platform/filepath.h"
#include "support/contents.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/guards.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

using Answer = MessageBox::Answer;
using Icon = MessageBox::Icon;

/// What the tests of copy, move and delete share: a shown Main Viewer, the folders "from" and "target", and the picker
/// that is answered.
class FileActionsTest : public QObject
{
protected:
    void showWindows()
    {
        m_home = std::make_unique<TemporaryHome>();
        QVERIFY(showMainViewer());
    }
    void prepare()
    {
        m_dialogs = &ScriptedDialogs::install();
        m_target = folder("target");
        for (const char *name : {"from", "target"}) {
            QDir(folder(name)).removeRecursively();
            QDir().mkpath(folder(name));
        }
        saveOption("DefaultOpenFolder", QStringLiteral("1"));
        saveOption("LastVisitedFolder", target());
        globals.cancelFlag = false;
        globals.ProgramExiting = false;
        m_pickerTitle.clear();
        m_progressTitle.clear();
    }
    void clearUp()
    {
        setYieldHook({});
        setDialogs(nullptr);
        window().ClearDisplayList();
    }

    frmMainViewer &window() { return form<frmMainViewer>(); }
    ListBox &list() { return *window().lstDisplay; }
    frmConvertFileName &progress() { return form<frmConvertFileName>(); }
    QString folder(const char *name) const { return m_home->path() + QLatin1String(name) + QLatin1Char('/'); }
    QString target() const { return m_target; }
    QString file(int index) const { return folder("from") + QLatin1Char(char('a' + index)) + QLatin1String(".png"); }
    /// Files a.png, b.png ... as the list; only those of `selected` are selected.
    void fill(int count, const QList<int> &selected)
    {
        window().ClearDisplayList();
        for (int index = 0; index < count; ++index) {
            const QString name = file(index).mid(m_home->path().size());
            m_home->writePicture(name, QSize(40 + index, 30), QRgb(0xff000000U + index * 77));
            QVERIFY(list().addItem(file(index)));
        }
        window().lblCount->setText(QString::number(count));
        window().UpdateMenuAndToolbarState();
        const ScopedFlag busy(globals.ItemSelectionBusy);
        for (const int index : selected)
            list().setSelected(index, true);
    }
    /// The picker that comes up is answered by the button, once it stands at the target folder.
    void answerPicker(bool ok = true)
    {
        auto *poll = new QTimer(this);
        connect(poll, &QTimer::timeout, this, [this, poll, ok] {
            auto &picker = form<frmSelectBatchDir>();
            if (!picker.isVisible() || picker.Dir1->path() + QLatin1Char('/') != target())
                return;
            poll->deleteLater();
            m_pickerTitle = picker.windowTitle();
            (ok ? picker.cmdOK : picker.cmdCancel)->click();
        });
        poll->start(0);
    }
    void start(const QString &command)
    {
        if (command == QLatin1String("copy"))
            window().mnuEditCopyFilesTo_Click();
        else if (command == QLatin1String("move"))
            window().mnuEditMoveFilesTo_Click();
        else
            window().mnuEditDeleteFiles_Click();
    }
    /// Gives a command with these answers, and looks at the progress window at its first yield.
    void run(const QString &command, const QVector<Answer> &answers)
    {
        for (const Answer answer : answers)
            m_dialogs->answer(answer);
        setYieldHook([this](int) {
            if (m_progressTitle.isEmpty() && progress().isVisible()) {
                m_progressTitle = progress().windowTitle();
                m_progressSize = progress().size();
            }
        });
        if (command != QLatin1String("delete"))
            answerPicker();
        start(command);
        setYieldHook({});
    }
    /// Every road out of a run leaves the shared windows as they are found by the next one.
    void verifyAtRest()
    {
        QVERIFY(progress().isHidden() && form<frmSelectBatchDir>().isHidden());
        QVERIFY(!globals.ItemSelectionBusy);
        QVERIFY(QGuiApplication::overrideCursor() == nullptr);
        QVERIFY(progress().lblConvertFileName->isVisibleTo(&progress()) && progress().lblTo->isVisibleTo(&progress()));
        QCOMPARE(form<frmSelectBatchDir>().windowTitle(), QStringLiteral("Tessaly Lumora - Select Batch Directory"));
    }
    static void verifyBox(const MessageBox &box, const char *title, const QString &text, Icon icon)
    {
        QCOMPARE(box.title, QLatin1String(title));
        QCOMPARE(box.text, text);
        QCOMPARE(box.icon, icon);
        const bool report = icon == Icon::Information;
        QCOMPARE(box.buttons, report ? MessageBox::Buttons::Ok : MessageBox::Buttons::YesNo);
        QCOMPARE(box.defaultAnswer, report ? Answer::Ok : Answer::No);
    }
    /// Rows of a test that all three commands take.
    static void rowsOfCommands()
    {
        QTest::addColumn<QString>("command");
        for (const char *command : {"copy", "move", "delete"})
            QTest::newRow(command) << QString::fromLatin1(command);
    }

    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
    QString m_target; ///< the folder that the picker is to stand at
    QString m_pickerTitle;
    QString m_progressTitle; ///< while the run was at its first yield
    QSize m_progressSize;
};
