#include "app/menubackground.h"
#include "builtpaths.h"
#include "platform/folders.h"
#include "shell/menubackgroundbox.h"
#include "shell/preferencestest.h"
#include "ui/background.h"
#include "ui/menubarbackground.h"

class tst_menubackground : public PreferencesTest
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { end(); }
    void patternsAreNumberedWithTwoDigits();
    void theProgramBringsPatternsAlong();
    void aPictureIsStoredAsABitmapOfItsOwn();
    void whatCannotBeReadLeavesTheOneBefore_data();
    void whatCannotBeReadLeavesTheOneBefore();
    void patternsGoRoundAndShowInTheMenu();
    void choosingAsksWithTheFilterAndNoneTakesItAway();
    void textsOfTheMenuCanBeRead_data();
    void textsOfTheMenuCanBeRead();
    void theBarFollowsItsWidthAndThePalette();

private:
    MenuBackgroundBox &box() { return *form<frmPreferences>().findChild<MenuBackgroundBox *>(); }
    QString bitmap() const { return AppFolder() + QStringLiteral("MenuVBgd.Bmp"); }
    QString picture(const char *name, QSize size, QRgb color) const
    {
        return m_home->writePicture(QLatin1String(name), size, color);
    }
};

void tst_menubackground::init()
{
    start();
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    QDir().mkpath(backgroundsFolder());
}

void tst_menubackground::patternsAreNumberedWithTwoDigits()
{
    QCOMPARE(patternFile(3), AppFolder() + QStringLiteral("Backgrounds/PAT003.JPG"));
    QCOMPARE(patternFile(12), AppFolder() + QStringLiteral("Backgrounds/PAT012.JPG"));
    for (const int number : {12, 3, 99, 100})
        QVERIFY(QFile(patternFile(number)).open(QIODevice::WriteOnly));
    QCOMPARE(patternNumbers(), (QVector<int>{3, 12, 99}));
}

void tst_menubackground::theProgramBringsPatternsAlong()
{
    for (int number = 1; number <= 8; ++number) {
        const QImage pattern(QStringLiteral(LUMORA_BIN "/lumora-data/Backgrounds/PAT00%1.JPG").arg(number), "JPG");
        QCOMPARE(pattern.size(), QSize(128, 128));
        // A tile: the last column is no further from the first than from its other neighbour, on the whole.
        const auto distance = [&pattern](int a, int b) {
            int sum = 0;
            for (int y = 0; y < pattern.height(); ++y)
                sum += qAbs(qGreen(pattern.pixel(a, y)) - qGreen(pattern.pixel(b, y)));
            return sum / pattern.height();
        };
        QVERIFY2(distance(127, 0) <= distance(126, 127) + distance(0, 1) + 6, qPrintable(QString::number(number)));
    }
}

void tst_menubackground::aPictureIsStoredAsABitmapOfItsOwn()
{
    QVERIFY(menuBackground().isNull());
    QVERIFY(removeMenuBackground());
    QVERIFY(setMenuBackground(picture("wide.png", QSize(5000, 50), qRgb(1, 2, 3))));
    QCOMPARE(menuBackground().size(), QSize(2048, 20));
    QCOMPARE(menuBackground().pixelColor(1000, 10), QColor(1, 2, 3));
    QFile file(bitmap());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.read(2), QByteArray("BM"));
    // Also of itself, and what is transparent becomes white.
    QVERIFY(setMenuBackground(bitmap()));
    QCOMPARE(menuBackground().size(), QSize(2048, 20));
    QVERIFY(setMenuBackground(picture("clear.png", QSize(9, 9), qRgba(0, 0, 0, 0))));
    QVERIFY(menuBackground().pixelColor(4, 4) == QColor(Qt::white) || menuBackground().pixelColor(4, 4) == Qt::black);
    QVERIFY(removeMenuBackground());
    QVERIFY(!QFile::exists(bitmap()));
}

void tst_menubackground::whatCannotBeReadLeavesTheOneBefore_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("not there") << QByteArray();
    QTest::newRow("no picture") << QByteArray("BMP? no");
    QTest::newRow("cut off") << QByteArray("BM\x36\x00\x00\x00", 6);
}

void tst_menubackground::whatCannotBeReadLeavesTheOneBefore()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(setMenuBackground(picture("a.png", QSize(30, 20), qRgb(9, 8, 7))));
    const QString bad =
        bytes.isEmpty() ? QStringLiteral("/nowhere/at/all.bmp") : m_home->write(QStringLiteral("b.bmp"), bytes);
    m_dialogs->answerFile(FileAnswer{bad});
    m_dialogs->answer(MessageBox::Answer::Ok);
    box().cmdMenuPicture_Click();
    QCOMPARE(m_dialogs->boxes.size(), 1);
    QVERIFY(m_dialogs->boxes.first().text.contains(bad));
    QCOMPARE(menuBackground().size(), QSize(30, 20));
}

