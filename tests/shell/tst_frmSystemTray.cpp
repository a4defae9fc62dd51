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
    void theMenuIsOnTheBus();
    void anEmptyListHasNothingToShow();
    void aClickReachesTheCommand_data();
    void aClickReachesTheCommand();
    void underAModalWindowNoCommandRuns();
    void exitEndsTheProgram();
    void oneClickBringsTheViewerUp();
    void aMinimisedViewerWaitsInTheTray_data();
    void aMinimisedViewerWaitsInTheTray();
    void withoutTheMarkItMinimisesAsAny();

private:
    static frmSystemTray &tray() { return form<frmSystemTray>(); }
    static frmMainViewer &viewer() { return form<frmMainViewer>(); }
    void showTray()
    {
        m_tray = std::make_unique<FakeTray>(m_bus->address(), true);
        tray().Form_Activate();
        QTRY_VERIFY(tray().hasIcon() && !m_tray->items().isEmpty());
    }
    /// What the icon answers to the desktop.
    QDBusMessage call(const char *path, const char *interface, const char *member, const QVariantList &arguments)
    {
        QDBusMessage message = QDBusMessage::createMethodCall(
            m_tray->items().constLast(), QLatin1String(path), QLatin1String(interface), QLatin1String(member));
        message.setArguments(arguments);
        const QDBusPendingCallWatcher answer(QDBusConnection(m_client).asyncCall(message));
        ignore(QTest::qWaitFor([&] { return answer.isFinished(); }));
        return answer.reply();
    }
    QVariant property(const char *name)
    {
        return call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
            {QStringLiteral("org.kde.StatusNotifierItem"), QString::fromLatin1(name)})
            .arguments()
            .value(0)
            .value<QDBusVariant>()
            .variant();
    }
    void activate(const char *how)
    {
        ignore(call("/StatusNotifierItem", "org.kde.StatusNotifierItem", how, {1, 1}));
    }
    /// The menu as the desktop opens it.
    MenuEntry openedMenu()
    {
        ignore(call("/MenuBar", "com.canonical.dbusmenu", "AboutToShow", {0}));
        const QVariantList answer =
            call("/MenuBar", "com.canonical.dbusmenu", "GetLayout", {0, -1, QStringList()}).arguments();
        return MenuEntry::from(answer.value(1).value<QDBusArgument>());
    }
    MenuEntry entry(const QString &label)
    {
        for (const MenuEntry &found : openedMenu().entries) {
            if (found.label() == label)
                return found;
        }
        return {};
    }
    void click(const QString &label)
    {
        ignore(call("/MenuBar", "com.canonical.dbusmenu", "Event",
            {entry(label).id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U}));
    }

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
}

void tst_frmSystemTray::cleanup()
{
    if (!globals.ProgramExiting)
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
    viewer().showMinimized();
    // A register that nobody draws icons from is no tray either.
    m_tray = std::make_unique<FakeTray>(m_bus->address(), false);
    tray().mnuMinimize_Click();
    QTRY_VERIFY(viewer().isMinimized());
    QCoreApplication::processEvents();
    QVERIFY(viewer().isVisible());
    QVERIFY(!tray().hasIcon());
    QVERIFY(viewer().mnuOptionsMinimizeSystemTray->isVisible() && !viewer().mnuOptionsMinimizeSystemTray->isEnabled());
}

