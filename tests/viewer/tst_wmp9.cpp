#include "builtpaths.h"
#include "support/privatebus.h"
#include "support/support.h"
#include "viewer/playercontrols.h"
#include "viewer/wmp9.h"

#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtTest>

namespace {

/// A player that writes down what it is told.
class NotingPlayer final : public Player
{
public:
    QStringList notes;
    PlayState state = Stopped;
    double length = 0;
    double position = 0;
    bool picture = true;
    Content kind = Video;
    QSize shape; ///< of its frames; as asked for when it is empty
    QSize asked;

    void change(PlayState now)
    {
        state = now;
        Q_EMIT playStateChanged(now);
    }
    void setUrl(const QString &path) override { note(QStringLiteral("url"), path); }
    QString url() const override { return QString(); }
    void play() override { note(QStringLiteral("play")); }
    void pause() override { note(QStringLiteral("pause")); }
    void stop() override { note(QStringLiteral("stop")); }
    PlayState playState() const override { return state; }
    Content content() const override { return kind; }
    int volume() const override { return 0; }
    void setVolume(int volume) override { note(QStringLiteral("volume"), QString::number(volume)); }
    bool isMuted() const override { return false; }
    void setMuted(bool muted) override { note(QStringLiteral("muted"), QString::number(muted)); }
    double duration() const override { return length; }
    double currentPosition() const override { return position; }
    void setCurrentPosition(double seconds) override
    {
        position = seconds;
        note(QStringLiteral("position"), QString::number(seconds, 'f', 1));
    }
    QImage frame(QSize size) override
    {
        asked = size;
        QImage image;
        if (picture) {
            image = QImage(shape.isEmpty() ? size : shape, QImage::Format_RGB32);
            image.fill(Qt::red);
        }
        return image;
    }
    void setVisible(bool visible) override { note(QStringLiteral("visible"), QString::number(visible)); }

private:
    void note(const QString &what, const QString &value = QString())
    {
        notes.append(value.isNull() ? what : what + QLatin1Char(' ') + value);
    }
};

}

class TestWmp9 : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aPlayerIsMadeAtTheFirstFileOnly();
    void withoutAPlayerNothingHappens();
    void framesFillTheRectangleAboveTheBarInDevicePixels();
    void soundShowsANoteAndItsName();
    void aVideoThatPlaysKeepsTheScreenAwake();
    void theKeysWorkThePlayer();
    void onlyAPersonsVolumeIsTold();
    void hiddenPlayersAreToldSo();
    void theBarWorksThePlayer();
    void theBarFollowsThePlayer();
    void theBarLeavesTheFocusWhereItWas();
    void everyControlOfTheBarHasAName();
    void aFilmIsSeenAndEnds();

private:
    template <class T> T *part(const char *name) const { return m_control->findChild<T *>(QLatin1String(name)); }
    NotingPlayer *noting();
    QStringList notes();

    TemporaryHome m_home;
    std::unique_ptr<MediaPlayerControl> m_control;
    NotingPlayer *m_noting = nullptr;
};

void TestWmp9::initTestCase()
{
    qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules");
}

void TestWmp9::init()
{
    m_control = std::make_unique<MediaPlayerControl>();
    m_control->resize(400, 300);
}

void TestWmp9::cleanup()
{
    m_control.reset();
}

NotingPlayer *TestWmp9::noting()
{
    auto player = std::make_unique<NotingPlayer>();
    m_noting = player.get();
    m_control->setPlayer(std::move(player));
    m_noting->notes.clear();
    return m_noting;
}

QStringList TestWmp9::notes()
{
    return std::exchange(m_noting->notes, {});
}

void TestWmp9::aPlayerIsMadeAtTheFirstFileOnly()
{
    // An empty folder of modules would show in a warning if a player were asked for.
    qputenv("LUMORA_MODULES", "/nowhere");
    m_control->setUrl(QString());
    m_control->stop();
    m_control->pause();
    m_control->setVolume(40);
    m_control->setCurrentPosition(3);
    qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules");
    QCOMPARE(m_control->playState(), 1);
    QCOMPARE(m_control->volume(), 40);
    QCOMPARE(m_control->duration(), 0.0);

    QSignalSpy states(m_control.get(), &MediaPlayerControl::PlayStateChange);
    m_control->setUrl(m_home.path() + QStringLiteral("missing.wav"));
    m_control->play();
    QCOMPARE(m_control->playState(), 9);
    QTRY_COMPARE(m_control->playState(), 1);
    QCOMPARE(states.size(), 2);
    m_control->shutDown();
    QCOMPARE(m_control->playState(), 1);
    m_control->play();
    QCOMPARE(m_control->playState(), 9);
}

