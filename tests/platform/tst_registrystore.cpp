#include "platform/registrystore.h"

#include "platform/files.h"
#include "support/support.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QtTest>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

using Root = RegistryStore::Root;

namespace {
const QString key = QStringLiteral("Software\\Tessaly\\Lumora V3\\Options");

QString fileOf(const TemporaryHome &home)
{
    return home.path() + QStringLiteral("store/user.registry");
}

RegistryStore storeIn(const TemporaryHome &home)
{
    return RegistryStore(home.path() + QStringLiteral("store/"));
}

QByteArray bytesOf(const QString &path)
{
    const Result<QByteArray> bytes = readFile(path, 64 << 20);
    return bytes ? *bytes : QByteArray();
}

// What a second process does: writes its own keys one by one, in groups, or raises a shared count of its own.
int writerProcess(const QStringList &arguments)
{
    RegistryStore store(arguments.at(2));
    store.setLockPatience(std::chrono::seconds(60));
    const QString own = arguments.at(3);
    for (int i = 0; i < arguments.at(4).toInt(); ++i) {
        const auto write = [&] {
            ignore(store.setValue(Root::CurrentUser, key, own + QString::number(i), own));
            ignore(store.setValue(Root::CurrentUser, key, QStringLiteral("last ") + own, QString::number(i)));
        };
        if (i % 2 == 0)
            write();
        else if (!store.transaction(write))
            return 1;
    }
    return 0;
}
}

class tst_registrystore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyTextComesBack_data();
    void everyTextComesBack();
    void namesIgnoreCaseAndKeepTheirFirstSpelling();
    void valuesStandInTheOrderOfTheirCreation();
    void keysAreListedAndGoWithAllBelow();
    void theEmptyKeyIsNeverWrittenNorDeleted();
    void anotherStoreSeesWhatWasWritten();
    void aTransactionIsOneReplacementAndShowsItsOwnWrites();
    void aTransactionInsideAnotherJoinsIt();
    void anUnchangedValueLeavesTheFileAlone();
    void twoProcessesWritingAtOnceLoseNothing();
    void aKilledWriterLeavesAWholeFile();
    void aDamagedFileGivesWhatCanBeReadAndIsKeptAside_data();
    void aDamagedFileGivesWhatCanBeReadAndIsKeptAside();
    void everyCutOfAFileGivesABeginningOfIt();
    void anEndlessFileIsReadInPart();
    void tooLongTextsAreRefused();
    void aStoreThatCannotBeWrittenSaysSo();
    void aFifoInPlaceOfTheFileHangsNothing();
    void aLockHeldElsewhereEndsInAFailure();
    void aLinkToTheFileStaysALink();
};

void tst_registrystore::everyTextComesBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("line breaks") << QStringLiteral("a\r\nb\nc\rd\n");
    QTest::newRow("quotes and backslashes") << QStringLiteral("\\\"x\\\\\" = \"\\n\\");
    QTest::newRow("brackets and the last word") << QStringLiteral("[end]\nend\n\"a\"=\"b\"");
    QTest::newRow("outside the first plane") << QString::fromUtf8("\xf0\x9f\x96\xbc a\xcc\x8a \xd7\xa9");
    QTest::newRow("a foreign byte of a path")
        << (QStringLiteral("/p/") + QChar(0xdcff) + QChar(0xd800) + QStringLiteral("x"));
    QTest::newRow("two halves of a pair the wrong way round") << (QString(QChar(0xdc00)) + QChar(0xd800));
    QTest::newRow("control characters") << (QString(QChar(0)) + QChar(1) + QChar(0x7f) + QChar(0x85) + QChar(0xfeff));
    QTest::newRow("line and paragraph separator") << (QString(QChar(0x2028)) + QChar(0x2029));
    QTest::newRow("blanks at both ends") << QStringLiteral("  \t x \t ");
}

// The text stands as value, as name and as key: in each place it must survive the way through the file.
void tst_registrystore::everyTextComesBack()
{
    QFETCH(QString, text);
    const TemporaryHome home;
    RegistryStore writer = storeIn(home);
    const QString ownKey = key + QStringLiteral("\\x") + QString(text).remove(QLatin1Char('\\'));
    QVERIFY(writer.setValue(Root::CurrentUser, ownKey, text, text));
    const RegistryStore reader = storeIn(home);
    QCOMPARE(reader.value(Root::CurrentUser, ownKey, text), std::optional(text));
    QCOMPARE(reader.values(Root::CurrentUser, ownKey).size(), 1);
    QCOMPARE(reader.value(Root::LocalMachine, ownKey, text), std::optional<QString>());
}