void tst_frmSystemTray::theIconComesAndGoesWithTheTray()
{
    tray().Form_Activate();
    m_tray = std::make_unique<FakeTray>(m_bus->address(), false);
    m_tray->setHost(true);
    QTRY_VERIFY(tray().hasIcon() && !m_tray->items().isEmpty());
    QVERIFY(viewer().mnuOptionsMinimizeSystemTray->isEnabled());
    const QDBusArgument tip = property("ToolTip").value<QDBusArgument>();
    QVERIFY(!property("IconPixmap").value<QDBusArgument>().atEnd());
    QString iconName, title;
    tip.beginStructure();
    tip >> iconName;
    tip.beginArray();
    while (!tip.atEnd())
        tip.asVariant();
    tip.endArray();
    tip >> title;
    QCOMPARE(title, QStringLiteral("Tessaly Lumora V3"));

    m_tray->setHost(false);
    QTRY_VERIFY(!tray().hasIcon());
    m_tray->setHost(true);
    QTRY_VERIFY(tray().hasIcon());
    m_tray.reset();
    QTRY_VERIFY(!tray().hasIcon());
    QVERIFY(!viewer().mnuOptionsMinimizeSystemTray->isEnabled());
    m_tray = std::make_unique<FakeTray>(m_bus->address(), true);
    QTRY_VERIFY(tray().hasIcon() && !m_tray->items().isEmpty());

    const QString item = m_tray->items().constLast();
    const auto isOnBus = [&] {
        QDBusMessage question = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
            QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
        question << item;
        return QDBusConnection(m_client).call(question).arguments().value(0).toBool();
    };
    QVERIFY(isOnBus());
    unload<frmSystemTray>();
    QTRY_VERIFY(!isOnBus());
    QVERIFY(form<frmMainViewer>().isVisible());
    tray();
}

void tst_frmSystemTray::theMenuIsOnTheBus()
{
    showTray();
    QStringList labels;
    for (const MenuEntry &found : openedMenu().entries) {
        if (!found.isSeparator() && found.isVisible())
            labels.append(found.label());
    }
    QCOMPARE(labels.join(QLatin1Char(',')),
        QStringLiteral("_Restore,Ma_ximize,Mi_nimize,_Load List,_Save List,_Run Full Screen Media Show,"
                       "Slide Show _Time Interval,_Previous Media File,_Next Media File,_Exit"));
    QCOMPARE(tray().mnuAbout->text(), QStringLiteral("&About"));
}

void tst_frmSystemTray::anEmptyListHasNothingToShow()
{
    showTray();
    const auto offItems = [this] {
        QStringList labels;
        for (const MenuEntry &found : openedMenu().entries) {
            if (found.isVisible() && !found.isEnabled())
                labels.append(found.label());
        }
        return labels;
    };
    const QStringList needList{QStringLiteral("_Run Full Screen Media Show"),
        QStringLiteral("Slide Show _Time Interval"), QStringLiteral("_Previous Media File"),
        QStringLiteral("_Next Media File")};
    QCOMPARE(offItems(), needList);
    // The number decides, whatever the list holds.
    viewer().lblCount->setText(QStringLiteral("1"));
    QCOMPARE(offItems(), QStringList());
    viewer().ClearDisplayList();
    QVERIFY(!tray().mnuNextImage->isEnabled());
    QCOMPARE(offItems(), needList);
}

void tst_frmSystemTray::aClickReachesTheCommand_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("position");
    QTest::newRow("next") << QStringLiteral("_Next Media File") << QStringLiteral("3");
    QTest::newRow("previous") << QStringLiteral("_Previous Media File") << QStringLiteral("1");
    QTest::newRow("show") << QStringLiteral("_Run Full Screen Media Show") << QStringLiteral("2");
    QTest::newRow("interval") << QStringLiteral("Slide Show _Time Interval") << QStringLiteral("2");
    QTest::newRow("save") << QStringLiteral("_Save List") << QStringLiteral("2");
    QTest::newRow("load") << QStringLiteral("_Load List") << QStringLiteral("1");
}

void tst_frmSystemTray::aClickReachesTheCommand()
{
    QFETCH(QString, label);
    QFETCH(QString, position);
    showTray();
    const QString standard = AppFolder() + QString::fromLatin1(standardListName);
    if (label == QLatin1String("_Load List")) {
        m_home->write(QStringLiteral("app/") + QString::fromLatin1(standardListName),
            writeListFile({QStringLiteral("/only/a.jpg")}, QStringLiteral("1")));
    } else {
        for (const char *path : {"/no/a.jpg", "/no/b.jpg", "/no/c.jpg"})
            QVERIFY(viewer().lstDisplay->addItem(QString::fromLatin1(path)));
        viewer().lblCount->setText(QStringLiteral("3"));
        viewer().lstDisplay->selectOnly(1);
        viewer().ShowSelectedDisplayItem();
    }
    auto &dialogs = ScriptedDialogs::install();
    if (label.contains(QLatin1String("_Time")))
        dialogs.answerText(QStringLiteral("17"));
    click(label);
    QTRY_COMPARE(viewer().CurrentPicture->text(), position);
    if (label.contains(QLatin1String("_Time")))
        QTRY_COMPARE(globals.SlideShowInterval, 17);
    else if (label == QLatin1String("_Save List"))
        QTRY_VERIFY(FileExists(standard));
    else if (label == QLatin1String("_Run Full Screen Media Show"))
        QTRY_VERIFY(viewer().mnuSlideShowFullScreen->isChecked());
}

