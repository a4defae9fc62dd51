#include "app/globals.h"
#include "app/startup.h"
#include "platform/files.h"
#include "platform/folders.h"
#include "shell/faketray.h"
#include "shell/frmSystemTray.h"
#include "support/privatebus.h"
#include "support/support.h"
#include "support/windows.h"
#include "viewer/frmMainViewer.h"
#include "viewer/listfile.h"

#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDialog>
#include <QtTest>

/// The icon among the desktop's own, seen from the bus: on a virtual screen, because only real window systems have one.
class tst_frmSystemTray : public QObject
{
    Q_OBJECT
public:
    static inline bool hasScreen = false;
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void withoutATrayTheWindowMinimisesAsAny();
    void theIconComesAndGoesWithTheTray();
    void anEmptyListHasNothingToShow();
    void aClickReachesTheCommand_data();
    void aClickReachesTheCommand();
    void underAModalWindowNoCommandRuns();
    void aMinimisedViewerWaitsInTheTray_data();
    void aMinimisedViewerWaitsInTheTray();

private:
    static frmSystemTray &tray() { return form<frmSystemTray>(); }
    static frmMainViewer &viewer() { return form<frmMainViewer>(); }
    static QString standardList() { return AppFolder() + QString::fromLatin1(standardListName); }
    void showTray()
    {
        m_tray = std::make_unique<FakeTray>(m_bus->address(), true);
        tray().Form_Activate();
        QTRY_VERIFY(tray().hasIcon() && !m_tray->items().isEmpty());
    }
    /// What the icon answers to the desktop.
    QVariantList call(const char *path, const char *interface, const char *member, const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            m_tray->items().constLast(), QLatin1String(path), QLatin1String(interface), QLatin1String(member));
        message.setArguments(arguments);
        const QDBusPendingCallWatcher answer(QDBusConnection(m_client).asyncCall(message));
        ignore(QTest::qWaitFor([&] { return answer.isFinished(); }));
        return answer.reply().arguments();
    }
    void activate(const char *how) { ignore(call("/StatusNotifierItem", "org.kde.StatusNotifierItem", how, {1, 1})); }
    /// The menu as the desktop opens it.
    QList<MenuEntry> openedMenu()
    {
        ignore(call("/MenuBar", "com.canonical.dbusmenu", "AboutToShow", {0}));
        return menuEntries(call("/MenuBar", "com.canonical.dbusmenu", "GetLayout", {0, -1, QStringList()}));
    }
    QString labels(bool onlyDisabled)
    {
        QStringList found;
        for (const MenuEntry &entry : openedMenu()) {
            if (!onlyDisabled || !entry.enabled)
                found.append(entry.label);
        }
        return found.join(QLatin1Char(','));
    }
    void click(const QString &label)
    {
        for (const MenuEntry &entry : openedMenu()) {
            if (entry.label == label)
                ignore(call("/MenuBar", "com.canonical.dbusmenu", "Event",
                    {entry.id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U}));
        }
    }
    bool isOnBus(const QString &name) { return QDBusConnection(m_client).interface()->isServiceRegistered(name); }

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<TemporaryHome> m_home;
    std::unique_ptr<FakeTray> m_tray;
    const QString m_client = QStringLiteral("desktop");
};

void tst_frmSystemTray::initTestCase()
{
    if (!hasScreen)
        QSKIP("XVFB MISSING: the package xvfb is needed");
    // One for all: the toolkit keeps to the bus that it found first.
    m_bus = std::make_unique<PrivateBus>();
    SKIP_WITHOUT_BUS(*m_bus);
    QVERIFY(QDBusConnection::connectToBus(m_bus->address(), m_client).isConnected());
}

void tst_frmSystemTray::init()
{
    m_home = std::make_unique<TemporaryHome>();
    globals = {};
    ScriptedDialogs::install();
    QVERIFY(showMainViewer());
    QVERIFY(isLoaded<frmSystemTray>() && !tray().isVisible());
    m_home->write(QStringLiteral("app/") + QString::fromLatin1(standardListName),
        writeListFile({QStringLiteral("/only/a.jpg")}, QStringLiteral("1")));
}