void tst_registrystore::namesIgnoreCaseAndKeepTheirFirstSpelling()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    QVERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("UserThumbNailSize"), QStringLiteral("80")));
    QVERIFY(
        store.setValue(Root::CurrentUser, key.toUpper(), QStringLiteral("UserThumbnailSize"), QStringLiteral("90")));
    const auto values = storeIn(home).values(Root::CurrentUser, key.toLower());
    QCOMPARE(values.size(), 1);
    QCOMPARE(values.at(0).first, QStringLiteral("UserThumbNailSize"));
    QCOMPARE(values.at(0).second, QStringLiteral("90"));
    QCOMPARE(store.subKeys(Root::CurrentUser, QStringLiteral("software\\TESSALY")),
        QStringList{QStringLiteral("Lumora V3")});
    QVERIFY(store.setValue(Root::CurrentUser, key, QString::fromUtf8("\xc3\x84rger"), QStringLiteral("1")));
    QVERIFY(store.value(Root::CurrentUser, key, QString::fromUtf8("\xc3\xa4RGER")).has_value());
}

void tst_registrystore::valuesStandInTheOrderOfTheirCreation()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    for (const char *name : {"zebra", "Ant", "m", "zebra", "b"})
        QVERIFY(store.setValue(Root::ClassesRoot, QStringLiteral(".jpg"), QLatin1String(name), QStringLiteral("v")));
    QVERIFY(store.deleteValue(Root::ClassesRoot, QStringLiteral(".jpg"), QStringLiteral("M")));
    QStringList names;
    for (const auto &[name, value] : storeIn(home).values(Root::ClassesRoot, QStringLiteral(".jpg")))
        names.append(name);
    QCOMPARE(names, QStringList({QStringLiteral("zebra"), QStringLiteral("Ant"), QStringLiteral("b")}));
}

void tst_registrystore::keysAreListedAndGoWithAllBelow()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    const auto make = [&](const char *path) { return bool(store.createKey(Root::ClassesRoot, QLatin1String(path))); };
    QVERIFY(make("a\\b\\c") && make("a b") && make("a\\B\\d") && make("\\a\\\\e\\") && make("ab"));
    const RegistryStore reader = storeIn(home);
    QCOMPARE(reader.subKeys(Root::ClassesRoot, QStringLiteral("A")),
        QStringList({QStringLiteral("b"), QStringLiteral("e")}));
    QCOMPARE(reader.subKeys(Root::ClassesRoot, {}).size(), 3);
    QVERIFY(store.deleteKey(Root::ClassesRoot, QStringLiteral("A\\b")));
    QVERIFY(!reader.keyExists(Root::ClassesRoot, QStringLiteral("a\\b")));
    QVERIFY(!reader.keyExists(Root::ClassesRoot, QStringLiteral("a\\b\\d")));
    QVERIFY(store.deleteKey(Root::ClassesRoot, QStringLiteral("a\\e")));
    QVERIFY2(reader.keyExists(Root::ClassesRoot, QStringLiteral("a")), "the key above stays");
    QVERIFY(store.deleteKey(Root::ClassesRoot, QStringLiteral("a")));
    QVERIFY(reader.keyExists(Root::ClassesRoot, QStringLiteral("a b"))
        && reader.keyExists(Root::ClassesRoot, QStringLiteral("ab")));
    QVERIFY2(store.deleteKey(Root::ClassesRoot, QStringLiteral("never")), "deleting nothing is no failure");
}

void tst_registrystore::theEmptyKeyIsNeverWrittenNorDeleted()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    QVERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1")));
    QVERIFY(!store.deleteKey(Root::CurrentUser, QStringLiteral("\\\\")));
    QVERIFY(!store.setValue(Root::CurrentUser, QString(), QStringLiteral("a"), QStringLiteral("1")));
    QVERIFY(store.keyExists(Root::CurrentUser, key));
}

void tst_registrystore::anotherStoreSeesWhatWasWritten()
{
    const TemporaryHome home;
    RegistryStore one = storeIn(home);
    RegistryStore other = storeIn(home);
    for (int i = 0; i < 20; ++i) {
        RegistryStore &writer = i % 2 ? one : other;
        const RegistryStore &reader = i % 2 ? other : one;
        QVERIFY(writer.setValue(Root::CurrentUser, key, QStringLiteral("turn"), QString::number(i)));
        QCOMPARE(reader.value(Root::CurrentUser, key, QStringLiteral("turn")), std::optional(QString::number(i)));
    }
}

