#include "platform/linux/defaulthandler.h"
#include "platform/linux/mailprograms.h"

#include "platform/filepath.h"
#include "support/support.h"

#include <QRegularExpression>
#include <QUrl>
#include <QtTest>

/// Which mail program is the user's, and what it is told. The receiving ends below read as the programs do.
class tst_mailprograms : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void namesArriveAtThunderbird_data() { awkwardNames(); }
    void namesArriveAtThunderbird();
    void namesArriveInAddresses_data() { awkwardNames(); }
    void namesArriveInAddresses();
    void plainArgumentsHoldThePath_data() { awkwardNames(); }
    void plainArgumentsHoldThePath();
    void safeNamesAreCarriedByAll_data();
    void safeNamesAreCarriedByAll();
    void execLinesAreTakenApart_data();
    void execLinesAreTakenApart();
    void theUsersChoiceComesFirst();
    void whoCannotBeRunIsPassedOver();

private:
    void awkwardNames();
    static MailMessage message(const QString &path);
};

namespace {

/// Thunderbird's reading of the argument behind -compose: pairs parted by commas, values in quotes that end before one.
QMap<QString, QString> composeValues(const QString &argument)
{
    QMap<QString, QString> values;
    static const QRegularExpression pair(
        QStringLiteral("([a-z]+)='(.*?)'(?:,|$)"), QRegularExpression::DotMatchesEverythingOption);
    for (const QRegularExpressionMatch &match : pair.globalMatch(argument))
        values.insert(match.captured(1), match.captured(2));
    return values;
}

QMap<QString, QByteArray> mailtoValues(const QString &uri)
{
    QMap<QString, QByteArray> values;
    for (const QByteArray &field : uri.toLatin1().mid(qstrlen("mailto:?")).split('&')) {
        const qsizetype equals = field.indexOf('=');
        values.insert(QString::fromLatin1(field.first(equals)), QByteArray::fromPercentEncoding(field.mid(equals + 1)));
    }
    return values;
}

QByteArray pathOfUri(const QByteArray &uri)
{
    return uri.startsWith("file://") ? QByteArray::fromPercentEncoding(uri.mid(7)) : QByteArray();
}

}

void tst_mailprograms::awkwardNames()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("plain") << "/disk/me/a.jpg";
    QTest::newRow("quotes") << "/disk/me/it's \"it\".jpg";
    QTest::newRow("commas") << "/disk/me/a,b',c.jpg";
    QTest::newRow("umlauts") << QStringLiteral("/disk/me/M\u00fcll \u00c4\u00df \u20ac.jpg");
    QTest::newRow("beyond the first plane") << QStringLiteral("/disk/me/\U0001F600.jpg");
    QTest::newRow("percent") << "/disk/me/100%25 %zz.jpg";
    QTest::newRow("signs of addresses") << "/disk/me/a&b=c?d#e+f.jpg";
    QTest::newRow("line break") << "/disk/me/a\nb\r\nc.jpg";
    QTest::newRow("backslash and dollar") << "/disk/me/a\\n$HOME`b`.jpg";
    QTest::newRow("blanks at the ends") << "/disk/me/ a  b .jpg ";
}

MailMessage tst_mailprograms::message(const QString &path)
{
    return {QStringLiteral("See attached pictures"), QStringLiteral("There is, \r\n "), path, FileNameOfPath(path), 12};
}

void tst_mailprograms::namesArriveAtThunderbird()
{
    QFETCH(QString, path);
    const QStringList arguments = mailArguments(MailProgram::Thunderbird, message(path));
    QCOMPARE(arguments.value(0), QStringLiteral("-compose"));
    const QMap<QString, QString> values = composeValues(arguments.value(1));
    QCOMPARE(values[QStringLiteral("subject")], QStringLiteral("See attached pictures"));
    QCOMPARE(values[QStringLiteral("body")], QStringLiteral("There is, \n "));
    // Several attachments are parted by commas.
    QCOMPARE(values[QStringLiteral("attachment")].split(QLatin1Char(',')).size(), 1);
    QCOMPARE(pathOfUri(values[QStringLiteral("attachment")].toLatin1()), path.toUtf8());
    QVERIFY(carriesPath(MailProgram::Thunderbird, path));
}

