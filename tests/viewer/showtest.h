#pragma once

#include "app/globals.h"
#include "engine/picturecache.h"
#include "engine/player.h"
#include "support/support.h"
#include "support/windows.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmSlideShowFullScreen.h"
#include "viewer/shuffle.h"

#include <QScreen>
#include <QTimerEvent>
#include <QtTest>

/// A player that is in the state it is put into, and plays at once when told to.
class ObedientPlayer final : public Player
{
public:
    PlayState state = Stopped;
    QString file;
    double position = 61.9;
    int plays = 0;
    static constexpr QRgb frameColor = 0xff40c080;

    void change(PlayState now)
    {
        state = now;
        Q_EMIT playStateChanged(now);
    }
    void setUrl(const QString &path) override
    {
        file = path;
        change(Stopped);
    }
    QString url() const override { return file; }
    void play() override
    {
        ++plays;
        change(Playing);
    }
    void pause() override { change(Paused); }
    void stop() override { change(Stopped); }
    PlayState playState() const override { return state; }
    int volume() const override { return 100; }
    void setVolume(int) override { }
    bool isMuted() const override { return false; }
    void setMuted(bool) override { }
    double duration() const override { return 3725.4; }
    double currentPosition() const override { return position; }
    void setCurrentPosition(double seconds) override { position = seconds; }
    QImage frame(QSize size) override
    {
        QImage frame(size, QImage::Format_RGB32);
        frame.fill(frameColor);
        return frame;
    }
    void setVisible(bool) override { }
};

/// Looks at the screen before each event of a widget, so at least once in each frame, and keeps every colour it sees.
class FrameWatch : public QObject
{
public:
    explicit FrameWatch(const std::function<QColor()> &look)
        : m_look(look)
    {
        qApp->installEventFilter(this);
    }
    QVector<QColor> seen;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        // Half of a frame is seen by nobody: a window hands it over when all of it is painted.
        if (watched->isWidgetType() && event->type() != QEvent::Paint) {
            const QColor color = m_look();
            if (seen.isEmpty() || seen.last() != color)
                seen.append(color);
        }
        return false;
    }

private:
    std::function<QColor()> m_look;
};

/// What the tests of the show share: a shown Main Viewer, pictures of one colour each, and a tick on demand.
class ShowTest : public QObject
{
protected:
    frmMainViewer &viewer() { return form<frmMainViewer>(); }
    frmSlideShowFullScreen &fullScreen() { return form<frmSlideShowFullScreen>(); }
    static bool isFullScreenLoaded() { return isLoaded<frmSlideShowFullScreen>(); }
    QAction *slideButton() { return viewer().toolbarButton(QStringLiteral("slide")); }
    const TemporaryHome &home() const { return *m_home; }

    bool start()
    {
        useBuiltModules();
        m_home = std::make_unique<TemporaryHome>();
        if (!showMainViewer())
            return false;
        QRgb color = 0xff000000;
        for (const QChar name : QStringLiteral("abcdefgh")) {
            color += 0x1f;
            m_pictures.append(m_home->writePicture(name + QStringLiteral(".png"), {40, 30}, color ^ 0x00ff00));
        }
        return true;
    }

    /// Idle, forward, without loop, an empty list and a fresh shuffle.
    ScriptedDialogs &fresh()
    {
        ScriptedDialogs &dialogs = ScriptedDialogs::install();
        unload<frmSlideShowFullScreen>();
        viewer().ClearDisplayList();
        viewer().cmdClearSelectionList_Click();
        viewer().mnuSlideShowForwardOrder->trigger();
        viewer().mnuSlideShowViewerOnly->trigger();
        viewer().mnuSlideShowLoopAround->setChecked(false);
        globals.SlideShowInterval = 5;
        globals.ShowStopRequested = false;
        shuffleNumbers().setSource([generator = QRandomGenerator(5)]() mutable { return generator.generateDouble(); });
        return dialogs;
    }

    /// Puts paths into the Display list and shows the one at a 1-based position.
    void fill(const QStringList &paths, int position = 1)
    {
        viewer().tabFileList->setCurrentIndex(1);
        viewer().lstDisplay->addItems(paths);
        viewer().lblCount->setText(QString::number(paths.size()));
        viewer().UpdateMenuAndToolbarState();
        viewer().lstDisplay->selectOnly(position - 1);
    }
    QStringList pictures(int count) const { return m_pictures.first(count); }

    /// The event that an elapsed interval sends.
    void tick() { elapse(viewer().tmrSlideShow); }
    static void elapse(QTimer &timer)
    {
        QTimerEvent elapsed(timer.timerId());
        QCoreApplication::sendEvent(&timer, &elapsed);
    }
    int current() { return globals.CurrentListIndex; }
    QString caption(const QAction *item) const { return item->text(); }

    /// Everything that tells of a show says that there is none.
    bool isIdle()
    {
        return !viewer().mnuSlideShowRunSlideShow->isChecked() && !viewer().mnuSlideShowFullScreen->isChecked()
            && !viewer().mnuSlideShowFullViewer->isVisible() && !slideButton()->isChecked() && !globals.AutoPlayMotion
            && !viewer().tmrSlideShow.isActive() && !viewer().tmrShowPlayTime.isActive()
            && viewer().tmrSlideShow.interval() == 0
            && viewer().mnuSlideShowRunSlideShow->text() == QLatin1String("S&tart Media Show")
            && viewer().mnuSlideShowFullScreen->text() == QLatin1String("&Start Full Screen Media Show");
    }

    ObedientPlayer *usePlayer()
    {
        globals.MediaPlayerVersion = 9.0f;
        auto player = std::make_unique<ObedientPlayer>();
        ObedientPlayer *pointer = player.get();
        viewer().wmp9->setPlayer(std::move(player));
        return pointer;
    }
    void withoutPlayer()
    {
        viewer().wmp9->shutDown();
        viewer().tmrShowPlayTime.stop();
        globals.MediaPlayerVersion = 0;
    }
    /// A file that the player's double plays.
    QString motion(const QString &name) const { return m_home->write(name, "only its name counts"); }

    /// The middle of a control as it stands on the screen.
    static QColor onScreen(QWidget &widget)
    {
        const QPoint middle = widget.mapTo(widget.window(), widget.rect().center());
        const QPixmap grab = widget.screen()->grabWindow(widget.window()->winId(), middle.x(), middle.y(), 1, 1);
        return grab.toImage().pixelColor(0, 0);
    }

private:
    std::unique_ptr<TemporaryHome> m_home;
    QStringList m_pictures;
};
