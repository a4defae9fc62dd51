#include "platform/plasmashell.h"
#include "platform/wallpapertest.h"
#include "support/privatebus.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QProcess>
#include <QStandardPaths>

#include <unistd.h>

namespace {

/// The shell of Plasma: runs the scripts on desktops that are only this state.
class FakePlasma : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.PlasmaShell")
public:
    QJsonObject state;

public Q_SLOTS:
    QString evaluateScript(const QString &script) { return QString::fromUtf8(runInShell(state, script.toUtf8())); }
};

/// The settings of Xfce, of one channel.
class FakeXfconf : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.xfce.Xfconf")
public:
    QVariantMap properties;

public Q_SLOTS:
    QVariantMap GetAllProperties(const QString &channel, const QString &base)
    {
        QVariantMap found;
        for (auto property = properties.begin(); property != properties.end(); ++property) {
            if (channel == QLatin1String("xfce4-desktop") && property.key().startsWith(base))
                found.insert(property.key(), property.value());
        }
        return found;
    }
    QDBusVariant GetProperty(const QString &, const QString &) { return QDBusVariant(2); }
    void SetProperty(const QString &channel, const QString &property, const QDBusVariant &value)
    {
        if (channel == QLatin1String("xfce4-desktop"))
            properties.insert(property, value.variant());
    }
    void ResetProperty(const QString &, const QString &property, bool) { properties.remove(property); }
};

/// The wallpaper portal.
class FakePortal : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Wallpaper")
    Q_PROPERTY(uint version MEMBER version)
public:
    uint version = 1;
    QByteArray picture;
    QVariantMap options;

public Q_SLOTS:
    QDBusObjectPath SetWallpaperFile(const QString &, const QDBusUnixFileDescriptor &file, const QVariantMap &how)
    {
        QFile reader;
        const int copy = ::dup(file.fileDescriptor());
        if (reader.open(copy, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
            picture = reader.readAll();
        options = how;
        return QDBusObjectPath(QStringLiteral("/org/freedesktop/portal/desktop/request/1"));
    }
};

}

/// Desktops that are told over the session bus: stand-ins for them on a bus of the test's own.
class tst_wallpaperbus : public WallpaperTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void plasmaHangsItOnEveryDesktop();
    void xfceHangsItOnEveryMonitorAndWorkspace();
    void xfceOfOldKnowsMonitorsOnly();
    void thePortalGetsTheOpenFile();
    void aDesktopThatDoesNotAnswerHoldsNothingUp();

private:
    /// Lets an object answer under a name; cleanup() ends it.
    void serve(const char *service, const char *path, QObject &object)
    {
        QDBusConnection connection(QStringLiteral("stand-in"));
        QVERIFY(connection.registerObject(
            QLatin1String(path), &object, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties));
        QVERIFY(connection.registerService(QLatin1String(service)));
        m_service = QLatin1String(service);
        m_path = QLatin1String(path);
    }
    std::unique_ptr<PrivateBus> m_bus;
    QString m_picture;
    QString m_service;
    QString m_path;
};

void tst_wallpaperbus::initTestCase()
{
    startInNoSession();
    m_bus = std::make_unique<PrivateBus>();
    SKIP_WITHOUT_BUS(*m_bus);
    QVERIFY(QDBusConnection::connectToBus(m_bus->address(), QStringLiteral("stand-in")).isConnected());
    m_picture = writePicture(QStringLiteral("a.bmp"), QSize(6, 5));
}

void tst_wallpaperbus::cleanup()
{
    QDBusConnection connection(QStringLiteral("stand-in"));
    connection.unregisterService(m_service);
    connection.unregisterObject(m_path);
}

void tst_wallpaperbus::plasmaHangsItOnEveryDesktop()
{
    if (QStandardPaths::findExecutable(QStringLiteral("duk")).isEmpty())
        QSKIP("DUKTAPE MISSING: the package duktape is needed");
    FakePlasma plasma;
    serve("org.kde.plasmashell", "/PlasmaShell", plasma);
    qputenv("XDG_CURRENT_DESKTOP", "KDE");
    plasma.state = QJsonDocument::fromJson(plasmaDesktops).object();
    const QJsonObject before = plasma.state;
    const auto image = [&](const char *desktop) {
        const QJsonObject groups = plasma.state[QLatin1String(desktop)][QLatin1String("groups")].toObject();
        return groups[QLatin1String("Wallpaper/org.kde.image/General")].toObject();
    };
    const auto plugin = [&](const char *desktop) {
        return plasma.state[QLatin1String(desktop)][QLatin1String("plugin")].toString();
    };
    const QList<std::pair<WallpaperPlacement, int>> modes{
        {WallpaperPlacement::Centered, 6}, {WallpaperPlacement::Tiled, 3}, {WallpaperPlacement::Stretched, 0}};
    for (const auto &[placement, mode] : modes) {
        set(m_picture, placement);
        for (const char *desktop : {"1", "27"}) {
            QCOMPARE(plugin(desktop), QStringLiteral("org.kde.image"));
            QCOMPARE(image(desktop)[QLatin1String("Image")].toString(), fileUri(copies().last()));
            QCOMPARE(image(desktop)[QLatin1String("FillMode")].toInt(-1), mode);
        }
    }
    clear();
    QCOMPARE(plugin("1") + plugin("27"), QStringLiteral("org.kde.colororg.kde.color"));
    set(m_picture, WallpaperPlacement::Stretched);
    restore();
    QCOMPARE(plasma.state, before);
}