void TestWmp9::withoutAPlayerNothingHappens()
{
    qputenv("LUMORA_MODULES", "/nowhere");
    m_control->setUrl(QStringLiteral("/a.wav"));
    m_control->play();
    m_control->setVolume(55);
    qputenv("LUMORA_MODULES", LUMORA_BIN "/lumora-modules");
    m_control->play();
    QCOMPARE(m_control->playState(), 1);
    QCOMPARE(m_control->url(), QStringLiteral("/a.wav"));
    QCOMPARE(m_control->volume(), 55);
    QVERIFY(!m_control->grab().isNull());
}

void TestWmp9::framesFillTheRectangleAboveTheBarInDevicePixels()
{
    noting();
    m_control->setUrl(QStringLiteral("/film.avi"));
    const QImage shown = m_control->grab().toImage();
    const int bar = m_control->findChild<PlayerControls *>()->height();
    const qreal ratio = shown.devicePixelRatio();
    QVERIFY(bar > 15 && bar < 80);
    QCOMPARE(m_noting->asked, (QSizeF(400, 300 - bar) * ratio).toSize());
    QCOMPARE(shown.pixelColor(QPoint(2, 2)), QColor(Qt::red));
    QCOMPARE(shown.pixelColor(QPointF(398, 299 - bar).toPoint() * ratio), QColor(Qt::red));

    // A frame of another shape stands in the middle, with black around it also where the one before was.
    m_noting->shape = QSize(200, 100);
    const QImage wide = m_control->grab().toImage();
    QCOMPARE(wide.pixelColor(QPoint(200, (300 - bar) / 2) * ratio), QColor(Qt::red));
    for (const QPoint corner : {QPoint(2, 2), QPoint(398, 299 - bar), QPoint(200, 40)})
        QCOMPARE(wide.pixelColor(corner * ratio), QColor(Qt::black));
    m_noting->shape = QSize();

    m_control->resize(200, 100);
    QVERIFY(!m_control->grab().isNull());
    QVERIFY(part<QSlider>("position")->isVisibleTo(m_control.get())
        && !part<QSlider>("volume")->isVisibleTo(m_control.get()));
    m_control->resize(100, 10);
    QVERIFY(!m_control->grab().isNull());
}

void TestWmp9::soundShowsANoteAndItsName()
{
    noting()->picture = false;
    m_noting->kind = Player::Unknown;
    m_noting->length = 3;
    m_control->setUrl(QStringLiteral("/music/a song.mp3"));
    const auto colors = [&] {
        const QImage shown = m_control->grab(QRect(0, 0, 400, 260)).toImage();
        QSet<QRgb> found;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                found.insert(shown.pixel(x, y));
        return found.size();
    };
    QVERIFY2(colors() == 1 && !m_control->isReady(), "black while it loads, also when its length is known");
    m_noting->kind = Player::Sound;
    QVERIFY(colors() > 10 && m_control->isReady());
    const QImage first = m_control->grab().toImage();
    m_control->setUrl(QStringLiteral("/music/another.mp3"));
    QVERIFY2(m_control->grab().toImage() != first, "the name is part of it");
    m_noting->kind = Player::Video;
    QVERIFY2(colors() == 1, "a film that is over leaves black");
}

void TestWmp9::aVideoThatPlaysKeepsTheScreenAwake()
{
    const PrivateBus bus;
    SKIP_WITHOUT_BUS(bus);
    NotingService saver(bus.address(), QStringLiteral("org.freedesktop.ScreenSaver"));
    saver.answer = [](const QDBusMessage &call) { return call.createReply(7U); };
    noting()->kind = Player::Sound;
    m_control->setUrl(QStringLiteral("/a.avi"));
    m_noting->change(Player::Playing);
    m_noting->change(Player::Stopped);
    m_noting->kind = Player::Unknown;
    m_noting->change(Player::Playing);
    QVERIFY2(saver.calls.isEmpty(), "a sound needs no screen");
    m_noting->kind = Player::Video;
    Q_EMIT m_noting->frameReady();
    QTRY_COMPARE(saver.calls.size(), 1);
    m_noting->change(Player::Paused);
    QTRY_COMPARE(saver.calls.size(), 2);
    QVERIFY(saver.calls.last().endsWith(QLatin1String("UnInhibit(7)")));
    m_noting->change(Player::Playing);
    QTRY_COMPARE(saver.calls.size(), 3);
    m_control->shutDown();
    QTRY_COMPARE(saver.calls.size(), 4);
}

