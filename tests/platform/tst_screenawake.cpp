#include "platform/screenawake.h"
#include "support/privatebus.h"
#include "support/support.h"

#include <QDBusObjectPath>
#include <QLocalServer>
#include <QLocalSocket>
#include <QtTest>

/// What the desktop hears while somebody holds the screen awake.
class tst_screenawake : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void theDesktopIsAskedOnceAndToldOnce();
    void theNextServiceIsAskedWhereOneIsMissing_data();
    void theNextServiceIsAskedWhereOneIsMissing();
    void withoutAnyServiceNothingHappens();
    void withoutABusNothingHappens();
    void aBusThatDoesNotAnswerHoldsNobodyUp();

private:
    QDBusMessage numbered(const QDBusMessage &call);

    TemporaryHome m_home;
    std::unique_ptr<PrivateBus> m_bus;
    uint m_number = 40;
};

namespace {
QStringList told;
}

void tst_screenawake::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("lumora.awake.debug=true"));
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) { told.append(text); });
}

void tst_screenawake::cleanupTestCase()
{
    qInstallMessageHandler(nullptr);
}

void tst_screenawake::init()
{
    told.clear();
    m_number = 40;
    m_bus = std::make_unique<PrivateBus>();
    SKIP_WITHOUT_BUS(*m_bus);
}

void tst_screenawake::cleanup()
{
    m_bus.reset();
}

/// Each request gets the next number.
QDBusMessage tst_screenawake::numbered(const QDBusMessage &call)
{
    return call.member() == QLatin1String("Inhibit") ? call.createReply(++m_number) : call.createReply();
}

void tst_screenawake::theDesktopIsAskedOnceAndToldOnce()
{
    NotingService saver(m_bus->address(), QStringLiteral("org.freedesktop.ScreenSaver"));
    saver.answer = [this](const QDBusMessage &call) { return numbered(call); };
    const QString path = QStringLiteral("/org/freedesktop/ScreenSaver org.freedesktop.ScreenSaver.");
    const QString asked = path + QStringLiteral("Inhibit(org.lumora.Lumora, Showing media)");
    ScreenAwake show;
    {
        ScreenAwake video;
        video.hold();
        video.hold();
        show.setHeld(true);
        QVERIFY(show.isHeld() && video.isHeld());
        QTRY_COMPARE(told.size(), 1);
        show.setHeld(false);
        show.hold();
        show.release();
    }
    QTRY_COMPARE(saver.calls, (QStringList{asked, path + QStringLiteral("UnInhibit(41)")}));

    // The next time is a new request. It is over before its answer comes, and given back all the same.
    saver.calls.clear();
    show.hold();
    show.release();
    QTRY_COMPARE(saver.calls, (QStringList{asked, path + QStringLiteral("UnInhibit(42)")}));
}

void tst_screenawake::theNextServiceIsAskedWhereOneIsMissing_data()
{
    QTest::addColumn<QString>("service");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("released");
    QTest::newRow("session manager")
        << QStringLiteral("org.gnome.SessionManager")
        << QStringLiteral(
               "/org/gnome/SessionManager org.gnome.SessionManager.Inhibit(org.lumora.Lumora, 0, Showing media, 8)")
        << QStringLiteral("/org/gnome/SessionManager org.gnome.SessionManager.Uninhibit(41)");
    QTest::newRow("portal") << QStringLiteral("org.freedesktop.portal.Desktop")
                            << QStringLiteral(
                                   "/org/freedesktop/portal/desktop org.freedesktop.portal.Inhibit.Inhibit(, 8, )")
                            << QStringLiteral("/request/41 org.freedesktop.portal.Request.Close()");
}

void tst_screenawake::theNextServiceIsAskedWhereOneIsMissing()
{
    QFETCH(QString, service);
    QFETCH(QString, asked);
    QFETCH(QString, released);
    // One that is there and refuses is passed over like one that is not.
    NotingService saver(m_bus->address(), QStringLiteral("org.freedesktop.ScreenSaver"));
    saver.answer = [](const QDBusMessage &call) { return call.createErrorReply(QDBusError::AccessDenied, {}); };
    NotingService other(m_bus->address(), service);
    const bool portal = service.contains(QLatin1String("portal"));
    other.answer = [this, portal](const QDBusMessage &call) {
        const QDBusMessage answer = numbered(call);
        if (!portal || call.member() != QLatin1String("Inhibit"))
            return answer;
        return call.createReply(QVariant::fromValue(QDBusObjectPath(QStringLiteral("/request/%1").arg(m_number))));
    };
    ScreenAwake video;
    video.hold();
    QTRY_COMPARE(other.calls, QStringList{asked});
    QCOMPARE(saver.calls.size(), 1);
    video.release();
    QTRY_COMPARE(other.calls, (QStringList{asked, released}));
}

void tst_screenawake::withoutAnyServiceNothingHappens()
{
    ScreenAwake video;
    video.hold();
    QTRY_COMPARE(told, QStringList{QStringLiteral("nobody keeps the screen awake")});
    video.release();
    // A desktop that comes up later is found by whoever holds next.
    NotingService saver(m_bus->address(), QStringLiteral("org.freedesktop.ScreenSaver"));
    saver.answer = [this](const QDBusMessage &call) { return numbered(call); };
    video.hold();
    QTRY_COMPARE(saver.calls.size(), 1);
}

void tst_screenawake::withoutABusNothingHappens()
{
    m_bus.reset();
    ScreenAwake video;
    video.hold();
    QVERIFY(video.isHeld());
    video.release();
    // And one that comes later is found.
    m_bus = std::make_unique<PrivateBus>();
    NotingService saver(m_bus->address(), QStringLiteral("org.freedesktop.ScreenSaver"));
    video.hold();
    QTRY_COMPARE(saver.calls.size(), 1);
}

/// The handshake with it never ends; what is held and released meanwhile comes back at once.
void tst_screenawake::aBusThatDoesNotAnswerHoldsNobodyUp()
{
    QLocalServer deaf;
    QVERIFY(deaf.listen(m_home.path() + QStringLiteral("deaf")));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + deaf.fullServerName().toUtf8());
    ScreenAwake video;
    video.hold();
    QTRY_VERIFY(deaf.hasPendingConnections());
    video.release();
    video.hold();
    QVERIFY(video.isHeld());
    // Hanging up lets the thread that joins go.
    delete deaf.nextPendingConnection();
    deaf.close();
}

QTEST_GUILESS_MAIN(tst_screenawake)
#include "tst_screenawake.moc"
