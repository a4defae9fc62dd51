#include "builtpaths.h"
#include "platform/filetransfer.h"
#include "support/support.h"
#include "thumbnails/imagesdatabase.h"
#include "thumbnails/imagesfile.h"
#include "thumbnails/imagesschema.h"

#include <QFile>
#include <QProcess>
#include <QtTest>

#include <csignal>
#include <vector>

/// The file of the thumbnail cache under the hands of others: other processes, kills, and files that come and go.
class tst_cacheshared : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void aKilledProcessLeavesAllThatItStored();
    void aLogOfALostFileIsNotPlayedIntoTheNext();
    void twoProcessesStoreAtOnce();
    void processesThatFindNoFileMakeOneTogether();
    void processesThatFindGarbageMakeOneTogether();
    void aHeldFileKeepsRecordsWaiting();
    void aHeldFileHoldsNobodyUp();
    void removingWaitsForOthers();
    void afterAReplacementTheNewFileIsWritten();
    void damageThatAnotherProcessMendedIsNotSetAside();

private:
    QString path() const { return m_home->path() + QStringLiteral("app/images.mdb"); }
    QString folder() const { return m_home->path() + QStringLiteral("app/"); }
    static ImageRecord record(const QString &name, int bytes = 100);
    void replaceFile();
    std::unique_ptr<QProcess> startElsewhere(const QString &work);
    void runTogether();
    std::unique_ptr<TemporaryHome> m_home;
};

namespace {

const QString templateFile = QStringLiteral(LUMORA_BIN "/lumora-data/images.dat");
constexpr int storedElsewhere = 300;

/// What another process does: this program again, with an order in its arguments.
int workElsewhere(const QString &folder, const QString &work)
{
    ImagesDatabase database;
    if (!database.open(folder))
        return 1;
    ImageRecord record;
    record.thumbnailSize = 100;
    record.picture = QByteArray(3000, 'x');
    for (int number = 0; number < storedElsewhere; ++number) {
        record.name = QStringLiteral("/%1/%2").arg(work).arg(number);
        if (!database.add(record))
            return 2;
    }
    database.settle();
    if (database.count() < storedElsewhere)
        return 3;
    if (work == QLatin1String("killed"))
        ::kill(::getpid(), SIGKILL);
    return 0;
}

/// Keeps everybody else from writing.
class Holder
{
public:
    explicit Holder(const QString &path)
        : m_held(m_connection.open(path, SqliteConnection::Open::Existing, 0) && prepareImagesConnection(m_connection)
            && m_connection.run("BEGIN IMMEDIATE"))
    {
    }
    bool isHeld() const { return m_held; }
    void letGo() { m_held = !m_connection.run("ROLLBACK"); }

private:
    SqliteConnection m_connection;
    bool m_held;
};

}

void tst_cacheshared::init()
{
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(QFile::copy(templateFile, folder() + QLatin1String(imagesTemplateFile)));
}

ImageRecord tst_cacheshared::record(const QString &name, int bytes)
{
    ImageRecord made;
    made.name = name;
    made.picture = QByteArray(bytes, 'x');
    made.thumbnailSize = 100;
    return made;
}

/// As another process does that has found it damaged.
void tst_cacheshared::replaceFile()
{
    QVERIFY(bool(renameFile(path(), path() + QStringLiteral(".away"))));
    removeLeftOvers(path());
    QVERIFY(QFile::copy(templateFile, path()));
}

std::unique_ptr<QProcess> tst_cacheshared::startElsewhere(const QString &work)
{
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->start(QCoreApplication::applicationFilePath(), {QStringLiteral("--work"), folder(), work});
    return process;
}

void tst_cacheshared::aKilledProcessLeavesAllThatItStored()
{
    QVERIFY(startElsewhere(QStringLiteral("killed"))->waitForFinished());
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QCOMPARE(database.count(), std::optional<int>(storedElsewhere));
    int walked = 0;
    for (auto at = database.first(); at; at = database.next(*at))
        ++walked;
    QCOMPARE(walked, storedElsewhere);
}

void tst_cacheshared::aLogOfALostFileIsNotPlayedIntoTheNext()
{
    QVERIFY(startElsewhere(QStringLiteral("killed"))->waitForFinished());
    QVERIFY2(QFile::exists(path() + QStringLiteral("-wal")), "the process was killed with its log beside the file");
    QVERIFY(QFile::remove(path()));
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QCOMPARE(database.count(), std::optional<int>(0));
    QVERIFY(!database.first());
}

