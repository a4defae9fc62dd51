#include "platform/linux/wallpaper/desktops.h"

#include "platform/files.h"

#include <QStringList>

namespace {

struct DesktopName
{
    const char *name;
    WallpaperWay way;
};

// Names as desktops and display managers write them, compared without case.
constexpr DesktopName desktopNames[] = {
    {"GNOME", WallpaperWay::Gnome},
    {"GNOME-Classic", WallpaperWay::Gnome},
    {"GNOME-Flashback", WallpaperWay::Gnome},
    {"GNOME-Xorg", WallpaperWay::Gnome},
    {"Unity", WallpaperWay::Gnome},
    {"ubuntu", WallpaperWay::Gnome},
    {"ubuntu-xorg", WallpaperWay::Gnome},
    {"Budgie", WallpaperWay::Gnome},
    {"budgie-desktop", WallpaperWay::Gnome},
    {"Pantheon", WallpaperWay::Gnome},
    {"X-Cinnamon", WallpaperWay::Cinnamon},
    {"Cinnamon", WallpaperWay::Cinnamon},
    {"Cinnamon2d", WallpaperWay::Cinnamon},
    {"MATE", WallpaperWay::Mate},
    {"KDE", WallpaperWay::Plasma},
    {"plasma", WallpaperWay::Plasma},
    {"plasmawayland", WallpaperWay::Plasma},
    {"plasmax11", WallpaperWay::Plasma},
    {"XFCE", WallpaperWay::Xfce},
    {"xubuntu", WallpaperWay::Xfce},
    {"LXQt", WallpaperWay::Lxqt},
    {"Lubuntu", WallpaperWay::Lxqt},
    {"LXDE", WallpaperWay::Lxde},
    {"LXDE-pi", WallpaperWay::Lxde},
    {"sway", WallpaperWay::Sway},
    {"wlroots", WallpaperWay::Swaybg},
    {"Hyprland", WallpaperWay::Swaybg},
    {"labwc", WallpaperWay::Swaybg},
    {"river", WallpaperWay::Swaybg},
    {"Wayfire", WallpaperWay::Swaybg},
    {"niri", WallpaperWay::Swaybg},
    {"dwl", WallpaperWay::Swaybg},
};

void addWaysOf(const QString &name, QVector<WallpaperWay> &ways)
{
    for (const DesktopName &row : desktopNames) {
        if (name.compare(QLatin1String(row.name), Qt::CaseInsensitive) == 0 && !ways.contains(row.way))
            ways.append(row.way);
    }
}

bool isSet(const char *variable)
{
    return !qEnvironmentVariableIsEmpty(variable);
}

}

SessionNames runningSession()
{
    SessionNames session;
    session.currentDesktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP");
    session.desktopSession = qEnvironmentVariable("DESKTOP_SESSION");
    session.sway = isSet("SWAYSOCK");
    session.wayland = isSet("WAYLAND_DISPLAY") || qgetenv("XDG_SESSION_TYPE") == "wayland";
    session.x11 = isSet("DISPLAY");
    // A terminal out of a snap hands the variables of its own snap on.
    session.sandboxed = qgetenv("SNAP_NAME") == "lumora" || FileExists(QStringLiteral("/.flatpak-info"));
    return session;
}

QVector<WallpaperWay> wallpaperWays(const SessionNames &session)
{
    if (session.sandboxed)
        return {WallpaperWay::Portal};
    QVector<WallpaperWay> ways;
    const QStringList names = session.currentDesktop.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    for (const QString &name : names)
        addWaysOf(name, ways);
    // The older variable tells the session's file, which a desktop inside it need not be called after.
    if (ways.isEmpty())
        addWaysOf(session.desktopSession.section(QLatin1Char('/'), -1), ways);
    if (session.sway && !ways.contains(WallpaperWay::Sway))
        ways.prepend(WallpaperWay::Sway);
    if (session.wayland && ways.isEmpty())
        ways.append(WallpaperWay::Swaybg);
    // The root window of an X server inside Wayland is never seen.
    if (session.x11 && !session.wayland)
        ways.append(WallpaperWay::RootWindow);
    ways.append(WallpaperWay::Portal);
    return ways;
}

QString wallpaperWayName(WallpaperWay way)
{
    switch (way) {
    case WallpaperWay::Gnome:
        return QStringLiteral("gnome");
    case WallpaperWay::Cinnamon:
        return QStringLiteral("cinnamon");
    case WallpaperWay::Mate:
        return QStringLiteral("mate");
    case WallpaperWay::Plasma:
        return QStringLiteral("plasma");
    case WallpaperWay::Xfce:
        return QStringLiteral("xfce");
    case WallpaperWay::Lxqt:
        return QStringLiteral("lxqt");
    case WallpaperWay::Lxde:
        return QStringLiteral("lxde");
    case WallpaperWay::Sway:
        return QStringLiteral("sway");
    case WallpaperWay::Swaybg:
        return QStringLiteral("swaybg");
    case WallpaperWay::RootWindow:
        return QStringLiteral("root");
    case WallpaperWay::Portal:
        break;
    }
    return QStringLiteral("portal");
}

QString wallpaperMemoryPath(const QString &stateFolder, WallpaperWay way)
{
    return stateFolder + QStringLiteral("wallpaper-before-%1.json").arg(wallpaperWayName(way));
}
