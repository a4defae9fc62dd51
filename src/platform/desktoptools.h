#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Tools that a desktop brings along and that this program only opens.
enum class DesktopTool { VolumeControl, DisplaySettings };

/// A program and its arguments.
struct ToolCommand
{
    QString program;
    QStringList arguments;
    bool operator==(const ToolCommand &) const = default;
};

/// The tools that do, the running desktop's own first. `desktop` is the value of XDG_CURRENT_DESKTOP, names with a
/// colon between them; tools that work on one desktop only are left out on others.
QList<ToolCommand> desktopToolCommands(DesktopTool tool, const QString &desktop, bool wayland);

/// Starts the first of them that is installed, on its own and without a shell. False when none is, or none starts.
bool openDesktopTool(DesktopTool tool);
