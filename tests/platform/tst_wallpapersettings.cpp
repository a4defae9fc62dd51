#include "platform/wallpapertest.h"

#include <QProcess>
#include <QStandardPaths>

#include <filesystem>

#undef signals
#include <gio/gio.h>

namespace {

/// What matters of the settings of two desktops whose own files are not among Debian's small packages.
constexpr char schemas[] = R"(<schemalist>
<enum id="cinnamon-style"><value nick="none" value="0"/><value nick="wallpaper" value="1"/>
<value nick="centered" value="2"/><value nick="stretched" value="4"/><value nick="zoom" value="5"/></enum>
<schema id="org.cinnamon.desktop.background" path="/org/cinnamon/desktop/background/">
<key name="picture-options" enum="cinnamon-style"><default>'zoom'</default></key>
<key name="picture-uri" type="s"><default>'file:///usr/share/mint.jpg'</default></key></schema>
<schema id="org.cinnamon.desktop.background.slideshow" path="/org/cinnamon/desktop/background/slideshow/">
<key name="slideshow-enabled" type="b"><default>false</default></key></schema>
<enum id="mate-style"><value nick="wallpaper" value="0"/><value nick="zoom" value="1"/>
<value nick="centered" value="2"/><value nick="stretched" value="4"/></enum>
<schema id="org.mate.background" path="/org/mate/desktop/background/">
<key name="picture-options" enum="mate-style"><default>'zoom'</default></key>
<key name="picture-filename" type="s"><default>'/usr/share/mate.png'</default></key></schema>
</schemalist>)";

}

/// Desktops that keep their wallpaper in settings, with the settings in a file of the throw-away home.
class tst_wallpapersettings : public WallpaperTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void gnomeShowsThePictureInLightAndDark();
    void gnomeRemovesAndRestores();
    void anotherWallpaperOfTheUserIsTheOneOfBefore();
    void whatWasNeverSetIsNotSetByRestoring();
    void cinnamonStopsItsSlideshow();
    void mateTakesPathsAndKnowsNoEmptyPlacement();
    void aFolderOfForeignBytesArrives();

private:
    /// The key of a group as the settings file has it: text in quotes, empty when the default holds.
    QString setting(const char *group, const char *key) const
    {
        const QByteArrayList lines = contents(home() + QStringLiteral(".config/glib-2.0/settings/keyfile")).split('\n');
        bool inside = false;
        for (const QByteArray &line : lines) {
            if (line.startsWith('['))
                inside = line == QByteArray("[") + group + ']';
            else if (inside && line.startsWith(QByteArray(key) + '='))
                return QString::fromUtf8(line.mid(qsizetype(qstrlen(key)) + 1));
        }
        return {};
    }
    QString gnome(const char *key) const { return setting("org/gnome/desktop/background", key); }
    static QString uri(const QString &path) { return QLatin1Char('\'') + fileUri(path) + QLatin1Char('\''); }
    /// As the desktop's own dialog would; null for the default.
    static void choose(const char *schema, const char *key, const char *value)
    {
        GSettings *settings = g_settings_new(schema);
        GVariant *parsed = value ? g_variant_parse(nullptr, value, nullptr, nullptr, nullptr) : nullptr;
        if (parsed)
            g_settings_set_value(settings, key, parsed);
        else
            g_settings_reset(settings, key);
        g_settings_sync();
        g_object_unref(settings);
    }
    static void chooseInGnome(const char *key, const char *value)
    {
        choose("org.gnome.desktop.background", key, value);
    }
};

void tst_wallpapersettings::initTestCase()
{
    startInNoSession();
    const QString compiler = QStandardPaths::findExecutable(QStringLiteral("glib-compile-schemas"));
    if (compiler.isEmpty())
        QSKIP("COMPILER OF SCHEMAS MISSING: libglib2.0-dev-bin is needed");
    write(QStringLiteral("schemas/test.gschema.xml"), schemas);
    QCOMPARE(QProcess::execute(compiler, {home() + QStringLiteral("schemas")}), 0);
    qputenv("GSETTINGS_SCHEMA_DIR", QFile::encodeName(home()) + "schemas");
    qputenv("GSETTINGS_BACKEND", "keyfile");
    qputenv("XDG_CURRENT_DESKTOP", "GNOME");
    if (!QFile::exists(QStringLiteral("/usr/share/glib-2.0/schemas/org.gnome.desktop.background.gschema.xml")))
        QSKIP("SCHEMAS MISSING: gsettings-desktop-schemas is needed");
}

void tst_wallpapersettings::gnomeShowsThePictureInLightAndDark()
{
    const QString first = writePicture(QStringLiteral("a b.bmp"), QSize(4, 4));
    set(first, WallpaperPlacement::Stretched);
    QCOMPARE(copies().size(), 1);
    const QString copy = copies().first();
    QCOMPARE(contents(copy), contents(first));
    QCOMPARE(gnome("picture-uri"), uri(copy));
    QCOMPARE(gnome("picture-uri-dark"), uri(copy));
    QCOMPARE(gnome("picture-options"), QStringLiteral("'stretched'"));

    set(writePicture(QStringLiteral("c.bmp"), QSize(5, 5)), WallpaperPlacement::Tiled);
    QCOMPARE(copies().size(), 1);
    QVERIFY(copies().first() != copy);
    QCOMPARE(gnome("picture-uri"), uri(copies().first()));
    QCOMPARE(gnome("picture-options"), QStringLiteral("'wallpaper'"));
    set(first, WallpaperPlacement::Centered);
    QCOMPARE(gnome("picture-options"), QStringLiteral("'centered'"));
    restore();
}

