#include "support/support.h"

#include "platform/filepath.h"
#include "viewer/listfile.h"

#include <QRandomGenerator>
#include <QtTest>

/// List files as bytes: what is written, and what is read from files of any kind.
class TestListFile : public QObject
{
    Q_OBJECT
private:
    static QByteArray lines(std::initializer_list<const char *> texts)
    {
        QByteArray bytes;
        for (const char *text : texts)
            bytes += QByteArray(text) + "\r\n";
        return bytes;
    }

private Q_SLOTS:
    void aListIsWrittenByteForByte();
    void pathsSurviveTheRoundTrip_data();
    void pathsSurviveTheRoundTrip();
    void headerLinesAreReadByTheirPlace_data();
    void headerLinesAreReadByTheirPlace();
    void entriesFollowTheFieldGrammar_data();
    void entriesFollowTheFieldGrammar();
    void theCountDecidesHowMuchIsRead_data();
    void theCountDecidesHowMuchIsRead();
    void olderListsAreReadInTheirCodePage();
    void otherFilesAreNoLists_data();
    void otherFilesAreNoLists();
    void damagedListsNeverDoHarm();
};

void TestListFile::aListIsWrittenByteForByte()
{
    const QStringList paths = {QStringLiteral("/srv/me/a.jpg"), QStringLiteral("/srv/me/b, c.mp3")};
    QCOMPARE(writeListFile(paths, QStringLiteral(" 1 ")),
        QByteArray("[File List]\r\nNo. Of Pictures=2\r\nCurrent Index=1\r\n\"0 =| /srv/me/a.jpg\"\r\n"
                   "\"1 =| /srv/me/b, c.mp3\"\r\n*** End of List ***\r\n"));
    QVERIFY(writeListFile(paths, {}).contains("\r\nCurrent Index=\r\n"));
}

void TestListFile::pathsSurviveTheRoundTrip_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::newRow("plain") << QByteArray("/srv/me/a.jpg");
    QTest::newRow("comma, bar, equals and blanks") << QByteArray("/a, b/c | d =| e .jpg");
    QTest::newRow("blank at both ends of the name") << QByteArray("/a/ b ");
    QTest::newRow("double quotes") << QByteArray("/a/\"x\".jpg");
    QTest::newRow("line breaks") << QByteArray("/a/one\ntwo\rthree.jpg");
    QTest::newRow("bytes that are not UTF-8") << QByteArray("/a/caf\xe9\xff.jpg");
    QTest::newRow("such bytes and a quote") << QByteArray("/a/\x80\".jpg");
    QTest::newRow("a percent sign that is none") << QByteArray("/a/100%20.jpg");
    QTest::newRow("many scripts") << QByteArray("/\xc3\xa4/\xe6\x97\xa5\xe6\x9c\xac/\xf0\x9f\x98\x80.png");
    QTest::newRow("control characters") << QByteArray("/a/\x01\t\x1a\x7f.jpg");
    QTest::newRow("the end marker as a name") << QByteArray("/a/*** End of List ***");
    QTest::newRow("the first line as a name") << QByteArray("/a/[File List]");
}

void TestListFile::pathsSurviveTheRoundTrip()
{
    QFETCH(QByteArray, path);
    const QStringList paths = {pathFromBytes(path), QStringLiteral("/next"), pathFromBytes(path)};
    const QByteArray bytes = writeListFile(paths, QStringLiteral("2"));
    QVERIFY(bytes.isValidUtf8());
    QVERIFY2(bytes.count('\n') == 7 && bytes.count('\r') == 7, "one line for each entry");
    const ListFileContent content = readListFile(bytes, -1);
    QCOMPARE(content.entries, paths);
    QCOMPARE(pathToBytes(content.entries[0]), path);
    QCOMPARE(content.currentIndex, std::optional(2));
    QVERIFY(!content.endReached);
}

void TestListFile::headerLinesAreReadByTheirPlace_data()
{
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<QByteArray>("third");
    QTest::addColumn<int>("count"); // -1: the header tells none
    QTest::addColumn<int>("index");
    QTest::newRow("as written") << QByteArray("No. Of Pictures=12") << QByteArray("Current Index=3") << 12 << 3;
    QTest::newRow("blanks and text around")
        << QByteArray("x No. Of Pictures=  4 files") << QByteArray("Current Index= 2;") << 4 << 2;
    QTest::newRow("floating point is cut")
        << QByteArray("No. Of Pictures=7.99") << QByteArray("Current Index=1e1") << 7 << 10;
    QTest::newRow("negative numbers") << QByteArray("No. Of Pictures=-3") << QByteArray("Current Index=-3") << -3 << 0;
    QTest::newRow("no number") << QByteArray("No. Of Pictures=") << QByteArray("Current Index=none") << 0 << 0;
    QTest::newRow("a half number") << QByteArray("No. Of Pictures=5e") << QByteArray("Current Index=.5.5") << 5 << 0;
    QTest::newRow("no equals sign") << QByteArray("No. Of Pictures") << QByteArray("Current Index") << 0 << 0;
    QTest::newRow("absurd numbers") << QByteArray("No. Of Pictures=9e999") << QByteArray("Current Index=99999999999")
                                    << INT_MAX << INT_MAX;
    QTest::newRow("exchanged lines say nothing")
        << QByteArray("Current Index=3") << QByteArray("No. Of Pictures=12") << -1 << -1;
    QTest::newRow("quoted lines") << QByteArray("\"No. Of Pictures=2\"") << QByteArray("\"Current Index=1\"") << 2 << 1;
}