void tst_registrystore::aTransactionIsOneReplacementAndShowsItsOwnWrites()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    const RegistryStore other = storeIn(home);
    QVERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("old"), QStringLiteral("1")));
    const auto before = fileStamp(fileOf(home));
    QVERIFY(store.transaction([&] {
        for (int i = 0; i < 50; ++i)
            QVERIFY(store.setValue(Root::CurrentUser, key, QString::number(i), QStringLiteral("x")));
        QVERIFY(store.deleteValue(Root::CurrentUser, key, QStringLiteral("OLD")));
        QVERIFY(store.setValue(Root::LocalMachine, key, QStringLiteral("m"), QStringLiteral("1")));
        QCOMPARE(store.values(Root::CurrentUser, key).size(), 50);
        QCOMPARE(other.values(Root::CurrentUser, key).size(), 1);
        QCOMPARE(fileStamp(fileOf(home)), before);
    }));
    QCOMPARE(other.values(Root::CurrentUser, key).size(), 50);
    QVERIFY(other.value(Root::LocalMachine, key, QStringLiteral("m")).has_value());
}

void tst_registrystore::aTransactionInsideAnotherJoinsIt()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    const RegistryStore other = storeIn(home);
    QVERIFY(store.transaction([&] {
        QVERIFY(store.transaction(
            [&] { ignore(store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1"))); }));
        QVERIFY(!other.keyExists(Root::CurrentUser, key));
    }));
    QVERIFY(other.keyExists(Root::CurrentUser, key));
    try {
        ignore(store.transaction([&] {
            ignore(store.setValue(Root::CurrentUser, key, QStringLiteral("b"), QStringLiteral("1")));
            throw std::runtime_error("left in the middle");
        }));
    } catch (const std::runtime_error &) {
    }
    QVERIFY2(!store.value(Root::CurrentUser, key, QStringLiteral("b")), "what was left in the middle never happened");
}

void tst_registrystore::anUnchangedValueLeavesTheFileAlone()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    QVERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1")));
    const auto before = fileStamp(fileOf(home));
    QVERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("A"), QStringLiteral("1")));
    QVERIFY(store.deleteValue(Root::CurrentUser, key, QStringLiteral("none")));
    QCOMPARE(fileStamp(fileOf(home)), before);
}

void tst_registrystore::twoProcessesWritingAtOnceLoseNothing()
{
    const TemporaryHome home;
    constexpr int count = 30;
    const QStringList writers{QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three")};
    std::vector<std::unique_ptr<QProcess>> processes;
    for (const QString &writer : writers) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->setProcessChannelMode(QProcess::ForwardedChannels);
        processes.back()->start(QCoreApplication::applicationFilePath(),
            {QStringLiteral("writer"), home.path() + QStringLiteral("store/"), writer, QString::number(count)});
    }
    for (const auto &process : processes) {
        QVERIFY(process->waitForFinished(120000));
        QCOMPARE(process->exitCode(), 0);
    }
    const RegistryStore store = storeIn(home);
    for (const QString &writer : writers) {
        for (int i = 0; i < count; ++i)
            QCOMPARE(store.value(Root::CurrentUser, key, writer + QString::number(i)), std::optional(writer));
        QCOMPARE(store.value(Root::CurrentUser, key, QStringLiteral("last ") + writer),
            std::optional(QString::number(count - 1)));
    }
    QCOMPARE(store.values(Root::CurrentUser, key).size(), (count + 1) * writers.size());
}

void tst_registrystore::aKilledWriterLeavesAWholeFile()
{
    const TemporaryHome home;
    const RegistryStore store = storeIn(home);
    for (int round = 1; round <= 5; ++round) {
        const QString own = QStringLiteral("round%1 ").arg(round);
        QProcess process;
        process.start(QCoreApplication::applicationFilePath(),
            {QStringLiteral("writer"), home.path() + QStringLiteral("store/"), own, QStringLiteral("1000000")});
        const QString mark = own + QString::number(round * 2);
        QTRY_VERIFY_WITH_TIMEOUT(store.value(Root::CurrentUser, key, mark).has_value(), 60000);
        process.kill();
        QVERIFY(process.waitForFinished());
    }
    QVERIFY(bytesOf(fileOf(home)).endsWith("\nend\n"));
    RegistryStore after = storeIn(home);
    QVERIFY2(after.setValue(Root::CurrentUser, key, QStringLiteral("after"), QStringLiteral("1")),
        "a dead writer's lock is free");
    QVERIFY(!FileExists(fileOf(home) + QStringLiteral(".damaged")));
    for (int round = 1; round <= 5; ++round)
        QVERIFY(after.value(Root::CurrentUser, key, QStringLiteral("round%1 0").arg(round)).has_value());
}

