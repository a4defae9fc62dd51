#pragma once

#include "platform/filetransfer.h"
#include "platform/messagebox.h"
#include "ui/listbox.h"

#include <QElapsedTimer>
#include <QVector>

class QLabel;
class QWidget;
class frmMainViewer;

// What the commands that change files of the list have in common.

/// Raised while one of them is at work: none begins inside another one's yield or box.
bool &fileActionUnderWay();

/// An entry as it stood when a run began.
struct ListEntry
{
    int index;
    QString path;
};
QVector<ListEntry> selectedEntries(const ListBox &list);

/// Whether a question with Yes and No was answered by Yes.
bool agreed(QWidget *owner, const MessageBox &question);
void logFailure(const QString &path, const FileOutcome &outcome);

/// The caption is the counter: it is read, changed and written back.
void raiseCounter(QLabel *label, int by);

/// Lets go of a file that plays, or stands ready to, before it is moved or goes.
void releaseFromPlayer(frmMainViewer &viewer, const QString &path);

/// Selects an entry and brings it on show, also when it was selected and marked before: its file may be another one.
void selectAndShow(frmMainViewer &viewer, int index);

/// Brings the viewer to its empty state. Entries that the counter no longer counts stay.
void clearViewer(frmMainViewer &viewer);

/// Lets events in now and then while a large file is on its way, and ends the work when the program ends.
class Patience
{
public:
    Patience() { m_since.start(); }
    StillWanted asked();

private:
    QElapsedTimer m_since;
};
