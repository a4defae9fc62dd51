#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "engine/codec.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "roads/badfiles.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/frmMainViewer.h"
#include "viewer/listfile.h"
#include "viewer/statustext.h"

#include <QDirIterator>
#include <QtTest>

#include <filesystem>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// Files, names and lists as bad as they come, on the real window.
class tst_bad_input : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void whatIsNoFileIsNotAvailable_data();
    void whatIsNoFileIsNotAvailable();
    void whatCannotBeReadLeavesThePictureBefore_data();
    void whatCannotBeReadLeavesThePictureBefore();
    void aLyingExtensionIsFoundOutByContent();
    void samplesAndTheirMutationsDoNoHarm();
    void hostileNamesSurviveListAndDisplay();
    void hostileListsAreReadAsTheRulesSay_data();
    void hostileListsAreReadAsTheRulesSay();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    QString status() { return window().StatusBar1->panelText(2); }
    void fill(const QStringList &paths);
    void show(const QString &path);
    std::unique_ptr<TemporaryHome> m_home;
    QString m_good;
};

void tst_bad_input::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    useBuiltModules();
    saveOption("Show Intro Select at Startup", QStringLiteral("0"));
    saveOption("Show Tips at Startup", QStringLiteral("0"));
    globals.MediaPlayerVersion = 0;
    window().resize(1000, 700);
    window().show();
    QVERIFY(QTest::qWaitForWindowExposed(&window()));
    QTRY_VERIFY(globals.MainViewerActivated);
    m_good = m_home->writePicture(QStringLiteral("good.png"), {61, 43}, 0xff20c040);
}

void tst_bad_input::init()
{
    ScriptedDialogs::install();
    window().ClearDisplayList();
    globals.ListFileCount = 0;
    globals.StandardListLocked = false;
}

void tst_bad_input::cleanup()
{
    QVERIFY(!globals.ItemSelectionBusy);
    QCOMPARE(QGuiApplication::overrideCursor(), nullptr);
    setDialogs(nullptr);
}

void tst_bad_input::cleanupTestCase()
{
    // Names that are no text are beyond the temporary folder's own removal.
    std::filesystem::remove_all(pathToBytes(m_home->path()).toStdString());
}

void tst_bad_input::fill(const QStringList &paths)
{
    window().ClearDisplayList();
    window().tabFileList->setCurrentIndex(1);
    window().lstDisplay->addItems(paths);
    window().lblCount->setText(QString::number(paths.size()));
    window().UpdateMenuAndToolbarState();
}

/// The good picture first, then this one, within the time that a bad file may cost.
void tst_bad_input::show(const QString &path)
{
    fill({m_good, path});
    window().lstDisplay->selectOnly(0);
    QCOMPARE(window().Image1->size(), QSize(61, 43));
    QElapsedTimer time;
    time.start();
    window().lstDisplay->selectOnly(1);
    QVERIFY2(time.elapsed() < longest, qPrintable(QStringLiteral("it took %1 ms").arg(time.elapsed())));
    QCOMPARE(window().lstDisplay->items(), QStringList({m_good, path}));
    QCOMPARE(globals.CurrentListIndex, 2);
    QCOMPARE(window().CurrentPicture->text(), QStringLiteral("2"));
}

// --- what a list entry may name

