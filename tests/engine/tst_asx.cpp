#include "engine/player/asx.h"
#include "support/support.h"

#include <QStringEncoder>
#include <QtTest>

class TestAsx : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void entriesOfAText_data();
    void entriesOfAText();
    void utf16TextIsReadByItsMark();
    void hostileTextIsReadInLinearTime();
    void aListInAListIsPutInItsPlace();
    void aListThatNamesItselfEnds();
    void listsAreFollowedThreeDeep();
    void manyEntriesAreCutAtAThousand();
    void aPercentSignInANameMeansItselfFirst();

private:
    TemporaryHome m_home;
};

void TestAsx::entriesOfAText_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("paths");
    const auto row = [](const char *name, const QByteArray &text, const QStringList &paths) {
        QTest::newRow(name) << text << paths;
    };
    const QString a = QStringLiteral("/lists/a.wmv");
    const QString b = QStringLiteral("/lists/b.wma");

    row("two entries keep their order", R"(<asx><entry><ref href="b.wma"/></entry><ref href="a.wmv"/></asx>)", {b, a});
    row("capitals, single quotes and blanks around the sign", "<ASX><REF  HREF = 'a.wmv' ></ASX>", {a});
    row("other attributes and line breaks before href", "<asx><ref\n id=\"1\"\n\thref=\"a.wmv\"></asx>", {a});
    row("entryref names a list", "<asx><entryref href=\"more.asx\"/></asx>", {QStringLiteral("/lists/more.asx")});
    row("the base tag and the abstract name no file", R"(<asx><base href="x.wmv"/><logo href="l.gif"/></asx>)", {});
    row("white space before the first tag", "\r\n  <asx><ref href=\"a.wmv\"/>", {a});
    row("comments are dropped, an open one with the rest",
        "<asx><!-- <ref href=\"x.wmv\"/> --><ref href=\"a.wmv\"/><!-- <ref href=\"b.wma\"/>", {a});
    row("each of the five entities", R"(<asx><ref href="a&amp;b&lt;c&gt;d&quot;e&apos;f.mp3"/>)",
        {QStringLiteral("/lists/a&b<c>d\"e'f.mp3")});
    row("a bare ampersand means itself", R"(<asx><ref href="a & b &c;.mp3"/>)",
        {QStringLiteral("/lists/a & b &c;.mp3")});
    row("an escaped entity is unescaped once", R"(<asx><ref href="a&amp;lt;.mp3"/>)",
        {QStringLiteral("/lists/a&lt;.mp3")});
    row("back-slashes separate folders", R"(<asx><ref href="..\music\a.mp3"/>)", {QStringLiteral("/music/a.mp3")});
    row("absolute paths stay", R"(<asx><ref href="/x/a.mp3"/>)", {QStringLiteral("/x/a.mp3")});
    row("file addresses are decoded", R"(<asx><ref href="FILE:///x/a%20b.mp3"/>)", {QStringLiteral("/x/a b.mp3")});
    row("other schemes, drives and shares are left out",
        R"(<asx><ref href="http://example.org/a.wmv"/><ref href="mms://h/b"/><ref href="C:\a.wmv"/>)"
        R"(<ref href="\\server\share\a.wmv"/><ref href="file://other-host/a.wmv"/><ref href="a.wmv"/>)",
        {a});
    row("an empty address and a NUL are left out", QByteArray("<asx><ref href=\"\"/><ref href=\"a\0b\"/>", 34), {});
    row("an unclosed quote costs its own tag only", R"(<asx><ref href="x.wmv><ref href="a.wmv"/>)", {a});
    row("numbered lines instead of tags", "[Reference]\r\nRef1=a.wmv\r\nref2 = b.wma \r\nRefX=c\r\n", {a, b});
    row("numbered lines know no entities", "Ref1=a&amp;b.mp3", {QStringLiteral("/lists/a&amp;b.mp3")});
    row("UTF-8 with and without its mark", "\xEF\xBB\xBF<asx><ref href=\"Z\xC3\xA4hl.mp3\"/>",
        {QStringLiteral("/lists/Zähl.mp3")});
    row("no UTF-8: Latin-1", "<asx><ref href=\"Z\xE4hl.mp3\"/>", {QStringLiteral("/lists/Zähl.mp3")});
    row("an empty file", "", {});
}

void TestAsx::entriesOfAText()
{
    QFETCH(QByteArray, text);
    QFETCH(QStringList, paths);
    QCOMPARE(asxEntries(text, QStringLiteral("/lists/")), paths);
}

