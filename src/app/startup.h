#pragma once

#include <QStringList>

#include <span>

/// Process entry behind main(): `arguments` without the program's own name. Returns the exit status.
int Main(const QStringList &arguments);

/// Ends the program, from any window: saves the settings, unloads the windows in their order, ends the event loop.
void ShutDownProgram();

/// The windows in the order in which ShutDownProgram unloads them.
struct FormRow {
    const char *name;
    bool (*isLoaded)();
    bool (*unload)();
    /// Makes and shows the window for lumora-dev; null for windows that are never shown.
    class QWidget *(*make)();
};
std::span<const FormRow> formTable();
