#include "platform/desktoptools.h"
#include "support/support.h"

#include <QtTest>

/// Which of the desktop's own programs is opened, and how.
class tst_desktoptools : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void theDesktopsOwnToolComesFirst_data();
    void theDesktopsOwnToolComesFirst();
    void toolsOfOneDesktopAreNotForOthers();
    void theFirstInstalledOneIsStartedWithItsArguments();
    void noneInstalledIsSaid();

private:
    QString install(const QString &program);
    QByteArray started() const;

    TemporaryHome m_home;
};

void tst_desktoptools::theDesktopsOwnToolComesFirst_data()
{
    QTest::addColumn<QString>("desktop");
    QTest::addColumn<QString>("volume");
    QTest::addColumn<QString>("display");
    const auto row = [](const char *desktop, const char *volume, const char *display) {
        QTest::newRow(desktop) << QString::fromLatin1(desktop) << QString::fromLatin1(volume)
                               << QString::fromLatin1(display);
    };
    row("GNOME", "gnome-control-center sound", "gnome-control-center display");
    row("ubuntu:GNOME", "gnome-control-center sound", "gnome-control-center display");
    row("KDE", "systemsettings kcm_pulseaudio", "systemsettings kcm_kscreen");
    row("XFCE", "pavucontrol", "xfce4-display-settings");
    row("LXQt", "pavucontrol-qt", "lxqt-config-monitor");
    row("X-Cinnamon", "cinnamon-settings sound", "cinnamon-settings display");
    row("MATE", "mate-volume-control", "mate-display-properties");
    row("none of these", "pavucontrol", "xfce4-display-settings");
}

void tst_desktoptools::theDesktopsOwnToolComesFirst()
{
    QFETCH(QString, desktop);
    const auto first = [&](DesktopTool tool) {
        const ToolCommand command = desktopToolCommands(tool, desktop, false).constFirst();
        return (QStringList{command.program} + command.arguments).join(QLatin1Char(' '));
    };
    QTEST(first(DesktopTool::VolumeControl), "volume");
    QTEST(first(DesktopTool::DisplaySettings), "display");
}

void tst_desktoptools::toolsOfOneDesktopAreNotForOthers()
{
    for (const DesktopTool tool : {DesktopTool::VolumeControl, DesktopTool::DisplaySettings}) {
        for (const bool wayland : {false, true}) {
            for (const ToolCommand &command : desktopToolCommands(tool, QStringLiteral("XFCE"), wayland)) {
                QVERIFY2(!command.program.endsWith(QLatin1String("control-center")), "it would end at once");
                QVERIFY2(command.program != (wayland ? QLatin1String("arandr") : QLatin1String("wdisplays")),
                    "it cannot work with this kind of session");
            }
        }
    }
}

/// A program that notes its name and its arguments, one a line.
QString tst_desktoptools::install(const QString &program)
{
    const QString path = m_home.write(QStringLiteral("bin/") + program,
        "#!/bin/sh\nprintf '%s\\n' \"${0##*/}\" \"$@\" > \"$HOME/new\" && /bin/mv \"$HOME/new\" \"$HOME/started\"\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

QByteArray tst_desktoptools::started() const
{
    QFile file(m_home.path() + QStringLiteral("started"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_desktoptools::theFirstInstalledOneIsStartedWithItsArguments()
{
    const QByteArray path = qgetenv("PATH");
    install(QStringLiteral("qasmixer"));
    install(QStringLiteral("systemsettings5"));
    qputenv("PATH", m_home.path().toUtf8() + "bin:/nowhere");
    qputenv("XDG_CURRENT_DESKTOP", "KDE");
    const bool opened = openDesktopTool(DesktopTool::VolumeControl);
    qputenv("PATH", path);
    QVERIFY(opened);
    QTRY_COMPARE(started(), QByteArray("systemsettings5\nkcm_pulseaudio\n"));
}

void tst_desktoptools::noneInstalledIsSaid()
{
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", m_home.path().toUtf8() + "empty");
    const bool opened = openDesktopTool(DesktopTool::DisplaySettings);
    qputenv("PATH", path);
    QVERIFY(!opened);
}

QTEST_GUILESS_MAIN(tst_desktoptools)
#include "tst_desktoptools.moc"