void TestListFile::headerLinesAreReadByTheirPlace()
{
    QFETCH(QByteArray, second);
    QFETCH(QByteArray, third);
    const ListFileContent content = readListFile("[File List]\r\n" + second + "\r\n" + third + "\r\n", 9);
    QVERIFY(content.isListFile);
    QTEST(content.count.value_or(-1), "count");
    QTEST(content.currentIndex.value_or(-1), "index");
    QVERIFY(content.endReached);
    QVERIFY(content.entries.isEmpty());
}

void TestListFile::entriesFollowTheFieldGrammar_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("entries");
    const auto list = [](std::initializer_list<const char *> texts) {
        QStringList result;
        for (const char *text : texts)
            result.append(QString::fromUtf8(text));
        return result;
    };
    QTest::newRow("quoted") << QByteArray("\"0 =| /a,b\"\r\n\"1 =| /c\"\r\n") << list({"/a,b", "/c"});
    QTest::newRow("unquoted fields end at a comma") << QByteArray("0 =| /a,b\r\n1 =| /c\r\n") << list({"/a", "", "/c"});
    QTest::newRow("a quote inside an unquoted field") << QByteArray("0 =| /a\"b\r\n") << list({"/a\"b"});
    QTest::newRow("several fields on a line")
        << QByteArray("\"0 =| /a\",\"1 =| /b\" , 2 =| /c") << list({"/a", "/b", "/c"});
    QTest::newRow("line ends of other systems")
        << QByteArray("\"0 =| /a\"\n\"1 =| /b\"\r\"2 =| /c\"") << list({"/a", "/b", "/c"});
    QTest::newRow("blanks in front") << QByteArray("   \"0 =| /a\"  \r\n  1 =| /b") << list({"/a", "/b"});
    QTest::newRow("wrong and missing index numbers")
        << QByteArray("\"77 =| /a\"\r\n\"| /b\"\r\n") << list({"/a", "/b"});
    QTest::newRow("no bar: the first character goes") << QByteArray("\"/a.jpg\"\r\nxyz\r\n") << list({"a.jpg", "yz"});
    QTest::newRow("the first bar counts") << QByteArray("\"0 =| /a | b\"\r\n") << list({"/a | b"});
    QTest::newRow("nothing behind the bar") << QByteArray("\"0 =|\"\r\n\"1 =| \"\r\n\"2 =|x\"") << list({"", "", ""});
    QTest::newRow("an empty line is an empty entry") << QByteArray("\r\n\"0 =| /a\"\r\n") << list({"", "/a"});
    QTest::newRow("a quote never closed costs one entry")
        << QByteArray("\"0 =| /a\r\n\"1 =| /b\"\r\n") << list({"/a", "/b"});
    QTest::newRow("paths of another system") << QByteArray("\"0 =| C:\\Pics\\a.jpg\"\r\n") << list({"C:\\Pics\\a.jpg"});
    QTest::newRow("a file URI") << QByteArray("\"0 =| file:///a%22%0A%25.jpg\"\r\n") << list({"/a\"\n%.jpg"});
    QTest::newRow("a URI of another kind stays") << QByteArray("\"0 =| http://h/a\"\r\n") << list({"http://h/a"});
}

void TestListFile::entriesFollowTheFieldGrammar()
{
    QFETCH(QByteArray, body);
    const QByteArray head = "[File List]\r\nNo. Of Pictures=100\r\nCurrent Index=1\r\n";
    QTEST(readListFile(head + body, 0).entries, "entries");
    QTEST(readListFile("\xef\xbb\xbf" + head + body, 0).entries, "entries");
}

void TestListFile::theCountDecidesHowMuchIsRead_data()
{
    QTest::addColumn<QByteArray>("countLine");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("entries");
    QTest::addColumn<int>("marker");
    QTest::newRow("the true count") << QByteArray("No. Of Pictures=3") << 0 << 3 << -1;
    QTest::newRow("too small: only that many") << QByteArray("No. Of Pictures=2") << 9 << 2 << -1;
    QTest::newRow("one too large: the end marker joins") << QByteArray("No. Of Pictures=4") << 0 << 4 << 3;
    QTest::newRow("far too large: reading ends with the file") << QByteArray("No. Of Pictures=1e9") << 0 << 4 << 3;
    QTest::newRow("zero") << QByteArray("No. Of Pictures=0") << 9 << 0 << -1;
    QTest::newRow("negative") << QByteArray("No. Of Pictures=-1") << 9 << 0 << -1;
    QTest::newRow("not told: that of the list before") << QByteArray("?") << 2 << 2 << -1;
    QTest::newRow("not told and none before") << QByteArray("?") << 0 << 0 << -1;
}

