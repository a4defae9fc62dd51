#include "actions/saveformats.h"
#include "actions/savetest.h"
#include "app/checkjpg.h"

/// File > Save Image As, from the shown picture to the file.
class tst_save_image_as : public SaveTest
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QVERIFY(start()); }
    void init() { m_dialogs = &fresh(); }
    void cleanup() { setDialogs(nullptr); }
    void theDialogIsAskedAsItShould();
    void aNameWithoutADotEndsInTheBox();
    void cancelChangesNothing();
    void everyFilterWritesItsFormat_data();
    void everyFilterWritesItsFormat();
    void theTypedNameDecidesNothing();
    void theBoxesOfThePreferencesCount();
    void theShownFileCanBeReplaced();
    void theHeldPictureIsShownAfresh();
    void aPictureOfTheOtherDecoderIsSavedToo();
    void aFailureIsToldInAPlainBox();
    void anUnknownFilterWritesNothing();

private:
    QString saveAs(int filter, const QString &name)
    {
        const QString path = home() + name;
        m_dialogs->answerFile(FileAnswer{path, filter});
        window().mnuFileSaveImageAs_Click();
        return path;
    }
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_save_image_as::theDialogIsAskedAsItShould()
{
    show(writePng(QStringLiteral("a.b.png"), rampImage({30, 20})));
    QVERIFY(window().mnuFileSaveImageAs->isVisible() && window().mnuFileSaveImageAs->isEnabled());
    m_dialogs->answerFile(std::nullopt);
    window().mnuFileSaveImageAs->trigger();
    QCOMPARE(m_dialogs->fileQuestions.size(), 1);
    const FileQuestion &question = m_dialogs->fileQuestions.first();
    QCOMPARE(question.title, QStringLiteral("Save Image As"));
    QCOMPARE(question.fileName, QStringLiteral("a"));
    QCOMPARE(question.folder, home());
    QCOMPARE(question.defaultExtension, QStringLiteral("BMP"));
    QCOMPARE(question.filter, saveDialogFilter());
    QVERIFY(question.promptOverwrite);
}

void tst_save_image_as::aNameWithoutADotEndsInTheBox()
{
    show(writePng(QStringLiteral("nodot"), rampImage({30, 20})));
    m_dialogs->answer(MessageBox::Answer::Ok);
    window().mnuFileSaveImageAs_Click();
    QVERIFY(m_dialogs->fileQuestions.isEmpty());
    MessageBox expected;
    expected.title = QStringLiteral("Image Save As Error");
    expected.text = QStringLiteral("There was an error while saving the image!!");
    expected.icon = MessageBox::Icon::Exclamation;
    QCOMPARE(m_dialogs->boxes.size(), 1);
    QVERIFY(m_dialogs->boxes.first() == expected);
}

void tst_save_image_as::cancelChangesNothing()
{
    show(writePng(QStringLiteral("stay.png"), rampImage({30, 20})));
    const auto shown = window().Image1->picture();
    m_dialogs->answerFile(std::nullopt);
    window().mnuFileSaveImageAs_Click();
    QCOMPARE(window().Image1->picture(), shown);
    QVERIFY(!QGuiApplication::overrideCursor());
}

void tst_save_image_as::everyFilterWritesItsFormat_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<int>("bits");
    const auto row = [](int filter, const char *codec, int bits) {
        QTest::addRow("%d %s", filter, codec) << filter << QByteArray(codec) << bits;
    };
    row(1, "BMP", 24);
    row(2, "BMP", 8);
    row(3, "BMP", 4);
    row(4, "JPEG", 24);
    row(5, "JPEG 2000", 24);
    row(6, "DCX", 24);
    row(7, "IFF", 24);
    row(8, "MBM", 24);
    row(9, "MBM", 24);
    row(10, "PNM", 1);
    row(11, "PCX", 24);
    row(12, "PNM", 8);
    row(13, "PNG", 24);
    row(14, "PNM", 24);
    row(15, "PSD", 24);
    row(16, "SGI", 24);
    row(17, "TGA", 24);
    row(18, "TIFF", 24);
    row(19, "WBMP", 1);
    row(20, "XBM", 1);
    row(21, "XPM", 0);
    row(22, "XWD", 24);
}

void tst_save_image_as::everyFilterWritesItsFormat()
{
    QFETCH(int, filter);
    QFETCH(QByteArray, codec);
    QFETCH(int, bits);
    const QImage ramp = rampImage({64, 48});
    show(writePng(QStringLiteral("source.png"), ramp));
    const auto *const format = std::ranges::find_if(saveFormats(), [&](const SaveFormat &one) {
        return std::ranges::count(one.dialogIndices, filter) > 0;
    }).base();
    const QString path = saveAs(filter, QStringLiteral("out%1%2").arg(filter).arg(QLatin1String(format->extension)));
    QVERIFY2(m_dialogs->boxes.isEmpty(), qPrintable(m_dialogs->boxes.value(0).text));
    const Picture written = read(path);
    QCOMPARE(written.pixels.size(), QSize(64, 48));
    QCOMPARE(written.info.codec, codec);
    if (bits > 0)
        QCOMPARE(written.info.bitsPerPixel, bits);
    // The upper left corner is the darkest of both; nothing was turned over.
    QVERIFY(qGray(written.pixels.pixel(1, 1)) <= qGray(written.pixels.pixel(62, 46)));
    QVERIFY(QFile::remove(path));
}

