// Times a run over a list that puts a thumbnail of every file into an empty cache.
//
//     bench_thumbnails FOLDER [SIZE|all] [EVERY]     FOLDER holds pictures; LUMORA_DATA is the folder of images.dat
//
// SIZE is the edge of the thumbnails (100), "all" makes all fifteen sizes. Prints the seconds of the run, the longest
// time that the windows took no input, and the resident memory of the program after every EVERY (250) thumbnails.

#include "engine/isolation.h"
#include "platform/files.h"
#include "platform/filetransfer.h"
#include "shell/frmPreferences.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmMakeThumbNails.h"
#include "thumbnails/frmThumbNail.h"
#include "thumbnails/imagesschema.h"
#include "ui/icons.h"
#include "ui/yield.h"
#include "viewer/frmMainViewer.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <unistd.h>
#include <utility>

namespace {

double residentMegabytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / 1e6;
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

/// Milliseconds of processor time of the windows' thread.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// Milliseconds that the windows' thread was ready to run and had no core.
double queuedTime()
{
    QFile file(QStringLiteral("/proc/thread-self/schedstat"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toDouble() / 1e6 : 0;
}

/// Ticks all the time: the longest gap is the longest time that a click would have had to wait. On a busy machine it is
/// the others' time as well, in which the thread waits for a core; the rest is this program's own.
class InputWatch
{
public:
    InputWatch()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
        m_since.start();
        m_used = processorTime();
        m_queued = queuedTime();
        m_timer.start(1);
    }
    void report() const
    {
        std::printf("input waited for %.1f ms at most, at %s, %.1f of them for a core; else for %.1f ms, at %s;"
                    " the windows computed for %.1f ms at a time\n",
            m_longest.time, qPrintable(m_longest.place), m_longest.queued, m_own.time - m_own.queued,
            qPrintable(m_own.place), m_mostUsed);
    }

private:
    struct Gap
    {
        double time = 0; ///< milliseconds
        double queued = 0; ///< milliseconds of them
        QString place;
    };
    void tick()
    {
        const double queuedNow = queuedTime();
        const double usedNow = processorTime();
        Gap gap{double(m_since.nsecsElapsed()) / 1e6, queuedNow - std::exchange(m_queued, queuedNow), {}};
        m_since.restart();
        gap.place = isLoaded<frmMakeThumbNails>() ? form<frmMakeThumbNails>().lblFileName->text()
                                                  : QStringLiteral("the viewer");
        m_mostUsed = std::max(m_mostUsed, usedNow - std::exchange(m_used, usedNow));
        if (gap.time > m_longest.time)
            m_longest = gap;
        if (gap.time - gap.queued > m_own.time - m_own.queued)
            m_own = gap;
    }
    QTimer m_timer;
    QElapsedTimer m_since;
    double m_used = 0;
    double m_queued = 0;
    double m_mostUsed = 0; ///< milliseconds
    Gap m_longest;
    Gap m_own; ///< the longest without the time that others had the cores
};

/// The files that have been told, by the yields of the run.
void watchMemory(int every)
{
    static QString last;
    static int files = 0;
    setYieldHook([every](int) {
        if (!isLoaded<frmMakeThumbNails>())
            return;
        const QString told = form<frmMakeThumbNails>().lblFileCount->text();
        if (std::exchange(last, told) == told || ++files % every != 0)
            return;
        std::printf("after %6d thumbnails: %6.1f MB resident\n", files, residentMegabytes());
        std::fflush(stdout);
    });
}

void run(const QStringList &pictures, int size, bool allSizes, int every)
{
    auto &list = *form<frmMainViewer>().lstDisplay;
    list.addItems(pictures);
    form<frmPreferences>().chkCacheThumbnails->setChecked(true);
    auto &viewer = form<frmThumbNail>();
    viewer.ThumbnailSize = size;
    form<frmDataBase>().CloseDatabase();
    form<frmDataBase>().OpenImagesDatabase(QString::number(size));
    std::printf("at the beginning:        %6.1f MB resident\n", residentMegabytes());
    watchMemory(every);
    QElapsedTimer clock;
    const InputWatch watch;
    clock.start();
    if (allSizes)
        viewer.mnuThumbnailsGenerateAllSizes_Click();
    else
        viewer.mnuThumbnailsGenerateAll_Click();
    const double seconds = double(clock.elapsed()) / 1e3;
    setYieldHook({});
    form<frmDataBase>().CloseDatabase();
    form<frmDataBase>().OpenImagesDatabase(QStringLiteral("All"));
    std::printf("%d thumbnails in %.2f seconds, %.1f a second\n", form<frmDataBase>().RecordTotal, seconds,
        form<frmDataBase>().RecordTotal / seconds);
    watch.report();
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
    const bool allSizes = arguments.value(2) == QStringLiteral("all");
    const int size = allSizes ? 100 : arguments.value(2, QStringLiteral("100")).toInt();
    const int every = arguments.value(3, QStringLiteral("250")).toInt();
    const QString data = qEnvironmentVariable("LUMORA_DATA") + QLatin1Char('/') + QLatin1String(imagesTemplateFile);
    const bool hasTemplate =
        bool(copyFile(data, home.path() + QLatin1Char('/') + QLatin1String(imagesTemplateFile), false));
    if (pictures.isEmpty() || size < 1 || every < 1 || !hasTemplate) {
        std::fprintf(stderr, "usage: LUMORA_DATA=FOLDER bench_thumbnails FOLDER [SIZE|all] [EVERY]\n");
        return 2;
    }
    run(pictures, size, allSizes, every);
    stopDecoderProcesses();
    return 0;
}
