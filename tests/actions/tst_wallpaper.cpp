#include "actions/savetest.h"
#include "actions/wallpaper.h"
#include "platform/files.h"
#include "platform/registrystore.h"
#include "platform/wallpaper.h"
#include "ui/yield.h"

#include <QSignalSpy>

/// Picture > Set Image as Desktop Wallpaper, from the pane to the file, the store and the desktop's own command.
class tst_wallpaper : public SaveTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aCommandWritesFileAndStore_data();
    void aCommandWritesFileAndStore();
    void theWholePictureIsWrittenNotWhatFitsThePane();
    void theNextPictureReplacesTheFile();
    void removingLeavesTheFile();
    void nothingOnThePaneDoesNothing();
    void aFileThatCannotBeWrittenIsSilent();
    void onlyAPictureCanBeHungUp();
    void restoringIsOfferedWhileThereIsSomethingToRestore();
    void theListEmptiedInTheYield();

private:
    static QString value(const char *name)
    {
        const auto found = registryStore().value(
            RegistryStore::Root::CurrentUser, QStringLiteral("Control Panel\\Desktop"), QLatin1String(name));
        return found ? *found : QStringLiteral("not there");
    }
    static void forgetFileAndStore()
    {
        desktopWallpaper().waitForDone(std::chrono::seconds(30));
        QFile::remove(wallpaperFileName());
        ignore(registryStore().deleteKey(RegistryStore::Root::CurrentUser, QStringLiteral("Control Panel")));
    }
    void showPicture(const QString &name, const QImage &image)
    {
        window().ClearDisplayList();
        show(writePng(name, image));
        QVERIFY(!window().Image1->isEmpty());
    }
    /// What the desktop was told last, once it has been told everything.
    QString told() const
    {
        desktopWallpaper().waitForDone(std::chrono::seconds(30));
        const auto lines = readFile(home() + QStringLiteral("told"), 1 << 20);
        return lines ? QString::fromUtf8(*lines).trimmed().section(QLatin1Char('\n'), -1) : QString();
    }
};

void tst_wallpaper::initTestCase()
{
    QVERIFY(start());
    // A desktop that takes its wallpaper by a command.
    const QString script =
        homeFolder().write(QStringLiteral("bin/pcmanfm-qt"), "#!/bin/sh\nprintf '%s\\n' \"$*\" >> \"$HOME/told\"\n");
    QFile::setPermissions(script, QFile::ReadOwner | QFile::ExeOwner);
    qputenv("PATH", QFile::encodeName(home()) + "bin:" + qgetenv("PATH"));
    qputenv("XDG_CURRENT_DESKTOP", "LXQt");
    qputenv("LUMORA_TEST_DESKTOP", "1");
    for (const char *variable : {"WAYLAND_DISPLAY", "SWAYSOCK", "DISPLAY", "DBUS_SESSION_BUS_ADDRESS"})
        qunsetenv(variable);
}

void tst_wallpaper::init()
{
    fresh();
    forgetFileAndStore();
    QFile::remove(home() + QStringLiteral("told"));
}

void tst_wallpaper::cleanup()
{
    setDialogs(nullptr);
    QVERIFY(desktopWallpaper().waitForDone(std::chrono::seconds(30)));
}

void tst_wallpaper::aCommandWritesFileAndStore_data()
{
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("tile");
    QTest::addColumn<QString>("style");
    QTest::addColumn<QString>("mode");
    const auto row = [](const char *item, const char *key, const char *tile, const char *style, const char *mode) {
        QTest::newRow(key) << QString::fromLatin1(item) << QString::fromLatin1(key) << QString::fromLatin1(tile)
                           << QString::fromLatin1(style) << QString::fromLatin1(mode);
    };
    row("mnuPictureWallPaperCentered", "wpaperc", "0", "0", "center");
    row("mnuPictureWallPaperStretched", "wpapers", "0", "2", "stretch");
    row("mnuPictureWallPaperTiled", "wpapert", "1", "0", "tile");
}

void tst_wallpaper::aCommandWritesFileAndStore()
{
    QFETCH(QString, item);
    QFETCH(QString, key);
    QFETCH(QString, tile);
    QFETCH(QString, style);
    QFETCH(QString, mode);
    const QImage ramp = rampImage({31, 17});
    showPicture(QStringLiteral("a.png"), ramp);
    auto *command = window().findChild<QAction *>(item);
    QVERIFY(command && command->isVisible() && command->isEnabled());
    for (QAction *way : {command, window().toolbarButton(key)}) {
        forgetFileAndStore();
        QVERIFY(way->isVisible() && way->isEnabled());
        way->trigger();
        const Picture written = read(home() + QStringLiteral("app/Lumora-Viewer.bmp"));
        QCOMPARE(written.info.codec, QByteArray("BMP"));
        QCOMPARE(written.pixels.convertToFormat(QImage::Format_RGB32), ramp);
        QCOMPARE(value("TileWallpaper"), tile);
        QCOMPARE(value("WallpaperStyle"), style);
    }
    QVERIFY2(told().endsWith(QStringLiteral("--wallpaper-mode=") + mode), qPrintable(told()));
}

