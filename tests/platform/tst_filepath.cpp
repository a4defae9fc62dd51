#include "platform/filepath.h"

#include <QtTest>

class tst_filepath : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyByteSequenceSurvivesTheWayThroughText_data();
    void everyByteSequenceSurvivesTheWayThroughText();
    void everyPairOfBytesSurvives();
    void plainNamesReadAsTheyAre();
    void strayHalvesInTextAreNotDropped();
    void aShownPathHidesNothingAndBreaksNoLine();
    void addressesCarryEveryByte();
    void onlyLocalFileAddressesArePaths_data();
    void onlyLocalFileAddressesArePaths();
    void pathsAreTakenApartAtTheLastSeparator();
    void absolutePathsHoldNoDotsAndNoDoubledSeparators_data();
    void absolutePathsHoldNoDotsAndNoDoubledSeparators();
};

void tst_filepath::everyByteSequenceSurvivesTheWayThroughText_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("foreign");
    QTest::newRow("ASCII") << QByteArray("/srv/anna/a b.jpg") << false;
    QTest::newRow("umlauts in UTF-8") << QByteArray("/\xC3\xA4\xC3\xB6") << false;
    QTest::newRow("a sign beyond 16 bits") << QByteArray("\xF0\x9F\x98\x80.png") << false;
    QTest::newRow("Latin-1 umlaut") << QByteArray("caf\xE9.jpg") << true;
    QTest::newRow("cut UTF-8 at the end") << QByteArray("a\xE2\x82") << true;
    QTest::newRow("over-long slash") << QByteArray("a\xC0\xAF") << true;
    QTest::newRow("surrogate in three bytes") << QByteArray("\xED\xB2\x80x") << true;
    QTest::newRow("surrogate pair in six bytes") << QByteArray("\xED\xA0\xBD\xED\xB8\x80") << true;
    QTest::newRow("beyond Unicode") << QByteArray("\xF4\x90\x80\x80") << true;
    QTest::newRow("a foreign byte behind a sign beyond 16 bits") << QByteArray("\xF0\x9F\x98\x80\x80") << true;
    QTest::newRow("non-characters") << QByteArray("\xEF\xBF\xBE\xEF\xBF\xBF\xEF\xBB\xBF") << false;
}

void tst_filepath::everyByteSequenceSurvivesTheWayThroughText()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, foreign);
    const QString text = pathFromBytes(bytes);
    QCOMPARE(pathToBytes(text), bytes);
    QCOMPARE(hasForeignBytes(text), foreign);
    QCOMPARE(pathFromFileUri(fileUri(QLatin1Char('/') + text)), QLatin1Char('/') + text);
}

void tst_filepath::everyPairOfBytesSurvives()
{
    for (int first = 1; first < 256; ++first) {
        for (int second = 1; second < 256; ++second) {
            for (const char *tail : {"", "\x80", "\x80\x80", "\xBF\xBF", "a"}) {
                const QByteArray bytes =
                    QByteArray(1, static_cast<char>(first)) + static_cast<char>(second) + QByteArray(tail);
                if (pathToBytes(pathFromBytes(bytes)) != bytes)
                    QFAIL(bytes.toHex());
            }
        }
    }
}

void tst_filepath::plainNamesReadAsTheyAre()
{
    QCOMPARE(pathFromBytes("\xC3\xA4/\xE2\x82\xAC/\xF0\x9F\x98\x80"), QStringLiteral(u"ä/€/😀"));
    QCOMPARE(pathFromBytes("a\xFF"), QStringLiteral("a") + QChar(0xDCFF));
}

void tst_filepath::strayHalvesInTextAreNotDropped()
{
    for (const char16_t half : {u'\xD800', u'\xDBFF', u'\xDC00', u'\xDC7F', u'\xDD00', u'\xDFFF'}) {
        const QString text = QStringLiteral("a") + QChar(half) + QStringLiteral("b");
        const QByteArray bytes = pathToBytes(text);
        QCOMPARE(bytes.size(), 5);
        QCOMPARE(pathToBytes(pathFromBytes(bytes)), bytes);
    }
    QCOMPARE(pathToBytes(QString(QChar(0xD83D))), QByteArray("\xED\xA0\xBD"));
}