void tst_registrystore::aDamagedFileGivesWhatCanBeReadAndIsKeptAside_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("readable");
    const QByteArray good = "Lumora registry 1\n[\"K\"]\n\"a\"=\"1\"\n\"b\"=\"2\"\nend\n";
    const QStringList a{QStringLiteral("a")};
    const QStringList both{QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("the end is missing") << good.chopped(4) << both;
    QTest::newRow("cut inside a value") << good.chopped(7) << a;
    QTest::newRow("no first line") << good.mid(18) << both;
    QTest::newRow("a later version") << QByteArray(good).replace("registry 1", "registry 2") << both;
    QTest::newRow("text behind the end") << good + "x\n" << both;
    QTest::newRow("a line that is not UTF-8") << QByteArray(good).replace("\"2\"", "\"\xff\"") << a;
    QTest::newRow("an escape that is none") << QByteArray(good).replace("\"2\"", "\"\\u12\"") << a;
    QTest::newRow("a foreign line") << QByteArray(good).replace("\"b\"", "b: 3\n\"b\"") << both;
    QTest::newRow("a key without its bracket") << QByteArray(good).replace("\"b\"", "[\"L\"\n\"b\"") << a;
    QTest::newRow("bytes of something else") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) << QStringList();
    QTest::newRow("only zeros") << QByteArray(5000, '\0') << QStringList();
}

void tst_registrystore::aDamagedFileGivesWhatCanBeReadAndIsKeptAside()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, readable);
    const TemporaryHome home;
    home.write(QStringLiteral("store/user.registry"), bytes);
    RegistryStore store = storeIn(home);
    const auto names = [&] {
        QStringList list;
        for (const auto &[name, value] : store.values(Root::CurrentUser, QStringLiteral("K")))
            list.append(name);
        return list;
    };
    const QString aside = fileOf(home) + QStringLiteral(".damaged");
    QCOMPARE(names(), readable);
    QVERIFY2(!FileExists(aside), "reading moves nothing");
    QVERIFY(store.setValue(Root::CurrentUser, QStringLiteral("K"), QStringLiteral("c"), QStringLiteral("3")));
    QVERIFY(store.setValue(Root::CurrentUser, QStringLiteral("K"), QStringLiteral("c"), QStringLiteral("4")));
    QCOMPARE(bytesOf(aside), bytes);
    QCOMPARE(names(), readable + QStringList{QStringLiteral("c")});
    QVERIFY2(!FileExists(aside + QStringLiteral(".2")), "kept once");
}

void tst_registrystore::everyCutOfAFileGivesABeginningOfIt()
{
    const TemporaryHome home;
    {
        RegistryStore store = storeIn(home);
        for (const char *text : {"a\nb", "\\", "\xc3\xa4\"", ""})
            QVERIFY(store.setValue(
                Root::CurrentUser, key, QString::fromUtf8(text) + QLatin1Char('n'), QString::fromUtf8(text)));
    }
    const QByteArray whole = bytesOf(fileOf(home));
    const auto all = storeIn(home).values(Root::CurrentUser, key);
    QCOMPARE(all.size(), 4);
    for (qsizetype size = 0; size < whole.size(); ++size) {
        home.write(QStringLiteral("store/user.registry"), whole.left(size));
        const auto some = storeIn(home).values(Root::CurrentUser, key);
        QCOMPARE(some, all.mid(0, some.size()));
    }
}

void tst_registrystore::anEndlessFileIsReadInPart()
{
    const TemporaryHome home;
    const QString path = home.write(QStringLiteral("store/user.registry"), "Lumora registry 1\n[\"K\"]\n\"a\"=\"1\"\n");
    QVERIFY(QFile::resize(path, qint64(1) << 40));
    RegistryStore store = storeIn(home);
    QCOMPARE(
        store.value(Root::CurrentUser, QStringLiteral("K"), QStringLiteral("a")), std::optional(QStringLiteral("1")));
    QVERIFY(store.setValue(Root::CurrentUser, QStringLiteral("K"), QStringLiteral("b"), QStringLiteral("2")));
    QVERIFY(bytesOf(path).size() < 200);
    QCOMPARE(fileStamp(path + QStringLiteral(".damaged"))->size, qint64(1) << 40);
}