void tst_mailprograms::namesArriveInAddresses()
{
    QFETCH(QString, path);
    for (const MailProgram program : {MailProgram::Evolution, MailProgram::Geary, MailProgram::Unknown}) {
        const QMap<QString, QByteArray> values = mailtoValues(mailArguments(program, message(path)).value(0));
        QCOMPARE(values[QStringLiteral("subject")], QByteArray("See attached pictures"));
        QCOMPARE(values[QStringLiteral("body")], QByteArray("There is, \r\n "));
        QCOMPARE(pathOfUri(values[QStringLiteral("attach")]), path.toUtf8());
    }
    const QStringList arguments = mailArguments(MailProgram::KMail, message(path));
    QCOMPARE(QUrl(arguments.value(arguments.indexOf(QLatin1String("--attach")) + 1)).toLocalFile(), path);
}

void tst_mailprograms::plainArgumentsHoldThePath()
{
    QFETCH(QString, path);
    for (const MailProgram program : {MailProgram::ClawsMail, MailProgram::Sylpheed, MailProgram::XdgEmail})
        QCOMPARE(mailArguments(program, message(path)).last(), path);
    // A running instance is told line by line.
    for (const MailProgram program : {MailProgram::ClawsMail, MailProgram::Sylpheed})
        QCOMPARE(carriesPath(program, path), !path.contains(QLatin1Char('\n')));
    // The script in front of all others puts words together anew and knows escapes of its own.
    static const QRegularExpression misread(QStringLiteral("[\"',\\\\$`\\n\\r?#]|  | $"));
    if (misread.match(path).hasMatch())
        QVERIFY(!carriesPath(MailProgram::XdgEmail, path));
}

void tst_mailprograms::safeNamesAreCarriedByAll_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("safe");
    QTest::newRow("stays") << QByteArray("Holiday 2004.jpg") << "Holiday 2004.jpg";
    QTest::newRow("letters of all languages") << QByteArray("M\xc3\xbcll.jpg") << QStringLiteral("M\u00fcll.jpg");
    QTest::newRow("quotes and commas") << QByteArray("it's, \"x\".jpg") << "it_s_ _x_.jpg";
    QTest::newRow("line break and blanks") << QByteArray(" a\nb  c.jpg ") << "a_b c.jpg";
    QTest::newRow("bytes that are no text") << QByteArray("a\xff\xe4.jpg") << "a__.jpg";
    QTest::newRow("hidden, or like an option") << QByteArray("--.jpg") << "_-.jpg";
    QTest::newRow("very long") << QByteArray(QByteArray(250, 'x') + ".jpg")
                               << QString(QString(76, u'x') + QStringLiteral(".jpg"));
    QTest::newRow("nothing but a blank") << QByteArray(" ") << "picture";
}

void tst_mailprograms::safeNamesAreCarriedByAll()
{
    QFETCH(QByteArray, name);
    QFETCH(QString, safe);
    QCOMPARE(safeAttachmentName(pathFromBytes(name)), safe);
    for (const MailProgram program : {MailProgram::Thunderbird, MailProgram::ClawsMail, MailProgram::XdgEmail})
        QVERIFY(carriesPath(program, QStringLiteral("/run/user/1000/lumora/mail/aB3xYz/") + safe));
    if (hasForeignBytes(pathFromBytes(name)))
        QVERIFY(!carriesPath(MailProgram::Thunderbird, pathFromBytes(name)));
}

void tst_mailprograms::execLinesAreTakenApart_data()
{
    QTest::addColumn<QString>("exec");
    QTest::addColumn<QStringList>("program");
    QTest::newRow("field code") << "thunderbird %u" << QStringList{QStringLiteral("thunderbird")};
    QTest::newRow("options") << "claws-mail --compose %u" << QStringList{QStringLiteral("claws-mail")};
    QTest::newRow("quotes") << "\"/opt/my mail/thunderbird\" -x %u"
                            << QStringList{QStringLiteral("/opt/my mail/thunderbird")};
    QTest::newRow("escapes in quotes") << "\"/opt/a\\$b\\\"c\" %u" << QStringList{QStringLiteral("/opt/a$b\"c")};
    QTest::newRow("variables in front") << "env A=1 B=\"2 3\" /snap/bin/thunderbird %u"
                                        << QStringList{QStringLiteral("env"), QStringLiteral("A=1"),
                                               QStringLiteral("B=2 3"), QStringLiteral("/snap/bin/thunderbird")};
    QTest::newRow("a percent sign") << "/opt/100%%/mail %U" << QStringList{QStringLiteral("/opt/100%/mail")};
    QTest::newRow("nothing") << "" << QStringList{};
    QTest::newRow("only variables") << "env A=1" << QStringList{QStringLiteral("env"), QStringLiteral("A=1")};
}