void TestAsx::utf16TextIsReadByItsMark()
{
    const QString text = QStringLiteral("<asx><ref href=\"Zähl.mp3\"/></asx>");
    for (const auto encoding : {QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
        const QByteArray bytes = encoder.encode(text);
        QCOMPARE(asxEntries(bytes, QStringLiteral("/")), QStringList{QStringLiteral("/Zähl.mp3")});
    }
}

/// A megabyte of anything is read on the way to the first sound.
void TestAsx::hostileTextIsReadInLinearTime()
{
    for (const QByteArray &piece : {QByteArray("<ref href=\""), QByteArray("<ref href "), QByteArray("<ref "),
             QByteArray("<!--"), QByteArray("<ref href=\"&\""), QByteArray("Ref1=a\n"), QByteArray("<")}) {
        QElapsedTimer clock;
        clock.start();
        QVERIFY(asxEntries('<' + piece.repeated((1 << 20) / int(piece.size())), QStringLiteral("/")).size() <= 1000);
        QVERIFY2(clock.elapsed() < 3000,
            qPrintable(QStringLiteral("%1: %2 ms").arg(QLatin1String(piece)).arg(clock.elapsed())));
    }
}

void TestAsx::aListInAListIsPutInItsPlace()
{
    m_home.write(QStringLiteral("in/sub/inner.ASX"), "<asx><ref href='two.wav'/></asx>");
    const QString outer = m_home.write(QStringLiteral("in/outer.asx"),
        "<asx><ref href='one.wav'/><entryref href='sub/inner.ASX'/><ref href='three.wav'/></asx>");
    const QString folder = m_home.path() + QStringLiteral("in/");
    QCOMPARE(readAsx(outer),
        (QStringList{folder + QStringLiteral("one.wav"), folder + QStringLiteral("sub/two.wav"),
            folder + QStringLiteral("three.wav")}));
    QCOMPARE(readAsx(folder + QStringLiteral("missing.asx")), QStringList());
}

void TestAsx::aListThatNamesItselfEnds()
{
    const QString self = m_home.write(QStringLiteral("self.asx"),
        "<asx><ref href='self.asx'/><ref href='./self.asx'/>"
        "<ref href='a.wav'/><ref href='ring.asx'/></asx>");
    m_home.write(QStringLiteral("ring.asx"), "<asx><ref href='self.asx'/><ref href='b.wav'/></asx>");
    QCOMPARE(
        readAsx(self), (QStringList{m_home.path() + QStringLiteral("a.wav"), m_home.path() + QStringLiteral("b.wav")}));
}

void TestAsx::listsAreFollowedThreeDeep()
{
    for (int depth = 1; depth <= 4; ++depth)
        m_home.write(QStringLiteral("deep%1.asx").arg(depth),
            QStringLiteral("<asx><ref href='%1.wav'/><ref href='deep%2.asx'/></asx>")
                .arg(depth)
                .arg(depth + 1)
                .toUtf8());
    const QStringList entries = readAsx(m_home.path() + QStringLiteral("deep1.asx"));
    QCOMPARE(entries.size(), 3);
    QVERIFY(entries.last().endsWith(QLatin1String("/3.wav")));
}

void TestAsx::manyEntriesAreCutAtAThousand()
{
    const QString inner =
        m_home.write(QStringLiteral("many.asx"), "<asx>" + QByteArray("<ref href='a.wav'/>").repeated(700));
    const QString outer =
        m_home.write(QStringLiteral("much.asx"), "<asx>" + QByteArray("<ref href='many.asx'/>").repeated(500));
    QCOMPARE(readAsx(inner).size(), 700);
    QCOMPARE(readAsx(outer).size(), 1000);
}

void TestAsx::aPercentSignInANameMeansItselfFirst()
{
    const QString list =
        m_home.write(QStringLiteral("p/list.asx"), "<asx><ref href='100%25.wav'/><ref href='a%20b.wav'/></asx>");
    const QString escaped = m_home.write(QStringLiteral("p/a b.wav"), "x");
    const QString literal = m_home.write(QStringLiteral("p/100%25.wav"), "x");
    m_home.write(QStringLiteral("p/100%.wav"), "x");
    QCOMPARE(readAsx(list), (QStringList{literal, escaped}));
}

QTEST_GUILESS_MAIN(TestAsx)
#include "tst_asx.moc"