void tst_menubackground::patternsGoRoundAndShowInTheMenu()
{
    QVERIFY(showMainViewer());
    QMenuBar *bar = form<frmMainViewer>().menuBar();
    const QColor plain = bar->grab().toImage().pixelColor(bar->width() - 2, 2);
    for (const auto &[number, color] : {std::pair{2, qRgb(255, 0, 0)}, {5, qRgb(0, 255, 0)}, {7, qRgb(0, 0, 255)}}) {
        QImage tile(16, 16, QImage::Format_RGB32);
        tile.fill(color);
        QVERIFY(tile.save(patternFile(number), "JPG", 100));
    }
    form<frmPreferences>().SSTab1->setCurrentIndex(frmPreferences::ThumbnailOptions);
    form<frmPreferences>().show();
    const auto shown = [this] { return menuBackground().pixelColor(8, 8); };
    box().cmdNextPattern->click();
    QVERIFY(shown().red() > 250);
    const QColor dressed = bar->grab().toImage().pixelColor(bar->width() - 2, 2);
    QVERIFY2(dressed != plain && dressed.red() > dressed.blue(), qPrintable(dressed.name()));
    box().cmdNextPattern->click();
    QVERIFY(shown().green() > 250);
    box().cmdPreviousPattern->click();
    box().cmdPreviousPattern->click();
    QVERIFY(shown().blue() > 250);
    box().cmdNextPattern->click();
    QVERIFY(shown().red() > 250);
    box().cmdNoMenuPicture->click();
    QVERIFY(shown() == QColor() && !box().cmdNoMenuPicture->isEnabled());
    QCOMPARE(bar->grab().toImage().pixelColor(bar->width() - 2, 2), plain);
}

void tst_menubackground::choosingAsksWithTheFilterAndNoneTakesItAway()
{
    m_dialogs->answerFile(std::nullopt);
    box().cmdMenuPicture_Click();
    QVERIFY(!QFile::exists(bitmap()));
    QCOMPARE(m_dialogs->fileQuestions.first().filter,
        QStringLiteral("All Files (*.bmp,*.rle,*.jpg,*.gif)|*.bmp;*.rle;*.jpg;*.gif|"));
    QCOMPARE(m_dialogs->fileQuestions.first().folder, AppFolder() + QStringLiteral("Backgrounds/"));
    m_dialogs->answerFile(FileAnswer{picture("a.bmp", QSize(300, 400), qRgb(10, 200, 30))});
    box().cmdMenuPicture_Click();
    QCOMPARE(menuBackground().size(), QSize(300, 400));

    // The next start shows it.
    closeWindows();
    QVERIFY(showMainViewer());
    QMenuBar *bar = form<frmMainViewer>().menuBar();
    const QColor shown = bar->grab().toImage().pixelColor(bar->width() - 2, 2);
    QVERIFY2(shown.green() > shown.red() + 20, qPrintable(shown.name()));
}

void tst_menubackground::textsOfTheMenuCanBeRead_data()
{
    QTest::addColumn<QColor>("ground");
    QTest::addColumn<QColor>("text");
    QTest::newRow("light palette") << QColor(240, 240, 240) << QColor(Qt::black);
    QTest::newRow("dark palette") << QColor(50, 54, 58) << QColor(Qt::white);
    QTest::newRow("a palette of no contrast") << QColor(120, 120, 120) << QColor(130, 130, 130);
}

void tst_menubackground::textsOfTheMenuCanBeRead()
{
    QFETCH(QColor, ground);
    QFETCH(QColor, text);
    QImage ramp = rampImage(QSize(256, 20));
    ramp.setPixel(0, 0, qRgb(0, 0, 0));
    ramp.setPixel(1, 0, qRgb(255, 255, 255));
    const QImage faded = fadedForText(ramp, ground, text, text);
    const bool readable = contrast(ground.rgb(), text.rgb()) >= 4.5;
    for (int y = 0; y < faded.height(); ++y) {
        for (int x = 0; x < faded.width(); ++x) {
            if (readable)
                QVERIFY(contrast(faded.pixel(x, y), text.rgb()) >= 4.5);
            else
                QCOMPARE(faded.pixelColor(x, y), ground);
        }
    }
    if (readable)
        QVERIFY2(faded.pixel(0, 0) != faded.pixel(1, 0), "there is still a picture to see");
    QImage same(4, 4, QImage::Format_RGB32);
    same.fill(readable ? ground : text);
    QCOMPARE(fadedForText(same, ground, text, text).pixelColor(0, 0), ground);
}

void tst_menubackground::theBarFollowsItsWidthAndThePalette()
{
    // Red on the left, blue on the right: a large picture fills the bar with both, whatever its width.
    QImage halves(1000, 600, QImage::Format_RGB32);
    halves.fill(qRgb(255, 120, 120));
    QPainter(&halves).fillRect(500, 0, 500, 600, QColor(120, 120, 255));
    QMenuBar bar;
    bar.addMenu(QStringLiteral("File"));
    setMenuBarBackground(&bar, halves);
    bar.resize(400, 24);
    const auto at = [&bar](int x) { return bar.grab().toImage().pixelColor(x, 2); };
    QVERIFY(at(150).red() > at(150).blue() && at(390).blue() > at(390).red());
    bar.resize(900, 24);
    QVERIFY(at(400).red() > at(400).blue() && at(500).blue() > at(500).red());
    QApplication::setPalette(QPalette(QColor(40, 40, 40)));
    QEvent change(QEvent::ApplicationPaletteChange);
    QCoreApplication::sendEvent(&bar, &change);
    QVERIFY2(contrast(at(880).rgb(), bar.palette().color(QPalette::ButtonText).rgb()) >= 4.5, "dark");
    setMenuBarBackground(&bar, {});
    QCOMPARE(bar.palette().brush(QPalette::Window).style(), Qt::SolidPattern);
}

QTEST_MAIN(tst_menubackground)
#include "tst_menubackground.moc"
