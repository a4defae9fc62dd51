#include "app/menubackground.h"

#include "engine/decode.h"
#include "engine/encode.h"
#include "engine/ops/areaaverage.h"
#include "platform/files.h"
#include "platform/filetransfer.h"
#include "platform/folders.h"

#include <QPainter>

namespace {

constexpr int highestPattern = 99;
constexpr QSize largest(2048, 2048); ///< pixels that are kept: a menu is wide, and shows a strip of them

QString menuBackgroundFile()
{
    return AppFolder() + QStringLiteral("MenuVBgd.Bmp");
}

QSize keptSize(QSize size)
{
    return size.width() <= largest.width() && size.height() <= largest.height()
        ? size
        : size.scaled(largest, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

}

QString backgroundsFolder()
{
    return AppFolder() + QStringLiteral("Backgrounds/");
}

QString patternFile(int number)
{
    return backgroundsFolder() + QStringLiteral("PAT0%1.JPG").arg(number, 2, 10, QLatin1Char('0'));
}

QVector<int> patternNumbers()
{
    QVector<int> numbers;
    for (int number = 1; number <= highestPattern; ++number) {
        if (FileExists(patternFile(number)))
            numbers.append(number);
    }
    return numbers;
}

QImage menuBackground()
{
    if (!FileExists(menuBackgroundFile()))
        return {};
    const Result<Picture> picture = decodeFile(menuBackgroundFile());
    return picture ? picture->pixels : QImage();
}

// Read before anything is touched: the chosen file may be the background itself.
Result<void> setMenuBackground(const QString &path)
{
    const Result<Picture> picture = decodeFile(path, {.target = largest});
    if (!picture)
        return picture.failure();
    const QImage reduced = areaAverage(picture->pixels, keptSize(picture->pixels.size()));
    QImage kept = allocateImage(reduced.size(), QImage::Format_RGB32);
    if (kept.isNull())
        return Failure{QStringLiteral("no memory for the background picture")};
    // What is transparent lets white paper through.
    kept.fill(Qt::white);
    QPainter(&kept).drawImage(0, 0, reduced);
    return encodeFile(Picture::fromImage(kept), menuBackgroundFile(), TypeCode::Bmp);
}

Result<void> removeMenuBackground()
{
    if (!FileExists(menuBackgroundFile()))
        return {};
    const FileOutcome removed = removeFile(menuBackgroundFile());
    return removed ? Result<void>() : Failure{removed.reason};
}
