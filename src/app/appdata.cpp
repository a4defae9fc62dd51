#include "app/appdata.h"

#include "platform/files.h"
#include "platform/filetransfer.h"
#include "platform/folders.h"

#include <QLoggingCategory>

namespace {

Q_LOGGING_CATEGORY(logData, "lumora.data", QtWarningMsg)

constexpr int deepest = 8;

void seed(const QString &from, const QString &to, int depth)
{
    const Result<FolderListing> listing = listFolder(from);
    if (!listing) {
        qCWarning(logData, "%s", qPrintable(listing.reason()));
        return;
    }
    for (const QString &name : listing->files) {
        if (FileExists(to + name))
            continue;
        if (const FileOutcome copied = copyFile(from + name, to + name, false); !copied)
            qCWarning(logData, "%s", qPrintable(copied.reason));
    }
    for (const QString &name : listing->folders) {
        // Other languages are read where they were installed.
        if (depth == 0 && name == QLatin1String("translations"))
            continue;
        if (depth == deepest || (!folderExists(to + name) && !makeFolder(to + name)))
            continue;
        seed(from + name + QLatin1Char('/'), to + name + QLatin1Char('/'), depth + 1);
    }
}

} // namespace

void seedAppFolder()
{
    const QString from = dataFolder();
    if (!from.isEmpty())
        seed(from, AppFolder(), 0);
}
