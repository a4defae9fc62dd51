#include "actions/email.h"
#include "app/globals.h"
#include "platform/filepath.h"
#include "platform/folders.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/frmMainViewer.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QtTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

/// Stands where the desktop's portal stands, on a bus of its own.
class FakePortal : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Email")
    Q_PROPERTY(uint version READ version)
public:
    uint version() const { return 3; }
    bool refuses = false;
    uint response = 0;
    QVariantMap options;
    QStringList attached; ///< the paths that the descriptors lead to
    int calls = 0;

public Q_SLOTS:
    QDBusObjectPath ComposeEmail(const QString &, const QVariantMap &given)
    {
        ++calls;
        options = given;
        attached.clear();
        const auto files = qdbus_cast<QList<QDBusUnixFileDescriptor>>(given.value(QStringLiteral("attachment_fds")));
        for (const QDBusUnixFileDescriptor &file : files) {
            std::array<char, 4096> target = {};
            const QByteArray link = "/proc/self/fd/" + QByteArray::number(file.fileDescriptor());
            const ssize_t length = ::readlink(link.constData(), target.data(), target.size());
            attached.append(pathFromBytes(QByteArray(target.data(), qMax<qsizetype>(0, length))));
        }
        if (refuses) {
            sendErrorReply(QDBusError::Failed, QStringLiteral("not today"));
            return {};
        }
        QString sender = message().service().mid(1);
        const QString request =
            QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
                .arg(sender.replace(u'.', u'_'), given.value(QStringLiteral("handle_token")).toString());
        QDBusMessage signal = QDBusMessage::createSignal(
            request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
        signal.setArguments({response, QVariantMap()});
        connection().send(signal);
        return QDBusObjectPath(request);
    }
};

/// A picture on its way to the mail program: for real, to programs and a portal that only write down what they get.
class tst_email : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();
    void theMailSaysWhatItAlwaysSays();
    void aMissingFileIsToldBeforeTheWindow_data();
    void aMissingFileIsToldBeforeTheWindow();
    void theChosenProgramGetsThePicture_data();
    void theChosenProgramGetsThePicture();
    void aNameThatIsNotCarriedGetsAnother();
    void oldCopiesGo();
    void withoutAProgramNothingHappens();
    void theScriptGetsWhatNobodyKnows();
    void theRealScriptHandsThePictureOn();
    void thePortalComesFirst();
    void whatThePortalRefusesGoesToTheProgram_data();
    void whatThePortalRefusesGoesToTheProgram();

private:
    frmMainViewer &viewer() { return form<frmMainViewer>(); }
    void show(const QString &path);
    QString install(const QString &name);
    void choose(const QString &program);
    QStringList received();
    bool startBus();
    static bool isOnItsWay();
    bool offer(FakePortal &portal);
    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<QProcess> m_bus;
    QByteArray m_busAddress;
    QString m_log;
    QByteArray m_path;
};

void tst_email::initTestCase()
{
    useBuiltModules();
    m_path = qgetenv("PATH");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    m_home = std::make_unique<TemporaryHome>();
    QVERIFY(showMainViewer());
}

void tst_email::init()
{
    m_home = std::make_unique<TemporaryHome>();
    m_log = m_home->path() + QStringLiteral("received");
    qputenv("XDG_DATA_DIRS", QFile::encodeName(m_home->path()) + "system");
    qputenv("XDG_CONFIG_DIRS", QFile::encodeName(m_home->path()) + "etc");
    qputenv("MAIL_LOG", QFile::encodeName(m_log));
    qputenv("PATH", QFile::encodeName(m_home->path()) + "bin");
    ScriptedDialogs::install();
}

void tst_email::cleanup()
{
    viewer().ClearDisplayList();
    setDialogs(nullptr);
    qputenv("PATH", m_path);
    QDBusConnection::disconnectFromBus(QStringLiteral("fake-portal"));
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

void tst_email::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus(QStringLiteral("lumora-mail"));
    if (m_bus) {
        m_bus->terminate();
        m_bus->waitForFinished();
    }
}

bool tst_email::isOnItsWay()
{
    return QCoreApplication::instance()->findChild<QObject *>(QStringLiteral("MailOnItsWay"));
}

void tst_email::show(const QString &path)
{
    viewer().lstDisplay->addItem(path);
    viewer().lblCount->setText(QString::number(viewer().lstDisplay->count()));
    viewer().lstDisplay->selectOnly(viewer().lstDisplay->count() - 1);
}