void tst_registrystore::tooLongTextsAreRefused()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    const QString longText(2 << 20, QLatin1Char('x'));
    QVERIFY(!store.setValue(Root::CurrentUser, key, QStringLiteral("a"), longText));
    QVERIFY(!store.setValue(Root::CurrentUser, key, longText, QStringLiteral("a")));
    QVERIFY(!store.setValue(Root::CurrentUser, longText, QStringLiteral("a"), QStringLiteral("a")));
    Result<void> result;
    const QString largeText(1 << 20, QLatin1Char('x'));
    for (int i = 0; i < 6 && result; ++i)
        result = store.setValue(Root::CurrentUser, key, QString::number(i), largeText);
    QVERIFY2(!result, "a store that would not be read as a whole again is not written");
    QCOMPARE(store.values(Root::CurrentUser, key), storeIn(home).values(Root::CurrentUser, key));
}

void tst_registrystore::aStoreThatCannotBeWrittenSaysSo()
{
    // A folder without write permission does not stop root, so a file stands where the folder would be.
    const TemporaryHome home;
    home.write(QStringLiteral("store"), "a file");
    RegistryStore store = storeIn(home);
    QVERIFY(!store.value(Root::CurrentUser, key, QStringLiteral("a")));
    QVERIFY(!store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1")));
    const Result<void> result = store.transaction(
        [&] { ignore(store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1"))); });
    QVERIFY(!result && !result.reason().isEmpty());
    QVERIFY2(!store.value(Root::CurrentUser, key, QStringLiteral("a")), "what was not written is not read");

    if (::geteuid() == 0)
        QSKIP("root writes everywhere: the read-only folder is not tried");
    const QString folder = home.path() + QStringLiteral("locked/");
    {
        RegistryStore before(folder);
        QVERIFY(before.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1")));
    }
    QVERIFY(QFile::remove(folder + QStringLiteral("user.registry.lock")));
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    RegistryStore locked(folder);
    QVERIFY(locked.value(Root::CurrentUser, key, QStringLiteral("a")));
    const bool written = bool(locked.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("2")));
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QVERIFY(!written);
    QCOMPARE(locked.value(Root::CurrentUser, key, QStringLiteral("a")), std::optional(QStringLiteral("1")));
}

void tst_registrystore::aFifoInPlaceOfTheFileHangsNothing()
{
    const TemporaryHome home;
    QVERIFY(QDir().mkpath(home.path() + QStringLiteral("store")));
    QCOMPARE(::mkfifo(QFile::encodeName(fileOf(home)).constData(), 0600), 0);
    RegistryStore store = storeIn(home);
    QVERIFY(!store.value(Root::CurrentUser, key, QStringLiteral("a")));
    QVERIFY2(!store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1")),
        "what cannot be read is not replaced");
    struct stat status;
    QCOMPARE(::stat(QFile::encodeName(fileOf(home)).constData(), &status), 0);
    QVERIFY(S_ISFIFO(status.st_mode));
}

void tst_registrystore::aLockHeldElsewhereEndsInAFailure()
{
    const TemporaryHome home;
    RegistryStore store = storeIn(home);
    QVERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1")));
    const int other = ::open(QFile::encodeName(fileOf(home) + QStringLiteral(".lock")).constData(), O_RDWR | O_CLOEXEC);
    QVERIFY(other >= 0);
    QCOMPARE(::flock(other, LOCK_EX), 0);
    store.setLockPatience(std::chrono::milliseconds(300));
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("2")));
    QVERIFY(timer.restart() >= 300);
    QVERIFY(!store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("3")));
    QVERIFY2(timer.elapsed() < 290, "the second write does not wait as long");
    QCOMPARE(store.value(Root::CurrentUser, key, QStringLiteral("a")), std::optional(QStringLiteral("1")));
    ::close(other);
    QTRY_VERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("4")));
}

void tst_registrystore::aLinkToTheFileStaysALink()
{
    const TemporaryHome home;
    const QString target = home.write(QStringLiteral("elsewhere/mine"), "not a store\n");
    QVERIFY(QDir().mkpath(home.path() + QStringLiteral("store")));
    QVERIFY(QFile::link(target, fileOf(home)));
    RegistryStore store = storeIn(home);
    QVERIFY(store.setValue(Root::CurrentUser, key, QStringLiteral("a"), QStringLiteral("1")));
    QVERIFY(QFileInfo(fileOf(home)).isSymLink());
    QVERIFY(bytesOf(target).contains("\"a\"=\"1\""));
    QCOMPARE(bytesOf(fileOf(home) + QStringLiteral(".damaged")), QByteArray("not a store\n"));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("writer"))
        return writerProcess(arguments);
    tst_registrystore test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_registrystore.moc"
