#pragma once

#include "engine/result.h"
#include "platform/linux/wallpaper/desktops.h"
#include "platform/wallpaper.h"

#include <QImage>
#include <QStringList>

#include <functional>

/// One change of the wallpaper: what the program tells the module that knows the desktops.
struct WallpaperJob
{
    enum class Kind { Set, Clear, Restore };
    Kind kind = Kind::Clear;
    QVector<WallpaperWay> ways; ///< to be tried in this order
    QString picture; ///< of Set: absolute path
    WallpaperPlacement placement = WallpaperPlacement::Centered;
    std::function<Result<QImage>()> pixels; ///< of Set: decodes the picture
    QString copyFolder; ///< with separator; keeps the files that desktops show
    QString stateFolder; ///< with separator; keeps what hung there before
    QStringList screens; ///< names of the monitors as their connectors are called: "HDMI-1"
    QString parentWindow; ///< as portals want it: "x11:1a2b" or empty
};

/// What the module gives: the version it belongs to, and the one function. It runs on a thread of its own and blocks.
struct WallpaperModule
{
    const char *version;
    void (*run)(const WallpaperJob &job);
};
using WallpaperModuleEntry = const WallpaperModule *(*)();