/// A program that writes its arguments down, each closed by a null byte, the whole at once.
QString tst_email::install(const QString &name)
{
    const QString path = m_home->write(QStringLiteral("bin/") + name,
        "#!/bin/sh\n{ printf '%s\\0' \"${0##*/}\" \"$@\"; } > \"$MAIL_LOG.part\"\n"
        "/bin/mv \"$MAIL_LOG.part\" \"$MAIL_LOG\"\n");
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

void tst_email::choose(const QString &program)
{
    m_home->write(QStringLiteral(".local/share/applications/mail.desktop"),
        "[Desktop Entry]\nType=Application\nName=Mail\nExec=" + QFile::encodeName(program)
            + " %u\nMimeType=x-scheme-handler/mailto;\n");
    m_home->write(
        QStringLiteral(".config/mimeapps.list"), "[Default Applications]\nx-scheme-handler/mailto=mail.desktop\n");
}

/// What a program got; its name is the first. Empty when none was started in time.
QStringList tst_email::received()
{
    QByteArray bytes;
    const bool came = QTest::qWaitFor([&] {
        QFile file(m_log);
        return file.open(QIODevice::ReadOnly) && !(bytes = file.readAll()).isEmpty();
    });
    QStringList words;
    if (came) {
        for (const QByteArray &word : bytes.chopped(1).split('\0'))
            words.append(pathFromBytes(word));
    }
    QFile::remove(m_log);
    return words;
}

/// One bus serves all tests: a process keeps the address that it has used first.
bool tst_email::startBus()
{
    if (!m_bus) {
        qputenv("PATH", m_path);
        m_bus = std::make_unique<QProcess>();
        m_bus->start(QStringLiteral("dbus-daemon"),
            {QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                QStringLiteral("--address=unix:dir=") + QDir::tempPath()});
        if (!m_bus->waitForStarted() || !m_bus->waitForReadyRead())
            return false;
        m_busAddress = m_bus->readLine().trimmed();
        qputenv("PATH", QFile::encodeName(m_home->path()) + "bin");
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", m_busAddress);
    return true;
}

bool tst_email::offer(FakePortal &portal)
{
    auto bus = QDBusConnection::connectToBus(QString::fromUtf8(m_busAddress), QStringLiteral("fake-portal"));
    return bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"))
        && bus.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), &portal,
            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
}

void tst_email::theMailSaysWhatItAlwaysSays()
{
    const MailMessage mail = pictureMail(QStringLiteral("/a/b c.jpg"));
    QCOMPARE(mail.subject, QStringLiteral("See attached pictures"));
    QCOMPARE(mail.note, QStringLiteral("There is a graphic file attached. \r\n "));
    QCOMPARE(mail.attachmentName, QStringLiteral("b c.jpg"));
    QCOMPARE(mail.note.sliced(mail.attachmentPosition), QStringLiteral(" "));
    QVERIFY(pictureMail(QString()).attachmentPath.isEmpty());
}

void tst_email::aMissingFileIsToldBeforeTheWindow_data()
{
    QTest::addColumn<bool>("selected");
    QTest::newRow("the file is gone") << true;
    QTest::newRow("nothing is selected") << false;
}

void tst_email::aMissingFileIsToldBeforeTheWindow()
{
    QFETCH(bool, selected);
    choose(install(QStringLiteral("thunderbird")));
    show(selected ? QStringLiteral("/not/there.png") : m_home->writePicture(QStringLiteral("a.png"), {8, 8}));
    if (!selected)
        viewer().lstDisplay->clearSelections();
    auto &dialogs = static_cast<ScriptedDialogs &>(::dialogs());
    dialogs.answer(MessageBox::Answer::Ok);
    viewer().mnuFileSendToEmailAttachment_Click();
    QCOMPARE(dialogs.boxes.size(), 1);
    QCOMPARE(dialogs.boxes[0].title, QStringLiteral("Attachment file not found."));
    QCOMPARE(dialogs.boxes[0].text,
        QStringLiteral("The attachment for this email is not a valid file. The email message windows will still be "
                       "displayed.  You may attach the item from within the email window."));
    QCOMPARE(dialogs.boxes[0].icon, MessageBox::Icon::Exclamation);
    const QStringList words = received();
    QCOMPARE(words.size(), 3);
    QVERIFY2(!words[2].contains(QLatin1String("attachment=")), qPrintable(words[2]));
}

void tst_email::theChosenProgramGetsThePicture_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("option");
    QTest::newRow("thunderbird") << "thunderbird"
                                 << "-compose";
    QTest::newRow("kmail") << "kmail"
                           << "--composer";
    QTest::newRow("evolution") << "evolution"
                               << "mailto:?subject=See%20attached%20pictures";
    QTest::newRow("geary") << "geary"
                           << "mailto:?subject=See%20attached%20pictures";
    QTest::newRow("claws-mail") << "claws-mail"
                                << "--compose";
    QTest::newRow("sylpheed") << "sylpheed"
                              << "--compose";
}

