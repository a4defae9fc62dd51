#include "platform/linux/wallpaper/desktops.h"

#include <QtTest>

/// Which desktop is asked first, by what a session tells of itself.
class tst_wallpaperways : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void likeliestWayComesFirst_data();
    void likeliestWayComesFirst();
};

void tst_wallpaperways::likeliestWayComesFirst_data()
{
    using W = WallpaperWay;
    QTest::addColumn<SessionNames>("session");
    QTest::addColumn<QVector<WallpaperWay>>("ways");
    const auto x11 = [](const char *current, const char *session) {
        return SessionNames{QLatin1String(current), QLatin1String(session), false, false, true, false};
    };
    const auto wayland = [](const char *current, bool sway = false) {
        return SessionNames{QLatin1String(current), QString(), sway, true, true, false};
    };
    QTest::newRow("GNOME") << x11("GNOME", "gnome") << QVector{W::Gnome, W::RootWindow, W::Portal};
    QTest::newRow("special name first") << wayland("ubuntu:GNOME") << QVector{W::Gnome, W::Portal};
    QTest::newRow("Budgie, in any case") << wayland("budgie:gnome") << QVector{W::Gnome, W::Portal};
    QTest::newRow("Cinnamon") << x11("X-Cinnamon", "") << QVector{W::Cinnamon, W::RootWindow, W::Portal};
    QTest::newRow("old variable only") << x11("", "mate") << QVector{W::Mate, W::RootWindow, W::Portal};
    QTest::newRow("session as a path") << x11("", "/usr/share/xsessions/plasma")
                                       << QVector{W::Plasma, W::RootWindow, W::Portal};
    QTest::newRow("desktop inside another session")
        << x11("XFCE", "gnome") << QVector{W::Xfce, W::RootWindow, W::Portal};
    QTest::newRow("name that only begins alike") << x11("GNOMEX", "") << QVector{W::RootWindow, W::Portal};
    QTest::newRow("window manager") << x11("i3", "i3") << QVector{W::RootWindow, W::Portal};
    QTest::newRow("sway without a name") << wayland("", true) << QVector{W::Sway, W::Portal};
    QTest::newRow("sway with its name") << wayland("sway:wlroots", true) << QVector{W::Sway, W::Swaybg, W::Portal};
    QTest::newRow("unknown compositor") << wayland("somewhere") << QVector{W::Swaybg, W::Portal};
    SessionNames sandboxed = x11("KDE", "plasma");
    sandboxed.sandboxed = true;
    QTest::newRow("sandbox") << sandboxed << QVector{W::Portal};
}

void tst_wallpaperways::likeliestWayComesFirst()
{
    QFETCH(SessionNames, session);
    QFETCH(QVector<WallpaperWay>, ways);
    QCOMPARE(wallpaperWays(session), ways);
}

QTEST_GUILESS_MAIN(tst_wallpaperways)
#include "tst_wallpaperways.moc"
