#include "app/commandline.h"
#include "app/globals.h"
#include "app/mediatypes.h"
#include "app/settings.h"
#include "engine/codec.h"
#include "platform/filepath.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "roads/programrun.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/frmMainViewer.h"
#include "viewer/listfile.h"
#include "viewer/statustext.h"

#include <QBuffer>
#include <QDirIterator>
#include <QtTest>

#include <filesystem>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr qint64 longest = 5000; ///< milliseconds that one bad file may cost
constexpr qint64 mebibyte = 1 << 20;

QByteArray imageBytes(QSize size, const char *format)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!rampImage(size).save(&buffer, format))
        qFatal("cannot write a %s", format);
    return bytes;
}

QByteArray bytesOfFile(const QString &path)
{
    const Result<QByteArray> bytes = readFile(path, 1 << 30);
    return bytes ? *bytes : QByteArray();
}

void link(const char *target, const QString &path)
{
    if (::symlink(target, pathToBytes(path).constData()) != 0)
        qFatal("no link %s", qPrintable(path));
}

void makeFifo(const QString &path)
{
    if (::mkfifo(pathToBytes(path).constData(), 0600) != 0)
        qFatal("no FIFO %s", qPrintable(path));
}

/// The names of a folder with nothing left out, to find what an interrupted write left behind.
QStringList everyName(const QString &folder)
{
    QStringList names;
    const auto tell = [&](const char *name, EntryKind) { names << pathFromBytes(name); };
    ignore(forEachEntry(folder, tell, HiddenEntries::Told));
    names.sort();
    return names;
}

/// Names with everything that a grammar on the way could take for its own.
QStringList hostileNames()
{
    QStringList names;
    for (const char *name : {"double \" quote", "two\nlines", "return\r\n", "#fragment", "100%41", "bar =| bar",
             "comma, \"quoted\", comma", "foreign \xe9\xff", "cut \xe2\x82 sequence", " leading blank", "back\\slash",
             "*** End of List ***", "[File List]", "file:", "%", "-- dashes", "tab\there", "'single'", "$(HOME) `ls`",
             "turned \xe2\x80\xae round", "\xf0\x9f\x8e\xa8 four bytes", "?query=1&b"})
        names << pathFromBytes(name) + QStringLiteral(".png");
    return names;
}

}

/// Files, names, lists, settings and disks as bad as they come, through the program as it stands.
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
    void hostileNamesSurviveTheCommandLine();
    void hostileListsAreReadAsTheRulesSay_data();
    void hostileListsAreReadAsTheRulesSay();
    void damagedSettingsStartAndAreSavedWhole_data();
    void damagedSettingsStartAndAreSavedWhole();
    void anOddStandardListHoldsNothingUp_data();
    void anOddStandardListHoldsNothingUp();
    void aFullDiskLosesNeitherListNorSettings();

private:
    frmMainViewer &window() { return form<frmMainViewer>(); }
    QString status() { return window().StatusBar1->panelText(2); }
    void fill(const QStringList &paths);
    void show(const QString &path);
    QMap<QString, QString> newHome();
    QString fileIn(const QMap<QString, QString> &home, const char *variable, const char *name)
    {
        return home[QLatin1String(variable)] + QLatin1Char('/') + QLatin1String(name);
    }
    std::unique_ptr<TemporaryHome> m_home;
    QString m_good;
    int m_homes = 0;
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

QMap<QString, QString> tst_bad_input::newHome()
{
    const QString root = m_home->path() + QStringLiteral("home%1").arg(++m_homes);
    QMap<QString, QString> home{{QStringLiteral("HOME"), root}};
    for (const char *variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME",
             "XDG_RUNTIME_DIR", "LUMORA_APP_FOLDER"}) {
        home[QLatin1String(variable)] = root + QLatin1Char('/') + QLatin1String(variable);
        QDir().mkpath(home[QLatin1String(variable)]);
        ::chmod(pathToBytes(home[QLatin1String(variable)]).constData(), 0700);
    }
    return home;
}