void tst_frmSystemTray::underAModalWindowNoCommandRuns()
{
    showTray();
    m_home->write(QStringLiteral("app/") + QString::fromLatin1(standardListName),
        writeListFile({QStringLiteral("/only/a.jpg")}, QStringLiteral("1")));
    QDialog question(&viewer());
    question.setModal(true);
    question.show();
    QVERIFY(QTest::qWaitForWindowExposed(&question));
    click(QStringLiteral("_Load List"));
    viewer().mnuOptionsMinimizeSystemTray->setChecked(true);
    click(QStringLiteral("Mi_nimize"));
    QTRY_VERIFY(viewer().isMinimized());
    QCoreApplication::processEvents();
    QVERIFY(viewer().isVisible());
    QVERIFY(viewer().lstDisplay->isEmpty());
}

void tst_frmSystemTray::exitEndsTheProgram()
{
    showTray();
    click(QStringLiteral("_Exit"));
    QTRY_VERIFY(globals.ProgramExiting);
}

void tst_frmSystemTray::oneClickBringsTheViewerUp()
{
    showTray();
    activate("SecondaryActivate");
    ignore(call("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Scroll", {120, QStringLiteral("vertical")}));
    QCoreApplication::processEvents();
    QVERIFY(!viewer().isMaximized());
    activate("Activate");
    QTRY_VERIFY(viewer().isMaximized());
    click(QStringLiteral("Mi_nimize"));
    QTRY_VERIFY(viewer().isMinimized());
    click(QStringLiteral("_Restore"));
    QTRY_VERIFY(viewer().isVisible() && viewer().windowState() == Qt::WindowNoState);
}

void tst_frmSystemTray::aMinimisedViewerWaitsInTheTray_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<Qt::WindowStates>("state");
    const auto row = [](const char *way, Qt::WindowStates state) {
        QTest::newRow(way) << QString::fromLatin1(way) << state;
    };
    row("Activate", Qt::WindowMaximized);
    row("_Restore", Qt::WindowNoState);
    row("a later start", Qt::WindowNoState);
    row("the tray goes away", Qt::WindowMinimized);
    row("the icons are drawn no more", Qt::WindowMinimized);
}

void tst_frmSystemTray::aMinimisedViewerWaitsInTheTray()
{
    QFETCH(QString, way);
    QFETCH(Qt::WindowStates, state);
    showTray();
    viewer().mnuOptionsMinimizeSystemTray->setChecked(true);
    viewer().showMinimized();
    QTRY_VERIFY(!viewer().isVisible());
    QVERIFY(tray().holdsMainViewer());
    click(QStringLiteral("Mi_nimize"));
    QVERIFY(!viewer().isVisible());
    if (way == QLatin1String("Activate"))
        activate("Activate");
    else if (way == QLatin1String("a later start"))
        commandArrived(QString(), QString());
    else if (way == QLatin1String("the tray goes away"))
        m_tray.reset();
    else if (way == QLatin1String("the icons are drawn no more"))
        m_tray->setHost(false);
    else
        click(way);
    QTRY_VERIFY(viewer().isVisible());
    QTRY_COMPARE(viewer().windowState(), state);
    QVERIFY(!tray().holdsMainViewer());
}

void tst_frmSystemTray::withoutTheMarkItMinimisesAsAny()
{
    showTray();
    viewer().showMinimized();
    QTRY_VERIFY(viewer().isMinimized());
    QCoreApplication::processEvents();
    QVERIFY(viewer().isVisible());
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
