#include "actions/saveformats.h"
#include "builtpaths.h"
#include "engine/decode.h"
#include "engine/ops/adjustments.h"
#include "engine/ops/depth.h"
#include "roads/badfiles.h"
#include "viewer/listfile.h"

#include <QDir>
#include <QProcess>
#include <QtTest>

#include <csignal>
#include <filesystem>

/// lumora --convert as a script starts it: the real program without a display.
class tst_convert_command : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void picturesFoldersAndListsAreConverted();
    void everyFormatIsWrittenUnderItsOwnFolder();
    void operationsAreDoneBeforeTheWrite();
    void whatCannotBeReadIsToldAndNeverWritten();
    void whatExistsIsLeftUnlessItMayBeReplaced();
    void noEntryReplacesAnotherOne();
    void namesKeepTheirBytes();
    void wrongUsageGivesTwo();
    void targetsThatCannotBeWrittenGiveOne();
    void progressIsToldWhenWanted();
    void aSignalEndsBehindTheFileUnderWay();

private:
    struct Outcome
    {
        int status = -1;
        QString errors;
        QString output;
        int lines() const { return int(errors.count(QLatin1Char('\n'))); }
    };
    Outcome convert(const QStringList &arguments);
    void start(QProcess &process, const QStringList &arguments) const;
    QString in(const char *name) const { return m_home->path() + QLatin1String("in/") + QLatin1String(name); }
    QString out(const char *name = "") const { return m_home->path() + QLatin1String("out/") + QLatin1String(name); }
    QString picture(const char *name, const QImage &image) const;

    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

QStringList words(const char *line)
{
    return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QImage pixelsOf(const QString &path)
{
    const Result<Picture> picture = decodeFile(path);
    return picture ? picture->pixels.convertToFormat(QImage::Format_RGB32) : QImage();
}

QImage plain(QRgb color)
{
    QImage image(20, 10, QImage::Format_RGB32);
    image.fill(color);
    return image;
}

}

void tst_convert_command::init()
{
    useBuiltModules();
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(QDir().mkpath(m_home->path() + QStringLiteral("in/deep")));
}

void tst_convert_command::cleanup()
{
    // Names that are no text are beyond the temporary folder's own removal.
    std::filesystem::remove_all(pathToBytes(m_home->path()).toStdString());
    m_home.reset();
}

QString tst_convert_command::picture(const char *name, const QImage &image) const
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    const bool isSaved = image.save(&buffer, qPrintable(QString::fromLatin1(name).section(QLatin1Char('.'), -1)));
    return isSaved && writeFileAtomically(in(name), bytes) ? in(name) : QString();
}

void tst_convert_command::start(QProcess &process, const QStringList &arguments) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS", "TERM"})
        environment.remove(QLatin1String(name));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_home->path());
    process.start(QStringLiteral(LUMORA_BIN "/lumora"), arguments);
}