void tst_wallpaper::theWholePictureIsWrittenNotWhatFitsThePane()
{
    QImage large(3000, 2400, QImage::Format_RGB32);
    large.fill(Qt::darkCyan);
    large.setPixel(2999, 2399, 0xffff0000);
    window().ClearDisplayList();
    const QString path = home() + QStringLiteral("large.jpg");
    QVERIFY(large.save(path, "JPG", 100));
    show(path);
    window().mnuPictureWallPaperCentered_Click();
    QCOMPARE(read(wallpaperFileName()).pixels.size(), large.size());
    // The file may change or go afterwards; what the pane holds is written.
    QVERIFY(QFile::remove(path));
    forgetFileAndStore();
    window().mnuPictureWallPaperTiled_Click();
    QCOMPARE(read(wallpaperFileName()).pixels.size(), large.size());
}

void tst_wallpaper::theNextPictureReplacesTheFile()
{
    showPicture(QStringLiteral("b.png"), rampImage({40, 30}));
    window().mnuPictureWallPaperCentered_Click();
    QImage clear(20, 10, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    showPicture(QStringLiteral("c.png"), clear);
    window().mnuPictureWallPaperStretched_Click();
    const Picture written = read(wallpaperFileName());
    QCOMPARE(written.pixels.size(), clear.size());
    QCOMPARE(written.pixels.pixelColor(5, 5), QColor(Qt::white));
    QCOMPARE(value("WallpaperStyle"), QStringLiteral("2"));
}

void tst_wallpaper::removingLeavesTheFile()
{
    showPicture(QStringLiteral("d.png"), rampImage({8, 8}));
    window().mnuPictureWallPaperCentered_Click();
    window().toolbarButton(QStringLiteral("wpaperr"))->trigger();
    QVERIFY(QFile::exists(wallpaperFileName()));
    QCOMPARE(value("TileWallpaper"), QStringLiteral("1"));
    QCOMPARE(value("WallpaperStyle"), QStringLiteral("0"));
    QCOMPARE(told(), QStringLiteral("--wallpaper-mode=color"));
}

void tst_wallpaper::nothingOnThePaneDoesNothing()
{
    show(homeFolder().write(QStringLiteral("broken.png"), "no picture"));
    QVERIFY(window().Image1->isEmpty());
    window().mnuPictureWallPaperCentered_Click();
    QVERIFY(!QFile::exists(wallpaperFileName()));
    QCOMPARE(value("TileWallpaper"), QStringLiteral("not there"));
    QCOMPARE(told(), QString());
}

void tst_wallpaper::aFileThatCannotBeWrittenIsSilent()
{
    showPicture(QStringLiteral("e.png"), rampImage({8, 8}));
    QVERIFY(QDir().mkpath(wallpaperFileName()));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("picture not written")));
    window().mnuPictureWallPaperStretched_Click();
    QCOMPARE(value("WallpaperStyle"), QStringLiteral("2"));
    QVERIFY(desktopWallpaper().waitForDone(std::chrono::seconds(30)));
    QVERIFY(QDir().rmdir(wallpaperFileName()));
}

void tst_wallpaper::onlyAPictureCanBeHungUp()
{
    QVERIFY(!window().mnuPictureDesktopWallpaper->isEnabled());
    showPicture(QStringLiteral("f.png"), rampImage({8, 8}));
    QVERIFY(window().mnuPictureDesktopWallpaper->isEnabled());
    show(homeFolder().write(QStringLiteral("sound.wav"), "RIFF"));
    QVERIFY(!window().mnuPictureDesktopWallpaper->isEnabled());
    for (const char *key : {"wpaperc", "wpapers", "wpapert", "wpaperr"})
        QVERIFY2(!window().toolbarButton(QLatin1String(key))->isEnabled(), key);
}

void tst_wallpaper::restoringIsOfferedWhileThereIsSomethingToRestore()
{
    QVERIFY(!window().mnuPictureWallPaperRestore->isEnabled());
    ignore(homeFolder().write(
        QStringLiteral(".config/pcmanfm-qt/lxqt/settings.conf"), "[Desktop]\nWallpaper=/old.jpg\nWallpaperMode=fit\n"));
    showPicture(QStringLiteral("g.png"), rampImage({8, 8}));
    window().mnuPictureWallPaperTiled_Click();
    QTRY_VERIFY(window().mnuPictureWallPaperRestore->isEnabled());
    window().ClearDisplayList();
    QVERIFY(window().mnuPictureWallPaperRestore->isEnabled());
    window().mnuPictureWallPaperRestore->trigger();
    QCOMPARE(value("TileWallpaper"), QStringLiteral("not there"));
    QTRY_VERIFY(!window().mnuPictureWallPaperRestore->isEnabled());
    QCOMPARE(told(), QStringLiteral("--set-wallpaper=/old.jpg --wallpaper-mode=fit"));
}

void tst_wallpaper::theListEmptiedInTheYield()
{
    forEachYield(
        [this] {
            showPicture(QStringLiteral("h.png"), rampImage({8, 8}));
        },
        [this] { window().mnuPictureWallPaperCentered_Click(); }, [this] { window().ClearDisplayList(); },
        [](int) { QCOMPARE(read(wallpaperFileName()).pixels.size(), QSize(8, 8)); });
}

QTEST_MAIN(tst_wallpaper)
#include "tst_wallpaper.moc"
