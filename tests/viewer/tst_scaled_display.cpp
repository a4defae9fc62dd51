#include "app/globals.h"
#include "app/settings.h"
#include "support/support.h"
#include "viewer/frmMainViewer.h"

#include <QtTest>

/// Pictures on a desktop with a scale of one and a half.
class tst_scaled_display : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void atHundredPercentEachPixelIsOneOfTheScreen();
    void aLargePictureFillsThePane();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    void show(const QString &path);
    std::unique_ptr<TemporaryHome> m_home;
};

void tst_scaled_display::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    saveOption("Show Intro Select at Startup", QStringLiteral("0"));
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    globals.MediaPlayerVersion = 0;
    window().resize(700, 500);
    window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&window()));
    QTRY_VERIFY(globals.MainViewerActivated);
    QCOMPARE(window().devicePixelRatioF(), 1.5);
}

void tst_scaled_display::show(const QString &path)
{
    window().ClearDisplayList();
    window().tabFileList->setCurrentIndex(1);
    window().lstDisplay->addItem(path);
    window().lblCount->setText(QStringLiteral("1"));
    window().lstDisplay->selectOnly(0);
}

void tst_scaled_display::atHundredPercentEachPixelIsOneOfTheScreen()
{
    // Neighbours differ everywhere, so any resampling shows. Neither side is whole on this desktop.
    QImage image(101, 77, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, (x + y) % 2 != 0 ? 0xffffffff : 0xff000000);
    }
    const QString path = m_home->path() + QStringLiteral("fine.png");
    QVERIFY(image.save(path));
    show(path);
    QCOMPARE(globals.OriginalImageWidth, 101);
    QImage grab = window().Image1->grab().toImage().convertToFormat(QImage::Format_RGB32);
    grab.setDevicePixelRatio(1);
    QVERIFY(grab.width() >= 101 && grab.width() <= 102 && grab.height() >= 77 && grab.height() <= 78);
    QCOMPARE(grab.copy(0, 0, 101, 77), image);
}

void tst_scaled_display::aLargePictureFillsThePane()
{
    show(m_home->writePicture(QStringLiteral("large.png"), {3000, 300}));
    QCOMPARE(window().Image1->width(), window().Picture1->width());
    QVERIFY(qAbs(window().Image1->y() * 2 + window().Image1->height() - window().Picture1->height()) <= 2);
}

int main(int argc, char **argv)
{
    qputenv("QT_SCALE_FACTOR", "1.5");
    QApplication application(argc, argv);
    tst_scaled_display test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_scaled_display.moc"
