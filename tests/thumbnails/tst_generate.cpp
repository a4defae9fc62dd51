#include "builtpaths.h"

#include "app/checkjpg.h"
#include "app/globals.h"
#include "app/settings.h"
#include "shell/frmPreferences.h"
#include "support/support.h"
#include "support/windows.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmMakeThumbNails.h"
#include "thumbnails/frmThumbNail.h"
#include "thumbnails/thumbnailrun.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QBuffer>
#include <QtTest>

namespace {
constexpr QRgb red = 0xffcc2211;
constexpr QRgb green = 0xff22aa33;
constexpr QRgb blue = 0xff1122cc;
constexpr QRgb none = 0; ///< there is no record
const QString templateFile = QStringLiteral(LUMORA_BIN "/lumora-data/images.dat");
}

/// Thumbnails for a page, and the runs that put a whole list into the cache.
class tst_generate : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aPageTakesFromTheCacheOrMakes();
    void withoutCachingNothingIsStored();
    void whatCannotBeShownLeavesTheTemplateEmpty();
    void preparedThumbnailsAreThoseMadeOnDemand();
    void anotherThumbnailInsideAYieldDoesNotMixIn();
    void aRunFillsTheCacheAndTellsIt();
    void filesThatFailGetThePictureBefore();
    void aPolyFileThatFailsGetsThatOfItsOwnDecoder();
    void aSecondRunOnlyScans();
    void overwritingMakesAnew();
    void anEmptyListOpensAndCloses();
    void aFileExchangedMeanwhileIsReadAsItIs();
    void allSizesReplaceEachRecord();
    void cancellingAsks_data();
    void cancellingAsks();
    void theRunSurvivesWhateverComesInBetween_data();
    void theRunSurvivesWhateverComesInBetween();
    void aReadOnlyFolderDoesNoHarm();

private:
    frmThumbNail &viewer() { return form<frmThumbNail>(); }
    frmPreferences &preferences() { return form<frmPreferences>(); }
    ListBox &list() { return *form<frmMainViewer>().lstDisplay; }
    /// A file of that name, whatever it ends in, with a picture in it.
    QString picture(const QString &name, QRgb color, QSize size = {160, 120}) const
    {
        QImage image(size, QImage::Format_RGB32);
        image.fill(color);
        QBuffer file;
        image.save(&file, "PNG");
        return m_home->write(name, file.data());
    }
    QRgb stored(const QString &file, int size);
    int records();
    /// As the end of the program does it: nothing keeps the window then.
    static void endViewer()
    {
        globals.ProgramExiting = true;
        unload<frmThumbNail>();
        globals.ProgramExiting = false;
    }
    QRgb shown() { return centre(viewer().templatePicture().pixels); }
    static QRgb centre(const QImage &pixels) { return pixels.isNull() ? none : pixels.pixel(pixels.rect().center()); }
    static bool alike(QRgb a, QRgb b)
    {
        return qAlpha(a) == qAlpha(b) && qAbs(qRed(a) - qRed(b)) < 6 && qAbs(qGreen(a) - qGreen(b)) < 6
            && qAbs(qBlue(a) - qBlue(b)) < 6;
    }
    /// What the window says whenever it could be painted, without repetitions.
    static QStringList told(const std::function<void()> &work);
    std::unique_ptr<TemporaryHome> m_home;
    ScriptedDialogs *m_dialogs = nullptr;
};