void tst_bad_input::whatIsNoFileIsNotAvailable_data()
{
    QTest::addColumn<QString>("path");
    const QString folder = m_home->path() + QStringLiteral("odd/");
    QDir().mkpath(folder + QStringLiteral("folder.png"));
    const auto row = [](const char *name, const QString &path) { QTest::newRow(name) << path; };
    row("a file that is not there", folder + QStringLiteral("missing.png"));
    row("a film that is not there", folder + QStringLiteral("missing.avi"));
    row("a folder", folder + QStringLiteral("folder.png"));
    row("an empty folder, told as one", folder + QStringLiteral("folder.png/"));
    row("a name below a file", m_good + QStringLiteral("/a.png"));
    row("a name that no file system takes", folder + QString(300, QLatin1Char('n')) + QStringLiteral(".png"));
    row("a path longer than any", QString(9000, QLatin1Char('/')) + QString(9000, QLatin1Char('p')));
    row("a null character", m_good + QChar(0) + QStringLiteral(".png"));
    makeFifo(folder + QStringLiteral("fifo.png"));
    row("a FIFO", folder + QStringLiteral("fifo.png"));
    makeFifo(folder + QStringLiteral("fifo.mp3"));
    row("a FIFO for a sound", folder + QStringLiteral("fifo.mp3"));
    const std::pair<const char *, const char *> links[] = {{"zero.png", "/dev/zero"}, {"full.png", "/dev/full"},
        {"tty.png", "/dev/tty"}, {"dead.png", "/nowhere/at/all"}, {"loop.png", "loop.png"}, {"home.png", "."},
        {"zero.mpg", "/dev/zero"}};
    for (const auto &[name, target] : links) {
        link(target, folder + QLatin1String(name));
        QTest::addRow("a link to %s as %s", target, name) << folder + QLatin1String(name);
    }
    row("an endless device", QStringLiteral("/dev/zero"));
    row("a full device", QStringLiteral("/dev/full"));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray socketPath = pathToBytes(folder + QStringLiteral("s.png"));
    qstrncpy(address.sun_path, socketPath.constData(), sizeof address.sun_path);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        row("a socket", folder + QStringLiteral("s.png"));
    ::close(socket);
}

void tst_bad_input::whatIsNoFileIsNotAvailable()
{
    QFETCH(QString, path);
    show(path);
    QVERIFY2(status().endsWith(QLatin1String(" - Not Available")), qPrintable(status()));
    QCOMPARE(window().Image1->size(), QSize(61, 43));
    QVERIFY(!window().Image1->isEmpty());
    QCOMPARE(globals.CurrentMediaFile, m_good);
}

void tst_bad_input::whatCannotBeReadLeavesThePictureBefore_data()
{
    QTest::addColumn<QString>("path");
    const auto row = [this](const char *name, const QString &file, const QByteArray &bytes) {
        QTest::newRow(name) << m_home->write(QStringLiteral("bad/") + file, bytes);
    };
    const QByteArray png = imageBytes({40, 30}, "PNG");
    row("empty", QStringLiteral("empty.png"), {});
    row("text", QStringLiteral("text.jpg"), "no picture, only words");
    row("noise", QStringLiteral("noise.tif"), QByteArray(70000, '\xa7'));
    row("a PNG cut in its header", QStringLiteral("cut.png"), png.left(20));
    QByteArray lying = png;
    lying.replace(16, 8, QByteArray::fromHex("7fffffff7fffffff"));
    row("a PNG of two thousand million pixels a side", QStringLiteral("huge.png"), lying);
    QByteArray bmp = imageBytes({40, 30}, "BMP").left(60);
    bmp.replace(18, 8, QByteArray::fromHex("00ffff0000ffff00"));
    row("a BMP that claims what no memory holds", QStringLiteral("huge.bmp"), bmp);
    QByteArray jpeg = imageBytes({40, 30}, "JPG");
    jpeg.replace(jpeg.indexOf("\xff\xc0") + 5, 4, QByteArray::fromHex("ffffffff"));
    row("a JPEG beyond the limit of pixels", QStringLiteral("huge.jpg"), jpeg);
    row("an XPM of a million columns", QStringLiteral("huge.xpm"),
        "/* XPM */\nstatic char *a[] = {\n\"999999 999999 2 1\",\n");
    row("a PPM of a million columns", QStringLiteral("huge.ppm"), "P6 999999 999999 255\n\1\2\3");
    row("a sound under a picture's name", QStringLiteral("sound.gif"), "RIFF\x24\0\0\0WAVEfmt ");
    const QString large = m_home->write(QStringLiteral("bad/large.png"), png);
    if (::truncate(pathToBytes(large).constData(), 3000 * mebibyte) != 0) // with holes: it takes no room
        qFatal("no large file");
    QTest::newRow("a file larger than any that is read") << large;
    if (::geteuid() == 0)
        return; // this user may read everything
    const QString locked = m_home->write(QStringLiteral("bad/locked.png"), png);
    ::chmod(pathToBytes(locked).constData(), 0);
    QTest::newRow("a file without the right to read it") << locked;
}