void tst_bad_input::hostileNamesSurviveTheCommandLine()
{
    const QMap<QString, QString> home = newHome();
    const QString folder = home[QStringLiteral("HOME")] + QStringLiteral("/names/");
    QDir().mkpath(folder);
    QStringList paths;
    for (const QString &name : hostileNames()) {
        paths << folder + name;
        QVERIFY(writeFileAtomically(paths.last(), imageBytes({50, 20}, "PNG")));
    }
    // The shell makes the arguments, since a QProcess cannot hold bytes that are no text.
    const auto shell = [&](const QString &script) {
        return std::make_unique<Run>(QStringList{QStringLiteral("-c"), script, QStringLiteral("sh"), folder, program},
            home, QStringLiteral("/bin/sh"));
    };
    const auto run = shell(QStringLiteral("cd \"$1\" && exec \"$2\" -- *"));
    QVERIFY2(run->saw(QStringLiteral("command taken")) && run->stands(), qPrintable(run->log()));
    for (const QString &path : std::as_const(paths))
        QVERIFY2(run->log().contains(displayPath(fileCommand({path}))), qPrintable(displayPath(path)));
    QCOMPARE(run->endedBy(SIGTERM), 0);
    // And as a list that the program itself reads and writes.
    const QString list = m_home->write(QStringLiteral("all.lsl"), writeListFile(paths, QStringLiteral("3")));
    Run second({list}, home);
    QVERIFY2(second.saw(QStringLiteral("command taken")) && second.stands(), qPrintable(second.log()));
    QCOMPARE(second.endedBy(SIGTERM), 0);
    QCOMPARE(bytesOfFile(fileIn(home, "LUMORA_APP_FOLDER", standardListName)), bytesOfFile(list));
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

// --- settings and disks, with the program as it is installed

void tst_bad_input::damagedSettingsStartAndAreSavedWhole_data()
{
    QTest::addColumn<int>("percent"); // of the file that is left; -1 and below: something else stands there
    QTest::newRow("cut in half") << 50;
    QTest::newRow("cut near its end") << 97;
    QTest::newRow("cut to its first bytes") << 1;
    QTest::newRow("empty") << 0;
    QTest::newRow("noise") << -1;
    QTest::newRow("a FIFO") << -2;
    QTest::newRow("a link to /dev/zero") << -3;
}

void tst_bad_input::damagedSettingsStartAndAreSavedWhole()
{
    QFETCH(int, percent);
    const QMap<QString, QString> home = newHome();
    const auto startAndEnd = [&] {
        QElapsedTimer time;
        time.start();
        Run run({QStringLiteral("/nowhere/a.png")}, home);
        const bool stands = run.stands() && run.endedBy(SIGTERM) == 0;
        return stands && time.elapsed() < 2 * longest;
    };
    QVERIFY(startAndEnd());
    const QString folder = home[QStringLiteral("XDG_CONFIG_HOME")] + QStringLiteral("/lumora/");
    const QString file = folder + QStringLiteral("user.registry");
    const QByteArray whole = bytesOfFile(file);
    QVERIFY(whole.contains("SlideShowInterval"));
    const QByteArray damaged = percent < 0 ? QByteArray(5000, '\xc3') : whole.left(whole.size() * percent / 100);
    QVERIFY(writeFileAtomically(file, damaged));
    if (percent < -1) {
        QFile::remove(file);
        percent == -2 ? makeFifo(file) : link("/dev/zero", file);
    }
    QVERIFY(startAndEnd());
    if (percent < -1) {
        QVERIFY2(!FileExists(file), "what is no file is left as it is");
        return;
    }
    for (const char *key : {"SlideShowInterval", "ColorMNU", "MediaShowLoop"})
        QVERIFY2(bytesOfFile(file).contains(key), key);
    // Nothing that could still be read from it is lost.
    if (percent != 0)
        QCOMPARE(bytesOfFile(file + QStringLiteral(".damaged")), damaged);
}

void tst_bad_input::anOddStandardListHoldsNothingUp_data()
{
    QTest::addColumn<QString>("target"); // of a link in its place; empty: a FIFO
    QTest::newRow("a FIFO") << QString();
    QTest::newRow("a link to /dev/zero") << QStringLiteral("/dev/zero");
    QTest::newRow("a link to /dev/full") << QStringLiteral("/dev/full");
}

void tst_bad_input::anOddStandardListHoldsNothingUp()
{
    QFETCH(QString, target);
    const QMap<QString, QString> home = newHome();
    const QString standard = fileIn(home, "LUMORA_APP_FOLDER", standardListName);
    target.isEmpty() ? makeFifo(standard) : link(target.toUtf8().constData(), standard);
    const QString list = m_home->write(QStringLiteral("few.lsl"), writeListFile({m_good}, QStringLiteral("1")));
    Run run({list}, home);
    QVERIFY2(run.saw(QStringLiteral("command taken")) && run.stands(), qPrintable(run.log()));
    QCOMPARE(run.endedBy(SIGTERM), 0);
    QVERIFY2(run.log().contains(QStringLiteral("not written")), qPrintable(run.log()));
    QVERIFY(!FileExists(standard));
    QVERIFY(everyName(home[QStringLiteral("LUMORA_APP_FOLDER")]).filter(QStringLiteral(".tmp")).isEmpty());
}

void tst_bad_input::aFullDiskLosesNeitherListNorSettings()
{
    const QMap<QString, QString> home = newHome();
    const QString standard = fileIn(home, "LUMORA_APP_FOLDER", standardListName);
    const QString settings = fileIn(home, "XDG_CONFIG_HOME", "lumora/user.registry");
    const QString first = m_home->write(QStringLiteral("first.lsl"), writeListFile({m_good}, QStringLiteral("1")));
    {
        Run run({first}, home);
        QVERIFY2(run.saw(QStringLiteral("command taken")) && run.stands(), qPrintable(run.log()));
        QCOMPARE(run.endedBy(SIGTERM), 0);
    }
    const QByteArray list = bytesOfFile(standard);
    const QByteArray stored = bytesOfFile(settings);
    QVERIFY(!list.isEmpty() && !stored.isEmpty());
    const QStringList names = everyName(home[QStringLiteral("LUMORA_APP_FOLDER")]);
    const QString other = m_home->write(QStringLiteral("other.lsl"),
        writeListFile(QStringList(2000, QStringLiteral("/other.png")), QStringLiteral("2")));
    // As the program sees a full disk: no file may grow at all.
    Run run({QStringLiteral("-c"), QStringLiteral("ulimit -f 0; exec \"$0\" \"$1\""), program, other}, home,
        QStringLiteral("/bin/sh"));
    QVERIFY2(run.saw(QStringLiteral("command taken")) && run.stands(), qPrintable(run.log()));
    QCOMPARE(run.endedBy(SIGTERM), 0);
    QCOMPARE(bytesOfFile(standard), list);
    QCOMPARE(bytesOfFile(settings), stored);
    QCOMPARE(everyName(home[QStringLiteral("LUMORA_APP_FOLDER")]), names);
    QVERIFY2(run.log().contains(QStringLiteral("not written")), qPrintable(run.log()));
}

QTEST_MAIN(tst_bad_input)
#include "tst_bad_input.moc"