void tst_mailprograms::execLinesAreTakenApart()
{
    QFETCH(QString, exec);
    QFETCH(QStringList, program);
    QCOMPARE(programWords(execWords(exec)), program);
}

namespace {

/// Makes a program and its desktop file.
void install(const TemporaryHome &home, const char *name, const char *desktopId)
{
    const QString program = home.write(QStringLiteral("bin/") + QLatin1String(name), "#!/bin/sh\n");
    QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    home.write(QStringLiteral(".local/share/applications/") + QLatin1String(desktopId),
        "[Desktop Entry]\nType=Application\nExec=" + program.toUtf8() + " %u\n[Other]\nExec=false\n");
}

}

void tst_mailprograms::theUsersChoiceComesFirst()
{
    const TemporaryHome home;
    qputenv("XDG_DATA_DIRS", home.path().toUtf8() + "system");
    qputenv("XDG_CONFIG_DIRS", home.path().toUtf8() + "etc");
    const QString type = QStringLiteral("x-scheme-handler/mailto");
    QVERIFY(defaultHandlerCommand(type).isEmpty());
    install(home, "cached", "cached.desktop");
    install(home, "chosen", "kde4/chosen.desktop");
    install(home, "ours", "ours.desktop");
    home.write(QStringLiteral(".local/share/applications/mimeinfo.cache"),
        "[MIME Cache]\nx-scheme-handler/mailto=gone.desktop;cached.desktop;\n");
    QVERIFY(defaultHandlerCommand(type).value(0).endsWith(QLatin1String("/cached")));
    home.write(QStringLiteral(".config/mimeapps.list"),
        "[Added Associations]\nx-scheme-handler/mailto=ours.desktop;\n"
        "[Default Applications]\nx-scheme-handler/mailto=kde4-chosen.desktop\n");
    QVERIFY(defaultHandlerCommand(type).value(0).endsWith(QLatin1String("/chosen")));
    home.write(QStringLiteral(".config/lxqt-mimeapps.list"),
        "[Default Applications]\r\nx-scheme-handler/mailto = broken\r\nx-scheme-handler/mailto=ours.desktop\r\n");
    QVERIFY(defaultHandlerCommand(type).value(0).endsWith(QLatin1String("/chosen")));
    qputenv("XDG_CURRENT_DESKTOP", "LXQt:X-Other");
    QVERIFY(defaultHandlerCommand(type).value(0).endsWith(QLatin1String("/ours")));
    qunsetenv("XDG_CURRENT_DESKTOP");
}

void tst_mailprograms::whoCannotBeRunIsPassedOver()
{
    const TemporaryHome home;
    qputenv("XDG_DATA_DIRS", home.path().toUtf8() + "system");
    qputenv("XDG_CONFIG_DIRS", home.path().toUtf8() + "etc");
    install(home, "good", "good.desktop");
    home.write(QStringLiteral(".local/share/applications/gone.desktop"), "[Desktop Entry]\nExec=/not/there %u\n");
    home.write(QStringLiteral(".local/share/applications/empty.desktop"), "");
    home.write(QStringLiteral(".local/share/applications/console.desktop"),
        "[Desktop Entry]\nTerminal=true\nExec=/bin/sh %u\n");
    home.write(QStringLiteral(".config/mimeapps.list"),
        "[Default Applications]\n"
        "x-scheme-handler/mailto=gone.desktop;empty.desktop;console.desktop;../../x.desktop;;no;good.desktop\n");
    QVERIFY(defaultHandlerCommand(QStringLiteral("x-scheme-handler/mailto")).value(0).endsWith(QLatin1String("/good")));
    QCOMPARE(mailProgramOf(QStringLiteral("/usr/bin/thunderbird-esr")), MailProgram::Thunderbird);
    QCOMPARE(mailProgramOf(QStringLiteral("/usr/bin/firefox")), MailProgram::Unknown);
}

QTEST_GUILESS_MAIN(tst_mailprograms)
#include "tst_mailprograms.moc"