void tst_bad_input::whatCannotBeReadLeavesThePictureBefore()
{
    QFETCH(QString, path);
    const auto before = [&] { return window().Image1->picture(); };
    show(m_good);
    const auto good = before();
    show(path);
    QVERIFY(good && before() == good);
    QCOMPARE(window().Image1->size(), QSize(61, 43));
    QVERIFY2(!status().contains(QLatin1String("Available")), "the file is there");
    QCOMPARE(status(), ProperCase(FileNameOfPath(path)));
}

void tst_bad_input::aLyingExtensionIsFoundOutByContent()
{
    const char *const formats[] = {"PNG", "JPG", "BMP"};
    const char *const names[] = {"lie.jpg", "lie.tif", "lie.gif", "lie.psd", "lie.unknown", "lie"};
    for (const char *format : formats) {
        for (const char *name : names) {
            show(m_home->write(QString::fromLatin1(name), imageBytes({33, 22}, format)));
            QVERIFY2(window().Image1->size() == QSize(33, 22), name);
        }
    }
}

void tst_bad_input::samplesAndTheirMutationsDoNoHarm()
{
    SKIP_WITHOUT_SAMPLES();
    // As many of each file as this says; every one is damaged in another way.
    const int mutations = qMax(1, qEnvironmentVariableIntValue("LUMORA_MUTATIONS"));
    QRandomGenerator random(20031);
    QStringList files;
    for (QDirIterator all(samplesFolder(), QDir::Files, QDirIterator::Subdirectories); all.hasNext();)
        files << all.next();
    files.sort();
    fill({m_good});
    for (const QString &file : std::as_const(files)) {
        const QByteArray whole = bytesOfFile(file);
        if (whole.size() > 2 * mebibyte || GetMediaKind(file) == kindMotion)
            continue;
        for (int number = 0; number <= mutations; ++number) {
            QByteArray bytes = whole;
            const qsizetype reach = number % 2 ? qMin<qsizetype>(bytes.size(), 400) : bytes.size();
            for (int change = 0; number > 0 && reach > 0 && change < 1 + number % 5; ++change)
                bytes[random.bounded(int(reach))] = char(random.generate());
            if (number % 3 == 2)
                bytes.truncate(random.bounded(int(bytes.size()) + 1));
            const QString path = m_home->write(QStringLiteral("mutations/") + FileNameOfPath(file), bytes);
            QElapsedTimer time;
            time.start();
            window().ShowPictureInViewer(path, false, 1);
            ignore(window().Image1->grab());
            QVERIFY2(time.elapsed() < longest * 2, qPrintable(QStringLiteral("%1, mutation %2").arg(file).arg(number)));
            QVERIFY(globals.ImageWidth >= 0 && globals.ImageHeight >= 0);
            QFile::remove(path);
        }
    }
}

// --- names

void tst_bad_input::hostileNamesSurviveListAndDisplay()
{
    const QByteArray picture = imageBytes({50, 20}, "PNG");
    QStringList paths;
    for (const QString &name : hostileNames()) {
        paths << m_home->path() + name;
        const Result<void> written = writeFileAtomically(paths.last(), picture);
        QVERIFY2(written, qPrintable(written.reason()));
    }
    fill(paths);
    const QString file = m_home->path() + QStringLiteral("names.Lsl");
    ScriptedDialogs &dialogs = ScriptedDialogs::install();
    dialogs.answerFile(FileAnswer{file, 1});
    window().mnuFileSaveAs_Click();
    window().Lumora_PlayListLoad(file);
    QCOMPARE(window().lstDisplay->items(), paths);
    for (int i = 0; i < paths.size(); ++i) {
        window().lstDisplay->clearSelections();
        window().Image1->setGeometry(0, 0, 1, 1);
        window().lstDisplay->selectOnly(i);
        QVERIFY2(globals.CurrentMediaFile == paths[i], qPrintable(displayPath(paths[i])));
        QCOMPARE(window().Image1->size(), QSize(50, 20));
        const QString shown = window().lstDisplay->model()->index(i, 0).data().toString();
        for (const QString &text : {shown, status()}) {
            QVERIFY(text.endsWith(QLatin1String(".png"), Qt::CaseInsensitive) && text.isValidUtf16());
            QVERIFY(std::none_of(
                text.begin(), text.end(), [](QChar unit) { return unit.category() == QChar::Other_Control; }));
        }
    }
}

// --- lists

