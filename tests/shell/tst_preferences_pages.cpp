#include "actions/frmSelectBatchDir.h"
#include "shell/preferencestest.h"

class tst_preferences_pages : public PreferencesTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }
    void cleanup()
    {
        unload<frmSelectBatchDir>();
        end();
    }
    void theSampleShowsThePictureOnItsGround();
    void theSampleOfAHugePictureIsReducedOnce();
    void withoutAPictureTheSampleIsItsGround();
    void browsingStoresAFolderAndCancelNone();
    void aFolderThatIsNotThereIsToldOf();
    void theFolderOfTheUserOpensThePicker();
    void stretchingShowsAtOnce();

private:
    QImage sample() { return control<QLabel>("Image1")->pixmap(Qt::ReturnByValue).toImage(); }
    void showPicture(const QImage &image)
    {
        form<checkjpg>().Gvbox2.setPicture(LoadedPicture::fromPicture(Picture::fromImage(image)));
        form<frmPreferences>().Form_Activate();
    }
    /// The picker that comes up next is led to a folder and answered.
    void answerPicker(const QString &folder, bool ok)
    {
        auto *poll = new QTimer(this);
        connect(poll, &QTimer::timeout, this, [this, poll, folder, ok] {
            auto &picker = form<frmSelectBatchDir>();
            if (!picker.isVisible())
                return;
            poll->deleteLater();
            m_pickerTitle = picker.windowTitle();
            m_pickerStart = picker.Dir1->path();
            QVERIFY(picker.Dir1->setPath(folder));
            (ok ? picker.cmdOK : picker.cmdCancel)->click();
        });
        poll->start(0);
    }
    QString m_pickerTitle;
    QString m_pickerStart;
};

void tst_preferences_pages::theSampleShowsThePictureOnItsGround()
{
    QImage red(400, 100, QImage::Format_RGB32);
    red.fill(Qt::red);
    control<QCheckBox>("chkThumbNailStyle")->setChecked(false);
    form<checkjpg>().Gvbox2.setPicture(LoadedPicture::fromPicture(Picture::fromImage(red)));
    form<frmPreferences>().setThumbnailBackColor(Qt::green);
    form<frmPreferences>().Form_Activate();
    QCOMPARE(sample().size(), QSize(100, 100));
    QCOMPARE(sample().pixelColor(50, 50), QColor(Qt::red));
    QCOMPARE(sample().pixelColor(50, 35), QColor(Qt::green));
    QCOMPARE(sample().pixelColor(0, 0), QColor(Qt::green));
    control<QSlider>("sldThumbNailSize")->setValue(200);
    QCOMPARE(sample().size(), QSize(200, 200));
    control<QCheckBox>("chkThumbNailStyle")->setChecked(true);
    QVERIFY2(sample().pixelColor(0, 0) != QColor(Qt::green), "a frame stands around it");

    // While a song is shown the picture of before stays.
    QImage blue(10, 10, QImage::Format_RGB32);
    blue.fill(Qt::blue);
    form<checkjpg>().Gvbox2.setPicture(LoadedPicture::fromPicture(Picture::fromImage(blue)));
    globals.CurrentMediaFile = QStringLiteral("/a.mp3");
    form<frmPreferences>().Form_Activate();
    QCOMPARE(sample().pixelColor(100, 100), QColor(Qt::red));
    globals.CurrentMediaFile = QStringLiteral("/a.jpg");
    form<frmPreferences>().Form_Activate();
    QCOMPARE(sample().pixelColor(100, 100), QColor(Qt::blue));
    QCOMPARE(sample().pixelColor(100, 90), QColor(Qt::green)); // small pictures are not enlarged
}

void tst_preferences_pages::theSampleOfAHugePictureIsReducedOnce()
{
    // Fine lines, which only an average of all pixels shows as grey.
    QImage lines(4000, 4000, QImage::Format_RGB32);
    for (int y = 0; y < lines.height(); ++y)
        std::fill_n(reinterpret_cast<QRgb *>(lines.scanLine(y)), lines.width(), y % 2 ? 0xffffffff : 0xff000000);
    control<QCheckBox>("chkThumbNailStyle")->setChecked(false);
    showPicture(lines);
    const auto huge = form<checkjpg>().Picture1.picture();
    for (const int size : {60, 140, 200}) {
        control<QSlider>("sldThumbNailSize")->setValue(size);
        QCOMPARE(sample().size(), QSize(size, size));
        const QColor middle = sample().pixelColor(size / 2, size / 2);
        QVERIFY2(qAbs(middle.red() - 188) < 4, qPrintable(middle.name())); // half of the light
    }
    QVERIFY2(form<checkjpg>().Picture1.picture() == huge, "what is saved and shown stays whole");
    // Nothing but the support window keeps it in memory.
    QCOMPARE(huge.use_count(), 3L); // here, Picture1 and Gvbox2
}