void tst_wallpapersettings::gnomeRemovesAndRestores()
{
    chooseInGnome("picture-uri", "'file:///old/light.jpg'");
    chooseInGnome("picture-uri-dark", "'file:///old/dark.jpg'");
    chooseInGnome("picture-options", "'zoom'");
    chooseInGnome("primary-color", "'#123456'");
    QVERIFY(!desktopWallpaper().canRestore());
    clear();
    QCOMPARE(gnome("picture-options"), QStringLiteral("'none'"));
    QVERIFY(desktopWallpaper().canRestore());
    // What it left there itself is not what the user had.
    set(writePicture(QStringLiteral("d.bmp"), QSize(4, 4)), WallpaperPlacement::Centered);
    clear();
    restore();
    QCOMPARE(gnome("picture-uri"), QStringLiteral("'file:///old/light.jpg'"));
    QCOMPARE(gnome("picture-uri-dark"), QStringLiteral("'file:///old/dark.jpg'"));
    QCOMPARE(gnome("picture-options"), QStringLiteral("'zoom'"));
    QCOMPARE(gnome("primary-color"), QStringLiteral("'#123456'"));
    QVERIFY(!desktopWallpaper().canRestore());
    QVERIFY(copies().isEmpty());
}

void tst_wallpapersettings::anotherWallpaperOfTheUserIsTheOneOfBefore()
{
    const QString picture = writePicture(QStringLiteral("e.bmp"), QSize(4, 4));
    chooseInGnome("picture-uri", "'file:///first.jpg'");
    set(picture, WallpaperPlacement::Centered);
    chooseInGnome("picture-uri", "'file:///second.jpg'");
    chooseInGnome("picture-uri-dark", "'file:///second.jpg'");
    set(picture, WallpaperPlacement::Tiled);
    restore();
    QCOMPARE(gnome("picture-uri"), QStringLiteral("'file:///second.jpg'"));
}

void tst_wallpapersettings::whatWasNeverSetIsNotSetByRestoring()
{
    for (const char *key : {"picture-uri", "picture-uri-dark", "picture-options"})
        chooseInGnome(key, nullptr);
    set(writePicture(QStringLiteral("f.bmp"), QSize(4, 4)), WallpaperPlacement::Centered);
    restore();
    QCOMPARE(gnome("picture-uri") + gnome("picture-uri-dark") + gnome("picture-options"), QString());
}

void tst_wallpapersettings::cinnamonStopsItsSlideshow()
{
    qputenv("XDG_CURRENT_DESKTOP", "X-Cinnamon");
    choose("org.cinnamon.desktop.background.slideshow", "slideshow-enabled", "true");
    constexpr char group[] = "org/cinnamon/desktop/background";
    constexpr char slides[] = "org/cinnamon/desktop/background/slideshow";
    set(writePicture(QStringLiteral("g.bmp"), QSize(4, 4)), WallpaperPlacement::Stretched);
    QCOMPARE(setting(group, "picture-uri"), uri(copies().last()));
    QCOMPARE(setting(group, "picture-options"), QStringLiteral("'stretched'"));
    QCOMPARE(setting(slides, "slideshow-enabled"), QStringLiteral("false"));
    clear();
    QCOMPARE(setting(group, "picture-options"), QStringLiteral("'none'"));
    restore();
    QCOMPARE(setting(slides, "slideshow-enabled"), QStringLiteral("true"));
    QCOMPARE(setting(group, "picture-uri"), QString());
}

void tst_wallpapersettings::mateTakesPathsAndKnowsNoEmptyPlacement()
{
    qputenv("XDG_CURRENT_DESKTOP", "MATE");
    constexpr char group[] = "org/mate/desktop/background";
    set(writePicture(QStringLiteral("h.bmp"), QSize(4, 4)), WallpaperPlacement::Tiled);
    QCOMPARE(setting(group, "picture-filename"), QLatin1Char('\'') + copies().last() + QLatin1Char('\''));
    QCOMPARE(setting(group, "picture-options"), QStringLiteral("'wallpaper'"));
    clear();
    QCOMPARE(setting(group, "picture-filename"), QStringLiteral("''"));
    restore();
    QCOMPARE(setting(group, "picture-filename"), QString());
}

void tst_wallpapersettings::aFolderOfForeignBytesArrives()
{
    qputenv("XDG_CURRENT_DESKTOP", "GNOME");
    const QByteArray before = qgetenv("LUMORA_APP_FOLDER");
    qputenv("LUMORA_APP_FOLDER", QFile::encodeName(home()) + "app/\xe4 'quoted'\"");
    const QString picture = writePicture(QStringLiteral("i.bmp"), QSize(4, 4));
    set(picture, WallpaperPlacement::Centered);
    QCOMPARE(copies().size(), 1);
    QVERIFY(copies().first().contains(QStringLiteral("quoted")));
    const QString told = gnome("picture-uri");
    QCOMPARE(pathFromFileUri(told.mid(1, told.size() - 2)), copies().first());
    restore();
    // The toolkit cannot take such a name away.
    std::filesystem::remove_all(qgetenv("LUMORA_APP_FOLDER").toStdString());
    qputenv("LUMORA_APP_FOLDER", before);
}

QTEST_MAIN(tst_wallpapersettings)
#include "tst_wallpapersettings.moc"
