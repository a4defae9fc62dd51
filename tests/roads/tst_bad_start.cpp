#include "app/commandline.h"
#include "roads/badfiles.h"
#include "roads/programrun.h"
#include "viewer/listfile.h"

#include <QDir>
#include <QtTest>

#include <filesystem>

/// Names, settings, lists and disks as bad as they come, from process entry to process end.
class tst_bad_start : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void hostileNamesSurviveTheCommandLine();
    void damagedSettingsStartAndAreSavedWhole_data();
    void damagedSettingsStartAndAreSavedWhole();
    void anOddStandardListHoldsNothingUp_data();
    void anOddStandardListHoldsNothingUp();
    void aFullDiskLosesNeitherListNorSettings();

private:
    QMap<QString, QString> newHome();
    QString fileIn(const QMap<QString, QString> &home, const char *variable, const char *name)
    {
        return home[QLatin1String(variable)] + QLatin1Char('/') + QLatin1String(name);
    }
    std::unique_ptr<TemporaryHome> m_home;
    QString m_good;
    int m_homes = 0;
};

void tst_bad_start::initTestCase()
{
    m_home = std::make_unique<TemporaryHome>();
    m_good = m_home->writePicture(QStringLiteral("good.png"), {61, 43}, 0xff20c040);
}

void tst_bad_start::cleanupTestCase()
{
    // Names that are no text are beyond the temporary folder's own removal.
    std::filesystem::remove_all(pathToBytes(m_home->path()).toStdString());
}

QMap<QString, QString> tst_bad_start::newHome()
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

void tst_bad_start::hostileNamesSurviveTheCommandLine()
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

void tst_bad_start::damagedSettingsStartAndAreSavedWhole_data()
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

void tst_bad_start::damagedSettingsStartAndAreSavedWhole()
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

void tst_bad_start::anOddStandardListHoldsNothingUp_data()
{
    QTest::addColumn<QString>("target"); // of a link in its place; empty: a FIFO
    QTest::newRow("a FIFO") << QString();
    QTest::newRow("a link to /dev/zero") << QStringLiteral("/dev/zero");
    QTest::newRow("a link to /dev/full") << QStringLiteral("/dev/full");
}

void tst_bad_start::anOddStandardListHoldsNothingUp()
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

void tst_bad_start::aFullDiskLosesNeitherListNorSettings()
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

QTEST_GUILESS_MAIN(tst_bad_start)
#include "tst_bad_start.moc"
