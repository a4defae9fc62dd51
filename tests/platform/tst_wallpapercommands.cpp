#include "builtpaths.h"
#include "platform/wallpapertest.h"

#include <QProcess>
#include <QSettings>

#include <csignal>

/// Desktops that take their wallpaper by a command: stand-ins in PATH keep what they are told.
class tst_wallpapercommands : public WallpaperTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void lxqtIsToldPictureAndPlacement();
    void lxdeGetsItsPictureBack();
    void aRefusedChangePromisesNothing();
    void swayIsToldInItsOwnWords();
    void swayExpandsNoPath();
    void theRunningBackgroundProgramIsReplaced();
    void anotherBackgroundProgramIsLeftAlone();

private:
    void writeProgram(const QString &name, const QByteArray &script) const
    {
        const QString path = write(QStringLiteral("bin/") + name, "#!/bin/sh\n" + script);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void placeStandIn(const QString &name) const
    {
        QVERIFY(
            QFile::copy(QStringLiteral(LUMORA_BIN "/tests/wallpaper_standin"), home() + QStringLiteral("bin/") + name));
    }
    static QStringList words(const char *text) { return QString::fromUtf8(text).split(QLatin1Char('|')); }
    /// What the commands were called with since the last time.
    QStringList told() const
    {
        const QString path = home() + QStringLiteral("told");
        const QString text = QString::fromUtf8(contents(path));
        QFile::remove(path);
        return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    /// Every stand-in that runs, by number.
    QMap<int, QStringList> standIns() const
    {
        QMap<int, QStringList> found;
        const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
        for (const QString &process : processes) {
            const QString folder = QStringLiteral("/proc/") + process;
            if (!QFile::symLinkTarget(folder + QStringLiteral("/exe")).startsWith(home()))
                continue;
            QFile file(folder + QStringLiteral("/cmdline"));
            if (file.open(QIODevice::ReadOnly))
                found.insert(process.toInt(), QString::fromUtf8(file.readAll()).chopped(1).split(QChar(u'\0')).mid(1));
        }
        return found;
    }
    QString m_picture;
};

void tst_wallpapercommands::initTestCase()
{
    startInNoSession();
    for (const char *name : {"pcmanfm-qt", "pcmanfm"})
        writeProgram(QLatin1String(name), "printf '%s\\n' \"$@\" >> \"$HOME/told\"\n");
    // As sway does: one background program for all, started anew for each change.
    writeProgram(QStringLiteral("swaymsg"), R"sh(printf '%s\n' "$*" >> "$HOME/told"
[ -f "$HOME/number" ] && kill "$(cat "$HOME/number")"
if [ "$5" = solid_color ]; then set -- -o "$2" -c "$4"; else set -- -o "$2" -i "$4" -m "$5" -c "$6"; fi
swaybg "$@" > "$HOME/nothing" 2>&1 < "$HOME/nothing" &
echo $! > "$HOME/number"
)sh");
    write(QStringLiteral("nothing"), {});
    placeStandIn(QStringLiteral("swaybg"));
    placeStandIn(QStringLiteral("hyprpaper"));
    qputenv("PATH", QFile::encodeName(home()) + "bin:" + qgetenv("PATH"));
    m_picture = writePicture(QStringLiteral("a.bmp"), QSize(4, 4));
}

void tst_wallpapercommands::cleanup()
{
    const auto running = standIns();
    for (auto standIn = running.begin(); standIn != running.end(); ++standIn)
        ::kill(standIn.key(), SIGKILL);
    QTRY_VERIFY(standIns().isEmpty());
    QFile::remove(home() + QStringLiteral("number"));
}

void tst_wallpapercommands::lxqtIsToldPictureAndPlacement()
{
    qputenv("XDG_CURRENT_DESKTOP", "LXQt");
    const QList<std::pair<WallpaperPlacement, QString>> placements{
        {WallpaperPlacement::Centered, QStringLiteral("center")},
        {WallpaperPlacement::Stretched, QStringLiteral("stretch")},
        {WallpaperPlacement::Tiled, QStringLiteral("tile")}};
    for (const auto &[placement, mode] : placements) {
        set(m_picture, placement);
        QCOMPARE(told(),
            QStringList(
                {QStringLiteral("--set-wallpaper=") + copies().last(), QStringLiteral("--wallpaper-mode=") + mode}));
    }
    // It had told nothing of what it showed, so there is nothing to bring back.
    QVERIFY(!desktopWallpaper().canRestore());
    write(QStringLiteral(".config/pcmanfm-qt/lxqt/settings.conf"),
        "[Desktop]\nWallpaper=\"/old/a, b.jpg\"\nWallpaperMode=zoom\n");
    clear();
    QCOMPARE(told(), words("--wallpaper-mode=color"));
    write(QStringLiteral(".config/pcmanfm-qt/lxqt/settings.conf"),
        "[Desktop]\nWallpaper=\"/old/a, b.jpg\"\nWallpaperMode=none\n");
    set(m_picture, WallpaperPlacement::Tiled);
    told();
    restore();
    QCOMPARE(told(), words("--set-wallpaper=/old/a, b.jpg|--wallpaper-mode=zoom"));
}

void tst_wallpapercommands::lxdeGetsItsPictureBack()
{
    qputenv("XDG_CURRENT_DESKTOP", "LXDE");
    write(QStringLiteral(".config/pcmanfm/LXDE/desktop-items-0.conf"),
        "[*]\nwallpaper_mode=crop\nwallpaper=/old/\xc3\xa4, b.jpg\n");
    set(m_picture, WallpaperPlacement::Stretched);
    told();
    restore();
    QCOMPARE(told(), words("--set-wallpaper=/old/ä, b.jpg|--wallpaper-mode=crop"));
}

void tst_wallpapercommands::aRefusedChangePromisesNothing()
{
    writeProgram(QStringLiteral("pcmanfm"), "exit 3\n");
    set(m_picture, WallpaperPlacement::Stretched);
    QVERIFY(!desktopWallpaper().canRestore());
}

void tst_wallpapercommands::swayIsToldInItsOwnWords()
{
    qputenv("XDG_CURRENT_DESKTOP", "sway");
    qputenv("WAYLAND_DISPLAY", "wayland-of-this-test");
    QProcess::execute(QStringLiteral("swaymsg"), words("output|DP-1|bg|/old.png|fill|#112233"));
    QTRY_COMPARE(standIns().size(), 1);
    told();
    set(m_picture, WallpaperPlacement::Centered);
    QCOMPARE(told(), QStringList(QStringLiteral("output * bg %1 center #112233").arg(copies().last())));
    clear();
    QCOMPARE(told(), words("output * bg #112233 solid_color"));
    set(m_picture, WallpaperPlacement::Tiled);
    QCOMPARE(told(), QStringList(QStringLiteral("output * bg %1 tile #112233").arg(copies().last())));
    restore();
    QCOMPARE(told(), words("output DP-1 bg /old.png fill #112233"));
}

void tst_wallpapercommands::swayExpandsNoPath()
{
    const QByteArray before = qgetenv("LUMORA_APP_FOLDER");
    qputenv("LUMORA_APP_FOLDER", QFile::encodeName(home()) + "app/$(touch hit) 'x'");
    set(m_picture, WallpaperPlacement::Centered);
    const QString path = told().value(0).section(QLatin1Char(' '), 3, 3);
    QCOMPARE(QFileInfo(path).canonicalFilePath(), copies().last());
    QVERIFY2(!path.contains(QLatin1Char('$')), qPrintable(path));
    // Its own picture behind the link is recognised as such.
    set(m_picture, WallpaperPlacement::Tiled);
    restore();
    QCOMPARE(told().last(), QStringLiteral("output * bg #000000 solid_color"));
    qputenv("LUMORA_APP_FOLDER", before);
}

void tst_wallpapercommands::theRunningBackgroundProgramIsReplaced()
{
    qputenv("XDG_CURRENT_DESKTOP", "labwc:wlroots");
    QProcess users;
    users.start(QStringLiteral("swaybg"), words("-i|/old a.png|-m|fill|-o|DP-2|-c|102030"));
    QVERIFY(users.waitForStarted());
    set(m_picture, WallpaperPlacement::Stretched);
    QTRY_COMPARE(users.state(), QProcess::NotRunning);
    QCOMPARE(standIns().size(), 1);
    QCOMPARE(standIns().first(),
        words("-o|*|-i|%1|-m|stretch|-c|#102030").replaceInStrings(QStringLiteral("%1"), copies().last()));
    clear();
    QTRY_COMPARE(standIns().size(), 1);
    QCOMPARE(standIns().first(), words("-o|*|-m|solid_color|-c|#102030"));
    restore();
    QTRY_COMPARE(standIns().size(), 1);
    QCOMPARE(standIns().first(), words("-o|*|-i|/old a.png|-m|fill|-o|DP-2|-c|102030"));
}

void tst_wallpapercommands::anotherBackgroundProgramIsLeftAlone()
{
    QProcess users;
    users.start(QStringLiteral("hyprpaper"), QStringList());
    QVERIFY(users.waitForStarted());
    set(m_picture, WallpaperPlacement::Stretched);
    QCOMPARE(standIns().size(), 1);
    QCOMPARE(users.state(), QProcess::Running);
    users.kill();
    users.waitForFinished();
}

QTEST_MAIN(tst_wallpapercommands)
#include "tst_wallpapercommands.moc"
