#include "ui/icons.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QGuiApplication>
#include <QPainter>
#include <QPalette>
#include <QtTest>

#include <cmath>

namespace {

const QStringList &codes()
{
    static const QStringList list = QStringLiteral("art asf asx avi bmp cur cut dcx dib emf gem gif hrz ico iff img "
                                                   "jpg lbm mac mbm mid mpg mp2 mp3 msp pbm pcd pcx "
                                                   "pgm pic png pnm ppm psd psp ras sfw tga tif wav wbmp wma wmv wmf "
                                                   "wpg xbm xpm xwd crw dcr fpx jp2 mrw nef orf raf "
                                                   "pmp thm")
                                        .split(QLatin1Char(' '));
    return list;
}

QImage grabbed(const QIcon &icon, int side, QIcon::Mode mode = QIcon::Normal)
{
    return icon.pixmap(QSize(side, side), 1.0, mode).toImage().convertToFormat(QImage::Format_ARGB32);
}

int paintedPixels(const QImage &image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            count += qAlpha(image.pixel(x, y)) > 60;
    return count;
}

double luminance(QRgb color)
{
    const auto linear = [](int channel) {
        const double value = channel / 255.0;
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(color)) + 0.7152 * linear(qGreen(color)) + 0.0722 * linear(qBlue(color));
}

double contrast(QRgb a, QRgb b)
{
    const double light = std::max(luminance(a), luminance(b));
    const double dark = std::min(luminance(a), luminance(b));
    return (light + 0.05) / (dark + 0.05);
}

/// The strongest contrast that any pixel of the icon has on the ground.
double bestContrast(const QIcon &icon, QRgb ground)
{
    QImage image(24, 24, QImage::Format_RGB32);
    image.fill(ground);
    QPainter painter(&image);
    icon.paint(&painter, image.rect());
    painter.end();
    double best = 1;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            best = std::max(best, contrast(image.pixel(x, y), ground));
    return best;
}

QPalette paletteOf(QRgb window, QRgb text)
{
    QPalette palette;
    palette.setColor(QPalette::Window, QColor(window));
    palette.setColor(QPalette::WindowText, QColor(text));
    return palette;
}

QStringList ownCommands()
{
    QStringList names;
    QDirIterator drawings(QStringLiteral(":/lumora/icons/commands"));
    while (drawings.hasNext())
        names << QFileInfo(drawings.next()).completeBaseName();
    return names;
}

}