void TestListFile::theCountDecidesHowMuchIsRead()
{
    QFETCH(QByteArray, countLine);
    QFETCH(int, before);
    QFETCH(int, marker);
    const QByteArray bytes = lines({"[File List]", countLine.constData(), "Current Index=1", "\"0 =| /a\"",
        "\"1 =| /b\"", "\"2 =| /c\"", "*** End of List ***"});
    const ListFileContent content = readListFile(bytes, before);
    QTEST(int(content.entries.size()), "entries");
    QCOMPARE(content.endMarkerAt.value_or(-1), marker);
    if (marker >= 0)
        QCOMPARE(content.entries.last(), QStringLiteral("** End of List ***"));
    QVERIFY(!content.endReached);
}

void TestListFile::olderListsAreReadInTheirCodePage()
{
    const QByteArray bytes = lines({"[File List]", "No. Of Pictures=3", "Current Index=1",
        "\"0 =| C:\\Gr\xfc\xdf"
        "e \x80.jpg\"",
        "\"1 =| /gr\xc3\xbc\xc3\x9f"
        "e\"",
        "\"2 =| \x81\x9f\xff\""});
    const QStringList entries = readListFile(bytes, 0).entries;
    QCOMPARE(entries.value(0), QStringLiteral("C:\\Grüße €.jpg"));
    QCOMPARE(entries.value(1), QStringLiteral("/grüße"));
    QCOMPARE(entries.value(2), QStringLiteral("\u0081Ÿÿ"));
}

void TestListFile::otherFilesAreNoLists_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("only a byte order mark") << QByteArray("\xef\xbb\xbf");
    QTest::newRow("blanks") << QByteArray("   ");
    QTest::newRow("NULs") << QByteArray(100000, '\0');
    QTest::newRow("the mark on the second line")
        << QByteArray("x\r\n[File List]\r\nNo. Of Pictures=1\r\n\r\n\"0 =| /a\"");
    QTest::newRow("the mark behind a comma") << QByteArray("a,[File List]\r\n");
    QTest::newRow("a playlist of another program") << QByteArray("#EXTM3U\n/a.mp3\n");
    QTest::newRow("one endless line") << QByteArray(8 << 20, 'x');
    QTest::newRow("quotes without end") << QByteArray(1 << 20, '"');
}

void TestListFile::otherFilesAreNoLists()
{
    QFETCH(QByteArray, bytes);
    const ListFileContent content = readListFile(bytes, 5);
    QVERIFY(!content.isListFile);
    QVERIFY(content.entries.isEmpty() && !content.count && !content.currentIndex);
}

void TestListFile::damagedListsNeverDoHarm()
{
    const QByteArray seed = writeListFile(
        {QStringLiteral("/a"), pathFromBytes("/b\xff\".jpg"), QStringLiteral("/c,d|e")}, QStringLiteral("2"));
    const QByteArray bits[] = {"\"", ",", "\r", "\n", "|", "=", "file://", "%", "%f", QByteArray(1, '\0'), "\xff",
        "\xef\xbb\xbf", "No. Of Pictures=", "99999999999999999999", "*** End of List ***", "-", "e308"};
    QRandomGenerator random(4711);
    int lists = 0;
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes = seed;
        for (int change = random.bounded(1, 6); change > 0; --change) {
            const int at = random.bounded(int(bytes.size()));
            switch (random.bounded(4)) {
            case 0:
                bytes[at] = char(random.bounded(256));
                break;
            case 1:
                bytes.insert(at, bits[random.bounded(int(std::size(bits)))]);
                break;
            case 2:
                bytes.remove(at, random.bounded(1, 12));
                break;
            case 3:
                bytes.truncate(at);
                break;
            }
            if (bytes.isEmpty())
                break;
        }
        const ListFileContent content = readListFile(bytes, random.bounded(-5, 50));
        lists += content.isListFile;
        QVERIFY(content.isListFile || content.entries.isEmpty());
        QVERIFY(content.entries.size() <= bytes.size());
        QVERIFY(content.currentIndex.value_or(0) >= 0);
        QVERIFY(content.endMarkerAt.value_or(0) <= content.entries.size());
        // Whatever came in can be written, and its full paths are read again as the same.
        const QStringList again = readListFile(writeListFile(content.entries, {}), 0).entries;
        QCOMPARE(again.size(), content.entries.size());
        for (qsizetype i = 0; i < again.size(); ++i) {
            if (content.entries[i].startsWith(u'/') && !content.entries[i].contains(QChar(0)))
                QCOMPARE(again[i], content.entries[i]);
        }
    }
    QVERIFY2(lists > 10000, "most of the damage leaves the first line alone");
    // As many entries as a list takes, however many a file holds.
    QByteArray flood = "[File List]\nNo. Of Pictures=1e9\nCurrent Index=1\n";
    flood += QByteArray(4 << 20, '\n');
    QCOMPARE(readListFile(flood, 0).entries.size(), 32767);
}

QTEST_APPLESS_MAIN(TestListFile)
#include "tst_listfile.moc"
