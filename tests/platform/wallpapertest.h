#pragma once

#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "platform/linux/wallpaper/desktops.h"
#include "platform/wallpaper.h"
#include "support/support.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QtTest>

/// A session of nothing: a test adds what its desktop has. One home for the whole program, as libraries remember it.
class WallpaperTest : public QObject
{
protected:
    void startInNoSession()
    {
        useBuiltModules();
        m_home = std::make_unique<TemporaryHome>();
        qputenv("LUMORA_TEST_DESKTOP", "1");
        for (const char *variable : {"XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "XDG_SESSION_TYPE", "DISPLAY",
                 "WAYLAND_DISPLAY", "SWAYSOCK", "DBUS_SESSION_BUS_ADDRESS"})
            qunsetenv(variable);
    }

    QString home() const { return m_home->path(); }
    QString write(const QString &name, const QByteArray &bytes) const { return m_home->write(name, bytes); }
    QString writePicture(const QString &name, QSize size, QRgb color = 0xff336699) const
    {
        return m_home->writePicture(name, size, color);
    }

    /// Carries a change out and lets the test's own services answer meanwhile.
    void waitFor(const std::function<void()> &change)
    {
        QSignalSpy done(&desktopWallpaper(), &DesktopWallpaper::done);
        change();
        QVERIFY(done.wait(30000));
    }
    void set(const QString &picture, WallpaperPlacement placement)
    {
        waitFor([&] { desktopWallpaper().set(picture, placement); });
    }
    void clear()
    {
        waitFor([] { desktopWallpaper().clear(); });
    }
    void restore()
    {
        waitFor([] { desktopWallpaper().restore(); });
    }

    /// The copies that a desktop has been given and may still need.
    static QStringList copies()
    {
        const auto listing = listFolder(AppFolder() + QStringLiteral("Wallpaper"));
        QStringList paths;
        for (const QString &file : listing ? listing->files : QStringList())
            paths.append(AppFolder() + QStringLiteral("Wallpaper/") + file);
        return paths;
    }
    static QByteArray contents(const QString &path)
    {
        const auto bytes = readFile(path, 1 << 24);
        return bytes ? *bytes : QByteArray();
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
};
