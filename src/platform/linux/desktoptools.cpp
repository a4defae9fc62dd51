#include "platform/desktoptools.h"

#include <QProcess>
#include <QStandardPaths>

#include <algorithm>

namespace {

enum Reach { OwnOnly, Anywhere, AnywhereOnX11, AnywhereOnWayland };

/// `desktops` holds the names of a tool's own desktops, in small letters with blanks around each; a tool of none is
/// taken on all of them alike.
struct ToolRow
{
    DesktopTool tool;
    const char *desktops;
    Reach reach;
    const char *program;
    const char *arguments;
};

constexpr auto volume = DesktopTool::VolumeControl;
constexpr auto display = DesktopTool::DisplaySettings;

// In the order in which they are taken where no desktop has one of its own. The settings programs of GNOME, Unity and
// Budgie end at once on other desktops.
// clang-format off
constexpr ToolRow toolRows[] = {
    {volume, "", Anywhere, "pavucontrol", ""},
    {volume, " lxqt ", Anywhere, "pavucontrol-qt", ""},
    {volume, " gnome gnome-classic ", OwnOnly, "gnome-control-center", "sound"},
    {volume, " unity ", OwnOnly, "unity-control-center", "sound"},
    {volume, " budgie ", OwnOnly, "budgie-control-center", "sound"},
    {volume, " x-cinnamon cinnamon ", OwnOnly, "cinnamon-settings", "sound"},
    {volume, " kde ", Anywhere, "systemsettings", "kcm_pulseaudio"},
    {volume, " kde ", Anywhere, "systemsettings5", "kcm_pulseaudio"},
    {volume, " mate ", Anywhere, "mate-volume-control", ""},
    {volume, "", Anywhere, "kmix", ""},
    {volume, "", Anywhere, "qasmixer", ""},
    {volume, "", Anywhere, "alsamixergui", ""},

    {display, " gnome gnome-classic ", OwnOnly, "gnome-control-center", "display"},
    {display, " unity ", OwnOnly, "unity-control-center", "display"},
    {display, " budgie ", OwnOnly, "budgie-control-center", "display"},
    {display, " x-cinnamon cinnamon ", OwnOnly, "cinnamon-settings", "display"},
    {display, " kde ", OwnOnly, "systemsettings", "kcm_kscreen"},
    {display, " kde ", OwnOnly, "systemsettings5", "kcm_kscreen"},
    {display, " xfce ", AnywhereOnX11, "xfce4-display-settings", ""},
    {display, " mate ", OwnOnly, "mate-display-properties", ""},
    {display, " lxqt ", AnywhereOnX11, "lxqt-config-monitor", ""},
    {display, " lxde ", AnywhereOnX11, "lxrandr", ""},
    {display, "", AnywhereOnX11, "arandr", ""},
    {display, "", AnywhereOnWayland, "wdisplays", ""},
};
// clang-format on

bool isOwnTool(const ToolRow &row, const QString &desktop)
{
    const QString own = QString::fromLatin1(row.desktops);
    const QStringList names = desktop.toLower().split(QLatin1Char(':'), Qt::SkipEmptyParts);
    return std::any_of(names.begin(), names.end(),
        [&](const QString &name) { return own.contains(QLatin1Char(' ') + name + QLatin1Char(' ')); });
}

bool reachesEverywhere(const ToolRow &row, bool wayland)
{
    return row.reach == Anywhere || row.reach == (wayland ? AnywhereOnWayland : AnywhereOnX11);
}

}

QList<ToolCommand> desktopToolCommands(DesktopTool tool, const QString &desktop, bool wayland)
{
    QList<ToolCommand> own;
    QList<ToolCommand> others;
    for (const ToolRow &row : toolRows) {
        if (row.tool != tool)
            continue;
        const ToolCommand command{QString::fromLatin1(row.program),
            QString::fromLatin1(row.arguments).split(QLatin1Char(' '), Qt::SkipEmptyParts)};
        if (isOwnTool(row, desktop))
            own.append(command);
        else if (reachesEverywhere(row, wayland))
            others.append(command);
    }
    return own + others;
}

bool openDesktopTool(DesktopTool tool)
{
    const bool wayland = qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland")
        || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    const QList<ToolCommand> commands = desktopToolCommands(tool, qEnvironmentVariable("XDG_CURRENT_DESKTOP"), wayland);
    return std::any_of(commands.begin(), commands.end(), [](const ToolCommand &command) {
        QProcess process;
        process.setProgram(QStandardPaths::findExecutable(command.program));
        process.setArguments(command.arguments);
        // What these tools have to say is nothing to whoever started this program in a terminal.
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        return !process.program().isEmpty() && process.startDetached();
    });
}
