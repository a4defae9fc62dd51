#pragma once

#include <QStringList>

#include <functional>
#include <span>

class QWidget;

/// Process entry behind main(): `arguments` without the program's own name. Returns the exit status: 0, 1 when the
/// program could not do what it was started for, 2 for a wrong command line.
int Main(const QStringList &arguments);

/// Ends the program, from any window: saves the settings, unloads the windows in their order, ends the event loop.
/// Called while a routine or a modal window still waits for its events, it ends those first: the windows go when they
/// have returned. Calls after the first do nothing.
void ShutDownProgram();

/// Has `step` called once at the very beginning of ShutDownProgram: what must not start anything new any more.
void atShutDown(std::function<void()> step);

/// The second half of ShutDownProgram, when it could not do it at once; else nothing. Called when the event loop has
/// ended.
void finishShutDown();

/// Takes in a command of a later start, or of the desktop, and brings the program to the front.
void commandArrived(const QString &command, const QString &activationToken);

/// The window that stands for the program: the Main Viewer, else what was started in its place.
QWidget *frontWindow();

/// After a start by a switch: when a command waits that only the Main Viewer can take, brings it up, and the program
/// goes on as if it had been started without the switch.
void showMainViewerForCommands();

/// The windows in the order in which ShutDownProgram unloads them, frmMainViewer as the last one. A window that this
/// build does not have has its place and no functions.
struct FormRow
{
    const char *name;
    bool (*isLoaded)();
    bool (*unload)();
    /// Makes and shows the window for lumora-dev; null for windows that are never shown.
    QWidget *(*make)();
};
std::span<const FormRow> formTable();