void tst_wallpaperbus::xfceHangsItOnEveryMonitorAndWorkspace()
{
    FakeXfconf xfconf;
    serve("org.xfce.Xfconf", "/org/xfce/Xfconf", xfconf);
    qputenv("XDG_CURRENT_DESKTOP", "XFCE");
    const QString one = QStringLiteral("/backdrop/screen0/monitorDP-1/workspace0/");
    const QString two = QStringLiteral("/backdrop/screen0/monitorDP-1/workspace1/");
    xfconf.properties = {{one + QStringLiteral("last-image"), QStringLiteral("/old one.jpg")},
        {one + QStringLiteral("image-style"), 5}, {one + QStringLiteral("backdrop-cycle-enable"), true},
        {two + QStringLiteral("last-image"), QStringLiteral("/old two.jpg")}, {two + QStringLiteral("color-style"), 1}};
    const QVariantMap before = xfconf.properties;
    const QList<std::pair<WallpaperPlacement, int>> styles{
        {WallpaperPlacement::Centered, 1}, {WallpaperPlacement::Tiled, 2}, {WallpaperPlacement::Stretched, 3}};
    for (const auto &[placement, style] : styles) {
        set(m_picture, placement);
        for (const QString &place : {one, two}) {
            QCOMPARE(xfconf.properties.value(place + QStringLiteral("last-image")).toString(), copies().last());
            QCOMPARE(xfconf.properties.value(place + QStringLiteral("image-style")), QVariant(style));
        }
    }
    QCOMPARE(xfconf.properties.value(one + QStringLiteral("backdrop-cycle-enable")), QVariant(false));
    clear();
    QCOMPARE(xfconf.properties.value(two + QStringLiteral("image-style")), QVariant(0));
    QCOMPARE(xfconf.properties.value(two + QStringLiteral("color-style")), QVariant(1));
    restore();
    QCOMPARE(xfconf.properties, before);
}

void tst_wallpaperbus::xfceOfOldKnowsMonitorsOnly()
{
    FakeXfconf xfconf;
    serve("org.xfce.Xfconf", "/org/xfce/Xfconf", xfconf);
    const QString place = QStringLiteral("/backdrop/screen0/monitor0/");
    xfconf.properties = {{place + QStringLiteral("image-path"), QStringLiteral("/old.jpg")},
        {place + QStringLiteral("image-show"), false}};
    const QVariantMap before = xfconf.properties;
    set(m_picture, WallpaperPlacement::Tiled);
    QCOMPARE(xfconf.properties.value(place + QStringLiteral("image-path")).toString(), copies().last());
    QCOMPARE(xfconf.properties.value(place + QStringLiteral("image-show")), QVariant(true));
    clear();
    QCOMPARE(xfconf.properties.value(place + QStringLiteral("image-show")), QVariant(false));
    restore();
    QCOMPARE(xfconf.properties, before);
}

void tst_wallpaperbus::thePortalGetsTheOpenFile()
{
    FakePortal portal;
    serve("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", portal);
    qputenv("XDG_CURRENT_DESKTOP", "somewhere");
    set(m_picture, WallpaperPlacement::Centered);
    QCOMPARE(portal.picture, contents(m_picture));
    QCOMPARE(portal.options.value(QStringLiteral("set-on")).toString(), QStringLiteral("background"));
    QVERIFY(!desktopWallpaper().canRestore());
}

void tst_wallpaperbus::aDesktopThatDoesNotAnswerHoldsNothingUp()
{
    // It has the name of the shell and no objects.
    QVERIFY(QDBusConnection(QStringLiteral("stand-in")).registerService(QStringLiteral("org.kde.plasmashell")));
    qputenv("XDG_CURRENT_DESKTOP", "KDE");
    m_service = QStringLiteral("org.kde.plasmashell");
    desktopWallpaper().set(m_picture, WallpaperPlacement::Centered);
    desktopWallpaper().set(m_picture, WallpaperPlacement::Tiled);
    QVERIFY(!desktopWallpaper().waitForDone(std::chrono::milliseconds(0)));
    QSignalSpy done(&desktopWallpaper(), &DesktopWallpaper::done);
    QTRY_VERIFY_WITH_TIMEOUT(desktopWallpaper().waitForDone(std::chrono::milliseconds(0)), 30000);
    QVERIFY(!desktopWallpaper().canRestore());
}

QTEST_MAIN(tst_wallpaperbus)
#include "tst_wallpaperbus.moc"