void tst_generate::initTestCase()
{
    useBuiltModules();
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_generate::init()
{
    globals.ProgramExiting = false;
    m_home = std::make_unique<TemporaryHome>();
    m_dialogs = &ScriptedDialogs::install();
    saveOption("UserThumbnailSize", QStringLiteral("80"));
    saveOption("ThumbnailCompressionLevel", QStringLiteral("1"));
    QVERIFY(QFile::copy(templateFile, m_home->path() + QStringLiteral("app/images.dat")));
    preferences().chkCacheThumbnails->setChecked(true);
    preferences().chkOverWriteThumbnails->setChecked(false);
    preferences().chkThumbNailStyle->setChecked(false);
    form<checkjpg>().Gvbox2.setPicture(nullptr);
    form<checkjpg>().polImageBox1.setPolyPicture(nullptr);
    list().clear();
    viewer().ThumbnailBackColor = QColor(Qt::white);
}

void tst_generate::cleanup()
{
    setYieldHook({});
    globals.ProgramExiting = false;
    unload<frmMakeThumbNails>();
    unload<frmThumbNail>();
    unload<frmDataBase>();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    setDialogs(nullptr);
}

/// The colour of a file's thumbnail in the cache; the recordset is that of another size afterwards.
QRgb tst_generate::stored(const QString &file, int size)
{
    auto &cache = form<frmDataBase>();
    cache.CloseDatabase();
    cache.OpenImagesDatabase(QString::number(size));
    if (!cache.Find_Click(file, size))
        return none;
    const QImage pixels = cache.ImageBox1.PolyPicture().pixels;
    return pixels.size() == QSize(size, size) ? centre(pixels) : 1;
}

int tst_generate::records()
{
    auto &cache = form<frmDataBase>();
    cache.CloseDatabase();
    cache.OpenImagesDatabase(QStringLiteral("All"));
    return cache.RecordTotal;
}

QStringList tst_generate::told(const std::function<void()> &work)
{
    QStringList lines;
    setYieldHook([&](int) {
        if (!isLoaded<frmMakeThumbNails>())
            return;
        const auto &window = form<frmMakeThumbNails>();
        QStringList parts{window.lblFileName->text(), window.lblFileCount->text(),
            QString::number(window.pgbThumbnails->value()), window.lblCurrentSize->text()};
        parts.removeAll(QString());
        if (const QString line = parts.join(QStringLiteral(" | ")); lines.isEmpty() || lines.last() != line)
            lines << line;
    });
    work();
    setYieldHook({});
    return lines;
}

void tst_generate::aPageTakesFromTheCacheOrMakes()
{
    const QString file = picture(QStringLiteral("a.png"), red, {400, 100});
    viewer().MakeOrLoadThumbnail(file, QStringLiteral("Picture"));
    const QImage made = viewer().templatePicture().pixels;
    QCOMPARE(made.size(), QSize(80, 80));
    QCOMPARE(centre(made), red);
    QCOMPARE(made.pixel(40, 5), qRgb(255, 255, 255));
    QVERIFY(form<frmDataBase>().Find_Click(file, 80));
    QCOMPARE(form<frmDataBase>().txtImageWidth->text(), QStringLiteral("400"));
    QCOMPARE(form<frmDataBase>().txtImageHeight->text(), QStringLiteral("100"));
    QCOMPARE(form<frmDataBase>().txtImageDate->text(), QDate::currentDate().toString(QStringLiteral("MM/dd/yyyy")));
    // What changed under its name keeps its thumbnail until thumbnails are overwritten.
    picture(QStringLiteral("a.png"), blue, {400, 100});
    viewer().MakeOrLoadThumbnail(file, QStringLiteral("Picture"));
    QVERIFY(alike(shown(), red));
    preferences().chkOverWriteThumbnails->setChecked(true);
    viewer().MakeOrLoadThumbnail(file, QStringLiteral("Picture"));
    QCOMPARE(shown(), blue);
    QVERIFY(alike(stored(file, 80), blue));
    QCOMPARE(records(), 1);
}

void tst_generate::withoutCachingNothingIsStored()
{
    preferences().chkCacheThumbnails->setChecked(false);
    const QString file = picture(QStringLiteral("a.tif"), green);
    viewer().prepareThumbnails({file});
    viewer().MakeOrLoadThumbnail(file, QStringLiteral("Poly"));
    QCOMPARE(shown(), green);
    QCOMPARE(records(), 0);
}

void tst_generate::whatCannotBeShownLeavesTheTemplateEmpty()
{
    const QString broken = m_home->write(QStringLiteral("broken.jpg"), "words");
    const QString song = m_home->write(QStringLiteral("song.mp3"), "words");
    viewer().prepareThumbnails({broken, song});
    for (const auto &[file, kind] : {std::pair(broken, "Picture"), {song, "Motion"},
             {m_home->path() + QStringLiteral("missing.jpg"), "Picture"}, {QString(), "Picture"}}) {
        viewer().MakeOrLoadThumbnail(picture(QStringLiteral("a.png"), red), QStringLiteral("Picture"));
        QVERIFY(!viewer().templatePicture().isNull());
        viewer().MakeOrLoadThumbnail(file, QString::fromLatin1(kind));
        QVERIFY2(viewer().templatePicture().isNull(), qPrintable(file));
    }
    QCOMPARE(records(), 1);
}

void tst_generate::preparedThumbnailsAreThoseMadeOnDemand()
{
    preferences().chkThumbNailStyle->setChecked(true);
    QStringList files;
    for (int i = 0; i < 30; ++i)
        files << picture(QStringLiteral("%1.png").arg(i), qRgb(i * 8, 100, 200), {90 + i, 70});
    QVector<QImage> onDemand;
    preferences().chkCacheThumbnails->setChecked(false);
    for (const QString &file : std::as_const(files)) {
        viewer().MakeOrLoadThumbnail(file, QStringLiteral("Picture"));
        onDemand << viewer().templatePicture().pixels;
    }
    preferences().chkCacheThumbnails->setChecked(true);
    viewer().prepareThumbnails(files.mid(0, 20));
    for (int i = 29; i >= 0; --i) {
        viewer().MakeOrLoadThumbnail(files[i], QStringLiteral("Picture"));
        QCOMPARE(viewer().templatePicture().pixels, onDemand[i]);
    }
    QCOMPARE(records(), 30);
}

void tst_generate::anotherThumbnailInsideAYieldDoesNotMixIn()
{
    const QString outer = picture(QStringLiteral("outer.png"), red);
    const QString inner = picture(QStringLiteral("inner.png"), blue);
    bool disturbed = false;
    const auto prepare = [&] {
        disturbed = false;
        ignore(form<frmDataBase>().DeleteAllClick());
    };
    const auto work = [&] { viewer().MakeOrLoadThumbnail(outer, QStringLiteral("Picture")); };
    const auto disturb = [&] {
        disturbed = true;
        viewer().MakeOrLoadThumbnail(inner, QStringLiteral("Picture"));
    };
    // How often it waits depends on how quick the threads are.
    forEachYield(prepare, work, disturb, [&](int) {
        QCOMPARE(shown(), red);
        QVERIFY(alike(stored(outer, 80), red));
        QCOMPARE(alike(stored(inner, 80), blue), disturbed);
    });
}

void tst_generate::aRunFillsTheCacheAndTellsIt()
{
    preferences().chkCacheThumbnails->setChecked(false); // a run stores all the same
    const QStringList files{picture(QStringLiteral("a.png"), red), picture(QStringLiteral("b.tif"), green),
        m_home->write(QStringLiteral("c.mp3"), "words"), picture(QStringLiteral("x.gif/d.bmp"), blue)};
    list().addItems(files);
    const QStringList lines = told([&] { viewer().mnuThumbnailsGenerateAll_Click(); });
    QCOMPARE(lines,
        QStringList({QStringLiteral("0"), QStringLiteral("a.png | 1 of 4 | 25"), QStringLiteral("b.tif | 2 of 4 | 50"),
            QStringLiteral("c.mp3 | 3 of 4 | 75"), QStringLiteral("d.bmp | 4 of 4 | 100")}));
    QVERIFY(!isLoaded<frmMakeThumbNails>());
    QVERIFY(viewer().mnuViewerCloseViewer->isEnabled() && viewer().cursor().shape() == Qt::ArrowCursor);
    const QVector<QRgb> expected{red, green, none, blue};
    for (int i = 0; i < files.size(); ++i)
        QVERIFY2(alike(stored(files[i], 80), expected[i]), qPrintable(files[i]));
    QCOMPARE(records(), 3);
    // The pictures of the display are not touched.
    QVERIFY(!form<checkjpg>().Gvbox2.picture() && !form<checkjpg>().polImageBox1.held());
}

void tst_generate::filesThatFailGetThePictureBefore()
{
    QVERIFY(form<checkjpg>().polImageBox1.PolyLoad(picture(QStringLiteral("display.png"), green, {2000, 1000})));
    const QStringList files{m_home->write(QStringLiteral("first.jpg"), "words"), picture(QStringLiteral("a.png"), red),
        m_home->write(QStringLiteral("broken.jpg"), "words"), m_home->path() + QStringLiteral("missing.jpg"),
        m_home->write(QStringLiteral("again.bmp"), QByteArray("BM\0\0", 4)), picture(QStringLiteral("b.png"), blue)};
    list().addItems(files);
    const QStringList lines = told([&] { viewer().mnuThumbnailsGenerateAll_Click(); });
    QCOMPARE(lines.last(), QStringLiteral("b.png | 6 of 6 | 100"));
    const QVector<QRgb> expected{green, red, red, none, red, blue};
    for (int i = 0; i < files.size(); ++i)
        QVERIFY2(alike(stored(files[i], 80), expected[i]), qPrintable(files[i]));
    QVERIFY(stored(files[0], 80) != none);
    QCOMPARE(form<frmDataBase>().txtImageWidth->text(), QStringLiteral("2000"));
}

void tst_generate::aPolyFileThatFailsGetsThatOfItsOwnDecoder()
{
    // Only an ending that the list of types knows makes a file one of this kind.
    const QStringList files{picture(QStringLiteral("a.webp"), red), m_home->write(QStringLiteral("b.psd"), "words"),
        picture(QStringLiteral("c.tif"), blue), picture(QStringLiteral("d.webp"), green),
        m_home->write(QStringLiteral("e.psd"), "words"), m_home->write(QStringLiteral("f.webp"), "words")};
    list().addItems(files);
    viewer().mnuThumbnailsGenerateAll_Click();
    // Without any picture before there is only the ground.
    QVERIFY(alike(stored(files[1], 80), qRgb(255, 255, 255)));
    QVERIFY(alike(stored(files[4], 80), blue));
    QVERIFY(alike(stored(files[5], 80), green));
}

void tst_generate::aSecondRunOnlyScans()
{
    list().addItems({picture(QStringLiteral("a.png"), red), picture(QStringLiteral("b.png"), green)});
    viewer().mnuThumbnailsGenerateAll_Click();
    const QStringList lines = told([&] { viewer().mnuThumbnailsGenerateAll_Click(); });
    QCOMPARE(lines, QStringList({QStringLiteral("0"), QStringLiteral("Scanning | 1 of 2 | 50")}));
    // A song leaves no record and is visited each time.
    list().addItem(m_home->write(QStringLiteral("c.mp3"), "words"));
    const QStringList more = told([&] { viewer().mnuThumbnailsGenerateAll_Click(); });
    QCOMPARE(more.size(), 3);
    QCOMPARE(records(), 2);
}

void tst_generate::overwritingMakesAnew()
{
    const QString file = picture(QStringLiteral("a.png"), red);
    list().addItem(file);
    viewer().mnuThumbnailsGenerateAll_Click();
    picture(QStringLiteral("a.png"), blue);
    preferences().chkOverWriteThumbnails->setChecked(true);
    viewer().mnuThumbnailsGenerateAll_Click();
    QVERIFY(alike(stored(file, 80), blue));
    QCOMPARE(records(), 1);
}

void tst_generate::anEmptyListOpensAndCloses()
{
    viewer().mnuThumbnailsGenerateAll_Click();
    viewer().mnuThumbnailsGenerateAllSizes_Click();
    QVERIFY(!isLoaded<frmMakeThumbNails>());
    QCOMPARE(viewer().ThumbnailSize, 80);
}

void tst_generate::aFileExchangedMeanwhileIsReadAsItIs()
{
    QStringList files;
    for (int i = 0; i < 6; ++i)
        files << picture(QStringLiteral("%1.png").arg(i), red);
    list().addItems(files);
    // The later ones have been read ahead by the time that the second one is made.
    setYieldHook([&](int number) {
        if (number == 2)
            picture(QStringLiteral("5.png"), blue);
        if (number == 3)
            QFile::remove(files[4]);
        if (number == 4)
            list().setItemText(3, files[5]);
    });
    viewer().mnuThumbnailsGenerateAll_Click();
    setYieldHook({});
    QVERIFY(alike(stored(files[5], 80), blue));
    QVERIFY(alike(stored(files[2], 80), red));
    QCOMPARE(stored(files[4], 80), none);
}

void tst_generate::allSizesReplaceEachRecord()
{
    const QStringList files{picture(QStringLiteral("a.png"), red, {900, 600}),
        m_home->write(QStringLiteral("b.jpg"), "words"), picture(QStringLiteral("c.tif"), blue)};
    list().addItems(files);
    const QStringList first = told([&] { viewer().mnuThumbnailsGenerateAllSizes_Click(); });
    QCOMPARE(viewer().ThumbnailSize, 80);
    QVERIFY(first.contains(QStringLiteral("a.png | 1 of 3 | 33 | Current Size: 60")));
    QVERIFY(first.contains(QStringLiteral("c.tif | 3 of 3 | 100 | Current Size: 200")));
    QCOMPARE(first.size(), 1 + 45);
    QCOMPARE(records(), 45);
    for (const int size : {60, 80, 130, 200}) {
        QVERIFY(alike(stored(files[0], size), red));
        QVERIFY(alike(stored(files[1], size), red)); // by the picture before, at each size
        QVERIFY(alike(stored(files[2], size), blue));
    }
    // The records that are open are those of the current size: only they are found.
    picture(QStringLiteral("a.png"), green, {900, 600});
    form<frmDataBase>().CloseDatabase();
    form<frmDataBase>().Form_Load();
    const QStringList second = told([&] { viewer().mnuThumbnailsGenerateAllSizes_Click(); });
    QVERIFY(second.contains(QStringLiteral("Scanning | 1 of 3 | 33 | Current Size: 80")));
    QVERIFY(second.contains(QStringLiteral("a.png | 1 of 3 | 33 | Current Size: 90")));
    QVERIFY(alike(stored(files[0], 80), red));
    QVERIFY(alike(stored(files[0], 90), green));
    QCOMPARE(records(), 45);
}

void tst_generate::cancellingAsks_data()
{
    QTest::addColumn<bool>("allSizes");
    QTest::addColumn<bool>("cancels");
    QTest::newRow("one size, yes") << false << true;
    QTest::newRow("one size, no") << false << false;
    QTest::newRow("all sizes, yes leaves both loops") << true << true;
    QTest::newRow("all sizes, no") << true << false;
}

void tst_generate::cancellingAsks()
{
    QFETCH(bool, allSizes);
    QFETCH(bool, cancels);
    const QStringList files{picture(QStringLiteral("a.png"), red), picture(QStringLiteral("b.png"), green)};
    list().addItems(files);
    m_dialogs->answer(cancels ? MessageBox::Answer::Yes : MessageBox::Answer::No);
    bool clicked = false;
    bool focusMoved = false;
    setYieldHook([&](int) {
        if (!isLoaded<frmMakeThumbNails>())
            return;
        auto &window = form<frmMakeThumbNails>();
        if (!clicked && window.lblFileName->text() == QStringLiteral("a.png")) {
            clicked = true;
            window.txtClose->setFocus();
            window.CancelRun();
        } else if (clicked && !m_dialogs->boxes.isEmpty()) {
            focusMoved = focusMoved || window.focusWidget() == window.chkShowThumbnail;
        }
    });
    if (allSizes)
        viewer().mnuThumbnailsGenerateAllSizes_Click();
    else
        viewer().mnuThumbnailsGenerateAll_Click();
    setYieldHook({});
    QCOMPARE(m_dialogs->boxes, QVector<MessageBox>{cancelRunBox()});
    QCOMPARE(focusMoved, !cancels && !allSizes);
    QCOMPARE(viewer().ThumbnailSize, 80);
    QCOMPARE(records(), cancels ? 1 : allSizes ? 30 : 2);
    QVERIFY(!isLoaded<frmMakeThumbNails>());
}

void tst_generate::theRunSurvivesWhateverComesInBetween_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"the list is emptied", "the list grows", "the viewer goes", "the cache goes",
             "the progress window goes", "the program ends", "a second run", "another size", "the cache is emptied"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void tst_generate::theRunSurvivesWhateverComesInBetween()
{
    QFETCH(QString, what);
    const QStringList files{picture(QStringLiteral("a.png"), red), m_home->write(QStringLiteral("b.jpg"), "words"),
        picture(QStringLiteral("c.tif"), blue)};
    const auto prepare = [&] {
        globals.ProgramExiting = false;
        list().clear();
        list().addItems(files);
        viewer().ThumbnailSize = 80;
        QVERIFY(form<frmDataBase>().DeleteAllClick());
    };
    const auto disturb = [&] {
        if (what == QLatin1String("the list is emptied"))
            list().clear();
        else if (what == QLatin1String("the list grows"))
            list().insertItem(0, files[0]);
        else if (what == QLatin1String("the viewer goes"))
            endViewer();
        else if (what == QLatin1String("the cache goes"))
            unload<frmDataBase>();
        else if (what == QLatin1String("the progress window goes") && isLoaded<frmMakeThumbNails>())
            form<frmMakeThumbNails>().deleteLater();
        else if (what == QLatin1String("the program ends"))
            globals.ProgramExiting = true;
        else if (what == QLatin1String("a second run"))
            viewer().mnuThumbnailsGenerateAllSizes_Click();
        else if (what == QLatin1String("another size"))
            viewer().mnuViewerThumbNailSize_Click(100);
        else if (what == QLatin1String("the cache is emptied"))
            ignore(form<frmDataBase>().DeleteAllClick());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    const auto check = [&](int yield) {
        QVERIFY(!isLoaded<frmMakeThumbNails>());
        globals.ProgramExiting = false;
        if (yield == 0 || what == QLatin1String("a second run"))
            QVERIFY(alike(stored(files[2], 80), blue));
        QVERIFY(viewer().mnuViewerCloseViewer->isEnabled());
    };
    forEachYield(
        prepare, [&] { viewer().mnuThumbnailsGenerateAll_Click(); }, disturb, check);
}

void tst_generate::aReadOnlyFolderDoesNoHarm()
{
    unload<frmThumbNail>();
    unload<frmDataBase>();
    // Neither the cache nor its template: as on a medium that cannot be written to.
    QFile::remove(m_home->path() + QStringLiteral("app/images.dat"));
    QFile::remove(m_home->path() + QStringLiteral("app/images.mdb"));
    const QString file = picture(QStringLiteral("a.png"), red);
    list().addItem(file);
    QVERIFY(!form<frmDataBase>().DatabaseOpen);
    viewer().mnuThumbnailsGenerateAll_Click();
    viewer().MakeOrLoadThumbnail(file, QStringLiteral("Picture"));
    QCOMPARE(shown(), red);
}

QTEST_MAIN(tst_generate)
#include "tst_generate.moc"