tst_convert_command::Outcome tst_convert_command::convert(const QStringList &arguments)
{
    QProcess process;
    start(process, arguments);
    Outcome outcome;
    if (!process.waitForFinished(60'000) || process.exitStatus() != QProcess::NormalExit)
        return outcome;
    outcome.status = process.exitCode();
    outcome.errors = QString::fromUtf8(process.readAllStandardError());
    outcome.output = QString::fromUtf8(process.readAllStandardOutput());
    return outcome;
}

void tst_convert_command::picturesFoldersAndListsAreConverted()
{
    picture("one.png", plain(0xff102030));
    picture("deep/two.bmp", plain(0xff405060));
    picture("listed.bmp", plain(0xff708090));
    m_home->write(QStringLiteral("in/deep/song.mp3"), "no picture");
    const QString list = m_home->write(QStringLiteral("some.Lsl"),
        writeListFile({in("listed.bmp"), in("deep/song.mp3"), in("listed.bmp")}, QStringLiteral("1")));
    const Outcome outcome = convert(words("--convert png,pcx --to out/made in/one.png in/deep") << list);
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.output, QString());
    QCOMPARE(outcome.status, 0);
    QCOMPARE(everyName(out("made")), words("listed.pcx listed.png one.pcx one.png two.pcx two.png"));
    QCOMPARE(pixelsOf(out("made/one.pcx")), plain(0xff102030));
    QCOMPARE(pixelsOf(out("made/two.png")), plain(0xff405060));
    QCOMPARE(pixelsOf(out("made/listed.png")), plain(0xff708090));
    // Beside the pictures, and with all that is below.
    QCOMPARE(convert(words("--convert=tga --recursive in")).status, 0);
    QCOMPARE(everyName(in("deep")), words("song.mp3 two.bmp two.tga"));
    QVERIFY(FileExists(in("one.tga")) && FileExists(in("listed.tga")));
}

void tst_convert_command::everyFormatIsWrittenUnderItsOwnFolder()
{
    picture("a.png", plain(0xff102030));
    QStringList types;
    for (const SaveFormat &format : saveFormats())
        types << QString::fromLatin1(format.batchFolder).chopped(1).toLower();
    const Outcome outcome = convert({QStringLiteral("--convert"), types.join(QLatin1Char(',')), QStringLiteral("--to"),
        QStringLiteral("out"), QStringLiteral("--convert-folder"), QStringLiteral("--folder-per-type"), in("a.png")});
    QCOMPARE(outcome.errors, QString());
    QCOMPARE(outcome.status, 0);
    for (const SaveFormat &format : saveFormats()) {
        const QString path =
            out("convert/") + QLatin1String(format.batchFolder) + QLatin1Char('a') + QLatin1String(format.extension);
        QVERIFY2(decodeFile(path) || FileExists(path), qPrintable(path));
    }
}

void tst_convert_command::operationsAreDoneBeforeTheWrite()
{
    const QImage ramp = rampImage({180, 90});
    picture("ramp.png", ramp);
    picture("second.png", ramp);
    QCOMPARE(convert(words("--convert png --to out --operations grayscale,autolevel in/ramp.png")).status, 0);
    const auto level = withAutoLevel(Picture::fromImage(ramp), 0.005);
    QCOMPARE(pixelsOf(out("ramp.png")), inGreyScale(*level)->pixels.convertToFormat(QImage::Format_RGB32));
    // Every picture is diffused alike, the first one as well.
    QCOMPARE(
        convert(words("--convert bmp --to out --operations colors256 --diffuse in/ramp.png in/second.png")).status, 0);
    const auto diffused = withReducedColors(Picture::fromImage(ramp), 256, 8, true);
    const auto nearest = withReducedColors(Picture::fromImage(ramp), 256, 8, false);
    QVERIFY(diffused->pixels != nearest->pixels);
    for (const char *name : {"ramp.bmp", "second.bmp"})
        QCOMPARE(pixelsOf(out(name)), diffused->pixels.convertToFormat(QImage::Format_RGB32));
    // Quality reaches the writer.
    QCOMPARE(convert(words("--convert jpg --to out --jpeg-quality 15 in/ramp.png")).status, 0);
    QCOMPARE(convert(words("--convert jpg --to out in/second.png")).status, 0);
    QVERIFY(2 * QFileInfo(out("ramp.jpg")).size() < QFileInfo(out("second.jpg")).size());
}

void tst_convert_command::whatCannotBeReadIsToldAndNeverWritten()
{
    picture("a.png", plain(0xff102030));
    m_home->write(QStringLiteral("in/b.png"), "no picture");
    picture("c.png", plain(0xff405060));
    QByteArray cut = imageBytes({400, 300}, "JPG");
    m_home->write(QStringLiteral("in/d.jpg"), cut.left(cut.size() * 2 / 3));
    const Outcome outcome = convert(words("--convert bmp,tif --to out in in/gone.png"));
    QCOMPARE(outcome.status, 1);
    QCOMPARE(everyName(out()), words("a.bmp a.tif c.bmp c.tif d.bmp d.tif"));
    // One line for each file, however many formats there are, and one in the end.
    QCOMPARE(outcome.lines(), 4);
    for (const char *name : {"b.png", "d.jpg", "gone.png", "4 of 10"})
        QVERIFY2(outcome.errors.count(QLatin1String(name)) == 1, qPrintable(outcome.errors));
    // What is not as whole as its file once was fails as well, but is there.
    const Outcome damaged = convert(words("--convert tga --to out in/d.jpg"));
    QCOMPARE(damaged.status, 1);
    QCOMPARE(damaged.lines(), 1);
    QCOMPARE(pixelsOf(out("d.tga")).size(), QSize(400, 300));
    for (const char *nothing : {"in/deep", "in/song.mp3", "in/no.lsl", "in/gone"}) {
        const Outcome none = convert(words("--convert png --to out") << QLatin1String(nothing));
        QCOMPARE(none.status, 1);
        QVERIFY2(none.errors.contains(QLatin1String(nothing)), qPrintable(none.errors));
    }
}

void tst_convert_command::whatExistsIsLeftUnlessItMayBeReplaced()
{
    picture("a.png", plain(0xff102030));
    picture("b.png", plain(0xff405060));
    const QString there = m_home->write(QStringLiteral("out/a.bmp"), "mine");
    const Outcome left = convert(words("--convert bmp --to out in/a.png in/b.png"));
    QCOMPARE(left.status, 1);
    QCOMPARE(left.lines(), 2);
    QVERIFY2(left.errors.contains(there), qPrintable(left.errors));
    QCOMPARE(bytesOfFile(there), QByteArray("mine"));
    QVERIFY(FileExists(out("b.bmp")));
    QCOMPARE(convert(words("--convert bmp --to out --overwrite in/a.png")).status, 0);
    QCOMPARE(pixelsOf(there), plain(0xff102030));
    // A picture may be replaced by its own conversion.
    QCOMPARE(convert(words("--convert png --overwrite --operations grayscale in/a.png")).status, 0);
    QCOMPARE(decodeFile(in("a.png"))->info.bitsPerPixel, 8);
}

/// Whatever the options say: the pictures of a run are all there when it is over.
void tst_convert_command::noEntryReplacesAnotherOne()
{
    picture("a.png", plain(0xff102030));
    picture("a.bmp", plain(0xff405060));
    picture("deep/a.png", plain(0xff708090));
    const Outcome flat = convert(words("--convert tga --to out --overwrite in/a.png in/deep/a.png"));
    QCOMPARE(flat.status, 1);
    QVERIFY2(flat.errors.contains(QStringLiteral("same name")), qPrintable(flat.errors));
    QCOMPARE(pixelsOf(out("a.tga")), plain(0xff102030));
    const Outcome crossed = convert(words("--convert bmp,png --overwrite in/a.png in/a.bmp"));
    QCOMPARE(crossed.status, 1);
    QCOMPARE(pixelsOf(in("a.png")), plain(0xff102030));
    QCOMPARE(pixelsOf(in("a.bmp")), plain(0xff405060));
}

void tst_convert_command::namesKeepTheirBytes()
{
    for (const QString &name : hostileNames())
        QVERIFY(writeFileAtomically(in("") + name, imageBytes({20, 10}, "PNG")));
    const Outcome outcome = convert(words("--convert bmp --to out in"));
    QVERIFY2(outcome.status == 0 && outcome.errors.isEmpty(), qPrintable(outcome.errors));
    for (const QString &name : hostileNames())
        QVERIFY2(FileExists(out() + name.chopped(4) + QStringLiteral(".bmp")), qPrintable(displayPath(name)));
}

void tst_convert_command::wrongUsageGivesTwo()
{
    picture("a.png", plain(0xff102030));
    for (const char *line : {"--convert gif in/a.png", "--convert png", "--convert png --editor in/a.png"}) {
        const Outcome outcome = convert(words(line));
        QCOMPARE(outcome.status, 2);
        QCOMPARE(outcome.lines(), 1);
    }
    const Outcome help = convert(words("--convert png --help"));
    QCOMPARE(help.status, 0);
    QVERIFY(help.output.contains(QStringLiteral("--folder-per-type")));
    QVERIFY(convert(words("--convert png --version")).output.startsWith(QStringLiteral("lumora ")));
    QVERIFY(everyName(in("")) == words("a.png deep"));
}

void tst_convert_command::targetsThatCannotBeWrittenGiveOne()
{
    picture("a.png", plain(0xff102030));
    m_home->write(QStringLiteral("file"), "no folder");
    for (const char *folder : {"file", "file/below", "/dev/null"}) {
        const Outcome outcome = convert(words("--convert bmp in/a.png --to") << QLatin1String(folder));
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains(QLatin1String(folder)), qPrintable(outcome.errors));
    }
    // A folder has the name of the file.
    QVERIFY(QDir().mkpath(out("a.bmp")));
    const Outcome outcome = convert(words("--convert bmp --to out --overwrite in/a.png"));
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains(out("a.bmp")), qPrintable(outcome.errors));
    QCOMPARE(everyName(out()), words("a.bmp"));
}