void tst_email::theChosenProgramGetsThePicture()
{
    QFETCH(QString, program);
    QFETCH(QString, option);
    choose(install(program));
    show(m_home->writePicture(QStringLiteral("it's, 100% M\u00fcll.png"), {8, 8}));
    viewer().mnuFileSendToEmailAttachment->trigger();
    const QStringList words = received();
    QCOMPARE(words.value(0), program);
    QVERIFY2(words.value(1).startsWith(option), qPrintable(words.join(QLatin1Char('\n'))));
    QString all = words.join(QLatin1Char(' '));
    for (int decode = 0; decode < 2 && !all.contains(QLatin1String("it's, 100% M")); ++decode)
        all = QString::fromUtf8(QByteArray::fromPercentEncoding(all.toUtf8()));
    QVERIFY2(all.contains(viewer().lstDisplay->text()), qPrintable(all));
}

void tst_email::aNameThatIsNotCarriedGetsAnother()
{
    choose(install(QStringLiteral("thunderbird")));
    const QString plain = m_home->writePicture(QStringLiteral("a.png"), {8, 8});
    const QByteArray foreign = QFile::encodeName(m_home->path()) + "M\xfcll.png";
    QCOMPARE(::rename(QFile::encodeName(plain).constData(), foreign.constData()), 0);
    show(pathFromBytes(foreign));
    viewer().mnuFileSendToEmailAttachment_Click();
    const QString argument = received().value(2);
    const qsizetype at = argument.indexOf(QLatin1String("file://")) + 7;
    const QByteArray path = QByteArray::fromPercentEncoding(argument.sliced(at).chopped(1).toLatin1());
    QVERIFY2(
        path.startsWith(QFile::encodeName(runtimeFolder()) + "mail/") && path.endsWith("/M_ll.png"), path.constData());
    QFile original(QFile::decodeName(path));
    QVERIFY(original.open(QIODevice::ReadOnly) && original.size() > 0);
    struct stat state = {};
    QCOMPARE(::stat(path.first(path.lastIndexOf('/')).constData(), &state), 0);
    QCOMPARE(int(state.st_mode & 0777), 0700);
    QCOMPARE(::unlink(foreign.constData()), 0); // nothing else here can remove such a name
}

void tst_email::oldCopiesGo()
{
    choose(install(QStringLiteral("thunderbird")));
    show(m_home->writePicture(QStringLiteral("a.png"), {8, 8}));
    const QString old = runtimeFolder() + QStringLiteral("mail/old");
    const QString fresh = runtimeFolder() + QStringLiteral("mail/fresh");
    QVERIFY(QDir().mkpath(old) && QDir().mkpath(fresh));
    QVERIFY(QFile::link(QStringLiteral("/not/there"), old + QStringLiteral("/x.png")));
    const timespec longAgo[2] = {{1000, 0}, {1000, 0}};
    QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(old).constData(), longAgo, 0), 0);
    viewer().mnuFileSendToEmailAttachment_Click();
    QCOMPARE(received().value(0), QStringLiteral("thunderbird"));
    QVERIFY(!QFileInfo::exists(old));
    QVERIFY(QFileInfo::exists(fresh));
}

void tst_email::withoutAProgramNothingHappens()
{
    show(m_home->writePicture(QStringLiteral("a.png"), {8, 8}));
    QTest::ignoreMessage(QtWarningMsg, "no mail program answers");
    viewer().mnuFileSendToEmailAttachment_Click();
    QVERIFY(QTest::qWaitFor([] { return !isOnItsWay(); }));
    QVERIFY(!QFileInfo::exists(m_log));
}