void tst_bad_input::hostileListsAreReadAsTheRulesSay_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("entries");
    const QString folder = m_home->path() + QStringLiteral("lists/");
    QDir().mkpath(folder + QStringLiteral("folder.lsl"));
    const auto row = [&](const char *name, int entries, const QByteArray &bytes) {
        const QString file = QStringLiteral("lists/%1.lsl").arg(QLatin1String(name));
        QTest::newRow(name) << m_home->write(file, bytes) << entries;
    };
    const auto headed = [](const QByteArray &count, const QByteArray &rest) {
        return "[File List]\r\nNo. Of Pictures=" + count + "\r\nCurrent Index=1\r\n" + rest;
    };
    for (const auto &[name, target] : {std::pair("zero.lsl", "/dev/zero"), std::pair("full.lsl", "/dev/full"),
             std::pair("dead.lsl", "/nowhere"), std::pair("loop.lsl", "loop.lsl")}) {
        link(target, folder + QLatin1String(name));
        QTest::addRow("a link to %s", target) << folder + QLatin1String(name) << 0;
    }
    makeFifo(folder + QStringLiteral("fifo.lsl"));
    QTest::newRow("a FIFO nobody writes to") << folder + QStringLiteral("fifo.lsl") << 0;
    QTest::newRow("a folder") << folder + QStringLiteral("folder.lsl") << 0;
    QTest::newRow("a list that is not there") << folder + QStringLiteral("none.lsl") << 0;
    row("empty", 0, {});
    row("a picture", 0, imageBytes({200, 200}, "PNG"));
    row("nothing but null bytes", 0, QByteArray(1 << 20, '\0'));
    row("100 MB of one line", 0, QByteArray(100 * mebibyte, 'x'));
    row("100 MB of one line that begins as a list", 0, "[File List]" + QByteArray(100 * mebibyte, 'x'));
    row("one entry of 50 MB", 1, headed("1", "\"0 =| /" + QByteArray(50 * mebibyte, 'y') + "\"\r\n"));
    row("long entries, 60 MB of them", 2000,
        headed("2000", ("\"0 =| /" + QByteArray(30000, 'z') + "\"\r\n").repeated(2000)));
    row("50 MB of commas", 32767, headed("32767", QByteArray(50 * mebibyte, ',')));
    row("50 MB of quotes", 32767, headed("99999999999999999999", QByteArray(50 * mebibyte, '"')));
    row("more entries than a list holds", 32767, headed("1e300", QByteArray("\"0 =| /a.png\"\r\n").repeated(40000)));
    row("a count that is no number", 0, headed("nan", "\"0 =| /a.png\"\r\n"));
    row("a count below nothing", 0, headed("-2147483649", "\"0 =| /a.png\"\r\n"));
    row("UTF-16", 0, QByteArray::fromHex("fffe5b00460069006c006500"));
    row("null bytes inside an entry", 1, headed("1", QByteArray("\"0 =| /a\0b.png\"\r\n", 17)));
    row("a quote that never closes", 2, headed("2", "\"0 =| /a.png\r\n\"1 =| /b.png\"\r\n"));
    row("a URI of bad escapes", 1, headed("1", "\"0 =| file:///a%zz%0%00%\"\r\n"));
}

void tst_bad_input::hostileListsAreReadAsTheRulesSay()
{
    QFETCH(QString, path);
    QFETCH(int, entries);
    const QString standard = AppFolder() + QLatin1String(standardListName);
    const QByteArray kept = writeListFile({QStringLiteral("/kept/a.jpg")}, QStringLiteral("1"));
    QVERIFY(writeFileAtomically(standard, kept));
    fill({m_good});
    QElapsedTimer time;
    time.start();
    window().Lumora_PlayListLoad(path);
    ignore(window().grab());
    QVERIFY2(time.elapsed() < longest, qPrintable(QStringLiteral("it took %1 ms").arg(time.elapsed())));
    QCOMPARE(window().lstDisplay->count(), entries);
    QCOMPARE(window().lblCount->text().toInt(), entries);
    QCOMPARE(bytesOfFile(standard), kept);
    // An empty list never replaces the one that was saved.
    window().saveStandardList();
    QCOMPARE(bytesOfFile(standard) == kept, entries == 0);
}

QTEST_MAIN(tst_bad_input)
#include "tst_bad_input.moc"