void tst_frmSystemTray::cleanup()
{
    ShutDownProgram();
    finishShutDown();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!isLoaded<frmSystemTray>());
    m_tray.reset();
    setDialogs(nullptr);
}

void tst_frmSystemTray::withoutATrayTheWindowMinimisesAsAny()
{
    tray().Form_Activate();
    viewer().mnuOptionsMinimizeSystemTray->setChecked(true);
    // A register that nobody draws icons from is no tray either.
    m_tray = std::make_unique<FakeTray>(m_bus->address(), false);
    tray().mnuMinimize_Click();
    QTRY_VERIFY(viewer().isMinimized());
    QCoreApplication::processEvents();
    QVERIFY(viewer().isVisible() && !tray().hasIcon());
    QVERIFY(viewer().mnuOptionsMinimizeSystemTray->isVisible() && !viewer().mnuOptionsMinimizeSystemTray->isEnabled());
}

void tst_frmSystemTray::theIconComesAndGoesWithTheTray()
{
    tray().Form_Activate();
    m_tray = std::make_unique<FakeTray>(m_bus->address(), false);
    m_tray->setHost(true);
    QTRY_VERIFY(tray().hasIcon() && !m_tray->items().isEmpty());
    QVERIFY(viewer().mnuOptionsMinimizeSystemTray->isEnabled());
    const QVariantList properties = call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
        {QStringLiteral("org.kde.StatusNotifierItem")});
    const auto all = qdbus_cast<QVariantMap>(properties.value(0));
    QVERIFY(!all.value(QStringLiteral("IconPixmap")).value<QDBusArgument>().atEnd());
    QCOMPARE(titleOf(all.value(QStringLiteral("ToolTip"))), QStringLiteral("Tessaly Lumora V3"));
    m_tray->setHost(false);
    QTRY_VERIFY(!tray().hasIcon());
    QVERIFY(!viewer().mnuOptionsMinimizeSystemTray->isEnabled());
    m_tray.reset();
    showTray();
    const QString item = m_tray->items().constLast();
    QVERIFY(isOnBus(item));
    unload<frmSystemTray>();
    QTRY_VERIFY(!isOnBus(item));
    tray();
}

void tst_frmSystemTray::anEmptyListHasNothingToShow()
{
    showTray();
    QCOMPARE(labels(false),
        QStringLiteral("_Restore,Ma_ximize,Mi_nimize,_Load List,_Save List,_Run Full Screen Media Show,"
                       "Slide Show _Time Interval,_Previous Media File,_Next Media File,_Exit"));
    QCOMPARE(tray().mnuAbout->text(), QStringLiteral("&About"));
    const QString needList =
        QStringLiteral("_Run Full Screen Media Show,Slide Show _Time Interval,_Previous Media File,_Next Media File");
    QCOMPARE(labels(true), needList);
    // The number decides, whatever the list holds.
    viewer().lblCount->setText(QStringLiteral("1"));
    QCOMPARE(labels(true), QString());
    viewer().ClearDisplayList();
    QVERIFY(!tray().mnuNextImage->isEnabled());
    QCOMPARE(labels(true), needList);
}

void tst_frmSystemTray::aClickReachesTheCommand_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<std::function<bool()>>("done");
    const auto row = [](const char *label, const std::function<bool()> &done) {
        QTest::newRow(label) << QString::fromLatin1(label) << done;
    };
    row("_Next Media File", [] { return viewer().CurrentPicture->text() == QLatin1String("3"); });
    row("_Previous Media File", [] { return viewer().CurrentPicture->text() == QLatin1String("1"); });
    row("_Run Full Screen Media Show", [] { return viewer().mnuSlideShowFullScreen->isChecked(); });
    row("Slide Show _Time Interval", [] { return globals.SlideShowInterval == 17; });
    row("_Save List", [] {
        const auto bytes = readFile(standardList(), 1 << 20);
        return bytes && readListFile(*bytes, 0).entries.size() == 3;
    });
    row("_Load List", [] { return viewer().lstDisplay->items() == QStringList{QStringLiteral("/only/a.jpg")}; });
    row("Mi_nimize", [] { return viewer().isMinimized() && viewer().isVisible(); });
    row("Ma_ximize", [] { return viewer().isMaximized(); });
    row("_Exit", [] { return globals.ProgramExiting; });
}

