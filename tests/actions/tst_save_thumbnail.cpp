#include "actions/savetest.h"
#include "app/checkjpg.h"
#include "ui/yield.h"

/// File > Save Thumbnail of Current Image, from the pane to the bitmap.
class tst_save_thumbnail : public SaveTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(start()); }
    void init()
    {
        m_dialogs = &fresh();
        auto &preferences = form<frmPreferences>();
        preferences.chkThumbNailStyle->setChecked(false);
        preferences.sldThumbNailSize->setValue(120);
        preferences.setThumbnailBackColor(Qt::green);
    }
    void cleanup() { setDialogs(nullptr); }
    void theDialogIsAskedAsItShould();
    void theThumbnailIsASquareBitmap();
    void nothingOnThePaneWritesNothing();
    void anotherThumbnailInsideTheYieldDoesNotMixIn();

private:
    QString saveThumbnail(const QString &name)
    {
        m_dialogs->answerFile(FileAnswer{home() + name, 1});
        window().mnuFileSaveThumbnail_Click();
        return home() + name;
    }
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_save_thumbnail::theDialogIsAskedAsItShould()
{
    show(writePng(QStringLiteral("sea.jpeg"), rampImage({30, 20})));
    QVERIFY(window().mnuFileSaveThumbnail->isVisible() && window().mnuFileSaveThumbnail->isEnabled());
    m_dialogs->answerFile(std::nullopt);
    window().mnuFileSaveThumbnail->trigger();
    QCOMPARE(m_dialogs->fileQuestions.size(), 1);
    const FileQuestion &question = m_dialogs->fileQuestions.first();
    QCOMPARE(question.title, QStringLiteral("Save Thumbnail Of Current Image"));
    QCOMPARE(question.fileName, QStringLiteral("tbn_sea.jBMP"));
    QCOMPARE(question.folder, home());
    QCOMPARE(question.defaultExtension, QStringLiteral("BMP"));
    QCOMPARE(question.filter, QStringLiteral("Bitmap Files (*.BMP)|*.BMP"));
    QVERIFY(question.promptOverwrite);
}

void tst_save_thumbnail::theThumbnailIsASquareBitmap()
{
    QImage wide(600, 300, QImage::Format_RGB32);
    wide.fill(Qt::red);
    show(writePng(QStringLiteral("wide.png"), wide));
    const Picture flat = read(saveThumbnail(QStringLiteral("typed.png")));
    QCOMPARE(flat.info.codec, QByteArray("BMP"));
    QCOMPARE(flat.pixels.size(), QSize(120, 120));
    QCOMPARE(flat.pixels.pixelColor(60, 20), QColor(Qt::green));
    QCOMPARE(flat.pixels.pixelColor(60, 60), QColor(Qt::red));
    QCOMPARE(flat.pixels.pixelColor(0, 60), QColor(Qt::red));
    QVERIFY(!form<checkjpg>().ImageMaskControl1.MaskPicture());
    form<frmPreferences>().chkThumbNailStyle->setChecked(true);
    form<frmPreferences>().sldThumbNailSize->setValue(60);
    const Picture framed = read(saveThumbnail(QStringLiteral("framed.bmp")));
    QCOMPARE(framed.pixels.size(), QSize(60, 60));
    QVERIFY(framed.pixels.pixelColor(0, 0) != QColor(Qt::green));
    QCOMPARE(globals.CurrentMediaFile, home() + QStringLiteral("wide.png"));
    QVERIFY(m_dialogs->boxes.isEmpty());
}

void tst_save_thumbnail::nothingOnThePaneWritesNothing()
{
    show(homeFolder().write(QStringLiteral("broken.png"), "no picture"));
    QVERIFY(window().Image1->isEmpty());
    QVERIFY(!QFile::exists(saveThumbnail(QStringLiteral("nothing.bmp"))));
}

void tst_save_thumbnail::anotherThumbnailInsideTheYieldDoesNotMixIn()
{
    QImage red(100, 100, QImage::Format_RGB32);
    red.fill(Qt::red);
    show(writePng(QStringLiteral("red.png"), red));
    setYieldHook([](int number) {
        if (number == 1)
            form<frmPreferences>().sldThumbNailSize->setValue(200);
    });
    const Picture written = read(saveThumbnail(QStringLiteral("mixed.bmp")));
    setYieldHook({});
    QCOMPARE(written.pixels.size(), QSize(120, 120));
    QCOMPARE(written.pixels.pixelColor(60, 60), QColor(Qt::red));
}

QTEST_MAIN(tst_save_thumbnail)
#include "tst_save_thumbnail.moc"