void tst_cacheshared::twoProcessesStoreAtOnce()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    const auto other = startElsewhere(QStringLiteral("other"));
    QVERIFY(other->waitForStarted());
    for (int number = 0; number < storedElsewhere; ++number)
        QVERIFY(database.add(record(QStringLiteral("/mine/%1").arg(number))));
    QVERIFY(other->waitForFinished());
    QCOMPARE(other->exitCode(), 0);
    database.settle();
    QCOMPARE(database.count(), std::optional<int>(2 * storedElsewhere));
}

void tst_cacheshared::runTogether()
{
    constexpr int processes = 4;
    std::vector<std::unique_ptr<QProcess>> others;
    others.reserve(processes);
    for (int number = 0; number < processes; ++number)
        others.push_back(startElsewhere(QString::number(number)));
    for (const auto &other : others) {
        QVERIFY(other->waitForFinished());
        QCOMPARE(other->exitCode(), 0);
    }
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QCOMPARE(database.count(), std::optional<int>(processes * storedElsewhere));
}

void tst_cacheshared::processesThatFindNoFileMakeOneTogether()
{
    runTogether();
}

void tst_cacheshared::processesThatFindGarbageMakeOneTogether()
{
    m_home->write(QStringLiteral("app/images.mdb"), QByteArray(50'000, '\x5a'));
    runTogether();
    QCOMPARE(QFileInfo(path() + QStringLiteral(".damaged")).size(), 50'000);
}

void tst_cacheshared::aHeldFileKeepsRecordsWaiting()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    Holder holder(path());
    QVERIFY(holder.isHeld());
    for (int number = 0; number < 120; ++number)
        QVERIFY(database.add(record(QString::number(number))));
    QCOMPARE(database.count(), std::optional<int>(120)); // but it does not wait for them
    QVERIFY(database.find(QStringLiteral("7"), 100));
    holder.letGo();
    database.settle();
    QCOMPARE(database.count(), std::optional<int>(120));
}

void tst_cacheshared::aHeldFileHoldsNobodyUp()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    Holder holder(path());
    QVERIFY(holder.isHeld());
    // As much waits as a program can spare.
    constexpr int largestPicture = 120'000;
    int accepted = 0;
    while (accepted < 1000 && database.add(record(QString::number(accepted), largestPicture)))
        ++accepted;
    QVERIFY2(accepted > 100 && accepted < 400, qPrintable(QString::number(accepted)));
    database.settle(); // and then the program ends
    holder.letGo();
    QCOMPARE(database.count(), std::optional<int>(0));
    QVERIFY(database.add(record(QStringLiteral("/later"))));
    database.settle();
    QCOMPARE(database.count(), std::optional<int>(1));
}

void tst_cacheshared::removingWaitsForOthers()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QVERIFY(database.add(record(QStringLiteral("/a"))));
    database.settle();
    Holder holder(path());
    QVERIFY(holder.isHeld());
    QVERIFY(database.removeAll([&] {
        holder.letGo();
        return true;
    }));
    QCOMPARE(database.count(), std::optional<int>(0));
}

void tst_cacheshared::afterAReplacementTheNewFileIsWritten()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    QVERIFY(database.add(record(QStringLiteral("/old"))));
    QCOMPARE(database.count(), std::optional<int>(1)); // the writer has the file open
    replaceFile();
    QVERIFY(database.isMoved());
    database.close();
    QVERIFY(database.open(folder()));
    QCOMPARE(database.count(), std::optional<int>(0));
    QVERIFY(database.add(record(QStringLiteral("/new"))));
    QCOMPARE(database.count(), std::optional<int>(1));
}

void tst_cacheshared::damageThatAnotherProcessMendedIsNotSetAside()
{
    ImagesDatabase database;
    QVERIFY(database.open(folder()));
    for (int number = 0; number < 200; ++number)
        database.add(record(QString::number(number), 2000));
    database.settle();
    database.close();
    takeInLog(folder());
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(8192));
    const QByteArray noise(file.size() - 8192, '\x33');
    QCOMPARE(file.write(noise), noise.size());
    file.close();
    QVERIFY(database.open(folder()));
    for (int number = 0; number < 200 && !database.isDamaged(); ++number)
        database.find(QString::number(number), 100);
    QVERIFY(database.isDamaged());

    replaceFile();
    {
        ImagesDatabase other;
        QVERIFY(other.open(folder()) && other.add(record(QStringLiteral("/of another"))));
    }
    QVERIFY(database.open(folder()));
    QVERIFY(!QFile::exists(path() + QStringLiteral(".damaged")));
    QVERIFY(database.find(QStringLiteral("/of another"), 100));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 4 && qstrcmp(argv[1], "--work") == 0)
        return workElsewhere(QFile::decodeName(argv[2]), QString::fromLocal8Bit(argv[3]));
    tst_cacheshared test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_cacheshared.moc"