void tst_frmSystemTray::aClickReachesTheCommand()
{
    QFETCH(QString, label);
    QFETCH(std::function<bool()>, done);
    showTray();
    for (const char *path : {"/no/a.jpg", "/no/b.jpg", "/no/c.jpg"})
        QVERIFY(viewer().lstDisplay->addItem(QString::fromLatin1(path)));
    viewer().lblCount->setText(QStringLiteral("3"));
    viewer().lstDisplay->selectOnly(1);
    viewer().ShowSelectedDisplayItem();
    auto &dialogs = ScriptedDialogs::install();
    if (label.contains(QLatin1String("_Time")))
        dialogs.answerText(QStringLiteral("17"));
    QVERIFY(!done());
    click(label);
    QTRY_VERIFY(done());
}

void tst_frmSystemTray::underAModalWindowNoCommandRuns()
{
    showTray();
    QDialog question(&viewer());
    question.setModal(true);
    question.show();
    QVERIFY(QTest::qWaitForWindowExposed(&question));
    click(QStringLiteral("_Load List"));
    viewer().mnuOptionsMinimizeSystemTray->setChecked(true);
    click(QStringLiteral("Mi_nimize"));
    QTRY_VERIFY(viewer().isMinimized());
    QCoreApplication::processEvents();
    QVERIFY(viewer().isVisible() && viewer().lstDisplay->isEmpty());
}

void tst_frmSystemTray::aMinimisedViewerWaitsInTheTray_data()
{
    QTest::addColumn<std::function<void(tst_frmSystemTray &)>>("comeBack");
    QTest::addColumn<bool>("maximised");
    using T = tst_frmSystemTray;
    const auto row = [](const char *way, const std::function<void(T &)> &comeBack, bool maximised = false) {
        QTest::newRow(way) << comeBack << maximised;
    };
    row(
        "one click", [](T &test) { test.activate("Activate"); }, true);
    row("menu", [](T &test) { test.click(QStringLiteral("_Restore")); });
    row("a later start", [](T &) { commandArrived(QString(), QString()); });
    row("the tray goes away", [](T &test) { test.m_tray.reset(); });
    row("icons are drawn no more", [](T &test) { test.m_tray->setHost(false); });
}

void tst_frmSystemTray::aMinimisedViewerWaitsInTheTray()
{
    QFETCH(std::function<void(tst_frmSystemTray &)>, comeBack);
    QFETCH(bool, maximised);
    showTray();
    QDialog owned(&viewer());
    owned.show();
    viewer().mnuOptionsMinimizeSystemTray->setChecked(true);
    viewer().showMinimized();
    QTRY_VERIFY(!viewer().isVisible() && !owned.isVisible());
    QVERIFY(tray().holdsMainViewer());
    activate("SecondaryActivate");
    click(QStringLiteral("Mi_nimize"));
    QVERIFY(!viewer().isVisible());
    comeBack(*this);
    QTRY_VERIFY(viewer().isVisible() && owned.isVisible());
    QCOMPARE(viewer().isMaximized(), maximised);
    QVERIFY(!tray().holdsMainViewer());
}

int main(int argc, char **argv)
{
    QProcess server;
    server.start(QStringLiteral("Xvfb"),
        {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"), QStringLiteral("0"),
            QStringLiteral("1280x1024x24"), QStringLiteral("-noreset"), QStringLiteral("-nolisten"),
            QStringLiteral("tcp")});
    tst_frmSystemTray::hasScreen = server.waitForReadyRead(30000);
    if (tst_frmSystemTray::hasScreen) {
        qputenv("DISPLAY", ":" + server.readLine().trimmed());
        qputenv("QT_QPA_PLATFORM", "xcb");
        qunsetenv("WAYLAND_DISPLAY");
    }
    int status = 0;
    {
        QApplication application(argc, argv);
        tst_frmSystemTray test;
        status = QTest::qExec(&test, argc, argv);
    }
    server.terminate();
    server.waitForFinished();
    return status;
}
#include "tst_frmSystemTray.moc"