void tst_filepath::aShownPathHidesNothingAndBreaksNoLine()
{
    QCOMPARE(displayPath(QStringLiteral(u"/ä😀.jpg")), QStringLiteral(u"/ä😀.jpg"));
    QCOMPARE(displayPath(pathFromBytes("caf\xE9")), QStringLiteral(u"caf\uFFFD"));
    QCOMPARE(displayPath(QStringLiteral("a\nb\rc\td")), QStringLiteral(u"a\u240Ab\u240Dc\u2409d"));
    const QString reversed = QStringLiteral(u"photo\u202Egpj.exe");
    QVERIFY(!displayPath(reversed).contains(QChar(0x202E)));
    QCOMPARE(displayPath(reversed).size(), reversed.size());
    QVERIFY(!displayPath(QStringLiteral(u"a\u2028b\u0085c")).contains(QChar(0x2028)));
}

void tst_filepath::addressesCarryEveryByte()
{
    QCOMPARE(fileUri(QStringLiteral(u"/a b/ä#1?100%.jpg")), QStringLiteral("file:///a%20b/%C3%A4%231%3F100%25.jpg"));
    QCOMPARE(fileUri(pathFromBytes("/\xFF\n\"")), QStringLiteral("file:///%FF%0A%22"));
}

void tst_filepath::onlyLocalFileAddressesArePaths_data()
{
    QTest::addColumn<QString>("uri");
    QTest::addColumn<QString>("path");
    const auto row = [](const char *uri, const char *path) {
        QTest::newRow(uri) << QString::fromUtf8(uri) << QString::fromUtf8(path);
    };
    row("file:///a/b%20c", "/a/b c");
    row("FILE://localhost/a", "/a");
    row("file:/a", "/a");
    row("file:///\xC3\xA4", "/\xC3\xA4");
    row("file:///a#top", "/a");
    row("file://server/share/a", "");
    row("http://localhost/a", "");
    row("file:a/b", "");
    row("file://", "");
    row("file:///a%00b", "");
    row("/a", "");
    row("", "");
}

void tst_filepath::onlyLocalFileAddressesArePaths()
{
    QFETCH(QString, uri);
    QFETCH(QString, path);
    QCOMPARE(pathFromFileUri(uri), path);
}

void tst_filepath::pathsAreTakenApartAtTheLastSeparator()
{
    const PathParts parts = SplitFilePath(QStringLiteral("/a/b.c/d.jpg"));
    QCOMPARE(parts.drive, QString());
    QCOMPARE(parts.folder, QStringLiteral("/a/b.c/"));
    QCOMPARE(parts.file, QStringLiteral("d.jpg"));
    QCOMPARE(SplitFilePath(QStringLiteral("d.jpg")).folder, QString());
    QCOMPARE(SplitFilePath(QStringLiteral("/a/")).file, QString());
    QCOMPARE(FileNameOfPath(QStringLiteral("/a/d.jpg")), QStringLiteral("d.jpg"));
    QCOMPARE(FileNameOfPath(QStringLiteral("d.jpg")), QStringLiteral("d.jpg"));
    QCOMPARE(FileNameOfPath(QStringLiteral("a\\d.jpg")), QStringLiteral("a\\d.jpg"));
}

void tst_filepath::absolutePathsHoldNoDotsAndNoDoubledSeparators_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("absolute");
    const auto row = [](const char *path, const char *absolute) {
        QTest::newRow(path) << QString::fromUtf8(path) << QString::fromUtf8(absolute);
    };
    row("a.jpg", "/srv/anna/a.jpg");
    row("./a.jpg", "/srv/anna/a.jpg");
    row("../b//c.jpg", "/srv/b/c.jpg");
    row("/x/./y/../z", "/x/z");
    row("/../../x", "/x");
    row("pictures/", "/srv/anna/pictures/");
    row(".", "/srv/anna");
    row("/", "/");
    row("/..", "/");
    row("...", "/srv/anna/...");
    row("", "");
}

void tst_filepath::absolutePathsHoldNoDotsAndNoDoubledSeparators()
{
    QFETCH(QString, path);
    QFETCH(QString, absolute);
    QCOMPARE(absolutePath(path, QStringLiteral("/srv/anna")), absolute);
    QCOMPARE(absolutePath(path, QStringLiteral("/srv/anna/")), absolute);
}

QTEST_GUILESS_MAIN(tst_filepath)
#include "tst_filepath.moc"