class tst_icons : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        installIconThemes();
        m_themeName = QIcon::themeName();
        m_searchPaths = QIcon::themeSearchPaths();
    }

    void cleanup()
    {
        QIcon::setThemeSearchPaths(m_searchPaths);
        QIcon::setThemeName(m_themeName);
        QGuiApplication::setPalette(QPalette());
    }

    void everyFileTypeHasALegibleIconOfItsOwn_data()
    {
        QTest::addColumn<int>("side");
        QTest::newRow("at 16 pixels") << 16;
        QTest::newRow("at 22 pixels") << 22;
        QTest::newRow("at 44 pixels, as on a screen of scale 2") << 44;
    }

    void everyFileTypeHasALegibleIconOfItsOwn()
    {
        QFETCH(int, side);
        QHash<QByteArray, QString> seen;
        for (const QString &code : codes()) {
            const QImage image = grabbed(fileTypeIcon(code), side);
            QCOMPARE(image.size(), QSize(side, side));
            QVERIFY2(paintedPixels(image) > side * side / 2, qPrintable(code));
            const QByteArray pixels(reinterpret_cast<const char *>(image.constBits()), image.sizeInBytes());
            const QByteArray print = QCryptographicHash::hash(pixels, QCryptographicHash::Md5);
            QVERIFY2(!seen.contains(print), qPrintable(code + QStringLiteral(" looks like ") + seen.value(print)));
            seen.insert(print, code);
        }
    }

    void tipsAndHelpAreInTheProgram()
    {
        for (const char *file : {":/lumora/TIPOFDAY.TXT", ":/lumora/help/index.html"}) {
            QFile resource(QString::fromLatin1(file));
            QVERIFY2(resource.open(QIODevice::ReadOnly) && resource.size() > 500, file);
        }
    }

    void aTypeWithoutADrawingHasNoIcon()
    {
        for (const char *code : {"", "rgb", "jpeg", "../lumora", "JPG"})
            QVERIFY2(fileTypeIcon(QLatin1String(code)).isNull(), code);
    }

    void lettersStandOutFromTheirBand()
    {
        // The band runs over the lower half; among its pixels the code's strokes must reach 3:1 against the band's
        // colour.
        for (const QString &code : codes()) {
            const QImage image = grabbed(fileTypeIcon(code), 22);
            const QRgb band = image.pixel(1, 19);
            int letters = 0;
            for (int y = 12; y < 20; ++y)
                for (int x = 1; x < 21; ++x)
                    letters += contrast(image.pixel(x, y), band) >= 3.0;
            QVERIFY2(letters >= 12, qPrintable(code));
        }
    }

    void ownDrawingsReadOnLightAndDarkGround_data()
    {
        QTest::addColumn<QRgb>("window");
        QTest::addColumn<QRgb>("text");
        QTest::newRow("light palette") << qRgb(239, 240, 241) << qRgb(35, 38, 41);
        QTest::newRow("dark palette") << qRgb(35, 38, 41) << qRgb(239, 240, 241);
        QTest::newRow("black palette") << qRgb(0, 0, 0) << qRgb(255, 255, 255);
    }

    void ownDrawingsReadOnLightAndDarkGround()
    {
        QFETCH(QRgb, window);
        QFETCH(QRgb, text);
        QIcon::setThemeName(QStringLiteral("hicolor"));
        QGuiApplication::setPalette(paletteOf(window, text));
        const QStringList names = ownCommands();
        QVERIFY(names.size() > 50);
        for (const QString &name : names)
            QVERIFY2(bestContrast(themedIcon(name), window) >= 3.0, qPrintable(name));
        for (const QString &code : codes())
            QVERIFY2(bestContrast(fileTypeIcon(code), window) >= 3.0, qPrintable(code));
    }

    void aChangedPaletteRedrawsAnIconThatIsInUse()
    {
        QIcon::setThemeName(QStringLiteral("hicolor"));
        const QIcon icon = themedIcon(QStringLiteral("go-next"));
        QGuiApplication::setPalette(paletteOf(qRgb(255, 255, 255), qRgb(0, 0, 0)));
        const QImage onLight = grabbed(icon, 24);
        QGuiApplication::setPalette(paletteOf(qRgb(0, 0, 0), qRgb(255, 255, 255)));
        QVERIFY(grabbed(icon, 24) != onLight);
    }

    void disabledIconsAreFainter()
    {
        QIcon::setThemeName(QStringLiteral("hicolor"));
        const QIcon icon = themedIcon(QStringLiteral("zoom-in"));
        QVERIFY(grabbed(icon, 24, QIcon::Disabled) != grabbed(icon, 24));
        QVERIFY(paintedPixels(grabbed(icon, 24, QIcon::Disabled)) > 0);
    }

    void noIconIsEmptyWithoutAnyTheme_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"document-open", "document-save", "go-next", "help-contents", "edit-clear-history",
                 "a-name-nobody-ever-drew", "lumora-nothing", ""})
            QTest::addRow("name \"%s\"", name) << QString::fromLatin1(name);
    }

    void noIconIsEmptyWithoutAnyTheme()
    {
        QFETCH(QString, name);
        QIcon::setThemeSearchPaths({});
        QIcon::setThemeName(QString());
        const QIcon icon = themedIcon(name);
        QVERIFY(!icon.isNull());
        QVERIFY(paintedPixels(grabbed(icon, 24)) > 20);
    }

    void aLongerNameFallsBackToItsBeginning()
    {
        QIcon::setThemeSearchPaths({});
        QIcon::setThemeName(QString());
        QCOMPARE(grabbed(themedIcon(QStringLiteral("go-next-context-rtl")), 24),
            grabbed(themedIcon(QStringLiteral("go-next")), 24));
        // An unknown command of the program must not be shown as the program itself.
        QVERIFY(grabbed(themedIcon(QStringLiteral("lumora-nothing")), 24)
            != grabbed(themedIcon(QStringLiteral("lumora")), 24));
    }

    void theUsersThemeGoesBeforeTheOwnDrawing()
    {
        QTemporaryDir folder;
        const QString theme = folder.path() + QStringLiteral("/loud/");
        QVERIFY(QDir().mkpath(theme + QStringLiteral("24")));
        QFile index(theme + QStringLiteral("index.theme"));
        QVERIFY(index.open(QIODevice::WriteOnly));
        index.write("[Icon Theme]\nName=loud\nComment=x\nDirectories=24\n[24]\nSize=24\nType=Fixed\n");
        index.close();
        QImage red(24, 24, QImage::Format_ARGB32);
        red.fill(qRgb(250, 10, 10));
        QVERIFY(red.save(theme + QStringLiteral("24/go-next.png")));
        QVERIFY(red.save(theme + QStringLiteral("24/lumora-show.png")));

        const QIcon before = themedIcon(QStringLiteral("go-next"));
        const QImage own = grabbed(before, 24);
        QIcon::setThemeSearchPaths({folder.path()});
        QIcon::setThemeName(QStringLiteral("loud"));
        QCOMPARE(grabbed(themedIcon(QStringLiteral("go-next")), 24).pixel(12, 12), qRgb(250, 10, 10));
        QVERIFY2(grabbed(before, 24) != own, "an icon made before must follow a change of the theme");
        QVERIFY(grabbed(themedIcon(QStringLiteral("go-previous")), 24).pixel(12, 12) != qRgb(250, 10, 10));
        QVERIFY(grabbed(themedIcon(QStringLiteral("lumora-show")), 24).pixel(12, 12) != qRgb(250, 10, 10));
    }

    void namesWithoutADrawingComeFromTheFallbackTheme()
    {
        const QString drawn = QStringLiteral("/usr/share/icons/breeze/actions/22/run-build.svg");
        if (!QFile::exists(drawn))
            QSKIP("the package breeze-icon-theme is not installed");
        QIcon::setThemeName(QStringLiteral("hicolor"));
        QVERIFY(grabbed(themedIcon(QStringLiteral("run-build")), 24)
            != grabbed(themedIcon(QStringLiteral("run-nothing")), 24));
    }

private:
    QString m_themeName;
    QStringList m_searchPaths;
};

QTEST_MAIN(tst_icons)
#include "tst_icons.moc"