void tst_convert_command::progressIsToldWhenWanted()
{
    for (const char *name : {"a.png", "b.png", "c.png", "d.png"})
        picture(name, plain(0xff102030));
    QStringList percents;
    for (const QString &line : convert(words("--convert bmp --to out --progress in")).errors.split(QLatin1Char('\n')))
        percents << line.section(QLatin1Char('%'), 0, 0).trimmed();
    QCOMPARE(percents,
        QStringList(
            {QStringLiteral("25"), QStringLiteral("50"), QStringLiteral("75"), QStringLiteral("100"), QString()}));
}

void tst_convert_command::aSignalEndsBehindTheFileUnderWay()
{
    constexpr QSize size(1100, 900);
    constexpr int files = 100;
    QVERIFY(writeFileAtomically(in("0.bmp"), imageBytes(size, "BMP")));
    for (int i = 1; i < files; ++i)
        std::filesystem::create_hard_link(in("0.bmp").toStdString(), in("").toStdString() + std::to_string(i) + ".bmp");
    QProcess process;
    start(process, words("--convert png --to out --progress in"));
    QVERIFY(process.waitForStarted());
    process.setReadChannel(QProcess::StandardError);
    while (!process.canReadLine() && process.waitForReadyRead(20'000))
        ;
    QVERIFY(process.canReadLine());
    ::kill(pid_t(process.processId()), SIGINT);
    QVERIFY(process.waitForFinished(20'000));
    // A shell that sees this ends its own loop too.
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(process.exitCode(), SIGINT);
    const QStringList written = everyName(out());
    QVERIFY2(!written.isEmpty() && written.size() < files, qPrintable(QString::number(written.size())));
    const QImage whole = rampImage(size);
    for (const QString &name : written)
        QVERIFY2(name.endsWith(QStringLiteral(".png")) && pixelsOf(out() + name) == whole, qPrintable(name));
    QVERIFY(process.readAllStandardError().contains(
        QByteArray::number(written.size()) + " of " + QByteArray::number(files)));
}

QTEST_GUILESS_MAIN(tst_convert_command)
#include "tst_convert_command.moc"