void tst_email::theScriptGetsWhatNobodyKnows()
{
    choose(install(QStringLiteral("somemailer")));
    install(QStringLiteral("xdg-email"));
    show(m_home->writePicture(QStringLiteral("it's.png"), {8, 8}));
    viewer().mnuFileSendToEmailAttachment_Click();
    const QStringList words = received();
    QCOMPARE(words.value(0), QStringLiteral("xdg-email"));
    // It asks where links lead: the other name is a copy.
    QVERIFY2(words.last().endsWith(QLatin1String("/it_s.png")), qPrintable(words.last()));
    QVERIFY(!QFileInfo(words.last()).isSymLink());
    QFile original(viewer().lstDisplay->text());
    QFile copy(words.last());
    QVERIFY(original.open(QIODevice::ReadOnly) && copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), original.readAll());
}

void tst_email::theRealScriptHandsThePictureOn()
{
    qputenv("PATH", m_path);
    if (QStandardPaths::findExecutable(QStringLiteral("xdg-email")).isEmpty())
        QSKIP("XDG-EMAIL MISSING: this test needs the package xdg-utils");
    const QString program = install(QStringLiteral("somemailer"));
    choose(program);
    qputenv("PATH", QFile::encodeName(m_home->path()) + "bin:" + m_path);
    qputenv("MAILER", QFile::encodeName(program));
    show(m_home->writePicture(QStringLiteral("100% M\u00fcll.png"), {8, 8}));
    viewer().mnuFileSendToEmailAttachment_Click();
    const QStringList words = received();
    qunsetenv("MAILER");
    QCOMPARE(words.value(0), QStringLiteral("somemailer"));
    QCOMPARE(words.size(), 2);
    const QString decoded = QString::fromUtf8(QByteArray::fromPercentEncoding(words[1].toUtf8()));
    QVERIFY2(decoded.contains(QStringLiteral("attach=") + viewer().lstDisplay->text()), qPrintable(decoded));
    QVERIFY2(decoded.contains(QLatin1String("subject=See attached pictures")), qPrintable(decoded));
}

void tst_email::thePortalComesFirst()
{
    if (!startBus())
        QSKIP("DBUS MISSING: this test needs the package dbus");
    choose(install(QStringLiteral("thunderbird")));
    FakePortal portal;
    QVERIFY(offer(portal));
    show(m_home->writePicture(QStringLiteral("it's, 100% M\u00fcll\n.png"), {8, 8}));
    viewer().mnuFileSendToEmailAttachment_Click();
    QTRY_COMPARE(portal.calls, 1);
    QCOMPARE(portal.options.value(QStringLiteral("subject")).toString(), QStringLiteral("See attached pictures"));
    QCOMPARE(portal.options.value(QStringLiteral("body")).toString(),
        QStringLiteral("There is a graphic file attached. \r\n "));
    QCOMPARE(portal.attached, QStringList{viewer().lstDisplay->text()});
    QVERIFY(!QFileInfo::exists(m_log));
}

void tst_email::whatThePortalRefusesGoesToTheProgram_data()
{
    QTest::addColumn<bool>("refuses");
    QTest::addColumn<uint>("response");
    QTest::addColumn<bool>("toProgram");
    QTest::newRow("an error") << true << 0U << true;
    QTest::newRow("no backend") << false << 2U << true;
    QTest::newRow("the user's own end") << false << 1U << false;
}

void tst_email::whatThePortalRefusesGoesToTheProgram()
{
    QFETCH(bool, refuses);
    QFETCH(uint, response);
    QFETCH(bool, toProgram);
    if (!startBus())
        QSKIP("DBUS MISSING: this test needs the package dbus");
    choose(install(QStringLiteral("thunderbird")));
    FakePortal portal;
    portal.refuses = refuses;
    portal.response = response;
    QVERIFY(offer(portal));
    show(m_home->writePicture(QStringLiteral("a.png"), {8, 8}));
    viewer().mnuFileSendToEmailAttachment_Click();
    if (toProgram)
        QCOMPARE(received().value(0), QStringLiteral("thunderbird"));
    QTRY_COMPARE(portal.calls, 1);
    QTRY_VERIFY(!isOnItsWay());
    QVERIFY(toProgram || !QFileInfo::exists(m_log));
}

QTEST_MAIN(tst_email)
#include "tst_email.moc"
