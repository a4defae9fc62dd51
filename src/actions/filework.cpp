#include "actions/filework.h"

#include "app/globals.h"
#include "platform/dialogs.h"
#include "platform/operationslog.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QLoggingCategory>

namespace {
Q_LOGGING_CATEGORY(logFiles, "lumora.files", QtWarningMsg)

constexpr int longestPause = 80; ///< milliseconds between two yields
}

bool &fileActionUnderWay()
{
    static bool underWay = false;
    return underWay;
}

QVector<ListEntry> selectedEntries(const ListBox &list)
{
    QVector<ListEntry> entries;
    const QList<int> indices = list.selectedIndices();
    for (const int index : indices)
        entries.append({index, list.itemText(index)});
    return entries;
}

bool agreed(QWidget *owner, const MessageBox &question)
{
    return dialogs().show(owner, question) == MessageBox::Answer::Yes;
}

void logFailure(const QString &path, const FileOutcome &outcome)
{
    logOperation(Operation::Failed, path, outcome.reason);
    qCWarning(logFiles, "%s", qPrintable(outcome.reason));
}

void raiseCounter(QLabel *label, int by)
{
    label->setText(QString::number(label->text().toInt() + by));
}

void releaseFromPlayer(frmMainViewer &viewer, const QString &path)
{
    if (globals.MediaPlayerVersion != 9.0f || viewer.wmp9->url() != path)
        return;
    viewer.tmrShowPlayTime.stop();
    viewer.wmp9->stop();
    viewer.wmp9->setUrl(QString());
}

void selectAndShow(frmMainViewer &viewer, int index)
{
    if (viewer.lstDisplay->listIndex() == index && viewer.lstDisplay->isSelected(index))
        viewer.ShowSelectedDisplayItem();
    else
        viewer.lstDisplay->setSelected(index, true);
}

void clearViewer(frmMainViewer &viewer)
{
    const QStringList left = viewer.lstDisplay->items();
    viewer.ClearDisplayList();
    if (!left.isEmpty() && !globals.ProgramExiting)
        ignore(viewer.lstDisplay->addItems(left));
}

StillWanted Patience::asked()
{
    return [this] {
        if (m_since.elapsed() < longestPause)
            return true;
        Yield();
        m_since.restart();
        return !globals.ProgramExiting;
    };
}
