// Times the thumbnail cache at its largest: half a million records.
//
//     bench_thumbnaildb [FOLDER [RECORDS]]     FOLDER has room for 3 GB and holds the template images.dat
//
// Prints one line per figure: name, median, worst, unit.

#include "engine/encode.h"
#include "platform/files.h"
#include "platform/filetransfer.h"
#include "platform/folders.h"
#include "thumbnails/imagescompaction.h"
#include "thumbnails/imagesdatabase.h"
#include "thumbnails/imagesschema.h"
#include "thumbnails/thumbnailblob.h"
#include "thumbnails/thumbnailsize.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int usualRecords = 500'000;
constexpr int waves = 1000;
constexpr int usualBlob = 3000; ///< bytes, up to twice that

void report(const char *name, QVector<double> values, const char *unit = "ms")
{
    std::sort(values.begin(), values.end());
    std::printf("%-52s median %9.3f  worst %9.3f %s\n", name, values[values.size() / 2], values.last(), unit);
    std::fflush(stdout);
}

double timed(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return double(timer.nsecsElapsed()) / 1e6;
}

QString nameOf(int number)
{
    // Neighbours in the list are no neighbours in the order of names.
    const int shuffled = int(qint64(number) * 7919 % 1'000'003);
    return QStringLiteral("/srv/somebody/Pictures/Journey %1/picture with a usual name %2.jpg")
        .arg(shuffled / 300)
        .arg(shuffled);
}

/// Half of them of one size, the others of all.
int sizeOf(int number)
{
    return number % 2 == 0 ? 100 : smallestThumbnailSize + number / 2 % 15 * thumbnailSizeStep;
}

void fill(ImagesDatabase &database, int records)
{
    QByteArray noise(2 * usualBlob, Qt::Uninitialized);
    QRandomGenerator random(1);
    for (char &byte : noise)
        byte = char(random.generate());
    ImageRecord record;
    record.date = record.thumbnailDate = QDate(2004, 1, 1);
    QVector<double> times;
    QVector<double> writing;
    for (int number = 0; number < records; ++number) {
        record.name = nameOf(number);
        record.thumbnailSize = sizeOf(number);
        record.picture = noise.first(usualBlob + int(random.bounded(usualBlob)));
        times.append(timed([&] { database.add(record); }));
        if (number % waves == waves - 1)
            writing.append(timed([&] { database.settle(); }));
    }
    report("store one record", times);
    report("write a thousand that wait, beside the window", writing);
}

void timeOpenAndFind(const QString &folder, int records)
{
    QVector<double> opening;
    QVector<double> finding;
    QVector<double> missing;
    QVector<double> statistics;
    for (int round = 0; round < 15; ++round) {
        ImagesDatabase database;
        opening.append(timed([&] {
            database.open(folder);
            database.select(100);
            database.count();
            database.first();
        }));
        for (int find = 0; find < 2000; ++find) {
            const int number = int(QRandomGenerator::global()->bounded(quint32(records)));
            database.select(sizeOf(number));
            const QString name = nameOf(number);
            finding.append(timed([&] {
                if (!database.find(name, sizeOf(number)))
                    std::puts("not found");
            }));
            missing.append(timed([&] { database.find(name + QLatin1Char('x'), sizeOf(number)); }));
        }
        statistics.append(timed([&] {
            for (int size = smallestThumbnailSize - thumbnailSizeStep; size <= largestThumbnailSize;
                 size += thumbnailSizeStep) {
                database.close();
                database.open(folder);
                database.select(size < smallestThumbnailSize ? std::nullopt : std::optional(size));
                database.count();
                database.first();
            }
        }));
    }
    report("open for a size, first record read", opening);
    report("find a thumbnail", finding);
    report("look for one that is not there", missing);
    report("statistics: sixteen openings", statistics);
}

}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir temporary;
    const QString folder = (argc > 1 ? QString::fromLocal8Bit(argv[1]) : temporary.path()) + QLatin1Char('/');
    const int records = argc > 2 ? atoi(argv[2]) : usualRecords;
    ignore(
        copyFile(dataFolder() + QLatin1String(imagesTemplateFile), folder + QLatin1String(imagesTemplateFile), false));
    {
        ImagesDatabase database;
        if (!database.open(folder)) {
            std::fprintf(stderr, "no cache in %s: give LUMORA_DATA the folder of images.dat\n", qPrintable(folder));
            return 1;
        }
        if (database.count().value_or(0) == 0)
            fill(database, records);
    }
    timeOpenAndFind(folder, records);
    ImagesDatabase database;
    database.open(folder);
    database.select(60);
    const int removed = database.count().value_or(0);
    report("remove all of one size, beside the window", {timed([&] { database.removeAll([] { return true; }); })});
    std::printf("    %d records\n", removed);
    database.close();
    report("compact, beside the window", {timed([&] { ignore(compactImages(folder, [](SqliteConnection *) {})); })});
}