void tst_preferences_pages::withoutAPictureTheSampleIsItsGround()
{
    control<QCheckBox>("chkThumbNailStyle")->setChecked(false);
    form<frmPreferences>().setThumbnailBackColor(Qt::yellow);
    form<frmPreferences>().Form_Activate();
    control<QSlider>("sldThumbNailSize")->setValue(80);
    QCOMPARE(sample().size(), QSize(80, 80));
    QCOMPARE(sample().pixelColor(40, 40), QColor(Qt::yellow));
}

void tst_preferences_pages::browsingStoresAFolderAndCancelNone()
{
    const QString pictures = m_home->path() + QStringLiteral("my pictures");
    QDir().mkpath(pictures);
    click("optDefaultOpenFolder(2)");
    answerPicker(pictures, true);
    click("cmdBrowse");
    QCOMPARE(m_pickerTitle, QStringLiteral("Default Open Folder:"));
    QCOMPARE(control<QLineEdit>("txtImageFolder")->text(), pictures + QLatin1Char('/'));
    QCOMPARE(stored("UserChoiceOpenFolder"), pictures + QLatin1Char('/'));
    answerPicker(m_home->path(), false);
    click("cmdBrowse");
    QCOMPARE(stored("UserChoiceOpenFolder"), pictures + QLatin1Char('/'));
    QCOMPARE(form<frmSelectBatchDir>().windowTitle(), QStringLiteral("Tessaly Lumora - Select Batch Directory"));
}

void tst_preferences_pages::aFolderThatIsNotThereIsToldOf()
{
    auto *note = control<QLabel>("lblFolderNote");
    auto *folder = control<QLineEdit>("txtImageFolder");
    const auto type = [folder](const QString &text) {
        folder->setText(text);
        Q_EMIT folder->editingFinished();
    };
    QVERIFY(note->text().isEmpty());
    click("optDefaultOpenFolder(2)");
    type(m_home->path() + QStringLiteral("gone/"));
    QVERIFY(!note->text().isEmpty());
    QCOMPARE(stored("UserChoiceOpenFolder"), m_home->path() + QStringLiteral("gone/")); // it may come back
    type(m_home->path());
    QVERIFY(note->text().isEmpty());
    type(m_home->write(QStringLiteral("file"), "x"));
    QVERIFY(!note->text().isEmpty());
    click("optDefaultOpenFolder(1)");
    QVERIFY2(note->text().isEmpty(), "it is not used then");
}

void tst_preferences_pages::theFolderOfTheUserOpensThePicker()
{
    const QString mine = m_home->path() + QStringLiteral("mine");
    QDir().mkpath(mine);
    click("optDefaultOpenFolder(2)");
    control<QLineEdit>("txtImageFolder")->setText(mine);
    Q_EMIT control<QLineEdit>("txtImageFolder")->editingFinished();
    answerPicker(mine, false);
    click("cmdBrowse");
    QCOMPARE(m_pickerStart, mine);
}

void tst_preferences_pages::stretchingShowsAtOnce()
{
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    QVERIFY(showMainViewer());
    frmMainViewer &viewer = form<frmMainViewer>();
    QVERIFY(viewer.lstDisplay->addItem(m_home->writePicture(QStringLiteral("a.png"), QSize(20, 10))));
    viewer.lstDisplay->selectOnly(0);
    QCOMPARE(viewer.Image1->size(), QSize(20, 10));
    click("chkStretch");
    QCOMPARE(viewer.Image1->size(), viewer.Picture1->size());
    click("chkStretch");
    QCOMPARE(viewer.Image1->size(), QSize(20, 10));
}

QTEST_MAIN(tst_preferences_pages)
#include "tst_preferences_pages.moc"