void TestWmp9::theKeysWorkThePlayer()
{
    noting()->length = 100;
    m_control->setUrl(QStringLiteral("/film.avi"));
    m_control->setVolume(50);
    notes();
    const auto press = [&](Qt::Key key) {
        QTest::keyClick(m_control.get(), key);
        return notes().join(QLatin1Char(','));
    };
    QCOMPARE(press(Qt::Key_Right), QString());
    QCOMPARE(press(Qt::Key_Space), QStringLiteral("play"));
    m_noting->change(Player::Playing);
    m_noting->position = 3;
    QCOMPARE(press(Qt::Key_Right), QStringLiteral("position 8.0"));
    QCOMPARE(press(Qt::Key_Left), QStringLiteral("position 3.0"));
    QCOMPARE(press(Qt::Key_Left), QStringLiteral("position 0.0"));
    m_noting->position = 70;
    QCOMPARE(press(Qt::Key_Home), QStringLiteral("position 0.0"));
    QCOMPARE(press(Qt::Key_Space), QStringLiteral("pause"));
    QCOMPARE(press(Qt::Key_Up), QStringLiteral("volume 55"));
    QCOMPARE(press(Qt::Key_M), QStringLiteral("muted 1"));
    QCOMPARE(press(Qt::Key_S), QStringLiteral("stop"));
    QTest::keyClick(m_control.get(), Qt::Key_S, Qt::ControlModifier);
    QVERIFY2(notes().isEmpty(), "keys with Ctrl belong to the menus");

    // The media keys need no focus, only the window. The slider that has it leaves Space to the player.
    m_control->show();
    QVERIFY(QTest::qWaitForWindowActive(m_control.get()));
    part<QSlider>("volume")->setFocus();
    notes();
    for (const Qt::Key key : {Qt::Key_MediaTogglePlayPause, Qt::Key_MediaStop, Qt::Key_Space})
        QTest::sendKeyEvent(QTest::Click, m_control->windowHandle(), key, QString(), Qt::NoModifier);
    QStringList told = notes();
    told.removeAll(QStringLiteral("visible 1"));
    QCOMPARE(told, (QStringList{QStringLiteral("pause"), QStringLiteral("stop"), QStringLiteral("pause")}));
}

void TestWmp9::onlyAPersonsVolumeIsTold()
{
    noting();
    QSignalSpy chosen(m_control.get(), &MediaPlayerControl::VolumeChosen);
    m_control->setVolume(30);
    auto *slider = part<QSlider>("volume");
    slider->setSliderDown(true);
    slider->setValue(20);
    slider->setValue(10);
    QVERIFY(chosen.isEmpty() && m_control->volume() == 10);
    slider->setSliderDown(false);
    QCOMPARE(chosen.size(), 1);
    QTest::keyClick(m_control.get(), Qt::Key_Down);
    QTest::keyClick(m_control.get(), Qt::Key_Down);
    QTest::keyClick(m_control.get(), Qt::Key_Down);
    QCOMPARE(chosen.last().first().toInt(), 0);
    const auto turn = [&](int delta) {
        QWheelEvent event({5, 5}, {5, 5}, {}, {0, delta}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(m_control.get(), &event);
    };
    turn(60);
    QCOMPARE(m_control->volume(), 0);
    turn(60);
    QCOMPARE(chosen.last().first().toInt(), 5);
}

void TestWmp9::hiddenPlayersAreToldSo()
{
    noting();
    m_control->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_control.get()));
    QVERIFY(notes().contains(QStringLiteral("visible 1")));
    m_control->hide();
    QCOMPARE(notes().last(), QStringLiteral("visible 0"));
    Q_EMIT m_noting->frameReady();
    QCOMPARE(notes().last(), QStringLiteral("visible 0"));
}

void TestWmp9::theBarWorksThePlayer()
{
    noting()->length = 100;
    m_control->setUrl(QStringLiteral("/film.avi"));
    notes();
    QTest::mouseClick(part<QToolButton>("playOrPause"), Qt::LeftButton);
    QCOMPARE(notes(), QStringList{QStringLiteral("play")});
    m_noting->change(Player::Playing);
    QTest::mouseClick(part<QToolButton>("playOrPause"), Qt::LeftButton);
    QTest::mouseClick(part<QToolButton>("stop"), Qt::LeftButton);
    QCOMPARE(notes(), (QStringList{QStringLiteral("pause"), QStringLiteral("stop")}));

    auto *position = part<QSlider>("position");
    QTest::mouseClick(position, Qt::LeftButton, {}, position->rect().center());
    QVERIFY2(std::abs(m_noting->position - 50) < 3, "a click leads to the place clicked at");
    notes();
    position->setValue(20000);
    QTest::keyClick(position, Qt::Key_Right);
    QCOMPARE(notes(), (QStringList{QStringLiteral("position 20.0"), QStringLiteral("position 25.0")}));

    part<QSlider>("volume")->setValue(30);
    QCOMPARE(m_control->volume(), 30);
    QTest::mouseClick(part<QToolButton>("mute"), Qt::LeftButton);
    QVERIFY(m_control->isMuted());
    QTest::mouseClick(part<QToolButton>("mute"), Qt::LeftButton);
    QCOMPARE(notes(), (QStringList{QStringLiteral("volume 30"), QStringLiteral("muted 1"), QStringLiteral("muted 0")}));
}

