// Times the Media Show from the inside: each step from its tick to the painted picture, and the memory over many steps.
//
//     bench_show FOLDER [viewer|fullscreen] [INTERVAL] [STEPS]
//
// FOLDER holds pictures, INTERVAL are the milliseconds between two ticks (1000), STEPS how many of them (100). Other
// intervals than whole seconds scale the show: its timer ticks faster than a user can set it. See bench/show.sh.

#include "app/globals.h"
#include "engine/isolation.h"
#include "platform/files.h"
#include "ui/icons.h"
#include "viewer/frmMainViewer.h"
#include "viewer/frmSlideShowFullScreen.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unistd.h>

namespace {

constexpr int stepsBetweenLooksAtMemory = 100;

double residentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// Milliseconds of processor time that this thread has used: what a step costs, however busy the machine is otherwise.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

void waitFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

QStringList picturesIn(const QString &folder)
{
    QStringList pictures;
    if (const auto listing = listFolder(folder)) {
        for (const QString &name : listing->files)
            pictures.append(folder + QLatin1Char('/') + name);
    }
    return pictures;
}

void report(const char *name, QVector<double> values)
{
    std::sort(values.begin(), values.end());
    const auto late = std::count_if(values.begin(), values.end(), [](double value) { return value > 20; });
    std::printf("%-12s %4d steps  from the tick to the painted picture: median %6.2f  worst %6.2f ms  over 20 ms: %d\n",
        name, int(values.size()), values[values.size() / 2], values.last(), int(late));
    std::fflush(stdout);
}

void runShow(frmMainViewer &window, bool fullScreen, int interval, int steps)
{
    if (fullScreen)
        window.mnuSlideShowFullScreen_Click();
    else
        window.mnuSlideShowRunSlideShow_Click();
    waitFor(2000); // the window stands, the next pictures are decoded
    QElapsedTimer clock;
    QEventLoop loop;
    QVector<double> delays;
    int tick = 0;
    ImagePane *pane = fullScreen ? form<frmSlideShowFullScreen>().imgImage : window.Image1;
    QObject::connect(pane, &ImagePane::painted, &loop, [&] {
        // Ticks come at whole multiples of the interval, however late the ones before were.
        const double now = double(clock.nsecsElapsed()) / 1e6;
        tick = std::max(tick + 1, int(now / interval));
        delays.append(now - double(tick) * interval);
        if (delays.size() % stepsBetweenLooksAtMemory == 0) {
            std::printf("             after %4d steps: %6.1f MB resident\n", int(delays.size()), residentMegabytes());
            std::fflush(stdout);
        }
        if (delays.size() >= steps)
            loop.quit();
    });
    std::printf("             at the beginning: %6.1f MB resident\n", residentMegabytes());
    clock.start();
    const double before = processorTime();
    window.tmrSlideShow.start(interval);
    loop.exec();
    std::printf("             %d ticks for %d steps, %.2f ms of processor time each in the thread of the windows\n",
        int(clock.elapsed() / interval), int(delays.size()), (processorTime() - before) / double(delays.size()));
    report(fullScreen ? "full screen" : "Main Viewer", delays);
}

}

int main(int argc, char **argv)
{
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    qputenv("XDG_STATE_HOME", home.path().toUtf8());
    qputenv("LUMORA_APP_FOLDER", home.path().toUtf8());
    startDecoderProcesses();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    installIconThemes();
    const QStringList arguments = QApplication::arguments();
    const QStringList pictures = picturesIn(arguments.value(1));
    const int interval = arguments.value(3, QStringLiteral("1000")).toInt();
    const int steps = arguments.value(4, QStringLiteral("100")).toInt();
    if (pictures.size() < 2 || interval < 1 || steps < 1) {
        std::fprintf(stderr, "usage: bench_show FOLDER [viewer|fullscreen] [INTERVAL] [STEPS]\n");
        return 2;
    }
    auto &window = form<frmMainViewer>();
    window.resize(1180, 780);
    window.show();
    waitFor(500);
    window.lstDisplay->addItems(pictures);
    window.lblCount->setText(QString::number(pictures.size()));
    window.tabFileList->setCurrentIndex(1);
    window.UpdateMenuAndToolbarState();
    window.mnuSlideShowLoopAround->setChecked(true);
    window.lstDisplay->selectOnly(0);
    waitFor(500);
    globals.SlideShowInterval = 30; // the measured ticks come from another start of the timer
    runShow(window, arguments.value(2) == QLatin1String("fullscreen"), interval, steps);
    std::fflush(stdout);
    std::_Exit(0);
}