void tst_save_image_as::theTypedNameDecidesNothing()
{
    show(writePng(QStringLiteral("typed.png"), rampImage({30, 20})));
    QCOMPARE(read(saveAs(4, QStringLiteral("typed as.gif"))).info.codec, QByteArray("JPEG"));
    QCOMPARE(globals.CurrentMediaFile, home() + QStringLiteral("typed.png"));
    QCOMPARE(window().lstDisplay->count(), 1);
}

void tst_save_image_as::theBoxesOfThePreferencesCount()
{
    auto &preferences = form<frmPreferences>();
    show(writePng(QStringLiteral("boxes.png"), rampImage({200, 150})));
    preferences.txtJPGQuality->setText(QStringLiteral("5"));
    const qint64 small = QFileInfo(saveAs(4, QStringLiteral("q5.jpg"))).size();
    preferences.txtJPGQuality->setText(QStringLiteral("100"));
    const qint64 large = QFileInfo(saveAs(4, QStringLiteral("q100.jpg"))).size();
    QVERIFY(small > 0 && small * 3 < large);
    const auto changes = [](const QImage &mono) {
        int count = 0;
        for (int y = 0; y < mono.height(); ++y)
            for (int x = 1; x < mono.width(); ++x)
                count += mono.pixel(x, y) != mono.pixel(x - 1, y);
        return count;
    };
    const int plain = changes(read(saveAs(10, QStringLiteral("plain.pbm"))).pixels);
    preferences.chkDiffusePBM->setChecked(true);
    const int diffused = changes(read(saveAs(10, QStringLiteral("diffused.pbm"))).pixels);
    preferences.chkDiffusePBM->setChecked(false);
    QVERIFY(diffused > plain * 2);
    const int xbm = changes(read(saveAs(20, QStringLiteral("plain.xbm"))).pixels);
    preferences.chkDiffuseXBM->setChecked(true);
    QCOMPARE(changes(read(saveAs(20, QStringLiteral("boxed.xbm"))).pixels), xbm);
    preferences.chkDiffuseXBM->setChecked(false);
}

void tst_save_image_as::theShownFileCanBeReplaced()
{
    const QString path = writePng(QStringLiteral("self.png"), rampImage({80, 60}));
    show(path);
    const auto before = window().Image1->picture();
    QCOMPARE(saveAs(3, QStringLiteral("self.png")), path);
    QCOMPARE(read(path).info.codec, QByteArray("BMP"));
    QVERIFY(window().Image1->picture() != before);
    QCOMPARE(window().Image1->picture()->info().bitsPerPixel, 4);
    QCOMPARE(window().StatusBar1->panelText(3), QStringLiteral("80 X 60 X 4"));
    QVERIFY(!QGuiApplication::overrideCursor());
}

void tst_save_image_as::theHeldPictureIsShownAfresh()
{
    const QString path = writePng(QStringLiteral("held.png"), rampImage({80, 60}));
    show(path);
    saveAs(3, QStringLiteral("held16.bmp"));
    QCOMPARE(form<checkjpg>().polImageBox1.PolyBitsPerPixel(), 24);
    QCOMPARE(form<checkjpg>().polImageBox1.PolyPicture().pixels, read(path).pixels);
    QCOMPARE(window().Image1->picture()->info().bitsPerPixel, 24);
}

void tst_save_image_as::aPictureOfTheOtherDecoderIsSavedToo()
{
    show(writePng(QStringLiteral("first.png"), rampImage({80, 60})));
    // By its name a kind that another control decodes; its content is what it is.
    show(writePng(QStringLiteral("second.gif"), rampImage({33, 22})));
    QCOMPARE(read(saveAs(1, QStringLiteral("second.bmp"))).pixels.size(), QSize(33, 22));
}

void tst_save_image_as::aFailureIsToldInAPlainBox()
{
    show(writePng(QStringLiteral("fails.png"), rampImage({30, 20})));
    m_dialogs->answer(MessageBox::Answer::Ok);
    saveAs(1, QStringLiteral("no such folder/out.bmp"));
    QCOMPARE(m_dialogs->boxes.size(), 1);
    const MessageBox &box = m_dialogs->boxes.first();
    QCOMPARE(box.icon, MessageBox::Icon::None);
    QCOMPARE(box.buttons, MessageBox::Buttons::Ok);
    QVERIFY2(box.text.startsWith(QStringLiteral("The image could not be saved")), qPrintable(box.text));
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(form<checkjpg>().polImageBox1.PolyLastError(), QString());
}

void tst_save_image_as::anUnknownFilterWritesNothing()
{
    show(writePng(QStringLiteral("unknown.png"), rampImage({30, 20})));
    for (const int filter : {0, 23})
        QVERIFY(!QFile::exists(saveAs(filter, QStringLiteral("unknown.out"))));
    QVERIFY(m_dialogs->boxes.isEmpty());
}

QTEST_MAIN(tst_save_image_as)
#include "tst_save_image_as.moc"
