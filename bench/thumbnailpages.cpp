// Times the Thumbnail Viewer from the inside: pages of 60 from the cache, from the bar's new value to the painted page.
//
//     bench_thumbnailpages [ITEMS]     of a full list of 32,767 by default; LUMORA_DATA is the folder of images.dat
//
// Makes its files and its cache in a temporary folder. Prints one line per figure: name, median, worst, unit.

#include "app/globals.h"
#include "app/settings.h"
#include "engine/encode.h"
#include "platform/folders.h"
#include "shell/frmPreferences.h"
#include "thumbnails/frmDataBase.h"
#include "thumbnails/frmThumbNail.h"
#include "thumbnails/imagesdatabase.h"
#include "thumbnails/thumbnailblob.h"
#include "ui/guards.h"
#include "ui/icons.h"
#include "viewer/frmMainViewer.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {

constexpr int edge = 100;
constexpr int pictures = 40; ///< different ones
constexpr QSize gridOfSixty(1090, 640);

void report(const char *name, QVector<double> values, double limit)
{
    std::sort(values.begin(), values.end());
    const auto over = std::count_if(values.begin(), values.end(), [&](double value) { return value > limit; });
    std::printf("%-44s %5d pages  median %7.2f  99 of 100 %7.2f  worst %7.2f ms  over %.0f ms: %d\n", name,
        int(values.size()), values[values.size() / 2], values[values.size() * 99 / 100], values.last(), limit,
        int(over));
    std::fflush(stdout);
}

/// Milliseconds of processor time that this thread has used: what a page costs, however busy the machine is otherwise.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

/// The thumbnails of photographs: soft shapes with some grain.
QByteArray madeThumbnail(int number)
{
    QImage image(edge, edge, QImage::Format_RGB32);
    QPainter painter(&image);
    QLinearGradient ground(0, 0, edge, edge);
    ground.setColorAt(0, QColor::fromHsv(number * 9, 120, 220));
    ground.setColorAt(1, QColor::fromHsv(number * 17 % 360, 180, 90));
    painter.fillRect(image.rect(), ground);
    for (int grain = 0; grain < 600; ++grain)
        painter.fillRect(grain * 37 % edge, grain * 61 % edge, 2, 1, QColor(0, 0, 0, grain % 60));
    painter.end();
    PolyImage box;
    box.setPolyJpegQuality(thumbnailJpegQuality);
    box.setPolyPicture(LoadedPicture::fromPicture(Picture::fromImage(image)));
    return sealedBlob(box.ImageBlobSave(*thumbnailFormat(1)));
}

QStringList makeFiles(const QString &folder, int items)
{
    QStringList files;
    for (int number = 0; number < items; ++number) {
        files << QStringLiteral("%1/Journey %2/picture with a usual name %3.jpg")
                     .arg(folder)
                     .arg(number / 300)
                     .arg(number);
        if (number % 300 == 0)
            QDir().mkpath(QFileInfo(files.last()).path());
        QFile file(files.last());
        ignore(file.open(QIODevice::WriteOnly));
    }
    return files;
}

void fillCache(const QStringList &files)
{
    ImagesDatabase database;
    if (!database.open(AppFolder())) {
        std::puts("no cache: set LUMORA_DATA");
        std::exit(1);
    }
    QVector<QByteArray> thumbnails;
    for (int number = 0; number < pictures; ++number)
        thumbnails << madeThumbnail(number);
    ImageRecord record;
    record.date = record.thumbnailDate = QDate(2026, 11, 23);
    record.thumbnailSize = edge;
    record.compressionMode = 1;
    for (qsizetype number = 0; number < files.size(); ++number) {
        record.name = files[number];
        record.picture = thumbnails[number % pictures];
        database.add(record);
        if (number % 1000 == 999)
            database.settle();
    }
    database.close();
    database.settle();
}

void timePages(frmThumbNail &window, const char *name, const QList<int> &tops)
{
    QVector<double> clock;
    QVector<double> processor;
    for (const int top : tops) {
        QElapsedTimer timer;
        const double before = processorTime();
        timer.start();
        window.VScroll1->setValue(top);
        window.picGrid->repaint();
        clock << double(timer.nsecsElapsed()) / 1e6;
        processor << processorTime() - before;
    }
    report(name, clock, 80);
    report("  processor time of it", processor, 60);
}

}

int main(int count, char **arguments)
{
    QTemporaryDir home;
    for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
        qputenv(variable, QFile::encodeName(home.path()));
    qputenv("LUMORA_APP_FOLDER", QFile::encodeName(home.path()));
    QApplication application(count, arguments);
    installIconThemes();
    const int items = count > 1 ? std::atoi(arguments[1]) : ListBox::maximumCount;
    saveOption("UserThumbnailSize", QString::number(edge));
    QFile::copy(qEnvironmentVariable("LUMORA_DATA") + QStringLiteral("/images.dat"),
        home.filePath(QStringLiteral("images.dat")));
    const QStringList files = makeFiles(home.path(), items);
    fillCache(files);

    auto &viewer = form<frmMainViewer>();
    {
        const ScopedFlag busy(globals.ItemSelectionBusy);
        viewer.lstDisplay->addItems(files);
        viewer.lblCount->setText(QString::number(items));
        viewer.lstDisplay->setListIndex(0);
    }
    auto &window = form<frmThumbNail>();
    window.show();
    window.resize(gridOfSixty.width(), window.height() - window.picGrid->height() + gridOfSixty.height());
    QEventLoop loop;
    QTimer::singleShot(1500, &loop, &QEventLoop::quit);
    loop.exec();
    window.mnuViewerRefresh_Click();
    std::printf("%d columns, %d rows, %d items\n", window.GridColumns, window.GridRows, items);
    QList<int> pages;
    for (int top = window.PageCapacity; top <= window.VScroll1->maximum(); top += window.PageCapacity)
        pages << top;
    timePages(window, "page by page through the list", pages);
    QList<int> places;
    for (int place = 0; place < 100; ++place)
        places << int(qint64(place) * 7919 % qMax(1, window.VScroll1->maximum()));
    timePages(window, "to other places of the list", places);
    window.mnuViewerShowImageNames->trigger();
    timePages(window, "the same with names", places);
    globals.ProgramExiting = true;
    unload<frmThumbNail>();
    return 0;
}