void TestWmp9::theBarFollowsThePlayer()
{
    noting();
    QVERIFY(!part<QToolButton>("playOrPause")->isEnabled());
    m_control->setUrl(QStringLiteral("/film.avi"));
    QVERIFY(part<QToolButton>("playOrPause")->isEnabled() && !part<QSlider>("position")->isEnabled());
    m_noting->length = 200;
    Q_EMIT m_noting->durationChanged();
    QCOMPARE(part<QLabel>("time")->text(), QStringLiteral("0:00 / 3:20"));
    notes();
    m_noting->change(Player::Playing);
    m_noting->position = 61.9;
    QTRY_COMPARE(part<QLabel>("time")->text(), QStringLiteral("1:01 / 3:20"));
    QCOMPARE(part<QSlider>("position")->value(), 61900);
    QVERIFY2(notes().isEmpty(), "following is not asking");
    part<QSlider>("position")->setSliderDown(true);
    m_noting->position = 90;
    QTRY_COMPARE(part<QLabel>("time")->text(), QStringLiteral("1:30 / 3:20"));
    QCOMPARE(part<QSlider>("position")->value(), 61900);
    part<QSlider>("position")->setSliderDown(false);

    m_noting->length = 1e300;
    Q_EMIT m_noting->durationChanged();
    m_control->setVolume(12);
    QCOMPARE(part<QSlider>("volume")->value(), 12);
    m_noting->change(Player::Stopped);
    QVERIFY(!part<QToolButton>("stop")->isEnabled());
    QCOMPARE(notes(), QStringList{QStringLiteral("volume 12")});
}

void TestWmp9::theBarLeavesTheFocusWhereItWas()
{
    QWidget window;
    auto *layout = new QVBoxLayout(&window);
    auto *edit = new QLineEdit(&window);
    layout->addWidget(edit);
    auto *control = m_control.release();
    layout->addWidget(control);
    m_control.reset();
    control->setPlayer(std::make_unique<NotingPlayer>());
    control->setUrl(QStringLiteral("/film.avi"));
    window.resize(400, 300);
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    edit->setFocus();
    for (QWidget *each : control->findChildren<QWidget *>()) {
        QTest::mouseClick(each, Qt::LeftButton);
        QVERIFY2(edit->hasFocus(), qPrintable(each->objectName()));
    }
    QTest::keyClick(edit, Qt::Key_Tab);
    QVERIFY(control->hasFocus());
    QTest::keyClick(control, Qt::Key_Tab);
    QVERIFY(control->isAncestorOf(QApplication::focusWidget()));
    edit->setFocus();
    QTest::mouseClick(control, Qt::LeftButton, {}, QPoint(20, 20));
    QVERIFY2(control->hasFocus(), "the keys are for the player after a click on the picture");
}

void TestWmp9::everyControlOfTheBarHasAName()
{
    QSet<QString> names;
    for (QWidget *each : m_control->findChild<PlayerControls *>()->findChildren<QWidget *>()) {
        if (each->focusPolicy() == Qt::NoFocus)
            continue;
        QVERIFY2(!each->accessibleName().isEmpty() && !each->toolTip().isEmpty(), qPrintable(each->objectName()));
        names.insert(each->accessibleName());
    }
    QCOMPARE(names.size(), 5);
}

void TestWmp9::aFilmIsSeenAndEnds()
{
    SKIP_WITHOUT_SAMPLES();
    m_control->setPlayer(
        createPlayer({{QStringLiteral("ao"), QStringLiteral("null")}, {QStringLiteral("speed"), QStringLiteral("2")}}));
    m_control->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_control.get()));
    QSignalSpy states(m_control.get(), &MediaPlayerControl::PlayStateChange);
    m_control->setUrl(samplesFolder() + QStringLiteral("media/count.wmv"));
    QTRY_VERIFY(m_control->isReady());
    QVERIFY2(m_control->grab().toImage().pixelColor(200, 130).red() > 240, "ready means that the first frame is there");
    const auto middle = [&] { return m_control->grab().toImage().pixelColor(200, 130); };
    m_control->play();
    QTRY_VERIFY(middle().green() > 240 && middle().red() < 10);
    m_control->resize(333, 222);
    QTRY_VERIFY(m_control->grab().toImage().pixelColor(160, 90).blue() > 240);
    QTRY_COMPARE(m_control->playState(), 1);
    QCOMPARE(states.last().first().toInt(), 1);
    QCOMPARE(m_control->grab().toImage().pixelColor(160, 90), QColor(Qt::black));
}

QTEST_MAIN(TestWmp9)
#include "tst_wmp9.moc"
