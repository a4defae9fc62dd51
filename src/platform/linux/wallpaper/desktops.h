#pragma once

#include <QString>
#include <QVector>

/// The ways to a wallpaper.
enum class WallpaperWay { Gnome, Cinnamon, Mate, Plasma, Xfce, Lxqt, Lxde, Sway, Swaybg, RootWindow, Portal };

/// What a session tells of itself in its environment.
struct SessionNames
{
    QString currentDesktop; ///< XDG_CURRENT_DESKTOP: names separated by colons, the most special first
    QString desktopSession; ///< DESKTOP_SESSION: the session's name, or a path that ends in it
    bool sway = false; ///< a sway can be reached
    bool wayland = false;
    bool x11 = false; ///< there is an X display, be it one inside Wayland
    bool sandboxed = false; ///< the program cannot reach the desktop but through portals
};
SessionNames runningSession();

/// The ways that may lead to the wallpaper, the likeliest first. Which one is really there shows when it is gone.
QVector<WallpaperWay> wallpaperWays(const SessionNames &session);

/// Short name of a way, for files and the log.
QString wallpaperWayName(WallpaperWay way);
/// The file that keeps what hung there before the program changed it.
QString wallpaperMemoryPath(const QString &stateFolder, WallpaperWay way);
