#include "platform/linux/wallpaper/copies.h"

#include "platform/filepath.h"
#include "platform/files.h"

#include <QDateTime>

#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

namespace {

/// The number in the name of a copy of that desktop; 0 for other files.
qint64 copyNumber(const QString &file, const QString &desktop)
{
    if (!file.startsWith(desktop + QLatin1Char('-')))
        return 0;
    return file.mid(desktop.size() + 1).section(QLatin1Char('.'), 0, 0).toLongLong();
}

QStringList filesOf(const QString &folder)
{
    const Result<FolderListing> listing = listFolder(folder);
    return listing ? listing->files : QStringList();
}

std::filesystem::path native(const QString &path)
{
    return {pathToBytes(path).toStdString()};
}

}

Result<QString> makeWallpaperCopy(const QString &picture, const QString &folder, const QString &desktop)
{
    std::error_code error;
    std::filesystem::create_directories(native(folder), error);
    // The time, so that a name does not come again after all copies were removed.
    qint64 number = QDateTime::currentSecsSinceEpoch();
    const QStringList files = filesOf(folder);
    for (const QString &file : files)
        number = qMax(number, copyNumber(file, desktop) + 1);
    const QString extension = FileNameOfPath(picture).section(QLatin1Char('.'), -1);
    const QString copy = folder + QStringLiteral("%1-%2.%3").arg(desktop).arg(number).arg(extension);
    // The picture is only ever replaced as a whole, so a second name for it is as good as a copy, and costs nothing.
    if (::linkat(AT_FDCWD, pathToBytes(picture).constData(), AT_FDCWD, pathToBytes(copy).constData(), AT_SYMLINK_FOLLOW)
        == 0)
        return copy;
    if (!std::filesystem::copy_file(native(picture), native(copy), error))
        return Failure{QStringLiteral("no copy in %1: %2").arg(folder, QString::fromStdString(error.message()))};
    return copy;
}

void removeWallpaperCopies(const QString &folder, const QString &desktop, const QString &kept)
{
    const QStringList files = filesOf(folder);
    for (const QString &file : files) {
        if (copyNumber(file, desktop) > 0 && folder + file != kept)
            ::unlink(pathToBytes(folder + file).constData());
    }
}
